#include "host/console/Console.h"

#include <atomic>
#include <cerrno>
#include <cstring>
#include <unistd.h>

namespace host
{

namespace
{

/// `errno` of the first write to the standard output that failed. Later calls succeed once the buffer is gone, and the stream
/// itself keeps no reason.
std::atomic<int> g_outputError{0};

const char* Start(Tone tone)
{
    switch (tone)
    {
    case Tone::Good:
        return "\x1b[32m";
    case Tone::Bad:
        return "\x1b[31m";
    case Tone::Doubtful:
        return "\x1b[33m";
    case Tone::Strong:
        return "\x1b[1m";
    case Tone::Quiet:
        return "\x1b[2m";
    }
    return "";
}

} // namespace

Console::Console(std::FILE* out) : m_out(out), m_isTerminal(isatty(fileno(out)) == 1) {}

std::string Console::Paint(Tone tone, std::string_view text) const
{
    const std::string plain(text);
    return m_isTerminal ? Start(tone) + plain + "\x1b[0m" : plain;
}

void Console::Line(std::string_view text) const
{
    Text(std::string(text) + "\n");
}

void Console::Text(std::string_view text) const
{
    if (std::fwrite(text.data(), 1, text.size(), m_out) != text.size())
    {
        NoteError();
    }
}

bool Console::Flush() const
{
    if (std::fflush(m_out) != 0)
    {
        NoteError();
    }
    return std::ferror(m_out) == 0;
}

void Console::NoteError() const
{
    int none = 0;
    const int reason = errno;
    if (m_out == stdout)
    {
        g_outputError.compare_exchange_strong(none, reason);
    }
}

std::string Console::Failure()
{
    const int reason = g_outputError;
    return reason != 0 ? std::strerror(reason) : "";
}

} // namespace host
