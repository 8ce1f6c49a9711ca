#pragma once

#include "host/shell/ShellEvent.h"

#include <cstdint>
#include <mutex>
#include <vector>

namespace host
{

/// Takes in what happens on other threads, and wakes the shell's own thread, which waits for descriptors.
class ShellInbox
{
public:
    /// `Error` when the system has no descriptor left.
    ShellInbox();
    ~ShellInbox();
    ShellInbox(const ShellInbox&) = delete;
    ShellInbox& operator=(const ShellInbox&) = delete;

    /// [any] Numbers the event and puts it behind the others.
    void Push(ShellEvent event);

    /// [host] Everything that has come since the last call, the oldest first.
    std::vector<ShellEvent> TakeAll();

    /// [host] The number that the next event will have.
    uint64_t NextNumber() const;

    /// [host] Readable while something is there to take.
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
