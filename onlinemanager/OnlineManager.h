#pragma once

#include "avcore/IZolConnection.h"
#include "common/frameworksdk/frameunknown.h"
#include "onlinemanager/IOnlineManager.h"

namespace onlinemanager
{

class GwConnectionImp;
class PaasMdsClientImp;
class PaasOnlineImp;
class PaasTMsgImp;

/// The component. The services hold references to its connection fields, so each call of a service uses the current
/// connection.
class OnlineManager : public FRAMEWORKSDK::CFrameUnknown, public IOnlineManager
{
public:
    /// The creation function of the template table.
    static FRAMEWORKSDK::CFrameUnknown* CreateInstance(IUnknown* outer, IComponentFactory* factory, int32_t* hr);

    /// Takes over one reference of `factory`. With a null `factory` it writes `E_FAIL` to `*hr`.
    OnlineManager(IUnknown* outer, IComponentFactory* factory, int32_t* hr);

    HRESULT NonDelegatingQueryInterface(const GUID& iid, void** out) override;
    ~OnlineManager() override;

    HRESULT QueryInterface(const GUID& iid, void** out) override;
    uint32_t AddRef() override;
    uint32_t Release() override;
    HRESULT Initialize(IUnknown* httpObject) override;
    HRESULT GetZolConnectionForAVMP(IUnknown** out) override;
    HRESULT GetPaasOnline(IPaasOnline** out) override;
    HRESULT GetMeetingTunnel(TunnelType type, IMeetingTunnel** out) override;
    HRESULT GetPaasMdsClient(IPaasMdsClient** out) override;
    HRESULT GetPaasTMsg(IPaasTMsg** out) override;
    HRESULT Destroy() override;

private:
    HRESULT CreateConnection(avcore::IZolConnection** out);

    IComponentFactory* m_component_factory = nullptr;
    avcore::IZolConnection* m_zol_connection = nullptr;
    avcore::IZolConnection* m_gw_zol_connect = nullptr;
    PaasMdsClientImp* m_paas_mds_client = nullptr;
    PaasTMsgImp* m_paas_tmsg = nullptr;
    PaasOnlineImp* m_paas_online = nullptr;
    GwConnectionImp* m_gw_connection = nullptr;
    TunnelType m_tunnel_type = TUNNEL_TYPE_NONE; ///< the last type that `GetMeetingTunnel` was called with
};

} // namespace onlinemanager
