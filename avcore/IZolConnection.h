#pragma once

#include "avcore/IZolHttp.h"
#include "avcore/ZolTypes.h"
#include "common/frameworksdk/IUnknown.h"

namespace avcore
{

/// Receives the events of a connection. Implemented by the module's sessions; registered with
/// `IZolConnection::AddListener`, not owned by the connection. Every registered listener gets every event, in order of
/// registration. No text is valid after the call.
class IZolConnectionListener
{
public:
    /// [platform] A login has ended. With code 36 the three texts tell of the device that is logged in already: its id, its
    /// custom state and its extension text; any of them may be null.
    virtual void OnLoginResult(ZolPortErrCode code, const char* szConflictDeviceId, const char* szConflictCustomState,
                               const char* szConflictExtendInfo) = 0;

    /// [platform] A `JoinGroup` has ended.
    virtual void OnJoinGroupResult(ZolPortErrCode code) = 0;

    /// [platform] A `LeaveGroup` has ended.
    virtual void OnLeaveGroupResult(ZolPortErrCode code) = 0;

    /// [platform] The user is not logged in any more: 0 after `Logout`, 36 when another terminal took the login over.
    virtual void OnLogouted(ZolPortErrCode code) = 0;

    /// [platform] The connection was lost while logged in. 1 = reconnect, 2 = do not, 0 = undecided. A platform that asks
    /// several listeners stops when any of them answers 2.
    virtual int32_t OnReconnectStart() = 0;

    /// [platform] The connection is back and the login restored.
    virtual void OnReconnectSucess() = 0;

    /// [platform] The connection could not be restored. `text` may be null; with code 36 it is the id of the device that is
    /// logged in now.
    virtual void OnReconnectFail(ZolPortErrCode code, const char* text) = 0;

    /// [platform] Somebody joined the group that this connection is in. `userId` is decimal text.
    virtual void OnGroupUserJoined(const char* userId) = 0;

    /// [platform] Somebody left it, or was lost.
    virtual void OnGroupUserLeaved(const char* userId) = 0;

    /// [platform] The group's users and their streams as a whole.
    virtual void OnGroupUserSync(const ZolTextList& users, const WBASELIB::Vector<ZolMediaInfo>& media,
                                 bool complete) = 0;

protected:
    ~IZolConnectionListener() = default;
};

/// A connection to the online service, or to an older gateway.
///
/// Implemented by the platform library; created by the host's component factory with `CLSID_ZolConnection` and
/// `IID_IZolConnection`, reference-counted. Operations return at once, negative on failure; what comes of them is told to
/// the listeners later, on a thread of the platform's own, never from inside an operation.
class IZolConnection : public IUnknown
{
public:
    /// [any] Registers a listener. A listener that is registered already stays registered once.
    virtual HRESULT AddListener(IZolConnectionListener* listener) = 0;

    /// [any] Takes a listener away. When it returns no event is running on that listener and none will come, unless it is
    /// called from inside an event: then that event is the last.
    virtual HRESULT RemoveListener(IZolConnectionListener* listener) = 0;

    /// [any] Logs a user in. Answered by `OnLoginResult`. All texts are copied; none is null. `http` is used for HTTP(S)
    /// servers only and may be null for others. `ext` is the extension text that other users see with this terminal.
    /// `mutex` is the mutual-exclusion tag: a second terminal of the same user and tag is refused with 36, or, with `force`,
    /// logs the first one out.
    virtual HRESULT Login(const char* server, IZolHttp* http, const char* appid, const char* token,
                          const char* deviceid, const char* companyid, const char* userid, const char* mutex,
                          const char* ext, bool force, bool registeruser) = 0;

    /// [any] Joins a meeting through the gateway. Answered by `OnLoginResult`, ended by `OnLogouted`.
    virtual HRESULT LoginOldGw(const GUID& guid, const char* userid, uint32_t param32, uint16_t param16,
                               uint64_t param64) = 0;

    /// [any] Ends the login. Answered by `OnLogouted`.
    virtual HRESULT Logout() = 0;

    /// [any] Joins a group; a connection is in one group at the most. Answered by `OnJoinGroupResult` when it returned 0.
    virtual HRESULT JoinGroup(const char* groupId) = 0;

    /// [any] Leaves the group. Answered by `OnLeaveGroupResult` unless it returned a negative value.
    virtual HRESULT LeaveGroup() = 0;

    /// [any] Hands out one of the connection's components (`IID_IZolOnline`, `IID_IZolTMsg`, `IID_IZolMdsClient`) without a
    /// reference; it lives as long as the connection.
    virtual HRESULT GetComponent(const IID& iid, void** out) = 0;

    /// [any] Fetches the connection point's address for a later `Login` to the same server.
    virtual HRESULT RequestCPAddress(const char* server, IZolHttp* http, const char* appid, const char* token,
                                     const char* companyid) = 0;

protected:
    ~IZolConnection() = default;
};

} // namespace avcore
