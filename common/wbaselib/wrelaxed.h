#pragma once

#include <atomic>
#include <type_traits>

namespace WBASELIB
{

/// A scalar that one thread may write while other threads read it.
///
/// It reads and assigns like the plain T, but every read and every write is a relaxed atomic one. A reader gets a
/// complete value that a thread wrote. The order relative to other fields, and the time at which a reader sees a new
/// value, are not defined. That is enough for a single state. Fields that must agree with each other need a lock.
///
/// A read and then a write (`x = x + 1`) are two steps; another thread may write between them.
template <typename T>
class WRelaxed
{
public:
    static_assert(std::is_scalar_v<T>);
    static_assert(std::atomic<T>::is_always_lock_free);

    WRelaxed() noexcept : m_value(T{}) {}
    WRelaxed(T value) noexcept : m_value(value) {} // implicit, as the plain T is initialised
    WRelaxed(const WRelaxed& other) noexcept : m_value(other.Load()) {}
    ~WRelaxed() = default;

    WRelaxed& operator=(T value) noexcept
    {
        Store(value);
        return *this;
    }

    WRelaxed& operator=(const WRelaxed& other) noexcept
    {
        Store(other.Load());
        return *this;
    }

    operator T() const noexcept
    {
        return Load();
    } // implicit, as the plain T is read

    /// For a pointer: accesses the object behind it.
    T operator->() const noexcept requires std::is_pointer_v<T>
    {
        return Load();
    }

private:
    T Load() const noexcept
    {
        return m_value.load(std::memory_order_relaxed);
    }
    void Store(T value) noexcept
    {
        m_value.store(value, std::memory_order_relaxed);
    }

    std::atomic<T> m_value;
};

/// One relaxed atomic read or write of a plain scalar whose type must not change. Use them for every access that may
/// coincide with a write of another thread.
template <typename T>
T RelaxedLoad(const T& value) noexcept
{
    static_assert(std::is_scalar_v<T>);
    // std::atomic_ref needs a mutable object even for a read.
    return std::atomic_ref<T>(const_cast<T&>(value)).load(std::memory_order_relaxed);
}

template <typename T>
void RelaxedStore(T& target, std::type_identity_t<T> value) noexcept
{
    static_assert(std::is_scalar_v<T>);
    std::atomic_ref<T>(target).store(value, std::memory_order_relaxed);
}

} // namespace WBASELIB
