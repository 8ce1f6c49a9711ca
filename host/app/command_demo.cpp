#include "host/app/command_demo.h"

#include "host/app/OutputFiles.h"
#include "host/app/TraceOptions.h"
#include "host/console/Console.h"
#include "host/console/ExitCode.h"
#include "host/console/Interruption.h"
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
    return tally.failed == 0
               ? out.Paint(Tone::Good, steps + "all came out as they should")
               : out.Paint(Tone::Bad, steps + std::to_string(tally.failed) + " did not come out as they should");
}

int Run(const Options& options)
{
    Interruption interruption; // before the first thread
    const auto start = std::chrono::steady_clock::now();
    const Console out(stdout);
    auto module = std::make_shared<Module>(FindModule(options.module));
    LogCenter log(ToLogOptions(options.log));
    TraceFiles trace(options.trace, log);
    platform::Platform platform;
    platform.SetDiagnostic([&log](std::string_view text) { log.Write("platform", Quenda::LOG_LEVEL_WARNING, text); });
    ComponentFactory factory(std::bind_front(&platform::Platform::CreateComponent, &platform), log);

    out.Line("A meeting on " + Printable(module->Path().string()));
    MeetingOptions meeting;
    meeting.users = options.users;
    meeting.limit = std::chrono::seconds(options.timeout);
    const Story::Tally tally =
        TellMeeting({out, platform, log, factory, std::move(module), trace.Get(), &interruption}, meeting);

    const auto time = std::chrono::steady_clock::now() - start;
    out.Line("\n" + TallyText(out, tally, std::chrono::duration_cast<std::chrono::milliseconds>(time), interruption));
    trace.Close();
    log.CheckWritten();
    if (!options.log.empty())
    {
        out.Line("The module's log: " + Printable(options.log));
    }
    else if (tally.failed != 0)
    {
        out.Line("Run the demonstration again with --log FILE to see the module's log.");
    }
    if (!options.trace.trace.empty())
    {
        out.Line("The trace: " + Printable(options.trace.trace));
    }
    if (!options.trace.diagram.empty())
    {
        out.Line("The diagram: " + Printable(options.trace.diagram));
    }
    if (interruption.Signal() != 0)
    {
        return interruption.ExitCode();
    }
    return tally.failed == 0 ? EXIT_DONE : EXIT_FAILED;
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
        program.add_subcommand("demo", "Tell one whole meeting on the in-process platform, and check each step of it");
    const auto options = std::make_shared<Options>();

    command
        ->add_option("--users", options->users,
                     "Size of the company, " + GroupDigits(MeetingOptions::kFewestUsers) + " to " +
                         GroupDigits(kMostUsers))
        ->check(CLI::Range(MeetingOptions::kFewestUsers, kMostUsers))
        ->capture_default_str();
    command->add_option("--timeout", options->timeout, "Seconds that each step may take")
        ->check(CLI::Range(1u, 86400u))
        ->capture_default_str();
    command->add_option("--module", options->module, "The module's file; by default the one beside the program");
    command->add_option("--log", options->log, "File for the module's log; by default none is written");
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
