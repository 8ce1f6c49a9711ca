#pragma once

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>
#include <optional>
#include <utility>

namespace onlinehost
{

/// Carries events from the threads on which they happen to those that wait for them, in order.
template <typename T>
class EventQueue
{
public:
    /// `onPush` is called after each push, on the thread that pushes. Set it before the first one.
    void SetOnPush(std::function<void()> onPush)
    {
        m_onPush = std::move(onPush);
    }

    void Push(T event)
    {
        {
            const std::lock_guard lock(m_mutex);
            m_events.push_back(std::move(event));
        }
        m_pushed.notify_all();
        if (m_onPush)
        {
            m_onPush();
        }
    }

    /// Takes the oldest event, waiting for one until the time limit has passed.
    std::optional<T> Take(std::chrono::milliseconds limit)
    {
        return TakeIf([](const T&) { return true; }, limit);
    }

    /// Takes the oldest event that `isWanted` accepts; the others stay.
    template <typename Predicate>
    std::optional<T> TakeIf(Predicate isWanted, std::chrono::milliseconds limit)
    {
        std::unique_lock lock(m_mutex);
        auto found = m_events.end();
        const bool there = m_pushed.wait_for(lock, limit,
                                             [&]
                                             {
                                                 found = std::find_if(m_events.begin(), m_events.end(), isWanted);
                                                 return found != m_events.end();
                                             });
        if (!there)
        {
            return std::nullopt;
        }
        T event = std::move(*found);
        m_events.erase(found);
        return event;
    }

private:
    std::mutex m_mutex;
    std::condition_variable m_pushed;
    std::deque<T> m_events;
    std::function<void()> m_onPush;
};

} // namespace onlinehost
