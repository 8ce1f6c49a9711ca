#pragma once

#include "onlinemanager/IMeetingTunnel.h"

namespace checks
{

/// A meeting whose group id has hexadecimal letters, with every number that the gateway takes.
inline onlinemanager::JoinData SomeMeeting()
{
    return {{0x12345678, 0x9ABC, 0xDEF0, {0x12, 0x34, 0x56, 0x78, 0x9A, 0xBC, 0xDE, 0xF0}}, 52011, 32, 16, 64};
}

/// Joins with a reference to nothing, as a host does that passes on a pointer which is null.
__attribute__((no_sanitize("undefined"))) inline bool JoinWithoutARecord(onlinemanager::IMeetingTunnel& tunnel)
{
    const onlinemanager::JoinData* const volatile none = nullptr;
    return tunnel.JoinMeeting(*none);
}

} // namespace checks
