#include "host/shell/LineEditor.h"

#include "onlinehost/Text.h"

#include <algorithm>
#include <cerrno>
#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <cwchar>
#include <fcntl.h>
#include <fstream>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace host
{

using namespace onlinehost;

namespace
{

constexpr int kHistoryLines = 1000;
constexpr wchar_t kReplacementCharacter = 0xFFFD;

/// Has to exist before lines can be appended to it; only its owner may read it, since lines may hold tokens.
bool MakeHistoryFile(const std::filesystem::path& path, std::string& problem)
{
    std::error_code error;
    if (path.has_parent_path())
    {
        std::filesystem::create_directories(path.parent_path(), error);
    }
    const int file = open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NONBLOCK | O_NOCTTY, 0600);
    if (file < 0)
    {
        problem = "the history " + Printable(path.string()) + " cannot be used: " + std::strerror(errno);
        return false;
    }
    struct stat status
    {
    };
    // A device such as /dev/zero has no end, and would be read until the memory is full.
    const bool isRegular = fstat(file, &status) == 0 && S_ISREG(status.st_mode);
    close(file);
    if (!isRegular)
    {
        problem = "the history " + Printable(path.string()) + " cannot be used: it is not a regular file";
    }
    return isRegular;
}

std::vector<std::string> ReadLines(const std::filesystem::path& path)
{
    std::vector<std::string> lines;
    std::ifstream file(path);
    for (std::string line; std::getline(file, line);)
    {
        lines.push_back(line);
    }
    return lines;
}

/// Keeps the newest lines only. Other shells may have appended to the file meanwhile.
void TruncateFile(const std::filesystem::path& path)
{
    const std::vector<std::string> lines = ReadLines(path);
    if (lines.size() <= kHistoryLines)
    {
        return;
    }
    std::ofstream file(path, std::ios::trunc);
    std::for_each(lines.end() - kHistoryLines, lines.end(), [&file](const std::string& line) { file << line << '\n'; });
}

std::wstring Widen(const std::string& text)
{
    std::wstring wide(text.size(), L'\0');
    const size_t length = std::mbstowcs(wide.data(), text.c_str(), wide.size());
    wide.resize(length == static_cast<size_t>(-1) ? 0 : length);
    return wide;
}

/// Moves `column` and `row` over a character as the library lays it out in rows of `columns`.
void Advance(wchar_t character, size_t columns, size_t& column, size_t& row)
{
    constexpr size_t kTab = 8;
    constexpr size_t kControl = 2; // "^A"
    constexpr size_t kCode = 8;    // "\U+ABCDE"
    if (character == L'\n')
    {
        column = 0;
        ++row;
        return;
    }
    const int printed = wcwidth(character);
    const size_t width = character == L'\t'                         ? kTab - column % kTab
                         : printed >= 0                             ? static_cast<size_t>(printed)
                         : character < L' ' || character == L'\x7f' ? kControl
                                                                    : kCode;
    const bool staysWhole = printed > 1 && column + width > columns;
    column = (staysWhole ? columns : column) + width;
    row += column / columns;
    column = staysWhole ? width : column % columns;
}

/// What all candidates begin with.
std::string CommonStart(const std::vector<std::string>& candidates)
{
    const std::string& first = candidates.front();
    size_t length = first.size();
    for (const std::string& candidate : candidates)
    {
        const auto end = std::mismatch(first.begin(), first.end(), candidate.begin(), candidate.end()).first;
        length = std::min(length, static_cast<size_t>(end - first.begin()));
    }
    return first.substr(0, CutLength(first, length));
}

} // namespace

LineEditor::LineEditor(Options options)
    : m_options(std::move(options)),
      m_history(history_init(), &history_end),
      m_editor(nullptr, &el_end)
{
    // The program's texts are UTF-8 in every locale, and the library takes its encoding from here.
    std::setlocale(LC_CTYPE, "C.UTF-8");
    tcgetattr(STDIN_FILENO, &m_lentModes);
    m_editor.reset(el_init("onlinehost", stdin, stdout, stderr));
    // The library would give the terminal its former modes between lines and take them away after the prompt is shown. In those
    // modes the kernel echoes early keys a second time, reads Ctrl-D as a zero byte, and at Ctrl-Z drops keys that the person
    // already sees. Commands do not read the terminal, so it never goes back to those modes before the editor ends.
    el_set(m_editor.get(), EL_SETTY, "-x", "-icanon", "-echo", "-iexten", nullptr);
    el_set(m_editor.get(), EL_CLIENTDATA, this);
    el_wset(
        m_editor.get(), EL_PROMPT, +[](EditLine* editor) { return Of(editor).m_shownPrompt.data(); });
    el_wset(
        m_editor.get(), EL_GETCFN, +[](EditLine* editor, wchar_t* key) { return Of(editor).NextKey(key); });
    BindKeys();
    el_source(m_editor.get(), nullptr);

    HistEvent event{};
    history(m_history.get(), &event, H_SETSIZE, kHistoryLines);
    el_set(m_editor.get(), EL_HIST, &history, m_history.get());
    if (!m_options.history.empty() && MakeHistoryFile(m_options.history, m_historyProblem))
    {
        for (const std::string& line : ReadLines(m_options.history))
        {
            history(m_history.get(), &event, H_ENTER, line.c_str());
            m_lastLine = line;
        }
    }
    else
    {
        m_options.history.clear();
    }
}

LineEditor::~LineEditor()
{
    if (!m_options.history.empty())
    {
        TruncateFile(m_options.history);
    }
}

LineEditor& LineEditor::Of(EditLine* editor)
{
    void* terminal = nullptr;
    el_get(editor, EL_CLIENTDATA, &terminal);
    return *static_cast<LineEditor*>(terminal);
}

void LineEditor::BindKeys()
{
    EditLine* const editor = m_editor.get();
    el_set(editor, EL_EDITOR, "emacs");
    el_wset(
        editor, EL_ADDFN, L"onlinehost-complete", L"Complete the word before the cursor",
        +[](EditLine* self, wint_t) { return Of(self).Complete(); });
    el_wset(
        editor, EL_ADDFN, L"onlinehost-delete-or-leave", L"Delete the next character, or leave on an empty line",
        +[](EditLine* self, wint_t) { return Of(self).DeleteOrLeave(); });

    // The library has other functions on these keys than shells usually have, or none. Ctrl-D arrives as "^@" when the person
    // types it before the editor owns the terminal; the library's function there would swallow the next key.
    constexpr const char* kBindings[][2] = {
        {"^I", "onlinehost-complete"}, {"^D", "onlinehost-delete-or-leave"}, {"^R", "em-inc-search-prev"},
        {"^@", "em-set-mark"},         {"^U", "vi-kill-line-prev"},          {"^W", "ed-delete-prev-word"},
        {"\\e[1~", "ed-move-to-beg"},  {"\\e[4~", "ed-move-to-end"},         {"\\e[7~", "ed-move-to-beg"},
        {"\\e[8~", "ed-move-to-end"},  {"\\e[3~", "ed-delete-next-char"},    {"\\e[1;3C", "em-next-word"},
        {"\\e[1;3D", "ed-prev-word"},  {"\\e[1;5C", "em-next-word"},         {"\\e[1;5D", "ed-prev-word"},
    };
    for (const auto& [key, function] : kBindings)
    {
        el_set(editor, EL_BIND, key, function, nullptr);
    }
}

std::optional<std::string> LineEditor::ReadLine(const std::string& prompt)
{
    m_prompt = Widen(prompt);
    const char* text = nullptr;
    int length = 0;
    do
    {
        m_ending = Ending::None;
        m_shownPrompt = m_prompt;
        m_isOpen = true;
        text = el_gets(m_editor.get(), &length);
        m_isOpen = false;
        if (m_failure)
        {
            std::rethrow_exception(std::exchange(m_failure, nullptr));
        }
    } while (m_ending == Ending::Interrupted);

    if (text == nullptr || m_ending == Ending::Left)
    {
        return std::nullopt;
    }
    std::string line(text);
    while (line.ends_with('\n') || line.ends_with('\r'))
    {
        line.pop_back();
    }
    Remember(line);
    return line;
}

int LineEditor::NextKey(wchar_t* key)
{
    std::mbstate_t state{};
    for (;;)
    {
        pollfd input{STDIN_FILENO, POLLIN, 0};
        try
        {
            // `wait` handles signals. It runs between the check for a key and the read, so that a signal takes effect before
            // the keys that the person typed after it.
            bool isReadable = false;
            do
            {
                isReadable = poll(&input, 1, 0) != 0;
                m_options.wait();
            } while (m_ending == Ending::None && !isReadable);
        }
        catch (...)
        {
            m_failure = std::current_exception();
            return -1;
        }
        // One at a time: what a command shall find unread, and Ctrl-C throw away, stays with the terminal.
        char byte = 0;
        if (m_ending != Ending::None || read(STDIN_FILENO, &byte, 1) != 1)
        {
            return -1;
        }
        const size_t length = std::mbrtowc(key, &byte, 1, &state);
        if (length == static_cast<size_t>(-2))
        {
            continue;
        }
        if (length == static_cast<size_t>(-1))
        {
            *key = kReplacementCharacter;
        }
        return 1;
    }
}

void LineEditor::SetPrompt(const std::string& prompt)
{
    m_prompt = Widen(prompt);
}

void LineEditor::PrintAbove(std::string_view text)
{
    if (m_isOpen)
    {
        Erase(CountRows().above);
    }
    std::fwrite(text.data(), 1, text.size(), stdout);
    Redraw();
    std::fflush(stdout);
}

void LineEditor::Interrupt()
{
    if (m_isOpen)
    {
        const std::string end = "^C" + std::string(CountRows().below + 1, '\n');
        std::fputs(end.c_str(), stdout);
        m_ending = Ending::Interrupted;
    }
}

void LineEditor::Leave()
{
    m_ending = Ending::Left;
}

void LineEditor::FollowSize()
{
    if (!m_isOpen)
    {
        el_resize(m_editor.get());
        return;
    }
    // Some terminals wrap the rows anew and some do not. What is erased is part of the line in both cases.
    const size_t before = CountRows().above;
    el_resize(m_editor.get());
    Erase(std::min(before, CountRows().above));
    Redraw();
}

void LineEditor::Suspend(const std::function<void()>& pause)
{
    el_set(m_editor.get(), EL_PREP_TERM, 0);
    tcsetattr(STDIN_FILENO, TCSADRAIN, &m_lentModes);
    pause();
    el_set(m_editor.get(), EL_PREP_TERM, 1);
    el_resize(m_editor.get());
    Redraw();
}

LineEditor::Rows LineEditor::CountRows() const
{
    int columns = 0;
    int height = 0;
    el_get(m_editor.get(), EL_GETTC, "co", &columns);
    el_get(m_editor.get(), EL_GETTC, "li", &height);
    const auto width = static_cast<size_t>(std::max(columns, 1));

    size_t column = 0;
    size_t row = 0;
    for (const wchar_t character : m_shownPrompt)
    {
        Advance(character, width, column, row);
    }
    const LineInfoW* const line = el_wline(m_editor.get());
    size_t cursorRow = row;
    for (const wchar_t* at = line->buffer; at != line->lastchar; ++at)
    {
        Advance(*at, width, column, row);
        cursorRow = at < line->cursor ? row : cursorRow;
    }
    // A line taller than the screen shows its end.
    const size_t highest = static_cast<size_t>(std::max(height, 1)) - 1;
    return {std::min(cursorRow, highest), row - cursorRow};
}

void LineEditor::Erase(size_t rowsAbove) const
{
    std::fputc('\r', stdout);
    for (size_t i = 0; i < rowsAbove; ++i)
    {
        el_set(m_editor.get(), EL_ECHOTC, "-s", "up", nullptr);
    }
    el_set(m_editor.get(), EL_ECHOTC, "-s", "cd", nullptr);
}

void LineEditor::Redraw()
{
    if (m_isOpen)
    {
        m_shownPrompt = m_prompt;
        el_set(m_editor.get(), EL_REFRESH);
    }
}

unsigned char LineEditor::DeleteOrLeave()
{
    const LineInfoW* const line = el_wline(m_editor.get());
    if (line->buffer == line->lastchar)
    {
        return CC_EOF;
    }
    if (line->cursor == line->lastchar)
    {
        return CC_ERROR;
    }
    el_cursor(m_editor.get(), 1);
    el_deletestr(m_editor.get(), 1);
    return CC_REFRESH;
}

unsigned char LineEditor::Complete()
{
    const LineInfo* const info = el_line(m_editor.get());
    const std::string lineStart(info->buffer, info->cursor);
    std::vector<std::string> candidates;
    try
    {
        candidates = m_options.complete(lineStart);
    }
    catch (...)
    {
        m_failure = std::current_exception();
        return CC_EOF;
    }
    if (candidates.empty())
    {
        return CC_ERROR;
    }

    const size_t rowsBelow = CountRows().below;
    const std::string word = lineStart.substr(lineStart.find_last_of(" \t") + 1);
    std::string start = CommonStart(candidates);
    // An option goes on with its value.
    start += candidates.size() == 1 && !start.ends_with('=') ? " " : "";
    el_deletestr(m_editor.get(), static_cast<int>(Widen(word).size()));
    el_insertstr(m_editor.get(), start.c_str());
    if (candidates.size() == 1)
    {
        return CC_REFRESH;
    }
    std::fputs(std::string(rowsBelow + 1, '\n').c_str(), stdout);
    ShowCandidates(candidates);
    Redraw();
    return CC_NORM;
}

void LineEditor::ShowCandidates(const std::vector<std::string>& candidates) const
{
    constexpr size_t kMost = 60;
    constexpr size_t kGap = 2;
    std::vector<std::string> shown(
        candidates.begin(), candidates.begin() + static_cast<std::ptrdiff_t>(std::min(candidates.size(), kMost)));
    std::transform(shown.begin(), shown.end(), shown.begin(), Printable);
    size_t width = 0;
    for (const std::string& candidate : shown)
    {
        width = std::max(width, candidate.size() + kGap);
    }
    int columns = 0;
    el_get(m_editor.get(), EL_GETTC, "co", &columns);
    const size_t inRow = std::max<size_t>(static_cast<size_t>(std::max(columns, 1)) / width, 1);
    const size_t rows = (shown.size() + inRow - 1) / inRow;
    std::string text;
    for (size_t row = 0; row < rows; ++row)
    {
        for (size_t i = row; i < shown.size(); i += rows)
        {
            const bool isLast = i + rows >= shown.size();
            text += shown[i] + (isLast ? "\n" : std::string(width - shown[i].size(), ' '));
        }
    }
    if (candidates.size() > kMost)
    {
        text += "... and " + std::to_string(candidates.size() - kMost) + " more\n";
    }
    std::fputs(text.c_str(), stdout);
}

void LineEditor::Remember(const std::string& line)
{
    if (line.find_first_not_of(" \t") == line.npos || line.front() == ' ' || line == m_lastLine)
    {
        return;
    }
    m_lastLine = line;
    HistEvent event{};
    history(m_history.get(), &event, H_ENTER, line.c_str());
    if (!m_options.history.empty())
    {
        std::ofstream(m_options.history, std::ios::app) << line << '\n';
    }
}

} // namespace host
