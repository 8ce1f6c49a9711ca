#pragma once

#include "common/frameworksdk/IComponentFactory.h"
#include "onlinemanager/AVQualityInfo.h"

#include <memory>

namespace onlinemanager
{

/// Learns whether anybody wants quality reports. Implemented by the host, registered with `IPaasMdsClient::AddNotify`, not
/// owned.
class IPaasMdsClientNotify
{
public:
    /// [platform] At least one report is subscribed: measure. Sent for every command that leaves one subscribed, also when nothing
    /// changed.
    virtual void OnSubscribeAVQualityInfo() = 0;

    /// [platform] No report is subscribed any more: stop measuring. Sent for every such command while nothing is subscribed.
    virtual void OnUnSubscribeAVQualityInfo() {}

protected:
    ~IPaasMdsClientNotify() = default;
};

/// Sends quality reports to the monitoring data service, those that it has subscribed to.
///
/// Implemented by the component, one object; got from `IOnlineManager::GetPaasMdsClient`. Borrowed; valid until
/// `IOnlineManager::Destroy`. It reaches the platform when it is first needed: call `InitMdsClient` once after `Initialize`, or
/// no subscription arrives before the first `SendAVQualityInfo`.
class IPaasMdsClient
{
public:
    /// [any] Registers a listener; null is ignored. A listener that is registered already is not registered twice; one that was
    /// removed and not yet forgotten comes back in its old place. A listener added during a delivery is reached by it.
    virtual void AddNotify(IPaasMdsClientNotify* notify) = 0;

    /// [any] Removes a listener; null and strangers are ignored. A delivery under way skips it from now on. A notification that
    /// has begun on another thread may still be running when this returns.
    virtual void RemoveNotify(IPaasMdsClientNotify* notify) = 0;

    /// [any] Forgets all listeners; a delivery under way ends.
    virtual void RemoveAllNotify() = 0;

    /// Called by `IOnlineManager::Initialize`, not by hosts. False when there is no connection.
    virtual bool InitModel(IComponentFactory* factory) = 0;

    /// Called by `IOnlineManager::Destroy`, not by hosts. Always true; what is subscribed stays subscribed.
    virtual bool UninitModel() = 0;

    /// [any] Fetches the platform's client afresh and registers with it. Always true; a failure is logged and `SendAVQualityInfo`
    /// tries again.
    virtual bool InitMdsClient() = 0;

    /// [any] Sends the subscribed reports of one measurement, the overview first; nothing when none is subscribed or `info` is
    /// null. A report that the platform does not take is logged and the result is still true; false when the platform has no
    /// client.
    virtual bool SendAVQualityInfo(const std::shared_ptr<AVQualityInfo>& info) = 0;

protected:
    ~IPaasMdsClient() = default;
};

} // namespace onlinemanager
