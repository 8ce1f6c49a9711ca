#include "host/shell/ShellPlatformCommands.h"

#include "host/console/ProgressBar.h"
#include "host/shell/Shell.h"
#include "host/shell/ShellFailure.h"
#include "host/shell/ShellValues.h"
#include "onlinehost/Text.h"

#include <algorithm>
#include <charconv>
#include <set>
#include <utility>

namespace host
{

using namespace onlinehost;

namespace
{

using platform::CrowdScript;
using Answer = CrowdScript::Answer;

constexpr char kGroup[] = "The simulated environment";
constexpr uint32_t kFirstColleague = 1001;
constexpr uint32_t kMostColleagues = 1'000'000;

[[noreturn]] void Refuse(const std::string& text)
{
    throw ShellFailure(EXIT_REFUSED, text);
}

std::string StateText(platform::SessionInfo::State state)
{
    using State = platform::SessionInfo::State;
    return state == State::LoggedIn ? "logged in" : state == State::LoggingIn ? "logging in" : "reconnecting";
}

/// A meeting as `join` takes it.
std::string MeetingText(const std::string& groupId)
{
    GUID meeting{};
    std::from_chars(groupId.data(), groupId.data() + std::min<size_t>(groupId.size(), 8), meeting.Data1, 16);
    return platform::Platform::MeetingGroupId(meeting) == groupId ? std::to_string(meeting.Data1) : Printable(groupId);
}

platform::ReportKind ToReportKind(const std::string& word)
{
    return word == "overview" ? platform::ReportKind::Overview
           : word == "detail" ? platform::ReportKind::Detail
                              : platform::ReportKind::All;
}

class PlatformCommands
{
public:
    explicit PlatformCommands(Shell& shell) : m_shell(shell) {}

    void Company(const ShellArguments& arguments)
    {
        const onlinemanager::LoginParam& login = m_shell.World().Settings().login;
        platform::CrowdOptions options;
        options.appId = login.appid;
        options.companyId = std::to_string(login.companyid);
        options.firstUserId = arguments.Has("first") ? arguments.Users("first").front() : kFirstColleague;
        options.count = arguments.Number("COUNT");
        options.deviceId = arguments.Text("device", options.deviceId);
        options.ext = "{\"tt\":" + std::to_string(arguments.Number("type", 1)) + "}";
        options.custom = arguments.Text("custom");
        CheckIsFree(options);
        Advance("colleagues go offline",
                [&](const platform::Crowd::Progress& progress) { m_shell.World().SetCompany(options, progress); });

        platform::Crowd* const company = m_shell.World().Company();
        if (company == nullptr)
        {
            m_shell.Say("all simulated users are offline");
            return;
        }
        SetAnswers(*company, options, arguments);
        Advance("colleagues come online",
                [&](const platform::Crowd::Progress& progress) { company->ComeOnline(progress); });
        m_shell.Say("users " + std::to_string(options.firstUserId) + " to " +
                    std::to_string(options.firstUserId + (options.count - 1)) + " are online on " +
                    Printable(options.deviceId));
    }

    void Colleague(const ShellArguments& arguments)
    {
        platform::Crowd* const company = m_shell.World().Company();
        const std::vector<uint32_t> users = arguments.Users("USER");
        for (const uint32_t user : users)
        {
            const platform::CrowdOptions& options = m_shell.World().CompanySettings();
            if (company == nullptr || user < options.firstUserId || user - options.firstUserId >= options.count)
            {
                Refuse("user " + std::to_string(user) + " is not a simulated colleague; \"company COUNT\" makes some");
            }
        }
        const std::string action = arguments.Text("ACTION");
        const std::string value = arguments.Text("VALUE");
        if (NeedsValue(action) != arguments.Has("VALUE"))
        {
            throw ShellFailure(EXIT_USAGE, action + (NeedsValue(action) ? " needs a VALUE" : " takes no VALUE"));
        }
        const std::string group = IsAboutMeeting(action) ? Group(value) : "";
        for (const uint32_t user : users)
        {
            m_shell.ThrowIfSignalled();
            Act(*company, user, action, value, group);
        }
    }

    void Message(const ShellArguments& arguments)
    {
        const onlinemanager::LoginParam& login = m_shell.World().Settings().login;
        const uint32_t id = m_shell.World().Platform().SendUserMessage(
            login.appid, std::to_string(login.companyid), Sender(arguments),
            std::to_string(arguments.Users("USER").front()), arguments.Text("TEXT"));
        m_shell.Say("message " + std::to_string(id) + " is sent");
    }

    void Announce(const ShellArguments& arguments)
    {
        const uint32_t id = m_shell.World().Platform().SendGroupMessage(Group(arguments.Text("MEETING")),
                                                                        Sender(arguments), arguments.Text("TEXT"));
        m_shell.Say("message " + std::to_string(id) + " is sent");
    }

    void Monitor(const ShellArguments& arguments)
    {
        platform::MonitoringService& monitoring = m_shell.World().Monitoring();
        const std::string user = arguments.Text("USER");
        const platform::ReportKind kind = ToReportKind(arguments.Text("REPORT"));
        if (arguments.Has("off"))
        {
            monitoring.Unsubscribe(user, kind);
        }
        else
        {
            monitoring.Subscribe(user, kind);
        }
    }

    void MonitorCommand(const ShellArguments& arguments)
    {
        m_shell.World().Monitoring().SendCommand(arguments.Text("USER"), arguments.Text("TEXT"));
    }

    void Drop(const ShellArguments& arguments)
    {
        using platform::Outage;
        const std::string name = arguments.Text("TERMINAL");
        const auto [user, terminal] =
            name.empty() ? std::pair(m_shell.Terminal().login.userid, m_shell.Terminal().login.deviceid)
                         : ParseTerminal(name);
        const Outage outage = arguments.Has("forever")
                                  ? Outage::Forever()
                                  : Outage::For(arguments.Duration("for", std::chrono::milliseconds(0)));
        const size_t count =
            m_shell.World().Platform().GetFaults().DropConnections(std::to_string(user), terminal, outage);
        if (count == 0)
        {
            Refuse("that terminal has no connection");
        }
        m_shell.Say("connections cut: " + std::to_string(count));
    }

    void Restore(const ShellArguments&)
    {
        m_shell.World().Platform().GetFaults().EndOutages();
    }

    void RefuseLogins(const ShellArguments& arguments)
    {
        const auto code = static_cast<avcore::ZolPortErrCode>(arguments.Number("CODE"));
        m_shell.World().Platform().GetFaults().RefuseLogins(code, arguments.Text("USER"));
    }

    void AllowLogins(const ShellArguments& arguments)
    {
        m_shell.World().Platform().GetFaults().AcceptLogins(arguments.Text("USER"));
    }

    void RefuseToken(const ShellArguments& arguments)
    {
        platform::Faults& faults = m_shell.World().Platform().GetFaults();
        if (arguments.Has("off"))
        {
            faults.AcceptToken(arguments.Text("TOKEN"));
        }
        else
        {
            faults.RefuseToken(arguments.Text("TOKEN"));
        }
    }

    void Sessions(const ShellArguments&)
    {
        const std::vector<platform::SessionInfo> sessions = m_shell.World().Platform().Sessions();
        for (const platform::SessionInfo& session : sessions)
        {
            m_shell.Say(Printable(session.userId + "@" + session.deviceId) + " " + StateText(session.state) +
                        (session.groupId.empty() ? "" : "; meeting " + MeetingText(session.groupId)) +
                        (session.custom.empty() ? "" : "; \"" + Printable(session.custom) + "\""));
        }
        m_shell.Say(CountText(sessions.size(), "login"));
    }

private:
    /// The platform ends the login of a terminal when a colleague with the same user and device comes online.
    void CheckIsFree(const platform::CrowdOptions& options)
    {
        std::set<uint32_t> taken;
        for (const auto& terminal : m_shell.World().Terminals())
        {
            const uint32_t user = terminal->login.userid;
            if (terminal->isLoggedIn && terminal->login.deviceid == options.deviceId && user >= options.firstUserId &&
                user - options.firstUserId < options.count)
            {
                taken.insert(user);
            }
        }
        if (!taken.empty())
        {
            const bool isOne = taken.size() == 1;
            Refuse((isOne ? "user " : "users ") + ListIds(taken) + (isOne ? " is" : " are") + " logged in here on " +
                   Printable(options.deviceId) + "; choose another first= or device=");
        }
    }

    /// Shows the progress of a change of the whole company, and lets a signal end the change. Colleagues that are
    /// online already stay online.
    void Advance(const char* what, const std::function<void(const platform::Crowd::Progress&)>& change)
    {
        ProgressBar bar(m_shell.ProgressOut(), what);
        try
        {
            change(
                [&](size_t done, size_t total)
                {
                    bar.Show(done, total);
                    m_shell.ThrowIfSignalled();
                });
        }
        catch (const ShellFailure& failure)
        {
            const platform::Crowd* const company = m_shell.World().Company();
            if (company == nullptr || !failure.IsInterruption())
            {
                throw;
            }
            throw ShellFailure(failure.Code(), std::string(failure.what()) + "; " +
                                                   std::to_string(company->CountOnline()) + " of " +
                                                   CountText(m_shell.World().CompanySettings().count, "colleague") +
                                                   " are online; \"company 0\" sends them home");
        }
    }

    static bool IsAboutMeeting(const std::string& action)
    {
        return action == "join" || action == "leave";
    }

    static bool NeedsValue(const std::string& action)
    {
        return IsAboutMeeting(action) || action == "custom" || action == "terminal" || action == "no-terminal";
    }

    static std::string Group(const std::string& meeting)
    {
        try
        {
            return platform::Platform::MeetingGroupId(ParseMeeting(meeting));
        }
        catch (const Error& error)
        {
            throw ShellFailure(EXIT_USAGE, error.what());
        }
    }

    static CrowdScript MakeScript(Answer answer, const ShellArguments& arguments)
    {
        CrowdScript script;
        script.answer = answer;
        script.after = arguments.Duration("after", script.after);
        script.joinGroupId = arguments.Has("joins") ? Group(arguments.Text("joins")) : "";
        return script;
    }

    static void SetAnswers(platform::Crowd& company, const platform::CrowdOptions& options,
                           const ShellArguments& arguments)
    {
        static constexpr Answer kInTurn[] = {Answer::Accept, Answer::Decline, Answer::Ignore};
        const std::string word = arguments.Text("answer", "accept");
        if (word != "mixed")
        {
            company.SetScript(MakeScript(ToAnswer(word), arguments));
            return;
        }
        for (uint32_t i = 0; i < options.count; ++i)
        {
            company.SetScript(options.firstUserId + i, MakeScript(kInTurn[i % std::size(kInTurn)], arguments));
        }
    }

    static Answer ToAnswer(const std::string& word)
    {
        return word == "accept" ? Answer::Accept : word == "decline" ? Answer::Decline : Answer::Ignore;
    }

    static void Act(platform::Crowd& company, uint32_t user, const std::string& action, const std::string& value,
                    const std::string& group)
    {
        if (action == "online")
        {
            company.ComeOnline(user);
        }
        else if (action == "offline")
        {
            company.GoOffline(user);
        }
        else if (action == "vanish")
        {
            company.Vanish(user);
        }
        else if (action == "join")
        {
            company.JoinGroup(user, group);
        }
        else if (action == "leave")
        {
            company.LeaveGroup(user, group);
        }
        else if (action == "custom")
        {
            company.SetCustomInfo(user, value);
        }
        else if (action == "terminal" || action == "no-terminal")
        {
            ChangeTerminal(company, user, value, action == "terminal");
        }
        else
        {
            company.SetScript(user, {.answer = ToAnswer(action), .message = {}, .joinGroupId = {}});
        }
    }

    static void ChangeTerminal(platform::Crowd& company, uint32_t user, const std::string& terminal, bool isNew)
    {
        const bool isDone =
            isNew ? company.AddTerminal(user, terminal, R"({"tt":2})") : company.RemoveTerminal(user, terminal);
        if (!isDone)
        {
            Refuse("user " + std::to_string(user) + " is offline, or " +
                   (isNew ? "has that terminal already" : "does not have that terminal"));
        }
    }

    std::string Sender(const ShellArguments& arguments)
    {
        return arguments.Has("from") ? arguments.Text("from") : std::to_string(m_shell.Terminal().login.userid);
    }

    Shell& m_shell;
};

} // namespace

void AddPlatformCommands(Shell& shell)
{
    using Form = ShellForm;
    using Kind = ShellKind;
    const auto commands = std::make_shared<PlatformCommands>(shell);
    const auto add = [&](std::string name, std::vector<ShellParameter> parameters, std::string summary,
                         std::string details, void (PlatformCommands::*member)(const ShellArguments&))
    {
        shell.Table().Add({kGroup, std::move(name), std::move(parameters), std::move(summary), std::move(details),
                           [commands, member](const ShellArguments& arguments)
                           { (commands.get()->*member)(arguments); }});
    };

    add("company",
        {{"COUNT", Form::One, Kind::Number, {}, kMostColleagues},
         {"first", Form::Option, Kind::User},
         {"device", Form::Option},
         {"type", Form::Option, Kind::Number},
         {"custom", Form::Option},
         {"answer", Form::Option, Kind::Word, {"accept", "decline", "ignore", "mixed"}},
         {"after", Form::Option, Kind::Duration},
         {"joins", Form::Option, Kind::Meeting}},
        "Bring simulated colleagues online",
        "Their ids count up from " + std::to_string(kFirstColleague) +
            " or from first. answer is what they do with an invitation (accept unless it is given),\n"
            "after is how long they wait before they answer, and those that accept join the meeting that joins names. "
            "A later\n"
            "company replaces the current one; company 0 takes all of them offline.\n",
        &PlatformCommands::Company);
    add("colleague",
        {{"USER", Form::One, Kind::Users},
         {"ACTION",
          Form::One,
          Kind::Word,
          {"online", "offline", "vanish", "accept", "decline", "ignore", "join", "leave", "custom", "terminal",
           "no-terminal"}},
         {"VALUE", Form::Optional}},
        "Have simulated colleagues do something",
        "accept, decline and ignore are for invitations to come; vanish ends without leaving the meeting first. VALUE "
        "is the\n"
        "meeting to join or leave, the custom text, or the device of another terminal.\n",
        &PlatformCommands::Colleague);
    add("message",
        {{"USER", Form::One, Kind::User}, {"from", Form::Option, Kind::User}, {"TEXT", Form::One, Kind::Text}},
        "Send a message to all terminals of a user",
        "The sender is the current terminal's user unless from= names another. The module only logs messages in this "
        "version;\n"
        "the shell shows the messages that arrive on the module's platform connection.\n",
        &PlatformCommands::Message);
    add("announce",
        {{"MEETING", Form::One, Kind::Meeting}, {"from", Form::Option, Kind::User}, {"TEXT", Form::One, Kind::Text}},
        "Send a message to all users in a meeting", "", &PlatformCommands::Announce);
    add("monitor",
        {{"USER", Form::One, Kind::User},
         {"REPORT", Form::One, Kind::Word, {"overview", "detail", "all"}},
         {"off", Form::Flag}},
        "Have the monitoring service ask a user's terminals for quality reports",
        "With off it stops asking. See also: quality.\n", &PlatformCommands::Monitor);
    add("monitor-command", {{"USER", Form::One, Kind::User}, {"TEXT", Form::One, Kind::Text}},
        "Send any text to a user's terminals as a command of the monitoring service", "",
        &PlatformCommands::MonitorCommand);
    add("drop",
        {{"TERMINAL", Form::Optional, Kind::Terminal}, {"for", Form::Option, Kind::Duration}, {"forever", Form::Flag}},
        "Cut a terminal's connection",
        "The terminal cannot reconnect until the outage ends. for is how long the outage lasts, and forever means "
        "until "
        "restore;\n"
        "without both it ends at once. A logout and a new login succeed during an outage. USER alone means all of the "
        "user's terminals; "
        "the\n"
        "connection to the gateway is the device \"gateway\".\n",
        &PlatformCommands::Drop);
    add("restore", {}, "End all outages", "", &PlatformCommands::Restore);
    add("refuse",
        {{"CODE", Form::One, Kind::Number, {}, INT32_MAX, {"32", "33", "35", "36", "37"}},
         {"USER", Form::Optional, Kind::User}},
        "Have the service refuse logins with a code",
        "Without USER it refuses the logins of all users. CODE is any number; the service itself answers with 32 (the "
        "token "
        "is not valid), 33 (the connection point does not answer), 35 (the server gave no connection point), 36 "
        "(logged in "
        "on another device) or 37 (refused by the service). To decline an invitation, use decline.\n",
        &PlatformCommands::RefuseLogins);
    add("allow", {{"USER", Form::Optional, Kind::User}}, "Accept logins again after refuse, with the same USER", "",
        &PlatformCommands::AllowLogins);
    add("refuse-token", {{"TOKEN", Form::One, Kind::Word}, {"off", Form::Flag}},
        "Have the service refuse a login token with 32",
        "It refuses logins with the token, and the reconnection of a terminal that logged in with it. off accepts the "
        "token\n"
        "again.\n",
        &PlatformCommands::RefuseToken);
    add("sessions", {}, "List the logins that the platform knows", "", &PlatformCommands::Sessions);
}

} // namespace host
