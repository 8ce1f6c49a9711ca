#include "checks/Meetings.h"
#include "checks/Stage.h"

namespace checks
{

namespace
{

using onlinemanager::JoinData;
using onlinemanager::TUNNEL_TYPE_PAAS;

std::string Log(std::string_view text)
{
    return LogLine("PaasOnlineImp", text);
}

const std::string kJoin = Log("JoinMeeting()");
const std::string kLeave = Log("LeaveMeeting()");
const std::string kJoinGroup = "connection1.JoinGroup(\"12345678-9abc-def0-1234-56789abcdef0\")";
const std::string kJoinNotLoggedIn = Log("JoinMeeting failed, current not logged in.");
const std::string kLeaveNotLoggedIn = Log("LeaveMeeting call failed, current not logged in.");
const std::string kJoinAborted = "T.OnJoinMeetingResult(50001)";

/// A stage with the tunnel and its listener T.
struct TunnelStage : Stage
{
    explicit TunnelStage(CheckContext& context, Scene scene = Scene::LoggedIn)
        : Stage(context, scene),
          listener(journal, "T")
    {
        tunnel = Tunnel(TUNNEL_TYPE_PAAS);
        tunnel->AddNotify(&listener);
    }

    /// Whether a join was pending, which means that a lost connection reports it. None is pending afterwards.
    bool TakePendingJoin()
    {
        journal.Clear();
        Connection().ReconnectStart();
        const bool wasPending = journal.Count(kJoinAborted) == 1;
        journal.Clear();
        return wasPending;
    }

    TunnelNotify listener;
    onlinemanager::IMeetingTunnel* tunnel = nullptr;
};

} // namespace

CONTRACT_CHECK(PaasTunnel, JoinMeetingBeforeLoginSaysSoEvenWhenTheRecordIsAbsent,
               "The login is checked before the record.")
{
    TunnelStage stage(check, Scene::Initialized);
    check.ExpectEqual(false, JoinWithoutARecord(*stage.tunnel), "JoinMeeting without a record");
    stage.ExpectJournal({kJoin, kJoinNotLoggedIn});
    check.ExpectEqual(false, stage.tunnel->JoinMeeting(SomeMeeting()), "JoinMeeting with one");
    stage.ExpectJournal({kJoin, kJoinNotLoggedIn});
}

CONTRACT_CHECK(PaasTunnel, JoinMeetingWithoutARecordIsRefusedByItsGuid,
               "The module tests the address of the reference and does not read it.")
{
    TunnelStage stage(check);
    check.ExpectEqual(false, JoinWithoutARecord(*stage.tunnel), "JoinMeeting");
    stage.ExpectJournal({kJoin, Log("JoinMeeting failed, guid = nullptr.")});
    check.Expect(!stage.TakePendingJoin(), "no join is pending");
}

CONTRACT_CHECK(PaasTunnel, JoinMeetingWhileLoggingInIsRefused, "A meeting can be joined only while logged in.")
{
    TunnelStage stage(check, Scene::Initialized);
    stage.Session()->Login(Stage::Param(), false);
    stage.journal.Clear();
    check.ExpectEqual(false, stage.tunnel->JoinMeeting(SomeMeeting()), "JoinMeeting");
    check.ExpectEqual(false, stage.tunnel->LeaveMeeting(), "LeaveMeeting");
    stage.ExpectJournal({kJoin, kJoinNotLoggedIn, kLeave, kLeaveNotLoggedIn});
}

CONTRACT_CHECK(PaasTunnel, JoinMeetingWithoutAUserIsRefusedInTheLoggedInState,
               "A reconnection that succeeds before any login sets the state, but there is no user.")
{
    TunnelStage stage(check, Scene::Initialized);
    stage.Connection().ReconnectSucess();
    stage.journal.Clear();
    check.ExpectEqual(false, stage.tunnel->JoinMeeting(SomeMeeting()), "JoinMeeting");
    check.ExpectEqual(false, stage.tunnel->LeaveMeeting(), "LeaveMeeting");
    stage.ExpectJournal({kJoin, kJoinNotLoggedIn, kLeave, kLeaveNotLoggedIn});
}

CONTRACT_CHECK(PaasTunnel, AfterALogoutJoinsAndLeavesAreRefused,
               "JoinMeeting and LeaveMeeting are refused with their own lines.")
{
    TunnelStage stage(check);
    stage.Connection().Logouted(0);
    stage.journal.Clear();
    check.ExpectEqual(false, stage.tunnel->JoinMeeting(SomeMeeting()), "JoinMeeting");
    check.ExpectEqual(false, stage.tunnel->LeaveMeeting(), "LeaveMeeting");
    stage.ExpectJournal({kJoin, kJoinNotLoggedIn, kLeave, kLeaveNotLoggedIn});
}

CONTRACT_CHECK(PaasTunnel, TheGroupIdIsTheTextOfTheGuidWithoutBracesInLowerCase,
               "It has 36 characters, and does not contain the gateway's numbers.")
{
    TunnelStage stage(check);
    check.ExpectEqual(true, stage.tunnel->JoinMeeting(SomeMeeting()), "JoinMeeting");
    stage.ExpectJournal({kJoin, kJoinGroup});
    check.ExpectEqual(true, stage.tunnel->JoinMeeting({}), "JoinMeeting with the empty identifier");
    stage.ExpectJournal({kJoin, "connection1.JoinGroup(\"00000000-0000-0000-0000-000000000000\")"});
}

CONTRACT_CHECK(PaasTunnel, AJoinSucceedsOnlyWithResult0,
               "A positive result of the platform is a failure, with its code.")
{
    TunnelStage stage(check);
    stage.Connection().SetResult("JoinGroup", 1);
    check.ExpectEqual(false, stage.tunnel->JoinMeeting(SomeMeeting()), "JoinMeeting with 1");
    stage.ExpectJournal({kJoin, kJoinGroup, Log("JoinMeeting failed, code(1).")});
    stage.Connection().SetResult("JoinGroup", E_FAIL);
    check.ExpectEqual(false, stage.tunnel->JoinMeeting(SomeMeeting()), "JoinMeeting with a negative code");
    stage.ExpectJournal({kJoin, kJoinGroup, Log("JoinMeeting failed, code(-2147467259).")});
    check.Expect(!stage.TakePendingJoin(), "a refused join is not pending");
}

CONTRACT_CHECK(PaasTunnel, AnAcceptedJoinIsPendingUntilItsResult,
               "A lost connection reports it before the result, and not after it.")
{
    TunnelStage stage(check);
    stage.tunnel->JoinMeeting(SomeMeeting());
    check.Expect(stage.TakePendingJoin(), "pending after JoinMeeting");
    stage.LogIn();
    stage.tunnel->JoinMeeting(SomeMeeting());
    stage.Connection().JoinGroupResult(4);
    check.Expect(!stage.TakePendingJoin(), "not pending after the result");
}

CONTRACT_CHECK(PaasTunnel, TheJoinResultReachesEveryListenerInOrderWithThePlatformsCode, "Every code passes unchanged.")
{
    TunnelStage stage(check);
    TunnelNotify second(stage.journal, "U");
    stage.tunnel->AddNotify(&second);
    for (const int code : {0, 36, 50001, -7})
    {
        stage.Connection().JoinGroupResult(code);
        const std::string text = std::to_string(code);
        stage.ExpectJournal({
            Log("OnJoinGroupResult()"),
            Log("errCode=" + text + "."),
            "[platform] T.OnJoinMeetingResult(" + text + ")",
            "[platform] U.OnJoinMeetingResult(" + text + ")",
        });
    }
    stage.tunnel->RemoveAllNotify();
}

CONTRACT_CHECK(PaasTunnel, ALeaveSucceedsWithAnyResultThatIsNotNegative,
               "It also cancels a pending join; a failed leave is logged with its code, and the join stays pending.")
{
    TunnelStage stage(check);
    stage.tunnel->JoinMeeting(SomeMeeting());
    stage.journal.Clear();
    stage.Connection().SetResult("LeaveGroup", E_FAIL);
    check.ExpectEqual(false, stage.tunnel->LeaveMeeting(), "LeaveMeeting with a negative code");
    stage.ExpectJournal({kLeave, "connection1.LeaveGroup()", Log("LeaveMeeting failed, ret(0x80004005).")});
    check.Expect(stage.TakePendingJoin(), "the join is still pending");

    for (const int result : {0, 1})
    {
        stage.LogIn();
        stage.tunnel->JoinMeeting(SomeMeeting());
        stage.Connection().SetResult("LeaveGroup", result);
        stage.journal.Clear();
        check.ExpectEqual(true, stage.tunnel->LeaveMeeting(), "LeaveMeeting");
        stage.ExpectJournal({kLeave, "connection1.LeaveGroup()"});
        check.Expect(!stage.TakePendingJoin(), "the join is not pending any more");
    }
}

CONTRACT_CHECK(PaasTunnel, ALeaveNeedsNoMeeting, "The platform is called in any case.")
{
    TunnelStage stage(check);
    check.ExpectEqual(true, stage.tunnel->LeaveMeeting(), "LeaveMeeting");
    stage.ExpectJournal({kLeave, "connection1.LeaveGroup()"});
}

CONTRACT_CHECK(PaasTunnel, TheLeaveResultReachesTheListenersWithThePlatformsCode,
               "The code is unchanged; two lines are logged before.")
{
    TunnelStage stage(check);
    for (const int code : {0, 36})
    {
        stage.Connection().LeaveGroupResult(code);
        const std::string text = std::to_string(code);
        stage.ExpectJournal({
            Log("OnLeaveGroupResult()"),
            Log("errCode=" + text + "."),
            "[platform] T.OnLeaveMeetingResult(" + text + ")",
        });
    }
}

CONTRACT_CHECK(PaasTunnel, AJoinResultAfterLeaveMeetingIsStillBroadcast, "The listeners get the result of the join.")
{
    TunnelStage stage(check);
    stage.tunnel->JoinMeeting(SomeMeeting());
    stage.tunnel->LeaveMeeting();
    stage.journal.Clear();
    stage.Connection().JoinGroupResult(0);
    stage.ExpectJournal({Log("OnJoinGroupResult()"), Log("errCode=0."), "T.OnJoinMeetingResult(0)"});
}

CONTRACT_CHECK(PaasTunnel, AUserIdThatBeginsWithALetterIsUser0AndOneThatBeginsWithDigitsIsItsNumber,
               "Letters after the digits are ignored; null and all other texts are user 0, for joins and leaves.")
{
    const struct
    {
        const char* text;
        const char* number;
    } cases[] = {
        {"52012", "52012"}, {"52012abc", "52012"}, {"007", "7"},
        {"0", "0"},         {"u52012", "0"},       {"", "0"},
        {nullptr, "0"},     {"-3", "0"},           {"+3", "0"},
        {" 3", "0"},        {"4.7", "4"},          {"99999999999999999999999", "0"},
        {"0x1F", "0"},      {"1e3", "1"},
    };
    TunnelStage stage(check);
    for (const auto& entry : cases)
    {
        const std::string number = entry.number;
        stage.Connection().GroupUserJoined(entry.text);
        stage.Connection().GroupUserLeaved(entry.text);
        stage.ExpectJournal({
            Log("OnGroupUserJoined()"),
            Log("remoteUserId=" + number + "."),
            "[platform] T.OnUserJoined(" + number + ")",
            Log("OnGroupUserLeaved()"),
            Log("remoteUserId=" + number + "."),
            "[platform] T.OnUserLeaved(" + number + ")",
        });
    }
}

CONTRACT_CHECK(PaasTunnel, LoginsLogoutsAndWholeGroupsDoNotReachTheTunnelsListeners,
               "The listeners of the tunnel are not called for them.")
{
    TunnelStage stage(check);
    stage.Connection().LoginResult(0);
    stage.Connection().LoginResult(36);
    stage.Connection().Logouted(0);
    stage.Connection().GroupUserSync({"1", "2"});
    check.ExpectEqual(0U, stage.journal.Count("T."), "notifications of the tunnel");
}

CONTRACT_CHECK(PaasTunnel, GroupEventsDoNotReachTheSessionsListeners,
               "The session's listeners are not called for them.")
{
    TunnelStage stage(check);
    onlinemanager::IPaasOnline* const session = stage.Session();
    SessionNotify listener(stage.journal, "A");
    session->AddNotify(&listener);
    stage.Connection().JoinGroupResult(0);
    stage.Connection().LeaveGroupResult(0);
    stage.Connection().GroupUserJoined("1");
    stage.Connection().GroupUserLeaved("1");
    stage.Connection().GroupUserSync({"1", "2"});
    check.ExpectEqual(0U, stage.journal.Count("A."), "notifications of the session");
    check.ExpectEqual(4U, stage.journal.Count("T."), "notifications of the tunnel");
    session->RemoveAllNotify();
}

CONTRACT_CHECK(PaasTunnel, ALogoutDuringAMeetingIsNotReportedToTheTunnelsListeners,
               "A pending join stays pending until its result or a lost connection.")
{
    TunnelStage stage(check);
    stage.tunnel->JoinMeeting(SomeMeeting());
    stage.Connection().Logouted(36);
    check.ExpectEqual(0U, stage.journal.Count("T."), "notifications of the tunnel");
    check.Expect(stage.TakePendingJoin(), "the join is still pending");
}

CONTRACT_CHECK(PaasTunnel, EventsWithoutAListenerAreOnlyLogged, "A listener that is added later gets the later events.")
{
    TunnelStage stage(check);
    stage.tunnel->RemoveAllNotify();
    stage.Connection().JoinGroupResult(0);
    stage.Connection().GroupUserJoined("9");
    stage.ExpectJournal({
        Log("OnJoinGroupResult()"),
        Log("errCode=0."),
        Log("OnGroupUserJoined()"),
        Log("remoteUserId=9."),
    });
    stage.tunnel->AddNotify(&stage.listener);
    stage.Connection().GroupUserLeaved("9");
    stage.ExpectJournal({Log("OnGroupUserLeaved()"), Log("remoteUserId=9."), "T.OnUserLeaved(9)"});
}

CONTRACT_CHECK(PaasTunnel, ListenersOfTheTunnelSurviveUninitModel,
               "Only the host removes them; after the next InitModel they get the events of the next meeting.")
{
    TunnelStage stage(check);
    onlinemanager::IPaasOnline* const session = stage.Session();
    session->UninitModel();
    session->InitModel(nullptr);
    stage.LogIn();
    check.ExpectEqual(true, stage.tunnel->JoinMeeting(SomeMeeting()), "JoinMeeting");
    stage.journal.Clear();
    stage.Connection().JoinGroupResult(avcore::ZOL_PORT_SUCCESS);
    check.ExpectEqual(1, stage.journal.Count("T.OnJoinMeetingResult(0)"), "results of the join");
}

} // namespace checks
