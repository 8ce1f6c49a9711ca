#pragma once

#include "onlinemanager/IMeetingTunnel.h"

namespace checks
{

/// A meeting whose group id contains hexadecimal letters, with a value for every number of the gateway.
inline onlinemanager::JoinData SomeMeeting()
{
    return {{0x12345678, 0x9ABC, 0xDEF0, {0x12, 0x34, 0x56, 0x78, 0x9A, 0xBC, 0xDE, 0xF0}}, 52011, 32, 16, 64};
}

/// Joins with a reference whose address is null, which a host makes from a null pointer.
__attribute__((no_sanitize("undefined"))) inline bool JoinWithoutARecord(onlinemanager::IMeetingTunnel& tunnel)
{
    const onlinemanager::JoinData* const volatile record = nullptr;
    return tunnel.JoinMeeting(*record);
}

} // namespace checks
