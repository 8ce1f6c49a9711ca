#include "platform/MonitoringService.h"
#include "tests/unit/platform/Device.h"

#include <thread>

using platform::MonitoringReport;
using platform::MonitoringService;
using platform::ReportKind;

namespace
{

using MessageTest = PlatformTest;

TEST_F(MessageTest, AUserMessageReachesEveryTerminalOfItsReceiver)
{
    Device pc(platform, journal, "P");
    Device phone(platform, journal, "H");
    Device other(platform, journal, "O");
    pc.Login("1", "pc");
    phone.Login("1", "phone");
    other.Login("2");
    Settled();
    const uint32_t id = platform.SendUserMessage("app", "7", "2", "1", "hello \xFF");
    EXPECT_EQ(id, 1U);
    Lines lines = Settled();
    std::sort(lines.begin(), lines.end());
    EXPECT_EQ(lines, (Lines{"H UserMsg 2 #1 hello \xFF", "P UserMsg 2 #1 hello \xFF"}));
    platform.SendUserMessage("app", "8", "2", "1", "another company");
    platform.SendUserMessage("app", "7", "2", "4711", "nobody");
    EXPECT_EQ(Settled(), Lines());
    pc.tMsg->RemoveListener(&pc);
    platform.SendUserMessage("app", "7", "", "1", "");
    EXPECT_EQ(Settled(), (Lines{"H UserMsg  #4 "}));
}

TEST_F(MessageTest, AGroupMessageReachesTheMembersOnly)
{
    Device member(platform, journal, "M");
    Device guest(platform, journal, "G");
    Device other(platform, journal, "O");
    member.Login("1");
    other.Login("2");
    Settled();
    const GUID meeting{1, 2, 3, {4}};
    member.connection->JoinGroup(platform::Platform::MeetingGroupId(meeting).c_str());
    guest.connection->LoginOldGw(meeting, "3", 0, 0, 0);
    Settled();
    platform.SendGroupMessage(platform::Platform::MeetingGroupId(meeting), "9", "hello");
    Lines lines = Settled();
    std::sort(lines.begin(), lines.end());
    EXPECT_EQ(lines, (Lines{"G GroupMsg 9 #1 hello", "M GroupMsg 9 #1 hello"}));
    member.connection->LeaveGroup();
    guest.connection->Logout();
    Settled();
    platform.SendGroupMessage(platform::Platform::MeetingGroupId(meeting), "9", "hello");
    EXPECT_EQ(Settled(), Lines());
}

TEST_F(MessageTest, AMessageIsNotToldBeforeTheLogin)
{
    platform.GetFaults().DelayDeliveries(std::chrono::milliseconds(10));
    Device device(platform, journal, "A");
    device.Login("1");
    // Repeats until one arrives, because the login is still under way at the first ones.
    std::atomic<bool> arrived{false};
    device.inside["UserMsg"] = [&arrived] { arrived = true; };
    while (!arrived)
    {
        platform.SendUserMessage("app", "7", "2", "1", "knock");
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    platform.GetFaults().Clear();
    EXPECT_EQ(Settled().front(), "A LoginResult 0");
}

class MonitoringTest : public PlatformTest
{
protected:
    std::unique_ptr<MonitoringService> MakeService()
    {
        return std::make_unique<MonitoringService>(
            platform, "app", "7",
            [this](const MonitoringReport& report)
            { journal.Write("report " + report.userId + ' ' + report.deviceId + ' ' + report.json); });
    }
};

TEST_F(MonitoringTest, CommandsReachEveryTerminalOfAUser)
{
    const auto service = MakeService();
    Device pc(platform, journal, "P");
    Device phone(platform, journal, "H");
    pc.Login("1", "pc");
    phone.Login("1", "phone");
    Settled();
    service->Subscribe("1", ReportKind::Overview);
    const std::string overview = R"({"message":{"command":"subscribe_av_quality","data":{"subType":"overview"}}})";
    Lines lines = Settled();
    std::sort(lines.begin(), lines.end());
    EXPECT_EQ(lines, (Lines{"H Mds " + overview, "P Mds " + overview}));
    phone.connection->Logout();
    Settled();
    service->Subscribe("1", ReportKind::Detail);
    service->Unsubscribe("1", ReportKind::All);
    service->SendCommand("1", "{misspelt");
    service->Subscribe("2", ReportKind::All);
    EXPECT_EQ(Settled(), (Lines{R"(P Mds {"message":{"command":"subscribe_av_quality","data":{"subType":"detail"}}})",
                                R"(P Mds {"message":{"command":"unsubscribe_av_quality","data":{"subType":"all"}}})",
                                "P Mds {misspelt"}));
}

TEST_F(MonitoringTest, ReportsAreCollected)
{
    auto service = MakeService();
    Device device(platform, journal, "A");
    device.Login("1", "my/pc");
    Settled();
    platform.GetFaults().DuplicateDeliveries(true);
    EXPECT_EQ(device.mds->SendMdsData(nullptr), E_POINTER);
    EXPECT_EQ(device.mds->SendMdsData("{1}"), S_OK);
    EXPECT_EQ(device.mds->SendMdsData("{2\xFF}"), S_OK);
    EXPECT_EQ(Settled(), (Lines{"report 1 my/pc {1}", "report 1 my/pc {2\xFF}"}));
    service.reset();
    EXPECT_EQ(device.mds->SendMdsData("{3}"), S_OK);
    EXPECT_EQ(Settled(), Lines());
}

TEST_F(MonitoringTest, ReportsOfOtherCompaniesAreNotCollected)
{
    const auto service = MakeService();
    Device device(platform, journal, "A");
    Device::LoginArguments arguments;
    arguments.companyId = "8";
    device.Login(arguments);
    Settled();
    device.mds->SendMdsData("{}");
    EXPECT_EQ(Settled(), Lines());
}

TEST_F(MonitoringTest, AServiceThatIsGoneIsNotCalledAnyMore)
{
    Device device(platform, journal, "A");
    device.Login("1");
    Settled();
    for (int i = 0; i < 20; ++i)
    {
        std::atomic<bool> running{false};
        auto service = std::make_unique<MonitoringService>(platform, "app", "7",
                                                           [&running](const MonitoringReport&)
                                                           {
                                                               running = true;
                                                               std::this_thread::yield();
                                                               running = false;
                                                           });
        device.mds->SendMdsData("{}");
        service.reset();
        EXPECT_FALSE(running);
    }
}

TEST_F(MonitoringTest, AReportMayEndItsService)
{
    std::unique_ptr<MonitoringService> service;
    service = std::make_unique<MonitoringService>(platform, "app", "7",
                                                  [&](const MonitoringReport&)
                                                  {
                                                      journal.Write("report");
                                                      service.reset();
                                                  });
    Device device(platform, journal, "A");
    device.Login("1");
    Settled();
    device.mds->SendMdsData("{}");
    device.mds->SendMdsData("{}");
    EXPECT_EQ(Settled(), (Lines{"report"}));
}

} // namespace
