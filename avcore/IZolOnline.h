#pragma once

#include "avcore/ZolTypes.h"

namespace avcore
{

/// Receives presence and invitation events. Implemented by the module's user service; registered with
/// `IZolOnline::AddListener`, not owned by the component. User ids are decimal texts; no text is valid after the call.
class IZolOnlineListener
{
public:
    /// [platform] One page of a refresh; the pages of a refresh are numbered from 0 to `page_count` - 1 and come in order.
    virtual void OnRefreshUserStatusFinished(ZolPortErrCode code, unsigned requestId,
                                             const WBASELIB::Vector<ZolUserInfo>& users, int page_count,
                                             int page_index) = 0;

    /// [platform] Somebody invites the local user. `code` is the invitation code as text, `msg` the invitation; not null.
    virtual void OnInviteIncome(const char* userId, unsigned inviteId, const char* code, const char* msg) = 0;

    /// [platform] An invitee accepted.
    virtual void OnInviteAccepted(const char* userId, unsigned inviteId, const char* msg) = 0;

    /// [platform] An invitee declined.
    virtual void OnInviteRejected(const char* userId, unsigned inviteId, ZolInviteRejectReason reason,
                                  const char* msg) = 0;

    /// [platform] An invitation to the local user is not open any more: its sender withdrew it, or another terminal of the
    /// local user has answered it.
    virtual void OnInviteCanceled(const char* userId, unsigned inviteId, ZolInviteCancelReason reason) = 0;

    /// [platform] A terminal of a user came, went or published another custom text.
    virtual void OnUserTerminalStateChanged(const char* userId, const ZolUserTerminalInfo& info) = 0;

protected:
    ~IZolOnlineListener() = default;
};

/// Presence and invitations of a connection. Implemented by the platform library; got from
/// `IZolConnection::GetComponent(IID_IZolOnline)`, borrowed, lives as long as the connection. Results are negative on
/// failure (not logged in, say).
///
/// No event of an operation (a page of a refresh, an answer to an invitation) comes before the operation has returned, as
/// over a network, where it takes a round trip: callers note the id that they were given right after the call.
class IZolOnline
{
public:
    virtual void Reserved0() = 0;

    /// [any] Registers a listener.
    virtual HRESULT AddListener(IZolOnlineListener* listener) = 0;

    /// [any] Takes a listener away; the same promise as `IZolConnection::RemoveListener`.
    virtual HRESULT RemoveListener(IZolOnlineListener* listener) = 0;

    /// [any] Asks for the status of listed users. The pages come by `OnRefreshUserStatusFinished` with the id written to
    /// `*requestId`, which is never 0.
    virtual HRESULT RefreshUsersStatus(const ZolTextList& ids, unsigned* requestId) = 0;

    /// [any] The same for everybody in the company.
    virtual HRESULT RefreshAllUsersStatus(unsigned* requestId) = 0;

    virtual void Reserved5() = 0;

    /// [any] Publishes the local terminal's custom text.
    virtual HRESULT SetUserCustomInfo(const char* text) = 0;

    /// [any] Invites users. `results` gets a pair (user id, result) for each; `code` and `json` reach the invitees as they
    /// are. `*inviteId` gets the platform's id of this invitation, which is never 0.
    virtual HRESULT InviteUsers(const ZolTextList& ids, ZolTextPairList& results, const char* code, const char* json,
                                unsigned* inviteId) = 0;

    /// [any] Withdraws an invitation from the listed users; an empty list means from all of them.
    virtual HRESULT CancelInvite(const ZolTextList& ids, ZolTextPairList& results, unsigned inviteId) = 0;

    /// [any] Accepts an invitation of `userId`.
    virtual HRESULT AcceptInvite(const char* userId, unsigned inviteId, const char* json) = 0;

    /// [any] Declines an invitation of `userId`.
    virtual HRESULT RejectInvite(const char* userId, unsigned inviteId, const char* json) = 0;

protected:
    ~IZolOnline() = default;
};

} // namespace avcore
