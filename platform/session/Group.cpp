#include "platform/session/Group.h"

#include "platform/session/Session.h"

#include <vector>

namespace platform
{

Group::Group(Session& session, const std::string& groupId, Member self, std::function<bool()> onJoined)
    : m_session(session),
      m_groupId(groupId),
      m_topics(groupId),
      m_self(std::move(self)),
      m_onJoined(std::move(onJoined))
{
}

void Group::Begin(uint64_t epoch)
{
    m_epoch = epoch;
    m_announced = false;
    m_joined = false;
    m_others.clear();
    m_watch.clear();
    m_waitFor = {m_topics.AllMembers(), m_topics.Messages()};
    // A meeting may have more members than one acknowledged subscription delivers.
    m_session.Subscribe(m_topics.AllMembers(), Delivery::AtMostOnce);
    m_session.Subscribe(m_topics.Messages(), Delivery::AtLeastOnce);
}

void Group::Leave()
{
    m_joined = false;
    m_announced = false;
    m_session.Publish(MakeWill(m_epoch));
    m_session.Unsubscribe(m_topics.AllMembers());
    m_session.Unsubscribe(m_topics.Messages());
    for (const auto& [presenceTopic, keys] : m_watch)
    {
        m_session.Unsubscribe(presenceTopic);
    }
    m_watch.clear();
    m_others.clear();
}

bool Group::IsJoined() const
{
    return m_joined;
}

const std::string& Group::GetGroupId() const
{
    return m_groupId;
}

BackplaneMessage Group::MakeWill(uint64_t epoch) const
{
    return MakeRecord({m_self.userId, m_self.sessionId}, MemberRecord{false, epoch, {}});
}

BackplaneMessage Group::MakeRecord(const Key& key, const MemberRecord& record) const
{
    const auto expiry = record.present ? std::chrono::seconds(0) : m_session.GetGoneRecordLife();
    return BackplaneMessage{m_topics.Member(key.first, key.second), record.Encode(), true, expiry};
}

void Group::OnSubscribed(const std::string& filter)
{
    if (m_watch.contains(filter))
    {
        m_session.AfterQuiet(
            [weak = weak_from_this(), filter]
            {
                if (const auto self = weak.lock())
                {
                    self->DropUnconfirmed(filter);
                }
            });
    }
    if (m_waitFor.erase(filter) != 0 && m_waitFor.empty())
    {
        m_session.AfterQuiet(
            [weak = weak_from_this()]
            {
                if (const auto self = weak.lock())
                {
                    self->Settle();
                }
            });
    }
}

/// All earlier members are known, so the own record follows.
void Group::Settle()
{
    if (m_waitFor.empty() && !m_announced)
    {
        m_announced = true;
        m_session.Publish(
            MakeRecord({m_self.userId, m_self.sessionId}, MemberRecord{true, m_epoch, m_self.presenceTopic}));
    }
}

bool Group::OnMessage(const BackplaneMessage& message)
{
    const std::string_view inside = m_topics.Inside(message.topic);
    if (inside == "x")
    {
        return m_joined;
    }
    const std::vector<std::string_view> levels = topics::Split(inside);
    if (levels.size() == 3 && levels[0] == "m")
    {
        const Key key{topics::Unescape(levels[1]), topics::Unescape(levels[2])};
        const std::optional<MemberRecord> record = MemberRecord::Decode(message.payload);
        if (key == Key{m_self.userId, m_self.sessionId})
        {
            OnSelf(record);
        }
        else
        {
            OnMember(key, record);
        }
    }
    return false;
}

void Group::OnSelf(const std::optional<MemberRecord>& record)
{
    if (!m_announced)
    {
        return;
    }
    if (!record || !record->present || record->epoch != m_epoch)
    {
        // A late will of an earlier connection, or a member that took this one for dead.
        m_session.Publish(
            MakeRecord({m_self.userId, m_self.sessionId}, MemberRecord{true, m_epoch, m_self.presenceTopic}));
        return;
    }
    if (!m_joined && m_onJoined())
    {
        m_joined = true;
        OnJoinedNow();
    }
}

void Group::OnJoinedNow()
{
    std::set<std::string> users = m_told;
    for (const auto& [key, other] : m_others)
    {
        users.insert(key.first);
    }
    for (const std::string& userId : users)
    {
        Tell(userId);
    }
    EmitSync();
}

void Group::OnMember(const Key& key, const std::optional<MemberRecord>& record)
{
    const auto known = m_others.find(key);
    if (known != m_others.end() && record && record->epoch < known->second.epoch)
    {
        return;
    }
    if (!record || !record->present)
    {
        Remove(key);
        return;
    }
    if (known != m_others.end() && known->second.presenceTopic == record->presenceTopic)
    {
        known->second.epoch = record->epoch;
        return;
    }
    Remove(key);
    m_others.emplace(key, Other{record->epoch, record->presenceTopic, record->presenceTopic.empty()});
    if (!record->presenceTopic.empty())
    {
        Watch(key, record->presenceTopic);
    }
    Tell(key.first);
}

void Group::Watch(const Key& key, const std::string& presenceTopic)
{
    m_watch[presenceTopic].insert(key);
    if (!m_announced)
    {
        m_waitFor.insert(presenceTopic);
    }
    // Also when it is subscribed already, because subscribing brings the retained record again.
    m_session.Subscribe(presenceTopic, Delivery::AtLeastOnce);
}

void Group::Unwatch(const Key& key, const std::string& presenceTopic)
{
    const auto found = m_watch.find(presenceTopic);
    if (found == m_watch.end())
    {
        return;
    }
    found->second.erase(key);
    if (found->second.empty())
    {
        m_session.Unsubscribe(presenceTopic);
        m_watch.erase(found);
    }
}

void Group::OnPresence(const std::string& topic, const PresenceRecord& record)
{
    const auto watched = m_watch.find(topic);
    if (watched == m_watch.end())
    {
        return;
    }
    const std::set<Key> keys = watched->second;
    for (const Key& key : keys)
    {
        Other& other = m_others.at(key);
        const bool isSame = record.sessionId == key.second;
        if (record.epoch < other.epoch || (!isSame && record.epoch == other.epoch))
        {
            continue;
        }
        if (isSame && record.online)
        {
            other.confirmed = true;
            Tell(key.first);
        }
        else
        {
            RemoveDead(key);
        }
    }
}

/// The retained record of a terminal has come. Members that it did not confirm are left over from an earlier session.
void Group::DropUnconfirmed(const std::string& presenceTopic)
{
    const auto watched = m_watch.find(presenceTopic);
    if (watched == m_watch.end())
    {
        return;
    }
    const std::set<Key> keys = watched->second;
    for (const Key& key : keys)
    {
        if (!m_others.at(key).confirmed)
        {
            RemoveDead(key);
        }
    }
}

/// A joining member deletes the record of a dead one. Only the joining member does so; otherwise every member would.
void Group::RemoveDead(const Key& key)
{
    if (!m_announced)
    {
        m_session.Publish(MakeRecord(key, MemberRecord{false, m_others.at(key).epoch, {}}));
    }
    Remove(key);
}

void Group::Remove(const Key& key)
{
    const auto found = m_others.find(key);
    if (found == m_others.end())
    {
        return;
    }
    const std::string presenceTopic = found->second.presenceTopic;
    m_others.erase(found);
    Unwatch(key, presenceTopic);
    Tell(key.first);
}

/// Reports that a user has joined or left. A user with several sessions counts once.
void Group::Tell(const std::string& userId)
{
    if (!m_joined || userId == m_self.userId)
    {
        return;
    }
    if (IsPresent(userId))
    {
        if (m_told.insert(userId).second)
        {
            m_session.Emit<avcore::IZolConnectionListener>([&userId](auto& listener)
                                                           { listener.OnGroupUserJoined(userId.c_str()); });
        }
    }
    else if (m_told.erase(userId) != 0)
    {
        m_session.Emit<avcore::IZolConnectionListener>([&userId](auto& listener)
                                                       { listener.OnGroupUserLeaved(userId.c_str()); });
    }
}

bool Group::IsPresent(const std::string& userId) const
{
    for (auto it = m_others.lower_bound({userId, {}}); it != m_others.end() && it->first.first == userId; ++it)
    {
        if (it->second.confirmed)
        {
            return true;
        }
    }
    return false;
}

void Group::EmitSync()
{
    avcore::ZolTextList users;
    users.emplace_back(m_self.userId.c_str());
    for (const std::string& userId : m_told)
    {
        users.emplace_back(userId.c_str());
    }
    // This platform carries no streams. Their record is opaque, so the empty list is a list of bytes; the layout of a
    // list does not depend on its elements.
    const WBASELIB::Vector<char> noMedia;
    const auto& media = reinterpret_cast<const WBASELIB::Vector<avcore::ZolMediaInfo>&>(noMedia);
    m_session.Emit<avcore::IZolConnectionListener>([&users, &media](auto& listener)
                                                   { listener.OnGroupUserSync(users, media, true); });
}

} // namespace platform
