#pragma once

#include <cstdarg>
#include <string>
#include <string_view>

namespace onlinehost
{

/// [any] Translates a format of the log service into one with the same meaning for the system's wprintf family. For the
/// log service `%s` and `%c` take wide text and `%S` and `%C` narrow text; `%hs` is narrow and `%ls` wide for both.
std::wstring TranslateWideFormat(std::wstring_view format);

/// [any] Formats `arguments` with a format of the log service and returns UTF-8. Narrow arguments must be UTF-8: at one
/// that is not, the text ends with "[unreadable]". `format` must not be null.
std::string FormatWide(const wchar_t* format, va_list arguments);

} // namespace onlinehost
