#include "platform/Crowd.h"
#include "tests/unit/platform/Device.h"

using platform::Crowd;
using platform::CrowdOptions;
using platform::PlatformOptions;

namespace
{

class CompanyTest : public PlatformTest
{
protected:
    static CrowdOptions People(uint32_t first, uint32_t count)
    {
        CrowdOptions options;
        options.appId = "app";
        options.companyId = "7";
        options.firstUserId = first;
        options.count = count;
        options.ext = "x";
        return options;
    }

    void SetPageSize(uint32_t size)
    {
        PlatformOptions options = QuickOptions();
        options.refreshPageSize = size;
        platform.SetOptions(options);
    }
};

TEST_F(CompanyTest, ARefreshComesInPagesInOrder)
{
    SetPageSize(2);
    Crowd crowd(platform, People(1, 5));
    crowd.ComeOnline();
    Device device(platform, journal, "A", true);
    device.Login("9");
    Settled();
    unsigned request = 0;
    EXPECT_EQ(device.online->RefreshAllUsersStatus(&request), S_OK);
    EXPECT_EQ(request, 1U);
    EXPECT_EQ(Settled(), (Lines{"A Refresh 0 #1 page 0/3 1:[pc 1  x] 2:[pc 1  x]",
                                "A Refresh 0 #1 page 1/3 3:[pc 1  x] 4:[pc 1  x]",
                                "A Refresh 0 #1 page 2/3 5:[pc 1  x] 9:[pc 1  ext of pc]"}));
    SetPageSize(0);
    EXPECT_EQ(device.online->RefreshUsersStatus(MakeList({"9", "1"}), &request), S_OK);
    EXPECT_EQ(request, 2U);
    EXPECT_EQ(Settled(), (Lines{"A Refresh 0 #2 page 0/2 9:[pc 1  ext of pc]", "A Refresh 0 #2 page 1/2 1:[pc 1  x]"}));
}

TEST_F(CompanyTest, ARefreshFromInsideTheLoginResultIsAnswered)
{
    Crowd crowd(platform, People(1, 2));
    crowd.ComeOnline();
    Device device(platform, journal, "A", true);
    device.inside["LoginResult"] = [&device]
    {
        unsigned request = 0;
        EXPECT_EQ(device.online->RefreshAllUsersStatus(&request), S_OK);
    };
    device.Login("9");
    EXPECT_EQ(Settled(),
              (Lines{"A LoginResult 0", "A Refresh 0 #1 page 0/1 1:[pc 1  x] 2:[pc 1  x] 9:[pc 1  ext of pc]"}));
}

TEST_F(CompanyTest, ListedUsersAreAnsweredInTheirOrderOnceEachAndWithoutTerminalsWhenOffline)
{
    Crowd crowd(platform, People(1, 3));
    crowd.ComeOnline(1);
    crowd.ComeOnline(2);
    Device device(platform, journal, "A", true);
    device.Login("9");
    Settled();
    crowd.GoOffline(2);
    Settled();
    unsigned request = 0;
    const std::string tooLong(5000, '1');
    EXPECT_EQ(device.online->RefreshUsersStatus(MakeList({"4711", "2", "1", "", "1", tooLong, "a/b"}), &request), S_OK);
    EXPECT_EQ(Settled(), (Lines{"A Refresh 0 #1 page 0/1 4711: 2: 1:[pc 1  x] a/b:"}));
    EXPECT_EQ(device.online->RefreshUsersStatus(MakeList({""}), &request), S_OK);
    EXPECT_EQ(Settled(), (Lines{"A Refresh 0 #2 page 0/1"})) << "an answer in any case";
    EXPECT_EQ(device.online->RefreshUsersStatus(MakeList({}), &request), E_INVALIDARG);
    EXPECT_EQ(device.online->RefreshUsersStatus(MakeList({"1"}), nullptr), E_POINTER);
    EXPECT_EQ(device.online->RefreshAllUsersStatus(nullptr), E_POINTER);
}

TEST_F(CompanyTest, AUserMayHaveSeveralTerminals)
{
    Device pc(platform, journal, "A", true);
    Device phone(platform, journal, "B");
    pc.Login("1", "pc");
    EXPECT_EQ(Settled(), (Lines{"A LoginResult 0"}));
    phone.Login("1", "phone");
    EXPECT_EQ(Settled(), (Lines{"A Terminal 1 phone 1  ext of phone", "B LoginResult 0"}));
    unsigned request = 0;
    pc.online->RefreshUsersStatus(MakeList({"1"}), &request);
    EXPECT_EQ(Settled(), (Lines{"A Refresh 0 #1 page 0/1 1:[pc 1  ext of pc][phone 1  ext of phone]"}));
    phone.connection->Logout();
    EXPECT_EQ(Settled(), (Lines{"B Logouted 0", "A Terminal 1 phone 0  ext of phone"}));
    pc.online->RefreshUsersStatus(MakeList({"1"}), &request);
    EXPECT_EQ(Settled(), (Lines{"A Refresh 0 #2 page 0/1 1:[pc 1  ext of pc]"}));
}

TEST_F(CompanyTest, CustomInformationIsSeenByTheOthersAndTheOwnListeners)
{
    Device device(platform, journal, "A", true);
    Device watcher(platform, journal, "W", true);
    device.Login("1");
    watcher.Login("2");
    Settled();
    EXPECT_EQ(device.online->SetUserCustomInfo(nullptr), E_POINTER);
    EXPECT_EQ(device.online->SetUserCustomInfo("at \"lunch\"\n\xFF"), S_OK);
    Lines lines = Settled();
    std::sort(lines.begin(), lines.end());
    EXPECT_EQ(lines, (Lines{"A Terminal 1 pc 1 at \"lunch\"\n\xFF ext of pc",
                            "W Terminal 1 pc 1 at \"lunch\"\n\xFF ext of pc"}));
    device.online->SetUserCustomInfo("at \"lunch\"\n\xFF");
    EXPECT_EQ(Settled(), Lines()) << "nothing has changed";
    device.connection->Logout();
    Settled();
    device.Login("1");
    EXPECT_EQ(Settled(), (Lines{"A LoginResult 0", "W Terminal 1 pc 1  ext of pc"})) << "a new login begins without";
}

TEST_F(CompanyTest, ATerminalThatVanishesIsReportedOffline)
{
    Device watcher(platform, journal, "W", true);
    watcher.Login("9");
    Device device(platform, journal, "A");
    device.Login("1");
    Settled();
    device.reconnectAnswer = avcore::ZOL_RECONNECT_STOP;
    platform.GetFaults().DropConnections("1");
    EXPECT_EQ(Settled(), (Lines{"A ReconnectStart", "W Terminal 1 pc 0  ext of pc"}));
}

TEST_F(CompanyTest, CompaniesAndApplicationsAreApart)
{
    Device device(platform, journal, "A", true);
    device.Login("1");
    Settled();
    Device other(platform, journal, "B");
    Device::LoginArguments arguments;
    arguments.userId = "2";
    arguments.companyId = "8";
    other.Login(arguments);
    EXPECT_EQ(Settled(), (Lines{"B LoginResult 0"}));
    Device third(platform, journal, "C");
    arguments.companyId = "7";
    arguments.appId = "other";
    third.Login(arguments);
    EXPECT_EQ(Settled(), (Lines{"C LoginResult 0"}));
    unsigned request = 0;
    device.online->RefreshAllUsersStatus(&request);
    EXPECT_EQ(Settled(), (Lines{"A Refresh 0 #1 page 0/1 1:[pc 1  ext of pc]"}));
}

TEST_F(CompanyTest, TheCompanyIsNotFollowedBeforeAListenerOrARequest)
{
    Crowd crowd(platform, People(1, 100));
    Device device(platform, journal, "A");
    device.Login("4712");
    crowd.ComeOnline();
    Settled();
    // Without a subscription the platform knows no user, so it knows no user to be offline either.
    avcore::ZolTextPairList results;
    unsigned id = 0;
    device.online->InviteUsers(MakeList({"4711"}), results, "1", "{}", &id);
    ASSERT_EQ(results.size(), 1U);
    EXPECT_TRUE(results[0].second == "0");
    Settled();
    device.online->InviteUsers(MakeList({"4711"}), results, "1", "{}", &id);
    ASSERT_EQ(results.size(), 2U);
    EXPECT_TRUE(results[1].second == "31");

    EXPECT_EQ(device.online->AddListener(&device), S_OK);
    Settled();
    crowd.GoOffline(1);
    EXPECT_EQ(Settled(), (Lines{"A Terminal 1 pc 0  x"}));
}

TEST_F(CompanyTest, ALogoutEndsARefreshWithACode)
{
    platform.GetFaults().DelayDeliveries(std::chrono::milliseconds(200));
    Device device(platform, journal, "A", true);
    // The snapshot of the company is still to come.
    device.inside["LoginResult"] = [&device]
    {
        unsigned request = 0;
        EXPECT_EQ(device.online->RefreshAllUsersStatus(&request), S_OK);
        EXPECT_EQ(device.connection->Logout(), S_OK);
    };
    device.Login("1");
    EXPECT_TRUE(journal.WaitFor("A Logouted 0"));
    EXPECT_EQ(Settled(), (Lines{"A LoginResult 0", "A Refresh 30 #1 page 0/1", "A Logouted 0"}));
}

TEST_F(CompanyTest, PagesEndWithALogoutFromInsideOne)
{
    SetPageSize(1);
    Crowd crowd(platform, People(1, 5));
    crowd.ComeOnline();
    Device device(platform, journal, "A", true);
    device.Login("9");
    Settled();
    device.inside["Refresh"] = [&device] { device.connection->Logout(); };
    unsigned request = 0;
    device.online->RefreshAllUsersStatus(&request);
    EXPECT_EQ(Settled(), (Lines{"A Refresh 0 #1 page 0/6 1:[pc 1  x]", "A Logouted 0"}));
}

TEST_F(CompanyTest, ASnapshotMayNeedQuietTime)
{
    PlatformOptions options = QuickOptions();
    options.snapshotQuietTime = std::chrono::milliseconds(20);
    platform.SetOptions(options);
    Crowd crowd(platform, People(1, 2));
    crowd.ComeOnline();
    Device device(platform, journal, "A", true);
    device.inside["LoginResult"] = [&device]
    {
        unsigned request = 0;
        device.online->RefreshAllUsersStatus(&request);
        device.connection->JoinGroup("g");
    };
    device.Login("9");
    EXPECT_TRUE(journal.WaitFor("A GroupUserSync complete 9"));
    EXPECT_TRUE(journal.WaitFor("A Refresh 0 #1 page 0/1 1:[pc 1  x] 2:[pc 1  x] 9:[pc 1  ext of pc]"));
}

TEST_F(CompanyTest, ALargeCompanyIsSeenWhole)
{
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    // A sanitizer is many times slower and finds nothing more in the larger company.
    constexpr uint32_t kCount = 10'000;
#else
    constexpr uint32_t kCount = 100'000;
#endif
    Crowd crowd(platform, People(1, kCount));
    size_t progressed = 0;
    size_t calls = 0;
    crowd.ComeOnline(
        [&](size_t done, size_t total)
        {
            EXPECT_EQ(total, kCount);
            EXPECT_GT(done, progressed);
            progressed = done;
            ++calls;
        });
    EXPECT_EQ(progressed, kCount);
    EXPECT_LE(calls, 101U);
    EXPECT_EQ(crowd.CountOnline(), kCount);
    Device device(platform, journal, "A", true);
    device.Login("0");
    Settled();
    unsigned request = 0;
    device.online->RefreshAllUsersStatus(&request);
    EXPECT_EQ(Settled().size(), (kCount + 1 + 499) / 500);
    EXPECT_EQ(device.refreshedUsers, kCount + 1);
}

} // namespace
