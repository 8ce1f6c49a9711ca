#include "host/app/command_demo.h"

#include "host/app/OutputFiles.h"
#include "host/app/TraceOptions.h"
#include "host/console/Console.h"
#include "host/console/ExitCode.h"
#include "host/console/Interruption.h"
#include "host/console/JsonLine.h"
#include "host/console/ModulePath.h"
#include "host/console/ProgressBar.h"
#include "host/story/MeetingStory.h"
#include "onlinehost/ComponentFactory.h"
#include "onlinehost/LogCenter.h"
#include "onlinehost/Module.h"
#include "onlinehost/Text.h"
#include "platform/Platform.h"

#include <CLI/CLI.hpp>
#include <chrono>
#include <cstdio>
#include <functional>
#include <memory>

namespace host
{

using namespace onlinehost;

namespace
{

constexpr uint32_t kMostUsers = 1'000'000;

struct Options
{
    std::string module;
    std::string log;
    uint32_t users = MeetingOptions{}.users;
    uint32_t timeout = 10;
    bool json = false;
    TraceOptions trace;
};

LogCenter::Options ToLogOptions(const std::string& file)
{
    LogCenter::Options log;
    log.file = file;
    return log;
}

std::string TallyText(const Console& out, const Story::Tally& tally, std::chrono::milliseconds time,
                      const Interruption& interruption)
{
    const std::string steps = std::to_string(tally.steps) + " steps in " + std::to_string(time.count()) + " ms: ";
    if (interruption.Signal() != 0)
    {
        return out.Paint(Tone::Doubtful, steps + interruption.Reason());
    }
    return tally.failed == 0 ? out.Paint(Tone::Good, steps + "all succeeded")
                             : out.Paint(Tone::Bad, steps + std::to_string(tally.failed) + " failed");
}

/// The lines in front of the story and after it.
class Frame
{
public:
    Frame(const Options& options, const Console& out, const Interruption& interruption)
        : m_options(options),
          m_out(out),
          m_interruption(interruption)
    {
    }

    void Begin(const Module& module) const
    {
        const std::string path = module.Path().string();
        m_out.Line(m_options.json ? JsonLine("start").Text("module", path).Take() : "A meeting on " + Printable(path));
    }

    int ExitCode(const Story::Tally& tally) const
    {
        if (m_interruption.Signal() != 0)
        {
            return m_interruption.ExitCode();
        }
        return tally.failed == 0 ? EXIT_DONE : EXIT_FAILED;
    }

    /// `completeFiles` is called before the lines that name the files.
    void End(const Story::Tally& tally, const std::function<void()>& completeFiles) const
    {
        const auto time = std::chrono::steady_clock::now() - m_start;
        const auto milliseconds = std::chrono::duration_cast<std::chrono::milliseconds>(time);
        if (m_options.json)
        {
            completeFiles();
            m_out.Line(JsonLine("result")
                           .Number("steps", static_cast<int64_t>(tally.steps))
                           .Number("failed", static_cast<int64_t>(tally.failed))
                           .Number("milliseconds", milliseconds.count())
                           .Number("exitCode", ExitCode(tally))
                           .Take());
            return;
        }
        m_out.Line("\n" + TallyText(m_out, tally, milliseconds, m_interruption));
        completeFiles();
        NameFile("The module's log: ", m_options.log);
        if (m_options.log.empty() && tally.failed != 0)
        {
            m_out.Line("Run the demonstration again with --log FILE to see the module's log.");
        }
        NameFile("The trace: ", m_options.trace.trace);
        NameFile("The diagram: ", m_options.trace.diagram);
    }

private:
    void NameFile(const char* words, const std::string& file) const
    {
        if (!file.empty())
        {
            m_out.Line(words + Printable(file));
        }
    }

    const Options& m_options;
    const Console& m_out;
    const Interruption& m_interruption;
    const std::chrono::steady_clock::time_point m_start = std::chrono::steady_clock::now();
};

std::unique_ptr<Narrator> MakeNarrator(const Console& out, bool isJson)
{
    if (isJson)
    {
        return std::make_unique<JsonNarrator>(out);
    }
    return std::make_unique<TextNarrator>(out);
}

int Run(const Options& options)
{
    Interruption interruption; // before the first thread
    const Console out(stdout);
    const Frame frame(options, out, interruption);
    auto module = std::make_shared<Module>(FindModule(options.module));
    LogCenter log(ToLogOptions(options.log));
    TraceFiles trace(options.trace, log);
    platform::Platform platform;
    platform.SetDiagnostic([&log](std::string_view text) { log.Write("platform", Quenda::LOG_LEVEL_WARNING, text); });
    ComponentFactory factory(std::bind_front(&platform::Platform::CreateComponent, &platform), log);

    frame.Begin(*module);
    MeetingOptions meeting;
    meeting.users = options.users;
    meeting.limit = std::chrono::seconds(options.timeout);
    const std::unique_ptr<Narrator> narrator = MakeNarrator(out, options.json);
    const Story::Tally tally =
        TellMeeting({*narrator, platform, log, factory, std::move(module), trace.Get(), &interruption}, meeting);

    frame.End(tally,
              [&]
              {
                  trace.Close();
                  log.CheckWritten();
              });
    return frame.ExitCode(tally);
}

void CheckFiles(const Options& options)
{
    RequireDistinctFiles({{"--log", options.log},
                          {"--trace", options.trace.trace},
                          {"--diagram", options.trace.diagram},
                          {"the module", FindModule(options.module), false}});
}

} // namespace

void AddDemoCommand(CLI::App& program, int& exitCode)
{
    CLI::App* const command =
        program.add_subcommand("demo", "Play one whole meeting on the in-process platform, and check each step");
    const auto options = std::make_shared<Options>();

    command
        ->add_option("--users", options->users,
                     "Size of the company, " + GroupDigits(MeetingOptions::kFewestUsers) + " to " +
                         GroupDigits(kMostUsers))
        ->check(CLI::Range(MeetingOptions::kFewestUsers, kMostUsers))
        ->capture_default_str();
    command->add_option("--timeout", options->timeout, "Seconds that each step may take")
        ->type_name("SECONDS")
        ->check(CLI::Range(1u, 86400u))
        ->capture_default_str();
    command->add_option("--module", options->module, "The module's file; by default the one beside the program")
        ->type_name("FILE");
    command->add_option("--log", options->log, "File for the module's log; by default none is written")
        ->type_name("FILE");
    command->add_flag("--json", options->json, "Write one JSON object a line instead of text");
    AddTraceOptions(*command, options->trace);
    command->footer(kExitCodeHelp);

    command->callback(
        [options, &exitCode]
        {
            CheckFiles(*options);
            exitCode = Run(*options);
        });
}

} // namespace host
