#pragma once

#include "onlinemanager/OnlineTypes.h"

namespace onlinemanager
{

/// Follows the reconnection of a tunnel's connection. Implemented by the host as part of `IPaasOnlineNotify`; every operation
/// has an empty body, so that one overrides only what one needs.
class IReconnectionNotify
{
public:
    /// [platform] The connection was lost while logged in, or in a meeting; whether to reconnect is decided next.
    virtual void OnReadyReconnect(TunnelType /*type*/) {}

    /// [platform] Reconnection goes on.
    virtual void OnReconnectStart(TunnelType /*type*/) {}

    /// [platform] The connection is back. (The spelling of the name is part of the interface.)
    virtual void OnReconnectSucess(TunnelType /*type*/) {}

    /// [platform] Reconnection failed with the platform's code, or was given up with `ERR_RECONNECT_STOPPED`.
    virtual void OnReconnectFail(TunnelType /*type*/, ErrCode /*code*/) {}

protected:
    ~IReconnectionNotify() = default;
};

/// Decides whether a lost connection of the online session is restored. Implemented and owned by the host, set with
/// `IPaasOnline::SetReconnectionStrategy`; it must stay until another one or null has been set and no reconnection is being
/// decided.
class IReconnectionStrategy
{
public:
    virtual ~IReconnectionStrategy() = default;

    /// [platform] 1 = reconnect, 2 = stop. Any other value decides nothing: the platform goes on as it pleases and no
    /// notification follows.
    virtual int32_t CheckReconnect() = 0;
};

} // namespace onlinemanager
