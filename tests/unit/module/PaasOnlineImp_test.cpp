#include "onlinemanager/PaasOnlineImp.h"
#include "tests/unit/module/RecordedTest.h"

#include <memory>

using checks::LogLine;
using onlinemanager::LoginParam;
using onlinemanager::PaasOnlineImp;

namespace
{

class PaasOnlineImpTest : public RecordedTest
{
protected:
    PaasOnlineImpTest()
    {
        m_param.userid = 7;
        m_param.server = "tcp:server";
    }

    avcore::IZolConnection* m_connection = nullptr; ///< stands for the field of the session's owner
    LoginParam m_param;
};

} // namespace

TEST_F(PaasOnlineImpTest, TheDestructorGivesTheHttpObjectBack)
{
    m_http.Hold();
    auto session = std::make_unique<PaasOnlineImp>(m_connection, &m_http);
    session.reset();
    EXPECT_EQ((Lines{LogLine("PaasOnlineImp", "PaasOnlineImp()"), "http.Release() -> 1"}), Journal());
}

TEST_F(PaasOnlineImpTest, WithoutAConnectionEveryOperationIsRefused)
{
    PaasOnlineImp session(m_connection, nullptr);
    onlinemanager::IUserOnline* users = nullptr;
    onlinemanager::IMeetingTunnel* tunnel = nullptr;
    m_journal.Clear();
    EXPECT_FALSE(session.InitModel(nullptr));
    EXPECT_FALSE(session.Login(m_param, false));
    EXPECT_FALSE(session.RequestCPAddress(m_param));
    EXPECT_FALSE(session.Logout());
    EXPECT_FALSE(session.Relogin(true));
    EXPECT_EQ(E_FAIL, session.GetUserOnline(&users));
    EXPECT_EQ(0, session.GetMeetingTunnel(&tunnel));
    EXPECT_FALSE(tunnel->JoinMeeting({}));
    EXPECT_FALSE(tunnel->LeaveMeeting());
    EXPECT_TRUE(session.UninitModel());
    EXPECT_EQ((Lines{
                  LogLine("PaasOnlineImp", "InitModel()"),
                  LogLine("PaasOnlineImp", "PaasOnlineImp::InitModel Failed, m_zol_connection = nullptr."),
                  LogLine("PaasOnlineImp", "Login()"),
                  LogLine("PaasOnlineImp", "RequestCPAddress()"),
                  LogLine("PaasOnlineImp", "Logout()"),
                  LogLine("PaasOnlineImp", "PaasOnlineImp::GetUserOnline m_user_online = nullptr."),
                  LogLine("PaasOnlineImp", "GetMeetingTunnel()"),
                  LogLine("PaasOnlineImp", "JoinMeeting()"),
                  LogLine("PaasOnlineImp", "LeaveMeeting()"),
                  LogLine("PaasOnlineImp", "Logout()"),
              }),
              Journal());
}

TEST_F(PaasOnlineImpTest, AConnectionThatItsOwnerSetsLaterIsSeen)
{
    PaasOnlineImp session(m_connection, nullptr);
    EXPECT_FALSE(session.Login(m_param, false));
    m_connection = &m_platform.NewConnection();
    EXPECT_TRUE(session.InitModel(nullptr));
    EXPECT_TRUE(session.Login(m_param, false));
    EXPECT_EQ(1u, m_journal.Count("connection1.Login("));
    m_connection = &m_platform.NewConnection();
    EXPECT_TRUE(session.Login(m_param, false));
    EXPECT_EQ(1u, m_journal.Count("connection2.Login("));
    m_connection = m_platform.connections[0].get();
    EXPECT_TRUE(session.UninitModel());
}

TEST_F(PaasOnlineImpTest, AnOnlineComponentThatComesLaterIsFetchedByTheNextInitModel)
{
    PaasOnlineImp session(m_connection, nullptr);
    checks::RecordingConnection& connection = m_platform.NewConnection();
    connection.SetResult("GetComponent IZolOnline", E_NOINTERFACE);
    m_connection = &connection;
    EXPECT_FALSE(session.InitModel(nullptr));
    connection.SetResult("GetComponent IZolOnline", S_OK);
    EXPECT_TRUE(session.InitModel(nullptr));
    onlinemanager::IUserOnline* users = nullptr;
    EXPECT_EQ(0, session.GetUserOnline(&users));
    EXPECT_TRUE(session.UninitModel());
}
