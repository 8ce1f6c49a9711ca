#pragma once

#include "common/wbaselib/wlock.h"

#include <cstddef>
#include <list>
#include <memory>

namespace WBASELIB
{

/// A pool of elements that a program uses for a short time and needs again and again.
///
/// The pool makes the elements in arrays of a fixed size, which exist as long as the pool. T needs a default
/// constructor and a member `T* m_next`, the link of the free list. The user of an element may write that member until
/// it frees the element.
///
/// Every operation except the destructor may be called from any thread.
template <typename T>
class WElementAllocator
{
public:
    /// The pool grows by `elementsPerArray` elements at a time, or by one when that is 0.
    explicit WElementAllocator(size_t elementsPerArray)
        : m_elementsPerArray(elementsPerArray != 0 ? elementsPerArray : 1)
    {
    }

    WElementAllocator(const WElementAllocator&) = delete;
    WElementAllocator& operator=(const WElementAllocator&) = delete;

    /// Destroys every element, also those in use.
    ~WElementAllocator() = default;

    /// Returns the element that has been free the longest. Its link is null; its other fields are as its last user left
    /// them. Throws std::bad_alloc when the pool cannot grow.
    T* Alloc()
    {
        const WAutoLock guard(&m_lock);
        if (m_head == nullptr)
        {
            AddArray();
        }
        T* element = m_head;
        m_head = element->m_next;
        if (m_head == nullptr)
        {
            m_tail = nullptr;
        }
        element->m_next = nullptr;
        return element;
    }

    /// Frees an element of this pool and puts it behind all other free ones. Ignores null.
    void Free(T* element)
    {
        if (element == nullptr)
        {
            return;
        }
        const WAutoLock guard(&m_lock);
        AppendFree(element);
    }

private:
    void AddArray()
    {
        m_arrays.push_back(std::make_unique<T[]>(m_elementsPerArray));
        T* elements = m_arrays.back().get();
        for (size_t index = 0; index < m_elementsPerArray; ++index)
        {
            AppendFree(&elements[index]);
        }
    }

    void AppendFree(T* element)
    {
        element->m_next = nullptr;
        if (m_tail != nullptr)
        {
            m_tail->m_next = element;
        }
        else
        {
            m_head = element;
        }
        m_tail = element;
    }

    const size_t m_elementsPerArray;

    WLock m_lock; ///< guards everything below
    std::list<std::unique_ptr<T[]>> m_arrays;
    T* m_head = nullptr;
    T* m_tail = nullptr;
};

} // namespace WBASELIB
