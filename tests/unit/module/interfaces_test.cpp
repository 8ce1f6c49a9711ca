#include "avcore/IZolConnection.h"
#include "avcore/IZolHttp.h"
#include "avcore/IZolMdsClient.h"
#include "avcore/IZolOnline.h"
#include "avcore/IZolTMsg.h"
#include "common/frameworksdk/IComponentFactory.h"
#include "common/frameworksdk/IHttpClient.h"
#include "common/frameworksdk/ILogCenter.h"
#include "onlinemanager/GwConnectionImp.h"
#include "onlinemanager/IMeetingTunnel.h"
#include "onlinemanager/IOnlineManager.h"
#include "onlinemanager/IPaasMdsClient.h"
#include "onlinemanager/IPaasOnline.h"
#include "onlinemanager/IPaasTMsg.h"
#include "onlinemanager/IReconnection.h"
#include "onlinemanager/IUserOnline.h"
#include "onlinemanager/UserOnlineImp.h"

#include <bit>
#include <gtest/gtest.h>

// Hosts and platforms that were built separately rely on slots and on values of identifiers. This file states each of
// them a second time.

namespace
{

/// The slot of a virtual operation in the table of its class, as the Itanium ABI stores it in a pointer to the
/// operation.
template <typename Operation>
ptrdiff_t SlotOf(Operation operation)
{
    struct Pointer
    {
        ptrdiff_t code;
        ptrdiff_t adjustment;
    };
    const auto pointer = std::bit_cast<Pointer>(operation);
    EXPECT_EQ(1, pointer.code % 8) << "a virtual operation";
    EXPECT_EQ(0, pointer.adjustment);
    return pointer.code / 8;
}

/// "E67F5F27 CB02 D0B6 62 E2 50 0A B0 C5 B0 D6", the fields from the first to the last.
std::string Fields(const GUID& guid)
{
    char text[48];
    const auto& d = guid.Data4;
    std::snprintf(text, sizeof(text), "%08X %04X %04X %02X %02X %02X %02X %02X %02X %02X %02X", guid.Data1, guid.Data2,
                  guid.Data3, d[0], d[1], d[2], d[3], d[4], d[5], d[6], d[7]);
    return text;
}

} // namespace

TEST(Interfaces, TheOperationsOfTheHostHaveTheirSlots)
{
    EXPECT_EQ(0, SlotOf(&IUnknown::QueryInterface));
    EXPECT_EQ(1, SlotOf(&IUnknown::AddRef));
    EXPECT_EQ(2, SlotOf(&IUnknown::Release));
    EXPECT_EQ(3, SlotOf(&IComponentFactory::CreateComponent));

    EXPECT_EQ(3, SlotOf(&ILogCenter::GetLogMgr));
    EXPECT_EQ(4, SlotOf(&ILogCenter::OpenLogger));
    EXPECT_EQ(5, SlotOf(&ILogCenter::CloseLogger));
    EXPECT_EQ(6, SlotOf(&ILogCenter::AddLogWriter));
    EXPECT_EQ(7, SlotOf(&ILogCenter::RemoveLogWriter));
    EXPECT_EQ(8, SlotOf(&ILogMgr::GetLoggerLevel));
    EXPECT_EQ(10, SlotOf(&ILogMgr::CreateMessage));
    EXPECT_EQ(1, SlotOf(&ILogMessage::Release));
    EXPECT_EQ(2, SlotOf(&ILogMessage::Append));
    EXPECT_EQ(3, SlotOf(&ILogMessage::AppendWide));
    EXPECT_EQ(2, SlotOf(&Quenda::ILogWriter::AppendLog));
    EXPECT_EQ(3, SlotOf(&IWLogAllocator::CreateLog));
    EXPECT_EQ(4, SlotOf(&IWLogAllocator::CreateLog2));

    EXPECT_EQ(9, SlotOf(&IHttpClient::Request));
    EXPECT_EQ(0, SlotOf(&IHttpResponseNotify::OnHeaderRespond));
    EXPECT_EQ(1, SlotOf(&IHttpResponseNotify::OnDataRespond));
    EXPECT_EQ(2, SlotOf(&IHttpResponseNotify::OnCompleteRespond));
}

TEST(Interfaces, TheOperationsOfThePlatformHaveTheirSlots)
{
    using namespace avcore;
    EXPECT_EQ(3, SlotOf(&IZolConnection::AddListener));
    EXPECT_EQ(4, SlotOf(&IZolConnection::RemoveListener));
    EXPECT_EQ(5, SlotOf(&IZolConnection::Login));
    EXPECT_EQ(6, SlotOf(&IZolConnection::LoginOldGw));
    EXPECT_EQ(7, SlotOf(&IZolConnection::Logout));
    EXPECT_EQ(8, SlotOf(&IZolConnection::JoinGroup));
    EXPECT_EQ(9, SlotOf(&IZolConnection::LeaveGroup));
    EXPECT_EQ(10, SlotOf(&IZolConnection::GetComponent));
    EXPECT_EQ(11, SlotOf(&IZolConnection::RequestCPAddress));

    EXPECT_EQ(0, SlotOf(&IZolConnectionListener::OnLoginResult));
    EXPECT_EQ(1, SlotOf(&IZolConnectionListener::OnJoinGroupResult));
    EXPECT_EQ(2, SlotOf(&IZolConnectionListener::OnLeaveGroupResult));
    EXPECT_EQ(3, SlotOf(&IZolConnectionListener::OnLogouted));
    EXPECT_EQ(4, SlotOf(&IZolConnectionListener::OnReconnectStart));
    EXPECT_EQ(5, SlotOf(&IZolConnectionListener::OnReconnectSucess));
    EXPECT_EQ(6, SlotOf(&IZolConnectionListener::OnReconnectFail));
    EXPECT_EQ(7, SlotOf(&IZolConnectionListener::OnGroupUserJoined));
    EXPECT_EQ(8, SlotOf(&IZolConnectionListener::OnGroupUserLeaved));
    EXPECT_EQ(9, SlotOf(&IZolConnectionListener::OnGroupUserSync));

    EXPECT_EQ(0, SlotOf(&IZolHttp::HttpGet));
    EXPECT_EQ(1, SlotOf(&IZolHttp::HttpPost));
    EXPECT_EQ(2, SlotOf(&IZolHttp::HttpClose));

    EXPECT_EQ(1, SlotOf(&IZolOnline::AddListener));
    EXPECT_EQ(2, SlotOf(&IZolOnline::RemoveListener));
    EXPECT_EQ(3, SlotOf(&IZolOnline::RefreshUsersStatus));
    EXPECT_EQ(4, SlotOf(&IZolOnline::RefreshAllUsersStatus));
    EXPECT_EQ(6, SlotOf(&IZolOnline::SetUserCustomInfo));
    EXPECT_EQ(7, SlotOf(&IZolOnline::InviteUsers));
    EXPECT_EQ(8, SlotOf(&IZolOnline::CancelInvite));
    EXPECT_EQ(9, SlotOf(&IZolOnline::AcceptInvite));
    EXPECT_EQ(10, SlotOf(&IZolOnline::RejectInvite));

    EXPECT_EQ(0, SlotOf(&IZolOnlineListener::OnRefreshUserStatusFinished));
    EXPECT_EQ(1, SlotOf(&IZolOnlineListener::OnInviteIncome));
    EXPECT_EQ(2, SlotOf(&IZolOnlineListener::OnInviteAccepted));
    EXPECT_EQ(3, SlotOf(&IZolOnlineListener::OnInviteRejected));
    EXPECT_EQ(4, SlotOf(&IZolOnlineListener::OnInviteCanceled));
    EXPECT_EQ(5, SlotOf(&IZolOnlineListener::OnUserTerminalStateChanged));

    EXPECT_EQ(1, SlotOf(&IZolTMsg::AddListener));
    EXPECT_EQ(2, SlotOf(&IZolTMsg::RemoveListener));
    EXPECT_EQ(0, SlotOf(&IZolTMsgListener::OnUserMsgIncome));
    EXPECT_EQ(1, SlotOf(&IZolTMsgListener::OnGroupMsgIncome));
    EXPECT_EQ(1, SlotOf(&IZolMdsClient::AddListener));
    EXPECT_EQ(2, SlotOf(&IZolMdsClient::RemoveListener));
    EXPECT_EQ(3, SlotOf(&IZolMdsClient::SendMdsData));
    EXPECT_EQ(0, SlotOf(&IZolMdsClientListener::OnMdsMsgData));
}

TEST(Interfaces, TheOperationsOfTheModuleHaveTheirSlots)
{
    using namespace onlinemanager;
    EXPECT_EQ(3, SlotOf(&IOnlineManager::Initialize));
    EXPECT_EQ(4, SlotOf(&IOnlineManager::GetZolConnectionForAVMP));
    EXPECT_EQ(5, SlotOf(&IOnlineManager::GetPaasOnline));
    EXPECT_EQ(6, SlotOf(&IOnlineManager::GetMeetingTunnel));
    EXPECT_EQ(7, SlotOf(&IOnlineManager::GetPaasMdsClient));
    EXPECT_EQ(8, SlotOf(&IOnlineManager::GetPaasTMsg));
    EXPECT_EQ(9, SlotOf(&IOnlineManager::Destroy));

    EXPECT_EQ(0, SlotOf(&IPaasOnline::AddNotify));
    EXPECT_EQ(1, SlotOf(&IPaasOnline::RemoveNotify));
    EXPECT_EQ(2, SlotOf(&IPaasOnline::RemoveAllNotify));
    EXPECT_EQ(3, SlotOf(&IPaasOnline::InitModel));
    EXPECT_EQ(4, SlotOf(&IPaasOnline::UninitModel));
    EXPECT_EQ(5, SlotOf(&IPaasOnline::Login));
    EXPECT_EQ(6, SlotOf(&IPaasOnline::RequestCPAddress));
    EXPECT_EQ(7, SlotOf(&IPaasOnline::Relogin));
    EXPECT_EQ(8, SlotOf(&IPaasOnline::Logout));
    EXPECT_EQ(9, SlotOf(&IPaasOnline::GetConnectProperty));
    EXPECT_EQ(10, SlotOf(&IPaasOnline::TriggerNotify));
    EXPECT_EQ(11, SlotOf(&IPaasOnline::GetUserOnline));
    EXPECT_EQ(12, SlotOf(&IPaasOnline::GetMeetingTunnel));
    EXPECT_EQ(13, SlotOf(&IPaasOnline::SetReconnectionStrategy));

    EXPECT_EQ(0, SlotOf(&IMeetingTunnel::AddNotify));
    EXPECT_EQ(1, SlotOf(&IMeetingTunnel::RemoveNotify));
    EXPECT_EQ(2, SlotOf(&IMeetingTunnel::RemoveAllNotify));
    EXPECT_EQ(3, SlotOf(&IMeetingTunnel::JoinMeeting));
    EXPECT_EQ(4, SlotOf(&IMeetingTunnel::LeaveMeeting));

    EXPECT_EQ(0, SlotOf(&IUserOnline::AddNotify));
    EXPECT_EQ(1, SlotOf(&IUserOnline::RemoveNotify));
    EXPECT_EQ(2, SlotOf(&IUserOnline::RemoveAllNotify));
    EXPECT_EQ(3, SlotOf(&IUserOnline::QueryUserStatus));
    EXPECT_EQ(4, SlotOf(&IUserOnline::RefreshCompanyUserStatus));
    EXPECT_EQ(5, SlotOf(&IUserOnline::RefreshUserStatus));
    EXPECT_EQ(6, SlotOf(&IUserOnline::SetSelfCustomInfo));
    EXPECT_EQ(7, SlotOf(&IUserOnline::GetSelfCustomInfo));
    EXPECT_EQ(8, SlotOf(&IUserOnline::InviteUsers));
    EXPECT_EQ(9, SlotOf(&IUserOnline::AcceptInvite));
    EXPECT_EQ(10, SlotOf(&IUserOnline::RejectAllInvite));
    EXPECT_EQ(11, SlotOf(&IUserOnline::AbandonInvite));

    EXPECT_EQ(0, SlotOf(&IPaasTMsg::AddNotify));
    EXPECT_EQ(1, SlotOf(&IPaasTMsg::RemoveNotify));
    EXPECT_EQ(2, SlotOf(&IPaasTMsg::RemoveAllNotify));
    EXPECT_EQ(3, SlotOf(&IPaasTMsg::InitModel));
    EXPECT_EQ(4, SlotOf(&IPaasTMsg::UninitModel));

    EXPECT_EQ(0, SlotOf(&IPaasMdsClient::AddNotify));
    EXPECT_EQ(1, SlotOf(&IPaasMdsClient::RemoveNotify));
    EXPECT_EQ(2, SlotOf(&IPaasMdsClient::RemoveAllNotify));
    EXPECT_EQ(3, SlotOf(&IPaasMdsClient::InitModel));
    EXPECT_EQ(4, SlotOf(&IPaasMdsClient::UninitModel));
    EXPECT_EQ(5, SlotOf(&IPaasMdsClient::InitMdsClient));
    EXPECT_EQ(6, SlotOf(&IPaasMdsClient::SendAVQualityInfo));
}

TEST(Interfaces, TheServicesAddTheirOperationsBehindThoseOfTheInterface)
{
    using namespace onlinemanager;
    EXPECT_EQ(5, SlotOf(&GwConnectionImp::InitModel));
    EXPECT_EQ(6, SlotOf(&GwConnectionImp::UninitModel)); // 7 and 8: the destructor
    EXPECT_EQ(9, SlotOf(&GwConnectionImp::OnLoginResult));
    EXPECT_EQ(10, SlotOf(&GwConnectionImp::OnLogouted));
    EXPECT_EQ(11, SlotOf(&GwConnectionImp::OnReconnectStart));
    EXPECT_EQ(12, SlotOf(&GwConnectionImp::OnReconnectSucess));
    EXPECT_EQ(13, SlotOf(&GwConnectionImp::OnReconnectFail));
    EXPECT_EQ(14, SlotOf(&GwConnectionImp::OnJoinGroupResult));
    EXPECT_EQ(15, SlotOf(&GwConnectionImp::OnLeaveGroupResult));
    EXPECT_EQ(16, SlotOf(&GwConnectionImp::OnGroupUserJoined));
    EXPECT_EQ(17, SlotOf(&GwConnectionImp::OnGroupUserLeaved));
    EXPECT_EQ(18, SlotOf(&GwConnectionImp::OnGroupUserSync));
    EXPECT_EQ(14, SlotOf(&UserOnlineImp::LoginResultNotify)); // 12 and 13: the destructor
    EXPECT_EQ(15, SlotOf(&UserOnlineImp::LogoutedNotify));
    EXPECT_EQ(16, SlotOf(&UserOnlineImp::ReconnectStartNotify));
    EXPECT_EQ(17, SlotOf(&UserOnlineImp::ReconnectSucessNotify));
}

TEST(Interfaces, TheNotificationsHaveTheirSlots)
{
    using namespace onlinemanager;
    EXPECT_EQ(0, SlotOf(&IReconnectionNotify::OnReadyReconnect));
    EXPECT_EQ(1, SlotOf(&IReconnectionNotify::OnReconnectStart));
    EXPECT_EQ(2, SlotOf(&IReconnectionNotify::OnReconnectSucess));
    EXPECT_EQ(3, SlotOf(&IReconnectionNotify::OnReconnectFail));
    EXPECT_EQ(4, SlotOf(&IPaasOnlineNotify::OnLoginSuccess));
    EXPECT_EQ(5, SlotOf(&IPaasOnlineNotify::OnOffline));
    EXPECT_EQ(2, SlotOf(&IReconnectionStrategy::CheckReconnect));

    EXPECT_EQ(0, SlotOf(&IMeetingTunnelNotify::OnJoinMeetingResult));
    EXPECT_EQ(1, SlotOf(&IMeetingTunnelNotify::OnLeaveMeetingResult));
    EXPECT_EQ(2, SlotOf(&IMeetingTunnelNotify::OnUserJoined));
    EXPECT_EQ(3, SlotOf(&IMeetingTunnelNotify::OnUserLeaved));

    EXPECT_EQ(0, SlotOf(&IUserOnlineNotify::OnUserStatusChanged));
    EXPECT_EQ(1, SlotOf(&IUserOnlineNotify::OnUserStatusRefreshed));
    EXPECT_EQ(2, SlotOf(&IUserOnlineNotify::OnInviteIncome));
    EXPECT_EQ(3, SlotOf(&IUserOnlineNotify::OnInviteAccepted));
    EXPECT_EQ(4, SlotOf(&IUserOnlineNotify::OnInviteRejected));
    EXPECT_EQ(5, SlotOf(&IUserOnlineNotify::OnAbandonInvite));

    EXPECT_EQ(0, SlotOf(&IPaasMdsClientNotify::OnSubscribeAVQualityInfo));
    EXPECT_EQ(1, SlotOf(&IPaasMdsClientNotify::OnUnSubscribeAVQualityInfo));
}

TEST(Interfaces, TheIdentifiersHaveTheirValues)
{
    EXPECT_EQ("00000000 0000 0000 C0 00 00 00 00 00 00 46", Fields(IID_IUnknown));
    EXPECT_EQ("E67F5F27 CB02 D0B6 62 E2 50 0A B0 C5 B0 D6", Fields(IID_ILogCenter));
    EXPECT_EQ("19B9932D 1068 4ADD A6 42 0B 95 EB F3 38 A9", Fields(IID_IWLogAllocator));
    EXPECT_EQ("4022BD11 A92F 4F6D 90 31 EE B9 2E 99 88 06", Fields(onlinemanager::CLSID_OnlineManager));
    EXPECT_EQ("36E271A8 9587 4184 A3 6E 48 16 B3 38 20 AA", Fields(onlinemanager::IID_OnlineManager));
    EXPECT_EQ("633B9917 776A 4267 AE 8E B6 7D 29 36 6C B5", Fields(avcore::CLSID_ZolConnection));
    EXPECT_EQ("D48FFB2C 3925 4271 BA 67 6C 88 93 FC E3 38", Fields(avcore::IID_IZolConnection));
    EXPECT_EQ("63F26FF8 A056 40F7 99 04 6C F9 38 60 BB 30", Fields(avcore::IID_IZolOnline));
    EXPECT_EQ("39E7FC29 FDDC 4156 B8 73 6E F1 A4 33 3F 23", Fields(avcore::IID_IZolTMsg));
    EXPECT_EQ("8CE5F21C 15D8 4706 87 55 87 10 A5 FF 18 61", Fields(avcore::IID_IZolMdsClient));
}

TEST(Interfaces, TheAnswersOfAReconnectionStrategyHaveTheirValues)
{
    EXPECT_EQ(0, avcore::ZOL_RECONNECT_UNDECIDED);
    EXPECT_EQ(1, avcore::ZOL_RECONNECT_GO_ON);
    EXPECT_EQ(2, avcore::ZOL_RECONNECT_STOP);
    EXPECT_EQ(sizeof(int32_t), sizeof(avcore::ZolReconnectDecision));
}

TEST(Interfaces, TheRecordsHaveTheirLayouts)
{
    using onlinemanager::JoinData;
    EXPECT_EQ(40U, sizeof(JoinData));
    EXPECT_EQ(16U, offsetof(JoinData, user_id));
    EXPECT_EQ(20U, offsetof(JoinData, gw_param32));
    EXPECT_EQ(24U, offsetof(JoinData, gw_param16));
    EXPECT_EQ(32U, offsetof(JoinData, gw_param64));
    EXPECT_EQ(56U, sizeof(HttpRequest));
    EXPECT_EQ(16U, offsetof(HttpRequest, zero1));
    EXPECT_EQ(32U, offsetof(HttpRequest, constant5));
    EXPECT_EQ(40U, offsetof(HttpRequest, url));
    EXPECT_EQ(48U, offsetof(HttpRequest, body));
    EXPECT_EQ(32U, sizeof(avcore::ZolUserTerminalInfo));
    EXPECT_EQ(8U, offsetof(avcore::ZolUserTerminalInfo, status));
    EXPECT_EQ(16U, offsetof(avcore::ZolUserTerminalInfo, custom));
    EXPECT_EQ(24U, offsetof(avcore::ZolUserTerminalInfo, ext_info));
    EXPECT_EQ(24U, sizeof(avcore::ZolUserInfo));
    EXPECT_EQ(8U, offsetof(avcore::ZolUserInfo, terminal_count));
    EXPECT_EQ(16U, offsetof(avcore::ZolUserInfo, terminals));
    EXPECT_EQ(8U, sizeof(WBASELIB::TStringBase<char>));
    EXPECT_EQ(16U, sizeof(WBASELIB::Vector<int>));
}

TEST(Interfaces, TheLogLevelsAndLimitsHaveTheirValues)
{
    using namespace Quenda;
    EXPECT_EQ(1U, LOG_LEVEL_INFO);
    EXPECT_EQ(2U, LOG_LEVEL_TRACE);
    EXPECT_EQ(3U, LOG_LEVEL_WARNING);
    EXPECT_EQ(4U, LOG_LEVEL_ERROR);
    EXPECT_EQ(5U, LOG_LEVEL_FATAL);
    EXPECT_EQ(0U, COLOR_DEFAULT);
    EXPECT_EQ(1U, COLOR_RED);
    EXPECT_EQ(2U, COLOR_GREEN);
    EXPECT_EQ(3U, COLOR_YELLOW);
    EXPECT_EQ(1U, kLogLevelBase);
    EXPECT_EQ(5U, kLogLevelCnt);
    EXPECT_EQ((std::vector<LogColor>{COLOR_DEFAULT, COLOR_DEFAULT, COLOR_YELLOW, COLOR_RED, COLOR_RED}),
              std::vector<LogColor>(std::begin(kLogLevelColor), std::end(kLogLevelColor)));
    EXPECT_EQ(3U, kLoggerModeCnt);
    EXPECT_EQ(10U * 1024 * 1024, kMaxLogFileSize);
    EXPECT_EQ(4096U, kMaxLogMessageBufLen);
}
