#pragma once

#include "common/wbaselib/wtypes.h"

namespace avcore
{

/// Receives transparent messages: opaque texts from a user to a user or to a group. Implemented by the module's message
/// service. Texts are never null and not valid after the call.
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

/// The transparent-message component of a connection. Implemented by the platform library; got from
/// `IZolConnection::GetComponent(IID_IZolTMsg)`, borrowed, lives as long as the connection.
class IZolTMsg
{
public:
    virtual void Reserved0() = 0;

    /// [any] Registers a listener.
    virtual HRESULT AddListener(IZolTMsgListener* listener) = 0;

    /// [any] Takes a listener away; the same promise as `IZolConnection::RemoveListener`.
    virtual HRESULT RemoveListener(IZolTMsgListener* listener) = 0;

protected:
    ~IZolTMsg() = default;
};

} // namespace avcore
