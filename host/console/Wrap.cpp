#include "host/console/Wrap.h"

#include <algorithm>
#include <sys/ioctl.h>

namespace host
{

namespace
{

/// Takes the next piece that must not be broken: up to a space, or up to and with '|'.
std::string_view TakePiece(std::string_view& text)
{
    const size_t end = text.find_first_of(" |");
    const size_t length = end == text.npos ? text.size() : text[end] == '|' ? end + 1 : end;
    const std::string_view piece = text.substr(0, length);
    text.remove_prefix(length);
    return piece;
}

} // namespace

size_t LineWidth(std::FILE* out)
{
    constexpr size_t kUsual = 80;
    winsize size{};
    return ioctl(fileno(out), TIOCGWINSZ, &size) == 0 && size.ws_col > 0 ? size.ws_col : kUsual;
}

std::string Wrap(std::string_view head, std::string_view text, size_t width, size_t indent)
{
    std::string wrapped;
    std::string line(head);
    bool isBegun = false;
    while (!text.empty())
    {
        const size_t spaces = std::min(text.find_first_not_of(' '), text.size());
        text.remove_prefix(spaces);
        const std::string_view piece = TakePiece(text);
        if (piece.empty())
        {
            break;
        }
        const size_t gap = isBegun && spaces > 0 ? 1 : 0;
        if (isBegun && line.size() + gap + piece.size() > width)
        {
            wrapped += line + "\n";
            line.assign(indent, ' ');
        }
        else
        {
            line.append(gap, ' ');
        }
        line += piece;
        isBegun = true;
    }
    return wrapped + line + "\n";
}

} // namespace host
