#pragma once

#include "common/frameworksdk/IComponentFactory.h"
#include "onlinemanager/IReconnection.h"
#include "onlinemanager/OnlineTypes.h"

#include <string>

namespace onlinemanager
{

class IMeetingTunnel;
class IUserOnline;

/// Everything that a login needs. The session keeps a copy.
struct LoginParam
{
    uint32_t userid = 0; ///< 0 means no user and makes a login fail
    uint32_t companyid = 0;
    bool registeruser = false; ///< passed to the platform
    std::string mutex;         ///< mutual-exclusion tag: two terminals of a user that share it shut each other out
    quenda::TerminalType terminal = quenda::TERMINAL_TYPE_UNKNOWN; ///< seen by other users
    std::string deviceid;
    std::string appid;
    std::string token;  ///< written to the log in plain
    std::string server; ///< an "http://" or "https://" address, a "tcp:" address, or a bare one
};

/// Keys of the session's properties. A key has no text before it was first written.
enum ConnectProperty : int32_t
{
    CONNECT_PROPERTY_ONLINE = 0,                ///< "true" while logged in, "false" after a failure or a logout
    CONNECT_PROPERTY_CONFLICT_CUSTOM_STATE = 1, ///< the other device's custom state, after a refusal with code 36
    CONNECT_PROPERTY_CONFLICT_DEVICE_ID =
        2, ///< the other device's id, after a refusal or a failed reconnection with code 36
};

/// What `GetConnectProperty` found.
struct ConnectPropertyResult
{
    int32_t status;      ///< 1 = copied
    int32_t needed_size; ///< bytes that the buffer must have, the terminator included; 0 when more room would not help
};

/// Learns of logins, logouts and reconnections. Implemented by the host, registered with `IPaasOnline::AddNotify`, not owned.
class IPaasOnlineNotify : public IReconnectionNotify
{
public:
    /// [platform] The login succeeded. Also sent by `TriggerNotify`, then on a thread of the module.
    virtual void OnLoginSuccess() = 0;

    /// [platform] The login failed, or the session was logged out, with the reason. A login refused because of another device has
    /// code 36, a logout because of another device `ERR_LOGIN_CONFLICT`. `TriggerNotify` sends code 30, on a thread of the
    /// module, when nobody is logged in.
    virtual void OnOffline(ErrCode code) = 0;

protected:
    ~IPaasOnlineNotify() = default;
};

/// The online session: login, logout, connection properties, and the services that need a login.
///
/// Implemented by the component, one object; got from `IOnlineManager::GetPaasOnline`. Borrowed; valid until
/// `IOnlineManager::Destroy`.
///
/// A login in short: `AddNotify`, for an HTTP(S) server `RequestCPAddress`, `Login`, then wait for `OnLoginSuccess` or
/// `OnOffline`. The session's own logout is reported too: `Logout` is followed by `OnOffline(0)`.
class IPaasOnline
{
public:
    /// [any] Registers a listener; null is ignored. A listener that is registered already is not registered twice; one that was
    /// removed and not yet forgotten comes back in its old place. A listener added during a delivery is reached by it.
    virtual void AddNotify(IPaasOnlineNotify* notify) = 0;

    /// [any] Removes a listener; null and strangers are ignored. A delivery under way skips it from now on. A notification that
    /// has begun on another thread may still be running when this returns.
    virtual void RemoveNotify(IPaasOnlineNotify* notify) = 0;

    /// [any] Forgets all listeners; a delivery under way ends.
    virtual void RemoveAllNotify() = 0;

    /// Called by `IOnlineManager::Initialize`, not by hosts: registers with the platform. False when there is no connection or
    /// the connection has no online component.
    virtual bool InitModel(IComponentFactory* factory) = 0;

    /// Called by `IOnlineManager::Destroy`, not by hosts. Always true.
    virtual bool UninitModel() = 0;

    /// [any] Starts a login; a second device that shares the mutual-exclusion tag is refused, or with `force` takes over.
    /// True: the outcome comes by notification. False: no connection, no server, no user, an HTTP(S) server although
    /// `Initialize` got no HTTP object, or the platform refused at once.
    virtual bool Login(const LoginParam& param, bool force) = 0;

    /// [any] Has the platform fetch the address behind an HTTP(S) server before `Login`. Blocks until the answer is there; true
    /// at once for a server that contains "tcp:". False as `Login`, or when there was no good answer.
    virtual bool RequestCPAddress(const LoginParam& param) = 0;

    /// [any] Logs in again with the last parameters. True when logged in already; false while a login is under way, or before the
    /// first.
    virtual bool Relogin(bool force) = 0;

    /// [any] Starts a logout; the end comes by `OnOffline`. True also when there is nothing to log out; false without a
    /// connection or when the platform refuses.
    virtual bool Logout() = 0;

    /// [any] Copies a property's text, terminated, into `buffer` of `size` bytes: status 1. A buffer that is too small: status 0
    /// and the size it must have. A null buffer, a size of 0 or less, or a key without a text: status 0 and size 0.
    virtual ConnectPropertyResult GetConnectProperty(ConnectProperty key, char* buffer, int size) = 0;

    /// [any] Sends the current state to all listeners again, on a detached thread of its own: `OnLoginSuccess`, or
    /// `OnOffline(30)` when nobody is logged in. False only when the system has no thread left. Nothing waits for that thread: a
    /// host that unloads the module first waits until the notification has come and returned.
    virtual bool TriggerNotify() = 0;

    /// [any] The presence service in `*out`, without a reference; valid until `Destroy`. `E_FAIL` for a null `out` or when the
    /// platform has no online component.
    virtual int32_t GetUserOnline(IUserOnline** out) = 0;

    /// [any] The session's meeting tunnel in `*out`, without a reference; valid until `Destroy`. `E_FAIL` for a null `out`.
    virtual int32_t GetMeetingTunnel(IMeetingTunnel** out) = 0;

    /// [any] Sets who decides about reconnection; borrowed. With null, the initial value, a lost connection is given up.
    virtual void SetReconnectionStrategy(IReconnectionStrategy* strategy) = 0;

protected:
    ~IPaasOnline() = default;
};

} // namespace onlinemanager
