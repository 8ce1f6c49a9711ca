#pragma once

#include <csignal>

namespace host
{

/// Turns the signals that a terminal sends into a descriptor that the shell's thread waits for among others, so that no
/// code runs inside a signal handler. Signals that the process was started to ignore stay ignored. Create it before any
/// thread: threads inherit which signals are blocked.
class ShellSignals
{
public:
    /// `Error` when the system has no descriptor left.
    ShellSignals();
    ~ShellSignals();
    ShellSignals(const ShellSignals&) = delete;
    ShellSignals& operator=(const ShellSignals&) = delete;

    /// A descriptor that is readable while a signal is pending.
    int Descriptor() const
    {
        return m_descriptor;
    }

    /// The number of a pending signal; 0 when there is none.
    int Take();

    /// Discards pending signals and receives no further ones: from now on they act on the calling thread as before this
    /// object was created.
    void Release();

    /// Stops the process as the terminal asked, and returns when the process is continued.
    static void Stop();

private:
    sigset_t m_former{};
    int m_descriptor = -1;
};

} // namespace host
