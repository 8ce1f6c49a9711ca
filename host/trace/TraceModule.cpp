#include "host/trace/TraceModule.h"

#include "common/frameworksdk/IHttpClient.h"
#include "host/trace/TraceProxy.h"
#include "onlinehost/Text.h"
#include "onlinemanager/IMeetingTunnel.h"
#include "onlinemanager/IPaasMdsClient.h"
#include "onlinemanager/IPaasOnline.h"
#include "onlinemanager/IPaasTMsg.h"
#include "onlinemanager/IReconnection.h"
#include "onlinemanager/IUserOnline.h"

namespace host
{

using namespace onlinehost;

using namespace onlinemanager;

namespace
{

constexpr size_t kIdsShown = 20;

std::string ListText(const std::vector<unsigned>& ids)
{
    std::string text = std::to_string(ids.size()) + ":";
    for (size_t index = 0; index < ids.size() && index < kIdsShown; ++index)
    {
        text += " " + std::to_string(ids[index]);
    }
    return ids.size() > kIdsShown ? text + " ..." : text;
}

struct ModuleContext;

template <typename Interface>
class ModuleProxy : public TraceProxy<Interface, ModuleContext>
{
public:
    using TraceProxy<Interface, ModuleContext>::TraceProxy;

protected:
    ~ModuleProxy() = default;

    TraceSpan Call(const char* name, TraceArguments arguments = {}, size_t answers = 0)
    {
        return this->Record(Crossing::HostCall, name, arguments, answers);
    }

    TraceSpan Notification(const char* name, TraceArguments arguments = {})
    {
        return this->Record(Crossing::Notification, name, arguments);
    }

    using TraceProxy<Interface, ModuleContext>::m_context;
    using TraceProxy<Interface, ModuleContext>::m_target;
};

class TracedHttpNotify;
class TracedHttpClient;
class TracedMdsNotify;
class TracedMds;
class TracedOnlineNotify;
class TracedOnline;
class TracedStrategy;
class TracedTMsg;
class TracedTunnelNotify;
class TracedTunnel;
class TracedUsersNotify;
class TracedUsers;

template <typename Interface, typename Proxy>
using ModuleProxies = TraceProxies<Interface, Proxy, ModuleContext>;

/// One component and all that stands around it.
struct ModuleContext
{
    ModuleContext(Trace& usedTrace, const std::string& deviceName) : trace(usedTrace), device(deviceName) {}

    std::string TriggerKey() const
    {
        return "trigger " + device;
    }

    Trace& trace;
    const std::string device;
    ModuleProxies<IHttpResponseNotify, TracedHttpNotify> httpNotifies{*this};
    ModuleProxies<IHttpClient, TracedHttpClient> httpClients{*this};
    ModuleProxies<IPaasMdsClientNotify, TracedMdsNotify> mdsNotifies{*this};
    ModuleProxies<IPaasMdsClient, TracedMds> mdsClients{*this};
    ModuleProxies<IPaasOnlineNotify, TracedOnlineNotify> onlineNotifies{*this};
    ModuleProxies<IPaasOnline, TracedOnline> onlines{*this};
    ModuleProxies<IReconnectionStrategy, TracedStrategy> strategies{*this};
    ModuleProxies<IPaasTMsg, TracedTMsg> messages{*this};
    ModuleProxies<IMeetingTunnelNotify, TracedTunnelNotify> tunnelNotifies{*this};
    ModuleProxies<IMeetingTunnel, TracedTunnel> tunnels{*this};
    ModuleProxies<IUserOnlineNotify, TracedUsersNotify> usersNotifies{*this};
    ModuleProxies<IUserOnline, TracedUsers> users{*this};
};

class TracedHttpNotify final : public ModuleProxy<IHttpResponseNotify>
{
public:
    using ModuleProxy::ModuleProxy;

    void OnHeaderRespond(unsigned int id, char* data, unsigned int len) override
    {
        const TraceSpan span = Record(Crossing::HttpEvent, "IHttpResponseNotify::OnHeaderRespond",
                                      {{"id", id}, {"data", std::string(data, len)}});
        m_target.OnHeaderRespond(id, data, len);
    }

    void OnDataRespond(unsigned int id, char* data, unsigned int len) override
    {
        const TraceSpan span =
            Record(Crossing::HttpEvent, "IHttpResponseNotify::OnDataRespond", {{"id", id}, {"len", len}});
        m_target.OnDataRespond(id, data, len);
    }

    void OnCompleteRespond(unsigned int id, unsigned int code, char* data, unsigned int len) override
    {
        TraceSpan span = Record(Crossing::HttpEvent, "IHttpResponseNotify::OnCompleteRespond",
                                {{"id", id}, {"code", code}, {"len", len}});
        span.Answers(KeyOf(m_context, id));
        m_target.OnCompleteRespond(id, code, data, len);
    }

    static std::string KeyOf(const ModuleContext& context, unsigned int id)
    {
        return "http " + context.device + " " + std::to_string(id);
    }
};

class TracedHttpClient final : public ModuleProxy<IHttpClient>
{
public:
    using ModuleProxy::ModuleProxy;

    HRESULT QueryInterface(const GUID& iid, void** out) override
    {
        return m_target.QueryInterface(iid, out);
    }
    uint32_t AddRef() override
    {
        return m_target.AddRef();
    }
    uint32_t Release() override
    {
        return m_target.Release();
    }
    void Reserved3() override
    {
        m_target.Reserved3();
    }
    void Reserved4() override
    {
        m_target.Reserved4();
    }
    void Reserved5() override
    {
        m_target.Reserved5();
    }
    void Reserved6() override
    {
        m_target.Reserved6();
    }
    void Reserved7() override
    {
        m_target.Reserved7();
    }
    void Reserved8() override
    {
        m_target.Reserved8();
    }

    uint32_t Request(const HttpRequest* request, IHttpResponseNotify* notify,
                     WBASELIB::TStringBase<char>* text) override
    {
        TraceSpan span = Record(Crossing::HttpCall, "IHttpClient::Request",
                                {{"method", request->method == kHttpMethodPost ? "POST" : "GET"},
                                 {"url", TraceUrl(request->url)},
                                 {"body", TraceText(request->body)}},
                                1);
        const uint32_t id = m_target.Request(request, m_context.httpNotifies.Of(notify), text);
        span.WillBeAnswered(TracedHttpNotify::KeyOf(m_context, id));
        return span.Result(id);
    }
};

class TracedStrategy final : public ModuleProxy<IReconnectionStrategy>
{
public:
    using ModuleProxy::ModuleProxy;

    int32_t CheckReconnect() override
    {
        TraceSpan span = Notification("IReconnectionStrategy::CheckReconnect");
        return span.Result(m_target.CheckReconnect());
    }
};

class TracedOnlineNotify final : public ModuleProxy<IPaasOnlineNotify>
{
public:
    using ModuleProxy::ModuleProxy;

    void OnReadyReconnect(TunnelType type) override
    {
        const TraceSpan span = Notification("IPaasOnlineNotify::OnReadyReconnect", {{"type", type}});
        m_target.OnReadyReconnect(type);
    }

    void OnReconnectStart(TunnelType type) override
    {
        const TraceSpan span = Notification("IPaasOnlineNotify::OnReconnectStart", {{"type", type}});
        m_target.OnReconnectStart(type);
    }

    void OnReconnectSucess(TunnelType type) override
    {
        const TraceSpan span = Notification("IPaasOnlineNotify::OnReconnectSucess", {{"type", type}});
        m_target.OnReconnectSucess(type);
    }

    void OnReconnectFail(TunnelType type, ErrCode code) override
    {
        const TraceSpan span =
            Notification("IPaasOnlineNotify::OnReconnectFail", {{"type", type}, {"code", int32_t{code}}});
        m_target.OnReconnectFail(type, code);
    }

    void OnLoginSuccess() override
    {
        TraceSpan span = Notification("IPaasOnlineNotify::OnLoginSuccess");
        span.AnswersIfOutermost(m_context.TriggerKey());
        m_target.OnLoginSuccess();
    }

    void OnOffline(ErrCode code) override
    {
        TraceSpan span = Notification("IPaasOnlineNotify::OnOffline", {{"code", int32_t{code}}});
        span.AnswersIfOutermost(m_context.TriggerKey());
        m_target.OnOffline(code);
    }
};

class TracedTunnelNotify final : public ModuleProxy<IMeetingTunnelNotify>
{
public:
    using ModuleProxy::ModuleProxy;

    void OnJoinMeetingResult(ErrCode code) override
    {
        const TraceSpan span = Notification("IMeetingTunnelNotify::OnJoinMeetingResult", {{"code", int32_t{code}}});
        m_target.OnJoinMeetingResult(code);
    }

    void OnLeaveMeetingResult(ErrCode code) override
    {
        const TraceSpan span = Notification("IMeetingTunnelNotify::OnLeaveMeetingResult", {{"code", int32_t{code}}});
        m_target.OnLeaveMeetingResult(code);
    }

    void OnUserJoined(unsigned int userId) override
    {
        const TraceSpan span = Notification("IMeetingTunnelNotify::OnUserJoined", {{"userId", userId}});
        m_target.OnUserJoined(userId);
    }

    void OnUserLeaved(unsigned int userId) override
    {
        const TraceSpan span = Notification("IMeetingTunnelNotify::OnUserLeaved", {{"userId", userId}});
        m_target.OnUserLeaved(userId);
    }
};

class TracedUsersNotify final : public ModuleProxy<IUserOnlineNotify>
{
public:
    using ModuleProxy::ModuleProxy;

    void OnUserStatusChanged(const std::vector<unsigned>& userIds) override
    {
        const TraceSpan span = Notification("IUserOnlineNotify::OnUserStatusChanged", {{"userIds", ListText(userIds)}});
        m_target.OnUserStatusChanged(userIds);
    }

    void OnUserStatusRefreshed(unsigned requestId, avcore::ZolPortErrCode code) override
    {
        const TraceSpan span = Notification("IUserOnlineNotify::OnUserStatusRefreshed",
                                            {{"requestId", requestId}, {"code", int32_t{code}}});
        m_target.OnUserStatusRefreshed(requestId, code);
    }

    void OnInviteIncome(unsigned userId, unsigned inviteId, const InviteData& data) override
    {
        const TraceSpan span = Notification(
            "IUserOnlineNotify::OnInviteIncome",
            {{"userId", userId}, {"inviteId", inviteId}, {"userName", data.userName}, {"meetingId", data.meetingId}});
        m_target.OnInviteIncome(userId, inviteId, data);
    }

    void OnInviteAccepted(unsigned userId, unsigned inviteId) override
    {
        const TraceSpan span =
            Notification("IUserOnlineNotify::OnInviteAccepted", {{"userId", userId}, {"inviteId", inviteId}});
        m_target.OnInviteAccepted(userId, inviteId);
    }

    void OnInviteRejected(unsigned userId, unsigned inviteId, avcore::ZolInviteRejectReason reason) override
    {
        const TraceSpan span = Notification("IUserOnlineNotify::OnInviteRejected",
                                            {{"userId", userId}, {"inviteId", inviteId}, {"reason", int32_t{reason}}});
        m_target.OnInviteRejected(userId, inviteId, reason);
    }

    void OnAbandonInvite(unsigned userId, unsigned inviteId, InviteAbandonedReason reason) override
    {
        const TraceSpan span = Notification("IUserOnlineNotify::OnAbandonInvite",
                                            {{"userId", userId}, {"inviteId", inviteId}, {"reason", uint32_t{reason}}});
        m_target.OnAbandonInvite(userId, inviteId, reason);
    }
};

class TracedMdsNotify final : public ModuleProxy<IPaasMdsClientNotify>
{
public:
    using ModuleProxy::ModuleProxy;

    void OnSubscribeAVQualityInfo() override
    {
        const TraceSpan span = Notification("IPaasMdsClientNotify::OnSubscribeAVQualityInfo");
        m_target.OnSubscribeAVQualityInfo();
    }

    void OnUnSubscribeAVQualityInfo() override
    {
        const TraceSpan span = Notification("IPaasMdsClientNotify::OnUnSubscribeAVQualityInfo");
        m_target.OnUnSubscribeAVQualityInfo();
    }
};

class TracedTunnel final : public ModuleProxy<IMeetingTunnel>
{
public:
    using ModuleProxy::ModuleProxy;

    void AddNotify(IMeetingTunnelNotify* notify) override
    {
        const TraceSpan span = Call("IMeetingTunnel::AddNotify");
        m_target.AddNotify(m_context.tunnelNotifies.Of(notify));
    }

    void RemoveNotify(IMeetingTunnelNotify* notify) override
    {
        const TraceSpan span = Call("IMeetingTunnel::RemoveNotify");
        m_target.RemoveNotify(m_context.tunnelNotifies.Of(notify));
    }

    void RemoveAllNotify() override
    {
        const TraceSpan span = Call("IMeetingTunnel::RemoveAllNotify");
        m_target.RemoveAllNotify();
    }

    bool JoinMeeting(const JoinData& data) override
    {
        TraceSpan span =
            Call("IMeetingTunnel::JoinMeeting", {{"guid", GuidText(data.guid)}, {"user_id", data.user_id}});
        return span.Result(m_target.JoinMeeting(data));
    }

    bool LeaveMeeting() override
    {
        TraceSpan span = Call("IMeetingTunnel::LeaveMeeting");
        return span.Result(m_target.LeaveMeeting());
    }
};

class TracedUsers final : public ModuleProxy<IUserOnline>
{
public:
    using ModuleProxy::ModuleProxy;

    void AddNotify(IUserOnlineNotify* notify) override
    {
        const TraceSpan span = Call("IUserOnline::AddNotify");
        m_target.AddNotify(m_context.usersNotifies.Of(notify));
    }

    void RemoveNotify(IUserOnlineNotify* notify) override
    {
        const TraceSpan span = Call("IUserOnline::RemoveNotify");
        m_target.RemoveNotify(m_context.usersNotifies.Of(notify));
    }

    void RemoveAllNotify() override
    {
        const TraceSpan span = Call("IUserOnline::RemoveAllNotify");
        m_target.RemoveAllNotify();
    }

    bool QueryUserStatus(const std::vector<unsigned>& ids, std::function<void(const UserOnlineInfo&)> cb) override
    {
        TraceSpan span = Call("IUserOnline::QueryUserStatus", {{"ids", ListText(ids)}});
        return span.Result(m_target.QueryUserStatus(ids, std::move(cb)));
    }

    bool RefreshCompanyUserStatus(unsigned* requestId) override
    {
        TraceSpan span = Call("IUserOnline::RefreshCompanyUserStatus");
        return span.Result(m_target.RefreshCompanyUserStatus(requestId));
    }

    bool RefreshUserStatus(const std::vector<unsigned>& ids, unsigned* requestId) override
    {
        TraceSpan span = Call("IUserOnline::RefreshUserStatus", {{"ids", ListText(ids)}});
        return span.Result(m_target.RefreshUserStatus(ids, requestId));
    }

    bool SetSelfCustomInfo(const std::string& info) override
    {
        TraceSpan span = Call("IUserOnline::SetSelfCustomInfo", {{"info", info}});
        return span.Result(m_target.SetSelfCustomInfo(info));
    }

    bool GetSelfCustomInfo(char* buffer, unsigned size) override
    {
        TraceSpan span = Call("IUserOnline::GetSelfCustomInfo", {{"size", size}});
        return span.Result(m_target.GetSelfCustomInfo(buffer, size));
    }

    bool InviteUsers(const std::vector<unsigned>& ids, const InviteData& data, unsigned* inviteId) override
    {
        TraceSpan span = Call("IUserOnline::InviteUsers", {{"ids", ListText(ids)}, {"inviteCode", data.inviteCode}});
        return span.Result(m_target.InviteUsers(ids, data, inviteId));
    }

    bool AcceptInvite(unsigned userId, unsigned inviteId, bool isAccept) override
    {
        TraceSpan span =
            Call("IUserOnline::AcceptInvite", {{"userId", userId}, {"inviteId", inviteId}, {"isAccept", isAccept}});
        return span.Result(m_target.AcceptInvite(userId, inviteId, isAccept));
    }

    bool RejectAllInvite(RejectInvitationReason reason, const std::vector<unsigned>& excludeInviteIds) override
    {
        TraceSpan span = Call("IUserOnline::RejectAllInvite",
                              {{"reason", uint32_t{reason}}, {"excludeInviteIds", ListText(excludeInviteIds)}});
        return span.Result(m_target.RejectAllInvite(reason, excludeInviteIds));
    }

    bool AbandonInvite(unsigned inviteId, const std::vector<unsigned>& ids) override
    {
        TraceSpan span = Call("IUserOnline::AbandonInvite", {{"inviteId", inviteId}, {"ids", ListText(ids)}});
        return span.Result(m_target.AbandonInvite(inviteId, ids));
    }
};

class TracedMds final : public ModuleProxy<IPaasMdsClient>
{
public:
    using ModuleProxy::ModuleProxy;

    void AddNotify(IPaasMdsClientNotify* notify) override
    {
        const TraceSpan span = Call("IPaasMdsClient::AddNotify");
        m_target.AddNotify(m_context.mdsNotifies.Of(notify));
    }

    void RemoveNotify(IPaasMdsClientNotify* notify) override
    {
        const TraceSpan span = Call("IPaasMdsClient::RemoveNotify");
        m_target.RemoveNotify(m_context.mdsNotifies.Of(notify));
    }

    void RemoveAllNotify() override
    {
        const TraceSpan span = Call("IPaasMdsClient::RemoveAllNotify");
        m_target.RemoveAllNotify();
    }

    bool InitModel(IComponentFactory* factory) override
    {
        TraceSpan span = Call("IPaasMdsClient::InitModel");
        return span.Result(m_target.InitModel(factory));
    }

    bool UninitModel() override
    {
        TraceSpan span = Call("IPaasMdsClient::UninitModel");
        return span.Result(m_target.UninitModel());
    }

    bool InitMdsClient() override
    {
        TraceSpan span = Call("IPaasMdsClient::InitMdsClient");
        return span.Result(m_target.InitMdsClient());
    }

    bool SendAVQualityInfo(const std::shared_ptr<AVQualityInfo>& info) override
    {
        TraceSpan span = Call("IPaasMdsClient::SendAVQualityInfo", {{"info", info != nullptr ? "given" : "(null)"}});
        return span.Result(m_target.SendAVQualityInfo(info));
    }
};

/// The listeners of this channel have no operation, so they pass as they are.
class TracedTMsg final : public ModuleProxy<IPaasTMsg>
{
public:
    using ModuleProxy::ModuleProxy;

    void AddNotify(IPaasTMsgNotify* notify) override
    {
        const TraceSpan span = Call("IPaasTMsg::AddNotify");
        m_target.AddNotify(notify);
    }

    void RemoveNotify(IPaasTMsgNotify* notify) override
    {
        const TraceSpan span = Call("IPaasTMsg::RemoveNotify");
        m_target.RemoveNotify(notify);
    }

    void RemoveAllNotify() override
    {
        const TraceSpan span = Call("IPaasTMsg::RemoveAllNotify");
        m_target.RemoveAllNotify();
    }

    bool InitModel(IComponentFactory* factory) override
    {
        TraceSpan span = Call("IPaasTMsg::InitModel");
        return span.Result(m_target.InitModel(factory));
    }

    bool UninitModel() override
    {
        TraceSpan span = Call("IPaasTMsg::UninitModel");
        return span.Result(m_target.UninitModel());
    }
};

class TracedOnline final : public ModuleProxy<IPaasOnline>
{
public:
    using ModuleProxy::ModuleProxy;

    void AddNotify(IPaasOnlineNotify* notify) override
    {
        const TraceSpan span = Call("IPaasOnline::AddNotify");
        m_target.AddNotify(m_context.onlineNotifies.Of(notify));
    }

    void RemoveNotify(IPaasOnlineNotify* notify) override
    {
        const TraceSpan span = Call("IPaasOnline::RemoveNotify");
        m_target.RemoveNotify(m_context.onlineNotifies.Of(notify));
    }

    void RemoveAllNotify() override
    {
        const TraceSpan span = Call("IPaasOnline::RemoveAllNotify");
        m_target.RemoveAllNotify();
    }

    bool InitModel(IComponentFactory* factory) override
    {
        TraceSpan span = Call("IPaasOnline::InitModel");
        return span.Result(m_target.InitModel(factory));
    }

    bool UninitModel() override
    {
        TraceSpan span = Call("IPaasOnline::UninitModel");
        return span.Result(m_target.UninitModel());
    }

    bool Login(const LoginParam& param, bool force) override
    {
        TraceSpan span = Call("IPaasOnline::Login", {{"server", param.server},
                                                     {"userid", param.userid},
                                                     {"companyid", param.companyid},
                                                     {"mutex", param.mutex},
                                                     {"deviceid", param.deviceid},
                                                     {"appid", param.appid},
                                                     {"force", force}});
        return span.Result(m_target.Login(param, force));
    }

    bool RequestCPAddress(const LoginParam& param) override
    {
        TraceSpan span = Call("IPaasOnline::RequestCPAddress", {{"server", param.server}});
        return span.Result(m_target.RequestCPAddress(param));
    }

    bool Relogin(bool force) override
    {
        TraceSpan span = Call("IPaasOnline::Relogin", {{"force", force}});
        return span.Result(m_target.Relogin(force));
    }

    bool Logout() override
    {
        TraceSpan span = Call("IPaasOnline::Logout");
        return span.Result(m_target.Logout());
    }

    ConnectPropertyResult GetConnectProperty(ConnectProperty key, char* buffer, int size) override
    {
        TraceSpan span = Call("IPaasOnline::GetConnectProperty", {{"key", int32_t{key}}, {"size", size}});
        const ConnectPropertyResult result = m_target.GetConnectProperty(key, buffer, size);
        span.Result(result.status == 1 ? std::string(buffer)
                                       : "status 0, needed size " + std::to_string(result.needed_size));
        return result;
    }

    bool TriggerNotify() override
    {
        TraceSpan span = Call("IPaasOnline::TriggerNotify", {}, 1);
        span.WillBeAnswered(m_context.TriggerKey());
        const bool started = span.Result(m_target.TriggerNotify());
        if (!started)
        {
            span.WillNotBeAnswered(m_context.TriggerKey());
        }
        return started;
    }

    int32_t GetUserOnline(IUserOnline** out) override
    {
        TraceSpan span = Call("IPaasOnline::GetUserOnline");
        const int32_t result = span.Result(m_target.GetUserOnline(out));
        if (result == S_OK && out != nullptr)
        {
            *out = m_context.users.Of(*out);
        }
        return result;
    }

    int32_t GetMeetingTunnel(IMeetingTunnel** out) override
    {
        TraceSpan span = Call("IPaasOnline::GetMeetingTunnel");
        const int32_t result = span.Result(m_target.GetMeetingTunnel(out));
        if (result == S_OK && out != nullptr)
        {
            *out = m_context.tunnels.Of(*out);
        }
        return result;
    }

    void SetReconnectionStrategy(IReconnectionStrategy* strategy) override
    {
        const TraceSpan span = Call("IPaasOnline::SetReconnectionStrategy");
        m_target.SetReconnectionStrategy(m_context.strategies.Of(strategy));
    }
};

class TracedManager final : public ModuleProxy<IOnlineManager>
{
public:
    using ModuleProxy::ModuleProxy;

    HRESULT QueryInterface(const GUID& iid, void** out) override
    {
        TraceSpan span = Call("IOnlineManager::QueryInterface", {{"iid", GuidText(iid)}});
        const HRESULT result = span.Result(m_target.QueryInterface(iid, out));
        if (result >= 0 && (iid == IID_OnlineManager || iid == IID_IUnknown))
        {
            *out = static_cast<IOnlineManager*>(this);
        }
        return result;
    }

    uint32_t AddRef() override
    {
        return m_target.AddRef();
    }

    uint32_t Release() override
    {
        return m_target.Release();
    }

    HRESULT Initialize(IUnknown* httpObject) override
    {
        TraceSpan span = Call("IOnlineManager::Initialize");
        return span.Result(m_target.Initialize(m_context.httpClients.Of(static_cast<IHttpClient*>(httpObject))));
    }

    HRESULT GetZolConnectionForAVMP(IUnknown** out) override
    {
        TraceSpan span = Call("IOnlineManager::GetZolConnectionForAVMP");
        return span.Result(m_target.GetZolConnectionForAVMP(out));
    }

    HRESULT GetPaasOnline(IPaasOnline** out) override
    {
        TraceSpan span = Call("IOnlineManager::GetPaasOnline");
        return span.Result(Get(&IOnlineManager::GetPaasOnline, out, m_context.onlines));
    }

    HRESULT GetMeetingTunnel(TunnelType type, IMeetingTunnel** out) override
    {
        TraceSpan span = Call("IOnlineManager::GetMeetingTunnel", {{"type", int32_t{type}}});
        IMeetingTunnel* tunnel = nullptr;
        const HRESULT result = span.Result(m_target.GetMeetingTunnel(type, out != nullptr ? &tunnel : nullptr));
        if (tunnel != nullptr)
        {
            *out = m_context.tunnels.Of(tunnel);
        }
        return result;
    }

    HRESULT GetPaasMdsClient(IPaasMdsClient** out) override
    {
        TraceSpan span = Call("IOnlineManager::GetPaasMdsClient");
        return span.Result(Get(&IOnlineManager::GetPaasMdsClient, out, m_context.mdsClients));
    }

    HRESULT GetPaasTMsg(IPaasTMsg** out) override
    {
        TraceSpan span = Call("IOnlineManager::GetPaasTMsg");
        return span.Result(Get(&IOnlineManager::GetPaasTMsg, out, m_context.messages));
    }

    HRESULT Destroy() override
    {
        TraceSpan span = Call("IOnlineManager::Destroy");
        return span.Result(m_target.Destroy());
    }

private:
    /// As the getter itself: what is not there leaves `*out` untouched.
    template <typename Service, typename Proxy>
    HRESULT Get(HRESULT (IOnlineManager::*getter)(Service**), Service** out, ModuleProxies<Service, Proxy>& proxies)
    {
        Service* service = nullptr;
        const HRESULT result = (m_target.*getter)(out != nullptr ? &service : nullptr);
        if (service != nullptr)
        {
            *out = proxies.Of(service);
        }
        return result;
    }
};

} // namespace

IOnlineManager& RecordModule(Trace& trace, const std::string& device, IOnlineManager& manager)
{
    ModuleContext& context = trace.Keep<ModuleContext>(trace, device);
    return trace.Keep<TracedManager>(context, manager);
}

} // namespace host
