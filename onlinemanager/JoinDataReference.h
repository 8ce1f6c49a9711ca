#pragma once

#include "onlinemanager/IMeetingTunnel.h"

namespace onlinemanager
{

/// True when there is no record behind the reference: hosts hand over pointers that may be null, and a reference is one to
/// them. The module is compiled so that the compiler may not assume otherwise.
inline bool IsAbsent(const JoinData& data)
{
    return reinterpret_cast<uintptr_t>(&data) == 0;
}

} // namespace onlinemanager
