#include "host/app/HelpFormatter.h"
#include "host/app/command_demo.h"
#include "host/app/command_inspect.h"
#include "host/app/command_login.h"
#include "host/app/command_shell.h"
#include "host/console/Console.h"
#include "host/console/ExitCode.h"
#include "host/console/Similar.h"
#include "host/console/StandardStreams.h"
#include "onlinehost/Text.h"

#include <CLI/CLI.hpp>
#include <cstdio>
#include <memory>
#include <sstream>

namespace
{

std::string Quoted(std::string_view text)
{
    return '"' + onlinehost::Printable(text) + '"';
}

std::string Suggestion(std::string_view word, const std::vector<std::string>& names)
{
    const std::string similar = host::SimilarNames(word, names);
    return similar.empty() ? "" : "; did you mean " + Quoted(similar) + "?";
}

std::vector<std::string> CommandNames(const CLI::App& program)
{
    std::vector<std::string> names;
    for (const CLI::App* const command : program.get_subcommands([](const CLI::App*) { return true; }))
    {
        names.push_back(command->get_name());
    }
    return names;
}

std::vector<std::string> OptionNames(const CLI::App& command)
{
    std::vector<std::string> names;
    for (const CLI::Option* const option : command.get_options())
    {
        for (const std::string& name : option->get_lnames())
        {
            names.push_back("--" + name);
        }
    }
    return names;
}

/// The message for the first argument that no option and no command takes; empty when there is no such argument.
std::string UnexpectedArgument(const CLI::App& program)
{
    const std::vector<std::string> arguments = program.remaining(true);
    if (arguments.empty())
    {
        return {};
    }
    const std::vector<CLI::App*> chosen = program.get_subcommands();
    const CLI::App& command = chosen.empty() ? program : *chosen.front();
    const std::string& argument = arguments.front();
    if (argument.starts_with('-'))
    {
        const std::string option = argument.substr(0, argument.find('='));
        return "unknown option " + Quoted(option) + Suggestion(option, OptionNames(command));
    }
    if (chosen.empty())
    {
        return "unknown command " + Quoted(argument) + Suggestion(argument, CommandNames(program));
    }
    return "unexpected argument " + Quoted(argument);
}

std::string UsageFailure(const CLI::App* program, const CLI::Error& error)
{
    // A misspelt option can leave a required one missing, so the message names the misspelling first.
    const bool isNamed = error.get_exit_code() == static_cast<int>(CLI::ExitCodes::ExtrasError) ||
                         error.get_exit_code() == static_cast<int>(CLI::ExitCodes::RequiredError);
    const std::string unexpected = isNamed ? UnexpectedArgument(*program) : "";
    return "onlinehost: " + (unexpected.empty() ? std::string(error.what()) : unexpected) +
           "\nRun with --help for more information.\n";
}

int Run(int count, char** arguments)
{
    const host::Console out(stdout);
    const host::Console errors(stderr);
    int exitCode = host::EXIT_DONE;

    CLI::App program("The reference host of the online-service module", "onlinehost");
    program.set_version_flag("--version", "onlinehost " ONLINEHOST_VERSION);
    program.require_subcommand(0, 1); // otherwise a missing required option would hide the misspelt one
    program.footer(host::kExitCodeHelp);
    program.formatter(std::make_shared<host::HelpFormatter>()); // before the commands, which inherit it
    program.failure_message(UsageFailure);
    host::AddDemoCommand(program, exitCode);
    host::AddInspectCommand(program, exitCode);
    host::AddLoginCommand(program, exitCode);
    host::AddShellCommand(program, exitCode);

    try
    {
        program.parse(count, arguments);
        if (program.get_subcommands().empty())
        {
            throw CLI::RequiredError("A command");
        }
    }
    catch (const CLI::ParseError& error)
    {
        // Help and the version come this way as well, as errors with the code 0.
        std::ostringstream outText;
        std::ostringstream errorText;
        const int code = program.exit(error, outText, errorText);
        out.Text(outText.str());
        errors.Text(errorText.str());
        return code == 0 ? host::EXIT_DONE : host::EXIT_USAGE;
    }
    catch (const std::exception& error)
    {
        errors.Line(errors.Paint(host::Tone::Bad, "onlinehost: ") + error.what());
        return host::EXIT_FAILED;
    }
    return exitCode;
}

} // namespace

// NOLINTNEXTLINE(bugprone-exception-escape): an exception from printing an error may end the program.
int main(int count, char** arguments)
{
    try
    {
        host::PrepareStandardStreams();
    }
    catch (const std::exception& error)
    {
        host::Console(stderr).Line(std::string("onlinehost: ") + error.what());
        return host::EXIT_FAILED;
    }
    const int exitCode = Run(count, arguments);
    if (!host::Console(stdout).Flush())
    {
        const host::Console errors(stderr);
        errors.Line("onlinehost: the output could not be written: " + host::Console::Failure());
        return host::EXIT_FAILED;
    }
    return exitCode;
}
