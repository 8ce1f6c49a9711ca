#include "commonutil/StringUtil.h"

#include <algorithm>
#include <cstdlib>
#include <ctime>
#include <gtest/gtest.h>
#include <set>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

using namespace commonutil;

namespace
{

constexpr _GUID kGuid = {0x39E7FC29, 0xFDDC, 0x4156, {0xB8, 0x73, 0x6E, 0xF1, 0xA4, 0x33, 0x3F, 0x23}};
constexpr char kGuidPieces[] = "39e7fc29,fddc,4156,b8,73,6e,f1,a4,33,3f,23";

constexpr char kChineseUtf8[] = "\xE4\xB8\xAD\xE6\x96\x87";
constexpr char kChineseGb2312[] = "\xD6\xD0\xCE\xC4";

using Pieces = std::vector<std::string>;

_GUID ReadGuid(const std::string& text)
{
    _GUID guid{};
    String2GUID(text, &guid);
    return guid;
}

Pieces Split(const std::string& text, const std::string& separator)
{
    Pieces pieces = {"old"};
    const unsigned count = SplitString(text, separator, &pieces);
    EXPECT_EQ(count, pieces.size());
    return pieces;
}

/// The number that ReadUserId makes of a text, or -1 when it refuses it and leaves its output alone.
int64_t UserId(const char* text)
{
    unsigned id = 4711;
    if (ReadUserId(text, &id))
    {
        return id;
    }
    EXPECT_EQ(id, 4711U);
    return -1;
}

} // namespace

TEST(TimeTextTest, TheCurrentTimeIsTheEmptyText)
{
    EXPECT_EQ(AStringFromCurrentTime(), "");
    EXPECT_EQ(AStringFromCurrentTime2(), "");
    EXPECT_EQ(WStringFromCurrentTime(), L"");
    EXPECT_EQ(WStringFromCurrentTime2(), L"");
    EXPECT_EQ(&AStringFromCurrentTime(), &AStringFromCurrentTime());
    EXPECT_NE(&AStringFromCurrentTime(), &AStringFromCurrentTime2());
}

TEST(RectTest, ARectangleShowsItsEdgesAndItsSize)
{
    EXPECT_EQ(AStringFromRect({10, 20, 110, 70}), "{l:10,t:20,r:110,b:70,w:100,h:50}");
    EXPECT_EQ(WStringFromRect({10, 20, 110, 70}), L"{l:10,t:20,r:110,b:70,w:100,h:50}");
    EXPECT_EQ(AStringFromRect({5, 5, 0, -1}), "{l:5,t:5,r:0,b:-1,w:-5,h:-6}");
}

TEST(RectTest, TheNextCallReplacesTheText)
{
    const std::string& first = AStringFromRect({1, 1, 1, 1});
    const std::string& second = AStringFromRect({2, 2, 2, 2});
    EXPECT_EQ(&first, &second);
    EXPECT_EQ(first, "{l:2,t:2,r:2,b:2,w:0,h:0}");
}

TEST(RectTest, AnOverlongTextIsCutAfter63Characters)
{
    const tagRECT rect = {INT32_MIN, INT32_MIN, INT32_MAX, INT32_MAX};
    EXPECT_EQ(AStringFromRect(rect), "{l:-2147483648,t:-2147483648,r:2147483647,b:2147483647,w:-1,h:-");
    EXPECT_EQ(WStringFromRect(rect), L"{l:-2147483648,t:-2147483648,r:2147483647,b:2147483647,w:-1,h:-");
}

TEST(ReplaceAllTest, InsertedTextIsNotReplacedAgain)
{
    std::string text = "aaa";
    EXPECT_EQ(ReplaceAll(&text, "a", "aa"), 3);
    EXPECT_EQ(text, "aaaaaa");
}

TEST(ReplaceAllTest, ReplacesFromLeftToRight)
{
    std::string text = "{aaa}";
    EXPECT_EQ(ReplaceAll(&text, "aa", "b"), 1);
    EXPECT_EQ(text, "{ba}");
    EXPECT_EQ(ReplaceAll(&text, "{", ""), 1);
    EXPECT_EQ(ReplaceAll(&text, "}", ""), 1);
    EXPECT_EQ(text, "ba");
}

TEST(ReplaceAllTest, NothingHappensWhereFromDoesNotOccur)
{
    std::string text = "abc";
    EXPECT_EQ(ReplaceAll(&text, "x", "y"), 0);
    EXPECT_EQ(ReplaceAll(&text, "", "y"), 0);
    EXPECT_EQ(ReplaceAll(&text, "abcd", "y"), 0);
    EXPECT_EQ(text, "abc");
    EXPECT_EQ(ReplaceAll(nullptr, "a", "b"), 0);
}

TEST(ReplaceAllTest, TheTextMayBeItsOwnPattern)
{
    std::string text = "abc";
    EXPECT_EQ(ReplaceAll(&text, text, "x"), 1);
    EXPECT_EQ(text, "x");
    EXPECT_EQ(ReplaceAll(&text, "x", text), 1);
    EXPECT_EQ(text, "x");
}

TEST(ReplaceStringTest, ReplacesOnACopy)
{
    const char text[] = "a.b.c";
    EXPECT_EQ(ReplaceString(text, ".", ".."), "a..b..c");
    EXPECT_STREQ(text, "a.b.c");
    EXPECT_EQ(ReplaceString("aaa", "a", ""), "");
}

TEST(ReplaceStringTest, NullCountsAsTheEmptyText)
{
    EXPECT_EQ(ReplaceString(nullptr, "a", "b"), "");
    EXPECT_EQ(ReplaceString("abc", nullptr, "b"), "abc");
    EXPECT_EQ(ReplaceString("abc", "b", nullptr), "ac");
}

TEST(CreateGuidTest, NoByteIsEver0xFFAndIdentifiersDiffer)
{
    std::set<std::string> texts;
    for (int round = 0; round < 2000; ++round)
    {
        const _GUID guid = CreateGuid();
        const auto* bytes = reinterpret_cast<const unsigned char*>(&guid);
        EXPECT_EQ(std::count(bytes, bytes + sizeof(guid), 0xFF), 0);
        std::string text;
        GUID2String(guid, &text);
        texts.insert(text);
    }
    EXPECT_EQ(texts.size(), 2000U);
}

TEST(CreateGuidTest, TheGeneratorIsSeededOnlyByTheFirstCall)
{
    CreateGuid();
    std::srand(1);
    const _GUID first = CreateGuid();
    std::srand(1);
    EXPECT_EQ(CreateGuid(), first);
}

TEST(CreateGuidTest, ThreadsMayCreateAtTheSameTime)
{
    std::thread other([] { CreateGuid(); });
    CreateGuid();
    other.join();
}

TEST(GuidTextTest, AnIdentifierIsWrittenInBraces)
{
    std::string text;
    GUID2String(kGuid, &text);
    EXPECT_EQ(text, "{39e7fc29-fddc-4156-b873-6ef1a4333f23}");
    std::wstring wide;
    GUID2String(kGuid, &wide);
    EXPECT_EQ(wide, L"{39e7fc29-fddc-4156-b873-6ef1a4333f23}");
}

TEST(GuidTextTest, ElevenPiecesFillTheIdentifier)
{
    EXPECT_EQ(ReadGuid(kGuidPieces), kGuid);
}

TEST(GuidTextTest, AnotherNumberOfPiecesLeavesTheOutputUnchanged)
{
    for (const char* text : {"", "39e7fc29,fddc,4156,b8,73,6e,f1,a4,33,3f", "1,2,3,4,5,6,7,8,9,10,11,12",
                             "{39e7fc29-fddc-4156-b873-6ef1a4333f23}"})
    {
        _GUID guid = kGuid;
        String2GUID(text, &guid);
        EXPECT_EQ(guid, kGuid) << text;
    }
}

TEST(GuidTextTest, PiecesAreCutToTheirFields)
{
    EXPECT_EQ(ReadGuid("123456789,12345,12345,101,0xFF,3,4,5,6,7,8"),
              (_GUID{0x23456789, 0x2345, 0x2345, {1, 0xFF, 3, 4, 5, 6, 7, 8}}));
}

TEST(GuidTextTest, APieceThatIsNoNumberReadsAsZero)
{
    EXPECT_EQ(ReadGuid("x,,g,1,2,3,4,5,6,7,8"), (_GUID{0, 0, 0, {1, 2, 3, 4, 5, 6, 7, 8}}));
}

TEST(NumberTest, ReadsTheLeadingNumber)
{
    EXPECT_EQ(AStringToInt("12abc"), 12);
    EXPECT_EQ(ToInt("12abc"), 12);
    EXPECT_EQ(WStringToInt(L"12abc"), 12);
    EXPECT_EQ(AStringToInt(" -7"), -7);
    EXPECT_EQ(AStringToInt("2147483647"), 2147483647);
}

TEST(NumberTest, ATextWithoutANumberRaisesInvalidArgument)
{
    EXPECT_THROW(AStringToInt("abc"), std::invalid_argument);
    EXPECT_THROW(ToInt(""), std::invalid_argument);
    EXPECT_THROW(WStringToInt(L"abc"), std::invalid_argument);
    try
    {
        AStringToInt("abc");
    }
    catch (const std::invalid_argument& error)
    {
        EXPECT_STREQ(error.what(), "stoi");
    }
}

TEST(NumberTest, ANumberThatDoesNotFitRaisesOutOfRange)
{
    EXPECT_THROW(AStringToInt("2147483648"), std::out_of_range);
    EXPECT_THROW(ToInt("-2147483649"), std::out_of_range);
    EXPECT_THROW(WStringToInt(L"99999999999999999999"), std::out_of_range);
}

TEST(NumberTest, WritesDecimalText)
{
    std::string text;
    ToAString(-12, &text);
    EXPECT_EQ(text, "-12");
    ToAString(4294967295U, &text);
    EXPECT_EQ(text, "4294967295");
    ToString(-2147483647 - 1, &text);
    EXPECT_EQ(text, "-2147483648");
    ToString(0U, &text);
    EXPECT_EQ(text, "0");
    std::wstring wide;
    ToWString(-12, &wide);
    EXPECT_EQ(wide, L"-12");
    ToWString(4294967295U, &wide);
    EXPECT_EQ(wide, L"4294967295");
    EXPECT_EQ(ToAString(-12), "-12");
    EXPECT_EQ(ToAString(4294967295U), "4294967295");
}

TEST(UserIdTest, ReadsTheLeadingDigits)
{
    EXPECT_EQ(UserId("0"), 0);
    EXPECT_EQ(UserId("42"), 42);
    EXPECT_EQ(UserId("0042"), 42);
    EXPECT_EQ(UserId("42abc"), 42);
    EXPECT_EQ(UserId("2147483647"), 2147483647);
}

TEST(UserIdTest, RefusesWhatDoesNotBeginWithADigit)
{
    for (const char* text : {static_cast<const char*>(nullptr), "", "abc", "-1", "+1", " 1", "\xEF\xBC\x91"})
    {
        EXPECT_EQ(UserId(text), -1);
    }
}

TEST(UserIdTest, RefusesANumberThatAStringToIntCannotHold)
{
    EXPECT_EQ(UserId("2147483648"), -1);
    EXPECT_EQ(UserId("4294967295"), -1);
    EXPECT_EQ(UserId(std::string(1000, '9').c_str()), -1);
}

TEST(UserIdTest, AMalformedTextMayStandForUserZero)
{
    EXPECT_EQ(UserIdOrZero("42abc"), 42U);
    EXPECT_EQ(UserIdOrZero(nullptr), 0U);
    EXPECT_EQ(UserIdOrZero("abc"), 0U);
    EXPECT_EQ(UserIdOrZero("2147483648"), 0U);
}

TEST(TextOrEmptyTest, NullReadsAsTheEmptyText)
{
    const char text[] = "abc";
    EXPECT_EQ(TextOrEmpty(text), text);
    EXPECT_STREQ(TextOrEmpty(nullptr), "");
}

TEST(SplitStringTest, KeepsEmptyPieces)
{
    Pieces pieces;
    EXPECT_EQ(SplitString("a,,b", ",", &pieces), 3U);
    EXPECT_EQ(pieces, (Pieces{"a", "", "b"}));
    EXPECT_EQ(Split(",a,", ","), (Pieces{"", "a", ""}));
    EXPECT_EQ(Split(",", ","), (Pieces{"", ""}));
}

TEST(SplitStringTest, ATextWithoutASeparatorIsOnePiece)
{
    EXPECT_EQ(Split("abc", ","), Pieces{"abc"});
    EXPECT_EQ(Split("abc", ""), Pieces{"abc"});
}

TEST(SplitStringTest, TheRestOfALongSeparatorStaysAtTheHeadOfTheNextPiece)
{
    EXPECT_EQ(Split("a::b", "::"), (Pieces{"a", ":b"}));
    EXPECT_EQ(Split("a:::b", "::"), (Pieces{"a", "", ":b"}));
    EXPECT_EQ(Split("a::", "::"), (Pieces{"a", ":"}));
}

TEST(SplitStringTest, AnEmptyTextOrANullOutputGivesZeroAndWritesNothing)
{
    Pieces pieces = {"old"};
    EXPECT_EQ(SplitString("", ",", &pieces), 0U);
    EXPECT_EQ(pieces, Pieces{"old"});
    EXPECT_EQ(SplitString("a,b", ",", nullptr), 0U);
}

TEST(SplitStringTest, TheTextMayBeOneOfTheOldPieces)
{
    Pieces pieces = {"a,b", ","};
    EXPECT_EQ(SplitString(pieces[0], pieces[1], &pieces), 2U);
    EXPECT_EQ(pieces, (Pieces{"a", "b"}));
}

TEST(VersionTest, AVersionIsTheNumbersBetweenItsDots)
{
    EXPECT_EQ(VersionToVector("5.12.0.3"), (std::vector<int>{5, 12, 0, 3}));
    EXPECT_EQ(VersionToVector(L"5.12.0.3"), (std::vector<int>{5, 12, 0, 3}));
    EXPECT_EQ(VersionToVector("7"), std::vector<int>{7});
    EXPECT_TRUE(VersionToVector("").empty());
    EXPECT_TRUE(VersionToVector(L"").empty());
}

TEST(VersionTest, APieceThatIsEmptyOrNotAllDigitsIsSkipped)
{
    EXPECT_EQ(VersionToVector("5.12b.-3..7."), (std::vector<int>{5, 7}));
    EXPECT_EQ(VersionToVector(L"5.12b.\xFF11.7"), (std::vector<int>{5, 7}));
    EXPECT_TRUE(VersionToVector("...").empty());
}

TEST(VersionTest, APieceThatNoIntCanHoldRaisesOutOfRange)
{
    EXPECT_THROW(VersionToVector("1.2147483648"), std::out_of_range);
    EXPECT_THROW(VersionToVector(L"1.2147483648"), std::out_of_range);
}

TEST(EncodingTest, Utf8AndUnicodeConvertBothWays)
{
    std::wstring wide;
    EXPECT_TRUE(Utf8ToUnicode(kChineseUtf8, &wide));
    EXPECT_EQ(wide, L"\x4E2D\x6587");
    std::string text;
    EXPECT_TRUE(UnicodeToUtf8(wide, &text));
    EXPECT_EQ(text, kChineseUtf8);
    EXPECT_TRUE(Unicode2String(L"\x1F600", &text));
    EXPECT_EQ(text, "\xF0\x9F\x98\x80");
}

TEST(EncodingTest, TheEmptyTextConvertsToTheEmptyText)
{
    std::wstring wide = L"old";
    EXPECT_TRUE(Utf8ToUnicode("", &wide));
    EXPECT_EQ(wide, L"");
    std::string text = "old";
    EXPECT_TRUE(UnicodeToUtf8(L"", &text));
    EXPECT_EQ(text, "");
    text = "old";
    EXPECT_TRUE(Unicode2String(nullptr, &text));
    EXPECT_EQ(text, "");
}

TEST(EncodingTest, ATextThatCannotBeConvertedGivesTheEmptyText)
{
    std::wstring wide = L"old";
    EXPECT_FALSE(Utf8ToUnicode("ab\xFF", &wide));
    EXPECT_EQ(wide, L"");
    std::string text = "old";
    EXPECT_FALSE(UnicodeToUtf8(std::wstring(1, static_cast<wchar_t>(0xD800)), &text));
    EXPECT_EQ(text, "");
}

TEST(EncodingTest, Utf8IsWrittenAsAscii)
{
    char ansi[8];
    EXPECT_EQ(Utf8String2AnsiString("abc", ansi, sizeof(ansi)), 3U);
    EXPECT_STREQ(ansi, "abc");
    EXPECT_EQ(Utf8String2AnsiString("abc", ansi, 0), 3U);
    EXPECT_EQ(Utf8String2AnsiString("abc", ansi, 4), 3U);
    EXPECT_EQ(Utf8String2AnsiString(kChineseUtf8, ansi, sizeof(ansi)), 0U);
    EXPECT_EQ(Utf8String2AnsiString("\xFF", ansi, sizeof(ansi)), 0U);
    EXPECT_STREQ(ansi, "abc");
}

TEST(EncodingTest, Gb2312IsReadIntoUtf8)
{
    char text[8] = "";
    EXPECT_EQ(AnsiString2Utf8String(kChineseGb2312, text, sizeof(text)), 6U);
    EXPECT_STREQ(text, kChineseUtf8);
    EXPECT_EQ(AnsiString2Utf8String(kChineseGb2312, text, 0), 6U);
    EXPECT_EQ(AnsiString2Utf8String(kChineseGb2312, text, 7), 6U);
    EXPECT_EQ(AnsiString2Utf8String("\xFF\xFF", text, sizeof(text)), 0U);
    EXPECT_STREQ(text, kChineseUtf8);
}

TEST(EncodingTest, ASourceOrAResultThatDoesNotFitWithItsTerminatorGivesZero)
{
    char text[] = "old";
    EXPECT_EQ(Utf8String2AnsiString("abc", text, 3), 0U) << "the source is too long";
    EXPECT_EQ(AnsiString2Utf8String(kChineseGb2312, text, 5), 0U) << "the result is longer than the source";
    EXPECT_EQ(AnsiString2Utf8String(kChineseGb2312, text, 6), 0U) << "no room for the terminator";
    EXPECT_STREQ(text, "old");
}

TEST(EncodingTest, TheEmptyTextCountsAsOne)
{
    char text[] = "old";
    EXPECT_EQ(Utf8String2AnsiString("", text, sizeof(text)), 1U);
    EXPECT_STREQ(text, "");
    EXPECT_EQ(AnsiString2Utf8String("", text, 0), 1U);
}

TEST(NullTest, NullPointersWriteNothingAndDoNotCrash)
{
    char text[] = "old";
    EXPECT_EQ(Utf8String2AnsiString(nullptr, text, 4), 0U);
    EXPECT_EQ(Utf8String2AnsiString("abc", nullptr, 4), 0U);
    EXPECT_EQ(AnsiString2Utf8String(nullptr, text, 4), 0U);
    EXPECT_EQ(AnsiString2Utf8String("abc", nullptr, 4), 0U);
    EXPECT_STREQ(text, "old");

    std::string* noText = nullptr;
    std::wstring* noWide = nullptr;
    ToAString(1, noText);
    ToAString(1U, noText);
    ToString(1, noText);
    ToString(1U, noText);
    ToWString(1, noWide);
    ToWString(1U, noWide);
    GUID2String(kGuid, noText);
    GUID2String(kGuid, noWide);
    String2GUID(kGuidPieces, nullptr);
    EXPECT_FALSE(Utf8ToUnicode("a", noWide));
    EXPECT_FALSE(UnicodeToUtf8(L"a", noText));
    EXPECT_FALSE(Unicode2String(L"a", noText));
    EXPECT_TRUE(ReadUserId("1", nullptr));
    EXPECT_FALSE(ReadUserId("x", nullptr));
}
