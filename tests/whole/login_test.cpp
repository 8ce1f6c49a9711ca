#include "tests/support/HttpServer.h"
#include "tests/support/HttpsServer.h"
#include "tests/support/Program.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/TraceFile.h"

#include <algorithm>
#include <atomic>
#include <csignal>
#include <future>
#include <gtest/gtest.h>
#include <rapidjson/document.h>
#include <sstream>
#include <sys/stat.h>

namespace
{

/// The lines of the output, without their times.
std::vector<std::string> Story(const std::string& out)
{
    constexpr std::string_view kTime = "00:00:00.000  ";
    std::vector<std::string> lines;
    std::istringstream stream(out);
    for (std::string line; std::getline(stream, line);)
    {
        std::string time = line.substr(0, kTime.size());
        std::replace_if(
            time.begin(), time.end(), [](char letter) { return letter >= '0' && letter <= '9'; }, '0');
        EXPECT_EQ(time, kTime);
        lines.push_back(line.substr(time.size()));
    }
    return lines;
}

using Lines = std::vector<std::string>;

const std::string kConnectionPoint = R"({"code":0,"address":"tcp:in-process"})";

} // namespace

TEST(Login, LogsInAndOutAgain)
{
    const ProgramResult result = RunHost({"login", "--user", "1001", "--device", "pc"});
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(Story(result.out), (Lines{"pc logs in at tcp:in-process as user 1001", "pc logged in",
                                        "pc sees 1 user change: 1001", "pc went offline: success"}));
    EXPECT_EQ(result.err, "");
}

TEST(Login, ARefusalEndsWith1)
{
    const ProgramResult result = RunHost({"login", "--user", "1001", "--device", "pc", "--refuse", "36"});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_EQ(Story(result.out).at(1), "pc could not log in: 36 (logged in on another device)");
    EXPECT_EQ(result.out.find("learns of the other device"), std::string::npos) << "the platform named none";
}

TEST(Login, ARefusalOfTheModuleEndsWith1)
{
    const ProgramResult result = RunHost({"login", "--user", "1001", "--device", "pc", "--server", ""});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_EQ(Story(result.out).at(1), "pc was refused by the module at once");
}

TEST(Login, MalformedUserIdsAreWrongUsage)
{
    const std::vector<std::pair<std::string, std::string>> cases{
        {"abc", "user id \"abc\" is not a decimal number"},
        {"12abc", "user id \"12abc\" is not a decimal number"},
        {"-1", "user id \"-1\" is not a decimal number"},
        {"4294967296", "user id \"4294967296\" is too large: the largest is 4294967295"},
        {"123456789012345678901234567890", "is too large"},
        {"0", "user id 0 means no user"},
    };
    for (const auto& [id, reason] : cases)
    {
        const ProgramResult result = RunHost({"login", "--user=" + id});
        EXPECT_EQ(result.exitCode, 2) << id;
        EXPECT_EQ(result.out, "");
        EXPECT_NE(result.err.find(reason), std::string::npos) << result.err;
    }
}

TEST(Login, AnEmptyUserIdIsWrongUsage)
{
    EXPECT_EQ(RunHost({"login", "--user", ""}).exitCode, 2);
    EXPECT_EQ(RunHost({"login", "--user="}).exitCode, 2);
}

TEST(Login, TheLargestUserIdIsOne)
{
    const ProgramResult result = RunHost({"login", "--user", "4294967295"});
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_NE(result.err.find("cannot read user ids above 2147483647 back"), std::string::npos) << result.err;
}

TEST(Login, OtherMalformedValuesAreWrongUsage)
{
    for (const std::vector<std::string>& more : {std::vector<std::string>{"--company", "x"},
                                                 {"--type", "-1"},
                                                 {"--timeout", "0"},
                                                 {"--timeout", "soon"},
                                                 {"--refuse", "x"},
                                                 {"--log-level", "trace"},
                                                 {"--log", "file", "--log-level", "loud"},
                                                 {"--ca-file", "/nowhere"}})
    {
        std::vector<std::string> arguments{"login", "--user", "1"};
        arguments.insert(arguments.end(), more.begin(), more.end());
        EXPECT_EQ(RunHost(arguments).exitCode, 2) << more[0] << " " << more[1];
    }
    EXPECT_EQ(RunHost({"login"}).exitCode, 2) << "no user";
}

TEST(Login, AModuleThatCannotBeLoadedIsAFailure)
{
    const ProgramResult result = RunHost({"login", "--user", "1", "--module", "/nowhere/libmodule.so"});
    EXPECT_EQ(result.exitCode, 3);
    EXPECT_EQ(result.err, "onlinehost: /nowhere/libmodule.so: no such file\n");
}

TEST(Login, TheModulesLogGoesToTheFileAtItsLevel)
{
    const TemporaryFolder folder;
    const std::string file = folder / "module.log";
    EXPECT_EQ(RunHost({"login", "--user", "1001", "--log", file}).exitCode, 0);
    const std::string log = ReadFile(file);
    EXPECT_NE(log.find("OnlineManager ../PaasOnlineImp.cpp:"), std::string::npos) << log;
    EXPECT_NE(log.find(" Paas login param: deviceid=pc, companyid=1, userid=1001."), std::string::npos) << log;

    const std::string silent = folder / "silent.log";
    EXPECT_EQ(RunHost({"login", "--user", "1001", "--log", silent, "--log-level", "warning"}).exitCode, 0);
    EXPECT_EQ(ReadFile(silent), "");
}

TEST(Login, WritesTheSameAsJsonLines)
{
    const std::vector<std::vector<std::string>> expected{
        {"action", ""}, {"event", "login"}, {"event", "changed"}, {"event", "offline"}, {"result", ""}};
    const ProgramResult result = RunHost({"login", "--user", "1001", "--device", "pc", "--json"});
    EXPECT_EQ(result.exitCode, 0);
    std::vector<std::vector<std::string>> told;
    std::istringstream lines(result.out);
    for (std::string line; std::getline(lines, line);)
    {
        rapidjson::Document json;
        json.Parse(line.c_str());
        ASSERT_FALSE(json.HasParseError()) << line;
        EXPECT_EQ(std::string(json["time"].GetString()).size(), std::string("2024-05-06T07:08:09.042Z").size());
        told.push_back({json["type"].GetString(), json.HasMember("event") ? json["event"].GetString() : ""});
        if (told.back().front() == "result")
        {
            EXPECT_EQ(json["exitCode"].GetInt(), 0);
        }
        else
        {
            EXPECT_STREQ(json["source"].GetString(), "pc");
        }
    }
    EXPECT_EQ(told, expected) << result.out;
}

TEST(Login, ARefusalAsJsonHasItsCode)
{
    const ProgramResult result = RunHost({"login", "--user", "1001", "--refuse", "37", "--json"});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_NE(result.out.find(R"("event":"offline","code":37,)"), std::string::npos) << result.out;
    EXPECT_NE(result.out.find(R"("exitCode":1})"), std::string::npos) << result.out;
}

TEST(Login, ACodeThatNoRefusalHasIsWrongUsage)
{
    for (const char* code : {"0", "2147483648"})
    {
        const ProgramResult result = RunHost({"login", "--user", "1001", "--refuse", code});
        EXPECT_EQ(result.exitCode, 2) << code;
        EXPECT_EQ(result.out, "");
        EXPECT_NE(result.err.find("expected 1 to 2147483647"), std::string::npos) << result.err;
    }
}

TEST(Login, ALogOnAFullDiskIsAFailureThatNamesTheFile)
{
    const ProgramResult result = RunHost({"login", "--user", "1001", "--log", "/dev/full"});
    EXPECT_EQ(result.exitCode, 3);
    EXPECT_NE(result.err.find("/dev/full: No space left on device"), std::string::npos) << result.err;
}

TEST(Login, ALogThatCannotBeWrittenIsAFailure)
{
    const ProgramResult result = RunHost({"login", "--user", "1001", "--log", "/proc/nowhere/module.log"});
    EXPECT_EQ(result.exitCode, 3);
    EXPECT_NE(result.err.find("the log cannot be written"), std::string::npos) << result.err;
}

TEST(Login, AnHttpServerIsAskedForTheAddressFirst)
{
    std::atomic<int> asked{0};
    const HttpServer server(
        [&](const HttpExchange& exchange)
        {
            ++asked;
            exchange.Answer("200 OK", kConnectionPoint);
        });
    const ProgramResult result = RunHost({"login", "--user", "1001", "--device", "pc", "--server", server.Url()});
    EXPECT_EQ(result.exitCode, 0) << result.err;
    EXPECT_EQ(Story(result.out).at(1), "pc logged in");
    EXPECT_GE(asked, 1);
}

TEST(Login, AnHttpsServerIsTrustedByItsAuthority)
{
    const HttpsServer server("127.0.0.1");
    server.SetAnswer("cp?appid=onlinehost&companyid=1&token=token",
                     "HTTP/1.0 200 OK\r\nContent-Length: " + std::to_string(kConnectionPoint.size()) + "\r\n\r\n" +
                         kConnectionPoint);
    const std::vector<std::string> arguments{"login", "--user", "1001", "--server", server.Url("cp")};
    const ProgramResult untrusted = RunHost(arguments);
    EXPECT_EQ(untrusted.exitCode, 3);
    EXPECT_NE(untrusted.err.find("certificate"), std::string::npos) << untrusted.err;

    std::vector<std::string> more = arguments;
    more.insert(more.end(), {"--ca-file", server.Certificate()});
    const ProgramResult trusted = RunHost(more);
    EXPECT_EQ(trusted.exitCode, 0) << trusted.err;
}

TEST(Login, ACaFileThatIsANamedPipeIsWrongUsage)
{
    const TemporaryFolder folder;
    const std::string pipe = folder / "pipe";
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    const ProgramResult result =
        RunHostLine("login --user 1 --timeout 1 --server https://127.0.0.1:1/cp --ca-file " + pipe);
    EXPECT_EQ(result.exitCode, 2);
    EXPECT_NE(result.err.find('"' + pipe + "\" is not a regular file"), std::string::npos) << result.err;
}

TEST(Login, AnHttpServerThatAnswersNonsenseIsAFailure)
{
    const HttpServer server([](const HttpExchange& exchange) { exchange.Answer("200 OK", "nonsense"); });
    const ProgramResult result = RunHost({"login", "--user", "1001", "--server", server.Url()});
    EXPECT_EQ(result.exitCode, 3);
    EXPECT_NE(result.err.find("the answer is not a JSON object"), std::string::npos) << result.err;
}

TEST(Login, AnHttpServerThatCannotBeReachedIsAFailureWithItsReason)
{
    const std::string url = "http://127.0.0.1:" + std::to_string(UnusedPort()) + "/cp";
    const ProgramResult result = RunHost({"login", "--user", "1001", "--server", url});
    EXPECT_EQ(result.exitCode, 3);
    EXPECT_NE(result.out.find("got no connection point from " + url), std::string::npos) << result.out;
    EXPECT_NE(result.err.find("onlinehost: http://127.0.0.1:"), std::string::npos) << result.err;
}

TEST(Login, AnHttpServerThatStallsIsAFailureAtTheTimeLimit)
{
    const HttpServer server([](const HttpExchange& exchange) { exchange.Stall(); });
    const ProgramResult result = RunHost({"login", "--user", "1001", "--server", server.Url(), "--timeout", "1"});
    EXPECT_EQ(result.exitCode, 3);
    EXPECT_NE(result.err.find("timed out"), std::string::npos) << result.err;
}

namespace
{

/// Interrupts a login to a server that accepts and says nothing, and expects the files to be complete.
void ExpectOrderlyEnd(int signal, int exitCode, const std::string& reason)
{
    std::promise<void> asked;
    const HttpServer server(
        [&](const HttpExchange& exchange)
        {
            asked.set_value();
            exchange.Stall();
        });
    const TemporaryFolder folder;
    RunningHost host({"login", "--user", "1001", "--server", server.Url(), "--timeout", "86400", "--trace",
                      folder / "trace", "--log", folder / "log"});
    asked.get_future().wait();
    host.Signal(signal);
    const ProgramResult result = host.WaitForEnd();
    EXPECT_EQ(result.exitCode, exitCode);
    EXPECT_EQ(result.err, "onlinehost: " + reason + "\n");
    const TraceFile trace(folder / "trace");
    EXPECT_EQ(trace.Problems(), std::vector<std::string>{});
    EXPECT_EQ(trace.Count("IOnlineManager::Destroy"), 1u);
    EXPECT_NE(ReadFile(folder / "log").find("WDllCanUnloadNow :0."), std::string::npos);
}

} // namespace

TEST(Login, AnInterruptionEndsALoginToASilentHttpServerInOrder)
{
    ExpectOrderlyEnd(SIGINT, 130, "interrupted by SIGINT");
}

TEST(Login, ATerminationEndsALoginToASilentHttpServerInOrder)
{
    ExpectOrderlyEnd(SIGTERM, 143, "interrupted by SIGTERM");
}
