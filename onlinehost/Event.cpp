#include "onlinehost/Event.h"

#include "avcore/ZolTypes.h"
#include "onlinehost/Text.h"
#include "onlinemanager/IUserOnline.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace onlinehost
{

namespace
{

constexpr std::pair<EventKind, std::string_view> kNames[] = {
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

constexpr std::pair<int32_t, std::string_view> kCodes[] = {
    {onlinemanager::ERR_SUCCESS, "success"},
    {avcore::ZOL_PORT_NOT_LOGGED_IN, "not logged in"},
    {avcore::ZOL_PORT_USER_OFFLINE, "the user is offline"},
    {avcore::ZOL_PORT_TOKEN_REFUSED, "the token is not valid"},
    {avcore::ZOL_PORT_UNREACHABLE, "the server does not answer"},
    {avcore::ZOL_PORT_CONNECTION_LOST, "the connection was lost during the login"},
    {avcore::ZOL_PORT_NO_CP_ADDRESS, "the server gave no address"},
    {avcore::ZOL_PORT_LOGIN_CONFLICT, "logged in on another device"},
    {avcore::ZOL_PORT_REFUSED, "refused by the service"},
    {avcore::ZOL_PORT_NOT_INVITED, "the user was not invited"},
    {onlinemanager::ERR_JOIN_ABORTED_BY_RECONNECT, "the connection was lost during the join"},
    {onlinemanager::ERR_LOGIN_CONFLICT, "logged out by a login on another device"},
    {onlinemanager::ERR_RECONNECT_STOPPED, "reconnection given up"},
};

template <typename Table, typename Key>
std::string_view LookUp(const Table& table, Key key, std::string_view otherwise)
{
    const auto found =
        std::find_if(std::begin(table), std::end(table), [key](const auto& known) { return known.first == key; });
    return found == std::end(table) ? otherwise : found->second;
}

std::string Over(onlinemanager::TunnelType tunnel)
{
    return tunnel == onlinemanager::TUNNEL_TYPE_GW ? " over the gateway" : "";
}

std::string User(const Event& event)
{
    return "user " + std::to_string(event.userId);
}

std::string Invitation(const Event& event)
{
    return "invitation " + std::to_string(event.requestId);
}

std::string DescribeOffline(const Event& event)
{
    if (event.wasLoggedIn)
    {
        return "went offline: " + CodeMeaning(event.code);
    }
    // `IPaasOnline::TriggerNotify` sends this code while no login stands.
    if (event.code == avcore::ZOL_PORT_NOT_LOGGED_IN)
    {
        return "is not logged in";
    }
    return event.code == onlinemanager::ERR_SUCCESS ? "stopped logging in"
                                                    : "could not log in: " + CodeMeaning(event.code);
}

std::string DescribeChange(const Event& event)
{
    if (event.userIds.empty())
    {
        return "learns that no user has changed";
    }
    // The module lists ids in the order of their texts.
    std::vector<unsigned> users = event.userIds;
    std::sort(users.begin(), users.end());
    return "sees " + CountText(users.size(), "user") + " change: " + ListIds(users);
}

std::string DescribeRejection(const Event& event)
{
    switch (event.reason)
    {
    case avcore::ZOL_INVITE_REJECT_DECLINED:
        return "learns that " + User(event) + " declined " + Invitation(event);
    case avcore::ZOL_INVITE_REJECT_OFFLINE:
        return "learns that " + User(event) + " is offline and did not get " + Invitation(event);
    default:
        return "learns that " + User(event) + " did not accept " + Invitation(event) + ", reason " +
               std::to_string(event.reason) + " (unknown reason)";
    }
}

std::string DescribeEndOfInvitation(const Event& event)
{
    using onlinemanager::INVITE_ABANDONED_REJECTED;
    const std::string invitation = Invitation(event) + " from " + User(event);
    if (event.reason >= INVITE_ABANDONED_REJECTED)
    {
        const uint32_t reason = event.reason - INVITE_ABANDONED_REJECTED;
        const bool isPlain = reason == onlinemanager::REJECT_INVITATION_DECLINED;
        return "declined " + invitation + (isPlain ? "" : ", reason " + std::to_string(reason));
    }
    switch (event.reason)
    {
    case avcore::ZOL_INVITE_CANCEL_BY_INVITER:
        return "learns that " + User(event) + " withdrew " + Invitation(event);
    case avcore::ZOL_INVITE_CANCEL_ANSWERED_ELSEWHERE:
        return "learns that another terminal answered " + invitation;
    default:
        return "learns that " + invitation + " is closed, reason " + std::to_string(event.reason) + " (unknown reason)";
    }
}

} // namespace

std::string_view EventName(EventKind kind)
{
    return LookUp(kNames, kind, "unknown");
}

std::vector<std::string> EventNames()
{
    std::vector<std::string> names;
    for (const auto& known : kNames)
    {
        names.emplace_back(known.second);
    }
    return names;
}

std::string_view CodeText(int32_t code)
{
    return LookUp(kCodes, code, "unknown code");
}

std::string CodeMeaning(int32_t code)
{
    if (code == onlinemanager::ERR_SUCCESS)
    {
        return "success";
    }
    const std::string_view text = LookUp(kCodes, code, "");
    return std::to_string(code) + (text.empty() ? "" : " (" + std::string(text) + ")");
}

std::string_view RejectReasonText(uint32_t reason)
{
    switch (reason)
    {
    case avcore::ZOL_INVITE_REJECT_DECLINED:
        return "declined by the user";
    case avcore::ZOL_INVITE_REJECT_OFFLINE:
        return "the user is offline";
    default:
        return "unknown reason";
    }
}

std::string_view AbandonReasonText(uint32_t reason)
{
    if (reason >= onlinemanager::INVITE_ABANDONED_REJECTED)
    {
        return "declined together with all others";
    }
    switch (reason)
    {
    case avcore::ZOL_INVITE_CANCEL_BY_INVITER:
        return "withdrawn by the inviter";
    case avcore::ZOL_INVITE_CANCEL_ANSWERED_ELSEWHERE:
        return "answered on another terminal";
    default:
        return "unknown reason";
    }
}

std::string Describe(const Event& event)
{
    switch (event.kind)
    {
    case EventKind::LoginSuccess:
        return "logged in";
    case EventKind::Offline:
        return DescribeOffline(event);
    case EventKind::ReadyReconnect:
        return "lost the connection" + Over(event.tunnel);
    case EventKind::ReconnectStart:
        return "reconnects" + Over(event.tunnel);
    case EventKind::ReconnectSucess:
        return "is connected again" + Over(event.tunnel);
    case EventKind::ReconnectFail:
        return "did not get the connection back" + Over(event.tunnel) + ": " + CodeMeaning(event.code);
    case EventKind::JoinMeetingResult:
        return "joined the meeting" + Over(event.tunnel) + ": " + CodeMeaning(event.code);
    case EventKind::LeaveMeetingResult:
        return "left the meeting" + Over(event.tunnel) + ": " + CodeMeaning(event.code);
    case EventKind::UserJoined:
        return "sees " + User(event) + " join the meeting" + Over(event.tunnel);
    case EventKind::UserLeaved:
        return "sees " + User(event) + " leave the meeting" + Over(event.tunnel);
    case EventKind::UserStatusChanged:
        return DescribeChange(event);
    case EventKind::UserStatusRefreshed:
        return "has finished refresh " + std::to_string(event.requestId) + ": " + CodeMeaning(event.code);
    case EventKind::InviteIncome:
        return "is invited by " + User(event) + " (" + Printable(event.invitation.userName) + "), " +
               Invitation(event) + ", meeting " + std::to_string(event.invitation.meetingId);
    case EventKind::InviteAccepted:
        return "learns that " + User(event) + " accepted " + Invitation(event);
    case EventKind::InviteRejected:
        return DescribeRejection(event);
    case EventKind::InviteAbandoned:
        return DescribeEndOfInvitation(event);
    case EventKind::AVQualitySubscribed:
        return "is asked for quality reports";
    case EventKind::AVQualityUnsubscribed:
        return "is not asked for quality reports any more";
    }
    return "unknown event";
}

} // namespace onlinehost
