#include "onlinemanager/OnlineManager.h"

#include "common/frameworksdk/frameworkcomponent.h"
#include "commonutil/OrbLogUtil.h"
#include "onlinemanager/GwConnectionImp.h"
#include "onlinemanager/PaasMdsClientImp.h"
#include "onlinemanager/PaasOnlineImp.h"
#include "onlinemanager/PaasTMsgImp.h"

#include <memory>
#include <utility>

namespace onlinemanager
{

using FRAMEWORKSDK::CFrameUnknown;

namespace
{

constexpr HRESULT kRefused = 1; // the factory or an output argument is missing

void ReleaseConnection(avcore::IZolConnection*& connection)
{
    if (connection != nullptr)
    {
        std::exchange(connection, nullptr)->Release();
    }
}

} // namespace

CFrameUnknown* OnlineManager::CreateInstance(IUnknown* outer, IComponentFactory* factory, int32_t* hr)
{
    if (hr == nullptr)
    {
        return nullptr;
    }
    ORB_LOG("OnlineManager::CreateInstance.");
    auto manager = std::make_unique<OnlineManager>(outer, factory, hr);
    if (*hr < 0)
    {
        return nullptr;
    }
    ORB_LOG("OnlineManager::CreateInstance :%p.", static_cast<void*>(manager.get()));
    return manager.release();
}

OnlineManager::OnlineManager(IUnknown* outer, IComponentFactory* factory, int32_t* hr)
    : CFrameUnknown("OnlineManager", outer, factory),
      m_component_factory(factory)
{
    *hr = factory != nullptr ? S_OK : E_FAIL;
}

OnlineManager::~OnlineManager()
{
    if (m_component_factory != nullptr)
    {
        std::exchange(m_component_factory, nullptr)->Release();
    }
}

HRESULT OnlineManager::NonDelegatingQueryInterface(const GUID& iid, void** out)
{
    if (out == nullptr)
    {
        return E_POINTER;
    }
    if (iid == IID_OnlineManager)
    {
        return GetComponentInterface(static_cast<IOnlineManager*>(this), out);
    }
    return CFrameUnknown::NonDelegatingQueryInterface(iid, out);
}

HRESULT OnlineManager::QueryInterface(const GUID& iid, void** out)
{
    return m_pUnknown->QueryInterface(iid, out);
}

uint32_t OnlineManager::AddRef()
{
    return m_pUnknown->AddRef();
}

uint32_t OnlineManager::Release()
{
    return m_pUnknown->Release();
}

HRESULT OnlineManager::CreateConnection(avcore::IZolConnection** out)
{
    void* created = nullptr;
    const HRESULT hr = m_component_factory->CreateComponent(avcore::CLSID_ZolConnection, avcore::IID_IZolConnection,
                                                            nullptr, &created);
    if (hr >= 0)
    {
        *out = static_cast<avcore::IZolConnection*>(created);
    }
    return hr;
}

HRESULT OnlineManager::Initialize(IUnknown* httpObject)
{
    ORB_LOG("OnlineManager::Initialize.");
    if (m_component_factory == nullptr)
    {
        return kRefused;
    }
    HRESULT hr = S_OK;
    if (m_zol_connection == nullptr)
    {
        hr = CreateConnection(&m_zol_connection);
        if (hr < 0)
        {
            ORB_LOG("OnlineManager::Initialize Create Zol Connection Component Fail.");
            return hr;
        }
    }
    IReconnectionNotify* reconnectionNotify = nullptr;
    if (m_paas_online == nullptr)
    {
        m_paas_online = new PaasOnlineImp(m_zol_connection, httpObject);
        m_paas_online->InitModel(m_component_factory);
        reconnectionNotify = m_paas_online;
    }
    if (m_gw_zol_connect == nullptr)
    {
        hr = CreateConnection(&m_gw_zol_connect);
        if (hr < 0)
        {
            // The text names the other operation, on purpose: log filters look for it.
            ORB_LOG("OnlineManager::GetMeetingTunnel Create Gw Connection Component Fail.");
            return hr;
        }
    }
    if (m_gw_connection == nullptr)
    {
        // `reconnectionNotify` is null, on purpose, when the session existed before this call: the gateway's
        // reconnections are then not reported.
        m_gw_connection = new GwConnectionImp(m_gw_zol_connect, reconnectionNotify);
        m_gw_connection->InitModel();
    }
    if (m_paas_tmsg == nullptr)
    {
        m_paas_tmsg = new PaasTMsgImp(m_zol_connection);
        m_paas_tmsg->InitModel(m_component_factory);
    }
    if (m_paas_mds_client == nullptr)
    {
        m_paas_mds_client = PaasMdsClientImp::Create(m_zol_connection);
        m_paas_mds_client->InitModel(m_component_factory);
    }
    return hr;
}

HRESULT OnlineManager::GetZolConnectionForAVMP(IUnknown** out)
{
    ORB_LOG("OnlineManager::GetZolConnectionForAVMP, tunnel=%d.", static_cast<int>(m_tunnel_type));
    if (m_component_factory == nullptr)
    {
        return kRefused;
    }
    if (out == nullptr)
    {
        ORB_LOG("OnlineManager::GetZolConnectionForAVMP invalid argument.");
        return kRefused;
    }
    switch (m_tunnel_type)
    {
    case TUNNEL_TYPE_GW:
        *out = m_gw_zol_connect;
        return S_OK;
    case TUNNEL_TYPE_PAAS:
        *out = m_zol_connection;
        return S_OK;
    default:
        *out = nullptr;
        ORB_LOG("[error] You must first call GetMeetingTunnel(&ptr) and ptr->JoinMeeting().");
        return E_FAIL;
    }
}

HRESULT OnlineManager::GetPaasOnline(IPaasOnline** out)
{
    if (m_component_factory == nullptr)
    {
        return kRefused;
    }
    if (out == nullptr)
    {
        ORB_LOG("OnlineManager::GetPaasOnline invalid argument.");
        return kRefused;
    }
    if (m_paas_online == nullptr)
    {
        ORB_LOG("OnlineManager::GetPaasOnline m_pass_online = nullptr.");
        return S_OK;
    }
    *out = m_paas_online;
    return S_OK;
}

HRESULT OnlineManager::GetMeetingTunnel(TunnelType type, IMeetingTunnel** out)
{
    ORB_LOG("%s()", "GetMeetingTunnel");
    if (out == nullptr)
    {
        ORB_LOG("OnlineManager::GetMeetingTunnel invalid argument.");
        return kRefused;
    }
    m_tunnel_type = type;
    if (type == TUNNEL_TYPE_PAAS)
    {
        if (m_paas_online == nullptr)
        {
            ORB_LOG("OnlineManager::GetMeetingTunnel m_paas_online = nullptr.");
            return kRefused;
        }
        if (m_paas_online->GetMeetingTunnel(out) == S_OK && *out != nullptr)
        {
            return S_OK;
        }
        ORB_LOG("OnlineManager::GetMeetingTunnel GetMeetingTunnel failed from paas.");
        return kRefused;
    }
    if (m_gw_zol_connect == nullptr)
    {
        ORB_LOG("OnlineManager::GetMeetingTunel m_gw_zol_connect = nullptr.");
        return kRefused;
    }
    *out = m_gw_connection;
    return S_OK;
}

HRESULT OnlineManager::GetPaasMdsClient(IPaasMdsClient** out)
{
    ORB_LOG("%s()", "GetPaasMdsClient");
    if (m_component_factory == nullptr)
    {
        return kRefused;
    }
    if (out == nullptr)
    {
        ORB_LOG("OnlineManager::GetPaasMdsClient invalid argument.");
        return kRefused;
    }
    if (m_paas_mds_client == nullptr)
    {
        ORB_LOG("OnlineManager::GetPaasMdsClient m_paas_mds_client = nullptr.");
        return S_OK;
    }
    *out = m_paas_mds_client;
    return S_OK;
}

HRESULT OnlineManager::GetPaasTMsg(IPaasTMsg** out)
{
    ORB_LOG("%s()", "GetPaasTMsg");
    if (m_component_factory == nullptr)
    {
        return kRefused;
    }
    if (out == nullptr)
    {
        ORB_LOG("OnlineManager::GetPaasTMsg invalid argument.");
        return kRefused;
    }
    if (m_paas_tmsg == nullptr)
    {
        ORB_LOG("OnlineManager::GetPaasTMsg m_paas_tmsg = nullptr.");
        return S_OK;
    }
    *out = m_paas_tmsg;
    return S_OK;
}

HRESULT OnlineManager::Destroy()
{
    ORB_LOG("OnlineManager::Destroy.");
    if (m_component_factory == nullptr)
    {
        return kRefused;
    }
    if (m_paas_tmsg != nullptr)
    {
        m_paas_tmsg->UninitModel();
    }
    if (m_paas_mds_client != nullptr)
    {
        m_paas_mds_client->UninitModel();
    }
    if (m_paas_online != nullptr)
    {
        m_paas_online->UninitModel();
        m_paas_online->ForgetTunnelListeners();
    }
    if (m_gw_connection != nullptr)
    {
        m_gw_connection->UninitModel();
        m_gw_connection->ForgetSession();
    }
    ReleaseService(m_paas_tmsg);
    ReleaseService(m_paas_mds_client);
    ReleaseService(m_paas_online);
    ReleaseService(m_gw_connection);
    ReleaseConnection(m_zol_connection);
    ReleaseConnection(m_gw_zol_connect);
    return S_OK;
}

} // namespace onlinemanager
