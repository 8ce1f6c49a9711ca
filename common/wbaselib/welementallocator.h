#pragma once

#include "common/wbaselib/wlock.h"

#include <cstddef>
#include <list>
#include <memory>

namespace WBASELIB
{

/// A pool of elements that are used for a short time and over and over.
///
/// Elements are made in arrays of a fixed number, which live as long as the pool. T needs a default constructor and a
/// member `T* m_next`, the link of the free list; while an element is handed out the member belongs to its user.
///
/// Every operation but the destructor may be called from any thread.
template <typename T>
class WElementAllocator
{
public:
    /// The pool grows by `elementsPerArray` elements at a time, at least one.
    explicit WElementAllocator(size_t elementsPerArray)
        : m_elementsPerArray(elementsPerArray != 0 ? elementsPerArray : 1)
    {
    }

    WElementAllocator(const WElementAllocator&) = delete;
    WElementAllocator& operator=(const WElementAllocator&) = delete;

    /// Ends every element, those still handed out included.
    ~WElementAllocator() = default;

    /// Hands out the element that has been free the longest, with its fields as they were left and a null link. Throws
    /// std::bad_alloc when the pool cannot grow.
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

    /// Takes back an element of this pool; null is ignored. It goes behind all other free ones.
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
