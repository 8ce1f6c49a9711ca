#pragma once

#include "common/frameworksdk/IComponentFactory.h"
#include "onlinemanager/IReconnection.h"
#include "onlinemanager/OnlineTypes.h"

#include <string>

namespace onlinemanager
{

class IMeetingTunnel;
class IUserOnline;

/// The parameters of a login. The session keeps a copy.
struct LoginParam
{
    /// The user; `Login` refuses 0. Ids above 2147483647 are sent to the platform, but the component cannot read them
    /// back: other terminals get the events of such a user as events of user 0, or not at all (see `IUserOnlineNotify`
    /// and `IMeetingTunnelNotify`).
    uint32_t userid = 0;
    uint32_t companyid = 0;    ///< the user's company
    bool registeruser = false; ///< the platform gets it unchanged
    std::string mutex;         ///< at most one terminal of a user with the same tag is logged in
    quenda::TerminalType terminal = quenda::TERMINAL_TYPE_UNKNOWN; ///< kind of this terminal; other users see it
    std::string deviceid;                                          ///< id of this terminal
    std::string appid;                                             ///< application id
    std::string token;                                             ///< login token; the log shows it in plain text
    std::string server; ///< an "http://" or "https://" address, a "tcp:" address, or a bare address
};

/// Keys of the session's properties. A key has no text until it is first written.
enum ConnectProperty : int32_t
{
    /// "true" after a login and after a successful reconnection, "false" after a failed login, a logout and a
    /// reconnection that the platform reports as failed. Nothing else writes it. It stays "true" during a reconnection,
    /// during a new login, and after a reconnection was given up with `ERR_RECONNECT_STOPPED`: it does not tell whether
    /// the session is logged in then.
    CONNECT_PROPERTY_ONLINE = 0,

    /// Custom state of the other device, after a login refused with code 36.
    CONNECT_PROPERTY_CONFLICT_CUSTOM_STATE = 1,

    /// Id of the other device, after a login refused with code 36, and after a reconnection that failed with code 36.
    CONNECT_PROPERTY_CONFLICT_DEVICE_ID = 2,
};

/// Result of `GetConnectProperty`.
struct ConnectPropertyResult
{
    int32_t status;      ///< 1 = the text was copied, 0 = it was not
    int32_t needed_size; ///< bytes to allocate, terminator included, when the buffer was too small; else 0
};

/// Receives logins, logouts and reconnections, those of the gateway connection included. The host implements it and
/// registers it with `IPaasOnline::AddNotify`.
class IPaasOnlineNotify : public IReconnectionNotify
{
public:
    /// [platform] The login succeeded. The session is logged in: `Relogin` is true and property 0 is "true".
    ///
    /// The presence service learns of the login only after all listeners have returned. Inside this notification it is
    /// still in the state from before: logged out at the first login and after an `OnOffline`. When no `OnOffline` came
    /// between two logins (after `ERR_RECONNECT_STOPPED`, or after a `Login` on top of a login), it still works for the
    /// user of the earlier login. Start presence and invitations from the first
    /// `IUserOnlineNotify::OnUserStatusChanged`.
    ///
    /// `TriggerNotify` also calls it, on a thread of the module.
    virtual void OnLoginSuccess() = 0;

    /// [platform] The login failed, or the session was logged out.
    ///
    /// | End | Notification |
    /// |---|---|
    /// | a login fails | `OnOffline` with the platform's code |
    /// | a login is refused because of another device | `OnOffline(36)` |
    /// | `Logout`, or a logout that the platform reports | `OnOffline` with the platform's code; 0 after `Logout` |
    /// | another device takes the login over | `OnOffline(ERR_LOGIN_CONFLICT)` |
    /// | `Login` returns false | none |
    /// | a reconnection is given up | `OnReconnectFail(1, 50010)`; no `OnOffline`, not at a later `Logout` either |
    /// | a reconnection fails | `OnReconnectFail`; `OnOffline` only when the platform also reports a logout |
    /// | `IOnlineManager::Destroy` | none |
    ///
    /// `TriggerNotify` also calls it, with code 30, on a thread of the module.
    virtual void OnOffline(ErrCode code) = 0;

protected:
    ~IPaasOnlineNotify() = default;
};

/// The online session: login, logout, connection properties, and access to the services that need a login.
///
/// The component implements it, one object. The host gets it from `IOnlineManager::GetPaasOnline`. Borrowed; valid
/// until `IOnlineManager::Destroy`.
///
/// To log in, call `AddNotify`, then, for an HTTP(S) server, `RequestCPAddress`, then `Login`, and wait for
/// `OnLoginSuccess` or `OnOffline`. The session is logged out, logging in (also while it reconnects) or logged in;
/// docs/states.md lists what every operation and event does in each state.
class IPaasOnline
{
public:
    /// [any] Registers a listener; it is not owned. Null and a listener that is registered already are ignored.
    /// Listeners are called in order of registration. A listener that is added during a notification is still called
    /// for that event. A listener that is added again before the next event after its removal gets its old place back.
    virtual void AddNotify(IPaasOnlineNotify* notify) = 0;

    /// [any] Removes a listener; null and a listener that is not registered are ignored. No new notification of it
    /// begins. It does not wait: a notification that runs on another thread may still be running when this returns.
    virtual void RemoveNotify(IPaasOnlineNotify* notify) = 0;

    /// [any] Removes all listeners, and does not wait either. A delivery that is under way ends: listeners that are
    /// added afterwards are not called for its event.
    virtual void RemoveAllNotify() = 0;

    /// Hosts must not call it; `IOnlineManager::Initialize` does. Registers with the platform. False when there is no
    /// connection, or the connection has no online component.
    virtual bool InitModel(IComponentFactory* factory) = 0;

    /// Hosts must not call it; `IOnlineManager::Destroy` does. Returns true.
    virtual bool UninitModel() = 0;

    /// [any] Starts a login, in every state. When another terminal of the user with the same `mutex` is logged in, the
    /// login is refused, or with `force` that terminal is logged out.
    ///
    /// True: `OnLoginSuccess` or `OnOffline` will report the outcome. False, and no notification follows:
    /// - no connection, an empty server, user 0, or an HTTP(S) server when `Initialize` got no HTTP object: nothing has
    ///   changed;
    /// - the platform refused at once: the session is logging in and keeps `param`. Call `Login` again to leave that
    ///   state; `Relogin` returns false.
    ///
    /// For an HTTP(S) server the platform may send HTTP requests during this call; it then blocks as `RequestCPAddress`
    /// does.
    virtual bool Login(const LoginParam& param, bool force) = 0;

    /// [any] Makes the platform fetch the address of the connection point from an HTTP(S) server. Call it before
    /// `Login`. It changes no state and needs no login. For a server that contains "tcp:", in any letter case, it
    /// returns true at once.
    ///
    /// Otherwise it blocks until the host's HTTP object has answered. The limit is 10 s of the processor time of the
    /// process, not of wall time: in an idle process it is never reached, so the HTTP object must end every request. Do
    /// not call it on the thread on which the HTTP object delivers its events: that thread would wait for itself.
    ///
    /// False: as the first item of `Login`, or the platform got no address.
    virtual bool RequestCPAddress(const LoginParam& param) = 0;

    /// [any] Logs in with the parameters that the session keeps: those of the last `Login` that was sent to the
    /// platform, also when it was refused.
    ///
    /// Logged out: the result and the notifications of `Login`. Logged in: true, and nothing happens. Logging in, or no
    /// parameters kept: false, and nothing happens.
    virtual bool Relogin(bool force) = 0;

    /// [any] Starts a logout. True: `OnOffline(0)` will report its end, unless the session was logged out already: then
    /// nothing happens and no notification follows. A session is also logged out after `ERR_RECONNECT_STOPPED`. The
    /// state changes with `OnOffline`, not before. False: the platform refuses, or there is no connection.
    virtual bool Logout() = 0;

    /// [any] Copies the text of a property and its terminator to `buffer`, which has `size` bytes: status 1 and size 0.
    /// Buffer too small: status 0 and the size that it must have. Null buffer, a size of 0 or less, or a key without a
    /// text: status 0 and size 0. Needs no login.
    virtual ConnectPropertyResult GetConnectProperty(ConnectProperty key, char* buffer, int size) = 0;

    /// [any] Sends the current state to all listeners again, on a new detached thread: `OnLoginSuccess()` when logged
    /// in, `OnOffline(30)` in every other state, also while a login or a reconnection is under way. Do not take this
    /// `OnOffline` for the end of a login. False only when the system cannot start a thread.
    ///
    /// No operation waits for that thread. Before it unloads the module, the host must wait until the notification has
    /// come and returned.
    virtual bool TriggerNotify() = 0;

    /// [any] Writes the presence service to `*out`, without a reference; valid until `Destroy`. 0; `E_FAIL` for a null
    /// `out`, or when the platform has no online component.
    virtual int32_t GetUserOnline(IUserOnline** out) = 0;

    /// [any] Writes the session's meeting tunnel to `*out`, without a reference; valid until `Destroy`. 0; `E_FAIL` for
    /// a null `out`.
    virtual int32_t GetMeetingTunnel(IMeetingTunnel** out) = 0;

    /// [any] Sets the strategy that decides about reconnection; the session keeps the pointer and does not own it. With
    /// null, the initial value, a lost connection is given up.
    virtual void SetReconnectionStrategy(IReconnectionStrategy* strategy) = 0;

protected:
    ~IPaasOnline() = default;
};

} // namespace onlinemanager
