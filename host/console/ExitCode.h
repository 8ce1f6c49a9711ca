#pragma once

namespace host
{

/// The exit codes of every command. A command that a signal interrupts ends with `Interruption::ExitCode`.
enum ExitCode : int
{
    EXIT_DONE = 0,    ///< success
    EXIT_REFUSED = 1, ///< the module or the platform refused the request
    EXIT_USAGE = 2,   ///< a wrong command line, or a wrong line of a script
    EXIT_FAILED = 3,  ///< an error or a time-out; also an output that could not be written completely
};

inline constexpr char kExitCodeHelp[] = "Exit codes: 0 success, 1 refused, 2 wrong usage, 3 failure or time-out, "
                                        "130 interrupted, 143 terminated.";

} // namespace host
