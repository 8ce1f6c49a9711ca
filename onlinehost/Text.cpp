#include "onlinehost/Text.h"

#include <algorithm>
#include <cstdio>

namespace onlinehost
{

namespace
{

constexpr char32_t kReplacement = 0xFFFD;

bool IsCharacter(char32_t character)
{
    return character <= 0x10FFFF && (character < 0xD800 || character > 0xDFFF);
}

bool IsControl(char32_t character)
{
    return character < 0x20 || (character >= 0x7F && character < 0xA0);
}

bool IsContinuation(char byte)
{
    return (static_cast<unsigned char>(byte) & 0xC0) == 0x80;
}

void AppendUtf8(std::string& out, char32_t character)
{
    const auto tail = [&](int shift) { out += static_cast<char>(0x80 | ((character >> shift) & 0x3F)); };
    if (character < 0x80)
    {
        out += static_cast<char>(character);
    }
    else if (character < 0x800)
    {
        out += static_cast<char>(0xC0 | (character >> 6));
        tail(0);
    }
    else if (character < 0x10000)
    {
        out += static_cast<char>(0xE0 | (character >> 12));
        tail(6);
        tail(0);
    }
    else
    {
        out += static_cast<char>(0xF0 | (character >> 18));
        tail(12);
        tail(6);
        tail(0);
    }
}

/// The number of bytes of the character at the start of `text`, and the character; 0 if no UTF-8 character starts
/// there.
size_t ReadCharacter(std::string_view text, char32_t& character)
{
    static constexpr char32_t kSmallest[] = {0, 0, 0x80, 0x800, 0x10000};

    const auto lead = static_cast<unsigned char>(text[0]);
    const size_t length = lead < 0x80 ? 1 : lead < 0xC0 ? 0 : lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : lead < 0xF8 ? 4 : 0;
    if (length == 0 || length > text.size())
    {
        return 0;
    }
    character = length == 1 ? lead : lead & (0x7Fu >> length);
    for (size_t i = 1; i < length; ++i)
    {
        if (!IsContinuation(text[i]))
        {
            return 0;
        }
        character = (character << 6) | (static_cast<unsigned char>(text[i]) & 0x3Fu);
    }
    return character >= kSmallest[length] && IsCharacter(character) ? length : 0;
}

} // namespace

size_t CutLength(std::string_view text, size_t limit)
{
    if (text.size() <= limit)
    {
        return text.size();
    }
    constexpr size_t kLongestTail = 3;
    size_t cut = limit;
    while (cut > 0 && limit - cut < kLongestTail && IsContinuation(text[cut]))
    {
        --cut;
    }
    // More continuation bytes than a character can have: this is not UTF-8, so the cut need not respect characters.
    return IsContinuation(text[cut]) ? limit : cut;
}

std::string ToUtf8(std::wstring_view text)
{
    std::string out;
    out.reserve(text.size());
    for (const wchar_t wide : text)
    {
        const auto character = static_cast<char32_t>(wide);
        AppendUtf8(out, IsCharacter(character) ? character : kReplacement);
    }
    return out;
}

std::string RepairUtf8(std::string_view text)
{
    std::string out;
    out.reserve(text.size());
    while (!text.empty())
    {
        char32_t character = 0;
        const size_t length = ReadCharacter(text, character);
        AppendUtf8(out, length != 0 ? character : kReplacement);
        text.remove_prefix(std::max<size_t>(length, 1));
    }
    return out;
}

std::string Printable(std::string_view text)
{
    std::string out;
    out.reserve(text.size());
    while (!text.empty())
    {
        char32_t character = 0;
        const size_t length = ReadCharacter(text, character);
        if (length != 0 && !IsControl(character))
        {
            out += text.substr(0, length);
            text.remove_prefix(length);
            continue;
        }
        char escaped[5];
        std::snprintf(escaped, sizeof(escaped), "\\x%02X", static_cast<unsigned>(static_cast<unsigned char>(text[0])));
        out += escaped;
        text.remove_prefix(1);
    }
    return out;
}

std::string GuidText(const GUID& guid)
{
    const uint8_t* rest = guid.Data4;
    char text[39];
    std::snprintf(text, sizeof(text), "{%08X-%04X-%04X-%02X%02X-%02X%02X%02X%02X%02X%02X}", guid.Data1, guid.Data2,
                  guid.Data3, rest[0], rest[1], rest[2], rest[3], rest[4], rest[5], rest[6], rest[7]);
    return text;
}

std::string HexText(uint32_t value)
{
    char text[11];
    std::snprintf(text, sizeof(text), "0x%08X", value);
    return text;
}

std::string CountText(size_t count, const std::string& what)
{
    return std::to_string(count) + " " + what + (count == 1 ? "" : "s");
}

} // namespace onlinehost
