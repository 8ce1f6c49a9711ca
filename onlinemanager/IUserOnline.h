#pragma once

#include "avcore/ZolTypes.h"
#include "onlinemanager/InviteData.h"
#include "onlinemanager/UserOnlineInfo.h"

#include <functional>
#include <string>
#include <vector>

namespace onlinemanager
{

/// Why a host declines all invitations. The host defines further values.
enum RejectInvitationReason : uint32_t
{
    REJECT_INVITATION_DECLINED = 17, ///< `AcceptInvite` sends it when it declines
};

/// Why a received invitation is not open any more. Values below 0x100 are the platform's
/// `avcore::ZolInviteCancelReason`, unchanged.
enum InviteAbandonedReason : uint32_t
{
    INVITE_ABANDONED_REJECTED = 0x100, ///< plus the `RejectInvitationReason` that `RejectAllInvite` got
};

/// Receives presence and invitations. The host implements it and registers it with `IUserOnline::AddNotify`.
///
/// The platform sends user ids as texts. The component reads the number at the beginning of the text as a signed 32-bit
/// number. It cannot read a text that does not begin with a digit, nor a number above 2147483647:
///
/// | Event | With such an id |
/// |---|---|
/// | a page of a refresh | the record is kept and reported as user 0 |
/// | a terminal of a user changed | the event is ignored |
/// | the four invitation events | reported as user 0 |
class IUserOnlineNotify
{
public:
    /// [platform] The status of the listed users changed; ask `QueryUserStatus` for it. After a terminal event the list
    /// holds one id. After a refresh it may be empty, and it may hold an id several times: once more for every further
    /// record of a user that the refresh lists repeatedly. That happens when a page lists a user twice, when pages of
    /// two refreshes that are under way at the same time are merged, and to user 0, who stands for every id that cannot
    /// be read.
    virtual void OnUserStatusChanged(const std::vector<unsigned>& /*userIds*/) {}

    /// [platform] A refresh that `RefreshCompanyUserStatus` started has ended with the platform's code. It comes after
    /// the `OnUserStatusChanged` of the refresh. The refreshes that the component starts itself are not reported.
    virtual void OnUserStatusRefreshed(unsigned requestId, avcore::ZolPortErrCode code) = 0;

    /// [platform] An invitation has come in. When its text cannot be read, `data` is empty. `InviteUsers` also calls
    /// it, on the caller's thread, when the local user is in the list. Such an invitation is not a received one:
    /// `RejectAllInvite` does not decline it.
    virtual void OnInviteIncome(unsigned /*userId*/, unsigned /*inviteId*/, const InviteData& /*data*/) {}

    /// [platform] An invitee accepted. `inviteId` is the id from `InviteUsers`, or 0 when this component did not send
    /// the invitation.
    virtual void OnInviteAccepted(unsigned /*userId*/, unsigned /*inviteId*/) {}

    /// [platform] An invitee declined, with the platform's reason. `inviteId` as for `OnInviteAccepted`.
    virtual void OnInviteRejected(unsigned userId, unsigned inviteId, avcore::ZolInviteRejectReason reason) = 0;

    /// [platform] A received invitation is not open any more. `RejectAllInvite` also calls it, on the caller's thread,
    /// for every invitation that it declines.
    virtual void OnAbandonInvite(unsigned /*userId*/, unsigned /*inviteId*/, InviteAbandonedReason /*reason*/) {}

protected:
    ~IUserOnlineNotify() = default;
};

/// Presence of other users, the local user's custom text, and invitations.
///
/// The component implements it, one object. The host gets it from `IPaasOnline::GetUserOnline`. Borrowed; valid until
/// `IOnlineManager::Destroy`. It has no `QueryInterface` and no reference count.
///
/// After a login and after a reconnection the component refreshes the company by itself; `OnUserStatusChanged` reports
/// the result. The component forgets the known users at a logout and when a reconnection is given up. It keeps
/// invitations and the custom text.
///
/// The component treats the local user like the others: when the platform lists his terminals, as the in-process
/// platform does, his id is in the lists of `OnUserStatusChanged`, and `QueryUserStatus` finds him.
///
/// Operations that need a login return false when no user is logged in, when an output argument is null, or when the
/// platform refuses. The service counts a user as logged in from the end of `OnLoginSuccess` until `OnOffline`: not yet
/// inside `OnLoginSuccess` of a first login, and still after `ERR_RECONNECT_STOPPED`.
///
/// User ids above 2147483647 are sent, in invitations for example, but the events of such users cannot be read back
/// (see `IUserOnlineNotify`).
class IUserOnline
{
public:
    /// [any] Registers a listener; it is not owned. Null and a listener that is registered already are ignored.
    /// Listeners are called in order of registration. A listener that is added during a notification is still called
    /// for that event. A listener that is added again before the next event after its removal gets its old place back.
    virtual void AddNotify(IUserOnlineNotify* notify) = 0;

    /// [any] Removes a listener; null and a listener that is not registered are ignored. No new notification of it
    /// begins. It does not wait: a notification that runs on another thread may still be running when this returns.
    virtual void RemoveNotify(IUserOnlineNotify* notify) = 0;

    /// [any] Removes all listeners, and does not wait either. A delivery that is under way ends: listeners that are
    /// added afterwards are not called for its event.
    virtual void RemoveAllNotify() = 0;

    /// [any] Calls `cb` once for every id, in the order of `ids`, on the caller's thread, and then returns. The record
    /// of an unknown user holds the id and nothing else. The record is valid during the call of `cb`, which may call
    /// any operation. Needs no login. False only for an empty function.
    virtual bool QueryUserStatus(const std::vector<unsigned>& ids, std::function<void(const UserOnlineInfo&)> cb) = 0;

    /// [any] Refreshes the status of all users of the company. Needs a login. Writes the id with which
    /// `OnUserStatusRefreshed` reports the end to `*requestId`.
    virtual bool RefreshCompanyUserStatus(unsigned* requestId) = 0;

    /// [any] Refreshes the status of the listed users. Needs a login; false also for an empty list.
    /// `OnUserStatusRefreshed` does not report the end. The answer replaces everything that is known: every other user
    /// who was online is reported as changed and forgotten.
    virtual bool RefreshUserStatus(const std::vector<unsigned>& ids, unsigned* requestId) = 0;

    /// [any] Publishes the custom text of the local terminal. Needs a login. `GetSelfCustomInfo` returns the text from
    /// then on, also when the platform refuses it.
    virtual bool SetSelfCustomInfo(const std::string& info) = 0;

    /// [any] Copies the custom text to `buffer`, which has `size` bytes, as `strncpy` does: zeros fill the rest, and a
    /// text of `size` bytes or more is cut off and not terminated. False for a null buffer or a size of 0. Needs no
    /// login.
    virtual bool GetSelfCustomInfo(char* buffer, unsigned size) = 0;

    /// [any] Invites users, at most 20 in one call of the platform. Needs a login; false also for an empty list. Writes
    /// the id that all answers carry to `*inviteId`. False when a call of the platform fails: earlier calls stay sent,
    /// and `*inviteId` is unchanged.
    ///
    /// The local user is not invited through the platform. When he is in the list, `OnInviteIncome` reports the
    /// invitation to his own listeners before this returns. With other users in the list, `*inviteId` has been written
    /// by then, and the notification carries the same id. Alone in the list, nothing is sent, `*inviteId` is never
    /// written, and the notification carries the value that it had: set it to 0 before.
    virtual bool InviteUsers(const std::vector<unsigned>& ids, const InviteData& data, unsigned* inviteId) = 0;

    /// [any] Answers an invitation of `userId`. Needs a login. No notification follows. An accepted invitation stays
    /// open: its withdrawal is still reported. A declined one is not open any more, also when the platform refuses.
    virtual bool AcceptInvite(unsigned userId, unsigned inviteId, bool isAccept) = 0;

    /// [any] Declines all open received invitations except the excluded ones, and reports each by `OnAbandonInvite`, on
    /// the caller's thread. Needs a login. The component also forgets the excluded ones: they can still be accepted,
    /// but their withdrawal is not reported any more. True also when the platform refuses a decline.
    virtual bool RejectAllInvite(RejectInvitationReason reason, const std::vector<unsigned>& excludeInviteIds) = 0;

    /// [any] Withdraws a sent invitation from the listed users. Needs a login. An empty list reaches the platform
    /// unchanged. The platform gets `inviteId` unchanged: of an invitation to more than 20 users it is the id of the
    /// first 20.
    virtual bool AbandonInvite(unsigned inviteId, const std::vector<unsigned>& ids) = 0;

protected:
    ~IUserOnline() = default;
};

} // namespace onlinemanager
