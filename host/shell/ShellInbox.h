#pragma once

#include "host/shell/ShellEvent.h"

#include <cstdint>
#include <mutex>
#include <vector>

namespace host
{

/// A queue from other threads to the shell's thread. Its descriptor wakes the shell's thread.
class ShellInbox
{
public:
    /// `Error` when the system has no descriptor left.
    ShellInbox();
    ~ShellInbox();
    ShellInbox(const ShellInbox&) = delete;
    ShellInbox& operator=(const ShellInbox&) = delete;

    /// [any] Numbers the event and adds it at the end.
    void Push(ShellEvent event);

    /// [host] Everything that has come since the last call, the oldest first.
    std::vector<ShellEvent> TakeAll();

    /// [host] The number that the next event will have.
    uint64_t NextNumber() const;

    /// [host] A descriptor that is readable while the queue has events.
    int Descriptor() const
    {
        return m_descriptor;
    }

private:
    const int m_descriptor;
    mutable std::mutex m_mutex;
    std::vector<ShellEvent> m_events;
    uint64_t m_nextNumber = 0;
};

} // namespace host
