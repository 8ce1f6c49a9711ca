#include "host/console/EventJson.h"

#include "host/console/JsonLine.h"

namespace host
{

using namespace onlinehost;

namespace
{

void AddTunnel(JsonLine& line, const Event& event)
{
    line.Text("tunnel", event.tunnel == onlinemanager::TUNNEL_TYPE_GW ? "gateway" : "paas");
}

void AddCode(JsonLine& line, const Event& event)
{
    line.Number("code", event.code).Text("codeText", CodeText(event.code));
}

void AddInvitation(JsonLine& line, const Event& event)
{
    line.Number("user", event.userId).Number("invitation", event.requestId);
}

void AddReason(JsonLine& line, uint32_t reason, std::string_view text)
{
    line.Number("reason", reason).Text("reasonText", text);
}

void AddData(JsonLine& line, const onlinemanager::InviteData& data)
{
    line.Begin("data")
        .Number("inviteCode", data.inviteCode)
        .Number("roomCreateTime", static_cast<int64_t>(data.roomCreateTime))
        .Number("roomCompanyId", data.roomCompanyId)
        .Flag("isForce", data.isForce)
        .Number("proxyUserId", data.proxyUserId)
        .Number("calloutType", data.calloutType)
        .Number("meetingId", data.meetingId)
        .Number("userId", data.userId)
        .Text("userName", data.userName)
        .Text("terminal", data.terminal)
        .End();
}

void AddFields(JsonLine& line, const Event& event)
{
    switch (event.kind)
    {
    case EventKind::LoginSuccess:
    case EventKind::AVQualitySubscribed:
    case EventKind::AVQualityUnsubscribed:
        break;
    case EventKind::Offline:
        AddCode(line, event);
        line.Flag("wasLoggedIn", event.wasLoggedIn);
        break;
    case EventKind::ReadyReconnect:
    case EventKind::ReconnectStart:
    case EventKind::ReconnectSucess:
        AddTunnel(line, event);
        break;
    case EventKind::ReconnectFail:
    case EventKind::JoinMeetingResult:
    case EventKind::LeaveMeetingResult:
        AddTunnel(line, event);
        AddCode(line, event);
        break;
    case EventKind::UserJoined:
    case EventKind::UserLeaved:
        AddTunnel(line, event);
        line.Number("user", event.userId);
        break;
    case EventKind::UserStatusChanged:
        line.Numbers("users", event.userIds);
        break;
    case EventKind::UserStatusRefreshed:
        line.Number("request", event.requestId);
        AddCode(line, event);
        break;
    case EventKind::InviteIncome:
        AddInvitation(line, event);
        AddData(line, event.invitation);
        break;
    case EventKind::InviteAccepted:
        AddInvitation(line, event);
        break;
    case EventKind::InviteRejected:
        AddInvitation(line, event);
        AddReason(line, event.reason, RejectReasonText(event.reason));
        break;
    case EventKind::InviteAbandoned:
        AddInvitation(line, event);
        AddReason(line, event.reason, AbandonReasonText(event.reason));
        break;
    }
}

} // namespace

std::string EventJson(std::string_view device, const Event& event)
{
    JsonLine line("event", event.time);
    line.Text("source", device).Text("event", EventName(event.kind));
    AddFields(line, event);
    return line.Text("text", Describe(event)).Take();
}

} // namespace host
