#include "checks/Meetings.h"
#include "checks/Presence.h"
#include "checks/Stage.h"

#include <barrier>
#include <optional>

namespace checks
{

namespace
{

using onlinemanager::TUNNEL_TYPE_GW;
using onlinemanager::TUNNEL_TYPE_PAAS;

/// One of several components of a module, with its platform connections and a listener at each service.
struct Component
{
    Component(Stage& owner, onlinemanager::IOnlineManager* created, size_t firstConnection, const std::string& name,
              unsigned userId)
        : stage(owner),
          manager(created),
          connection(*owner.platform.connections.at(firstConnection)),
          gatewayConnection(*owner.platform.connections.at(firstConnection + 1)),
          sessionListener(owner.journal, name),
          usersListener(owner.journal, name),
          paasListener(owner.journal, name + ".paas"),
          gatewayListener(owner.journal, name + ".gateway"),
          mdsListener(owner.journal, name)
    {
        manager->GetPaasOnline(&session);
        session->GetUserOnline(&users);
        manager->GetMeetingTunnel(TUNNEL_TYPE_PAAS, &paas);
        manager->GetMeetingTunnel(TUNNEL_TYPE_GW, &gateway);
        manager->GetPaasMdsClient(&mds);
        session->AddNotify(&sessionListener);
        users->AddNotify(&usersListener);
        paas->AddNotify(&paasListener);
        gateway->AddNotify(&gatewayListener);
        mds->AddNotify(&mdsListener);
        mds->InitMdsClient();
        onlinemanager::LoginParam param = Stage::Param();
        param.userid = userId;
        session->Login(param, false);
        connection.LoginResult(0);
    }

    void Release()
    {
        stage.check.ExpectEqual(0, manager->Destroy(), "Destroy");
        stage.check.ExpectEqual(0, manager->Release(), "references after the last Release");
    }

    Stage& stage;
    onlinemanager::IOnlineManager* manager;
    RecordingConnection& connection;
    RecordingConnection& gatewayConnection;
    SessionNotify sessionListener;
    UserNotify usersListener;
    TunnelNotify paasListener;
    TunnelNotify gatewayListener;
    MdsNotify mdsListener;
    onlinemanager::IPaasOnline* session = nullptr;
    onlinemanager::IUserOnline* users = nullptr;
    onlinemanager::IMeetingTunnel* paas = nullptr;
    onlinemanager::IMeetingTunnel* gateway = nullptr;
    onlinemanager::IPaasMdsClient* mds = nullptr;
};

/// Two components of one module file, A and B, with user 1 and user 2 logged in; nothing is logged.
struct TwoComponents : Stage
{
    explicit TwoComponents(CheckContext& context) : Stage(context)
    {
        factory.center.manager.level = Quenda::LOG_LEVEL_ERROR;
        onlinemanager::IOnlineManager* const created = CreateComponent();
        check.Require(created != nullptr && created->Initialize(nullptr) == S_OK, "a second component is initialised");
        a.emplace(*this, manager, 0U, "A", 1U);
        b.emplace(*this, created, 2U, "B", 2U);
        journal.Clear();
    }

    ~TwoComponents()
    {
        b->Release();
    }

    std::optional<Component> a;
    std::optional<Component> b;
};

/// Sends one event of every kind from the platform objects of one component.
void SendEverything(Component& component)
{
    component.connection.JoinGroupResult(0);
    component.connection.GroupUserJoined("7");
    component.connection.GroupUserLeaved("7");
    component.connection.LeaveGroupResult(0);
    Refresh(component.connection, {UserOnPc("7", 1)});
    component.connection.online.UserTerminalStateChanged("8", {"pc", 1, "", "{}"});
    component.connection.online.InviteIncome("5", 901, "7", "{}");
    component.connection.online.InviteAccepted("5", 1, "{}");
    component.connection.online.InviteRejected("5", 1, avcore::ZOL_INVITE_REJECT_DECLINED, "{}");
    component.connection.online.InviteCanceled("5", 901, avcore::ZOL_INVITE_CANCEL_BY_INVITER);
    component.connection.tmsg.UserMsgIncome("5", 1, "text");
    component.connection.mds.MsgData(R"({"message":{"command":"subscribe_av_quality","data":{"subType":"all"}}})");
    component.gatewayConnection.LoginResult(0);
    component.gatewayConnection.GroupUserJoined("7");
    component.gatewayConnection.ReconnectStart();
    component.gatewayConnection.ReconnectSucess();
    component.gatewayConnection.Logouted(0);
    component.connection.ReconnectStart();
    component.connection.ReconnectSucess();
    component.connection.ReconnectFail(36, "device");
    component.connection.Logouted(36);
}

/// The notifications for SendEverything: of the meeting, of presence, of invitations, of reports, of the gateway's
/// meeting and reconnections, and of the session.
constexpr size_t kEverything = 4 + 2 + 4 + 1 + 3 + 3 + 5;

} // namespace

CONTRACT_CHECK(SideBySide, EventsOfOneComponentNeverReachTheOthersListeners,
               "This holds for every service, in both directions.")
{
    TwoComponents stage(check);
    SendEverything(*stage.a);
    check.ExpectEqual(kEverything, stage.journal.Count("A."), "notifications of the first");
    check.ExpectEqual(0, stage.journal.Count("B."), "notifications of the second");
    stage.journal.Clear();
    SendEverything(*stage.b);
    check.ExpectEqual(0, stage.journal.Count("A."), "notifications of the first");
    check.ExpectEqual(kEverything, stage.journal.Count("B."), "notifications of the second");
}

CONTRACT_CHECK(SideBySide, EachComponentCallsItsOwnPlatformObjects, "This holds for every operation of every service.")
{
    TwoComponents stage(check);
    const auto work = [](Component& component)
    {
        unsigned id = 0;
        component.users->RefreshCompanyUserStatus(&id);
        component.users->SetSelfCustomInfo("text");
        component.users->InviteUsers({5}, {}, &id);
        component.users->AcceptInvite(5, 1, true);
        component.paas->JoinMeeting(SomeMeeting());
        component.paas->LeaveMeeting();
        component.gateway->JoinMeeting(SomeMeeting());
        component.gateway->LeaveMeeting();
        component.session->Logout();
    };
    work(*stage.a);
    check.ExpectEqual(7, stage.journal.Count("1."), "calls of the first's platform");
    check.ExpectEqual(2, stage.journal.Count("connection2."), "calls of the first's gateway");
    stage.journal.Clear();
    work(*stage.b);
    check.ExpectEqual(7, stage.journal.Count("3."), "calls of the second's platform");
    check.ExpectEqual(2, stage.journal.Count("connection4."), "calls of the second's gateway");
}

CONTRACT_CHECK(SideBySide, EachComponentHasStateOfItsOwn,
               "Each has its own login, known users, custom text, invitations and subscriptions.")
{
    TwoComponents stage(check);
    Refresh(stage.a->connection, {UserOnPc("7", 1)});
    stage.a->users->SetSelfCustomInfo("of a");
    stage.a->connection.online.InviteIncome("5", 901, "7", "{}");
    stage.a->connection.mds.MsgData(R"({"message":{"command":"subscribe_av_quality","data":{"subType":"all"}}})");
    check.ExpectEqual("7: status=0", Known(*stage.b->users, {7}).at(0), "what the other one knows of user 7");
    char text[8] = {};
    stage.b->users->GetSelfCustomInfo(text, sizeof(text));
    check.ExpectEqual("", std::string(text), "the other one's custom text");
    stage.journal.Clear();
    stage.b->users->RejectAllInvite(onlinemanager::REJECT_INVITATION_DECLINED, {});
    stage.b->mds->SendAVQualityInfo(std::make_shared<onlinemanager::AVQualityInfo>());
    stage.ExpectJournal({});
    stage.b->connection.Logouted(0);
    check.ExpectEqual(true, stage.a->session->Relogin(false), "the first is still logged in");
}

CONTRACT_CHECK(SideBySide, TheEndOfOneComponentLeavesTheOtherWorking,
               "All its operations and notifications still work.")
{
    TwoComponents stage(check);
    stage.ReleaseComponent();
    stage.journal.Clear();
    SendEverything(*stage.b);
    check.ExpectEqual(kEverything, stage.journal.Count("B."), "notifications of the one that stays");
    check.ExpectEqual(1, stage.module.Functions().m_lpfnCanUnloadNow(), "the module may not be unloaded yet");
}

CONTRACT_CHECK(SideBySide, ComponentsMayComeGoAndWorkOnThreadsOfTheirOwn,
               "Each thread creates a component, sends it every event and destroys it, several times.")
{
    constexpr int kThreads = 3;
    Stage stage(check, Scene::Loaded);
    std::mutex creation; // the recording platform numbers connections in the order of their creation
    std::barrier start(kThreads);
    const auto live = [&](const std::string& name)
    {
        NameThread("platform");
        start.arrive_and_wait();
        for (int round = 0; round < 10; ++round)
        {
            std::optional<Component> component;
            {
                const std::lock_guard guard(creation);
                const size_t first = stage.platform.connections.size();
                onlinemanager::IOnlineManager* const created = stage.CreateComponent();
                created->Initialize(nullptr);
                stage.platform.connections[first]->sender.sendsInline = true;
                stage.platform.connections[first + 1]->sender.sendsInline = true;
                component.emplace(stage, created, first, name, 1U);
            }
            SendEverything(*component);
            component->Release();
        }
    };
    std::vector<std::thread> threads;
    for (int index = 0; index < kThreads; ++index)
    {
        threads.emplace_back(live, "C" + std::to_string(index));
    }
    for (std::thread& thread : threads)
    {
        thread.join();
    }
    for (int index = 0; index < kThreads; ++index)
    {
        // The login's notification comes while the component is created.
        check.ExpectEqual(10 * (kEverything + 1), stage.journal.Count("C" + std::to_string(index) + "."),
                          "notifications of thread " + std::to_string(index));
    }
}

} // namespace checks
