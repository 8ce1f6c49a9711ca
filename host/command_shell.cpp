#include "host/command_shell.h"

#include "host/Error.h"
#include "host/ExitCode.h"
#include "host/LogCenter.h"
#include "host/Shell.h"
#include "host/ShellScript.h"
#include "host/ShellSignals.h"
#include "host/ShellValues.h"
#include "host/Text.h"
#include "host/TraceOptions.h"

#include <CLI/CLI.hpp>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <memory>
#include <optional>
#include <unistd.h>

namespace host
{

namespace
{

constexpr size_t kKeptLogLines = 1000;

struct Options
{
    std::string script;
    std::string user;
    std::string users;
    std::string module;
    std::string server = "tcp:in-process";
    std::string company = "1";
    std::string device = "pc";
    std::string mutex;
    std::string token = "token";
    std::string appid = "onlinehost";
    std::string type = "1";
    uint32_t timeout = 10;
    std::string caFile;
    std::string log;
    std::string logLevel = "trace";
    std::optional<std::string> history;
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

CLI::Validator NumberCheck(const char* what)
{
    return Check([what](const std::string& text) { ParseNumber(text, what); });
}

/// Where programs keep what they have learnt of their user; empty when there is no such place.
std::filesystem::path DefaultHistory()
{
    const char* const state = std::getenv("XDG_STATE_HOME");
    const char* const home = std::getenv("HOME");
    const std::filesystem::path base = state != nullptr && *state == '/' ? std::filesystem::path(state)
                                       : home != nullptr && *home != '\0'
                                           ? std::filesystem::path(home) / ".local" / "state"
                                           : std::filesystem::path();
    return base.empty() ? base : base / "onlinehost" / "history";
}

LogCenter::Options ToLogOptions(const Options& options)
{
    LogCenter::Options log;
    log.file = options.log;
    log.keptLines = kKeptLogLines;
    log.level = ParseLogLevel(options.logLevel);
    return log;
}

Shell::Options ToShellOptions(const Options& options)
{
    Shell::Options shell;
    shell.world.module = options.module;
    shell.world.caFile = options.caFile;
    shell.world.timeLimit = std::chrono::seconds(options.timeout);
    onlinemanager::LoginParam& login = shell.world.login;
    login.companyid = ParseNumber(options.company, "company id");
    login.mutex = options.mutex;
    login.terminal = static_cast<quenda::TerminalType>(ParseNumber(options.type, "terminal type"));
    login.deviceid = options.device;
    login.appid = options.appid;
    login.token = options.token;
    login.server = options.server;
    if (!options.users.empty())
    {
        shell.first.push_back("company " + options.users);
    }
    if (!options.user.empty())
    {
        shell.first.push_back("login " + options.user);
    }
    shell.history = options.history ? std::filesystem::path(*options.history) : DefaultHistory();
    return shell;
}

class File
{
public:
    explicit File(const std::string& path) : m_descriptor(open(path.c_str(), O_RDONLY | O_CLOEXEC))
    {
        if (m_descriptor < 0)
        {
            throw Error(Printable(path) + " cannot be read: " + std::strerror(errno));
        }
    }

    ~File()
    {
        close(m_descriptor);
    }

    File(const File&) = delete;
    File& operator=(const File&) = delete;

    int Descriptor() const
    {
        return m_descriptor;
    }

private:
    const int m_descriptor;
};

int Serve(Shell& shell, const std::string& scriptPath)
{
    if (!scriptPath.empty())
    {
        const File file(scriptPath);
        ShellScript script(file.Descriptor(), scriptPath);
        return shell.RunScript(script);
    }
    if (isatty(STDIN_FILENO) == 1 && isatty(STDOUT_FILENO) == 1)
    {
        return shell.RunTerminal();
    }
    ShellScript script(STDIN_FILENO, "standard input");
    return shell.RunScript(script);
}

int Run(const Options& options)
{
    // Before anything that has threads.
    ShellSignals signals;
    LogCenter log(ToLogOptions(options));
    TraceFiles trace(options.trace, log);
    int exitCode = EXIT_DONE;
    {
        Shell shell(ToShellOptions(options), signals, log, trace.Get());
        exitCode = Serve(shell, options.script);
    }
    trace.Close();
    return exitCode;
}

} // namespace

void AddShellCommand(CLI::App& program, int& exitCode)
{
    CLI::App* const command =
        program.add_subcommand("shell", "Work on the in-process platform at a prompt, or by a script");
    const auto options = std::make_shared<Options>();

    command->add_option("SCRIPT", options->script, "File with commands; without it they come from the standard input");
    command->add_option("--user", options->user, "Log this terminal in first: USER or USER@DEVICE")
        ->check(Check(ParseTerminal));
    command->add_option("--users", options->users, "Size of a company of simulated colleagues to begin with")
        ->check(NumberCheck("number of users"));
    command->add_option("--server", options->server, "Server address")->capture_default_str();
    command->add_option("--company", options->company, "Company id")
        ->check(NumberCheck("company id"))
        ->capture_default_str();
    command->add_option("--device", options->device, "Device id of terminals that name none")->capture_default_str();
    command->add_option("--mutex", options->mutex,
                        "Tag by which devices of a user shut each other out; by default the device id");
    command->add_option("--token", options->token, "Login token; it appears in the log")->capture_default_str();
    command->add_option("--appid", options->appid, "Application id")->capture_default_str();
    command->add_option("--type", options->type, "Terminal type, a number")
        ->check(NumberCheck("terminal type"))
        ->capture_default_str();
    command->add_option("--timeout", options->timeout, "Seconds to wait for each answer")
        ->check(CLI::Range(1u, 86400u))
        ->capture_default_str();
    command->add_option("--ca-file", options->caFile, "PEM file of the authorities to trust for an HTTPS server")
        ->check(CLI::ExistingFile);
    command->add_option("--module", options->module, "The module's file; by default the one beside the program");
    command->add_option("--log", options->log, "File for the log of module and host");
    command->add_option("--log-level", options->logLevel, "info, trace, warning, error, fatal or off")
        ->check(Check(ParseLogLevel))
        ->capture_default_str();
    command->add_option("--history", options->history,
                        "File that remembers what was typed at the prompt, or '' for none; by default "
                        "onlinehost/history in the user's folder for state");
    AddTraceOptions(*command, options->trace);
    command->footer(std::string("\"help\" at the prompt lists the commands. A script ends at the first command that "
                                "fails, with its exit code.\n") +
                    kExitCodeHelp);

    command->callback([options, &exitCode] { exitCode = Run(*options); });
}

} // namespace host
