#pragma once

#include "common/frameworksdk/IComponentFactory.h"

namespace onlinemanager
{

/// Implemented by the host for the channel of transparent messages. It has no operation yet.
class IPaasTMsgNotify
{
};

/// The channel of transparent messages: opaque texts from user to user or to a group.
///
/// Implemented by the component, one object; got from `IOnlineManager::GetPaasTMsg`. Borrowed; valid until
/// `IOnlineManager::Destroy`. In this version the channel ends here: messages are logged and nobody is notified.
class IPaasTMsg
{
public:
    /// [any] Registers a listener; null is ignored.
    virtual void AddNotify(IPaasTMsgNotify* notify) = 0;

    /// [any] Removes a listener; null and strangers are ignored.
    virtual void RemoveNotify(IPaasTMsgNotify* notify) = 0;

    /// [any] Forgets all listeners.
    virtual void RemoveAllNotify() = 0;

    /// Called by `IOnlineManager::Initialize`, not by hosts. False when there is no connection or it has no message component; may
    /// be called again.
    virtual bool InitModel(IComponentFactory* factory) = 0;

    /// Called by `IOnlineManager::Destroy`, not by hosts. Always true.
    virtual bool UninitModel() = 0;

protected:
    ~IPaasTMsg() = default;
};

} // namespace onlinemanager
