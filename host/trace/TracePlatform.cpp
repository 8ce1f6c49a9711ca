#include "host/trace/TracePlatform.h"

#include "avcore/IZolConnection.h"
#include "avcore/IZolMdsClient.h"
#include "avcore/IZolOnline.h"
#include "avcore/IZolTMsg.h"
#include "host/trace/TraceProxy.h"
#include "onlinehost/Text.h"

#include <atomic>
#include <mutex>

namespace host
{

using namespace onlinehost;

using namespace avcore;

namespace
{

constexpr uint32_t kIdsShown = 20;

std::string ListText(const ZolTextList& ids)
{
    std::string text = std::to_string(ids.size()) + ":";
    for (uint32_t index = 0; index < ids.size() && index < kIdsShown; ++index)
    {
        text += " ";
        text += ids[index].c_str();
    }
    return ids.size() > kIdsShown ? text + " ..." : text;
}

struct ConnectionContext;

template <typename Interface>
class PlatformProxy : public TraceProxy<Interface, ConnectionContext>
{
public:
    using TraceProxy<Interface, ConnectionContext>::TraceProxy;

protected:
    ~PlatformProxy() = default;

    TraceSpan Call(const char* name, TraceArguments arguments = {}, size_t answers = 0)
    {
        return this->Record(Crossing::PlatformCall, name, arguments, answers);
    }

    TraceSpan Event(const char* name, TraceArguments arguments = {})
    {
        return this->Record(Crossing::PlatformEvent, name, arguments);
    }

    using TraceProxy<Interface, ConnectionContext>::m_context;
    using TraceProxy<Interface, ConnectionContext>::m_target;
};

class TracedConnectionListener;
class TracedHttp;
class TracedMdsClient;
class TracedMdsClientListener;
class TracedOnline;
class TracedOnlineListener;
class TracedTMsg;
class TracedTMsgListener;

template <typename Interface, typename Proxy>
using PlatformProxies = TraceProxies<Interface, Proxy, ConnectionContext>;

std::string InvitationKey(unsigned inviteId, const std::string& invitee)
{
    return "invitation " + std::to_string(inviteId) + " " + invitee;
}

/// One connection and all that stands around it.
struct ConnectionContext
{
    ConnectionContext(Trace& usedTrace, const std::string& deviceName)
        : trace(usedTrace),
          device(deviceName),
          number(++lastNumber)
    {
    }

    /// What the answer to an operation of this connection is known by.
    std::string Key(const std::string& operation) const
    {
        return operation + " of connection " + std::to_string(number);
    }

    void SetUser(const char* id)
    {
        const std::lock_guard lock(mutex);
        user = TraceText(id);
    }

    std::string User()
    {
        const std::lock_guard lock(mutex);
        return user;
    }

    static inline std::atomic<uint32_t> lastNumber{0};

    Trace& trace;
    const std::string device;
    const uint32_t number;
    std::mutex mutex;
    std::string user;
    PlatformProxies<IZolConnectionListener, TracedConnectionListener> listeners{*this};
    PlatformProxies<IZolHttp, TracedHttp> https{*this};
    PlatformProxies<IZolMdsClient, TracedMdsClient> mdsClients{*this};
    PlatformProxies<IZolMdsClientListener, TracedMdsClientListener> mdsListeners{*this};
    PlatformProxies<IZolOnline, TracedOnline> onlines{*this};
    PlatformProxies<IZolOnlineListener, TracedOnlineListener> onlineListeners{*this};
    PlatformProxies<IZolTMsg, TracedTMsg> messages{*this};
    PlatformProxies<IZolTMsgListener, TracedTMsgListener> messageListeners{*this};
};

class TracedHttp final : public PlatformProxy<IZolHttp>
{
public:
    using PlatformProxy::PlatformProxy;

    std::string HttpGet(const char* url) override
    {
        TraceSpan span = Record(Crossing::HttpRequest, "IZolHttp::HttpGet", {{"url", TraceUrl(url)}});
        return span.Result(m_target.HttpGet(url));
    }

    std::string HttpPost(const char* url, const char* body) override
    {
        TraceSpan span =
            Record(Crossing::HttpRequest, "IZolHttp::HttpPost", {{"url", TraceUrl(url)}, {"body", TraceText(body)}});
        return span.Result(m_target.HttpPost(url, body));
    }

    int32_t HttpClose(const char* url) override
    {
        TraceSpan span = Record(Crossing::HttpRequest, "IZolHttp::HttpClose", {{"url", TraceUrl(url)}});
        return span.Result(m_target.HttpClose(url));
    }
};

/// Several listeners get each event of a connection.
class TracedConnectionListener final : public PlatformProxy<IZolConnectionListener>
{
public:
    using PlatformProxy::PlatformProxy;

    void OnLoginResult(ZolPortErrCode code, const char* szConflictDeviceId, const char* szConflictCustomState,
                       const char* szConflictExtendInfo) override
    {
        TraceSpan span =
            Event("IZolConnectionListener::OnLoginResult", {{"code", int32_t{code}},
                                                            {"conflictDeviceId", TraceText(szConflictDeviceId)},
                                                            {"conflictCustomState", TraceText(szConflictCustomState)},
                                                            {"conflictExtendInfo", TraceText(szConflictExtendInfo)}});
        span.MayAnswer(m_context.Key("login"));
        m_target.OnLoginResult(code, szConflictDeviceId, szConflictCustomState, szConflictExtendInfo);
    }

    void OnJoinGroupResult(ZolPortErrCode code) override
    {
        TraceSpan span = Event("IZolConnectionListener::OnJoinGroupResult", {{"code", int32_t{code}}});
        span.MayAnswer(m_context.Key("join"));
        m_target.OnJoinGroupResult(code);
    }

    void OnLeaveGroupResult(ZolPortErrCode code) override
    {
        TraceSpan span = Event("IZolConnectionListener::OnLeaveGroupResult", {{"code", int32_t{code}}});
        span.MayAnswer(m_context.Key("leave"));
        m_target.OnLeaveGroupResult(code);
    }

    void OnLogouted(ZolPortErrCode code) override
    {
        TraceSpan span = Event("IZolConnectionListener::OnLogouted", {{"code", int32_t{code}}});
        span.MayAnswer(m_context.Key("logout"));
        m_target.OnLogouted(code);
    }

    int32_t OnReconnectStart() override
    {
        TraceSpan span = Event("IZolConnectionListener::OnReconnectStart");
        return span.Result(m_target.OnReconnectStart());
    }

    void OnReconnectSucess() override
    {
        const TraceSpan span = Event("IZolConnectionListener::OnReconnectSucess");
        m_target.OnReconnectSucess();
    }

    void OnReconnectFail(ZolPortErrCode code, const char* text) override
    {
        const TraceSpan span =
            Event("IZolConnectionListener::OnReconnectFail", {{"code", int32_t{code}}, {"text", TraceText(text)}});
        m_target.OnReconnectFail(code, text);
    }

    void OnGroupUserJoined(const char* userId) override
    {
        const TraceSpan span = Event("IZolConnectionListener::OnGroupUserJoined", {{"userId", TraceText(userId)}});
        m_target.OnGroupUserJoined(userId);
    }

    void OnGroupUserLeaved(const char* userId) override
    {
        const TraceSpan span = Event("IZolConnectionListener::OnGroupUserLeaved", {{"userId", TraceText(userId)}});
        m_target.OnGroupUserLeaved(userId);
    }

    void OnGroupUserSync(const ZolTextList& users, const WBASELIB::Vector<ZolMediaInfo>& media, bool complete) override
    {
        const TraceSpan span =
            Event("IZolConnectionListener::OnGroupUserSync", {{"users", ListText(users)}, {"complete", complete}});
        m_target.OnGroupUserSync(users, media, complete);
    }
};

class TracedOnlineListener final : public PlatformProxy<IZolOnlineListener>
{
public:
    using PlatformProxy::PlatformProxy;

    void OnRefreshUserStatusFinished(ZolPortErrCode code, unsigned requestId,
                                     const WBASELIB::Vector<ZolUserInfo>& users, int page_count,
                                     int page_index) override
    {
        TraceSpan span = Event("IZolOnlineListener::OnRefreshUserStatusFinished", {{"code", int32_t{code}},
                                                                                   {"requestId", requestId},
                                                                                   {"users", users.size()},
                                                                                   {"page_count", page_count},
                                                                                   {"page_index", page_index}});
        const std::string key = m_context.Key("refresh " + std::to_string(requestId));
        if (int64_t{page_index} + 1 == page_count)
        {
            span.Answers(key);
        }
        else
        {
            span.BelongsTo(key);
        }
        m_target.OnRefreshUserStatusFinished(code, requestId, users, page_count, page_index);
    }

    void OnInviteIncome(const char* userId, unsigned inviteId, const char* code, const char* msg) override
    {
        TraceSpan span = Event("IZolOnlineListener::OnInviteIncome", {{"userId", TraceText(userId)},
                                                                      {"inviteId", inviteId},
                                                                      {"code", TraceText(code)},
                                                                      {"msg", TraceText(msg)}});
        span.BelongsTo(InvitationKey(inviteId, m_context.User()));
        m_target.OnInviteIncome(userId, inviteId, code, msg);
    }

    void OnInviteAccepted(const char* userId, unsigned inviteId, const char* msg) override
    {
        TraceSpan span = Event("IZolOnlineListener::OnInviteAccepted",
                               {{"userId", TraceText(userId)}, {"inviteId", inviteId}, {"msg", TraceText(msg)}});
        span.Answers(InvitationKey(inviteId, TraceText(userId)));
        m_target.OnInviteAccepted(userId, inviteId, msg);
    }

    void OnInviteRejected(const char* userId, unsigned inviteId, ZolInviteRejectReason reason, const char* msg) override
    {
        TraceSpan span = Event("IZolOnlineListener::OnInviteRejected", {{"userId", TraceText(userId)},
                                                                        {"inviteId", inviteId},
                                                                        {"reason", int32_t{reason}},
                                                                        {"msg", TraceText(msg)}});
        span.Answers(InvitationKey(inviteId, TraceText(userId)));
        m_target.OnInviteRejected(userId, inviteId, reason, msg);
    }

    void OnInviteCanceled(const char* userId, unsigned inviteId, ZolInviteCancelReason reason) override
    {
        const TraceSpan span =
            Event("IZolOnlineListener::OnInviteCanceled",
                  {{"userId", TraceText(userId)}, {"inviteId", inviteId}, {"reason", int32_t{reason}}});
        m_target.OnInviteCanceled(userId, inviteId, reason);
    }

    void OnUserTerminalStateChanged(const char* userId, const ZolUserTerminalInfo& info) override
    {
        const TraceSpan span =
            Event("IZolOnlineListener::OnUserTerminalStateChanged", {{"userId", TraceText(userId)},
                                                                     {"terminal", TraceText(info.terminal)},
                                                                     {"status", info.status},
                                                                     {"custom", TraceText(info.custom)},
                                                                     {"ext_info", TraceText(info.ext_info)}});
        m_target.OnUserTerminalStateChanged(userId, info);
    }
};

class TracedTMsgListener final : public PlatformProxy<IZolTMsgListener>
{
public:
    using PlatformProxy::PlatformProxy;

    void OnUserMsgIncome(const char* srcUserId, unsigned int msgId, const char* msg) override
    {
        const TraceSpan span = Event("IZolTMsgListener::OnUserMsgIncome",
                                     {{"srcUserId", TraceText(srcUserId)}, {"msgId", msgId}, {"msg", TraceText(msg)}});
        m_target.OnUserMsgIncome(srcUserId, msgId, msg);
    }

    void OnGroupMsgIncome(const char* srcUserId, unsigned int msgId, const char* msg) override
    {
        const TraceSpan span = Event("IZolTMsgListener::OnGroupMsgIncome",
                                     {{"srcUserId", TraceText(srcUserId)}, {"msgId", msgId}, {"msg", TraceText(msg)}});
        m_target.OnGroupMsgIncome(srcUserId, msgId, msg);
    }
};

class TracedMdsClientListener final : public PlatformProxy<IZolMdsClientListener>
{
public:
    using PlatformProxy::PlatformProxy;

    void OnMdsMsgData(const char* msg) override
    {
        const TraceSpan span = Event("IZolMdsClientListener::OnMdsMsgData", {{"msg", TraceText(msg)}});
        m_target.OnMdsMsgData(msg);
    }
};

class TracedOnline final : public PlatformProxy<IZolOnline>
{
public:
    using PlatformProxy::PlatformProxy;

    void Reserved0() override
    {
        m_target.Reserved0();
    }
    void Reserved5() override
    {
        m_target.Reserved5();
    }

    HRESULT AddListener(IZolOnlineListener* listener) override
    {
        TraceSpan span = Call("IZolOnline::AddListener");
        return span.Result(m_target.AddListener(m_context.onlineListeners.Of(listener)));
    }

    HRESULT RemoveListener(IZolOnlineListener* listener) override
    {
        TraceSpan span = Call("IZolOnline::RemoveListener");
        return span.Result(m_target.RemoveListener(m_context.onlineListeners.Of(listener)));
    }

    HRESULT RefreshUsersStatus(const ZolTextList& ids, unsigned* requestId) override
    {
        TraceSpan span = Call("IZolOnline::RefreshUsersStatus", {{"ids", ListText(ids)}}, 1);
        const HRESULT result = span.Result(m_target.RefreshUsersStatus(ids, requestId));
        AnnounceRefresh(span, result, requestId);
        return result;
    }

    HRESULT RefreshAllUsersStatus(unsigned* requestId) override
    {
        TraceSpan span = Call("IZolOnline::RefreshAllUsersStatus", {}, 1);
        const HRESULT result = span.Result(m_target.RefreshAllUsersStatus(requestId));
        AnnounceRefresh(span, result, requestId);
        return result;
    }

    HRESULT SetUserCustomInfo(const char* text) override
    {
        TraceSpan span = Call("IZolOnline::SetUserCustomInfo", {{"text", TraceText(text)}});
        return span.Result(m_target.SetUserCustomInfo(text));
    }

    HRESULT InviteUsers(const ZolTextList& ids, ZolTextPairList& results, const char* code, const char* json,
                        unsigned* inviteId) override
    {
        TraceSpan span =
            Call("IZolOnline::InviteUsers",
                 {{"ids", ListText(ids)}, {"code", TraceText(code)}, {"json", TraceText(json)}}, ids.size());
        const HRESULT result = span.Result(m_target.InviteUsers(ids, results, code, json, inviteId));
        if (result >= 0)
        {
            for (uint32_t index = 0; index < ids.size(); ++index)
            {
                span.WillBeAnswered(InvitationKey(*inviteId, ids[index].c_str()));
            }
        }
        return result;
    }

    HRESULT CancelInvite(const ZolTextList& ids, ZolTextPairList& results, unsigned inviteId) override
    {
        TraceSpan span = Call("IZolOnline::CancelInvite", {{"ids", ListText(ids)}, {"inviteId", inviteId}});
        return span.Result(m_target.CancelInvite(ids, results, inviteId));
    }

    HRESULT AcceptInvite(const char* userId, unsigned inviteId, const char* json) override
    {
        TraceSpan span = Call("IZolOnline::AcceptInvite",
                              {{"userId", TraceText(userId)}, {"inviteId", inviteId}, {"json", TraceText(json)}});
        span.BelongsTo(InvitationKey(inviteId, m_context.User()));
        return span.Result(m_target.AcceptInvite(userId, inviteId, json));
    }

    HRESULT RejectInvite(const char* userId, unsigned inviteId, const char* json) override
    {
        TraceSpan span = Call("IZolOnline::RejectInvite",
                              {{"userId", TraceText(userId)}, {"inviteId", inviteId}, {"json", TraceText(json)}});
        span.BelongsTo(InvitationKey(inviteId, m_context.User()));
        return span.Result(m_target.RejectInvite(userId, inviteId, json));
    }

private:
    void AnnounceRefresh(TraceSpan& span, HRESULT result, const unsigned* requestId)
    {
        if (result >= 0)
        {
            span.WillBeAnswered(m_context.Key("refresh " + std::to_string(*requestId)));
        }
    }
};

class TracedTMsg final : public PlatformProxy<IZolTMsg>
{
public:
    using PlatformProxy::PlatformProxy;

    void Reserved0() override
    {
        m_target.Reserved0();
    }

    HRESULT AddListener(IZolTMsgListener* listener) override
    {
        TraceSpan span = Call("IZolTMsg::AddListener");
        return span.Result(m_target.AddListener(m_context.messageListeners.Of(listener)));
    }

    HRESULT RemoveListener(IZolTMsgListener* listener) override
    {
        TraceSpan span = Call("IZolTMsg::RemoveListener");
        return span.Result(m_target.RemoveListener(m_context.messageListeners.Of(listener)));
    }
};

class TracedMdsClient final : public PlatformProxy<IZolMdsClient>
{
public:
    using PlatformProxy::PlatformProxy;

    void Reserved0() override
    {
        m_target.Reserved0();
    }

    HRESULT AddListener(IZolMdsClientListener* listener) override
    {
        TraceSpan span = Call("IZolMdsClient::AddListener");
        return span.Result(m_target.AddListener(m_context.mdsListeners.Of(listener)));
    }

    HRESULT RemoveListener(IZolMdsClientListener* listener) override
    {
        TraceSpan span = Call("IZolMdsClient::RemoveListener");
        return span.Result(m_target.RemoveListener(m_context.mdsListeners.Of(listener)));
    }

    HRESULT SendMdsData(const char* json) override
    {
        TraceSpan span = Call("IZolMdsClient::SendMdsData", {{"json", TraceText(json)}});
        return span.Result(m_target.SendMdsData(json));
    }
};

class TracedConnection final : public PlatformProxy<IZolConnection>
{
public:
    using PlatformProxy::PlatformProxy;

    HRESULT QueryInterface(const GUID& iid, void** out) override
    {
        TraceSpan span = Call("IZolConnection::QueryInterface", {{"iid", GuidText(iid)}});
        const HRESULT result = span.Result(m_target.QueryInterface(iid, out));
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
        TraceSpan span = Call("IZolConnection::AddListener");
        return span.Result(m_target.AddListener(m_context.listeners.Of(listener)));
    }

    HRESULT RemoveListener(IZolConnectionListener* listener) override
    {
        TraceSpan span = Call("IZolConnection::RemoveListener");
        return span.Result(m_target.RemoveListener(m_context.listeners.Of(listener)));
    }

    HRESULT Login(const char* server, IZolHttp* http, const char* appid, const char* token, const char* deviceid,
                  const char* companyid, const char* userid, const char* mutex, const char* ext, bool force,
                  bool registeruser) override
    {
        TraceSpan span = Call("IZolConnection::Login",
                              {{"server", TraceText(server)},
                               {"http", http != nullptr ? "given" : "(null)"},
                               {"appid", TraceText(appid)},
                               {"deviceid", TraceText(deviceid)},
                               {"companyid", TraceText(companyid)},
                               {"userid", TraceText(userid)},
                               {"mutex", TraceText(mutex)},
                               {"ext", TraceText(ext)},
                               {"force", force},
                               {"registeruser", registeruser}},
                              1);
        m_context.SetUser(userid);
        return Await(span, "login",
                     [&]
                     {
                         return m_target.Login(server, m_context.https.Of(http), appid, token, deviceid, companyid,
                                               userid, mutex, ext, force, registeruser);
                     });
    }

    HRESULT LoginOldGw(const GUID& guid, const char* userid, uint32_t param32, uint16_t param16,
                       uint64_t param64) override
    {
        TraceSpan span = Call("IZolConnection::LoginOldGw",
                              {{"guid", GuidText(guid)},
                               {"userid", TraceText(userid)},
                               {"param32", param32},
                               {"param16", param16},
                               {"param64", std::to_string(param64)}},
                              1);
        return Await(span, "login", [&] { return m_target.LoginOldGw(guid, userid, param32, param16, param64); });
    }

    HRESULT Logout() override
    {
        TraceSpan span = Call("IZolConnection::Logout", {}, 1);
        return Await(span, "logout", [&] { return m_target.Logout(); });
    }

    HRESULT JoinGroup(const char* groupId) override
    {
        TraceSpan span = Call("IZolConnection::JoinGroup", {{"groupId", TraceText(groupId)}}, 1);
        return Await(span, "join", [&] { return m_target.JoinGroup(groupId); });
    }

    HRESULT LeaveGroup() override
    {
        TraceSpan span = Call("IZolConnection::LeaveGroup", {}, 1);
        return Await(span, "leave", [&] { return m_target.LeaveGroup(); });
    }

    HRESULT GetComponent(const IID& iid, void** out) override
    {
        TraceSpan span = Call("IZolConnection::GetComponent", {{"iid", GuidText(iid)}});
        const HRESULT result = span.Result(m_target.GetComponent(iid, out));
        if (result >= 0 && out != nullptr && *out != nullptr)
        {
            *out = RecordComponent(iid, *out);
        }
        return result;
    }

    HRESULT RequestCPAddress(const char* server, IZolHttp* http, const char* appid, const char* token,
                             const char* companyid) override
    {
        TraceSpan span =
            Call("IZolConnection::RequestCPAddress",
                 {{"server", TraceText(server)}, {"appid", TraceText(appid)}, {"companyid", TraceText(companyid)}});
        return span.Result(m_target.RequestCPAddress(server, m_context.https.Of(http), appid, token, companyid));
    }

private:
    /// Makes a call whose answer comes as an event, unless the call fails.
    template <typename Operation>
    HRESULT Await(TraceSpan& span, const char* operation, Operation call)
    {
        const std::string key = m_context.Key(operation);
        span.WillBeAnswered(key);
        const HRESULT result = span.Result(call());
        if (result < 0)
        {
            span.WillNotBeAnswered(key);
        }
        return result;
    }

    void* RecordComponent(const IID& iid, void* component)
    {
        if (iid == IID_IZolOnline)
        {
            return m_context.onlines.Of(static_cast<IZolOnline*>(component));
        }
        if (iid == IID_IZolTMsg)
        {
            return m_context.messages.Of(static_cast<IZolTMsg*>(component));
        }
        if (iid == IID_IZolMdsClient)
        {
            return m_context.mdsClients.Of(static_cast<IZolMdsClient*>(component));
        }
        return component;
    }
};

class TracedFactory final : public IComponentFactory
{
public:
    TracedFactory(Trace& trace, const std::string& device, IComponentFactory& target)
        : m_trace(trace),
          m_device(device),
          m_target(target)
    {
    }

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

    HRESULT CreateComponent(const CLSID& clsid, const IID& iid, IUnknown* outer, void** out) override
    {
        TraceSpan span(m_trace, Crossing::PlatformCall, m_device, "IComponentFactory::CreateComponent",
                       {{"clsid", GuidText(clsid)}, {"iid", GuidText(iid)}});
        const HRESULT result = span.Result(m_target.CreateComponent(clsid, iid, outer, out));
        if (result >= 0 && clsid == CLSID_ZolConnection && iid == IID_IZolConnection)
        {
            ConnectionContext& context = m_trace.Keep<ConnectionContext>(m_trace, m_device);
            *out = static_cast<IZolConnection*>(
                &m_trace.Keep<TracedConnection>(context, *static_cast<IZolConnection*>(*out)));
        }
        return result;
    }

private:
    Trace& m_trace;
    const std::string m_device;
    IComponentFactory& m_target;
};

} // namespace

IComponentFactory& RecordPlatform(Trace& trace, const std::string& device, IComponentFactory& factory)
{
    return trace.Keep<TracedFactory>(trace, device, factory);
}

} // namespace host
