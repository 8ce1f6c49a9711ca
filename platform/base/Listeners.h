#pragma once

#include "avcore/IZolConnection.h"
#include "avcore/IZolMdsClient.h"
#include "avcore/IZolOnline.h"
#include "avcore/IZolTMsg.h"

#include <algorithm>
#include <condition_variable>
#include <mutex>
#include <thread>
#include <tuple>
#include <vector>

namespace platform
{

/// The listeners of a connection and of its components.
///
/// Events run on the platform thread, one at a time and without a lock. When `Remove` returns, no event runs on that
/// listener and no event follows. `Remove` from inside an event of the listener returns at once; that event is its
/// last.
///
/// A connection without connection listeners is unattended: no event reaches the listeners of its components either,
/// and the `Remove` of the last connection listener waits for their events too. So an owner that removes the connection
/// listeners may leave listeners of components behind, as the module's monitoring client does.
class Listeners
{
public:
    /// Adding a registered listener again has no effect.
    template <typename Listener>
    HRESULT Add(Listener* listener)
    {
        if (listener == nullptr)
        {
            return E_POINTER;
        }
        const std::lock_guard lock(m_mutex);
        auto& list = ListOf<Listener>();
        if (std::find(list.begin(), list.end(), listener) == list.end())
        {
            list.push_back(listener);
        }
        return S_OK;
    }

    /// `E_INVALIDARG` for a listener that is not registered.
    template <typename Listener>
    HRESULT Remove(Listener* listener)
    {
        std::unique_lock lock(m_mutex);
        auto& list = ListOf<Listener>();
        const auto found = std::find(list.begin(), list.end(), listener);
        if (found == list.end())
        {
            return E_INVALIDARG;
        }
        list.erase(found);
        WaitUntil(lock, [this, listener] { return IsAttendedLocked() ? m_running != listener : m_running == nullptr; });
        return S_OK;
    }

    void RemoveAll()
    {
        std::unique_lock lock(m_mutex);
        m_lists = {};
        WaitUntil(lock, [this] { return m_running == nullptr; });
    }

    bool IsAttended() const
    {
        const std::lock_guard lock(m_mutex);
        return IsAttendedLocked();
    }

    template <typename Listener>
    bool Has() const
    {
        const std::lock_guard lock(m_mutex);
        return !std::get<std::vector<Listener*>>(m_lists).empty();
    }

    /// [platform] Calls `event(Listener&)` for every listener of the kind, in order of registration. Skips a listener
    /// that is removed during the delivery.
    template <typename Listener, typename Event>
    void Deliver(Event&& event)
    {
        std::unique_lock lock(m_mutex);
        const std::vector<Listener*> listeners = ListOf<Listener>();
        for (Listener* listener : listeners)
        {
            const auto& list = ListOf<Listener>();
            if (IsAttendedLocked() && std::find(list.begin(), list.end(), listener) != list.end())
            {
                const Running running(*this, lock, listener);
                event(*listener);
            }
        }
    }

private:
    /// An event under way. It opens the lock until the event ends, also when the listener throws.
    class Running
    {
    public:
        Running(Listeners& owner, std::unique_lock<std::mutex>& lock, const void* listener)
            : m_owner(owner),
              m_lock(lock)
        {
            m_owner.m_running = listener;
            m_owner.m_thread = std::this_thread::get_id();
            m_lock.unlock();
        }
        ~Running()
        {
            m_lock.lock();
            m_owner.m_running = nullptr;
            m_owner.m_ended.notify_all();
        }
        Running(const Running&) = delete;
        Running& operator=(const Running&) = delete;

    private:
        Listeners& m_owner;
        std::unique_lock<std::mutex>& m_lock;
    };

    template <typename Listener>
    std::vector<Listener*>& ListOf()
    {
        return std::get<std::vector<Listener*>>(m_lists);
    }

    bool IsAttendedLocked() const
    {
        return !std::get<std::vector<avcore::IZolConnectionListener*>>(m_lists).empty();
    }

    template <typename Condition>
    void WaitUntil(std::unique_lock<std::mutex>& lock, Condition condition)
    {
        const bool inside = m_running != nullptr && m_thread == std::this_thread::get_id();
        if (!inside)
        {
            m_ended.wait(lock, condition);
        }
    }

    mutable std::mutex m_mutex;
    std::condition_variable m_ended;
    std::tuple<std::vector<avcore::IZolConnectionListener*>, std::vector<avcore::IZolOnlineListener*>,
               std::vector<avcore::IZolTMsgListener*>, std::vector<avcore::IZolMdsClientListener*>>
        m_lists;
    const void* m_running = nullptr; ///< the listener whose event is under way
    std::thread::id m_thread;        ///< the thread on which it runs
};

} // namespace platform
