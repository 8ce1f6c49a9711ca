#pragma once

#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace host
{

/// The line that a person types at the terminal: editing, history, completion, and lines of others that appear above it.
///
/// It never waits: the owner waits for the standard input among other descriptors and then calls `Read`. All operations
/// belong to one thread, and there can be one object at a time.
class LineEditor
{
public:
    struct Options
    {
        std::filesystem::path history; ///< empty: lines are remembered until the end only
        /// What the last word of a text may become.
        std::function<std::vector<std::string>(std::string_view lineStart)> complete;
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

    /// Begins a new line. The prompt holds no control characters.
    void Begin(const std::string& prompt);

    /// Changes the prompt of the line that is being typed; shown with the next `PrintAbove`.
    void SetPrompt(const std::string& prompt);

    struct Input
    {
        std::string line;
        bool isEnd = false; ///< the person has nothing more to say
    };
    /// Takes what was typed. A result ends the line: nothing is shown until `Begin`.
    std::optional<Input> Read();

    /// Shows whole lines above the one that is being typed, or just so when none is.
    void PrintAbove(std::string_view text);

    /// Throws away what has been typed.
    void Interrupt();

    void FollowSize();

    /// Gives the terminal to others and takes it back around `pause`.
    void Suspend(const std::function<void()>& pause);

private:
    void Take(char* line);
    void Remember(const std::string& line);
    char** Complete(const char* word, int begin);
    static void ShowCandidates(char** candidates, int count, int longest);

    Options m_options;
    std::string m_historyProblem;
    std::string m_prompt;
    bool m_isOpen = false; ///< a line is being typed
    std::optional<Input> m_input;
};

} // namespace host
