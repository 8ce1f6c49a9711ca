#include "host/app/HelpFormatter.h"

#include "host/console/Wrap.h"

#include <algorithm>
#include <cstdio>
#include <sstream>
#include <utility>

namespace host
{

namespace
{

constexpr size_t kLeastDescription = 20; ///< columns; a narrower terminal breaks the lines itself

} // namespace

std::string HelpFormatter::make_help(const CLI::App* app, std::string name, CLI::AppFormatMode mode) const
{
    const size_t column = get_column_width();
    const size_t width = std::max(LineWidth(stdout), column + kLeastDescription);
    std::istringstream lines(Formatter::make_help(app, std::move(name), mode));
    std::string wrapped;
    for (std::string line; std::getline(lines, line);)
    {
        // A line that begins with a space belongs to a table, whose descriptions begin at the column.
        const size_t indent = line.starts_with(' ') ? column : 0;
        wrapped +=
            line.size() <= width ? line + "\n" : Wrap(line.substr(0, indent), line.substr(indent), width, indent);
    }
    return wrapped;
}

} // namespace host
