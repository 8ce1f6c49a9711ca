#include "host/app/TraceOptions.h"

#include "host/trace/TraceNames.h"

#include <CLI/CLI.hpp>

namespace host
{

using namespace onlinehost;

namespace
{

std::string SubjectNames()
{
    std::string text;
    for (const std::string& name : TraceSubjectNames())
    {
        text += (text.empty() ? "" : ", ") + name;
    }
    return text;
}

DiagramChoice ChoiceOf(const TraceOptions& options)
{
    DiagramChoice choice{.devices = options.devices};
    for (const std::string& name : options.subjects)
    {
        choice.subjects.push_back(FindTraceSubject(name).value());
    }
    return choice;
}

} // namespace

void AddTraceOptions(CLI::App& command, TraceOptions& options)
{
    CLI::Option* const trace = command
                                   .add_option("--trace", options.trace,
                                               "File for a trace of everything that crosses the module's boundary, to "
                                               "open in Perfetto or about:tracing")
                                   ->type_name("FILE");
    command
        .add_flag("--trace-log", options.log, "Show the lines of the module's log in the trace; tokens are among them")
        ->needs(trace);
    CLI::Option* const diagram =
        command.add_option("--diagram", options.diagram, "File for the same as a Mermaid sequence diagram")
            ->type_name("FILE");
    const auto addChoice = [&](const char* name, std::vector<std::string>& values, const char* placeholder)
    {
        return command.add_option(name, values)
            ->type_name(placeholder)
            ->delimiter(',')
            ->allow_extra_args(false)
            ->needs(diagram);
    };
    addChoice("--diagram-device", options.devices, "NAME,...")
        ->description("Devices that the diagram shows; by default all. May be given several times");
    addChoice("--diagram-subject", options.subjects, "NAME,...")
        ->description("Subjects that the diagram shows; by default all: " + SubjectNames())
        ->check(CLI::Validator(
            [](const std::string& name) {
                return FindTraceSubject(name) ? ""
                                              : "unknown subject \"" + name + "\": the subjects are " + SubjectNames();
            },
            ""));
}

TraceFiles::TraceFiles(const TraceOptions& options, ILogCenter& log)
{
    if (!options.IsWanted())
    {
        return;
    }
    m_trace = std::make_unique<Trace>(Trace::Options{options.trace, options.diagram, ChoiceOf(options)});
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
