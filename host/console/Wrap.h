#pragma once

#include <cstddef>
#include <cstdio>
#include <string>
#include <string_view>

namespace host
{

/// The number of columns of the terminal that `out` writes to. 80 when `out` is no terminal, or when the terminal does not
/// tell its size, so that files and pipes hold the same text everywhere.
size_t LineWidth(std::FILE* out);

/// Breaks `text` into lines of at most `width` columns, at spaces and after '|'. The first line begins with `head`, every
/// further line with `indent` spaces. A word that is longer than a line stands alone on its line. Each line ends with '\n'.
std::string Wrap(std::string_view head, std::string_view text, size_t width, size_t indent);

} // namespace host
