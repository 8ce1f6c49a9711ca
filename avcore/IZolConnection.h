#pragma once

#include "avcore/IZolHttp.h"
#include "avcore/ZolTypes.h"
#include "common/frameworksdk/IUnknown.h"

namespace avcore
{

/// Receives the events of a connection. The module's session and tunnels implement it and register it with
/// `IZolConnection::AddListener`; the connection does not own it. The platform must send every event to every
/// registered listener, in order of registration. Texts are valid during the call only.
///
/// Send an event that answers an operation only after the operation has returned (see `IZolConnection`).
class IZolConnectionListener
{
public:
    /// [platform] A `Login` or `LoginOldGw` has ended. With code 36 the three texts describe the device that is logged
    /// in already: its id, its custom state, its extension text. Each of them may be null.
    virtual void OnLoginResult(ZolPortErrCode code, const char* szConflictDeviceId, const char* szConflictCustomState,
                               const char* szConflictExtendInfo) = 0;

    /// [platform] A `JoinGroup` has ended. 0 = the connection is in the group.
    virtual void OnJoinGroupResult(ZolPortErrCode code) = 0;

    /// [platform] A `LeaveGroup` has ended. 0 = the connection is out of the group.
    virtual void OnLeaveGroupResult(ZolPortErrCode code) = 0;

    /// [platform] The login has ended: 0 after `Logout`, 36 when another terminal has taken the login over.
    virtual void OnLogouted(ZolPortErrCode code) = 0;

    /// [platform] The connection was lost while logged in. Returns a `ZolReconnectDecision`. The platform must not
    /// reconnect when any listener has answered `ZOL_RECONNECT_STOP`.
    virtual int32_t OnReconnectStart() = 0;

    /// [platform] The connection and the login are restored.
    virtual void OnReconnectSucess() = 0;

    /// [platform] The connection could not be restored. With code 36 `text` is the id of the device that is logged in
    /// now. `text` may be null.
    virtual void OnReconnectFail(ZolPortErrCode code, const char* text) = 0;

    /// [platform] A user joined the group that this connection is in. `userId` is decimal text of at most 2147483647;
    /// the module cannot read larger ids (`IMeetingTunnelNotify::OnUserJoined` says what it makes of them).
    virtual void OnGroupUserJoined(const char* userId) = 0;

    /// [platform] A user left the group or lost the connection to it. `userId` as for `OnGroupUserJoined`.
    virtual void OnGroupUserLeaved(const char* userId) = 0;

    /// [platform] The list of the group's users and of their streams. The module ignores it.
    virtual void OnGroupUserSync(const ZolTextList& users, const WBASELIB::Vector<ZolMediaInfo>& media,
                                 bool complete) = 0;

protected:
    ~IZolConnectionListener() = default;
};

/// A connection to the online service, or to an older gateway.
///
/// The platform library implements it. The host's component factory creates it with `CLSID_ZolConnection` and
/// `IID_IZolConnection`; it is reference-counted. The module calls it.
///
/// Operations return a negative code on failure. Their outcome comes later as an event, on a thread of the platform.
///
/// No event may overtake its operation: send the event that answers an operation only after that operation has
/// returned. Over a network the answer takes a round trip, so this holds by itself; a platform that answers from memory
/// must see to it. The module notes what it has asked for right after the call. When the event comes earlier, a join
/// stays pending, and the next lost connection reports it as failed with 50001.
class IZolConnection : public IUnknown
{
public:
    /// [any] Registers a listener; it is not owned. A listener that is registered already stays registered once.
    virtual HRESULT AddListener(IZolConnectionListener* listener) = 0;

    /// [any] Removes a listener. When this returns, no event is running on that listener and none will come. Called
    /// from inside an event of that listener, it returns at once, and that event is the last.
    virtual HRESULT RemoveListener(IZolConnectionListener* listener) = 0;

    /// [any] Logs a user in; `OnLoginResult` answers. The platform copies the texts; none is null. `companyid` and
    /// `userid` are decimal texts of unsigned 32-bit numbers.
    ///
    /// `http` is null unless `server` begins with "http://" or "https://", in any letter case. It is valid until the
    /// module has removed its listeners. `Login` may block on it.
    ///
    /// `ext` is the extension text that other users see with this terminal. `mutex` is the mutual-exclusion tag: a
    /// second terminal of the same user and tag is refused with 36, or, with `force`, logs the first one out.
    virtual HRESULT Login(const char* server, IZolHttp* http, const char* appid, const char* token,
                          const char* deviceid, const char* companyid, const char* userid, const char* mutex,
                          const char* ext, bool force, bool registeruser) = 0;

    /// [any] Joins a meeting through the gateway; `OnLoginResult` answers. `OnLogouted` reports its end. `userid` is
    /// decimal text.
    virtual HRESULT LoginOldGw(const GUID& guid, const char* userid, uint32_t param32, uint16_t param16,
                               uint64_t param64) = 0;

    /// [any] Ends the login; `OnLogouted` answers.
    virtual HRESULT Logout() = 0;

    /// [any] Joins a group. A connection is in at most one group. 0 = accepted; `OnJoinGroupResult` answers. The module
    /// takes every other code as a failure, positive ones too.
    virtual HRESULT JoinGroup(const char* groupId) = 0;

    /// [any] Leaves the group. 0 or positive = accepted; `OnLeaveGroupResult` answers.
    virtual HRESULT LeaveGroup() = 0;

    /// [any] Writes one of the connection's components (`IID_IZolOnline`, `IID_IZolTMsg`, `IID_IZolMdsClient`) to
    /// `*out`, without a reference. The component lives as long as the connection.
    virtual HRESULT GetComponent(const IID& iid, void** out) = 0;

    /// [any] Fetches the address of the connection point and keeps it for a later `Login` to the same server. It may
    /// block on `http`, which is null when the module has no HTTP object. Returns when the address is there; negative
    /// on failure.
    virtual HRESULT RequestCPAddress(const char* server, IZolHttp* http, const char* appid, const char* token,
                                     const char* companyid) = 0;

protected:
    ~IZolConnection() = default;
};

} // namespace avcore
