#pragma once

#include "avcore/ZolTypes.h"
#include "common/wbaselib/wlock.h"
#include "onlinemanager/ISerialization.h"
#include "onlinemanager/UserOnlineInfo.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace onlinemanager
{

/// What is known of other users: the terminals of each, merged from single events and from whole refreshes. Made and owned
/// by the user service.
///
/// Every operation may be called from any thread. No lock is held while `Query` calls back.
class UserStatusManager
{
public:
    explicit UserStatusManager(std::shared_ptr<ISerialization> serialization);
    virtual ~UserStatusManager() = default;

    UserStatusManager(const UserStatusManager&) = delete;
    UserStatusManager& operator=(const UserStatusManager&) = delete;

    /// Merges one terminal's event; true when the user's record changed. A terminal is never removed, and a change of its type
    /// alone is none.
    bool Add(unsigned userId, const avcore::ZolUserTerminalInfo& info);

    /// Collects one page of a refresh. Always 1. A user id that is no number is collected as user 0.
    int Cache(const WBASELIB::Vector<avcore::ZolUserInfo>& users);

    /// Ends a refresh: what was collected is the table from now on. The ids of the users that changed, those that were online and
    /// are missing at the end, in ascending order. An id is listed twice when the refresh listed its user twice.
    std::vector<unsigned> ResetByCache();

    /// Calls `cb` once per id, in order, with a default record for an unknown user. Always true.
    bool Query(const std::vector<unsigned>& ids, std::function<void(const UserOnlineInfo&)> cb);

    /// Forgets the table, not what was collected of a refresh under way.
    void Clear();

    UserTerminalInfo ConvertTerminalInfo(const avcore::ZolUserTerminalInfo& info);

    /// 1 when any terminal is online, else the status of the last one, 0 without terminals.
    unsigned ReportTerminalOnlineStatus(const std::vector<UserTerminalInfo>& terminals);

    /// Digest of names, states and custom texts. It does not depend on the order, and two equal terminals cancel each other out.
    uint64_t CalcTerminalInfoHash(const std::vector<UserTerminalInfo>& terminals);

private:
    struct Entry
    {
        UserOnlineInfo user;
        uint64_t refresh = 0; ///< number of the refresh that it was last in
    };
    using UserTable = std::unordered_map<unsigned, Entry>;

    /// The types that extension texts stand for: a page repeats a few of them, and to read one takes longer than the rest of
    /// a terminal.
    using TypeTable = std::unordered_map<std::string_view, quenda::TerminalType>;

    quenda::TerminalType ReadType(const char* extInfo);
    UserOnlineInfo ConvertUserInfo(const avcore::ZolUserInfo& info, TypeTable* knownTypes);
    void Rate(UserOnlineInfo* user);
    UserOnlineInfo Find(unsigned userId);
    std::vector<unsigned> TakeMissing();

    WBASELIB::WLock m_lock; ///< guards the next three
    std::vector<UserOnlineInfo> m_cache;
    UserTable m_users;
    uint64_t m_refresh = 0; ///< number of the last refresh
    const std::shared_ptr<ISerialization> m_serialization;
};

} // namespace onlinemanager
