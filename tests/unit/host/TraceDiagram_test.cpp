#include "host/trace/TraceDiagram.h"

#include "tests/support/TraceFile.h"

#include <algorithm>
#include <functional>
#include <gtest/gtest.h>
#include <sstream>

using host::Crossing;
using host::DiagramChoice;
using host::TraceArguments;
using host::TraceDiagram;
using Lines = std::vector<std::string>;
using Problems = std::vector<std::string>;

namespace
{

constexpr int kMain = 1;
constexpr int kPlatform = 2;
constexpr uint32_t kPc = 0;
constexpr uint32_t kPhone = 1;

/// Records calls, a millisecond apart.
class TraceDiagramTest : public testing::Test
{
protected:
    using Body = std::function<void()>;

    void Choose(DiagramChoice choice)
    {
        m_diagram = std::make_unique<TraceDiagram>(std::move(choice));
        m_diagram->AddComponent("pc");
        m_diagram->AddComponent("phone");
    }

    void SetUp() override
    {
        Choose({});
    }

    void Record(int thread, host::TraceCall call, const host::TraceResult& result, const Body& body)
    {
        host::DiagramCall* const outer = m_open[thread].empty() ? nullptr : m_open[thread].back();
        host::DiagramCall* const begun = m_diagram->Begin(thread, outer, call, Tick());
        m_open[thread].push_back(begun);
        body();
        m_open[thread].pop_back();
        m_diagram->End(thread, begun, result, Tick());
    }

    void Host(
        const char* name, TraceArguments arguments = {}, const host::TraceResult& result = {}, const Body& body = [] {},
        uint32_t component = kPc)
    {
        Record(kMain, {Crossing::HostCall, component, name, std::move(arguments)}, result, body);
    }

    void Platform(int thread, const char* name, TraceArguments arguments = {}, const host::TraceResult& result = {},
                  uint32_t component = kPc)
    {
        Record(thread, {Crossing::PlatformCall, component, name, std::move(arguments)}, result, [] {});
    }

    /// `receiver` identifies the listener.
    void Event(
        const char* name, TraceArguments arguments = {}, const Body& body = [] {}, uint32_t component = kPc,
        const int* receiver = nullptr)
    {
        Record(kPlatform, {Crossing::PlatformEvent, component, name, std::move(arguments), 1, receiver}, {}, body);
    }

    void Notify(const char* name, TraceArguments arguments = {}, uint32_t component = kPc)
    {
        Record(kPlatform, {Crossing::Notification, component, name, std::move(arguments)}, {}, [] {});
    }

    void UserEvent(const char* event, const char* notification, unsigned user)
    {
        Event(event, {{"userId", std::to_string(user)}}, [&] { Notify(notification, {{"userId", user}}); });
    }

    host::TraceTime Tick()
    {
        return host::TraceTime(m_now += 1000);
    }

    /// Messages and notes without participants, indentation, line breaks and times.
    Lines Drawn()
    {
        const std::string text = m_diagram->Text();
        EXPECT_EQ(DiagramProblems(text), Problems{});
        std::istringstream stream(text);
        Lines lines;
        for (std::string line; std::getline(stream, line);)
        {
            if (line.find("participant") != std::string::npos || line == "sequenceDiagram")
            {
                continue;
            }
            for (size_t place = line.find("<br/>"); place != std::string::npos; place = line.find("<br/>"))
            {
                line.erase(place, 5);
            }
            const size_t time = line.find(" s  ");
            const size_t colon = line.find(": ");
            lines.push_back(line.substr(4, colon - 2) + line.substr(time != std::string::npos ? time + 4 : colon + 2));
        }
        return lines;
    }

    std::unique_ptr<TraceDiagram> m_diagram;
    std::map<int, std::vector<host::DiagramCall*>> m_open;
    double m_now = 0;
};

} // namespace

TEST_F(TraceDiagramTest, ShowsWhoCallsWhomAndWhen)
{
    Host("IPaasOnline::Login", {{"userid", 7}, {"force", true}}, {"true"},
         [&] {
             Platform(kMain, "IZolConnection::Login", {{"userid", "7"}}, {"0"});
         });
    Event("IZolConnectionListener::OnLoginResult", {}, [&] { Notify("IPaasOnlineNotify::OnLoginSuccess"); });
    EXPECT_EQ(m_diagram->Text(), "sequenceDiagram\n"
                                 "    participant P1 as Host\n"
                                 "    participant P2 as Module of pc<br/>user 7\n"
                                 "    participant P3 as Platform\n"
                                 "    P1->>P2: 0.001 s  Login(user 7, force=true)\n"
                                 "    P2->>P3: Login(user 7)\n"
                                 "    P3->>P2: 0.005 s  OnLoginResult()\n"
                                 "    P2->>P1: OnLoginSuccess()\n");
}

TEST_F(TraceDiagramTest, AUserWhoLeavesComesBack)
{
    for (unsigned user = 1; user <= 10; ++user)
    {
        UserEvent("IZolConnectionListener::OnGroupUserJoined", "IMeetingTunnelNotify::OnUserJoined", user);
    }
    UserEvent("IZolConnectionListener::OnGroupUserLeaved", "IMeetingTunnelNotify::OnUserLeaved", 2);
    UserEvent("IZolConnectionListener::OnGroupUserJoined", "IMeetingTunnelNotify::OnUserJoined", 2);
    EXPECT_EQ(Drawn(), (Lines{"P3->>P2: OnGroupUserJoined(user 1 \u2026 user 10) \u00d710",
                              "P2->>P1: OnUserJoined(user 1 \u2026 user 10) \u00d710",
                              "P3->>P2: OnGroupUserLeaved(user 2)", "P2->>P1: OnUserLeaved(user 2)",
                              "P3->>P2: OnGroupUserJoined(user 2)", "P2->>P1: OnUserJoined(user 2)"}));
}

TEST_F(TraceDiagramTest, RepetitionsAreCountedWhereTheyAre)
{
    for (unsigned user = 1; user <= 43; ++user)
    {
        // Two devices see it, and other things happen in between.
        for (const uint32_t component : {kPc, kPhone})
        {
            Event(
                "IZolOnlineListener::OnInviteAccepted", {{"userId", std::to_string(user)}, {"inviteId", 5}}, [] {},
                component);
        }
        Event("IZolConnectionListener::OnGroupUserJoined", {{"userId", std::to_string(user + 100)}});
    }
    Host("IMeetingTunnel::LeaveMeeting");
    Event("IZolOnlineListener::OnInviteAccepted", {{"userId", "44"}, {"inviteId", 5}});
    EXPECT_EQ(Drawn(), (Lines{"P4->>P2: OnInviteAccepted(user 1 \u2026 user 43, invitation 5) \u00d743",
                              "P4->>P3: OnInviteAccepted(user 1 \u2026 user 43, invitation 5) \u00d743",
                              "P4->>P2: OnGroupUserJoined(user 101 \u2026 user 143) \u00d743",
                              "P1->>P2: LeaveMeeting()", "P4->>P2: OnInviteAccepted(user 44, invitation 5)"}));
}

TEST_F(TraceDiagramTest, OtherCodesAndChaptersAreNoRepetitions)
{
    const host::TraceCode online = host::MeaningOfStatus(1);
    const host::TraceCode offline = host::MeaningOfStatus(0);
    const auto change = [&](const host::TraceCode& status) {
        Event("IZolOnlineListener::OnUserTerminalStateChanged", {{"userId", "1"}, {"status", status}});
    };
    change(online);
    change(offline);
    change(online);
    m_diagram->Chapter("another chapter", Tick());
    change(online);
    EXPECT_EQ(Drawn(),
              (Lines{"P3->>P2: OnUserTerminalStateChanged(user 1, 1 (online))",
                     "P3->>P2: OnUserTerminalStateChanged(user 1, 0 (offline))",
                     "P3->>P2: OnUserTerminalStateChanged(user 1, 1 (online))", "Note over P1,P3: another chapter",
                     "P3->>P2: OnUserTerminalStateChanged(user 1, 1 (online))"}));
}

TEST_F(TraceDiagramTest, CallsThatRepeatInsideACallAreCountedThere)
{
    Host("IUserOnline::RejectAllInvite", {}, {"true"},
         [&]
         {
             for (const char* user : {"1", "2", "3"})
             {
                 Platform(kMain, "IZolOnline::RejectInvite", {{"userId", user}});
                 Record(kMain, {Crossing::Notification, kPc, "IUserOnlineNotify::OnAbandonInvite", {{"userId", user}}},
                        {}, [] {});
             }
         });
    EXPECT_EQ(Drawn(), (Lines{"P1->>P2: RejectAllInvite()", "P2->>P3: RejectInvite(user 1 \u2026 user 3) \u00d73",
                              "P2->>P1: OnAbandonInvite(user 1 \u2026 user 3) \u00d73"}));
}

TEST_F(TraceDiagramTest, SetUpIsFolded)
{
    Host("WDllCreateComponent");
    Host("IOnlineManager::Initialize", {}, {"0"}, [&] { Platform(kMain, "IZolConnection::AddListener"); });
    Host("IPaasOnline::AddNotify");
    Host("IMeetingTunnel::JoinMeeting", {}, {}, [&] { Platform(kMain, "IZolConnection::JoinGroup"); });
    Host("IMeetingTunnel::AddNotify");
    Host("IOnlineManager::Destroy", {}, {"0"}, [&] { Platform(kMain, "IZolConnection::RemoveListener"); });
    EXPECT_EQ(Drawn(),
              (Lines{"Note over P2: created and set up (4 calls)", "P1->>P2: JoinMeeting()", "P2->>P3: JoinGroup()",
                     "Note over P2: destroyed (2 calls)", "Note over P1,P3: Not drawn: 1 further calls of set-up"}));
}

TEST_F(TraceDiagramTest, ABareResultIsNotDrawnAndAFailureIsACross)
{
    Host("IPaasOnline::Logout", {}, {"true"}, [&] { Platform(kMain, "IZolConnection::Logout", {}, {"0"}); });
    Host("IPaasOnline::Login", {}, {"false", true},
         [&] {
             Platform(kMain, "IZolConnection::Login", {}, {"0x80004005 (E_FAIL)", true});
         });
    Host("IPaasOnline::GetConnectProperty", {{"key", host::MeaningOf(onlinemanager::CONNECT_PROPERTY_ONLINE)}},
         {"nothing copied", true});
    Host("IPaasOnline::GetConnectProperty", {{"key", host::MeaningOf(onlinemanager::CONNECT_PROPERTY_ONLINE)}},
         {"\"true\"", false, false});
    EXPECT_EQ(Drawn(),
              (Lines{"P1->>P2: Logout()", "P2->>P3: Logout()", "P1-xP2: Login() = false",
                     "P2-xP3: Login() = 0x80004005 (E_FAIL)", "P1->>P2: GetConnectProperty(0 (online)) = \"true\""}));
}

TEST_F(TraceDiagramTest, OneEventIsOneArrowForAllItsListeners)
{
    const int session = 0;
    const int tunnel = 0;
    const auto join = [&](bool isLast)
    {
        Event(
            "IZolConnectionListener::OnJoinGroupResult", {}, [] {}, kPc, &session);
        Event(
            "IZolConnectionListener::OnJoinGroupResult", {},
            [&] { Notify(isLast ? "IMeetingTunnelNotify::last" : "IMeetingTunnelNotify::first"); }, kPc, &tunnel);
    };
    join(false);
    join(true);
    EXPECT_EQ(Drawn(), (Lines{"P3->>P2: OnJoinGroupResult()", "P2->>P1: first()", "P3->>P2: OnJoinGroupResult()",
                              "P2->>P1: last()"}));
}

TEST_F(TraceDiagramTest, AnIdListLeavesRoomForThePayload)
{
    host::TraceList ids{45, {}};
    for (int id = 1'000'000'000; ids.first.size() < host::TraceList::kKept; ++id)
    {
        ids.first.push_back(std::to_string(id));
    }
    Host("IUserOnline::InviteUsers", {{"ids", ids}, {"userName", "Anna"}, {"meetingId", 4711}});
    const std::string drawn = Drawn().at(0);
    EXPECT_NE(drawn.find("45 users: 1000000000, "), std::string::npos) << drawn;
    EXPECT_NE(drawn.find("userName=Anna, meetingId=4711)"), std::string::npos) << drawn;
}

TEST_F(TraceDiagramTest, ManyPayloadsHaveTheirNumber)
{
    for (const char* user : {"1", "2"})
    {
        Event("IZolOnlineListener::OnInviteAccepted",
              {{"userId", user}, {"inviteId", 1}, {"msg", std::string(1000, *user)}});
    }
    const std::string drawn = Drawn().at(0);
    EXPECT_TRUE(drawn.ends_with("\u00d72")) << drawn;
}

TEST_F(TraceDiagramTest, IdentifiersAndCodesHaveNames)
{
    Event("IZolConnectionListener::OnLoginResult", {{"code", host::MeaningOf(avcore::ZOL_PORT_LOGIN_CONFLICT)}});
    Event("IZolOnlineListener::OnInviteRejected",
          {{"userId", "3"}, {"inviteId", 9}, {"reason", host::MeaningOf(avcore::ZOL_INVITE_REJECT_OFFLINE)}});
    Host("IMeetingTunnel::JoinMeeting",
         {{"guid", "{6D656574-696E-672E-6F6E-6C696E652E31}"}, {"type", host::MeaningOf(onlinemanager::TUNNEL_TYPE_GW)}},
         {},
         [&] {
             Platform(kMain, "IZolConnection::JoinGroup", {{"groupId", "6d656574-696e-672e-6f6e-6c696e652e31"}});
         });
    EXPECT_EQ(Drawn(), (Lines{"P3->>P2: OnLoginResult(36 (logged in on another device))",
                              "P3->>P2: OnInviteRejected(user 3, invitation 9, 2 (the user is offline))",
                              "P1->>P2: JoinMeeting(meeting 6d656574\u2026, 2 (gateway))",
                              "P2->>P3: JoinGroup(meeting 6d656574\u2026)"}));
}

TEST_F(TraceDiagramTest, CallsOfTheHostPastTheModuleAreNotTheModulesCalls)
{
    Host("IPaasOnline::Login");
    Record(kMain, {Crossing::HostPlatformCall, kPc, "IZolConnection::JoinGroup"}, {}, [] {});
    Record(kPlatform, {Crossing::HostPlatformEvent, kPc, "IZolTMsgListener::OnUserMsgIncome"}, {}, [] {});
    EXPECT_EQ(Drawn(), (Lines{"P1->>P2: Login()", "P1->>P3: JoinGroup()", "P3->>P1: OnUserMsgIncome()"}));
}

TEST_F(TraceDiagramTest, ShowsTheChosenDevices)
{
    Choose({.devices = {"phone"}});
    Host("IPaasOnline::Login");
    Host(
        "IPaasOnline::Login", {}, {}, [] {}, kPhone);
    EXPECT_EQ(Drawn(), Lines{"P1->>P2: Login()"});
    EXPECT_NE(m_diagram->Text().find("P2 as Module of phone\n"), std::string::npos);
    EXPECT_EQ(m_diagram->UnknownDevices(), Lines{});
}

TEST_F(TraceDiagramTest, ShowsTheChosenSubjectsAndWhatLedToThem)
{
    Choose({.subjects = {host::TraceSubject::Presence}});
    Host("WDllCreateComponent");
    Host("IPaasOnline::Login");
    Event("IZolConnectionListener::OnLoginResult", {},
          [&]
          {
              Notify("IPaasOnlineNotify::OnLoginSuccess");
              Platform(kPlatform, "IZolOnline::RefreshAllUsersStatus");
          });
    Event("IZolOnlineListener::OnInviteIncome");
    EXPECT_EQ(Drawn(), (Lines{"P3->>P2: OnLoginResult()", "P2->>P3: RefreshAllUsersStatus()",
                              "Note over P1,P3: Not drawn: 1 further calls of set-up"}));
}

TEST_F(TraceDiagramTest, ShowsTheLossOfAConnectionAmongTheMeetings)
{
    Choose({.subjects = {host::TraceSubject::Meetings}});
    Event("IZolConnectionListener::OnLogouted");
    Event("IZolConnectionListener::OnReconnectStart");
    Event("IZolConnectionListener::OnReconnectSucess");
    Event("IZolConnectionListener::OnGroupUserSync");
    EXPECT_EQ(Drawn(),
              (Lines{"P3->>P2: OnReconnectStart()", "P3->>P2: OnReconnectSucess()", "P3->>P2: OnGroupUserSync()"}));
}

TEST_F(TraceDiagramTest, AFullDiagramSaysWhatItLeavesOut)
{
    for (int i = 0; i < 3000; ++i)
    {
        if (i % 1000 == 0)
        {
            m_diagram->Chapter("chapter " + std::to_string(i / 1000), Tick());
        }
        Host(i % 2 == 0 ? "IPaasOnline::Login" : "IPaasOnline::Logout", {{"userid", i}}, {"true"});
    }
    const std::string text = m_diagram->Text();
    EXPECT_LE(text.size(), 50'000u);
    const Lines drawn = Drawn();
    const auto shown =
        std::count_if(drawn.begin(), drawn.end(), [](const std::string& line) { return line.starts_with("P1->>P2"); });
    ASSERT_GT(shown, 500);
    EXPECT_EQ(DiagramProblems(text), Problems{});
    const std::string& last = drawn.back();
    EXPECT_NE(last.find("The diagram is full. Not drawn: the last " + std::to_string(3000 - shown) +
                        " calls and events, from "),
              std::string::npos)
        << last;
}

TEST_F(TraceDiagramTest, ManyDevicesStayWithinTheLimit)
{
    for (uint32_t device = 2; device < 1000; ++device)
    {
        m_diagram->AddComponent(std::string(50, ';') + std::to_string(device));
        Host(
            "IPaasOnline::Login", {{"userid", std::to_string(device)}}, {}, [] {}, device);
    }
    const std::string text = m_diagram->Text();
    EXPECT_LE(text.size(), 50'000u);
    EXPECT_EQ(DiagramProblems(text), Problems{});
    EXPECT_NE(text.find("Not drawn: 938 calls and events of the devices after"), std::string::npos);
}

TEST_F(TraceDiagramTest, AnOpenCallIsDrawn)
{
    m_diagram->Begin(kMain, nullptr, {Crossing::HostCall, kPc, "IPaasOnline::Login"}, Tick());
    EXPECT_EQ(Drawn(), Lines{"P1->>P2: Login()"});
}
