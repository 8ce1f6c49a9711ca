#include "platform/session/Session.h"

#include <algorithm>

/// The services of a logged-in session: presence, invitations, messages and its group.

namespace platform
{

using avcore::IZolConnectionListener;
using avcore::IZolMdsClientListener;
using avcore::IZolOnlineListener;
using avcore::IZolTMsgListener;

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
    // Read first, because handling the own record may begin the subscription, which brings the record again.
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
        // The late will of an earlier connection, or a record of an older session. Publish the present record again.
        Publish(MakePresence(true));
    }
    else if (m_phase == Phase::Announcing)
    {
        EnterLoggedIn();
    }
}

/// Of two terminals with the same tag the older one stays, unless the newer one was forced. Both decide the same from
/// the two records, so exactly one of them ends, also when both log in at the same time.
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

/// Another session takes precedence.
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
    // A copy, because a listener may change the terminal.
    const CompanyDirectory::Terminal copy = terminal;
    const avcore::ZolUserTerminalInfo info{copy.deviceId.c_str(), copy.online ? 1 : 0, copy.custom.c_str(),
                                           copy.ext.c_str()};
    Emit<IZolOnlineListener>([&userId, &info](auto& listener)
                             { listener.OnUserTerminalStateChanged(userId.c_str(), info); });
}

/// Subscribes to the company only for a listener, a refresh or an invitation, because the company may be large.
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

/// Sends an empty last page with a code, which ends the refresh for the host.
void Session::FailRefresh(const RefreshRequest& request)
{
    const WBASELIB::Vector<avcore::ZolUserInfo> noUsers;
    Emit<IZolOnlineListener>(
        [&](auto& listener)
        { listener.OnRefreshUserStatusFinished(avcore::ZOL_PORT_NOT_LOGGED_IN, request.id, noUsers, 1, 0); });
}

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
