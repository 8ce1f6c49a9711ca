#include "checks/Meetings.h"
#include "checks/Presence.h"
#include "checks/Stage.h"

#include <optional>

namespace checks
{

namespace
{

using onlinemanager::TUNNEL_TYPE_GW;
using onlinemanager::TUNNEL_TYPE_PAAS;

/// The service to which the listeners belong.
enum class Service
{
    Session,
    Users,
    PaasTunnel,
    GwTunnel,
    Mds,
    All,
};

const std::string kInvitation = R"({"version":"1.0","method":"InviteUser","params":{"inviteCode":7}})";

std::string Command(const std::string& command)
{
    return "{\"message\":{\"command\":\"" + command + "\",\"data\":{\"subType\":\"all\"}}}";
}

/// A component with two listeners at each service: A, which calls an operation from inside its notification, then B.
/// The user is logged in, the gateway is in a meeting, both reports are subscribed, invitations 901 and 902 are open,
/// the joins of the PaaS tunnel wait for their results, and company refresh 102 has not ended.
struct ReentrantStage : Stage
{
    using Operation = void (*)(ReentrantStage&);

    explicit ReentrantStage(CheckContext& context)
        : Stage(context, Scene::LoggedIn),
          strategy(journal),
          session(Session()),
          users(Users()),
          paas(Tunnel(TUNNEL_TYPE_PAAS)),
          gateway(Tunnel(TUNNEL_TYPE_GW)),
          mds(Mds()),
          tmsg(TMsg())
    {
        Register(*session, sessionA, sessionB);
        Register(*users, usersA, usersB);
        Register(*paas, paasA, paasB);
        Register(*gateway, gatewayA, gatewayB);
        Register(*mds, mdsA, mdsB);
        session->SetReconnectionStrategy(&strategy);
        mds->InitMdsClient();
        Connection().mds.MsgData(Command("subscribe_av_quality").c_str());
        gateway->JoinMeeting(SomeMeeting());
        Gateway().LoginResult(0);
        paas->JoinMeeting(SomeMeeting());
        Connection().online.InviteIncome("5", 901, "7", kInvitation.c_str());
        Connection().online.InviteIncome("6", 902, "7", kInvitation.c_str());
        Refresh(Connection(), {UserOnPc("7", 1)});
        unsigned requestId = 0;
        users->RefreshCompanyUserStatus(&requestId);
        factory.center.manager.level = Quenda::LOG_LEVEL_ERROR;
        journal.Clear();
    }

    ~ReentrantStage()
    {
        AwaitModuleThreads(); // they may still call the listeners, which are destroyed first
    }

    /// Lets A call the operation from inside its next notification that begins with this text.
    void Arm(const std::string& event, Operation operation)
    {
        m_event = event;
        m_operation = operation;
    }

    /// Must be called at each notification of A, and at each other call from the component to the host.
    void Enter(const std::string& event)
    {
        if (event.starts_with(m_event))
        {
            if (const Operation operation = m_operation.exchange(nullptr))
            {
                operation(*this);
                journal.Add("operation done");
            }
        }
    }

    RecordingStrategy strategy;
    onlinemanager::IPaasOnline* session;
    onlinemanager::IUserOnline* users;
    onlinemanager::IMeetingTunnel* paas;
    onlinemanager::IMeetingTunnel* gateway;
    onlinemanager::IPaasMdsClient* mds;
    onlinemanager::IPaasTMsg* tmsg;

    SessionNotify sessionA{journal, "A"}, sessionB{journal, "B"}, sessionC{journal, "C"};
    UserNotify usersA{journal, "A"}, usersB{journal, "B"}, usersC{journal, "C"};
    TunnelNotify paasA{journal, "A"}, paasB{journal, "B"}, paasC{journal, "C"};
    TunnelNotify gatewayA{journal, "A"}, gatewayB{journal, "B"}, gatewayC{journal, "C"};
    MdsNotify mdsA{journal, "A"}, mdsB{journal, "B"}, mdsC{journal, "C"};

private:
    template <typename Target, typename Notify>
    void Register(Target& service, Notify& first, Notify& second)
    {
        first.hook = [this](const std::string& event) { Enter(event); };
        service.AddNotify(&first);
        service.AddNotify(&second);
    }

    std::string m_event;
    std::atomic<Operation> m_operation{nullptr};
};

struct Notification
{
    const char* event; ///< its beginning in the journal
    Service service;
    ReentrantStage::Operation cause;
};

const Notification kNotifications[] = {
    {"OnLoginSuccess()", Service::Session, [](ReentrantStage& stage) { stage.Connection().LoginResult(0); }},
    {"OnLoginSuccess()", Service::Session,
     [](ReentrantStage& stage)
     {
         stage.session->TriggerNotify();
         stage.AwaitModuleThreads();
     }},
    {"OnOffline(36)", Service::Session,
     [](ReentrantStage& stage) { stage.Connection().LoginResult(36, "device", "state", "info"); }},
    {"OnOffline(50002)", Service::Session, [](ReentrantStage& stage) { stage.Connection().Logouted(36); }},
    {"OnReadyReconnect(1)", Service::Session, [](ReentrantStage& stage) { stage.Connection().ReconnectStart(); }},
    {"OnReconnectStart(1)", Service::Session, [](ReentrantStage& stage) { stage.Connection().ReconnectStart(); }},
    {"OnReconnectFail(1, 50010)", Service::Session,
     [](ReentrantStage& stage)
     {
         stage.strategy.decision = avcore::ZOL_RECONNECT_STOP;
         stage.Connection().ReconnectStart();
     }},
    {"OnReconnectSucess(1)", Service::Session, [](ReentrantStage& stage) { stage.Connection().ReconnectSucess(); }},
    {"OnReconnectFail(1, 36)", Service::Session,
     [](ReentrantStage& stage) { stage.Connection().ReconnectFail(36, "device"); }},
    {"OnReadyReconnect(2)", Service::Session, [](ReentrantStage& stage) { stage.Gateway().ReconnectStart(); }},
    {"OnReconnectStart(2)", Service::Session, [](ReentrantStage& stage) { stage.Gateway().ReconnectStart(); }},
    {"OnReconnectSucess(2)", Service::Session, [](ReentrantStage& stage) { stage.Gateway().ReconnectSucess(); }},
    {"OnReconnectFail(2, 9)", Service::Session,
     [](ReentrantStage& stage) { stage.Gateway().ReconnectFail(9, "text"); }},

    {"OnJoinMeetingResult(0)", Service::PaasTunnel,
     [](ReentrantStage& stage) { stage.Connection().JoinGroupResult(0); }},
    {"OnJoinMeetingResult(50001)", Service::PaasTunnel,
     [](ReentrantStage& stage) { stage.Connection().ReconnectStart(); }},
    {"OnLeaveMeetingResult(0)", Service::PaasTunnel,
     [](ReentrantStage& stage) { stage.Connection().LeaveGroupResult(0); }},
    {"OnUserJoined(7)", Service::PaasTunnel, [](ReentrantStage& stage) { stage.Connection().GroupUserJoined("7"); }},
    {"OnUserLeaved(7)", Service::PaasTunnel, [](ReentrantStage& stage) { stage.Connection().GroupUserLeaved("7"); }},

    {"OnJoinMeetingResult(0)", Service::GwTunnel, [](ReentrantStage& stage) { stage.Gateway().LoginResult(0); }},
    {"OnJoinMeetingResult(50001)", Service::GwTunnel,
     [](ReentrantStage& stage)
     {
         stage.gateway->JoinMeeting(SomeMeeting());
         stage.Gateway().ReconnectStart();
     }},
    {"OnLeaveMeetingResult(36)", Service::GwTunnel, [](ReentrantStage& stage) { stage.Gateway().Logouted(36); }},
    {"OnUserJoined(7)", Service::GwTunnel, [](ReentrantStage& stage) { stage.Gateway().GroupUserJoined("7"); }},
    {"OnUserLeaved(7)", Service::GwTunnel, [](ReentrantStage& stage) { stage.Gateway().GroupUserLeaved("7"); }},

    {"OnUserStatusChanged([8,7])", Service::Users,
     [](ReentrantStage& stage) { Refresh(stage.Connection(), {UserOnPc("8", 1)}, 102); }},
    {"OnUserStatusRefreshed(102, 0)", Service::Users,
     [](ReentrantStage& stage) { Refresh(stage.Connection(), {UserOnPc("8", 1)}, 102); }},
    {"OnUserStatusChanged([9])", Service::Users,
     [](ReentrantStage& stage) {
         stage.Connection().online.UserTerminalStateChanged("9", {"pc", 1, "", "{}"});
     }},
    {"OnInviteIncome(5, 903", Service::Users,
     [](ReentrantStage& stage) { stage.Connection().online.InviteIncome("5", 903, "7", kInvitation.c_str()); }},
    {"OnInviteIncome(52011, 501", Service::Users,
     [](ReentrantStage& stage)
     {
         unsigned inviteId = 0;
         stage.users->InviteUsers({8, 52011}, {}, &inviteId);
     }},
    {"OnInviteAccepted(8, 0)", Service::Users,
     [](ReentrantStage& stage) { stage.Connection().online.InviteAccepted("8", 999, "{}"); }},
    {"OnInviteRejected(8, 0, 1)", Service::Users,
     [](ReentrantStage& stage)
     { stage.Connection().online.InviteRejected("8", 999, avcore::ZOL_INVITE_REJECT_DECLINED, "{}"); }},
    {"OnAbandonInvite(5, 901, 1)", Service::Users,
     [](ReentrantStage& stage)
     { stage.Connection().online.InviteCanceled("5", 901, avcore::ZOL_INVITE_CANCEL_BY_INVITER); }},
    {"OnAbandonInvite(", Service::Users,
     [](ReentrantStage& stage) { stage.users->RejectAllInvite(onlinemanager::REJECT_INVITATION_DECLINED, {}); }},

    {"OnSubscribeAVQualityInfo()", Service::Mds,
     [](ReentrantStage& stage) { stage.Connection().mds.MsgData(Command("subscribe_av_quality").c_str()); }},
    {"OnUnSubscribeAVQualityInfo()", Service::Mds,
     [](ReentrantStage& stage) { stage.Connection().mds.MsgData(Command("unsubscribe_av_quality").c_str()); }},
};

struct HostOperation
{
    const char* name;
    ReentrantStage::Operation call;
    std::optional<Service> endsDeliveries; ///< the service whose listeners it removes, if any
};

template <typename Component>
Component* Got(HRESULT (onlinemanager::IOnlineManager::*getter)(Component**), ReentrantStage& stage)
{
    Component* component = nullptr;
    (stage.manager->*getter)(&component);
    return component;
}

const HostOperation kOperations[] = {
    {"IPaasOnline::AddNotify", [](ReentrantStage& stage) { stage.session->AddNotify(&stage.sessionC); }, {}},
    {"IPaasOnline::RemoveNotify of the listener itself",
     [](ReentrantStage& stage) { stage.session->RemoveNotify(&stage.sessionA); },
     {}},
    {"IPaasOnline::RemoveAllNotify", [](ReentrantStage& stage) { stage.session->RemoveAllNotify(); }, Service::Session},
    {"IPaasOnline::Login", [](ReentrantStage& stage) { stage.session->Login(Stage::Param(), true); }, {}},
    {"IPaasOnline::RequestCPAddress",
     [](ReentrantStage& stage)
     {
         onlinemanager::LoginParam param = Stage::Param();
         param.server = "https://cp.example";
         stage.session->RequestCPAddress(param);
     },
     {}},
    {"IPaasOnline::Relogin", [](ReentrantStage& stage) { stage.session->Relogin(true); }, {}},
    {"IPaasOnline::Logout", [](ReentrantStage& stage) { stage.session->Logout(); }, {}},
    {"IPaasOnline::GetConnectProperty",
     [](ReentrantStage& stage)
     {
         char text[16];
         stage.session->GetConnectProperty(onlinemanager::CONNECT_PROPERTY_ONLINE, text, sizeof(text));
     },
     {}},
    {"IPaasOnline::TriggerNotify", [](ReentrantStage& stage) { stage.session->TriggerNotify(); }, {}},
    {"IPaasOnline::GetUserOnline",
     [](ReentrantStage& stage)
     {
         onlinemanager::IUserOnline* users = nullptr;
         stage.session->GetUserOnline(&users);
     },
     {}},
    {"IPaasOnline::GetMeetingTunnel",
     [](ReentrantStage& stage)
     {
         onlinemanager::IMeetingTunnel* tunnel = nullptr;
         stage.session->GetMeetingTunnel(&tunnel);
     },
     {}},
    {"IPaasOnline::SetReconnectionStrategy",
     [](ReentrantStage& stage) { stage.session->SetReconnectionStrategy(nullptr); },
     {}},

    {"IUserOnline::AddNotify", [](ReentrantStage& stage) { stage.users->AddNotify(&stage.usersC); }, {}},
    {"IUserOnline::RemoveNotify of the listener itself",
     [](ReentrantStage& stage) { stage.users->RemoveNotify(&stage.usersA); },
     {}},
    {"IUserOnline::RemoveAllNotify", [](ReentrantStage& stage) { stage.users->RemoveAllNotify(); }, Service::Users},
    {"IUserOnline::QueryUserStatus",
     [](ReentrantStage& stage) {
         Known(*stage.users, {7, 8});
     },
     {}},
    {"IUserOnline::RefreshCompanyUserStatus",
     [](ReentrantStage& stage)
     {
         unsigned requestId = 0;
         stage.users->RefreshCompanyUserStatus(&requestId);
     },
     {}},
    {"IUserOnline::RefreshUserStatus",
     [](ReentrantStage& stage)
     {
         unsigned requestId = 0;
         stage.users->RefreshUserStatus({7}, &requestId);
     },
     {}},
    {"IUserOnline::SetSelfCustomInfo", [](ReentrantStage& stage) { stage.users->SetSelfCustomInfo("text"); }, {}},
    {"IUserOnline::GetSelfCustomInfo",
     [](ReentrantStage& stage)
     {
         char text[16];
         stage.users->GetSelfCustomInfo(text, sizeof(text));
     },
     {}},
    {"IUserOnline::InviteUsers of oneself and others",
     [](ReentrantStage& stage)
     {
         unsigned inviteId = 0;
         stage.users->InviteUsers({8, 52011}, {}, &inviteId);
     },
     {}},
    {"IUserOnline::AcceptInvite", [](ReentrantStage& stage) { stage.users->AcceptInvite(5, 901, true); }, {}},
    {"IUserOnline::AcceptInvite, declining",
     [](ReentrantStage& stage) { stage.users->AcceptInvite(5, 901, false); },
     {}},
    {"IUserOnline::RejectAllInvite",
     [](ReentrantStage& stage) { stage.users->RejectAllInvite(onlinemanager::REJECT_INVITATION_DECLINED, {}); },
     {}},
    {"IUserOnline::AbandonInvite", [](ReentrantStage& stage) { stage.users->AbandonInvite(501, {8}); }, {}},

    {"IMeetingTunnel::AddNotify", [](ReentrantStage& stage) { stage.paas->AddNotify(&stage.paasC); }, {}},
    {"IMeetingTunnel::RemoveNotify of the listener itself",
     [](ReentrantStage& stage) { stage.paas->RemoveNotify(&stage.paasA); },
     {}},
    {"IMeetingTunnel::RemoveAllNotify", [](ReentrantStage& stage) { stage.paas->RemoveAllNotify(); },
     Service::PaasTunnel},
    {"IMeetingTunnel::JoinMeeting", [](ReentrantStage& stage) { stage.paas->JoinMeeting(SomeMeeting()); }, {}},
    {"IMeetingTunnel::LeaveMeeting", [](ReentrantStage& stage) { stage.paas->LeaveMeeting(); }, {}},
    {"IMeetingTunnel::AddNotify of the gateway",
     [](ReentrantStage& stage) { stage.gateway->AddNotify(&stage.gatewayC); },
     {}},
    {"IMeetingTunnel::RemoveNotify of the gateway",
     [](ReentrantStage& stage) { stage.gateway->RemoveNotify(&stage.gatewayA); },
     {}},
    {"IMeetingTunnel::RemoveAllNotify of the gateway", [](ReentrantStage& stage) { stage.gateway->RemoveAllNotify(); },
     Service::GwTunnel},
    {"IMeetingTunnel::JoinMeeting of the gateway",
     [](ReentrantStage& stage) { stage.gateway->JoinMeeting(SomeMeeting()); },
     {}},
    {"IMeetingTunnel::LeaveMeeting of the gateway", [](ReentrantStage& stage) { stage.gateway->LeaveMeeting(); }, {}},

    {"IPaasMdsClient::AddNotify", [](ReentrantStage& stage) { stage.mds->AddNotify(&stage.mdsC); }, {}},
    {"IPaasMdsClient::RemoveNotify of the listener itself",
     [](ReentrantStage& stage) { stage.mds->RemoveNotify(&stage.mdsA); },
     {}},
    {"IPaasMdsClient::RemoveAllNotify", [](ReentrantStage& stage) { stage.mds->RemoveAllNotify(); }, Service::Mds},
    {"IPaasMdsClient::InitMdsClient", [](ReentrantStage& stage) { stage.mds->InitMdsClient(); }, {}},
    {"IPaasMdsClient::SendAVQualityInfo",
     [](ReentrantStage& stage) { stage.mds->SendAVQualityInfo(std::make_shared<onlinemanager::AVQualityInfo>()); },
     {}},
    {"IPaasTMsg::RemoveAllNotify", [](ReentrantStage& stage) { stage.tmsg->RemoveAllNotify(); }, {}},

    {"IOnlineManager::QueryInterface and Release",
     [](ReentrantStage& stage)
     {
         void* same = nullptr;
         stage.manager->QueryInterface(onlinemanager::IID_OnlineManager, &same);
         stage.manager->Release();
     },
     {}},
    {"IOnlineManager::Initialize", [](ReentrantStage& stage) { stage.manager->Initialize(nullptr); }, {}},
    {"IOnlineManager::GetZolConnectionForAVMP",
     [](ReentrantStage& stage) { Got(&onlinemanager::IOnlineManager::GetZolConnectionForAVMP, stage); },
     {}},
    {"IOnlineManager::GetPaasOnline",
     [](ReentrantStage& stage) { Got(&onlinemanager::IOnlineManager::GetPaasOnline, stage); },
     {}},
    {"IOnlineManager::GetMeetingTunnel",
     [](ReentrantStage& stage)
     {
         onlinemanager::IMeetingTunnel* tunnel = nullptr;
         stage.manager->GetMeetingTunnel(TUNNEL_TYPE_PAAS, &tunnel);
     },
     {}},
    {"IOnlineManager::GetPaasMdsClient",
     [](ReentrantStage& stage) { Got(&onlinemanager::IOnlineManager::GetPaasMdsClient, stage); },
     {}},
    {"IOnlineManager::GetPaasTMsg",
     [](ReentrantStage& stage) { Got(&onlinemanager::IOnlineManager::GetPaasTMsg, stage); },
     {}},
    {"IOnlineManager::Destroy", [](ReentrantStage& stage) { stage.manager->Destroy(); }, Service::All},
    {"IOnlineManager::Destroy and Initialize",
     [](ReentrantStage& stage)
     {
         stage.manager->Destroy();
         stage.manager->Initialize(nullptr);
     },
     Service::All},
};

void CheckOne(CheckContext& check, const Notification& notification, const HostOperation& operation)
{
    ReentrantStage stage(check);
    stage.Arm(notification.event, operation.call);
    notification.cause(stage);
    const std::string pair = std::string(operation.name) + " from inside " + notification.event;
    check.ExpectEqual(1, stage.journal.Count("operation done"), "returns of " + pair);
    const bool ends = operation.endsDeliveries == Service::All || operation.endsDeliveries == notification.service;
    const size_t heard = stage.journal.Count("B." + std::string(notification.event));
    check.Expect(ends ? heard == 0 : heard >= 1,
                 (ends ? "the next listener gets nothing after " : "the next listener gets its event after ") + pair);
    check.ExpectEqual(0, stage.journal.Count("exception left"), "exceptions after " + pair);
}

void CheckAll(CheckContext& check, Service service)
{
    for (const Notification& notification : kNotifications)
    {
        if (notification.service != service)
        {
            continue;
        }
        for (const HostOperation& operation : kOperations)
        {
            CheckOne(check, notification, operation);
        }
    }
}

} // namespace

CONTRACT_CHECK(Reentrancy, EveryOperationMayBeCalledFromInsideEveryNotificationOfTheSession,
               "Also Destroy; the later listeners get the event unless the operation removed them.")
{
    CheckAll(check, Service::Session);
}

CONTRACT_CHECK(Reentrancy, EveryOperationMayBeCalledFromInsideEveryNotificationOfThePaasTunnel,
               "Also Destroy; the later listeners get the event unless the operation removed them.")
{
    CheckAll(check, Service::PaasTunnel);
}

CONTRACT_CHECK(Reentrancy, EveryOperationMayBeCalledFromInsideEveryNotificationOfTheGatewayTunnel,
               "Also Destroy; the later listeners get the event unless the operation removed them.")
{
    CheckAll(check, Service::GwTunnel);
}

CONTRACT_CHECK(Reentrancy, EveryOperationMayBeCalledFromInsideEveryNotificationOfTheUserService,
               "Also Destroy; the later listeners get the event unless the operation removed them.")
{
    CheckAll(check, Service::Users);
}

CONTRACT_CHECK(Reentrancy, EveryOperationMayBeCalledFromInsideEveryNotificationOfTheReportClient,
               "Also Destroy; the later listeners get the event unless the operation removed them.")
{
    CheckAll(check, Service::Mds);
}

CONTRACT_CHECK(Reentrancy, EveryOperationMayBeCalledFromInsideAQuery, "Also Destroy; the query continues to its end.")
{
    for (const HostOperation& operation : kOperations)
    {
        ReentrantStage stage(check);
        stage.Arm("query", operation.call);
        std::vector<unsigned> answered;
        const bool result = stage.users->QueryUserStatus({7, 8},
                                                         [&](const onlinemanager::UserOnlineInfo& user)
                                                         {
                                                             stage.Enter("query");
                                                             answered.push_back(user.user_id);
                                                         });
        check.ExpectEqual(true, result, std::string("QueryUserStatus around ") + operation.name);
        check.ExpectEqual(std::vector<unsigned>{7, 8}, answered, std::string("answers around ") + operation.name);
        check.ExpectEqual(1, stage.journal.Count("operation done"), std::string("returns of ") + operation.name);
    }
}

CONTRACT_CHECK(Reentrancy, EveryOperationMayBeCalledFromInsideTheStrategy,
               "Also Destroy; the platform still gets the strategy's answer.")
{
    class CallingStrategy final : public onlinemanager::IReconnectionStrategy
    {
    public:
        explicit CallingStrategy(ReentrantStage& stage) : m_stage(stage) {}

        int32_t CheckReconnect() override
        {
            m_stage.Enter("strategy");
            return avcore::ZOL_RECONNECT_GO_ON;
        }

    private:
        ReentrantStage& m_stage;
    };
    for (const HostOperation& operation : kOperations)
    {
        ReentrantStage stage(check);
        CallingStrategy strategy(stage);
        stage.session->SetReconnectionStrategy(&strategy);
        stage.Arm("strategy", operation.call);
        const std::vector<int32_t> answers = stage.Connection().ReconnectStart();
        check.ExpectEqual(1, stage.journal.Count("operation done"), std::string("returns of ") + operation.name);
        check.Expect(!answers.empty() && answers.back() == avcore::ZOL_RECONNECT_GO_ON,
                     std::string("answer after ") + operation.name);
    }
}

CONTRACT_CHECK(Reentrancy, NotificationsInsideNotificationsReachEveryListener,
               "RejectAllInvite from inside a notification of RejectAllInvite answers each invitation once.")
{
    ReentrantStage stage(check);
    const auto rejectAll = [](ReentrantStage& host)
    { host.users->RejectAllInvite(onlinemanager::REJECT_INVITATION_DECLINED, {}); };
    stage.Arm("OnAbandonInvite(", rejectAll);
    rejectAll(stage);
    for (const char* const line :
         {"online1.RejectInvite(\"5\", 901,", "online1.RejectInvite(\"6\", 902,", "A.OnAbandonInvite(5, 901, 273)",
          "B.OnAbandonInvite(5, 901, 273)", "A.OnAbandonInvite(6, 902, 273)", "B.OnAbandonInvite(6, 902, 273)"})
    {
        check.ExpectEqual(1, stage.journal.Count(line), line);
    }
}

} // namespace checks
