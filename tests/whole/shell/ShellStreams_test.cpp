#include "tests/support/HttpServer.h"
#include "tests/support/Program.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/TerminalProgram.h"

#include <atomic>
#include <chrono>
#include <csignal>
#include <future>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <thread>

namespace
{

const std::string kShell = "shell --module '" ONLINEMANAGER_MODULE "' ";
constexpr char kPrompt[] = "onlinehost>";

std::vector<std::string> Arguments(const std::vector<std::string>& more)
{
    std::vector<std::string> arguments{"shell", "--module", ONLINEMANAGER_MODULE};
    arguments.insert(arguments.end(), more.begin(), more.end());
    return arguments;
}

} // namespace

TEST(ShellStreams, AClosedInputIsAnError)
{
    const ProgramResult result = RunHostLine(kShell + "<&-");
    EXPECT_EQ(result.exitCode, 3);
    EXPECT_EQ(result.err, "onlinehost: the standard input is closed; connect it, or name a file with commands\n");
}

TEST(ShellStreams, AScriptNeedsNoInputAndNoErrorStream)
{
    const TemporaryFolder folder;
    const std::string script = folder.Write("script", "echo said\n");
    EXPECT_EQ(RunHostLine(kShell + script + " <&-").out, "said\n");
    EXPECT_EQ(RunHostLine(kShell + script + " 2>&-").out, "said\n");
}

TEST(ShellStreams, AClosedOutputIsAnErrorAndNoOtherFileTakesItsPlace)
{
    const TemporaryFolder folder;
    const std::string script = folder.Write("script", "echo said\n");
    const std::string log = folder / "log";
    const ProgramResult result = RunHostLine(kShell + script + " --log " + log + " >&-");
    EXPECT_EQ(result.exitCode, 3);
    EXPECT_EQ(result.err, "onlinehost: the standard output is closed; connect it, to /dev/null for no output\n");
}

TEST(ShellStreams, AnInputThatCannotBeReadIsNamedWithTheReason)
{
    const ProgramResult folder = RunHostLine(kShell + "</");
    EXPECT_EQ(folder.exitCode, 3);
    EXPECT_EQ(folder.err, "onlinehost: standard input cannot be read: Is a directory\n");

    const ProgramResult output = RunHostLine(kShell + "0>/dev/null");
    EXPECT_EQ(output.exitCode, 3);
    EXPECT_EQ(output.err, "onlinehost: standard input cannot be read: it is open for writing only\n");
}

TEST(ShellStreams, ANamedPipeWithoutAWriterCanBeInterrupted)
{
    const TemporaryFolder folder;
    const std::string pipe = folder / "pipe";
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    TerminalProgram shell(Arguments({"--users", "2", pipe}));
    ASSERT_TRUE(shell.See("users 1001 to 1002 are online"));
    shell.Signal(SIGINT);
    EXPECT_EQ(shell.WaitForEnd(), 128 + SIGINT);
    EXPECT_NE(shell.Now().Text().find("onlinehost: interrupted"), std::string::npos) << shell.Now().Text();
}

TEST(ShellStreams, AnInterruptedCompanyEndsTheScript)
{
    const TemporaryFolder folder;
    const std::string script = folder.Write("script", "company 1000000\necho never\n");
    TerminalProgram shell(Arguments({script}), 24, 200);
    ASSERT_TRUE(shell.See("colleagues come online ["));
    shell.Signal(SIGINT);
    ASSERT_TRUE(shell.See("company 1000000: interrupted; ")) << shell.Now().Text();
    EXPECT_TRUE(shell.See(" of 1000000 colleagues are online; \"company 0\" sends them home"));
    EXPECT_EQ(shell.WaitForEnd(), 128 + SIGINT);
    EXPECT_EQ(shell.Now().Text().find("never"), std::string::npos);
}

TEST(ShellStreams, AnInterruptedCompanyLeavesThePromptAndCanGoOffline)
{
    TerminalProgram shell(Arguments({"--history", ""}), 24, 200);
    ASSERT_TRUE(shell.SeeLastLine(kPrompt));
    shell.Type("company 1000000\r");
    ASSERT_TRUE(shell.See("colleagues come online ["));
    shell.Type(kCtrlC);
    ASSERT_TRUE(shell.See("interrupted; ")) << shell.Now().Text();
    ASSERT_TRUE(shell.SeeLastLine(kPrompt)) << shell.Now().Text();
    shell.Type("company 0\r");
    EXPECT_TRUE(shell.See("all simulated users are offline")) << shell.Now().Text();
    shell.Type("company 3\r");
    EXPECT_TRUE(shell.See("users 1001 to 1003 are online on pc")) << shell.Now().Text();
}

TEST(ShellStreams, ASignalEndsALoginToASilentHttpServer)
{
    for (const int signal : {SIGINT, SIGTERM})
    {
        std::promise<void> asked;
        const HttpServer server(
            [&](const HttpExchange& exchange)
            {
                asked.set_value();
                exchange.Stall();
            });
        RunningHost shell(Arguments({"--server", server.Url(), "--timeout", "86400"}), "login 7\n");
        asked.get_future().wait();
        shell.Signal(signal);
        const ProgramResult result = shell.WaitForEnd();
        EXPECT_EQ(result.exitCode, 128 + signal);
        const std::string reason = signal == SIGINT ? "interrupted" : "ended by a signal";
        EXPECT_EQ(result.err, "standard input:1: login 7: " + reason + "\n");
    }
}

TEST(ShellStreams, CtrlCEndsALoginToASilentHttpServerAndTheNextLoginSucceeds)
{
    std::atomic<bool> isFirst{true};
    std::promise<void> asked;
    const HttpServer server(
        [&](const HttpExchange& exchange)
        {
            if (isFirst.exchange(false))
            {
                asked.set_value();
                exchange.Stall();
                return;
            }
            exchange.Answer("200 OK", R"({"code": 0, "address": "tcp:in-process"})");
        });
    TerminalProgram shell(Arguments({"--history", "", "--server", server.Url(), "--timeout", "86400"}), 24, 200);
    ASSERT_TRUE(shell.SeeLastLine(kPrompt));
    shell.Type("login 7\r");
    asked.get_future().wait();
    shell.Type(kCtrlC);
    ASSERT_TRUE(shell.See("\ninterrupted\n")) << shell.Now().Text();
    ASSERT_TRUE(shell.SeeLastLine("7@pc (offline)>")) << shell.Now().Text();
    shell.Type("login 7\r");
    EXPECT_TRUE(shell.SeeLastLine("7@pc>")) << shell.Now().Text();
}

TEST(ShellStreams, ATimeoutAboveTenSecondsHoldsForAnHttpServerToo)
{
    const HttpServer server(
        [](const HttpExchange& exchange)
        {
            // Longer than the platform waits by default.
            std::this_thread::sleep_for(std::chrono::milliseconds(10'500));
            exchange.Answer("200 OK", R"({"code": 0, "address": "tcp:in-process"})");
        });
    const ProgramResult result = RunHost(Arguments({"--server", server.Url(), "--timeout", "86400"}), "login 7\n");
    EXPECT_EQ(result.exitCode, 0) << result.err;
}

TEST(ShellStreams, ExitLeaves)
{
    const ProgramResult result = RunHost(Arguments({}), "echo said\nexit\necho never\n");
    EXPECT_EQ(result.exitCode, 0) << result.err;
    EXPECT_EQ(result.out, "said\n");
}

TEST(ShellStreams, HelpFollowsTheWidthOfTheTerminal)
{
    TerminalProgram narrow(Arguments({"--history", ""}), 100, 40);
    ASSERT_TRUE(narrow.SeeLastLine(kPrompt));
    narrow.Type("help settle\r");
    EXPECT_TRUE(
        narrow.See("\nWait until the platform has done\neverything that it was asked for, and\nshow all events.\n"))
        << narrow.Now().Text();

    TerminalProgram wide(Arguments({"--history", ""}), 100, 120);
    ASSERT_TRUE(wide.SeeLastLine(kPrompt));
    wide.Type("help settle\r");
    EXPECT_TRUE(wide.See("\nWait until the platform has done everything that it was asked for, and show all events.\n"))
        << wide.Now().Text();
}
