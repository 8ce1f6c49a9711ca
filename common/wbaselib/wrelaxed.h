#pragma once

#include <atomic>
#include <type_traits>

namespace WBASELIB
{

/// A scalar that one thread may write while others read it.
///
/// It reads and assigns like the plain T, but every read and every write is a relaxed atomic one: a reader sees some
/// value that was written, whole, and nothing is promised about when it sees it or about any other field. That is
/// enough for a state that is only looked at. Fields that have to agree with each other need a lock.
///
/// Reading and then writing (`x = x + 1`) is two steps, between which another thread may write.
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

    /// For a pointer: reaches into what it points to.
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

/// The same for a plain scalar whose type has to stay as it is: one relaxed atomic read or write of it. Every access
/// that may meet another thread's write has to go through these two.
template <typename T>
T RelaxedLoad(const T& value) noexcept
{
    static_assert(std::is_scalar_v<T>);
    // The reference type wants a mutable object even for a read.
    return std::atomic_ref<T>(const_cast<T&>(value)).load(std::memory_order_relaxed);
}

template <typename T>
void RelaxedStore(T& target, std::type_identity_t<T> value) noexcept
{
    static_assert(std::is_scalar_v<T>);
    std::atomic_ref<T>(target).store(value, std::memory_order_relaxed);
}

} // namespace WBASELIB
