#pragma once

#include <cstdarg>
#include <string>
#include <string_view>

namespace onlinehost
{

/// Rewrites a wide format in which `%s` and `%c` stand for wide text and `%S` and `%C` for narrow text, as the log service
/// takes it, into what the system's wprintf family means by the same. `%hs` and `%ls` are narrow and wide in both.
std::wstring TranslateWideFormat(std::wstring_view format);

/// Formats such a text and returns it as UTF-8; narrow arguments are UTF-8 too. What came before an argument that cannot be
/// converted is kept, with a mark behind it.
std::string FormatWide(const wchar_t* format, va_list arguments);

} // namespace onlinehost
