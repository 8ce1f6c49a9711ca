#include "host/app/command_login.h"

#include "host/app/LoginOptions.h"
#include "host/app/OptionCheck.h"
#include "host/app/OutputFiles.h"
#include "host/app/TraceOptions.h"
#include "host/console/Console.h"
#include "host/console/EventJson.h"
#include "host/console/ExitCode.h"
#include "host/console/Interruption.h"
#include "host/console/JsonLine.h"
#include "host/console/ModulePath.h"
#include "host/console/Wording.h"
#include "host/trace/RecordComponent.h"
#include "onlinehost/Component.h"
#include "onlinehost/ComponentFactory.h"
#include "onlinehost/Error.h"
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
    bool json = false;
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

/// Reads a code with which the platform can refuse a login. Throws `Error` for another text.
uint32_t ParseRefusal(const std::string& text)
{
    const uint32_t code = ParseNumber(text, "code");
    if (code < 1 || code > INT32_MAX)
    {
        throw Error("code " + text + " is not a refusal: expected 1 to " + std::to_string(INT32_MAX));
    }
    return code;
}

void CheckFiles(const Options& options)
{
    RequireDistinctFiles({{"--log", options.login.log},
                          {"--trace", options.trace.trace},
                          {"--diagram", options.trace.diagram},
                          {"--ca-file", options.login.caFile, false},
                          {"the module", FindModule(options.login.module), false}});
}

/// One run of the command: the platform, the component, and the lines that the command writes.
class LoginRun
{
public:
    explicit LoginRun(const Options& options)
        : m_options(options),
          m_log(ToLogOptions(options)),
          m_trace(options.trace, m_log),
          m_platform(ToPlatformOptions(options.login)),
          m_factory(std::bind_front(&platform::Platform::CreateComponent, &m_platform), m_log),
          m_module(std::make_shared<Module>(FindModule(options.login.module)))
    {
        m_platform.SetDiagnostic([this](std::string_view text) { Warn(text); });
        if (!options.refuse.empty())
        {
            const uint32_t code = ParseRefusal(options.refuse);
            m_platform.GetFaults().RefuseLogins(static_cast<avcore::ZolPortErrCode>(code));
        }
    }

    int Run()
    {
        const ExitCode result = RunSession();
        m_trace.Close();
        m_log.CheckWritten();
        const bool isInterrupted = m_interruption.Signal() != 0;
        if (isInterrupted)
        {
            m_errors.Line(m_errors.Paint(Tone::Doubtful, "onlinehost: ") + m_interruption.Reason());
        }
        const int exitCode = isInterrupted ? m_interruption.ExitCode() : result;
        if (m_options.json)
        {
            Line(JsonLine("result").Number("exitCode", exitCode).Take());
        }
        return exitCode;
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

        const Interruption::Watch watch(&m_interruption, [&session] { session.CancelWaits(); });

        Tell("logs in at " + Printable(param.server) + " as user " + std::to_string(param.userid));
        if (!session.FetchAddress(param))
        {
            TellFailure("got no connection point from " + Printable(param.server));
            return EXIT_FAILED;
        }
        if (!session.Login(param, m_options.force))
        {
            TellFailure("was refused by the module at once");
            return EXIT_REFUSED;
        }
        if (param.userid > INT32_MAX)
        {
            Warn(kUnreadableUserId);
        }
        std::optional<Event> result = WaitForAnyOf(session, EventKind::LoginSuccess, EventKind::Offline, "the login");
        if (result && result->kind == EventKind::LoginSuccess)
        {
            // The module's presence service learns of the login after all listeners. The result of its refresh shows
            // that it has.
            result = WaitForAnyOf(session, EventKind::UserStatusChanged, EventKind::Offline, "the first refresh");
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
        return WaitForAnyOf(session, EventKind::Offline, EventKind::Offline, "the logout") ? EXIT_DONE : EXIT_FAILED;
    }

    /// Writes an action of the device.
    void Tell(const std::string& text)
    {
        Write("action", text, Tone::Quiet);
    }

    /// After a signal every failure is a consequence of it and is not reported.
    void TellFailure(const std::string& text)
    {
        if (m_interruption.Signal() == 0)
        {
            Write("failure", text, Tone::Bad);
        }
    }

    void TellEvent(const Event& event)
    {
        if (m_options.json)
        {
            Line(EventJson(m_options.login.device, event));
            return;
        }
        const bool isBad = event.kind == EventKind::Offline && event.code != onlinemanager::ERR_SUCCESS;
        WriteText(m_out.Paint(isBad ? Tone::Bad : Tone::Good, Describe(event)), event.time);
    }

    /// Flushes each line, so that a reader at a pipe gets it at once.
    void Line(std::string_view text) const
    {
        m_out.Line(text);
        m_out.Flush();
    }

    void Write(const char* type, const std::string& text, Tone tone)
    {
        if (m_options.json)
        {
            Line(JsonLine(type).Text("source", m_options.login.device).Text("text", text).Take());
            return;
        }
        WriteText(tone == Tone::Bad ? m_out.Paint(tone, text) : text, std::chrono::system_clock::now());
    }

    void WriteText(const std::string& text, std::chrono::system_clock::time_point time)
    {
        Line(m_out.Paint(Tone::Quiet, ClockText(time)) + "  " +
             m_out.Paint(Tone::Strong, Printable(m_options.login.device)) + " " + text);
    }

    void Warn(std::string_view text)
    {
        if (m_interruption.Signal() == 0)
        {
            m_errors.Line(m_errors.Paint(Tone::Doubtful, "onlinehost: ") + Printable(text));
        }
        m_log.Write(kLogName, Quenda::LOG_LEVEL_WARNING, text);
    }

    /// Waits for the first event of one of two kinds and writes every event up to it. Nothing when the time is over or
    /// a signal has come.
    std::optional<Event> WaitForAnyOf(Component& session, EventKind one, EventKind other, const std::string& awaited)
    {
        const auto deadline = std::chrono::steady_clock::now() + m_options.login.TimeLimit();
        for (;;)
        {
            const auto left =
                std::chrono::duration_cast<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now());
            std::optional<Event> event = session.Events().Take(std::max(left, std::chrono::milliseconds(0)));
            if (!event)
            {
                TellFailure("timed out after " + std::to_string(m_options.login.timeout) + " s waiting for " + awaited);
                return std::nullopt;
            }
            TellEvent(*event);
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
        if (!device || device->empty())
        {
            return;
        }
        const std::string state = custom.value_or("");
        const std::string text = "learns of the other device \"" + Printable(*device) + "\"" +
                                 (state.empty() ? "" : ", state \"" + Printable(state) + "\"");
        if (m_options.json)
        {
            Line(JsonLine("conflict")
                     .Text("source", m_options.login.device)
                     .Text("device", *device)
                     .Text("custom", state)
                     .Text("text", text)
                     .Take());
            return;
        }
        Tell(text);
    }

    const Options& m_options;
    Interruption m_interruption; // before the first thread
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
    command
        ->add_option("--refuse", options->refuse, "Have the platform refuse the login with this code, 1 to 2147483647")
        ->type_name("CODE")
        ->check(OptionCheck(ParseRefusal));
    command->add_flag("--json", options->json, "Write one JSON object a line instead of text");
    AddLoginOptions(*command, options->login);
    command->get_option("--log-level")->needs("--log");
    AddTraceOptions(*command, options->trace);
    command->footer(kExitCodeHelp);

    command->callback(
        [options, &exitCode]
        {
            CheckFiles(*options);
            exitCode = LoginRun(*options).Run();
        });
}

} // namespace host
