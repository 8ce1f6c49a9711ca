#include "tests/support/Screen.h"

#include <gtest/gtest.h>

using Lines = std::vector<std::string>;

TEST(Screen, OverwritesCharacters)
{
    Screen screen(3, 10);
    screen.Feed("hello\rj\r\nworld\x1b[3D\x1b[K");
    EXPECT_EQ(screen.Lines(), (Lines{"jello", "wo"}));
    EXPECT_EQ(screen.CursorColumn(), 2u);
}

TEST(Screen, MovesToAColumnOfTheLine)
{
    Screen screen(2, 8);
    screen.Feed("abcd\x1b[2GX\x1b[99GY\x1b[GZ");
    EXPECT_EQ(screen.Lines(), Lines{"ZXcd   Y"});
}

TEST(Screen, AFullLineGoesOnInTheNext)
{
    Screen screen(3, 4);
    screen.Feed("abcd");
    EXPECT_EQ(screen.Lines(), Lines{"abcd"});
    screen.Feed("ef\x1b[1Ax");
    EXPECT_EQ(screen.Lines(), (Lines{"abxd", "ef"}));
    EXPECT_EQ(screen.Text(), "abxdef\n");
}

TEST(Screen, KeepsWhatScrollsOut)
{
    Screen screen(2, 4);
    screen.Feed("1\r\n2\r\n3\x1b[H\x1b[J");
    EXPECT_EQ(screen.Lines(), Lines{"1"}) << "the two lines in sight are erased";
}

TEST(Screen, InsertsDeletesAndIgnoresColours)
{
    Screen screen(2, 8);
    screen.Feed("abcd\r\x1b[2P\x1b[1@\x1b[1;31mX\x1b[0m\x1b[?2004h");
    EXPECT_EQ(screen.Lines(), Lines{"Xcd"});
}

TEST(Screen, TakesCharactersOfSeveralBytesInPieces)
{
    Screen screen(2, 8);
    screen.Feed("a\xc3");
    screen.Feed("\xa4z");
    EXPECT_EQ(screen.Lines(), Lines{"a\xc3\xa4z"});
    EXPECT_EQ(screen.CursorColumn(), 3u);
}
