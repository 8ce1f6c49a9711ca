#pragma once

#include <csignal>

namespace host
{

/// Turns the signals that a terminal sends into something that can be waited for among other descriptors, so that nothing
/// runs inside a signal handler. Create it before any thread: threads inherit which signals are held back.
class ShellSignals
{
public:
    /// `Error` when the system has no descriptor left.
    ShellSignals();
    ~ShellSignals();
    ShellSignals(const ShellSignals&) = delete;
    ShellSignals& operator=(const ShellSignals&) = delete;

    /// Readable while a signal waits.
    int Descriptor() const
    {
        return m_descriptor;
    }

    /// The number of a signal that waits; 0 for none.
    int Take();

    /// Stops the process as the terminal asked, and returns when it goes on.
    static void Stop();

private:
    sigset_t m_former{};
    int m_descriptor = -1;
};

} // namespace host
