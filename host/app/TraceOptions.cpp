#include "host/app/TraceOptions.h"

#include <CLI/CLI.hpp>

namespace host
{

using namespace onlinehost;

void AddTraceOptions(CLI::App& command, TraceOptions& options)
{
    CLI::Option* const trace = command.add_option(
        "--trace", options.trace,
        "File for a trace of everything that crosses the module's boundary, to open in Perfetto or about:tracing");
    command
        .add_flag("--trace-log", options.log, "Show the lines of the module's log in the trace; tokens are among them")
        ->needs(trace);
    command.add_option("--diagram", options.diagram, "File for the same as a Mermaid sequence diagram");
}

TraceFiles::TraceFiles(const TraceOptions& options, ILogCenter& log)
{
    if (!options.IsWanted())
    {
        return;
    }
    m_trace = std::make_unique<Trace>(Trace::Options{options.trace, options.diagram});
    if (options.log)
    {
        m_lines = std::make_unique<LogWatch>(
            log, kModuleLogger, [this](std::string_view text) { m_trace->Moment("log", std::string(text)); });
    }
}

void TraceFiles::Close()
{
    m_lines.reset();
    if (m_trace != nullptr)
    {
        m_trace->Close();
    }
}

} // namespace host
