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

/// [host] Creates the component with `factory`, which takes the place of the host's own factory.
using ComponentCreator = std::function<onlinemanager::IOnlineManager&(IComponentFactory& factory)>;

/// Puts proxies between a component and its host and platform, to record or to check the calls between them.
///
/// [host] `Component` calls it once, while it is created. The interposer calls `create` once, with `factory` or with a
/// proxy in front of it, and returns the new component or a proxy in front of it. It owns the proxies, which must live
/// as long as the `Component`. The one reference to the component passes to the caller with the returned object, which
/// must release the component when it is released.
using Interposer =
    std::function<onlinemanager::IOnlineManager&(IComponentFactory& factory, const ComponentCreator& create)>;

/// One component of the module with its HTTP object and its listeners: one device of one user.
///
/// A host makes one for each login that it wants to have at the same time. Every notification of the component becomes
/// an event in `Events`. The control thread creates and destroys the object, outside of notifications; the destructor
/// takes the component down in the right order, and no notification comes after it. All other operations are [any]
/// unless they say otherwise. What the getters return belongs to the component and ends with it.
class Component
{
public:
    /// Creates a component of `module`, initialises it, and registers listeners and reconnection strategy. Keeps
    /// `module` loaded, and borrows `factory`, which must outlive the object. An empty `interposer` interposes nothing.
    /// Throws `Error` if the component cannot be created or initialised.
    Component(std::shared_ptr<Module> module, IComponentFactory& factory, HttpClient::Options http = {},
              const Interposer& interposer = {});
    ~Component();
    Component(const Component&) = delete;
    Component& operator=(const Component&) = delete;

    /// All notifications so far that no thread has taken yet, in their order.
    EventQueue<Event>& Events();

    /// Has the platform fetch the address behind an HTTP(S) server, which must precede a login to such a server. Blocks
    /// until the answer has come. Returns whether there is an address; true at once for other servers. Not [http].
    bool FetchAddress(const onlinemanager::LoginParam& param);

    /// Starts a login. False if the module refuses it at once; otherwise the event `LoginSuccess` or `Offline` follows.
    /// `force` logs out another device of the user with the same mutex text.
    bool Login(const onlinemanager::LoginParam& param, bool force);

    /// Ends the HTTP requests under way without an answer, so that `FetchAddress` returns. Returns at once, and a request
    /// that begins later is not affected.
    void CancelRequests();

    /// Ends every wait, before the end of the host: all HTTP requests, also later ones, complete without an answer, so
    /// that `FetchAddress` returns, and `Events` does not wait any more.
    void CancelWaits();

    /// The text of a connection property; absent until the module has written it.
    std::optional<std::string> Property(onlinemanager::ConnectProperty key);

    /// Sets the answer to each later question of the module whether to reconnect; at first it is `ZOL_RECONNECT_GO_ON`.
    void SetReconnection(avcore::ZolReconnectDecision decision);

    /// The component and its services. Throw `Error` for a service that the component does not have.
    onlinemanager::IOnlineManager& Manager();
    onlinemanager::IPaasOnline& Online();
    onlinemanager::IUserOnline& Users();
    onlinemanager::IPaasMdsClient& Mds();
    onlinemanager::IPaasTMsg& Messages();

    /// Control thread only, because it also chooses the connection that the media process gets. From the first call for
    /// a type on, the notifications of that tunnel are among the events. Throws `Error` if there is no such tunnel.
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
