#include "checks/Stage.h"

namespace checks
{

namespace
{

using onlinemanager::TUNNEL_TYPE_GW;
using onlinemanager::TUNNEL_TYPE_PAAS;
using onlinemanager::TunnelType;

const std::string kCreateConnection = "factory.CreateComponent(ZolConnection, IZolConnection, null)";

const std::vector<std::string> kSessionBuilt = {
    LogLine("PaasOnlineImp", "PaasOnlineImp()"),
    LogLine("PaasOnlineImp", "InitModel()"),
    "connection1.AddListener(listener1)",
    "connection1.AddListener(listener2)",
    "connection1.GetComponent(IZolOnline)",
    LogLine("UserOnlineImp", "InitModel()"),
    "online1.AddListener(listener1)",
};

const std::vector<std::string> kGatewayBuilt = {
    LogLine("GwConnectionImp", "InitModel()"),
    "connection2.AddListener(listener1)",
    LogLine("GwConnectionImp", "GwConnectionImp Register zol connection listen successed."),
};

const std::vector<std::string> kMessagingBuilt = {
    LogLine("PaasTMsgImp", "PaasTMsgImp()"),
    LogLine("PaasTMsgImp", "InitModel()"),
    "connection1.GetComponent(IZolTMsg)",
    "tmsg1.AddListener(listener1)",
    LogLine("PaasMdsClientImp", "PaasMdsClientImp()"),
    LogLine("PaasMdsClientImp", "InitModel()"),
};

std::vector<std::string> Joined(const std::vector<std::vector<std::string>>& parts)
{
    std::vector<std::string> all;
    for (const auto& part : parts)
    {
        all.insert(all.end(), part.begin(), part.end());
    }
    return all;
}

const std::string kInitialize = LogLine("OnlineManager", "OnlineManager::Initialize.");

} // namespace

CONTRACT_CHECK(
    Manager, InitializeBuildsConnectionsAndServicesInOrder,
    "It creates PaaS connection, session with user service, gateway connection, gateway tunnel, messages, reports.")
{
    Stage stage(check, Scene::Created);
    check.ExpectEqual(S_OK, stage.manager->Initialize(&stage.http), "Initialize");
    stage.ExpectJournal(
        Joined({{kInitialize, kCreateConnection}, kSessionBuilt, {kCreateConnection}, kGatewayBuilt, kMessagingBuilt}));
}

CONTRACT_CHECK(Manager, ASecondInitializeBuildsNothing, "What exists is kept, and the result is 0.")
{
    Stage stage(check);
    check.ExpectEqual(S_OK, stage.manager->Initialize(&stage.http), "Initialize");
    stage.ExpectJournal({kInitialize});
}

CONTRACT_CHECK(Manager, AFailingPaasConnectionEndsInitialize,
               "The factory's code is returned and logged, and nothing else is built; a later call builds everything.")
{
    Stage stage(check, Scene::Created);
    stage.factory.creationResults = {E_OUTOFMEMORY};
    check.ExpectEqual(E_OUTOFMEMORY, stage.manager->Initialize(nullptr), "Initialize");
    stage.ExpectJournal({
        kInitialize,
        kCreateConnection,
        LogLine("OnlineManager", "OnlineManager::Initialize Create Zol Connection Component Fail."),
    });
    check.ExpectEqual(nullptr, stage.Session(), "the session");
    check.ExpectEqual(nullptr, stage.TMsg(), "the message channel");
    check.ExpectEqual(S_OK, stage.manager->Initialize(nullptr), "Initialize once more");
    stage.ExpectJournal(
        Joined({{kInitialize, kCreateConnection}, kSessionBuilt, {kCreateConnection}, kGatewayBuilt, kMessagingBuilt}));
}

CONTRACT_CHECK(Manager, AFailingGatewayConnectionLeavesTheSessionBuilt,
               "The factory's code is returned; a second Initialize retries only the missing pieces.")
{
    Stage stage(check, Scene::Created);
    stage.factory.creationResults = {S_OK, E_FAIL};
    check.ExpectEqual(E_FAIL, stage.manager->Initialize(&stage.http), "Initialize");
    stage.ExpectJournal(
        Joined({{kInitialize, kCreateConnection},
                kSessionBuilt,
                {kCreateConnection,
                 LogLine("OnlineManager", "OnlineManager::GetMeetingTunnel Create Gw Connection Component Fail.")}}));
    onlinemanager::IPaasOnline* const session = stage.Session();
    check.Require(session != nullptr, "the session exists");
    check.ExpectEqual(nullptr, stage.Tunnel(TUNNEL_TYPE_GW), "the gateway tunnel");
    check.ExpectEqual(nullptr, stage.TMsg(), "the message channel");
    check.ExpectEqual(nullptr, stage.Mds(), "the report client");

    check.ExpectEqual(S_OK, stage.manager->Initialize(&stage.http), "Initialize once more");
    stage.ExpectJournal(Joined({{kInitialize, kCreateConnection}, kGatewayBuilt, kMessagingBuilt}));
    check.ExpectEqual(session, stage.Session(), "the session is the same");
}

CONTRACT_CHECK(Manager, AGatewayBuiltAfterTheSessionDoesNotReportReconnectionsToIt,
               "Its reconnection listener is the session that the same Initialize has built; otherwise it has none.")
{
    Stage stage(check, Scene::Created);
    stage.factory.creationResults = {S_OK, E_FAIL, S_OK};
    stage.manager->Initialize(nullptr);
    stage.manager->Initialize(nullptr);
    SessionNotify listener(stage.journal, "A");
    stage.Session()->AddNotify(&listener);
    stage.Gateway().ReconnectFail(7, nullptr);
    stage.ExpectJournal({});
    stage.Session()->RemoveAllNotify();
}

CONTRACT_CHECK(Manager, AGatewayBuiltWithTheSessionReportsReconnectionsToIt,
               "The session's listeners get the gateway's reconnections, with tunnel type 2.")
{
    Stage stage(check);
    SessionNotify listener(stage.journal, "A");
    stage.Session()->AddNotify(&listener);
    stage.Gateway().ReconnectFail(7, nullptr);
    stage.ExpectJournal({"[platform] A.OnReconnectFail(2, 7)"});
    stage.Session()->RemoveAllNotify();
}

CONTRACT_CHECK(Manager, InitializeReturnsTheCodeOfTheLastCreation,
               "A code of the factory that is not negative counts as success and is returned unchanged.")
{
    Stage stage(check, Scene::Created);
    stage.factory.creationResults = {3, 5};
    check.ExpectEqual(5, stage.manager->Initialize(nullptr), "Initialize");
    check.ExpectEqual(0, stage.manager->Initialize(nullptr), "Initialize with nothing to create");
}

CONTRACT_CHECK(Manager, InitializeIgnoresWhatTheServicesReport,
               "If a connection refuses its components, every service still exists, and each logs a line.")
{
    Stage stage(check, Scene::Created);
    stage.platform.onNewConnection = [](RecordingConnection& connection)
    {
        connection.SetResult("GetComponent IZolOnline", E_NOINTERFACE);
        connection.SetResult("GetComponent IZolTMsg", E_FAIL);
    };
    check.ExpectEqual(S_OK, stage.manager->Initialize(nullptr), "Initialize");
    stage.ExpectJournal(Joined({
        {
            kInitialize,
            kCreateConnection,
            LogLine("PaasOnlineImp", "PaasOnlineImp()"),
            LogLine("PaasOnlineImp", "InitModel()"),
            "connection1.AddListener(listener1)",
            "connection1.AddListener(listener2)",
            "connection1.GetComponent(IZolOnline)",
            LogLine("PaasOnlineImp", "PaasOnlineImp::InitModel Get Zol Online Component Fail."),
            kCreateConnection,
        },
        kGatewayBuilt,
        {
            LogLine("PaasTMsgImp", "PaasTMsgImp()"),
            LogLine("PaasTMsgImp", "InitModel()"),
            "connection1.GetComponent(IZolTMsg)",
            LogLine("PaasTMsgImp", "PaasTMsgImp::InitModel Get Zol TMsg Component Fail."),
            LogLine("PaasMdsClientImp", "PaasMdsClientImp()"),
            LogLine("PaasMdsClientImp", "InitModel()"),
        },
    }));
    check.Expect(stage.Session() != nullptr && stage.TMsg() != nullptr && stage.Mds() != nullptr,
                 "every service is there");
}

CONTRACT_CHECK(
    Manager, BeforeInitializeTheServicesDoNotExist,
    "The getters log the missing service, return 0 and do not write the output; for the tunnels they return 1.")
{
    Stage stage(check, Scene::Created);
    auto* session = reinterpret_cast<onlinemanager::IPaasOnline*>(&stage);
    auto* tmsg = reinterpret_cast<onlinemanager::IPaasTMsg*>(&stage);
    auto* mds = reinterpret_cast<onlinemanager::IPaasMdsClient*>(&stage);
    auto* tunnel = reinterpret_cast<onlinemanager::IMeetingTunnel*>(&stage);
    check.ExpectEqual(0, stage.manager->GetPaasOnline(&session), "GetPaasOnline");
    check.ExpectEqual(0, stage.manager->GetPaasTMsg(&tmsg), "GetPaasTMsg");
    check.ExpectEqual(0, stage.manager->GetPaasMdsClient(&mds), "GetPaasMdsClient");
    check.ExpectEqual(1, stage.manager->GetMeetingTunnel(TUNNEL_TYPE_PAAS, &tunnel), "GetMeetingTunnel(1)");
    check.ExpectEqual(1, stage.manager->GetMeetingTunnel(TUNNEL_TYPE_GW, &tunnel), "GetMeetingTunnel(2)");
    check.ExpectEqual(static_cast<void*>(&stage), static_cast<void*>(session), "output of GetPaasOnline");
    check.ExpectEqual(static_cast<void*>(&stage), static_cast<void*>(tmsg), "output of GetPaasTMsg");
    check.ExpectEqual(static_cast<void*>(&stage), static_cast<void*>(mds), "output of GetPaasMdsClient");
    stage.ExpectJournal({
        LogLine("OnlineManager", "OnlineManager::GetPaasOnline m_pass_online = nullptr."),
        LogLine("OnlineManager", "GetPaasTMsg()"),
        LogLine("OnlineManager", "OnlineManager::GetPaasTMsg m_paas_tmsg = nullptr."),
        LogLine("OnlineManager", "GetPaasMdsClient()"),
        LogLine("OnlineManager", "OnlineManager::GetPaasMdsClient m_paas_mds_client = nullptr."),
        LogLine("OnlineManager", "GetMeetingTunnel()"),
        LogLine("OnlineManager", "OnlineManager::GetMeetingTunnel m_paas_online = nullptr."),
        LogLine("OnlineManager", "GetMeetingTunnel()"),
        LogLine("OnlineManager", "OnlineManager::GetMeetingTunel m_gw_zol_connect = nullptr."),
    });
}

CONTRACT_CHECK(Manager, TheGettersRefuseANullOutput, "Each logs its invalid argument and returns 1.")
{
    Stage stage(check);
    check.ExpectEqual(1, stage.manager->GetPaasOnline(nullptr), "GetPaasOnline");
    check.ExpectEqual(1, stage.manager->GetPaasTMsg(nullptr), "GetPaasTMsg");
    check.ExpectEqual(1, stage.manager->GetPaasMdsClient(nullptr), "GetPaasMdsClient");
    check.ExpectEqual(1, stage.manager->GetMeetingTunnel(TUNNEL_TYPE_PAAS, nullptr), "GetMeetingTunnel");
    check.ExpectEqual(1, stage.manager->GetZolConnectionForAVMP(nullptr), "GetZolConnectionForAVMP");
    stage.ExpectJournal({
        LogLine("OnlineManager", "OnlineManager::GetPaasOnline invalid argument."),
        LogLine("OnlineManager", "GetPaasTMsg()"),
        LogLine("OnlineManager", "OnlineManager::GetPaasTMsg invalid argument."),
        LogLine("OnlineManager", "GetPaasMdsClient()"),
        LogLine("OnlineManager", "OnlineManager::GetPaasMdsClient invalid argument."),
        LogLine("OnlineManager", "GetMeetingTunnel()"),
        LogLine("OnlineManager", "OnlineManager::GetMeetingTunnel invalid argument."),
        LogLine("OnlineManager", "OnlineManager::GetZolConnectionForAVMP, tunnel=0."),
        LogLine("OnlineManager", "OnlineManager::GetZolConnectionForAVMP invalid argument."),
    });
}

CONTRACT_CHECK(Manager, TheGettersHandOutTheServices, "Each returns 0 and the service, and adds no reference.")
{
    Stage stage(check);
    onlinemanager::IPaasOnline* session = nullptr;
    onlinemanager::IPaasTMsg* tmsg = nullptr;
    onlinemanager::IPaasMdsClient* mds = nullptr;
    check.ExpectEqual(0, stage.manager->GetPaasOnline(&session), "GetPaasOnline");
    check.ExpectEqual(0, stage.manager->GetPaasTMsg(&tmsg), "GetPaasTMsg");
    check.ExpectEqual(0, stage.manager->GetPaasMdsClient(&mds), "GetPaasMdsClient");
    check.Expect(session != nullptr && tmsg != nullptr && mds != nullptr, "every service is there");
    stage.ExpectJournal({
        LogLine("OnlineManager", "GetPaasTMsg()"),
        LogLine("OnlineManager", "GetPaasMdsClient()"),
    });
    check.ExpectEqual(1, stage.Connection().References(), "references of the PaaS connection");
}

CONTRACT_CHECK(Manager, GetMeetingTunnelHandsOutTheTunnelOfItsType,
               "Type 1 is the session's own tunnel, type 2 the gateway's.")
{
    Stage stage(check);
    onlinemanager::IMeetingTunnel* paas = nullptr;
    onlinemanager::IMeetingTunnel* gateway = nullptr;
    check.ExpectEqual(0, stage.manager->GetMeetingTunnel(TUNNEL_TYPE_PAAS, &paas), "GetMeetingTunnel(1)");
    check.ExpectEqual(0, stage.manager->GetMeetingTunnel(TUNNEL_TYPE_GW, &gateway), "GetMeetingTunnel(2)");
    stage.ExpectJournal({
        LogLine("OnlineManager", "GetMeetingTunnel()"),
        LogLine("PaasOnlineImp", "GetMeetingTunnel()"),
        LogLine("OnlineManager", "GetMeetingTunnel()"),
    });
    check.Expect(paas != nullptr && gateway != nullptr && paas != gateway, "there are two tunnels");
    onlinemanager::IMeetingTunnel* same = nullptr;
    stage.Session()->GetMeetingTunnel(&same);
    check.ExpectEqual(paas, same, "the session's tunnel");
}

CONTRACT_CHECK(Manager, GetMeetingTunnelWithAnyOtherTypeBehavesAsType2,
               "Types 5, 0 and -1 hand out the gateway tunnel.")
{
    Stage stage(check);
    onlinemanager::IMeetingTunnel* const gateway = stage.Tunnel(TUNNEL_TYPE_GW);
    for (const int type : {5, 0, -1})
    {
        check.ExpectEqual(gateway, stage.Tunnel(static_cast<TunnelType>(type)),
                          "tunnel of type " + std::to_string(type));
    }
}

CONTRACT_CHECK(Manager, TheConnectionForTheMediaProcessNeedsATunnelChosenFirst,
               "Before any GetMeetingTunnel the result is 0x80004005 with null, and the reason is logged.")
{
    Stage stage(check);
    IUnknown* connection = &stage.http;
    check.ExpectEqual(E_FAIL, stage.manager->GetZolConnectionForAVMP(&connection), "GetZolConnectionForAVMP");
    check.ExpectEqual(nullptr, connection, "the connection");
    stage.ExpectJournal({
        LogLine("OnlineManager", "OnlineManager::GetZolConnectionForAVMP, tunnel=0."),
        LogLine("OnlineManager", "[error] You must first call GetMeetingTunnel(&ptr) and ptr->JoinMeeting()."),
    });
}

CONTRACT_CHECK(Manager, TheConnectionForTheMediaProcessFollowsTheTunnelChosenLast,
               "After type 2 it is the gateway's connection, after type 1 the session's; no reference is added.")
{
    Stage stage(check);
    stage.Tunnel(TUNNEL_TYPE_GW);
    IUnknown* connection = nullptr;
    check.ExpectEqual(0, stage.manager->GetZolConnectionForAVMP(&connection), "after type 2");
    check.ExpectEqual(static_cast<IUnknown*>(&stage.Gateway()), connection, "the gateway's connection");
    stage.ExpectJournal({LogLine("OnlineManager", "OnlineManager::GetZolConnectionForAVMP, tunnel=2.")});
    stage.Tunnel(TUNNEL_TYPE_PAAS);
    check.ExpectEqual(0, stage.manager->GetZolConnectionForAVMP(&connection), "after type 1");
    check.ExpectEqual(static_cast<IUnknown*>(&stage.Connection()), connection, "the session's connection");
    stage.ExpectJournal({LogLine("OnlineManager", "OnlineManager::GetZolConnectionForAVMP, tunnel=1.")});
    check.ExpectEqual(1, stage.Connection().References(), "references of the session's connection");
    check.ExpectEqual(1, stage.Gateway().References(), "references of the gateway's connection");
}

CONTRACT_CHECK(
    Manager, TheTunnelTypeIsRecordedEvenWhenTheCallFails,
    "After GetMeetingTunnel(1) without a session the result is 0 with the session's connection, which is null here.")
{
    Stage stage(check, Scene::Created);
    onlinemanager::IMeetingTunnel* tunnel = nullptr;
    check.ExpectEqual(1, stage.manager->GetMeetingTunnel(TUNNEL_TYPE_PAAS, &tunnel), "GetMeetingTunnel(1)");
    IUnknown* connection = &stage.http;
    check.ExpectEqual(0, stage.manager->GetZolConnectionForAVMP(&connection), "GetZolConnectionForAVMP");
    check.ExpectEqual(nullptr, connection, "the connection");
}

CONTRACT_CHECK(Manager, GetMeetingTunnelWithANullOutputLeavesTheTypeUnchanged,
               "It returns 1, and the type that was chosen before stays.")
{
    Stage stage(check);
    stage.Tunnel(TUNNEL_TYPE_GW);
    check.ExpectEqual(1, stage.manager->GetMeetingTunnel(TUNNEL_TYPE_PAAS, nullptr), "GetMeetingTunnel(1, null)");
    stage.journal.Clear();
    IUnknown* connection = nullptr;
    stage.manager->GetZolConnectionForAVMP(&connection);
    stage.ExpectJournal({LogLine("OnlineManager", "OnlineManager::GetZolConnectionForAVMP, tunnel=2.")});
}

CONTRACT_CHECK(Manager, AnyOtherTypeIsRecordedAsItIs,
               "The connection for the media process exists for the types 1 and 2 only.")
{
    Stage stage(check);
    stage.Tunnel(static_cast<TunnelType>(5));
    IUnknown* connection = &stage.http;
    check.ExpectEqual(E_FAIL, stage.manager->GetZolConnectionForAVMP(&connection), "GetZolConnectionForAVMP");
    check.ExpectEqual(nullptr, connection, "the connection");
    stage.ExpectJournal({
        LogLine("OnlineManager", "OnlineManager::GetZolConnectionForAVMP, tunnel=5."),
        LogLine("OnlineManager", "[error] You must first call GetMeetingTunnel(&ptr) and ptr->JoinMeeting()."),
    });
}

CONTRACT_CHECK(Manager, DestroyTakesTheServicesDownInOrder,
               "Messages, reports, session and gateway unregister at the platform; then both connections are released.")
{
    Stage stage(check);
    check.ExpectEqual(0, stage.manager->Destroy(), "Destroy");
    stage.ExpectJournal({
        LogLine("OnlineManager", "OnlineManager::Destroy."),
        "tmsg1.RemoveListener(listener1)",
        "connection1.RemoveListener(listener1)",
        "connection1.RemoveListener(listener2)",
        LogLine("UserOnlineImp", "UninitModel()"),
        "online1.RemoveListener(listener1)",
        LogLine("PaasOnlineImp", "Logout()"),
        LogLine("PaasOnlineImp", "PaasOnlineImp::Logout is not logged in."),
        LogLine("GwConnectionImp", "UninitModel()"),
        "connection2.RemoveListener(listener1)",
        LogLine("GwConnectionImp", "GwConnectionImp Unregister zol connection listen successed."),
        "connection1.Release() -> 0",
        "connection2.Release() -> 0",
    });
}

CONTRACT_CHECK(Manager, DestroyLogsOutALoggedInUser, "The platform's Logout is called after the listeners are removed.")
{
    Stage stage(check, Scene::LoggedIn);
    stage.manager->Destroy();
    stage.ExpectJournal({
        LogLine("OnlineManager", "OnlineManager::Destroy."),
        "tmsg1.RemoveListener(listener1)",
        "connection1.RemoveListener(listener1)",
        "connection1.RemoveListener(listener2)",
        LogLine("UserOnlineImp", "UninitModel()"),
        "online1.RemoveListener(listener1)",
        LogLine("PaasOnlineImp", "Logout()"),
        "connection1.Logout()",
        LogLine("GwConnectionImp", "UninitModel()"),
        "connection2.RemoveListener(listener1)",
        LogLine("GwConnectionImp", "GwConnectionImp Unregister zol connection listen successed."),
        "connection1.Release() -> 0",
        "connection2.Release() -> 0",
    });
}

CONTRACT_CHECK(Manager, ASecondDestroyOnlyLogs, "It returns 0 and does nothing else.")
{
    Stage stage(check);
    stage.manager->Destroy();
    stage.journal.Clear();
    check.ExpectEqual(0, stage.manager->Destroy(), "Destroy once more");
    stage.ExpectJournal({LogLine("OnlineManager", "OnlineManager::Destroy.")});
}

CONTRACT_CHECK(Manager, DestroyBeforeInitializeOnlyLogs, "There are no services to end.")
{
    Stage stage(check, Scene::Created);
    check.ExpectEqual(0, stage.manager->Destroy(), "Destroy");
    stage.ExpectJournal({LogLine("OnlineManager", "OnlineManager::Destroy.")});
}

CONTRACT_CHECK(
    Manager, DestroyDoesNotReleaseTheHttpObject,
    "The services end without destructors, so the reference that was taken over is never released, on purpose.")
{
    Stage stage(check);
    check.ExpectEqual(2, stage.http.References(), "references with the one handed over");
    stage.ReleaseComponent();
    check.ExpectEqual(2, stage.http.References(), "references after the component's end");
    check.ExpectEqual(0, stage.journal.Count("http."), "calls of the object");
}

CONTRACT_CHECK(Manager, AfterDestroyTheServicesDoNotExist,
               "The getters report missing services, and the tunnel type keeps its value.")
{
    Stage stage(check);
    stage.Tunnel(TUNNEL_TYPE_PAAS);
    stage.manager->Destroy();
    check.ExpectEqual(nullptr, stage.Session(), "the session");
    check.ExpectEqual(nullptr, stage.TMsg(), "the message channel");
    check.ExpectEqual(nullptr, stage.Mds(), "the report client");
    IUnknown* connection = &stage.http;
    check.ExpectEqual(0, stage.manager->GetZolConnectionForAVMP(&connection), "GetZolConnectionForAVMP");
    check.ExpectEqual(nullptr, connection, "the connection");
    stage.ExpectJournal({LogLine("OnlineManager", "OnlineManager::GetZolConnectionForAVMP, tunnel=1.")});
}

CONTRACT_CHECK(Manager, AfterDestroyInitializeBuildsEverythingAnew, "New connections and services are built and work.")
{
    Stage stage(check);
    stage.manager->Destroy();
    check.ExpectEqual(S_OK, stage.manager->Initialize(nullptr), "Initialize");
    check.ExpectEqual(4, stage.platform.connections.size(), "connections made in all");
    SessionNotify listener(stage.journal, "A");
    stage.Session()->AddNotify(&listener);
    stage.platform.connections[2]->Logouted(0);
    check.ExpectEqual(1, stage.journal.Count("A.OnOffline(0)"), "notifications from the new connection");
}

CONTRACT_CHECK(Manager, TwoComponentsInOneProcessAreIndependent,
               "Each has its own connections, services and listeners; the end of one does not affect the other.")
{
    Stage stage(check);
    onlinemanager::IOnlineManager* const second = stage.CreateComponent();
    check.Require(second != nullptr && second->Initialize(nullptr) == S_OK, "a second component is initialised");
    onlinemanager::IPaasOnline* secondSession = nullptr;
    second->GetPaasOnline(&secondSession);
    SessionNotify first(stage.journal, "A");
    SessionNotify other(stage.journal, "B");
    secondSession->AddNotify(&other);
    stage.Session()->AddNotify(&first);
    stage.Connection().Logouted(5);
    stage.platform.connections[2]->Logouted(6);
    check.ExpectEqual(1, stage.journal.Count("A.OnOffline(5)"), "the first one's notification");
    check.ExpectEqual(1, stage.journal.Count("B.OnOffline(6)"), "the second one's notification");
    check.ExpectEqual(2, stage.journal.Count("OnOffline"), "notifications in all");

    stage.ReleaseComponent();
    stage.journal.Clear();
    stage.platform.connections[2]->Logouted(7);
    check.ExpectEqual(1, stage.journal.Count("B.OnOffline(7)"), "notifications of the one that stays");
    second->Destroy();
    check.ExpectEqual(0, second->Release(), "references of the second");
}

} // namespace checks
