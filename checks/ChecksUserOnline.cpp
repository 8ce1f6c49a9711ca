#include "checks/Presence.h"
#include "checks/Stage.h"

#include <cstring>

namespace checks
{

namespace
{

using avcore::ZOL_PORT_SUCCESS;

std::string Log(std::string_view text)
{
    return LogLine("UserOnlineImp", text);
}

std::string NotLoggedIn(const std::string& operation)
{
    return Log(operation + " call failed, current not logged in.");
}

const auto kFailure = static_cast<avcore::ZolPortErrCode>(7);

/// A stage with the user service and its listener U.
struct PresenceStage : Stage
{
    explicit PresenceStage(CheckContext& context, Scene scene = Scene::LoggedIn)
        : Stage(context, scene),
          listener(journal, "U")
    {
        users = Users();
        users->AddNotify(&listener);
    }

    RecordingOnline& Online()
    {
        return Connection().online;
    }

    UserNotify listener;
    onlinemanager::IUserOnline* users = nullptr;
};

} // namespace

CONTRACT_CHECK(UserOnline, EveryOperationBeforeLoginSaysSoWithItsNameAndIsRefused,
               "The platform is not called; GetSelfCustomInfo and QueryUserStatus still work.")
{
    PresenceStage stage(check, Scene::Initialized);
    unsigned id = 77;
    check.ExpectEqual(false, stage.users->RefreshCompanyUserStatus(&id), "RefreshCompanyUserStatus");
    check.ExpectEqual(false, stage.users->RefreshUserStatus({1}, &id), "RefreshUserStatus");
    check.ExpectEqual(false, stage.users->RefreshUserStatus({}, &id), "RefreshUserStatus with an empty list");
    check.ExpectEqual(false, stage.users->SetSelfCustomInfo("x"), "SetSelfCustomInfo");
    check.ExpectEqual(false, stage.users->InviteUsers({1}, {}, &id), "InviteUsers");
    check.ExpectEqual(false, stage.users->InviteUsers({}, {}, &id), "InviteUsers with an empty list");
    check.ExpectEqual(false, stage.users->AcceptInvite(1, 2, true), "AcceptInvite");
    check.ExpectEqual(false, stage.users->AcceptInvite(1, 2, false), "AcceptInvite, declining");
    check.ExpectEqual(false, stage.users->RejectAllInvite(onlinemanager::REJECT_INVITATION_DECLINED, {1, 2}),
                      "RejectAllInvite");
    check.ExpectEqual(false, stage.users->AbandonInvite(2, {1}), "AbandonInvite");
    stage.ExpectJournal({
        NotLoggedIn("RefreshCompanyUserStatus"),
        NotLoggedIn("RefreshUserStatus"),
        NotLoggedIn("RefreshUserStatus"),
        Log("SetSelfCustomInfo, info=x."),
        NotLoggedIn("SetSelfCustomInfo"),
        NotLoggedIn("InviteUsers"),
        NotLoggedIn("InviteUsers"),
        NotLoggedIn("AcceptInvite"),
        NotLoggedIn("AcceptInvite"),
        Log("RejectAllInvite, reason=0x11, exclude_size=2."),
        NotLoggedIn("RejectAllInvite"),
        NotLoggedIn("AbandonInvite"),
    });
    check.ExpectEqual(77U, id, "the output");
    char text[4] = {'?', '?', '?', '?'};
    check.ExpectEqual(true, stage.users->GetSelfCustomInfo(text, sizeof(text)), "GetSelfCustomInfo");
    check.ExpectEqual(std::string(4, '\0'), std::string(text, 4), "the text: nothing was stored");
    check.ExpectEqual(std::vector<std::string>{"5: status=0"}, Known(*stage.users, {5}), "QueryUserStatus");
}

CONTRACT_CHECK(UserOnline, LoginLogoutAndAFailedLoginDecideWhoIsLoggedIn,
               "Operations work from a successful result on, until a logout or a failed login.")
{
    PresenceStage stage(check, Scene::Initialized);
    const auto accepted = [&stage]
    {
        unsigned id = 0;
        return stage.users->RefreshCompanyUserStatus(&id);
    };
    stage.LogIn();
    check.ExpectEqual(true, accepted(), "after a login");
    stage.Connection().Logouted(0);
    check.ExpectEqual(false, accepted(), "after a logout");
    stage.LogIn();
    stage.Connection().LoginResult(36);
    check.ExpectEqual(false, accepted(), "after a failed login");
    stage.Session()->Login(Stage::Param(), true);
    check.ExpectEqual(false, accepted(), "while logging in");
    stage.Connection().LoginResult(0);
    check.ExpectEqual(true, accepted(), "after the next login");
}

CONTRACT_CHECK(UserOnline, ALoginStartsTheFirstRefreshAfterTheListenersWereTold,
               "The successful login starts it, before any operation of the host.")
{
    Stage stage(check);
    onlinemanager::IPaasOnline* const session = stage.Session();
    SessionNotify listener(stage.journal, "A");
    session->AddNotify(&listener);
    session->Login(Stage::Param(), false);
    stage.journal.Clear();
    stage.Connection().LoginResult(0);
    stage.ExpectJournal({
        LogLine("PaasOnlineImp", "OnLoginResult(), errCode=0."),
        "A.OnLoginSuccess()",
        "[platform] online1.RefreshAllUsersStatus() -> 101",
    });
    session->RemoveAllNotify();
}

CONTRACT_CHECK(UserOnline, AFailedFirstRefreshIsOnlyLogged, "The user stays logged in.")
{
    PresenceStage stage(check, Scene::Initialized);
    stage.Online().SetResult("RefreshAllUsersStatus", E_FAIL);
    stage.Session()->Login(Stage::Param(), false);
    stage.journal.Clear();
    stage.Connection().LoginResult(0);
    stage.ExpectJournal({
        LogLine("PaasOnlineImp", "OnLoginResult(), errCode=0."),
        "online1.RefreshAllUsersStatus() -> 101",
        Log("First refresh company user status failed."),
    });
    check.ExpectEqual(true, stage.users->SetSelfCustomInfo("x"), "the user service is logged in");
}

CONTRACT_CHECK(UserOnline, AFailedLoginStartsNoRefresh, "A logout starts none either.")
{
    PresenceStage stage(check, Scene::Initialized);
    stage.Connection().LoginResult(4);
    stage.Connection().Logouted(0);
    check.ExpectEqual(0U, stage.journal.Count("online1."), "calls of the platform");
}

CONTRACT_CHECK(UserOnline, TheFirstRefreshIsNotReportedAsFinished,
               "Its changes are reported; the host has not started it.")
{
    PresenceStage stage(check);
    Refresh(stage.Connection(), {UserOnPc("7", 1)}, 101);
    stage.ExpectJournal({"[platform] U.OnUserStatusChanged([7])"});
}

CONTRACT_CHECK(UserOnline, ACompanyRefreshInThreePagesChangesOnceAfterTheThirdThenIsReportedFinished,
               "OnUserStatusChanged has the users of all pages; then comes OnUserStatusRefreshed(requestId, 0).")
{
    PresenceStage stage(check);
    unsigned id = 0;
    check.ExpectEqual(true, stage.users->RefreshCompanyUserStatus(&id), "RefreshCompanyUserStatus");
    check.ExpectEqual(102U, id, "request id");
    stage.ExpectJournal({"[host] online1.RefreshAllUsersStatus() -> 102"});
    stage.Online().RefreshUserStatusFinished(ZOL_PORT_SUCCESS, id, {UserOnPc("1", 1)}, 3, 0);
    stage.Online().RefreshUserStatusFinished(ZOL_PORT_SUCCESS, id, {UserOnPc("2", 1)}, 3, 1);
    stage.ExpectJournal({});
    check.ExpectEqual(std::vector<std::string>{"1: status=0"}, Known(*stage.users, {1}), "before the last page");
    stage.Online().RefreshUserStatusFinished(ZOL_PORT_SUCCESS, id, {UserOnPc("3", 1)}, 3, 2);
    stage.ExpectJournal({
        "[platform] U.OnUserStatusChanged([1,2,3])",
        "[platform] U.OnUserStatusRefreshed(102, 0)",
    });
    stage.Online().RefreshUserStatusFinished(ZOL_PORT_SUCCESS, id, {}, 1, 0);
    stage.ExpectJournal({"U.OnUserStatusChanged([1,2,3])"});
}

CONTRACT_CHECK(UserOnline, ARefreshWithoutAnyChangeDeliversAnEmptyList, "So the host sees that the refresh has ended.")
{
    PresenceStage stage(check);
    Refresh(stage.Connection(), {});
    stage.ExpectJournal({"U.OnUserStatusChanged([])"});
}

CONTRACT_CHECK(UserOnline, ACompanyRefreshWhoseIdCameBack0IsNeverReportedAsFinished,
               "The output is not written; the operation succeeds.")
{
    PresenceStage stage(check);
    stage.Online().requestIds = {0};
    unsigned id = 77;
    check.ExpectEqual(true, stage.users->RefreshCompanyUserStatus(&id), "RefreshCompanyUserStatus");
    check.ExpectEqual(77U, id, "the output");
    stage.journal.Clear();
    Refresh(stage.Connection(), {}, 0);
    stage.ExpectJournal({"U.OnUserStatusChanged([])"});
}

CONTRACT_CHECK(UserOnline, AFailedCompanyRefreshKeepsAnIdThatThePlatformGave,
               "The id is written and remembered for any status, and the end is reported.")
{
    PresenceStage stage(check);
    stage.Online().SetResult("RefreshAllUsersStatus", E_FAIL);
    unsigned id = 0;
    check.ExpectEqual(false, stage.users->RefreshCompanyUserStatus(&id), "RefreshCompanyUserStatus");
    check.ExpectEqual(102U, id, "request id");
    stage.ExpectJournal({
        "online1.RefreshAllUsersStatus() -> 102",
        Log("RefreshCompanyUsrsStatus failed, ret(0x80004005)."),
    });
    stage.Online().RefreshUserStatusFinished(kFailure, 102, {}, 1, 0);
    stage.ExpectJournal({"U.OnUserStatusRefreshed(102, 7)"});
}

CONTRACT_CHECK(UserOnline, APositiveStatusOfThePlatformIsSuccess, "Only a negative status is a failure.")
{
    PresenceStage stage(check);
    for (const char* const operation : {"RefreshAllUsersStatus", "RefreshUsersStatus", "SetUserCustomInfo"})
    {
        stage.Online().SetResult(operation, 1);
    }
    unsigned id = 0;
    check.ExpectEqual(true, stage.users->RefreshCompanyUserStatus(&id), "RefreshCompanyUserStatus");
    check.ExpectEqual(true, stage.users->RefreshUserStatus({1}, &id), "RefreshUserStatus");
    check.ExpectEqual(true, stage.users->SetSelfCustomInfo("x"), "SetSelfCustomInfo");
}

CONTRACT_CHECK(UserOnline, AnErrorPageLeavesEarlierPagesInTheCacheForTheNextRefresh,
               "If it is the last page, it ends the request with the platform's code and without changes.")
{
    PresenceStage stage(check);
    unsigned id = 0;
    stage.users->RefreshCompanyUserStatus(&id);
    stage.journal.Clear();
    stage.Online().RefreshUserStatusFinished(ZOL_PORT_SUCCESS, id, {UserOnPc("1", 1)}, 2, 0);
    stage.Online().RefreshUserStatusFinished(kFailure, id, {UserOnPc("2", 1)}, 2, 1);
    stage.ExpectJournal({"U.OnUserStatusRefreshed(102, 7)"});
    Refresh(stage.Connection(), {UserOnPc("3", 1)}, 999);
    stage.ExpectJournal({"U.OnUserStatusChanged([1,3])"});
}

CONTRACT_CHECK(UserOnline, AnErrorPageThatIsNotTheLastEndsNothing, "The request continues until its last page.")
{
    PresenceStage stage(check);
    unsigned id = 0;
    stage.users->RefreshCompanyUserStatus(&id);
    stage.journal.Clear();
    stage.Online().RefreshUserStatusFinished(kFailure, id, {}, 2, 0);
    stage.ExpectJournal({});
    stage.Online().RefreshUserStatusFinished(ZOL_PORT_SUCCESS, id, {UserOnPc("2", 1)}, 2, 1);
    stage.ExpectJournal({"U.OnUserStatusChanged([2])", "U.OnUserStatusRefreshed(102, 0)"});
}

CONTRACT_CHECK(UserOnline, RefreshUserStatusWithAnEmptyListHasItsOwnMessageAfterTheLoginTest,
               "The result is false, and a line is logged.")
{
    PresenceStage stage(check);
    unsigned id = 77;
    check.ExpectEqual(false, stage.users->RefreshUserStatus({}, &id), "RefreshUserStatus");
    stage.ExpectJournal({Log("RefreshUserStatus failed, user list is empty.")});
    check.ExpectEqual(77U, id, "the output");
}

CONTRACT_CHECK(UserOnline, RefreshUserStatusSendsTheIdsAsTextsInOrderWithDuplicates,
               "The caller gets the platform's id, also if it is 0.")
{
    PresenceStage stage(check);
    unsigned id = 77;
    check.ExpectEqual(true, stage.users->RefreshUserStatus({9, 0, 4294967295, 9}, &id), "RefreshUserStatus");
    stage.ExpectJournal({"[host] online1.RefreshUsersStatus([9,0,4294967295,9]) -> 102"});
    check.ExpectEqual(102U, id, "request id");
    stage.Online().requestIds = {0};
    stage.users->RefreshUserStatus({9}, &id);
    check.ExpectEqual(0U, id, "request id of the platform that gives 0");
}

CONTRACT_CHECK(UserOnline, AFailedRefreshUserStatusIsLoggedWithItsCode, "The caller still gets the platform's id.")
{
    PresenceStage stage(check);
    stage.Online().SetResult("RefreshUsersStatus", E_INVALIDARG);
    unsigned id = 77;
    check.ExpectEqual(false, stage.users->RefreshUserStatus({9}, &id), "RefreshUserStatus");
    stage.ExpectJournal({"online1.RefreshUsersStatus([9]) -> 102", Log("RefreshUserStatus failed, ret(0x80070057).")});
    check.ExpectEqual(102U, id, "request id");
}

CONTRACT_CHECK(UserOnline, ARefreshOfListedUsersReplacesTheWholeTableAndIsNotReportedAsFinished,
               "Every other online user is reported as changed and forgotten, on purpose.")
{
    PresenceStage stage(check);
    Refresh(stage.Connection(), {UserOnPc("1", 1), UserOnPc("2", 1), UserOnPc("3", 0)});
    unsigned id = 0;
    stage.users->RefreshUserStatus({1}, &id);
    stage.journal.Clear();
    Refresh(stage.Connection(), {UserOnPc("1", 1)}, id);
    stage.ExpectJournal({"U.OnUserStatusChanged([2])"});
    check.ExpectEqual(std::vector<std::string>{"2: status=0", "3: status=0"}, Known(*stage.users, {2, 3}),
                      "the known records of the others");
}

CONTRACT_CHECK(UserOnline, ANullOutputIsRefusedWithoutALine, "Whether logged in or not.")
{
    for (const Scene scene : {Scene::Initialized, Scene::LoggedIn})
    {
        PresenceStage stage(check, scene);
        check.ExpectEqual(false, stage.users->RefreshCompanyUserStatus(nullptr), "RefreshCompanyUserStatus");
        check.ExpectEqual(false, stage.users->RefreshUserStatus({1}, nullptr), "RefreshUserStatus");
        check.ExpectEqual(false, stage.users->InviteUsers({1}, {}, nullptr), "InviteUsers");
        check.ExpectEqual(false, stage.users->QueryUserStatus({1}, nullptr), "QueryUserStatus");
        check.ExpectEqual(false, stage.users->GetSelfCustomInfo(nullptr, 4), "GetSelfCustomInfo");
        char text = '?';
        check.ExpectEqual(false, stage.users->GetSelfCustomInfo(&text, 0), "GetSelfCustomInfo without room");
        check.ExpectEqual('?', text, "the buffer");
        stage.ExpectJournal({});
    }
}

CONTRACT_CHECK(UserOnline, WithoutThePlatformsComponentEveryOperationIsRefusedWithoutALine,
               "Only SetSelfCustomInfo and RejectAllInvite log their entry line, because they log it before any test.")
{
    Stage stage(check, Scene::Created);
    stage.platform.onNewConnection = [](RecordingConnection& connection) { connection.handsOutNull = true; };
    check.Require(stage.manager->Initialize(nullptr) == S_OK, "the component is initialised");
    onlinemanager::IUserOnline* const users = stage.Users();
    stage.LogIn();
    unsigned id = 0;
    check.ExpectEqual(false, users->RefreshCompanyUserStatus(&id), "RefreshCompanyUserStatus");
    check.ExpectEqual(false, users->RefreshUserStatus({1}, &id), "RefreshUserStatus");
    check.ExpectEqual(false, users->InviteUsers({1}, {}, &id), "InviteUsers");
    check.ExpectEqual(false, users->InviteUsers({52011}, {}, &id), "InviteUsers with oneself");
    check.ExpectEqual(false, users->AcceptInvite(1, 2, true), "AcceptInvite");
    check.ExpectEqual(false, users->AbandonInvite(1, {2}), "AbandonInvite");
    stage.ExpectJournal({});
    check.ExpectEqual(false, users->SetSelfCustomInfo("x"), "SetSelfCustomInfo");
    check.ExpectEqual(false, users->RejectAllInvite(onlinemanager::REJECT_INVITATION_DECLINED, {}), "RejectAllInvite");
    stage.ExpectJournal({Log("SetSelfCustomInfo, info=x."), Log("RejectAllInvite, reason=0x11, exclude_size=0.")});
    stage.Connection().ReconnectSucess();
    check.ExpectEqual(0U, stage.journal.Count("failed"), "failures of the refresh after a reconnection");
    char text[2] = {'?', '?'};
    check.ExpectEqual(true, users->GetSelfCustomInfo(text, 2), "GetSelfCustomInfo");
    check.ExpectEqual('\0', text[0], "nothing was stored");
}

CONTRACT_CHECK(UserOnline, ATerminalEventIsLoggedWithItsFieldsAndReportsItsUserAlone,
               "The notification has one id, and comes only if the user changed.")
{
    PresenceStage stage(check);
    const std::string line = "OnUserTerminalStateChanged(), userid=7, status=-2, terminal=pc, custom=100%s.";
    stage.Online().UserTerminalStateChanged("7", {"pc", -2, "100%s", "{}"});
    stage.ExpectJournal({Log(line), "[platform] U.OnUserStatusChanged([7])"});
    stage.Online().UserTerminalStateChanged("7", {"pc", -2, "100%s", "{}"});
    stage.ExpectJournal({Log(line)});
}

CONTRACT_CHECK(UserOnline, ATerminalEventWhoseUserIdBeginsWithALetterOrIsNullIsIgnoredWithoutALine,
               "An id that begins with a digit is read up to the first letter.")
{
    PresenceStage stage(check);
    for (const char* const text : {static_cast<const char*>(nullptr), "", "u7", "-7", " 7", "99999999999999999999"})
    {
        stage.Online().UserTerminalStateChanged(text, {"pc", 1, "", "{}"});
        stage.ExpectJournal({});
    }
    stage.Online().UserTerminalStateChanged("8up", {"pc", 1, "", "{}"});
    stage.ExpectJournal({
        Log("OnUserTerminalStateChanged(), userid=8up, status=1, terminal=pc, custom=."),
        "U.OnUserStatusChanged([8])",
    });
}

CONTRACT_CHECK(UserOnline, AnEventAfterALogoutIsStillTaken,
               "The logout empties the table, and later events fill it again.")
{
    PresenceStage stage(check);
    Refresh(stage.Connection(), {UserOnPc("7", 1)});
    stage.Connection().Logouted(0);
    check.ExpectEqual(std::vector<std::string>{"7: status=0"}, Known(*stage.users, {7}), "after the logout");
    stage.journal.Clear();
    stage.Online().UserTerminalStateChanged("7", {"pc", 1, "", "{}"});
    check.ExpectEqual(1U, stage.journal.Count("U.OnUserStatusChanged([7])"), "reports");
}

CONTRACT_CHECK(UserOnline, ALogoutKeepsRefreshesUnderWayAndTheCustomText,
               "The end of a refresh is still reported, and the collected pages and the custom text are kept.")
{
    PresenceStage stage(check);
    unsigned id = 0;
    stage.users->RefreshCompanyUserStatus(&id);
    stage.users->SetSelfCustomInfo("mine");
    stage.Online().RefreshUserStatusFinished(ZOL_PORT_SUCCESS, id, {UserOnPc("1", 1)}, 2, 0);
    stage.Connection().Logouted(0);
    stage.journal.Clear();
    stage.Online().RefreshUserStatusFinished(ZOL_PORT_SUCCESS, id, {UserOnPc("2", 1)}, 2, 1);
    stage.ExpectJournal({"U.OnUserStatusChanged([1,2])", "U.OnUserStatusRefreshed(102, 0)"});
    char text[8];
    stage.users->GetSelfCustomInfo(text, sizeof(text));
    check.ExpectEqual("mine", std::string(text), "the custom text");
}

CONTRACT_CHECK(UserOnline, AFailedLoginKeepsTheTable, "Only a logout empties the table.")
{
    PresenceStage stage(check);
    Refresh(stage.Connection(), {UserOnPc("7", 1)});
    stage.Connection().LoginResult(4);
    check.ExpectEqual(std::vector<std::string>{"7: status=1 [pc type=3 status=1 custom=]"}, Known(*stage.users, {7}),
                      "after the failed login");
}

CONTRACT_CHECK(UserOnline, SetSelfCustomInfoLogsStoresAndPublishes,
               "In this order; the platform gets the text unchanged.")
{
    PresenceStage stage(check);
    check.ExpectEqual(true, stage.users->SetSelfCustomInfo("away %d"), "SetSelfCustomInfo");
    stage.ExpectJournal({Log("SetSelfCustomInfo, info=away %d."), "[host] online1.SetUserCustomInfo(\"away %d\")"});
    check.ExpectEqual(true, stage.users->SetSelfCustomInfo(""), "SetSelfCustomInfo with nothing");
    stage.ExpectJournal({Log("SetSelfCustomInfo, info=."), "online1.SetUserCustomInfo(\"\")"});
}

CONTRACT_CHECK(UserOnline, ACustomTextIsKeptWhenThePlatformRefusesItButNotWhileLoggedOut,
               "It is stored before the platform is called.")
{
    PresenceStage stage(check);
    stage.Online().SetResult("SetUserCustomInfo", E_FAIL);
    char seen[8] = {};
    stage.Online().SetHook("SetUserCustomInfo", [&] { stage.users->GetSelfCustomInfo(seen, sizeof(seen)); });
    check.ExpectEqual(false, stage.users->SetSelfCustomInfo("kept"), "SetSelfCustomInfo");
    check.ExpectEqual("kept", std::string(seen), "the text during the platform's call");
    stage.ExpectJournal({
        Log("SetSelfCustomInfo, info=kept."),
        "online1.SetUserCustomInfo(\"kept\")",
        Log("SetSelfCustomInfo failed, ret(0x80004005)."),
    });
    stage.Connection().Logouted(0);
    stage.users->SetSelfCustomInfo("lost");
    stage.users->GetSelfCustomInfo(seen, sizeof(seen));
    check.ExpectEqual("kept", std::string(seen), "the text at the end");
}

CONTRACT_CHECK(UserOnline, GetSelfCustomInfoIntoTooSmallABufferFillsItWithoutATerminator,
               "4 bytes get 4 of 10 characters; a buffer with one byte more than the text gets a terminator.")
{
    PresenceStage stage(check);
    stage.users->SetSelfCustomInfo("0123456789");
    char four[5] = {'?', '?', '?', '?', '!'};
    check.ExpectEqual(true, stage.users->GetSelfCustomInfo(four, 4), "GetSelfCustomInfo");
    check.ExpectEqual("0123!", std::string(four, 5), "four bytes and the one behind");
    char ten[11] = {};
    ten[10] = '!';
    stage.users->GetSelfCustomInfo(ten, 10);
    check.ExpectEqual("0123456789!", std::string(ten, 11), "ten bytes and the one behind");
    char eleven[11];
    stage.users->GetSelfCustomInfo(eleven, 11);
    check.ExpectEqual("0123456789", std::string(eleven), "eleven bytes");
}

CONTRACT_CHECK(UserOnline, GetSelfCustomInfoFillsTheRestOfTheBufferWithZeros,
               "This holds up to the last byte of the buffer, and not beyond.")
{
    PresenceStage stage(check);
    stage.users->SetSelfCustomInfo("ab");
    char buffer[65];
    std::memset(buffer, '?', sizeof(buffer));
    stage.users->GetSelfCustomInfo(buffer, 64);
    check.ExpectEqual("ab" + std::string(62, '\0') + "?", std::string(buffer, 65), "the buffer");
}

CONTRACT_CHECK(UserOnline, QueriesCallBackOnTheCallersThreadBeforeTheyReturn,
               "The callback gets a copy of the known user.")
{
    PresenceStage stage(check);
    Refresh(stage.Connection(), {UserOnPc("7", 1)});
    stage.journal.Clear();
    stage.users->QueryUserStatus({7}, [&stage](const onlinemanager::UserOnlineInfo& user)
                                 { stage.journal.Add("answer ", user.user_id); });
    stage.journal.Add("returned");
    stage.ExpectJournal({"[host] answer 7", "[host] returned"});
}

CONTRACT_CHECK(UserOnline, ListenersAreCalledInOrderAndARemovedOneIsNot, "The notify list works as for every service.")
{
    PresenceStage stage(check);
    UserNotify second(stage.journal, "V");
    UserNotify third(stage.journal, "W");
    stage.users->AddNotify(&second);
    stage.users->AddNotify(&third);
    stage.users->AddNotify(nullptr);
    stage.users->RemoveNotify(&second);
    stage.users->RemoveNotify(nullptr);
    Refresh(stage.Connection(), {});
    stage.ExpectJournal({"U.OnUserStatusChanged([])", "W.OnUserStatusChanged([])"});
    stage.users->RemoveAllNotify();
    Refresh(stage.Connection(), {});
    stage.ExpectJournal({});
}

CONTRACT_CHECK(UserOnline, AListenerMustOverrideOnlyTwoOperations, "The other four have empty bodies.")
{
    class Smallest final : public onlinemanager::IUserOnlineNotify
    {
        void OnUserStatusRefreshed(unsigned, avcore::ZolPortErrCode) override {}
        void OnInviteRejected(unsigned, unsigned, avcore::ZolInviteRejectReason) override {}
    };
    PresenceStage stage(check);
    Smallest smallest;
    stage.users->RemoveAllNotify();
    stage.users->AddNotify(&smallest);
    stage.users->AddNotify(&stage.listener);
    Refresh(stage.Connection(), {});
    stage.Online().InviteIncome("1", 2, "3", "{}");
    stage.Online().InviteAccepted("1", 2, "{}");
    stage.Online().InviteCanceled("1", 2, avcore::ZOL_INVITE_CANCEL_BY_INVITER);
    check.ExpectEqual(4U, stage.journal.Count("U.On"), "what the next listener heard");
}

} // namespace checks
