#pragma once

#include <cstdint>
#include <cstring>

#if __cplusplus < 202002L
#error "these headers need C++20: compile with -std=c++20 or newer"
#endif

/// Scalars, identifiers and result codes of the component model. They are in the global namespace, and hosts and
/// platform libraries rely on their layout.

using HRESULT = int32_t; ///< negative = failure
using BOOL = int;

/// 16-byte identifier of a class, an interface or a meeting.
struct _GUID
{
    uint32_t Data1;
    uint16_t Data2;
    uint16_t Data3;
    uint8_t Data4[8];

    friend bool operator==(const _GUID& left, const _GUID& right) noexcept
    {
        return std::memcmp(&left, &right, sizeof(_GUID)) == 0;
    }
};
static_assert(sizeof(_GUID) == 16);

using GUID = _GUID;
using IID = _GUID;
using CLSID = _GUID;

constexpr HRESULT MakeResult(uint32_t code) noexcept
{
    return static_cast<HRESULT>(code);
}

inline constexpr HRESULT S_OK = 0;
inline constexpr HRESULT E_NOINTERFACE = MakeResult(0x80004002);
inline constexpr HRESULT E_POINTER = MakeResult(0x80004003);
inline constexpr HRESULT E_FAIL = MakeResult(0x80004005);
inline constexpr HRESULT E_OUTOFMEMORY = MakeResult(0x8007000E);
inline constexpr HRESULT E_INVALIDARG = MakeResult(0x80070057);

inline constexpr uint32_t INFINITE = 0xFFFFFFFF; ///< time-out in milliseconds: no limit
inline constexpr uint32_t WAIT_OBJECT_0 = 0;     ///< the wait took a unit
inline constexpr uint32_t WAIT_TIMEOUT = 0x102;  ///< the wait timed out
