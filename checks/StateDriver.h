#pragma once

#include "checks/Stage.h"
#include "checks/StateTable.h"

#include <functional>
#include <map>
#include <string>
#include <vector>

namespace checks
{

/// What a component did for one event.
struct StateObservation
{
    std::vector<std::string> calls; ///< operations of the platform's objects, without registration and counting
    std::vector<std::string> notifications;
    bool notifiesFirst = true; ///< no notification came after a call
    std::string result;
};

/// A new component on a stage, driven by the events of one state machine of the page. `stage` is at `Scene::Loaded`;
/// drivers use it one after the other.
class StateDriver
{
public:
    /// `machine` is the title of the page's section; Throws `StateTableError` for an unknown section.
    StateDriver(Stage& stage, const std::string& machine);
    ~StateDriver();
    StateDriver(const StateDriver&) = delete;
    StateDriver& operator=(const StateDriver&) = delete;

    /// Every event that can be driven.
    std::vector<std::string> Events() const;

    /// Events that, one after the other, show the value of every variable.
    const std::vector<std::string>& Probes() const
    {
        return m_probes;
    }

    /// Makes one event happen and waits until it is over.
    StateObservation Fire(const std::string& event);

private:
    using Action = std::function<std::string()>;

    void AddSessionEvents();
    void AddTunnelEvents();
    void AddReconnectionEvents();
    void AddPresenceEvents();
    void AddGatewayEvents();
    void AddPlatformEvents(RecordingConnection& connection);
    void AddRefusable(const std::string& event, RecordingConnection& connection, const std::string& operation,
                      const std::function<bool()>& call);
    void Add(const std::string& event, std::function<void()> platformEvent);

    Stage& m_stage;
    onlinemanager::IOnlineManager* m_manager = nullptr;
    onlinemanager::IPaasOnline* m_session = nullptr;
    onlinemanager::IUserOnline* m_users = nullptr;
    onlinemanager::IMeetingTunnel* m_tunnel = nullptr;
    onlinemanager::IMeetingTunnel* m_gateway = nullptr;
    RecordingStrategy m_strategy;
    SessionNotify m_sessionNotify;
    TunnelNotify m_tunnelNotify;
    UserNotify m_userNotify;
    std::map<std::string, Action> m_actions;
    std::vector<std::string> m_probes;
};

/// Compares the module with every row of the page's state tables: each event in each state that can be reached, the way
/// there and the probes behind it included.
void CheckStateTables(CheckContext& check, const std::string& markdown);

} // namespace checks
