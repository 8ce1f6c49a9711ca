#include "onlinehost/Error.h"
#include "tests/unit/shell/SampleTable.h"

#include <gtest/gtest.h>

using host::BindShellWords;
using host::ShellArguments;
using host::ShellUsage;
using Words = std::vector<std::string>;

namespace
{

ShellArguments Bind(const std::string& command, const Words& words)
{
    return BindShellWords(SampleTable().Get(command), words);
}

std::string Refusal(const std::string& command, const Words& words)
{
    try
    {
        Bind(command, words);
        return {};
    }
    catch (const onlinehost::Error& error)
    {
        return error.what();
    }
}

} // namespace

TEST(ShellCommand, UsageShowsEveryParameter)
{
    const host::ShellTable table = SampleTable();
    EXPECT_EQ(ShellUsage(table.Get("login")), "login [TERMINAL] [force] [server=TEXT]");
    EXPECT_EQ(ShellUsage(table.Get("logout")), "logout");
    EXPECT_EQ(ShellUsage(table.Get("invite")), "invite USER... [code=NUMBER] [force]");
    EXPECT_EQ(ShellUsage(table.Get("as")), "as [TERMINAL] [COMMAND...]");
    EXPECT_EQ(ShellUsage(table.Get("message")), "message USER [from=USER] TEXT...");
    EXPECT_EQ(ShellUsage(table.Get("monitor")), "monitor USER overview|detail [answer=yes|no]");
}

TEST(ShellCommand, WordsFindTheirParametersInAnyOrderOfOptions)
{
    const ShellArguments arguments = Bind("invite", {"force", "7", "code=12", "9..11"});
    EXPECT_EQ(arguments.Users("USER"), (std::vector<uint32_t>{7, 9, 10, 11}));
    EXPECT_EQ(arguments.Number("code"), 12u);
    EXPECT_TRUE(arguments.Has("force"));

    EXPECT_EQ(Bind("invite", {"8", "8", "7..9"}).Users("USER"), (std::vector<uint32_t>{8, 7, 9})) << "each user once";

    const ShellArguments bare = Bind("invite", {"7"});
    EXPECT_FALSE(bare.Has("force"));
    EXPECT_EQ(bare.Number("code", 5), 5u);
    EXPECT_EQ(bare.Text("code", "none"), "none");
    EXPECT_TRUE(bare.Words("code").empty());
}

TEST(ShellCommand, TheRestOfTheLineIsTakenAsItIs)
{
    const ShellArguments message = Bind("message", {"7", "from=8", "hello", "from=9", "there"});
    EXPECT_EQ(message.Text("from"), "8");
    EXPECT_EQ(message.Text("TEXT"), "hello from=9 there");

    const ShellArguments as = Bind("as", {"7@pc", "invite", "8", "force"});
    EXPECT_EQ(as.Text("TERMINAL"), "7@pc");
    EXPECT_EQ(as.Words("COMMAND"), (Words{"invite", "8", "force"}));
}

TEST(ShellCommand, WordsThatDoNotFitAreNamed)
{
    EXPECT_EQ(Refusal("invite", {}), "USER is missing");
    EXPECT_EQ(Refusal("invite", {"force"}), "USER is missing");
    EXPECT_EQ(Refusal("message", {"7"}), "TEXT is missing");
    EXPECT_EQ(Refusal("monitor", {"7"}), "REPORT is missing");
    EXPECT_EQ(Refusal("logout", {"now"}), "unexpected argument \"now\"");
    EXPECT_EQ(Refusal("login", {"7", "8"}), "unexpected argument \"8\"");
    EXPECT_EQ(Refusal("login", {"force", "force"}), "force is given twice");
    EXPECT_EQ(Refusal("login", {"server=a", "server=b"}), "server is given twice");
    EXPECT_EQ(Refusal("invite", {"7x"}), "user id \"7x\" is not a decimal number");
    EXPECT_EQ(Refusal("invite", {"0"}), "user id 0 means no user");
    EXPECT_EQ(Refusal("invite", {"7", "code=x"}), "code \"x\" is not a decimal number");
    EXPECT_EQ(Refusal("invite", {"7", "code="}), "code \"\" is not a decimal number");
    EXPECT_EQ(Refusal("invite", {"7", "code=101"}), "code \"101\" is too large: the largest is 100");
    EXPECT_EQ(Refusal("invite", {"7", "tone=1"}), "user id \"tone=1\" is not a decimal number");
    EXPECT_EQ(Refusal("accept", {"-1"}), "invitation id \"-1\" is not a decimal number");
    EXPECT_EQ(Refusal("monitor", {"7", "every"}), "REPORT \"every\" is not one of: overview, detail");
    EXPECT_EQ(Refusal("monitor", {"7", "Overview"}), "REPORT \"Overview\" is not one of: overview, detail");
    EXPECT_EQ(Refusal("monitor", {"7", "detail", "answer=\x1b"}), R"(answer "\x1B" is not one of: yes, no)");
}

TEST(ShellCommand, AnUnknownCommandNamesSimilarOnes)
{
    const host::ShellTable table = SampleTable();
    const auto refusal = [&](const std::string& name) -> std::string
    {
        try
        {
            table.Get(name);
            return {};
        }
        catch (const onlinehost::Error& error)
        {
            return error.what();
        }
    };
    EXPECT_EQ(refusal("logn"), R"(there is no command "logn"; similar are: login)");
    EXPECT_EQ(refusal("logo"), R"(there is no command "logo"; similar are: login, logout)");
    EXPECT_EQ(refusal("h"), R"(there is no command "h"; similar are: help)");
    EXPECT_EQ(refusal("x"), R"(there is no command "x"; "help" lists them)");
    EXPECT_EQ(refusal("zzzzzz"), R"(there is no command "zzzzzz"; "help" lists them)");
    EXPECT_EQ(refusal("\x1b[2Jzzzz"), R"(there is no command "\x1B[2Jzzzz"; "help" lists them)");
    EXPECT_LT(refusal(std::string(1'000'000, 'x')).size(), 200u);
    EXPECT_EQ(table.Find("Login"), nullptr);
}

TEST(ShellCommand, HelpListsTheGroupsAndShowsTheDetails)
{
    const host::ShellTable table = SampleTable();
    EXPECT_EQ(table.Overview(80), "One\n"
                                  "  login    Log in\n"
                                  "  logout   Log out\n"
                                  "  invite   Invite\n"
                                  "  accept   Accept\n"
                                  "Two\n"
                                  "  as       Be another\n"
                                  "  message  Send\n"
                                  "  monitor  Monitor\n"
                                  "  refuse   Refuse\n"
                                  "  help     Help\n");
    EXPECT_EQ(table.Overview(20).substr(0, 44), "One\n"
                                                "  login\n"
                                                "    Log in\n"
                                                "  logout\n"
                                                "    Log out\n");
    EXPECT_EQ(host::ShellTable::Help(table.Get("login"), 80),
              "usage: login [TERMINAL] [force] [server=TEXT]\nLog in.\nMore about it.\n");
}

TEST(ShellCommand, HelpIsWrapped)
{
    const host::ShellCommand command{"One",
                                     "wait",
                                     {{"EVENT", host::ShellForm::One, host::ShellKind::Word, {"login", "offline"}}},
                                     "Wait for an event of the current terminal",
                                     "A text that is broken\nin the source.\n\nAnother paragraph.\n",
                                     [](const ShellArguments&) {}};
    EXPECT_EQ(host::ShellTable::Help(command, 30), "usage: wait login|offline\n"
                                                   "Wait for an event of the\n"
                                                   "current terminal.\n"
                                                   "A text that is broken in the\n"
                                                   "source.\n"
                                                   "Another paragraph.\n");
    host::ShellTable table;
    table.Add(command);
    EXPECT_EQ(table.Overview(36), "One\n"
                                  "  wait  Wait for an event of the\n"
                                  "        current terminal\n");
}
