#include "host/console/Console.h"

#include <unistd.h>

namespace host
{

namespace
{

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
    std::fwrite(text.data(), 1, text.size(), m_out);
}

bool Console::Flush() const
{
    return std::fflush(m_out) == 0 && std::ferror(m_out) == 0;
}

} // namespace host
