#include "host/shell/ShellWords.h"
#include "onlinehost/Error.h"

#include <gtest/gtest.h>

using host::QuoteShellWord;
using host::ShellLineStart;
using host::SplitShellLine;
using host::SplitShellLineStart;
using Words = std::vector<std::string>;

TEST(ShellWords, FallApartAtSpacesAndTabs)
{
    EXPECT_EQ(SplitShellLine("  invite 7\t\t8 "), (Words{"invite", "7", "8"}));
    EXPECT_EQ(SplitShellLine(""), Words{});
    EXPECT_EQ(SplitShellLine(" \t "), Words{});
}

TEST(ShellWords, ACommentBeginsAtTheBeginningOfAWordOnly)
{
    EXPECT_EQ(SplitShellLine("# all of it"), Words{});
    EXPECT_EQ(SplitShellLine("who # the rest \"of it"), Words{"who"});
    EXPECT_EQ(SplitShellLine("custom a#b '#c' \\#d"), (Words{"custom", "a#b", "#c", "#d"}));
}

TEST(ShellWords, QuotesKeepSpaces)
{
    EXPECT_EQ(SplitShellLine(R"(custom "in a  meeting" 'a "b" \n' x" "y)"),
              (Words{"custom", "in a  meeting", R"(a "b" \n)", "x y"}));
    EXPECT_EQ(SplitShellLine(R"(custom "" '')"), (Words{"custom", "", ""}));
}

TEST(ShellWords, DoubleQuotesTakeEscapes)
{
    EXPECT_EQ(SplitShellLine(R"("a\nb\tc\"d\\e\x1b\xFf")"), Words{"a\nb\tc\"d\\e\x1b\xff"});
    EXPECT_EQ(SplitShellLine(R"("\xg0 \x1")"), Words{"xg0 x1"}) << "not two hexadecimal digits";
}

TEST(ShellWords, ABackslashOutsideQuotesTakesTheNextCharacterAsItIs)
{
    EXPECT_EQ(SplitShellLine(R"(a\ b \"c \n)"), (Words{"a b", "\"c", "n"}));
}

TEST(ShellWords, ALineThatEndsTooEarlyIsRefused)
{
    for (const char* line : {"custom \"a", "custom 'a", "custom a\\", "custom \"a\\", "'"})
    {
        EXPECT_THROW(SplitShellLine(line), onlinehost::Error) << line;
    }
}

TEST(ShellWords, ANulByteIsRefusedHoweverItIsWritten)
{
    EXPECT_THROW(SplitShellLine(std::string("custom a\0b", 10)), onlinehost::Error);
    EXPECT_THROW(SplitShellLine(R"(custom "\x00")"), onlinehost::Error);
}

TEST(ShellWords, OtherBytesPass)
{
    EXPECT_EQ(SplitShellLine("custom \x01\x80\xff"), (Words{"custom", "\x01\x80\xff"}));
}

TEST(ShellWords, TheStartOfALineEndsInTheWordAtTheCursor)
{
    const ShellLineStart start = SplitShellLineStart("invite 7 8");
    EXPECT_EQ(start.words, (Words{"invite", "7"}));
    EXPECT_EQ(start.last, "8");
    EXPECT_TRUE(start.canComplete);

    const ShellLineStart between = SplitShellLineStart("invite 7 ");
    EXPECT_EQ(between.words, (Words{"invite", "7"}));
    EXPECT_EQ(between.last, "");
    EXPECT_TRUE(between.canComplete);
}

TEST(ShellWords, NothingIsCompletedInQuotesAndComments)
{
    EXPECT_FALSE(SplitShellLineStart("custom \"a").canComplete);
    EXPECT_FALSE(SplitShellLineStart("custom 'a b").canComplete);
    EXPECT_FALSE(SplitShellLineStart("custom \\").canComplete);
    EXPECT_FALSE(SplitShellLineStart("who # lo").canComplete);
}

TEST(ShellWords, AQuotedWordSplitsIntoTheSameWord)
{
    for (const std::string word : {"plain", "", "a b", "it's", "#1", "a\"b\\c", "\t"})
    {
        EXPECT_EQ(SplitShellLine(QuoteShellWord(word)), Words{word}) << word;
    }
    EXPECT_EQ(QuoteShellWord("plain"), "plain");
}
