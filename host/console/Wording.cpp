#include "host/console/Wording.h"

#include "onlinehost/Error.h"
#include "onlinehost/Text.h"

#include <charconv>
#include <ctime>
#include <iomanip>
#include <sstream>

namespace host
{

using onlinehost::Error;
using onlinehost::Printable;

uint32_t ParseNumber(std::string_view text, std::string_view what)
{
    uint32_t number = 0;
    const char* end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, number);
    const std::string quoted = std::string(what) + " \"" + Printable(text) + "\"";
    if (error == std::errc::result_out_of_range)
    {
        throw Error(quoted + " is too large: the largest is 4294967295");
    }
    if (error != std::errc() || stop != end)
    {
        throw Error(quoted + " is not a decimal number");
    }
    return number;
}

uint32_t ParseUserId(std::string_view text)
{
    const uint32_t id = ParseNumber(text, "user id");
    if (id == 0)
    {
        throw Error("user id 0 means no user");
    }
    return id;
}

std::string ClockText(std::chrono::system_clock::time_point time)
{
    const auto sinceEpoch = std::chrono::floor<std::chrono::milliseconds>(time.time_since_epoch());
    const std::time_t seconds = std::chrono::floor<std::chrono::seconds>(sinceEpoch).count();
    std::tm local{};
    localtime_r(&seconds, &local);
    std::ostringstream out;
    out << std::put_time(&local, "%H:%M:%S.") << std::setw(3) << std::setfill('0')
        << (sinceEpoch % std::chrono::seconds(1)).count();
    return out.str();
}

} // namespace host
