#pragma once

#include "avcore/ZolTypes.h"

namespace avcore
{

/// Receives presence and invitation events. The module's presence service implements it and registers it with
/// `IZolOnline::AddListener`; the platform does not own it. Texts are valid during the call only.
///
/// User ids are decimal texts. The module reads the number at the beginning of the text. It cannot read a text that is
/// null, does not begin with a digit, or begins with a number above 2147483647. `IUserOnlineNotify` says what it makes
/// of such an id in each event.
class IZolOnlineListener
{
public:
    /// [platform] One page of a refresh. The pages of a refresh are numbered from 0 to `page_count` - 1 and must come
    /// in order. List a user once. Pages of two refreshes that are under way at the same time are merged by the one
    /// that ends first.
    virtual void OnRefreshUserStatusFinished(ZolPortErrCode code, unsigned requestId,
                                             const WBASELIB::Vector<ZolUserInfo>& users, int page_count,
                                             int page_index) = 0;

    /// [platform] A user invites the local user. `code` is the invitation code as decimal text, `msg` the invitation.
    /// Neither is null.
    virtual void OnInviteIncome(const char* userId, unsigned inviteId, const char* code, const char* msg) = 0;

    /// [platform] An invitee accepted the invitation that `InviteUsers` gave the id `inviteId`.
    virtual void OnInviteAccepted(const char* userId, unsigned inviteId, const char* msg) = 0;

    /// [platform] An invitee declined it.
    virtual void OnInviteRejected(const char* userId, unsigned inviteId, ZolInviteRejectReason reason,
                                  const char* msg) = 0;

    /// [platform] An invitation to the local user is not open any more: the inviter withdrew it, or another terminal of
    /// the local user answered it.
    virtual void OnInviteCanceled(const char* userId, unsigned inviteId, ZolInviteCancelReason reason) = 0;

    /// [platform] A terminal of a user came online, went offline or published another custom text.
    virtual void OnUserTerminalStateChanged(const char* userId, const ZolUserTerminalInfo& info) = 0;

protected:
    ~IZolOnlineListener() = default;
};

/// Presence and invitations of a connection. The platform library implements it; the module gets it from
/// `IZolConnection::GetComponent(IID_IZolOnline)` without a reference. It lives as long as the connection. Results are
/// negative on failure, for example when no user is logged in.
///
/// No event may overtake its operation: send a page of a refresh or an answer to an invitation only after the operation
/// has returned. The module notes the id right after the call. When the last page comes earlier, the host never hears
/// of the end of its refresh. When an answer comes earlier, it and all later answers are reported with invitation id 0.
class IZolOnline
{
public:
    virtual void Reserved0() = 0;

    /// [any] Registers a listener; it is not owned. A listener that is registered already stays registered once.
    virtual HRESULT AddListener(IZolOnlineListener* listener) = 0;

    /// [any] Removes a listener, with the promise of `IZolConnection::RemoveListener`.
    virtual HRESULT RemoveListener(IZolOnlineListener* listener) = 0;

    /// [any] Asks for the status of listed users. The pages come by `OnRefreshUserStatusFinished` with the id that is
    /// written to `*requestId`. The id must not be 0.
    virtual HRESULT RefreshUsersStatus(const ZolTextList& ids, unsigned* requestId) = 0;

    /// [any] Asks for the status of all users of the company; otherwise as `RefreshUsersStatus`.
    virtual HRESULT RefreshAllUsersStatus(unsigned* requestId) = 0;

    virtual void Reserved5() = 0;

    /// [any] Publishes the local terminal's custom text. The platform copies it.
    virtual HRESULT SetUserCustomInfo(const char* text) = 0;

    /// [any] Invites users; the module passes at most 20. The platform appends a pair (user id, result) for each to
    /// `results`; the module ignores them. `code` and `json` reach the invitees unchanged. The platform writes its id
    /// of this invitation to `*inviteId`. The id must not be 0.
    virtual HRESULT InviteUsers(const ZolTextList& ids, ZolTextPairList& results, const char* code, const char* json,
                                unsigned* inviteId) = 0;

    /// [any] Withdraws an invitation from the listed users; an empty list means all of them. `results` as for
    /// `InviteUsers`.
    virtual HRESULT CancelInvite(const ZolTextList& ids, ZolTextPairList& results, unsigned inviteId) = 0;

    /// [any] Accepts an invitation of `userId`.
    virtual HRESULT AcceptInvite(const char* userId, unsigned inviteId, const char* json) = 0;

    /// [any] Declines an invitation of `userId`.
    virtual HRESULT RejectInvite(const char* userId, unsigned inviteId, const char* json) = 0;

protected:
    ~IZolOnline() = default;
};

} // namespace avcore
