#pragma once

#include "onlinehost/Event.h"
#include "onlinehost/EventQueue.h"
#include "onlinehost/HttpClient.h"
#include "onlinemanager/IMeetingTunnel.h"
#include "onlinemanager/IOnlineManager.h"
#include "onlinemanager/IPaasMdsClient.h"
#include "onlinemanager/IPaasOnline.h"
#include "onlinemanager/IPaasTMsg.h"
#include "onlinemanager/IReconnection.h"
#include "onlinemanager/IUserOnline.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace onlinehost
{

class Module;

/// Creates a component with the given factory.
using ComponentCreator = std::function<onlinemanager::IOnlineManager&(IComponentFactory& factory)>;

/// Puts objects of the caller between a component and what it works with, to record or to check what passes between them.
///
/// [host] It calls `create` once, with `factory` or an object in front of it, and returns the new component or an object in
/// front of that. The objects must live as long as the component; the one reference to the component is held through what
/// is returned.
using Interposer =
    std::function<onlinemanager::IOnlineManager&(IComponentFactory& factory, const ComponentCreator& create)>;

/// One device of one user: a component of the module with everything around it, torn down in the right order.
///
/// Every notification arrives in `Events`. Creation and destruction belong to the control thread, and not to a notification;
/// the factory must outlive the session. Everything else may be called from any thread.
class Component
{
public:
    /// `Error` when the component cannot be created or initialised. Without an `interposer` nothing stands between
    /// the component and the host.
    Component(std::shared_ptr<Module> module, IComponentFactory& factory, HttpClient::Options http = {},
              const Interposer& interposer = {});
    ~Component();
    Component(const Component&) = delete;
    Component& operator=(const Component&) = delete;

    EventQueue<Event>& Events();

    /// Has the address behind an HTTP(S) server fetched, which a login to such a server needs first; true at once for other
    /// servers. Blocks until the answer is there.
    bool FetchAddress(const onlinemanager::LoginParam& param);

    /// Starts a login. False when the module refuses at once; otherwise `LoginSuccess` or `Offline` follows.
    bool Login(const onlinemanager::LoginParam& param, bool force);

    /// The text of a connection property; absent before the module first wrote it.
    std::optional<std::string> Property(onlinemanager::ConnectProperty key);

    /// What the component's reconnection strategy answers from now on; `ZOL_RECONNECT_GO_ON` at first.
    void SetReconnection(avcore::ZolReconnectDecision decision);

    /// The component and its services; `Error` for a service that the component does not have.
    onlinemanager::IOnlineManager& Manager();
    onlinemanager::IPaasOnline& Online();
    onlinemanager::IUserOnline& Users();
    onlinemanager::IPaasMdsClient& Mds();
    onlinemanager::IPaasTMsg& Messages();

    /// Control thread: choosing a tunnel also chooses the connection of the media process. The tunnel's notifications are
    /// among the events from the first call on.
    onlinemanager::IMeetingTunnel& Tunnel(onlinemanager::TunnelType type);

private:
    class Listeners;

    onlinemanager::IOnlineManager* Create(IComponentFactory& factory, const Interposer& interposer);
    void Open();
    void Close();

    std::shared_ptr<Module> m_module;
    std::unique_ptr<Listeners> m_listeners;
    std::unique_ptr<HttpClient> m_http;
    onlinemanager::IOnlineManager* m_manager = nullptr;
    onlinemanager::IPaasOnline* m_online = nullptr;
    onlinemanager::IUserOnline* m_users = nullptr;
    onlinemanager::IPaasMdsClient* m_mds = nullptr;
    onlinemanager::IPaasTMsg* m_messages = nullptr;
};

} // namespace onlinehost
