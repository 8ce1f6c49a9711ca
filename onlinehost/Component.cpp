#include "onlinehost/Component.h"

#include "onlinehost/Error.h"
#include "onlinehost/Module.h"
#include "onlinehost/Text.h"

#include <atomic>
#include <cstring>
#include <strings.h>

namespace onlinehost
{

using namespace onlinemanager;

namespace
{

bool IsHttpAddress(const std::string& server)
{
    return strncasecmp(server.c_str(), "http://", 7) == 0 || strncasecmp(server.c_str(), "https://", 8) == 0;
}

template <typename Service>
Service& Require(Service* service, const char* what)
{
    if (service == nullptr)
    {
        throw Error(std::string("the component has no ") + what);
    }
    return *service;
}

/// Both tunnels call the same operations, so each has its own listener, which knows its tunnel.
class TunnelListener final : public IMeetingTunnelNotify
{
public:
    TunnelListener(EventQueue<Event>& events, TunnelType tunnel) : m_events(events), m_tunnel(tunnel) {}

    void OnJoinMeetingResult(ErrCode code) override
    {
        m_events.Push({.kind = EventKind::JoinMeetingResult, .tunnel = m_tunnel, .code = code});
    }

    void OnLeaveMeetingResult(ErrCode code) override
    {
        m_events.Push({.kind = EventKind::LeaveMeetingResult, .tunnel = m_tunnel, .code = code});
    }

    void OnUserJoined(unsigned int userId) override
    {
        m_events.Push({.kind = EventKind::UserJoined, .tunnel = m_tunnel, .userId = userId});
    }

    void OnUserLeaved(unsigned int userId) override
    {
        m_events.Push({.kind = EventKind::UserLeaved, .tunnel = m_tunnel, .userId = userId});
    }

private:
    EventQueue<Event>& m_events;
    const TunnelType m_tunnel;
};

} // namespace

/// All listeners of the component and its reconnection strategy. Each notification becomes an event.
class Component::Listeners final : public IPaasOnlineNotify,
                                   public IUserOnlineNotify,
                                   public IPaasMdsClientNotify,
                                   public IReconnectionStrategy
{
public:
    void OnLoginSuccess() override
    {
        m_isLoggedIn = true;
        events.Push({.kind = EventKind::LoginSuccess});
    }

    void OnOffline(ErrCode code) override
    {
        events.Push({.kind = EventKind::Offline, .code = code, .wasLoggedIn = m_isLoggedIn.exchange(false)});
    }

    void OnReadyReconnect(TunnelType tunnel) override
    {
        events.Push({.kind = EventKind::ReadyReconnect, .tunnel = tunnel});
    }

    void OnReconnectStart(TunnelType tunnel) override
    {
        events.Push({.kind = EventKind::ReconnectStart, .tunnel = tunnel});
    }

    void OnReconnectSucess(TunnelType tunnel) override
    {
        events.Push({.kind = EventKind::ReconnectSucess, .tunnel = tunnel});
    }

    void OnReconnectFail(TunnelType tunnel, ErrCode code) override
    {
        // Only after a reconnection that the strategy stopped the module sends no `OnOffline`.
        if (tunnel == TUNNEL_TYPE_PAAS && code == ERR_RECONNECT_STOPPED)
        {
            m_isLoggedIn = false;
        }
        events.Push({.kind = EventKind::ReconnectFail, .tunnel = tunnel, .code = code});
    }

    void OnUserStatusChanged(const std::vector<unsigned>& userIds) override
    {
        events.Push({.kind = EventKind::UserStatusChanged, .userIds = userIds});
    }

    void OnUserStatusRefreshed(unsigned requestId, avcore::ZolPortErrCode code) override
    {
        events.Push({.kind = EventKind::UserStatusRefreshed, .code = code, .requestId = requestId});
    }

    void OnInviteIncome(unsigned userId, unsigned inviteId, const InviteData& data) override
    {
        events.Push({.kind = EventKind::InviteIncome, .userId = userId, .requestId = inviteId, .invitation = data});
    }

    void OnInviteAccepted(unsigned userId, unsigned inviteId) override
    {
        events.Push({.kind = EventKind::InviteAccepted, .userId = userId, .requestId = inviteId});
    }

    void OnInviteRejected(unsigned userId, unsigned inviteId, avcore::ZolInviteRejectReason reason) override
    {
        events.Push({.kind = EventKind::InviteRejected,
                     .reason = static_cast<uint32_t>(reason),
                     .userId = userId,
                     .requestId = inviteId});
    }

    void OnAbandonInvite(unsigned userId, unsigned inviteId, InviteAbandonedReason reason) override
    {
        events.Push({.kind = EventKind::InviteAbandoned, .reason = reason, .userId = userId, .requestId = inviteId});
    }

    void OnSubscribeAVQualityInfo() override
    {
        events.Push({.kind = EventKind::AVQualitySubscribed});
    }

    void OnUnSubscribeAVQualityInfo() override
    {
        events.Push({.kind = EventKind::AVQualityUnsubscribed});
    }

    int32_t CheckReconnect() override
    {
        return reconnection.load();
    }

    TunnelListener& Tunnel(TunnelType type)
    {
        return type == TUNNEL_TYPE_PAAS ? m_paasTunnel : m_gwTunnel;
    }

    EventQueue<Event> events;
    std::atomic<avcore::ZolReconnectDecision> reconnection{avcore::ZOL_RECONNECT_GO_ON};

private:
    std::atomic<bool> m_isLoggedIn{false};
    TunnelListener m_paasTunnel{events, TUNNEL_TYPE_PAAS};
    TunnelListener m_gwTunnel{events, TUNNEL_TYPE_GW};
};

Component::Component(std::shared_ptr<Module> module, IComponentFactory& factory, HttpClient::Options http,
                     const Interposer& interposer)
    : m_module(std::move(module)),
      m_listeners(std::make_unique<Listeners>()),
      m_http(std::make_unique<HttpClient>(std::move(http))),
      m_manager(Create(factory, interposer))
{
    try
    {
        Open();
    }
    catch (...)
    {
        Close();
        throw;
    }
}

Component::~Component()
{
    Close();
}

IOnlineManager* Component::Create(IComponentFactory& factory, const Interposer& interposer)
{
    const ComponentCreator create = [this](IComponentFactory& used) -> IOnlineManager&
    { return *static_cast<IOnlineManager*>(m_module->Create(CLSID_OnlineManager, IID_OnlineManager, &used)); };
    return interposer ? &interposer(factory, create) : &create(factory);
}

void Component::Open()
{
    // The component takes over this reference and, on purpose, never releases it: its services end without destructors.
    m_http->AddRef();
    const HRESULT result = m_manager->Initialize(m_http.get());
    if (result < 0)
    {
        throw Error("the component could not be initialised: " + HexText(static_cast<uint32_t>(result)));
    }
    m_manager->GetPaasOnline(&m_online);
    m_manager->GetPaasMdsClient(&m_mds);
    m_manager->GetPaasTMsg(&m_messages);
    Online().SetReconnectionStrategy(m_listeners.get());
    Online().AddNotify(m_listeners.get());
    Online().GetUserOnline(&m_users);
    if (m_users != nullptr)
    {
        m_users->AddNotify(m_listeners.get());
    }
    if (m_mds != nullptr)
    {
        m_mds->AddNotify(m_listeners.get());
        m_mds->InitMdsClient();
    }
}

void Component::Close()
{
    // A platform thread inside the module may be waiting for an HTTP answer, and `Destroy` waits for that thread.
    m_http->Close();
    m_manager->Destroy();
    m_manager->Release();
    // Until its end the HTTP thread may run code of the module, which may be unloaded afterwards.
    m_http.reset();
}

EventQueue<Event>& Component::Events()
{
    return m_listeners->events;
}

bool Component::FetchAddress(const LoginParam& param)
{
    return !IsHttpAddress(param.server) || Online().RequestCPAddress(param);
}

bool Component::Login(const LoginParam& param, bool force)
{
    return Online().Login(param, force);
}

void Component::CancelRequests()
{
    m_http->CancelRequests();
}

void Component::CancelWaits()
{
    m_http->Close();
    Events().CancelWaits();
}

std::optional<std::string> Component::Property(ConnectProperty key)
{
    std::string text(1, '\0');
    for (;;)
    {
        const ConnectPropertyResult result =
            Online().GetConnectProperty(key, text.data(), static_cast<int>(text.size()));
        if (result.status == 1)
        {
            text.resize(std::strlen(text.c_str()));
            return text;
        }
        if (result.needed_size <= 0)
        {
            return std::nullopt;
        }
        text.resize(static_cast<size_t>(result.needed_size));
    }
}

void Component::SetReconnection(avcore::ZolReconnectDecision decision)
{
    m_listeners->reconnection = decision;
}

IOnlineManager& Component::Manager()
{
    return *m_manager;
}

IPaasOnline& Component::Online()
{
    return Require(m_online, "online session");
}

IUserOnline& Component::Users()
{
    return Require(m_users, "presence service");
}

IPaasMdsClient& Component::Mds()
{
    return Require(m_mds, "client of the monitoring service");
}

IPaasTMsg& Component::Messages()
{
    return Require(m_messages, "channel of messages");
}

IMeetingTunnel& Component::Tunnel(TunnelType type)
{
    IMeetingTunnel* tunnel = nullptr;
    m_manager->GetMeetingTunnel(type, &tunnel);
    Require(tunnel, "meeting tunnel").AddNotify(&m_listeners->Tunnel(type));
    return *tunnel;
}

} // namespace onlinehost
