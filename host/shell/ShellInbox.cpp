#include "host/shell/ShellInbox.h"

#include "onlinehost/Error.h"

#include <cerrno>
#include <cstring>
#include <sys/eventfd.h>
#include <unistd.h>
#include <utility>

namespace host
{

using namespace onlinehost;

ShellInbox::ShellInbox() : m_descriptor(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK))
{
    if (m_descriptor < 0)
    {
        throw Error(std::string("no event descriptor: ") + std::strerror(errno));
    }
}

ShellInbox::~ShellInbox()
{
    close(m_descriptor);
}

void ShellInbox::Push(ShellEvent event)
{
    const std::lock_guard lock(m_mutex);
    event.number = m_nextNumber++;
    m_events.push_back(std::move(event));
    eventfd_write(m_descriptor, 1);
}

std::vector<ShellEvent> ShellInbox::TakeAll()
{
    const std::lock_guard lock(m_mutex);
    eventfd_t count = 0;
    eventfd_read(m_descriptor, &count);
    return std::exchange(m_events, {});
}

uint64_t ShellInbox::NextNumber() const
{
    const std::lock_guard lock(m_mutex);
    return m_nextNumber;
}

} // namespace host
