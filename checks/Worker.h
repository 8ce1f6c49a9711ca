#pragma once

#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>
#include <thread>

namespace checks
{

/// A thread of the recording host or platform. It runs one job after the other, and journals know it by its name. All
/// operations are [any].
class Worker
{
public:
    explicit Worker(const char* name);

    /// Runs the waiting jobs first.
    ~Worker();

    Worker(const Worker&) = delete;
    Worker& operator=(const Worker&) = delete;

    /// Runs the job on the thread and returns when it has ended. On the thread itself it runs the job at once. The job
    /// must not throw.
    void Run(std::function<void()> job);

    /// Lets the thread run the job and returns at once. The job must not throw.
    void Post(std::function<void()> job);

private:
    void Work(const char* name);

    std::mutex m_mutex; ///< guards the members below
    std::condition_variable m_changed;
    std::deque<std::function<void()>> m_jobs;
    bool m_ending = false;
    std::thread m_thread;
};

} // namespace checks
