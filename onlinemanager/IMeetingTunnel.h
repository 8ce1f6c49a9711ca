#pragma once

#include "common/wbaselib/wtypes.h"
#include "onlinemanager/OnlineTypes.h"

#include <cstddef>

namespace onlinemanager
{

/// Names the meeting to join.
struct JoinData
{
    GUID guid;           ///< the meeting
    uint32_t user_id;    ///< gateway tunnel only: the user, handed to the gateway as decimal text
    uint32_t gw_param32; ///< gateway tunnel only: handed to the gateway as it is
    uint16_t gw_param16; ///< gateway tunnel only: handed to the gateway as it is
    uint64_t gw_param64; ///< gateway tunnel only: handed to the gateway as it is
};
static_assert(sizeof(JoinData) == 40 && offsetof(JoinData, gw_param64) == 32);

/// Learns what happens in a meeting. Implemented by the host, registered with `IMeetingTunnel::AddNotify`, not owned.
class IMeetingTunnelNotify
{
public:
    /// [platform] The join ended; 0 = joined. `ERR_JOIN_ABORTED_BY_RECONNECT` when the connection was lost meanwhile. A result
    /// that arrives after `LeaveMeeting` is still reported.
    virtual void OnJoinMeetingResult(ErrCode code) = 0;

    /// [platform] The leave ended. On the gateway tunnel also: the gateway ended the meeting.
    virtual void OnLeaveMeetingResult(ErrCode code) = 0;

    /// [platform] A user joined. On the PaaS tunnel the id is 0 when the platform's text is not a number; the gateway tunnel
    /// leaves such a user out.
    virtual void OnUserJoined(unsigned int userId) = 0;

    /// [platform] A user left. (The spelling of the name is part of the interface.)
    virtual void OnUserLeaved(unsigned int userId) = 0;

protected:
    ~IMeetingTunnelNotify() = default;
};

/// One way into a meeting: over the online session's connection, or over the older gateway connection.
///
/// Implemented by the component; got from `IOnlineManager::GetMeetingTunnel`, or `IPaasOnline::GetMeetingTunnel` for the
/// first kind. Borrowed; valid until `IOnlineManager::Destroy`. There is one tunnel of each kind and it carries one meeting
/// at a time.
class IMeetingTunnel
{
public:
    /// [any] Registers a listener; null is ignored. A listener that is registered already is not registered twice; one that was
    /// removed and not yet forgotten comes back in its old place. A listener added during a delivery is reached by it.
    virtual void AddNotify(IMeetingTunnelNotify* notify) = 0;

    /// [any] Removes a listener; null and strangers are ignored. A delivery under way skips it from now on. A notification that
    /// has begun on another thread may still be running when this returns.
    virtual void RemoveNotify(IMeetingTunnelNotify* notify) = 0;

    /// [any] Forgets all listeners; a delivery under way ends.
    virtual void RemoveAllNotify() = 0;

    /// [any] Joins a meeting; the outcome comes by `OnJoinMeetingResult`. False when there is no connection, no record
    /// (`*static_cast<const JoinData*>(nullptr)` is refused, not followed) or the platform refuses; on the PaaS tunnel also
    /// when nobody is logged in.
    virtual bool JoinMeeting(const JoinData& data) = 0;

    /// [any] Leaves it; the outcome comes by `OnLeaveMeetingResult`. False when there is no connection or the platform refuses;
    /// on the PaaS tunnel also when nobody is logged in. The gateway tunnel counts as out of the meeting even then.
    virtual bool LeaveMeeting() = 0;

protected:
    ~IMeetingTunnel() = default;
};

} // namespace onlinemanager
