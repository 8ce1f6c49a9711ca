#include "host/shell/ShellOnlineCommands.h"

#include "host/console/Wording.h"
#include "host/shell/Shell.h"
#include "host/shell/ShellFailure.h"
#include "host/shell/ShellValues.h"
#include "onlinehost/Text.h"
#include "platform/Platform.h"

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <iterator>
#include <optional>
#include <set>
#include <utility>

namespace host
{

using namespace onlinehost;

namespace
{

using namespace onlinemanager;

constexpr char kGroup[] = "On the service";
constexpr size_t kMostUsers = 20; ///< the most users that `who` and `members` list without `all`

std::string Because(const std::string& reason)
{
    return reason.empty() ? "" : " (" + reason + ")";
}

/// Throws the failure of a command whose operation the module refused at once. `cause` is what the shell knows of it.
[[noreturn]] void RefuseFor(Shell& shell, const std::string& cause)
{
    throw ShellFailure(EXIT_REFUSED, cause + Because(shell.World().TakeFailure()));
}

/// The same for an operation that needs a login. `cause` holds when the terminal is logged in.
[[noreturn]] void Refuse(Shell& shell, const ShellTerminal& terminal,
                         const std::string& cause = "the module refused it")
{
    RefuseFor(shell, terminal.isLoggedIn ? cause : terminal.Name() + " is not logged in");
}

struct NamedProperty
{
    const char* name;
    ConnectProperty key;
};
constexpr NamedProperty kProperties[] = {
    {"online", CONNECT_PROPERTY_ONLINE},
    {"conflict-state", CONNECT_PROPERTY_CONFLICT_CUSTOM_STATE},
    {"conflict-device", CONNECT_PROPERTY_CONFLICT_DEVICE_ID},
};

std::vector<std::string> PropertyNames()
{
    std::vector<std::string> names;
    for (const NamedProperty& property : kProperties)
    {
        names.emplace_back(property.name);
    }
    return names;
}

class OnlineCommands
{
public:
    explicit OnlineCommands(Shell& shell) : m_shell(shell) {}

    void Login(const ShellArguments& arguments)
    {
        const std::string name = arguments.Text("TERMINAL");
        const auto [user, deviceName] = name.empty() ? std::pair(uint32_t{0}, std::string()) : ParseTerminal(name);
        ShellTerminal& terminal = name.empty() ? m_shell.Terminal() : m_shell.World().Terminal(user, deviceName);
        m_shell.SetTerminal(&terminal);

        LoginParam& login = terminal.login;
        login.server = arguments.Text("server", login.server);
        login.token = arguments.Text("token", login.token);
        login.mutex = arguments.Text("mutex", login.mutex);
        login.companyid = arguments.Number("company", login.companyid);
        login.terminal = static_cast<quenda::TerminalType>(arguments.Number("type", login.terminal));
        login.registeruser = arguments.Has("register");

        const uint64_t mark = m_shell.Mark();
        m_shell.World().TakeFailure();
        if (!m_shell.RunBlocking([&] { return terminal.Online().FetchAddress(login); },
                                 [&] { terminal.Online().CancelRequests(); }))
        {
            m_shell.ShowAll();
            throw ShellFailure(EXIT_FAILED, "got no connection point from " + Printable(login.server));
        }
        terminal.BeginLogin();
        if (!terminal.Online().Login(login, arguments.Has("force")))
        {
            RefuseFor(m_shell, std::string("the module refused the login at once") +
                                   (login.server.empty() ? ": the server is empty; name one with server=" : ""));
        }
        if (login.userid > INT32_MAX)
        {
            m_shell.Say(kUnreadableUserId);
        }
        AwaitLogin(terminal, mark);
    }

    void Relogin(const ShellArguments& arguments)
    {
        ShellTerminal& terminal = m_shell.Terminal();
        const bool wasLoggedIn = terminal.isLoggedIn;
        const uint64_t mark = m_shell.Mark();
        m_shell.World().TakeFailure();
        if (!wasLoggedIn)
        {
            terminal.BeginLogin();
        }
        if (!terminal.Online().Online().Relogin(arguments.Has("force")))
        {
            RefuseFor(m_shell, terminal.Name() + " has not logged in before, or is logging in");
        }
        if (wasLoggedIn)
        {
            m_shell.Say(terminal.Name() + " is logged in already, so nothing happens");
            return;
        }
        AwaitLogin(terminal, mark);
    }

    void Notify(const ShellArguments&)
    {
        ShellTerminal& terminal = m_shell.Terminal();
        const uint64_t mark = m_shell.Mark();
        if (!terminal.Online().Online().TriggerNotify())
        {
            RefuseFor(m_shell, "the module could not start a thread");
        }
        Result(terminal, mark, {EventKind::LoginSuccess, EventKind::Offline}, TUNNEL_TYPE_NONE);
    }

    void Property(const ShellArguments& arguments)
    {
        const std::string name = arguments.Text("NAME");
        const auto* const property = std::find_if(std::begin(kProperties), std::end(kProperties),
                                                  [&](const NamedProperty& known) { return known.name == name; });
        const std::optional<std::string> text = m_shell.Terminal().Online().Property(property->key);
        m_shell.Say(name + (text ? ": \"" + Printable(*text) + "\"" : " has no text"));
    }

    void Logout(const ShellArguments&)
    {
        ShellTerminal& terminal = m_shell.Terminal();
        const uint64_t mark = m_shell.Mark();
        m_shell.World().TakeFailure();
        if (!terminal.isLoggedIn || !terminal.Online().Online().Logout())
        {
            Refuse(m_shell, terminal);
        }
        Result(terminal, mark, {EventKind::Offline}, TUNNEL_TYPE_NONE);
    }

    void As(const ShellArguments& arguments)
    {
        if (!arguments.Has("TERMINAL"))
        {
            ListTerminals();
            return;
        }
        const auto [user, deviceName] = ParseTerminal(arguments.Text("TERMINAL"));
        ShellTerminal& terminal = m_shell.World().Terminal(user, deviceName);
        if (!arguments.Has("COMMAND"))
        {
            m_shell.SetTerminal(&terminal);
            return;
        }
        const ShellTerminal* const before = m_shell.CurrentTerminal();
        m_shell.SetTerminal(&terminal);
        try
        {
            m_shell.Execute(arguments.Words("COMMAND"));
        }
        catch (...)
        {
            GoBack(before);
            throw;
        }
        GoBack(before);
    }

    void Who(const ShellArguments& arguments)
    {
        ShellTerminal& terminal = m_shell.Terminal();
        std::vector<unsigned> ids = arguments.Users("USER");
        const bool isAsked = !ids.empty();
        if (!isAsked)
        {
            ids.assign(terminal.known.begin(), terminal.known.end());
        }
        std::vector<UserOnlineInfo> users = terminal.Query(ids);
        if (!isAsked)
        {
            Forget(terminal, users);
        }
        const auto isOnline = [](const UserOnlineInfo& user) { return user.online_status == 1; };
        const auto online = std::count_if(users.begin(), users.end(), isOnline);
        const size_t known = users.size();
        if (arguments.Has("online"))
        {
            std::erase_if(users, [&](const UserOnlineInfo& user) { return !isOnline(user); });
        }
        const size_t shown = isAsked || arguments.Has("all") ? users.size() : std::min(users.size(), kMostUsers);
        for (size_t i = 0; i < shown; ++i)
        {
            m_shell.Say(DescribeUser(users[i]));
        }
        if (shown < users.size())
        {
            m_shell.Say("and " + std::to_string(users.size() - shown) + " more (\"who all\")");
        }
        if (!isAsked)
        {
            m_shell.Say(CountText(known, "user") + " known, " + std::to_string(online) + " online");
        }
    }

    void Refresh(const ShellArguments& arguments)
    {
        ShellTerminal& terminal = m_shell.Terminal();
        const uint64_t mark = m_shell.Mark();
        m_shell.World().TakeFailure();
        unsigned requestId = 0;
        if (arguments.Has("USER"))
        {
            if (!terminal.Online().Users().RefreshUserStatus(arguments.Users("USER"), &requestId))
            {
                Refuse(m_shell, terminal);
            }
            Result(terminal, mark, {EventKind::UserStatusChanged}, TUNNEL_TYPE_NONE);
            return;
        }
        if (!terminal.Online().Users().RefreshCompanyUserStatus(&requestId))
        {
            Refuse(m_shell, terminal);
        }
        const Event result = Result(terminal, mark, {EventKind::UserStatusRefreshed}, TUNNEL_TYPE_NONE);
        Check("the refresh", result);
    }

    void Watch(const ShellArguments& arguments)
    {
        ShellTerminal& terminal = m_shell.Terminal();
        const std::vector<uint32_t> users = arguments.Users("USER");
        terminal.watched.insert(users.begin(), users.end());
        terminal.watchesAll = terminal.watchesAll || arguments.Has("all");
        if (arguments.Has("off"))
        {
            terminal.watchesAll = false;
            terminal.watched.clear();
        }
        m_shell.Say(terminal.watchesAll        ? std::string("watches all users")
                    : terminal.watched.empty() ? std::string("watches no users")
                                               : "watches " + ListIds(terminal.watched));
    }

    void Custom(const ShellArguments& arguments)
    {
        ShellTerminal& terminal = m_shell.Terminal();
        IUserOnline& users = terminal.Online().Users();
        if (!arguments.Has("TEXT"))
        {
            std::string text(kLongestCustom, '\0');
            users.GetSelfCustomInfo(text.data(), static_cast<unsigned>(text.size()));
            text.resize(std::min(text.find('\0'), text.size()));
            m_shell.Say("custom text: \"" + Printable(text) + "\"");
            return;
        }
        m_shell.World().TakeFailure();
        if (!users.SetSelfCustomInfo(arguments.Text("TEXT")))
        {
            Refuse(m_shell, terminal);
        }
    }

    void Invite(const ShellArguments& arguments)
    {
        ShellTerminal& terminal = m_shell.Terminal();
        const std::vector<unsigned> ids = arguments.Users("USER");
        InviteData data;
        data.inviteCode = arguments.Number("code");
        data.roomCompanyId = terminal.login.companyid;
        data.isForce = arguments.Has("force");
        data.meetingId = MeetingToInviteTo(terminal, arguments);
        data.userId = terminal.login.userid;
        data.userName = arguments.Text("name", "user " + std::to_string(data.userId));
        data.terminal = terminal.login.deviceid;

        m_shell.World().TakeFailure();
        unsigned inviteId = 0;
        if (!terminal.Online().Users().InviteUsers(ids, data, &inviteId))
        {
            Refuse(m_shell, terminal);
        }
        if (inviteId == 0)
        {
            m_shell.Say("invites only this user, so the module sends nothing");
            return;
        }
        terminal.sent[inviteId] = {ids};
        m_shell.Say("sends invitation " + std::to_string(inviteId) + " to " + CountText(ids.size(), "user"));
    }

    void Invitations(const ShellArguments&)
    {
        const ShellTerminal& terminal = m_shell.Terminal();
        size_t accepted = 0;
        for (const auto& [id, invitation] : terminal.received)
        {
            accepted += invitation.isAccepted ? 1 : 0;
            m_shell.Say("received: " + std::to_string(id) + " from user " + std::to_string(invitation.inviter) +
                        (invitation.isAccepted ? ", accepted" : ", open"));
        }
        for (const auto& [id, invitation] : terminal.sent)
        {
            m_shell.Say("sent: " + std::to_string(id) + " to " + ListIds(invitation.users) + Answers(invitation));
        }
        m_shell.Say(std::to_string(terminal.received.size() - accepted) + " received and open, " +
                    std::to_string(accepted) + " accepted, " + std::to_string(terminal.sent.size()) + " sent");
    }

    void Answer(const ShellArguments& arguments, bool isAccept)
    {
        ShellTerminal& terminal = m_shell.Terminal();
        const uint32_t id = arguments.Number("INVITATION");
        const auto found = terminal.received.find(id);
        if (found == terminal.received.end() && !arguments.Has("from"))
        {
            throw ShellFailure(EXIT_REFUSED, "invitation " + std::to_string(id) + " is not open here; " +
                                                 Open(terminal) + ". \"" + (isAccept ? "accept " : "decline ") +
                                                 std::to_string(id) + " from=USER\" sends an answer anyway");
        }
        if (found != terminal.received.end() && found->second.isAccepted && isAccept)
        {
            throw ShellFailure(EXIT_REFUSED, "invitation " + std::to_string(id) + " is accepted already; \"decline " +
                                                 std::to_string(id) + "\" takes that back");
        }
        const uint32_t inviter = arguments.Number("from", found == terminal.received.end() ? 0 : found->second.inviter);
        m_shell.World().TakeFailure();
        if (!terminal.Online().Users().AcceptInvite(inviter, id, isAccept))
        {
            Refuse(m_shell, terminal,
                   "user " + std::to_string(inviter) + " has not sent " + terminal.Name() + " an invitation " +
                       std::to_string(id));
        }
        if (!isAccept)
        {
            terminal.received.erase(id);
        }
        else if (found != terminal.received.end())
        {
            found->second.isAccepted = true;
        }
    }

    void DeclineAll(const ShellArguments& arguments)
    {
        ShellTerminal& terminal = m_shell.Terminal();
        std::vector<unsigned> kept;
        for (const std::string& word : arguments.Words("EXCEPT"))
        {
            kept.push_back(ParseNumber(word, "invitation id"));
        }
        const auto reason = static_cast<RejectInvitationReason>(arguments.Number("reason", REJECT_INVITATION_DECLINED));
        m_shell.World().TakeFailure();
        if (!terminal.Online().Users().RejectAllInvite(reason, kept))
        {
            Refuse(m_shell, terminal);
        }
    }

    void Abandon(const ShellArguments& arguments)
    {
        ShellTerminal& terminal = m_shell.Terminal();
        const uint32_t id = arguments.Number("INVITATION");
        const auto found = terminal.sent.find(id);
        std::vector<unsigned> ids = arguments.Users("USER");
        if (ids.empty() && found == terminal.sent.end())
        {
            throw ShellFailure(EXIT_REFUSED, "invitation " + std::to_string(id) +
                                                 " was not sent from here; name the users to withdraw it from");
        }
        if (ids.empty())
        {
            ids = found->second.users;
        }
        m_shell.World().TakeFailure();
        if (!terminal.Online().Users().AbandonInvite(id, ids))
        {
            Refuse(m_shell, terminal, terminal.Name() + " has not sent an invitation " + std::to_string(id));
        }
        if (found != terminal.sent.end())
        {
            const std::set<uint32_t> withdrawn(ids.begin(), ids.end());
            std::erase_if(found->second.users, [&withdrawn](uint32_t user) { return withdrawn.contains(user); });
            if (found->second.users.empty())
            {
                terminal.sent.erase(found);
            }
        }
    }

    void Join(const ShellArguments& arguments)
    {
        ShellTerminal& terminal = m_shell.Terminal();
        const TunnelType tunnel = arguments.Has("gateway") ? TUNNEL_TYPE_GW : TUNNEL_TYPE_PAAS;
        JoinData data{};
        data.guid = arguments.Meeting("MEETING");
        data.user_id = terminal.login.userid;
        const uint64_t mark = m_shell.Mark();
        m_shell.World().TakeFailure();
        if (!terminal.Online().Tunnel(tunnel).JoinMeeting(data))
        {
            const auto current = terminal.meetings.find(tunnel);
            RefuseMeeting(terminal, tunnel,
                          current == terminal.meetings.end()
                              ? "the module refused it"
                              : terminal.Name() + " is in meeting " + current->second.name + " already; \"leave" +
                                    (tunnel == TUNNEL_TYPE_GW ? " gateway" : "") + "\" first");
        }
        Check("the join", Result(terminal, mark, {EventKind::JoinMeetingResult}, tunnel));
        ShellTerminal::Meeting& meeting = terminal.meetings[tunnel];
        meeting.name = Printable(arguments.Text("MEETING"));
        meeting.roomId = data.guid.Data1;
        meeting.groupId = platform::Platform::MeetingGroupId(data.guid);
    }

    void Leave(const ShellArguments& arguments)
    {
        ShellTerminal& terminal = m_shell.Terminal();
        const TunnelType tunnel = arguments.Has("gateway") ? TUNNEL_TYPE_GW : TUNNEL_TYPE_PAAS;
        const uint64_t mark = m_shell.Mark();
        m_shell.World().TakeFailure();
        if (!terminal.Online().Tunnel(tunnel).LeaveMeeting())
        {
            const std::string over = tunnel == TUNNEL_TYPE_GW ? " over the gateway" : "";
            RefuseMeeting(terminal, tunnel,
                          terminal.meetings.contains(tunnel) ? "the module refused it"
                                                             : terminal.Name() + " is not in a meeting" + over);
        }
        Check("the leave", Result(terminal, mark, {EventKind::LeaveMeetingResult}, tunnel));
    }

    void Members(const ShellArguments& arguments)
    {
        const ShellTerminal& terminal = m_shell.Terminal();
        if (terminal.meetings.empty())
        {
            throw ShellFailure(EXIT_REFUSED, terminal.Name() + " is not in a meeting; \"join MEETING\" joins one");
        }
        for (const auto& [tunnel, meeting] : terminal.meetings)
        {
            const size_t count = meeting.others.size();
            const size_t shown = arguments.Has("all") ? count : std::min(count, kMostUsers);
            m_shell.Say("user " + std::to_string(terminal.login.userid) + ", this terminal");
            std::for_each(meeting.others.begin(), std::next(meeting.others.begin(), static_cast<std::ptrdiff_t>(shown)),
                          [this](uint32_t user) { m_shell.Say("user " + std::to_string(user)); });
            if (shown < count)
            {
                m_shell.Say("and " + std::to_string(count - shown) + " more (\"members all\")");
            }
            m_shell.Say(CountText(count + 1, "user") + " in meeting " + meeting.name +
                        (tunnel == TUNNEL_TYPE_GW ? ", joined over the gateway" : ""));
        }
    }

    void ForgetTerminal(const ShellArguments& arguments)
    {
        const std::string name = arguments.Text("TERMINAL");
        ShellTerminal* terminal = name.empty() ? &m_shell.Terminal() : nullptr;
        if (terminal == nullptr)
        {
            const auto [user, deviceName] = ParseTerminal(name);
            terminal = m_shell.World().FindTerminal(user, deviceName);
        }
        if (terminal == nullptr)
        {
            throw ShellFailure(EXIT_REFUSED,
                               "there is no terminal " + Printable(name) + "; \"as\" lists the terminals");
        }
        const std::string said = "forgets " + terminal->Name() + (terminal->isLoggedIn ? " and ends its login" : "");
        if (terminal == m_shell.CurrentTerminal())
        {
            m_shell.SetTerminal(nullptr);
        }
        m_shell.World().Forget(*terminal);
        m_shell.Say(said);
    }

    void StartOrStopTrace(const ShellArguments& arguments)
    {
        const bool isStart = arguments.Has("FILE") || arguments.Has("diagram");
        if (arguments.Has("off") == isStart)
        {
            throw ShellFailure(EXIT_USAGE, "name a FILE, or diagram=FILE, or both; or say off");
        }
        if (!isStart)
        {
            std::string files;
            for (const std::filesystem::path& file : m_shell.World().StopTrace())
            {
                files += (files.empty() ? "" : ", ") + Printable(file.string());
            }
            m_shell.Say("the recording is complete: " + files);
            return;
        }
        m_shell.World().StartTrace({arguments.Text("FILE"), arguments.Text("diagram")});
        const size_t count = m_shell.World().Terminals().size();
        m_shell.Say("records every terminal that is made from now on" +
                    (count == 0 ? ""
                                : ", and not the " + CountText(count, "terminal") +
                                      " made before; forget such a terminal and log it in again to record it"));
    }

    void Quality(const ShellArguments& arguments)
    {
        ShellTerminal& terminal = m_shell.Terminal();
        const auto info = std::make_shared<AVQualityInfo>();
        info->avQualityLevel = static_cast<int32_t>(arguments.Number("LEVEL"));
        info->userId = terminal.login.userid;
        if (const ShellTerminal::Meeting* const meeting = terminal.Joined())
        {
            info->roomId = meeting->roomId;
            info->groupId = meeting->groupId;
        }
        info->appId = terminal.login.appid;
        AddStreams(*info, terminal.login.userid, arguments);
        m_shell.World().TakeFailure();
        if (!terminal.Online().Mds().SendAVQualityInfo(info))
        {
            Refuse(m_shell, terminal);
        }
        m_shell.Say(terminal.isMeasured ? "sends the reports that the monitoring service has asked for"
                                        : "the monitoring service has not asked for reports, so none is sent");
    }

    void Reconnect(const ShellArguments& arguments)
    {
        const std::string word = arguments.Text("DECISION");
        m_shell.Terminal().Online().SetReconnection(word == "yes"  ? avcore::ZOL_RECONNECT_GO_ON
                                                    : word == "no" ? avcore::ZOL_RECONNECT_STOP
                                                                   : avcore::ZOL_RECONNECT_UNDECIDED);
    }

    void LogLevel(const ShellArguments& arguments)
    {
        m_shell.World().Log().SetLevel(ParseLogLevel(arguments.Text("LEVEL")));
    }

    void Log(const ShellArguments& arguments)
    {
        constexpr uint32_t kUsual = 10;
        const std::vector<std::string> lines = m_shell.World().Log().Lines();
        const size_t count = std::min<size_t>(arguments.Number("COUNT", kUsual), lines.size());
        for (size_t i = lines.size() - count; i < lines.size(); ++i)
        {
            m_shell.Say(Printable(lines[i]));
        }
    }

private:
    static constexpr size_t kLongestCustom = 4096;

    /// Waits for the end of a login that has started.
    void AwaitLogin(ShellTerminal& terminal, uint64_t mark)
    {
        const Event result = Result(terminal, mark, {EventKind::LoginSuccess, EventKind::Offline}, TUNNEL_TYPE_NONE);
        if (result.kind == EventKind::Offline)
        {
            throw ShellFailure(EXIT_REFUSED,
                               "the login failed: " + CodeMeaning(result.code) + Conflict(terminal, result));
        }
        // The module's presence service learns of the login after all listeners. Until then it refuses every operation.
        // Then it starts a refresh, whose result shows that it has learned of the login.
        Result(terminal, mark, {EventKind::UserStatusChanged, EventKind::Offline}, TUNNEL_TYPE_NONE);
    }

    Event Result(const ShellTerminal& terminal, uint64_t mark, std::initializer_list<EventKind> kinds,
                 TunnelType tunnel)
    {
        const auto isResult = [&](const ShellEvent& event)
        {
            const bool isKind = std::find(kinds.begin(), kinds.end(), event.event.kind) != kinds.end();
            return event.source == terminal.Name() && event.name == EventName(event.event.kind) && isKind &&
                   event.event.tunnel == tunnel;
        };
        const std::chrono::milliseconds limit = m_shell.World().Settings().timeLimit;
        const std::optional<ShellEvent> result = m_shell.Await(mark, isResult, limit);
        if (!result)
        {
            throw ShellFailure(EXIT_FAILED, "there was no answer in " + std::to_string(limit.count()) + " ms");
        }
        return result->event;
    }

    static void Check(const std::string& what, const Event& result)
    {
        if (result.code != ERR_SUCCESS)
        {
            throw ShellFailure(EXIT_REFUSED, what + " failed: " + CodeMeaning(result.code));
        }
    }

    static std::string Conflict(ShellTerminal& terminal, const Event& result)
    {
        const auto other = terminal.Online().Property(CONNECT_PROPERTY_CONFLICT_DEVICE_ID);
        const bool isConflict = result.code == avcore::ZOL_PORT_LOGIN_CONFLICT && other && !other->empty();
        return isConflict ? "; the other device is \"" + Printable(*other) + "\", \"login force\" takes over" : "";
    }

    /// The gateway tunnel needs no login.
    [[noreturn]] void RefuseMeeting(const ShellTerminal& terminal, TunnelType tunnel, const std::string& cause)
    {
        if (tunnel == TUNNEL_TYPE_GW)
        {
            RefuseFor(m_shell, cause);
        }
        Refuse(m_shell, terminal, cause);
    }

    static std::string Open(const ShellTerminal& terminal)
    {
        std::vector<uint32_t> ids;
        for (const auto& [id, invitation] : terminal.received)
        {
            if (!invitation.isAccepted)
            {
                ids.push_back(id);
            }
        }
        return ids.empty() ? "no invitation is open" : "open: " + ListIds(ids);
    }

    /// The number of the meeting to which `invite` invites.
    static uint32_t MeetingToInviteTo(const ShellTerminal& terminal, const ShellArguments& arguments)
    {
        if (arguments.Has("meeting"))
        {
            return arguments.Meeting("meeting").Data1;
        }
        const ShellTerminal::Meeting* const meeting = terminal.Joined();
        if (terminal.isLoggedIn && meeting == nullptr)
        {
            throw ShellFailure(EXIT_REFUSED, terminal.Name() +
                                                 " is not in a meeting to invite to; \"join MEETING\" first, "
                                                 "or name one with meeting=MEETING");
        }
        return meeting == nullptr ? 0 : meeting->roomId;
    }

    /// "; 2 accepted, 1 declined, 1 offline, 3 without an answer"
    static std::string Answers(const ShellTerminal::Sent& invitation)
    {
        size_t open = invitation.users.size();
        std::string text;
        const auto add = [&](const std::set<uint32_t>& users, const char* what)
        {
            const auto count =
                static_cast<size_t>(std::count_if(invitation.users.begin(), invitation.users.end(),
                                                  [&users](uint32_t user) { return users.contains(user); }));
            open -= count;
            text += count == 0 ? "" : (text.empty() ? "; " : ", ") + std::to_string(count) + what;
        };
        add(invitation.accepted, " accepted");
        add(invitation.declined, " declined");
        add(invitation.offline, " offline");
        text += open == 0 ? "" : (text.empty() ? "; " : ", ") + std::to_string(open) + " without an answer";
        return text;
    }

    void GoBack(const ShellTerminal* terminal)
    {
        const auto& terminals = m_shell.World().Terminals();
        const auto found = std::find_if(terminals.begin(), terminals.end(),
                                        [terminal](const auto& known) { return known.get() == terminal; });
        m_shell.SetTerminal(found == terminals.end() ? nullptr : found->get());
    }

    void ListTerminals()
    {
        for (const auto& terminal : m_shell.World().Terminals())
        {
            m_shell.Say((terminal.get() == m_shell.CurrentTerminal() ? "* " : "  ") + terminal->Name() +
                        (terminal->isLoggedIn ? "" : " (offline)"));
        }
    }

    /// Removes the users that the module does not know any more, after a refresh of other users for example.
    static void Forget(ShellTerminal& terminal, std::vector<UserOnlineInfo>& users)
    {
        std::erase_if(users,
                      [&terminal](const UserOnlineInfo& user)
                      {
                          const bool isUnknown = user.terminals.empty();
                          if (isUnknown)
                          {
                              terminal.known.erase(user.user_id);
                          }
                          return isUnknown;
                      });
    }

    static void AddStreams(AVQualityInfo& info, uint32_t userId, const ShellArguments& arguments)
    {
        const std::string loss = arguments.Text("loss", "0%");
        const std::string rtt = arguments.Text("rtt", "20ms");
        for (uint32_t i = 0; i < arguments.Number("audio"); ++i)
        {
            info.sendAudio.push_back(std::make_shared<AudioQualityData>(
                AudioQualityData{userId, "user " + std::to_string(userId), "udp", "64kbps", loss, rtt, "2ms"}));
        }
        for (uint32_t i = 0; i < arguments.Number("video"); ++i)
        {
            info.sendVideo.push_back(std::make_shared<VideoQualityData>(
                VideoQualityData{userId, i + 1, "user " + std::to_string(userId), "udp", "1500kbps", "1280x720", "25",
                                 loss, rtt, "3ms"}));
        }
    }

    Shell& m_shell;
};

} // namespace

void AddOnlineCommands(Shell& shell)
{
    using Form = ShellForm;
    using Kind = ShellKind;
    constexpr uint32_t kMostStreams = 10'000;
    const auto commands = std::make_shared<OnlineCommands>(shell);
    const auto add = [&](std::string name, std::vector<ShellParameter> parameters, std::string summary,
                         std::string details, auto run)
    {
        shell.Table().Add({kGroup, std::move(name), std::move(parameters), std::move(summary), std::move(details),
                           [commands, run](const ShellArguments& arguments) { run(*commands, arguments); }});
    };
    const auto call = [](void (OnlineCommands::*member)(const ShellArguments&))
    { return [member](OnlineCommands& self, const ShellArguments& arguments) { (self.*member)(arguments); }; };

    add("login",
        {{"TERMINAL", Form::Optional, Kind::Terminal},
         {"force", Form::Flag},
         {"register", Form::Flag},
         {"server", Form::Option},
         {"token", Form::Option},
         {"mutex", Form::Option},
         {"company", Form::Option, Kind::Number},
         {"type", Form::Option, Kind::Number}},
        "Log a terminal in, and make it the current one",
        "TERMINAL is USER or USER@DEVICE; without it the current one logs in. The options stay for its later "
        "logins.\n"
        "Of two terminals of a user with the same mutex text only one can be logged in; force logs the other one out.\n"
        "At first the text is the device, so that terminals with different devices can be logged in together.\n",
        call(&OnlineCommands::Login));
    add("relogin", {{"force", Form::Flag}}, "Log the current terminal in again with the parameters of its last login",
        "A terminal that is logged in stays so, and nothing happens.\n", call(&OnlineCommands::Relogin));
    add("logout", {}, "Log the current terminal out", "", call(&OnlineCommands::Logout));
    add("notify", {}, "Have the module report again whether the current terminal is logged in",
        "It reports \"not logged in\" also while it logs in or reconnects.\n", call(&OnlineCommands::Notify));
    add("property", {{"NAME", Form::One, Kind::Word, PropertyNames()}}, "Show a property of the connection",
        "online is \"true\" after a login; conflict-device and conflict-state are the id and the custom text of the "
        "other device\n"
        "after a login that was refused with 36. A property has no text until the module has written it.\n",
        call(&OnlineCommands::Property));
    add("as", {{"TERMINAL", Form::Optional, Kind::Terminal}, {"COMMAND", Form::Any, Kind::Line}},
        "Make another terminal the current one, or run one command for it",
        "Without arguments it lists the terminals. A terminal that does not exist yet is made; it is offline.\n",
        call(&OnlineCommands::As));
    add("forget", {{"TERMINAL", Form::Optional, Kind::Terminal}}, "Destroy a terminal with its component",
        "Without TERMINAL it is the current one. The terminal's login ends.\n", call(&OnlineCommands::ForgetTerminal));
    add("who", {{"USER", Form::Any, Kind::Users}, {"all", Form::Flag}, {"online", Form::Flag}},
        "Show what the module knows of users",
        "Without USER it shows all that it knows, the first " + std::to_string(kMostUsers) +
            " unless all are wanted. See also: refresh, watch.\n",
        call(&OnlineCommands::Who));
    add("refresh", {{"USER", Form::Any, Kind::Users}}, "Have the module ask for the status of the whole company again",
        "With USER it asks for these users only. The module then forgets all others; that is on purpose.\n",
        call(&OnlineCommands::Refresh));
    add("watch", {{"USER", Form::Any, Kind::Users}, {"all", Form::Flag}, {"off", Form::Flag}},
        "Show the whole status of users when they change", "all means all users; off ends it.\n",
        call(&OnlineCommands::Watch));
    add("custom", {{"TEXT", Form::Optional, Kind::Text}}, "Publish a custom text with the terminal, or show it", "",
        call(&OnlineCommands::Custom));
    add("invite",
        {{"USER", Form::Some, Kind::Users},
         {"meeting", Form::Option, Kind::Meeting},
         {"code", Form::Option, Kind::Number},
         {"name", Form::Option},
         {"force", Form::Flag}},
        "Invite users to a meeting",
        "USER may be a range, such as 2..46. The meeting is the one that the terminal is in, unless meeting= names "
        "another.\n",
        call(&OnlineCommands::Invite));
    add("invitations", {}, "List the invitations that came in and those that went out, with their answers",
        "An accepted invitation stays in the list: it can still be withdrawn, and \"decline\" takes the answer back.\n",
        call(&OnlineCommands::Invitations));
    add("accept", {{"INVITATION", Form::One, Kind::Received}, {"from", Form::Option, Kind::User}},
        "Accept an invitation", "", [](OnlineCommands& self, const ShellArguments& a) { self.Answer(a, true); });
    add("decline", {{"INVITATION", Form::One, Kind::Received}, {"from", Form::Option, Kind::User}},
        "Decline an invitation", "", [](OnlineCommands& self, const ShellArguments& a) { self.Answer(a, false); });
    add("decline-all", {{"EXCEPT", Form::Any, Kind::Received}, {"reason", Form::Option, Kind::Number}},
        "Decline all open invitations except some",
        "EXCEPT are the invitations to keep. The module forgets them: they can be accepted, but the module does not "
        "report "
        "any\n"
        "more that they are withdrawn.\n",
        call(&OnlineCommands::DeclineAll));
    add("abandon", {{"INVITATION", Form::One, Kind::Sent}, {"USER", Form::Any, Kind::Users}},
        "Withdraw an invitation that went out", "Without USER it is withdrawn from all invitees.\n",
        call(&OnlineCommands::Abandon));
    add("join", {{"MEETING", Form::One, Kind::Meeting}, {"gateway", Form::Flag}}, "Join a meeting",
        "MEETING is a number or a GUID. Joining over the gateway needs no login.\n", call(&OnlineCommands::Join));
    add("leave", {{"gateway", Form::Flag}}, "Leave the meeting", "", call(&OnlineCommands::Leave));
    add("members", {{"all", Form::Flag}}, "List the users in the meeting",
        "The list comes from the notifications of users that join and leave. It shows the first " +
            std::to_string(kMostUsers) + " users unless all are wanted.\n",
        call(&OnlineCommands::Members));
    add("quality",
        {{"LEVEL", Form::One, Kind::Number, {}, INT32_MAX},
         {"audio", Form::Option, Kind::Number, {}, kMostStreams},
         {"video", Form::Option, Kind::Number, {}, kMostStreams},
         {"loss", Form::Option},
         {"rtt", Form::Option}},
        "Give the module a measurement of the meeting's quality",
        "audio and video are numbers of streams; loss and rtt are texts that each of them carries.\n"
        "The module sends the reports that the monitoring service has asked for. See also: monitor.\n",
        call(&OnlineCommands::Quality));
    add("reconnect", {{"DECISION", Form::One, Kind::Word, {"yes", "no", "undecided"}}},
        "Decide whether a lost connection is restored",
        "Terminals begin with yes. With undecided it is restored too, but nothing reports that the attempt starts.\n",
        call(&OnlineCommands::Reconnect));
    add("trace", {{"FILE", Form::Optional, Kind::File}, {"diagram", Form::Option, Kind::File}, {"off", Form::Flag}},
        "Start or stop recording what crosses the module's boundary",
        "FILE gets a trace, diagram a sequence diagram; both are complete at \"trace off\" or at the end of the shell. "
        "Only\n"
        "terminals that are made while it records are recorded. --trace and --diagram record from the beginning.\n",
        call(&OnlineCommands::StartOrStopTrace));
    add("log-level", {{"LEVEL", Form::One, Kind::Word, {"info", "trace", "warning", "error", "fatal", "off"}}},
        "Set the level of the module's log", "", call(&OnlineCommands::LogLevel));
    add("log", {{"COUNT", Form::Optional, Kind::Number}}, "Show the newest lines of the log", "",
        call(&OnlineCommands::Log));
}

} // namespace host
