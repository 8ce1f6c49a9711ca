#include "host/shell/LineEditor.h"

#include "onlinehost/Text.h"

#include <algorithm>
#include <cerrno>
#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <readline/history.h>
#include <readline/readline.h>
#include <unistd.h>
#include <utility>

namespace host
{

using namespace onlinehost;

namespace
{

constexpr int kHistoryLines = 1000;

/// The library calls back without an argument.
LineEditor* g_terminal = nullptr;

/// Has to exist before lines can be appended to it; only its owner may read it, since lines may hold tokens.
bool MakeHistoryFile(const std::filesystem::path& path, std::string& problem)
{
    std::error_code error;
    if (path.has_parent_path())
    {
        std::filesystem::create_directories(path.parent_path(), error);
    }
    const int file = open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
    if (file < 0)
    {
        problem = "the history " + Printable(path.string()) + " cannot be used: " + std::strerror(errno);
        return false;
    }
    close(file);
    return true;
}

} // namespace

LineEditor::LineEditor(Options options) : m_options(std::move(options))
{
    g_terminal = this;
    std::setlocale(LC_CTYPE, "");
    rl_readline_name = "onlinehost";
    rl_catch_signals = 0;
    rl_catch_sigwinch = 0;
    rl_change_environment = 0;
    rl_initialize();
    // Pasted lines are commands like typed ones.
    rl_variable_bind("enable-bracketed-paste", "off");
    // Its questions would wait for a key, and events would wait with them.
    rl_variable_bind("page-completions", "off");
    rl_completion_query_items = 0;
    rl_variable_bind("show-all-if-ambiguous", "on");
    rl_basic_word_break_characters = " \t";
    rl_completer_word_break_characters = rl_basic_word_break_characters;
    rl_completer_quote_characters = nullptr;
    rl_attempted_completion_function = [](const char* word, int begin, int)
    { return g_terminal->Complete(word, begin); };
    rl_completion_display_matches_hook = &LineEditor::ShowCandidates;

    using_history();
    stifle_history(kHistoryLines);
    if (!m_options.history.empty() && MakeHistoryFile(m_options.history, m_historyProblem))
    {
        read_history(m_options.history.c_str());
    }
    else
    {
        m_options.history.clear();
    }
}

LineEditor::~LineEditor()
{
    if (m_isOpen)
    {
        rl_callback_handler_remove();
    }
    if (!m_options.history.empty())
    {
        history_truncate_file(m_options.history.c_str(), kHistoryLines);
    }
    clear_history();
    g_terminal = nullptr;
}

void LineEditor::Begin(const std::string& prompt)
{
    m_prompt = prompt;
    m_isOpen = true;
    rl_resize_terminal();
    rl_callback_handler_install(m_prompt.c_str(), [](char* line) { g_terminal->Take(line); });
}

void LineEditor::SetPrompt(const std::string& prompt)
{
    if (m_isOpen && prompt != m_prompt)
    {
        // The old line is taken off with the length that it has on the screen.
        rl_clear_visible_line();
        m_prompt = prompt;
        rl_set_prompt(m_prompt.c_str());
        rl_on_new_line();
    }
}

std::optional<LineEditor::Input> LineEditor::Read()
{
    m_input.reset();
    rl_callback_read_char();
    return std::exchange(m_input, std::nullopt);
}

void LineEditor::Take(char* line)
{
    rl_callback_handler_remove();
    m_isOpen = false;
    m_input = Input{};
    if (line == nullptr)
    {
        m_input->isEnd = true;
        return;
    }
    m_input->line = line;
    std::free(line);
    Remember(m_input->line);
}

void LineEditor::Remember(const std::string& line)
{
    const HIST_ENTRY* const last = history_length > 0 ? history_get(history_base + history_length - 1) : nullptr;
    const bool isRepeated = last != nullptr && line == last->line;
    if (line.find_first_not_of(" \t") == line.npos || line.front() == ' ' || isRepeated)
    {
        return;
    }
    add_history(line.c_str());
    if (!m_options.history.empty())
    {
        append_history(1, m_options.history.c_str());
    }
}

void LineEditor::PrintAbove(std::string_view text)
{
    if (m_isOpen)
    {
        rl_clear_visible_line();
    }
    std::fwrite(text.data(), 1, text.size(), stdout);
    if (m_isOpen)
    {
        rl_on_new_line();
        rl_redisplay();
    }
    std::fflush(stdout);
}

void LineEditor::Interrupt()
{
    if (!m_isOpen)
    {
        return;
    }
    rl_callback_sigcleanup();
    rl_free_line_state();
    std::fputs("^C", stdout);
    rl_crlf();
    rl_callback_handler_remove();
    rl_replace_line("", 1);
    Begin(std::string(m_prompt));
}

void LineEditor::FollowSize()
{
    rl_resize_terminal();
}

void LineEditor::Suspend(const std::function<void()>& pause)
{
    if (!m_isOpen)
    {
        pause();
        return;
    }
    rl_deprep_terminal();
    pause();
    rl_prep_terminal(1);
    rl_resize_terminal();
    rl_on_new_line();
    rl_redisplay();
}

char** LineEditor::Complete(const char*, int begin)
{
    rl_attempted_completion_over = 1;
    static std::vector<std::string> candidates;
    static size_t next = 0;
    const std::string lineStart(rl_line_buffer, static_cast<size_t>(rl_point));
    candidates = m_options.complete(lineStart);
    next = 0;
    const bool wantsValue = candidates.size() == 1 && candidates.front().ends_with('=');
    rl_completion_suppress_append = wantsValue ? 1 : 0;
    return rl_completion_matches(rl_line_buffer + begin,
                                 [](const char*, int) -> char*
                                 { return next < candidates.size() ? strdup(candidates[next++].c_str()) : nullptr; });
}

void LineEditor::ShowCandidates(char** candidates, int count, int longest)
{
    constexpr int kMost = 60;
    const int shown = std::min(count, kMost);
    // The first entry is what all candidates begin with, the others follow, and a null ends the list.
    char* const cut = candidates[shown + 1];
    candidates[shown + 1] = nullptr;
    rl_display_match_list(candidates, shown, longest);
    candidates[shown + 1] = cut;
    if (shown < count)
    {
        std::fprintf(rl_outstream, "... and %d more\n", count - shown);
    }
    rl_forced_update_display();
}

} // namespace host
