#include "common/wbaselib/wcharfunction.h"

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstring>
#include <cwchar>
#include <iconv.h>
#include <iterator>
#include <memory>
#include <new>
#include <string>

namespace WBASELIB
{

namespace
{

constexpr size_t kGuidTextLength = 38;

constexpr unsigned char Utf8SequenceLength(size_t firstByte)
{
    if (firstByte < 0xC0 || firstByte > 0xFD)
    {
        return 1;
    }
    if (firstByte < 0xE0)
    {
        return 2;
    }
    if (firstByte < 0xF0)
    {
        return 3;
    }
    if (firstByte < 0xF8)
    {
        return 4;
    }
    return firstByte < 0xFC ? 5 : 6;
}

constexpr std::array<unsigned char, 256> MakeUtf8Table()
{
    std::array<unsigned char, 256> table{};
    for (size_t byte = 0; byte < table.size(); ++byte)
    {
        table[byte] = Utf8SequenceLength(byte);
    }
    return table;
}

template <typename Unit>
size_t LengthOf(const Unit* text)
{
    const Unit* end = text;
    while (*end != 0)
    {
        ++end;
    }
    return static_cast<size_t>(end - text);
}

template <typename From, typename To>
int Convert(const char* fromCode, const char* toCode, const From* source, To* destination, int size)
{
    if (source == nullptr)
    {
        return 0;
    }
    if (*source == 0)
    {
        if (destination != nullptr && size > 0)
        {
            *destination = 0;
        }
        return 1;
    }

    const size_t inBytes = LengthOf(source) * sizeof(From);
    if (inBytes > INT_MAX)
    {
        return 0;
    }
    constexpr int kUnit = static_cast<int>(sizeof(To));
    const int outBytes = std::min(size, INT_MAX / kUnit) * kUnit;

    char* in =
        const_cast<char*>(reinterpret_cast<const char*>(source)); // iconv takes a pointer to non-const and only reads
    char* out = reinterpret_cast<char*>(destination);
    return StringConvert(fromCode, toCode, in, static_cast<int>(inBytes), out, outBytes) / kUnit;
}

char* ChangeCase(char* text, int (*change)(int))
{
    if (text != nullptr)
    {
        std::transform(text, text + std::strlen(text), text,
                       [change](unsigned char letter) { return static_cast<char>(change(letter)); });
    }
    return text;
}

wchar_t* ChangeWideCase(wchar_t* text, char* (*change)(char*))
{
    if (text == nullptr)
    {
        return nullptr;
    }
    const size_t units = std::wcslen(text) + 1;
    if (units > INT_MAX)
    {
        return text;
    }
    const std::unique_ptr<char[]> ansi(new (std::nothrow) char[units]());
    if (ansi != nullptr)
    {
        ConvertUnicodeToAnsi(text, ansi.get(), static_cast<int>(units));
        ConvertAnsiToUnicode(change(ansi.get()), text, static_cast<int>(units));
    }
    return text;
}

template <typename Unit>
Unit* ReplaceUnits(Unit* text, Unit from, Unit to)
{
    if (text != nullptr)
    {
        std::replace(text, text + LengthOf(text), from, to);
    }
    return text;
}

template <typename Unit>
int PrintGuid(const _GUID& guid, Unit* buf, int size)
{
    if (buf == nullptr || size <= static_cast<int>(kGuidTextLength))
    {
        return 0;
    }
    char text[kGuidTextLength + 1];
    const uint8_t* tail = guid.Data4;
    std::snprintf(text, sizeof(text), "{%08x-%04x-%04x-%02x%02x-%02x%02x%02x%02x%02x%02x}", guid.Data1,
                  unsigned{guid.Data2}, unsigned{guid.Data3}, unsigned{tail[0]}, unsigned{tail[1]}, unsigned{tail[2]},
                  unsigned{tail[3]}, unsigned{tail[4]}, unsigned{tail[5]}, unsigned{tail[6]}, unsigned{tail[7]});
    std::copy(std::begin(text), std::end(text), buf);
    return static_cast<int>(kGuidTextLength);
}

} // namespace

constinit const std::array<unsigned char, 256> utf8_look_for_table = MakeUtf8Table();

int StringConvert(const char* fromCode, const char* toCode, char* in, int inBytes, char* out, int outBytes)
{
    if (fromCode == nullptr || toCode == nullptr || in == nullptr || out == nullptr || inBytes < 0 || outBytes < 0)
    {
        return 0;
    }
    const iconv_t converter = iconv_open(toCode, fromCode);
    if (converter == reinterpret_cast<iconv_t>(-1))
    {
        return 0;
    }

    auto inLeft = static_cast<size_t>(inBytes);
    auto outLeft = static_cast<size_t>(outBytes);
    std::memset(out, 0, outLeft);
    const size_t result = iconv(converter, &in, &inLeft, &out, &outLeft);
    const int error = errno;
    iconv_close(converter);

    if (result == static_cast<size_t>(-1))
    {
        errno = error;
        std::perror("iconv failed");
        errno = 0;
        return 0;
    }
    return outBytes - static_cast<int>(outLeft);
}

int ConvertUtf8ToUnicode(const char* source, wchar_t* destination, int size)
{
    return Convert("UTF-8", "UTF-32LE", source, destination, size);
}

int ConvertUnicodeToUtf8(const wchar_t* source, char* destination, int size)
{
    return Convert("UTF-32LE", "utf-8", source, destination, size);
}

int ConvertUtf8ToAnsi(const char* source, char* destination, int size)
{
    return Convert("utf-8", "gb2312", source, destination, size);
}

int ConvertAnsiToUtf8(const char* source, char* destination, int size)
{
    return Convert("ascii", "utf-8", source, destination, size);
}

int ConvertAnsiToUnicode(const char* source, wchar_t* destination, int size)
{
    return Convert("GB2312", "UTF-32LE", source, destination, size);
}

int ConvertUnicodeToAnsi(const wchar_t* source, char* destination, int size)
{
    return Convert("wchar_t", "ascii", source, destination, size);
}

int ConvertAnsiToUnicode16(const char* source, unsigned short* destination, int size)
{
    return Convert("ascii", "unicode", source, destination, size);
}

int ConvertUnicode16ToAnsi(const unsigned short* source, char* destination, int size)
{
    return Convert("unicode", "ascii", source, destination, size);
}

int ConvertUtf8ToUnicode16(const char* source, unsigned short* destination, int size)
{
    return Convert("utf-8", "unicode", source, destination, size);
}

int ConvertUnicode16ToUtf8(const unsigned short* source, char* destination, int size)
{
    return Convert("unicode", "utf-8", source, destination, size);
}

int ConvertUnicodeToUnicode16(const wchar_t* source, unsigned short* destination, int size)
{
    const int count = Convert("wchar_t", "unicode", source, destination, size);
    if (count < 2)
    {
        return count;
    }
    // The encoder writes a byte-order mark first. After the move the last unit stands there twice: the terminator
    // replaces it.
    std::copy(destination + 1, destination + count, destination);
    destination[count - 1] = 0;
    return count - 1;
}

int ConvertUnicode16ToUnicode(const unsigned short* source, wchar_t* destination, int size)
{
    return Convert("unicode", "wchar_t", source, destination, size);
}

char* _strupr(char* text)
{
    return ChangeCase(text, std::toupper);
}

char* _strlwr(char* text)
{
    return ChangeCase(text, std::tolower);
}

wchar_t* _wcsupr(wchar_t* text)
{
    return ChangeWideCase(text, _strupr);
}

wchar_t* _wcslwr(wchar_t* text)
{
    return ChangeWideCase(text, _strlwr);
}

char* strreplace(char* text, char from, char to)
{
    return ReplaceUnits(text, from, to);
}

wchar_t* wcsreplace(wchar_t* text, wchar_t from, wchar_t to)
{
    return ReplaceUnits(text, from, to);
}

int u16strlen(const unsigned short* text)
{
    return text != nullptr ? static_cast<int>(LengthOf(text)) : 0;
}

int utf8strlen(const char* text)
{
    if (text == nullptr)
    {
        return 0;
    }
    const size_t bytes = std::strlen(text);
    int count = 0;
    // The last step passes the terminator when the text ends inside a sequence.
    for (size_t at = 0; at < bytes; at += utf8_look_for_table[static_cast<unsigned char>(text[at])])
    {
        ++count;
    }
    return count;
}

int StringFromGUID2(const _GUID& guid, char* buf, int size)
{
    return PrintGuid(guid, buf, size);
}

int StringFromGUID2(const _GUID& guid, wchar_t* buf, int size)
{
    return PrintGuid(guid, buf, size);
}

HRESULT GUIDFromString(wchar_t* text, _GUID* out)
{
    if (text == nullptr || out == nullptr)
    {
        return E_INVALIDARG;
    }
    if (std::wcslen(text) != kGuidTextLength)
    {
        return 1;
    }

    _wcslwr(text);
    // The scan writes whole integers. It therefore fills wide variables, and the narrow fields get their low bits.
    unsigned data1 = 0;
    unsigned data2 = 0;
    unsigned data3 = 0;
    std::array<unsigned, 8> tail{};
    std::swscanf(text, L"{%08x-%04x-%04x-%02x%02x-%02x%02x%02x%02x%02x%02x}", &data1, &data2, &data3, &tail[0],
                 &tail[1], &tail[2], &tail[3], &tail[4], &tail[5], &tail[6], &tail[7]);
    out->Data1 = data1;
    out->Data2 = static_cast<uint16_t>(data2);
    out->Data3 = static_cast<uint16_t>(data3);
    std::transform(tail.begin(), tail.end(), out->Data4, [](unsigned byte) { return static_cast<uint8_t>(byte); });
    return S_OK;
}

HRESULT GUIDFromString(const char* text, _GUID* out)
{
    if (text == nullptr || out == nullptr)
    {
        return E_INVALIDARG;
    }
    constexpr int kLimit = 64;
    wchar_t wide[kLimit + 1] = {}; // one more: a text that fills the limit exactly has no terminator
    if (ConvertAnsiToUnicode(text, wide, kLimit) == 0)
    {
        return E_OUTOFMEMORY;
    }
    return GUIDFromString(wide, out);
}

} // namespace WBASELIB
