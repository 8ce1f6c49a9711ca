#include "host/app/command_shell.h"

#include "host/app/LoginOptions.h"
#include "host/app/OptionCheck.h"
#include "host/app/OutputFiles.h"
#include "host/app/TraceOptions.h"
#include "host/console/ExitCode.h"
#include "host/console/ModulePath.h"
#include "host/console/StandardStreams.h"
#include "host/shell/Shell.h"
#include "host/shell/ShellFailure.h"
#include "host/shell/ShellScript.h"
#include "host/shell/ShellSignals.h"
#include "host/shell/ShellValues.h"
#include "onlinehost/Error.h"
#include "onlinehost/LogCenter.h"
#include "onlinehost/Text.h"

#include <CLI/CLI.hpp>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <functional>
#include <memory>
#include <optional>
#include <unistd.h>
#include <utility>
#include <vector>

namespace host
{

using namespace onlinehost;

namespace
{

constexpr size_t kKeptLogLines = 1000;

struct Options
{
    LoginOptions login;
    std::string script;
    std::string user;
    std::string users;
    std::optional<std::string> history;
    bool json = false;
    TraceOptions trace;
};

/// The path of the history in the user's folder for state; empty when the environment names no such folder.
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
    LogCenter::Options log = ToLogOptions(options.login);
    log.keptLines = kKeptLogLines;
    return log;
}

std::filesystem::path History(const Options& options)
{
    return options.history ? std::filesystem::path(*options.history) : DefaultHistory();
}

/// The files of the command line and the standard input.
std::vector<CommandFile> Files(const Options& options)
{
    // Without a terminal nothing is written to the history, so that a history can be run as a script.
    const bool keepsHistory = options.script.empty() && isatty(STDIN_FILENO) == 1;
    return {{"--log", options.login.log},
            {"--trace", options.trace.trace},
            {"--diagram", options.trace.diagram},
            {"--history", History(options), keepsHistory},
            {"the script", options.script, false},
            {"the standard input", "/dev/stdin", false},
            {"--ca-file", options.login.caFile, false},
            {"the module", FindModule(options.login.module), false}};
}

/// Throws `ShellFailure` when the command "trace" would overwrite one of the program's files.
void CheckTrace(std::vector<CommandFile> files, const Trace::Options& trace)
{
    files.push_back({"the trace", trace.file});
    files.push_back({"the diagram", trace.diagram});
    try
    {
        RequireDistinctFiles(std::move(files));
    }
    catch (const CLI::ValidationError& error)
    {
        throw ShellFailure(EXIT_USAGE, error.what());
    }
}

Shell::Options ToShellOptions(const Options& options)
{
    Shell::Options shell;
    shell.world.module = options.login.module;
    shell.world.caFile = options.login.caFile;
    shell.world.timeLimit = options.login.TimeLimit();
    shell.world.platform = ToPlatformOptions(options.login);
    shell.world.checkTrace = std::bind_front(CheckTrace, Files(options));
    shell.world.login = ToLoginParam(options.login);
    if (!options.users.empty())
    {
        shell.first.push_back("company " + options.users);
    }
    if (!options.user.empty())
    {
        shell.first.push_back("login " + options.user);
    }
    shell.json = options.json;
    shell.history = History(options);
    return shell;
}

class File
{
public:
    /// Does not wait for the writer of a named pipe, because a signal could not end that wait.
    explicit File(const std::string& path) : m_descriptor(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK))
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

int Serve(Shell& shell, const Options& options)
{
    if (!options.script.empty())
    {
        const File file(options.script);
        ShellScript script(file.Descriptor(), options.script);
        return shell.RunScript(script);
    }
    if (!options.json && isatty(STDIN_FILENO) == 1 && isatty(STDOUT_FILENO) == 1)
    {
        return shell.RunTerminal();
    }
    ShellScript script(STDIN_FILENO, "standard input");
    return shell.RunScript(script);
}

int Run(const Options& options)
{
    if (options.script.empty() && IsStandardInputClosed())
    {
        throw Error("the standard input is closed; connect it, or name a file with commands");
    }
    // Before any thread, because threads inherit which signals are blocked.
    ShellSignals signals;
    LogCenter log(ToLogOptions(options));
    TraceFiles trace(options.trace, log);
    int exitCode = EXIT_DONE;
    {
        Shell shell(ToShellOptions(options), signals, log, trace.Get());
        exitCode = Serve(shell, options);
        if (shell.World().IsOwnTraceRunning())
        {
            shell.World().StopTrace();
        }
    }
    trace.Close();
    log.CheckWritten();
    return exitCode;
}

} // namespace

void AddShellCommand(CLI::App& program, int& exitCode)
{
    CLI::App* const command =
        program.add_subcommand("shell", "Work on the in-process platform at a prompt, or by a script");
    const auto options = std::make_shared<Options>();

    command->add_option("SCRIPT", options->script, "File with commands; without it they come from the standard input")
        ->type_name("FILE");
    command->add_option("--user", options->user, "Log this terminal in first: USER or USER@DEVICE")
        ->type_name("TERMINAL")
        ->check(OptionCheck(ParseTerminal));
    command->add_option("--users", options->users, "Size of a company of simulated colleagues to begin with")
        ->type_name("NUMBER")
        ->check(NumberCheck("number of users"));
    AddLoginOptions(*command, options->login);
    command
        ->add_option("--history", options->history,
                     "File that keeps what is typed at the prompt, or '' for none; by default "
                     "onlinehost/history in the user's folder for state")
        ->type_name("FILE");
    command->add_flag("--json", options->json,
                      "Write every event and every command's answer as one JSON object a line, and no prompt");
    AddTraceOptions(*command, options->trace);
    command->footer(std::string("\"help\" at the prompt lists the commands. A script ends at the first command that "
                                "fails, with its exit code.\n") +
                    kExitCodeHelp);

    command->callback(
        [options, &exitCode]
        {
            RequireDistinctFiles(Files(*options));
            exitCode = Run(*options);
        });
}

} // namespace host
