#include "checks/Stage.h"

#include <barrier>
#include <thread>

namespace checks
{

namespace
{

/// Three listeners of the session, and an event whose code identifies each delivery.
struct Listeners
{
    explicit Listeners(CheckContext& check) : stage(check), session(stage.Session()) {}

    ~Listeners()
    {
        session->RemoveAllNotify();
    }

    void Deliver(int code)
    {
        stage.Connection().LoginResult(code);
    }

    /// The notifications since the last call, without log lines.
    void ExpectNotifications(const std::vector<std::string>& expected, Where where = Where::Here())
    {
        std::vector<JournalEntry> entries = stage.journal.Take();
        std::erase_if(entries, [](const JournalEntry& entry) { return entry.text.starts_with("log "); });
        stage.check.ExpectLines(expected, entries, where);
    }

    Stage stage;
    onlinemanager::IPaasOnline* session;
    SessionNotify a{stage.journal, "A"};
    SessionNotify b{stage.journal, "B"};
    SessionNotify c{stage.journal, "C"};
};

/// A listener that only counts, from any thread.
class CountingNotify final : public onlinemanager::IPaasOnlineNotify
{
public:
    void OnLoginSuccess() override
    {
        ++calls;
    }
    void OnOffline(onlinemanager::ErrCode /*code*/) override
    {
        ++calls;
    }

    std::atomic<int> calls{0};
};

/// A removes itself and B, starts another delivery, which drops their entries, and then adds C.
void ExpectOnlyTheAddedListenerIsCalled(Listeners& list)
{
    list.session->AddNotify(&list.a);
    list.session->AddNotify(&list.b);
    list.stage.Connection().sender.sendsInline = true;
    list.a.hook = [&](const std::string& event)
    {
        if (event == "OnOffline(1)")
        {
            list.session->RemoveNotify(&list.a);
            list.session->RemoveNotify(&list.b);
            list.Deliver(2);
            list.session->AddNotify(&list.c);
        }
    };
    list.Deliver(1);
    list.ExpectNotifications({"A.OnOffline(1)", "C.OnOffline(1)"});
}

} // namespace

CONTRACT_CHECK(NotifyList, DeliversInOrderOfFirstRegistration,
               "Every listener is called once, in the order of registration.")
{
    Listeners list(check);
    list.session->AddNotify(&list.b);
    list.session->AddNotify(&list.a);
    list.session->AddNotify(&list.c);
    list.Deliver(1);
    list.ExpectNotifications({"[platform] B.OnOffline(1)", "[platform] A.OnOffline(1)", "[platform] C.OnOffline(1)"});
}

CONTRACT_CHECK(NotifyList, NullAndUnknownListenersAreIgnored,
               "Adding null, removing null and removing an unknown listener do nothing.")
{
    Listeners list(check);
    list.session->AddNotify(nullptr);
    list.session->RemoveNotify(nullptr);
    list.session->RemoveNotify(&list.a);
    list.session->AddNotify(&list.b);
    list.session->RemoveNotify(&list.c);
    list.session->RemoveNotify(nullptr);
    list.Deliver(1);
    list.ExpectNotifications({"B.OnOffline(1)"});
}

CONTRACT_CHECK(NotifyList, AListenerAddedTwiceIsCalledOnce, "There are no duplicates.")
{
    Listeners list(check);
    list.session->AddNotify(&list.a);
    list.session->AddNotify(&list.a);
    list.Deliver(1);
    list.ExpectNotifications({"A.OnOffline(1)"});
}

CONTRACT_CHECK(NotifyList, AddedTwiceAndRemovedOnceAListenerIsUnregistered, "One removal is enough.")
{
    Listeners list(check);
    list.session->AddNotify(&list.a);
    list.session->AddNotify(&list.a);
    list.session->RemoveNotify(&list.a);
    list.Deliver(1);
    list.ExpectNotifications({});
}

CONTRACT_CHECK(NotifyList, AddedAgainAListenerIsBackInItsFirstPlace,
               "A listener that no delivery has dropped yet keeps its place.")
{
    Listeners list(check);
    list.session->AddNotify(&list.a);
    list.session->AddNotify(&list.b);
    list.session->RemoveNotify(&list.a);
    list.session->AddNotify(&list.a);
    list.Deliver(1);
    list.ExpectNotifications({"A.OnOffline(1)", "B.OnOffline(1)"});
}

CONTRACT_CHECK(NotifyList, ADeliveryForgetsRemovedListeners,
               "A listener added again after a delivery that dropped it stands at the end.")
{
    Listeners list(check);
    list.session->AddNotify(&list.a);
    list.session->AddNotify(&list.b);
    list.session->RemoveNotify(&list.a);
    list.Deliver(1);
    list.session->AddNotify(&list.a);
    list.Deliver(2);
    list.ExpectNotifications({"B.OnOffline(1)", "B.OnOffline(2)", "A.OnOffline(2)"});
}

CONTRACT_CHECK(NotifyList, RemoveAllForgetsEveryListener, "No listener is called, and each can be added again.")
{
    Listeners list(check);
    list.session->AddNotify(&list.a);
    list.session->AddNotify(&list.b);
    list.session->RemoveAllNotify();
    list.Deliver(1);
    list.session->AddNotify(&list.b);
    list.session->AddNotify(&list.a);
    list.Deliver(2);
    list.ExpectNotifications({"B.OnOffline(2)", "A.OnOffline(2)"});
}

CONTRACT_CHECK(NotifyList, AListenerAddedAgainAfterRemoveAllHasLostItsOldPlace,
               "RemoveAllNotify deletes the entries; it does not only mark them.")
{
    Listeners list(check);
    list.session->AddNotify(&list.a);
    list.session->AddNotify(&list.b);
    list.session->RemoveAllNotify();
    list.session->AddNotify(&list.b);
    list.session->AddNotify(&list.a);
    list.Deliver(1);
    list.ExpectNotifications({"B.OnOffline(1)", "A.OnOffline(1)"});
}

CONTRACT_CHECK(NotifyList, AListenerRemovedDuringADeliveryIsSkipped,
               "The delivery checks each entry when it reaches it, and the next delivery deletes the entry.")
{
    Listeners list(check);
    list.session->AddNotify(&list.a);
    list.session->AddNotify(&list.b);
    list.session->AddNotify(&list.c);
    list.a.hook = [&](const std::string&) { list.session->RemoveNotify(&list.b); };
    list.Deliver(1);
    list.a.hook = nullptr;
    list.session->AddNotify(&list.b);
    list.Deliver(2);
    list.ExpectNotifications(
        {"A.OnOffline(1)", "C.OnOffline(1)", "A.OnOffline(2)", "B.OnOffline(2)", "C.OnOffline(2)"});
}

CONTRACT_CHECK(NotifyList, AListenerMayRemoveItself, "It is not called again, and the others still are.")
{
    Listeners list(check);
    list.session->AddNotify(&list.a);
    list.session->AddNotify(&list.b);
    list.a.hook = [&](const std::string&) { list.session->RemoveNotify(&list.a); };
    list.Deliver(1);
    list.Deliver(2);
    list.ExpectNotifications({"A.OnOffline(1)", "B.OnOffline(1)", "B.OnOffline(2)"});
}

CONTRACT_CHECK(NotifyList, AListenerRemovedAndAddedAgainDuringADeliveryIsReached,
               "It is active when the delivery reaches it.")
{
    Listeners list(check);
    list.session->AddNotify(&list.a);
    list.session->AddNotify(&list.b);
    list.a.hook = [&](const std::string&)
    {
        list.session->RemoveNotify(&list.b);
        list.session->AddNotify(&list.b);
    };
    list.Deliver(1);
    list.ExpectNotifications({"A.OnOffline(1)", "B.OnOffline(1)"});
}

CONTRACT_CHECK(NotifyList, AListenerAppendedDuringADeliveryIsReached,
               "The delivery uses the list as it is at each step.")
{
    Listeners list(check);
    list.session->AddNotify(&list.a);
    list.a.hook = [&](const std::string&) { list.session->AddNotify(&list.b); };
    list.b.hook = [&](const std::string&) { list.session->AddNotify(&list.c); };
    list.Deliver(1);
    list.ExpectNotifications({"A.OnOffline(1)", "B.OnOffline(1)", "C.OnOffline(1)"});
}

CONTRACT_CHECK(NotifyList, RemoveAllEndsADelivery,
               "The delivery under way ends; a listener that is added afterwards is called from the next delivery on.")
{
    Listeners list(check);
    list.session->AddNotify(&list.a);
    list.session->AddNotify(&list.b);
    list.a.hook = [&](const std::string&)
    {
        list.session->RemoveAllNotify();
        list.session->AddNotify(&list.c);
    };
    list.Deliver(1);
    list.ExpectNotifications({"A.OnOffline(1)"});
    list.Deliver(2);
    list.ExpectNotifications({"C.OnOffline(2)"});
}

CONTRACT_CHECK(NotifyList, ADeliveryInsideADeliveryReachesEveryListener,
               "The inner delivery ends before the outer one continues.")
{
    Listeners list(check);
    list.session->AddNotify(&list.a);
    list.session->AddNotify(&list.b);
    list.stage.Connection().sender.sendsInline = true;
    list.a.hook = [&](const std::string& event)
    {
        if (event == "OnOffline(1)")
        {
            list.Deliver(2);
        }
    };
    list.Deliver(1);
    list.ExpectNotifications({"A.OnOffline(1)", "A.OnOffline(2)", "B.OnOffline(2)", "B.OnOffline(1)"});
}

CONTRACT_CHECK(NotifyList, AnInnerDeliveryThatDropsTheCurrentListenerLeavesTheOuterOneGoingOn,
               "The entry of the outer delivery is deleted, and the outer delivery still reaches the entries after it.")
{
    Listeners list(check);
    list.session->AddNotify(&list.a);
    list.session->AddNotify(&list.b);
    list.stage.Connection().sender.sendsInline = true;
    list.a.hook = [&](const std::string& event)
    {
        if (event == "OnOffline(1)")
        {
            list.session->RemoveNotify(&list.a);
            list.Deliver(2);
            list.session->AddNotify(&list.c);
        }
    };
    list.Deliver(1);
    list.ExpectNotifications({"A.OnOffline(1)", "B.OnOffline(2)", "B.OnOffline(1)", "C.OnOffline(1)"});
}

CONTRACT_CHECK(NotifyList, AnInnerDeliveryMayDropEverythingButTheEnd,
               "The outer delivery then reaches only listeners that were added afterwards.")
{
    Listeners list(check);
    ExpectOnlyTheAddedListenerIsCalled(list);
}

CONTRACT_CHECK(NotifyList, ARemoveAllEndsOnlyTheWalksOfItsTime,
               "A later delivery whose listeners remove all still reaches listeners that they add.")
{
    Listeners list(check);
    list.session->RemoveAllNotify();
    ExpectOnlyTheAddedListenerIsCalled(list);
}

CONTRACT_CHECK(NotifyList, AnExceptionOfAListenerDoesNotReachThePlatform,
               "The exception ends there, and the next listener is still called.")
{
    Listeners list(check);
    list.session->AddNotify(&list.a);
    list.session->AddNotify(&list.b);
    list.a.hook = [](const std::string&) { throw std::runtime_error("the host's own"); };
    list.Deliver(1);
    list.ExpectNotifications({"A.OnOffline(1)", "B.OnOffline(1)"});
}

CONTRACT_CHECK(NotifyList, EveryServiceHasItsOwnList,
               "Session, both tunnels, user service and report client each have their own listeners and order.")
{
    Stage stage(check, Scene::LoggedIn);
    TunnelNotify paas1(stage.journal, "P1");
    TunnelNotify paas2(stage.journal, "P2");
    TunnelNotify gateway1(stage.journal, "G1");
    TunnelNotify gateway2(stage.journal, "G2");
    UserNotify user1(stage.journal, "U1");
    UserNotify user2(stage.journal, "U2");
    MdsNotify mds1(stage.journal, "M1");
    MdsNotify mds2(stage.journal, "M2");
    onlinemanager::IMeetingTunnel* const paas = stage.Tunnel(onlinemanager::TUNNEL_TYPE_PAAS);
    onlinemanager::IMeetingTunnel* const gateway = stage.Tunnel(onlinemanager::TUNNEL_TYPE_GW);
    onlinemanager::IUserOnline* const users = stage.Users();
    onlinemanager::IPaasMdsClient* const mds = stage.Mds();
    mds->InitMdsClient();

    const auto register2 = [](auto* service, auto* first, auto* second)
    {
        service->AddNotify(nullptr);
        service->AddNotify(first);
        service->AddNotify(second);
        service->AddNotify(first);
        service->RemoveNotify(second);
        service->RemoveNotify(nullptr);
        service->AddNotify(second);
    };
    register2(paas, &paas1, &paas2);
    register2(gateway, &gateway1, &gateway2);
    register2(users, &user1, &user2);
    register2(mds, &mds1, &mds2);

    const auto sendAll = [&]
    {
        stage.journal.Clear();
        stage.Connection().JoinGroupResult(1);
        stage.Gateway().LoginResult(2);
        stage.Connection().online.InviteAccepted("7", 3, "");
        stage.Connection().mds.MsgData(
            R"({"message":{"command":"subscribe_av_quality","data":{"subType":"overview"}}})");
        std::vector<JournalEntry> entries = stage.journal.Take();
        std::erase_if(entries, [](const JournalEntry& entry) { return entry.text.starts_with("log "); });
        return entries;
    };
    check.ExpectLines(
        {
            "P1.OnJoinMeetingResult(1)",
            "P2.OnJoinMeetingResult(1)",
            "G1.OnJoinMeetingResult(2)",
            "G2.OnJoinMeetingResult(2)",
            "U1.OnInviteAccepted(7, 0)",
            "U2.OnInviteAccepted(7, 0)",
            "M1.OnSubscribeAVQualityInfo()",
            "M2.OnSubscribeAVQualityInfo()",
        },
        sendAll());

    paas->RemoveNotify(&paas1);
    gateway->RemoveNotify(&gateway2);
    users->RemoveAllNotify();
    mds->RemoveNotify(&mds1);
    check.ExpectLines(
        {
            "P2.OnJoinMeetingResult(1)",
            "G1.OnJoinMeetingResult(2)",
            "M2.OnSubscribeAVQualityInfo()",
        },
        sendAll());
    paas->RemoveAllNotify();
    gateway->RemoveAllNotify();
    mds->RemoveAllNotify();
    check.ExpectLines({}, sendAll());
}

CONTRACT_CHECK(NotifyList, TheMessageChannelTakesListenersToo,
               "Its list accepts and removes listeners, and calls none.")
{
    Stage stage(check);
    onlinemanager::IPaasTMsgNotify listener;
    onlinemanager::IPaasTMsg* const tmsg = stage.TMsg();
    tmsg->AddNotify(nullptr);
    tmsg->AddNotify(&listener);
    tmsg->AddNotify(&listener);
    tmsg->RemoveNotify(&listener);
    tmsg->RemoveNotify(nullptr);
    tmsg->AddNotify(&listener);
    tmsg->RemoveAllNotify();
    stage.ExpectJournal({});
}

CONTRACT_CHECK(NotifyList, ThreadsMayAddRemoveAndDeliverAtTheSameTime,
               "A listener that stays registered gets every delivery, whatever other threads do with the list.")
{
    Stage stage(check);
    onlinemanager::IPaasOnline* const session = stage.Session();
    stage.factory.center.manager.level = Quenda::LOG_LEVEL_ERROR;
    stage.Connection().sender.sendsInline = true;
    constexpr int kDeliveries = 300;
    CountingNotify steady;
    CountingNotify others[8];
    session->AddNotify(&steady);

    std::barrier start(4);
    const auto change = [&](size_t first)
    {
        start.arrive_and_wait();
        for (int round = 0; round < 2000; ++round)
        {
            CountingNotify& listener = others[first + static_cast<size_t>(round) % 4];
            session->AddNotify(&listener);
            session->RemoveNotify(&listener);
        }
    };
    const auto deliver = [&]
    {
        NameThread("platform");
        start.arrive_and_wait();
        for (int round = 0; round < kDeliveries; ++round)
        {
            stage.Connection().LoginResult(round % 2 == 0 ? 5 : 0);
        }
    };
    std::vector<std::thread> threads;
    threads.emplace_back(change, 0U);
    threads.emplace_back(change, 4U);
    threads.emplace_back(deliver);
    threads.emplace_back(deliver);
    for (std::thread& thread : threads)
    {
        thread.join();
    }
    check.ExpectEqual(2 * kDeliveries, steady.calls.load(), "deliveries to the listener that stayed");
    session->RemoveAllNotify();
    const int before = steady.calls + others[0].calls + others[4].calls;
    stage.Connection().LoginResult(5);
    check.ExpectEqual(before, steady.calls + others[0].calls + others[4].calls, "calls after RemoveAllNotify");
}

CONTRACT_CHECK(NotifyList, ThreadsMayRemoveAllDuringDeliveries,
               "Deliveries on other threads end, and no thread reads freed memory.")
{
    Stage stage(check);
    onlinemanager::IPaasOnline* const session = stage.Session();
    stage.factory.center.manager.level = Quenda::LOG_LEVEL_ERROR;
    stage.Connection().sender.sendsInline = true;
    CountingNotify listeners[5];
    std::atomic<bool> ends{false};
    std::barrier start(3);
    const auto deliver = [&]
    {
        NameThread("platform");
        start.arrive_and_wait();
        while (!ends)
        {
            stage.Connection().LoginResult(5);
        }
    };
    std::thread first(deliver);
    std::thread second(deliver);
    start.arrive_and_wait();
    for (int round = 0; round < 1000; ++round)
    {
        for (CountingNotify& listener : listeners)
        {
            session->AddNotify(&listener);
        }
        session->RemoveAllNotify();
    }
    ends = true;
    first.join();
    second.join();
    session->AddNotify(&listeners[0]);
    const int before = listeners[0].calls;
    stage.Connection().LoginResult(5);
    check.ExpectEqual(before + 1, listeners[0].calls.load(), "calls of a listener added at the end");
    session->RemoveAllNotify();
}

} // namespace checks
