#include "host/command_login.h"

#include "host/ComponentFactory.h"
#include "host/Console.h"
#include "host/Error.h"
#include "host/ExitCode.h"
#include "host/LogCenter.h"
#include "host/Module.h"
#include "host/Session.h"
#include "host/Text.h"
#include "host/TraceOptions.h"
#include "platform/Platform.h"

#include <CLI/CLI.hpp>
#include <memory>

namespace host
{

namespace
{

constexpr char kLogName[] = "onlinehost";

struct Options
{
    std::string module;
    std::string server = "tcp:in-process";
    std::string user;
    std::string company = "1";
    std::string device = "onlinehost";
    std::string mutex = "onlinehost";
    std::string token = "token";
    std::string appid = "onlinehost";
    std::string terminal = "0";
    std::string refuse;
    std::string caFile;
    std::string log;
    std::string logLevel = "trace";
    uint32_t timeout = 10;
    bool force = false;
    bool registerUser = false;
    TraceOptions trace;
};

/// Turns a reader that throws into a check of an option.
template <typename Reader>
CLI::Validator Check(Reader read)
{
    return CLI::Validator(
        [read](const std::string& text) -> std::string
        {
            try
            {
                read(text);
                return {};
            }
            catch (const Error& error)
            {
                return error.what();
            }
        },
        "");
}

onlinemanager::LoginParam ToLoginParam(const Options& options)
{
    onlinemanager::LoginParam param;
    param.userid = ParseUserId(options.user);
    param.companyid = ParseNumber(options.company, "company id");
    param.registeruser = options.registerUser;
    param.mutex = options.mutex;
    param.terminal = static_cast<quenda::TerminalType>(ParseNumber(options.terminal, "terminal type"));
    param.deviceid = options.device;
    param.appid = options.appid;
    param.token = options.token;
    param.server = options.server;
    return param;
}

LogCenter::Options ToLogOptions(const Options& options)
{
    LogCenter::Options log;
    log.file = options.log;
    const bool isRead = !options.log.empty() || options.trace.log;
    log.level = isRead ? ParseLogLevel(options.logLevel) : LogCenter::kLevelOff;
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
          m_factory(m_platform, m_log),
          m_module(std::make_shared<Module>(options.module.empty() ? Module::FindDefault()
                                                                   : std::filesystem::path(options.module)))
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
        http.caFile = m_options.caFile;
        http.timeLimit = std::chrono::seconds(m_options.timeout);
        http.onFailure = [this](const std::string& text) { Warn(text); };
        Session session(m_module, m_factory, std::move(http), {m_trace.Get(), m_options.device});

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
        const std::optional<Event> result = WaitForAnyOf(session, EventKind::LoginSuccess, EventKind::Offline);
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
                   m_out.Paint(Tone::Strong, Printable(m_options.device)) + " " + text);
    }

    void Warn(std::string_view text)
    {
        m_errors.Line(m_errors.Paint(Tone::Doubtful, "onlinehost: ") + Printable(text));
        m_log.Write(kLogName, Quenda::LOG_LEVEL_WARNING, text);
    }

    /// Tells every event up to the one that is waited for.
    std::optional<Event> WaitForAnyOf(Session& session, EventKind one, EventKind other)
    {
        const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(m_options.timeout);
        for (;;)
        {
            const auto left =
                std::chrono::duration_cast<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now());
            std::optional<Event> event = session.Events().Take(std::max(left, std::chrono::milliseconds(0)));
            if (!event)
            {
                Tell(m_out.Paint(Tone::Bad, "got no answer in " + std::to_string(m_options.timeout) + " s"));
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

    void TellConflict(Session& session)
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

    const auto text = [command](const char* name, std::string& value, const char* type, const char* help)
    { return command->add_option(name, value, help)->type_name(type); };
    const auto number = [&](const char* name, std::string& value, const char* type, const char* help) {
        return text(name, value, type, help)
            ->check(Check([help](const std::string& given) { ParseNumber(given, help); }));
    };

    text("--user", options->user, "ID", "User id, 1 to 4294967295")->required()->check(Check(ParseUserId));
    text("--server", options->server, "ADDRESS", "Server address")->capture_default_str();
    number("--company", options->company, "ID", "Company id")->capture_default_str();
    text("--device", options->device, "ID", "Device id")->capture_default_str();
    text("--mutex", options->mutex, "TAG", "Tag by which devices of a user shut each other out")->capture_default_str();
    text("--token", options->token, "TOKEN", "Login token; it appears in the log")->capture_default_str();
    text("--appid", options->appid, "ID", "Application id")->capture_default_str();
    number("--terminal", options->terminal, "NUMBER", "Terminal type")->capture_default_str();
    command->add_flag("--force", options->force, "Log out another device that shares the tag");
    command->add_flag("--register", options->registerUser, "Register the user");
    command->add_option("--timeout", options->timeout, "Seconds to wait for each answer")
        ->check(CLI::Range(1u, 86400u))
        ->type_name("SECONDS")
        ->capture_default_str();
    number("--refuse", options->refuse, "CODE", "Have the platform refuse the login with this code");
    text("--ca-file", options->caFile, "FILE", "Authorities to trust for an HTTPS server, PEM")
        ->check(CLI::ExistingFile);
    text("--module", options->module, "FILE", "The module's file; by default the one beside the program");
    CLI::Option* const log = text("--log", options->log, "FILE", "File for the log of module and host");
    text("--log-level", options->logLevel, "LEVEL", "info, trace, warning, error, fatal or off")
        ->check(Check(ParseLogLevel))
        ->needs(log)
        ->capture_default_str();
    AddTraceOptions(*command, options->trace);
    command->footer(kExitCodeHelp);

    command->callback([options, &exitCode] { exitCode = LoginRun(*options).Run(); });
}

} // namespace host
