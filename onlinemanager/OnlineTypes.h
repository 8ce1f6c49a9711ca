#pragma once

#include <cstdint>

/// Enumerations that several of the component's interfaces share. Hosts and platforms extend most of them: a value that is
/// not named here is passed on unchanged.

namespace quenda
{

/// Kind of a client device. The host defines the values; the component only carries them.
enum TerminalType : uint32_t
{
    TERMINAL_TYPE_UNKNOWN = 0,
};

} // namespace quenda

namespace onlinemanager
{

/// Which connection carries a meeting.
enum TunnelType : int32_t
{
    TUNNEL_TYPE_NONE = 0, ///< none chosen yet
    TUNNEL_TYPE_PAAS = 1, ///< the connection of the online session
    TUNNEL_TYPE_GW = 2,   ///< the older gateway connection
};

/// Error of every notification. 0 is success; codes of the platform (`avcore::ZolPortErrCode`) pass unchanged; the
/// component adds the ones from 50001 on.
enum ErrCode : int32_t
{
    ERR_SUCCESS = 0,
    ERR_JOIN_ABORTED_BY_RECONNECT = 50001, ///< a join was waiting for its result when the connection began to reconnect
    ERR_LOGIN_CONFLICT = 50002,            ///< logged out because the account logged in on another device
    ERR_RECONNECT_STOPPED = 50010,         ///< reconnection given up: the strategy said stop, or there is none
};

} // namespace onlinemanager
