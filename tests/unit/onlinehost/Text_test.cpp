#include "onlinehost/Text.h"

#include <gtest/gtest.h>

using onlinehost::CutLength;
using onlinehost::Printable;
using onlinehost::RepairUtf8;
using onlinehost::ToUtf8;

TEST(Text, CutsBetweenCharacters)
{
    EXPECT_EQ(CutLength("abc", 3), 3u);
    EXPECT_EQ(CutLength("abcd", 3), 3u);
    EXPECT_EQ(CutLength("ab\u20ac", 5), 5u);
    EXPECT_EQ(CutLength("ab\u20ac", 4), 2u);
    EXPECT_EQ(CutLength("ab\u20ac", 3), 2u);
    EXPECT_EQ(CutLength("ab\u20ac", 2), 2u);
    EXPECT_EQ(CutLength("\U0001F600\U0001F600", 7), 4u);
    EXPECT_EQ(CutLength("\u20ac", 0), 0u);
}

TEST(Text, CutsTextThatIsNotUtf8Anywhere)
{
    EXPECT_EQ(CutLength("\x80\x80\x80\x80\x80\x80\x80\x80", 6), 6u);
    EXPECT_EQ(CutLength("\x80\x80", 1), 1u);
}

TEST(Text, WideTextBecomesUtf8)
{
    EXPECT_EQ(ToUtf8(L"a\u00e9\u20ac\U0001F600"), "a\u00e9\u20ac\U0001F600");
    const wchar_t bad[] = {L'a', wchar_t{0xD800}, wchar_t{0x110000}, wchar_t{-1}, L'b', 0};
    EXPECT_EQ(ToUtf8(bad), "a\uFFFD\uFFFD\uFFFDb");
}

TEST(Text, PrintableTextHasNoControlCharactersAndIsUtf8)
{
    EXPECT_EQ(Printable("plain \u00e9\u20ac\U0001F600"), "plain \u00e9\u20ac\U0001F600");
    EXPECT_EQ(Printable("\x1b[31m\n\x7f"), "\\x1B[31m\\x0A\\x7F");
    EXPECT_EQ(Printable("\u009b"), "\\xC2\\x9B");
    EXPECT_EQ(Printable("a\xff\xc3"), "a\\xFF\\xC3");
    EXPECT_EQ(Printable("\xc0\xaf"), "\\xC0\\xAF") << "an overlong form";
    EXPECT_EQ(Printable("\xed\xa0\x80"), "\\xED\\xA0\\x80") << "a surrogate";
    EXPECT_EQ(Printable("\xf4\x90\x80\x80"), "\\xF4\\x90\\x80\\x80") << "above the last character";
    EXPECT_EQ(Printable(std::string_view("a\0b", 3)), "a\\x00b");
}

TEST(Text, RepairedTextIsUtf8AndKeepsItsControlCharacters)
{
    EXPECT_EQ(RepairUtf8("a\n\u00e9\U0001F600"), "a\n\u00e9\U0001F600");
    EXPECT_EQ(RepairUtf8("a\xff\xc3"), "a\uFFFD\uFFFD");
    EXPECT_EQ(RepairUtf8("\xed\xa0\x80z"), "\uFFFD\uFFFD\uFFFDz");
}

TEST(Text, GuidsHaveBracesAndCapitals)
{
    EXPECT_EQ(onlinehost::GuidText({0x4022BD11, 0xA92F, 0x4F6D, {0x90, 0x31, 0xEE, 0xB9, 0x2E, 0x99, 0x88, 0x06}}),
              "{4022BD11-A92F-4F6D-9031-EEB92E998806}");
}
