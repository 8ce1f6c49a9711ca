#pragma once

#include "platform/backplane/Backplane.h"
#include "platform/wire/Records.h"
#include "platform/wire/Topics.h"

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <utility>

namespace platform
{

class Session;

/// One connection's place in a group, and its view of the others. Only on the platform thread.
///
/// A member is a retained record. A connection has one last will, which tells of its terminal's presence, so the record of a
/// PaaS member names its presence topic: a member counts while its terminal is online in the same session. A gateway member
/// has no presence, and its last will is about the record itself.
class Group : public std::enable_shared_from_this<Group>
{
public:
    struct Member
    {
        std::string userId;
        std::string sessionId;
        std::string presenceTopic; ///< empty for a gateway member
    };

    /// `onJoined` is called each time that the own record has arrived, once for each `Begin`; false keeps the members from
    /// being told.
    Group(Session& session, const std::string& groupId, Member self, std::function<bool()> onJoined);

    /// Joins, or comes back, over a session of the backplane that has just begun. Members are told about once `onJoined` has
    /// been called, as differences from what was told before.
    void Begin(uint64_t epoch);
    void Leave();

    bool IsJoined() const;
    const std::string& GetGroupId() const;
    BackplaneMessage MakeWill(uint64_t epoch) const;

    void OnSubscribed(const std::string& filter);
    /// Takes what is about the group; true when `message` is a text for its members.
    bool OnMessage(const BackplaneMessage& message);
    void OnPresence(const std::string& topic, const PresenceRecord& record);

private:
    struct Other
    {
        uint64_t epoch = 0;
        std::string presenceTopic;
        bool confirmed = false; ///< its terminal is known to be online
    };
    using Key = std::pair<std::string, std::string>; ///< user and session

    void Settle();
    void OnMember(const Key& key, const std::optional<MemberRecord>& record);
    void OnSelf(const std::optional<MemberRecord>& record);
    void OnJoinedNow();
    void Watch(const Key& key, const std::string& presenceTopic);
    void Unwatch(const Key& key, const std::string& presenceTopic);
    void DropUnconfirmed(const std::string& presenceTopic);
    void Remove(const Key& key);
    void RemoveDead(const Key& key);
    void Tell(const std::string& userId);
    bool IsPresent(const std::string& userId) const;
    void EmitSync();
    BackplaneMessage MakeRecord(const Key& key, const MemberRecord& record) const;

    Session& m_session;
    const std::string m_groupId;
    const GroupTopics m_topics;
    const Member m_self;
    const std::function<bool()> m_onJoined;

    uint64_t m_epoch = 0;
    bool m_announced = false;                     ///< the own record was sent
    bool m_joined = false;                        ///< and has arrived
    std::set<std::string> m_waitFor;              ///< subscriptions without an acknowledgement
    std::map<Key, Other> m_others;                ///< ordered by user
    std::map<std::string, std::set<Key>> m_watch; ///< by presence topic
    std::set<std::string> m_told;                 ///< users that the listeners know to be there
};

} // namespace platform
