#include "platform/Crowd.h"
#include "tests/unit/platform/Device.h"

#include <thread>

using platform::Crowd;
using platform::CrowdOptions;
using platform::Outage;
using platform::Platform;
using platform::SessionInfo;

namespace
{

const GUID kMeeting{0x12345678, 0x9ABC, 0xDEF0, {0x12, 0x34, 0x56, 0x78, 0x9A, 0xBC, 0xDE, 0xF0}};
const std::string kMeetingGroup = "12345678-9abc-def0-1234-56789abcdef0";

class GroupTest : public PlatformTest
{
protected:
    void Join(Device& device, const std::string& userId, const std::string& deviceId = "pc",
              const std::string& groupId = "g")
    {
        device.Login(userId, deviceId);
        platform.Settle();
        EXPECT_EQ(device.connection->JoinGroup(groupId.c_str()), S_OK);
        platform.Settle();
    }

    static Lines Sorted(Lines lines)
    {
        std::sort(lines.begin(), lines.end());
        return lines;
    }

    Device first{platform, journal, "A"};
    Device second{platform, journal, "B"};
    Device third{platform, journal, "C"};
};

TEST_F(GroupTest, MembersLearnOfEachOther)
{
    Join(first, "1");
    EXPECT_EQ(Settled(), (Lines{"A LoginResult 0", "A JoinGroupResult 0", "A GroupUserSync complete 1"}));
    Join(second, "2");
    Lines lines = Settled();
    EXPECT_EQ(std::count(lines.begin(), lines.end(), "A GroupUserJoined 2"), 1);
    std::erase(lines, "A GroupUserJoined 2");
    EXPECT_EQ(lines,
              (Lines{"B LoginResult 0", "B JoinGroupResult 0", "B GroupUserJoined 1", "B GroupUserSync complete 2 1"}));
    EXPECT_EQ(second.connection->LeaveGroup(), S_OK);
    EXPECT_EQ(Sorted(Settled()), (Lines{"A GroupUserLeaved 2", "B LeaveGroupResult 0"}));
    first.connection->LeaveGroup();
    EXPECT_EQ(Settled(), (Lines{"A LeaveGroupResult 0"}));
}

TEST_F(GroupTest, ArgumentsAndStatesAreChecked)
{
    first.Login("1");
    Settled();
    EXPECT_EQ(first.connection->JoinGroup(nullptr), E_POINTER);
    EXPECT_EQ(first.connection->JoinGroup(""), E_INVALIDARG);
    EXPECT_EQ(first.connection->LeaveGroup(), E_FAIL);
    EXPECT_EQ(first.connection->JoinGroup("g"), S_OK);
    EXPECT_EQ(first.connection->JoinGroup("g"), E_FAIL) << "already";
    EXPECT_EQ(first.connection->JoinGroup("h"), E_FAIL) << "one group at the most";
    EXPECT_EQ(Settled(), (Lines{"A JoinGroupResult 0", "A GroupUserSync complete 1"}));
    EXPECT_EQ(first.connection->LeaveGroup(), S_OK);
    EXPECT_EQ(first.connection->LeaveGroup(), E_FAIL);
    EXPECT_EQ(first.connection->JoinGroup("h"), S_OK) << "at once, in another one";
    EXPECT_EQ(Settled(), (Lines{"A LeaveGroupResult 0", "A JoinGroupResult 0", "A GroupUserSync complete 1"}));
    EXPECT_EQ(platform.Sessions()[0].groupId, "h");
}

TEST_F(GroupTest, ALeaveThatOvertakesItsJoinEndsIt)
{
    Join(second, "2");
    Settled();
    // Nothing else happens during an event, so the join cannot be faster than the leave.
    first.inside["LoginResult"] = [this]
    {
        EXPECT_EQ(first.connection->JoinGroup("g"), S_OK);
        EXPECT_EQ(first.connection->LeaveGroup(), S_OK);
    };
    first.Login("1");
    EXPECT_EQ(Settled(), (Lines{"A LoginResult 0", "A LeaveGroupResult 0"}));
}

TEST_F(GroupTest, GroupsAreApart)
{
    Join(first, "1", "pc", "g");
    Join(second, "2", "pc", "h");
    Lines lines = Settled();
    EXPECT_EQ(std::count_if(lines.begin(), lines.end(),
                            [](const auto& line) { return line.find("GroupUserJoined") != std::string::npos; }),
              0);
}

TEST_F(GroupTest, MembersMayBeOfDifferentCompanies)
{
    Join(first, "1");
    Device::LoginArguments arguments;
    arguments.userId = "2";
    arguments.companyId = "8";
    second.Login(arguments);
    Settled();
    second.connection->JoinGroup("g");
    EXPECT_EQ(Sorted(Settled()), (Lines{"A GroupUserJoined 2", "B GroupUserJoined 1", "B GroupUserSync complete 2 1",
                                        "B JoinGroupResult 0"}));
    second.reconnectAnswer = avcore::ZOL_RECONNECT_STOP;
    platform.GetFaults().DropConnections("2");
    EXPECT_EQ(Sorted(Settled()), (Lines{"A GroupUserLeaved 2", "B ReconnectStart"}));
}

TEST_F(GroupTest, AUserOnTwoTerminalsCountsOnce)
{
    Join(first, "1");
    Join(second, "2", "pc");
    Settled();
    Join(third, "2", "phone");
    EXPECT_EQ(Settled(),
              (Lines{"C LoginResult 0", "C JoinGroupResult 0", "C GroupUserJoined 1", "C GroupUserSync complete 2 1"}));
    second.connection->LeaveGroup();
    EXPECT_EQ(Settled(), (Lines{"B LeaveGroupResult 0"}));
    third.connection->Logout();
    EXPECT_EQ(Sorted(Settled()), (Lines{"A GroupUserLeaved 2", "C Logouted 0"}));
}

TEST_F(GroupTest, AMemberThatIsLoggedOutOrReleasedHasLeft)
{
    Join(first, "1");
    Join(second, "2");
    Join(third, "3");
    Settled();
    second.connection->Logout();
    EXPECT_EQ(Sorted(Settled()), (Lines{"A GroupUserLeaved 2", "B Logouted 0", "C GroupUserLeaved 2"}));
    third.Release();
    EXPECT_EQ(Settled(), (Lines{"A GroupUserLeaved 3"}));
    EXPECT_EQ(second.connection->JoinGroup("g"), E_FAIL);
}

TEST_F(GroupTest, AMemberThatVanishedHasLeftAndLaterMembersDoNotSeeIt)
{
    Join(first, "1");
    Join(second, "2");
    Settled();
    second.reconnectAnswer = avcore::ZOL_RECONNECT_STOP;
    platform.GetFaults().DropConnections("2");
    EXPECT_EQ(Sorted(Settled()), (Lines{"A GroupUserLeaved 2", "B ReconnectStart"}));
    Join(third, "3");
    EXPECT_EQ(Sorted(Settled()), (Lines{"A GroupUserJoined 3", "C GroupUserJoined 1", "C GroupUserSync complete 3 1",
                                        "C JoinGroupResult 0", "C LoginResult 0"}));
}

TEST_F(GroupTest, OneReplacedByANewSessionOfItsDeviceHasLeft)
{
    Join(first, "1");
    Join(second, "2", "pc");
    Settled();
    third.Login("2", "pc");
    EXPECT_EQ(Sorted(Settled()), (Lines{"A GroupUserLeaved 2", "B Logouted 36", "C LoginResult 0"}));
}

TEST_F(GroupTest, AMemberThatComesBackIsInItsGroupAgain)
{
    Join(first, "1");
    Join(second, "2");
    Settled();
    platform.GetFaults().DropConnections("2", {}, Outage::Forever());
    EXPECT_EQ(Sorted(Settled()), (Lines{"A GroupUserLeaved 2", "B ReconnectStart"}));
    platform.GetFaults().EndOutages();
    EXPECT_TRUE(journal.WaitFor("A GroupUserJoined 2"));
    EXPECT_EQ(Sorted(Settled()), (Lines{"A GroupUserJoined 2", "B GroupUserSync complete 2 1", "B ReconnectSucess"}));
    EXPECT_EQ(platform.Sessions()[1].groupId, "g");
    EXPECT_EQ(second.connection->LeaveGroup(), S_OK);
    EXPECT_EQ(Sorted(Settled()), (Lines{"A GroupUserLeaved 2", "B LeaveGroupResult 0"}));
}

TEST_F(GroupTest, ChangesInTheGroupDuringTheLossAreReportedAsADifference)
{
    Join(first, "1");
    Join(second, "2");
    Settled();
    platform.GetFaults().DropConnections("1", {}, Outage::Forever());
    Settled();
    second.connection->LeaveGroup();
    Join(third, "3");
    Settled();
    platform.GetFaults().EndOutages();
    EXPECT_TRUE(journal.WaitFor("A GroupUserSync complete 1 3"));
    Lines lines = Settled();
    std::erase(lines, "C GroupUserJoined 1");
    EXPECT_EQ(lines, (Lines{"A ReconnectSucess", "A GroupUserLeaved 2", "A GroupUserJoined 3",
                            "A GroupUserSync complete 1 3"}));
}

TEST_F(GroupTest, AJoinUnderWayEndsWithTheConnection)
{
    Join(second, "2");
    first.Login("1");
    Settled();
    platform.GetFaults().DelayDeliveries(std::chrono::milliseconds(300));
    first.connection->JoinGroup("g");
    platform.Settle();
    platform.GetFaults().DropConnections("1");
    EXPECT_TRUE(journal.WaitFor("A ReconnectSucess"));
    platform.GetFaults().Clear();
    Lines lines = Settled();
    EXPECT_EQ(std::count(lines.begin(), lines.end(), "A JoinGroupResult 0"), 0);
    EXPECT_EQ(first.connection->LeaveGroup(), E_FAIL);
    EXPECT_EQ(first.connection->JoinGroup("g"), S_OK);
    EXPECT_TRUE(journal.WaitFor("A GroupUserSync complete 1 2"));
}

TEST_F(GroupTest, ALeaveThatTheLossOvertakesIsRepeatedAfterwards)
{
    platform::PlatformOptions options = QuickOptions();
    Join(first, "1");
    Join(second, "2");
    Settled();
    options.answerDelay = std::chrono::milliseconds(100);
    platform.SetOptions(options);
    EXPECT_EQ(second.connection->LeaveGroup(), S_OK);
    platform.GetFaults().DropConnections("2", {}, Outage::Forever());
    EXPECT_TRUE(journal.WaitFor("B LeaveGroupResult 0"));
    platform.SetOptions(QuickOptions());
    platform.GetFaults().EndOutages();
    EXPECT_TRUE(journal.WaitFor("B ReconnectSucess"));
    Settled();
    Join(third, "3");
    const Lines lines = Settled();
    EXPECT_EQ(std::count(lines.begin(), lines.end(), "C GroupUserSync complete 3 1"), 1) << "2 is not in it";
}

TEST_F(GroupTest, ALateWillDoesNotEndAMembership)
{
    Join(first, "1");
    Join(second, "2");
    ASSERT_EQ(third.connection->LoginOldGw(kMeeting, "3", 0, 0, 0), S_OK);
    Settled();
    Device fourth(platform, journal, "D");
    Join(fourth, "4", "pc", kMeetingGroup);
    Settled();
    platform.GetFaults().DelayWills(std::chrono::milliseconds(1000));
    platform.GetFaults().DropConnections("2");
    platform.GetFaults().DropConnections("3");
    EXPECT_TRUE(journal.WaitFor("B ReconnectSucess"));
    EXPECT_TRUE(journal.WaitFor("C ReconnectSucess"));
    std::this_thread::sleep_for(std::chrono::milliseconds(1300));
    const Lines lines = Settled();
    EXPECT_EQ(std::count(lines.begin(), lines.end(), "A GroupUserLeaved 2"), 0);
    EXPECT_EQ(std::count(lines.begin(), lines.end(), "D GroupUserLeaved 3"), 0);
    Device late(platform, journal, "L");
    Join(late, "5", "pc", kMeetingGroup);
    const Lines after = Settled();
    EXPECT_EQ(std::count(after.begin(), after.end(), "L GroupUserSync complete 5 3 4"), 1);
}

TEST_F(GroupTest, CrowdsJoinLeaveAndVanish)
{
    CrowdOptions options;
    options.appId = "app";
    options.companyId = "7";
    options.firstUserId = 10;
    options.count = 3;
    Crowd crowd(platform, options);
    crowd.JoinGroup(10, "g");
    crowd.ComeOnline();
    crowd.JoinGroup(10, "g");
    crowd.JoinGroup(11, "g");
    Join(first, "1");
    EXPECT_EQ(Settled(), (Lines{"A LoginResult 0", "A JoinGroupResult 0", "A GroupUserJoined 10",
                                "A GroupUserJoined 11", "A GroupUserSync complete 1 10 11"}));
    crowd.JoinGroup(12, "g");
    platform.Settle();
    crowd.LeaveGroup(10, "g");
    EXPECT_EQ(Settled(), (Lines{"A GroupUserJoined 12", "A GroupUserLeaved 10"}));
    crowd.Vanish(11);
    crowd.GoOffline(12);
    EXPECT_EQ(Settled(), (Lines{"A GroupUserLeaved 11", "A GroupUserLeaved 12"}));
    crowd.ComeOnline(11);
    EXPECT_EQ(Settled(), Lines()) << "it has to join again";
    crowd.JoinGroup(11, "g");
    EXPECT_EQ(Settled(), (Lines{"A GroupUserJoined 11"}));
}

TEST_F(GroupTest, AGatewayLoginJoinsTheMeetingOfItsId)
{
    EXPECT_EQ(first.connection->LoginOldGw(kMeeting, "1", 2, 3, 4), S_OK);
    EXPECT_EQ(Settled(), (Lines{"A LoginResult 0", "A GroupUserSync complete 1"}));
    Join(second, "2", "pc", kMeetingGroup);
    EXPECT_EQ(Sorted(Settled()), (Lines{"A GroupUserJoined 2", "B GroupUserJoined 1", "B GroupUserSync complete 2 1",
                                        "B JoinGroupResult 0", "B LoginResult 0"}));
    third.connection->LoginOldGw(kMeeting, "3", 0, 0, 0);
    EXPECT_EQ(Sorted(Settled()), (Lines{"A GroupUserJoined 3", "B GroupUserJoined 3", "C GroupUserJoined 1",
                                        "C GroupUserJoined 2", "C GroupUserSync complete 3 1 2", "C LoginResult 0"}));
    const std::vector<SessionInfo> sessions = platform.Sessions();
    ASSERT_EQ(sessions.size(), 3U);
    EXPECT_TRUE(sessions[0].gateway);
    EXPECT_EQ(sessions[0].groupId, kMeetingGroup);
    EXPECT_EQ(sessions[0].deviceId, "gateway");
    EXPECT_EQ(first.connection->Logout(), S_OK);
    EXPECT_EQ(Sorted(Settled()), (Lines{"A Logouted 0", "B GroupUserLeaved 1", "C GroupUserLeaved 1"}));
    third.reconnectAnswer = avcore::ZOL_RECONNECT_STOP;
    platform.GetFaults().DropConnections("3", "gateway");
    EXPECT_EQ(Sorted(Settled()), (Lines{"B GroupUserLeaved 3", "C ReconnectStart"}));
}

TEST_F(GroupTest, AGatewayConnectionHasNoOtherServices)
{
    first.connection->LoginOldGw(kMeeting, "1", 0, 0, 0);
    Settled();
    unsigned id = 0;
    avcore::ZolTextPairList results;
    EXPECT_EQ(first.connection->JoinGroup("g"), E_FAIL);
    EXPECT_EQ(first.connection->LeaveGroup(), E_FAIL);
    EXPECT_EQ(first.online->RefreshAllUsersStatus(&id), E_FAIL);
    EXPECT_EQ(first.online->SetUserCustomInfo("x"), E_FAIL);
    EXPECT_EQ(first.online->InviteUsers(MakeList({"1"}), results, "1", "{}", &id), E_FAIL);
    EXPECT_EQ(first.mds->SendMdsData("{}"), E_FAIL);
    EXPECT_EQ(Settled(), Lines());
}

TEST_F(GroupTest, AGatewayConnectionComesBackToItsMeeting)
{
    first.connection->LoginOldGw(kMeeting, "1", 0, 0, 0);
    second.connection->LoginOldGw(kMeeting, "2", 0, 0, 0);
    Settled();
    platform.GetFaults().DropConnections("1", {}, Outage::Forever());
    EXPECT_EQ(Sorted(Settled()), (Lines{"A ReconnectStart", "B GroupUserLeaved 1"}));
    second.connection->Logout();
    Settled();
    platform.GetFaults().EndOutages();
    EXPECT_TRUE(journal.WaitFor("A GroupUserLeaved 2"));
    EXPECT_EQ(Settled(), (Lines{"A ReconnectSucess", "A GroupUserLeaved 2", "A GroupUserSync complete 1"}));
}

TEST_F(GroupTest, AGatewayLoginIsRefusedWithItsCode)
{
    platform.GetFaults().RefuseLogins(avcore::ZOL_PORT_REFUSED, "1");
    first.connection->LoginOldGw(kMeeting, "1", 0, 0, 0);
    EXPECT_EQ(Settled(), (Lines{"A LoginResult 37"}));
    platform.GetFaults().Clear();
    platform.GetFaults().DelayDeliveries(std::chrono::hours(1));
    first.connection->LoginOldGw(kMeeting, "1", 0, 0, 0);
    EXPECT_EQ(first.connection->Logout(), S_OK);
    EXPECT_TRUE(journal.WaitFor("A Logouted 0"));
    EXPECT_EQ(Settled(), (Lines{"A Logouted 0"}));
}

TEST_F(GroupTest, ALargeMeetingIsSeenWhole)
{
    CrowdOptions options;
    options.appId = "app";
    options.companyId = "7";
    options.firstUserId = 1000;
    options.count = 2500;
    Crowd crowd(platform, options);
    crowd.ComeOnline();
    for (uint32_t i = 0; i < options.count; ++i)
    {
        crowd.JoinGroup(options.firstUserId + i, "g");
    }
    Join(first, "1");
    EXPECT_EQ(Settled().size(), 3 + options.count);
}

} // namespace
