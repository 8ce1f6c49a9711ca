#include "checks/Meetings.h"
#include "checks/Presence.h"
#include "checks/Stage.h"

#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <future>
#include <thread>

/// Questions of developers of hosts and platforms that the headers answer.

namespace checks
{

namespace
{

using onlinemanager::TUNNEL_TYPE_GW;
using onlinemanager::TUNNEL_TYPE_PAAS;

constexpr unsigned kSelf = 52011; // the user who is logged in

std::string Offline(unsigned user)
{
    return std::to_string(user) + ": status=0";
}

/// A stage whose module logs nothing, with a listener everywhere: S, U, P (the session's tunnel), G (the gateway's).
struct QuietStage : Stage
{
    explicit QuietStage(CheckContext& context, Scene scene = Scene::LoggedIn) : Stage(context, scene)
    {
        session = Session();
        users = Users();
        tunnel = Tunnel(TUNNEL_TYPE_PAAS);
        gateway = Tunnel(TUNNEL_TYPE_GW);
        session->AddNotify(&sessionNotify);
        users->AddNotify(&userNotify);
        tunnel->AddNotify(&tunnelNotify);
        gateway->AddNotify(&gatewayNotify);
        factory.center.manager.level = Quenda::LOG_LEVEL_WARNING;
        journal.Clear();
    }

    ~QuietStage()
    {
        if (manager != nullptr)
        {
            manager->Destroy(); // the listeners end before the base class does
        }
    }

    onlinemanager::IPaasOnline* session = nullptr;
    onlinemanager::IUserOnline* users = nullptr;
    onlinemanager::IMeetingTunnel* tunnel = nullptr;
    onlinemanager::IMeetingTunnel* gateway = nullptr;
    SessionNotify sessionNotify{journal, "S"};
    UserNotify userNotify{journal, "U"};
    TunnelNotify tunnelNotify{journal, "P"};
    TunnelNotify gatewayNotify{journal, "G"};
};

onlinemanager::LoginParam ParamOf(unsigned user)
{
    onlinemanager::LoginParam param = Stage::Param();
    param.userid = user;
    param.server = "https://online.example";
    return param;
}

std::string LoginLine(unsigned user)
{
    return "connection1.Login(\"https://online.example\", http, appid=\"app-1\", token=\"token-1\", "
           "deviceid=\"device-1\", companyid=\"1001\", userid=\"" +
           std::to_string(user) + "\", mutex=\"pc\", ext=\"{\"tt\":3}\", force=0, registeruser=1)";
}

/// An HTTP object whose behaviour the check sets.
class OddHttp final : public RecordingUnknown<IHttpClient>
{
public:
    using Answer = std::function<uint32_t(IHttpResponseNotify& notify)>;

    OddHttp(Journal& journal, Answer answer) : RecordingUnknown(journal, "odd"), m_answer(std::move(answer)) {}

    void Reserved3() override {}
    void Reserved4() override {}
    void Reserved5() override {}
    void Reserved6() override {}
    void Reserved7() override {}
    void Reserved8() override {}

    uint32_t Request(const HttpRequest* /*request*/, IHttpResponseNotify* notify,
                     WBASELIB::TStringBase<char>* /*text*/) override
    {
        return m_answer(*notify);
    }

private:
    const Answer m_answer;
};

/// The transport that the platform gets from a component with that HTTP object.
avcore::IZolHttp* TransportOver(Stage& stage, OddHttp& http)
{
    stage.check.Require(stage.manager->Initialize(&http) == S_OK, "the component is initialised");
    stage.check.Require(stage.Session()->Login(ParamOf(kSelf), false), "the login is accepted");
    avcore::IZolHttp* const transport = stage.Connection().http;
    stage.check.Require(transport != nullptr, "the platform gets the HTTP helper");
    return transport;
}

/// Exits with 0 when an answer from inside `Request` is lost, else with 1. For a child process: a lock of the module is
/// unusable afterwards, and a call inside the module never returns.
[[noreturn]] void AnswerFromInside(const std::string& modulePath)
{
    CheckContext check(modulePath);
    Stage stage(check, Scene::Created);
    char body[] = "address";
    OddHttp http(stage.journal,
                 [&body](IHttpResponseNotify& notify)
                 {
                     notify.OnCompleteRespond(7, 200, body, sizeof(body) - 1);
                     return 7U;
                 });
    avcore::IZolHttp* const transport = TransportOver(stage, http);
    auto* const answer = new std::future<std::string>(
        std::async(std::launch::async, [transport] { return transport->HttpGet("https://online.example"); }));
    const bool isTaken =
        stage.journal.Await("OnCompleteRespond(), id=7, code=200") && stage.journal.Await("request sent, id=7");
    const bool isLost = isTaken && answer->wait_for(std::chrono::seconds(1)) == std::future_status::timeout;
    _exit(isLost ? 0 : 1); // without destructors, because the stage's destructor would wait for the call
}

} // namespace

CONTRACT_CHECK(HostQuestions, AfterAGivenUpReconnectionNoOfflineFollowsAndALogoutIsSilent,
               "50010 is the last notification; Logout returns true, calls no operation of the platform and causes no "
               "notification.")
{
    QuietStage stage(check);
    stage.Connection().ReconnectStart();
    stage.ExpectJournal({"S.OnReadyReconnect(1)", "S.OnReconnectFail(1, 50010)"});
    check.ExpectEqual(true, stage.session->Logout(), "Logout");
    stage.ExpectJournal({});
}

CONTRACT_CHECK(HostQuestions, AfterAFailedReconnectionNoOfflineFollowsUntilTheHostLogsOut,
               "The session still counts as logging in: Relogin is false, and Logout asks the platform.")
{
    QuietStage stage(check);
    RecordingStrategy strategy(stage.journal);
    stage.session->SetReconnectionStrategy(&strategy);
    stage.Connection().ReconnectStart();
    stage.Connection().ReconnectFail(33, nullptr);
    stage.ExpectJournal({
        "S.OnReadyReconnect(1)",
        "strategy.CheckReconnect() -> 1",
        "S.OnReconnectStart(1)",
        "S.OnReconnectFail(1, 33)",
    });
    check.ExpectEqual(false, stage.session->Relogin(false), "Relogin");
    check.ExpectEqual(true, stage.session->Logout(), "Logout");
    stage.Connection().Logouted(0);
    stage.ExpectJournal({"connection1.Logout()", "S.OnOffline(0)"});
    stage.session->SetReconnectionStrategy(nullptr);
}

CONTRACT_CHECK(HostQuestions, ALoginRefusedAtOnceIsFollowedByNothingAndCountsAsLoggingIn,
               "No OnOffline; Relogin is false, and a new Login is possible.")
{
    QuietStage stage(check, Scene::Initialized);
    stage.Connection().SetResult("Login", E_FAIL);
    check.ExpectEqual(false, stage.session->Login(ParamOf(kSelf), false), "Login");
    check.ExpectEqual(false, stage.session->Relogin(false), "Relogin");
    stage.ExpectJournal({LoginLine(kSelf)});
    stage.Connection().SetResult("Login", S_OK);
    check.ExpectEqual(true, stage.session->Login(ParamOf(kSelf), false), "Login again");
    stage.ExpectJournal({LoginLine(kSelf)});
}

CONTRACT_CHECK(HostQuestions, TheLogoutThatDestroyMakesIsNotFollowedByOnOffline,
               "The listeners are removed from the platform before.")
{
    QuietStage stage(check);
    stage.Connection().SetHook("Logout", [&] { stage.Connection().Logouted(0); });
    check.ExpectEqual(0, stage.manager->Destroy(), "Destroy");
    check.ExpectEqual(1U, stage.journal.Count("connection1.Logout()"), "logouts");
    check.ExpectEqual(0U, stage.journal.Count("S."), "notifications of the session");
}

CONTRACT_CHECK(HostQuestions, DestroyWaitsForANotificationThatRunsOnAThreadOfThePlatform,
               "The platform lets a listener go only when no event of it is running.")
{
    QuietStage stage(check);
    std::atomic<bool> hasEnded{false};
    stage.sessionNotify.hook = [&](const std::string&)
    {
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
        hasEnded = true;
    };
    stage.platform.thread.Post([&] { stage.Connection().Logouted(0); });
    check.Expect(stage.journal.Await("S.OnOffline(0)"), "the notification begins");
    stage.manager->Destroy();
    check.ExpectEqual(true, hasEnded.load(), "the notification has ended when Destroy returns");
    stage.platform.thread.Run([] {});
    stage.sessionNotify.hook = nullptr;
}

CONTRACT_CHECK(HostQuestions, DestroyDoesNotWaitForANotificationOfTheMonitoringService,
               "The module never removes that listener from the platform.")
{
    QuietStage stage(check);
    MdsNotify listener(stage.journal, "M");
    onlinemanager::IPaasMdsClient* const client = stage.Mds();
    client->AddNotify(&listener);
    client->InitMdsClient();
    std::promise<void> go;
    std::atomic<bool> hasEnded{false};
    listener.hook = [&](const std::string&)
    {
        go.get_future().wait_for(std::chrono::seconds(10)); // a Destroy that waits must fail and must not hang
        hasEnded = true;
    };
    constexpr const char* kSubscribeAll = R"({"message":{"command":"subscribe_av_quality","data":{"subType":"all"}}})";
    stage.platform.thread.Post([&] { stage.Connection().mds.MsgData(kSubscribeAll); });
    check.Expect(stage.journal.Await("M.OnSubscribeAVQualityInfo()"), "the notification begins");
    stage.manager->Destroy();
    check.ExpectEqual(false, hasEnded.load(), "the notification has ended when Destroy returns");
    go.set_value();
    stage.platform.thread.Run([] {});
}

CONTRACT_CHECK(HostQuestions, ReloginAfterARefusedLoginSendsTheRefusedParametersAgain,
               "The session keeps refused parameters, but not those that it did not send to the platform.")
{
    QuietStage stage(check, Scene::Initialized);
    stage.session->Login(ParamOf(7), false);
    stage.Connection().LoginResult(32);
    stage.ExpectJournal({LoginLine(7), "S.OnOffline(32)"});
    onlinemanager::LoginParam withoutServer = ParamOf(8);
    withoutServer.server.clear();
    check.ExpectEqual(false, stage.session->Login(withoutServer, false), "Login without a server");
    check.ExpectEqual(true, stage.session->Relogin(false), "Relogin");
    stage.ExpectJournal({LoginLine(7)});
}

CONTRACT_CHECK(HostQuestions, TriggerNotifyWhileLoggingInSends30,
               "OnOffline(30) does not tell that a login is under way.")
{
    QuietStage stage(check, Scene::Initialized);
    stage.session->Login(Stage::Param(), false);
    stage.journal.Clear();
    check.ExpectEqual(true, stage.session->TriggerNotify(), "TriggerNotify");
    check.Expect(stage.journal.Await("S.On"), "a notification comes");
    stage.ExpectJournal({"S.OnOffline(30)"});
}

CONTRACT_CHECK(HostQuestions, InsideOnLoginSuccessPresenceStillHasThePreviousUser,
               "After 50010 another user logs in: until the notification returns, presence works for the first one.")
{
    QuietStage stage(check);
    Refresh(stage.Connection(), {UserOnPc("7", 1)});
    stage.Connection().ReconnectStart();
    stage.session->Login(ParamOf(8), false);
    unsigned inside = 0;
    stage.sessionNotify.hook = [&](const std::string&)
    {
        unsigned inviteId = 77;
        check.ExpectEqual(true, stage.users->InviteUsers({kSelf}, {}, &inviteId), "inviting the previous user");
        check.ExpectEqual(std::vector{Offline(7)}, Known(*stage.users, {7}), "known users");
        ++inside;
    };
    stage.journal.Clear();
    stage.Connection().LoginResult(0);
    stage.sessionNotify.hook = nullptr;
    check.ExpectEqual(1U, inside, "notifications");
    const std::string nothing =
        "{code=0 time=0 company=0 force=0 proxy=0 callout=0 meeting=0 user=0 name=\"\" terminal=\"\"}";
    stage.ExpectJournal({
        "S.OnLoginSuccess()",
        "U.OnInviteIncome(52011, 77, " + nothing + ")",
        "online1.RefreshAllUsersStatus() -> 102",
    });
    unsigned inviteId = 77;
    stage.users->InviteUsers({8}, {}, &inviteId);
    stage.ExpectJournal({"U.OnInviteIncome(8, 77, " + nothing + ")"});
}

CONTRACT_CHECK(HostQuestions, InsideOnLoginSuccessOfALoginOnTopOfALoginPresenceStillKnowsTheUsers,
               "The known users are forgotten at a logout only, and none came between.")
{
    QuietStage stage(check);
    Refresh(stage.Connection(), {UserOnPc("7", 1)});
    stage.session->Login(ParamOf(8), false);
    stage.sessionNotify.hook = [&](const std::string&)
    {
        unsigned request = 0;
        check.ExpectEqual(true, stage.users->RefreshCompanyUserStatus(&request), "refresh inside");
        check.Expect(Known(*stage.users, {7}).at(0) != Offline(7), "user 7 is still known");
    };
    stage.Connection().LoginResult(0);
    stage.sessionNotify.hook = nullptr;
    check.ExpectEqual(1U, stage.journal.Count("S.OnLoginSuccess()"), "notifications");
}

CONTRACT_CHECK(HostQuestions, AnInvitationCarriesTheMeetingIdThatTheHostWroteWhateverMeetingItIsIn,
               "The component derives neither the meeting's number from its GUID nor the GUID from the number.")
{
    QuietStage stage(check);
    stage.tunnel->JoinMeeting(SomeMeeting());
    stage.Connection().JoinGroupResult(0);
    stage.journal.Clear();
    unsigned inviteId = 0;
    stage.users->InviteUsers({5}, {}, &inviteId);
    check.ExpectEqual(1U, stage.journal.Count("\"meetingId\":0,"), "invitations with meeting 0");
    onlinemanager::InviteData data;
    data.meetingId = 880012;
    stage.users->InviteUsers({5}, data, &inviteId);
    check.ExpectEqual(1U, stage.journal.Count("\"meetingId\":880012,"), "invitations with the host's number");
}

CONTRACT_CHECK(HostQuestions, AnHttpObjectThatCannotStartARequestEndsItWithoutABody,
               "Any id will do, 0 as well; the caller gets an empty answer.")
{
    Stage stage(check, Scene::Created);
    Worker thread("http");
    OddHttp http(stage.journal,
                 [&thread](IHttpResponseNotify& notify)
                 {
                     thread.Post([&notify] { notify.OnCompleteRespond(0, 0, nullptr, 0); });
                     return 0U;
                 });
    avcore::IZolHttp* const transport = TransportOver(stage, http);
    check.ExpectEqual("", transport->HttpGet("https://online.example"), "HttpGet");
}

CONTRACT_CHECK(HostQuestions, AnAnswerFromAnotherThreadMayComeBeforeRequestHasReturned,
               "The answer waits until the request is in the list.")
{
    Stage stage(check, Scene::Created);
    Worker thread("http");
    char body[] = "address";
    OddHttp http(stage.journal,
                 [&](IHttpResponseNotify& notify)
                 {
                     thread.Post([&] { notify.OnCompleteRespond(7, 200, body, sizeof(body) - 1); });
                     stage.journal.Await("OnCompleteRespond(), id=7");
                     return 7U;
                 });
    avcore::IZolHttp* const transport = TransportOver(stage, http);
    check.ExpectEqual("address", transport->HttpGet("https://online.example"), "HttpGet");
}

CONTRACT_CHECK(HostQuestions, AnAnswerFromInsideRequestIsLost,
               "The request is not in the list yet, so the caller goes on waiting.")
{
#ifdef __SANITIZE_THREAD__
    throw CheckLeftOut("the call releases a lock twice, which the sanitizer reports");
#endif
    const pid_t child = fork();
    check.Require(child >= 0, "a child process starts");
    if (child == 0)
    {
        alarm(60);
        try
        {
            AnswerFromInside(check.ModulePath());
        }
        catch (...)
        {
            _exit(2); // the child must not go on to the next check
        }
    }
    int status = 0;
    check.ExpectEqual(child, waitpid(child, &status, 0), "the child ends");
    check.ExpectEqual(0, status, "end of the child; 0 = the answer was lost");
}

CONTRACT_CHECK(HostQuestions, AFailedCreationTakesTheFactorysReferenceOnlyWhenAComponentWasMade,
               "Not for a null output or an unknown class; for an unsupported interface it is taken and given back.")
{
    Stage stage(check, Scene::Loaded);
    const auto create = stage.module.Functions().m_lpfnCreateComponent;
    void* out = nullptr;
    const int32_t before = stage.factory.References();
    check.ExpectEqual(E_POINTER,
                      create(onlinemanager::CLSID_OnlineManager, IID_IUnknown, nullptr, &stage.factory, nullptr),
                      "a null output");
    check.ExpectEqual(before, stage.factory.References(), "references after a null output");
    check.ExpectEqual(E_FAIL, create(avcore::CLSID_ZolConnection, IID_IUnknown, nullptr, &stage.factory, &out),
                      "an unknown class");
    check.ExpectEqual(before, stage.factory.References(), "references after an unknown class");
    stage.factory.Hold();
    check.ExpectEqual(
        E_NOINTERFACE,
        create(onlinemanager::CLSID_OnlineManager, avcore::IID_IZolConnection, nullptr, &stage.factory, &out),
        "an unsupported interface");
    check.ExpectEqual(before, stage.factory.References(), "references after an unsupported interface");
}

CONTRACT_CHECK(HostQuestions, AJoinResultThatOvertakesJoinGroupLeavesTheJoinPending,
               "The next lost connection reports the join again, as failed. Platforms must not send it so early.")
{
    QuietStage stage(check);
    stage.Connection().SetHook("JoinGroup", [&] { stage.Connection().JoinGroupResult(0); });
    stage.tunnel->JoinMeeting(SomeMeeting());
    stage.journal.Clear();
    stage.Connection().ReconnectStart();
    check.ExpectEqual(1U, stage.journal.Count("P.OnJoinMeetingResult(50001)"), "join results");
}

CONTRACT_CHECK(HostQuestions, ALoginResultThatOvertakesLoginOldGwLeavesTheGatewayTunnelJoining,
               "A lost connection then reports the join as failed and no readiness.")
{
    QuietStage stage(check);
    stage.Gateway().SetHook("LoginOldGw", [&] { stage.Gateway().LoginResult(0); });
    stage.gateway->JoinMeeting(SomeMeeting());
    stage.journal.Clear();
    stage.Gateway().ReconnectStart();
    stage.ExpectJournal({"G.OnJoinMeetingResult(50001)", "S.OnReconnectStart(2)"});
}

CONTRACT_CHECK(HostQuestions, APageThatOvertakesItsRefreshIsNotReportedAsItsEnd,
               "The component notes the request when the operation has returned.")
{
    QuietStage stage(check);
    stage.Connection().online.SetHook("RefreshAllUsersStatus", [&] { Refresh(stage.Connection(), {}, 102); });
    unsigned request = 0;
    check.ExpectEqual(true, stage.users->RefreshCompanyUserStatus(&request), "RefreshCompanyUserStatus");
    check.ExpectEqual(102U, request, "the request");
    stage.ExpectJournal({"online1.RefreshAllUsersStatus() -> 102", "U.OnUserStatusChanged([])"});
}

CONTRACT_CHECK(HostQuestions, AnAnswerThatOvertakesItsInvitationIsReportedWithId0ForEver,
               "So are all later answers to that invitation.")
{
    QuietStage stage(check);
    stage.Connection().online.SetHook("InviteUsers", [&] { stage.Connection().online.InviteAccepted("5", 501, "{}"); });
    unsigned inviteId = 0;
    stage.users->InviteUsers({5, 6}, {}, &inviteId);
    check.ExpectEqual(501U, inviteId, "the invitation");
    stage.Connection().online.InviteAccepted("6", 501, "{}");
    check.ExpectEqual(1U, stage.journal.Count("U.OnInviteAccepted(5, 0)"), "the early answer");
    check.ExpectEqual(1U, stage.journal.Count("U.OnInviteAccepted(6, 0)"), "the later answer");
}

CONTRACT_CHECK(HostQuestions, AUserIdAbove2147483647IsSentButCannotBeReadBack,
               "Logins and invitations carry it; events of that user are ignored, or are user 0's.")
{
    QuietStage stage(check, Scene::Initialized);
    stage.session->Login(ParamOf(3000000000), false);
    stage.Connection().LoginResult(0);
    unsigned inviteId = 0;
    stage.users->InviteUsers({3000000001}, {}, &inviteId);
    check.ExpectEqual(1U, stage.journal.Count("userid=\"3000000000\""), "logins");
    check.ExpectEqual(1U, stage.journal.Count("InviteUsers([3000000001]"), "invitations");
    stage.journal.Clear();
    stage.Connection().online.InviteAccepted("3000000001", 501, "{}");
    stage.Connection().online.UserTerminalStateChanged("3000000001", {"pc", 1, "", "{}"});
    Refresh(stage.Connection(), {UserOnPc("3000000001", 1)});
    stage.Connection().GroupUserJoined("3000000001");
    stage.Gateway().GroupUserJoined("3000000001");
    stage.ExpectJournal({"U.OnInviteAccepted(0, 501)", "U.OnUserStatusChanged([0])", "P.OnUserJoined(0)"});
}

CONTRACT_CHECK(HostQuestions, ARefreshReportsUser0OnceForEveryIdThatIsNoNumber, "All of them are read as user 0.")
{
    QuietStage stage(check);
    Refresh(stage.Connection(), {UserOnPc("x", 1), UserOnPc("y", 1), UserOnPc("3000000000", 1), UserOnPc("7", 1)});
    stage.ExpectJournal({"U.OnUserStatusChanged([0,0,0,7])"});
}

CONTRACT_CHECK(HostQuestions, UsersOfTwoRefreshesUnderWayAreReportedTogether,
               "Their pages are merged: a user on a page of both is reported twice.")
{
    QuietStage stage(check);
    RecordingOnline& online = stage.Connection().online;
    online.RefreshUserStatusFinished(avcore::ZOL_PORT_SUCCESS, 101, {UserOnPc("7", 1)}, 2, 0);
    online.RefreshUserStatusFinished(avcore::ZOL_PORT_SUCCESS, 102, {UserOnPc("7", 1), UserOnPc("8", 1)}, 1, 0);
    stage.ExpectJournal({"U.OnUserStatusChanged([7,7,8])"});
}

} // namespace checks
