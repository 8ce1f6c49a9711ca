#include "host/shell/ShellEvent.h"

#include "onlinehost/Text.h"

#include <algorithm>
#include <utility>

namespace host
{

using namespace onlinehost;

namespace
{

constexpr std::pair<EventKind, const char*> kNames[] = {
    {EventKind::LoginSuccess, "login"},          {EventKind::Offline, "offline"},
    {EventKind::ReadyReconnect, "lost"},         {EventKind::ReconnectStart, "reconnecting"},
    {EventKind::ReconnectSucess, "back"},        {EventKind::ReconnectFail, "given-up"},
    {EventKind::JoinMeetingResult, "joined"},    {EventKind::LeaveMeetingResult, "left"},
    {EventKind::UserJoined, "user-joined"},      {EventKind::UserLeaved, "user-left"},
    {EventKind::UserStatusChanged, "changed"},   {EventKind::UserStatusRefreshed, "refreshed"},
    {EventKind::InviteIncome, "invited"},        {EventKind::InviteAccepted, "accepted"},
    {EventKind::InviteRejected, "declined"},     {EventKind::InviteAbandoned, "closed"},
    {EventKind::AVQualitySubscribed, "measure"}, {EventKind::AVQualityUnsubscribed, "measure-end"},
};

} // namespace

std::string ShellEventName(EventKind kind)
{
    const auto* const found =
        std::find_if(std::begin(kNames), std::end(kNames), [kind](const auto& known) { return known.first == kind; });
    return found == std::end(kNames) ? "unknown" : found->second;
}

std::vector<std::string> ShellEventNames()
{
    std::vector<std::string> names;
    for (const auto& known : kNames)
    {
        names.emplace_back(known.second);
    }
    names.insert(names.end(), {kMessageEvent, kReportEvent, kNoticeEvent});
    return names;
}

ShellEvent MakeShellEvent(const std::string& terminal, Event event)
{
    ShellEvent made{.source = terminal, .name = ShellEventName(event.kind), .text = Describe(event)};
    made.text += event.userIds.empty() ? "" : ": " + ListIds(event.userIds);
    made.event = std::move(event);
    return made;
}

bool Concerns(const ShellEvent& event, uint32_t userId)
{
    const std::vector<unsigned>& users = event.event.userIds;
    return event.event.userId == userId || std::find(users.begin(), users.end(), userId) != users.end();
}

} // namespace host
