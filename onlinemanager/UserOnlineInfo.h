#pragma once

#include "onlinemanager/OnlineTypes.h"

#include <cstdint>
#include <string>
#include <vector>

namespace onlinemanager
{

/// One terminal (client device) of a user.
struct UserTerminalInfo
{
    std::string terminal; ///< identifies the terminal among those of its user
    quenda::TerminalType terminal_type = quenda::TERMINAL_TYPE_UNKNOWN;
    uint32_t status = 0; ///< as the platform reports it; 1 = online
    std::string custom;  ///< what its user published
};

/// One user and the terminals that are known of him.
struct UserOnlineInfo
{
    uint32_t user_id = 0;
    uint32_t online_status = 0; ///< 1 = at least one terminal is online; 0 = offline or unknown
    uint64_t terminal_hash = 0; ///< digest of `terminals`; changes with their names, states and custom texts
    std::vector<UserTerminalInfo> terminals; ///< in order of first report; a terminal that went offline stays
};

} // namespace onlinemanager
