#include "platform/session/Session.h"

#include <algorithm>

/// The login of a session: its beginning, loss, reconnection and end.

namespace platform
{

using avcore::IZolConnectionListener;

/// Posts the events of the backplane to the platform thread.
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

/// The user's terminals are known. Decides whether this one may log in.
void Session::Check()
{
    if (m_newestSeen >= m_epoch)
    {
        // The clock of another terminal is ahead. The last will carries the epoch, so the session needs a new
        // connection.
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

/// The own record, or for a gateway login the own member record, has come back: the login is established. False when
/// the host has logged out in the meantime.
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
    // Ends as a lost connection does, so that the last will takes back a record that may have been announced.
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
        // The connection point may have moved, so the next login asks for its address again.
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

/// Ends the login and its state. Publishes the end unless `sayGoodbye` is false: then a newer session of the same
/// terminal has published its own record.
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

void Session::StartReconnect()
{
    m_client.reset();
    ++m_clientSerial;
    m_phase = Phase::Waiting;
    m_reconnecting = true;
    m_force = false;
    // A join under way ends with the connection, without an event of its own: the host gets the event of the loss.
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
    Emit<IZolConnectionListener>(
        [&isForbidden](auto& listener)
        { isForbidden = listener.OnReconnectStart() == avcore::ZOL_RECONNECT_STOP || isForbidden; });
    if (!isForbidden)
    {
        ScheduleReconnect();
        return;
    }
    // The listener that forbade the reconnection has told its host; no further event follows.
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
    // A listener may have logged in again from inside the event. It must not get the end of the earlier login then.
    if (IsActive(0))
    {
        Emit<IZolConnectionListener>([code](auto& listener) { listener.OnLogouted(code); });
    }
}

} // namespace platform
