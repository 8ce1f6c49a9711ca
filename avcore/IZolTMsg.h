#pragma once

#include "common/wbaselib/wtypes.h"

namespace avcore
{

/// Receives transparent messages: opaque texts from a user to a user or to a group. The module's message service
/// implements it and registers it with `IZolTMsg::AddListener`; the platform does not own it. Texts are valid during
/// the call only and not null.
class IZolTMsgListener
{
public:
    /// [platform] A message to the local user.
    virtual void OnUserMsgIncome(const char* srcUserId, unsigned int msgId, const char* msg) = 0;

    /// [platform] A message to a group that the local user is in.
    virtual void OnGroupMsgIncome(const char* srcUserId, unsigned int msgId, const char* msg) = 0;

protected:
    ~IZolTMsgListener() = default;
};

/// The transparent-message component of a connection. The platform library implements it; the module gets it from
/// `IZolConnection::GetComponent(IID_IZolTMsg)` without a reference. It lives as long as the connection.
class IZolTMsg
{
public:
    virtual void Reserved0() = 0;

    /// [any] Registers a listener; it is not owned. A listener that is registered already stays registered once.
    virtual HRESULT AddListener(IZolTMsgListener* listener) = 0;

    /// [any] Removes a listener, with the promise of `IZolConnection::RemoveListener`.
    virtual HRESULT RemoveListener(IZolTMsgListener* listener) = 0;

protected:
    ~IZolTMsg() = default;
};

} // namespace avcore
