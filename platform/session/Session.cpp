#include "platform/session/Session.h"

#include <limits>

namespace platform
{

using avcore::IZolConnectionListener;

namespace
{

std::string CodeText(avcore::ZolPortErrCode code)
{
    return std::to_string(static_cast<int32_t>(code));
}

void AddResult(avcore::ZolTextPairList& results, const std::string& userId, avcore::ZolPortErrCode code)
{
    results.push_back({avcore::ZolText(userId.c_str()), avcore::ZolText(CodeText(code).c_str())});
}

SessionInfo MakeInfo(const LoginRequest& request)
{
    SessionInfo info;
    info.gateway = request.gateway;
    info.appId = request.appId;
    info.companyId = request.companyId;
    info.userId = request.userId;
    info.deviceId = request.deviceId;
    info.mutex = request.mutex;
    info.ext = request.ext;
    info.server = request.server;
    info.groupId = request.groupId;
    info.force = request.force;
    info.registerUser = request.registerUser;
    return info;
}

} // namespace

bool Session::PostOperation(std::function<void(Session&)> operation)
{
    return m_engine->PostOperation([self = shared_from_this(), operation = std::move(operation)] { operation(*self); });
}

/// Runs `operation` unless the login has ended by then. A later logout runs after it.
HRESULT Session::PostForLogin(uint64_t login, std::function<void(Session&)> operation)
{
    const bool posted = PostOperation(
        [login, operation = std::move(operation)](Session& self)
        {
            if (self.m_login == login && self.m_phase != Phase::LoggedOut)
            {
                operation(self);
            }
        });
    return posted ? S_OK : E_FAIL;
}

/// The established login, unless it is a gateway login.
std::optional<uint64_t> Session::FindPaasLogin() const
{
    const std::lock_guard lock(m_mutex);
    return m_online && !m_info.gateway ? std::optional(m_active) : std::nullopt;
}

HRESULT Session::Login(LoginRequest request, avcore::IZolHttp* http)
{
    uint64_t login = 0;
    std::shared_ptr<HttpFetch> former;
    {
        const std::lock_guard lock(m_mutex);
        if (m_abandoned)
        {
            return E_FAIL;
        }
        login = ++m_lastLogin;
        m_active = login;
        m_online = false;
        m_groupTicket = 0;
        m_http = http;
        m_begin = Engine::NextEpoch();
        m_info = MakeInfo(request);
        former.swap(m_loginFetch);
    }
    if (former != nullptr)
    {
        former->Abort();
    }
    const bool posted =
        PostOperation([request = std::move(request), login](Session& self) { self.Begin(request, login); });
    if (!posted)
    {
        Deactivate(login);
        return E_FAIL;
    }
    return S_OK;
}

HRESULT Session::Logout()
{
    std::shared_ptr<HttpFetch> fetch;
    {
        const std::lock_guard lock(m_mutex);
        if (m_active == 0)
        {
            return E_FAIL;
        }
        m_active = 0;
        m_online = false;
        m_groupTicket = 0;
        fetch.swap(m_loginFetch);
    }
    if (fetch != nullptr)
    {
        fetch->Abort();
    }
    const bool posted = PostOperation(
        [](Session& self)
        {
            self.Leave();
            self.Emit<IZolConnectionListener>([](auto& listener) { listener.OnLogouted(avcore::ZOL_PORT_SUCCESS); });
        });
    return posted ? S_OK : E_FAIL;
}

HRESULT Session::JoinGroup(const std::string& groupId)
{
    uint64_t ticket = 0;
    {
        const std::lock_guard lock(m_mutex);
        if (!m_online || m_info.gateway || m_groupTicket != 0)
        {
            return E_FAIL;
        }
        ticket = ++m_lastTicket;
        m_groupTicket = ticket;
        m_groupId = groupId;
    }
    return PostOperation([ticket](Session& self) { self.StartGroup(ticket); }) ? S_OK : E_FAIL;
}

HRESULT Session::LeaveGroup()
{
    uint64_t login = 0;
    {
        const std::lock_guard lock(m_mutex);
        if (!m_online || m_groupTicket == 0)
        {
            return E_FAIL;
        }
        m_groupTicket = 0;
        login = m_active;
    }
    return PostForLogin(login, [](Session& self) { self.StopGroup(); });
}

HRESULT Session::Refresh(std::optional<std::vector<std::string>> ids, unsigned* requestId)
{
    RefreshRequest request{0, std::move(ids)};
    uint64_t login = 0;
    {
        const std::lock_guard lock(m_mutex);
        if (!m_online || m_info.gateway)
        {
            return E_FAIL;
        }
        m_lastRequest = m_lastRequest == std::numeric_limits<unsigned>::max() ? 1 : m_lastRequest + 1;
        request.id = m_lastRequest;
        login = m_active;
    }
    *requestId = request.id;
    const bool posted = PostOperation(
        [request = std::move(request), login](Session& self)
        {
            if (self.m_login != login || self.m_phase == Phase::LoggedOut)
            {
                self.FailRefresh(request);
                return;
            }
            self.m_refreshes.push_back(request);
            self.ListenToCompany();
            self.AnswerRefreshes();
        });
    return posted ? S_OK : E_FAIL;
}

HRESULT Session::SetCustomInfo(const std::string& text)
{
    uint64_t login = 0;
    {
        const std::lock_guard lock(m_mutex);
        if (!m_online || m_info.gateway)
        {
            return E_FAIL;
        }
        m_info.custom = text;
        login = m_active;
    }
    return PostForLogin(login,
                        [text](Session& self)
                        {
                            self.m_custom = text;
                            // A lost connection publishes the text after it has reconnected.
                            if (self.m_phase == Phase::LoggedIn)
                            {
                                self.Publish(self.MakePresence(true));
                            }
                        });
}

HRESULT Session::InviteUsers(const std::vector<std::string>& ids, avcore::ZolTextPairList& results,
                             const std::string& code, const std::string& text, unsigned* inviteId)
{
    const std::optional<uint64_t> login = FindPaasLogin();
    if (!login)
    {
        return E_FAIL;
    }
    Invitations::Outgoing invitation{m_engine->NextId(), ids, code, text};
    m_invitations.AddSent(invitation.id, ids);
    for (const std::string& userId : ids)
    {
        const bool isOffline = m_directory.IsKnownOffline(userId);
        AddResult(results, userId, isOffline ? avcore::ZOL_PORT_USER_OFFLINE : avcore::ZOL_PORT_SUCCESS);
    }
    *inviteId = invitation.id;
    return PostForLogin(*login,
                        [invitation = std::move(invitation)](Session& self)
                        {
                            self.m_outgoing.push_back(invitation);
                            self.ListenToCompany();
                            self.SendInvites();
                        });
}

HRESULT Session::CancelInvite(const std::vector<std::string>& ids, avcore::ZolTextPairList& results, unsigned inviteId)
{
    const std::optional<uint64_t> login = FindPaasLogin();
    if (!login)
    {
        return E_FAIL;
    }
    const std::optional<std::vector<std::string>> invited = m_invitations.FindInvited(inviteId, ids);
    if (!invited)
    {
        return E_INVALIDARG;
    }
    std::vector<std::string> receivers;
    for (const std::string& userId : *invited)
    {
        const bool isInvited = m_invitations.IsInvited(inviteId, userId);
        AddResult(results, userId, isInvited ? avcore::ZOL_PORT_SUCCESS : avcore::ZOL_PORT_NOT_INVITED);
        if (isInvited)
        {
            receivers.push_back(userId);
        }
    }
    return PostForLogin(*login,
                        [receivers = std::move(receivers), inviteId](Session& self)
                        {
                            for (const std::string& userId : receivers)
                            {
                                PostRecord record;
                                record.kind = PostRecord::Kind::Cancel;
                                record.id = inviteId;
                                self.Post(self.m_topics.User(userId), std::move(record));
                            }
                        });
}

HRESULT Session::AnswerInvite(bool accept, const std::string& inviterId, unsigned inviteId, const std::string& text)
{
    const std::optional<uint64_t> login = FindPaasLogin();
    if (!login)
    {
        return E_FAIL;
    }
    const std::optional<std::string> replyTopic = m_invitations.Answer(inviterId, inviteId, accept);
    if (!replyTopic)
    {
        return E_INVALIDARG;
    }
    return PostForLogin(*login,
                        [accept, inviterId, inviteId, text, topic = *replyTopic](Session& self)
                        {
                            PostRecord answer;
                            answer.kind = accept ? PostRecord::Kind::Accept : PostRecord::Kind::Decline;
                            answer.id = inviteId;
                            answer.text = text;
                            self.Post(topic, std::move(answer));

                            PostRecord notice;
                            notice.kind = PostRecord::Kind::Answered;
                            notice.from = inviterId;
                            notice.id = inviteId;
                            self.Post(self.m_topics.User(self.m_request.userId), std::move(notice));
                        });
}

HRESULT Session::SendReport(const std::string& json)
{
    const std::optional<uint64_t> login = FindPaasLogin();
    if (!login)
    {
        return E_FAIL;
    }
    return PostForLogin(*login,
                        [json](Session& self)
                        {
                            PostRecord record;
                            record.kind = PostRecord::Kind::Report;
                            record.text = json;
                            self.Post(self.m_topics.Reports(self.m_request.userId, self.m_request.deviceId),
                                      std::move(record));
                        });
}

void Session::Abandon()
{
    {
        const std::lock_guard lock(m_mutex);
        m_abandoned = true;
        m_active = 0;
        m_online = false;
    }
    m_listeners.RemoveAll();
    EndHttp();
    m_engine->GetLoop().Post([self = shared_from_this()] { self->Leave(); });
}

bool Session::IsActive(uint64_t login) const
{
    const std::lock_guard lock(m_mutex);
    return m_active == login;
}

/// Ends a login on behalf of the platform. False when the host has ended it before.
bool Session::Deactivate(uint64_t login)
{
    const std::lock_guard lock(m_mutex);
    if (m_active != login)
    {
        return false;
    }
    m_active = 0;
    m_online = false;
    m_groupTicket = 0;
    return true;
}

std::optional<SessionInfo> Session::GetInfo() const
{
    const std::lock_guard lock(m_mutex);
    return m_active != 0 ? std::optional(m_info) : std::nullopt;
}

uint64_t Session::GetBegin() const
{
    const std::lock_guard lock(m_mutex);
    return m_begin;
}

void Session::SetInfo(const std::function<void(SessionInfo&)>& change)
{
    const std::lock_guard lock(m_mutex);
    // Events of this login must not change the info of a later one.
    if (m_active == m_login)
    {
        change(m_info);
    }
}

HRESULT Session::RequestCpAddress(const CpRequest& request, avcore::IZolHttp* http)
{
    if (!IsHttpServer(request.server))
    {
        return S_OK;
    }
    if (http == nullptr)
    {
        m_engine->Diagnose("connection point of " + request.server + ": there is no HTTP object to ask with");
        return kCpNoHttp;
    }
    const auto fetch = std::make_shared<HttpFetch>();
    {
        const std::lock_guard lock(m_mutex);
        if (m_abandoned)
        {
            return E_FAIL;
        }
        m_fetches.push_back(fetch);
    }
    const CpAnswer answer = Fetch(*fetch, *http, request);
    ForgetFetch(fetch);
    return answer.result;
}

CpAnswer Session::Fetch(HttpFetch& fetch, avcore::IZolHttp& http, const CpRequest& request)
{
    const PlatformOptions options = m_engine->GetOptions();
    CpAnswer answer = fetch.Run(http, request, options.httpTimeLimit, options.httpLongestAnswer);
    if (answer.result != S_OK)
    {
        m_engine->Diagnose("connection point of " + request.server + ": " + answer.text);
        return answer;
    }
    m_engine->Diagnose("connection point of " + request.server + " is " + answer.address);
    const std::lock_guard lock(m_mutex);
    m_cpRequest = request;
    m_cpAddress = answer.address;
    return answer;
}

void Session::ForgetFetch(const std::shared_ptr<HttpFetch>& fetch)
{
    const std::lock_guard lock(m_mutex);
    std::erase(m_fetches, fetch);
    if (m_loginFetch == fetch)
    {
        m_loginFetch = nullptr;
    }
}

void Session::Halt()
{
    const std::lock_guard lock(m_mutex);
    m_active = 0;
    m_online = false;
    for (const auto& fetch : m_fetches)
    {
        fetch->Abort();
    }
}

/// Waits until no HTTP object is in use. Its owner may destroy it then.
void Session::EndHttp()
{
    std::vector<std::shared_ptr<HttpFetch>> fetches;
    {
        const std::lock_guard lock(m_mutex);
        m_http = nullptr;
        fetches = m_fetches;
    }
    for (const auto& fetch : fetches)
    {
        fetch->Abort();
        fetch->WaitEnd();
    }
}

void Session::FetchAddress()
{
    const CpRequest request{m_request.server, m_request.appId, m_request.token, m_request.companyId};
    const auto fetch = std::make_shared<HttpFetch>();
    avcore::IZolHttp* http = nullptr;
    {
        const std::lock_guard lock(m_mutex);
        if (!m_cpAddress.empty() && m_cpRequest.server == request.server && m_cpRequest.appId == request.appId &&
            m_cpRequest.companyId == request.companyId)
        {
            m_connectionPoint = m_cpAddress;
        }
        else if (m_http != nullptr && m_active == m_login)
        {
            http = m_http;
            m_fetches.push_back(fetch);
            m_loginFetch = fetch;
        }
    }
    if (!m_connectionPoint.empty())
    {
        Open();
        return;
    }
    if (http == nullptr)
    {
        m_engine->Diagnose("connection point of " + request.server + ": there is no HTTP object to ask with");
        FailLogin(avcore::ZOL_PORT_NO_CP_ADDRESS);
        return;
    }
    m_phase = Phase::FetchingAddress;
    const bool started = m_engine->RunWorker(
        [self = shared_from_this(), fetch, http, request, login = m_login]
        {
            const CpAnswer answer = self->Fetch(*fetch, *http, request);
            self->ForgetFetch(fetch);
            self->m_engine->GetLoop().Post([self, login, answer] { self->OnAddress(login, answer); });
        });
    if (!started)
    {
        fetch->Abandon();
        ForgetFetch(fetch);
    }
}

void Session::OnAddress(uint64_t login, const CpAnswer& answer)
{
    if (m_phase != Phase::FetchingAddress || m_login != login || !IsActive(login))
    {
        return;
    }
    if (answer.result != S_OK)
    {
        FailLogin(avcore::ZOL_PORT_NO_CP_ADDRESS);
        return;
    }
    m_connectionPoint = answer.address;
    Open();
}

} // namespace platform
