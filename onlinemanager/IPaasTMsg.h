#pragma once

#include "common/frameworksdk/IComponentFactory.h"

namespace onlinemanager
{

/// The host's listener of transparent messages. It has no operation in this version.
class IPaasTMsgNotify
{
};

/// The channel of transparent messages: opaque texts from a user to a user or to a group.
///
/// The component implements it, one object. The host gets it from `IOnlineManager::GetPaasTMsg`. Borrowed; valid until
/// `IOnlineManager::Destroy`. In this version the component logs incoming messages and calls no listener.
class IPaasTMsg
{
public:
    /// [any] Registers a listener; it is not owned. Null is ignored.
    virtual void AddNotify(IPaasTMsgNotify* notify) = 0;

    /// [any] Removes a listener. Null and a listener that is not registered are ignored.
    virtual void RemoveNotify(IPaasTMsgNotify* notify) = 0;

    /// [any] Removes all listeners.
    virtual void RemoveAllNotify() = 0;

    /// Hosts must not call it; `IOnlineManager::Initialize` does. False when there is no connection, or the connection
    /// has no message component. It may be called again.
    virtual bool InitModel(IComponentFactory* factory) = 0;

    /// Hosts must not call it; `IOnlineManager::Destroy` does. Returns true.
    virtual bool UninitModel() = 0;

protected:
    ~IPaasTMsg() = default;
};

} // namespace onlinemanager
