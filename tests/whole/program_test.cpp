#include "tests/support/Program.h"
#include "tests/support/TerminalProgram.h"
#include "tests/support/TraceFile.h"

#include <algorithm>
#include <filesystem>
#include <gtest/gtest.h>
#include <sstream>
#include <sys/stat.h>

namespace
{

/// The command line is refused as wrong usage, for this reason.
void ExpectWrongUsage(const std::vector<std::string>& arguments, const std::string& reason)
{
    const ProgramResult result = RunHost(arguments);
    EXPECT_EQ(result.exitCode, 2) << reason;
    EXPECT_EQ(result.err.substr(0, result.err.find('\n')), "onlinehost: " + reason);
}

} // namespace

TEST(OnlineHost, HelpShowsTheCommandsAndTheExitCodes)
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
    for (const char* command : {"demo", "inspect", "login", "shell"})
    {
        const ProgramResult result = RunHost({command, "--help"});
        EXPECT_EQ(result.exitCode, 0);
        EXPECT_NE(result.out.find("Exit codes: "), std::string::npos) << result.out;
    }
}

TEST(OnlineHost, ShowsItsVersion)
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

TEST(OnlineHost, AMisspeltCommandGetsASuggestion)
{
    ExpectWrongUsage({"logn"}, R"(unknown command "logn"; did you mean "login"?)");
    ExpectWrongUsage({"logn", "--user", "1"}, R"(unknown command "logn"; did you mean "login"?)");
    ExpectWrongUsage({"nonsense"}, R"(unknown command "nonsense")");
}

TEST(OnlineHost, AMisspeltOptionGetsASuggestion)
{
    ExpectWrongUsage({"--vers"}, R"(unknown option "--vers"; did you mean "--version"?)");
    ExpectWrongUsage({"login", "--usr", "1"}, R"(unknown option "--usr"; did you mean "--user"?)");
    ExpectWrongUsage({"demo", "--user=60"}, R"(unknown option "--user"; did you mean "--users"?)");
    ExpectWrongUsage({"login", "--user", "1", "more"}, R"(unexpected argument "more")");
}

TEST(OnlineHost, HelpIsAsWideAsTheTerminal)
{
    TerminalProgram program({"login", "--help"}, 70, 60);
    EXPECT_TRUE(program.SeeLastLine("or time-out, 130 interrupted, 143 terminated.")) << program.Now().Text();
    EXPECT_EQ(program.WaitForEnd(), 0);
}

TEST(OnlineHost, HelpInAPipeIs80ColumnsWide)
{
    for (const char* command : {"demo", "inspect", "login", "shell"})
    {
        std::istringstream lines(RunHost({command, "--help"}).out);
        for (std::string line; std::getline(lines, line);)
        {
            EXPECT_LE(line.size(), 80u) << line;
        }
    }
}

TEST(OnlineHost, TwoOutputsInOneFileAreWrongUsage)
{
    const TemporaryFolder folder;
    const std::string file = folder / "file";
    const std::string reason = "--log and --trace are the same file: " + file;
    ExpectWrongUsage({"login", "--user", "1", "--log", file, "--trace", file}, reason);
    ExpectWrongUsage({"login", "--user", "1", "--log", file, "--trace", folder / "./none/../file"}, reason);
    const std::string symbolic = folder / "symbolic";
    std::filesystem::create_symlink("file", symbolic);
    ExpectWrongUsage({"login", "--user", "1", "--log", file, "--trace", symbolic}, reason);
    EXPECT_FALSE(std::filesystem::exists(file)) << "nothing is written";

    folder.Write("file", "text");
    const std::string hard = folder / "hard";
    std::filesystem::create_hard_link(file, hard);
    ExpectWrongUsage({"login", "--user", "1", "--log", file, "--trace", hard}, reason);
    ExpectWrongUsage({"demo", "--trace", file, "--diagram", hard}, "--trace and --diagram are the same file: " + file);
    EXPECT_EQ(ReadFile(file), "text");
}

TEST(OnlineHost, AnOutputThatIsAnInputIsWrongUsage)
{
    const TemporaryFolder folder;
    const std::string module = folder / "module.so";
    std::filesystem::copy_file(ONLINEMANAGER_MODULE, module);
    ExpectWrongUsage({"demo", "--module", module, "--log", module},
                     "--log and the module are the same file: " + module);
    const std::string ca = folder.Write("ca.pem", "text");
    ExpectWrongUsage({"login", "--user", "1", "--ca-file", ca, "--trace", ca},
                     "--trace and --ca-file are the same file: " + ca);
    const std::string script = folder.Write("script", "help");
    ExpectWrongUsage({"shell", script, "--log", script}, "--log and the script are the same file: " + script);
}

TEST(OnlineHost, AnOutputThatIsTheStandardOutputIsWrongUsage)
{
    const TemporaryFolder folder;
    const std::string file = folder / "file";
    const ProgramResult result = RunHost({"login", "--user", "1", "--log", file}, {}, file);
    EXPECT_EQ(result.exitCode, 2);
    EXPECT_NE(result.err.find("--log and the standard output are the same file"), std::string::npos) << result.err;
}

TEST(OnlineHost, AnOutputThatIsTheFileOfTheStandardErrorIsWrongUsage)
{
    const TemporaryFolder folder;
    const std::string file = folder / "file";
    EXPECT_EQ(RunHostLine("login --user 1 --trace " + file + " 2>" + file).exitCode, 2);
    const std::string errors = ReadFile(file);
    EXPECT_NE(errors.find("--trace and the standard error are the same file: " + file), std::string::npos) << errors;
    EXPECT_EQ(RunHostLine("login --user 1 >" + file + " 2>&1").exitCode, 0) << "the streams may be one file";
}

TEST(OnlineHost, TwoOutputsInOneNamedPipeAreWrongUsage)
{
    const TemporaryFolder folder;
    const std::string pipe = folder / "pipe";
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    for (const char* command : {"login --user 1 --log ", "demo --log "})
    {
        const ProgramResult result = RunHostLine(command + pipe + " --trace " + pipe + " 9<>" + pipe);
        EXPECT_EQ(result.exitCode, 2);
        EXPECT_NE(result.err.find("--log and --trace are the same file: " + pipe), std::string::npos) << result.err;
    }
}

TEST(OnlineHost, AClosedOutputIsAnErrorOfEveryCommandAndNoOtherFileTakesItsPlace)
{
    const TemporaryFolder folder;
    const std::string log = folder / "log";
    for (const std::string& command : {"demo --log " + log, "login --user 1 --log " + log,
                                       std::string("inspect " ONLINEMANAGER_MODULE), std::string("--version")})
    {
        for (const char* closed : {" >&-", " <&- >&-"})
        {
            const ProgramResult result = RunHostLine(command + closed);
            EXPECT_EQ(result.exitCode, 3) << command << closed;
            EXPECT_EQ(result.err,
                      "onlinehost: the standard output is closed; connect it, to /dev/null for no output\n");
            EXPECT_EQ(ReadFile(log), "");
        }
    }
}

TEST(OnlineHost, AClosedErrorStreamIsNoOtherFile)
{
    const TemporaryFolder folder;
    const std::string trace = folder / "trace";
    const std::string url = "http://127.0.0.1:1/cp";
    const ProgramResult result =
        RunHostLine("login --user 1 --timeout 1 --server " + url + " --trace " + trace + " <&- 2>&-");
    EXPECT_EQ(result.exitCode, 3);
    EXPECT_EQ(ReadFile(trace).find("onlinehost: "), std::string::npos) << ReadFile(trace);
    EXPECT_EQ(TraceFile(trace).Problems(), std::vector<std::string>{});
}

TEST(OnlineHost, OutputToAPipeWithoutAReaderLeavesCompleteFiles)
{
    for (const std::string command : {"login --user 1", "demo"})
    {
        const TemporaryFolder folder;
        const std::string pipe = folder / "pipe";
        ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
        // The shell opens a reader, then a writer, and closes the reader.
        const ProgramResult result =
            RunHostLine(command + " --trace " + std::string(folder / "trace") + " --diagram " +
                        std::string(folder / "diagram") + " 8<>" + pipe + " 9>" + pipe + " 8<&- >&9 9>&-");
        EXPECT_EQ(result.exitCode, 3) << command;
        EXPECT_EQ(result.err, "onlinehost: the output could not be written: Broken pipe\n");
        EXPECT_EQ(TraceFile(folder / "trace").Problems(), std::vector<std::string>{});
        EXPECT_EQ(DiagramProblems(ReadFile(folder / "diagram")), std::vector<std::string>{});
    }
}

TEST(OnlineHost, AShellWhoseReaderIsGoneDoesNotWaitForItsInput)
{
    const TemporaryFolder folder;
    const std::string input = folder / "input";
    const std::string output = folder / "output";
    ASSERT_EQ(mkfifo(input.c_str(), 0600), 0);
    ASSERT_EQ(mkfifo(output.c_str(), 0600), 0);
    // The input stays open and empty; the output has lost its reader.
    const ProgramResult result =
        RunHostLine("shell --user 1 <>" + input + " 8<>" + output + " 9>" + output + " 8<&- >&9 9>&-");
    EXPECT_EQ(result.exitCode, 3);
    EXPECT_EQ(result.err, "onlinehost: the output could not be written: Broken pipe\n");
}

TEST(OnlineHost, ADeviceMayBeNamedMoreThanOnce)
{
    EXPECT_EQ(RunHost({"login", "--user", "1", "--log", "/dev/null", "--trace", "/dev/null"}, {}, "/dev/null").exitCode,
              0);
}

TEST(OnlineHost, OutputOnAFullDiskNamesTheReason)
{
    for (const std::vector<std::string>& arguments : {std::vector<std::string>{"--version"},
                                                      {"--help"},
                                                      {"inspect", ONLINEMANAGER_MODULE},
                                                      {"login", "--user", "1"}})
    {
        const ProgramResult result = RunHost(arguments, {}, "/dev/full");
        EXPECT_EQ(result.exitCode, 3);
        EXPECT_EQ(result.err, "onlinehost: the output could not be written: No space left on device\n");
    }
}

TEST(OnlineHost, ALogOfTheShellOnAFullDiskIsAFailureThatNamesTheFile)
{
    const ProgramResult result = RunHost({"shell", "--user", "1", "--log", "/dev/full"});
    EXPECT_EQ(result.exitCode, 3);
    EXPECT_NE(result.err.find("/dev/full: No space left on device"), std::string::npos) << result.err;
}

TEST(OnlineHost, OutputThatDoesNotArriveIsAFailure)
{
    const ProgramResult result = RunHost({"inspect", ONLINEMANAGER_MODULE}, {}, "/dev/full");
    EXPECT_EQ(result.exitCode, 3);
    EXPECT_NE(result.err.find("could not be written"), std::string::npos) << result.err;
}
