#pragma once

#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>
#include <thread>

namespace checks
{

/// A thread of the recording side, known to journals by its name, that does one job after the other.
class Worker
{
public:
    explicit Worker(const char* name);

    /// Does what is still waiting first.
    ~Worker();

    Worker(const Worker&) = delete;
    Worker& operator=(const Worker&) = delete;

    /// Has the job done and returns when it is; at once when called on the thread itself. Jobs must not throw.
    void Run(std::function<void()> job);

    /// Has the job done some time.
    void Post(std::function<void()> job);

private:
    void Work(const char* name);

    std::mutex m_mutex; ///< guards what is below
    std::condition_variable m_changed;
    std::deque<std::function<void()>> m_jobs;
    bool m_ending = false;
    std::thread m_thread;
};

} // namespace checks
