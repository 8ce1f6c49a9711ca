#include "platform/Session.h"

#include <algorithm>
#include <limits>

namespace platform
{

using avcore::IZolConnectionListener;
using avcore::IZolMdsClientListener;
using avcore::IZolOnlineListener;
using avcore::IZolTMsgListener;

namespace
{

/// The answer of `OnReconnectStart` that forbids to reconnect.
constexpr int32_t kDoNotReconnect = 2;

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

/// Takes the backplane's events to the platform thread.
class Session::Sink : public BackplaneListener
{
public:
    Sink(Engine& engine, std::weak_ptr<Session> session, uint64_t client)
        : m_engine(engine),
          m_session(std::move(session)),
          m_client(client)
    {
    }

    void OnOpened() override
    {
        Post([client = m_client](Session& session) { session.OnOpened(client); });
    }
    void OnRefused(Refusal reason) override
    {
        Post([client = m_client, reason](Session& session) { session.OnRefused(client, reason); });
    }
    void OnLost() override
    {
        Post([client = m_client](Session& session) { session.OnLost(client); });
    }
    void OnSubscribed(const std::string& filter) override
    {
        Post([client = m_client, filter](Session& session) { session.OnSubscribed(client, filter); });
    }
    void OnMessage(std::shared_ptr<const BackplaneMessage> message) override
    {
        Post([client = m_client, message = std::move(message)](Session& session)
             { session.OnMessage(client, *message); });
    }

private:
    template <typename Event>
    void Post(Event event)
    {
        m_engine.GetLoop().Post(
            [weak = m_session, event = std::move(event)]
            {
                if (const auto session = weak.lock())
                {
                    event(*session);
                }
            });
    }

    Engine& m_engine;
    std::weak_ptr<Session> m_session;
    uint64_t m_client;
};

Session::Session(std::shared_ptr<Engine> engine) : m_engine(std::move(engine)) {}

Session::~Session() = default;

// ---- Operations of the host ----

bool Session::PostOperation(std::function<void(Session&)> operation)
{
    return m_engine->PostOperation([self = shared_from_this(), operation = std::move(operation)] { operation(*self); });
}

/// Runs `operation` unless the login has ended by then. A logout that was called after it comes after it.
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

/// The login that stands, if it is no gateway login.
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
                            // A lost connection publishes it when it comes back.
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

/// Ends a login that the platform, not the host, has ended; false when the host was faster.
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
    // The info of a later login is not to be touched by what happens to this one.
    if (m_active == m_login)
    {
        change(m_info);
    }
}

// ---- Connection point ----

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

/// Returns when no HTTP object is used any more, which its owner may then destroy.
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

// ---- Login ----

void Session::Begin(const LoginRequest& request, uint64_t login)
{
    if (!IsActive(login))
    {
        return;
    }
    Leave();
    m_login = login;
    m_request = request;
    m_sessionId = m_engine->NewSessionId();
    m_clientId = "zol-" + topics::Escape(request.userId) + '-' + topics::Escape(request.deviceId) + '-' + m_sessionId;
    m_topics = CompanyTopics(request.appId, request.companyId);
    m_custom.clear();
    m_connectionPoint.clear();
    m_force = request.force;
    m_invitations.BeginLogin(request.userId);
    if (const auto refusal = m_engine->FindRefusal(request.userId))
    {
        FailLogin(*refusal);
    }
    else if (!request.gateway && IsHttpServer(request.server))
    {
        FetchAddress();
    }
    else
    {
        m_connectionPoint = request.server;
        Open();
    }
}

void Session::Open()
{
    m_client.reset();
    m_phase = Phase::Opening;
    m_epoch = Engine::NextEpoch();
    m_newestSeen = 0;
    m_own.clear();
    m_waitFor.clear();
    const uint64_t client = ++m_clientSerial;
    SetInfo(
        [this](SessionInfo& info)
        {
            info.clientId = m_clientId;
            info.connectionPoint = m_connectionPoint;
        });

    BackplaneConnect connect;
    connect.server = m_connectionPoint;
    connect.clientId = m_clientId;
    connect.userName = topics::Escape(m_request.appId) + '/' + topics::Escape(m_request.companyId) + '/' +
                       topics::Escape(m_request.userId);
    connect.password = m_request.token;
    if (m_request.gateway)
    {
        if (m_group == nullptr)
        {
            m_group =
                std::make_shared<Group>(*this, m_request.groupId, Group::Member{m_request.userId, m_sessionId, {}},
                                        [this] { return OnGroupJoined(); });
        }
        connect.will = m_group->MakeWill(m_epoch);
    }
    else
    {
        connect.will = MakePresence(false);
    }
    m_client =
        m_engine->GetBackplane().Open(std::move(connect), std::make_shared<Sink>(*m_engine, weak_from_this(), client));

    const auto limit = EventLoop::Clock::now() + m_engine->GetOptions().loginTimeLimit;
    m_engine->GetLoop().PostAt(limit, EventLoop::Kind::Timer,
                               [weak = weak_from_this(), client]
                               {
                                   if (const auto self = weak.lock())
                                   {
                                       self->OnTimeLimit(client);
                                   }
                               });
}

void Session::OnOpened(uint64_t client)
{
    if (client != m_clientSerial)
    {
        return;
    }
    if (m_request.gateway)
    {
        m_phase = Phase::Announcing;
        m_group->Begin(m_epoch);
        return;
    }
    m_phase = Phase::Checking;
    m_waitFor = {m_topics.PresenceOfUser(m_request.userId), m_topics.User(m_request.userId),
                 m_topics.Terminal(m_request.userId, m_request.deviceId)};
    const std::set<std::string> filters = m_waitFor;
    for (const std::string& filter : filters)
    {
        Subscribe(filter, Delivery::AtLeastOnce);
    }
}

void Session::OnRefused(uint64_t client, Refusal reason)
{
    if (client != m_clientSerial)
    {
        return;
    }
    switch (reason)
    {
    case Refusal::Unavailable:
        FailAttempt(avcore::ZOL_PORT_UNREACHABLE);
        break;
    case Refusal::BadCredentials:
        m_reconnecting ? FailReconnect(avcore::ZOL_PORT_TOKEN_REFUSED) : FailLogin(avcore::ZOL_PORT_TOKEN_REFUSED);
        break;
    case Refusal::Other:
        m_reconnecting ? FailReconnect(avcore::ZOL_PORT_REFUSED) : FailLogin(avcore::ZOL_PORT_REFUSED);
        break;
    }
}

void Session::OnLost(uint64_t client)
{
    if (client != m_clientSerial)
    {
        return;
    }
    if (m_phase == Phase::LoggedIn)
    {
        StartReconnect();
    }
    else
    {
        FailAttempt(avcore::ZOL_PORT_CONNECTION_LOST);
    }
}

void Session::OnTimeLimit(uint64_t client)
{
    const bool isUnderWay = m_phase == Phase::Opening || m_phase == Phase::Checking || m_phase == Phase::Announcing;
    if (client == m_clientSerial && isUnderWay)
    {
        FailAttempt(avcore::ZOL_PORT_UNREACHABLE);
    }
}

void Session::OnSubscribed(uint64_t client, const std::string& filter)
{
    if (client != m_clientSerial)
    {
        return;
    }
    if (m_phase == Phase::Checking && m_waitFor.erase(filter) != 0 && m_waitFor.empty())
    {
        AfterQuiet([this] { Check(); });
    }
    else if (m_directoryClient == m_clientSerial && filter == m_topics.PresenceOfAll())
    {
        AfterQuiet([this] { OnDirectoryComplete(); });
    }
    else if (m_group != nullptr)
    {
        m_group->OnSubscribed(filter);
    }
}

void Session::AfterQuiet(std::function<void()> then)
{
    const auto quiet = m_engine->GetOptions().snapshotQuietTime;
    if (quiet.count() == 0)
    {
        then();
        return;
    }
    const auto begin = EventLoop::Clock::now();
    m_engine->GetLoop().PostAt(begin + quiet, EventLoop::Kind::Work,
                               [weak = weak_from_this(), client = m_clientSerial, begin, then = std::move(then)]
                               {
                                   const auto self = weak.lock();
                                   if (self == nullptr || self->m_clientSerial != client)
                                   {
                                       return;
                                   }
                                   if (self->m_lastRetained > begin)
                                   {
                                       self->AfterQuiet(then);
                                       return;
                                   }
                                   then();
                               });
}

/// The user's terminals are known: may this one be there?
void Session::Check()
{
    if (m_newestSeen >= m_epoch)
    {
        // The clock of another terminal is ahead. The last will carries the epoch, so the connection is made anew.
        Engine::RaiseEpoch(m_newestSeen);
        m_client->Close();
        Open();
        return;
    }
    if (m_reconnecting)
    {
        const auto own = m_own.find(m_request.deviceId);
        if (own != m_own.end() && own->second.online && own->second.sessionId != m_sessionId)
        {
            FailReconnect(avcore::ZOL_PORT_LOGIN_CONFLICT, m_request.deviceId);
            return;
        }
    }
    const std::optional<Conflict> conflict = FindConflict();
    if (conflict && m_reconnecting)
    {
        FailReconnect(avcore::ZOL_PORT_LOGIN_CONFLICT, conflict->deviceId);
    }
    else if (conflict && !m_force)
    {
        FailLogin(avcore::ZOL_PORT_LOGIN_CONFLICT, *conflict);
    }
    else
    {
        m_phase = Phase::Announcing;
        Publish(MakePresence(true));
    }
}

std::optional<Session::Conflict> Session::FindConflict() const
{
    for (const auto& [deviceId, record] : m_own)
    {
        if (deviceId != m_request.deviceId && record.online && !record.mutex.empty() && record.mutex == m_request.mutex)
        {
            return Conflict{deviceId, record.custom, record.ext};
        }
    }
    return std::nullopt;
}

/// The own record, or the own member record of a gateway login, has come back: the login stands. False when the host has
/// logged out meanwhile.
bool Session::EnterLoggedIn()
{
    {
        const std::lock_guard lock(m_mutex);
        if (m_active != m_login)
        {
            return false;
        }
        m_online = true;
        m_info.state = SessionInfo::State::LoggedIn;
    }
    m_phase = Phase::LoggedIn;
    if (std::exchange(m_reconnecting, false))
    {
        Emit<IZolConnectionListener>([](auto& listener) { listener.OnReconnectSucess(); });
    }
    else
    {
        Emit<IZolConnectionListener>([](auto& listener)
                                     { listener.OnLoginResult(avcore::ZOL_PORT_SUCCESS, "", "", ""); });
    }
    if (m_request.gateway)
    {
        return true;
    }
    ListenToCompany();
    if (m_group != nullptr && std::exchange(m_groupLeaving, false))
    {
        m_group->Leave();
        m_group.reset();
    }
    else if (m_group != nullptr)
    {
        m_group->Begin(m_epoch);
    }
    FlushPosts();
    return true;
}

void Session::FailAttempt(avcore::ZolPortErrCode code)
{
    if (!m_reconnecting)
    {
        FailLogin(code);
        return;
    }
    // Ended like a lost connection, so that the last will takes back what may have been announced.
    m_client.reset();
    ++m_clientSerial;
    if (EventLoop::Clock::now() >= m_giveUp)
    {
        FailReconnect(code);
        return;
    }
    ScheduleReconnect();
}

void Session::FailLogin(avcore::ZolPortErrCode code, const Conflict& conflict)
{
    if (code == avcore::ZOL_PORT_UNREACHABLE)
    {
        // A connection point that has moved is asked for again.
        const std::lock_guard lock(m_mutex);
        m_cpAddress.clear();
    }
    Leave();
    if (Deactivate(m_login))
    {
        Emit<IZolConnectionListener>(
            [code, &conflict](auto& listener) {
                listener.OnLoginResult(code, conflict.deviceId.c_str(), conflict.custom.c_str(), conflict.ext.c_str());
            });
    }
}

/// Ends the login and forgets what belongs to it. Tells the others, unless `sayGoodbye` is false: a newer session of the same
/// terminal has told them something else.
void Session::Leave(bool sayGoodbye)
{
    if (m_client != nullptr)
    {
        if (m_group != nullptr)
        {
            m_group->Leave();
        }
        const bool isAnnounced = m_phase == Phase::Announcing || m_phase == Phase::LoggedIn;
        if (sayGoodbye && isAnnounced && !m_request.gateway)
        {
            Publish(MakePresence(false));
        }
        m_client->Close();
        m_client.reset();
    }
    ++m_clientSerial;
    m_phase = Phase::LoggedOut;
    m_reconnecting = false;
    m_group.reset();
    m_groupLeaving = false;
    m_groupResultDue = false;
    m_own.clear();
    m_held.clear();
    m_outgoing.clear();
    m_directory.Clear();
    m_invitations.EndLogin();
    m_unsent.clear();
    const std::vector<RefreshRequest> refreshes = std::exchange(m_refreshes, {});
    for (const RefreshRequest& request : refreshes)
    {
        FailRefresh(request);
    }
}

// ---- Reconnection ----

void Session::StartReconnect()
{
    m_client.reset();
    ++m_clientSerial;
    m_phase = Phase::Waiting;
    m_reconnecting = true;
    m_force = false;
    // A join under way ends with the connection; whoever asked for it learns that from the loss.
    const bool isJoining = m_group != nullptr && !m_request.gateway && m_groupResultDue;
    if (isJoining)
    {
        m_groupResultDue = false;
        m_groupLeaving = true;
    }
    {
        const std::lock_guard lock(m_mutex);
        if (m_active == m_login)
        {
            m_online = false;
            m_info.state = SessionInfo::State::Reconnecting;
            if (m_group == nullptr || isJoining)
            {
                m_groupTicket = 0;
                m_info.groupId = m_request.groupId;
            }
        }
    }
    const PlatformOptions options = m_engine->GetOptions();
    m_reconnectDelay = std::max(options.reconnectFirstDelay, std::chrono::milliseconds(1));
    m_giveUp = EventLoop::Clock::now() + options.reconnectGiveUp;

    bool isForbidden = false;
    Emit<IZolConnectionListener>([&isForbidden](auto& listener)
                                 { isForbidden = listener.OnReconnectStart() == kDoNotReconnect || isForbidden; });
    if (!isForbidden)
    {
        ScheduleReconnect();
        return;
    }
    // Whoever forbade it knows, so nothing more is told.
    Leave();
    Deactivate(m_login);
}

void Session::ScheduleReconnect()
{
    m_phase = Phase::Waiting;
    const PlatformOptions options = m_engine->GetOptions();
    const auto next = EventLoop::Clock::now() + m_reconnectDelay + m_engine->Jitter(m_reconnectDelay);
    m_reconnectDelay = std::min(2 * m_reconnectDelay, std::max(options.reconnectLongestDelay, m_reconnectDelay));
    m_engine->GetLoop().PostAt(std::min(next, m_giveUp), EventLoop::Kind::Timer,
                               [weak = weak_from_this(), client = m_clientSerial]
                               {
                                   const auto self = weak.lock();
                                   if (self != nullptr && self->m_clientSerial == client &&
                                       self->IsActive(self->m_login))
                                   {
                                       self->Open();
                                   }
                               });
}

void Session::FailReconnect(avcore::ZolPortErrCode code, const std::string& deviceId)
{
    Leave();
    if (!Deactivate(m_login))
    {
        return;
    }
    const char* text = deviceId.empty() ? nullptr : deviceId.c_str();
    Emit<IZolConnectionListener>([code, text](auto& listener) { listener.OnReconnectFail(code, text); });
    // A listener may have logged in anew from inside the event, and then is not to hear that it was logged out.
    if (IsActive(0))
    {
        Emit<IZolConnectionListener>([code](auto& listener) { listener.OnLogouted(code); });
    }
}

// ---- Presence ----

PresenceRecord Session::MakeRecord(bool online) const
{
    PresenceRecord record;
    record.online = online;
    record.epoch = m_epoch;
    record.sessionId = m_sessionId;
    if (online)
    {
        record.force = m_force;
        record.mutex = m_request.mutex;
        record.custom = m_custom;
        record.ext = m_request.ext;
    }
    return record;
}

BackplaneMessage Session::MakePresence(bool online) const
{
    const auto expiry = online ? std::chrono::seconds(0) : GetGoneRecordLife();
    return BackplaneMessage{m_topics.Presence(m_request.userId, m_request.deviceId), MakeRecord(online).Encode(), true,
                            expiry};
}

std::chrono::seconds Session::GetGoneRecordLife() const
{
    return std::max(m_engine->GetOptions().goneRecordLife, std::chrono::seconds(1));
}

void Session::OnMessage(uint64_t client, const BackplaneMessage& message)
{
    if (client != m_clientSerial)
    {
        return;
    }
    if (message.retained)
    {
        m_lastRetained = EventLoop::Clock::now();
    }
    if (const std::optional<PresenceRecord> record = PresenceRecord::Decode(message.payload);
        record && message.topic.find("/p/") != std::string::npos)
    {
        const std::vector<std::string_view> levels = topics::Split(m_topics.Inside(message.topic));
        if (levels.size() == 3 && levels[0] == "p")
        {
            OnPresence(topics::Unescape(levels[1]), topics::Unescape(levels[2]), *record, message.retained);
        }
        if (m_group != nullptr)
        {
            m_group->OnPresence(message.topic, *record);
        }
        return;
    }
    if (m_group != nullptr && message.topic.starts_with("zol/g/"))
    {
        if (!m_group->OnMessage(message))
        {
            return;
        }
        const std::optional<PostRecord> record = PostRecord::Decode(message.payload);
        if (record && m_serials.IsNew(record->serial))
        {
            Emit<IZolTMsgListener>(
                [&record](auto& listener)
                { listener.OnGroupMsgIncome(record->from.c_str(), record->id, record->text.c_str()); });
        }
        return;
    }
    if (const std::optional<PostRecord> record = PostRecord::Decode(message.payload);
        record && m_serials.IsNew(record->serial))
    {
        OnPost(*record);
    }
}

void Session::OnPresence(const std::string& userId, const std::string& deviceId, const PresenceRecord& record,
                         bool retained)
{
    // Asked before the own record is looked at, since that may begin the subscription, which brings it again.
    const bool isListening = m_directoryClient == m_clientSerial;
    if (userId == m_request.userId)
    {
        m_newestSeen = std::max(m_newestSeen, record.epoch);
        PresenceRecord& known = m_own[deviceId];
        if (record.epoch >= known.epoch)
        {
            known = record;
        }
        const uint64_t client = m_clientSerial;
        if (deviceId == m_request.deviceId)
        {
            OnOwnRecord(record);
        }
        else
        {
            OnOtherTerminal(deviceId, record);
        }
        if (client != m_clientSerial)
        {
            return;
        }
    }
    if (isListening)
    {
        if (const CompanyDirectory::Terminal* changed = m_directory.Apply(userId, deviceId, record, retained))
        {
            EmitTerminal(userId, *changed);
        }
    }
}

void Session::OnOwnRecord(const PresenceRecord& record)
{
    if (m_phase != Phase::Announcing && m_phase != Phase::LoggedIn)
    {
        return;
    }
    if (record.epoch > m_epoch)
    {
        YieldTo(m_request.deviceId, record);
    }
    else if (record.epoch < m_epoch || !record.online)
    {
        // The late will of an earlier connection, or a message of an older session: it must not have the last word.
        Publish(MakePresence(true));
    }
    else if (m_phase == Phase::Announcing)
    {
        EnterLoggedIn();
    }
}

/// Of two terminals with one tag the older stays, unless the newer was forced. Both sides decide the same from the two
/// records, so that exactly one of them goes, also when both log in at one time.
void Session::OnOtherTerminal(const std::string& deviceId, const PresenceRecord& record)
{
    const bool isAnnounced = m_phase == Phase::Announcing || m_phase == Phase::LoggedIn;
    if (!isAnnounced || !record.online || record.mutex.empty() || record.mutex != m_request.mutex)
    {
        return;
    }
    const bool isOtherNewer = record.epoch > m_epoch;
    if (isOtherNewer ? record.force : !m_force)
    {
        YieldTo(deviceId, record);
    }
}

/// Another session has the better right to be there.
void Session::YieldTo(const std::string& deviceId, const PresenceRecord& other)
{
    const bool wasLoggedIn = m_phase == Phase::LoggedIn;
    const bool wasReconnecting = m_reconnecting;
    Leave(deviceId != m_request.deviceId);
    if (wasLoggedIn)
    {
        if (Deactivate(m_login))
        {
            Emit<IZolConnectionListener>([](auto& listener) { listener.OnLogouted(avcore::ZOL_PORT_LOGIN_CONFLICT); });
        }
    }
    else if (wasReconnecting)
    {
        FailReconnect(avcore::ZOL_PORT_LOGIN_CONFLICT, deviceId);
    }
    else
    {
        FailLogin(avcore::ZOL_PORT_LOGIN_CONFLICT, Conflict{deviceId, other.custom, other.ext});
    }
}

void Session::EmitTerminal(const std::string& userId, const CompanyDirectory::Terminal& terminal)
{
    // A copy, because a listener may cause changes to what the reference is to.
    const CompanyDirectory::Terminal copy = terminal;
    const avcore::ZolUserTerminalInfo info{copy.deviceId.c_str(), copy.online ? 1 : 0, copy.custom.c_str(),
                                           copy.ext.c_str()};
    Emit<IZolOnlineListener>([&userId, &info](auto& listener)
                             { listener.OnUserTerminalStateChanged(userId.c_str(), info); });
}

/// A company is subscribed to only for a listener, a refresh or an invitation: it may be large.
void Session::ListenToCompany()
{
    const bool isWanted = m_listeners.Has<IZolOnlineListener>() || !m_refreshes.empty() || !m_outgoing.empty() ||
                          m_directory.IsSubscribed();
    if (m_phase != Phase::LoggedIn || m_request.gateway || !isWanted)
    {
        return;
    }
    if (m_directoryClient != m_clientSerial)
    {
        m_directoryClient = m_clientSerial;
        m_directory.BeginSnapshot();
        Subscribe(m_topics.PresenceOfAll(), Delivery::AtMostOnce);
    }
}

void Session::OnDirectoryComplete()
{
    const auto gone = m_directory.EndSnapshot();
    for (const auto& [userId, terminal] : gone)
    {
        EmitTerminal(userId, terminal);
    }
    SendInvites();
    AnswerRefreshes();
}

void Session::AnswerRefreshes()
{
    if (m_phase != Phase::LoggedIn || !m_directory.IsComplete())
    {
        return;
    }
    const std::vector<RefreshRequest> requests = std::exchange(m_refreshes, {});
    for (const RefreshRequest& request : requests)
    {
        AnswerRefresh(request);
    }
}

void Session::AnswerRefresh(const RefreshRequest& request)
{
    if (!IsActive(m_login))
    {
        FailRefresh(request);
        return;
    }
    using User = std::pair<const std::string*, const CompanyDirectory::Terminals*>;
    std::vector<User> users;
    if (request.users)
    {
        std::set<std::string_view> seen;
        for (const std::string& userId : *request.users)
        {
            if (seen.insert(userId).second)
            {
                users.emplace_back(&userId, m_directory.Find(userId));
            }
        }
    }
    else
    {
        m_directory.ForEach(
            [&users](const std::string& userId, const CompanyDirectory::Terminals& terminals)
            {
                if (CompanyDirectory::IsOnline(terminals))
                {
                    users.emplace_back(&userId, &terminals);
                }
            });
    }

    const size_t pageSize = std::max(m_engine->GetOptions().refreshPageSize, 1U);
    const size_t pageCount = std::max<size_t>((users.size() + pageSize - 1) / pageSize, 1);
    for (size_t index = 0; index < pageCount && IsActive(m_login); ++index)
    {
        const size_t begin = index * pageSize;
        const size_t end = std::min(begin + pageSize, users.size());
        std::vector<avcore::ZolUserTerminalInfo> terminals;
        std::vector<size_t> firsts;
        for (size_t i = begin; i < end; ++i)
        {
            firsts.push_back(terminals.size());
            if (users[i].second == nullptr)
            {
                continue;
            }
            for (const CompanyDirectory::Terminal& terminal : *users[i].second)
            {
                if (terminal.online)
                {
                    terminals.push_back({terminal.deviceId.c_str(), 1, terminal.custom.c_str(), terminal.ext.c_str()});
                }
            }
        }
        firsts.push_back(terminals.size());
        WBASELIB::Vector<avcore::ZolUserInfo> page;
        page.reserve(static_cast<uint32_t>(end - begin));
        for (size_t i = begin; i < end; ++i)
        {
            const size_t first = firsts[i - begin];
            const size_t count = firsts[i - begin + 1] - first;
            page.push_back({users[i].first->c_str(), static_cast<int32_t>(count),
                            count != 0 ? terminals.data() + first : nullptr});
        }
        Emit<IZolOnlineListener>(
            [&](auto& listener)
            {
                listener.OnRefreshUserStatusFinished(avcore::ZOL_PORT_SUCCESS, request.id, page,
                                                     static_cast<int>(pageCount), static_cast<int>(index));
            });
    }
}

/// An empty last page with a code: whoever asked learns that no more will come.
void Session::FailRefresh(const RefreshRequest& request)
{
    const WBASELIB::Vector<avcore::ZolUserInfo> noUsers;
    Emit<IZolOnlineListener>(
        [&](auto& listener)
        { listener.OnRefreshUserStatusFinished(avcore::ZOL_PORT_NOT_LOGGED_IN, request.id, noUsers, 1, 0); });
}

// ---- Invitations and messages ----

void Session::SendInvites()
{
    if (m_phase != Phase::LoggedIn || !m_directory.IsComplete())
    {
        return;
    }
    const std::vector<Invitations::Outgoing> invitations = std::exchange(m_outgoing, {});
    for (const Invitations::Outgoing& invitation : invitations)
    {
        std::vector<std::string> offline;
        for (const std::string& userId : invitation.userIds)
        {
            if (m_directory.IsKnownOffline(userId))
            {
                offline.push_back(userId);
                continue;
            }
            PostRecord record;
            record.kind = PostRecord::Kind::Invite;
            record.replyTopic = m_topics.Terminal(m_request.userId, m_request.deviceId);
            record.id = invitation.id;
            record.code = invitation.code;
            record.text = invitation.text;
            Post(m_topics.User(userId), std::move(record));
        }
        for (const std::string& userId : offline)
        {
            Emit<IZolOnlineListener>(
                [&](auto& listener)
                { listener.OnInviteRejected(userId.c_str(), invitation.id, avcore::ZOL_INVITE_REJECT_OFFLINE, ""); });
        }
    }
}

void Session::FlushPosts()
{
    const auto unsent = std::exchange(m_unsent, {});
    for (const auto& [topic, record] : unsent)
    {
        Post(topic, record);
    }
    const std::vector<PostRecord> held = std::exchange(m_held, {});
    for (const PostRecord& record : held)
    {
        OnPost(record);
    }
}

void Session::OnPost(const PostRecord& record)
{
    if (m_phase != Phase::LoggedIn)
    {
        m_held.push_back(record);
        return;
    }
    const char* from = record.from.c_str();
    switch (record.kind)
    {
    case PostRecord::Kind::Invite:
        if (m_invitations.AddReceived(record.from, record.id, record.replyTopic))
        {
            Emit<IZolOnlineListener>(
                [&](auto& listener)
                { listener.OnInviteIncome(from, record.id, record.code.c_str(), record.text.c_str()); });
        }
        break;
    case PostRecord::Kind::Cancel:
        if (m_invitations.RemoveReceived(record.from, record.id))
        {
            Emit<IZolOnlineListener>(
                [&](auto& listener)
                { listener.OnInviteCanceled(from, record.id, avcore::ZOL_INVITE_CANCEL_BY_INVITER); });
        }
        break;
    case PostRecord::Kind::Answered:
        if (record.fromSession != m_sessionId && m_invitations.RemoveReceived(record.from, record.id))
        {
            Emit<IZolOnlineListener>(
                [&](auto& listener)
                { listener.OnInviteCanceled(from, record.id, avcore::ZOL_INVITE_CANCEL_ANSWERED_ELSEWHERE); });
        }
        break;
    case PostRecord::Kind::Accept:
        if (m_invitations.TakeAnswer(record.id, record.from, record.fromSession, true))
        {
            Emit<IZolOnlineListener>([&](auto& listener)
                                     { listener.OnInviteAccepted(from, record.id, record.text.c_str()); });
        }
        break;
    case PostRecord::Kind::Decline:
        if (m_invitations.TakeAnswer(record.id, record.from, record.fromSession, false))
        {
            Emit<IZolOnlineListener>(
                [&](auto& listener) {
                    listener.OnInviteRejected(from, record.id, avcore::ZOL_INVITE_REJECT_DECLINED, record.text.c_str());
                });
        }
        break;
    case PostRecord::Kind::Message:
        Emit<IZolTMsgListener>([&](auto& listener) { listener.OnUserMsgIncome(from, record.id, record.text.c_str()); });
        break;
    case PostRecord::Kind::Command:
        Emit<IZolMdsClientListener>([&](auto& listener) { listener.OnMdsMsgData(record.text.c_str()); });
        break;
    case PostRecord::Kind::Report:
        break;
    }
}

// ---- Group ----

void Session::StartGroup(uint64_t ticket)
{
    std::string groupId;
    {
        const std::lock_guard lock(m_mutex);
        if (m_groupTicket != ticket || m_phase != Phase::LoggedIn)
        {
            return;
        }
        groupId = m_groupId;
        m_info.groupId = groupId;
    }
    m_groupResultDue = true;
    m_group = std::make_shared<Group>(
        *this, groupId,
        Group::Member{m_request.userId, m_sessionId, m_topics.Presence(m_request.userId, m_request.deviceId)},
        [this] { return OnGroupJoined(); });
    m_group->Begin(m_epoch);
}

bool Session::OnGroupJoined()
{
    if (m_request.gateway)
    {
        return EnterLoggedIn();
    }
    if (std::exchange(m_groupResultDue, false))
    {
        Emit<IZolConnectionListener>([](auto& listener) { listener.OnJoinGroupResult(avcore::ZOL_PORT_SUCCESS); });
    }
    return true;
}

void Session::StopGroup()
{
    m_groupResultDue = false;
    SetInfo([](SessionInfo& info) { info.groupId.clear(); });
    if (m_group != nullptr && m_phase == Phase::LoggedIn)
    {
        m_group->Leave();
        m_group.reset();
    }
    else if (m_group != nullptr)
    {
        m_groupLeaving = true;
    }
    Emit<IZolConnectionListener>([](auto& listener) { listener.OnLeaveGroupResult(avcore::ZOL_PORT_SUCCESS); });
}

// ---- Ways to the backplane ----

void Session::Publish(BackplaneMessage message)
{
    if (m_client != nullptr)
    {
        m_client->Publish(std::move(message), Delivery::AtLeastOnce);
    }
}

void Session::Post(const std::string& topic, PostRecord record)
{
    if (m_phase != Phase::LoggedIn)
    {
        m_unsent.emplace_back(topic, std::move(record));
        return;
    }
    record.serial = m_engine->NewSerial();
    record.fromSession = m_sessionId;
    if (record.from.empty())
    {
        record.from = m_request.userId;
    }
    Publish(BackplaneMessage{topic, record.Encode(), false, std::chrono::seconds(0)});
}

void Session::Subscribe(const std::string& filter, Delivery delivery)
{
    if (m_client != nullptr)
    {
        m_client->Subscribe(filter, delivery);
    }
}

void Session::Unsubscribe(const std::string& filter)
{
    if (m_client != nullptr)
    {
        m_client->Unsubscribe(filter);
    }
}

} // namespace platform
