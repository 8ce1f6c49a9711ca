#include "tests/support/Program.h"
#include "tests/support/TemporaryFolder.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <rapidjson/document.h>
#include <set>
#include <sstream>

namespace
{

std::vector<rapidjson::Document> RunJson(const std::string& script, int exitCode)
{
    const std::vector<std::string> arguments{"shell", "--module", ONLINEMANAGER_MODULE, "--json"};
    const ProgramResult result = RunHost(arguments, script);
    EXPECT_EQ(result.exitCode, exitCode) << result.err;
    EXPECT_EQ(result.err, "");
    const std::string page = ReadFile(SHELL_PAGE);
    std::vector<rapidjson::Document> objects;
    std::istringstream stream(result.out);
    for (std::string line; std::getline(stream, line);)
    {
        rapidjson::Document& object = objects.emplace_back();
        EXPECT_FALSE(object.Parse(line.c_str()).HasParseError()) << line;
        EXPECT_TRUE(object.IsObject() && object.HasMember("type") && object.HasMember("time")) << line;
        for (const auto& member : object.GetObject())
        {
            EXPECT_NE(page.find("`" + std::string(member.name.GetString()) + "`"), page.npos) << line;
        }
    }
    return objects;
}

/// "event 7@pc login", "answer login 7 0"
std::string Short(const rapidjson::Document& object)
{
    const std::string type = object["type"].GetString();
    return type == "event"
               ? type + " " + object["source"].GetString() + " " + object["event"].GetString()
               : type + " " + object["command"].GetString() + " " + std::to_string(object["exitCode"].GetInt());
}

std::vector<std::string> Short(const std::vector<rapidjson::Document>& objects)
{
    std::vector<std::string> texts(objects.size());
    std::transform(objects.begin(), objects.end(), texts.begin(),
                   [](const rapidjson::Document& object) { return Short(object); });
    return texts;
}

} // namespace

TEST(ShellJson, EveryEventAndEveryAnswerIsAnObjectOnALine)
{
    const auto objects =
        RunJson("# two users\nlogin 7\nlogin 8\nsettle\n\ninvite 7 meeting=42\nas 7 wait invited\n", 0);
    EXPECT_EQ(Short(objects), (std::vector<std::string>{
                                  "event 7@pc login", "event 7@pc changed", "answer login 7 0", "event 8@pc login",
                                  "event 7@pc changed", "event 8@pc changed", "answer login 8 0", "answer settle 0",
                                  "answer invite 7 meeting=42 0", "event 7@pc invited", "answer as 7 wait invited 0"}));
    ASSERT_EQ(objects.size(), 11u);
    EXPECT_STREQ(objects[8]["lines"][0].GetString(), "sends invitation 1 to 1 user");
    EXPECT_FALSE(objects[8].HasMember("error"));
    EXPECT_EQ(objects[9]["data"]["meetingId"].GetUint(), 42u);
}

TEST(ShellJson, AFailureIsAnAnswerToo)
{
    const auto refused = RunJson("fails who x\nrefuse 36\nlogin 7\necho never\n", 1);
    EXPECT_EQ(Short(refused), (std::vector<std::string>{"answer fails who x 0", "answer refuse 36 0",
                                                        "event 7@pc offline", "answer login 7 1"}));
    ASSERT_EQ(refused.size(), 4u);
    EXPECT_FALSE(refused[2]["wasLoggedIn"].GetBool());
    EXPECT_STREQ(refused[3]["place"].GetString(), "standard input:3");
    EXPECT_STREQ(refused[3]["error"].GetString(), "the login failed: 36 (logged in on another device)");

    const auto quote = RunJson("echo 'open\n", 2);
    ASSERT_EQ(quote.size(), 1u);
    EXPECT_STREQ(quote[0]["command"].GetString(), "echo 'open");
}

TEST(ShellJson, MessagesAndReportsHaveTheirContent)
{
    const auto objects = RunJson("login 7\nmessage 7 \"a\\nb\"\nwait message\n", 0);
    ASSERT_FALSE(objects.empty());
    const rapidjson::Document& message = objects[objects.size() - 2];
    EXPECT_EQ(Short(message), "event 7@pc message");
    EXPECT_EQ(message["user"].GetUint(), 7u);
    EXPECT_STREQ(message["content"].GetString(), "a\nb");
}

TEST(ShellJson, InvitationsMeetingsAndLogoutsHaveTheFieldsOfThePage)
{
    const auto objects = RunJson("company 2 answer=mixed\nlogin 7\nsettle\njoin 42\ninvite 1001..1002\nwait accepted\n"
                                 "wait declined\ncolleague 1001 join 42\nwait user-joined\nrefresh\ndrop\nwait back\n"
                                 "leave\nlogout\n",
                                 0);
    std::set<std::string> events;
    for (const rapidjson::Document& object : objects)
    {
        if (object.HasMember("event"))
        {
            events.insert(object["event"].GetString());
        }
    }
    for (const char* name : {"accepted", "back", "changed", "declined", "joined", "left", "login", "lost", "offline",
                             "reconnecting", "refreshed", "user-joined"})
    {
        EXPECT_TRUE(events.contains(name)) << name;
    }
}

TEST(ShellJson, ProgressAndWhatTheOptionsOrderDoNotMixIn)
{
    const ProgramResult result =
        RunHost({"shell", "--module", ONLINEMANAGER_MODULE, "--json", "--users", "1000", "--user", "7"}, "");
    EXPECT_EQ(result.exitCode, 0);
    std::istringstream stream(result.out);
    size_t count = 0;
    for (std::string line; std::getline(stream, line); ++count)
    {
        EXPECT_EQ(line.substr(0, 8), R"({"type":)") << line;
    }
    EXPECT_GE(count, 4u);
}

TEST(ShellJson, TheOutputOfACommandCanBeExpected)
{
    const auto objects = RunJson("login 7\nexpect 7@pc logged in\nexpect sees user 7 online on pc\n", 0);
    EXPECT_EQ(objects.size(), 5u);
}
