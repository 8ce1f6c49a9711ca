#pragma once

#include "common/wbaselib/wtypes.h"

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

} // namespace onlinehost
