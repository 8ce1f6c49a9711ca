#pragma once

#include <cstdint>
#include <string>

namespace onlinemanager
{

/// The content of one meeting invitation.
struct InviteData
{
    uint32_t inviteCode = 0;     ///< chosen by the inviter
    uint64_t roomCreateTime = 0; ///< travels as its low 32 bits
    uint32_t roomCompanyId = 0;  ///< company that owns the room
    bool isForce = false;
    uint32_t proxyUserId = 0; ///< user on whose behalf the invitation is sent
    uint16_t calloutType = 0;
    uint32_t meetingId = 0;
    uint32_t userId = 0;  ///< the inviter
    std::string userName; ///< the inviter's name, UTF-8
    std::string terminal; ///< describes the inviter's terminal, UTF-8
};

} // namespace onlinemanager
