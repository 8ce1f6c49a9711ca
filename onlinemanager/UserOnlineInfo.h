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
    std::string terminal; ///< identifies the terminal among the terminals of its user
    quenda::TerminalType terminal_type = quenda::TERMINAL_TYPE_UNKNOWN; ///< `LoginParam::terminal` of its login
    uint32_t status = 0;                                                ///< as the platform reports it; 1 = online
    std::string custom;                                                 ///< custom text that the terminal published
};

/// One user and the user's known terminals.
struct UserOnlineInfo
{
    uint32_t user_id = 0;
    uint32_t online_status = 0; ///< 1 = a terminal is online; else the last terminal's status; 0 without terminals
    uint64_t terminal_hash = 0; ///< digest of names, states and custom texts of `terminals`; 0 for an empty list
    std::vector<UserTerminalInfo> terminals; ///< in order of first report; terminals that go offline stay
};

} // namespace onlinemanager
