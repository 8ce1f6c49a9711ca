#include "tests/support/Program.h"
#include "tests/support/TemporaryFolder.h"

#include <algorithm>
#include <filesystem>
#include <gtest/gtest.h>
#include <regex>

namespace
{

std::vector<std::filesystem::path> Scripts()
{
    std::vector<std::filesystem::path> scripts;
    for (const auto& entry : std::filesystem::directory_iterator(SHELL_SCRIPTS))
    {
        if (entry.path().extension() == ".script")
        {
            scripts.push_back(entry.path());
        }
    }
    std::sort(scripts.begin(), scripts.end());
    return scripts;
}

std::string Name(const testing::TestParamInfo<std::filesystem::path>& info)
{
    std::string name = info.param.stem();
    std::replace(name.begin(), name.end(), '-', '_');
    return name;
}

std::string ReadIfThere(const std::filesystem::path& path)
{
    return std::filesystem::exists(path) ? ReadFile(path) : "";
}

/// What differs from run to run.
std::string WithoutTimes(const std::string& text)
{
    static const std::regex kTime(R"("timestamp":\d+)");
    return std::regex_replace(text, kTime, R"("timestamp":0)");
}

std::string WithName(const std::string& text, const std::string& name)
{
    static const std::regex kScript("SCRIPT");
    return std::regex_replace(text, kScript, name);
}

/// A script "x.script" has to write "x.out", and "x.err" with its own name as SCRIPT; "# exit N" in its first line is the
/// exit code.
class ShellScripts : public testing::TestWithParam<std::filesystem::path>
{
protected:
    void Check(const ProgramResult& result, const std::string& name) const
    {
        std::filesystem::path expected = GetParam();
        static const std::regex kExit("^# exit ([0-9]+)\n");
        std::smatch found;
        const std::string script = ReadFile(GetParam());
        const int exitCode = std::regex_search(script, found, kExit) ? std::stoi(found[1]) : 0;
        EXPECT_EQ(WithoutTimes(result.out), ReadFile(expected.replace_extension(".out")));
        EXPECT_EQ(result.err, WithName(ReadIfThere(expected.replace_extension(".err")), name));
        EXPECT_EQ(result.exitCode, exitCode);
    }
};

} // namespace

TEST_P(ShellScripts, DoAsTheyShouldFromAFile)
{
    Check(RunHost({"shell", "--module", ONLINEMANAGER_MODULE, GetParam()}), GetParam());
}

TEST_P(ShellScripts, DoTheSameFromTheStandardInput)
{
    Check(RunHost({"shell", "--module", ONLINEMANAGER_MODULE}, ReadFile(GetParam())), "standard input");
}

INSTANTIATE_TEST_SUITE_P(Whole, ShellScripts, testing::ValuesIn(Scripts()), Name);

TEST(Shell, LeavesNoHistoryOfAScript)
{
    const TemporaryFolder folder;
    const std::string history = folder / "history";
    const ProgramResult result =
        RunHost({"shell", "--module", ONLINEMANAGER_MODULE, "--history", history}, "echo said\n");
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(result.out, "said\n");
    EXPECT_FALSE(std::filesystem::exists(history));
}

TEST(Shell, TheOptionsBringAUserAndACompany)
{
    const ProgramResult result =
        RunHost({"shell", "--module", ONLINEMANAGER_MODULE, "--users", "3", "--user", "7@desk"}, "refresh\nwho\n");
    EXPECT_EQ(result.exitCode, 0) << result.err;
    EXPECT_NE(result.out.find("4 users known, 4 online"), std::string::npos) << result.out;
}

TEST(Shell, ALoginThatFailsBeforeTheScriptEndsIt)
{
    const ProgramResult result =
        RunHost({"shell", "--module", ONLINEMANAGER_MODULE, "--user", "7", "--server", ""}, "echo never\n");
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_EQ(result.out, "");
    EXPECT_NE(result.err.find("login 7: the module refused the login at once"), std::string::npos) << result.err;
}

TEST(Shell, OptionsThatMakeNoSenseAreWrongUsage)
{
    for (const std::vector<std::string>& more : {std::vector<std::string>{"--user", "x"},
                                                 {"--user", "7@"},
                                                 {"--users", "many"},
                                                 {"--company", "-1"},
                                                 {"--timeout", "0"},
                                                 {"--log-level", "loud"}})
    {
        std::vector<std::string> arguments{"shell"};
        arguments.insert(arguments.end(), more.begin(), more.end());
        EXPECT_EQ(RunHost(arguments).exitCode, 2) << more[0] << " " << more[1];
    }
}

TEST(Shell, AScriptThatIsNotThereIsAFailure)
{
    const ProgramResult result = RunHost({"shell", "--module", ONLINEMANAGER_MODULE, "/nowhere/script"});
    EXPECT_EQ(result.exitCode, 3);
    EXPECT_EQ(result.err, "onlinehost: /nowhere/script cannot be read: No such file or directory\n");
}

TEST(Shell, AScriptThatIsAFolderIsAFailure)
{
    const ProgramResult result = RunHost({"shell", "--module", ONLINEMANAGER_MODULE, "/"});
    EXPECT_EQ(result.exitCode, 3);
    EXPECT_EQ(result.err, "onlinehost: / cannot be read: Is a directory\n");
}

TEST(Shell, CommandsThatAreNestedTooDeepAreRefusedWithTheLimit)
{
    for (const std::string name : {"as 7 ", "fails "})
    {
        std::string line;
        for (int i = 0; i < 10'000; ++i)
        {
            line += name;
        }
        const ProgramResult result = RunHost({"shell", "--module", ONLINEMANAGER_MODULE}, line + "echo said\n");
        EXPECT_EQ(result.exitCode, 2) << name;
        EXPECT_EQ(result.out, "") << name;
        EXPECT_NE(result.err.find("commands are nested too deep: at most 16 of \"as\" and \"fails\""),
                  std::string::npos)
            << result.err;
    }
}

TEST(Shell, ALineWithANulByteOrWithoutEndIsRefused)
{
    const ProgramResult nul =
        RunHost({"shell", "--module", ONLINEMANAGER_MODULE}, std::string("echo one\necho a\0b\n", 18));
    EXPECT_EQ(nul.exitCode, 2);
    EXPECT_EQ(nul.out, "one\n");
    EXPECT_EQ(nul.err, "standard input:2: echo a\\x00b: the line holds a NUL byte, which no text can carry\n");

    const ProgramResult endless =
        RunHost({"shell", "--module", ONLINEMANAGER_MODULE}, "echo one\n" + std::string(3'000'000, 'x'));
    EXPECT_EQ(endless.exitCode, 2);
    EXPECT_EQ(endless.out, "one\n");
    EXPECT_EQ(endless.err, "onlinehost: standard input:2: the line is longer than 1048576 bytes\n");
}

TEST(Shell, WritesATraceAndADiagramOfWhatItDid)
{
    const TemporaryFolder folder;
    const std::string trace = folder / "trace.json";
    const std::string diagram = folder / "diagram.mmd";
    const ProgramResult result =
        RunHost({"shell", "--module", ONLINEMANAGER_MODULE, "--trace", trace, "--diagram", diagram},
                "login 7\nlogin 8\nsettle\ninvite 7 meeting=42\nas 7 wait invited\nas 7 accept 1\nwait accepted 7\n");
    EXPECT_EQ(result.exitCode, 0) << result.err;
    EXPECT_NE(ReadFile(trace).find("OnInviteAccepted"), std::string::npos);
    EXPECT_NE(ReadFile(trace).find("8@pc"), std::string::npos);
    EXPECT_NE(ReadFile(diagram).find("sequenceDiagram"), std::string::npos);
}

TEST(Shell, TraceRecordsTheTerminalsThatAreMadeAfterIt)
{
    const TemporaryFolder folder;
    const std::string trace = folder / "trace.json";
    const std::string diagram = folder / "diagram.mmd";
    const std::string start = "trace " + trace + " diagram=" + diagram + "\n";
    const ProgramResult result = RunHost({"shell", "--module", ONLINEMANAGER_MODULE},
                                         "login 7\nfails trace\nfails trace off\n" + start + "fails " + start +
                                             "login 8\nsettle\ntrace off\nlogin 9\nas 8 logout\nfails trace off\n");
    EXPECT_EQ(result.exitCode, 0) << result.err;
    EXPECT_NE(result.out.find("and not the 1 terminal made before"), std::string::npos) << result.out;
    EXPECT_NE(result.out.find("failed as expected: a recording is running already; \"trace off\" ends it"),
              std::string::npos)
        << result.out;
    EXPECT_NE(result.out.find("failed as expected: no recording is running"), std::string::npos) << result.out;
    EXPECT_NE(result.out.find("the recording is complete: " + trace + ", " + diagram + "\n"), std::string::npos)
        << result.out;
    const std::string recorded = ReadFile(trace);
    EXPECT_NE(recorded.find("OnLoginSuccess"), std::string::npos);
    EXPECT_NE(recorded.find("8@pc"), std::string::npos);
    EXPECT_EQ(recorded.find("7@pc"), std::string::npos) << "was made before";
    EXPECT_EQ(recorded.find("9@pc"), std::string::npos) << "was made after";
    EXPECT_EQ(recorded.find("\"Logout\""), std::string::npos) << "came after the end";
    EXPECT_NE(ReadFile(diagram).find("OnLoginSuccess"), std::string::npos);
}

TEST(Shell, ATraceThatIsStillRunningIsCompleteAtTheEnd)
{
    const TemporaryFolder folder;
    const std::string trace = folder / "trace.json";
    const ProgramResult result = RunHost({"shell", "--module", ONLINEMANAGER_MODULE}, "trace " + trace + "\nlogin 7\n");
    EXPECT_EQ(result.exitCode, 0) << result.err;
    EXPECT_TRUE(ReadFile(trace).ends_with("]}")) << ReadFile(trace);
    const ProgramResult full = RunHost({"shell", "--module", ONLINEMANAGER_MODULE}, "trace /dev/full\nlogin 7\n");
    EXPECT_EQ(full.exitCode, 3) << full.err;
    const ProgramResult option =
        RunHost({"shell", "--module", ONLINEMANAGER_MODULE, "--trace", trace}, "fails trace off\n");
    EXPECT_NE(option.out.find("--trace or --diagram started the recording"), std::string::npos) << option.out;
    const ProgramResult second =
        RunHost({"shell", "--module", ONLINEMANAGER_MODULE, "--diagram", folder / "diagram.mmd"},
                "fails trace " + trace + "\n");
    EXPECT_NE(second.out.find("a recording is running already; --trace or --diagram started it"), std::string::npos)
        << second.out;
}

TEST(Shell, DoesNotAskTheModuleForTheStatusOfNoUser)
{
    const TemporaryFolder folder;
    const std::string diagram = folder / "diagram.mmd";
    const ProgramResult result = RunHost({"shell", "--module", ONLINEMANAGER_MODULE, "--diagram", diagram},
                                         "login 7\nlogin 8\nsettle\nas 7 logout\n");
    EXPECT_EQ(result.exitCode, 0) << result.err;
    const std::string recorded = ReadFile(diagram);
    EXPECT_NE(recorded.find("QueryUserStatus(user 7)"), std::string::npos);
    EXPECT_EQ(recorded.find("QueryUserStatus(0 users)"), std::string::npos);
}

TEST(Shell, TraceDoesNotOverwriteAFileOfTheProgram)
{
    const TemporaryFolder folder;
    const std::string module = folder / "module.so";
    const std::string log = folder / "log";
    const std::string history = folder.Write("history", "echo kept\n");
    const std::string script = folder / "script";
    const std::string out = folder / "out";
    std::filesystem::copy_file(ONLINEMANAGER_MODULE, module);
    const std::vector<std::pair<std::string, std::string>> files{
        {"the module", module},       {"--log", log},
        {"--history", history},       {"the script", script},
        {"the standard output", out}, {"the standard input", "/dev/stdin"}};
    std::string commands;
    for (const auto& [name, file] : files)
    {
        commands += "fails trace " + file + "\nfails trace diagram=" + file + "\n";
    }
    const std::string both = folder / "both";
    commands += "fails trace " + both + " diagram=" + both + "\nlogin 7\n";
    folder.Write("script", commands);
    const ProgramResult result =
        RunHost({"shell", "--module", module, "--log", log, "--history", history, script}, "echo input\n", out);
    EXPECT_EQ(result.exitCode, 0) << result.err;
    const std::string said = ReadFile(out);
    for (const auto& [name, file] : files)
    {
        const bool isOutput = file == out;
        for (const std::string recording : {"the trace", "the diagram"})
        {
            const std::string names = isOutput ? recording + " and " + name : name + " and " + recording;
            EXPECT_NE(said.find("failed as expected: " + names + " are the same file: "), std::string::npos)
                << names << "\n"
                << said;
        }
    }
    EXPECT_NE(said.find("the trace and the diagram are the same file: " + both), std::string::npos) << said;
    EXPECT_EQ(ReadFile(history), "echo kept\n");
}
