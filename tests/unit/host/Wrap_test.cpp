#include "host/console/Wrap.h"

#include <gtest/gtest.h>

using host::Wrap;

TEST(Wrap, BreaksAtSpacesAndIndentsFurtherLines)
{
    EXPECT_EQ(Wrap("", "one two three", 80, 4), "one two three\n");
    EXPECT_EQ(Wrap("", "one two three", 9, 2), "one two\n  three\n");
    EXPECT_EQ(Wrap("name: ", "one two three", 10, 6), "name: one\n      two\n      three\n");
}

TEST(Wrap, BreaksBehindABar)
{
    EXPECT_EQ(Wrap("", "wait login|offline|lost [USER]", 14, 4), "wait login|\n    offline|\n    lost\n    [USER]\n");
}

TEST(Wrap, AWordThatIsTooLongStandsAlone)
{
    EXPECT_EQ(Wrap("", "a incomprehensible b", 6, 0), "a\nincomprehensible\nb\n");
}

TEST(Wrap, NothingIsAnEmptyLine)
{
    EXPECT_EQ(Wrap("", "", 10, 2), "\n");
    EXPECT_EQ(Wrap("", " a  b ", 10, 2), "a b\n");
}

TEST(Wrap, AFileHasEightyColumns)
{
    std::FILE* const file = std::tmpfile();
    ASSERT_NE(file, nullptr);
    EXPECT_EQ(host::LineWidth(file), 80u);
    std::fclose(file);
}
