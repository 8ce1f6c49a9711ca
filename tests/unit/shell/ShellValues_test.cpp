#include "host/shell/ShellValues.h"
#include "onlinehost/Error.h"
#include "onlinehost/Text.h"

#include <gtest/gtest.h>

using namespace std::chrono_literals;
using host::ParseDuration;
using host::ParseMeeting;
using host::ParseTerminal;
using host::ParseUsers;

namespace
{

/// The message of the error, or nothing when there was none.
template <typename Reader>
std::string Refusal(Reader read, const std::string& text)
{
    try
    {
        read(text);
        return {};
    }
    catch (const onlinehost::Error& error)
    {
        return error.what();
    }
}

} // namespace

TEST(ShellValues, Durations)
{
    EXPECT_EQ(ParseDuration("2s"), 2s);
    EXPECT_EQ(ParseDuration("500ms"), 500ms);
    EXPECT_EQ(ParseDuration("1m"), 1min);
    EXPECT_EQ(ParseDuration("3"), 3s);
    EXPECT_EQ(ParseDuration("0"), 0s);
    EXPECT_EQ(ParseDuration("86400s"), 24h);
    for (const char* text : {"", "s", "2h", "-1s", "1.5s", "2 s", "2sx"})
    {
        EXPECT_NE(Refusal(ParseDuration, text).find("is not like 2s, 500ms or 1m"), std::string::npos) << text;
    }
    EXPECT_NE(Refusal(ParseDuration, "86401s").find("the longest is a day"), std::string::npos);
    EXPECT_NE(Refusal(ParseDuration, "4294967295m").find("the longest is a day"), std::string::npos);
    EXPECT_NE(Refusal(ParseDuration, "99999999999s").find("is too large"), std::string::npos);
}

TEST(ShellValues, Users)
{
    EXPECT_EQ(ParseUsers("7"), (std::vector<uint32_t>{7}));
    EXPECT_EQ(ParseUsers("2..5"), (std::vector<uint32_t>{2, 3, 4, 5}));
    EXPECT_EQ(ParseUsers("4294967294..4294967295"), (std::vector<uint32_t>{4294967294, 4294967295}));
    EXPECT_EQ(ParseUsers("1..1000000").size(), 1'000'000u);
    EXPECT_NE(Refusal(ParseUsers, "1..1000001").find("the largest has 1000000 users"), std::string::npos);
    EXPECT_NE(Refusal(ParseUsers, "5..2").find("ends before it begins"), std::string::npos);
    for (const char* text : {"", "..", "1..", "..2", "1...3", "a", "-1", "0", "0..3", "4294967296", "1..4294967296"})
    {
        EXPECT_NE(Refusal(ParseUsers, text).find("user id"), std::string::npos) << text;
    }
}

TEST(ShellValues, Terminals)
{
    EXPECT_EQ(ParseTerminal("7"), std::pair(7u, std::string()));
    EXPECT_EQ(ParseTerminal("7@phone"), std::pair(7u, std::string("phone")));
    EXPECT_EQ(ParseTerminal("7@a@b"), std::pair(7u, std::string("a@b")));
    EXPECT_NE(Refusal(ParseTerminal, "7@").find("has no device"), std::string::npos);
    EXPECT_NE(Refusal(ParseTerminal, "@pc").find("user id"), std::string::npos);
    EXPECT_NE(Refusal(ParseTerminal, "x@pc").find("user id"), std::string::npos);
}

TEST(ShellValues, Meetings)
{
    EXPECT_EQ(onlinehost::GuidText(ParseMeeting("12345678-9abc-DEF0-1234-56789abcdef0")),
              "{12345678-9ABC-DEF0-1234-56789ABCDEF0}");
    EXPECT_EQ(onlinehost::GuidText(ParseMeeting("{12345678-9abc-DEF0-1234-56789abcdef0}")),
              "{12345678-9ABC-DEF0-1234-56789ABCDEF0}");
    EXPECT_EQ(onlinehost::GuidText(ParseMeeting("255")), "{000000FF-0000-0000-0000-000000000000}");
    for (const char* text :
         {"", "x", "{}", "{255}", "-1", "12345678-9abc-DEF0-1234-56789abcdef", "12345678-9abc-DEF0-1234-56789abcdefg",
          "{12345678-9abc-DEF0-1234-56789abcdef0", "12345678_9abc_DEF0_1234_56789abcdef0"})
    {
        EXPECT_NE(Refusal(ParseMeeting, text).find("is neither a decimal number nor a GUID"), std::string::npos)
            << text;
    }
    EXPECT_NE(Refusal(ParseMeeting, "4294967296").find("is too large"), std::string::npos);
}

TEST(ShellValues, RefusedTextsAreShownWithoutControlCharacters)
{
    EXPECT_EQ(Refusal(ParseDuration, "\x1b[2J\xff"), R"(duration "\x1B[2J\xFF" is not like 2s, 500ms or 1m)");
}
