#include "checks/Presence.h"
#include "checks/Stage.h"

namespace checks
{

namespace
{

using avcore::ZOL_PORT_SUCCESS;

/// A logged-in stage with a listener U at the user service; nothing is logged.
struct PageStage : Stage
{
    explicit PageStage(CheckContext& context) : Stage(context, Scene::LoggedIn), listener(journal, "U")
    {
        factory.center.manager.level = Quenda::LOG_LEVEL_ERROR;
        users = Users();
        users->AddNotify(&listener);
    }

    void Send(const Page& page, int count, int index, unsigned requestId = 101)
    {
        Connection().online.RefreshUserStatusFinished(ZOL_PORT_SUCCESS, requestId, page, count, index);
    }

    UserNotify listener;
    onlinemanager::IUserOnline* users = nullptr;
};

} // namespace

CONTRACT_CHECK(BadInput, PagesThatRepeatUsersKeepTheFirstRecordOfEach,
               "Within a page and across pages; the id is reported as often as it came.")
{
    PageStage stage(check);
    stage.Send({UserOnPc("7", 1, "first"), UserOnPc("8", 1), UserOnPc("7", 1, "second")}, 2, 0);
    stage.Send({UserOnPc("7", 0, "third"), UserOnPc("8", 1)}, 2, 1);
    stage.ExpectJournal({"U.OnUserStatusChanged([7,8,7,7,8])"});
    check.ExpectEqual("7: status=1 [pc type=3 status=1 custom=first]", Known(*stage.users, {7}).at(0), "user 7");
}

CONTRACT_CHECK(BadInput, PagesOutOfOrderAreTakenAsTheyComeAndTheLastIndexEndsTheRefresh,
               "Pages that come after the page with the last index belong to the next refresh.")
{
    PageStage stage(check);
    stage.Send({UserOnPc("3", 1)}, 3, 1);
    stage.Send({UserOnPc("9", 1)}, 3, 2);
    stage.ExpectJournal({"U.OnUserStatusChanged([3,9])"});
    stage.Send({UserOnPc("1", 1)}, 3, 0);
    stage.ExpectJournal({});
    stage.Send({UserOnPc("3", 1), UserOnPc("9", 1)}, 1, 0, 102);
    stage.ExpectJournal({"U.OnUserStatusChanged([1])"});
    check.Expect(DigestOf(*stage.users, 1) != 0, "user 1 is known");
}

CONTRACT_CHECK(BadInput, ALastPageThatComesTwiceEndsTheRefreshTwiceAndTheRequestOnce,
               "The second one replaces the table by its own users.")
{
    PageStage stage(check);
    unsigned requestId = 0;
    stage.users->RefreshCompanyUserStatus(&requestId);
    stage.journal.Clear();
    stage.Send({UserOnPc("7", 1)}, 1, 0, requestId);
    stage.Send({UserOnPc("7", 1)}, 1, 0, requestId);
    stage.Send({}, 1, 0, requestId);
    stage.ExpectJournal({
        "U.OnUserStatusChanged([7])",
        "U.OnUserStatusRefreshed(102, 0)",
        "U.OnUserStatusChanged([])",
        "U.OnUserStatusChanged([7])",
    });
}

CONTRACT_CHECK(BadInput, PagesAreCollectedWithoutANotificationUntilTheLastOneComes,
               "The last page then delivers the users of all pages.")
{
    PageStage stage(check);
    Page page;
    for (unsigned user = 1; user <= 100; ++user)
    {
        page.push_back(UserOnPc(std::to_string(user), 1));
    }
    for (int index = 0; index < 200; ++index)
    {
        stage.Send(page, 2147483647, index);
    }
    stage.ExpectJournal({});
    check.ExpectEqual("1: status=0", Known(*stage.users, {1}).at(0), "user 1 before the end");
    stage.Send({UserOnPc("101", 1)}, 2147483647, 2147483646);
    check.ExpectEqual(1, stage.journal.Count("U.OnUserStatusChanged(["), "reports at the end");
    size_t known = 0;
    for (unsigned user = 0; user <= 200; ++user)
    {
        known += DigestOf(*stage.users, user) != 0 ? 1U : 0U;
    }
    check.ExpectEqual(101, known, "users known at the end");
}

CONTRACT_CHECK(BadInput, InvalidCountsAndIndicesEndNoRefresh,
               "Only a count that is one more than its index ends a refresh; so count 0 with index -1 does.")
{
    PageStage stage(check);
    const int senseless[][2] = {{0, 0}, {1, 1}, {-1, 0}, {3, 7}, {-5, -7}, {-2147483647 - 1, 2147483647}, {0, 5}};
    for (const auto& [count, index] : senseless)
    {
        stage.Send({UserOnPc("7", 1)}, count, index);
    }
    stage.ExpectJournal({});
    stage.Send({}, 0, -1);
    check.ExpectEqual(1, stage.journal.Count("U.OnUserStatusChanged([7,7,7,7,7,7,7])"), "reports");
}

CONTRACT_CHECK(BadInput, PagesOfRequestsNeverMadeAreTakenButNotReportedAsFinished, "For any request id.")
{
    PageStage stage(check);
    unsigned requestId = 0;
    stage.users->RefreshCompanyUserStatus(&requestId);
    stage.journal.Clear();
    for (const unsigned id : {0U, requestId + 1, 4294967295U})
    {
        stage.Send({UserOnPc("7", 1)}, 1, 0, id);
    }
    check.ExpectEqual(3, stage.journal.Count("U.OnUserStatusChanged("), "changes");
    check.ExpectEqual(0, stage.journal.Count("U.OnUserStatusRefreshed("), "ends");
}

CONTRACT_CHECK(BadInput, PagesOfTwoRefreshesAreMergedAndEachEndIsReportedOnce,
               "The pages of all refreshes are collected together: the first end takes all of them.")
{
    PageStage stage(check);
    unsigned first = 0;
    unsigned second = 0;
    stage.users->RefreshCompanyUserStatus(&first);
    stage.users->RefreshCompanyUserStatus(&second);
    stage.journal.Clear();
    stage.Send({UserOnPc("1", 1)}, 2, 0, first);
    stage.Send({UserOnPc("2", 1)}, 2, 0, second);
    stage.Send({UserOnPc("3", 1)}, 2, 1, second);
    stage.Send({UserOnPc("4", 1)}, 2, 1, first);
    stage.ExpectJournal({
        "U.OnUserStatusChanged([1,2,3])",
        "U.OnUserStatusRefreshed(103, 0)",
        "U.OnUserStatusChanged([4,1,2,3])",
        "U.OnUserStatusRefreshed(102, 0)",
    });
}

CONTRACT_CHECK(BadInput, AUserWithANegativeCountOfTerminalsHasNone, "The user is kept, and the terminals are not read.")
{
    PageStage stage(check);
    WBASELIB::Vector<avcore::ZolUserInfo> records;
    records.push_back({"7", -1, nullptr});
    records.push_back({"8", 0, nullptr});
    stage.Connection().sender.Send(stage.Connection().online.listeners, [&records](avcore::IZolOnlineListener& listener)
                                   { listener.OnRefreshUserStatusFinished(ZOL_PORT_SUCCESS, 101, records, 1, 0); });
    stage.ExpectJournal({"U.OnUserStatusChanged([7,8])"});
    check.ExpectEqual(std::vector<std::string>{"7: status=0", "8: status=0"}, Known(*stage.users, {7, 8}),
                      "the known records");
}

CONTRACT_CHECK(BadInput, AnswersAfterALogoutAreHandledAsBefore,
               "Pages, terminal events, invitations, answers, results of groups and tunnels: each is still reported.")
{
    PageStage stage(check);
    unsigned requestId = 0;
    stage.users->RefreshCompanyUserStatus(&requestId);
    unsigned inviteId = 0;
    stage.users->InviteUsers({5}, {}, &inviteId);
    TunnelNotify tunnel(stage.journal, "T");
    stage.Tunnel(onlinemanager::TUNNEL_TYPE_PAAS)->AddNotify(&tunnel);
    stage.Connection().Logouted(0);
    stage.journal.Clear();
    stage.Send({UserOnPc("7", 1)}, 1, 0, requestId);
    stage.Connection().online.InviteAccepted("5", inviteId, "{}");
    stage.Connection().online.InviteIncome("5", 901, "7", "{}");
    stage.Connection().online.InviteCanceled("5", 901, avcore::ZOL_INVITE_CANCEL_BY_INVITER);
    stage.Connection().JoinGroupResult(0);
    stage.Connection().LeaveGroupResult(0);
    stage.Connection().GroupUserJoined("7");
    stage.Connection().Logouted(0);
    stage.ExpectJournal({
        "U.OnUserStatusChanged([7])",
        "U.OnUserStatusRefreshed(102, 0)",
        "U.OnInviteAccepted(5, 501)",
        "U.OnInviteIncome(5, 901, {code=0 time=0 company=0 force=0 proxy=0 callout=0 meeting=0 user=0 name=\"\" "
        "terminal=\"\"})",
        "U.OnAbandonInvite(5, 901, 1)",
        "T.OnJoinMeetingResult(0)",
        "T.OnLeaveMeetingResult(0)",
        "T.OnUserJoined(7)",
    });
}

CONTRACT_CHECK(
    BadInput, ACommandToAClientOfADestroyedComponentDoesNotReachNewClients,
    "The platform still knows the old client; a component created later gets only the commands to its own client.")
{
    Stage stage(check);
    MdsNotify before(stage.journal, "old");
    stage.Mds()->AddNotify(&before);
    stage.Mds()->InitMdsClient();
    stage.manager->Destroy();
    stage.manager->Initialize(nullptr);
    MdsNotify after(stage.journal, "new");
    stage.Mds()->AddNotify(&after);
    stage.Mds()->InitMdsClient();
    stage.journal.Clear();
    const char* const command = R"({"message":{"command":"subscribe_av_quality","data":{"subType":"all"}}})";
    stage.Connection().mds.MsgData(command);
    check.ExpectEqual(0, stage.journal.Count(".OnSubscribe"), "notifications of the old client's command");
    stage.platform.connections.at(2)->mds.MsgData(command);
    check.ExpectEqual(1, stage.journal.Count("new.OnSubscribe"), "notifications of the new client's command");
    check.ExpectEqual(0, stage.journal.Count("old.OnSubscribe"), "notifications of the old listener");
    stage.Mds()->RemoveAllNotify();
}

} // namespace checks
