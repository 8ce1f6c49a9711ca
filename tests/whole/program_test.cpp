#include "tests/support/Program.h"

#include <gtest/gtest.h>

TEST(OnlineHost, HelpTellsTheCommandsAndTheExitCodes)
{
    const ProgramResult result = RunHost({"--help"});
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(result.err, "");
    for (const char* part : {"inspect", "login", "Exit codes: 0 success, 1 refused, 2 wrong usage, 3 failure"})
    {
        EXPECT_NE(result.out.find(part), std::string::npos) << part << " is missing in " << result.out;
    }
}

TEST(OnlineHost, EveryCommandHasItsHelp)
{
    for (const char* command : {"inspect", "login"})
    {
        const ProgramResult result = RunHost({command, "--help"});
        EXPECT_EQ(result.exitCode, 0);
        EXPECT_NE(result.out.find("Exit codes: "), std::string::npos) << result.out;
    }
}

TEST(OnlineHost, TellsItsVersion)
{
    const ProgramResult result = RunHost({"--version"});
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_TRUE(result.out.starts_with("onlinehost 1.")) << result.out;
}

TEST(OnlineHost, AWrongCommandLineEndsWith2AndAWordAboutHelp)
{
    for (const std::vector<std::string>& arguments :
         {std::vector<std::string>{}, {"unknown"}, {"--unknown"}, {"inspect"}, {"inspect", "a", "b"}})
    {
        const ProgramResult result = RunHost(arguments);
        EXPECT_EQ(result.exitCode, 2);
        EXPECT_EQ(result.out, "");
        EXPECT_NE(result.err.find("--help"), std::string::npos) << result.err;
    }
}

TEST(OnlineHost, AnUnknownCommandIsNamed)
{
    EXPECT_NE(RunHost({"nonsense"}).err.find("nonsense"), std::string::npos);
    EXPECT_NE(RunHost({}).err.find("A command is required"), std::string::npos);
}

TEST(OnlineHost, OutputThatDoesNotArriveIsAFailure)
{
    const ProgramResult result = RunHost({"inspect", ONLINEMANAGER_MODULE}, {}, "/dev/full");
    EXPECT_EQ(result.exitCode, 3);
    EXPECT_NE(result.err.find("could not be written"), std::string::npos) << result.err;
}
