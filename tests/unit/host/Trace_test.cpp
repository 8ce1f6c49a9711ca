#include "host/trace/Trace.h"

#include "onlinehost/Error.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/TraceFile.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <memory>
#include <set>
#include <thread>

using host::Crossing;
using host::Trace;
using host::TraceSpan;
using Arrows = std::vector<std::pair<std::string, std::string>>;
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

    /// A host's call that makes a call of the platform, answered later if `key` is not empty.
    void Call(const char* name, const std::string& key)
    {
        const TraceSpan outer(m_trace, Crossing::HostCall, "pc", name, {});
        TraceSpan inner(m_trace, Crossing::PlatformCall, "pc", "platform call", {}, 1);
        if (!key.empty())
        {
            inner.WillBeAnswered(key);
        }
    }

    TemporaryFolder m_folder;
    Trace m_trace{{m_folder / "trace", m_folder / "diagram"}};
};

} // namespace

TEST_F(TraceTest, AnUnusedOneIsATrace)
{
    EXPECT_EQ(Close().Records().size(), 1u);
    EXPECT_EQ(ReadFile(m_folder / "diagram"), "sequenceDiagram\n");
}

TEST_F(TraceTest, ArgumentsAndResultsAreShown)
{
    {
        TraceSpan span(m_trace, Crossing::HostCall, "pc", "Login",
                       {{"force", true}, {"user", 4294967295u}, {"text", "caf\u00e9 \"x\"\n\xff"}});
        EXPECT_EQ(span.Result(-2147467259), -2147467259);
    }
    const TraceFile file = Close();
    const TraceFile::Record& begin = file.Records().at(2);
    EXPECT_EQ(begin.name, "Login");
    EXPECT_EQ(begin.category, "host call");
    EXPECT_EQ(begin.arguments.at("device"), "pc");
    EXPECT_EQ(begin.arguments.at("force"), "true");
    EXPECT_EQ(begin.arguments.at("user"), "4294967295");
    EXPECT_EQ(begin.arguments.at("text"), "caf\u00e9 \"x\"\\x0A\\xFF");
    EXPECT_EQ(file.Records().at(3).arguments.at("result"), "-2147467259");
}

TEST_F(TraceTest, EachThreadHasATrackNamedAfterWhatComesFirst)
{
    {
        const TraceSpan span(m_trace, Crossing::HostCall, "pc", "on the main thread", {});
    }
    std::thread([&] { const TraceSpan span(m_trace, Crossing::PlatformEvent, "pc", "event", {}); }).join();
    std::thread([&] { m_trace.Moment("log", "a line"); }).join();
    std::multiset<std::string> names;
    for (const auto& [thread, name] : Close().ThreadNames())
    {
        names.insert(name);
    }
    EXPECT_EQ(names, (std::multiset<std::string>{"main", "module", "platform"}));
}

TEST_F(TraceTest, AnArrowGoesFromTheHostsCallToTheNotification)
{
    Call("Login", "login");
    std::thread(
        [&]
        {
            TraceSpan event(m_trace, Crossing::PlatformEvent, "pc", "OnLoginResult", {});
            event.Answers("login");
            {
                const TraceSpan first(m_trace, Crossing::Notification, "pc", "OnLoginSuccess", {});
            }
            {
                const TraceSpan second(m_trace, Crossing::Notification, "pc", "something else", {});
            }
        })
        .join();
    EXPECT_EQ(Close().Arrows(), (Arrows{{"Login", "OnLoginSuccess"}}));
}

TEST_F(TraceTest, AnEventWithoutANotificationIsWhereTheArrowEnds)
{
    Call("Login", "login");
    {
        TraceSpan event(m_trace, Crossing::PlatformEvent, "pc", "OnLoginResult", {});
        event.Answers("login");
    }
    EXPECT_EQ(Close().Arrows(), (Arrows{{"Login", "OnLoginResult"}}));
}

TEST_F(TraceTest, OfSeveralListenersTheOneThatNotifiesHasTheAnswer)
{
    Call("first", "join");
    Call("second", "join");
    for (int call = 0; call < 2; ++call)
    {
        {
            TraceSpan event(m_trace, Crossing::PlatformEvent, "pc", "at the session", {});
            event.MayAnswer("join");
        }
        TraceSpan event(m_trace, Crossing::PlatformEvent, "pc", "at the tunnel", {});
        event.MayAnswer("join");
        const TraceSpan notification(m_trace, Crossing::Notification, "pc", call == 0 ? "one" : "two", {});
    }
    EXPECT_EQ(Close().Arrows(), (Arrows{{"first", "one"}, {"second", "two"}}));
}

TEST_F(TraceTest, PagesBelongToTheCallAndTheLastAnswersIt)
{
    Call("Refresh", "refresh 1");
    for (const bool isLast : {false, false, true})
    {
        TraceSpan event(m_trace, Crossing::PlatformEvent, "pc", isLast ? "last page" : "page", {});
        isLast ? event.Answers("refresh 1") : event.BelongsTo("refresh 1");
    }
    const TraceFile file = Close();
    EXPECT_EQ(file.Arrows(), (Arrows{{"Refresh", "last page"}}));
    EXPECT_EQ(std::count_if(file.Records().begin(), file.Records().end(),
                            [](const TraceFile::Record& record) { return record.phase == "t"; }),
              3);
}

TEST_F(TraceTest, AnswersToEqualCallsComeInTheirOrder)
{
    Call("first", "join");
    Call("second", "join");
    for (const char* name : {"answer to the first", "answer to the second"})
    {
        TraceSpan event(m_trace, Crossing::PlatformEvent, "pc", name, {});
        event.Answers("join");
    }
    EXPECT_EQ(Close().Arrows(), (Arrows{{"first", "answer to the first"}, {"second", "answer to the second"}}));
}

TEST_F(TraceTest, ACallThatFailsEndsItsOwnArrow)
{
    Call("Login", "");
    {
        TraceSpan span(m_trace, Crossing::PlatformCall, "pc", "Logout", {}, 1);
        span.WillBeAnswered("logout");
        span.WillNotBeAnswered("logout");
    }
    EXPECT_EQ(Close().Arrows(), (Arrows{{"Login", "platform call"}, {"Logout", "Logout"}}));
}

TEST_F(TraceTest, WhatIsNeverAnsweredOrNeverEndsIsEndedByTheTrace)
{
    Call("Login", "login");
    const TraceSpan open(m_trace, Crossing::HostCall, "pc", "still open", {});
    const TraceFile file = Close();
    EXPECT_EQ(file.Arrows(), (Arrows{{"Login", "no notification"}}));
    EXPECT_EQ(file.Count("still open"), 1u);
}

TEST_F(TraceTest, AnAnswerThatNobodyAwaitsIsNone)
{
    {
        TraceSpan event(m_trace, Crossing::PlatformEvent, "pc", "OnLogouted", {});
        event.Answers("logout");
        event.BelongsTo("login");
    }
    EXPECT_EQ(Close().Arrows(), Arrows{});
}

TEST_F(TraceTest, OnlyAnOutermostNotificationAnswersATrigger)
{
    Call("TriggerNotify", "trigger");
    {
        const TraceSpan event(m_trace, Crossing::PlatformEvent, "pc", "OnLoginResult", {});
        TraceSpan inner(m_trace, Crossing::Notification, "pc", "of the login", {});
        inner.AnswersIfOutermost("trigger");
    }
    {
        TraceSpan outermost(m_trace, Crossing::Notification, "pc", "of the trigger", {});
        outermost.AnswersIfOutermost("trigger");
    }
    EXPECT_EQ(Close().Arrows(), (Arrows{{"TriggerNotify", "of the trigger"}}));
}

TEST_F(TraceTest, ManyThreadsRecordAtOnce)
{
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i)
    {
        threads.emplace_back(
            [this, i]
            {
                for (int j = 0; j < 250; ++j)
                {
                    const std::string key = std::to_string(i) + " " + std::to_string(j);
                    Call("call", key);
                    TraceSpan event(m_trace, Crossing::PlatformEvent, "pc", "event", {});
                    event.Answers(key);
                }
            });
    }
    for (std::thread& thread : threads)
    {
        thread.join();
    }
    const TraceFile file = Close();
    EXPECT_EQ(file.Count("event"), 1000u);
    EXPECT_EQ(file.Arrows(), Arrows(1000, {"call", "event"}));
}

TEST_F(TraceTest, NothingIsRecordedAfterTheEnd)
{
    auto late =
        std::make_unique<TraceSpan>(m_trace, Crossing::HostCall, "pc", "open at the end", host::TraceArguments{});
    m_trace.Close();
    late.reset();
    m_trace.Moment("log", "late");
    {
        const TraceSpan span(m_trace, Crossing::HostCall, "pc", "late", {}, 1);
    }
    m_trace.Close();
    const TraceFile file(m_folder / "trace");
    EXPECT_EQ(file.Problems(), Problems{});
    EXPECT_EQ(file.Count("late"), 0u);
    EXPECT_EQ(file.Count("open at the end"), 1u);
}

TEST_F(TraceTest, TheDiagramShowsWhoCallsWhom)
{
    {
        TraceSpan login(m_trace, Crossing::HostCall, "pc", "Login", {{"user", 1}, {"force", false}});
        {
            const TraceSpan inner(m_trace, Crossing::PlatformCall, "pc", "Connect", {{"server", "a;b"}});
        }
        login.Result(true);
    }
    {
        const TraceSpan event(m_trace, Crossing::PlatformEvent, "pc", "OnLoginResult", {});
    }
    m_trace.Close();
    const std::string diagram = ReadFile(m_folder / "diagram");
    EXPECT_EQ(DiagramProblems(diagram), Problems{});
    EXPECT_EQ(diagram, "sequenceDiagram\n"
                       "    participant P1 as Host\n"
                       "    participant P2 as Module of pc\n"
                       "    participant P3 as Platform\n"
                       "    P1->>P2: Login(user=1, force=false)\n"
                       "    P2->>P3: Connect(server=a#59;b)\n"
                       "    P2-->>P1: true\n"
                       "    P3->>P2: OnLoginResult()\n");
}

TEST_F(TraceTest, TheDiagramLeavesRepetitionsOutWithEverythingInsideThem)
{
    for (int i = 0; i < 10; ++i)
    {
        const TraceSpan event(m_trace, Crossing::PlatformEvent, "pc", "OnChanged", {});
        const TraceSpan inner(m_trace, Crossing::Notification, "pc", "OnStatus", {});
    }
    m_trace.Close();
    const std::string diagram = ReadFile(m_folder / "diagram");
    EXPECT_EQ(DiagramProblems(diagram), Problems{});
    size_t shown = 0;
    for (size_t place = diagram.find("OnStatus"); place != std::string::npos;
         place = diagram.find("OnStatus", place + 1))
    {
        ++shown;
    }
    EXPECT_EQ(shown, 4u);
    EXPECT_NE(diagram.find("Left out as repetitions - 6 x OnChanged\n"), std::string::npos) << diagram;
}

TEST(Trace, AFileThatCannotBeWrittenIsAnError)
{
    const TemporaryFolder folder;
    EXPECT_THROW(Trace({folder / "none" / "trace", ""}), onlinehost::Error);
    EXPECT_THROW(Trace({"", folder / "none" / "diagram"}), onlinehost::Error);
}

TEST(Trace, AFullDiskIsAnError)
{
    Trace trace({"/dev/full", ""});
    EXPECT_THROW(trace.Close(), onlinehost::Error);
}

TEST(Trace, TheDiagramAloneIsEnough)
{
    const TemporaryFolder folder;
    Trace trace({"", folder / "diagram"});
    {
        const TraceSpan span(trace, Crossing::HostCall, "pc", "Login", {}, 1);
    }
    trace.Moment("log", "a line");
    trace.Close();
    EXPECT_NE(ReadFile(folder / "diagram").find("P1->>P2: Login()\n"), std::string::npos);
}
