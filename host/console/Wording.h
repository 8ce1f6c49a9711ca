#pragma once

#include <chrono>
#include <cstdint>
#include <string>
#include <string_view>

/// How the program reads what a user enters, and how it writes a time.

namespace host
{

/// A warning about the login of a user id above 2147483647.
inline constexpr char kUnreadableUserId[] =
    "the module cannot read user ids above 2147483647 back: events name user 0 instead, or do not come";

/// Reads the whole text as a decimal number from 0 to 4294967295. Throws `Error`, with the reason and `what`, for any
/// other text.
uint32_t ParseNumber(std::string_view text, std::string_view what);

/// Reads a user id: a decimal number from 1 to 4294967295, since 0 means no user. Throws `Error` with the reason
/// otherwise.
uint32_t ParseUserId(std::string_view text);

/// "14:05:09.042", local time.
std::string ClockText(std::chrono::system_clock::time_point time);

} // namespace host
