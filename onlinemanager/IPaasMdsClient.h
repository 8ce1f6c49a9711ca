#pragma once

#include "common/frameworksdk/IComponentFactory.h"
#include "onlinemanager/AVQualityInfo.h"

#include <memory>

namespace onlinemanager
{

/// Receives the start and the end of quality reporting. The host implements it and registers it with
/// `IPaasMdsClient::AddNotify`.
class IPaasMdsClientNotify
{
public:
    /// [platform] At least one report is subscribed: start measuring. Comes after every subscribe command that leaves a
    /// report subscribed, also when the command changed nothing.
    virtual void OnSubscribeAVQualityInfo() = 0;

    /// [platform] No report is subscribed: stop measuring. Comes after every unsubscribe command that leaves no report
    /// subscribed, also when the command changed nothing.
    virtual void OnUnSubscribeAVQualityInfo() {}

protected:
    ~IPaasMdsClientNotify() = default;
};

/// Sends the quality reports that the monitoring data service has subscribed to.
///
/// The component implements it, one object. The host gets it from `IOnlineManager::GetPaasMdsClient`. Borrowed; valid
/// until `IOnlineManager::Destroy`.
///
/// It registers with the platform at the first `InitMdsClient` or `SendAVQualityInfo`. Call `InitMdsClient` once after
/// `Initialize`: before the registration no subscription arrives.
class IPaasMdsClient
{
public:
    /// [any] Registers a listener; it is not owned. Null and a listener that is registered already are ignored.
    /// Listeners are called in order of registration. A listener that is added during a notification is still called
    /// for that event. A listener that is added again before the next event after its removal gets its old place back.
    virtual void AddNotify(IPaasMdsClientNotify* notify) = 0;

    /// [any] Removes a listener; null and a listener that is not registered are ignored. No new notification of it
    /// begins. It does not wait: a notification that runs on another thread may still be running when this returns.
    virtual void RemoveNotify(IPaasMdsClientNotify* notify) = 0;

    /// [any] Removes all listeners, and does not wait either. A delivery that is under way ends: listeners that are
    /// added afterwards are not called for its event.
    virtual void RemoveAllNotify() = 0;

    /// Hosts must not call it; `IOnlineManager::Initialize` does. False when there is no connection.
    virtual bool InitModel(IComponentFactory* factory) = 0;

    /// Hosts must not call it; `IOnlineManager::Destroy` does. Returns true. Subscriptions stay.
    virtual bool UninitModel() = 0;

    /// [any] Gets the platform's client again and registers with it. Returns true, also on failure: the failure is
    /// logged, and the next `SendAVQualityInfo` tries again.
    virtual bool InitMdsClient() = 0;

    /// [any] Sends the subscribed reports of one measurement, the overview first. Sends nothing when no report is
    /// subscribed or `info` is null. A report that the platform refuses is logged, and the result is still true. False
    /// only when the platform has no client or there is no connection. Needs no login.
    virtual bool SendAVQualityInfo(const std::shared_ptr<AVQualityInfo>& info) = 0;

protected:
    ~IPaasMdsClient() = default;
};

} // namespace onlinemanager
