#pragma once

#include "common/wbaselib/wtypes.h"

#include <array>

namespace WBASELIB
{

/// Conversion of text between encodings, letter case, counting, and identifiers as text.
///
/// Four kinds of text occur: UTF-8 (`char`), "Ansi" (`char`, GB2312 or ASCII, as each function says), "Unicode"
/// (`wchar_t`, 32 bits, UTF-32) and "Unicode16" (`unsigned short`, UTF-16 without surrogates). Texts end in a
/// terminator. Nothing here throws, and everything may be called from any thread, on different texts at a time.

/// Length in bytes of a UTF-8 sequence by its first byte. A byte that cannot begin a sequence counts as one of its own.
extern const std::array<unsigned char, 256> utf8_look_for_table;

/// Converts `inBytes` bytes of `in` from the encoding `fromCode` to `toCode`, names as the system's iconv knows them.
///
/// `out` is filled with `outBytes` zero bytes first, so the result is terminated whenever a unit of it is left over; a
/// result that fills `out` exactly is not. Returns the number of bytes written; 0 when a pointer is null, a size is
/// negative, an encoding is unknown or the text cannot be converted or does not fit. In the last case "iconv failed"
/// and the reason go to standard error, and what was converted so far stays in `out`.
int StringConvert(const char* fromCode, const char* toCode, char* in, int inBytes, char* out, int outBytes);

/// The conversions below take a text, a destination and the destination's size in its own units, and return the number
/// of units written, without counting a terminator; termination and failure are those of StringConvert. An empty
/// source stores a terminator (if there is a destination) and returns 1. A null source returns 0.
///
/// The pairs are not symmetric, and users of either direction depend on it: Ansi is written as GB2312 from UTF-8 but
/// read as ASCII into UTF-8, and read as GB2312 into Unicode but written as ASCII from it.

/// UTF-8 to UTF-32.
int ConvertUtf8ToUnicode(const char* source, wchar_t* destination, int size);

/// UTF-32 to UTF-8.
int ConvertUnicodeToUtf8(const wchar_t* source, char* destination, int size);

/// UTF-8 to GB2312.
int ConvertUtf8ToAnsi(const char* source, char* destination, int size);

/// ASCII to UTF-8; a byte above 0x7F fails.
int ConvertAnsiToUtf8(const char* source, char* destination, int size);

/// GB2312 to UTF-32.
int ConvertAnsiToUnicode(const char* source, wchar_t* destination, int size);

/// UTF-32 to ASCII; any other character fails.
int ConvertUnicodeToAnsi(const wchar_t* source, char* destination, int size);

/// ASCII to 16-bit text with a byte-order mark in front, which counts as one unit.
int ConvertAnsiToUnicode16(const char* source, unsigned short* destination, int size);

/// 16-bit text, with or without a byte-order mark, to ASCII.
int ConvertUnicode16ToAnsi(const unsigned short* source, char* destination, int size);

/// UTF-8 to 16-bit text with a byte-order mark in front, which counts as one unit.
int ConvertUtf8ToUnicode16(const char* source, unsigned short* destination, int size);

/// 16-bit text, with or without a byte-order mark, to UTF-8.
int ConvertUnicode16ToUtf8(const unsigned short* source, char* destination, int size);

/// UTF-32 to 16-bit text without a byte-order mark. The destination needs room for the mark nevertheless: it is
/// written and then removed.
int ConvertUnicodeToUnicode16(const wchar_t* source, unsigned short* destination, int size);

/// 16-bit text, with or without a byte-order mark, to UTF-32.
int ConvertUnicode16ToUnicode(const unsigned short* source, wchar_t* destination, int size);

/// Change each byte of `text` in place as `toupper` and `tolower` do: the ASCII letters, unless the process has set a locale of
/// single bytes. Return `text`; null gives null.
char* _strupr(char* text);
char* _strlwr(char* text);

/// The same for wide text. It goes through Ansi, so only ASCII survives: the text is cut before the first character
/// that is not ASCII.
wchar_t* _wcsupr(wchar_t* text);
wchar_t* _wcslwr(wchar_t* text);

/// Replace every `from` by `to` in place. Return `text`; null gives null.
char* strreplace(char* text, char from, char to);
wchar_t* wcsreplace(wchar_t* text, wchar_t from, wchar_t to);

/// Units before the terminating 0; 0 for null.
int u16strlen(const unsigned short* text);

/// Characters of a UTF-8 text, found by stepping from first byte to first byte; 0 for null. A sequence that is cut
/// short by the end of the text counts as one character.
int utf8strlen(const char* text);

/// Prints an identifier as "{xxxxxxxx-xxxx-xxxx-xxxx-xxxxxxxxxxxx}" in lower case. Returns 38, the length, or 0 when
/// `buf` is null or `size` (in characters) is below 39.
int StringFromGUID2(const _GUID& guid, char* buf, int size);
int StringFromGUID2(const _GUID& guid, wchar_t* buf, int size);

/// Reads an identifier from the text form above, in either case. `text` is changed to lower case in place. A text of
/// 38 characters is taken to have that form: what cannot be read of it leaves zero in the rest of `*out`.
/// Returns S_OK; E_INVALIDARG for a null argument; 1 for a text of another length, with `*out` and `text` untouched.
HRESULT GUIDFromString(wchar_t* text, _GUID* out);

/// The same for GB2312 text, which stays as it is. Returns E_OUTOFMEMORY when the text cannot be converted or is longer
/// than 64 characters.
HRESULT GUIDFromString(const char* text, _GUID* out);

} // namespace WBASELIB
