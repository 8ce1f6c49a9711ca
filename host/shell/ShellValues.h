#pragma once

#include "common/wbaselib/wtypes.h"

#include <chrono>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

/// Functions that read the words of a user strictly. Each throws `Error`, which says what was expected.

namespace host
{

/// "2s", "500ms", "1m"; seconds without a unit. At most a day.
std::chrono::milliseconds ParseDuration(std::string_view text);

/// "7" or "2..46", at most a million ids.
std::vector<uint32_t> ParseUsers(std::string_view text);

/// "7@phone", or "7" with the second part empty.
std::pair<uint32_t, std::string> ParseTerminal(std::string_view text);

/// A GUID with or without braces; or a decimal number, which is the first part of a GUID that is 0 otherwise.
GUID ParseMeeting(std::string_view text);

} // namespace host
