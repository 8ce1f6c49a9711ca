#pragma once

#include "common/wbaselib/wtypes.h"
#include "onlinemanager/OnlineTypes.h"

#include <cstddef>

namespace onlinemanager
{

/// The meeting to join.
struct JoinData
{
    GUID guid;           ///< the meeting; `InviteData::meetingId` has no connection with it
    uint32_t user_id;    ///< gateway tunnel only: the user; the gateway gets it as decimal text
    uint32_t gw_param32; ///< gateway tunnel only: the gateway gets it unchanged
    uint16_t gw_param16; ///< gateway tunnel only: the gateway gets it unchanged
    uint64_t gw_param64; ///< gateway tunnel only: the gateway gets it unchanged
};
static_assert(sizeof(JoinData) == 40 && offsetof(JoinData, gw_param64) == 32);

/// Receives the events of a meeting. The host implements it and registers it with `IMeetingTunnel::AddNotify`.
class IMeetingTunnelNotify
{
public:
    /// [platform] A join has ended; 0 = joined. `ERR_JOIN_ABORTED_BY_RECONNECT` when the connection began to reconnect
    /// while the join was pending. A result that arrives after `LeaveMeeting` is reported too.
    virtual void OnJoinMeetingResult(ErrCode code) = 0;

    /// [platform] A leave has ended. On the gateway tunnel also when the gateway has ended the meeting; code 36 stays
    /// 36 there.
    virtual void OnLeaveMeetingResult(ErrCode code) = 0;

    /// [platform] A user joined. The platform sends ids as texts and the component reads them as signed 32-bit numbers.
    /// For a text that does not begin with a digit, and for a number above 2147483647, the PaaS tunnel reports user 0;
    /// the gateway tunnel does not report the event, and no event of user 0 either.
    virtual void OnUserJoined(unsigned int userId) = 0;

    /// [platform] A user left. Ids as for `OnUserJoined`. (The spelling of the name is part of the interface.)
    virtual void OnUserLeaved(unsigned int userId) = 0;

protected:
    ~IMeetingTunnelNotify() = default;
};

/// A tunnel into a meeting: the PaaS tunnel over the connection of the online session, or the gateway tunnel over the
/// older gateway connection. docs/states.md lists what each does in every state.
///
/// The component implements it, one object of each kind. The host gets it from `IOnlineManager::GetMeetingTunnel`, the
/// PaaS tunnel also from `IPaasOnline::GetMeetingTunnel`. Borrowed; valid until `IOnlineManager::Destroy`. A tunnel
/// carries one meeting at a time.
///
/// The end of a login is not reported to the listeners of the PaaS tunnel; see `IPaasOnlineNotify::OnOffline`.
///
/// When a connection is lost, the component reports a pending join by `ERR_JOIN_ABORTED_BY_RECONNECT`. It reports
/// nothing else to the tunnel's listeners, leaves no meeting and joins none again. The platform decides whether the
/// user is in the meeting after the reconnection; docs/writing-a-host.md says what the in-process platform does.
class IMeetingTunnel
{
public:
    /// [any] Registers a listener; it is not owned. Null and a listener that is registered already are ignored.
    /// Listeners are called in order of registration. A listener that is added during a notification is still called
    /// for that event. A listener that is added again before the next event after its removal gets its old place back.
    virtual void AddNotify(IMeetingTunnelNotify* notify) = 0;

    /// [any] Removes a listener; null and a listener that is not registered are ignored. No new notification of it
    /// begins. It does not wait: a notification that runs on another thread may still be running when this returns.
    virtual void RemoveNotify(IMeetingTunnelNotify* notify) = 0;

    /// [any] Removes all listeners, and does not wait either. A delivery that is under way ends: listeners that are
    /// added afterwards are not called for its event.
    virtual void RemoveAllNotify() = 0;

    /// [any] Joins a meeting. True: `OnJoinMeetingResult` will report the outcome. False: the reference is null
    /// (`*static_cast<const JoinData*>(nullptr)` is tested, not read), the platform refuses, or there is no connection;
    /// on the PaaS tunnel also when the session is not logged in. The record is not kept. User ids above 2147483647 are
    /// sent, but their events cannot be read back (see `OnUserJoined`).
    virtual bool JoinMeeting(const JoinData& data) = 0;

    /// [any] Leaves the meeting. True: `OnLeaveMeetingResult` will report the outcome. False: the platform refuses, or
    /// there is no connection; on the PaaS tunnel also when the session is not logged in. The gateway tunnel is out of
    /// the meeting even when the platform refuses.
    virtual bool LeaveMeeting() = 0;

protected:
    ~IMeetingTunnel() = default;
};

} // namespace onlinemanager
