#include "tests/unit/platform/Device.h"

#include <atomic>
#include <stdexcept>
#include <thread>

namespace
{

using ListenersTest = PlatformTest;

TEST_F(ListenersTest, NullIsRefusedAndWhatIsThereStaysThereOnce)
{
    Device device(platform, journal, "A");
    EXPECT_EQ(device.connection->AddListener(nullptr), E_POINTER);
    EXPECT_EQ(device.online->AddListener(nullptr), E_POINTER);
    EXPECT_EQ(device.tMsg->AddListener(nullptr), E_POINTER);
    EXPECT_EQ(device.mds->AddListener(nullptr), E_POINTER);
    EXPECT_EQ(device.connection->AddListener(&device), S_OK);
    device.Login("1");
    EXPECT_EQ(Settled(), (Lines{"A LoginResult 0"}));
    EXPECT_EQ(device.connection->RemoveListener(&device), S_OK);
    EXPECT_EQ(device.connection->RemoveListener(&device), E_INVALIDARG);
    device.connection->Logout();
    EXPECT_EQ(Settled(), Lines());
}

TEST_F(ListenersTest, EveryListenerGetsEveryEventInOrderOfRegistration)
{
    Device device(platform, journal, "A");
    Device second(platform, journal, "B");
    device.connection->AddListener(&second);
    device.Login("1");
    EXPECT_EQ(Settled(), (Lines{"A LoginResult 0", "B LoginResult 0"}));
    device.connection->RemoveListener(&second);
    device.connection->Logout();
    EXPECT_EQ(Settled(), (Lines{"A Logouted 0"}));
}

TEST_F(ListenersTest, AListenerThatAnotherRemovesDuringAnEventIsLeftOut)
{
    Device device(platform, journal, "A");
    Device second(platform, journal, "B");
    device.connection->AddListener(&second);
    device.inside["LoginResult"] = [&] { device.connection->RemoveListener(&second); };
    device.Login("1");
    EXPECT_EQ(Settled(), (Lines{"A LoginResult 0"}));
    second.Release();
}

TEST_F(ListenersTest, RemovingReturnsWhenTheEventUnderWayHasEnded)
{
    Device device(platform, journal, "A");
    std::atomic<bool> entered{false};
    std::atomic<bool> left{false};
    std::atomic<bool> mayLeave{false};
    device.inside["LoginResult"] = [&]
    {
        entered = true;
        while (!mayLeave)
        {
            std::this_thread::yield();
        }
        left = true;
    };
    device.Login("1");
    while (!entered)
    {
        std::this_thread::yield();
    }
    std::thread letGo(
        [&mayLeave]
        {
            std::this_thread::sleep_for(std::chrono::milliseconds(30));
            mayLeave = true;
        });
    device.connection->RemoveListener(&device);
    EXPECT_TRUE(left);
    letGo.join();
}

TEST_F(ListenersTest, AListenerMayRemoveItselfAndReleaseTheConnectionFromInsideAnEvent)
{
    Device device(platform, journal, "A");
    device.inside["LoginResult"] = [&]
    {
        device.connection->RemoveListener(&device);
        device.Release();
    };
    device.Login("1");
    EXPECT_EQ(Settled(), (Lines{"A LoginResult 0"}));
    EXPECT_TRUE(platform.Sessions().empty());
}

TEST_F(ListenersTest, OperationsMayBeCalledFromInsideEvents)
{
    Device device(platform, journal, "A", true);
    unsigned request = 0;
    int logins = 0;
    device.inside["LoginResult"] = [&]
    {
        EXPECT_EQ(device.online->RefreshAllUsersStatus(&request), S_OK);
        EXPECT_EQ(device.connection->JoinGroup("g"), S_OK);
    };
    device.inside["Refresh"] = [&] { EXPECT_EQ(device.online->SetUserCustomInfo("here"), S_OK); };
    device.inside["Terminal"] = [&] { EXPECT_EQ(device.connection->Logout(), S_OK); };
    device.inside["Logouted"] = [&]
    {
        if (++logins == 1)
        {
            device.inside.erase("LoginResult");
            EXPECT_EQ(device.Login("2"), S_OK);
        }
    };
    device.Login("1");
    EXPECT_TRUE(journal.WaitFor("A Logouted 0"));
    const Lines lines = Settled();
    ASSERT_FALSE(lines.empty());
    EXPECT_EQ(lines.front(), "A LoginResult 0");
    EXPECT_EQ(lines.back(), "A LoginResult 0");
    EXPECT_EQ(platform.Sessions().size(), 1U);
}

TEST_F(ListenersTest, AnUnattendedConnectionDeliversNothingThroughItsComponents)
{
    Device device(platform, journal, "A");
    device.Login("1");
    Settled();
    device.connection->RemoveListener(&device);
    platform.SendUserMessage("app", "7", "2", "1", "hello");
    EXPECT_EQ(Settled(), Lines());
    device.connection->AddListener(&device);
    platform.SendUserMessage("app", "7", "2", "1", "again");
    EXPECT_EQ(Settled().size(), 1U);
}

TEST_F(ListenersTest, LeavingAConnectionUnattendedWaitsForTheEventsOfItsComponents)
{
    Device device(platform, journal, "A");
    std::atomic<bool> entered{false};
    std::atomic<bool> left{false};
    device.inside["UserMsg"] = [&]
    {
        entered = true;
        std::this_thread::sleep_for(std::chrono::milliseconds(30));
        left = true;
    };
    device.Login("1");
    Settled();
    platform.SendUserMessage("app", "7", "2", "1", "hello");
    while (!entered)
    {
        std::this_thread::yield();
    }
    device.connection->RemoveListener(&device);
    EXPECT_TRUE(left);
}

TEST_F(ListenersTest, AnExceptionOfAListenerIsReportedAndDoesNoHarm)
{
    std::string report;
    platform.SetDiagnostic([&report](std::string_view text) { report = text; });
    Device device(platform, journal, "A");
    Device second(platform, journal, "B");
    device.connection->AddListener(&second);
    device.inside["LoginResult"] = [] { throw std::runtime_error("oops"); };
    device.Login("1");
    EXPECT_EQ(Settled(), (Lines{"A LoginResult 0", "B LoginResult 0"}));
    EXPECT_EQ(report, "a listener raised an exception: oops");
    platform.SetDiagnostic(nullptr);
}

TEST_F(ListenersTest, TheLastReleaseWithoutALogoutGoesOfflineInOrder)
{
    Device watcher(platform, journal, "W", true);
    watcher.Login("9");
    Device device(platform, journal, "A");
    device.Login("1");
    Settled();
    device.Release();
    EXPECT_EQ(Settled(), (Lines{"W Terminal 1 pc 0  ext of pc"}));
}

TEST_F(ListenersTest, ManyThreadsMayUseConnectionsAtOnce)
{
    constexpr int kThreads = 4;
    constexpr int kRounds = 30;
    std::vector<std::thread> threads;
    for (int thread = 0; thread < kThreads; ++thread)
    {
        threads.emplace_back(
            [this, thread]
            {
                for (int round = 0; round < kRounds; ++round)
                {
                    Device device(platform, journal, std::to_string(thread), true);
                    // Half of them log in with the same tag.
                    device.Login(std::to_string(thread / 2), "device" + std::to_string(thread), "desk", round % 2 == 0);
                    unsigned id = 0;
                    avcore::ZolTextPairList results;
                    device.online->RefreshAllUsersStatus(&id);
                    device.online->SetUserCustomInfo("x");
                    device.online->InviteUsers(MakeList({"0", "1"}), results, "1", "{}", &id);
                    device.connection->JoinGroup("g");
                    platform.GetFaults().DropConnections(std::to_string(thread / 2));
                    platform.Sessions();
                    if (round % 3 == 0)
                    {
                        device.connection->Logout();
                    }
                    device.connection->RemoveListener(&device);
                }
            });
    }
    for (std::thread& thread : threads)
    {
        thread.join();
    }
    platform.Settle();
    EXPECT_TRUE(platform.Sessions().empty());
}

} // namespace
