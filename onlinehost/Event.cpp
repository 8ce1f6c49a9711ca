#include "onlinehost/Event.h"

#include "avcore/ZolTypes.h"
#include "onlinehost/Text.h"

namespace onlinehost
{

namespace
{

const char* KnownMeaning(int32_t code)
{
    switch (code)
    {
    case avcore::ZOL_PORT_NOT_LOGGED_IN:
        return "not logged in";
    case avcore::ZOL_PORT_USER_OFFLINE:
        return "the user is offline";
    case avcore::ZOL_PORT_TOKEN_REFUSED:
        return "the token is not valid";
    case avcore::ZOL_PORT_UNREACHABLE:
        return "the server does not answer";
    case avcore::ZOL_PORT_CONNECTION_LOST:
        return "the connection was lost during the login";
    case avcore::ZOL_PORT_NO_CP_ADDRESS:
        return "the server gave no address";
    case avcore::ZOL_PORT_LOGIN_CONFLICT:
        return "logged in on another device";
    case avcore::ZOL_PORT_REFUSED:
        return "refused by the service";
    case avcore::ZOL_PORT_NOT_INVITED:
        return "the user was not invited";
    case onlinemanager::ERR_JOIN_ABORTED_BY_RECONNECT:
        return "the connection was lost during the join";
    case onlinemanager::ERR_LOGIN_CONFLICT:
        return "logged out by a login on another device";
    case onlinemanager::ERR_RECONNECT_STOPPED:
        return "reconnection given up";
    default:
        return nullptr;
    }
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

} // namespace

std::string CodeMeaning(int32_t code)
{
    if (code == onlinemanager::ERR_SUCCESS)
    {
        return "success";
    }
    const char* meaning = KnownMeaning(code);
    return std::to_string(code) + (meaning != nullptr ? " (" + std::string(meaning) + ")" : "");
}

std::string Describe(const Event& event)
{
    switch (event.kind)
    {
    case EventKind::LoginSuccess:
        return "logged in";
    case EventKind::Offline:
        return "went offline: " + CodeMeaning(event.code);
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
        return "sees the status of " + CountText(event.userIds.size(), "user") + " change";
    case EventKind::UserStatusRefreshed:
        return "has finished refresh " + std::to_string(event.requestId) + ": " + CodeMeaning(event.code);
    case EventKind::InviteIncome:
        return "is invited by " + User(event) + " (" + Printable(event.invitation.userName) + "), " +
               Invitation(event) + ", meeting " + std::to_string(event.invitation.meetingId);
    case EventKind::InviteAccepted:
        return "learns that " + User(event) + " accepted " + Invitation(event);
    case EventKind::InviteRejected:
        return "learns that " + User(event) + " declined " + Invitation(event) + ", reason " +
               std::to_string(event.reason);
    case EventKind::InviteAbandoned:
        return "has " + Invitation(event) + " of " + User(event) + " closed, reason " + std::to_string(event.reason);
    case EventKind::AVQualitySubscribed:
        return "is asked for quality reports";
    case EventKind::AVQualityUnsubscribed:
        return "is not asked for quality reports any more";
    }
    return "unknown event";
}

} // namespace onlinehost
