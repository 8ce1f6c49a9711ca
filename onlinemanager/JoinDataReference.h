#pragma once

#include "onlinemanager/IMeetingTunnel.h"

namespace onlinemanager
{

/// True when the reference is null. Hosts dereference pointers that may be null, and the binary interface passes a
/// reference as a pointer. The module is compiled with `-fno-delete-null-pointer-checks`, so the compiler keeps this
/// test.
inline bool IsAbsent(const JoinData& data)
{
    return reinterpret_cast<uintptr_t>(&data) == 0;
}

} // namespace onlinemanager
