#pragma once

#include "onlinemanager/UserOnlineInfo.h"

#include <cstddef>
#include <cstdint>
#include <mutex>
#include <string>
#include <unordered_map>
#include <vector>

namespace host
{

/// How the status of one user changed.
struct UserChange
{
    enum class Kind
    {
        IsOnline,        ///< was online already when the login first learned of the users
        ComesOnline,     ///< was offline or not known, and is online now
        GoesOffline,     ///< no terminal of the user is online any more
        AddsTerminal,    ///< one more terminal came online
        RemovesTerminal, ///< a terminal went offline, another one stays online
        ChangesText,     ///< the custom text of a terminal changed
        IsForgotten,     ///< the module does not know the user any more
    };

    Kind kind;
    uint32_t userId;
    std::string terminal{}; ///< the terminal that changed, or all that came online
    std::string text{};     ///< the custom text of that terminal; empty for several terminals
};

/// The status of all users as one terminal knows it. Finds out how the users of an `OnUserStatusChanged` have changed,
/// which names only the users.
class ShellPresence
{
public:
    /// [any] Takes in how the module describes users now, and returns how that differs from what it said before. An
    /// entry without terminals stands for a user that the module does not know.
    std::vector<UserChange> Learn(const std::vector<onlinemanager::UserOnlineInfo>& users);

    /// [any] Forgets all users, as the module does when a login ends.
    void Forget();

private:
    std::mutex m_mutex;
    std::unordered_map<uint32_t, std::vector<onlinemanager::UserTerminalInfo>> m_users;
    bool m_isFirst = true; ///< this login has not learned of any user yet
};

/// Many changes in a few sentences without a subject: "sees 50 users come online: 1001, ...", "sees user 7 go offline".
/// Changes of one user keep their order.
std::vector<std::string> DescribeChanges(const std::vector<UserChange>& changes);

} // namespace host
