#pragma once

namespace host
{

/// What the program's exit codes mean, in every command.
enum ExitCode : int
{
    EXIT_DONE = 0,    ///< everything came out as it should
    EXIT_REFUSED = 1, ///< what was asked for was refused
    EXIT_USAGE = 2,   ///< the command line makes no sense
    EXIT_FAILED = 3,  ///< it could not be done, or not in time
};

inline constexpr char kExitCodeHelp[] = "Exit codes: 0 success, 1 refused, 2 wrong usage, 3 failure or time-out.";

} // namespace host
