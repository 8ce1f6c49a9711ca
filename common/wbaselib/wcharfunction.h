#pragma once

#include "common/wbaselib/wtypes.h"

#include <array>

namespace WBASELIB
{

/// Conversion of text between encodings, letter case, counting, and identifiers as text.
///
/// There are four kinds of text: UTF-8 (`char`), "Ansi" (`char`, GB2312 or ASCII, as each function says), "Unicode"
/// (`wchar_t`, 32 bits, UTF-32) and "Unicode16" (`unsigned short`, UTF-16 without surrogates). Every text ends in a
/// terminator. No function throws. Several threads may call them at the same time, on different texts.

/// Length in bytes of a UTF-8 sequence, by its first byte; 1 for a byte that cannot begin a sequence.
extern const std::array<unsigned char, 256> utf8_look_for_table;

/// Converts `inBytes` bytes of `in` from the encoding `fromCode` to `toCode`. Both are names of the system's iconv.
///
/// First fills `out` with `outBytes` zero bytes: the result therefore has a terminator unless it fills `out` exactly.
/// Returns the number of bytes written; 0 when a pointer is null, a size is negative, an encoding is unknown, or the
/// text cannot be converted or does not fit. In the last two cases it writes "iconv failed" and the reason to standard
/// error, and `out` keeps the part that was converted.
int StringConvert(const char* fromCode, const char* toCode, char* in, int inBytes, char* out, int outBytes);

/// The conversions below take a text, a destination and the size of the destination in its own units. They return the
/// number of units written, without the terminator. They terminate and fail as StringConvert does. For an empty source
/// they write a terminator, if the destination has room, and return 1. For a null source they return 0.
///
/// The pairs are not symmetric, on purpose; callers of both directions depend on it. From UTF-8 the Ansi text is
/// GB2312, into UTF-8 it is ASCII. Into Unicode the Ansi text is GB2312, from Unicode it is ASCII.

/// UTF-8 to UTF-32.
int ConvertUtf8ToUnicode(const char* source, wchar_t* destination, int size);

/// UTF-32 to UTF-8.
int ConvertUnicodeToUtf8(const wchar_t* source, char* destination, int size);

/// UTF-8 to GB2312.
int ConvertUtf8ToAnsi(const char* source, char* destination, int size);

/// ASCII to UTF-8. Fails for a byte above 0x7F.
int ConvertAnsiToUtf8(const char* source, char* destination, int size);

/// GB2312 to UTF-32.
int ConvertAnsiToUnicode(const char* source, wchar_t* destination, int size);

/// UTF-32 to ASCII. Fails for any other character.
int ConvertUnicodeToAnsi(const wchar_t* source, char* destination, int size);

/// ASCII to 16-bit text that begins with a byte-order mark. The mark counts as one unit.
int ConvertAnsiToUnicode16(const char* source, unsigned short* destination, int size);

/// 16-bit text, with or without a byte-order mark, to ASCII.
int ConvertUnicode16ToAnsi(const unsigned short* source, char* destination, int size);

/// UTF-8 to 16-bit text that begins with a byte-order mark. The mark counts as one unit.
int ConvertUtf8ToUnicode16(const char* source, unsigned short* destination, int size);

/// 16-bit text, with or without a byte-order mark, to UTF-8.
int ConvertUnicode16ToUtf8(const unsigned short* source, char* destination, int size);

/// UTF-32 to 16-bit text without a byte-order mark. The destination needs room for the mark nevertheless: the function
/// writes it and then removes it.
int ConvertUnicodeToUnicode16(const wchar_t* source, unsigned short* destination, int size);

/// 16-bit text, with or without a byte-order mark, to UTF-32.
int ConvertUnicode16ToUnicode(const unsigned short* source, wchar_t* destination, int size);

/// Change each byte of `text` in place as `toupper` and `tolower` do: only ASCII letters, unless the process has set a
/// locale with single-byte characters. Return `text`, null for null.
char* _strupr(char* text);
char* _strlwr(char* text);

/// Do the same for wide text. They convert it to ASCII in between and cut it before the first character that is not
/// ASCII.
wchar_t* _wcsupr(wchar_t* text);
wchar_t* _wcslwr(wchar_t* text);

/// Replace every `from` by `to` in place. Return `text`, null for null.
char* strreplace(char* text, char from, char to);
wchar_t* wcsreplace(wchar_t* text, wchar_t from, wchar_t to);

/// Returns the number of units before the terminator; 0 for null.
int u16strlen(const unsigned short* text);

/// Returns the number of characters of a UTF-8 text; 0 for null. It steps by the lengths in `utf8_look_for_table`. A
/// sequence that the end of the text cuts short counts as one character.
int utf8strlen(const char* text);

/// Writes an identifier as "{xxxxxxxx-xxxx-xxxx-xxxx-xxxxxxxxxxxx}" in lower case. Returns the length, 38; 0 when `buf`
/// is null or `size` (in characters) is below 39.
int StringFromGUID2(const _GUID& guid, char* buf, int size);
int StringFromGUID2(const _GUID& guid, wchar_t* buf, int size);

/// Reads an identifier in the form above, in either letter case, and changes `text` to lower case in place. A text of
/// 38 characters counts as such an identifier: the first unreadable field and all fields behind it become 0. Returns
/// S_OK. Returns E_INVALIDARG for a null argument, and 1 for a text of another length; `*out` and `text` are then
/// unchanged.
HRESULT GUIDFromString(wchar_t* text, _GUID* out);

/// Does the same for GB2312 text and does not change it. Returns E_OUTOFMEMORY when the text cannot be converted or is
/// longer than 64 characters.
HRESULT GUIDFromString(const char* text, _GUID* out);

} // namespace WBASELIB
