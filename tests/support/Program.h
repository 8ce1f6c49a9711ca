#pragma once

#include "tests/support/TemporaryFolder.h"

#include <map>
#include <string>
#include <sys/types.h>
#include <vector>

/// The outcome of a program.
struct ProgramResult
{
    int exitCode = -1; ///< -1 if a signal ended it
    std::string out;
    std::string err;
};

/// Has the calling process ignore and block no signal. A shell starts background programs with SIGINT ignored, and
/// their children inherit that.
void ResetSignals();

/// `onlinehost` while it runs.
class RunningHost
{
public:
    /// Starts the program with these arguments and `input` on its standard input. `out` is the file that receives its
    /// standard output; empty for a file of its own. `environment` adds to the variables of the test. The program
    /// ignores and blocks no signal.
    explicit RunningHost(const std::vector<std::string>& arguments, const std::string& input = {},
                         const std::string& out = {}, const std::map<std::string, std::string>& environment = {});
    /// Kills it when it has not been waited for.
    ~RunningHost();
    RunningHost(const RunningHost&) = delete;
    RunningHost& operator=(const RunningHost&) = delete;

    void Signal(int signal) const;

    /// Waits until its standard output contains the text; false when the program has ended without it.
    bool WaitForOutput(const std::string& text);

    /// Waits for its end.
    ProgramResult WaitForEnd();

private:
    const TemporaryFolder m_folder;
    const bool m_hasOutput; ///< in the folder
    const std::string m_outPath;
    pid_t m_process = -1;
};

/// Runs `onlinehost` and waits for its end; the arguments are those of `RunningHost`.
ProgramResult RunHost(const std::vector<std::string>& arguments, const std::string& input = {},
                      const std::string& out = {}, const std::map<std::string, std::string>& environment = {});

/// Runs `onlinehost` with a command line of the system's shell, redirections included: "shell <&-". Exit code 124 after
/// a minute.
ProgramResult RunHostLine(const std::string& line);
