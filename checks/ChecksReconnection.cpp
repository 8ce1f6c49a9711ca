#include "checks/Presence.h"
#include "checks/Stage.h"

namespace checks
{

namespace
{

using onlinemanager::CONNECT_PROPERTY_CONFLICT_CUSTOM_STATE;
using onlinemanager::CONNECT_PROPERTY_CONFLICT_DEVICE_ID;
using onlinemanager::CONNECT_PROPERTY_ONLINE;
using onlinemanager::TUNNEL_TYPE_PAAS;

std::string Log(std::string_view text)
{
    return LogLine("PaasOnlineImp", text);
}

const std::string kStart = Log("OnReconnectStart()");
const std::string kNoStrategy = Log("Reconnect can't work, strategy == nullptr.");
const std::string kStopped = Log("Reconnect stoped.");

/// The answers that the platform gets: the session decides nothing, the tunnel answers `decision`.
std::vector<int32_t> Answers(int32_t decision)
{
    return {avcore::ZOL_RECONNECT_UNDECIDED, decision};
}

/// The text of a property; "(absent)" if the key has none.
std::string Property(onlinemanager::IPaasOnline& session, onlinemanager::ConnectProperty key)
{
    char value[64];
    return session.GetConnectProperty(key, value, sizeof(value)).status == 1 ? value : "(absent)";
}

/// A logged-in stage with the session's listener A and a user 7, who is known to be online.
struct ReconnectingStage : Stage
{
    explicit ReconnectingStage(CheckContext& context)
        : Stage(context, Scene::LoggedIn),
          listener(journal, "A"),
          strategy(journal)
    {
        session = Session();
        session->AddNotify(&listener);
        users = Users();
        Refresh(Connection(), {UserOnPc("7", 1)});
        journal.Clear();
    }

    bool Knows7() const
    {
        return Known(*users, {7}).at(0) != "7: status=0";
    }

    SessionNotify listener;
    RecordingStrategy strategy;
    onlinemanager::IPaasOnline* session = nullptr;
    onlinemanager::IUserOnline* users = nullptr;
};

} // namespace

CONTRACT_CHECK(Reconnection, WithoutAStrategyAStartIsReadyThenLoggedThenForgetsUsersThenFailsWith50010AndAnswers2,
               "OnReadyReconnect, a line, no known users, OnReconnectFail; the platform gets the answer to stop.")
{
    ReconnectingStage stage(check);
    stage.listener.hook = [&stage](const std::string& event)
    { stage.journal.Add(event.substr(0, event.find('(')), stage.Knows7() ? " with" : " without", " user 7"); };
    check.ExpectEqual(Answers(avcore::ZOL_RECONNECT_STOP), stage.Connection().ReconnectStart(),
                      "answers to the platform");
    stage.ExpectJournal({
        kStart,
        "[platform] A.OnReadyReconnect(1)",
        "OnReadyReconnect with user 7",
        kNoStrategy,
        "[platform] A.OnReconnectFail(1, 50010)",
        "OnReconnectFail without user 7",
    });
    // The state is "logged out", so Relogin starts a new login.
    check.ExpectEqual(true, stage.session->Relogin(false), "Relogin");
    check.ExpectEqual(1U, stage.journal.Count("connection1.Login("), "platform logins");
}

CONTRACT_CHECK(Reconnection, AStrategyThatAnswers1GoesOnAndThePlatformGets1,
               "OnReadyReconnect, the question, OnReconnectStart; the state is \"logging in\" until the platform "
               "reports a result.")
{
    ReconnectingStage stage(check);
    stage.session->SetReconnectionStrategy(&stage.strategy);
    check.ExpectEqual(Answers(avcore::ZOL_RECONNECT_GO_ON), stage.Connection().ReconnectStart(),
                      "answers to the platform");
    stage.ExpectJournal({
        kStart,
        "A.OnReadyReconnect(1)",
        "[platform] strategy.CheckReconnect() -> 1",
        "A.OnReconnectStart(1)",
    });
    check.ExpectEqual(false, stage.session->Relogin(false), "Relogin while reconnecting");
    check.Expect(stage.Knows7(), "the users are still known");
    stage.ExpectJournal({});
}

CONTRACT_CHECK(Reconnection, AStrategyThatAnswers2StopsWith50010AndThePlatformGets2,
               "The misspelt line, no known users, OnReconnectFail.")
{
    ReconnectingStage stage(check);
    stage.session->SetReconnectionStrategy(&stage.strategy);
    stage.strategy.decision = avcore::ZOL_RECONNECT_STOP;
    check.ExpectEqual(Answers(avcore::ZOL_RECONNECT_STOP), stage.Connection().ReconnectStart(),
                      "answers to the platform");
    stage.ExpectJournal({
        kStart,
        "A.OnReadyReconnect(1)",
        "strategy.CheckReconnect() -> 2",
        kStopped,
        "A.OnReconnectFail(1, 50010)",
    });
    check.Expect(!stage.Knows7(), "the users are forgotten");
}

CONTRACT_CHECK(Reconnection, AStrategyThatAnswers0LeavesTheStateAt1AndAnswers0WithoutAnotherNotification,
               "Any value other than 1 and 2 decides nothing.")
{
    for (const int32_t decision : {int32_t{avcore::ZOL_RECONNECT_UNDECIDED}, 3, -1})
    {
        ReconnectingStage stage(check);
        stage.session->SetReconnectionStrategy(&stage.strategy);
        stage.strategy.decision = decision;
        check.ExpectEqual(Answers(avcore::ZOL_RECONNECT_UNDECIDED), stage.Connection().ReconnectStart(),
                          "answers to the platform");
        stage.ExpectJournal(
            {kStart, "A.OnReadyReconnect(1)", "strategy.CheckReconnect() -> " + std::to_string(decision)});
        check.ExpectEqual(false, stage.session->Relogin(false), "Relogin: the session counts as logging in");
        check.Expect(stage.Knows7(), "the users are still known");
    }
}

CONTRACT_CHECK(Reconnection, AStartWhileNotLoggedInTellsNoReadinessButAsksTheStrategy,
               "The state is unchanged; a second start while reconnecting is such a start.")
{
    ReconnectingStage stage(check);
    stage.session->SetReconnectionStrategy(&stage.strategy);
    stage.Connection().ReconnectStart();
    stage.journal.Clear();
    check.ExpectEqual(Answers(avcore::ZOL_RECONNECT_GO_ON), stage.Connection().ReconnectStart(),
                      "answers while reconnecting");
    stage.ExpectJournal({"strategy.CheckReconnect() -> 1", "A.OnReconnectStart(1)"});

    stage.Connection().Logouted(5);
    stage.journal.Clear();
    check.ExpectEqual(Answers(avcore::ZOL_RECONNECT_GO_ON), stage.Connection().ReconnectStart(),
                      "answers while logged out");
    stage.ExpectJournal({"strategy.CheckReconnect() -> 1", "A.OnReconnectStart(1)"});
    check.ExpectEqual(true, stage.session->Relogin(false), "Relogin: the session is still logged out");
}

CONTRACT_CHECK(Reconnection, AStartWhileLoggedOutWithoutAStrategyIsStoppedAllTheSame,
               "The line is logged, OnReconnectFail is called, the answer is 2.")
{
    Stage stage(check);
    SessionNotify listener(stage.journal, "A");
    stage.Session()->AddNotify(&listener);
    check.ExpectEqual(Answers(avcore::ZOL_RECONNECT_STOP), stage.Connection().ReconnectStart(),
                      "answers to the platform");
    stage.ExpectJournal({kNoStrategy, "A.OnReconnectFail(1, 50010)"});
}

CONTRACT_CHECK(Reconnection, AStopLeavesTheUserServiceLoggedIn,
               "Only the known users are forgotten; the service's own user is reset by a logout.")
{
    ReconnectingStage stage(check);
    stage.Connection().ReconnectStart();
    stage.journal.Clear();
    check.ExpectEqual(true, stage.users->SetSelfCustomInfo("back"), "SetSelfCustomInfo after the stop");
    stage.ExpectJournal(
        {LogLine("UserOnlineImp", "SetSelfCustomInfo, info=back."), "online1.SetUserCustomInfo(\"back\")"});
}

CONTRACT_CHECK(Reconnection, AStopLeavesTheConnectionProperties, "Only platform events change property 0.")
{
    ReconnectingStage stage(check);
    stage.Connection().ReconnectStart();
    check.ExpectEqual("true", Property(*stage.session, CONNECT_PROPERTY_ONLINE), "property 0");
}

CONTRACT_CHECK(Reconnection, ANullStrategyRemovesTheStrategy, "At the next start there is none.")
{
    ReconnectingStage stage(check);
    stage.session->SetReconnectionStrategy(&stage.strategy);
    stage.session->SetReconnectionStrategy(nullptr);
    check.ExpectEqual(Answers(avcore::ZOL_RECONNECT_STOP), stage.Connection().ReconnectStart(),
                      "answers to the platform");
    stage.ExpectJournal({kStart, "A.OnReadyReconnect(1)", kNoStrategy, "A.OnReconnectFail(1, 50010)"});
}

CONTRACT_CHECK(Reconnection, AStartDuringAPendingJoinFirstReportsTheJoinAsFailedWith50001,
               "The tunnel's listeners get it once, before all other notifications.")
{
    ReconnectingStage stage(check);
    onlinemanager::IMeetingTunnel* const tunnel = stage.Tunnel(TUNNEL_TYPE_PAAS);
    TunnelNotify meeting(stage.journal, "T");
    tunnel->AddNotify(&meeting);
    stage.session->SetReconnectionStrategy(&stage.strategy);
    check.ExpectEqual(true, tunnel->JoinMeeting({}), "JoinMeeting");
    stage.journal.Clear();
    stage.Connection().ReconnectStart();
    stage.ExpectJournal({
        Log("OnReconnectStart, join result notify"),
        "[platform] T.OnJoinMeetingResult(50001)",
        kStart,
        "A.OnReadyReconnect(1)",
        "strategy.CheckReconnect() -> 1",
        "A.OnReconnectStart(1)",
    });
    stage.Connection().ReconnectStart();
    stage.ExpectJournal({"strategy.CheckReconnect() -> 1", "A.OnReconnectStart(1)"});
    tunnel->RemoveAllNotify();
}

CONTRACT_CHECK(Reconnection, ASuccessLogsInThenNotifiesThenRefreshesTheCompany,
               "State 2 and property 0 are set before the listeners are called; the refresh comes last.")
{
    ReconnectingStage stage(check);
    stage.session->SetReconnectionStrategy(&stage.strategy);
    stage.Connection().ReconnectStart();
    stage.Connection().ReconnectFail(9, nullptr);
    check.ExpectEqual("false", Property(*stage.session, CONNECT_PROPERTY_ONLINE), "property 0 after the failure");
    stage.listener.hook = [&stage](const std::string&)
    {
        stage.journal.Add("relogin ", stage.session->Relogin(false), ", online ",
                          Property(*stage.session, CONNECT_PROPERTY_ONLINE));
    };
    stage.journal.Clear();
    stage.Connection().ReconnectSucess();
    stage.ExpectJournal({
        Log("OnReconnectSucess()"),
        "[platform] A.OnReconnectSucess(1)",
        "relogin 1, online true",
        "online1.RefreshAllUsersStatus() -> 102",
    });
}

CONTRACT_CHECK(Reconnection, AFailedRefreshAfterASuccessIsOnlyLogged, "Only a line is logged.")
{
    ReconnectingStage stage(check);
    stage.Connection().online.SetResult("RefreshAllUsersStatus", E_FAIL);
    stage.Connection().ReconnectSucess();
    stage.ExpectJournal({
        Log("OnReconnectSucess()"),
        "A.OnReconnectSucess(1)",
        "online1.RefreshAllUsersStatus() -> 102",
        LogLine("UserOnlineImp", "Reconnected refresh company user status failed."),
    });
}

CONTRACT_CHECK(Reconnection, TheRefreshAfterASuccessIsNotReportedAsFinished,
               "Only a refresh of the host is; the changes are reported in any case.")
{
    ReconnectingStage stage(check);
    UserNotify listener(stage.journal, "U");
    stage.users->AddNotify(&listener);
    stage.Connection().ReconnectSucess();
    stage.journal.Clear();
    Refresh(stage.Connection(), {UserOnPc("8", 1)}, 102);
    stage.ExpectJournal({"U.OnUserStatusChanged([8,7])"});
    stage.users->RemoveAllNotify();
}

CONTRACT_CHECK(Reconnection, AFailureWithCode36AndADeviceIdFillsProperty2AndPasses36Unchanged,
               "So a refused reconnection differs from 50002, a login that another device took over.")
{
    ReconnectingStage stage(check);
    stage.Connection().ReconnectFail(36, "tablet-9");
    stage.ExpectJournal({"[platform] A.OnReconnectFail(1, 36)"});
    check.ExpectEqual("tablet-9", Property(*stage.session, CONNECT_PROPERTY_CONFLICT_DEVICE_ID), "property 2");
    check.ExpectEqual("(absent)", Property(*stage.session, CONNECT_PROPERTY_CONFLICT_CUSTOM_STATE), "property 1");
    check.ExpectEqual("false", Property(*stage.session, CONNECT_PROPERTY_ONLINE), "property 0");
}

CONTRACT_CHECK(Reconnection, AFailureFillsProperty2OnlyWithCode36AndAText, "Otherwise it is unchanged.")
{
    ReconnectingStage stage(check);
    stage.Connection().ReconnectFail(36, nullptr);
    stage.Connection().ReconnectFail(35, "tablet-9");
    stage.ExpectJournal({"A.OnReconnectFail(1, 36)", "A.OnReconnectFail(1, 35)"});
    check.ExpectEqual("(absent)", Property(*stage.session, CONNECT_PROPERTY_CONFLICT_DEVICE_ID), "property 2");
}

CONTRACT_CHECK(Reconnection, AFailureChangesNeitherTheStateNorTheKnownUsers,
               "The state and the known users are unchanged.")
{
    ReconnectingStage stage(check);
    stage.Connection().ReconnectFail(9, "text");
    check.ExpectEqual(true, stage.session->Relogin(false), "still logged in");
    check.Expect(stage.Knows7(), "the users are still known");
    stage.ExpectJournal({"A.OnReconnectFail(1, 9)"});
}

CONTRACT_CHECK(Reconnection, EventsReachAllListenersInOrderAndNotARemovedOne,
               "Reconnections are reported to the session's listeners.")
{
    ReconnectingStage stage(check);
    SessionNotify second(stage.journal, "B");
    SessionNotify third(stage.journal, "C");
    stage.session->AddNotify(&second);
    stage.session->AddNotify(&third);
    stage.session->RemoveNotify(&second);
    stage.Connection().ReconnectStart();
    stage.ExpectJournal({
        kStart,
        "A.OnReadyReconnect(1)",
        "C.OnReadyReconnect(1)",
        kNoStrategy,
        "A.OnReconnectFail(1, 50010)",
        "C.OnReconnectFail(1, 50010)",
    });
    stage.session->RemoveAllNotify();
    stage.Connection().ReconnectFail(9, nullptr);
    stage.ExpectJournal({});
}

CONTRACT_CHECK(Reconnection, AListenerNeedNotOverrideReconnections,
               "Every operation for reconnections has an empty body.")
{
    class Silent final : public onlinemanager::IPaasOnlineNotify
    {
        void OnLoginSuccess() override {}
        void OnOffline(onlinemanager::ErrCode) override {}
    };
    ReconnectingStage stage(check);
    Silent silent;
    stage.session->RemoveAllNotify();
    stage.session->AddNotify(&silent);
    stage.session->AddNotify(&stage.listener);
    stage.session->SetReconnectionStrategy(&stage.strategy);
    stage.Connection().ReconnectStart();
    stage.Connection().ReconnectFail(9, nullptr);
    stage.Connection().ReconnectSucess();
    check.ExpectEqual(4U, stage.journal.Count("A.On"), "what the next listener heard");
}

CONTRACT_CHECK(Reconnection, TriggerNotifyWhileLoggedOutSends30ToEveryListenerOnAnotherThread,
               "30 is the platform's code for \"not logged in\".")
{
    Stage stage(check);
    onlinemanager::IPaasOnline* const session = stage.Session();
    SessionNotify first(stage.journal, "A");
    SessionNotify second(stage.journal, "B");
    session->AddNotify(&first);
    session->AddNotify(&second);
    check.ExpectEqual(true, session->TriggerNotify(), "TriggerNotify");
    check.Expect(stage.journal.Await("B.OnOffline(30)"), "the last listener is called");
    stage.ExpectJournal({"[module] A.OnOffline(30)", "[module] B.OnOffline(30)"});
    stage.AwaitModuleThreads();
}

CONTRACT_CHECK(Reconnection, TriggerNotifyWhileLoggedInSendsTheLoginAgain, "OnLoginSuccess comes on another thread.")
{
    ReconnectingStage stage(check);
    check.ExpectEqual(true, stage.session->TriggerNotify(), "TriggerNotify");
    check.Expect(stage.journal.Await("A.OnLoginSuccess()"), "the listener is called");
    stage.ExpectJournal({"[module] A.OnLoginSuccess()"});
    stage.AwaitModuleThreads();
}

CONTRACT_CHECK(Reconnection, TriggerNotifyWhileReconnectingSends30, "Reconnecting does not count as logged in.")
{
    ReconnectingStage stage(check);
    stage.session->SetReconnectionStrategy(&stage.strategy);
    stage.Connection().ReconnectStart();
    stage.journal.Clear();
    stage.session->TriggerNotify();
    check.Expect(stage.journal.Await("A.OnOffline(30)"), "the listener is called");
    stage.AwaitModuleThreads();
}

CONTRACT_CHECK(Reconnection, EveryTriggerNotifyHasItsOwnThread,
               "A listener that does not return does not delay another notification.")
{
    Stage stage(check);
    onlinemanager::IPaasOnline* const session = stage.Session();
    SessionNotify listener(stage.journal, "A");
    std::atomic<int> inside{0};
    std::atomic<bool> together{false};
    listener.hook = [&](const std::string&)
    {
        // The first notification waits for the second, which can come only on another thread.
        if (++inside == 1)
        {
            together = stage.journal.Await("A.OnOffline(30)", 2);
        }
    };
    session->AddNotify(&listener);
    session->TriggerNotify();
    session->TriggerNotify();
    stage.AwaitModuleThreads();
    check.Expect(together, "the second notification came while the first was under way");
    session->RemoveAllNotify();
}

} // namespace checks
