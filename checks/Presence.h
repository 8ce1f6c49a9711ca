#pragma once

#include "checks/RecordingPlatform.h"
#include "onlinemanager/IUserOnline.h"

#include <sstream>
#include <string>
#include <vector>

namespace checks
{

inline std::string TextOf(const onlinemanager::UserOnlineInfo& user)
{
    std::ostringstream text;
    text << user.user_id << ": status=" << user.online_status;
    for (const onlinemanager::UserTerminalInfo& terminal : user.terminals)
    {
        text << " [" << terminal.terminal << " type=" << +terminal.terminal_type << " status=" << terminal.status
             << " custom=" << terminal.custom << "]";
    }
    return text.str();
}

/// The module's records of these users, in the order of its callbacks.
inline std::vector<std::string> Known(onlinemanager::IUserOnline& users, const std::vector<unsigned>& ids)
{
    std::vector<std::string> known;
    users.QueryUserStatus(ids, [&known](const onlinemanager::UserOnlineInfo& user) { known.push_back(TextOf(user)); });
    return known;
}

inline uint64_t DigestOf(onlinemanager::IUserOnline& users, unsigned id)
{
    uint64_t digest = 0;
    users.QueryUserStatus({id}, [&digest](const onlinemanager::UserOnlineInfo& user) { digest = user.terminal_hash; });
    return digest;
}

/// A user with the one terminal "pc".
inline PageUser UserOnPc(const std::string& id, int32_t status, const std::string& custom = "")
{
    return {id, {{"pc", status, custom, "{\"tt\":3}"}}};
}

/// Sends the single page of a refresh.
inline void Refresh(RecordingConnection& connection, const Page& page, unsigned requestId = 101)
{
    connection.online.RefreshUserStatusFinished(avcore::ZOL_PORT_SUCCESS, requestId, page, 1, 0);
}

} // namespace checks
