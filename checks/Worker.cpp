#include "checks/Worker.h"

#include "checks/Journal.h"

#include <future>

namespace checks
{

Worker::Worker(const char* name) : m_thread(&Worker::Work, this, name) {}

Worker::~Worker()
{
    {
        const std::lock_guard guard(m_mutex);
        m_ending = true;
    }
    m_changed.notify_one();
    m_thread.join();
}

void Worker::Run(std::function<void()> job)
{
    if (std::this_thread::get_id() == m_thread.get_id())
    {
        job();
        return;
    }
    std::promise<void> done;
    Post(
        [&]
        {
            job();
            done.set_value();
        });
    done.get_future().wait();
}

void Worker::Post(std::function<void()> job)
{
    {
        const std::lock_guard guard(m_mutex);
        m_jobs.push_back(std::move(job));
    }
    m_changed.notify_one();
}

void Worker::Work(const char* name)
{
    NameThread(name);
    std::unique_lock lock(m_mutex);
    while (true)
    {
        m_changed.wait(lock, [this] { return m_ending || !m_jobs.empty(); });
        if (m_jobs.empty())
        {
            return;
        }
        const std::function<void()> job = std::move(m_jobs.front());
        m_jobs.pop_front();
        lock.unlock();
        job();
        lock.lock();
    }
}

} // namespace checks
