#include "checks/Stage.h"

#include "common/frameworksdk/wframelog.h"

#include <chrono>
#include <filesystem>
#include <thread>

namespace checks
{

namespace
{

size_t CountThreads()
{
    const std::filesystem::directory_iterator tasks("/proc/self/task");
    return static_cast<size_t>(std::distance(begin(tasks), end(tasks)));
}

} // namespace

Stage::Stage(CheckContext& context, Scene scene)
    : check(context),
      platform(journal),
      factory(journal, platform),
      http(journal),
      module(context.ModulePath()),
      m_threads(CountThreads())
{
    NameThread("host");
    if (scene >= Scene::Created)
    {
        manager = CreateComponent();
        check.Require(manager != nullptr, "the component is created");
    }
    if (scene >= Scene::Initialized)
    {
        http.Hold();
        check.Require(manager->Initialize(&http) == S_OK, "the component is initialised");
    }
    if (scene >= Scene::LoggedIn)
    {
        LogIn();
    }
    journal.Clear();
}

Stage::~Stage()
{
    try
    {
        TakeDown();
    }
    catch (const std::exception& error)
    {
        check.Fail(std::string("the end of the check threw an exception: ") + error.what());
    }
}

onlinemanager::IOnlineManager* Stage::CreateComponent()
{
    factory.Hold();
    void* component = nullptr;
    if (module.Functions().m_lpfnCreateComponent(onlinemanager::CLSID_OnlineManager, onlinemanager::IID_OnlineManager,
                                                 nullptr, &factory, &component) != S_OK)
    {
        return nullptr;
    }
    return static_cast<onlinemanager::IOnlineManager*>(component);
}

onlinemanager::IPaasOnline* Stage::Session()
{
    onlinemanager::IPaasOnline* session = nullptr;
    manager->GetPaasOnline(&session);
    journal.Clear();
    return session;
}

onlinemanager::IUserOnline* Stage::Users()
{
    onlinemanager::IUserOnline* users = nullptr;
    Session()->GetUserOnline(&users);
    journal.Clear();
    return users;
}

onlinemanager::IMeetingTunnel* Stage::Tunnel(onlinemanager::TunnelType type)
{
    onlinemanager::IMeetingTunnel* tunnel = nullptr;
    manager->GetMeetingTunnel(type, &tunnel);
    journal.Clear();
    return tunnel;
}

onlinemanager::IPaasMdsClient* Stage::Mds()
{
    onlinemanager::IPaasMdsClient* mds = nullptr;
    manager->GetPaasMdsClient(&mds);
    journal.Clear();
    return mds;
}

onlinemanager::IPaasTMsg* Stage::TMsg()
{
    onlinemanager::IPaasTMsg* tmsg = nullptr;
    manager->GetPaasTMsg(&tmsg);
    journal.Clear();
    return tmsg;
}

RecordingConnection& Stage::Connection()
{
    return *platform.connections.at(0);
}

RecordingConnection& Stage::Gateway()
{
    return *platform.connections.at(1);
}

onlinemanager::LoginParam Stage::Param()
{
    onlinemanager::LoginParam param;
    param.userid = 52011;
    param.companyid = 1001;
    param.registeruser = true;
    param.mutex = "pc";
    param.terminal = static_cast<quenda::TerminalType>(3);
    param.deviceid = "device-1";
    param.appid = "app-1";
    param.token = "token-1";
    param.server = "tcp:online.example:1883";
    return param;
}

void Stage::LogIn(const onlinemanager::LoginParam& param)
{
    check.Require(Session()->Login(param, false), "the login is accepted");
    Connection().LoginResult(0);
    journal.Clear();
}

bool Stage::ExpectJournal(const std::vector<std::string>& expected, Where where)
{
    return check.ExpectLines(expected, journal.Take(), where);
}

void Stage::ReleaseComponent()
{
    check.ExpectEqual(0, manager->Destroy(), "result of Destroy");
    check.ExpectEqual(0, std::exchange(manager, nullptr)->Release(), "references after the last Release");
}

void Stage::AwaitModuleThreads()
{
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(30);
    while (CountThreads() > m_threads && std::chrono::steady_clock::now() < deadline)
    {
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    journal.Synchronise();
}

void Stage::TakeDown()
{
    AwaitModuleThreads();
    http.thread.Run([] {}); // the thread "http" may still be inside the module, after it has ended a wait
    if (manager != nullptr)
    {
        ReleaseComponent();
    }
    check.ExpectEqual(0, module.Functions().m_lpfnCanUnloadNow(), "live objects at the end");
    for (const auto& connection : platform.connections)
    {
        check.ExpectEqual(0, connection->References(), "references of " + connection->Name() + " at the end");
        check.ExpectEqual(0U, connection->listeners.Count(), "listeners left at " + connection->Name());
        check.ExpectEqual(0U, connection->online.listeners.Count(), "listeners left at its online component");
        check.ExpectEqual(0U, connection->tmsg.listeners.Count(), "listeners left at its message component");
    }
    check.ExpectEqual(1, factory.References(), "references of the factory at the end, the host's own included");
    check.ExpectEqual(0, factory.center.manager.openMessages.load(), "log messages not released");
    check.ExpectEqual(0, factory.center.manager.wrongLoggerId.load(), "an unknown logger was asked for its level");
    ForgetLoggers();
    module.Unload();
}

/// A module that stays mapped after dlclose must not use this host's loggers when the next check loads it.
void Stage::ForgetLoggers()
{
    factory.center.isGoneAfterRelease = true;
    module.Find<decltype(&FWReleaseKXLogger)>("FWReleaseKXLogger")();
    module.Find<decltype(&FWReleaseLogger)>("FWReleaseLogger")();
}

} // namespace checks
