#pragma once

#include <atomic>
#include <cstdint>
#include <utility>

namespace onlinemanager
{

/// Counts who needs a service's storage: its owner, and every call inside it that goes on after it has called the host.
/// Hosts may tear the component down from inside a notification; the storage then stays until that call has returned.
class ServiceUse
{
public:
    void Enter() noexcept
    {
        m_count.fetch_add(1, std::memory_order_relaxed);
    }

    /// True for the last one, who then frees the service.
    bool Leave() noexcept
    {
        return m_count.fetch_sub(1, std::memory_order_acq_rel) == 1;
    }

private:
    std::atomic<uint32_t> m_count{1}; // the owner's
};

/// One use of a service. `Service` has a `ServiceUse m_use` and a `Free()`; null is allowed.
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
            m_service->Free(); // NOLINT(clang-analyzer-cplusplus.NewDelete): it does not follow the count
        }
    }

    ServiceRef& operator=(ServiceRef&&) = delete;

    Service* operator->() const
    {
        return m_service; // NOLINT(clang-analyzer-cplusplus.NewDelete): as above
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

/// Ends the owner's use and forgets the service. No listener is called any more.
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
