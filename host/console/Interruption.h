#pragma once

#include <atomic>
#include <csignal>
#include <functional>
#include <list>
#include <mutex>
#include <string>
#include <thread>

namespace host
{

/// Turns SIGINT, SIGTERM and SIGHUP into an orderly end of a command, without any code in a signal handler.
///
/// A thread of its own receives the signals ("signal thread"). The first signal is noted and calls the action of each
/// `Watch`; the command then ends its waits, closes its files and exits with `ExitCode`. A second signal ends the
/// process at once, also while an action runs. Signals that the process was started to ignore stay ignored.
///
/// Create it on the main thread before any other thread, because threads inherit which signals are blocked, and destroy
/// it last.
class Interruption
{
public:
    /// `Error` when the system refuses the descriptors.
    Interruption();
    ~Interruption();
    Interruption(const Interruption&) = delete;
    Interruption& operator=(const Interruption&) = delete;

    /// [any] The number of the first signal; 0 before it has come.
    int Signal() const
    {
        return m_signal;
    }

    /// [any] 128 + the signal, which is what a command shell reports of a program that a signal ended.
    int ExitCode() const
    {
        return 128 + m_signal;
    }

    /// [any] "interrupted by SIGINT"
    std::string Reason() const;

    /// Calls an action at the first signal, as long as the watch lives.
    class Watch
    {
    public:
        /// [any] With a null `interruption` the action is never called. Otherwise the signal thread calls it when the
        /// signal comes, or the constructor calls it when the signal has come already. The action must not create or
        /// destroy a `Watch`, and may be called twice.
        Watch(Interruption* interruption, std::function<void()> action);
        /// [any] The action does not run when it returns, and is not called later.
        ~Watch();
        Watch(const Watch&) = delete;
        Watch& operator=(const Watch&) = delete;

    private:
        Interruption* const m_interruption;
        std::list<std::function<void()>>::iterator m_place;
    };

private:
    void Run();

    std::atomic<int> m_signal{0};
    std::mutex m_mutex; ///< held while actions run
    std::list<std::function<void()>> m_actions;
    sigset_t m_signals{};
    sigset_t m_former{};
    int m_descriptor = -1; ///< of the signals
    int m_stop = -1;       ///< readable when the signal thread is to end
    std::thread m_thread;
};

} // namespace host
