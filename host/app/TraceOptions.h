#pragma once

#include "host/trace/Trace.h"
#include "onlinehost/LogWatch.h"

#include <memory>
#include <string>
#include <vector>

namespace CLI
{
class App;
}

namespace host
{

/// The options of a command that record what it does.
struct TraceOptions
{
    std::string trace;
    std::string diagram;
    std::vector<std::string> devices;  ///< that the diagram shows; empty: all
    std::vector<std::string> subjects; ///< that the diagram shows, by their names; empty: all
    bool log = false;

    bool IsWanted() const
    {
        return !trace.empty() || !diagram.empty();
    }
};

/// Adds `--trace`, `--trace-log`, `--diagram`, `--diagram-device` and `--diagram-subject`. The options must live until
/// the command has run.
void AddTraceOptions(CLI::App& command, TraceOptions& options);

/// The recording of one command. Records nothing when the options name no file.
class TraceFiles
{
public:
    /// `Error` when a file cannot be written. The log center must outlive the recording. Records the module's log lines
    /// if the options say so and the log's level lets them pass.
    TraceFiles(const TraceOptions& options, ILogCenter& log);

    /// Null when the options name no file.
    Trace* Get() const
    {
        return m_trace.get();
    }

    /// [any] Completes the files; see `Trace::Close`. May be called at any time, and again.
    void Close();

private:
    std::unique_ptr<Trace> m_trace;
    std::unique_ptr<onlinehost::LogWatch> m_lines;
};

} // namespace host
