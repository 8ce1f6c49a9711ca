#pragma once

#include "host/trace/Trace.h"
#include "onlinehost/LogWatch.h"

#include <memory>
#include <string>

namespace CLI
{
class App;
}

namespace host
{

/// The options of a command by which what it does is recorded.
struct TraceOptions
{
    std::string trace;
    std::string diagram;
    bool log = false;

    bool IsWanted() const
    {
        return !trace.empty() || !diagram.empty();
    }
};

/// Adds `--trace`, `--trace-log` and `--diagram`. The options must live until the command has run.
void AddTraceOptions(CLI::App& command, TraceOptions& options);

/// The recording of one command: there is none unless somebody asked for it.
class TraceFiles
{
public:
    /// `Error` when a file cannot be written. The log center must outlive the recording; its module's lines are recorded
    /// when that is wanted and the log is on.
    TraceFiles(const TraceOptions& options, ILogCenter& log);

    /// Null when nothing is wanted.
    Trace* Get() const
    {
        return m_trace.get();
    }

    /// Completes the files, when everything that is recorded has gone. `Error` when they could not be written.
    void Close();

private:
    std::unique_ptr<Trace> m_trace;
    std::unique_ptr<onlinehost::LogWatch> m_lines;
};

} // namespace host
