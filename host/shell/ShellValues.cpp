#include "host/shell/ShellValues.h"

#include "host/console/Wording.h"
#include "onlinehost/Error.h"
#include "onlinehost/Text.h"

#include <algorithm>
#include <charconv>

namespace host
{

using namespace onlinehost;

namespace
{

constexpr std::string_view kRange = "..";

std::string Quoted(std::string_view text)
{
    return "\"" + Printable(text) + "\"";
}

template <typename Number>
Number ReadHex(std::string_view digits)
{
    Number number = 0;
    std::from_chars(digits.data(), digits.data() + digits.size(), number, 16);
    return number;
}

bool LooksLikeGuid(std::string_view text)
{
    constexpr std::string_view kPattern = "xxxxxxxx-xxxx-xxxx-xxxx-xxxxxxxxxxxx";
    constexpr std::string_view kDigits = "0123456789abcdefABCDEF";
    return std::equal(text.begin(), text.end(), kPattern.begin(), kPattern.end(),
                      [&](char character, char expected)
                      { return expected == 'x' ? kDigits.find(character) != kDigits.npos : character == expected; });
}

} // namespace

std::chrono::milliseconds ParseDuration(std::string_view text)
{
    using std::chrono::milliseconds;
    static constexpr std::pair<std::string_view, milliseconds> kUnits[] = {
        {"ms", milliseconds(1)}, {"s", std::chrono::seconds(1)}, {"m", std::chrono::minutes(1)}};
    constexpr milliseconds kLongest = std::chrono::hours(24);

    const size_t digits = std::min(text.find_first_not_of("0123456789"), text.size());
    const std::string_view unit = digits == text.size() ? "s" : text.substr(digits);
    const auto* const found =
        std::find_if(std::begin(kUnits), std::end(kUnits), [&](const auto& known) { return known.first == unit; });
    if (digits == 0 || found == std::end(kUnits))
    {
        throw Error("duration " + Quoted(text) + " is not like 2s, 500ms or 1m");
    }
    const milliseconds duration = ParseNumber(text.substr(0, digits), "duration") * found->second;
    if (duration > kLongest)
    {
        throw Error("duration " + Quoted(text) + " is too long: the longest is a day");
    }
    return duration;
}

std::vector<uint32_t> ParseUsers(std::string_view text)
{
    constexpr uint32_t kMost = 1'000'000;
    const size_t dots = text.find(kRange);
    if (dots == text.npos)
    {
        return {ParseUserId(text)};
    }
    const uint32_t first = ParseUserId(text.substr(0, dots));
    const uint32_t last = ParseUserId(text.substr(dots + kRange.size()));
    if (last < first)
    {
        throw Error("range " + Quoted(text) + " ends before it begins");
    }
    if (last - first >= kMost)
    {
        throw Error("range " + Quoted(text) + " is too large: the largest has " + std::to_string(kMost) + " users");
    }
    std::vector<uint32_t> users(last - first + 1);
    for (uint32_t i = 0; i < users.size(); ++i)
    {
        users[i] = first + i;
    }
    return users;
}

std::pair<uint32_t, std::string> ParseTerminal(std::string_view text)
{
    const size_t at = text.find('@');
    const uint32_t user = ParseUserId(text.substr(0, at));
    if (at == text.npos)
    {
        return {user, ""};
    }
    if (at + 1 == text.size())
    {
        throw Error("terminal " + Quoted(text) + " has no device after the @");
    }
    return {user, std::string(text.substr(at + 1))};
}

GUID ParseMeeting(std::string_view text)
{
    std::string_view bare = text;
    if (bare.size() > 2 && bare.front() == '{' && bare.back() == '}')
    {
        bare = bare.substr(1, bare.size() - 2);
    }
    GUID guid{};
    if (LooksLikeGuid(bare))
    {
        guid.Data1 = ReadHex<uint32_t>(bare.substr(0, 8));
        guid.Data2 = ReadHex<uint16_t>(bare.substr(9, 4));
        guid.Data3 = ReadHex<uint16_t>(bare.substr(14, 4));
        for (size_t i = 0; i < std::size(guid.Data4); ++i)
        {
            // A hyphen stands after the second byte.
            guid.Data4[i] = ReadHex<uint8_t>(bare.substr(19 + 2 * i + (i < 2 ? 0 : 1), 2));
        }
        return guid;
    }
    if (text.empty() || text.find_first_not_of("0123456789") != text.npos)
    {
        throw Error("meeting " + Quoted(text) + " is neither a decimal number nor a GUID");
    }
    guid.Data1 = ParseNumber(text, "meeting");
    return guid;
}

} // namespace host
