#include "host/trace/TraceModule.h"

#include "host/trace/TraceProxy.h"
#include "onlinehost/Text.h"
#include "onlinemanager/IOnlineManager.h"

#include <algorithm>
#include <string_view>

namespace host
{

using namespace onlinehost;

using namespace onlinemanager;

template <>
class Traced<IHttpResponseNotify> final : public TraceProxy<IHttpResponseNotify, Crossing::HttpEvent>
{
public:
    using TraceProxy::TraceProxy;

    /// The header is the only text with a length and without a terminator.
    void OnHeaderRespond(unsigned int id, char* data, unsigned int len) override
    {
        const TraceSpan span =
            Record("IHttpResponseNotify::OnHeaderRespond", {{"id", int64_t{id}}, {"data", std::string(data, len)}});
        m_target.OnHeaderRespond(id, data, len);
    }

    void OnDataRespond(unsigned int id, char* data, unsigned int len) override
    {
        Forward(&IHttpResponseNotify::OnDataRespond, "IHttpResponseNotify::OnDataRespond", {"id", "", "len"}, id, data,
                len);
    }

    void OnCompleteRespond(unsigned int id, unsigned int code, char* data, unsigned int len) override
    {
        Forward(&IHttpResponseNotify::OnCompleteRespond, "IHttpResponseNotify::OnCompleteRespond",
                {"id", "code", "", "len"}, id, code, data, len);
    }
};

template <>
class Traced<IHttpClient> final : public TraceProxy<IHttpClient, Crossing::HttpCall>
{
public:
    using TraceProxy::TraceProxy;

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

    /// The result is the id of the request, which its answer carries.
    uint32_t Request(const HttpRequest* request, IHttpResponseNotify* notify,
                     WBASELIB::TStringBase<char>* text) override
    {
        TraceArguments arguments;
        Append(arguments, "request", request);
        TraceSpan span = Record("IHttpClient::Request", arguments);
        const uint32_t id = m_target.Request(request, m_context.Of(notify), text);
        span.Output("id", int64_t{id});
        return id;
    }
};

template <>
class Traced<IReconnectionStrategy> final : public TraceProxy<IReconnectionStrategy, Crossing::Notification>
{
public:
    using TraceProxy::TraceProxy;

    int32_t CheckReconnect() override
    {
        return Forward(&IReconnectionStrategy::CheckReconnect, "IReconnectionStrategy::CheckReconnect");
    }
};

template <>
class Traced<IPaasOnlineNotify> final : public TraceProxy<IPaasOnlineNotify, Crossing::Notification>
{
public:
    using TraceProxy::TraceProxy;

    void OnReadyReconnect(TunnelType type) override
    {
        Forward(&IPaasOnlineNotify::OnReadyReconnect, "IPaasOnlineNotify::OnReadyReconnect", {"type"}, type);
    }

    void OnReconnectStart(TunnelType type) override
    {
        Forward(&IPaasOnlineNotify::OnReconnectStart, "IPaasOnlineNotify::OnReconnectStart", {"type"}, type);
    }

    void OnReconnectSucess(TunnelType type) override
    {
        Forward(&IPaasOnlineNotify::OnReconnectSucess, "IPaasOnlineNotify::OnReconnectSucess", {"type"}, type);
    }

    void OnReconnectFail(TunnelType type, ErrCode code) override
    {
        Forward(&IPaasOnlineNotify::OnReconnectFail, "IPaasOnlineNotify::OnReconnectFail", {"type", "code"}, type,
                code);
    }

    void OnLoginSuccess() override
    {
        Forward(&IPaasOnlineNotify::OnLoginSuccess, "IPaasOnlineNotify::OnLoginSuccess");
    }

    void OnOffline(ErrCode code) override
    {
        Forward(&IPaasOnlineNotify::OnOffline, "IPaasOnlineNotify::OnOffline", {"code"}, code);
    }
};

template <>
class Traced<IMeetingTunnelNotify> final : public TraceProxy<IMeetingTunnelNotify, Crossing::Notification>
{
public:
    using TraceProxy::TraceProxy;

    void OnJoinMeetingResult(ErrCode code) override
    {
        Forward(&IMeetingTunnelNotify::OnJoinMeetingResult, "IMeetingTunnelNotify::OnJoinMeetingResult", {"code"},
                code);
    }

    void OnLeaveMeetingResult(ErrCode code) override
    {
        Forward(&IMeetingTunnelNotify::OnLeaveMeetingResult, "IMeetingTunnelNotify::OnLeaveMeetingResult", {"code"},
                code);
    }

    void OnUserJoined(unsigned int userId) override
    {
        Forward(&IMeetingTunnelNotify::OnUserJoined, "IMeetingTunnelNotify::OnUserJoined", {"userId"}, userId);
    }

    void OnUserLeaved(unsigned int userId) override
    {
        Forward(&IMeetingTunnelNotify::OnUserLeaved, "IMeetingTunnelNotify::OnUserLeaved", {"userId"}, userId);
    }
};

template <>
class Traced<IUserOnlineNotify> final : public TraceProxy<IUserOnlineNotify, Crossing::Notification>
{
public:
    using TraceProxy::TraceProxy;

    void OnUserStatusChanged(const std::vector<unsigned>& userIds) override
    {
        Forward(&IUserOnlineNotify::OnUserStatusChanged, "IUserOnlineNotify::OnUserStatusChanged", {"userIds"},
                userIds);
    }

    void OnUserStatusRefreshed(unsigned requestId, avcore::ZolPortErrCode code) override
    {
        Forward(&IUserOnlineNotify::OnUserStatusRefreshed, "IUserOnlineNotify::OnUserStatusRefreshed",
                {"requestId", "code"}, requestId, code);
    }

    void OnInviteIncome(unsigned userId, unsigned inviteId, const InviteData& data) override
    {
        Forward(&IUserOnlineNotify::OnInviteIncome, "IUserOnlineNotify::OnInviteIncome", {"userId", "inviteId", "data"},
                userId, inviteId, data);
    }

    void OnInviteAccepted(unsigned userId, unsigned inviteId) override
    {
        Forward(&IUserOnlineNotify::OnInviteAccepted, "IUserOnlineNotify::OnInviteAccepted", {"userId", "inviteId"},
                userId, inviteId);
    }

    void OnInviteRejected(unsigned userId, unsigned inviteId, avcore::ZolInviteRejectReason reason) override
    {
        Forward(&IUserOnlineNotify::OnInviteRejected, "IUserOnlineNotify::OnInviteRejected",
                {"userId", "inviteId", "reason"}, userId, inviteId, reason);
    }

    void OnAbandonInvite(unsigned userId, unsigned inviteId, InviteAbandonedReason reason) override
    {
        Forward(&IUserOnlineNotify::OnAbandonInvite, "IUserOnlineNotify::OnAbandonInvite",
                {"userId", "inviteId", "reason"}, userId, inviteId, reason);
    }
};

template <>
class Traced<IPaasMdsClientNotify> final : public TraceProxy<IPaasMdsClientNotify, Crossing::Notification>
{
public:
    using TraceProxy::TraceProxy;

    void OnSubscribeAVQualityInfo() override
    {
        Forward(&IPaasMdsClientNotify::OnSubscribeAVQualityInfo, "IPaasMdsClientNotify::OnSubscribeAVQualityInfo");
    }

    void OnUnSubscribeAVQualityInfo() override
    {
        Forward(&IPaasMdsClientNotify::OnUnSubscribeAVQualityInfo, "IPaasMdsClientNotify::OnUnSubscribeAVQualityInfo");
    }
};

template <>
class Traced<IMeetingTunnel> final : public TraceProxy<IMeetingTunnel, Crossing::HostCall>
{
public:
    using TraceProxy::TraceProxy;

    void AddNotify(IMeetingTunnelNotify* notify) override
    {
        Forward(&IMeetingTunnel::AddNotify, "IMeetingTunnel::AddNotify", {""}, notify);
    }

    void RemoveNotify(IMeetingTunnelNotify* notify) override
    {
        Forward(&IMeetingTunnel::RemoveNotify, "IMeetingTunnel::RemoveNotify", {""}, notify);
    }

    void RemoveAllNotify() override
    {
        Forward(&IMeetingTunnel::RemoveAllNotify, "IMeetingTunnel::RemoveAllNotify");
    }

    bool JoinMeeting(const JoinData& data) override
    {
        return Forward(&IMeetingTunnel::JoinMeeting, "IMeetingTunnel::JoinMeeting", {"data"}, data);
    }

    bool LeaveMeeting() override
    {
        return Forward(&IMeetingTunnel::LeaveMeeting, "IMeetingTunnel::LeaveMeeting");
    }
};

template <>
class Traced<IUserOnline> final : public TraceProxy<IUserOnline, Crossing::HostCall>
{
public:
    using TraceProxy::TraceProxy;

    void AddNotify(IUserOnlineNotify* notify) override
    {
        Forward(&IUserOnline::AddNotify, "IUserOnline::AddNotify", {""}, notify);
    }

    void RemoveNotify(IUserOnlineNotify* notify) override
    {
        Forward(&IUserOnline::RemoveNotify, "IUserOnline::RemoveNotify", {""}, notify);
    }

    void RemoveAllNotify() override
    {
        Forward(&IUserOnline::RemoveAllNotify, "IUserOnline::RemoveAllNotify");
    }

    bool QueryUserStatus(const std::vector<unsigned>& ids, std::function<void(const UserOnlineInfo&)> cb) override
    {
        return Forward(&IUserOnline::QueryUserStatus, "IUserOnline::QueryUserStatus", {"ids", ""}, ids, std::move(cb));
    }

    bool RefreshCompanyUserStatus(unsigned* requestId) override
    {
        return Forward(&IUserOnline::RefreshCompanyUserStatus, "IUserOnline::RefreshCompanyUserStatus", {"requestId"},
                       requestId);
    }

    bool RefreshUserStatus(const std::vector<unsigned>& ids, unsigned* requestId) override
    {
        return Forward(&IUserOnline::RefreshUserStatus, "IUserOnline::RefreshUserStatus", {"ids", "requestId"}, ids,
                       requestId);
    }

    bool SetSelfCustomInfo(const std::string& info) override
    {
        return Forward(&IUserOnline::SetSelfCustomInfo, "IUserOnline::SetSelfCustomInfo", {"info"}, info);
    }

    /// A text that fills the buffer has no terminator.
    bool GetSelfCustomInfo(char* buffer, unsigned size) override
    {
        TraceSpan span = Record("IUserOnline::GetSelfCustomInfo", {{"size", int64_t{size}}});
        const bool isCopied = span.Result(m_target.GetSelfCustomInfo(buffer, size));
        if (isCopied)
        {
            span.Answer(std::string(buffer, std::find(buffer, buffer + size, '\0')));
        }
        return isCopied;
    }

    bool InviteUsers(const std::vector<unsigned>& ids, const InviteData& data, unsigned* inviteId) override
    {
        return Forward(&IUserOnline::InviteUsers, "IUserOnline::InviteUsers", {"ids", "data", "inviteId"}, ids, data,
                       inviteId);
    }

    bool AcceptInvite(unsigned userId, unsigned inviteId, bool isAccept) override
    {
        return Forward(&IUserOnline::AcceptInvite, "IUserOnline::AcceptInvite", {"userId", "inviteId", "isAccept"},
                       userId, inviteId, isAccept);
    }

    bool RejectAllInvite(RejectInvitationReason reason, const std::vector<unsigned>& excludeInviteIds) override
    {
        return Forward(&IUserOnline::RejectAllInvite, "IUserOnline::RejectAllInvite", {"reason", "excludeInviteIds"},
                       reason, excludeInviteIds);
    }

    bool AbandonInvite(unsigned inviteId, const std::vector<unsigned>& ids) override
    {
        return Forward(&IUserOnline::AbandonInvite, "IUserOnline::AbandonInvite", {"inviteId", "ids"}, inviteId, ids);
    }
};

template <>
class Traced<IPaasMdsClient> final : public TraceProxy<IPaasMdsClient, Crossing::HostCall>
{
public:
    using TraceProxy::TraceProxy;

    void AddNotify(IPaasMdsClientNotify* notify) override
    {
        Forward(&IPaasMdsClient::AddNotify, "IPaasMdsClient::AddNotify", {""}, notify);
    }

    void RemoveNotify(IPaasMdsClientNotify* notify) override
    {
        Forward(&IPaasMdsClient::RemoveNotify, "IPaasMdsClient::RemoveNotify", {""}, notify);
    }

    void RemoveAllNotify() override
    {
        Forward(&IPaasMdsClient::RemoveAllNotify, "IPaasMdsClient::RemoveAllNotify");
    }

    bool InitModel(IComponentFactory* factory) override
    {
        return Forward(&IPaasMdsClient::InitModel, "IPaasMdsClient::InitModel", {""}, factory);
    }

    bool UninitModel() override
    {
        return Forward(&IPaasMdsClient::UninitModel, "IPaasMdsClient::UninitModel");
    }

    bool InitMdsClient() override
    {
        return Forward(&IPaasMdsClient::InitMdsClient, "IPaasMdsClient::InitMdsClient");
    }

    bool SendAVQualityInfo(const std::shared_ptr<AVQualityInfo>& info) override
    {
        return Forward(&IPaasMdsClient::SendAVQualityInfo, "IPaasMdsClient::SendAVQualityInfo", {"info"}, info);
    }
};

/// The listeners of this channel have no operation, so they are passed on unchanged.
template <>
class Traced<IPaasTMsg> final : public TraceProxy<IPaasTMsg, Crossing::HostCall>
{
public:
    using TraceProxy::TraceProxy;

    void AddNotify(IPaasTMsgNotify* notify) override
    {
        Forward(&IPaasTMsg::AddNotify, "IPaasTMsg::AddNotify", {""}, notify);
    }

    void RemoveNotify(IPaasTMsgNotify* notify) override
    {
        Forward(&IPaasTMsg::RemoveNotify, "IPaasTMsg::RemoveNotify", {""}, notify);
    }

    void RemoveAllNotify() override
    {
        Forward(&IPaasTMsg::RemoveAllNotify, "IPaasTMsg::RemoveAllNotify");
    }

    bool InitModel(IComponentFactory* factory) override
    {
        return Forward(&IPaasTMsg::InitModel, "IPaasTMsg::InitModel", {""}, factory);
    }

    bool UninitModel() override
    {
        return Forward(&IPaasTMsg::UninitModel, "IPaasTMsg::UninitModel");
    }
};

template <>
class Traced<IPaasOnline> final : public TraceProxy<IPaasOnline, Crossing::HostCall>
{
public:
    using TraceProxy::TraceProxy;

    void AddNotify(IPaasOnlineNotify* notify) override
    {
        Forward(&IPaasOnline::AddNotify, "IPaasOnline::AddNotify", {""}, notify);
    }

    void RemoveNotify(IPaasOnlineNotify* notify) override
    {
        Forward(&IPaasOnline::RemoveNotify, "IPaasOnline::RemoveNotify", {""}, notify);
    }

    void RemoveAllNotify() override
    {
        Forward(&IPaasOnline::RemoveAllNotify, "IPaasOnline::RemoveAllNotify");
    }

    bool InitModel(IComponentFactory* factory) override
    {
        return Forward(&IPaasOnline::InitModel, "IPaasOnline::InitModel", {""}, factory);
    }

    bool UninitModel() override
    {
        return Forward(&IPaasOnline::UninitModel, "IPaasOnline::UninitModel");
    }

    bool Login(const LoginParam& param, bool force) override
    {
        return Forward(&IPaasOnline::Login, "IPaasOnline::Login", {"param", "force"}, param, force);
    }

    bool RequestCPAddress(const LoginParam& param) override
    {
        return Forward(&IPaasOnline::RequestCPAddress, "IPaasOnline::RequestCPAddress", {"param"}, param);
    }

    bool Relogin(bool force) override
    {
        return Forward(&IPaasOnline::Relogin, "IPaasOnline::Relogin", {"force"}, force);
    }

    bool Logout() override
    {
        return Forward(&IPaasOnline::Logout, "IPaasOnline::Logout");
    }

    /// The result is a record, and the text is in the buffer.
    ConnectPropertyResult GetConnectProperty(ConnectProperty key, char* buffer, int size) override
    {
        TraceSpan span = Record("IPaasOnline::GetConnectProperty", {{"key", MeaningOf(key)}, {"size", int64_t{size}}});
        const ConnectPropertyResult result = m_target.GetConnectProperty(key, buffer, size);
        if (result.status == 1)
        {
            span.Answer('"' + std::string(buffer) + '"');
        }
        else
        {
            span.Fail("nothing copied, the text needs " + std::to_string(result.needed_size) + " bytes");
        }
        return result;
    }

    bool TriggerNotify() override
    {
        return Forward(&IPaasOnline::TriggerNotify, "IPaasOnline::TriggerNotify");
    }

    int32_t GetUserOnline(IUserOnline** out) override
    {
        return Forward(&IPaasOnline::GetUserOnline, "IPaasOnline::GetUserOnline", {""}, out);
    }

    int32_t GetMeetingTunnel(IMeetingTunnel** out) override
    {
        return Forward(&IPaasOnline::GetMeetingTunnel, "IPaasOnline::GetMeetingTunnel", {""}, out);
    }

    void SetReconnectionStrategy(IReconnectionStrategy* strategy) override
    {
        Forward(&IPaasOnline::SetReconnectionStrategy, "IPaasOnline::SetReconnectionStrategy", {"strategy"}, strategy);
    }
};

template <>
class Traced<IOnlineManager> final : public TraceProxy<IOnlineManager, Crossing::HostCall>
{
public:
    Traced(TraceContext& context, IOnlineManager& target, TracedFactory& factory)
        : TraceProxy(context, target),
          m_factory(factory)
    {
    }

    HRESULT QueryInterface(const GUID& iid, void** out) override
    {
        const HRESULT result =
            Forward(&IOnlineManager::QueryInterface, "IOnlineManager::QueryInterface", {"iid", ""}, iid, out);
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

    /// The interface declares the HTTP object as `IUnknown`.
    HRESULT Initialize(IUnknown* httpObject) override
    {
        return Forward(&IOnlineManager::Initialize, "IOnlineManager::Initialize", {"httpObject"},
                       m_context.Of(static_cast<IHttpClient*>(httpObject)));
    }

    /// The connection that the module hands out is the one that records the module's calls.
    HRESULT GetZolConnectionForAVMP(IUnknown** out) override
    {
        const HRESULT result =
            Forward(&IOnlineManager::GetZolConnectionForAVMP, "IOnlineManager::GetZolConnectionForAVMP", {""}, out);
        if (result == S_OK)
        {
            *out = m_factory.ForHost(*out);
        }
        return result;
    }

    HRESULT GetPaasOnline(IPaasOnline** out) override
    {
        return Forward(&IOnlineManager::GetPaasOnline, "IOnlineManager::GetPaasOnline", {""}, out);
    }

    HRESULT GetMeetingTunnel(TunnelType type, IMeetingTunnel** out) override
    {
        return Forward(&IOnlineManager::GetMeetingTunnel, "IOnlineManager::GetMeetingTunnel", {"type", ""}, type, out);
    }

    HRESULT GetPaasMdsClient(IPaasMdsClient** out) override
    {
        return Forward(&IOnlineManager::GetPaasMdsClient, "IOnlineManager::GetPaasMdsClient", {""}, out);
    }

    HRESULT GetPaasTMsg(IPaasTMsg** out) override
    {
        return Forward(&IOnlineManager::GetPaasTMsg, "IOnlineManager::GetPaasTMsg", {""}, out);
    }

    HRESULT Destroy() override
    {
        return Forward(&IOnlineManager::Destroy, "IOnlineManager::Destroy");
    }

private:
    TracedFactory& m_factory;
};

IOnlineManager& RecordModule(Trace& trace, uint32_t component, IOnlineManager& manager, TracedFactory& factory)
{
    TraceContext& context = trace.Keep<TraceContext>(trace, component);
    return trace.Keep<Traced<IOnlineManager>>(context, manager, factory);
}

} // namespace host
