#pragma once

#include "checks/Check.h"
#include "checks/RecordingHost.h"
#include "checks/RecordingNotify.h"
#include "checks/RecordingPlatform.h"
#include "onlinehost/Module.h"
#include "onlinemanager/IMeetingTunnel.h"
#include "onlinemanager/IOnlineManager.h"
#include "onlinemanager/IPaasMdsClient.h"
#include "onlinemanager/IPaasOnline.h"
#include "onlinemanager/IPaasTMsg.h"
#include "onlinemanager/IUserOnline.h"

#include <string>
#include <vector>

namespace checks
{

/// The state of a stage when the check begins, with an empty journal.
enum class Scene
{
    Loaded,      ///< the module is loaded
    Created,     ///< the component exists and is not initialised
    Initialized, ///< `Initialize` was called with the HTTP object
    LoggedIn,    ///< user 52011 is logged in; the first refresh, request 101, is not answered
};

/// A module that is loaded for one check, between a recording host and a recording platform, which share one journal.
///
/// The destructor destroys and releases the component, if the check has not done so, and unloads the module. It expects
/// that nothing remains: no references of the factory and the connections, no listeners at the platform, no log
/// messages, no live objects.
class Stage
{
public:
    explicit Stage(CheckContext& check, Scene scene = Scene::Initialized);
    ~Stage();
    Stage(const Stage&) = delete;
    Stage& operator=(const Stage&) = delete;

    /// Creates a component and adds the reference of the factory that the component takes over. Null if the module
    /// fails.
    onlinemanager::IOnlineManager* CreateComponent();

    /// The services of the component; null while they do not exist. Each operation clears the journal.
    onlinemanager::IPaasOnline* Session();
    onlinemanager::IUserOnline* Users();
    onlinemanager::IMeetingTunnel* Tunnel(onlinemanager::TunnelType type);
    onlinemanager::IPaasMdsClient* Mds();
    onlinemanager::IPaasTMsg* TMsg();

    /// The platform connections of the session and of the gateway.
    RecordingConnection& Connection();
    RecordingConnection& Gateway();

    /// The login parameters that `Scene::LoggedIn` uses.
    static onlinemanager::LoginParam Param();

    /// Logs a user in and clears the journal.
    void LogIn(const onlinemanager::LoginParam& param = Param());

    /// Compares the journal with the expected lines, and clears it.
    bool ExpectJournal(const std::vector<std::string>& expected, Where where = Where::Here());

    /// Calls `Destroy` and the last `Release`; `manager` is null afterwards.
    void ReleaseComponent();

    /// Waits up to 30 s until every thread has ended that the module has started.
    void AwaitModuleThreads();

    CheckContext& check;
    Journal journal;
    RecordingPlatform platform;
    RecordingFactory factory;
    RecordingHttp http;
    onlinehost::Module module;
    onlinemanager::IOnlineManager* manager = nullptr;

private:
    void TakeDown();
    void ForgetLoggers();

    size_t m_threads; ///< number of threads of the process before the module has started any
};

} // namespace checks
