#include "onlinemanager/HttpHelper.h"
#include "tests/unit/module/RecordedTest.h"

using onlinemanager::HttpHelper;

using HttpHelperTest = RecordedTest;

TEST_F(HttpHelperTest, InitNeedsAnObjectAndAddsNoReference)
{
    HttpHelper helper;
    EXPECT_FALSE(helper.Init(nullptr));
    EXPECT_TRUE(helper.Init(&m_http));
    EXPECT_EQ(1, m_http.References());
    EXPECT_EQ(Lines{}, Journal());
}

TEST_F(HttpHelperTest, UninitReleasesTheObjectOnce)
{
    HttpHelper helper;
    EXPECT_TRUE(helper.Uninit());
    helper.Init(&m_http);
    EXPECT_TRUE(helper.Uninit());
    EXPECT_TRUE(helper.Uninit());
    EXPECT_EQ(Lines{"http.Release() -> 0"}, Journal());
}

TEST_F(HttpHelperTest, WithoutAnObjectNothingIsSentAndTheAnswerIsEmpty)
{
    HttpHelper helper;
    EXPECT_EQ("", helper.HttpGet("http://x"));
    EXPECT_EQ("", helper.HttpPost("http://x", "body"));
    EXPECT_EQ(0, helper.HttpClose("http://x"));
    EXPECT_EQ((Lines{checks::LogLine("HttpHelper", "HttpGet, http://x"),
                     checks::LogLine("HttpHelper", "HttpClose, http://x")}),
              Journal());
}
