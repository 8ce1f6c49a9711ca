#include "host/console/Wording.h"

#include "onlinehost/Error.h"

#include <gtest/gtest.h>

using host::ParseNumber;
using host::ParseUserId;

TEST(Wording, NumbersAreDecimalAndFit32Bits)
{
    EXPECT_EQ(ParseNumber("0", "number"), 0u);
    EXPECT_EQ(ParseNumber("4294967295", "number"), 4294967295u);
    EXPECT_EQ(ParseNumber("007", "number"), 7u);
    for (const char* bad : {"", " 1", "1 ", "-1", "+1", "0x10", "1.5", "12ab", "4294967296", "99999999999999999999"})
    {
        EXPECT_THROW(ParseNumber(bad, "number"), onlinehost::Error) << bad;
    }
}

TEST(Wording, AUserIdIsNotZero)
{
    EXPECT_EQ(ParseUserId("1001"), 1001u);
    EXPECT_THROW(ParseUserId("0"), onlinehost::Error);
    EXPECT_THROW(ParseUserId("-1"), onlinehost::Error);
}
