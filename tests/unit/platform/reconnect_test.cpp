#include "platform/Crowd.h"
#include "tests/unit/platform/Device.h"

#include <thread>

using platform::Outage;
using platform::SessionInfo;

namespace
{

class ReconnectTest : public PlatformTest
{
protected:
    /// Logs in and drops the journal's lines about the login.
    void LogIn(Device& device, const std::string& userId, const std::string& deviceId = "pc",
               const std::string& mutex = {})
    {
        device.Login(userId, deviceId, mutex);
        Settled();
    }
};

TEST_F(ReconnectTest, ALostConnectionComesBack)
{
    Device device(platform, journal, "A");
    LogIn(device, "1");
    EXPECT_EQ(platform.GetFaults().DropConnections("1"), 1U);
    EXPECT_TRUE(journal.WaitFor("A ReconnectSucess"));
    EXPECT_EQ(Settled(), (Lines{"A ReconnectStart", "A ReconnectSucess"}));
    ASSERT_EQ(platform.Sessions().size(), 1U);
    EXPECT_EQ(platform.Sessions()[0].state, SessionInfo::State::LoggedIn);
}

TEST_F(ReconnectTest, OnlyTheConnectionsThatAreMeantAreDropped)
{
    Device first(platform, journal, "A");
    Device second(platform, journal, "B");
    Device other(platform, journal, "C");
    LogIn(first, "1", "pc");
    LogIn(second, "1", "phone");
    LogIn(other, "2", "pc");
    EXPECT_EQ(platform.GetFaults().DropConnections("3"), 0U);
    EXPECT_EQ(platform.GetFaults().DropConnections("1", "tv"), 0U);
    EXPECT_EQ(platform.GetFaults().DropConnections("1", "phone"), 1U);
    EXPECT_TRUE(journal.WaitFor("B ReconnectSucess"));
    EXPECT_EQ(Settled(), (Lines{"B ReconnectStart", "B ReconnectSucess"}));
    EXPECT_FALSE(platform.GetFaults().DropClient("nobody"));
    EXPECT_TRUE(platform.GetFaults().DropClient(platform.Sessions()[2].clientId));
    EXPECT_TRUE(journal.WaitFor("C ReconnectSucess"));
}

TEST_F(ReconnectTest, TheOthersSeeTheTerminalGoAndComeAgain)
{
    Device watcher(platform, journal, "W", true);
    LogIn(watcher, "9");
    Device device(platform, journal, "A");
    LogIn(device, "1");
    device.online->SetUserCustomInfo("busy");
    Settled();
    platform.GetFaults().DropConnections("1", {}, Outage::Forever());
    EXPECT_EQ(Settled(), (Lines{"A ReconnectStart", "W Terminal 1 pc 0 busy ext of pc"}));
    platform.GetFaults().EndOutages();
    EXPECT_TRUE(journal.WaitFor("W Terminal 1 pc 1 busy ext of pc"));
    EXPECT_EQ(Settled(), (Lines{"A ReconnectSucess", "W Terminal 1 pc 1 busy ext of pc"}));
}

TEST_F(ReconnectTest, WhileTheConnectionIsLostOperationsFailAndTheStateIsShown)
{
    Device device(platform, journal, "A");
    LogIn(device, "1");
    platform.GetFaults().DropConnections("1", {}, Outage::Forever());
    EXPECT_EQ(Settled(), (Lines{"A ReconnectStart"}));
    ASSERT_EQ(platform.Sessions().size(), 1U);
    EXPECT_EQ(platform.Sessions()[0].state, SessionInfo::State::Reconnecting);
    unsigned id = 0;
    EXPECT_LT(device.online->RefreshAllUsersStatus(&id), 0);
    EXPECT_LT(device.connection->JoinGroup("g"), 0);
    EXPECT_EQ(device.connection->Logout(), S_OK);
    EXPECT_EQ(Settled(), (Lines{"A Logouted 0"}));
    platform.GetFaults().EndOutages();
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    EXPECT_EQ(Settled(), Lines()) << "the connection does not come back after a logout";
}

TEST_F(ReconnectTest, EveryListenerIsAskedAndOneThatForbidsIsEnough)
{
    Device device(platform, journal, "A");
    Device second(platform, journal, "B");
    device.connection->AddListener(&second);
    LogIn(device, "1");
    device.reconnectAnswer = avcore::ZOL_RECONNECT_STOP;
    second.reconnectAnswer = avcore::ZOL_RECONNECT_GO_ON;
    platform.GetFaults().DropConnections("1");
    EXPECT_EQ(Settled(), (Lines{"A ReconnectStart", "B ReconnectStart"}));
    EXPECT_TRUE(platform.Sessions().empty());
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    EXPECT_EQ(Settled(), Lines()) << "it stays logged out, without a further word";
    EXPECT_LT(device.connection->Logout(), 0);
    device.Login("1");
    EXPECT_EQ(Settled(), (Lines{"A LoginResult 0", "B LoginResult 0"}));
    device.connection->RemoveListener(&second);
}

TEST_F(ReconnectTest, UndecidedListenersLetItReconnect)
{
    Device device(platform, journal, "A");
    LogIn(device, "1");
    device.reconnectAnswer = avcore::ZOL_RECONNECT_UNDECIDED;
    platform.GetFaults().DropConnections("1");
    EXPECT_TRUE(journal.WaitFor("A ReconnectSucess"));
}

TEST_F(ReconnectTest, AConnectionThatDoesNotComeBackIsGivenUp)
{
    platform::PlatformOptions options = QuickOptions();
    options.reconnectGiveUp = std::chrono::milliseconds(50);
    platform.SetOptions(options);
    Device device(platform, journal, "A");
    LogIn(device, "1");
    platform.GetFaults().DropConnections("1", {}, Outage::Forever());
    EXPECT_TRUE(journal.WaitFor("A Logouted 33"));
    EXPECT_EQ(Settled(), (Lines{"A ReconnectStart", "A ReconnectFail 33", "A Logouted 33"}));
    EXPECT_TRUE(platform.Sessions().empty());
}

TEST_F(ReconnectTest, ATokenThatIsRefusedNowEndsIt)
{
    Device device(platform, journal, "A");
    LogIn(device, "1");
    platform.GetFaults().RefuseToken("token");
    platform.GetFaults().DropConnections("1");
    EXPECT_TRUE(journal.WaitFor("A Logouted 32"));
    EXPECT_EQ(Settled(), (Lines{"A ReconnectStart", "A ReconnectFail 32", "A Logouted 32"}));
}

TEST_F(ReconnectTest, AnOrderToRefuseLoginsDoesNotStopAReconnection)
{
    Device device(platform, journal, "A");
    LogIn(device, "1");
    platform.GetFaults().RefuseLogins(avcore::ZOL_PORT_REFUSED, "1");
    platform.GetFaults().DropConnections("1");
    EXPECT_TRUE(journal.WaitFor("A ReconnectSucess"));
    EXPECT_EQ(Settled(), (Lines{"A ReconnectStart", "A ReconnectSucess"}));
}

TEST_F(ReconnectTest, ANewLoginSucceedsDuringTheOutageOfTheLostOne)
{
    Device device(platform, journal, "A");
    LogIn(device, "1");
    platform.GetFaults().DropConnections("1", {}, Outage::Forever());
    EXPECT_EQ(Settled(), (Lines{"A ReconnectStart"}));
    LogIn(device, "1");
    ASSERT_EQ(platform.Sessions().size(), 1U);
    EXPECT_EQ(platform.Sessions()[0].state, SessionInfo::State::LoggedIn);
}

TEST_F(ReconnectTest, ATerminalThatTookTheTagDuringTheLossKeepsIt)
{
    Device first(platform, journal, "A");
    Device second(platform, journal, "B");
    LogIn(first, "1", "pc", "desk");
    platform.GetFaults().DropConnections("1", "pc", Outage::Forever());
    EXPECT_EQ(Settled(), (Lines{"A ReconnectStart"}));
    second.Login("1", "laptop", "desk");
    EXPECT_EQ(Settled(), (Lines{"B LoginResult 0"})) << "a terminal that is offline does not hold its tag";
    platform.GetFaults().EndOutages();
    EXPECT_TRUE(journal.WaitFor("A Logouted 36"));
    EXPECT_EQ(Settled(), (Lines{"A ReconnectFail 36 laptop", "A Logouted 36"}));
    ASSERT_EQ(platform.Sessions().size(), 1U);
    EXPECT_EQ(platform.Sessions()[0].deviceId, "laptop");
}

TEST_F(ReconnectTest, ALoginThatWasForcedDoesNotForceItsWayBack)
{
    Device first(platform, journal, "A");
    Device second(platform, journal, "B");
    first.Login("1", "pc", "desk", true);
    Settled();
    platform.GetFaults().DropConnections("1", "pc", Outage::Forever());
    second.Login("1", "laptop", "desk");
    Settled();
    platform.GetFaults().EndOutages();
    EXPECT_TRUE(journal.WaitFor("A Logouted 36"));
    EXPECT_EQ(Settled(), (Lines{"A ReconnectFail 36 laptop", "A Logouted 36"}));
}

TEST_F(ReconnectTest, ATerminalReplacedByANewSessionOfItsOwnDeviceDoesNotComeBack)
{
    Device first(platform, journal, "A");
    Device second(platform, journal, "B");
    LogIn(first, "1", "pc", "desk");
    platform.GetFaults().DropConnections("1", "pc", Outage::Forever());
    Settled();
    LogIn(second, "1", "pc", "desk");
    platform.GetFaults().EndOutages();
    EXPECT_TRUE(journal.WaitFor("A Logouted 36"));
    EXPECT_EQ(Settled(), (Lines{"A ReconnectFail 36 pc", "A Logouted 36"}));
    ASSERT_EQ(platform.Sessions().size(), 1U);
    EXPECT_EQ(platform.Sessions()[0].state, SessionInfo::State::LoggedIn);
}

TEST_F(ReconnectTest, AWillThatArrivesAfterTheNextOnlineDoesNotCount)
{
    Device watcher(platform, journal, "W", true);
    LogIn(watcher, "9");
    Device device(platform, journal, "A");
    LogIn(device, "1", "pc", "desk");
    platform.GetFaults().DelayWills(std::chrono::milliseconds(1000));
    platform.GetFaults().DropConnections("1");
    EXPECT_TRUE(journal.WaitFor("A ReconnectSucess"));
    std::this_thread::sleep_for(std::chrono::milliseconds(1300));
    EXPECT_EQ(Settled(), (Lines{"A ReconnectStart", "A ReconnectSucess"})) << "no other terminal saw it go offline";

    Device late(platform, journal, "L", true);
    unsigned request = 0;
    LogIn(late, "8");
    late.online->RefreshUsersStatus(MakeList({"1"}), &request);
    EXPECT_EQ(Settled(), (Lines{"L Refresh 0 #1 page 0/1 1:[pc 1  ext of pc]"}))
        << "the platform's state is right again";
    Device other(platform, journal, "B");
    other.Login("1", "laptop", "desk");
    EXPECT_TRUE(journal.WaitFor("B LoginResult 36 pc  ext of pc"));
}

TEST_F(ReconnectTest, ALoginFromInsideTheFailureIsNotLoggedOut)
{
    Device device(platform, journal, "A");
    LogIn(device, "1");
    device.inside["ReconnectFail"] = [&]
    {
        platform.GetFaults().AcceptToken("token");
        device.Login("1");
    };
    platform.GetFaults().RefuseToken("token");
    platform.GetFaults().DropConnections("1");
    EXPECT_TRUE(journal.WaitFor("A LoginResult 0"));
    EXPECT_EQ(Settled(), (Lines{"A ReconnectStart", "A ReconnectFail 32", "A LoginResult 0"}));
}

TEST_F(ReconnectTest, ALogoutFromInsideTheQuestionEndsIt)
{
    Device device(platform, journal, "A");
    LogIn(device, "1");
    device.inside["ReconnectStart"] = [&] { device.connection->Logout(); };
    platform.GetFaults().DropConnections("1");
    EXPECT_EQ(Settled(), (Lines{"A ReconnectStart", "A Logouted 0"}));
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    EXPECT_EQ(Settled(), Lines());
}

TEST_F(ReconnectTest, ALoginFromInsideTheQuestionTakesOver)
{
    Device device(platform, journal, "A");
    LogIn(device, "1");
    device.inside["ReconnectStart"] = [&] { device.Login("2"); };
    platform.GetFaults().DropConnections("1");
    EXPECT_TRUE(journal.WaitFor("A LoginResult 0"));
    EXPECT_EQ(Settled(), (Lines{"A ReconnectStart", "A LoginResult 0"}));
    ASSERT_EQ(platform.Sessions().size(), 1U);
    EXPECT_EQ(platform.Sessions()[0].userId, "2");
}

TEST_F(ReconnectTest, ChangesInTheCompanyDuringTheLossAreReported)
{
    Device watcher(platform, journal, "W", true);
    LogIn(watcher, "9");
    platform::Crowd crowd(platform, {.appId = "app", .companyId = "7", .firstUserId = 1, .count = 3});
    crowd.ComeOnline(1);
    crowd.ComeOnline(2);
    Settled();
    platform.GetFaults().DropConnections("9", {}, Outage::Forever());
    crowd.GoOffline(1);
    crowd.SetCustomInfo(2, "busy");
    crowd.ComeOnline(3);
    EXPECT_EQ(Settled(), (Lines{"W ReconnectStart"}));
    platform.GetFaults().EndOutages();
    EXPECT_TRUE(journal.WaitFor("W Terminal 3 pc 1  {\"tt\":1}"));
    EXPECT_EQ(Settled(), (Lines{"W ReconnectSucess", "W Terminal 1 pc 0  {\"tt\":1}",
                                "W Terminal 2 pc 1 busy {\"tt\":1}", "W Terminal 3 pc 1  {\"tt\":1}"}));
}

TEST_F(ReconnectTest, ATerminalWhoseRecordDisappearedDuringTheLossIsReported)
{
    platform::PlatformOptions options = QuickOptions();
    options.goneRecordLife = std::chrono::seconds(1);
    platform.SetOptions(options);
    Device watcher(platform, journal, "W", true);
    LogIn(watcher, "9");
    Device device(platform, journal, "A");
    LogIn(device, "1");
    platform.GetFaults().DropConnections("9", {}, Outage::Forever());
    device.connection->Logout();
    Settled();
    std::this_thread::sleep_for(std::chrono::milliseconds(1100));
    platform.GetFaults().EndOutages();
    EXPECT_TRUE(journal.WaitFor("W Terminal 1 pc 0  ext of pc"));
    EXPECT_EQ(Settled(), (Lines{"W ReconnectSucess", "W Terminal 1 pc 0  ext of pc"}));
}

TEST_F(ReconnectTest, LateDeliveriesAndDoubleOnesDoNoHarm)
{
    platform.GetFaults().DelayDeliveries(std::chrono::milliseconds(5));
    platform.GetFaults().DuplicateDeliveries(true);
    Device watcher(platform, journal, "W", true);
    watcher.Login("9");
    EXPECT_TRUE(journal.WaitFor("W LoginResult 0"));
    Device device(platform, journal, "A");
    device.Login("1", "pc", "desk");
    EXPECT_TRUE(journal.WaitFor("W Terminal 1 pc 1  ext of pc"));
    platform.SendUserMessage("app", "7", "9", "1", "hello");
    EXPECT_TRUE(journal.WaitFor("A UserMsg 9 #1 hello"));
    platform.GetFaults().DropConnections("1");
    EXPECT_TRUE(journal.WaitFor("A ReconnectSucess"));
    Device other(platform, journal, "B");
    other.Login("1", "laptop", "desk", true);
    EXPECT_TRUE(journal.WaitFor("A Logouted 36"));
    EXPECT_TRUE(journal.WaitFor("B LoginResult 0"));
    platform.GetFaults().Clear();
    const Lines lines = Settled();
    EXPECT_EQ(std::count(lines.begin(), lines.end(), "A UserMsg 9 #1 hello"), 1);
    EXPECT_EQ(std::count(lines.begin(), lines.end(), "A LoginResult 0"), 1);
    EXPECT_EQ(std::count(lines.begin(), lines.end(), "A Logouted 36"), 1);
    ASSERT_EQ(platform.Sessions().size(), 2U);
}

} // namespace
