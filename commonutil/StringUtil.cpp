#include "commonutil/StringUtil.h"

#include "common/wbaselib/wcharfunction.h"

#include <algorithm>
#include <array>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <exception>
#include <limits>

namespace commonutil
{

namespace
{

constexpr int kGuidBufferSize = 39;
constexpr size_t kGuidPieces = 11;

/// The maximum number of bytes of one wide character in UTF-8.
constexpr size_t kUtf8BytesPerCharacter = 4;

/// The wide and the narrow form of a rectangle are cut at the same place.
std::array<char, 64> FormatRect(const tagRECT& rect)
{
    const int64_t width = int64_t{rect.right} - rect.left;
    const int64_t height = int64_t{rect.bottom} - rect.top;
    std::array<char, 64> text{};
    std::snprintf(text.data(), text.size(), "{l:%d,t:%d,r:%d,b:%d,w:%d,h:%d}", rect.left, rect.top, rect.right,
                  rect.bottom, static_cast<int32_t>(width), static_cast<int32_t>(height));
    return text;
}

template <typename Text>
void AssignTo(Text* out, Text value)
{
    if (out != nullptr)
    {
        *out = std::move(value);
    }
}

template <typename CharT>
std::vector<int> ReadVersion(const std::basic_string<CharT>& version)
{
    const auto isDigit = [](CharT letter) { return letter >= CharT('0') && letter <= CharT('9'); };

    std::vector<int> numbers;
    for (size_t begin = 0; begin <= version.size();)
    {
        const size_t end = std::min(version.find(CharT('.'), begin), version.size());
        const std::basic_string<CharT> piece = version.substr(begin, end - begin);
        if (!piece.empty() && std::all_of(piece.begin(), piece.end(), isDigit))
        {
            numbers.push_back(std::stoi(piece));
        }
        begin = end + 1;
    }
    return numbers;
}

/// Converts `text` with one of the WBASELIB conversions. The result has at most `limit` units.
template <typename From, typename To>
bool ConvertText(int (*convert)(const From*, To*, int), const From* text, size_t limit, std::basic_string<To>* out)
{
    if (out == nullptr)
    {
        return false;
    }
    out->clear();
    if (text == nullptr || *text == 0)
    {
        return true;
    }
    if (limit >= INT_MAX)
    {
        return false;
    }
    std::vector<To> buffer(limit + 1);
    const int count = convert(text, buffer.data(), static_cast<int>(buffer.size()));
    out->assign(buffer.data(), static_cast<size_t>(count));
    return count > 0;
}

/// Converts `src` to wide text and from there to `dst`, with two of the WBASELIB conversions.
unsigned int ConvertThroughUnicode(int (*toUnicode)(const char*, wchar_t*, int),
                                   int (*fromUnicode)(const wchar_t*, char*, int), const char* src, char* dst,
                                   unsigned int dstSize)
{
    if (src == nullptr || dst == nullptr)
    {
        return 0;
    }
    const size_t sourceSize = std::strlen(src) + 1;
    if ((dstSize != 0 && sourceSize > dstSize) || sourceSize > INT_MAX / 4)
    {
        return 0;
    }

    constexpr int kAttempts = 3;
    std::vector<wchar_t> wide(2 * sourceSize);
    int converted = toUnicode(src, wide.data(), static_cast<int>(wide.size()));
    for (int attempt = 1; converted == 0 && attempt < kAttempts; ++attempt)
    {
        wide.resize(wide.size() + sourceSize);
        converted = toUnicode(src, wide.data(), static_cast<int>(wide.size()));
    }
    if (converted == 0)
    {
        return 0;
    }

    const size_t resultSize = std::min<size_t>(dstSize != 0 ? dstSize : wide.size(), INT_MAX);
    std::vector<char> result(resultSize);
    const int count = fromUnicode(wide.data(), result.data(), static_cast<int>(resultSize));
    // A result that fills the buffer exactly has no terminator, and `dst` has no room for one.
    if (count == 0 || result.back() != 0)
    {
        return 0;
    }
    std::strcpy(dst, result.data());
    return static_cast<unsigned int>(count);
}

} // namespace

const std::string& AStringFromCurrentTime()
{
    static const std::string text;
    return text;
}

const std::wstring& WStringFromCurrentTime()
{
    static const std::wstring text;
    return text;
}

const std::string& AStringFromCurrentTime2()
{
    static const std::string text;
    return text;
}

const std::wstring& WStringFromCurrentTime2()
{
    static const std::wstring text;
    return text;
}

const std::string& AStringFromRect(const tagRECT& rect)
{
    static std::string text;
    text = FormatRect(rect).data();
    return text;
}

const std::wstring& WStringFromRect(const tagRECT& rect)
{
    static std::wstring text;
    const std::array<char, 64> narrow = FormatRect(rect);
    text.assign(narrow.data(), narrow.data() + std::strlen(narrow.data()));
    return text;
}

int ReplaceAll(std::string* text, const std::string& from, const std::string& to)
{
    if (text == nullptr || from.empty())
    {
        return 0;
    }
    int count = 0;
    size_t begin = 0;
    std::string result;
    for (size_t found = text->find(from); found != std::string::npos; found = text->find(from, begin))
    {
        result.append(*text, begin, found - begin).append(to);
        begin = found + from.size();
        ++count;
    }
    if (count > 0)
    {
        result.append(*text, begin);
        *text = std::move(result);
    }
    return count;
}

std::string ReplaceString(const char* text, const char* from, const char* to)
{
    std::string result = text != nullptr ? text : "";
    ReplaceAll(&result, from != nullptr ? from : "", to != nullptr ? to : "");
    return result;
}

_GUID CreateGuid()
{
    [[maybe_unused]] static const bool seeded = []
    {
        std::srand(static_cast<unsigned>(std::time(nullptr)));
        return true;
    }();

    std::array<unsigned char, sizeof(_GUID)> bytes{};
    // Below 0xFF on purpose, as the header says.
    std::generate(bytes.begin(), bytes.end(), [] { return static_cast<unsigned char>(std::rand() % 255); });
    _GUID guid;
    std::memcpy(&guid, bytes.data(), sizeof(guid));
    return guid;
}

void GUID2String(const _GUID& guid, std::string* out)
{
    char text[kGuidBufferSize];
    WBASELIB::StringFromGUID2(guid, text, kGuidBufferSize);
    AssignTo(out, std::string(text));
}

void GUID2String(const _GUID& guid, std::wstring* out)
{
    wchar_t text[kGuidBufferSize];
    WBASELIB::StringFromGUID2(guid, text, kGuidBufferSize);
    AssignTo(out, std::wstring(text));
}

void String2GUID(const std::string& text, _GUID* out)
{
    std::vector<std::string> pieces;
    if (out == nullptr || SplitString(text, ",", &pieces) != kGuidPieces)
    {
        return;
    }
    const auto number = [&pieces](size_t index) { return std::strtoul(pieces[index].c_str(), nullptr, 16); };
    out->Data1 = static_cast<uint32_t>(number(0));
    out->Data2 = static_cast<uint16_t>(number(1));
    out->Data3 = static_cast<uint16_t>(number(2));
    for (size_t index = 0; index < sizeof(out->Data4); ++index)
    {
        out->Data4[index] = static_cast<uint8_t>(number(3 + index));
    }
}

int AStringToInt(const std::string& text)
{
    return std::stoi(text);
}

int ToInt(const std::string& text)
{
    return AStringToInt(text);
}

int WStringToInt(const std::wstring& text)
{
    return std::stoi(text);
}

bool ReadUserId(const char* text, unsigned* out) noexcept
{
    if (text == nullptr || *text < '0' || *text > '9')
    {
        return false;
    }
    try
    {
        AssignTo(out, static_cast<unsigned>(AStringToInt(text)));
        return true;
    }
    catch (const std::exception&)
    {
        return false;
    }
}

unsigned UserIdOrZero(const char* text) noexcept
{
    unsigned userId = 0;
    ReadUserId(text, &userId);
    return userId;
}

void CopyPadded(char* buffer, size_t size, const std::string& text) noexcept
{
    const size_t length = std::min(std::strlen(text.c_str()), size);
    std::memcpy(buffer, text.c_str(), length);
    std::memset(buffer + length, 0, size - length);
}

void ToAString(int value, std::string* out)
{
    AssignTo(out, std::to_string(value));
}

void ToAString(unsigned int value, std::string* out)
{
    AssignTo(out, std::to_string(value));
}

void ToString(int value, std::string* out)
{
    ToAString(value, out);
}

void ToString(unsigned int value, std::string* out)
{
    ToAString(value, out);
}

void ToWString(int value, std::wstring* out)
{
    AssignTo(out, std::to_wstring(value));
}

void ToWString(unsigned int value, std::wstring* out)
{
    AssignTo(out, std::to_wstring(value));
}

std::string ToAString(int value)
{
    return std::to_string(value);
}

std::string ToAString(unsigned int value)
{
    return std::to_string(value);
}

unsigned int SplitString(const std::string& text, const std::string& separator, std::vector<std::string>* out)
{
    if (text.empty() || out == nullptr)
    {
        return 0;
    }
    std::vector<std::string> pieces;
    size_t begin = 0;
    size_t found = separator.empty() ? std::string::npos : text.find(separator);
    while (found != std::string::npos)
    {
        pieces.push_back(text.substr(begin, found - begin));
        begin = found + 1; // on purpose not behind the whole separator, as the header says
        found = text.find(separator, begin);
    }
    pieces.push_back(text.substr(begin));
    *out = std::move(pieces);
    return static_cast<unsigned int>(out->size());
}

std::vector<int> VersionToVector(const std::string& version)
{
    return ReadVersion(version);
}

std::vector<int> VersionToVector(const std::wstring& version)
{
    return ReadVersion(version);
}

bool Utf8ToUnicode(const std::string& text, std::wstring* out)
{
    return ConvertText(WBASELIB::ConvertUtf8ToUnicode, text.c_str(), text.size(), out);
}

bool UnicodeToUtf8(const std::wstring& text, std::string* out)
{
    return ConvertText(WBASELIB::ConvertUnicodeToUtf8, text.c_str(), kUtf8BytesPerCharacter * text.size(), out);
}

bool Unicode2String(const wchar_t* text, std::string* out)
{
    return UnicodeToUtf8(text != nullptr ? text : L"", out);
}

unsigned int Utf8String2AnsiString(const char* src, char* dst, unsigned int dstSize)
{
    return ConvertThroughUnicode(WBASELIB::ConvertUtf8ToUnicode, WBASELIB::ConvertUnicodeToAnsi, src, dst, dstSize);
}

unsigned int AnsiString2Utf8String(const char* src, char* dst, unsigned int dstSize)
{
    return ConvertThroughUnicode(WBASELIB::ConvertAnsiToUnicode, WBASELIB::ConvertUnicodeToUtf8, src, dst, dstSize);
}

} // namespace commonutil
