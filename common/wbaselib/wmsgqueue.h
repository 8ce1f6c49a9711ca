#pragma once

#include "common/wbaselib/wlock.h"
#include "common/wbaselib/wsemaphore.h"

#include <algorithm>
#include <cstddef>
#include <vector>

namespace WBASELIB
{

/// A bounded first-in-first-out queue of pointers between threads. It does not own the objects behind the pointers.
///
/// Every operation except the destructor may be called from any thread. The destructor ignores messages that are left.
/// The owner must make sure that no thread uses the queue any more, and then call Stop() and Drain(), before it
/// destroys the queue.
template <typename T>
class WMsgQueue
{
public:
    /// The queue holds at most `capacity` messages at a time; with 0 or less it holds none.
    explicit WMsgQueue(int capacity)
        : m_capacity(std::max(capacity, 0)),
          m_ring(static_cast<size_t>(m_capacity) + 1),
          m_semaphore(0, m_capacity)
    {
    }

    WMsgQueue(const WMsgQueue&) = delete;
    WMsgQueue& operator=(const WMsgQueue&) = delete;
    ~WMsgQueue() = default;

    /// Appends `message` and wakes one waiting thread. False when the queue is stopped or full: the message is then
    /// dropped and still belongs to the caller.
    bool Push(T* message)
    {
        if (!Store(message))
        {
            return false;
        }
        // After the unlock: the waiting thread then does not find the lock taken when it wakes up.
        m_semaphore.ReleaseSemaphore(1);
        return true;
    }

    /// Waits up to `milliseconds` (INFINITE: without a limit) for a message and takes the oldest one. Null when the
    /// wait timed out or the queue is stopped. Stop() does not wake a waiting thread.
    T* Pop(unsigned int milliseconds)
    {
        if (m_semaphore.WaitSemaphore(milliseconds) != WAIT_OBJECT_0)
        {
            return nullptr;
        }
        const WAutoLock guard(&m_lock);
        return m_stopped ? nullptr : Take();
    }

    /// From now on the queue drops every push, and every pop returns null.
    void Stop()
    {
        const WAutoLock guard(&m_lock);
        m_stopped = true;
    }

    /// Removes all messages, oldest first, and calls `giveBack(T*)` with each. It holds no lock during these calls.
    template <typename GiveBack>
    void Drain(GiveBack giveBack)
    {
        while (T* message = TakeLocked())
        {
            giveBack(message);
        }
    }

private:
    bool Store(T* message)
    {
        const WAutoLock guard(&m_lock);
        if (m_stopped || m_count == m_capacity)
        {
            return false;
        }
        m_ring[m_write] = message;
        m_write = Next(m_write);
        ++m_count;
        return true;
    }

    T* TakeLocked()
    {
        const WAutoLock guard(&m_lock);
        return Take();
    }

    T* Take()
    {
        if (m_count == 0)
        {
            return nullptr;
        }
        T* message = m_ring[m_read];
        m_read = Next(m_read);
        --m_count;
        return message;
    }

    size_t Next(size_t index) const
    {
        return index + 1 == m_ring.size() ? 0 : index + 1;
    }

    const int m_capacity;
    WLock m_lock; ///< guards the next five members
    bool m_stopped = false;
    std::vector<T*> m_ring; ///< one slot more than the capacity
    int m_count = 0;
    size_t m_read = 0;
    size_t m_write = 0;
    WSemaphore m_semaphore;
};

} // namespace WBASELIB
