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

/// One thread that runs tasks one at a time, in the order in which they were posted or fall due. The first task starts
/// the thread. [any] Every operation may be called on any thread; `Stop`, `WaitIdle` and `WaitIdleFor` must not be
/// called from inside a task.
class EventLoop
{
public:
    using Task = std::function<void()>;
    using Clock = std::chrono::steady_clock;

    EventLoop() = default;
    ~EventLoop();
    EventLoop(const EventLoop&) = delete;
    EventLoop& operator=(const EventLoop&) = delete;

    /// False when the loop has stopped; it drops the task then.
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

    /// Waits until no task runs and only timers are left.
    void WaitIdle();
    /// The same, for at most `limit`: false when it is not idle then.
    bool WaitIdleFor(std::chrono::milliseconds limit);

    /// Drops the tasks that have not run and ends the thread.
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
    size_t m_laterWork = 0; ///< number of entries in `m_later` that are work
    bool m_running = false; ///< a task is running
    bool m_stopped = false;
    std::thread m_thread;
    std::thread::id m_threadId;
};

} // namespace platform
