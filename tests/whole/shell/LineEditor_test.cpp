#include "tests/support/TemporaryFolder.h"
#include "tests/support/TerminalProgram.h"

#include <algorithm>
#include <csignal>
#include <filesystem>
#include <gtest/gtest.h>
#include <sys/stat.h>

namespace
{

constexpr char kGreeting[] = "\"help\" lists the commands";

/// The shell without a history, at its first prompt.
class LineEditor : public testing::Test
{
protected:
    static std::vector<std::string> Arguments(std::vector<std::string> more = {})
    {
        std::vector<std::string> arguments{"shell", "--module", ONLINEMANAGER_MODULE, "--history", ""};
        arguments.insert(arguments.end(), more.begin(), more.end());
        return arguments;
    }

    /// The editor has read Enter: the cursor is below the line.
    static bool IsLineTaken(const Screen& screen)
    {
        return screen.CursorColumn() == 0;
    }

    /// The line of the screen that holds the text; beyond the last when there is none.
    static size_t LineOf(const Screen& screen, const std::string& text)
    {
        const std::vector<std::string> lines = screen.Lines();
        const auto found =
            std::find_if(lines.begin(), lines.end(),
                         [&text](const std::string& line) { return line.find(text) != std::string::npos; });
        return static_cast<size_t>(found - lines.begin());
    }
};

} // namespace

TEST_F(LineEditor, GreetsAndLeavesAtCtrlD)
{
    TerminalProgram shell(Arguments());
    EXPECT_TRUE(shell.See(kGreeting));
    EXPECT_TRUE(shell.SeeLastLine("onlinehost>"));
    shell.Type(kCtrlD);
    EXPECT_EQ(shell.WaitForEnd(), 0);
}

TEST_F(LineEditor, AnEventStandsAboveTheLineThatIsBeingTyped)
{
    TerminalProgram shell(Arguments({"--user", "7"}));
    ASSERT_TRUE(shell.SeeLastLine("7@pc>"));
    shell.Type("company 1 answer=accept after=3s\r");
    ASSERT_TRUE(shell.See("users 1001 to 1001 are online"));
    shell.Type("invite 1001 meeting=42\r");
    ASSERT_TRUE(shell.See("sends invitation"));
    shell.Type("echo half a li");
    ASSERT_TRUE(shell.SeeLastLine("7@pc> echo half a li"));

    ASSERT_TRUE(shell.See("learns that user 1001 accepted"));
    ASSERT_TRUE(shell.SeeLastLine("7@pc> echo half a li"));
    const Screen& screen = shell.Now();
    EXPECT_LT(LineOf(screen, "learns that user 1001 accepted"), LineOf(screen, "echo half a li"));
    EXPECT_EQ(screen.CursorColumn(), std::string("7@pc> echo half a li").size());

    shell.Type("ne\r");
    EXPECT_TRUE(shell.See("\nhalf a line\n")) << screen.Text();
}

TEST_F(LineEditor, ATypedLineOfSeveralRowsSurvivesAnEventToo)
{
    TerminalProgram shell(Arguments({"--user", "7"}), 24, 40);
    ASSERT_TRUE(shell.SeeLastLine("7@pc>"));
    shell.Type("company 1 answer=decline after=3s\r");
    ASSERT_TRUE(shell.See("users 1001 to 1001 are online"));
    shell.Type("invite 1001 meeting=42\r");
    ASSERT_TRUE(shell.See("sends invitation"));
    const std::string typed = "echo " + std::string(50, 'a') + std::string(50, 'b');
    shell.Type(typed + kCtrlA);
    ASSERT_TRUE(shell.See("7@pc> " + typed));

    ASSERT_TRUE(shell.See("learns that user 1001 declined"));
    ASSERT_TRUE(shell.See(
        [&typed](const Screen& screen)
        {
            const std::string text = screen.Text();
            const size_t event = text.find("learns that user 1001 declined");
            const size_t line = text.find("7@pc> " + typed);
            return event < line && line == text.rfind("7@pc> echo") && line != std::string::npos;
        }))
        << shell.Now().Text();
    shell.Type(kEnter);
    EXPECT_TRUE(shell.See("\n" + std::string(50, 'a') + std::string(50, 'b'))) << shell.Now().Text();
}

TEST_F(LineEditor, ThePromptFollowsTheStateUnderATypedLine)
{
    TerminalProgram shell(Arguments({"--user", "7"}));
    ASSERT_TRUE(shell.SeeLastLine("7@pc>"));
    shell.Type("reconnect no\rdrop\rechoing");
    ASSERT_TRUE(shell.See("reconnection given up"));
    EXPECT_TRUE(shell.SeeLastLine("7@pc (offline)> echoing")) << shell.Now().Text();
}

TEST_F(LineEditor, TabCompletesCommandsUsersAndInvitations)
{
    TerminalProgram shell(Arguments({"--user", "7"}));
    ASSERT_TRUE(shell.SeeLastLine("7@pc>"));
    shell.Type("invita\t");
    ASSERT_TRUE(shell.SeeLastLine("7@pc> invitations"));
    shell.Type(kCtrlC);
    shell.Type("login 2147483647\r");
    ASSERT_TRUE(shell.SeeLastLine("2147483647@pc>"));
    ASSERT_TRUE(shell.See("sees 2 users online"));
    shell.Type("invite 21\t");
    ASSERT_TRUE(shell.SeeLastLine("2147483647@pc> invite 2147483647")) << shell.Now().Text();
    shell.Type(kCtrlC);
    shell.Type("invite 7 code=5 meeting=42\r");
    ASSERT_TRUE(shell.See("sends invitation 1 "));
    shell.Type("as 7\r");
    ASSERT_TRUE(shell.See("is invited by user 2147483647"));
    ASSERT_TRUE(shell.SeeLastLine("7@pc>"));
    shell.Type("acc\t");
    ASSERT_TRUE(shell.SeeLastLine("7@pc> accept"));
    shell.Type("\t");
    ASSERT_TRUE(shell.SeeLastLine("7@pc> accept 1")) << shell.Now().Text();
}

TEST_F(LineEditor, TabOffersInvitationsOfTheTerminalThatTheCommandIsFor)
{
    TerminalProgram shell(Arguments({"--user", "7"}));
    ASSERT_TRUE(shell.SeeLastLine("7@pc>"));
    shell.Type("accept \t.");
    ASSERT_TRUE(shell.SeeLastLine("7@pc> accept .")) << "none is open: " << shell.Now().Text();
    shell.Type(kCtrlC);
    shell.Type("login 8\r");
    ASSERT_TRUE(shell.SeeLastLine("8@pc>"));
    shell.Type("as 7 invite 8 meeting=42\r");
    ASSERT_TRUE(shell.See("8@pc is invited by user 7"));
    shell.Type("as 7 accept \t.");
    ASSERT_TRUE(shell.SeeLastLine("8@pc> as 7 accept .")) << "the other terminal has none: " << shell.Now().Text();
    shell.Type(kCtrlC);
    shell.Type("as 7\r");
    ASSERT_TRUE(shell.SeeLastLine("7@pc>"));
    shell.Type("as 8 accept \t");
    EXPECT_TRUE(shell.SeeLastLine("7@pc> as 8 accept 1")) << shell.Now().Text();
}

TEST_F(LineEditor, TabListsWhatFitsWhenSeveralDo)
{
    TerminalProgram shell(Arguments());
    ASSERT_TRUE(shell.SeeLastLine("onlinehost>"));
    shell.Type("lo\t");
    ASSERT_TRUE(shell.See("log-level"));
    EXPECT_TRUE(shell.See("logout"));
    EXPECT_TRUE(shell.SeeLastLine("onlinehost> log")) << shell.Now().Text();
}

TEST_F(LineEditor, ManyCandidatesAreCutAndAskNothing)
{
    TerminalProgram shell(Arguments({"--users", "300", "--user", "7"}), 60, 100);
    ASSERT_TRUE(shell.See("sees 301 users online")) << shell.Now().Text();
    shell.Type("invite 1\t");
    EXPECT_TRUE(shell.See("more")) << shell.Now().Text();
    EXPECT_TRUE(shell.SeeLastLine("7@pc> invite 1")) << shell.Now().Text();
}

TEST_F(LineEditor, TheArrowUpBringsLinesBack)
{
    TerminalProgram shell(Arguments());
    ASSERT_TRUE(shell.SeeLastLine("onlinehost>"));
    shell.Type("echo first\recho second\r");
    ASSERT_TRUE(shell.See("\nsecond\n"));
    shell.Type(kUp);
    ASSERT_TRUE(shell.SeeLastLine("onlinehost> echo second"));
    shell.Type(kUp);
    ASSERT_TRUE(shell.SeeLastLine("onlinehost> echo first"));
}

TEST_F(LineEditor, CtrlRSearchesTheLinesTypedBeforeAndEventsAppearMeanwhile)
{
    TerminalProgram shell(Arguments({"--user", "7"}));
    ASSERT_TRUE(shell.SeeLastLine("7@pc>"));
    shell.Type("company 1 answer=accept after=3s\r");
    ASSERT_TRUE(shell.See("users 1001 to 1001 are online"));
    shell.Type("echo first\recho second\rinvite 1001 meeting=42\r");
    ASSERT_TRUE(shell.See("sends invitation"));
    shell.Type(std::string(kCtrlR) + "fir");
    ASSERT_TRUE(shell.See("7@pc> echo first\nbck:fir")) << shell.Now().Text();

    ASSERT_TRUE(shell.See("learns that user 1001 accepted"));
    ASSERT_TRUE(shell.See("7@pc> echo first\nbck:fir")) << shell.Now().Text();
    EXPECT_EQ(shell.Now().Text().find("bck:"), shell.Now().Text().rfind("bck:")) << shell.Now().Text();
    shell.Type(kCtrlA);
    EXPECT_TRUE(shell.SeeLastLine("7@pc> echo first")) << shell.Now().Text();
}

TEST_F(LineEditor, TheEditingKeysOfShellsWork)
{
    TerminalProgram shell(Arguments());
    ASSERT_TRUE(shell.SeeLastLine("onlinehost>"));
    shell.Type("echo one two" + std::string(kCtrlW));
    EXPECT_TRUE(shell.SeeLastLine("onlinehost> echo one")) << shell.Now().Text();
    shell.Type("x\x1b[1;5D" + std::string(kCtrlU));
    EXPECT_TRUE(shell.SeeLastLine("onlinehost> x")) << shell.Now().Text();
    shell.Type("\x1b[4~yz\x1b[1~a" + std::string(kCtrlB) + "\x1b[3~");
    EXPECT_TRUE(shell.SeeLastLine("onlinehost> xyz")) << shell.Now().Text();
    shell.Type(kCtrlD);
    EXPECT_TRUE(shell.SeeLastLine("onlinehost> yz")) << shell.Now().Text();
    shell.Type(std::string(kCtrlB) + kCtrlD + kCtrlD);
    EXPECT_TRUE(shell.SeeLastLine("onlinehost>")) << shell.Now().Text();
    shell.Type(kCtrlD);
    EXPECT_EQ(shell.WaitForEnd(), 0);
}

TEST_F(LineEditor, ACharacterOfSeveralBytesIsEditedAsOne)
{
    TerminalProgram shell(Arguments({"--user", "7"}), 24, 30);
    ASSERT_TRUE(shell.SeeLastLine("7@pc>"));
    shell.Type("company 1 answer=accept after=3s\r");
    ASSERT_TRUE(shell.See("users 1001 to 1001 are online"));
    shell.Type("invite 1001 meeting=42\r");
    ASSERT_TRUE(shell.See("sends invitation"));
    std::string typed = "echo ";
    for (int i = 0; i < 40; ++i)
    {
        typed += "\xc3\xa4";
    }
    shell.Type(typed + "\xe2\x82\xac" + kBackspace);
    ASSERT_TRUE(shell.See("7@pc> " + typed + "\n")) << shell.Now().Text();
    ASSERT_TRUE(shell.See("learns that user 1001 accepted"));
    ASSERT_TRUE(shell.See("7@pc> " + typed + "\n")) << shell.Now().Text();
    EXPECT_EQ(shell.Now().Text().find("7@pc> echo \xc3"), shell.Now().Text().rfind("7@pc> echo \xc3"))
        << shell.Now().Text();
    shell.Type("\xff" + std::string(kEnter));
    EXPECT_TRUE(shell.See("\n" + typed.substr(5) + "\xef\xbf\xbd\n")) << shell.Now().Text();
}

TEST_F(LineEditor, CtrlCInALineOfSeveralRowsLeavesItWhole)
{
    TerminalProgram shell(Arguments(), 24, 30);
    ASSERT_TRUE(shell.SeeLastLine("onlinehost>"));
    const std::string typed = "echo " + std::string(60, 'a');
    shell.Type(typed + kCtrlA);
    ASSERT_TRUE(shell.See("onlinehost> " + typed));
    shell.Type(kCtrlC);
    ASSERT_TRUE(shell.SeeLastLine("onlinehost>"));
    EXPECT_TRUE(shell.See(std::string(30, 'a') + std::string(17, 'a') + "\nonlinehost>")) << shell.Now().Text();
}

TEST_F(LineEditor, TheHistoryIsKeptInItsFileForTheOwnerOnly)
{
    const TemporaryFolder folder;
    const std::string file = folder / "state" / "history";
    const std::vector<std::string> arguments{"shell", "--module", ONLINEMANAGER_MODULE, "--history", file};
    {
        TerminalProgram shell(arguments);
        ASSERT_TRUE(shell.SeeLastLine("onlinehost>"));
        shell.Type("echo kept\recho kept\r echo secret\rquit\r");
        EXPECT_EQ(shell.WaitForEnd(), 0);
    }
    EXPECT_EQ(ReadFile(file), "echo kept\nquit\n") << "once in a row, and nothing that begins with a space";
    struct stat status
    {
    };
    ASSERT_EQ(stat(file.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777, 0600u);

    TerminalProgram shell(arguments);
    ASSERT_TRUE(shell.SeeLastLine("onlinehost>"));
    shell.Type(std::string(kUp) + kUp);
    EXPECT_TRUE(shell.SeeLastLine("onlinehost> echo kept"));
}

TEST_F(LineEditor, AHistoryThatCannotBeKeptIsSaidAndNothingElse)
{
    TerminalProgram shell({"shell", "--module", ONLINEMANAGER_MODULE, "--history", "/proc/nowhere/history"});
    EXPECT_TRUE(shell.See("the history /proc/nowhere/history cannot be used"));
    EXPECT_TRUE(shell.SeeLastLine("onlinehost>"));
    shell.Type("quit\r");
    EXPECT_EQ(shell.WaitForEnd(), 0);
}

TEST_F(LineEditor, AHistoryThatIsADeviceOrAPipeIsNotRead)
{
    const TemporaryFolder folder;
    const std::string pipe = folder / "pipe";
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    for (const std::string& file : {std::string("/dev/zero"), pipe})
    {
        TerminalProgram shell({"shell", "--module", ONLINEMANAGER_MODULE, "--history", file}, 24, 200);
        EXPECT_TRUE(shell.See("the history " + file + " cannot be used: it is not a regular file"));
        ASSERT_TRUE(shell.SeeLastLine("onlinehost>"));
        shell.Type("quit\r");
        EXPECT_EQ(shell.WaitForEnd(), 0);
    }
}

TEST_F(LineEditor, CtrlCThrowsTheLineAway)
{
    TerminalProgram shell(Arguments());
    ASSERT_TRUE(shell.SeeLastLine("onlinehost>"));
    shell.Type("quit");
    ASSERT_TRUE(shell.SeeLastLine("onlinehost> quit"));
    shell.Type(kCtrlC);
    ASSERT_TRUE(shell.SeeLastLine("onlinehost>"));
    shell.Type("echo here\r");
    EXPECT_TRUE(shell.See("\nhere\n"));
}

TEST_F(LineEditor, CtrlCEndsACommandAndNotTheShell)
{
    TerminalProgram shell(Arguments());
    ASSERT_TRUE(shell.SeeLastLine("onlinehost>"));
    shell.Type("echo now\rsleep 1000s\r");
    ASSERT_TRUE(shell.See("\nnow\n"));
    ASSERT_TRUE(shell.SeeLastLine("onlinehost> sleep 1000s"));
    ASSERT_TRUE(shell.See(IsLineTaken)) << "until then Ctrl-C throws Enter away";
    shell.Type(kCtrlC);
    ASSERT_TRUE(shell.See("interrupted"));
    EXPECT_TRUE(shell.SeeLastLine("onlinehost>"));
}

TEST_F(LineEditor, KeysTypedWhileACommandRunsAreShownOnceAndEdited)
{
    TerminalProgram shell(Arguments());
    ASSERT_TRUE(shell.SeeLastLine("onlinehost>"));
    shell.Type("sleep 1s\r");
    ASSERT_TRUE(shell.SeeLastLine("onlinehost> sleep 1s"));
    ASSERT_TRUE(shell.See(IsLineTaken));
    shell.Type("echo ahead" + std::string(kCtrlA) + kCtrlD);
    EXPECT_TRUE(shell.SeeLastLine("onlinehost> cho ahead")) << shell.Now().Text();
}

TEST_F(LineEditor, CtrlDTypedWhileACommandRunsLeavesAfterIt)
{
    TerminalProgram shell(Arguments());
    ASSERT_TRUE(shell.SeeLastLine("onlinehost>"));
    shell.Type("sleep 1s\r");
    ASSERT_TRUE(shell.SeeLastLine("onlinehost> sleep 1s"));
    ASSERT_TRUE(shell.See(IsLineTaken));
    shell.Type(kCtrlD);
    EXPECT_EQ(shell.WaitForEnd(), 0);
}

TEST_F(LineEditor, AFailingCommandIsToldAndTheShellGoesOn)
{
    TerminalProgram shell(Arguments());
    ASSERT_TRUE(shell.SeeLastLine("onlinehost>"));
    shell.Type("logn 7\rlogin x\rcustom \"a\rwho\recho still here\r");
    EXPECT_TRUE(shell.See("there is no command \"logn\"; similar are: log"));
    EXPECT_TRUE(shell.See("user id \"x\" is not a decimal number"));
    EXPECT_TRUE(shell.See("the line ends inside quotes"));
    EXPECT_TRUE(shell.See("there is no terminal yet"));
    EXPECT_TRUE(shell.See("\nstill here\n"));
}

TEST_F(LineEditor, TextsOfOthersDoNotReachTheTerminalAsControls)
{
    TerminalProgram shell(Arguments({"--user", "7"}));
    ASSERT_TRUE(shell.SeeLastLine("7@pc>"));
    shell.Type("echo before\rmessage 7 from=8 \"\\x1b[2Jgone\\xff\\n\"\r");
    ASSERT_TRUE(shell.See("from user 8: \\x1B[2Jgone\\xFF\\x0A"));
    EXPECT_TRUE(shell.See("\nbefore\n"));
}

TEST_F(LineEditor, AVeryLongLineIsTakenWhole)
{
    TerminalProgram shell(Arguments(), 24, 80);
    ASSERT_TRUE(shell.SeeLastLine("onlinehost>"));
    const std::string text = std::string(1000, 'x') + "END";
    shell.Type("echo " + text + kEnter);
    EXPECT_TRUE(shell.See("\n" + text + "\n"));
    EXPECT_TRUE(shell.SeeLastLine("onlinehost>"));
}

TEST_F(LineEditor, TheLineOutlivesAChangeOfTheTerminalsSize)
{
    TerminalProgram shell(Arguments(), 24, 80);
    ASSERT_TRUE(shell.SeeLastLine("onlinehost>"));
    shell.Type("echo " + std::string(40, 'a'));
    ASSERT_TRUE(shell.See(std::string(40, 'a')));
    shell.Resize(20, 30);
    shell.Type(std::string(40, 'b'));
    ASSERT_TRUE(shell.See("bbb"));
    shell.Resize(24, 200);
    shell.Type("\r");
    EXPECT_TRUE(shell.See("\n" + std::string(40, 'a') + std::string(40, 'b') + "\n")) << shell.Now().Text();
}

TEST_F(LineEditor, TheTerminalIsAsBeforeWhenASignalEndsIt)
{
    TerminalProgram shell(Arguments());
    ASSERT_TRUE(shell.SeeLastLine("onlinehost>"));
    ASSERT_TRUE(shell.See([&shell](const Screen&) { return (shell.Modes().c_lflag & ICANON) == 0; }));
    shell.Type("half");
    ASSERT_TRUE(shell.SeeLastLine("onlinehost> half"));
    shell.Signal(SIGTERM);
    EXPECT_TRUE(shell.See([&](const Screen&) { return shell.Modes().c_lflag == shell.FormerModes().c_lflag; }));
    EXPECT_EQ(shell.WaitForEnd(), 128 + SIGTERM);
}

TEST_F(LineEditor, ItStopsAndGoesOnAsAJob)
{
    TerminalProgram shell(Arguments());
    ASSERT_TRUE(shell.SeeLastLine("onlinehost>"));
    shell.Type("echo half");
    ASSERT_TRUE(shell.SeeLastLine("onlinehost> echo half"));
    shell.Type(kCtrlZ);
    ASSERT_TRUE(shell.WaitForStop());
    EXPECT_NE(shell.Modes().c_lflag & ICANON, 0u) << "the terminal is lent to others";
    shell.Signal(SIGCONT);
    shell.Type(" a line\r");
    EXPECT_TRUE(shell.See("\nhalf a line\n")) << shell.Now().Text();
}

TEST_F(LineEditor, ItStopsAndGoesOnInTheMiddleOfACommand)
{
    TerminalProgram shell(Arguments());
    ASSERT_TRUE(shell.SeeLastLine("onlinehost>"));
    shell.Type("sleep 1000s\r");
    ASSERT_TRUE(shell.SeeLastLine("onlinehost> sleep 1000s"));
    ASSERT_TRUE(shell.See(IsLineTaken));
    shell.Type(kCtrlZ);
    ASSERT_TRUE(shell.WaitForStop());
    EXPECT_EQ(shell.Modes().c_lflag, shell.FormerModes().c_lflag) << "the terminal is lent to others";
    shell.Signal(SIGCONT);
    shell.Type(kCtrlC);
    ASSERT_TRUE(shell.See("interrupted"));
    EXPECT_TRUE(shell.SeeLastLine("onlinehost>"));
}

TEST_F(LineEditor, AQuitWordEndsItWhateverFailedBefore)
{
    TerminalProgram shell(Arguments());
    ASSERT_TRUE(shell.SeeLastLine("onlinehost>"));
    shell.Type("nonsense\rquit\r");
    EXPECT_EQ(shell.WaitForEnd(), 0);
}
