#include "host/shell/ShellScript.h"

#include "host/shell/ShellFailure.h"
#include "onlinehost/Error.h"
#include "onlinehost/Text.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <string_view>
#include <unistd.h>
#include <utility>

namespace host
{

using namespace onlinehost;

namespace
{

/// A byte order mark; some editors begin a file with it.
constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

[[noreturn]] void ThrowUnreadable(const std::string& name, const char* why)
{
    throw ShellFailure(EXIT_FAILED, Printable(name) + " cannot be read: " + why);
}

} // namespace

ShellScript::ShellScript(int descriptor, std::string name) : m_descriptor(descriptor), m_name(std::move(name))
{
    const int flags = fcntl(m_descriptor, F_GETFL);
    if (flags < 0 || (flags & O_ACCMODE) == O_WRONLY)
    {
        ThrowUnreadable(m_name, flags < 0 ? "it is closed" : "it is open for writing only");
    }
}

std::optional<std::string> ShellScript::TakeLine()
{
    const size_t end = m_text.find('\n', m_searched);
    const size_t length = end == m_text.npos ? m_text.size() : end;
    if (length > kLongestLine)
    {
        ++m_line;
        throw Error(Place() + ": the line is longer than " + std::to_string(kLongestLine) + " bytes");
    }
    if (end == m_text.npos && (!m_atEnd || m_text.empty()))
    {
        m_searched = length;
        return std::nullopt;
    }
    std::string line = m_text.substr(0, length);
    m_text.erase(0, end == m_text.npos ? end : end + 1);
    m_searched = 0;
    ++m_line;
    if (m_line == 1 && line.starts_with(kByteOrderMark))
    {
        line.erase(0, kByteOrderMark.size());
    }
    if (line.ends_with('\r'))
    {
        line.pop_back();
    }
    return line;
}

bool ShellScript::Read()
{
    char block[16384];
    const ssize_t count = read(m_descriptor, block, sizeof(block));
    if (count < 0 && errno != EINTR && errno != EAGAIN)
    {
        ThrowUnreadable(m_name, std::strerror(errno));
    }
    m_atEnd = count == 0;
    m_text.append(block, count > 0 ? static_cast<size_t>(count) : 0);
    return !m_atEnd || !m_text.empty();
}

std::string ShellScript::Place() const
{
    return Printable(m_name) + ":" + std::to_string(m_line);
}

} // namespace host
