#include "onlinemanager/PaasMdsClientImp.h"
#include "tests/unit/module/RecordedTest.h"

using checks::LogLine;
using onlinemanager::AVQualityInfo;
using onlinemanager::PaasMdsClientImp;

using PaasMdsClientImpTest = RecordedTest;

TEST_F(PaasMdsClientImpTest, WithoutAConnectionNothingIsSentAndOnlyInitModelLogsIt)
{
    avcore::IZolConnection* connection = nullptr;
    PaasMdsClientImp client(connection);
    EXPECT_FALSE(client.InitModel(nullptr));
    EXPECT_TRUE(client.InitMdsClient());
    EXPECT_FALSE(client.SendAVQualityInfo(std::make_shared<AVQualityInfo>()));
    EXPECT_TRUE(client.UninitModel());
    EXPECT_EQ((Lines{
                  LogLine("PaasMdsClientImp", "PaasMdsClientImp()"),
                  LogLine("PaasMdsClientImp", "InitModel()"),
                  LogLine("PaasMdsClientImp", "PaasMdsClientImp::InitModel Failed, m_zol_connection = nullptr."),
              }),
              Journal());
}

TEST_F(PaasMdsClientImpTest, AConnectionThatItsOwnerMakesLaterIsSeen)
{
    avcore::IZolConnection* connection = nullptr;
    PaasMdsClientImp client(connection);
    connection = &m_platform.NewConnection();
    m_journal.Clear();
    EXPECT_TRUE(client.SendAVQualityInfo(std::make_shared<AVQualityInfo>()));
    EXPECT_EQ((Lines{"connection1.GetComponent(IZolMdsClient)", "mds1.AddListener(listener1)"}), Journal());
}
