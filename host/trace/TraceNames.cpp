#include "host/trace/TraceNames.h"

#include "onlinehost/Event.h"
#include "onlinehost/Text.h"
#include "onlinemanager/IOnlineManager.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <string_view>

namespace host
{

using namespace onlinehost;

using namespace avcore;
using namespace onlinemanager;

namespace
{

/// Leaves out an empty meaning.
TraceCode Code(int64_t value, std::string_view meaning)
{
    const std::string number = std::to_string(value);
    return {value, meaning.empty() ? number : number + " (" + std::string(meaning) + ")"};
}

struct NamedGuid
{
    const GUID* guid;
    const char* name;
};

constexpr std::array kGuids{
    NamedGuid{&IID_IUnknown, "IUnknown"},
    NamedGuid{&CLSID_OnlineManager, "OnlineManager"},
    NamedGuid{&IID_OnlineManager, "IOnlineManager"},
    NamedGuid{&CLSID_ZolConnection, "ZolConnection"},
    NamedGuid{&IID_IZolConnection, "IZolConnection"},
    NamedGuid{&IID_IZolOnline, "IZolOnline"},
    NamedGuid{&IID_IZolTMsg, "IZolTMsg"},
    NamedGuid{&IID_IZolMdsClient, "IZolMdsClient"},
};

constexpr std::array kFailures{
    std::pair{E_FAIL, "E_FAIL"},
    std::pair{E_NOINTERFACE, "E_NOINTERFACE"},
    std::pair{E_POINTER, "E_POINTER"},
    std::pair{E_INVALIDARG, "E_INVALIDARG"},
    std::pair{E_OUTOFMEMORY, "E_OUTOFMEMORY"},
};

std::string FailureText(int64_t value)
{
    const auto found =
        std::find_if(kFailures.begin(), kFailures.end(), [value](const auto& each) { return each.first == value; });
    const std::string number = HexText(static_cast<uint32_t>(value));
    return found != kFailures.end() ? number + " (" + found->second + ")" : number;
}

/// Whether the operation asks if a lost connection is to be restored.
bool IsReconnectionQuestion(std::string_view name)
{
    return name == "IReconnectionStrategy::CheckReconnect" || name == "IZolConnectionListener::OnReconnectStart";
}

std::string_view ReconnectionMeaning(int64_t answer)
{
    switch (answer)
    {
    case ZOL_RECONNECT_UNDECIDED:
        return "undecided";
    case ZOL_RECONNECT_GO_ON:
        return "reconnect";
    case ZOL_RECONNECT_STOP:
        return "stop";
    default:
        return "";
    }
}

std::string_view OperationOf(std::string_view name)
{
    const size_t colons = name.rfind("::");
    return colons == std::string_view::npos ? name : name.substr(colons + 2);
}

bool Contains(std::string_view text, std::string_view part)
{
    return text.find(part) != std::string_view::npos;
}

TraceSubject SubjectOf(std::string_view text)
{
    if (Contains(text, "TMsg"))
    {
        return TraceSubject::Messages;
    }
    if (Contains(text, "Mds"))
    {
        return TraceSubject::Quality;
    }
    if (text.starts_with("IMeetingTunnel") || Contains(text, "Group") || Contains(text, "LoginOldGw"))
    {
        return TraceSubject::Meetings;
    }
    if (text.starts_with("IUserOnline") || text.starts_with("IZolOnline"))
    {
        return Contains(OperationOf(text), "Invite") ? TraceSubject::Invitations : TraceSubject::Presence;
    }
    return TraceSubject::Login;
}

} // namespace

TraceCode MeaningOf(ErrCode code)
{
    return {code, CodeMeaning(code)};
}

TraceCode MeaningOf(ZolPortErrCode code)
{
    return {code, CodeMeaning(code)};
}

TraceCode MeaningOf(ZolInviteRejectReason reason)
{
    return Code(reason, RejectReasonText(static_cast<uint32_t>(reason)));
}

TraceCode MeaningOf(InviteAbandonedReason reason)
{
    return Code(reason, AbandonReasonText(reason));
}

TraceCode MeaningOf(ZolInviteCancelReason reason)
{
    return Code(reason, AbandonReasonText(static_cast<uint32_t>(reason)));
}

TraceCode MeaningOf(RejectInvitationReason reason)
{
    return Code(reason, reason == REJECT_INVITATION_DECLINED ? "declined" : "");
}

TraceCode MeaningOf(TunnelType type)
{
    switch (type)
    {
    case TUNNEL_TYPE_PAAS:
        return Code(type, "online session");
    case TUNNEL_TYPE_GW:
        return Code(type, "gateway");
    default:
        return Code(type, "");
    }
}

TraceCode MeaningOf(ConnectProperty key)
{
    switch (key)
    {
    case CONNECT_PROPERTY_ONLINE:
        return Code(key, "online");
    case CONNECT_PROPERTY_CONFLICT_CUSTOM_STATE:
        return Code(key, "custom state of the other device");
    case CONNECT_PROPERTY_CONFLICT_DEVICE_ID:
        return Code(key, "id of the other device");
    default:
        return Code(key, "");
    }
}

TraceCode MeaningOfStatus(int32_t status)
{
    return Code(status, status == 1 ? "online" : status == 0 ? "offline" : "");
}

std::string GuidName(const GUID& guid)
{
    const auto found =
        std::find_if(kGuids.begin(), kGuids.end(), [&guid](const NamedGuid& each) { return *each.guid == guid; });
    return found != kGuids.end() ? found->name : GuidText(guid);
}

void SetResult(TraceResult& result, const char* name, int64_t value)
{
    if (IsReconnectionQuestion(name))
    {
        result.text = Code(value, ReconnectionMeaning(value)).text;
        result.isPlain = false;
        return;
    }
    result.isFailure = value < 0;
    result.text = result.isFailure ? FailureText(value) : std::to_string(value);
}

const std::vector<std::string>& TraceSubjectNames()
{
    static const std::vector<std::string> kNames{"login", "presence", "invitations", "meetings", "messages", "quality"};
    return kNames;
}

std::optional<TraceSubject> FindTraceSubject(const std::string& name)
{
    const std::vector<std::string>& names = TraceSubjectNames();
    const auto found = std::find(names.begin(), names.end(), name);
    return found != names.end() ? std::optional(static_cast<TraceSubject>(found - names.begin())) : std::nullopt;
}

bool BelongsTo(const char* name, TraceSubject subject)
{
    return SubjectOf(name) == subject || (subject == TraceSubject::Meetings && Contains(name, "Reconnect"));
}

bool IsSetUp(const char* name)
{
    static constexpr std::array<std::string_view, 20> kSetUp{
        "AddListener",    "AddNotify",        "CreateComponent",         "Destroy",
        "GetComponent",   "GetMeetingTunnel", "GetPaasMdsClient",        "GetPaasOnline",
        "GetPaasTMsg",    "GetUserOnline",    "GetZolConnectionForAVMP", "InitMdsClient",
        "InitModel",      "Initialize",       "QueryInterface",          "RemoveAllNotify",
        "RemoveListener", "RemoveNotify",     "SetReconnectionStrategy", "UninitModel",
    };
    const std::string_view operation = OperationOf(name);
    return operation == "WDllCreateComponent" || std::find(kSetUp.begin(), kSetUp.end(), operation) != kSetUp.end();
}

bool IsQuery(const char* name)
{
    static constexpr std::array<std::string_view, 3> kQueries{"GetConnectProperty", "GetSelfCustomInfo",
                                                              "QueryUserStatus"};
    return std::find(kQueries.begin(), kQueries.end(), OperationOf(name)) != kQueries.end();
}

} // namespace host
