#pragma once

#include <cstdint>
#include <string>

namespace onlinemanager
{

/// The content of one meeting invitation. The host fills it in; the component carries every field to the invitees and
/// interprets none.
struct InviteData
{
    uint32_t inviteCode = 0;     ///< code that the inviter chose
    uint64_t roomCreateTime = 0; ///< the invitees get its low 32 bits
    uint32_t roomCompanyId = 0;  ///< company that owns the room
    bool isForce = false;        ///< the host defines the meaning
    uint32_t proxyUserId = 0;    ///< user on whose behalf the invitation is sent
    uint16_t calloutType = 0;    ///< the host defines the meaning
    /// Number of the meeting. It has no connection with `JoinData::guid`, by which a tunnel joins: the component
    /// derives neither from the other and does not fill in the meeting that the inviter is in. Inviter and invitee must
    /// agree how to get the GUID of a meeting from this number.
    uint32_t meetingId = 0;
    uint32_t userId = 0;  ///< the inviter; the component does not fill it in
    std::string userName; ///< name of the inviter, UTF-8
    std::string terminal; ///< text about the inviter's terminal, UTF-8
};

} // namespace onlinemanager
