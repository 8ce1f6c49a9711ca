#include "onlinemanager/UserOnlineImp.h"

#include "tests/unit/module/RecordedTest.h"

using onlinemanager::ConvertUintVectorToStrVector;
using onlinemanager::UserOnlineImp;

namespace
{

class UserOnlineImpTest : public RecordedTest
{
protected:
    UserOnlineImpTest() : m_connection(m_platform.NewConnection()) {}

    /// Writes the platform's component into the field, as the session does.
    void Connect()
    {
        m_online = &m_connection.online;
    }

    void LogIn()
    {
        m_users.m_self_user_id = 52011;
        m_users.m_terminal_type = static_cast<quenda::TerminalType>(3);
    }

    checks::RecordingConnection& m_connection;
    avcore::IZolOnline* m_online = nullptr;
    UserOnlineImp m_users{m_online};
};

std::string Log(const std::string& text)
{
    return checks::LogLine("UserOnlineImp", text);
}

} // namespace

TEST(ConvertUintVectorToStrVector, AppendsDecimalTextsInOrderAndReturnsTheNumberOfEntries)
{
    avcore::ZolTextList texts;
    texts.push_back("before");
    EXPECT_EQ(5u, ConvertUintVectorToStrVector({7, 0, 4294967295, 7}, &texts));
    Lines seen;
    for (const avcore::ZolText& text : texts)
    {
        seen.emplace_back(text.c_str());
    }
    EXPECT_EQ((Lines{"before", "7", "0", "4294967295", "7"}), seen);
    EXPECT_EQ(5u, ConvertUintVectorToStrVector({}, &texts));
}

TEST(ConvertUintVectorToStrVector, IsNothingWithoutAnOutput)
{
    EXPECT_EQ(0u, ConvertUintVectorToStrVector({7}, nullptr));
}

TEST_F(UserOnlineImpTest, CorrectInviteIDTranslatesEveryBatchToTheFirst)
{
    Connect();
    LogIn();
    unsigned inviteId = 0;
    ASSERT_TRUE(m_users.InviteUsers(std::vector<unsigned>(45, 8), {}, &inviteId));
    for (const unsigned batch : {501u, 502u, 503u})
    {
        EXPECT_EQ(501u, m_users.CorrectInviteID(batch));
    }
}

TEST_F(UserOnlineImpTest, CorrectInviteIDOfAnUnknownIdIs0AndStays0)
{
    Connect();
    LogIn();
    EXPECT_EQ(0u, m_users.CorrectInviteID(501));
    unsigned inviteId = 0;
    ASSERT_TRUE(m_users.InviteUsers({8}, {}, &inviteId));
    EXPECT_EQ(501u, inviteId);
    EXPECT_EQ(0u, m_users.CorrectInviteID(501));
}

TEST_F(UserOnlineImpTest, WithoutThePlatformsComponentTheModelCallsSucceedAndNothingIsRefreshed)
{
    LogIn();
    EXPECT_TRUE(m_users.InitModel());
    m_users.LoginResultNotify(avcore::ZOL_PORT_SUCCESS);
    m_users.ReconnectSucessNotify();
    EXPECT_TRUE(m_users.UninitModel());
    EXPECT_EQ((Lines{Log("InitModel()"), Log("UninitModel()")}), Journal());
}

TEST_F(UserOnlineImpTest, AComponentThatItsOwnerSetsLaterIsSeen)
{
    LogIn();
    EXPECT_FALSE(m_users.SetSelfCustomInfo("before"));
    Connect();
    EXPECT_TRUE(m_users.SetSelfCustomInfo("after"));
    m_online = nullptr;
    EXPECT_FALSE(m_users.SetSelfCustomInfo("gone"));
    EXPECT_EQ((Lines{
                  Log("SetSelfCustomInfo, info=before."),
                  Log("SetSelfCustomInfo, info=after."),
                  "online1.SetUserCustomInfo(\"after\")",
                  Log("SetSelfCustomInfo, info=gone."),
              }),
              Journal());
}

TEST_F(UserOnlineImpTest, OnlyASuccessfulLoginStartsARefresh)
{
    Connect();
    for (const int code : {36, -1, 1})
    {
        m_users.LoginResultNotify(static_cast<avcore::ZolPortErrCode>(code));
    }
    EXPECT_EQ(Lines(), Journal());
    m_users.LoginResultNotify(avcore::ZOL_PORT_SUCCESS);
    EXPECT_EQ(Lines{"online1.RefreshAllUsersStatus() -> 101"}, Journal());
}

TEST_F(UserOnlineImpTest, ReconnectStartNotifyDoesNothing)
{
    Connect();
    LogIn();
    m_users.ReconnectStartNotify();
    EXPECT_EQ(Lines(), Journal());
}

TEST_F(UserOnlineImpTest, InitModelRegistersAndOnlyUninitModelUnregisters)
{
    Connect();
    {
        UserOnlineImp forgotten(m_online);
        forgotten.InitModel();
    }
    EXPECT_EQ((Lines{Log("InitModel()"), "online1.AddListener(listener1)"}), Journal());
    m_users.InitModel();
    m_users.UninitModel();
    EXPECT_EQ((Lines{
                  Log("InitModel()"),
                  "online1.AddListener(listener2)",
                  Log("UninitModel()"),
                  "online1.RemoveListener(listener2)",
              }),
              Journal());
}
