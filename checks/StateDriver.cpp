#include "checks/StateDriver.h"

#include "checks/Meetings.h"
#include "checks/Presence.h"

#include <algorithm>
#include <deque>

namespace checks
{

namespace
{

constexpr const char* kSession = "The session";
constexpr const char* kGateway = "The gateway tunnel";

/// All listeners have one name, because an observation contains only the names of notifications.
constexpr const char* kListener = "host";

constexpr unsigned kForeignRequest = 9999; // a refresh that no host has started
constexpr size_t kEnoughFailures = 10;

std::string TextOf(bool value)
{
    return value ? "true" : "false";
}

/// "connection7.Login(...)" is a call of "Login"; empty for other lines, and for registration and counting.
std::string CallIn(const std::string& line)
{
    if (!line.starts_with("connection") && !line.starts_with("online"))
    {
        return "";
    }
    const size_t dot = line.find('.');
    std::string operation = line.substr(dot + 1, line.find('(') - dot - 1);
    for (const char* const ignored : {"AddListener", "RemoveListener", "GetComponent", "AddRef", "Release"})
    {
        if (operation == ignored)
        {
            return "";
        }
    }
    return operation;
}

} // namespace

StateDriver::StateDriver(Stage& stage, const std::string& machine)
    : m_stage(stage),
      m_strategy(stage.journal),
      m_sessionNotify(stage.journal, kListener),
      m_tunnelNotify(stage.journal, kListener),
      m_userNotify(stage.journal, kListener)
{
    stage.platform.connections.clear(); // of the driver before
    stage.factory.center.manager.level = Quenda::LOG_LEVEL_WARNING;
    m_manager = stage.CreateComponent();
    if (m_manager == nullptr)
    {
        throw StateTableError("the component cannot be created");
    }
    stage.http.Hold();
    stage.check.Require(m_manager->Initialize(&stage.http) == S_OK, "the component is initialised");
    m_manager->GetPaasOnline(&m_session);
    m_session->GetUserOnline(&m_users);
    m_session->GetMeetingTunnel(&m_tunnel);
    m_manager->GetMeetingTunnel(onlinemanager::TUNNEL_TYPE_GW, &m_gateway);
    m_session->AddNotify(&m_sessionNotify);
    m_users->AddNotify(&m_userNotify);
    m_tunnel->AddNotify(&m_tunnelNotify);
    m_gateway->AddNotify(&m_tunnelNotify);

    m_actions["Destroy"] = [this] { return std::to_string(m_manager->Destroy()); };
    if (machine == kSession)
    {
        AddSessionEvents();
        AddTunnelEvents();
        AddReconnectionEvents();
        AddPresenceEvents();
        AddPlatformEvents(stage.Connection());
        m_probes = {"GetConnectProperty(0)",
                    "TriggerNotify",
                    "RefreshCompanyUserStatus",
                    "Logout refused",
                    "OnReconnectStart() strategy 0",
                    "OnRefreshUserStatusFinished(0)",
                    "Relogin"};
    }
    else if (machine == kGateway)
    {
        AddGatewayEvents();
        AddPlatformEvents(stage.Gateway());
        m_probes = {"OnReconnectStart()"};
    }
    else
    {
        throw StateTableError("the section \"" + machine + "\" has tables and cannot be driven");
    }
}

StateDriver::~StateDriver()
{
    m_manager->Destroy();
    m_manager->Release();
    m_stage.AwaitModuleThreads();
    for (const auto& connection : m_stage.platform.connections)
    {
        m_stage.check.ExpectEqual(0, connection->References(), "references of " + connection->Name() + " at the end");
    }
}

std::vector<std::string> StateDriver::Events() const
{
    std::vector<std::string> events;
    for (const auto& [event, action] : m_actions)
    {
        events.push_back(event);
    }
    return events;
}

StateObservation StateDriver::Fire(const std::string& event)
{
    m_stage.journal.Clear();
    StateObservation seen;
    seen.result = m_actions.at(event)();
    for (const JournalEntry& entry : m_stage.journal.Take())
    {
        const std::string& line = entry.text;
        if (line.starts_with(std::string(kListener) + "."))
        {
            seen.notifications.push_back(line.substr(line.find('.') + 1));
            seen.notifiesFirst &= seen.calls.empty();
        }
        else if (const std::string call = CallIn(line); !call.empty())
        {
            seen.calls.push_back(call);
        }
    }
    return seen;
}

void StateDriver::Add(const std::string& event, std::function<void()> platformEvent)
{
    m_actions[event] = [platformEvent = std::move(platformEvent)]
    {
        platformEvent();
        return std::string();
    };
}

/// The operation twice: accepted, and refused by the platform.
void StateDriver::AddRefusable(const std::string& event, RecordingConnection& connection, const std::string& operation,
                               const std::function<bool()>& call)
{
    m_actions[event] = [call] { return TextOf(call()); };
    m_actions[event + " refused"] = [call, operation, &connection]
    {
        connection.SetResult(operation, E_FAIL);
        const bool result = call();
        connection.SetResult(operation, S_OK);
        return TextOf(result);
    };
}

void StateDriver::AddSessionEvents()
{
    const onlinemanager::LoginParam good = Stage::Param();
    onlinemanager::LoginParam withoutServer = good;
    withoutServer.server.clear();
    onlinemanager::LoginParam withoutUser = good;
    withoutUser.userid = 0;
    onlinemanager::LoginParam bare = good;
    bare.server = "online.example";

    RecordingConnection& connection = m_stage.Connection();
    AddRefusable("Login", connection, "Login", [this, good] { return m_session->Login(good, false); });
    AddRefusable("Relogin", connection, "Login", [this] { return m_session->Relogin(false); });
    AddRefusable("Logout", connection, "Logout", [this] { return m_session->Logout(); });
    AddRefusable("RequestCPAddress", connection, "RequestCPAddress",
                 [this, bare] { return m_session->RequestCPAddress(bare); });
    const std::pair<std::string, onlinemanager::LoginParam> incomplete[] = {{"without a server", withoutServer},
                                                                            {"without a user", withoutUser}};
    for (const auto& entry : incomplete)
    {
        const onlinemanager::LoginParam& param = entry.second;
        m_actions["Login " + entry.first] = [this, param] { return TextOf(m_session->Login(param, false)); };
        m_actions["RequestCPAddress " + entry.first] = [this, param]
        { return TextOf(m_session->RequestCPAddress(param)); };
    }
    m_actions["RequestCPAddress of a tcp: server"] = [this, good] { return TextOf(m_session->RequestCPAddress(good)); };
    m_actions["TriggerNotify"] = [this]
    {
        const bool result = m_session->TriggerNotify();
        m_stage.journal.Await(std::string(kListener) + ".On");
        return TextOf(result);
    };
    m_actions["GetConnectProperty(0)"] = [this]
    {
        char text[10] = {};
        const auto found = m_session->GetConnectProperty(onlinemanager::CONNECT_PROPERTY_ONLINE, text, sizeof(text));
        return std::string(found.status == 1 ? text : "absent");
    };
}

void StateDriver::AddTunnelEvents()
{
    RecordingConnection& connection = m_stage.Connection();
    AddRefusable("JoinMeeting", connection, "JoinGroup", [this] { return m_tunnel->JoinMeeting(SomeMeeting()); });
    AddRefusable("LeaveMeeting", connection, "LeaveGroup", [this] { return m_tunnel->LeaveMeeting(); });
    m_actions["JoinMeeting answered 1"] = [this, &connection]
    {
        connection.SetResult("JoinGroup", 1);
        const bool result = m_tunnel->JoinMeeting(SomeMeeting());
        connection.SetResult("JoinGroup", S_OK);
        return TextOf(result);
    };
    m_actions["JoinMeeting without a record"] = [this] { return TextOf(JoinWithoutARecord(*m_tunnel)); };
}

void StateDriver::AddReconnectionEvents()
{
    // Of the connection's two listeners the session's own answers 0; the tunnel's decides.
    const auto start = [this](onlinemanager::IReconnectionStrategy* strategy)
    {
        m_session->SetReconnectionStrategy(strategy);
        const std::vector<int32_t> answers = m_stage.Connection().ReconnectStart();
        m_session->SetReconnectionStrategy(nullptr);
        return answers.size() == 2 && answers[0] == 0 ? std::to_string(answers[1]) : "unexpected answers";
    };
    m_actions["OnReconnectStart() no strategy"] = [start] { return start(nullptr); };
    for (const int decision : {0, 1, 2})
    {
        m_actions["OnReconnectStart() strategy " + std::to_string(decision)] = [this, start, decision]
        {
            m_strategy.decision = decision;
            return start(&m_strategy);
        };
    }
}

void StateDriver::AddPresenceEvents()
{
    m_actions["RefreshCompanyUserStatus"] = [this]
    {
        unsigned requestId = 0;
        return TextOf(m_users->RefreshCompanyUserStatus(&requestId));
    };
    Add("OnRefreshUserStatusFinished(0)",
        [this] { Refresh(m_stage.Connection(), {UserOnPc("7", 1)}, kForeignRequest); });
}

void StateDriver::AddGatewayEvents()
{
    RecordingConnection& connection = m_stage.Gateway();
    AddRefusable("JoinMeeting", connection, "LoginOldGw", [this] { return m_gateway->JoinMeeting(SomeMeeting()); });
    AddRefusable("LeaveMeeting", connection, "Logout", [this] { return m_gateway->LeaveMeeting(); });
    m_actions["JoinMeeting without a record"] = [this] { return TextOf(JoinWithoutARecord(*m_gateway)); };
    m_actions["OnReconnectStart()"] = [&connection] { return std::to_string(connection.ReconnectStart().at(0)); };
}

/// Events that both connections send.
void StateDriver::AddPlatformEvents(RecordingConnection& connection)
{
    for (const int code : {0, 33, 36})
    {
        Add("OnLoginResult(" + std::to_string(code) + ")",
            [=, &connection] { connection.LoginResult(code, "d", "c"); });
    }
    for (const int code : {0, 36})
    {
        Add("OnLogouted(" + std::to_string(code) + ")", [=, &connection] { connection.Logouted(code); });
    }
    for (const int code : {33, 36})
    {
        Add("OnReconnectFail(" + std::to_string(code) + ")", [=, &connection] { connection.ReconnectFail(code, "d"); });
    }
    Add("OnReconnectSucess()", [&connection] { connection.ReconnectSucess(); });
    for (const int code : {0, 33})
    {
        Add("OnJoinGroupResult(" + std::to_string(code) + ")", [=, &connection] { connection.JoinGroupResult(code); });
        Add("OnLeaveGroupResult(" + std::to_string(code) + ")",
            [=, &connection] { connection.LeaveGroupResult(code); });
    }
    for (const char* const user : {"7", "0", "x"})
    {
        const std::string argument = "(\"" + std::string(user) + "\")";
        Add("OnGroupUserJoined" + argument, [=, &connection] { connection.GroupUserJoined(user); });
        Add("OnGroupUserLeaved" + argument, [=, &connection] { connection.GroupUserLeaved(user); });
    }
    Add("OnGroupUserSync()", [&connection] { connection.GroupUserSync({"7"}); });
}

namespace
{

/// Compares one machine of the page with the module.
class StateComparison
{
public:
    StateComparison(CheckContext& check, Stage& stage, const StateMachine& machine)
        : m_check(check),
          m_stage(stage),
          m_machine(machine)
    {
    }

    void Run()
    {
        if (!CompareEvents())
        {
            return;
        }
        Explore();
        FindIdleText();
        for (const auto& [state, way] : m_ways)
        {
            for (const std::string& event : m_machine.Events())
            {
                if (m_failures >= kEnoughFailures)
                {
                    return;
                }
                Compare(state, way, event);
            }
        }
    }

private:
    using Way = std::vector<std::string>;

    /// The page must name every event that can be driven, and no other.
    bool CompareEvents()
    {
        const std::vector<std::string> drivable = StateDriver(m_stage, m_machine.Title()).Events();
        const std::vector<std::string> named = m_machine.Events();
        for (const std::string& event : named)
        {
            if (std::find(drivable.begin(), drivable.end(), event) == drivable.end())
            {
                Fail("the page names the event \"" + event + "\", which cannot be driven");
            }
        }
        for (const std::string& event : drivable)
        {
            if (std::find(named.begin(), named.end(), event) == named.end())
            {
                Fail("the page has no row for the event \"" + event + "\"");
            }
        }
        return m_failures == 0;
    }

    /// The shortest way to every state.
    void Explore()
    {
        std::deque<StateValues> waiting{m_machine.Initial()};
        m_ways[m_machine.Initial()] = {};
        while (!waiting.empty())
        {
            const StateValues state = waiting.front();
            waiting.pop_front();
            for (const std::string& event : m_machine.Events())
            {
                const StateStep step = m_machine.Step(state, event);
                m_used.insert(step.lines.begin(), step.lines.end());
                m_newValues.insert(step.newValues.begin(), step.newValues.end());
                Way way = m_ways[state];
                way.push_back(event);
                if (!step.ends && m_ways.emplace(step.next, std::move(way)).second)
                {
                    waiting.push_back(step.next);
                }
            }
        }
    }

    /// Rows that apply in no state, and next values that change nothing in any state. The comparison with the module
    /// cannot find them.
    void FindIdleText()
    {
        for (const int line : m_machine.Lines())
        {
            if (!m_used.contains(line))
            {
                Fail("line " + std::to_string(line) + ": no state that can be reached fulfils the row");
            }
        }
        for (const auto& [line, value] : m_machine.NextValues())
        {
            if (!m_newValues.contains({line, value}))
            {
                Fail("line " + std::to_string(line) + ": \"" + value +
                     "\" holds before the event in every state of the row");
            }
        }
    }

    /// One event in one state, on a new component.
    void Compare(const StateValues& state, const Way& way, const std::string& event)
    {
        StateDriver driver(m_stage, m_machine.Title());
        Way events = way;
        events.push_back(event);
        const bool ends = m_machine.Step(state, event).ends;
        if (!ends)
        {
            events.insert(events.end(), driver.Probes().begin(), driver.Probes().end());
        }
        StateValues current = m_machine.Initial();
        for (size_t done = 0; done < events.size(); ++done)
        {
            const StateStep expected = m_machine.Step(current, events[done]);
            const std::string difference = DifferenceOf(expected, driver.Fire(events[done]));
            if (!difference.empty())
            {
                std::string text = m_machine.Title() + ", " + LinesOf(expected) + ": " + events[done] +
                                   " in the state " + m_machine.TextOf(current) + difference + "\n  after";
                for (size_t index = 0; index < done; ++index)
                {
                    text += " | " + events[index];
                }
                Fail(text);
                return;
            }
            current = expected.next;
        }
    }

    static std::string DifferenceOf(const StateStep& expected, const StateObservation& seen)
    {
        std::string text;
        const auto compare = [&text](const char* what, const std::string& page, const std::string& module)
        {
            if (page != module)
            {
                text += std::string("\n  ") + what + "\n    page:   " + page + "\n    module: " + module;
            }
        };
        compare("calls", Joined(expected.calls), Joined(seen.calls));
        compare("notifications", Joined(expected.notifications), Joined(seen.notifications));
        compare("result", expected.result, seen.result);
        if (!seen.notifiesFirst)
        {
            text += "\n  a notification came after a call";
        }
        return text;
    }

    static std::string Joined(const std::vector<std::string>& parts)
    {
        std::string text;
        for (const std::string& part : parts)
        {
            text += (text.empty() ? "" : ", ") + part;
        }
        return text;
    }

    static std::string LinesOf(const StateStep& step)
    {
        std::string text = "line";
        for (const int line : step.lines)
        {
            text += " " + std::to_string(line);
        }
        return text;
    }

    void Fail(std::string text)
    {
        ++m_failures;
        m_check.Fail(std::move(text));
    }

    CheckContext& m_check;
    Stage& m_stage;
    const StateMachine& m_machine;
    std::map<StateValues, Way> m_ways;
    std::set<int> m_used;                              ///< lines of rows
    std::set<std::pair<int, std::string>> m_newValues; ///< with lines
    size_t m_failures = 0;
};

} // namespace

void CheckStateTables(CheckContext& check, const std::string& markdown)
{
    const std::vector<StateMachine> machines = ReadStateTables(markdown);
    for (const char* const title : {kSession, kGateway})
    {
        check.Require(std::any_of(machines.begin(), machines.end(),
                                  [title](const StateMachine& machine) { return machine.Title() == title; }),
                      std::string("the page has the section \"") + title + "\"");
    }
    Stage stage(check, Scene::Loaded);
    for (const StateMachine& machine : machines)
    {
        StateComparison(check, stage, machine).Run();
    }
}

} // namespace checks
