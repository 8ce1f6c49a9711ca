#pragma once

#include "common/wbaselib/tov_stdlib.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <memory>
#include <new>
#include <stdexcept>
#include <type_traits>
#include <utility>

namespace WBASELIB
{

/// A growing array that crosses between the module, its host and a platform library.
///
/// The object is a pointer, the number of elements and the number of elements that fit, 16 bytes in this order. The
/// elements are contiguous in storage that TovMalloc allocates and TovFree frees. Libraries that were built separately
/// rely on that layout.
///
/// Several threads may read one vector, but not while one of them changes it. When the vector grows, pointers and
/// iterators become invalid. An operation throws std::bad_alloc when memory has run out, and std::length_error for more
/// than 2^32 - 1 elements. Then, and when the copy of an element throws, the vector is unchanged.
template <typename T>
class Vector
{
public:
    Vector() noexcept = default;

    Vector(const Vector& other)
    {
        Storage storage = NewStorage(other.m_count);
        std::uninitialized_copy(other.begin(), other.end(), Elements(storage));
        Adopt(std::move(storage), other.m_count, other.m_count);
    }

    Vector(Vector&& other) noexcept
    {
        Swap(other);
    }

    Vector& operator=(Vector other) noexcept
    {
        Swap(other);
        return *this;
    }

    ~Vector()
    {
        clear();
        TovFree(m_data);
    }

    /// Append one element, which may be a copy of an element of this vector.
    void push_back(const T& element)
    {
        emplace_back(element);
    }
    void push_back(T&& element)
    {
        emplace_back(std::move(element));
    }

    template <typename... Arguments>
    T& emplace_back(Arguments&&... arguments)
    {
        if (m_count < m_capacity)
        {
            new (static_cast<void*>(m_data + m_count)) T(std::forward<Arguments>(arguments)...);
        }
        else
        {
            GrowWith(std::forward<Arguments>(arguments)...);
        }
        return m_data[m_count++];
    }

    /// Makes room for at least `capacity` elements in total.
    void reserve(uint32_t capacity)
    {
        if (capacity > m_capacity)
        {
            Storage storage = NewStorage(capacity);
            MoveTo(Elements(storage));
            Adopt(std::move(storage), m_count, capacity);
        }
    }

    /// Destroys all elements and keeps the storage.
    void clear() noexcept
    {
        std::destroy(begin(), end());
        m_count = 0;
    }

    uint32_t size() const noexcept
    {
        return m_count;
    }
    uint32_t capacity() const noexcept
    {
        return m_capacity;
    }
    bool empty() const noexcept
    {
        return m_count == 0;
    }

    /// `index` must be below size().
    T& operator[](size_t index) noexcept
    {
        return m_data[index];
    }
    const T& operator[](size_t index) const noexcept
    {
        return m_data[index];
    }

    T* begin() noexcept
    {
        return m_data;
    }
    T* end() noexcept
    {
        return m_data + m_count;
    }
    const T* begin() const noexcept
    {
        return m_data;
    }
    const T* end() const noexcept
    {
        return m_data + m_count;
    }

private:
    struct FreeStorage
    {
        void operator()(void* storage) const noexcept
        {
            TovFree(storage);
        }
    };
    using Storage = std::unique_ptr<void, FreeStorage>; ///< memory without live elements

    static constexpr uint32_t kMaxCount = std::numeric_limits<uint32_t>::max();

    static Storage NewStorage(uint32_t capacity)
    {
        static_assert(alignof(T) <= alignof(std::max_align_t));
        static_assert(sizeof(Vector) == 16 && offsetof(Vector, m_data) == 0 && offsetof(Vector, m_count) == 8 &&
                      offsetof(Vector, m_capacity) == 12);
        if (capacity == 0)
        {
            return Storage();
        }
        Storage storage(TovMalloc(size_t{capacity} * sizeof(T)));
        if (storage == nullptr)
        {
            throw std::bad_alloc();
        }
        return storage;
    }

    static T* Elements(const Storage& storage) noexcept
    {
        return static_cast<T*>(storage.get());
    }

    uint32_t GrownCapacity() const
    {
        if (m_count == kMaxCount)
        {
            throw std::length_error("Vector");
        }
        return m_capacity > kMaxCount / 2 ? kMaxCount : std::max(4U, m_capacity * 2);
    }

    template <typename... Arguments>
    void GrowWith(Arguments&&... arguments)
    {
        const uint32_t capacity = GrownCapacity();
        Storage storage = NewStorage(capacity);
        // The new element is made first, because the arguments may refer to the old storage.
        T* added = new (static_cast<void*>(Elements(storage) + m_count)) T(std::forward<Arguments>(arguments)...);
        try
        {
            MoveTo(Elements(storage));
        }
        catch (...)
        {
            std::destroy_at(added);
            throw;
        }
        Adopt(std::move(storage), m_count, capacity);
    }

    void MoveTo(T* destination)
    {
        if constexpr (std::is_nothrow_move_constructible_v<T> || !std::is_copy_constructible_v<T>)
        {
            std::uninitialized_move(begin(), end(), destination);
        }
        else
        {
            std::uninitialized_copy(begin(), end(), destination);
        }
    }

    /// Destroys the elements and takes over a storage that holds `count` live elements.
    void Adopt(Storage storage, uint32_t count, uint32_t capacity) noexcept
    {
        std::destroy(begin(), end());
        TovFree(m_data);
        m_data = static_cast<T*>(storage.release());
        m_count = count;
        m_capacity = capacity;
    }

    void Swap(Vector& other) noexcept
    {
        std::swap(m_data, other.m_data);
        std::swap(m_count, other.m_count);
        std::swap(m_capacity, other.m_capacity);
    }

    T* m_data = nullptr;
    uint32_t m_count = 0;
    uint32_t m_capacity = 0;
};

} // namespace WBASELIB
