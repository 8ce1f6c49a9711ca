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

/// The membership of one connection in a group, and its view of the other members. [platform]
///
/// A member is a retained record. The last will of a connection ends the presence of its terminal, so the record of a
/// PaaS member names its presence topic: the member counts while its terminal is online in the same session. A gateway
/// member has no presence; its last will ends the record itself.
class Group : public std::enable_shared_from_this<Group>
{
public:
    struct Member
    {
        std::string userId;
        std::string sessionId;
        std::string presenceTopic; ///< empty for a gateway member
    };

    /// `onJoined` runs once for each `Begin`, when the own record has arrived. When it returns false, the group reports
    /// no members.
    Group(Session& session, const std::string& groupId, Member self, std::function<bool()> onJoined);

    /// Joins or rejoins over a session of the backplane that has just begun. After `onJoined` the group reports
    /// members, as differences from its earlier reports.
    void Begin(uint64_t epoch);
    void Leave();

    bool IsJoined() const;
    const std::string& GetGroupId() const;
    BackplaneMessage MakeWill(uint64_t epoch) const;

    void OnSubscribed(const std::string& filter);
    /// Handles a message about the group. True when `message` is a text for its members.
    bool OnMessage(const BackplaneMessage& message);
    void OnPresence(const std::string& topic, const PresenceRecord& record);

private:
    struct Other
    {
        uint64_t epoch = 0;
        std::string presenceTopic;
        bool confirmed = false; ///< its terminal is online
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
    bool m_joined = false;                        ///< the own record has arrived
    std::set<std::string> m_waitFor;              ///< subscriptions without an acknowledgement
    std::map<Key, Other> m_others;                ///< ordered by user
    std::map<std::string, std::set<Key>> m_watch; ///< by presence topic
    std::set<std::string> m_told;                 ///< users that were reported as joined
};

} // namespace platform
