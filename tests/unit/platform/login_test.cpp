#include "tests/unit/platform/Device.h"

#include <thread>

using platform::SessionInfo;

namespace
{

using LoginTest = PlatformTest;

TEST_F(LoginTest, TheFactoryChecksItsArguments)
{
    void* out = this;
    EXPECT_EQ(platform.CreateComponent(avcore::CLSID_ZolConnection, avcore::IID_IZolConnection, nullptr, nullptr),
              E_POINTER);
    EXPECT_EQ(platform.CreateComponent(avcore::IID_IZolOnline, avcore::IID_IZolConnection, nullptr, &out),
              platform::kClassNotAvailable);
    EXPECT_EQ(out, nullptr);
    out = this;
    EXPECT_EQ(platform.CreateComponent(avcore::CLSID_ZolConnection, avcore::IID_IZolOnline, nullptr, &out),
              E_NOINTERFACE);
    EXPECT_EQ(out, nullptr);
    Device device(platform, journal, "A");
    out = this;
    EXPECT_EQ(
        platform.CreateComponent(avcore::CLSID_ZolConnection, avcore::IID_IZolConnection, device.connection, &out),
        platform::kNoAggregation);
    EXPECT_EQ(out, nullptr);
}

TEST_F(LoginTest, AConnectionIsAComponentWithBorrowedParts)
{
    Device device(platform, journal, "A");
    void* unknown = nullptr;
    ASSERT_EQ(device.connection->QueryInterface(IID_IUnknown, &unknown), S_OK);
    EXPECT_EQ(static_cast<IUnknown*>(unknown)->Release(), 1U);
    EXPECT_EQ(device.connection->AddRef(), 2U);
    EXPECT_EQ(device.connection->Release(), 1U);
    EXPECT_EQ(device.connection->QueryInterface(avcore::IID_IZolOnline, &unknown), E_NOINTERFACE);
    EXPECT_EQ(unknown, nullptr);
    EXPECT_EQ(device.connection->QueryInterface(IID_IUnknown, nullptr), E_POINTER);
    EXPECT_EQ(device.connection->GetComponent(avcore::IID_IZolConnection, &unknown), E_NOINTERFACE);
    EXPECT_EQ(device.connection->GetComponent(avcore::IID_IZolOnline, nullptr), E_POINTER);
}

TEST_F(LoginTest, ALoginIsAnsweredOnThePlatformThread)
{
    Device device(platform, journal, "A");
    std::thread::id thread;
    device.inside["LoginResult"] = [&thread] { thread = std::this_thread::get_id(); };
    EXPECT_EQ(device.Login("1"), S_OK);
    EXPECT_EQ(Settled(), (Lines{"A LoginResult 0"}));
    EXPECT_NE(thread, std::this_thread::get_id());
}

TEST_F(LoginTest, ALogoutIsAnsweredByZero)
{
    Device device(platform, journal, "A");
    device.Login("1");
    Settled();
    EXPECT_EQ(device.connection->Logout(), S_OK);
    EXPECT_EQ(Settled(), (Lines{"A Logouted 0"}));
    EXPECT_LT(device.connection->Logout(), 0);
    EXPECT_EQ(Settled(), Lines());
    EXPECT_TRUE(platform.Sessions().empty());
}

TEST_F(LoginTest, NullAndEmptyArgumentsAreRefusedAtOnce)
{
    Device device(platform, journal, "A");
    avcore::IZolConnection& connection = *device.connection;
    const char* texts[8] = {"server", "app", "token", "device", "7", "1", "mutex", "ext"};
    const auto login = [&connection, &texts]
    {
        return connection.Login(texts[0], nullptr, texts[1], texts[2], texts[3], texts[4], texts[5], texts[6], texts[7],
                                false, false);
    };
    for (const char*& text : texts)
    {
        const char* former = std::exchange(text, nullptr);
        EXPECT_EQ(login(), E_POINTER) << former;
        text = former;
    }
    for (const size_t index : {0U, 3U, 4U, 5U})
    {
        const char* former = std::exchange(texts[index], "");
        EXPECT_EQ(login(), E_INVALIDARG) << former;
        texts[index] = former;
    }
    const std::string longId(5000, '1');
    const char* former = std::exchange(texts[5], longId.c_str());
    EXPECT_EQ(login(), E_INVALIDARG);
    texts[5] = former;
    EXPECT_EQ(connection.LoginOldGw(GUID{}, nullptr, 0, 0, 0), E_POINTER);
    EXPECT_EQ(connection.LoginOldGw(GUID{}, "", 0, 0, 0), E_INVALIDARG);
    EXPECT_EQ(Settled(), Lines());

    for (const size_t index : {1U, 2U, 6U, 7U})
    {
        texts[index] = "";
    }
    EXPECT_EQ(login(), S_OK) << "application, token, tag and extension text may be empty";
    EXPECT_EQ(Settled(), (Lines{"A LoginResult 0"}));
}

TEST_F(LoginTest, OperationsWithoutALoginFail)
{
    Device device(platform, journal, "A");
    unsigned id = 0;
    avcore::ZolTextPairList results;
    EXPECT_LT(device.connection->Logout(), 0);
    EXPECT_LT(device.connection->JoinGroup("g"), 0);
    EXPECT_LT(device.connection->LeaveGroup(), 0);
    EXPECT_LT(device.online->RefreshAllUsersStatus(&id), 0);
    EXPECT_LT(device.online->RefreshUsersStatus(MakeList({"1"}), &id), 0);
    EXPECT_LT(device.online->SetUserCustomInfo("x"), 0);
    EXPECT_LT(device.online->InviteUsers(MakeList({"1"}), results, "1", "{}", &id), 0);
    EXPECT_LT(device.online->CancelInvite(MakeList({}), results, 1), 0);
    EXPECT_LT(device.online->AcceptInvite("1", 1, "{}"), 0);
    EXPECT_LT(device.online->RejectInvite("1", 1, "{}"), 0);
    EXPECT_LT(device.mds->SendMdsData("{}"), 0);
    EXPECT_EQ(Settled(), Lines());
}

TEST_F(LoginTest, ASecondTerminalWithTheSameTagIsRefusedAndToldOfTheFirst)
{
    Device first(platform, journal, "A");
    Device second(platform, journal, "B");
    first.Login("1", "pc", "desk");
    Settled();
    first.online->SetUserCustomInfo("busy");
    Settled();
    EXPECT_EQ(second.Login("1", "laptop", "desk"), S_OK);
    EXPECT_EQ(Settled(), (Lines{"B LoginResult 36 pc busy ext of pc"}));
    EXPECT_LT(second.connection->Logout(), 0) << "the login has failed";
    ASSERT_EQ(platform.Sessions().size(), 1U);
    EXPECT_EQ(platform.Sessions()[0].deviceId, "pc");
}

TEST_F(LoginTest, AForcedLoginLogsTheOtherOut)
{
    Device first(platform, journal, "A");
    Device second(platform, journal, "B");
    first.Login("1", "pc", "desk");
    Settled();
    second.Login("1", "laptop", "desk", true);
    EXPECT_TRUE(journal.WaitFor("A Logouted 36"));
    EXPECT_TRUE(journal.WaitFor("B LoginResult 0"));
    Lines lines = Settled();
    std::sort(lines.begin(), lines.end());
    EXPECT_EQ(lines, (Lines{"A Logouted 36", "B LoginResult 0"}));
    EXPECT_LT(first.connection->Logout(), 0);
    ASSERT_EQ(platform.Sessions().size(), 1U);
    EXPECT_EQ(platform.Sessions()[0].deviceId, "laptop");

    EXPECT_EQ(first.Login("1", "pc", "desk"), S_OK) << "and now it is the other way round";
    EXPECT_EQ(Settled(), (Lines{"A LoginResult 36 laptop  ext of laptop"}));
}

TEST_F(LoginTest, DifferentTagsUsersAndCompaniesCoexistAndSoDoEmptyTags)
{
    Device first(platform, journal, "A");
    Device second(platform, journal, "B");
    Device third(platform, journal, "C");
    Device fourth(platform, journal, "D");
    Device fifth(platform, journal, "E");
    Device sixth(platform, journal, "F");
    first.Login("1", "pc", "desk");
    second.Login("1", "phone", "pocket");
    third.Login("2", "laptop", "desk");
    Device::LoginArguments other;
    other.companyId = "8";
    other.deviceId = "laptop";
    other.mutex = "desk";
    fourth.Login(other);
    fifth.Login("1", "tv");
    sixth.Login("1", "wall");
    EXPECT_EQ(Settled(), (Lines{"A LoginResult 0", "B LoginResult 0", "C LoginResult 0", "D LoginResult 0",
                                "E LoginResult 0", "F LoginResult 0"}));
    EXPECT_EQ(platform.Sessions().size(), 6U);
}

TEST_F(LoginTest, TheSameDeviceTakesItsEarlierSessionOver)
{
    Device first(platform, journal, "A");
    Device second(platform, journal, "B");
    Device third(platform, journal, "C");
    first.Login("1", "pc", "desk");
    Settled();
    second.Login("1", "pc", "desk");
    Lines lines = Settled();
    std::sort(lines.begin(), lines.end());
    EXPECT_EQ(lines, (Lines{"A Logouted 36", "B LoginResult 0"}));
    third.Login("1", "laptop", "desk");
    EXPECT_EQ(Settled(), (Lines{"C LoginResult 36 pc  ext of pc"})) << "the goodbye of the first is not the last word";
}

TEST_F(LoginTest, OfManyLoginsAtOnceWithOneTagExactlyOneStands)
{
    constexpr int kCount = 8;
    std::vector<std::unique_ptr<Device>> devices;
    for (int i = 0; i < kCount; ++i)
    {
        devices.push_back(std::make_unique<Device>(platform, journal, std::to_string(i)));
    }
    for (int i = 0; i < kCount; ++i)
    {
        devices[static_cast<size_t>(i)]->Login("1", "device" + std::to_string(i), "desk");
    }
    const Lines lines = Settled();
    EXPECT_EQ(lines.size(), static_cast<size_t>(kCount));
    EXPECT_EQ(std::count_if(lines.begin(), lines.end(), [](const auto& line) { return line.ends_with(" 0"); }), 1);
    EXPECT_EQ(platform.Sessions().size(), 1U);
}

TEST_F(LoginTest, LaterAndForcedWinsOverEarlierAndForced)
{
    std::vector<std::unique_ptr<Device>> devices;
    for (int i = 0; i < 4; ++i)
    {
        devices.push_back(std::make_unique<Device>(platform, journal, std::to_string(i)));
        devices.back()->Login("1", "device" + std::to_string(i), "desk", true);
    }
    Settled();
    ASSERT_EQ(platform.Sessions().size(), 1U);
    EXPECT_EQ(platform.Sessions()[0].deviceId, "device3");
    EXPECT_TRUE(platform.Sessions()[0].force);
}

TEST_F(LoginTest, ATagIsFreeAgainAfterALogoutAndAfterALastRelease)
{
    Device first(platform, journal, "A");
    Device second(platform, journal, "B");
    first.Login("1", "pc", "desk");
    Settled();
    first.connection->Logout();
    second.Login("1", "laptop", "desk");
    EXPECT_EQ(Settled(), (Lines{"A Logouted 0", "B LoginResult 0"}));
    second.Release();
    first.Login("1", "pc", "desk");
    EXPECT_EQ(Settled(), (Lines{"A LoginResult 0"}));
}

TEST_F(LoginTest, ARefusedTokenAndARefusedUserAreToldWithTheirCodes)
{
    Device device(platform, journal, "A");
    platform.GetFaults().RefuseToken("token");
    device.Login("1");
    EXPECT_EQ(Settled(), (Lines{"A LoginResult 32"}));
    platform.GetFaults().AcceptToken("token");
    platform.GetFaults().RefuseLogins(static_cast<avcore::ZolPortErrCode>(1234), "1");
    device.Login("1");
    EXPECT_EQ(Settled(), (Lines{"A LoginResult 1234"}));
    device.Login("2");
    EXPECT_EQ(Settled(), (Lines{"A LoginResult 0"}));
    platform.GetFaults().RefuseLogins(avcore::ZOL_PORT_LOGIN_CONFLICT);
    device.Login("2");
    EXPECT_EQ(Settled(), (Lines{"A LoginResult 36   "})) << "no other device is named";
    platform.GetFaults().Clear();
    device.Login("1");
    EXPECT_EQ(Settled(), (Lines{"A LoginResult 0"}));
}

TEST_F(LoginTest, AnUnreachableConnectionPointIsTold)
{
    Device device(platform, journal, "A");
    platform.GetFaults().SetUnreachable("cp.example", true);
    device.Login("1");
    EXPECT_EQ(Settled(), (Lines{"A LoginResult 33"}));
    platform.GetFaults().SetUnreachable("cp.example", false);
    device.Login("1");
    EXPECT_EQ(Settled(), (Lines{"A LoginResult 0"}));
}

TEST_F(LoginTest, ALoginThatIsNotAnsweredInTimeFails)
{
    platform::PlatformOptions options = QuickOptions();
    options.loginTimeLimit = std::chrono::milliseconds(20);
    platform.SetOptions(options);
    platform.GetFaults().DelayDeliveries(std::chrono::hours(1));
    Device device(platform, journal, "A");
    device.Login("1");
    EXPECT_TRUE(journal.WaitFor("A LoginResult 33"));
    EXPECT_TRUE(platform.Sessions().empty());
}

TEST_F(LoginTest, AConnectionLostDuringTheLoginEndsIt)
{
    platform.GetFaults().DelayDeliveries(std::chrono::milliseconds(500));
    Device device(platform, journal, "A");
    device.Login("1");
    while (platform.GetFaults().DropConnections("1") == 0)
    {
        std::this_thread::yield();
    }
    EXPECT_TRUE(journal.WaitFor("A LoginResult 34"));
    EXPECT_EQ(Settled(), (Lines{"A LoginResult 34"}));
}

TEST_F(LoginTest, ALogoutDuringALoginEndsItWithoutAResult)
{
    platform.GetFaults().DelayDeliveries(std::chrono::hours(1));
    Device device(platform, journal, "A");
    device.Login("1");
    EXPECT_EQ(device.connection->Logout(), S_OK);
    EXPECT_TRUE(journal.WaitFor("A Logouted 0"));
    EXPECT_EQ(Settled(), (Lines{"A Logouted 0"}));
}

TEST_F(LoginTest, ALoginWhileLoggedInReplacesTheEarlierOneQuietly)
{
    Device device(platform, journal, "A");
    Device watcher(platform, journal, "W", true);
    watcher.Login("9");
    Settled();
    device.Login("1");
    Settled();
    device.Login("2");
    const Lines lines = Settled();
    EXPECT_EQ(lines, (Lines{"W Terminal 1 pc 0  ext of pc", "A LoginResult 0", "W Terminal 2 pc 1  ext of pc"}));
    ASSERT_EQ(platform.Sessions().size(), 2U);
    EXPECT_EQ(platform.Sessions()[1].userId, "2");
}

TEST_F(LoginTest, SessionsAreDescribed)
{
    Device device(platform, journal, "A");
    Device::LoginArguments arguments;
    arguments.userId = "1";
    arguments.mutex = "desk";
    arguments.force = true;
    arguments.registerUser = true;
    device.Login(arguments);
    Settled();
    device.online->SetUserCustomInfo("busy");
    device.connection->JoinGroup("g");
    Settled();
    const std::vector<SessionInfo> sessions = platform.Sessions();
    ASSERT_EQ(sessions.size(), 1U);
    const SessionInfo& info = sessions[0];
    EXPECT_EQ(info.state, SessionInfo::State::LoggedIn);
    EXPECT_FALSE(info.gateway);
    EXPECT_EQ(info.appId, "app");
    EXPECT_EQ(info.companyId, "7");
    EXPECT_EQ(info.userId, "1");
    EXPECT_EQ(info.deviceId, "pc");
    EXPECT_EQ(info.mutex, "desk");
    EXPECT_EQ(info.custom, "busy");
    EXPECT_EQ(info.server, "cp.example");
    EXPECT_EQ(info.connectionPoint, "cp.example");
    EXPECT_EQ(info.groupId, "g");
    EXPECT_FALSE(info.clientId.empty());
    EXPECT_TRUE(info.force);
    EXPECT_TRUE(info.registerUser);
}

TEST_F(LoginTest, IdsMayHoldAnything)
{
    const std::string odd = "a/b+c#d %\x01\xFF\xC3(";
    Device device(platform, journal, "A", true);
    Device second(platform, journal, "B");
    Device::LoginArguments arguments;
    arguments.appId = odd;
    arguments.companyId = odd;
    arguments.userId = odd;
    arguments.deviceId = odd;
    arguments.mutex = odd;
    arguments.ext = odd;
    device.Login(arguments);
    EXPECT_EQ(Settled(), (Lines{"A LoginResult 0"}));
    device.online->SetUserCustomInfo(odd.c_str());
    EXPECT_EQ(Settled(), (Lines{"A Terminal " + odd + ' ' + odd + " 1 " + odd + ' ' + odd}));
    arguments.deviceId = "other";
    second.Login(arguments);
    EXPECT_EQ(Settled(), (Lines{"B LoginResult 36 " + odd + ' ' + odd + ' ' + odd}));
    EXPECT_EQ(device.connection->JoinGroup(odd.c_str()), S_OK);
    EXPECT_EQ(Settled(), (Lines{"A JoinGroupResult 0", "A GroupUserSync complete " + odd}));
}

TEST_F(LoginTest, APlatformThatIsGoneFailsOperationsOfItsConnections)
{
    auto shortLived = std::make_unique<platform::Platform>(QuickOptions());
    Device device(*shortLived, journal, "A");
    device.Login("1");
    shortLived->Settle();
    EXPECT_EQ(journal.Take(), (Lines{"A LoginResult 0"}));
    shortLived.reset();
    EXPECT_EQ(device.Login("1"), E_FAIL);
    unsigned id = 0;
    EXPECT_EQ(device.online->RefreshAllUsersStatus(&id), E_FAIL);
    EXPECT_EQ(device.connection->RemoveListener(&device), S_OK);
    EXPECT_EQ(journal.Take(), Lines());
}

TEST_F(LoginTest, TheDefaultPlatformIsShared)
{
    EXPECT_EQ(&platform::Platform::Default(), &platform::Platform::Default());
    Device first(platform::Platform::Default(), journal, "A");
    Device second(platform, journal, "B");
    first.Login("1", "pc", "desk");
    EXPECT_TRUE(journal.WaitFor("A LoginResult 0"));
    second.Login("1", "laptop", "desk");
    EXPECT_EQ(Settled(), (Lines{"A LoginResult 0", "B LoginResult 0"})) << "two platforms do not see each other";
}

TEST_F(LoginTest, EventsDoNotOvertakeTheReturnOfTheirOperation)
{
    platform::PlatformOptions options = QuickOptions();
    options.answerDelay = std::chrono::milliseconds(100);
    platform.SetOptions(options);
    Device device(platform, journal, "A");
    const auto begin = std::chrono::steady_clock::now();
    device.Login("1");
    EXPECT_TRUE(journal.WaitFor("A LoginResult 0"));
    EXPECT_GE(std::chrono::steady_clock::now() - begin, options.answerDelay);
}

} // namespace
