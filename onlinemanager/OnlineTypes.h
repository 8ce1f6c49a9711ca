#pragma once

#include <cstdint>

/// Enumerations that several interfaces of the component share. Hosts and platforms may use further values; the
/// component passes them on unchanged.

namespace quenda
{

/// Kind of a terminal (client device). The host defines the values; the component only carries them.
enum TerminalType : uint32_t
{
    TERMINAL_TYPE_UNKNOWN = 0,
};

} // namespace quenda

namespace onlinemanager
{

/// The connection that carries a meeting, and with it the meeting tunnel.
enum TunnelType : int32_t
{
    TUNNEL_TYPE_NONE = 0, ///< no tunnel chosen yet
    TUNNEL_TYPE_PAAS = 1, ///< the connection of the online session
    TUNNEL_TYPE_GW = 2,   ///< the older gateway connection
};

/// The code of a notification. 0 is success. Codes of the platform (`avcore::ZolPortErrCode`) pass unchanged, except
/// code 36 in a logout. The codes from 50001 on are the component's own.
enum ErrCode : int32_t
{
    ERR_SUCCESS = 0,
    ERR_JOIN_ABORTED_BY_RECONNECT = 50001, ///< the connection began to reconnect while a join was pending
    ERR_LOGIN_CONFLICT = 50002,            ///< logged out because the user logged in on another device
    ERR_RECONNECT_STOPPED = 50010,         ///< reconnection given up: the strategy answered 2, or none is set
};

} // namespace onlinemanager
