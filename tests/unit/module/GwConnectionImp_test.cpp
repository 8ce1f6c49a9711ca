#include "checks/RecordingNotify.h"
#include "onlinemanager/GwConnectionImp.h"
#include "tests/unit/module/RecordedTest.h"

using checks::LogLine;
using onlinemanager::GwConnectionImp;

using GwConnectionImpTest = RecordedTest;

TEST_F(GwConnectionImpTest, WithoutAConnectionOnlyTheModelCallsSucceed)
{
    avcore::IZolConnection* connection = nullptr;
    GwConnectionImp tunnel(connection, nullptr);
    EXPECT_TRUE(tunnel.InitModel());
    EXPECT_FALSE(tunnel.JoinMeeting({}));
    EXPECT_FALSE(tunnel.LeaveMeeting());
    EXPECT_TRUE(tunnel.UninitModel());
    EXPECT_EQ((Lines{
                  LogLine("GwConnectionImp", "InitModel()"),
                  LogLine("GwConnectionImp", "JoinMeeting()"),
                  LogLine("GwConnectionImp", "GwConnectionImp::JoinMeeting m_zol_connection = nullptr."),
                  LogLine("GwConnectionImp", "LeaveMeeting()"),
                  LogLine("GwConnectionImp", "GwConnectionImp::LeaveMeeting m_zol_connection = nullptr."),
                  LogLine("GwConnectionImp", "UninitModel()"),
              }),
              Journal());
}

TEST_F(GwConnectionImpTest, WithoutAReconnectionListenerReconnectionsAreNotReported)
{
    checks::RecordingConnection& recorded = m_platform.NewConnection();
    avcore::IZolConnection* connection = &recorded;
    GwConnectionImp tunnel(connection, nullptr);
    tunnel.JoinMeeting({});
    tunnel.OnLoginResult(avcore::ZOL_PORT_SUCCESS, nullptr, nullptr, nullptr);
    EXPECT_EQ(avcore::ZOL_RECONNECT_GO_ON, tunnel.OnReconnectStart());
    EXPECT_EQ(avcore::ZOL_RECONNECT_GO_ON, tunnel.OnReconnectStart());
    EXPECT_NO_THROW(tunnel.OnReconnectSucess());
    EXPECT_NO_THROW(tunnel.OnReconnectFail(avcore::ZOL_PORT_NOT_LOGGED_IN, nullptr));
}

TEST_F(GwConnectionImpTest, UninitModelKeepsTheReconnectionListenerUntilTheSessionIsForgotten)
{
    checks::RecordingConnection& recorded = m_platform.NewConnection();
    avcore::IZolConnection* connection = &recorded;
    checks::SessionNotify session(m_journal, "S");
    GwConnectionImp tunnel(connection, &session);
    tunnel.InitModel();
    tunnel.UninitModel();
    tunnel.InitModel();
    m_journal.Clear();
    tunnel.OnReconnectFail(avcore::ZOL_PORT_NOT_LOGGED_IN, nullptr);
    EXPECT_EQ((Lines{"S.OnReconnectFail(2, 30)"}), Journal());
    tunnel.ForgetSession();
    tunnel.OnReconnectFail(avcore::ZOL_PORT_NOT_LOGGED_IN, nullptr);
    EXPECT_EQ(Lines{}, Journal());
}
