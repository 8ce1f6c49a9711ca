#pragma once

#include "common/wbaselib/wrelaxed.h"

#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>
#include <utility>
#include <vector>

namespace onlinemanager
{

/// The listeners of one service, in the order of their first registration. A host reaches the list by the service's
/// `AddNotify`, `RemoveNotify` and `RemoveAllNotify`.
///
/// A delivery calls the listeners outside the mutex and walks the present list at each step: it calls a listener that
/// was added during the delivery, and skips one that was removed during it. Every operation, another delivery included,
/// may be called from inside a notification and from any thread.
///
/// Links change under the mutex; a walk follows them without it. Therefore an entry that leaves the list during a walk
/// is not freed but retired: it keeps its link to the entries behind it until the last walk has ended.
template <typename Listener>
class NotifyList
{
public:
    NotifyList() = default;
    NotifyList(const NotifyList&) = delete;
    NotifyList& operator=(const NotifyList&) = delete;

    /// No delivery may be running.
    ~NotifyList()
    {
        RetireIf([](const Entry&) { return true; });
    }

    /// Adds a listener at the end. A listener that was removed and that no delivery has dropped yet gets its old place
    /// back. Null is ignored.
    void AddNotify(Listener* listener)
    {
        if (listener == nullptr)
        {
            return;
        }
        const std::lock_guard guard(m_mutex);
        if (Entry* const known = Find(listener))
        {
            known->m_active = true;
            return;
        }
        auto* const added = new Entry(listener, ++m_lastNumber);
        m_last->m_next.store(added, std::memory_order_release);
        m_last = added;
    }

    /// Marks a listener as removed; the next delivery drops it. Null and unknown listeners are ignored.
    void RemoveNotify(Listener* listener)
    {
        const std::lock_guard guard(m_mutex);
        if (Entry* const known = Find(listener))
        {
            known->m_active = false;
        }
    }

    /// Removes all listeners. A running delivery ends: it does not call listeners that are added afterwards either.
    void RemoveAllNotify()
    {
        const std::lock_guard guard(m_mutex);
        ++m_generation;
        RetireIf([](const Entry&) { return true; });
    }

    /// Calls `event(Listener&)` for every active listener. The exception of a listener ends here: the platform, on
    /// whose thread this runs, cannot handle it, and the next listener must still get the event.
    template <typename Event>
    void Deliver(Event event)
    {
        if (!m_enabled)
        {
            return;
        }
        Walk walk(*this);
        while (Listener* const listener = walk.Next())
        {
            try
            {
                event(*listener);
            }
            catch (...)
            {
                continue;
            }
        }
    }

    /// True from construction. A disabled list delivers nothing.
    bool IsEnabled() const
    {
        return m_enabled;
    }

private:
    struct Entry
    {
        Entry(Listener* listener, uint64_t number)
            : m_active(listener != nullptr),
              m_listener(listener),
              m_number(number)
        {
        }

        Entry* Next() const
        {
            return m_next.load(std::memory_order_acquire);
        }

        WBASELIB::WRelaxed<bool> m_active;
        WBASELIB::WRelaxed<bool> m_retired = false;
        Listener* const m_listener;
        const uint64_t m_number; ///< unique, and higher than the number of every entry before it
        std::atomic<Entry*> m_next{nullptr};
    };

    class Walk
    {
    public:
        explicit Walk(NotifyList& list) : m_list(list), m_position(&list.m_first)
        {
            const std::lock_guard guard(m_list.m_mutex);
            m_list.RetireIf([](const Entry& entry) { return !entry.m_active; });
            m_generation = m_list.m_generation;
            ++m_list.m_walks;
        }

        ~Walk()
        {
            const std::lock_guard guard(m_list.m_mutex);
            if (--m_list.m_walks == 0)
            {
                std::exchange(m_list.m_retired, {}); // with its buffer: the list may end without its destructor
            }
        }

        Walk(const Walk&) = delete;
        Walk& operator=(const Walk&) = delete;

        Listener* Next()
        {
            while (Entry* const next = Step())
            {
                m_position = next;
                if (next->m_active)
                {
                    return next->m_listener;
                }
            }
            return nullptr;
        }

    private:
        Entry* Step()
        {
            Entry* const next = m_position->Next();
            return next == nullptr && m_position->m_retired ? FindBehindRetired() : next;
        }

        /// The next entry of the list when the links of a retired entry have ended: the list may have grown since.
        Entry* FindBehindRetired()
        {
            const std::lock_guard guard(m_list.m_mutex);
            if (m_list.m_generation != m_generation)
            {
                return nullptr;
            }
            Entry* entry = m_list.m_first.Next();
            while (entry != nullptr && entry->m_number <= m_position->m_number)
            {
                entry = entry->Next();
            }
            return entry;
        }

        NotifyList& m_list;
        Entry* m_position; ///< the entry called last, before that the head of the list
        uint64_t m_generation = 0;
    };

    Entry* Find(const Listener* listener)
    {
        Entry* entry = m_first.Next();
        while (entry != nullptr && entry->m_listener != listener)
        {
            entry = entry->Next();
        }
        return entry;
    }

    template <typename Condition>
    void RetireIf(Condition condition)
    {
        Entry* before = &m_first;
        while (Entry* const entry = before->Next())
        {
            if (!condition(*entry))
            {
                before = entry;
                continue;
            }
            before->m_next.store(entry->Next(), std::memory_order_release);
            Retire(std::unique_ptr<Entry>(entry));
        }
        m_last = before;
    }

    void Retire(std::unique_ptr<Entry> entry)
    {
        entry->m_active = false;
        entry->m_retired = true;
        if (m_walks != 0)
        {
            m_retired.push_back(std::move(entry));
        }
    }

    WBASELIB::WRelaxed<bool> m_enabled = true;
    std::recursive_mutex m_mutex; ///< guards everything below, links included; a walk reads links without it
    Entry m_first{nullptr, 0};    ///< the head: it holds no listener and is never retired
    Entry* m_last = &m_first;
    uint64_t m_lastNumber = 0;
    uint64_t m_generation = 0; ///< changes when all listeners are removed
    unsigned m_walks = 0;
    std::vector<std::unique_ptr<Entry>> m_retired;
};

} // namespace onlinemanager
