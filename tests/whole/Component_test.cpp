#include "onlinehost/Component.h"

#include "onlinehost/ComponentFactory.h"
#include "onlinehost/Error.h"
#include "onlinehost/LogCenter.h"
#include "onlinehost/Module.h"
#include "platform/Platform.h"
#include "tests/support/HttpServer.h"

#include <functional>
#include <future>
#include <gtest/gtest.h>

using onlinehost::Event;
using onlinehost::EventKind;
using onlinehost::Component;

namespace
{

constexpr std::chrono::seconds kLimit{60};

/// One log center for all tests, because a module that stays loaded, as under the address sanitizer, keeps using the
/// first one.
onlinehost::LogCenter& SharedLog()
{
    static onlinehost::LogCenter center(
        []
        {
            onlinehost::LogCenter::Options options;
            options.keptLines = 10000;
            return options;
        }());
    return center;
}

onlinemanager::LoginParam Param(const std::string& device, const std::string& server = "tcp:in-process")
{
    onlinemanager::LoginParam param;
    param.userid = 1001;
    param.companyid = 1;
    param.mutex = "desk";
    param.deviceid = device;
    param.appid = "app";
    param.token = "token";
    param.server = server;
    return param;
}

/// The module with the real platform, and sessions on it.
class SessionTest : public testing::Test
{
protected:
    std::unique_ptr<Component> Make()
    {
        return std::make_unique<Component>(m_module, m_factory);
    }

    static Event WaitFor(Component& session, EventKind kind)
    {
        const auto event = session.Events().TakeIf([kind](const Event& each) { return each.kind == kind; }, kLimit);
        EXPECT_TRUE(event) << "kind " << static_cast<int>(kind);
        return event.value_or(Event{});
    }

    std::unique_ptr<Component> MakeLoggedIn(const std::string& device)
    {
        std::unique_ptr<Component> session = Make();
        EXPECT_TRUE(session->Login(Param(device), false));
        WaitFor(*session, EventKind::LoginSuccess);
        return session;
    }

    onlinehost::LogCenter& m_log = SharedLog();
    platform::Platform m_platform;
    onlinehost::ComponentFactory m_factory{std::bind_front(&platform::Platform::CreateComponent, &m_platform), m_log};
    std::shared_ptr<onlinehost::Module> m_module = std::make_shared<onlinehost::Module>(ONLINEMANAGER_MODULE);
};

} // namespace

TEST_F(SessionTest, PropertiesFollowTheLogin)
{
    const std::unique_ptr<Component> session = Make();
    EXPECT_EQ(session->Property(onlinemanager::CONNECT_PROPERTY_ONLINE), std::nullopt);
    ASSERT_TRUE(session->Login(Param("pc"), false));
    WaitFor(*session, EventKind::LoginSuccess);
    EXPECT_EQ(session->Property(onlinemanager::CONNECT_PROPERTY_ONLINE), "true");
    session->Online().Logout();
    EXPECT_EQ(WaitFor(*session, EventKind::Offline).code, 0);
    EXPECT_EQ(session->Property(onlinemanager::CONNECT_PROPERTY_ONLINE), "false");
}

TEST_F(SessionTest, ASecondDeviceIsRefusedAndLearnsOfTheFirst)
{
    const std::unique_ptr<Component> first = MakeLoggedIn("pc");
    const std::unique_ptr<Component> second = Make();
    ASSERT_TRUE(second->Login(Param("phone"), false));
    EXPECT_EQ(WaitFor(*second, EventKind::Offline).code, avcore::ZOL_PORT_LOGIN_CONFLICT);
    EXPECT_EQ(second->Property(onlinemanager::CONNECT_PROPERTY_CONFLICT_DEVICE_ID), "pc");
}

TEST_F(SessionTest, AForcedLoginLogsTheFirstDeviceOut)
{
    const std::unique_ptr<Component> first = MakeLoggedIn("pc");
    const std::unique_ptr<Component> second = Make();
    ASSERT_TRUE(second->Login(Param("phone"), true));
    WaitFor(*second, EventKind::LoginSuccess);
    EXPECT_EQ(WaitFor(*first, EventKind::Offline).code, onlinemanager::ERR_LOGIN_CONFLICT);
}

TEST_F(SessionTest, ALoginThatNeverStoodDoesNotGoOffline)
{
    const std::unique_ptr<Component> session = Make();
    m_platform.GetFaults().RefuseLogins(avcore::ZOL_PORT_REFUSED);
    ASSERT_TRUE(session->Login(Param("pc"), false));
    EXPECT_EQ(Describe(WaitFor(*session, EventKind::Offline)), "could not log in: 37 (refused by the service)");
    session->Online().TriggerNotify();
    EXPECT_EQ(Describe(WaitFor(*session, EventKind::Offline)), "is not logged in");

    m_platform.GetFaults().AcceptLogins();
    ASSERT_TRUE(session->Login(Param("pc"), false));
    WaitFor(*session, EventKind::LoginSuccess);
    session->Online().Logout();
    EXPECT_EQ(Describe(WaitFor(*session, EventKind::Offline)), "went offline: success");
}

TEST_F(SessionTest, ALoginAfterAStoppedReconnectionIsANewOne)
{
    const std::unique_ptr<Component> session = MakeLoggedIn("pc");
    session->SetReconnection(avcore::ZOL_RECONNECT_STOP);
    ASSERT_EQ(m_platform.GetFaults().DropConnections("1001"), 1u);
    WaitFor(*session, EventKind::ReconnectFail);
    m_platform.GetFaults().RefuseLogins(avcore::ZOL_PORT_REFUSED);
    ASSERT_TRUE(session->Login(Param("pc"), false));
    EXPECT_EQ(Describe(WaitFor(*session, EventKind::Offline)), "could not log in: 37 (refused by the service)");
}

TEST_F(SessionTest, ALostConnectionComesBackUnlessTheSessionSaysStop)
{
    const std::unique_ptr<Component> session = MakeLoggedIn("pc");
    ASSERT_EQ(m_platform.GetFaults().DropConnections("1001"), 1u);
    EXPECT_EQ(WaitFor(*session, EventKind::ReadyReconnect).tunnel, onlinemanager::TUNNEL_TYPE_PAAS);
    WaitFor(*session, EventKind::ReconnectStart);
    WaitFor(*session, EventKind::ReconnectSucess);

    session->SetReconnection(avcore::ZOL_RECONNECT_STOP);
    ASSERT_EQ(m_platform.GetFaults().DropConnections("1001"), 1u);
    EXPECT_EQ(WaitFor(*session, EventKind::ReconnectFail).code, onlinemanager::ERR_RECONNECT_STOPPED);
}

TEST_F(SessionTest, EverythingIsGivenBackAtTheEnd)
{
    {
        const std::unique_ptr<Component> first = MakeLoggedIn("pc");
        const std::unique_ptr<Component> second = Make();
        EXPECT_EQ(m_factory.ForeignReferences(), 2u);
        EXPECT_FALSE(m_module->CanUnload());
    }
    EXPECT_EQ(m_factory.ForeignReferences(), 0u);
    EXPECT_TRUE(m_module->CanUnload());
    EXPECT_TRUE(m_platform.Sessions().empty());
}

TEST_F(SessionTest, EndsWhileALoginWaitsForAnHttpAnswer)
{
    std::promise<void> asked;
    const HttpServer server(
        [&](const HttpExchange& exchange)
        {
            asked.set_value();
            exchange.Stall();
        });
    const std::unique_ptr<Component> session = Make();
    ASSERT_TRUE(session->Login(Param("pc", server.Url()), false));
    asked.get_future().wait();
}

TEST_F(SessionTest, CancelledWaitsEndTheRequestOfAnAddress)
{
    std::promise<void> asked;
    const HttpServer server(
        [&](const HttpExchange& exchange)
        {
            asked.set_value();
            exchange.Stall();
        });
    const std::unique_ptr<Component> session = Make();
    std::future<bool> fetched =
        std::async(std::launch::async, [&] { return session->FetchAddress(Param("pc", server.Url())); });
    asked.get_future().wait();
    session->CancelWaits();
    EXPECT_FALSE(fetched.get());
    EXPECT_EQ(session->Events().Take(std::chrono::hours(24)), std::nullopt);
}

TEST_F(SessionTest, TheModuleLogsIntoTheLogCenter)
{
    MakeLoggedIn("pc").reset();
    const std::vector<std::string> lines = m_log.Lines();
    const auto contains = [&](const std::string& text)
    {
        return std::any_of(lines.begin(), lines.end(),
                           [&](const std::string& line) { return line.find(text) != std::string::npos; });
    };
    EXPECT_TRUE(contains("OnlineManager::Initialize."));
    EXPECT_TRUE(contains("Paas login param: force=0, registeruser=0."));
    EXPECT_TRUE(contains("OnlineManager::Destroy."));
}

TEST_F(SessionTest, TunnelsAndUsersAreReached)
{
    const std::unique_ptr<Component> session = Make();
    EXPECT_NE(&session->Tunnel(onlinemanager::TUNNEL_TYPE_PAAS), &session->Tunnel(onlinemanager::TUNNEL_TYPE_GW));
    std::vector<unsigned> asked;
    EXPECT_TRUE(session->Users().QueryUserStatus({1, 2}, [&](const onlinemanager::UserOnlineInfo& info)
                                                 { asked.push_back(info.user_id); }));
    EXPECT_EQ(asked, (std::vector<unsigned>{1, 2}));
}

TEST_F(SessionTest, TheFactoryGivesTheLogCenterAndRefusesWhatItDoesNotKnow)
{
    void* out = nullptr;
    EXPECT_EQ(m_factory.QueryInterface(IID_ILogCenter, &out), S_OK);
    EXPECT_EQ(out, static_cast<ILogCenter*>(&m_log));
    m_log.Release();
    EXPECT_EQ(m_factory.QueryInterface(IID_IUnknown, &out), S_OK);
    EXPECT_EQ(out, static_cast<IComponentFactory*>(&m_factory));
    m_factory.Release();
    EXPECT_EQ(m_factory.QueryInterface(IID_IWLogAllocator, &out), E_NOINTERFACE);
    EXPECT_EQ(out, nullptr);
    EXPECT_EQ(m_factory.QueryInterface(IID_ILogCenter, nullptr), E_POINTER);
    EXPECT_LT(m_factory.CreateComponent(CLSID{}, IID_IUnknown, nullptr, &out), 0);
    EXPECT_EQ(out, nullptr);
}
