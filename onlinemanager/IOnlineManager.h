#pragma once

#include "common/frameworksdk/IUnknown.h"
#include "onlinemanager/OnlineTypes.h"

namespace onlinemanager
{

class IMeetingTunnel;
class IPaasMdsClient;
class IPaasOnline;
class IPaasTMsg;

inline constexpr CLSID CLSID_OnlineManager{
    0x4022BD11, 0xA92F, 0x4F6D, {0x90, 0x31, 0xEE, 0xB9, 0x2E, 0x99, 0x88, 0x06}};
inline constexpr IID IID_OnlineManager{0x36E271A8, 0x9587, 0x4184, {0xA3, 0x6E, 0x48, 0x16, 0xB3, 0x38, 0x20, 0xAA}};

/// The component. It owns the two platform connections and all services, and gives access to their interfaces.
///
/// The module implements it. The host creates it with `CLSID_OnlineManager` and `IID_OnlineManager` through the entry
/// functions of common/frameworksdk/frameworkcomponent.h. It is reference-counted and lives until its last `Release`.
///
/// A component carries one user at a time: a second `IPaasOnline::Login` replaces the first. Create one component for
/// each user.
///
/// The life of a component, all on the control thread:
///
///     factory->AddRef();                       // the component takes this reference over
///     create(CLSID_OnlineManager, IID_OnlineManager, nullptr, factory, &manager);
///     manager->Initialize(http);               // creates connections and services
///     manager->GetPaasOnline(&session);        // ... the host works with the services
///     manager->Destroy();                      // every interface obtained before is invalid now
///     manager->Release();
///     canUnloadNow();                          // 0: dlclose may follow
///
/// With an outer object, create it with `IID_IUnknown` instead: `IID_OnlineManager` then yields an object that is
/// destroyed already (see `CPDllCreateComponent2`).
///
/// The services that the getters return belong to the component and carry no reference. Result codes: 0 success; 1 for
/// a null output argument; negative codes as described. Every refusal is logged.
class IOnlineManager : public IUnknown
{
public:
    /// [host] Control thread. Creates the two connections through the factory, and the services on them. 0, or the
    /// factory's negative code for a connection that it could not create; what was created before stays. A second call
    /// creates what is missing and nothing else.
    ///
    /// `httpObject` is the host's `IHttpClient`, passed as `IUnknown*`; its interface is not asked for. With null,
    /// HTTP(S) servers are refused. The component takes over one reference and never releases it, because `Destroy`
    /// runs no destructor of its services: keep a reference of your own, and free the object yourself after `Destroy`.
    virtual HRESULT Initialize(IUnknown* httpObject) = 0;

    /// [host] Control thread. Writes the platform connection (an `avcore::IZolConnection`) of the tunnel that
    /// `GetMeetingTunnel` chose last to `*out`, for the media process.
    ///
    /// The connection is borrowed: no reference is added, and it is valid until `Destroy`. To use it longer, call
    /// `AddRef` on it. Do not release it otherwise.
    ///
    /// 0; `*out` is null when there is no such connection. `E_FAIL`, with null in `*out`, when no tunnel of type 1 or 2
    /// was chosen.
    virtual HRESULT GetZolConnectionForAVMP(IUnknown** out) = 0;

    /// [host] Writes the online session to `*out`. Returns 0 and leaves `*out` unchanged when there is none: set it to
    /// null before.
    virtual HRESULT GetPaasOnline(IPaasOnline** out) = 0;

    /// [host] Control thread. Writes a meeting tunnel to `*out`: for type 1 the session's, for any other value the
    /// gateway's. 0; 1 when there is none. The type counts for `GetZolConnectionForAVMP` also when there is no tunnel.
    virtual HRESULT GetMeetingTunnel(TunnelType type, IMeetingTunnel** out) = 0;

    /// [host] Writes the client of the monitoring data service to `*out`. Returns 0 and leaves `*out` unchanged when
    /// there is none: set it to null before.
    virtual HRESULT GetPaasMdsClient(IPaasMdsClient** out) = 0;

    /// [host] Writes the channel of transparent messages to `*out`. Returns 0 and leaves `*out` unchanged when there is
    /// none: set it to null before.
    virtual HRESULT GetPaasTMsg(IPaasTMsg** out) = 0;

    /// [host] Control thread. Removes the services' listeners from the platform, logs out, frees the services and
    /// releases the connections. Returns 0. A second call does nothing.
    ///
    /// No notification begins after it has returned, and none reports the logout that it makes. It waits for the
    /// notifications that run on threads of the platform, except those of `IPaasMdsClientNotify`. Those, notifications
    /// of `TriggerNotify` and notifications from inside a call of another host thread may still be running. `Destroy`
    /// may be called from inside a notification; the module must not be unloaded from there.
    ///
    /// It frees the storage of the services without running their destructors, on purpose: a destructor would release
    /// the HTTP object, which the host frees itself (see `Initialize`). What the services own is not freed: listener
    /// lists, copies of parameters, the HTTP object's reference.
    virtual HRESULT Destroy() = 0;

protected:
    ~IOnlineManager() = default;
};

} // namespace onlinemanager
