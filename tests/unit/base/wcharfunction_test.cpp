#include "common/wbaselib/wcharfunction.h"

#include <algorithm>
#include <cerrno>
#include <cwchar>
#include <functional>
#include <gtest/gtest.h>
#include <memory>
#include <numeric>
#include <string>
#include <vector>

using namespace WBASELIB;

namespace
{

constexpr _GUID kGuid = {0x39E7FC29, 0xFDDC, 0x4156, {0xB8, 0x73, 0x6E, 0xF1, 0xA4, 0x33, 0x3F, 0x23}};
constexpr char kGuidText[] = "{39e7fc29-fddc-4156-b873-6ef1a4333f23}";
constexpr char kGuidUpperText[] = "{39E7FC29-FDDC-4156-B873-6EF1A4333F23}";
constexpr wchar_t kGuidWideText[] = L"{39e7fc29-fddc-4156-b873-6ef1a4333f23}";

constexpr char kChineseUtf8[] = "\xE4\xB8\xAD\xE6\x96\x87";
constexpr char kChineseGb2312[] = "\xD6\xD0\xCE\xC4";
constexpr wchar_t kChineseWide[] = L"\x4E2D\x6587";

/// Returns what `action` writes to standard error.
std::string ErrorOutputOf(const std::function<void()>& action)
{
    testing::internal::CaptureStderr();
    action();
    return testing::internal::GetCapturedStderr();
}

/// Expects `action` to return 0 and to write the message of a failed conversion.
void ExpectConversionFails(const std::function<int()>& action)
{
    int result = -1;
    const std::string output = ErrorOutputOf([&] { result = action(); });
    EXPECT_EQ(result, 0);
    EXPECT_EQ(output.rfind("iconv failed", 0), 0U) << output;
    EXPECT_EQ(errno, 0);
}

/// A copy on the heap, so that a sanitizer finds an access behind its end.
std::unique_ptr<char[]> ExactCopy(const std::string& text)
{
    auto copy = std::make_unique<char[]>(text.size() + 1);
    std::copy(text.c_str(), text.c_str() + text.size() + 1, copy.get());
    return copy;
}

int ConvertBytes(const char* from, const char* to, std::string in, char* out, int outBytes)
{
    return StringConvert(from, to, in.data(), static_cast<int>(in.size()), out, outBytes);
}

} // namespace

TEST(StringConvertTest, ConvertsAndReturnsTheBytesWritten)
{
    char out[8];
    std::fill(std::begin(out), std::end(out), 'x');
    EXPECT_EQ(ConvertBytes("GB2312", "UTF-8", kChineseGb2312, out, sizeof(out)), 6);
    EXPECT_EQ(std::string(out, sizeof(out)), std::string(kChineseUtf8) + '\0' + '\0');
}

TEST(StringConvertTest, ANullPointerGivesZero)
{
    char text[] = "a";
    char out[] = "x";
    EXPECT_EQ(StringConvert(nullptr, "UTF-8", text, 1, out, 1), 0);
    EXPECT_EQ(StringConvert("UTF-8", nullptr, text, 1, out, 1), 0);
    EXPECT_EQ(StringConvert("UTF-8", "UTF-8", nullptr, 1, out, 1), 0);
    EXPECT_EQ(StringConvert("UTF-8", "UTF-8", text, 1, nullptr, 1), 0);
    EXPECT_STREQ(out, "x");
}

TEST(StringConvertTest, ANegativeSizeGivesZeroAndTouchesNothing)
{
    char text[] = "a";
    char out[] = "x";
    EXPECT_EQ(StringConvert("UTF-8", "UTF-8", text, -1, out, 1), 0);
    EXPECT_EQ(StringConvert("UTF-8", "UTF-8", text, 1, out, -1), 0);
    EXPECT_STREQ(out, "x");
}

TEST(StringConvertTest, AnUnknownEncodingGivesZeroWithoutAMessage)
{
    char out[] = "x";
    const std::string output = ErrorOutputOf([&] { EXPECT_EQ(ConvertBytes("no-such", "UTF-8", "a", out, 1), 0); });
    EXPECT_EQ(output, "");
    EXPECT_STREQ(out, "x");
}

TEST(StringConvertTest, AFailureKeepsWhatWasConvertedSoFar)
{
    char out[8];
    ExpectConversionFails(
        [&]
        {
            return ConvertBytes("UTF-8", "ascii",
                                "ab\xC3\xA9"
                                "cd",
                                out, sizeof(out));
        });
    EXPECT_STREQ(out, "ab");
}

TEST(StringConvertTest, ATruncatedSequenceFails)
{
    char out[8];
    ExpectConversionFails([&] { return ConvertBytes("UTF-8", "UTF-32LE", "a\xE4\xB8", out, sizeof(out)); });
    EXPECT_EQ(std::string(out, 8), std::string("a\0\0\0\0\0\0\0", 8));
}

TEST(StringConvertTest, AResultThatDoesNotFitFails)
{
    char out[2];
    ExpectConversionFails([&] { return ConvertBytes("UTF-8", "UTF-8", "abc", out, sizeof(out)); });
    EXPECT_EQ(std::string(out, 2), "ab");
    ExpectConversionFails([&] { return ConvertBytes("UTF-8", "UTF-8", "abc", out, 0); });
}

TEST(ConvertTest, AnEmptyUtf8TextStoresATerminatorAndReturnsOne)
{
    wchar_t buf[8];
    std::fill(std::begin(buf), std::end(buf), L'x');
    EXPECT_EQ(ConvertUtf8ToUnicode("", buf, 8), 1);
    EXPECT_EQ(buf[0], L'\0');
}

TEST(ConvertTest, EveryConversionOfAnEmptyTextReturnsOne)
{
    char narrow[2] = "x";
    wchar_t wide[2] = L"x";
    unsigned short units[2] = {'x', 0};
    const unsigned short none[] = {0};

    EXPECT_EQ(ConvertUnicodeToUtf8(L"", narrow, 2), 1);
    EXPECT_STREQ(narrow, "");
    EXPECT_EQ(ConvertAnsiToUnicode("", wide, 2), 1);
    EXPECT_STREQ(wide, L"");
    EXPECT_EQ(ConvertAnsiToUnicode16("", units, 2), 1);
    EXPECT_EQ(units[0], 0);
    EXPECT_EQ(ConvertUnicodeToUnicode16(L"", units, 2), 1);
    EXPECT_EQ(ConvertUtf8ToAnsi("", narrow, 2), 1);
    EXPECT_EQ(ConvertAnsiToUtf8("", narrow, 2), 1);
    EXPECT_EQ(ConvertUnicodeToAnsi(L"", narrow, 2), 1);
    EXPECT_EQ(ConvertUnicode16ToAnsi(none, narrow, 2), 1);
    EXPECT_EQ(ConvertUtf8ToUnicode16("", units, 2), 1);
    EXPECT_EQ(ConvertUnicode16ToUtf8(none, narrow, 2), 1);
    EXPECT_EQ(ConvertUnicode16ToUnicode(none, wide, 2), 1);
    EXPECT_EQ(ConvertUtf8ToUnicode("", nullptr, 0), 1);
}

TEST(ConvertTest, AnEmptyTextIntoNoRoomWritesNothing)
{
    char buf[] = "x";
    EXPECT_EQ(ConvertAnsiToUtf8("", buf, 0), 1);
    EXPECT_STREQ(buf, "x");
}

TEST(ConvertTest, ABufferFilledExactlyIsNotTerminated)
{
    wchar_t buf[] = L"xxx";
    EXPECT_EQ(ConvertUtf8ToUnicode("ab", buf, 2), 2);
    EXPECT_EQ(std::wstring(buf, 3), L"abx");
}

TEST(ConvertTest, AnsiToUtf8OfAByteAbove0x7FFailsWithAMessage)
{
    char buf[16];
    ExpectConversionFails([&] { return ConvertAnsiToUtf8(kChineseGb2312, buf, sizeof(buf)); });
}

TEST(ConvertTest, NullGivesZero)
{
    wchar_t wide[2];
    char narrow[2];
    unsigned short units[2];
    EXPECT_EQ(ConvertUtf8ToUnicode(nullptr, wide, 2), 0);
    EXPECT_EQ(ConvertUnicode16ToUtf8(nullptr, narrow, 2), 0);
    EXPECT_EQ(ConvertUnicodeToUnicode16(nullptr, units, 2), 0);
    EXPECT_EQ(ConvertUtf8ToUnicode("a", nullptr, 2), 0);
}

TEST(ConvertTest, ANegativeSizeGivesZero)
{
    wchar_t buf[] = L"x";
    EXPECT_EQ(ConvertUtf8ToUnicode("a", buf, -1), 0);
    EXPECT_STREQ(buf, L"x");
}

TEST(ConvertTest, Utf8AndUnicodeConvertBothWays)
{
    wchar_t wide[8];
    EXPECT_EQ(ConvertUtf8ToUnicode(kChineseUtf8, wide, 8), 2);
    EXPECT_STREQ(wide, kChineseWide);
    char narrow[16];
    EXPECT_EQ(ConvertUnicodeToUtf8(wide, narrow, sizeof(narrow)), 6);
    EXPECT_STREQ(narrow, kChineseUtf8);
    EXPECT_EQ(ConvertUtf8ToUnicode("\xF0\x9F\x98\x80", wide, 8), 1);
    EXPECT_STREQ(wide, L"\x1F600");
}

TEST(ConvertTest, InvalidUtf8Fails)
{
    wchar_t wide[8];
    for (const char* text : {"\xFF", "\x80", "\xC0\x80", "a\xE4\xB8", "\xED\xA0\x80"})
    {
        ExpectConversionFails([&] { return ConvertUtf8ToUnicode(text, wide, 8); });
    }
}

TEST(ConvertTest, AnsiIsWrittenAsGb2312FromUtf8AndReadAsGb2312IntoUnicode)
{
    char ansi[16];
    EXPECT_EQ(ConvertUtf8ToAnsi(kChineseUtf8, ansi, sizeof(ansi)), 4);
    EXPECT_STREQ(ansi, kChineseGb2312);
    wchar_t wide[8];
    EXPECT_EQ(ConvertAnsiToUnicode(ansi, wide, 8), 2);
    EXPECT_STREQ(wide, kChineseWide);
}

TEST(ConvertTest, AnsiIsWrittenAsAsciiFromUnicode)
{
    char ansi[16];
    EXPECT_EQ(ConvertUnicodeToAnsi(L"ab", ansi, sizeof(ansi)), 2);
    EXPECT_STREQ(ansi, "ab");
    ExpectConversionFails([&] { return ConvertUnicodeToAnsi(kChineseWide, ansi, sizeof(ansi)); });
}

TEST(ConvertTest, SixteenBitTextFromAnsiAndUtf8BeginsWithAByteOrderMark)
{
    unsigned short units[8];
    EXPECT_EQ(ConvertAnsiToUnicode16("ab", units, 8), 3);
    EXPECT_EQ(std::vector<unsigned short>(units, units + 4), (std::vector<unsigned short>{0xFEFF, 'a', 'b', 0}));
    EXPECT_EQ(ConvertUtf8ToUnicode16(kChineseUtf8, units, 8), 3);
    EXPECT_EQ(std::vector<unsigned short>(units, units + 4), (std::vector<unsigned short>{0xFEFF, 0x4E2D, 0x6587, 0}));
}

TEST(ConvertTest, SixteenBitTextFromUnicodeHasTheByteOrderMarkRemoved)
{
    unsigned short units[8];
    EXPECT_EQ(ConvertUnicodeToUnicode16(kChineseWide, units, 8), 2);
    EXPECT_EQ(std::vector<unsigned short>(units, units + 4), (std::vector<unsigned short>{0x4E2D, 0x6587, 0, 0}));

    EXPECT_EQ(ConvertUnicodeToUnicode16(kChineseWide, units, 3), 2) << "room for the mark and two units";
    EXPECT_EQ(units[2], 0);
    ExpectConversionFails([&] { return ConvertUnicodeToUnicode16(kChineseWide, units, 2); });
}

TEST(ConvertTest, SixteenBitTextIsReadWithAndWithoutAByteOrderMark)
{
    const std::vector<std::vector<unsigned short>> sources = {{'a', 'b', 0}, {0xFEFF, 'a', 'b', 0}};
    for (const std::vector<unsigned short>& source : sources)
    {
        char narrow[8];
        wchar_t wide[8];
        EXPECT_EQ(ConvertUnicode16ToAnsi(source.data(), narrow, sizeof(narrow)), 2);
        EXPECT_STREQ(narrow, "ab");
        EXPECT_EQ(ConvertUnicode16ToUtf8(source.data(), narrow, sizeof(narrow)), 2);
        EXPECT_STREQ(narrow, "ab");
        EXPECT_EQ(ConvertUnicode16ToUnicode(source.data(), wide, 8), 2);
        EXPECT_STREQ(wide, L"ab");
    }
}

TEST(CaseTest, ChangesEveryAsciiLetterAndNothingElse)
{
    char text[] = "aZ09{z}\xC3\xA9";
    EXPECT_EQ(_strupr(text), text);
    EXPECT_STREQ(text, "AZ09{Z}\xC3\xA9");
    EXPECT_EQ(_strlwr(text), text);
    EXPECT_STREQ(text, "az09{z}\xC3\xA9");
}

TEST(CaseTest, ChangesWideAsciiText)
{
    wchar_t text[] = L"aZ09{z}";
    EXPECT_EQ(_wcsupr(text), text);
    EXPECT_STREQ(text, L"AZ09{Z}");
    EXPECT_EQ(_wcslwr(text), text);
    EXPECT_STREQ(text, L"az09{z}");
    wchar_t empty[] = L"";
    EXPECT_STREQ(_wcsupr(empty), L"");
}

TEST(CaseTest, OnlyAsciiOfAWideTextSurvives)
{
    wchar_t text[] = L"ab\x4E2D"
                     L"cd";
    const std::string output = ErrorOutputOf([&] { _wcsupr(text); });
    EXPECT_STREQ(text, L"AB");
    EXPECT_EQ(output.rfind("iconv failed", 0), 0U);
}

TEST(CaseTest, LongWideTextIsChangedWhole)
{
    std::wstring text(100000, L'a');
    _wcsupr(text.data());
    EXPECT_EQ(text, std::wstring(100000, L'A'));
}

TEST(CaseTest, NullGivesNull)
{
    EXPECT_EQ(_strupr(nullptr), nullptr);
    EXPECT_EQ(_strlwr(nullptr), nullptr);
    EXPECT_EQ(_wcsupr(nullptr), nullptr);
    EXPECT_EQ(_wcslwr(nullptr), nullptr);
}

TEST(ReplaceTest, ReplacesEveryOccurrence)
{
    char text[] = "a.b.c";
    EXPECT_EQ(strreplace(text, '.', '-'), text);
    EXPECT_STREQ(text, "a-b-c");
    wchar_t wide[] = L"a.b.c";
    EXPECT_EQ(wcsreplace(wide, L'.', L'\x4E2D'), wide);
    EXPECT_STREQ(wide, L"a\x4E2D"
                       L"b\x4E2D"
                       L"c");
}

TEST(ReplaceTest, TheTerminatorIsNotReplaced)
{
    char text[] = "ab";
    strreplace(text, '\0', 'x');
    EXPECT_STREQ(text, "ab");
}

TEST(ReplaceTest, NullGivesNull)
{
    EXPECT_EQ(strreplace(nullptr, 'a', 'b'), nullptr);
    EXPECT_EQ(wcsreplace(nullptr, L'a', L'b'), nullptr);
}

TEST(LengthTest, U16strlenCountsUnits)
{
    const unsigned short text[] = {0xD83D, 0xDE00, 'a', 0};
    EXPECT_EQ(u16strlen(text), 3);
    EXPECT_EQ(u16strlen(text + 3), 0);
    EXPECT_EQ(u16strlen(nullptr), 0);
}

TEST(LengthTest, TheTableGivesSequenceLengthsByFirstByte)
{
    const std::vector<std::pair<int, int>> ranges = {{0xC0, 1}, {0xE0, 2}, {0xF0, 3}, {0xF8, 4},
                                                     {0xFC, 5}, {0xFE, 6}, {0x100, 1}};
    int byte = 0;
    for (const auto& [end, length] : ranges)
    {
        for (; byte < end; ++byte)
        {
            EXPECT_EQ(utf8_look_for_table[static_cast<size_t>(byte)], length) << byte;
        }
    }
}

TEST(LengthTest, Utf8strlenOfATwoByteSequenceBehindALetterIsTwo)
{
    EXPECT_EQ(utf8strlen("h\xC3\xA9"), 2);
}

TEST(LengthTest, Utf8strlenCountsCharacters)
{
    EXPECT_EQ(utf8strlen(""), 0);
    EXPECT_EQ(utf8strlen(nullptr), 0);
    EXPECT_EQ(utf8strlen("abc"), 3);
    EXPECT_EQ(utf8strlen(kChineseUtf8), 2);
    EXPECT_EQ(utf8strlen("\xF0\x9F\x98\x80!"), 2);
    EXPECT_EQ(utf8strlen("\x80\xFF"), 2);
}

TEST(LengthTest, Utf8strlenDoesNotReadPastTheEndOfATruncatedSequence)
{
    EXPECT_EQ(utf8strlen(ExactCopy("\xE4").get()), 1);
    EXPECT_EQ(utf8strlen(ExactCopy("a\xFC\x80").get()), 2);
}

TEST(GuidTest, PrintingNeedsRoomFor39Characters)
{
    char text[39];
    EXPECT_EQ(StringFromGUID2(kGuid, text, 38), 0);
    EXPECT_EQ(StringFromGUID2(kGuid, text, 39), 38);
    EXPECT_STREQ(text, kGuidText);

    wchar_t wide[39];
    EXPECT_EQ(StringFromGUID2(kGuid, wide, 38), 0);
    EXPECT_EQ(StringFromGUID2(kGuid, wide, 39), 38);
    EXPECT_STREQ(wide, kGuidWideText);
}

TEST(GuidTest, PrintingIntoNullOrANegativeSizeGivesZero)
{
    char text[39];
    EXPECT_EQ(StringFromGUID2(kGuid, static_cast<char*>(nullptr), 39), 0);
    EXPECT_EQ(StringFromGUID2(kGuid, static_cast<wchar_t*>(nullptr), 39), 0);
    EXPECT_EQ(StringFromGUID2(kGuid, text, -1), 0);
}

TEST(GuidTest, PrintingKeepsLeadingZeros)
{
    char text[39];
    EXPECT_EQ(StringFromGUID2(_GUID{1, 2, 3, {4, 5, 6, 7, 8, 9, 10, 11}}, text, 39), 38);
    EXPECT_STREQ(text, "{00000001-0002-0003-0405-060708090a0b}");
}

TEST(GuidTest, ReadingUpperCaseSucceedsAndLeavesTheTextInLowerCase)
{
    wchar_t text[] = L"{39E7FC29-FDDC-4156-B873-6EF1A4333F23}";
    _GUID guid{};
    EXPECT_EQ(GUIDFromString(text, &guid), 0);
    EXPECT_EQ(guid, kGuid);
    EXPECT_STREQ(text, kGuidWideText);
}

TEST(GuidTest, ReadingNarrowTextLeavesItAsItIs)
{
    const std::string text = kGuidUpperText;
    _GUID guid{};
    EXPECT_EQ(GUIDFromString(text.c_str(), &guid), 0);
    EXPECT_EQ(guid, kGuid);
    EXPECT_EQ(text, kGuidUpperText);
}

TEST(GuidTest, ReadingNullIsAnInvalidArgument)
{
    wchar_t wide[] = L"";
    _GUID guid{};
    const auto invalid = static_cast<HRESULT>(0x80070057);
    EXPECT_EQ(GUIDFromString(static_cast<wchar_t*>(nullptr), &guid), invalid);
    EXPECT_EQ(GUIDFromString(wide, nullptr), invalid);
    EXPECT_EQ(GUIDFromString(static_cast<const char*>(nullptr), &guid), invalid);
    EXPECT_EQ(GUIDFromString(kGuidText, nullptr), invalid);
}

TEST(GuidTest, ReadingATextOfAnotherLengthGivesOneAndLeavesTheOutputAlone)
{
    _GUID guid = kGuid;
    EXPECT_EQ(GUIDFromString("", &guid), 1);
    EXPECT_EQ(GUIDFromString("39E7FC29-FDDC-4156-B873-6EF1A4333F23", &guid), 1);
    EXPECT_EQ(GUIDFromString(std::string(63, 'a').c_str(), &guid), 1);
    EXPECT_EQ(GUIDFromString(std::string(64, 'a').c_str(), &guid), 1);
    wchar_t wide[] = L"{39E7}";
    EXPECT_EQ(GUIDFromString(wide, &guid), 1);
    EXPECT_STREQ(wide, L"{39E7}");
    EXPECT_EQ(guid, kGuid);
}

TEST(GuidTest, ReadingATextThatCannotBeConvertedIsOutOfMemory)
{
    _GUID guid = kGuid;
    for (const std::string& text : {std::string("\xFF\xFF"), std::string(65, 'a')})
    {
        HRESULT result = 0;
        ErrorOutputOf([&] { result = GUIDFromString(text.c_str(), &guid); });
        EXPECT_EQ(result, static_cast<HRESULT>(0x8007000E));
    }
    EXPECT_EQ(guid, kGuid);
}

TEST(GuidTest, WhatCannotBeReadOfATextOfTheRightLengthIsZero)
{
    _GUID guid = kGuid;
    EXPECT_EQ(GUIDFromString("{39e7fc29-fddc-zzzz-b873-6ef1a4333f23}", &guid), 0);
    EXPECT_EQ(guid, (_GUID{0x39E7FC29, 0xFDDC, 0, {}}));
    EXPECT_EQ(GUIDFromString(std::string(38, '?').c_str(), &guid), 0);
    EXPECT_EQ(guid, _GUID{});
}

TEST(GuidTest, ReadingWhatWasPrintedGivesTheSameIdentifier)
{
    _GUID guid{0xFFFFFFFF, 0xFFFF, 0xFFFF, {}};
    std::iota(std::begin(guid.Data4), std::end(guid.Data4), uint8_t{0xF8});
    wchar_t text[39];
    EXPECT_EQ(StringFromGUID2(guid, text, 39), 38);
    _GUID read{};
    EXPECT_EQ(GUIDFromString(text, &read), 0);
    EXPECT_EQ(read, guid);
}
