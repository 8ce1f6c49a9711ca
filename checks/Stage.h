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

/// How far a stage is set before the check begins. What was journaled on the way is forgotten.
enum class Scene
{
    Loaded,      ///< the module's file is loaded
    Created,     ///< and the component exists, not initialised
    Initialized, ///< and `Initialize` was called with the HTTP object
    LoggedIn,    ///< and user 52011 is logged in; request 101 was the first refresh, and has not been answered
};

/// A module, loaded for one check, between a recording host and a recording platform that share one journal.
///
/// The stage is struck when it ends: the component is destroyed and released if the check has not done so, the module is
/// unloaded, and what must balance then is expected to: references of the factory and of the connections, listeners at the
/// platform, log messages, the number of live objects.
class Stage
{
public:
    explicit Stage(CheckContext& check, Scene scene = Scene::Initialized);
    ~Stage();
    Stage(const Stage&) = delete;
    Stage& operator=(const Stage&) = delete;

    /// Creates a component through the module's table, the factory's reference included. Null when that fails.
    onlinemanager::IOnlineManager* CreateComponent();

    /// The services of the component; null while they do not exist. Asking for one empties the journal.
    onlinemanager::IPaasOnline* Session();
    onlinemanager::IUserOnline* Users();
    onlinemanager::IMeetingTunnel* Tunnel(onlinemanager::TunnelType type);
    onlinemanager::IPaasMdsClient* Mds();
    onlinemanager::IPaasTMsg* TMsg();

    /// Platform connections: of the session, and of the gateway.
    RecordingConnection& Connection();
    RecordingConnection& Gateway();

    /// The login parameters that `Scene::LoggedIn` uses.
    static onlinemanager::LoginParam Param();

    /// Logs a user in and forgets what was journaled on the way.
    void LogIn(const onlinemanager::LoginParam& param = Param());

    /// Compares the journal since the last time with the expected lines, and empties it.
    bool ExpectJournal(const std::vector<std::string>& expected, Where where = Where::Here());

    /// `Destroy` and the last `Release`; the component is gone afterwards.
    void ReleaseComponent();

    /// Waits until no thread is left that the module started.
    void AwaitModuleThreads();

    CheckContext& check;
    Journal journal;
    RecordingPlatform platform;
    RecordingFactory factory;
    RecordingHttp http;
    onlinehost::Module module;
    onlinemanager::IOnlineManager* manager = nullptr;

private:
    void Strike();
    void ForgetLoggers();

    size_t m_threads; ///< of the process, without those that the module starts
};

} // namespace checks
