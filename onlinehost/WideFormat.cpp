#include "onlinehost/WideFormat.h"

#include "onlinehost/Text.h"

#include <algorithm>
#include <clocale>
#include <cstdlib>
#include <cwchar>
#include <memory>
#include <new>

namespace onlinehost
{

namespace
{

constexpr std::wstring_view kFlagsWidthAndPrecision = L"-+ #0'I123456789$*.";
constexpr std::wstring_view kLengths = L"hlLqjztw";

/// The system's name of a conversion with its length modifiers.
std::wstring SystemConversion(std::wstring_view length, wchar_t conversion)
{
    const bool isText = conversion == L's' || conversion == L'S';
    if (!isText && conversion != L'c' && conversion != L'C')
    {
        return std::wstring(length) + conversion;
    }
    const bool isCapital = conversion == L'S' || conversion == L'C';
    const bool isWide = length.empty() ? !isCapital : length.front() != L'h';
    return std::wstring(isWide ? L"l" : L"") + (isText ? L's' : L'c');
}

/// Makes narrow arguments UTF-8 on the calling thread, whatever the locale of the process is.
class Utf8Locale
{
public:
    Utf8Locale() : m_locale(newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr))
    {
        if (m_locale != nullptr)
        {
            m_previous = uselocale(m_locale);
        }
    }

    ~Utf8Locale()
    {
        if (m_locale != nullptr)
        {
            uselocale(m_previous);
            freelocale(m_locale);
        }
    }

    Utf8Locale(const Utf8Locale&) = delete;
    Utf8Locale& operator=(const Utf8Locale&) = delete;

private:
    locale_t m_locale;
    locale_t m_previous = nullptr;
};

} // namespace

std::wstring TranslateWideFormat(std::wstring_view format)
{
    std::wstring out;
    size_t from = 0;
    while (from < format.size())
    {
        const size_t percent = std::min(format.find(L'%', from), format.size());
        const size_t length = std::min(format.find_first_not_of(kFlagsWidthAndPrecision, percent + 1), format.size());
        const size_t conversion = std::min(format.find_first_not_of(kLengths, length), format.size());
        if (conversion == format.size())
        {
            out += format.substr(from);
            break;
        }
        out += format.substr(from, length - from);
        out += SystemConversion(format.substr(length, conversion - length), format[conversion]);
        from = conversion + 1;
    }
    return out;
}

std::string FormatWide(const wchar_t* format, va_list arguments)
{
    const std::wstring translated = TranslateWideFormat(format);
    const Utf8Locale locale;

    wchar_t* text = nullptr;
    size_t length = 0;
    FILE* stream = open_wmemstream(&text, &length);
    if (stream == nullptr)
    {
        throw std::bad_alloc();
    }
    const bool whole = vfwprintf(stream, translated.c_str(), arguments) >= 0;
    std::fclose(stream);

    const std::unique_ptr<wchar_t, decltype(&std::free)> owner(text, std::free);
    return ToUtf8({text, length}) + (whole ? "" : "[unreadable]");
}

} // namespace onlinehost
