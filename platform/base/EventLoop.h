#pragma once

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <deque>
#include <functional>
#include <map>
#include <mutex>
#include <thread>

namespace platform
{

/// One thread that runs tasks one at a time, in the order in which they were posted or fall due. The thread starts with the
/// first task. Every operation may be called on any thread, `Stop` and `WaitIdle` not from inside a task.
class EventLoop
{
public:
    using Task = std::function<void()>;
    using Clock = std::chrono::steady_clock;

    EventLoop() = default;
    ~EventLoop();
    EventLoop(const EventLoop&) = delete;
    EventLoop& operator=(const EventLoop&) = delete;

    /// False, and the task is dropped, when the loop has stopped.
    bool Post(Task task);

    enum class Kind
    {
        Work, ///< `WaitIdle` waits for it
        Timer,
    };
    /// Tasks with the same due time run in the order of posting.
    bool PostAt(Clock::time_point due, Kind kind, Task task);

    /// Whether the caller runs inside a task.
    bool IsCurrent() const;

    /// Waits until no task runs and none but timers waits.
    void WaitIdle();

    /// Drops what has not run yet and ends the thread.
    void Stop();

private:
    struct Later
    {
        Kind kind;
        Task task;
    };

    bool StartThread();
    void Run();
    Task Next(std::unique_lock<std::mutex>& lock);
    bool IsIdle() const;

    mutable std::mutex m_mutex;
    std::condition_variable m_wake;
    std::condition_variable m_idle;
    std::deque<Task> m_tasks;
    std::multimap<Clock::time_point, Later> m_later;
    size_t m_laterWork = 0; ///< entries of `m_later` that are no timers
    bool m_running = false; ///< a task is running
    bool m_stopped = false;
    std::thread m_thread;
    std::thread::id m_threadId;
};

} // namespace platform
