#include "host/shell/ShellEvent.h"

#include <algorithm>
#include <utility>

namespace host
{

using namespace onlinehost;

std::vector<std::string> ShellEventNames()
{
    std::vector<std::string> names = EventNames();
    names.insert(names.end(), {kMessageEvent, kReportEvent, kNoticeEvent});
    return names;
}

ShellEvent MakeShellEvent(const std::string& terminal, Event event)
{
    ShellEvent made{.source = terminal, .name = std::string(EventName(event.kind)), .text = Describe(event)};
    made.event = std::move(event);
    return made;
}

bool Concerns(const ShellEvent& event, uint32_t userId)
{
    const std::vector<unsigned>& users = event.event.userIds;
    return event.event.userId == userId || std::find(users.begin(), users.end(), userId) != users.end();
}

} // namespace host
