#include "platform/base/EventLoop.h"

#include <utility>

namespace platform
{

EventLoop::~EventLoop()
{
    Stop();
}

bool EventLoop::Post(Task task)
{
    {
        const std::lock_guard lock(m_mutex);
        if (!StartThread())
        {
            return false;
        }
        m_tasks.push_back(std::move(task));
    }
    m_wake.notify_one();
    return true;
}

bool EventLoop::PostAt(Clock::time_point due, Kind kind, Task task)
{
    {
        const std::lock_guard lock(m_mutex);
        if (!StartThread())
        {
            return false;
        }
        m_later.emplace(due, Later{kind, std::move(task)});
        m_laterWork += kind == Kind::Work ? 1U : 0U;
    }
    m_wake.notify_one();
    return true;
}

bool EventLoop::IsCurrent() const
{
    const std::lock_guard lock(m_mutex);
    return std::this_thread::get_id() == m_threadId;
}

void EventLoop::WaitIdle()
{
    std::unique_lock lock(m_mutex);
    m_idle.wait(lock, [this] { return m_stopped || IsIdle(); });
}

bool EventLoop::WaitIdleFor(std::chrono::milliseconds limit)
{
    std::unique_lock lock(m_mutex);
    return m_idle.wait_for(lock, limit, [this] { return m_stopped || IsIdle(); });
}

void EventLoop::Stop()
{
    std::thread thread;
    std::deque<Task> tasks;
    std::multimap<Clock::time_point, Later> later;
    {
        const std::lock_guard lock(m_mutex);
        m_stopped = true;
        thread.swap(m_thread);
        tasks.swap(m_tasks);
        later.swap(m_later);
        m_laterWork = 0;
    }
    m_wake.notify_all();
    m_idle.notify_all();
    if (thread.joinable())
    {
        thread.join();
    }
}

bool EventLoop::StartThread()
{
    if (m_stopped)
    {
        return false;
    }
    if (!m_thread.joinable())
    {
        m_thread = std::thread([this] { Run(); });
        m_threadId = m_thread.get_id();
    }
    return true;
}

void EventLoop::Run()
{
    std::unique_lock lock(m_mutex);
    while (Task task = Next(lock))
    {
        m_running = true;
        lock.unlock();
        task();
        // Objects that the task holds may end with it, and their destructors may post. So the task ends before the
        // lock.
        task = nullptr;
        lock.lock();
        m_running = false;
        if (IsIdle())
        {
            m_idle.notify_all();
        }
    }
}

/// Waits for a task. An empty task means that the loop has stopped.
EventLoop::Task EventLoop::Next(std::unique_lock<std::mutex>& lock)
{
    while (!m_stopped)
    {
        if (!m_later.empty() && m_later.begin()->first <= Clock::now())
        {
            auto node = m_later.extract(m_later.begin());
            m_laterWork -= node.mapped().kind == Kind::Work ? 1U : 0U;
            return std::move(node.mapped().task);
        }
        if (!m_tasks.empty())
        {
            Task task = std::move(m_tasks.front());
            m_tasks.pop_front();
            return task;
        }
        if (m_later.empty())
        {
            m_wake.wait(lock);
        }
        else
        {
            const auto due = m_later.begin()->first;
            m_wake.wait_until(lock, due);
        }
    }
    return nullptr;
}

bool EventLoop::IsIdle() const
{
    return !m_running && m_tasks.empty() && m_laterWork == 0;
}

} // namespace platform
