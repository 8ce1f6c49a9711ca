#pragma once

#include "common/wbaselib/wstringbase.h"
#include "common/wbaselib/wtypes.h"
#include "common/wbaselib/wvector.h"

#include <cstddef>

/// Identifiers, codes and records that the platform's interfaces share.

namespace avcore
{

inline constexpr CLSID CLSID_ZolConnection{
    0x633B9917, 0x776A, 0x4267, {0xAE, 0x8E, 0xB6, 0x7D, 0x29, 0x36, 0x6C, 0xB5}};
inline constexpr IID IID_IZolConnection{0xD48FFB2C, 0x3925, 0x4271, {0xBA, 0x67, 0x6C, 0x88, 0x93, 0xFC, 0xE3, 0x38}};
inline constexpr IID IID_IZolOnline{0x63F26FF8, 0xA056, 0x40F7, {0x99, 0x04, 0x6C, 0xF9, 0x38, 0x60, 0xBB, 0x30}};
inline constexpr IID IID_IZolTMsg{0x39E7FC29, 0xFDDC, 0x4156, {0xB8, 0x73, 0x6E, 0xF1, 0xA4, 0x33, 0x3F, 0x23}};
inline constexpr IID IID_IZolMdsClient{0x8CE5F21C, 0x15D8, 0x4706, {0x87, 0x55, 0x87, 0x10, 0xA5, 0xFF, 0x18, 0x61}};

/// Result of a platform operation, as its event reports it. A platform may send other values; they reach the host
/// unchanged.
enum ZolPortErrCode : int32_t
{
    ZOL_PORT_SUCCESS = 0,
    ZOL_PORT_NOT_LOGGED_IN = 30,
    ZOL_PORT_USER_OFFLINE = 31,    ///< in the results of `InviteUsers`: the user has no terminal online
    ZOL_PORT_TOKEN_REFUSED = 32,   ///< the token is not valid
    ZOL_PORT_UNREACHABLE = 33,     ///< the connection point does not answer, or not in time
    ZOL_PORT_CONNECTION_LOST = 34, ///< the connection was lost during a login
    ZOL_PORT_NO_CP_ADDRESS = 35,   ///< the HTTP(S) server gave no connection point
    ZOL_PORT_LOGIN_CONFLICT =
        36,                ///< another terminal with the same mutual-exclusion tag is logged in, or has just logged in
    ZOL_PORT_REFUSED = 37, ///< the service refuses the login for another reason
    ZOL_PORT_NOT_INVITED = 38, ///< in the results of `CancelInvite`: the user was not invited
};

/// Why an invitee declined. A platform may send other values; they reach the host unchanged.
enum ZolInviteRejectReason : int32_t
{
    ZOL_INVITE_REJECT_UNKNOWN = 0,
    ZOL_INVITE_REJECT_DECLINED = 1, ///< the invitee declined
    ZOL_INVITE_REJECT_OFFLINE = 2,  ///< the invitee has no terminal online; the invitation was not delivered
};

/// Why an invitation is not open any more. A platform may send other values below 0x100; they reach the host unchanged.
enum ZolInviteCancelReason : int32_t
{
    ZOL_INVITE_CANCEL_UNKNOWN = 0,
    ZOL_INVITE_CANCEL_BY_INVITER = 1,         ///< the inviter withdrew it
    ZOL_INVITE_CANCEL_ANSWERED_ELSEWHERE = 2, ///< another terminal of the local user has answered it
};

/// What to do about a lost connection. `onlinemanager::IReconnectionStrategy::CheckReconnect` returns it, and
/// `IZolConnectionListener::OnReconnectStart` passes it to the platform. Any other value counts as undecided.
enum ZolReconnectDecision : int32_t
{
    ZOL_RECONNECT_UNDECIDED = 0, ///< the platform decides
    ZOL_RECONNECT_GO_ON = 1,     ///< the platform reconnects
    ZOL_RECONNECT_STOP = 2,      ///< the platform must not reconnect
};

template <typename A, typename B>
struct TovPair
{
    A first;
    B second;
};

using ZolText = WBASELIB::TStringBase<char>;
using ZolTextList = WBASELIB::Vector<ZolText>;
using ZolTextPairList = WBASELIB::Vector<TovPair<ZolText, ZolText>>;

/// One terminal of a user, as the platform reports it. No text may be null.
struct ZolUserTerminalInfo
{
    const char* terminal; ///< identifies the terminal among those of its user
    int32_t status;       ///< 1 = online
    const char* custom;   ///< the custom text that the terminal published
    const char* ext_info; ///< the extension text (`ext`) of the terminal's login
};
static_assert(sizeof(ZolUserTerminalInfo) == 32 && offsetof(ZolUserTerminalInfo, custom) == 16);

/// One user of a page of a refresh.
struct ZolUserInfo
{
    const char* user_id; ///< decimal text of at most 2147483647 (see `IZolOnlineListener`)
    int32_t terminal_count;
    const ZolUserTerminalInfo* terminals; ///< `terminal_count` records
};
static_assert(sizeof(ZolUserInfo) == 24 && offsetof(ZolUserInfo, terminals) == 16);

/// A media stream of a group's user. The module does not know its fields.
struct ZolMediaInfo;

} // namespace avcore
