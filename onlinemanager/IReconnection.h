#pragma once

#include "avcore/ZolTypes.h"
#include "onlinemanager/OnlineTypes.h"

namespace onlinemanager
{

/// Receives the reconnections of a tunnel's connection: type 1 the session's, type 2 the gateway's. The host implements
/// it as part of `IPaasOnlineNotify`. Every operation has an empty body: override what you need.
class IReconnectionNotify
{
public:
    /// [platform] The connection was lost while logged in (type 1) or in the meeting (type 2). On type 1 the strategy
    /// is asked next.
    virtual void OnReadyReconnect(TunnelType /*type*/) {}

    /// [platform] The platform reconnects. May come several times.
    virtual void OnReconnectStart(TunnelType /*type*/) {}

    /// [platform] The connection is restored; on type 1 the session is logged in again. The platform decides whether
    /// the user is still in the meeting (see `IMeetingTunnel`). (The spelling of the name is part of the interface.)
    virtual void OnReconnectSucess(TunnelType /*type*/) {}

    /// [platform] The reconnection failed, with the platform's code, or was given up, with `ERR_RECONNECT_STOPPED`.
    /// The component sends no `IPaasOnlineNotify::OnOffline` after it, unless the platform also reports a logout.
    ///
    /// Given up: the session is logged out, property 0 stays "true", and the presence service still takes the user for
    /// logged in. Call `Relogin` or `Login`. `Logout` returns true, asks nothing of the platform and causes no
    /// notification.
    ///
    /// Failed: property 0 is "false". The session counts as logging in, and `Relogin` returns false, until the platform
    /// reports the logout by `OnOffline`. The in-process platform reports it at once, with the same code, 36 as
    /// `ERR_LOGIN_CONFLICT`. Wait for `OnOffline` and then call `Relogin` or `Login`, or call `Login` without waiting,
    /// also from inside this notification. On type 2 the tunnel keeps its state.
    virtual void OnReconnectFail(TunnelType /*type*/, ErrCode /*code*/) {}

protected:
    ~IReconnectionNotify() = default;
};

/// Decides whether a lost connection of the online session is restored. The host implements and owns it and sets it
/// with `IPaasOnline::SetReconnectionStrategy`. It must live until another strategy or null has been set and no
/// `CheckReconnect` is running. The gateway connection does not ask it.
class IReconnectionStrategy
{
public:
    virtual ~IReconnectionStrategy() = default;

    /// [platform] Returns an `avcore::ZolReconnectDecision`. After `ZOL_RECONNECT_GO_ON` the session sends
    /// `OnReconnectStart`. After `ZOL_RECONNECT_STOP` the session is logged out and sends `OnReconnectFail` with
    /// `ERR_RECONNECT_STOPPED`. After any other value the platform decides, and no notification follows until it
    /// reports what became of the connection.
    virtual int32_t CheckReconnect() = 0;
};

} // namespace onlinemanager
