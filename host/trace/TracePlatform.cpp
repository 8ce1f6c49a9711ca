#include "host/trace/TracePlatform.h"

#include "host/trace/TraceProxy.h"

namespace host
{

using namespace avcore;

template <>
class Traced<IZolHttp> final : public TraceProxy<IZolHttp, Crossing::HttpRequest>
{
public:
    using TraceProxy::TraceProxy;

    std::string HttpGet(const char* url) override
    {
        return Forward(&IZolHttp::HttpGet, "IZolHttp::HttpGet", {"url"}, url);
    }

    std::string HttpPost(const char* url, const char* body) override
    {
        return Forward(&IZolHttp::HttpPost, "IZolHttp::HttpPost", {"url", "body"}, url, body);
    }

    int32_t HttpClose(const char* url) override
    {
        return Forward(&IZolHttp::HttpClose, "IZolHttp::HttpClose", {"url"}, url);
    }
};

template <>
class Traced<IZolConnectionListener> final : public TraceProxy<IZolConnectionListener, Crossing::PlatformEvent>
{
public:
    using TraceProxy::TraceProxy;

    void OnLoginResult(ZolPortErrCode code, const char* szConflictDeviceId, const char* szConflictCustomState,
                       const char* szConflictExtendInfo) override
    {
        Forward(&IZolConnectionListener::OnLoginResult, "IZolConnectionListener::OnLoginResult",
                {"code", "conflictDeviceId", "conflictCustomState", "conflictExtendInfo"}, code, szConflictDeviceId,
                szConflictCustomState, szConflictExtendInfo);
    }

    void OnJoinGroupResult(ZolPortErrCode code) override
    {
        Forward(&IZolConnectionListener::OnJoinGroupResult, "IZolConnectionListener::OnJoinGroupResult", {"code"},
                code);
    }

    void OnLeaveGroupResult(ZolPortErrCode code) override
    {
        Forward(&IZolConnectionListener::OnLeaveGroupResult, "IZolConnectionListener::OnLeaveGroupResult", {"code"},
                code);
    }

    void OnLogouted(ZolPortErrCode code) override
    {
        Forward(&IZolConnectionListener::OnLogouted, "IZolConnectionListener::OnLogouted", {"code"}, code);
    }

    int32_t OnReconnectStart() override
    {
        return Forward(&IZolConnectionListener::OnReconnectStart, "IZolConnectionListener::OnReconnectStart");
    }

    void OnReconnectSucess() override
    {
        Forward(&IZolConnectionListener::OnReconnectSucess, "IZolConnectionListener::OnReconnectSucess");
    }

    void OnReconnectFail(ZolPortErrCode code, const char* text) override
    {
        Forward(&IZolConnectionListener::OnReconnectFail, "IZolConnectionListener::OnReconnectFail", {"code", "text"},
                code, text);
    }

    void OnGroupUserJoined(const char* userId) override
    {
        Forward(&IZolConnectionListener::OnGroupUserJoined, "IZolConnectionListener::OnGroupUserJoined", {"userId"},
                userId);
    }

    void OnGroupUserLeaved(const char* userId) override
    {
        Forward(&IZolConnectionListener::OnGroupUserLeaved, "IZolConnectionListener::OnGroupUserLeaved", {"userId"},
                userId);
    }

    void OnGroupUserSync(const ZolTextList& users, const WBASELIB::Vector<ZolMediaInfo>& media, bool complete) override
    {
        Forward(&IZolConnectionListener::OnGroupUserSync, "IZolConnectionListener::OnGroupUserSync",
                {"users", "", "complete"}, users, media, complete);
    }
};

template <>
class Traced<IZolOnlineListener> final : public TraceProxy<IZolOnlineListener, Crossing::PlatformEvent>
{
public:
    using TraceProxy::TraceProxy;

    void OnRefreshUserStatusFinished(ZolPortErrCode code, unsigned requestId,
                                     const WBASELIB::Vector<ZolUserInfo>& users, int page_count,
                                     int page_index) override
    {
        Forward(&IZolOnlineListener::OnRefreshUserStatusFinished, "IZolOnlineListener::OnRefreshUserStatusFinished",
                {"code", "requestId", "users", "page_count", "page_index"}, code, requestId, users, page_count,
                page_index);
    }

    void OnInviteIncome(const char* userId, unsigned inviteId, const char* code, const char* msg) override
    {
        Forward(&IZolOnlineListener::OnInviteIncome, "IZolOnlineListener::OnInviteIncome",
                {"userId", "inviteId", "code", "msg"}, userId, inviteId, code, msg);
    }

    void OnInviteAccepted(const char* userId, unsigned inviteId, const char* msg) override
    {
        Forward(&IZolOnlineListener::OnInviteAccepted, "IZolOnlineListener::OnInviteAccepted",
                {"userId", "inviteId", "msg"}, userId, inviteId, msg);
    }

    void OnInviteRejected(const char* userId, unsigned inviteId, ZolInviteRejectReason reason, const char* msg) override
    {
        Forward(&IZolOnlineListener::OnInviteRejected, "IZolOnlineListener::OnInviteRejected",
                {"userId", "inviteId", "reason", "msg"}, userId, inviteId, reason, msg);
    }

    void OnInviteCanceled(const char* userId, unsigned inviteId, ZolInviteCancelReason reason) override
    {
        Forward(&IZolOnlineListener::OnInviteCanceled, "IZolOnlineListener::OnInviteCanceled",
                {"userId", "inviteId", "reason"}, userId, inviteId, reason);
    }

    void OnUserTerminalStateChanged(const char* userId, const ZolUserTerminalInfo& info) override
    {
        Forward(&IZolOnlineListener::OnUserTerminalStateChanged, "IZolOnlineListener::OnUserTerminalStateChanged",
                {"userId", "info"}, userId, info);
    }
};

template <>
class Traced<IZolTMsgListener> final : public TraceProxy<IZolTMsgListener, Crossing::PlatformEvent>
{
public:
    using TraceProxy::TraceProxy;

    void OnUserMsgIncome(const char* srcUserId, unsigned int msgId, const char* msg) override
    {
        Forward(&IZolTMsgListener::OnUserMsgIncome, "IZolTMsgListener::OnUserMsgIncome", {"srcUserId", "msgId", "msg"},
                srcUserId, msgId, msg);
    }

    void OnGroupMsgIncome(const char* srcUserId, unsigned int msgId, const char* msg) override
    {
        Forward(&IZolTMsgListener::OnGroupMsgIncome, "IZolTMsgListener::OnGroupMsgIncome",
                {"srcUserId", "msgId", "msg"}, srcUserId, msgId, msg);
    }
};

template <>
class Traced<IZolMdsClientListener> final : public TraceProxy<IZolMdsClientListener, Crossing::PlatformEvent>
{
public:
    using TraceProxy::TraceProxy;

    void OnMdsMsgData(const char* msg) override
    {
        Forward(&IZolMdsClientListener::OnMdsMsgData, "IZolMdsClientListener::OnMdsMsgData", {"msg"}, msg);
    }
};

template <>
class Traced<IZolOnline> final : public TraceProxy<IZolOnline, Crossing::PlatformCall>
{
public:
    using TraceProxy::TraceProxy;

    void Reserved0() override
    {
        m_target.Reserved0();
    }

    HRESULT AddListener(IZolOnlineListener* listener) override
    {
        return Forward(&IZolOnline::AddListener, "IZolOnline::AddListener", {""}, listener);
    }

    HRESULT RemoveListener(IZolOnlineListener* listener) override
    {
        return Forward(&IZolOnline::RemoveListener, "IZolOnline::RemoveListener", {""}, listener);
    }

    HRESULT RefreshUsersStatus(const ZolTextList& ids, unsigned* requestId) override
    {
        return Forward(&IZolOnline::RefreshUsersStatus, "IZolOnline::RefreshUsersStatus", {"ids", "requestId"}, ids,
                       requestId);
    }

    HRESULT RefreshAllUsersStatus(unsigned* requestId) override
    {
        return Forward(&IZolOnline::RefreshAllUsersStatus, "IZolOnline::RefreshAllUsersStatus", {"requestId"},
                       requestId);
    }

    void Reserved5() override
    {
        m_target.Reserved5();
    }

    HRESULT SetUserCustomInfo(const char* text) override
    {
        return Forward(&IZolOnline::SetUserCustomInfo, "IZolOnline::SetUserCustomInfo", {"text"}, text);
    }

    HRESULT InviteUsers(const ZolTextList& ids, ZolTextPairList& results, const char* code, const char* json,
                        unsigned* inviteId) override
    {
        return Forward(&IZolOnline::InviteUsers, "IZolOnline::InviteUsers", {"ids", "", "code", "json", "inviteId"},
                       ids, results, code, json, inviteId);
    }

    HRESULT CancelInvite(const ZolTextList& ids, ZolTextPairList& results, unsigned inviteId) override
    {
        return Forward(&IZolOnline::CancelInvite, "IZolOnline::CancelInvite", {"ids", "", "inviteId"}, ids, results,
                       inviteId);
    }

    HRESULT AcceptInvite(const char* userId, unsigned inviteId, const char* json) override
    {
        return Forward(&IZolOnline::AcceptInvite, "IZolOnline::AcceptInvite", {"userId", "inviteId", "json"}, userId,
                       inviteId, json);
    }

    HRESULT RejectInvite(const char* userId, unsigned inviteId, const char* json) override
    {
        return Forward(&IZolOnline::RejectInvite, "IZolOnline::RejectInvite", {"userId", "inviteId", "json"}, userId,
                       inviteId, json);
    }
};

template <>
class Traced<IZolTMsg> final : public TraceProxy<IZolTMsg, Crossing::PlatformCall>
{
public:
    using TraceProxy::TraceProxy;

    void Reserved0() override
    {
        m_target.Reserved0();
    }

    HRESULT AddListener(IZolTMsgListener* listener) override
    {
        return Forward(&IZolTMsg::AddListener, "IZolTMsg::AddListener", {""}, listener);
    }

    HRESULT RemoveListener(IZolTMsgListener* listener) override
    {
        return Forward(&IZolTMsg::RemoveListener, "IZolTMsg::RemoveListener", {""}, listener);
    }
};

template <>
class Traced<IZolMdsClient> final : public TraceProxy<IZolMdsClient, Crossing::PlatformCall>
{
public:
    using TraceProxy::TraceProxy;

    void Reserved0() override
    {
        m_target.Reserved0();
    }

    HRESULT AddListener(IZolMdsClientListener* listener) override
    {
        return Forward(&IZolMdsClient::AddListener, "IZolMdsClient::AddListener", {""}, listener);
    }

    HRESULT RemoveListener(IZolMdsClientListener* listener) override
    {
        return Forward(&IZolMdsClient::RemoveListener, "IZolMdsClient::RemoveListener", {""}, listener);
    }

    HRESULT SendMdsData(const char* json) override
    {
        return Forward(&IZolMdsClient::SendMdsData, "IZolMdsClient::SendMdsData", {"json"}, json);
    }
};

template <>
class Traced<IZolConnection> final : public TraceProxy<IZolConnection, Crossing::PlatformCall>
{
public:
    using TraceProxy::TraceProxy;

    HRESULT QueryInterface(const GUID& iid, void** out) override
    {
        const HRESULT result =
            Forward(&IZolConnection::QueryInterface, "IZolConnection::QueryInterface", {"iid", ""}, iid, out);
        if (result >= 0 && (iid == IID_IZolConnection || iid == IID_IUnknown))
        {
            *out = static_cast<IZolConnection*>(this);
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

    HRESULT AddListener(IZolConnectionListener* listener) override
    {
        return Forward(&IZolConnection::AddListener, "IZolConnection::AddListener", {""}, listener);
    }

    HRESULT RemoveListener(IZolConnectionListener* listener) override
    {
        return Forward(&IZolConnection::RemoveListener, "IZolConnection::RemoveListener", {""}, listener);
    }

    /// The token is not recorded.
    HRESULT Login(const char* server, IZolHttp* http, const char* appid, const char* token, const char* deviceid,
                  const char* companyid, const char* userid, const char* mutex, const char* ext, bool force,
                  bool registeruser) override
    {
        return Forward(
            &IZolConnection::Login, "IZolConnection::Login",
            {"server", "http", "appid", "", "deviceid", "companyid", "userid", "mutex", "ext", "force", "registeruser"},
            server, http, appid, token, deviceid, companyid, userid, mutex, ext, force, registeruser);
    }

    HRESULT LoginOldGw(const GUID& guid, const char* userid, uint32_t param32, uint16_t param16,
                       uint64_t param64) override
    {
        return Forward(&IZolConnection::LoginOldGw, "IZolConnection::LoginOldGw",
                       {"guid", "userid", "param32", "param16", "param64"}, guid, userid, param32, param16, param64);
    }

    HRESULT Logout() override
    {
        return Forward(&IZolConnection::Logout, "IZolConnection::Logout");
    }

    HRESULT JoinGroup(const char* groupId) override
    {
        return Forward(&IZolConnection::JoinGroup, "IZolConnection::JoinGroup", {"groupId"}, groupId);
    }

    HRESULT LeaveGroup() override
    {
        return Forward(&IZolConnection::LeaveGroup, "IZolConnection::LeaveGroup");
    }

    HRESULT GetComponent(const IID& iid, void** out) override
    {
        const HRESULT result =
            Forward(&IZolConnection::GetComponent, "IZolConnection::GetComponent", {"iid", ""}, iid, out);
        if (result >= 0 && out != nullptr)
        {
            *out = TracedComponent(iid, *out);
        }
        return result;
    }

    /// The token is not recorded.
    HRESULT RequestCPAddress(const char* server, IZolHttp* http, const char* appid, const char* token,
                             const char* companyid) override
    {
        return Forward(&IZolConnection::RequestCPAddress, "IZolConnection::RequestCPAddress",
                       {"server", "http", "appid", "", "companyid"}, server, http, appid, token, companyid);
    }

private:
    void* TracedComponent(const IID& iid, void* component)
    {
        if (iid == IID_IZolOnline)
        {
            return m_context.Of(static_cast<IZolOnline*>(component));
        }
        if (iid == IID_IZolTMsg)
        {
            return m_context.Of(static_cast<IZolTMsg*>(component));
        }
        if (iid == IID_IZolMdsClient)
        {
            return m_context.Of(static_cast<IZolMdsClient*>(component));
        }
        return component;
    }
};

TracedFactory::TracedFactory(Trace& trace, uint32_t component, IComponentFactory& target)
    : m_trace(trace),
      m_component(component),
      m_target(target)
{
}

HRESULT TracedFactory::QueryInterface(const GUID& iid, void** out)
{
    return m_target.QueryInterface(iid, out);
}

uint32_t TracedFactory::AddRef()
{
    return m_target.AddRef();
}

uint32_t TracedFactory::Release()
{
    return m_target.Release();
}

HRESULT TracedFactory::CreateComponent(const CLSID& clsid, const IID& iid, IUnknown* outer, void** out)
{
    TraceSpan span(m_trace, {Crossing::PlatformCall,
                             m_component,
                             "IComponentFactory::CreateComponent",
                             {{"clsid", GuidName(clsid)}, {"iid", GuidName(iid)}}});
    const HRESULT result = span.Result(m_target.CreateComponent(clsid, iid, outer, out));
    if (result >= 0 && clsid == CLSID_ZolConnection && iid == IID_IZolConnection)
    {
        auto* const connection = static_cast<IZolConnection*>(*out);
        const uint32_t number = m_trace.AddConnection();
        const auto stand = [&](bool isHosts) -> IZolConnection*
        {
            TraceContext& context = m_trace.Keep<TraceContext>(m_trace, m_component, number, isHosts);
            return &m_trace.Keep<Traced<IZolConnection>>(context, *connection);
        };
        IZolConnection* const forModule = stand(false);
        const std::lock_guard lock(m_mutex);
        m_forHost[forModule] = stand(true);
        *out = forModule;
    }
    return result;
}

IUnknown* TracedFactory::ForHost(IUnknown* connection)
{
    const std::lock_guard lock(m_mutex);
    const auto found = m_forHost.find(connection);
    return found != m_forHost.end() ? found->second : connection;
}

} // namespace host
