#pragma once

#include "avcore/ZolTypes.h"
#include "onlinemanager/InviteData.h"
#include "onlinemanager/UserOnlineInfo.h"

#include <functional>
#include <string>
#include <vector>

namespace onlinemanager
{

/// Why a host declines all invitations; the host chooses the values.
enum RejectInvitationReason : uint32_t
{
    REJECT_INVITATION_DECLINED = 17, ///< what `AcceptInvite` uses for a plain decline
};

/// Why a received invitation is not open any more. Below 0x100: the platform's `avcore::ZolInviteCancelReason`, unchanged.
enum InviteAbandonedReason : uint32_t
{
    INVITE_ABANDONED_REJECTED = 0x100, ///< plus the `RejectInvitationReason` that was given to `RejectAllInvite`
};

/// Learns of presence and invitations. Implemented by the host, registered with `IUserOnline::AddNotify`, not owned.
/// A user id that the platform sent and that is not a number is reported as 0.
class IUserOnlineNotify
{
public:
    /// [platform] The listed users changed; `QueryUserStatus` tells how they stand now. May be empty after a refresh.
    virtual void OnUserStatusChanged(const std::vector<unsigned>& /*userIds*/) {}

    /// [platform] A company refresh that the host started has ended with the platform's code.
    virtual void OnUserStatusRefreshed(unsigned requestId, avcore::ZolPortErrCode code) = 0;

    /// [platform] An invitation came in. On the caller's thread, from inside `InviteUsers`, when the local user invited himself.
    virtual void OnInviteIncome(unsigned /*userId*/, unsigned /*inviteId*/, const InviteData& /*data*/) {}

    /// [platform] An invitee accepted. `inviteId` is what `InviteUsers` gave; 0 when the answer belongs to no invitation of ours.
    virtual void OnInviteAccepted(unsigned /*userId*/, unsigned /*inviteId*/) {}

    /// [platform] An invitee declined, with the platform's reason.
    virtual void OnInviteRejected(unsigned userId, unsigned inviteId, avcore::ZolInviteRejectReason reason) = 0;

    /// [platform] A received invitation is not open any more. On the caller's thread, from inside `RejectAllInvite`, for the ones
    /// that it declines.
    virtual void OnAbandonInvite(unsigned /*userId*/, unsigned /*inviteId*/, InviteAbandonedReason /*reason*/) {}

protected:
    ~IUserOnlineNotify() = default;
};

/// Presence of other users, the local user's own custom text, and invitations.
///
/// Implemented by the component, one object; got from `IPaasOnline::GetUserOnline`. Borrowed; valid until
/// `IOnlineManager::Destroy`. Not a component interface: it has no `QueryInterface` and is not counted.
///
/// After a login the component refreshes the whole company by itself and reports it as `OnUserStatusChanged`. The known users
/// are forgotten at logout; sent and received invitations and the custom text are not.
///
/// Operations that need the platform return false when nobody is logged in, when an output argument is null or when the
/// platform refuses.
class IUserOnline
{
public:
    /// [any] Registers a listener; null is ignored. A listener that is registered already is not registered twice; one that was
    /// removed and not yet forgotten comes back in its old place. A listener added during a delivery is reached by it.
    virtual void AddNotify(IUserOnlineNotify* notify) = 0;

    /// [any] Removes a listener; null and strangers are ignored. A delivery under way skips it from now on. A notification that
    /// has begun on another thread may still be running when this returns.
    virtual void RemoveNotify(IUserOnlineNotify* notify) = 0;

    /// [any] Forgets all listeners; a delivery under way ends.
    virtual void RemoveAllNotify() = 0;

    /// [any] Calls `cb` once per id, in the order of `ids`, on the calling thread, before it returns; for an unknown user with a
    /// record that holds the id and nothing else. The record is valid during the call. Needs no login; `cb` may call any operation.
    /// False only for an empty function.
    virtual bool QueryUserStatus(const std::vector<unsigned>& ids, std::function<void(const UserOnlineInfo&)> cb) = 0;

    /// [any] Refreshes everybody in the company. `*requestId` gets the id with which `OnUserStatusRefreshed` reports the end.
    virtual bool RefreshCompanyUserStatus(unsigned* requestId) = 0;

    /// [any] Refreshes the listed users. The end is not reported by `OnUserStatusRefreshed`. When it comes, the listed users are
    /// all that is known: every other user that was online is reported as changed and forgotten. False too for an empty list.
    virtual bool RefreshUserStatus(const std::vector<unsigned>& ids, unsigned* requestId) = 0;

    /// [any] Publishes the local terminal's custom text. It is kept when the platform refuses it, not when nobody is logged in.
    virtual bool SetSelfCustomInfo(const std::string& info) = 0;

    /// [any] Copies the text last set into `buffer` of `size` bytes in the manner of `strncpy`: the rest is filled with zeros,
    /// and a text of `size` bytes or more is cut off without a terminator. False for a null buffer or a size of 0. Needs no
    /// login.
    virtual bool GetSelfCustomInfo(char* buffer, unsigned size) = 0;

    /// [any] Invites users, twenty in a call of the platform. `*inviteId` gets the id that the answers carry; it is written only
    /// on success. The local user in the list is not invited through the platform but told by `OnInviteIncome` at once; alone in
    /// the list, nothing is sent and `*inviteId` stays as it was. False when a call fails: what was sent before stays sent.
    virtual bool InviteUsers(const std::vector<unsigned>& ids, const InviteData& data, unsigned* inviteId) = 0;

    /// [any] Answers a received invitation of `userId`. Accepting leaves it open: its withdrawal is still reported. No
    /// notification follows.
    virtual bool AcceptInvite(unsigned userId, unsigned inviteId, bool isAccept) = 0;

    /// [any] Declines every received invitation that is open, each reported by `OnAbandonInvite`. The excluded ones are only
    /// forgotten: they can still be accepted, but their withdrawal is not reported any more.
    virtual bool RejectAllInvite(RejectInvitationReason reason, const std::vector<unsigned>& excludeInviteIds) = 0;

    /// [any] Withdraws a sent invitation from the listed users; an empty list is passed on as it is.
    virtual bool AbandonInvite(unsigned inviteId, const std::vector<unsigned>& ids) = 0;

protected:
    ~IUserOnline() = default;
};

} // namespace onlinemanager
