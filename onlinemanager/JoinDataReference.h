#pragma once

#include "onlinemanager/IMeetingTunnel.h"

namespace onlinemanager
{

/// True when the host passed a null pointer as this reference. The compiler option -fno-delete-null-pointer-checks
/// keeps the comparison; without it the compiler assumes that a reference is never null.
inline bool IsAbsent(const JoinData& data)
{
    return reinterpret_cast<uintptr_t>(&data) == 0;
}

} // namespace onlinemanager
