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

/// The component: owns the two platform connections and every service, and hands out their interfaces.
///
/// Implemented by the module; created with `CLSID_OnlineManager` and `IID_OnlineManager` through the entry functions of
/// common/frameworksdk/frameworkcomponent.h. Reference-counted; lives until its last `Release`.
///
/// Life of a component, all on the host's control thread:
///
///     factory->AddRef();                       // the component takes this reference over
///     create(CLSID_OnlineManager, IID_OnlineManager, nullptr, factory, &manager);
///     manager->Initialize(http);               // builds connections and services
///     manager->GetPaasOnline(&session);        // ... and works with the services
///     manager->Destroy();                      // every interface handed out is void from here on
///     manager->Release();
///     canUnloadNow();                          // 0: dlclose may follow
///
/// `Destroy` takes the listeners off the platform and forgets the host's, so nobody is notified any more once it has
/// returned, not of the logout that it makes either; only a notification that has begun on another thread may still be running.
/// It may be called from inside a notification; the module must not be unloaded from there.
///
/// What is handed out carries no reference and stays the component's. Result codes: 0 success, 1 a missing factory or output
/// argument, negative as said. Everything that is refused is logged.
class IOnlineManager : public IUnknown
{
public:
    /// [host] Control thread. Creates the two connections through the factory and the services on them. `httpObject` is the
    /// host's `IHttpClient`, passed as it is (its interface is not asked for); one reference of it is taken over and is given
    /// back only by a component that is torn down with its destructors, which `Destroy` does not do: keep a reference of your
    /// own and let go of the object yourself. Null: HTTP(S) servers are refused at login.
    /// The code of a connection that could not be created, everything built before it staying in place; a second call builds
    /// what is missing and nothing else.
    virtual HRESULT Initialize(IUnknown* httpObject) = 0;

    /// [host] Control thread. The connection that the media process shares with the tunnel chosen last by `GetMeetingTunnel`.
    /// `E_FAIL` and null in `*out` before one was chosen.
    virtual HRESULT GetZolConnectionForAVMP(IUnknown** out) = 0;

    /// [host] The online session. 0 with `*out` untouched when there is none: start from null.
    virtual HRESULT GetPaasOnline(IPaasOnline** out) = 0;

    /// [host] Control thread. The tunnel of a kind: 1 the session's, any other value the gateway's. The kind is remembered for
    /// `GetZolConnectionForAVMP`, also when the tunnel itself cannot be had. 1 when there is none.
    virtual HRESULT GetMeetingTunnel(TunnelType type, IMeetingTunnel** out) = 0;

    /// [host] The client of the monitoring service. 0 with `*out` untouched when there is none: start from null.
    virtual HRESULT GetPaasMdsClient(IPaasMdsClient** out) = 0;

    /// [host] The channel of transparent messages. 0 with `*out` untouched when there is none: start from null.
    virtual HRESULT GetPaasTMsg(IPaasTMsg** out) = 0;

    /// [host] Control thread. Takes the services off the platform, logs out, frees the services and releases the connections. A
    /// second call finds nothing to do. The storage of the services is given back without running their destructors, on
    /// purpose: what they own (their listener lists, copies of parameters, the HTTP object's reference) stays behind.
    virtual HRESULT Destroy() = 0;

protected:
    ~IOnlineManager() = default;
};

} // namespace onlinemanager
