#include "host/shell/ShellReason.h"

#include "onlinehost/Text.h"

#include <cctype>
#include <utility>

namespace host
{

namespace
{

/// "Login()" or "AcceptInvite, userId=7, ...": a name and nothing, or a name and its parameters.
bool BeginsOperation(std::string_view line)
{
    size_t length = 0;
    while (length < line.size() && std::isalnum(static_cast<unsigned char>(line[length])) != 0)
    {
        ++length;
    }
    const std::string_view rest = line.substr(length);
    return length > 0 && (rest == "()" || rest.starts_with(", "));
}

} // namespace

void ShellReason::Note(std::string_view line)
{
    if (std::this_thread::get_id() == m_thread)
    {
        m_last = BeginsOperation(line) ? std::string() : onlinehost::Printable(line);
    }
}

std::string ShellReason::Take()
{
    return std::exchange(m_last, {});
}

} // namespace host
