#include "onlinemanager/OnlineManager.h"
#include "tests/unit/module/RecordedTest.h"

#include "onlinemanager/IMeetingTunnel.h"

#include <memory>

using checks::LogLine;
using onlinemanager::OnlineManager;

using OnlineManagerTest = RecordedTest;

TEST_F(OnlineManagerTest, TheConstructorNeedsAFactoryAndAdoptsItsReference)
{
    HRESULT code = 9;
    {
        const OnlineManager without(nullptr, nullptr, &code);
        EXPECT_EQ(E_FAIL, code);
    }
    m_factory.Hold();
    {
        const OnlineManager with(nullptr, &m_factory, &code);
        EXPECT_EQ(S_OK, code);
        EXPECT_EQ(2, m_factory.References());
    }
    EXPECT_EQ(Lines{"factory.Release() -> 1"}, Journal());
}

TEST_F(OnlineManagerTest, WithoutAFactoryEveryOperationReturns1AfterItsEntryLine)
{
    HRESULT code = 9;
    OnlineManager manager(nullptr, nullptr, &code);
    onlinemanager::IPaasOnline* session = nullptr;
    onlinemanager::IPaasTMsg* tmsg = nullptr;
    onlinemanager::IPaasMdsClient* mds = nullptr;
    IUnknown* connection = nullptr;
    EXPECT_EQ(1, manager.Initialize(nullptr));
    EXPECT_EQ(1, manager.GetZolConnectionForAVMP(&connection));
    EXPECT_EQ(1, manager.GetPaasOnline(&session));
    EXPECT_EQ(1, manager.GetPaasTMsg(&tmsg));
    EXPECT_EQ(1, manager.GetPaasMdsClient(&mds));
    EXPECT_EQ(1, manager.Destroy());
    EXPECT_EQ((Lines{
                  LogLine("OnlineManager", "OnlineManager::Initialize."),
                  LogLine("OnlineManager", "OnlineManager::GetZolConnectionForAVMP, tunnel=0."),
                  LogLine("OnlineManager", "GetPaasTMsg()"),
                  LogLine("OnlineManager", "GetPaasMdsClient()"),
                  LogLine("OnlineManager", "OnlineManager::Destroy."),
              }),
              Journal());
}

TEST_F(OnlineManagerTest, GetMeetingTunnelDoesNotLookForAFactory)
{
    HRESULT code = 9;
    OnlineManager manager(nullptr, nullptr, &code);
    onlinemanager::IMeetingTunnel* tunnel = nullptr;
    EXPECT_EQ(1, manager.GetMeetingTunnel(onlinemanager::TUNNEL_TYPE_PAAS, &tunnel));
    EXPECT_EQ((Lines{
                  LogLine("OnlineManager", "GetMeetingTunnel()"),
                  LogLine("OnlineManager", "OnlineManager::GetMeetingTunnel m_paas_online = nullptr."),
              }),
              Journal());
}
