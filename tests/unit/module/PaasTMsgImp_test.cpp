#include "onlinemanager/PaasTMsgImp.h"
#include "tests/unit/module/RecordedTest.h"

using checks::LogLine;
using onlinemanager::PaasTMsgImp;

using PaasTMsgImpTest = RecordedTest;

TEST_F(PaasTMsgImpTest, WithoutAConnectionInitModelFailsAndUninitModelStillSucceeds)
{
    avcore::IZolConnection* connection = nullptr;
    PaasTMsgImp messages(connection);
    EXPECT_FALSE(messages.InitModel(nullptr));
    EXPECT_TRUE(messages.UninitModel());
    EXPECT_EQ((Lines{
                  LogLine("PaasTMsgImp", "PaasTMsgImp()"),
                  LogLine("PaasTMsgImp", "InitModel()"),
                  LogLine("PaasTMsgImp", "PaasTMsgImp::InitModel Failed, m_zol_connection = nullptr."),
              }),
              Journal());
}

TEST_F(PaasTMsgImpTest, UninitModelWithoutInitModelReturnsTrueAndTouchesNothing)
{
    avcore::IZolConnection* connection = &m_platform.NewConnection();
    PaasTMsgImp messages(connection);
    m_journal.Clear();
    EXPECT_TRUE(messages.UninitModel());
    EXPECT_EQ(Lines{}, Journal());
}

TEST_F(PaasTMsgImpTest, AConnectionThatItsOwnerMakesLaterIsSeen)
{
    avcore::IZolConnection* connection = nullptr;
    PaasTMsgImp messages(connection);
    connection = &m_platform.NewConnection();
    m_journal.Clear();
    EXPECT_TRUE(messages.InitModel(nullptr));
    EXPECT_TRUE(messages.UninitModel());
    EXPECT_EQ((Lines{
                  LogLine("PaasTMsgImp", "InitModel()"),
                  "connection1.GetComponent(IZolTMsg)",
                  "tmsg1.AddListener(listener1)",
                  "tmsg1.RemoveListener(listener1)",
              }),
              Journal());
}
