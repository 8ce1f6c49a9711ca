#pragma once

#include "common/wbaselib/wtypes.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

/// A rectangle on the screen, in pixels.
struct tagRECT
{
    int32_t left;
    int32_t top;
    int32_t right;
    int32_t bottom;
};

/// Strings, numbers, rectangles, identifiers and versions.
///
/// An operation that writes to a pointer writes nothing when the pointer is null. Unless a comment says otherwise,
/// every operation may be called from any thread.
namespace commonutil
{

using ::tagRECT;

/// Always return the empty text: this version does not read the clock, on purpose. Each returns a string of its own
/// that exists as long as the process.
const std::string& AStringFromCurrentTime();
const std::wstring& WStringFromCurrentTime();
const std::string& AStringFromCurrentTime2();
const std::wstring& WStringFromCurrentTime2();

/// Return a rectangle as "{l:10,t:20,r:110,b:70,w:100,h:50}", cut after 63 characters. The result is one string for all
/// callers, valid until the next call. Two threads must not call the same one of these at the same time.
const std::string& AStringFromRect(const tagRECT& rect);
const std::wstring& WStringFromRect(const tagRECT& rect);

/// Replaces every `from` in `*text` by `to` and returns the number of replacements. It does not search the inserted
/// text, so `to` may contain `from`. An empty `from` replaces nothing. Both may be `*text` itself.
int ReplaceAll(std::string* text, const std::string& from, const std::string& to);

/// Does the same on a copy of `text`. Null counts as the empty text.
std::string ReplaceString(const char* text, const char* from, const char* to);

/// Returns a new pseudo-random identifier. Its bytes are between 0 and 0xFE, on purpose: no byte of these identifiers
/// is 0xFF.
_GUID CreateGuid();

/// Writes "{xxxxxxxx-xxxx-xxxx-xxxx-xxxxxxxxxxxx}", in lower case.
void GUID2String(const _GUID& guid, std::string* out);
void GUID2String(const _GUID& guid, std::wstring* out);

/// Reads an identifier from 11 hexadecimal numbers with commas between them: Data1, Data2, Data3 and the 8 bytes of
/// Data4. Each number is cut to the width of its field; a piece that is not a number counts as 0. A text with another
/// number of pieces, for example the form with braces, does not change `*out`.
void String2GUID(const std::string& text, _GUID* out);

/// Read a decimal number at the beginning of a text and ignore the rest. Throw what std::stoi throws:
/// std::invalid_argument without a number, std::out_of_range when it does not fit. Use ReadUserId for texts of hosts
/// and platforms.
int AStringToInt(const std::string& text);
int ToInt(const std::string& text);
int WStringToInt(const std::wstring& text);

/// Reads an unsigned number, such as a user id, from a text of a host or a platform. True when the text is not null,
/// begins with a decimal digit, and begins with a number that AStringToInt can hold; only then it writes `*out`. Never
/// throws.
///
/// A number above 2147483647 therefore counts as malformed, on purpose: the platform's ids are read as signed 32-bit
/// numbers everywhere, and AStringToInt would refuse such an id elsewhere.
bool ReadUserId(const char* text, unsigned* out) noexcept;

/// Does the same and returns 0 for a malformed text.
unsigned UserIdOrZero(const char* text) noexcept;

/// Returns the empty text for null, otherwise `text`.
inline const char* TextOrEmpty(const char* text) noexcept
{
    return text != nullptr ? text : "";
}

/// Copies `text` into a buffer of `size` bytes as strncpy does: it fills the rest with zeros, and cuts a text that is
/// too long without a terminator.
void CopyPadded(char* buffer, size_t size, const std::string& text) noexcept;

/// Write the decimal text of a number.
void ToAString(int value, std::string* out);
void ToAString(unsigned int value, std::string* out);
void ToString(int value, std::string* out);
void ToString(unsigned int value, std::string* out);
void ToWString(int value, std::wstring* out);
void ToWString(unsigned int value, std::wstring* out);
std::string ToAString(int value);
std::string ToAString(unsigned int value);

/// Cuts `text` at every `separator`, keeps empty pieces, and returns the number of pieces. With an empty text or a null
/// `out` it returns 0 and writes nothing. An empty `separator` does not cut.
///
/// A piece begins one character behind the start of the separator before it, on purpose. A longer separator therefore
/// leaves its rest at the head of the piece: "a::b" cut at "::" gives "a" and ":b".
unsigned int SplitString(const std::string& text, const std::string& separator, std::vector<std::string>* out);

/// Return the numbers of a version such as "5.12.0.3". They skip a piece that is empty or contains a character other
/// than a decimal digit. They throw std::out_of_range, as AStringToInt does, for a number that does not fit an int.
std::vector<int> VersionToVector(const std::string& version);
std::vector<int> VersionToVector(const std::wstring& version);

/// Convert a text, up to its first terminator, between UTF-8 and wide text. False, with an empty result, when the text
/// cannot be converted.
bool Utf8ToUnicode(const std::string& text, std::wstring* out);
bool UnicodeToUtf8(const std::wstring& text, std::string* out);

/// Does the same as UnicodeToUtf8 for a plain pointer; null counts as the empty text.
bool Unicode2String(const wchar_t* text, std::string* out);

/// Convert UTF-8 to ASCII (the local encoding when written) and GB2312 (the local encoding when read) to UTF-8.
///
/// `dstSize` is the size of `dst` in bytes. 0 means that the caller guarantees enough room; twice the source with its
/// terminator is always enough. Return the number of bytes written without the terminator, 1 for an empty source.
/// Return 0 and do not change `dst` when a pointer is null, the source with its terminator is larger than `dst`, the
/// text cannot be converted, or the result with its terminator does not fit.
unsigned int Utf8String2AnsiString(const char* src, char* dst, unsigned int dstSize);
unsigned int AnsiString2Utf8String(const char* src, char* dst, unsigned int dstSize);

} // namespace commonutil
