#pragma once

#include "onlinemanager/NotifyList.h"

#include <atomic>
#include <cstdint>
#include <functional>
#include <new>
#include <utility>

namespace onlinemanager
{

/// A class that keeps a notify list: it implements the three operations with which `Interface` begins, and calls the
/// listeners.
///
/// It adds no virtual operation. The slots of `Interface` therefore stay the first ones of the derived class, and the
/// virtual operations that the derived class declares follow them.
///
/// Nothing here logs. The name of the source file is a part of each log line, and hosts filter by it: an operation that
/// logs stays in the source file of its service.
template <typename Interface, typename Listener>
class NotifyingService : public Interface
{
public:
    void AddNotify(Listener* notify) override
    {
        m_notify_list.AddNotify(notify);
    }

    void RemoveNotify(Listener* notify) override
    {
        m_notify_list.RemoveNotify(notify);
    }

    void RemoveAllNotify() override
    {
        m_notify_list.RemoveAllNotify();
    }

protected:
    ~NotifyingService() = default;

    /// Calls the notification `event` of every active listener. The arguments must not be members of this object,
    /// because a listener may end it.
    template <typename Event, typename... Arguments>
    void Broadcast(Event event, const Arguments&... arguments)
    {
        m_notify_list.Deliver([&](Listener& listener) { std::invoke(event, listener, arguments...); });
    }

    NotifyList<Listener> m_notify_list;
};

/// Counts who needs a service's storage: its owner, and every call inside the service that continues after it has
/// called the host. A host may tear the component down from inside a notification; the storage then stays until that
/// call has returned.
class ServiceUse
{
public:
    void Enter() noexcept
    {
        m_count.fetch_add(1, std::memory_order_relaxed);
    }

    /// True for the last user, which must then free the service.
    bool Leave() noexcept
    {
        return m_count.fetch_sub(1, std::memory_order_acq_rel) == 1;
    }

private:
    std::atomic<uint32_t> m_count{1}; // the use of the owner
};

/// A notifying service with an owner. It must be the first base of its class, so that both have the same address.
template <typename Interface, typename Listener>
class OwnedService : public NotifyingService<Interface, Listener>
{
public:
    /// Gives the storage back without running the destructor, on purpose (see `IOnlineManager::Destroy`). A service that
    /// ends in another way has a `Free` of its own, which hides this one.
    void Free()
    {
        ::operator delete(static_cast<void*>(this));
    }

    ServiceUse m_use;

protected:
    ~OwnedService() = default;
};

/// One use of a service, which is an `OwnedService`; null is allowed.
template <typename Service>
class ServiceRef
{
public:
    explicit ServiceRef(Service* service) : m_service(service)
    {
        if (m_service != nullptr)
        {
            m_service->m_use.Enter();
        }
    }

    ServiceRef(ServiceRef&& other) noexcept : m_service(std::exchange(other.m_service, nullptr)) {}

    ~ServiceRef()
    {
        if (m_service != nullptr && m_service->m_use.Leave())
        {
            m_service->Free(); // NOLINT(clang-analyzer-cplusplus.NewDelete): the analyzer does not know the count
        }
    }

    ServiceRef& operator=(ServiceRef&&) = delete;

    Service* operator->() const
    {
        return m_service; // NOLINT(clang-analyzer-cplusplus.NewDelete): the same
    }

    Service& operator*() const
    {
        return *m_service;
    }

    explicit operator bool() const
    {
        return m_service != nullptr;
    }

private:
    Service* m_service;
};

/// Ends the owner's use, clears the owner's pointer and removes the listeners, so that no notification follows.
template <typename Service>
void ReleaseService(Service*& service)
{
    if (Service* const released = std::exchange(service, nullptr))
    {
        released->RemoveAllNotify();
        if (released->m_use.Leave())
        {
            released->Free();
        }
    }
}

} // namespace onlinemanager
