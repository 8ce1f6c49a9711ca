#include "checks/Meetings.h"
#include "checks/Presence.h"
#include "checks/Stage.h"

#include <barrier>

namespace checks
{

namespace
{

using onlinemanager::TUNNEL_TYPE_GW;
using onlinemanager::TUNNEL_TYPE_PAAS;

constexpr int kRounds = 150;

std::string Command(const std::string& command, const std::string& subType)
{
    return "{\"message\":{\"command\":\"" + command + "\",\"data\":{\"subType\":\"" + subType + "\"}}}";
}

/// A component whose platform events come on the threads that send them, with listeners that call operations from
/// inside their notifications. The checks look for an exception, a data race, a hang, and an object that is left over.
struct BusyStage : Stage
{
    explicit BusyStage(CheckContext& context)
        : Stage(context, Scene::LoggedIn),
          strategy(journal),
          session(Session()),
          users(Users()),
          paas(Tunnel(TUNNEL_TYPE_PAAS)),
          gateway(Tunnel(TUNNEL_TYPE_GW)),
          mds(Mds())
    {
        session->SetReconnectionStrategy(&strategy);
        session->AddNotify(&sessionListener);
        users->AddNotify(&usersListener);
        paas->AddNotify(&paasListener);
        gateway->AddNotify(&gatewayListener);
        mds->AddNotify(&mdsListener);
        mds->InitMdsClient();
        usersListener.hook = [this](const std::string&) { Known(*users, {1, 7}); };
        mdsListener.hook = [this](const std::string&) { SendReport(); };
        Connection().sender.sendsInline = true;
        Gateway().sender.sendsInline = true;
    }

    ~BusyStage()
    {
        AwaitModuleThreads();
    }

    void SendReport() const
    {
        mds->SendAVQualityInfo(std::make_shared<onlinemanager::AVQualityInfo>());
    }

    /// Runs every job `kRounds` times on its own thread, all threads at the same time.
    void RunAtOnce(const std::vector<std::function<void(int round)>>& jobs)
    {
        std::barrier start(static_cast<std::ptrdiff_t>(jobs.size()));
        std::vector<std::thread> threads;
        for (const auto& job : jobs)
        {
            threads.emplace_back(
                [&start, &job]
                {
                    NameThread("busy");
                    start.arrive_and_wait();
                    for (int round = 0; round < kRounds; ++round)
                    {
                        job(round);
                    }
                });
        }
        for (std::thread& thread : threads)
        {
            thread.join();
        }
        check.ExpectEqual(0, journal.Count("exception left"), "exceptions that reached the platform");
    }

    RecordingStrategy strategy;
    onlinemanager::IPaasOnline* session;
    onlinemanager::IUserOnline* users;
    onlinemanager::IMeetingTunnel* paas;
    onlinemanager::IMeetingTunnel* gateway;
    onlinemanager::IPaasMdsClient* mds;
    SessionNotify sessionListener{journal, "S"};
    UserNotify usersListener{journal, "U"};
    TunnelNotify paasListener{journal, "P"};
    TunnelNotify gatewayListener{journal, "G"};
    MdsNotify mdsListener{journal, "M"};
};

} // namespace

CONTRACT_CHECK(Concurrency, LoginsAndReconnectionsMayComeWhileTheHostWorksWithTheSession,
               "Login, logout, properties and TriggerNotify run on host threads, events on platform threads.")
{
    BusyStage stage(check);
    stage.RunAtOnce({
        [&](int) { stage.session->Login(Stage::Param(), true); },
        [&](int) { stage.session->Relogin(false); },
        [&](int) { stage.session->Logout(); },
        [&](int)
        {
            char text[16];
            stage.session->GetConnectProperty(onlinemanager::CONNECT_PROPERTY_ONLINE, text, sizeof(text));
            stage.session->GetConnectProperty(onlinemanager::CONNECT_PROPERTY_CONFLICT_DEVICE_ID, text, sizeof(text));
        },
        [&](int round)
        {
            if (round % 10 == 0)
            {
                stage.session->TriggerNotify();
            }
            stage.session->SetReconnectionStrategy(round % 2 == 0 ? nullptr : &stage.strategy);
        },
        [&](int round) { stage.Connection().LoginResult(round % 3 == 0 ? 36 : 0, "device", "state", "info"); },
        [&](int) { stage.Connection().Logouted(36); },
        [&](int round)
        {
            stage.strategy.decision = round % 3;
            stage.Connection().ReconnectStart();
            stage.Connection().ReconnectSucess();
            stage.Connection().ReconnectFail(36, "other");
        },
    });
    stage.AwaitModuleThreads();
    check.ExpectEqual(kRounds, stage.journal.Count("S.OnOffline(50002)"), "reported logouts");
    check.ExpectEqual(kRounds, stage.journal.Count("S.OnReconnectSucess(1)"), "reported reconnections");
}

CONTRACT_CHECK(Concurrency, PresenceMayChangeWhileTheHostAsksForIt,
               "Pages, terminal events and logouts run beside queries, refreshes and the custom text.")
{
    BusyStage stage(check);
    stage.RunAtOnce({
        [&](int)
        {
            unsigned requestId = 0;
            stage.users->RefreshCompanyUserStatus(&requestId);
            stage.users->RefreshUserStatus({1, 2}, &requestId);
        },
        [&](int round)
        {
            stage.users->SetSelfCustomInfo("text " + std::to_string(round));
            char text[8];
            stage.users->GetSelfCustomInfo(text, sizeof(text));
        },
        [&](int) {
            Known(*stage.users, {1, 2, 3, 7, 8, 9});
        },
        [&](int round)
        {
            const auto id = static_cast<unsigned>(100 + round);
            stage.Connection().online.RefreshUserStatusFinished(avcore::ZOL_PORT_SUCCESS, id,
                                                                {UserOnPc("1", round % 2), UserOnPc("2", 1)}, 2, 0);
            stage.Connection().online.RefreshUserStatusFinished(avcore::ZOL_PORT_SUCCESS, id, {UserOnPc("3", 1)}, 2, 1);
        },
        [&](int round) {
            stage.Connection().online.UserTerminalStateChanged("7", {"pc", round % 2, std::to_string(round), "{}"});
        },
        [&](int round)
        {
            if (round % 10 == 0)
            {
                stage.Connection().Logouted(0);
                stage.Connection().LoginResult(0);
            }
        },
    });
    check.Expect(stage.journal.Count("U.OnUserStatusChanged(") >= kRounds, "every refresh is reported");
}

CONTRACT_CHECK(Concurrency, InvitationsMayComeAndBeAnsweredWhileTheHostInvitesAndRejects,
               "RejectAllInvite on several threads answers no invitation twice.")
{
    BusyStage stage(check);
    std::atomic<unsigned> nextId{1000};
    const auto rejectAll = [&](int) { stage.users->RejectAllInvite(onlinemanager::REJECT_INVITATION_DECLINED, {}); };
    const auto receive = [&](int) { stage.Connection().online.InviteIncome("5", nextId++, "7", "{}"); };
    stage.RunAtOnce({
        receive,
        receive,
        rejectAll,
        rejectAll,
        [&](int round)
        {
            unsigned inviteId = 0;
            stage.users->InviteUsers(std::vector<unsigned>(25, 8), {}, &inviteId);
            stage.Connection().online.InviteAccepted("8", inviteId, "{}");
            stage.Connection().online.InviteRejected("8", static_cast<unsigned>(round),
                                                     avcore::ZOL_INVITE_REJECT_DECLINED, "{}");
            stage.users->AbandonInvite(inviteId, {8});
        },
        [&](int) { stage.users->AcceptInvite(5, 7, true); },
    });
    rejectAll(0);
    constexpr int kReceived = 2 * kRounds;
    check.ExpectEqual(kReceived, stage.journal.Count("U.OnInviteIncome("), "reported invitations");
    check.ExpectEqual(kReceived, stage.journal.Count("online1.RejectInvite("), "rejections");
    check.ExpectEqual(kReceived, stage.journal.Count("U.OnAbandonInvite("), "reported rejections");
    check.ExpectEqual(0, stage.journal.Count("U.OnInviteAccepted(8, 0)"), "answers that lost their invitation");
}

CONTRACT_CHECK(Concurrency, MeetingsMayChangeWhileTheHostJoinsAndLeaves,
               "On both tunnels, joins and leaves run beside group events.")
{
    BusyStage stage(check);
    stage.RunAtOnce({
        [&](int) { stage.paas->JoinMeeting(SomeMeeting()); },
        [&](int) { stage.paas->LeaveMeeting(); },
        [&](int) { stage.gateway->JoinMeeting(SomeMeeting()); },
        [&](int) { stage.gateway->LeaveMeeting(); },
        [&](int round)
        {
            stage.Connection().JoinGroupResult(0);
            stage.Connection().GroupUserJoined(std::to_string(round).c_str());
            stage.Connection().GroupUserLeaved("7");
            stage.Connection().LeaveGroupResult(0);
        },
        [&](int)
        {
            stage.Connection().ReconnectStart();
            stage.Connection().ReconnectSucess();
        },
        [&](int)
        {
            stage.Gateway().LoginResult(0);
            stage.Gateway().GroupUserJoined("7");
            stage.Gateway().Logouted(0);
        },
        [&](int)
        {
            stage.Gateway().ReconnectStart();
            stage.Gateway().ReconnectSucess();
            stage.Gateway().ReconnectFail(9, nullptr);
        },
    });
    check.ExpectEqual(kRounds, stage.journal.Count("P.OnJoinMeetingResult(0)"), "joins of the PaaS tunnel");
    check.ExpectEqual(kRounds, stage.journal.Count("G.OnJoinMeetingResult(0)"), "joins of the gateway tunnel");
}

CONTRACT_CHECK(Concurrency, CommandsMayComeWhileReportsAreSent, "Commands and messages come on several threads.")
{
    BusyStage stage(check);
    const auto message = [&](int round)
    {
        stage.Connection().tmsg.UserMsgIncome("5", static_cast<unsigned>(round), "text");
        stage.Connection().tmsg.GroupMsgIncome("5", static_cast<unsigned>(round), "text");
    };
    stage.RunAtOnce({
        [&](int) { stage.SendReport(); },
        [&](int) { stage.SendReport(); },
        [&](int) { stage.Connection().mds.MsgData(Command("subscribe_av_quality", "overview").c_str()); },
        [&](int) { stage.Connection().mds.MsgData(Command("unsubscribe_av_quality", "all").c_str()); },
        [&](int round)
        {
            if (round % 10 == 0)
            {
                stage.mds->InitMdsClient();
            }
        },
        message,
        message,
    });
    check.ExpectEqual(4 * kRounds, stage.journal.Count("MsgIncome srcUserId:5"), "messages in the log");
}

CONTRACT_CHECK(Concurrency, TheFirstMessagesMayComeAtTheSameTime,
               "What a service creates at its first use is created once.")
{
    for (int attempt = 0; attempt < 20; ++attempt)
    {
        BusyStage stage(check);
        std::barrier start(4);
        const auto begin = [&](const std::function<void()>& job)
        {
            return std::thread(
                [&start, job]
                {
                    NameThread("busy");
                    start.arrive_and_wait();
                    job();
                });
        };
        std::vector<std::thread> threads;
        threads.push_back(begin([&] { stage.Connection().tmsg.UserMsgIncome("1", 1, "text"); }));
        threads.push_back(begin([&] { stage.Connection().tmsg.GroupMsgIncome("1", 1, "text"); }));
        threads.push_back(
            begin([&] { stage.Connection().mds.MsgData(Command("subscribe_av_quality", "all").c_str()); }));
        threads.push_back(begin([&] { stage.SendReport(); }));
        for (std::thread& thread : threads)
        {
            thread.join();
        }
        check.ExpectEqual(2, stage.journal.Count("MsgIncome srcUserId:1"), "messages in the log");
        check.ExpectEqual(1, stage.journal.Count("M.OnSubscribeAVQualityInfo()"), "reported subscriptions");
    }
}

CONTRACT_CHECK(Concurrency, TheComponentMayBeDestroyedWhileThePlatformSendsEvents,
               "The platform ends the events under way before it removes a listener, and sends none afterwards.")
{
    for (int attempt = 0; attempt < 20; ++attempt)
    {
        BusyStage stage(check);
        // Commands still come during Destroy, but the host must not call the client any more.
        stage.mdsListener.hook = nullptr;
        std::atomic<bool> ends{false};
        std::barrier start(4);
        const auto send = [&](const std::function<void()>& events)
        {
            return std::thread(
                [&start, &ends, events]
                {
                    NameThread("platform");
                    start.arrive_and_wait();
                    while (!ends)
                    {
                        events();
                    }
                });
        };
        std::vector<std::thread> threads;
        threads.push_back(send(
            [&]
            {
                stage.Connection().LoginResult(0);
                stage.Connection().ReconnectStart();
                stage.Connection().GroupUserJoined("7");
                stage.Gateway().LoginResult(0);
                stage.Gateway().ReconnectStart();
            }));
        threads.push_back(send(
            [&]
            {
                Refresh(stage.Connection(), {UserOnPc("7", 1)});
                stage.Connection().online.InviteIncome("5", 901, "7", "{}");
                stage.Connection().online.InviteCanceled("5", 901, avcore::ZOL_INVITE_CANCEL_BY_INVITER);
            }));
        threads.push_back(send(
            [&]
            {
                stage.Connection().tmsg.UserMsgIncome("5", 1, "text");
                stage.Connection().mds.MsgData(Command("subscribe_av_quality", "all").c_str());
            }));
        start.arrive_and_wait();
        check.Expect(stage.journal.Await("U.OnAbandonInvite(", 2), "events reach the listeners");
        check.ExpectEqual(0, stage.manager->Destroy(), "Destroy");
        ends = true;
        for (std::thread& thread : threads)
        {
            thread.join();
        }
        check.ExpectEqual(0, stage.journal.Count("exception left"), "exceptions that reached the platform");
    }
}

} // namespace checks
