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

/// The terminals of other users and their status, merged from the events of single terminals and from refreshes. The
/// user service makes and owns it.
///
/// Every operation may be called from any thread. `Query` holds no lock while it calls back.
class UserStatusManager
{
public:
    explicit UserStatusManager(std::shared_ptr<ISerialization> serialization);
    virtual ~UserStatusManager() = default;

    UserStatusManager(const UserStatusManager&) = delete;
    UserStatusManager& operator=(const UserStatusManager&) = delete;

    /// Merges the event of one terminal. True when the user's record changed; a new type of the terminal alone is not a
    /// change. Never removes a terminal.
    bool Add(unsigned userId, const avcore::ZolUserTerminalInfo& info);

    /// Collects one page of a refresh. Always 1. A user id that is not a number counts as user 0.
    int Cache(const WBASELIB::Vector<avcore::ZolUserInfo>& users);

    /// Ends a refresh: the collected records become the table. Returns the ids of the users that changed, and after
    /// them, in ascending order, the ids of the users that were online and are missing. An id appears twice when the
    /// refresh contained its user twice.
    std::vector<unsigned> ResetByCache();

    /// Calls `cb` once per id, in order, with a default record for an unknown user. Always true.
    bool Query(const std::vector<unsigned>& ids, std::function<void(const UserOnlineInfo&)> cb);

    /// Empties the table. The pages collected of a running refresh stay.
    void Clear();

    UserTerminalInfo ConvertTerminalInfo(const avcore::ZolUserTerminalInfo& info);

    /// 1 when any terminal is online, else the status of the last terminal; 0 without terminals.
    unsigned ReportTerminalOnlineStatus(const std::vector<UserTerminalInfo>& terminals);

    /// Digest of names, states and custom texts. It does not depend on the order of the terminals; two equal terminals
    /// cancel each other out.
    uint64_t CalcTerminalInfoHash(const std::vector<UserTerminalInfo>& terminals);

private:
    struct Entry
    {
        UserOnlineInfo user;
        uint64_t refresh = 0; ///< number of the last refresh that contained the user
    };
    using UserTable = std::unordered_map<unsigned, Entry>;

    /// The terminal type of each extension text of a page. A page repeats a few texts, and parsing one takes longer
    /// than the rest of a terminal.
    using TypeTable = std::unordered_map<std::string_view, quenda::TerminalType>;

    quenda::TerminalType ReadType(const char* extInfo);
    UserOnlineInfo ConvertUserInfo(const avcore::ZolUserInfo& info, TypeTable* knownTypes);
    void Rate(UserOnlineInfo* user);
    UserOnlineInfo Find(unsigned userId);
    std::vector<unsigned> TakeMissing();

    WBASELIB::WLock m_lock; ///< guards the next three members
    std::vector<UserOnlineInfo> m_cache;
    UserTable m_users;
    uint64_t m_refresh = 0; ///< number of the last refresh
    const std::shared_ptr<ISerialization> m_serialization;
};

} // namespace onlinemanager
