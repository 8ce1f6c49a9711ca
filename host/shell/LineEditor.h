#pragma once

#include <cstddef>
#include <exception>
#include <filesystem>
#include <functional>
#include <histedit.h>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <termios.h>
#include <vector>

namespace host
{

/// The line that a person types at the terminal: editing, history, completion, and lines of others that appear above it.
///
/// All operations belong to one thread. `ReadLine` calls `Options::wait` and `Options::complete` on it; `wait` may call every
/// operation except `ReadLine`.
class LineEditor
{
public:
    struct Options
    {
        std::filesystem::path history; ///< empty: lines are remembered until the end only
        /// What the last word of a text may become.
        std::function<std::vector<std::string>(std::string_view lineStart)> complete;
        /// Blocks until the standard input is readable. It may return earlier, and is then called again.
        std::function<void()> wait;
    };

    explicit LineEditor(Options options);
    ~LineEditor();
    LineEditor(const LineEditor&) = delete;
    LineEditor& operator=(const LineEditor&) = delete;

    /// What is wrong with the history's file; empty when nothing is.
    const std::string& HistoryProblem() const
    {
        return m_historyProblem;
    }

    /// Shows the prompt and lets the person type one line. Nothing after Ctrl-D on an empty line, after `Leave`, and when the
    /// terminal is gone. The prompt holds no control characters. Throws what `wait` and `complete` throw.
    std::optional<std::string> ReadLine(const std::string& prompt);

    /// Changes the prompt of the line that is being typed; shown with the next `PrintAbove`.
    void SetPrompt(const std::string& prompt);

    /// Shows whole lines above the one that is being typed, or just so when none is.
    void PrintAbove(std::string_view text);

    /// Throws away what has been typed, and begins a new line.
    void Interrupt();

    /// Lets `ReadLine` return without a line.
    void Leave();

    void FollowSize();

    /// Gives the terminal its former modes, calls `pause`, and takes the terminal back. The line that is being typed stays.
    void Suspend(const std::function<void()>& pause);

private:
    enum class Ending
    {
        None,
        Interrupted,
        Left
    };

    struct Rows
    {
        size_t above; ///< from the first row of the prompt to the cursor
        size_t below; ///< from the cursor to the last row of the line
    };

    static LineEditor& Of(EditLine* editor);
    void BindKeys();
    int NextKey(wchar_t* key);
    unsigned char DeleteOrLeave();
    unsigned char Complete();
    void ShowCandidates(const std::vector<std::string>& candidates) const;
    Rows CountRows() const;
    void Erase(size_t rowsAbove) const;
    void Redraw();
    void Remember(const std::string& line);

    Options m_options;
    termios m_lentModes{}; ///< the terminal's modes before the editor, which other programs get during `Suspend`
    std::string m_historyProblem;
    std::unique_ptr<History, decltype(&history_end)> m_history;
    std::unique_ptr<EditLine, decltype(&el_end)> m_editor;
    std::string m_lastLine; ///< of the history
    std::wstring m_prompt;
    std::wstring m_shownPrompt; ///< the one on the screen, until the line is drawn again
    bool m_isOpen = false;      ///< a line is being typed
    Ending m_ending = Ending::None;
    std::exception_ptr m_failure; ///< thrown by a callback, on its way around the library's own code
};

} // namespace host
