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
/// Where an operation writes to a pointer, a null pointer means that nobody wants the result. Unless said otherwise
/// everything may be called from any thread.
namespace commonutil
{

using ::tagRECT;

/// Always the empty text: this version does not read the clock, and callers have to cope with that. Each returns a
/// string of its own that lives as long as the process.
const std::string& AStringFromCurrentTime();
const std::wstring& WStringFromCurrentTime();
const std::string& AStringFromCurrentTime2();
const std::wstring& WStringFromCurrentTime2();

/// A rectangle as "{l:10,t:20,r:110,b:70,w:100,h:50}", cut after 63 characters. The result is one string for all
/// callers, valid until the next call; two threads must not call the same one of these at a time.
const std::string& AStringFromRect(const tagRECT& rect);
const std::wstring& WStringFromRect(const tagRECT& rect);

/// Replaces every `from` in `*text` by `to` and returns how often. What has been put in is not searched again, so `to`
/// may contain `from`. An empty `from` never occurs. Both may be `*text` itself.
int ReplaceAll(std::string* text, const std::string& from, const std::string& to);

/// The same on a copy of `text`. Null counts as the empty text.
std::string ReplaceString(const char* text, const char* from, const char* to);

/// A new pseudo-random identifier. Its bytes run from 0 to 0xFE: that none is 0xFF is part of the form of these
/// identifiers.
_GUID CreateGuid();

/// Writes "{xxxxxxxx-xxxx-xxxx-xxxx-xxxxxxxxxxxx}", in lower case.
void GUID2String(const _GUID& guid, std::string* out);
void GUID2String(const _GUID& guid, std::wstring* out);

/// Reads an identifier from 11 hexadecimal numbers that are separated by commas: Data1, Data2, Data3 and the 8 bytes of
/// Data4. Each is cut to its field's width; a piece that is not a number reads as 0. A text with another number of
/// pieces, the braced form among them, leaves `*out` as it was.
void String2GUID(const std::string& text, _GUID* out);

/// Read a decimal number from the beginning of a text; what follows it is ignored. Throw what std::stoi throws:
/// std::invalid_argument without a number, std::out_of_range when it does not fit. For text from outside there is
/// ReadUserId.
int AStringToInt(const std::string& text);
int ToInt(const std::string& text);
int WStringToInt(const std::wstring& text);

/// Reads a number that came from outside as text: a user id, or another unsigned number that is written in the same
/// way. True when the text is not null, begins with a decimal digit and AStringToInt can hold the number that it begins
/// with; only then `*out` is written. Never throws.
///
/// A number above 2147483647 therefore counts as malformed. That is on purpose: the platform's ids have always been
/// read as signed 32-bit numbers, and an id must not become a number here that AStringToInt would refuse elsewhere.
bool ReadUserId(const char* text, unsigned* out) noexcept;

/// The same where a malformed text stands for user 0.
unsigned UserIdOrZero(const char* text) noexcept;

/// A text from outside that may be null: null reads as the empty text.
inline const char* TextOrEmpty(const char* text) noexcept
{
    return text != nullptr ? text : "";
}

/// Copies `text` into a buffer of `size` bytes in the manner of strncpy: what is left over is filled with zeros, and a text
/// that is too long is cut off without a terminator.
void CopyPadded(char* buffer, size_t size, const std::string& text) noexcept;

/// The decimal text of a number.
void ToAString(int value, std::string* out);
void ToAString(unsigned int value, std::string* out);
void ToString(int value, std::string* out);
void ToString(unsigned int value, std::string* out);
void ToWString(int value, std::wstring* out);
void ToWString(unsigned int value, std::wstring* out);
std::string ToAString(int value);
std::string ToAString(unsigned int value);

/// Cuts `text` at every occurrence of `separator`, keeps empty pieces, and returns the number of pieces. With an empty
/// text or a null `out` it returns 0 and writes nothing. An empty `separator` never occurs.
///
/// A piece begins one character behind the beginning of the separator before it, so the rest of a separator of several
/// characters stays at its head: "a::b" cut at "::" gives "a" and ":b".
unsigned int SplitString(const std::string& text, const std::string& separator, std::vector<std::string>* out);

/// The numbers of a version such as "5.12.0.3". A piece between dots that is empty or not all decimal digits is
/// skipped. A piece that no int can hold throws std::out_of_range, as AStringToInt does.
std::vector<int> VersionToVector(const std::string& version);
std::vector<int> VersionToVector(const std::wstring& version);

/// Convert a text, up to its first terminator, between UTF-8 and wide text. False when it cannot be converted; the
/// result is then empty.
bool Utf8ToUnicode(const std::string& text, std::wstring* out);
bool UnicodeToUtf8(const std::wstring& text, std::string* out);

/// UnicodeToUtf8 for a plain pointer; null counts as the empty text.
bool Unicode2String(const wchar_t* text, std::string* out);

/// Convert UTF-8 to ASCII (the local encoding when written) and GB2312 (the local encoding when read) to UTF-8.
///
/// `dstSize` is the size of `dst` in bytes; 0 means that the caller knows it to be large enough (twice the source with
/// its terminator always is). Return the bytes written without the terminator, 1 for an empty source; 0, with `dst` as
/// it was, when a pointer is null, the source with its terminator is larger than `dst`, the text cannot be converted
/// or the result with its terminator does not fit.
unsigned int Utf8String2AnsiString(const char* src, char* dst, unsigned int dstSize);
unsigned int AnsiString2Utf8String(const char* src, char* dst, unsigned int dstSize);

} // namespace commonutil
