#include "host/shell/Shell.h"

#include "host/console/ExitCode.h"
#include "host/shell/LineEditor.h"
#include "host/shell/ShellCompletion.h"
#include "host/shell/ShellFailure.h"
#include "host/shell/ShellOnlineCommands.h"
#include "host/shell/ShellPlatformCommands.h"
#include "host/shell/ShellScript.h"
#include "host/shell/ShellScriptCommands.h"
#include "host/shell/ShellWords.h"
#include "onlinehost/Text.h"

#include <algorithm>
#include <poll.h>
#include <set>
#include <unistd.h>

namespace host
{

using namespace onlinehost;

namespace
{

constexpr size_t kMostEntries = 1000;
constexpr size_t kMostChanges = 20; ///< users whose change is shown one by one

int PollLimit(std::chrono::steady_clock::time_point deadline)
{
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now());
    return static_cast<int>(std::clamp<int64_t>(left.count(), 0, INT32_MAX));
}

std::string Decimal(uint32_t number)
{
    return std::to_string(number);
}

} // namespace

Shell::Shell(const Options& options, ShellSignals& signals, LogCenter& log, Trace* trace)
    : m_options(options),
      m_signals(signals),
      m_world(options.world, m_inbox, log, trace)
{
    AddOnlineCommands(*this);
    AddPlatformCommands(*this);
    AddScriptCommands(*this);
}

Shell::~Shell() = default;

ShellTerminal& Shell::Device()
{
    if (m_device == nullptr)
    {
        throw ShellFailure(EXIT_REFUSED, "there is no terminal yet; \"login USER\" or \"as USER\" makes one");
    }
    return *m_device;
}

void Shell::SetDevice(ShellTerminal* device)
{
    m_device = device;
}

void Shell::Say(std::string_view text)
{
    std::string lines(text);
    if (!lines.ends_with('\n'))
    {
        lines += '\n';
    }
    m_said += lines;
    if (m_terminal != nullptr)
    {
        m_terminal->PrintAbove(lines);
    }
    else
    {
        m_out.Text(lines);
    }
}

void Shell::Collect()
{
    for (ShellEvent& event : m_inbox.TakeAll())
    {
        m_entries.push_back({std::move(event)});
    }
}

void Shell::Show(Entry& entry)
{
    if (entry.isShown)
    {
        return;
    }
    entry.isShown = true;
    const ShellEvent& event = entry.event;
    const auto& devices = m_world.Devices();
    const auto device =
        std::find_if(devices.begin(), devices.end(), [&](const auto& known) { return known->Name() == event.source; });
    if (device != devices.end() && event.name != kMessageEvent)
    {
        (*device)->Note(event.event);
    }
    if (m_terminal != nullptr)
    {
        m_terminal->SetPrompt(Prompt());
    }
    const std::string time = m_terminal == nullptr ? "" : m_out.Paint(Tone::Quiet, ClockText(event.event.time)) + " ";
    Say(time + m_out.Paint(Tone::Strong, event.source) + " " + event.text);
    if (device != devices.end() && event.event.kind == EventKind::UserStatusChanged)
    {
        ShowChanges(**device, event.event.userIds);
    }
}

void Shell::ShowChanges(ShellTerminal& device, const std::vector<unsigned>& userIds)
{
    std::vector<unsigned> watched;
    std::copy_if(userIds.begin(), userIds.end(), std::back_inserter(watched),
                 [&](unsigned id) { return device.watchesAll || device.watched.contains(id); });
    const size_t left = watched.size() > kMostChanges ? watched.size() - kMostChanges : 0;
    watched.resize(watched.size() - left);
    for (const onlinemanager::UserOnlineInfo& user : device.Query(watched))
    {
        Say("  " + DescribeUser(user));
    }
    if (left > 0)
    {
        Say("  and " + std::to_string(left) + " more");
    }
}

void Shell::ShowAll()
{
    Collect();
    for (size_t i = 0; i < m_entries.size(); ++i)
    {
        Show(m_entries[i]);
    }
    DropOld();
}

void Shell::DropOld()
{
    while (!m_entries.empty() && m_entries.front().isShown &&
           (m_entries.front().isTaken || m_entries.size() > kMostEntries))
    {
        m_entries.pop_front();
    }
}

void Shell::Forget()
{
    Collect();
    for (Entry& entry : m_entries)
    {
        entry.isTaken = true;
    }
}

Shell::Entry* Shell::FindEntry(const std::function<bool(const Entry&)>& isWanted)
{
    const auto found = std::find_if(m_entries.begin(), m_entries.end(), isWanted);
    if (found == m_entries.end())
    {
        return nullptr;
    }
    std::for_each(m_entries.begin(), found + 1, [this](Entry& entry) { Show(entry); });
    return &*found;
}

Shell::Entry* Shell::AwaitEntry(const std::function<bool(const Entry&)>& isWanted, std::chrono::milliseconds limit)
{
    const auto deadline = std::chrono::steady_clock::now() + limit;
    m_out.Flush();
    do
    {
        Collect();
        if (Entry* const found = FindEntry(isWanted))
        {
            return found;
        }
        if (m_terminal != nullptr)
        {
            ShowAll();
        }
    } while (WaitForNews(deadline));
    ShowAll();
    return nullptr;
}

bool Shell::WaitForNews(std::chrono::steady_clock::time_point deadline)
{
    pollfd wanted[] = {{m_inbox.Descriptor(), POLLIN, 0}, {m_signals.Descriptor(), POLLIN, 0}};
    poll(wanted, std::size(wanted), PollLimit(deadline));
    TakeSignals();
    return wanted[0].revents != 0 || std::chrono::steady_clock::now() < deadline;
}

void Shell::TakeSignals()
{
    while (const int signal = m_signals.Take())
    {
        if (signal == SIGTSTP)
        {
            ShellSignals::Stop();
        }
        else if (signal == SIGINT)
        {
            throw ShellFailure(ShellFailure::kSignalBase + SIGINT, "interrupted");
        }
        else if (signal != SIGWINCH)
        {
            m_endingSignal = signal;
            throw ShellFailure(ShellFailure::kSignalBase + signal, "ended by a signal");
        }
    }
}

std::optional<ShellEvent> Shell::Await(uint64_t firstNumber, const Wanted& isWanted, std::chrono::milliseconds limit)
{
    const Entry* const entry = AwaitEntry(
        [&](const Entry& known) { return known.event.number >= firstNumber && isWanted(known.event); }, limit);
    return entry == nullptr ? std::nullopt : std::optional(entry->event);
}

std::optional<ShellEvent> Shell::AwaitAndTake(const Wanted& isWanted, std::chrono::milliseconds limit)
{
    Entry* const entry = AwaitEntry([&](const Entry& known) { return !known.isTaken && isWanted(known.event); }, limit);
    if (entry == nullptr)
    {
        return std::nullopt;
    }
    entry->isTaken = true;
    return entry->event;
}

void Shell::ExecuteLine(const std::string& line)
{
    const std::vector<std::string> words = SplitShellLine(line);
    if (words.empty())
    {
        return;
    }
    m_saidBefore = std::move(m_said);
    m_said.clear();
    Execute(words);
    DropOld();
}

void Shell::Execute(const std::vector<std::string>& words)
{
    const ShellCommand* command = nullptr;
    ShellArguments arguments;
    try
    {
        command = &m_table.Get(words.front());
        arguments = BindShellWords(*command, {words.begin() + 1, words.end()});
    }
    catch (const Error& error)
    {
        const std::string usage = command == nullptr ? "" : "; usage: " + ShellUsage(*command);
        throw ShellFailure(EXIT_USAGE, error.what() + usage);
    }
    try
    {
        command->run(arguments);
    }
    catch (const ShellFailure&)
    {
        throw;
    }
    catch (const Error& error)
    {
        throw ShellFailure(EXIT_FAILED, error.what());
    }
}

int Shell::RunFirstLines()
{
    for (const std::string& line : m_options.first)
    {
        try
        {
            ExecuteLine(line);
        }
        catch (const Error& error)
        {
            return Report("", line, error);
        }
    }
    return EXIT_DONE;
}

int Shell::Report(const std::string& place, const std::string& line, const std::exception& error)
{
    constexpr size_t kMostShown = 200;
    const auto* const failure = dynamic_cast<const ShellFailure*>(&error);
    const std::string where = place.empty() ? "" : place + ": ";
    const std::string what = line.substr(0, CutLength(line, kMostShown)) + (line.size() > kMostShown ? "..." : "");
    m_out.Flush();
    m_errors.Line(m_errors.Paint(Tone::Bad, Printable(where + what)) + ": " + error.what());
    // A line that does not even fall into words is wrong usage as well.
    return failure == nullptr ? EXIT_USAGE : failure->Code();
}

int Shell::RunScript(ShellScript& script)
{
    if (const int exitCode = RunFirstLines(); exitCode != EXIT_DONE)
    {
        return exitCode;
    }
    bool isOpen = true;
    while (isOpen && !m_isOver)
    {
        std::optional<std::string> line;
        try
        {
            while (!m_isOver && (line = script.TakeLine()))
            {
                ExecuteLine(*line);
            }
            if (m_isOver)
            {
                break;
            }
            m_out.Flush();
            pollfd wanted[] = {{script.Descriptor(), POLLIN, 0},
                               {m_inbox.Descriptor(), POLLIN, 0},
                               {m_signals.Descriptor(), POLLIN, 0}};
            poll(wanted, std::size(wanted), -1);
            TakeSignals();
            // A line that is there comes before events, so that they appear where the script waits for them.
            if (wanted[0].revents != 0)
            {
                isOpen = script.Read();
            }
            else
            {
                ShowAll();
            }
        }
        catch (const Error& error)
        {
            return Report(script.Place(), line.value_or(""), error);
        }
    }
    m_world.Platform().Settle();
    ShowAll();
    return EXIT_DONE;
}

int Shell::RunTerminal()
{
    LineEditor::Options options;
    options.history = m_options.history;
    options.complete = [this](std::string_view lineStart) { return Complete(lineStart); };
    options.wait = [this] { AwaitKey(); };
    m_terminal = std::make_unique<LineEditor>(std::move(options));
    if (!m_terminal->HistoryProblem().empty())
    {
        Say(m_out.Paint(Tone::Doubtful, m_terminal->HistoryProblem()));
    }
    Say("\"help\" lists the commands; Tab completes; Ctrl-D leaves.");
    RunFirstLines();

    while (!m_isOver && m_endingSignal == 0)
    {
        const std::optional<std::string> line = m_terminal->ReadLine(Prompt());
        if (!line)
        {
            m_out.Line("");
            break;
        }
        try
        {
            ExecuteLine(*line);
        }
        catch (const Error& error)
        {
            Say(m_out.Paint(Tone::Bad, error.what()));
        }
    }
    m_terminal.reset();
    return m_endingSignal == 0 ? int{EXIT_DONE} : ShellFailure::kSignalBase + m_endingSignal;
}

void Shell::AwaitKey()
{
    pollfd wanted[] = {
        {STDIN_FILENO, POLLIN, 0}, {m_inbox.Descriptor(), POLLIN, 0}, {m_signals.Descriptor(), POLLIN, 0}};
    poll(wanted, std::size(wanted), -1);
    HandleTerminalSignals();
    if (wanted[1].revents != 0)
    {
        ShowAll();
    }
}

void Shell::HandleTerminalSignals()
{
    while (const int signal = m_signals.Take())
    {
        switch (signal)
        {
        case SIGINT:
            m_terminal->Interrupt();
            break;
        case SIGWINCH:
            m_terminal->FollowSize();
            break;
        case SIGTSTP:
            m_terminal->Suspend(&ShellSignals::Stop);
            break;
        default:
            m_endingSignal = signal;
            m_terminal->Leave();
            break;
        }
    }
}

std::string Shell::Prompt() const
{
    if (m_device == nullptr)
    {
        return "onlinehost> ";
    }
    return m_device->Name() + (m_device->isLoggedIn ? "> " : " (offline)> ");
}

std::vector<std::string> Shell::Complete(std::string_view lineStart) const
{
    return CompleteShellLine(m_table, lineStart,
                             [this](ShellKind kind, std::string_view start) { return LookUp(kind, start); });
}

std::vector<std::string> Shell::LookUp(ShellKind kind, std::string_view start) const
{
    std::set<std::string> found;
    const auto offer = [&](const std::string& value)
    {
        if (value.starts_with(start))
        {
            found.insert(value);
        }
    };
    switch (kind)
    {
    case ShellKind::Terminal:
        for (const auto& device : m_world.Devices())
        {
            offer(Decimal(device->login.userid) + "@" + device->login.deviceid);
        }
        [[fallthrough]];
    case ShellKind::User:
    case ShellKind::Users:
        for (const auto& device : m_world.Devices())
        {
            offer(Decimal(device->login.userid));
        }
        if (m_device != nullptr)
        {
            std::for_each(m_device->known.begin(), m_device->known.end(), [&](uint32_t id) { offer(Decimal(id)); });
        }
        break;
    case ShellKind::Received:
        if (m_device != nullptr)
        {
            std::for_each(m_device->received.begin(), m_device->received.end(),
                          [&](const auto& invitation) { offer(Decimal(invitation.first)); });
        }
        break;
    case ShellKind::Sent:
        if (m_device != nullptr)
        {
            std::for_each(m_device->sent.begin(), m_device->sent.end(),
                          [&](const auto& invitation) { offer(Decimal(invitation.first)); });
        }
        break;
    default:
        break;
    }
    return {found.begin(), found.end()};
}

} // namespace host
