#include "host/shell/Shell.h"

#include "host/console/ExitCode.h"
#include "host/console/JsonLine.h"
#include "host/console/Wording.h"
#include "host/shell/LineEditor.h"
#include "host/shell/ShellCompletion.h"
#include "host/shell/ShellFailure.h"
#include "host/shell/ShellOnlineCommands.h"
#include "host/shell/ShellPlatformCommands.h"
#include "host/shell/ShellScript.h"
#include "host/shell/ShellScriptCommands.h"
#include "host/shell/ShellValues.h"
#include "host/shell/ShellWords.h"
#include "onlinehost/Text.h"

#include <algorithm>
#include <future>
#include <poll.h>
#include <set>
#include <sstream>
#include <unistd.h>

namespace host
{

using namespace onlinehost;

namespace
{

constexpr size_t kMostEntries = 1000;
constexpr size_t kMostChanges = 20; ///< watched users that are shown one by one
constexpr std::chrono::milliseconds kBurst{200};
constexpr std::chrono::milliseconds kBetweenSignals{100};
constexpr std::chrono::milliseconds kBetweenCancels{20};

int PollLimit(std::chrono::steady_clock::time_point deadline)
{
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now());
    return static_cast<int>(std::clamp<int64_t>(left.count(), 0, INT32_MAX));
}

/// Counts a running command while the object lives.
class Nesting
{
public:
    explicit Nesting(size_t& depth) : m_depth(depth)
    {
        ++m_depth;
    }

    ~Nesting()
    {
        --m_depth;
    }

    Nesting(const Nesting&) = delete;
    Nesting& operator=(const Nesting&) = delete;

private:
    size_t& m_depth;
};

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

ShellTerminal& Shell::Terminal()
{
    if (m_terminal == nullptr)
    {
        throw ShellFailure(EXIT_REFUSED, NoTerminalText());
    }
    return *m_terminal;
}

std::string Shell::NoTerminalText() const
{
    if (m_world.Terminals().empty())
    {
        return "there is no terminal yet; \"login USER\" or \"as USER\" makes one";
    }
    std::string names;
    for (const auto& device : m_world.Terminals())
    {
        names += (names.empty() ? "" : ", ") + device->Name();
    }
    return "no terminal is chosen: \"as " + m_world.Terminals().front()->Name() + "\" chooses one; there are " + names;
}

void Shell::SetTerminal(ShellTerminal* terminal)
{
    m_terminal = terminal;
}

void Shell::Say(std::string_view text)
{
    if (m_depth > 0)
    {
        ThrowIfSignalled();
    }
    std::string lines(text);
    if (!lines.ends_with('\n'))
    {
        lines += '\n';
    }
    m_said += lines;
    if (m_options.json)
    {
        std::istringstream stream(lines);
        for (std::string line; std::getline(stream, line);)
        {
            m_answer.push_back(line);
        }
    }
    else if (m_editor != nullptr)
    {
        m_editor->PrintAbove(lines);
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

ShellTerminal* Shell::FindTerminal(const std::string& name) const
{
    const auto& terminals = m_world.Terminals();
    const auto found =
        std::find_if(terminals.begin(), terminals.end(), [&name](const auto& known) { return known->Name() == name; });
    return found == terminals.end() ? nullptr : found->get();
}

void Shell::Note(Entry& entry)
{
    entry.isShown = true;
    ShellTerminal* const device = FindTerminal(entry.event.source);
    if (device != nullptr && entry.event.name != kMessageEvent)
    {
        device->Note(entry.event.event);
    }
    if (m_editor != nullptr)
    {
        m_editor->SetPrompt(Prompt());
    }
    if (m_options.json)
    {
        m_out.Line(ShellEventJson(entry.event));
    }
}

void Shell::SayEvent(const ShellEvent& event, const std::string& text)
{
    if (m_options.json)
    {
        m_said += event.source + " " + text + "\n";
        return;
    }
    const std::string time = m_editor == nullptr ? "" : m_out.Paint(Tone::Quiet, ClockText(event.event.time)) + " ";
    Say(time + m_out.Paint(Tone::Strong, event.source) + " " + text);
}

void Shell::ShowUpTo(size_t end)
{
    size_t index = 0;
    while (index < end)
    {
        Entry& entry = m_entries[index];
        if (!entry.isShown && IsChange(entry.event))
        {
            index = ShowBurst(index, end);
            continue;
        }
        if (!entry.isShown)
        {
            Note(entry);
            SayEvent(entry.event, entry.event.text);
            ExplainAcceptance(entry.event);
        }
        ++index;
    }
}

void Shell::ExplainAcceptance(const ShellEvent& event)
{
    if (m_editor != nullptr && !m_isAcceptanceExplained && event.name == EventName(EventKind::InviteAccepted))
    {
        m_isAcceptanceExplained = true;
        Say("  accepting is not joining: colleagues join by themselves only after \"company COUNT joins=MEETING\"");
    }
}

size_t Shell::ShowBurst(size_t begin, size_t end)
{
    struct Burst
    {
        ShellEvent first;
        std::vector<UserChange> changes;
    };
    std::vector<Burst> bursts;
    size_t index = begin;
    for (; index < end && IsChange(m_entries[index].event); ++index)
    {
        const ShellEvent& event = m_entries[index].event;
        Note(m_entries[index]);
        auto burst = std::find_if(bursts.begin(), bursts.end(),
                                  [&event](const Burst& known) { return known.first.source == event.source; });
        if (burst == bursts.end())
        {
            burst = bursts.insert(burst, Burst{event, {}});
        }
        burst->changes.insert(burst->changes.end(), event.changes.begin(), event.changes.end());
    }
    for (const Burst& burst : bursts)
    {
        for (const std::string& sentence : DescribeChanges(burst.changes))
        {
            SayEvent(burst.first, sentence);
        }
        if (ShellTerminal* const device = FindTerminal(burst.first.source))
        {
            ShowWatched(*device, burst.changes);
        }
    }
    return index;
}

void Shell::ShowWatched(ShellTerminal& device, const std::vector<UserChange>& changes)
{
    std::vector<unsigned> watched;
    std::set<unsigned> seen;
    for (const UserChange& change : changes)
    {
        if ((device.watchesAll || device.watched.contains(change.userId)) && seen.insert(change.userId).second)
        {
            watched.push_back(change.userId);
        }
    }
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
    ShowUpTo(m_entries.size());
    DropOld();
}

int Shell::ShowNews()
{
    using std::chrono::milliseconds;
    Collect();
    const auto isNew = [](const Entry& entry) { return !entry.isShown; };
    const auto isNewAndNoChange = [](const Entry& entry) { return !entry.isShown && !IsChange(entry.event); };
    if (std::none_of(m_entries.begin(), m_entries.end(), isNew))
    {
        return -1;
    }
    const auto now = std::chrono::steady_clock::now();
    if (now < m_nextBurst && std::none_of(m_entries.begin(), m_entries.end(), isNewAndNoChange))
    {
        return PollLimit(m_nextBurst);
    }
    m_nextBurst = now + kBurst;
    ShowAll();
    return -1;
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
    ShowUpTo(static_cast<size_t>(found - m_entries.begin()) + 1);
    return &*found;
}

Shell::Entry* Shell::AwaitEntry(const std::function<bool(const Entry&)>& isWanted, std::chrono::milliseconds limit)
{
    const auto deadline = std::chrono::steady_clock::now() + limit;
    m_out.Flush();
    int held = -1;
    do
    {
        Collect();
        if (Entry* const found = FindEntry(isWanted))
        {
            return found;
        }
        if (m_editor != nullptr)
        {
            held = ShowNews();
        }
    } while (WaitForNews(deadline, held));
    ShowAll();
    return nullptr;
}

bool Shell::WaitForNews(std::chrono::steady_clock::time_point deadline, int held)
{
    pollfd wanted[] = {{m_inbox.Descriptor(), POLLIN, 0}, {m_signals.Descriptor(), POLLIN, 0}};
    const int limit = PollLimit(deadline);
    poll(wanted, std::size(wanted), held < 0 ? limit : std::min(limit, held));
    ThrowIfSignalled();
    return wanted[0].revents != 0 || std::chrono::steady_clock::now() < deadline;
}

void Shell::ThrowIfSignalled()
{
    while (const int signal = m_signals.Take())
    {
        if (signal == SIGTSTP && m_editor != nullptr)
        {
            m_editor->Suspend(&ShellSignals::Stop);
        }
        else if (signal == SIGTSTP)
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
    SayAnswer(line, EXIT_DONE, "", "");
    DropOld();
}

void Shell::Settle()
{
    while (!m_world.Platform().SettleFor(kBetweenSignals))
    {
        ThrowIfSignalled();
    }
}

bool Shell::RunBlocking(const std::function<bool()>& operation, const std::function<void()>& cancel)
{
    std::future<bool> result = std::async(std::launch::async, operation);
    try
    {
        while (result.wait_for(kBetweenSignals) != std::future_status::ready)
        {
            ThrowIfSignalled();
        }
    }
    catch (const ShellFailure&)
    {
        // Again and again, because the operation may begin its request only after a cancellation.
        do
        {
            cancel();
        } while (result.wait_for(kBetweenCancels) != std::future_status::ready);
        throw;
    }
    return result.get();
}

void Shell::Execute(std::span<const std::string> words)
{
    if (m_depth > kMostNestedCommands)
    {
        throw ShellNestingFailure(EXIT_USAGE, "commands are nested too deep: at most " +
                                                  std::to_string(kMostNestedCommands) +
                                                  " of \"as\" and \"fails\" may stand in front of a command");
    }
    const Nesting nesting(m_depth);
    const ShellCommand* command = nullptr;
    ShellArguments arguments;
    try
    {
        command = &m_table.Get(words.front());
        arguments = BindShellWords(*command, words.subspan(1));
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

void Shell::SayAnswer(const std::string& line, int exitCode, const std::string& place, const std::string& error)
{
    if (!m_options.json)
    {
        return;
    }
    JsonLine answer("answer");
    answer.Text("command", line).Number("exitCode", exitCode).Texts("lines", std::exchange(m_answer, {}));
    if (exitCode != EXIT_DONE)
    {
        answer.Text("place", place).Text("error", error);
    }
    m_out.Line(answer.Take());
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
    if (failure != nullptr && failure->IsInterruption())
    {
        // From now on a signal ends the program at once, also while the shell still takes things down.
        m_signals.Release();
    }
    // A line that cannot be split into words is wrong usage as well.
    const int exitCode = failure == nullptr ? int{EXIT_USAGE} : failure->Code();
    if (m_options.json)
    {
        SayAnswer(line, exitCode, place, error.what());
        return exitCode;
    }
    const std::string shown = line.substr(0, CutLength(line, kMostShown)) + (line.size() > kMostShown ? "..." : "");
    std::string where = place.empty() ? "" : place + ": ";
    where += line.empty() ? "" : shown + ": ";
    where = where.empty() ? "onlinehost: " : Printable(where);
    m_out.Flush();
    m_errors.Line(m_errors.Paint(Tone::Bad, where) + error.what());
    return exitCode;
}

std::optional<std::string> Shell::AwaitLine(ShellScript& script)
{
    int held = -1;
    for (;;)
    {
        if (std::optional<std::string> line = script.TakeLine())
        {
            return line;
        }
        if (!m_out.Flush())
        {
            return std::nullopt; // nothing that follows could be read
        }
        pollfd wanted[] = {
            {script.Descriptor(), POLLIN, 0}, {m_inbox.Descriptor(), POLLIN, 0}, {m_signals.Descriptor(), POLLIN, 0}};
        poll(wanted, std::size(wanted), held);
        ThrowIfSignalled();
        // A line that can be read runs before events are shown, so that they appear where the script waits for them.
        if (wanted[0].revents == 0)
        {
            held = ShowNews();
        }
        else if (!script.Read())
        {
            return std::nullopt;
        }
    }
}

int Shell::RunScript(ShellScript& script)
{
    if (const int exitCode = RunFirstLines(); exitCode != EXIT_DONE)
    {
        return exitCode;
    }
    std::string line; // empty while no line runs
    try
    {
        while (!m_isOver)
        {
            std::optional<std::string> next = AwaitLine(script);
            if (!next)
            {
                break;
            }
            line = std::move(*next);
            ExecuteLine(line);
            line.clear();
        }
        Settle();
        ShowAll();
        return EXIT_DONE;
    }
    catch (const Error& error)
    {
        return Report(line.empty() ? "" : script.Place(), line, error);
    }
}

int Shell::RunTerminal()
{
    LineEditor::Options options;
    options.history = m_options.history;
    options.complete = [this](std::string_view lineStart) { return Complete(lineStart); };
    options.wait = [this] { AwaitKey(); };
    m_editor = std::make_unique<LineEditor>(std::move(options));
    if (!m_editor->HistoryProblem().empty())
    {
        Say(m_out.Paint(Tone::Doubtful, m_editor->HistoryProblem()));
    }
    Say("\"help\" lists the commands; Tab completes; Ctrl-D leaves.");
    RunFirstLines();

    while (!m_isOver && m_endingSignal == 0)
    {
        const std::optional<std::string> line = m_editor->ReadLine(Prompt());
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
    m_editor.reset();
    if (m_endingSignal != 0)
    {
        m_signals.Release();
    }
    return m_endingSignal == 0 ? int{EXIT_DONE} : ShellFailure::kSignalBase + m_endingSignal;
}

void Shell::AwaitKey()
{
    pollfd wanted[] = {
        {STDIN_FILENO, POLLIN, 0}, {m_inbox.Descriptor(), POLLIN, 0}, {m_signals.Descriptor(), POLLIN, 0}};
    poll(wanted, std::size(wanted), ShowNews());
    HandleTerminalSignals();
    ShowNews();
}

void Shell::HandleTerminalSignals()
{
    while (const int signal = m_signals.Take())
    {
        switch (signal)
        {
        case SIGINT:
            m_editor->Interrupt();
            break;
        case SIGWINCH:
            m_editor->FollowSize();
            break;
        case SIGTSTP:
            m_editor->Suspend(&ShellSignals::Stop);
            break;
        default:
            m_endingSignal = signal;
            m_editor->Leave();
            break;
        }
    }
}

std::string Shell::Prompt() const
{
    if (m_terminal == nullptr)
    {
        return "onlinehost> ";
    }
    return m_terminal->Name() + (m_terminal->isLoggedIn ? "> " : " (offline)> ");
}

std::vector<std::string> Shell::Complete(std::string_view lineStart) const
{
    return CompleteShellLine(m_table, lineStart,
                             [this](ShellKind kind, std::string_view start, const std::string& terminal)
                             { return LookUp(kind, start, terminal); });
}

const ShellTerminal* Shell::TerminalFor(const std::string& terminal) const
{
    if (terminal.empty())
    {
        return m_terminal;
    }
    try
    {
        const auto [user, device] = ParseTerminal(terminal);
        return m_world.FindTerminal(user, device);
    }
    catch (const Error&)
    {
        return nullptr;
    }
}

std::vector<std::string> Shell::LookUp(ShellKind kind, std::string_view start, const std::string& terminal) const
{
    std::set<std::string> found;
    const auto offer = [&](const std::string& value)
    {
        if (value.starts_with(start))
        {
            found.insert(value);
        }
    };
    const auto offerId = [&](uint32_t id) { offer(std::to_string(id)); };
    const ShellTerminal* const device = TerminalFor(terminal);
    if (kind == ShellKind::Terminal || kind == ShellKind::User || kind == ShellKind::Users)
    {
        for (const auto& known : m_world.Terminals())
        {
            offerId(known->login.userid);
            if (kind == ShellKind::Terminal)
            {
                offer(std::to_string(known->login.userid) + "@" + known->login.deviceid);
            }
        }
        if (device != nullptr)
        {
            std::for_each(device->known.begin(), device->known.end(), offerId);
        }
    }
    if (kind == ShellKind::Received && device != nullptr)
    {
        for (const auto& [id, invitation] : device->received)
        {
            if (!invitation.isAccepted)
            {
                offerId(id);
            }
        }
    }
    if (kind == ShellKind::Sent && device != nullptr)
    {
        std::for_each(device->sent.begin(), device->sent.end(),
                      [&](const auto& invitation) { offerId(invitation.first); });
    }
    return {found.begin(), found.end()};
}

} // namespace host
