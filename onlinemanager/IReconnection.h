#pragma once

#include "avcore/ZolTypes.h"
#include "onlinemanager/OnlineTypes.h"

namespace onlinemanager
{

/// Learns of lost and restored connections. The host implements it as part of `IPaasOnlineNotify`. Every operation has an empty
/// body, so a host overrides only those that it needs. Both tunnels report here; `type` says which one it is.
class IReconnectionNotify
{
public:
    /// [platform] The connection was lost while the user was logged in, or in a gateway meeting. The decision about the
    /// reconnection comes next.
    virtual void OnReadyReconnect(TunnelType /*type*/) {}

    /// [platform] The platform reconnects.
    virtual void OnReconnectStart(TunnelType /*type*/) {}

    /// [platform] The connection is back. (The spelling of the name is part of the interface.)
    virtual void OnReconnectSucess(TunnelType /*type*/) {}

    /// [platform] The reconnection failed with the platform's code, or was given up: `ERR_RECONNECT_STOPPED`.
    virtual void OnReconnectFail(TunnelType /*type*/, ErrCode /*code*/) {}

protected:
    ~IReconnectionNotify() = default;
};

/// Decides whether the platform restores a lost connection of the online session. The host implements and owns it, and sets it
/// with `IPaasOnline::SetReconnectionStrategy`. It must stay alive until the host has set another one or null and no call of
/// `CheckReconnect` is running.
class IReconnectionStrategy
{
public:
    virtual ~IReconnectionStrategy() = default;

    /// [platform] Returns an `avcore::ZolReconnectDecision`. After `ZOL_RECONNECT_GO_ON` the session sends `OnReconnectStart`.
    /// After `ZOL_RECONNECT_STOP` it sends `OnReconnectFail` with `ERR_RECONNECT_STOPPED`, and the user is logged out. After
    /// any other value it sends nothing, and the platform goes on as it does without a decision.
    virtual int32_t CheckReconnect() = 0;
};

} // namespace onlinemanager
