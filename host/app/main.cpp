#include "host/app/command_demo.h"
#include "host/app/command_inspect.h"
#include "host/app/command_login.h"
#include "host/app/command_shell.h"
#include "host/console/Console.h"
#include "host/console/ExitCode.h"
#include "onlinehost/Error.h"

#include <CLI/CLI.hpp>
#include <cstdio>

namespace
{

int Run(int count, char** arguments)
{
    const host::Console errors(stderr);
    int exitCode = host::EXIT_DONE;

    CLI::App program("The reference host of the online-service module", "onlinehost");
    program.set_version_flag("--version", "onlinehost " ONLINEHOST_VERSION);
    program.require_subcommand(0, 1); // one that is required would be missed before the wrong one is named
    program.footer(host::kExitCodeHelp);
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
        return program.exit(error) == 0 ? host::EXIT_DONE : host::EXIT_USAGE;
    }
    catch (const std::exception& error)
    {
        errors.Line(errors.Paint(host::Tone::Bad, "onlinehost: ") + error.what());
        return host::EXIT_FAILED;
    }
    return exitCode;
}

} // namespace

// NOLINTNEXTLINE(bugprone-exception-escape): what still comes out of telling an error may end the program.
int main(int count, char** arguments)
{
    const int exitCode = Run(count, arguments);
    if (!host::Console(stdout).Flush())
    {
        std::perror("onlinehost: the output could not be written");
        return host::EXIT_FAILED;
    }
    return exitCode;
}
