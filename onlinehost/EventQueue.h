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

/// A queue of events between the threads on which they happen and the threads that wait for them. It keeps their order,
/// has no limit, and never blocks a thread that pushes.
template <typename T>
class EventQueue
{
public:
    /// [any] Sets a function that each later `Push` calls after it has added the event, on its own thread and without a
    /// lock. Must be called before the first `Push`; an empty function calls nothing.
    void SetOnPush(std::function<void()> onPush)
    {
        m_onPush = std::move(onPush);
    }

    /// [any] Adds an event at the end.
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

    /// [any] Ends all waits. From now on `Take` and `TakeIf` return at once, with an event of the queue or without one.
    void CancelWaits()
    {
        {
            const std::lock_guard lock(m_mutex);
            m_isCancelled = true;
        }
        m_pushed.notify_all();
    }

    /// [any] Removes the oldest event and returns it. Waits for one up to `limit`; empty when none came.
    std::optional<T> Take(std::chrono::milliseconds limit)
    {
        return TakeIf([](const T&) { return true; }, limit);
    }

    /// [any] As `Take`, for the oldest event that `isWanted` accepts; the others stay in the queue. `isWanted` is
    /// called under the queue's lock, so it must not use the queue.
    template <typename Predicate>
    std::optional<T> TakeIf(Predicate isWanted, std::chrono::milliseconds limit)
    {
        std::unique_lock lock(m_mutex);
        auto found = m_events.end();
        m_pushed.wait_for(lock, limit,
                          [&]
                          {
                              found = std::find_if(m_events.begin(), m_events.end(), isWanted);
                              return found != m_events.end() || m_isCancelled;
                          });
        if (found == m_events.end())
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
    bool m_isCancelled = false;
    std::function<void()> m_onPush;
};

} // namespace onlinehost
