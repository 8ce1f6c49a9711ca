#include "checks/Meetings.h"
#include "checks/Stage.h"

namespace checks
{

namespace
{

using onlinemanager::TUNNEL_TYPE_GW;

std::string Log(std::string_view text)
{
    return LogLine("GwConnectionImp", text);
}

const std::string kJoin = Log("JoinMeeting()");
const std::string kLeave = Log("LeaveMeeting()");
const std::string kLogin = "connection2.LoginOldGw({12345678-9ABC-DEF0-1234-56789ABCDEF0}, \"52011\", 32, 16, 64)";
const std::string kReady = "[platform] A.OnReadyReconnect(2)";
const std::string kStart = "[platform] A.OnReconnectStart(2)";

/// A stage with the gateway tunnel, its listener G, and the session's listener A, which gets the notifications of the
/// gateway's reconnections. No user is logged in: the gateway needs no login.
struct GatewayStage : Stage
{
    explicit GatewayStage(CheckContext& context) : Stage(context), listener(journal, "G"), sessionListener(journal, "A")
    {
        Session()->AddNotify(&sessionListener);
        tunnel = Tunnel(TUNNEL_TYPE_GW);
        tunnel->AddNotify(&listener);
    }

    /// Joins the meeting.
    void Join()
    {
        check.Require(tunnel->JoinMeeting(SomeMeeting()), "the join is accepted");
        Gateway().LoginResult(0);
        journal.Clear();
    }

    TunnelNotify listener;
    SessionNotify sessionListener;
    onlinemanager::IMeetingTunnel* tunnel = nullptr;
};

} // namespace

CONTRACT_CHECK(
    Gateway, JoinMeetingLogsInAtTheGatewayWithTheWholeRecord,
    "Identifier, user id as decimal text, and the three numbers as they are; no login of the session is needed.")
{
    GatewayStage stage(check);
    check.ExpectEqual(true, stage.tunnel->JoinMeeting(SomeMeeting()), "JoinMeeting");
    stage.ExpectJournal({kJoin, kLogin});

    const onlinemanager::JoinData largest{{}, 4294967295, 4294967295, 65535, 18446744073709551615U};
    check.ExpectEqual(true, stage.tunnel->JoinMeeting(largest), "JoinMeeting");
    stage.ExpectJournal({
        kJoin,
        "connection2.LoginOldGw({00000000-0000-0000-0000-000000000000}, \"4294967295\", 4294967295, 65535, "
        "18446744073709551615)",
    });
}

CONTRACT_CHECK(Gateway, JoinMeetingWithoutARecordIsRefused,
               "The module tests the address of the reference and does not read it.")
{
    GatewayStage stage(check);
    check.ExpectEqual(false, JoinWithoutARecord(*stage.tunnel), "JoinMeeting");
    stage.ExpectJournal({kJoin, Log("GwConnectionImp::JoinMeeting param error.")});
}

CONTRACT_CHECK(
    Gateway, ARefusedLoginIsLoggedAndChangesNothing,
    "The result is false, no join is pending, and a tunnel in a meeting stays there; a positive result is success.")
{
    GatewayStage stage(check);
    stage.Gateway().SetResult("LoginOldGw", E_FAIL);
    check.ExpectEqual(false, stage.tunnel->JoinMeeting(SomeMeeting()), "JoinMeeting");
    stage.ExpectJournal({kJoin, kLogin, Log("GwConnectionImp::JoinMeeting LoginOldGw failed.")});
    check.ExpectEqual(std::vector<int32_t>{avcore::ZOL_RECONNECT_STOP}, stage.Gateway().ReconnectStart(),
                      "answer: not in a meeting");
    stage.ExpectJournal({});

    stage.Gateway().SetResult("LoginOldGw", 1);
    stage.Join();
    stage.Gateway().SetResult("LoginOldGw", E_FAIL);
    stage.tunnel->JoinMeeting(SomeMeeting());
    stage.journal.Clear();
    stage.Gateway().ReconnectStart();
    stage.ExpectJournal({Log("OnReconnectStart()"), kReady, kStart});
}

CONTRACT_CHECK(Gateway, TheLoginResultIsTheJoinResult,
               "The listeners get the platform's code unchanged, in their order.")
{
    GatewayStage stage(check);
    TunnelNotify second(stage.journal, "H");
    stage.tunnel->AddNotify(&second);
    for (const int code : {0, 36, -5})
    {
        const std::string text = std::to_string(code);
        stage.Gateway().LoginResult(code, "device", "state", "info");
        stage.ExpectJournal({
            Log("GwConnectionImp::OnJoinMeeting, errCode=" + text + "."),
            "[platform] G.OnJoinMeetingResult(" + text + ")",
            "[platform] H.OnJoinMeetingResult(" + text + ")",
        });
    }
    stage.tunnel->RemoveAllNotify();
}

CONTRACT_CHECK(Gateway, AFailedLoginLeavesTheTunnelOutOfTheMeeting, "A lost connection is then not reported.")
{
    GatewayStage stage(check);
    stage.tunnel->JoinMeeting(SomeMeeting());
    stage.Gateway().LoginResult(4);
    stage.journal.Clear();
    check.ExpectEqual(std::vector<int32_t>{avcore::ZOL_RECONNECT_STOP}, stage.Gateway().ReconnectStart(),
                      "answer to the platform");
    stage.ExpectJournal({});
}

CONTRACT_CHECK(Gateway, ALogoutIsTheLeaveResultUnderAGarbledName,
               "The line keeps its garbled class name on purpose; the tunnel is out of the meeting.")
{
    GatewayStage stage(check);
    for (const int code : {0, 36})
    {
        stage.Join();
        const std::string text = std::to_string(code);
        stage.Gateway().Logouted(code);
        stage.ExpectJournal({
            Log("GwConnectierrCodeonImp::OnLeaveMeeting, errCode=" + text + "."),
            "[platform] G.OnLeaveMeetingResult(" + text + ")",
        });
        stage.Gateway().ReconnectStart();
        stage.ExpectJournal({});
    }
}

CONTRACT_CHECK(Gateway, LeaveMeetingLogsOutAtTheGateway, "It also cancels a pending join.")
{
    GatewayStage stage(check);
    stage.tunnel->JoinMeeting(SomeMeeting());
    stage.journal.Clear();
    check.ExpectEqual(true, stage.tunnel->LeaveMeeting(), "LeaveMeeting");
    stage.ExpectJournal({kLeave, "connection2.Logout()"});
    check.ExpectEqual(std::vector<int32_t>{avcore::ZOL_RECONNECT_STOP}, stage.Gateway().ReconnectStart(),
                      "answer: not in a meeting");
    stage.ExpectJournal({});

    stage.Gateway().SetResult("Logout", 1);
    check.ExpectEqual(true, stage.tunnel->LeaveMeeting(), "LeaveMeeting with a positive result");
    stage.ExpectJournal({kLeave, "connection2.Logout()"});
}

CONTRACT_CHECK(Gateway, LeaveMeetingWithAFailingLogoutReturnsFalseAndIsOutOfTheMeeting,
               "The tunnel is out of the meeting, and a pending join stays pending.")
{
    GatewayStage stage(check);
    stage.Join();
    stage.Gateway().SetResult("Logout", E_FAIL);
    check.ExpectEqual(false, stage.tunnel->LeaveMeeting(), "LeaveMeeting");
    stage.ExpectJournal({kLeave, "connection2.Logout()", Log("GwConnectionImp::LeaveMeeting Logout failed.")});
    check.ExpectEqual(std::vector<int32_t>{avcore::ZOL_RECONNECT_STOP}, stage.Gateway().ReconnectStart(),
                      "answer: not in a meeting");
    stage.ExpectJournal({});

    stage.tunnel->JoinMeeting(SomeMeeting());
    stage.tunnel->LeaveMeeting();
    stage.journal.Clear();
    check.ExpectEqual(std::vector<int32_t>{avcore::ZOL_RECONNECT_STOP}, stage.Gateway().ReconnectStart(),
                      "answer: not in a meeting");
    stage.ExpectJournal({Log("OnReconnectStart, join result notify"), "G.OnJoinMeetingResult(50001)"});
}

CONTRACT_CHECK(Gateway, AStartBeforeTheLoginResultReportsTheJoinWith50001ThenStartsWithoutReadiness,
               "Every listener gets it; a late login result is reported too.")
{
    GatewayStage stage(check);
    TunnelNotify second(stage.journal, "H");
    stage.tunnel->AddNotify(&second);
    stage.tunnel->JoinMeeting(SomeMeeting());
    stage.journal.Clear();
    check.ExpectEqual(std::vector<int32_t>{avcore::ZOL_RECONNECT_GO_ON}, stage.Gateway().ReconnectStart(),
                      "answer to the platform");
    stage.ExpectJournal({
        Log("OnReconnectStart, join result notify"),
        "[platform] G.OnJoinMeetingResult(50001)",
        "[platform] H.OnJoinMeetingResult(50001)",
        kStart,
    });
    check.ExpectEqual(std::vector<int32_t>{avcore::ZOL_RECONNECT_GO_ON}, stage.Gateway().ReconnectStart(),
                      "answer to the second start");
    stage.ExpectJournal({kStart});
    stage.Gateway().LoginResult(0);
    check.ExpectEqual(1U, stage.journal.Count("G.OnJoinMeetingResult(0)"), "late results");
    stage.tunnel->RemoveAllNotify();
}

CONTRACT_CHECK(Gateway, AfterASuccessfulJoinAStartIsReadyThenStartsAndASecondOneOnlyStarts,
               "The notifications have tunnel type 2; the platform gets the answer 1.")
{
    GatewayStage stage(check);
    stage.Join();
    check.ExpectEqual(std::vector<int32_t>{avcore::ZOL_RECONNECT_GO_ON}, stage.Gateway().ReconnectStart(),
                      "answer to the platform");
    stage.ExpectJournal({Log("OnReconnectStart()"), kReady, kStart});
    check.ExpectEqual(std::vector<int32_t>{avcore::ZOL_RECONNECT_GO_ON}, stage.Gateway().ReconnectStart(),
                      "answer to the second start");
    stage.ExpectJournal({kStart});
}

CONTRACT_CHECK(Gateway, AStartOutsideAMeetingWithNoPendingJoinDoesNothing, "The platform gets the answer 2.")
{
    GatewayStage stage(check);
    check.ExpectEqual(std::vector<int32_t>{avcore::ZOL_RECONNECT_STOP}, stage.Gateway().ReconnectStart(),
                      "answer to the platform");
    stage.ExpectJournal({});
}

CONTRACT_CHECK(Gateway, TheStrategyOfTheSessionIsNotAsked, "The gateway reconnects without asking.")
{
    GatewayStage stage(check);
    RecordingStrategy strategy(stage.journal);
    strategy.decision = avcore::ZOL_RECONNECT_STOP;
    stage.Session()->SetReconnectionStrategy(&strategy);
    stage.Join();
    check.ExpectEqual(std::vector<int32_t>{avcore::ZOL_RECONNECT_GO_ON}, stage.Gateway().ReconnectStart(),
                      "answer to the platform");
    stage.ExpectJournal({Log("OnReconnectStart()"), kReady, kStart});
}

CONTRACT_CHECK(Gateway, AReconnectionSucceedsFromAnyState, "The tunnel is in the meeting afterwards.")
{
    GatewayStage stage(check);
    stage.Gateway().ReconnectSucess();
    stage.ExpectJournal({Log("OnReconnectSucess()"), "[platform] A.OnReconnectSucess(2)"});
    stage.Gateway().ReconnectStart();
    stage.ExpectJournal({Log("OnReconnectStart()"), kReady, kStart});
    stage.Gateway().ReconnectSucess();
    stage.ExpectJournal({Log("OnReconnectSucess()"), "A.OnReconnectSucess(2)"});
}

CONTRACT_CHECK(Gateway, AFailedReconnectionPassesThePlatformsCodeAndChangesNothing,
               "Nothing is logged, the code is not mapped, and a tunnel in a meeting stays there.")
{
    GatewayStage stage(check);
    stage.Join();
    for (const int code : {36, 0, -1})
    {
        stage.Gateway().ReconnectFail(code, "text");
        stage.ExpectJournal({"[platform] A.OnReconnectFail(2, " + std::to_string(code) + ")"});
    }
    stage.Gateway().ReconnectFail(5, nullptr);
    stage.ExpectJournal({"A.OnReconnectFail(2, 5)"});
    stage.Gateway().ReconnectStart();
    stage.ExpectJournal({Log("OnReconnectStart()"), kReady, kStart});
}

CONTRACT_CHECK(Gateway, ReconnectionsLeaveTheSessionAlone,
               "The session's state and properties follow only its own connection.")
{
    GatewayStage stage(check);
    stage.LogIn();
    stage.Join();
    stage.Gateway().ReconnectStart();
    stage.Gateway().ReconnectFail(36, "device");
    check.ExpectEqual(true, stage.Session()->Relogin(false), "the session is still logged in");
    char value[16];
    check.ExpectEqual(
        0, stage.Session()->GetConnectProperty(onlinemanager::CONNECT_PROPERTY_CONFLICT_DEVICE_ID, value, 16).status,
        "property 2");
}

CONTRACT_CHECK(Gateway, AUserIdThatIsNoNumberAbove0DeliversNothing,
               "Null, empty, a letter in front, 0 and numbers out of range give the error line, for joins and leaves.")
{
    GatewayStage stage(check);
    for (const char* const text :
         {static_cast<const char*>(nullptr), "", "u7", "-7", " 7", "+7", "0", "000", "0x7", "99999999999999999999999"})
    {
        stage.Gateway().GroupUserJoined(text);
        stage.Gateway().GroupUserLeaved(text);
        stage.ExpectJournal({
            Log("GwConnectionImp::OnGroupUserJoined param error."),
            Log("GwConnectionImp::OnGroupUserLeaved param error."),
        });
    }
}

CONTRACT_CHECK(Gateway, OnGroupUserJoinedWithNullDeliversNothing,
               "The error line is logged, and no listener is called.")
{
    GatewayStage stage(check);
    stage.Gateway().GroupUserJoined(nullptr);
    stage.ExpectJournal({Log("GwConnectionImp::OnGroupUserJoined param error.")});
}

CONTRACT_CHECK(Gateway, UsersThatJoinAndLeaveAreDeliveredByTheirNumbers, "Letters after the digits are ignored.")
{
    GatewayStage stage(check);
    stage.Gateway().GroupUserJoined("52012");
    stage.Gateway().GroupUserLeaved("52012");
    stage.Gateway().GroupUserJoined("7b");
    stage.Gateway().GroupUserLeaved("007");
    stage.ExpectJournal({
        "[platform] G.OnUserJoined(52012)",
        "[platform] G.OnUserLeaved(52012)",
        "G.OnUserJoined(7)",
        "G.OnUserLeaved(7)",
    });
}

CONTRACT_CHECK(Gateway, GroupResultsAndWholeGroupsAreIgnored, "The gateway does not use groups.")
{
    GatewayStage stage(check);
    stage.Gateway().JoinGroupResult(0);
    stage.Gateway().LeaveGroupResult(0);
    stage.Gateway().GroupUserSync({"1"});
    stage.ExpectJournal({});
}

CONTRACT_CHECK(Gateway, AListenerRemovedDuringADeliveryHearsNothingMoreAndLosesItsPlace,
               "The next delivery erases its entry; a listener that is added again afterwards is the last one.")
{
    GatewayStage stage(check);
    TunnelNotify second(stage.journal, "H");
    TunnelNotify third(stage.journal, "I");
    stage.tunnel->AddNotify(&second);
    stage.tunnel->AddNotify(&third);
    stage.listener.hook = [&](const std::string& event)
    {
        if (event == "OnUserJoined(1)")
        {
            stage.tunnel->RemoveNotify(&second);
        }
    };
    stage.Gateway().GroupUserJoined("1");
    stage.Gateway().GroupUserJoined("2");
    stage.tunnel->AddNotify(&second);
    stage.Gateway().GroupUserJoined("3");
    stage.ExpectJournal({
        "G.OnUserJoined(1)",
        "I.OnUserJoined(1)",
        "G.OnUserJoined(2)",
        "I.OnUserJoined(2)",
        "G.OnUserJoined(3)",
        "I.OnUserJoined(3)",
        "H.OnUserJoined(3)",
    });
    stage.tunnel->RemoveAllNotify();
}

CONTRACT_CHECK(Gateway, TheTwoTunnelsAreIndependent,
               "Events of one tunnel's connection never reach the other tunnel's listeners.")
{
    GatewayStage stage(check);
    TunnelNotify paas(stage.journal, "T");
    onlinemanager::IMeetingTunnel* const paasTunnel = stage.Tunnel(onlinemanager::TUNNEL_TYPE_PAAS);
    paasTunnel->AddNotify(&paas);
    stage.Gateway().LoginResult(0);
    stage.Gateway().GroupUserJoined("5");
    stage.Gateway().Logouted(0);
    check.ExpectEqual(0U, stage.journal.Count("T."), "notifications of the other tunnel");
    stage.Connection().JoinGroupResult(0);
    stage.Connection().GroupUserJoined("5");
    check.ExpectEqual(3U, stage.journal.Count("G."), "notifications of the gateway");
    check.ExpectEqual(0U, stage.journal.Count("A."), "notifications of the session");
    paasTunnel->RemoveAllNotify();
}

} // namespace checks
