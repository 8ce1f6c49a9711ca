#include "checks/Stage.h"

namespace checks
{

namespace
{

/// Texts that are not user ids. The last ones begin with a digit, but their value fits no int.
const char* const kNoUserIds[] = {nullptr, "",           "x7",         "-7",          " 7",
                                  "\xFF",  "2147483648", "4294967295", "99999999999", "123456789012345678901234567890"};

std::string Named(const char* text)
{
    return "the text " + Quoted(text);
}

/// A component with a listener at every service; the journal holds notifications only, no log lines.
struct Heard
{
    explicit Heard(CheckContext& check) : stage(check, Scene::LoggedIn)
    {
        stage.Session()->AddNotify(&session);
        stage.Users()->AddNotify(&users);
        stage.Tunnel(onlinemanager::TUNNEL_TYPE_PAAS)->AddNotify(&paas);
        stage.Tunnel(onlinemanager::TUNNEL_TYPE_GW)->AddNotify(&gateway);
        stage.Mds()->AddNotify(&mds);
        stage.Mds()->InitMdsClient();
        stage.factory.center.manager.level = Quenda::LOG_LEVEL_WARNING;
        stage.journal.Clear();
    }

    ~Heard()
    {
        if (stage.manager != nullptr && stage.Session() != nullptr)
        {
            stage.Session()->RemoveAllNotify();
            stage.Users()->RemoveAllNotify();
            stage.Tunnel(onlinemanager::TUNNEL_TYPE_PAAS)->RemoveAllNotify();
            stage.Tunnel(onlinemanager::TUNNEL_TYPE_GW)->RemoveAllNotify();
            stage.Mds()->RemoveAllNotify();
        }
    }

    Stage stage;
    SessionNotify session{stage.journal, "S"};
    UserNotify users{stage.journal, "U"};
    TunnelNotify paas{stage.journal, "P"};
    TunnelNotify gateway{stage.journal, "G"};
    MdsNotify mds{stage.journal, "M"};
};

} // namespace

CONTRACT_CHECK(
    BadInput, ATerminalEventWithoutAUserIdIsIgnored,
    "No listener is called, nothing is logged, no exception is thrown, also for digits whose value fits no int.")
{
    Stage stage(check, Scene::LoggedIn);
    UserNotify listener(stage.journal, "U");
    stage.Users()->AddNotify(&listener);
    for (const char* const id : kNoUserIds)
    {
        stage.Connection().online.UserTerminalStateChanged(id, {"t", 1, "c", "{}"});
        if (!stage.ExpectJournal({}))
        {
            check.Fail(Named(id));
        }
    }
    stage.Connection().online.UserTerminalStateChanged("7x", {"t", 1, "c", "{}"});
    stage.ExpectJournal({
        LogLine("UserOnlineImp", "OnUserTerminalStateChanged(), userid=7x, status=1, terminal=t, custom=c."),
        "U.OnUserStatusChanged([7])",
    });
    stage.Users()->RemoveAllNotify();
}

CONTRACT_CHECK(BadInput, ARefreshedUserWithoutAnIdIsKeptAsUser0, "Every text that is not a user id is read as 0.")
{
    Heard heard(check);
    for (const char* const id : kNoUserIds)
    {
        PageUser user{id == nullptr ? "" : id, {{"t", 1, "c", "{}"}}};
        user.hasNullId = id == nullptr;
        heard.stage.Connection().online.RefreshUserStatusFinished(avcore::ZOL_PORT_SUCCESS, 101, {user}, 1, 0);
        heard.stage.Connection().online.RefreshUserStatusFinished(avcore::ZOL_PORT_SUCCESS, 101, {}, 1, 0);
        if (!heard.stage.ExpectJournal({"U.OnUserStatusChanged([0])", "U.OnUserStatusChanged([0])"}))
        {
            check.Fail(Named(id));
        }
    }
}

CONTRACT_CHECK(BadInput, AnInvitationEventWithoutAUserIdIsReportedAsUser0,
               "The listeners are still called for the event.")
{
    Heard heard(check);
    RecordingOnline& online = heard.stage.Connection().online;
    for (const char* const id : kNoUserIds)
    {
        online.InviteIncome(id, 5, "7", R"({"method":"InviteUser","params":{"inviteCode":7}})");
        online.InviteAccepted(id, 6, "{}");
        online.InviteRejected(id, 6, static_cast<avcore::ZolInviteRejectReason>(3), "{}");
        online.InviteCanceled(id, 5, static_cast<avcore::ZolInviteCancelReason>(4));
        const bool asExpected = heard.stage.ExpectJournal({
            R"(U.OnInviteIncome(0, 5, {code=7 time=0 company=0 force=0 proxy=0 callout=0 meeting=0 user=0 name="" )"
            R"(terminal=""}))",
            "U.OnInviteAccepted(0, 0)",
            "U.OnInviteRejected(0, 0, 3)",
            "U.OnAbandonInvite(0, 5, 4)",
        });
        if (!asExpected)
        {
            check.Fail(Named(id));
        }
    }
}

CONTRACT_CHECK(BadInput, AGroupUserWithoutAnIdIsUser0OnThePaasTunnel,
               "The listeners are called for joins and for leaves.")
{
    Heard heard(check);
    for (const char* const id : kNoUserIds)
    {
        heard.stage.Connection().GroupUserJoined(id);
        heard.stage.Connection().GroupUserLeaved(id);
        if (!heard.stage.ExpectJournal({"P.OnUserJoined(0)", "P.OnUserLeaved(0)"}))
        {
            check.Fail(Named(id));
        }
    }
}

CONTRACT_CHECK(BadInput, AGroupUserWithoutAnIdIsLeftOutByTheGatewayTunnel,
               "Each is logged; the text \"0\" does not count as an id either.")
{
    Heard heard(check);
    heard.stage.factory.center.manager.level = Quenda::LOG_LEVEL_INFO;
    std::vector<const char*> texts(std::begin(kNoUserIds), std::end(kNoUserIds));
    texts.push_back("0");
    for (const char* const id : texts)
    {
        heard.stage.Gateway().GroupUserJoined(id);
        heard.stage.Gateway().GroupUserLeaved(id);
        const bool asExpected = heard.stage.ExpectJournal({
            LogLine("GwConnectionImp", "GwConnectionImp::OnGroupUserJoined param error."),
            LogLine("GwConnectionImp", "GwConnectionImp::OnGroupUserLeaved param error."),
        });
        if (!asExpected)
        {
            check.Fail(Named(id));
        }
    }
}

CONTRACT_CHECK(BadInput, TextsThatAreNotUtf8PassUnchanged, "Terminals, custom texts and messages keep every byte.")
{
    Stage stage(check, Scene::LoggedIn);
    const std::string odd = "\xFF\xC3(\x80";
    stage.Connection().online.UserTerminalStateChanged("7", {odd, 1, odd, odd});
    stage.Connection().tmsg.UserMsgIncome("7", 1, odd.c_str());
    stage.ExpectJournal({
        LogLine("UserOnlineImp",
                "OnUserTerminalStateChanged(), userid=7, status=1, terminal=" + odd + ", custom=" + odd + "."),
        LogLine("PaasTMsgImp", "PaasTMsgImp::OnUserMsgIncome srcUserId:7 msgId:1 msg:" + odd + "."),
    });
    bool isAsked = false;
    stage.Users()->QueryUserStatus({7},
                                   [&](const onlinemanager::UserOnlineInfo& info)
                                   {
                                       isAsked = true;
                                       check.Require(info.terminals.size() == 1, "the terminal is known");
                                       check.ExpectEqual(odd, info.terminals[0].terminal, "terminal");
                                       check.ExpectEqual(odd, info.terminals[0].custom, "custom text");
                                       check.ExpectEqual(0, info.terminals[0].terminal_type, "terminal type");
                                   });
    check.Expect(isAsked, "the user is reported");
    check.ExpectEqual(true, stage.Users()->SetSelfCustomInfo(odd), "SetSelfCustomInfo");
    check.ExpectEqual(1, stage.journal.Count("online1.SetUserCustomInfo(\"" + odd + "\")"), "calls of the platform");
}

CONTRACT_CHECK(BadInput, EventsWithoutAPendingRequestDoNotFail,
               "Results and reconnections without a login are reported or ignored; none fails.")
{
    Stage stage(check);
    SessionNotify session(stage.journal, "S");
    stage.Session()->AddNotify(&session);
    RecordingConnection& connection = stage.Connection();
    connection.JoinGroupResult(5);
    connection.LeaveGroupResult(5);
    connection.Logouted(0);
    connection.ReconnectStart();
    connection.ReconnectSucess();
    connection.ReconnectFail(36, nullptr);
    connection.GroupUserSync({"x"});
    connection.online.RefreshUserStatusFinished(avcore::ZOL_PORT_NOT_LOGGED_IN, 0, {}, 0, 0);
    connection.online.RefreshUserStatusFinished(avcore::ZOL_PORT_SUCCESS, 9, {}, -1, 5);
    stage.Gateway().Logouted(36);
    stage.Gateway().JoinGroupResult(5);
    stage.Gateway().GroupUserSync({});
    check.ExpectEqual(0, stage.journal.Count("exception left"), "exceptions that reached the platform");
    stage.Session()->RemoveAllNotify();
}

CONTRACT_CHECK(BadInput, APropertyIsNeverCopiedIntoANegativeSize, "The status is 0 and the buffer is unchanged.")
{
    Stage stage(check, Scene::LoggedIn);
    char buffer[8] = "unused";
    const auto result = stage.Session()->GetConnectProperty(onlinemanager::CONNECT_PROPERTY_ONLINE, buffer, -1);
    check.ExpectEqual(0, result.status, "status");
    check.ExpectEqual("unused", std::string(buffer), "the buffer");
}

CONTRACT_CHECK(BadInput, ADestroyFromInsideANotificationEndsTheDelivery,
               "Any listener may call Destroy from inside a notification; the platform's call returns.")
{
    const std::function<void(Heard&)> events[] = {
        [](Heard& heard) { heard.stage.Connection().LoginResult(0); },
        [](Heard& heard) { heard.stage.Connection().LoginResult(36, "d", "s", "e"); },
        [](Heard& heard) { heard.stage.Connection().Logouted(0); },
        [](Heard& heard) { heard.stage.Connection().ReconnectStart(); },
        [](Heard& heard) { heard.stage.Connection().ReconnectSucess(); },
        [](Heard& heard) { heard.stage.Connection().ReconnectFail(36, "d"); },
        [](Heard& heard) { heard.stage.Connection().JoinGroupResult(0); },
        [](Heard& heard) { heard.stage.Connection().GroupUserJoined("7"); },
        [](Heard& heard) { heard.stage.Gateway().LoginResult(0); },
        [](Heard& heard) { heard.stage.Gateway().Logouted(0); },
        [](Heard& heard) { heard.stage.Gateway().ReconnectFail(7, nullptr); },
        [](Heard& heard)
        { heard.stage.Connection().online.RefreshUserStatusFinished(avcore::ZOL_PORT_SUCCESS, 101, {}, 1, 0); },
        [](Heard& heard) {
            heard.stage.Connection().online.UserTerminalStateChanged("7", {"t", 1, "c", "{}"});
        },
        [](Heard& heard) { heard.stage.Connection().online.InviteIncome("7", 1, "7", "{}"); },
        [](Heard& heard) { heard.stage.Connection().online.InviteAccepted("7", 1, "{}"); },
        [](Heard& heard) {
            heard.stage.Connection().mds.MsgData(
                R"({"message":{"command":"subscribe_av_quality","data":{"subType":"all"}}})");
        },
    };
    for (const auto& event : events)
    {
        Heard heard(check);
        const auto destroy = [&heard](const std::string&) { heard.stage.manager->Destroy(); };
        heard.session.hook = destroy;
        heard.users.hook = destroy;
        heard.paas.hook = destroy;
        heard.gateway.hook = destroy;
        heard.mds.hook = destroy;
        event(heard);
        check.ExpectEqual(0, heard.stage.Connection().References(), "references of the connection afterwards");
        check.ExpectEqual(0, heard.stage.journal.Count("exception left"), "exceptions that reached the platform");
    }
}

} // namespace checks
