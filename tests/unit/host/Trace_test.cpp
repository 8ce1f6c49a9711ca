#include "host/trace/Trace.h"

#include "host/trace/TraceNames.h"
#include "onlinehost/Error.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/TraceFile.h"

#include <algorithm>
#include <future>
#include <gtest/gtest.h>
#include <memory>
#include <optional>
#include <thread>

using host::Crossing;
using host::Trace;
using host::TraceSpan;
using Arrows = std::vector<std::pair<std::string, std::string>>;
using Names = std::vector<std::string>;
using Problems = std::vector<std::string>;

namespace
{

class TraceTest : public testing::Test
{
protected:
    TraceFile Close()
    {
        m_trace.Close();
        TraceFile file(m_folder / "trace");
        EXPECT_EQ(file.Problems(), Problems{});
        return file;
    }

    TraceSpan Span(Crossing crossing, const char* name, host::TraceArguments arguments = {})
    {
        return {m_trace, {crossing, m_pc, name, std::move(arguments), 1}};
    }

    /// The host's login, and the platform's call in it.
    void Login(bool isAccepted = true)
    {
        const TraceSpan outer = Span(Crossing::HostCall, "IPaasOnline::Login");
        TraceSpan inner = Span(Crossing::PlatformCall, "IZolConnection::Login", {{"userid", "7"}});
        inner.Result(isAccepted ? 0 : -2147467259);
    }

    void Refresh(unsigned requestId)
    {
        const TraceSpan outer = Span(Crossing::HostCall, "IUserOnline::RefreshCompanyUserStatus");
        TraceSpan inner = Span(Crossing::PlatformCall, "IZolOnline::RefreshAllUsersStatus");
        inner.Output("requestId", int64_t{requestId});
    }

    void Page(unsigned requestId, int index, int count)
    {
        const TraceSpan page = Span(Crossing::PlatformEvent, "IZolOnlineListener::OnRefreshUserStatusFinished",
                                    {{"requestId", requestId}, {"page_count", count}, {"page_index", index}});
    }

    /// Both threads of a request over HTTP.
    void Request(unsigned id)
    {
        TraceSpan call = Span(Crossing::HttpCall, "IHttpClient::Request");
        call.Output("id", int64_t{id});
    }

    void Respond(unsigned id)
    {
        const TraceSpan event = Span(Crossing::HttpEvent, "IHttpResponseNotify::OnCompleteRespond", {{"id", id}});
    }

    TemporaryFolder m_folder;
    Trace m_trace{{m_folder / "trace", m_folder / "diagram"}};
    const uint32_t m_pc = m_trace.AddComponent("pc");
};

} // namespace

TEST_F(TraceTest, AnUnusedOneIsATrace)
{
    EXPECT_TRUE(Close().Records().empty());
    EXPECT_EQ(ReadFile(m_folder / "diagram"),
              "sequenceDiagram\n"
              "    participant P1 as Host\n"
              "    Note over P1: No call of the chosen devices and subjects was recorded\n");
}

TEST_F(TraceTest, ArgumentsOutputsAndResultsAreShown)
{
    {
        TraceSpan span = Span(Crossing::HostCall, "Login",
                              {{"force", true},
                               {"user", 4294967295u},
                               {"text", "caf\u00e9 \"x\"\n\xff"},
                               {"code", host::MeaningOf(avcore::ZOL_PORT_LOGIN_CONFLICT)},
                               {"ids", host::TraceList{3, {"1", "2"}}}});
        span.Output("requestId", int64_t{5});
        EXPECT_EQ(span.Result(-2147467259), -2147467259);
        EXPECT_TRUE(span.IsFailure());
    }
    const TraceFile file = Close();
    const auto begin = std::find_if(file.Records().begin(), file.Records().end(),
                                    [](const TraceFile::Record& record) { return record.phase == "B"; });
    ASSERT_NE(begin, file.Records().end());
    EXPECT_EQ(begin->name, "Login");
    EXPECT_EQ(begin->category, "host call");
    EXPECT_EQ(begin->arguments.at("force"), "true");
    EXPECT_EQ(begin->arguments.at("user"), "4294967295");
    EXPECT_EQ(begin->arguments.at("text"), "caf\u00e9 \"x\"\\x0A\\xFF");
    EXPECT_EQ(begin->arguments.at("code"), "36 (logged in on another device)");
    EXPECT_EQ(begin->arguments.at("ids"), "3: 1, 2, ...");
    EXPECT_EQ((begin + 1)->arguments.at("result"), "0x80004005 (E_FAIL)");
    EXPECT_EQ((begin + 1)->arguments.at("requestId"), "5");
}

TEST_F(TraceTest, EachComponentHasItsOwnTracks)
{
    const uint32_t phone = m_trace.AddComponent("phone");
    const uint32_t again = m_trace.AddComponent("pc");
    {
        const TraceSpan call(m_trace, {Crossing::HostCall, m_pc, "outer"});
        const TraceSpan inner(m_trace, {Crossing::HostCall, phone, "of another component"});
        const TraceSpan innermost(m_trace, {Crossing::PlatformCall, m_pc, "inner"});
    }
    {
        const TraceSpan call(m_trace, {Crossing::HostCall, again, "later"});
    }
    std::thread([&] { const TraceSpan event(m_trace, {Crossing::PlatformEvent, phone, "event"}); }).join();
    const TraceFile file = Close();
    EXPECT_EQ(file.Tracks(), (Names{"pc/main", "phone/main", "pc (2)/main", "phone/platform"}));
    EXPECT_EQ(file.Slices("pc/main"), (Names{"outer", ".inner"}));
    EXPECT_EQ(file.Slices("phone/main"), (Names{"of another component"}));
    EXPECT_EQ(file.Slices("pc (2)/main"), (Names{"later"}));
    EXPECT_EQ(file.Slices("phone/platform"), (Names{"event"}));
}

TEST_F(TraceTest, ChaptersAreSlicesOnATrackOfTheirOwn)
{
    m_trace.Chapter("the first");
    {
        const TraceSpan span = Span(Crossing::HostCall, "call");
        m_trace.Chapter("the second");
    }
    const TraceFile file = Close();
    EXPECT_EQ(file.Slices("chapters/chapters"), (Names{"the first", "the second"}));
    EXPECT_EQ(file.Slices("pc/main"), Names{"call"});
}

TEST_F(TraceTest, ALineOfTheLogStandsInTheCallThatWritesIt)
{
    {
        const TraceSpan span = Span(Crossing::HostCall, "call");
        m_trace.Moment("log", "inside");
    }
    std::thread([&] { m_trace.Moment("log", "outside"); }).join();
    const TraceFile file = Close();
    EXPECT_EQ(file.Slices("pc/main"), (Names{"call", ".inside"}));
    EXPECT_EQ(file.Slices("onlinehost/module"), Names{"outside"});
}

TEST_F(TraceTest, AnArrowGoesFromTheHostsCallToTheNotification)
{
    Login();
    std::thread(
        [&]
        {
            const TraceSpan event = Span(Crossing::PlatformEvent, "IZolConnectionListener::OnLoginResult");
            {
                const TraceSpan first = Span(Crossing::Notification, "IPaasOnlineNotify::OnLoginSuccess");
            }
            {
                const TraceSpan second = Span(Crossing::Notification, "something else");
            }
        })
        .join();
    EXPECT_EQ(Close().Arrows(), (Arrows{{"IPaasOnline::Login", "IPaasOnlineNotify::OnLoginSuccess"}}));
}

TEST_F(TraceTest, AnArrowOfACallThatTheModuleMakesInAnEventBeginsAtTheEvent)
{
    {
        const TraceSpan event = Span(Crossing::PlatformEvent, "IZolConnectionListener::OnReconnectSucess");
        TraceSpan refresh = Span(Crossing::PlatformCall, "IZolOnline::RefreshAllUsersStatus");
        refresh.Output("requestId", int64_t{4});
    }
    {
        const TraceSpan page = Span(Crossing::PlatformEvent, "IZolOnlineListener::OnRefreshUserStatusFinished",
                                    {{"requestId", 4}, {"page_count", 1}, {"page_index", 0}});
        const TraceSpan notification = Span(Crossing::Notification, "IUserOnlineNotify::OnUserStatusChanged");
    }
    EXPECT_EQ(Close().Arrows(),
              (Arrows{{"IZolConnectionListener::OnReconnectSucess", "IUserOnlineNotify::OnUserStatusChanged"}}));
}

TEST_F(TraceTest, AnEventWithoutANotificationIsWhereTheArrowEnds)
{
    Refresh(1);
    Page(1, 0, 1);
    EXPECT_EQ(Close().Arrows(),
              (Arrows{{"IUserOnline::RefreshCompanyUserStatus", "IZolOnlineListener::OnRefreshUserStatusFinished"}}));
}

TEST_F(TraceTest, OfSeveralListenersTheOneThatNotifiesHasTheAnswer)
{
    Login();
    Login();
    for (const char* name : {"one", "two"})
    {
        {
            const TraceSpan event = Span(Crossing::PlatformEvent, "IZolConnectionListener::OnLoginResult");
        }
        const TraceSpan event = Span(Crossing::PlatformEvent, "IZolConnectionListener::OnLoginResult");
        const TraceSpan notification = Span(Crossing::Notification, name);
    }
    EXPECT_EQ(Close().Arrows(), (Arrows{{"IPaasOnline::Login", "one"}, {"IPaasOnline::Login", "two"}}));
}

TEST_F(TraceTest, PagesBelongToTheCallAndTheLastAnswersIt)
{
    Refresh(1);
    Refresh(2);
    Page(2, 0, 1);
    for (const int index : {0, 1, 2})
    {
        Page(1, index, 3);
    }
    const TraceFile file = Close();
    EXPECT_EQ(file.Arrows().size(), 2u);
    EXPECT_EQ(std::count_if(file.Records().begin(), file.Records().end(),
                            [](const TraceFile::Record& record) { return record.phase == "t"; }),
              4);
}

TEST_F(TraceTest, EachInviteeHasAnArrow)
{
    {
        const TraceSpan outer = Span(Crossing::HostCall, "IUserOnline::InviteUsers");
        TraceSpan inner =
            Span(Crossing::PlatformCall, "IZolOnline::InviteUsers", {{"ids", host::TraceList{2, {"8", "9"}}}});
        inner.Output("inviteId", int64_t{3});
    }
    const auto answer = [&](const char* name, const char* user, const char* notified)
    {
        const TraceSpan event = Span(Crossing::PlatformEvent, name, {{"userId", user}, {"inviteId", 3}});
        const TraceSpan notification = Span(Crossing::Notification, notified);
    };
    answer("IZolOnlineListener::OnInviteRejected", "9", "of 9");
    answer("IZolOnlineListener::OnInviteAccepted", "8", "of 8");
    EXPECT_EQ(Close().Arrows(), (Arrows{{"IUserOnline::InviteUsers", "of 8"}, {"IUserOnline::InviteUsers", "of 9"}}));
}

TEST_F(TraceTest, ACallThatFailsEndsItsOwnArrow)
{
    Login(false);
    {
        const TraceSpan event = Span(Crossing::PlatformEvent, "IZolConnectionListener::OnLoginResult");
    }
    EXPECT_EQ(Close().Arrows(), (Arrows{{"IPaasOnline::Login", "IZolConnection::Login"}}));
}

TEST_F(TraceTest, AnAnswerOverHttpMayComeBeforeTheCallReturns)
{
    {
        TraceSpan call = Span(Crossing::HttpCall, "IHttpClient::Request");
        std::thread([&] { Respond(1); }).join();
        call.Output("id", int64_t{1});
    }
    Request(2);
    Respond(2);
    EXPECT_EQ(Close().Arrows(), (Arrows{{"IHttpClient::Request", "IHttpClient::Request"},
                                        {"IHttpClient::Request", "IHttpResponseNotify::OnCompleteRespond"}}));
}

TEST_F(TraceTest, AnAnswerToNoCallHasNoArrow)
{
    {
        const TraceSpan event = Span(Crossing::PlatformEvent, "IZolConnectionListener::OnLogouted");
    }
    Page(1, 0, 1);
    EXPECT_EQ(Close().Arrows(), Arrows{});
}

TEST_F(TraceTest, OnlyAnOutermostNotificationAnswersATrigger)
{
    {
        TraceSpan call = Span(Crossing::HostCall, "IPaasOnline::TriggerNotify");
        call.Result(true);
    }
    {
        const TraceSpan event = Span(Crossing::PlatformEvent, "IZolConnectionListener::OnLoginResult");
        const TraceSpan inner = Span(Crossing::Notification, "IPaasOnlineNotify::OnLoginSuccess");
    }
    {
        const TraceSpan outermost = Span(Crossing::Notification, "IPaasOnlineNotify::OnOffline");
    }
    EXPECT_EQ(Close().Arrows(), (Arrows{{"IPaasOnline::TriggerNotify", "IPaasOnlineNotify::OnOffline"}}));
}

TEST_F(TraceTest, ManyThreadsRecordAtOnce)
{
    std::vector<std::thread> threads;
    for (unsigned i = 0; i < 4; ++i)
    {
        threads.emplace_back(
            [this, i]
            {
                for (unsigned j = 0; j < 250; ++j)
                {
                    Refresh(i * 1000 + j);
                    Page(i * 1000 + j, 0, 1);
                    m_trace.Chapter("chapter");
                    m_trace.Moment("log", "line");
                }
            });
    }
    for (std::thread& thread : threads)
    {
        thread.join();
    }
    const TraceFile file = Close();
    EXPECT_EQ(file.Count("IZolOnlineListener::OnRefreshUserStatusFinished"), 1000u);
    EXPECT_EQ(file.Arrows(), Arrows(1000, {"IUserOnline::RefreshCompanyUserStatus",
                                           "IZolOnlineListener::OnRefreshUserStatusFinished"}));
}

TEST_F(TraceTest, AnInterruptedOneIsCompleteThoughCallsAreOpenOnOtherThreads)
{
    std::promise<void> begun;
    std::promise<void> closed;
    std::thread other(
        [&]
        {
            const TraceSpan outer = Span(Crossing::HostCall, "IPaasOnline::Login");
            const TraceSpan inner = Span(Crossing::PlatformCall, "IZolConnection::Login");
            begun.set_value();
            closed.get_future().wait();
            const TraceSpan late = Span(Crossing::PlatformCall, "late");
        });
    begun.get_future().wait();
    m_trace.Chapter("interrupted");
    const TraceFile file = Close();
    closed.set_value();
    other.join();
    EXPECT_EQ(file.Slices("pc/host"), (Names{"IPaasOnline::Login", ".IZolConnection::Login"}));
    EXPECT_EQ(file.Arrows(), (Arrows{{"IPaasOnline::Login", "no answer"}}));
    EXPECT_EQ(TraceFile(m_folder / "trace").Count("late"), 0u);
    const std::string diagram = ReadFile(m_folder / "diagram");
    EXPECT_EQ(DiagramProblems(diagram), Problems{});
    EXPECT_NE(diagram.find("interrupted"), std::string::npos) << diagram;
}

TEST_F(TraceTest, NothingIsRecordedAfterTheEnd)
{
    std::optional<TraceSpan> open(std::in_place, m_trace, host::TraceCall{Crossing::HostCall, m_pc, "open"});
    m_trace.Close();
    open.reset();
    m_trace.Moment("log", "late");
    m_trace.Chapter("late");
    {
        const TraceSpan span = Span(Crossing::HostCall, "late");
    }
    m_trace.Close();
    const TraceFile file(m_folder / "trace");
    EXPECT_EQ(file.Problems(), Problems{});
    EXPECT_EQ(file.Count("late"), 0u);
    EXPECT_EQ(file.Count("open"), 1u);
}

TEST(Trace, AFileThatCannotBeWrittenIsAnError)
{
    const TemporaryFolder folder;
    EXPECT_THROW(Trace({folder / "none" / "trace", ""}), onlinehost::Error);
    EXPECT_THROW(Trace({"", folder / "none" / "diagram"}), onlinehost::Error);
}

TEST(Trace, AFullDiskIsAnErrorAndTheOtherFileIsComplete)
{
    const TemporaryFolder folder;
    Trace trace({"/dev/full", folder / "diagram"});
    {
        const TraceSpan span(trace, {Crossing::HostCall, trace.AddComponent("pc"), "IPaasOnline::Login"});
    }
    EXPECT_THROW(trace.Close(), onlinehost::Error);
    EXPECT_NE(ReadFile(folder / "diagram").find("Login()\n"), std::string::npos);
}

TEST(Trace, TheDiagramAloneIsEnough)
{
    const TemporaryFolder folder;
    Trace trace({"", folder / "diagram"});
    {
        const TraceSpan span(trace, {Crossing::HostCall, trace.AddComponent("pc"), "IPaasOnline::Login"});
        trace.Moment("log", "a line");
        trace.Chapter("a chapter");
    }
    trace.Close();
    EXPECT_NE(ReadFile(folder / "diagram").find("Login()\n"), std::string::npos);
}

TEST(Trace, ADeviceThatWasNotRecordedIsAnErrorThatNamesTheRecordedOnes)
{
    const TemporaryFolder folder;
    Trace trace({"", folder / "diagram", {.devices = {"pc", "tablet"}}});
    trace.AddComponent("pc");
    trace.AddComponent("phone");
    trace.AddComponent("pc");
    try
    {
        trace.Close();
        FAIL() << "the unknown device is accepted";
    }
    catch (const onlinehost::Error& error)
    {
        EXPECT_STREQ(error.what(), "the diagram cannot show the device \"tablet\": the recorded devices are pc, phone");
    }
    EXPECT_EQ(DiagramProblems(ReadFile(folder / "diagram")), Problems{});
}
