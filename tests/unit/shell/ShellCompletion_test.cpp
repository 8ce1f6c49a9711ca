#include "host/shell/ShellCompletion.h"
#include "tests/unit/shell/SampleTable.h"

#include <gtest/gtest.h>

using host::ShellKind;
using Words = std::vector<std::string>;

namespace
{

Words Known(ShellKind kind, std::string_view start, const std::string& terminal)
{
    Words known;
    switch (kind)
    {
    case ShellKind::User:
    case ShellKind::Users:
        known = {"7", "71", "8"};
        break;
    case ShellKind::Terminal:
        known = {"7", "7@my phone", "7@pc"};
        break;
    case ShellKind::Received:
        known = terminal.empty() ? Words{"12", "13"} : terminal == "8" ? Words{"21"} : Words{};
        break;
    default:
        break;
    }
    std::erase_if(known, [start](const std::string& value) { return !value.starts_with(start); });
    return known;
}

Words Complete(const std::string& lineStart)
{
    return host::CompleteShellLine(SampleTable(), lineStart, Known);
}

} // namespace

TEST(ShellCompletion, TheFirstWordIsACommand)
{
    EXPECT_EQ(Complete("lo"), (Words{"login", "logout"}));
    EXPECT_EQ(Complete("logi"), Words{"login"});
    EXPECT_EQ(Complete(""),
              (Words{"accept", "as", "help", "invite", "login", "logout", "message", "monitor", "refuse"}));
    EXPECT_EQ(Complete("x"), Words{});
}

TEST(ShellCompletion, UserIdsAreThoseThatAreKnown)
{
    EXPECT_EQ(Complete("invite 7"), (Words{"7", "71"}));
    EXPECT_EQ(Complete("invite 7 8"), Words{"8"});
    EXPECT_EQ(Complete("message 7"), (Words{"7", "71"}));
}

TEST(ShellCompletion, InvitationsAreThoseThatAreOpen)
{
    EXPECT_EQ(Complete("accept 1"), (Words{"12", "13"}));
    EXPECT_EQ(Complete("accept "), (Words{"12", "13"}));
    EXPECT_EQ(Complete("accept 12 1"), Words{}) << "it takes one only";
}

TEST(ShellCompletion, OptionsAndFlagsStandBesideTheValues)
{
    EXPECT_EQ(Complete("invite 7 "), (Words{"71", "8", "code=", "force"}));
    EXPECT_EQ(Complete("invite 7 c"), Words{"code="});
    EXPECT_EQ(Complete("invite 7 force "), (Words{"71", "8", "code="})) << "none is offered twice";
    EXPECT_EQ(Complete("message "), (Words{"7", "71", "8"})) << "the value has to come, the option need not";
    EXPECT_EQ(Complete("message f"), Words{"from="});
    EXPECT_EQ(Complete("message 7 "), Words{"from="});
    EXPECT_EQ(Complete("message 7 from=7"), (Words{"from=7", "from=71"}));
    EXPECT_EQ(Complete("message 7 hello "), Words{}) << "the text has begun";
}

TEST(ShellCompletion, ChoicesComeFromTheTable)
{
    EXPECT_EQ(Complete("monitor 7 "), (Words{"detail", "overview"}));
    EXPECT_EQ(Complete("monitor 7 detail "), Words{"answer="});
    EXPECT_EQ(Complete("monitor 7 detail answer="), (Words{"answer=no", "answer=yes"}));
    EXPECT_EQ(Complete("help lo"), (Words{"login", "logout"}));
}

TEST(ShellCompletion, ACommandInsideACommandIsCompletedLikeOneOutside)
{
    EXPECT_EQ(Complete("as 7@"), (Words{"'7@my phone'", "7@pc"}));
    EXPECT_EQ(Complete("as 7@pc lo"), (Words{"login", "logout"}));
    EXPECT_EQ(Complete("as 7@pc as 8 inv"), Words{"invite"});
}

TEST(ShellCompletion, CompletionForAnotherTerminalOffersWhatThatTerminalKnows)
{
    EXPECT_EQ(Complete("as 8 accept "), Words{"21"});
    EXPECT_EQ(Complete("as 7@pc as 8 accept "), Words{"21"});
    EXPECT_EQ(Complete("as 7@pc accept "), Words{});
}

TEST(ShellCompletion, AcceptOffersNoOptionWhereTheInvitationMustStand)
{
    EXPECT_EQ(Complete("accept "), (Words{"12", "13"}));
    EXPECT_EQ(Complete("as 9 accept "), Words{}) << "the only candidate would be filled in";
    EXPECT_EQ(Complete("as 9 accept f"), Words{"from="}) << "it has been begun";
    EXPECT_EQ(Complete("accept 12 "), Words{"from="});
}

TEST(ShellCompletion, RefuseOffersTheUsualCodesBeforeUsers)
{
    EXPECT_EQ(Complete("refuse "), (Words{"32", "36"}));
    EXPECT_EQ(Complete("refuse 7"), Words{});
    EXPECT_EQ(Complete("refuse 36 "), (Words{"7", "71", "8"}));
}

TEST(ShellCompletion, CommandsThatAreNestedTooDeepAreNotCompleted)
{
    std::string line;
    for (size_t i = 0; i < host::kMostNestedCommands; ++i)
    {
        line += "as 7 ";
    }
    EXPECT_EQ(Complete(line + "logi"), Words{"login"});
    EXPECT_EQ(Complete("as 7 " + line + "logi"), Words{});
}

TEST(ShellCompletion, NoCandidatesWhereNothingFits)
{
    EXPECT_EQ(Complete("nonsense "), Words{});
    EXPECT_EQ(Complete("logout "), Words{});
    EXPECT_EQ(Complete("message 7 \"he"), Words{});
    EXPECT_EQ(Complete("who # "), Words{});
}
