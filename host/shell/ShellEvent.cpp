#include "host/shell/ShellEvent.h"

#include "host/console/EventJson.h"
#include "host/console/JsonLine.h"

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

bool IsChange(const ShellEvent& event)
{
    return event.name == EventName(EventKind::UserStatusChanged);
}

std::string ShellEventJson(const ShellEvent& event)
{
    const bool isNotice = event.name == kNoticeEvent;
    if (!isNotice && event.name != kMessageEvent && event.name != kReportEvent)
    {
        return EventJson(event.source, event.event);
    }
    JsonLine line("event", event.event.time);
    line.Text("source", event.source).Text("event", event.name);
    if (!isNotice)
    {
        line.Number("user", event.event.userId).Text("content", event.content);
    }
    return line.Text("text", event.text).Take();
}

bool Concerns(const ShellEvent& event, uint32_t userId)
{
    const std::vector<unsigned>& users = event.event.userIds;
    return event.event.userId == userId || std::find(users.begin(), users.end(), userId) != users.end();
}

} // namespace host
