#include "host/app/command_login.h"
#include "host/console/ModulePath.h"
#include "host/console/Wording.h"
#include "host/trace/RecordComponent.h"

#include "host/app/LoginOptions.h"
#include "host/app/OptionCheck.h"
#include "host/app/TraceOptions.h"
#include "host/console/Console.h"
#include "host/console/ExitCode.h"
#include "onlinehost/Component.h"
#include "onlinehost/ComponentFactory.h"
#include "onlinehost/LogCenter.h"
#include "onlinehost/Module.h"
#include "onlinehost/Text.h"
#include "platform/Platform.h"

#include <CLI/CLI.hpp>
#include <functional>
#include <memory>

namespace host
{

using namespace onlinehost;

namespace
{

constexpr char kLogName[] = "onlinehost";

struct Options
{
    LoginOptions login;
    std::string user;
    std::string refuse;
    bool force = false;
    bool registerUser = false;
    TraceOptions trace;
};

onlinemanager::LoginParam ToLoginParam(const Options& options)
{
    onlinemanager::LoginParam param = ToLoginParam(options.login);
    param.userid = ParseUserId(options.user);
    param.registeruser = options.registerUser;
    if (param.mutex.empty())
    {
        param.mutex = param.deviceid;
    }
    return param;
}

LogCenter::Options ToLogOptions(const Options& options)
{
    LogCenter::Options log = ToLogOptions(options.login);
    const bool isRead = !log.file.empty() || options.trace.log;
    log.level = isRead ? log.level : LogCenter::kLevelOff;
    return log;
}

/// One run of the command: the world that the session lives in, and the story that is told of it.
class LoginRun
{
public:
    explicit LoginRun(const Options& options)
        : m_options(options),
          m_log(ToLogOptions(options)),
          m_trace(options.trace, m_log),
          m_factory(std::bind_front(&platform::Platform::CreateComponent, &m_platform), m_log),
          m_module(std::make_shared<Module>(FindModule(options.login.module)))
    {
        m_platform.SetDiagnostic([this](std::string_view text) { Warn(text); });
        if (!options.refuse.empty())
        {
            const uint32_t code = ParseNumber(options.refuse, "code");
            m_platform.GetFaults().RefuseLogins(static_cast<avcore::ZolPortErrCode>(code));
        }
    }

    ExitCode Run()
    {
        const ExitCode result = RunSession();
        m_trace.Close();
        return result;
    }

private:
    ExitCode RunSession()
    {
        const onlinemanager::LoginParam param = ToLoginParam(m_options);
        HttpClient::Options http;
        http.caFile = m_options.login.caFile;
        http.timeLimit = m_options.login.TimeLimit();
        http.onFailure = [this](const std::string& text) { Warn(text); };
        Component session(m_module, m_factory, std::move(http), RecordComponent(m_trace.Get(), m_options.login.device));

        Tell("logs in at " + Printable(param.server) + " as user " + std::to_string(param.userid));
        if (!session.FetchAddress(param))
        {
            Tell(m_out.Paint(Tone::Bad, "did not get the address behind " + Printable(param.server)));
            return EXIT_FAILED;
        }
        if (!session.Login(param, m_options.force))
        {
            Tell(m_out.Paint(Tone::Bad, "was refused by the module at once"));
            return EXIT_REFUSED;
        }
        std::optional<Event> result = WaitForAnyOf(session, EventKind::LoginSuccess, EventKind::Offline);
        if (result && result->kind == EventKind::LoginSuccess)
        {
            // The presence service is told after all listeners; its own refresh says that it was told.
            result = WaitForAnyOf(session, EventKind::UserStatusChanged, EventKind::Offline);
        }
        if (!result)
        {
            return EXIT_FAILED;
        }
        if (result->kind == EventKind::Offline)
        {
            TellConflict(session);
            return EXIT_REFUSED;
        }
        session.Online().Logout();
        return WaitForAnyOf(session, EventKind::Offline, EventKind::Offline) ? EXIT_DONE : EXIT_FAILED;
    }

    void Tell(const std::string& text)
    {
        Tell(text, std::chrono::system_clock::now());
    }

    void Tell(const std::string& text, std::chrono::system_clock::time_point time)
    {
        m_out.Line(m_out.Paint(Tone::Quiet, ClockText(time)) + "  " +
                   m_out.Paint(Tone::Strong, Printable(m_options.login.device)) + " " + text);
    }

    void Warn(std::string_view text)
    {
        m_errors.Line(m_errors.Paint(Tone::Doubtful, "onlinehost: ") + Printable(text));
        m_log.Write(kLogName, Quenda::LOG_LEVEL_WARNING, text);
    }

    /// Tells every event up to the one that is waited for.
    std::optional<Event> WaitForAnyOf(Component& session, EventKind one, EventKind other)
    {
        const auto deadline = std::chrono::steady_clock::now() + m_options.login.TimeLimit();
        for (;;)
        {
            const auto left =
                std::chrono::duration_cast<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now());
            std::optional<Event> event = session.Events().Take(std::max(left, std::chrono::milliseconds(0)));
            if (!event)
            {
                Tell(m_out.Paint(Tone::Bad, "got no answer in " + std::to_string(m_options.login.timeout) + " s"));
                return std::nullopt;
            }
            const bool isBad = event->kind == EventKind::Offline && event->code != onlinemanager::ERR_SUCCESS;
            Tell(m_out.Paint(isBad ? Tone::Bad : Tone::Good, Describe(*event)), event->time);
            if (event->kind == one || event->kind == other)
            {
                return event;
            }
        }
    }

    void TellConflict(Component& session)
    {
        const auto device = session.Property(onlinemanager::CONNECT_PROPERTY_CONFLICT_DEVICE_ID);
        const auto custom = session.Property(onlinemanager::CONNECT_PROPERTY_CONFLICT_CUSTOM_STATE);
        if (device)
        {
            Tell("learns of the other device \"" + Printable(*device) + "\", state \"" +
                 Printable(custom.value_or("")) + "\"");
        }
    }

    const Options& m_options;
    const Console m_out{stdout};
    const Console m_errors{stderr};
    LogCenter m_log;
    TraceFiles m_trace;
    platform::Platform m_platform;
    ComponentFactory m_factory;
    std::shared_ptr<Module> m_module;
};

} // namespace

void AddLoginCommand(CLI::App& program, int& exitCode)
{
    CLI::App* const command = program.add_subcommand("login", "Log in once on the in-process platform and out again");
    const auto options = std::make_shared<Options>();

    command->add_option("--user", options->user, "User id, 1 to 4294967295")
        ->type_name("ID")
        ->required()
        ->check(OptionCheck(ParseUserId));
    command->add_flag("--force", options->force, "Log out another device that shares the tag");
    command->add_flag("--register", options->registerUser, "Register the user");
    command->add_option("--refuse", options->refuse, "Have the platform refuse the login with this code")
        ->type_name("CODE")
        ->check(NumberCheck("code"));
    AddLoginOptions(*command, options->login);
    command->get_option("--log-level")->needs("--log");
    AddTraceOptions(*command, options->trace);
    command->footer(kExitCodeHelp);

    command->callback([options, &exitCode] { exitCode = LoginRun(*options).Run(); });
}

} // namespace host
