#pragma once

#include "host/console/Console.h"
#include "host/shell/ShellCommand.h"
#include "host/shell/ShellEvent.h"
#include "host/shell/ShellInbox.h"
#include "host/shell/ShellSignals.h"
#include "host/shell/ShellWorld.h"

#include <chrono>
#include <deque>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace host
{

class ShellScript;
class LineEditor;

/// Runs the commands that a user types at a terminal or that a script contains, and shows the events.
///
/// At a terminal an event is shown when it comes. In a script it is shown when a command waits for it or for a later
/// one, and at the end, so that the same script writes the same output in every run.
///
/// Belongs to one thread, which is the control thread of the module as well.
class Shell
{
public:
    struct Options
    {
        ShellWorld::Options world;
        std::filesystem::path history;  ///< empty: none
        std::vector<std::string> first; ///< lines to run before all others
        bool json = false;              ///< write every event and every answer as one line of JSON
    };

    /// The arguments must outlive the shell. `trace` may be null; then nothing is recorded. `Error` when the module
    /// cannot be loaded or the system has no descriptor left.
    Shell(const Options& options, ShellSignals& signals, onlinehost::LogCenter& log, Trace* trace);
    ~Shell();
    Shell(const Shell&) = delete;
    Shell& operator=(const Shell&) = delete;

    /// Serves the terminal until the user leaves. Returns the program's exit code.
    int RunTerminal();

    /// Runs lines up to the first that fails. Returns the program's exit code.
    int RunScript(ShellScript& script);

    // For commands.

    ShellTable& Table()
    {
        return m_table;
    }

    ShellWorld& World()
    {
        return m_world;
    }

    const Console& Out() const
    {
        return m_out;
    }

    /// Where the progress of a long command is shown.
    const Console& ProgressOut() const
    {
        return m_options.json ? m_errors : m_out;
    }

    /// The current terminal, for which commands run; `ShellFailure` when none is chosen.
    ShellTerminal& Terminal();
    void SetTerminal(ShellTerminal* terminal);

    /// The current terminal; null when none is chosen.
    const ShellTerminal* CurrentTerminal() const
    {
        return m_terminal;
    }

    /// Shows a text of one or more lines. Inside a command it throws like `ThrowIfSignalled`.
    void Say(std::string_view text);

    /// The text that the previous command wrote, events included.
    const std::string& SaidBefore() const
    {
        return m_saidBefore;
    }

    /// Keeps `SaidBefore` as it is for the next command.
    void KeepSaid()
    {
        m_said = m_saidBefore;
    }

    using Wanted = std::function<bool(const ShellEvent&)>;

    /// Waits for the first wanted event with at least this number, and shows all events up to it. Empty when no such
    /// event came in time.
    std::optional<ShellEvent> Await(uint64_t firstNumber, const Wanted& isWanted, std::chrono::milliseconds limit);

    /// The same for an event of any age that no call of this operation has taken yet. Takes the event.
    std::optional<ShellEvent> AwaitAndTake(const Wanted& isWanted, std::chrono::milliseconds limit);

    /// The number of the next event. The events that a command causes have at least the number from before it.
    uint64_t Mark() const
    {
        return m_inbox.NextNumber();
    }

    /// Shows all events that have come.
    void ShowAll();

    /// Takes all events that have come so far.
    void Forget();

    /// Waits until the platform has completed all requests. Throws like `ThrowIfSignalled`.
    void Settle();

    /// Runs an operation that blocks on a thread of its own, and returns its result. When a signal asks the command to
    /// end, it calls `cancel` until the operation has returned, and throws like `ThrowIfSignalled`.
    bool RunBlocking(const std::function<bool()>& operation, const std::function<void()>& cancel);

    /// For commands that take long: throws `ShellFailure` when a signal asks the command to end.
    void ThrowIfSignalled();

    /// Runs a command, also one inside another command.
    void Execute(std::span<const std::string> words);

    void Quit()
    {
        m_isOver = true;
    }

private:
    struct Entry
    {
        ShellEvent event;
        bool isShown = false;
        bool isTaken = false;
    };

    void Collect();
    ShellTerminal* FindTerminal(const std::string& name) const;
    void Note(Entry& entry);
    void ShowUpTo(size_t end);
    /// Shows consecutive changes of users in as few lines as possible. Returns the end of these changes.
    size_t ShowBurst(size_t begin, size_t end);
    void ShowWatched(ShellTerminal& device, const std::vector<UserChange>& changes);
    void SayEvent(const ShellEvent& event, const std::string& text);
    /// At a terminal, says once behind the first acceptance that it brings no user into a meeting.
    void ExplainAcceptance(const ShellEvent& event);
    /// Why no command can run for the current terminal, and how to choose one.
    std::string NoTerminalText() const;
    /// Shows the events that have come. Holds back changes of users for a moment after it has shown others, to gather
    /// them. Returns the number of milliseconds for which it holds changes back, or -1.
    int ShowNews();
    void DropOld();
    Entry* FindEntry(const std::function<bool(const Entry&)>& isWanted);
    Entry* AwaitEntry(const std::function<bool(const Entry&)>& isWanted, std::chrono::milliseconds limit);
    /// Waits for an event, a signal, or `held` milliseconds unless that is -1. False when the deadline has passed.
    bool WaitForNews(std::chrono::steady_clock::time_point deadline, int held);
    /// The next line of the script; nothing at its end.
    std::optional<std::string> AwaitLine(ShellScript& script);

    void ExecuteLine(const std::string& line);
    /// Writes the answer to a line as JSON: the lines that the command wrote, and how it ended.
    void SayAnswer(const std::string& line, int exitCode, const std::string& place, const std::string& error);
    int Report(const std::string& place, const std::string& line, const std::exception& error);
    int RunFirstLines();
    void AwaitKey();
    void HandleTerminalSignals();
    std::string Prompt() const;
    std::vector<std::string> Complete(std::string_view lineStart) const;
    std::vector<std::string> LookUp(ShellKind kind, std::string_view start, const std::string& terminal) const;
    /// The terminal that a word names; the current one for an empty word. Null when there is no such terminal.
    const ShellTerminal* TerminalFor(const std::string& terminal) const;

    const Options m_options;
    const Console m_out{stdout};
    const Console m_errors{stderr};
    ShellSignals& m_signals;
    ShellInbox m_inbox;
    ShellWorld m_world;
    ShellTable m_table;
    std::unique_ptr<LineEditor> m_editor; ///< null in a script
    ShellTerminal* m_terminal = nullptr;
    std::deque<Entry> m_entries;
    std::chrono::steady_clock::time_point m_nextBurst{}; ///< when it shows the changes of users that it holds back
    std::vector<std::string> m_answer;                   ///< the lines of the running command, with `json`
    std::string m_said;
    std::string m_saidBefore;
    bool m_isAcceptanceExplained = false;
    size_t m_depth = 0; ///< commands that run, one inside the other
    bool m_isOver = false;
    int m_endingSignal = 0; ///< the signal that asks the program to end; 0 for none
};

} // namespace host
