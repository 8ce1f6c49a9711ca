#include "onlinemanager/PaasOnlineImp.h"

#include "commonutil/OrbLogUtil.h"
#include "commonutil/StringUtil.h"
#include "onlinemanager/JoinDataReference.h"

#include <algorithm>
#include <cctype>
#include <cstring>
#include <strings.h>
#include <system_error>
#include <thread>

namespace onlinemanager
{

using commonutil::TextOrEmpty;
using commonutil::ToAString;
using WBASELIB::RelaxedLoad;
using WBASELIB::RelaxedStore;
using WBASELIB::WAutoLock;

namespace
{

constexpr const char* kOnline = "true";
constexpr const char* kOffline = "false";

/// Never inlined: by this name the leak checkers know the copy, which Destroy leaves behind on purpose.
[[gnu::noinline]] void KeepLoginParam(LoginParam& kept, const LoginParam& param)
{
    kept = param;
}

bool BeginsWith(const std::string& text, const char* scheme)
{
    return strncasecmp(text.c_str(), scheme, std::strlen(scheme)) == 0;
}

bool IsHttpAddress(const std::string& server)
{
    return BeginsWith(server, "http://") || BeginsWith(server, "https://");
}

bool IsConnectionPoint(std::string server)
{
    std::transform(server.begin(), server.end(), server.begin(),
                   [](unsigned char character) { return static_cast<char>(std::tolower(character)); });
    return server.find("tcp:") != std::string::npos;
}

} // namespace

PaasOnlineImp::PaasOnlineImp(avcore::IZolConnection*& connection, IUnknown* outer)
    : m_zol_connection(connection),
      m_http_helper(std::make_unique<HttpHelper>())
{
    ORB_LOG("%s()", "PaasOnlineImp");
    if (!m_http_helper->Init(outer))
    {
        m_http_helper.reset();
    }
}

PaasOnlineImp::~PaasOnlineImp()
{
    if (m_http_helper != nullptr)
    {
        m_http_helper->Uninit();
    }
    ReleaseService(m_user_online);
}

bool PaasOnlineImp::InitModel(IComponentFactory* /*factory*/)
{
    ORB_LOG("%s()", "InitModel");
    if (m_zol_connection == nullptr)
    {
        ORB_LOG("PaasOnlineImp::InitModel Failed, m_zol_connection = nullptr.");
        return false;
    }
    m_tunnel.m_session = this;
    m_zol_connection->AddListener(this);
    m_zol_connection->AddListener(&m_tunnel);
    if (RelaxedLoad(m_zol_online) == nullptr)
    {
        void* online = nullptr;
        if (m_zol_connection->GetComponent(avcore::IID_IZolOnline, &online) < 0)
        {
            ORB_LOG("PaasOnlineImp::InitModel Get Zol Online Component Fail.");
            return false;
        }
        RelaxedStore(m_zol_online, static_cast<avcore::IZolOnline*>(online));
    }
    if (UserOnline())
    {
        return true;
    }
    auto userOnline = std::make_unique<UserOnlineImp>(m_zol_online);
    if (!userOnline->InitModel())
    {
        // True on purpose: the session works without the presence service.
        ORB_LOG("%s, m_user_online=%p, InitModel failed.", "InitModel", static_cast<void*>(userOnline.get()));
        return true;
    }
    const WAutoLock guard(&m_lock);
    m_user_online = userOnline.release();
    return true;
}

bool PaasOnlineImp::UninitModel()
{
    if (m_zol_connection != nullptr)
    {
        m_zol_connection->RemoveListener(this);
        m_zol_connection->RemoveListener(&m_tunnel);
    }
    if (const ServiceRef<UserOnlineImp> userOnline = UserOnline())
    {
        userOnline->UninitModel();
        userOnline->Detach();
        const WAutoLock guard(&m_lock);
        ReleaseService(m_user_online);
    }
    RelaxedStore(m_zol_online, nullptr);
    Logout();
    m_tunnel.m_session = nullptr;
    return true;
}

void PaasOnlineImp::ForgetTunnelListeners()
{
    m_tunnel.RemoveAllNotify();
}

bool PaasOnlineImp::HasTransportFor(const std::string& server) const
{
    if (IsHttpAddress(server) && m_http_helper == nullptr)
    {
        ORB_LOG("Login online server address is HTTP protocel, but m_http_helper == nullptr.");
        return false;
    }
    return true;
}

bool PaasOnlineImp::Login(const LoginParam& param, bool force)
{
    ORB_LOG("%s()", "Login");
    if (m_zol_connection == nullptr || param.server.empty() || param.userid == 0 || !HasTransportFor(param.server))
    {
        return false;
    }
    const std::string userid = ToAString(param.userid);
    const std::string companyid = ToAString(param.companyid);
    CheckSerialization();
    const std::string ext = m_serialization->FormatLoginExtInfo(param.terminal);
    {
        const WAutoLock guard(&m_lock);
        KeepLoginParam(m_login_param, param);
    }
    m_login_state = LOGIN_STATE_LOGGING_IN;
    ORB_LOG("Paas login param: server=%s, appid=%s, token=%s.", param.server.c_str(), param.appid.c_str(),
            param.token.c_str());
    ORB_LOG("Paas login param: deviceid=%s, companyid=%s, userid=%s.", param.deviceid.c_str(), companyid.c_str(),
            userid.c_str());
    ORB_LOG("Paas login param: mutex=%s, ext=%s.", param.mutex.c_str(), ext.c_str());
    ORB_LOG("Paas login param: force=%d, registeruser=%d.", force ? 1 : 0, param.registeruser ? 1 : 0);
    // A login passes the helper only for a server that the platform asks over HTTP, while RequestCPAddress always
    // passes it.
    avcore::IZolHttp* const http = IsHttpAddress(param.server) ? m_http_helper.get() : nullptr;
    const HRESULT hr = m_zol_connection->Login(param.server.c_str(), http, param.appid.c_str(), param.token.c_str(),
                                               param.deviceid.c_str(), companyid.c_str(), userid.c_str(),
                                               param.mutex.c_str(), ext.c_str(), force, param.registeruser);
    if (hr < 0)
    {
        ORB_LOG("Login PaaS failed, ret(0x%x).", static_cast<unsigned>(hr));
        return false;
    }
    return true;
}

bool PaasOnlineImp::RequestCPAddress(const LoginParam& param)
{
    ORB_LOG("%s()", "RequestCPAddress");
    if (m_zol_connection == nullptr || param.server.empty() || param.userid == 0 || !HasTransportFor(param.server))
    {
        return false;
    }
    if (IsConnectionPoint(param.server))
    {
        return true;
    }
    const std::string companyid = ToAString(param.companyid);
    ORB_LOG("Paas request cp param: server=%s, appid=%s, token=%s, companyid=%s.", param.server.c_str(),
            param.appid.c_str(), param.token.c_str(), companyid.c_str());
    const HRESULT hr = m_zol_connection->RequestCPAddress(param.server.c_str(), m_http_helper.get(),
                                                          param.appid.c_str(), param.token.c_str(), companyid.c_str());
    if (hr < 0)
    {
        ORB_LOG("request cp address failed, ret(0x%x).", static_cast<unsigned>(hr));
        return false;
    }
    return true;
}

bool PaasOnlineImp::Relogin(bool force)
{
    LoginParam param;
    {
        const WAutoLock guard(&m_lock);
        param = m_login_param;
    }
    if (param.userid == 0)
    {
        return false;
    }
    const LoginState state = m_login_state;
    if (state == LOGIN_STATE_LOGGED_OUT)
    {
        return Login(param, force);
    }
    return state == LOGIN_STATE_LOGGED_IN;
}

bool PaasOnlineImp::Logout()
{
    ORB_LOG("%s()", "Logout");
    if (m_zol_connection == nullptr)
    {
        return false;
    }
    if (m_login_state == LOGIN_STATE_LOGGED_OUT || UserId() == 0)
    {
        ORB_LOG("PaasOnlineImp::Logout is not logged in.");
        return true;
    }
    if (m_zol_connection->Logout() < 0)
    {
        ORB_LOG("Logout failed.");
        return false;
    }
    return true;
}

ConnectPropertyResult PaasOnlineImp::GetConnectProperty(ConnectProperty key, char* buffer, int size)
{
    if (buffer == nullptr || size <= 0)
    {
        return {0, 0};
    }
    const WAutoLock guard(&m_lock);
    const auto property = m_connect_property.find(key);
    if (property == m_connect_property.end())
    {
        return {0, 0};
    }
    const std::string& value = property->second;
    if (value.size() >= static_cast<size_t>(size))
    {
        return {0, static_cast<int32_t>(value.size() + 1)};
    }
    commonutil::CopyPadded(buffer, static_cast<size_t>(size), value);
    return {1, 0};
}

bool PaasOnlineImp::TriggerNotify()
{
    try
    {
        std::thread([session = ServiceRef<PaasOnlineImp>(this)] { session->SendLoginState(); }).detach();
        return true;
    }
    catch (const std::system_error&)
    {
        return false; // the system cannot start another thread
    }
}

void PaasOnlineImp::SendLoginState()
{
    if (m_login_state == LOGIN_STATE_LOGGED_IN)
    {
        Broadcast(&IPaasOnlineNotify::OnLoginSuccess);
    }
    else
    {
        Broadcast(&IPaasOnlineNotify::OnOffline, static_cast<ErrCode>(avcore::ZOL_PORT_NOT_LOGGED_IN));
    }
}

int32_t PaasOnlineImp::GetUserOnline(IUserOnline** out)
{
    if (out == nullptr)
    {
        ORB_LOG("PaasOnlineImp::GetUserOnline param error.");
        return E_FAIL;
    }
    UserOnlineImp* userOnline = nullptr;
    {
        const WAutoLock guard(&m_lock);
        userOnline = m_user_online;
    }
    if (userOnline == nullptr)
    {
        ORB_LOG("PaasOnlineImp::GetUserOnline m_user_online = nullptr.");
        return E_FAIL;
    }
    *out = userOnline;
    return S_OK;
}

int32_t PaasOnlineImp::GetMeetingTunnel(IMeetingTunnel** out)
{
    ORB_LOG("%s()", "GetMeetingTunnel");
    if (out == nullptr)
    {
        ORB_LOG("PaasOnlineImp::GetMeetingTunnel param error.");
        return E_FAIL;
    }
    *out = &m_tunnel;
    return S_OK;
}

void PaasOnlineImp::SetReconnectionStrategy(IReconnectionStrategy* strategy)
{
    m_reconnection_strategy = strategy;
}

void PaasOnlineImp::OnLoginResult(avcore::ZolPortErrCode code, const char* szConflictDeviceId,
                                  const char* szConflictCustomState, const char* szConflictExtendInfo)
{
    const ServiceRef self(this);
    ORB_LOG("%s(), errCode=%d.", "OnLoginResult", static_cast<int>(code));
    if (code == avcore::ZOL_PORT_LOGIN_CONFLICT)
    {
        ORB_LOG("%s(), szConflictDeviceId=%s.", "OnLoginResult", TextOrEmpty(szConflictDeviceId));
        ORB_LOG("%s(), szConflictCustomState=%s.", "OnLoginResult", TextOrEmpty(szConflictCustomState));
        ORB_LOG("%s(), szConflictExtendInfo=%s.", "OnLoginResult", TextOrEmpty(szConflictExtendInfo));
        SetProperty(CONNECT_PROPERTY_CONFLICT_CUSTOM_STATE, TextOrEmpty(szConflictCustomState));
        SetProperty(CONNECT_PROPERTY_CONFLICT_DEVICE_ID, TextOrEmpty(szConflictDeviceId));
    }
    const bool loggedIn = code == avcore::ZOL_PORT_SUCCESS;
    m_login_state = loggedIn ? LOGIN_STATE_LOGGED_IN : LOGIN_STATE_LOGGED_OUT;
    SetProperty(CONNECT_PROPERTY_ONLINE, loggedIn ? kOnline : kOffline);
    if (loggedIn)
    {
        Broadcast(&IPaasOnlineNotify::OnLoginSuccess);
    }
    else
    {
        // Code 36 stays 36 here, on purpose; only a logout turns it into ERR_LOGIN_CONFLICT. Hosts distinguish by that
        // a refused login from a login that another device took over.
        Broadcast(&IPaasOnlineNotify::OnOffline, static_cast<ErrCode>(code));
    }
    if (const ServiceRef<UserOnlineImp> userOnline = UserOnline())
    {
        TellUserOnline(*userOnline, loggedIn);
        userOnline->LoginResultNotify(code);
    }
}

void PaasOnlineImp::OnLogouted(avcore::ZolPortErrCode code)
{
    const ServiceRef self(this);
    ORB_LOG("%s(), errCode=%d.", "OnLogouted", static_cast<int>(code));
    m_login_state = LOGIN_STATE_LOGGED_OUT;
    SetProperty(CONNECT_PROPERTY_ONLINE, kOffline);
    if (const ServiceRef<UserOnlineImp> userOnline = UserOnline())
    {
        TellUserOnline(*userOnline, false);
        userOnline->LogoutedNotify();
    }
    const ErrCode reason = code == avcore::ZOL_PORT_LOGIN_CONFLICT ? ERR_LOGIN_CONFLICT : static_cast<ErrCode>(code);
    Broadcast(&IPaasOnlineNotify::OnOffline, reason);
}

void PaasOnlineImp::OnReadyReconnect(TunnelType type)
{
    const ServiceRef self(this);
    Broadcast(&IPaasOnlineNotify::OnReadyReconnect, type);
}

void PaasOnlineImp::OnReconnectStart(TunnelType type)
{
    const ServiceRef self(this);
    Broadcast(&IPaasOnlineNotify::OnReconnectStart, type);
}

void PaasOnlineImp::OnReconnectSucess(TunnelType type)
{
    const ServiceRef self(this);
    Broadcast(&IPaasOnlineNotify::OnReconnectSucess, type);
}

void PaasOnlineImp::OnReconnectFail(TunnelType type, ErrCode code)
{
    const ServiceRef self(this);
    Broadcast(&IPaasOnlineNotify::OnReconnectFail, type, code);
}

bool PaasOnlineImp::IsLoggedIn()
{
    return m_login_state == LOGIN_STATE_LOGGED_IN && UserId() != 0;
}

uint32_t PaasOnlineImp::UserId()
{
    const WAutoLock guard(&m_lock);
    return m_login_param.userid;
}

void PaasOnlineImp::SetProperty(ConnectProperty key, const char* value)
{
    const WAutoLock guard(&m_lock);
    m_connect_property[key] = value;
}

ServiceRef<UserOnlineImp> PaasOnlineImp::UserOnline()
{
    const WAutoLock guard(&m_lock);
    return ServiceRef<UserOnlineImp>(m_user_online);
}

void PaasOnlineImp::TellUserOnline(UserOnlineImp& userOnline, bool loggedIn)
{
    const WAutoLock guard(&m_lock);
    userOnline.m_self_user_id = loggedIn ? m_login_param.userid : 0;
    userOnline.m_terminal_type = loggedIn ? m_login_param.terminal : quenda::TERMINAL_TYPE_UNKNOWN;
}

bool PaasOnlineImp::ZolTunnel::JoinMeeting(const JoinData& data)
{
    ORB_LOG("%s()", "JoinMeeting");
    PaasOnlineImp* const session = m_session;
    if (session == nullptr || session->m_zol_connection == nullptr)
    {
        return false;
    }
    if (!session->IsLoggedIn())
    {
        ORB_LOG("JoinMeeting failed, current not logged in.");
        return false;
    }
    if (IsAbsent(data))
    {
        ORB_LOG("JoinMeeting failed, guid = nullptr.");
        return false;
    }
    std::string groupId;
    commonutil::GUID2String(data.guid, &groupId);
    commonutil::ReplaceAll(&groupId, "{", "");
    commonutil::ReplaceAll(&groupId, "}", "");
    // Only 0 is success here, while a leave succeeds with every code that is not negative, on purpose: the platform's
    // two operations answer so.
    const HRESULT hr = session->m_zol_connection->JoinGroup(groupId.c_str());
    if (hr != S_OK)
    {
        ORB_LOG("JoinMeeting failed, code(%d).", hr);
        return false;
    }
    m_join_pending = true;
    return true;
}

bool PaasOnlineImp::ZolTunnel::LeaveMeeting()
{
    ORB_LOG("%s()", "LeaveMeeting");
    PaasOnlineImp* const session = m_session;
    if (session == nullptr || session->m_zol_connection == nullptr)
    {
        return false;
    }
    if (!session->IsLoggedIn())
    {
        ORB_LOG("%s call failed, current not logged in.", "LeaveMeeting");
        return false;
    }
    const HRESULT hr = session->m_zol_connection->LeaveGroup();
    if (hr < 0)
    {
        ORB_LOG("LeaveMeeting failed, ret(0x%x).", static_cast<unsigned>(hr));
        return false;
    }
    m_join_pending = false;
    return true;
}

void PaasOnlineImp::ZolTunnel::OnJoinGroupResult(avcore::ZolPortErrCode code)
{
    const ServiceRef<PaasOnlineImp> session(m_session);
    ORB_LOG("%s()", "OnJoinGroupResult");
    ORB_LOG("errCode=%d.", static_cast<int>(code));
    m_join_pending = false;
    Broadcast(&IMeetingTunnelNotify::OnJoinMeetingResult, static_cast<ErrCode>(code));
}

void PaasOnlineImp::ZolTunnel::OnLeaveGroupResult(avcore::ZolPortErrCode code)
{
    const ServiceRef<PaasOnlineImp> session(m_session);
    ORB_LOG("%s()", "OnLeaveGroupResult");
    ORB_LOG("errCode=%d.", static_cast<int>(code));
    Broadcast(&IMeetingTunnelNotify::OnLeaveMeetingResult, static_cast<ErrCode>(code));
}

void PaasOnlineImp::ZolTunnel::OnGroupUserJoined(const char* userId)
{
    const ServiceRef<PaasOnlineImp> session(m_session);
    ORB_LOG("%s()", "OnGroupUserJoined");
    const unsigned remoteUserId = commonutil::UserIdOrZero(userId);
    ORB_LOG("remoteUserId=%u.", remoteUserId);
    Broadcast(&IMeetingTunnelNotify::OnUserJoined, remoteUserId);
}

void PaasOnlineImp::ZolTunnel::OnGroupUserLeaved(const char* userId)
{
    const ServiceRef<PaasOnlineImp> session(m_session);
    ORB_LOG("%s()", "OnGroupUserLeaved");
    const unsigned remoteUserId = commonutil::UserIdOrZero(userId);
    ORB_LOG("remoteUserId=%u.", remoteUserId);
    Broadcast(&IMeetingTunnelNotify::OnUserLeaved, remoteUserId);
}

int32_t PaasOnlineImp::ZolTunnel::OnReconnectStart()
{
    const ServiceRef<PaasOnlineImp> session(m_session);
    if (m_join_pending.exchange(false))
    {
        ORB_LOG("%s, join result notify", "OnReconnectStart");
        Broadcast(&IMeetingTunnelNotify::OnJoinMeetingResult, ERR_JOIN_ABORTED_BY_RECONNECT);
    }
    if (!session)
    {
        return avcore::ZOL_RECONNECT_STOP;
    }
    if (const ServiceRef<UserOnlineImp> userOnline = session->UserOnline())
    {
        userOnline->ReconnectStartNotify();
    }
    if (session->m_login_state == LOGIN_STATE_LOGGED_IN)
    {
        ORB_LOG("%s()", "OnReconnectStart");
        session->m_login_state = LOGIN_STATE_LOGGING_IN;
        session->OnReadyReconnect(m_tunnel_type);
    }
    IReconnectionStrategy* const strategy = session->m_reconnection_strategy;
    if (strategy == nullptr)
    {
        ORB_LOG("Reconnect can't work, strategy == nullptr.");
        return StopReconnect(*session);
    }
    switch (strategy->CheckReconnect())
    {
    case avcore::ZOL_RECONNECT_GO_ON:
        session->OnReconnectStart(m_tunnel_type);
        return avcore::ZOL_RECONNECT_GO_ON;
    case avcore::ZOL_RECONNECT_STOP:
        ORB_LOG("Reconnect stoped.");
        return StopReconnect(*session);
    default:
        return avcore::ZOL_RECONNECT_UNDECIDED;
    }
}

int32_t PaasOnlineImp::ZolTunnel::StopReconnect(PaasOnlineImp& session)
{
    session.m_login_state = LOGIN_STATE_LOGGED_OUT;
    if (const ServiceRef<UserOnlineImp> userOnline = session.UserOnline())
    {
        userOnline->LogoutedNotify();
    }
    session.OnReconnectFail(m_tunnel_type, ERR_RECONNECT_STOPPED);
    return avcore::ZOL_RECONNECT_STOP;
}

void PaasOnlineImp::ZolTunnel::OnReconnectSucess()
{
    const ServiceRef<PaasOnlineImp> session(m_session);
    ORB_LOG("%s()", "OnReconnectSucess");
    if (!session)
    {
        return;
    }
    session->m_login_state = LOGIN_STATE_LOGGED_IN;
    session->SetProperty(CONNECT_PROPERTY_ONLINE, kOnline);
    session->OnReconnectSucess(m_tunnel_type);
    if (const ServiceRef<UserOnlineImp> userOnline = session->UserOnline())
    {
        userOnline->ReconnectSucessNotify();
    }
}

void PaasOnlineImp::ZolTunnel::OnReconnectFail(avcore::ZolPortErrCode code, const char* text)
{
    const ServiceRef<PaasOnlineImp> session(m_session);
    if (!session)
    {
        return;
    }
    session->SetProperty(CONNECT_PROPERTY_ONLINE, kOffline);
    if (code == avcore::ZOL_PORT_LOGIN_CONFLICT && text != nullptr)
    {
        session->SetProperty(CONNECT_PROPERTY_CONFLICT_DEVICE_ID, text);
    }
    session->OnReconnectFail(m_tunnel_type, static_cast<ErrCode>(code));
}

} // namespace onlinemanager
