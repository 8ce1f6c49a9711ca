#pragma once

#include "common/wbaselib/wtypes.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

/// Texts from outside made safe to show, and identifiers and codes as text. All functions are [any].

namespace onlinehost
{

/// The number of bytes, at most `limit`, after which `text` may be cut without splitting a UTF-8 character.
size_t CutLength(std::string_view text, size_t limit);

/// Wide text as UTF-8. A value that is not a Unicode character becomes U+FFFD.
std::string ToUtf8(std::wstring_view text);

/// `text` with U+FFFD in place of every byte that is not UTF-8.
std::string RepairUtf8(std::string_view text);

/// `text` made safe to show: each byte of a control character, and each byte that is not UTF-8, becomes "\xNN".
std::string Printable(std::string_view text);

/// "{4022BD11-A92F-4F6D-9031-EEB92E998806}"
std::string GuidText(const GUID& guid);

/// "0x80004005"
std::string HexText(uint32_t value);

/// "1 user", "2 users".
std::string CountText(size_t count, const std::string& what);

/// "14:05:09.042", local time.
std::string ClockText(std::chrono::system_clock::time_point time);

/// "1001, 1002, 1003 and 27 more"
template <typename Ids>
std::string ListIds(const Ids& ids)
{
    constexpr size_t kShown = 6;
    std::string text;
    size_t index = 0;
    for (const uint32_t id : ids)
    {
        if (index == kShown)
        {
            return text + " and " + std::to_string(ids.size() - kShown) + " more";
        }
        text += (index++ == 0 ? "" : ", ") + std::to_string(id);
    }
    return text;
}

/// Reads a whole text as a decimal number from 0 to 4294967295. `Error` with the reason, naming `what`, for anything
/// else.
uint32_t ParseNumber(std::string_view text, std::string_view what);

/// Reads a user id: a decimal number from 1 to 4294967295, since 0 means no user. `Error` with the reason otherwise.
uint32_t ParseUserId(std::string_view text);

} // namespace onlinehost
