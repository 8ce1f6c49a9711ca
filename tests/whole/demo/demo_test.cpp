#include "tests/support/HttpServer.h"
#include "tests/support/Program.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/TraceFile.h"

#include <algorithm>
#include <csignal>
#include <gtest/gtest.h>
#include <iterator>
#include <map>
#include <rapidjson/document.h>
#include <regex>
#include <sstream>

namespace
{

using Arrow = std::pair<std::string, std::string>;
using Problems = std::vector<std::string>;

/// The demonstration with its log in a folder of the test's own.
ProgramResult RunDemo(const TemporaryFolder& folder, std::vector<std::string> arguments = {})
{
    std::vector<std::string> all{"demo", "--timeout", "60", "--log", folder / "log"};
    all.insert(all.end(), arguments.begin(), arguments.end());
    return RunHost(all);
}

/// A diagram without the line breaks in its messages.
std::string JoinLines(std::string diagram)
{
    for (size_t place = diagram.find("<br/>"); place != std::string::npos; place = diagram.find("<br/>"))
    {
        diagram.erase(place, 5);
    }
    return diagram;
}

/// The output without the parts that differ from run to run: times, paths and numbers that the threads' order decides.
std::string Normalise(std::string text, const TemporaryFolder& folder)
{
    const std::string path = folder / "";
    for (size_t place = text.find(path); place != std::string::npos; place = text.find(path))
    {
        text.replace(place, path.size(), "FOLDER/");
    }
    text = std::regex_replace(text, std::regex(R"(\d\d:\d\d:\d\d\.\d\d\d)"), "TIME");
    text = std::regex_replace(text, std::regex(R"(A meeting on [^\n]*)"), "A meeting on MODULE");
    text = std::regex_replace(text, std::regex(R"(msgId:\d+)"), "msgId:N");
    text = std::regex_replace(text, std::regex(R"(\d+ bytes)"), "N bytes");
    return std::regex_replace(text, std::regex(R"(steps in \d+ ms)"), "steps in N ms");
}

} // namespace

TEST(Demo, PlaysTheWholeMeeting)
{
    const TemporaryFolder folder;
    const ProgramResult result = RunDemo(folder);
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(result.err, "");
    EXPECT_EQ(Normalise(result.out, folder), ReadFile(DEMO_STORY));
}

TEST(Demo, WritesTheModulesLogToAFile)
{
    const TemporaryFolder folder;
    ASSERT_EQ(RunDemo(folder).exitCode, 0);
    const std::string log = ReadFile(folder / "log");
    for (const char* text : {"OnlineManager::Initialize.", "Paas login param:", "OnMdsMsgData msg:",
                             "UserOnlineImp::InviteUsers(), totalUser=45, code=1, inviteId=", "WDllCanUnloadNow :0."})
    {
        EXPECT_NE(log.find(text), std::string::npos) << text;
    }
}

TEST(Demo, WithoutALogFileLeavesNothingInTheTemporaryFolder)
{
    const TemporaryFolder folder;
    const ProgramResult result = RunHost({"demo", "--timeout", "60"}, {}, {}, {{"TMPDIR", folder / ""}});
    EXPECT_EQ(result.exitCode, 0) << result.err;
    EXPECT_EQ(result.out.find("The module's log"), std::string::npos) << result.out;
    EXPECT_TRUE(std::filesystem::is_empty(folder / "")) << "nothing is left in the temporary folder";
}

TEST(Demo, AnEmptyNameOfTheTemporaryFolderIsNoError)
{
    const ProgramResult result = RunHost({"demo", "--timeout", "60"}, {}, {}, {{"TMPDIR", ""}});
    EXPECT_EQ(result.exitCode, 0) << result.err;
}

TEST(Demo, ABiggerCompanyShowsItsProgress)
{
    const TemporaryFolder folder;
    const ProgramResult result = RunDemo(folder, {"--users", "2000"});
    EXPECT_EQ(result.exitCode, 0);
    for (const char* text : {"\n  coming online: 50 %, 1 000 of 2 000\n", "sees all 2 000 colleagues online",
                             "2 000 x desktop", "\n  going offline: 100 %, 2 000 of 2 000\n", "all succeeded"})
    {
        EXPECT_NE(result.out.find(text), std::string::npos) << text << result.out;
    }
}

TEST(Demo, AnInterruptionEndsItInOrderWithCompleteFiles)
{
    const TemporaryFolder folder;
    RunningHost host({"demo", "--users", "200000", "--timeout", "600", "--log", folder / "log", "--trace",
                      folder / "trace", "--diagram", folder / "diagram"});
    ASSERT_TRUE(host.WaitForOutput("coming online: 25 %"));
    host.Signal(SIGINT);
    const ProgramResult result = host.WaitForEnd();
    EXPECT_EQ(result.exitCode, 130);
    EXPECT_EQ(result.err, "");
    EXPECT_TRUE(std::regex_search(result.out, std::regex(R"(\n\d+ steps in \d+ ms: interrupted by SIGINT\n)")))
        << result.out;
    EXPECT_EQ(result.out.find("FAILED"), std::string::npos) << result.out;
    const TraceFile trace(folder / "trace");
    EXPECT_EQ(trace.Problems(), Problems{});
    EXPECT_EQ(trace.Count("WDllCreateComponent"), trace.Count("IOnlineManager::Destroy"));
    EXPECT_EQ(trace.Count("A message arrives"), 0u) << "a scene that is not played is no chapter";
    EXPECT_EQ(DiagramProblems(ReadFile(folder / "diagram")), Problems{});
    EXPECT_NE(ReadFile(folder / "log").find("WDllCanUnloadNow :0."), std::string::npos);
}

TEST(Demo, ALogOnAFullDiskIsAFailureThatNamesTheFile)
{
    const ProgramResult result = RunHost({"demo", "--timeout", "60", "--log", "/dev/full"});
    EXPECT_EQ(result.exitCode, 3);
    EXPECT_NE(result.err.find("/dev/full: No space left on device"), std::string::npos) << result.err;
}

TEST(Demo, WritesTheSameAsJsonLines)
{
    const TemporaryFolder folder;
    const ProgramResult text = RunDemo(folder);
    const ProgramResult result = RunDemo(folder, {"--json", "--users", "2000"});
    EXPECT_EQ(result.exitCode, 0);
    std::map<std::string, int64_t> counts;
    std::istringstream lines(result.out);
    rapidjson::Document last;
    for (std::string line; std::getline(lines, line);)
    {
        last.Parse(line.c_str());
        ASSERT_FALSE(last.HasParseError()) << line;
        ++counts[last["type"].GetString()];
    }
    const auto count = [&text](const std::string& pattern)
    {
        const std::regex regex(pattern);
        return std::distance(std::sregex_iterator(text.out.begin(), text.out.end(), regex), std::sregex_iterator());
    };
    EXPECT_STREQ(last["type"].GetString(), "result");
    EXPECT_EQ(last["steps"].GetInt64(), counts["step"]);
    EXPECT_EQ(last["failed"].GetInt64(), 0);
    EXPECT_EQ(last["exitCode"].GetInt(), 0);
    EXPECT_EQ(counts["start"], 1);
    EXPECT_EQ(counts["step"], count(R"(\d  ok  )"));
    EXPECT_EQ(counts["action"], count(R"(\.\d\d\d          )"));
    EXPECT_EQ(counts["chapter"], 10);
    EXPECT_GT(counts["event"], 20);
}

TEST(Demo, IsPlainInAPipe)
{
    const TemporaryFolder folder;
    EXPECT_EQ(RunDemo(folder).out.find('\x1b'), std::string::npos);
}

TEST(Demo, TheTraceShowsTheCallsAndTheirConsequences)
{
    const TemporaryFolder folder;
    const ProgramResult result = RunDemo(folder, {"--trace", folder / "trace"});
    ASSERT_EQ(result.exitCode, 0) << result.out;
    const TraceFile trace(folder / "trace");
    EXPECT_EQ(trace.Problems(), Problems{});

    EXPECT_EQ(trace.Count("WDllCreateComponent"), 6u);
    EXPECT_EQ(trace.Count("IOnlineManager::Destroy"), 6u);
    EXPECT_EQ(trace.Count("IPaasOnline::Login"), 7u);
    EXPECT_EQ(trace.Count("IZolConnection::Login"), 7u);
    EXPECT_EQ(trace.Count("IZolConnection::LoginOldGw"), 1u);
    EXPECT_EQ(trace.Count("IPaasOnlineNotify::OnLoginSuccess"), 6u);
    EXPECT_EQ(trace.Count("IUserOnlineNotify::OnInviteAccepted"), 29u);
    EXPECT_EQ(trace.Count("IZolMdsClient::SendMdsData"), 6u);
    EXPECT_EQ(trace.Count("IReconnectionStrategy::CheckReconnect"), 1u);

    const std::vector<Arrow> arrows = trace.Arrows();
    const auto count = [&](const char* from, const char* to)
    { return std::count(arrows.begin(), arrows.end(), Arrow(from, to)); };
    EXPECT_EQ(count("IPaasOnline::Login", "IPaasOnlineNotify::OnLoginSuccess"), 6);
    EXPECT_EQ(count("IPaasOnline::Login", "IPaasOnlineNotify::OnOffline"), 1);
    EXPECT_EQ(count("IPaasOnline::Logout", "IPaasOnlineNotify::OnOffline"), 5);
    EXPECT_EQ(count("IMeetingTunnel::JoinMeeting", "IMeetingTunnelNotify::OnJoinMeetingResult"), 3);
    EXPECT_EQ(count("IMeetingTunnel::LeaveMeeting", "IMeetingTunnelNotify::OnLeaveMeetingResult"), 2);
    EXPECT_EQ(count("IUserOnline::InviteUsers", "IUserOnlineNotify::OnInviteAccepted"), 29);
    EXPECT_EQ(count("IUserOnline::InviteUsers", "IUserOnlineNotify::OnInviteRejected"), 16);

    EXPECT_EQ(ReadFile(folder / "trace").find("token-of-"), std::string::npos);
}

TEST(Demo, EachComponentHasItsOwnTracksInTheTraceAndChaptersAreSlices)
{
    const TemporaryFolder folder;
    ASSERT_EQ(RunDemo(folder, {"--trace", folder / "trace"}).exitCode, 0);
    const TraceFile trace(folder / "trace");
    EXPECT_EQ(trace.Problems(), Problems{});
    const std::vector<std::string> tracks = trace.Tracks();
    for (const char* track :
         {"chapters/chapters", "anna-desktop/main", "anna-desktop/platform", "anna-desktop (2)/main", "ben-laptop/main",
          "ben-laptop (2)/platform", "ben-tablet/main", "carla-phone/main"})
    {
        EXPECT_EQ(std::count(tracks.begin(), tracks.end(), track), 1) << track;
    }
    const std::vector<std::string> chapters = trace.Slices("chapters/chapters");
    ASSERT_EQ(chapters.size(), 10u);
    EXPECT_EQ(chapters.front(), "Two users, and a second device");
    EXPECT_EQ(chapters.back(), "The module is unloaded");
    const std::vector<std::string> calls = trace.Slices("ben-tablet/main");
    EXPECT_EQ(std::count(calls.begin(), calls.end(), "IPaasOnline::Login"), 2);
    EXPECT_EQ(std::count(calls.begin(), calls.end(), ".IZolConnection::Login"), 2);
}

TEST(Demo, TheDiagramIsFitForPeople)
{
    const TemporaryFolder folder;
    ASSERT_EQ(RunDemo(folder, {"--diagram", folder / "diagram"}).exitCode, 0);
    const std::string diagram = JoinLines(ReadFile(folder / "diagram"));
    EXPECT_EQ(DiagramProblems(diagram), Problems{});
    EXPECT_LT(std::count(diagram.begin(), diagram.end(), '\n'), 300);
    for (const char* text :
         {" as Host\n", " as Module of ben-tablet", "user 2\n", " as Platform\n", " s  Login(user 2, force=true)\n",
          " s  A connection drops and comes back\n", " s  created and set up (",
          "OnLoginResult(36 (logged in on another device), conflictDeviceId=ben-laptop",
          "OnInviteRejected(user 1003, invitation ", "2 (the user is offline)", "userName=Anna, meetingId=4711)",
          "\u00d714\n", "\u00d729\n"})
    {
        EXPECT_NE(diagram.find(text), std::string::npos) << text << "\n" << diagram;
    }
    for (const char* text : {"AddListener", "AddNotify", "CreateComponent", "-->>", "= true"})
    {
        EXPECT_EQ(diagram.find(text), std::string::npos) << text;
    }
    const size_t drop = diagram.find("A connection drops");
    const size_t left = diagram.find("OnUserLeaved(user 2)", drop);
    ASSERT_NE(left, std::string::npos);
    EXPECT_NE(diagram.find("OnUserJoined(user 2)", left), std::string::npos) << "the user never comes back";
}

TEST(Demo, TheDiagramShowsTheChosenDevicesAndSubjects)
{
    const TemporaryFolder folder;
    ASSERT_EQ(RunDemo(folder, {"--diagram", folder / "diagram", "--diagram-device", "anna-desktop,ben-laptop",
                               "--diagram-subject", "messages", "--diagram-subject", "quality"})
                  .exitCode,
              0);
    const std::string diagram = JoinLines(ReadFile(folder / "diagram"));
    EXPECT_EQ(DiagramProblems(diagram), Problems{});
    for (const char* text : {"Module of anna-desktop", "Module of ben-laptop", "OnUserMsgIncome(user 2, ",
                             "msg=Is this seat taken?", "OnSubscribeAVQualityInfo()"})
    {
        EXPECT_NE(diagram.find(text), std::string::npos) << text << "\n" << diagram;
    }
    for (const char* text : {"carla-phone", "ben-tablet", "Login(", "InviteUsers", "JoinMeeting"})
    {
        EXPECT_EQ(diagram.find(text), std::string::npos) << text << "\n" << diagram;
    }
}

TEST(Demo, UnknownDevicesAndSubjectsAreErrorsThatNameTheKnownOnes)
{
    const TemporaryFolder folder;
    const ProgramResult subject =
        RunDemo(folder, {"--diagram", folder / "diagram", "--diagram-subject", "login,weather"});
    EXPECT_EQ(subject.exitCode, 2);
    EXPECT_NE(subject.err.find("unknown subject \"weather\": the subjects are login, presence, invitations, meetings, "
                               "messages, quality"),
              std::string::npos)
        << subject.err;
    const ProgramResult device = RunDemo(folder, {"--diagram", folder / "diagram", "--diagram-device", "dora-phone"});
    EXPECT_EQ(device.exitCode, 3);
    EXPECT_NE(device.err.find("the diagram cannot show the device \"dora-phone\": the recorded devices are "
                              "anna-desktop, ben-laptop, ben-tablet, carla-phone"),
              std::string::npos)
        << device.err;
}

TEST(Shell, ItsOwnCallsToThePlatformAreNotTheModulesCalls)
{
    const TemporaryFolder folder;
    const ProgramResult result = RunHost({"shell", "--module", ONLINEMANAGER_MODULE, "--trace", folder / "trace",
                                          "--diagram", folder / "diagram", "--user", "7"});
    ASSERT_EQ(result.exitCode, 0) << result.err;
    const TraceFile trace(folder / "trace");
    EXPECT_EQ(trace.Problems(), Problems{});
    const auto count = [&](const char* name, const char* category)
    {
        return std::count_if(trace.Records().begin(), trace.Records().end(),
                             [&](const TraceFile::Record& record)
                             { return record.name == name && record.category == category; });
    };
    EXPECT_EQ(count("IZolTMsg::AddListener", "platform call"), 1);
    EXPECT_EQ(count("IZolTMsg::AddListener", "host's platform call"), 1);
    EXPECT_EQ(count("IZolTMsg::RemoveListener", "platform call"), 1);
    EXPECT_EQ(count("IZolTMsg::RemoveListener", "host's platform call"), 1);
    EXPECT_EQ(DiagramProblems(ReadFile(folder / "diagram")), Problems{});
}

TEST(Demo, TheTraceShowsTheLogWhenAsked)
{
    const TemporaryFolder folder;
    ASSERT_EQ(RunDemo(folder, {"--trace", folder / "trace", "--trace-log"}).exitCode, 0);
    const TraceFile trace(folder / "trace");
    EXPECT_EQ(trace.Problems(), Problems{});
    const auto& records = trace.Records();
    EXPECT_TRUE(std::any_of(records.begin(), records.end(),
                            [](const TraceFile::Record& record) {
                                return record.phase == "i" && record.category == "log" &&
                                       record.name == "OnlineManager::Initialize.";
                            }));
}

TEST(Demo, ItsHelpIsComplete)
{
    const ProgramResult result = RunHost({"demo", "--help"});
    EXPECT_EQ(result.exitCode, 0);
    for (const char* text :
         {"--users", "--timeout", "--module", "--log", "--trace", "--trace-log", "--diagram", "--diagram-device",
          "--diagram-subject", "login, presence, invitations", "Exit codes:", "50 to 1 000 000"})
    {
        EXPECT_NE(result.out.find(text), std::string::npos) << text;
    }
}

TEST(Demo, WrongOptionsAreWrongUsage)
{
    for (const std::vector<std::string>& arguments : std::vector<std::vector<std::string>>{
             {"demo", "--users", "49"},
             {"demo", "--users", "1000001"},
             {"demo", "--users", "many"},
             {"demo", "--users", "-1"},
             {"demo", "--timeout", "0"},
             {"demo", "--trace-log"},
             {"demo", "--diagram-device", "anna-desktop"},
             {"demo", "--diagram-subject", "login"},
             {"demo", "--colour"},
             {"demo", "something"},
         })
    {
        const ProgramResult result = RunHost(arguments);
        EXPECT_EQ(result.exitCode, 2) << arguments.back();
        EXPECT_EQ(result.out, "") << arguments.back();
        EXPECT_NE(result.err, "") << arguments.back();
    }
}

TEST(Demo, FilesThatCannotBeWrittenAreFailures)
{
    const TemporaryFolder folder;
    const std::string nowhere = folder / "none" / "file";
    for (const char* option : {"--trace", "--diagram"})
    {
        const ProgramResult result = RunDemo(folder, {option, nowhere});
        EXPECT_EQ(result.exitCode, 3) << option;
        EXPECT_NE(result.err.find("cannot be written: " + nowhere + ": No such file or directory"), std::string::npos)
            << result.err;
    }
    const ProgramResult result = RunHost({"demo", "--log", folder.Write("file", "") / "log"});
    EXPECT_EQ(result.exitCode, 3);
    EXPECT_NE(result.err.find("the log cannot be written"), std::string::npos) << result.err;
}

TEST(Demo, ATraceThatDoesNotFitOnTheDiskIsAFailure)
{
    const TemporaryFolder folder;
    const ProgramResult result = RunDemo(folder, {"--trace", "/dev/full"});
    EXPECT_EQ(result.exitCode, 3);
    EXPECT_NE(result.err.find("the trace could not be written: /dev/full: No space left on device"), std::string::npos)
        << result.err;
}

TEST(Demo, AMissingModuleOrAnotherFileIsAFailure)
{
    const TemporaryFolder folder;
    const std::string missing = folder / "missing.so";
    const ProgramResult none = RunDemo(folder, {"--module", missing});
    EXPECT_EQ(none.exitCode, 3);
    EXPECT_NE(none.err.find(missing), std::string::npos) << none.err;

    const std::string text = folder.Write("text.so", "not a module");
    const ProgramResult wrong = RunDemo(folder, {"--module", text});
    EXPECT_EQ(wrong.exitCode, 3);
    EXPECT_NE(wrong.err.find(text), std::string::npos) << wrong.err;
    EXPECT_EQ(wrong.out, "");
}

TEST(Login, IsRecordedToo)
{
    const TemporaryFolder folder;
    const ProgramResult result = RunHost(
        {"login", "--user", "1001", "--trace", folder / "trace", "--trace-log", "--diagram", folder / "diagram"});
    ASSERT_EQ(result.exitCode, 0) << result.err;
    const TraceFile trace(folder / "trace");
    EXPECT_EQ(trace.Problems(), Problems{});
    EXPECT_EQ(trace.Count("IPaasOnlineNotify::OnLoginSuccess"), 1u);
    const auto& records = trace.Records();
    EXPECT_TRUE(std::any_of(records.begin(), records.end(),
                            [](const TraceFile::Record& record) { return record.phase == "i"; }));
    EXPECT_EQ(DiagramProblems(ReadFile(folder / "diagram")), Problems{});
}

TEST(Login, HttpRequestsAreRecordedWithoutTheirQueries)
{
    const HttpServer server([](const HttpExchange& exchange)
                            { exchange.Answer("200 OK", R"({"code":0,"address":"tcp:in-process"})"); });
    const TemporaryFolder folder;
    const ProgramResult result = RunHost({"login", "--user", "1001", "--server", server.Url("/cp"), "--token",
                                          "very-secret", "--trace", folder / "trace", "--diagram", folder / "diagram"});
    ASSERT_EQ(result.exitCode, 0) << result.err;
    const TraceFile trace(folder / "trace");
    EXPECT_EQ(trace.Problems(), Problems{});
    EXPECT_GE(trace.Count("IPaasOnline::RequestCPAddress"), 1u);
    EXPECT_GE(trace.Count("IZolHttp::HttpGet"), 1u);
    const std::vector<Arrow> arrows = trace.Arrows();
    EXPECT_GE(
        std::count(arrows.begin(), arrows.end(), Arrow("IZolHttp::HttpGet", "IHttpResponseNotify::OnCompleteRespond")),
        1);
    const std::string text = ReadFile(folder / "trace");
    EXPECT_NE(text.find(server.Url("/cp") + "?..."), std::string::npos);
    EXPECT_EQ(text.find("very-secret"), std::string::npos);
    EXPECT_EQ(DiagramProblems(ReadFile(folder / "diagram")), Problems{});
}
