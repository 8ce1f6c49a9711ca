#include "host/trace/SequenceDiagram.h"

#include "host/trace/TraceCall.h"
#include "onlinehost/Text.h"

#include <string_view>

namespace host
{

namespace
{

constexpr size_t kLongestMessage = 300;
constexpr size_t kLineLength = 64;
constexpr size_t kLongestName = 56;
constexpr size_t kLongestClosingNote = 400;
constexpr size_t kReserve = 4'000;

/// In a diagram ';' ends a statement, '#' begins the code of a character, "%%" begins a comment or a directive, and what
/// looks like HTML is taken for HTML.
std::string EscapeLine(std::string_view text)
{
    std::string escaped;
    for (const char character : text)
    {
        if (std::string_view(";#%<>&").find(character) != std::string_view::npos)
        {
            escaped += '#' + std::to_string(static_cast<int>(character)) + ';';
        }
        else
        {
            escaped += character;
        }
    }
    return escaped;
}

/// The length of the first line of a long text, which ends after an argument, otherwise after a word, otherwise between
/// any two characters.
size_t LineLength(std::string_view text)
{
    size_t end = text.rfind(", ", kLineLength - 2);
    if (end != std::string_view::npos && end >= kLineLength / 2)
    {
        return end + 2;
    }
    end = text.find_last_of(" ,{", kLineLength - 1);
    return end != std::string_view::npos && end >= kLineLength / 2 ? end + 1 : onlinehost::CutLength(text, kLineLength);
}

/// The escaped text in several lines, because viewers make columns as wide as the longest line.
std::string Escape(const std::string& text, size_t limit)
{
    const std::string shown = Shorten(text, limit);
    std::string escaped;
    std::string_view rest = shown;
    while (rest.size() > kLineLength)
    {
        const size_t length = LineLength(rest);
        escaped += EscapeLine(rest.substr(0, length)) + "<br/>";
        rest.remove_prefix(length);
    }
    return escaped + EscapeLine(rest);
}

std::string Alias(size_t party)
{
    return 'P' + std::to_string(party + 1);
}

} // namespace

SequenceDiagram::SequenceDiagram(const std::vector<std::vector<std::string>>& parties)
    : m_parties(parties.size()),

      m_text("sequenceDiagram\n")
{
    for (size_t party = 0; party < parties.size(); ++party)
    {
        std::string name;
        for (const std::string& line : parties[party])
        {
            name += (name.empty() ? "" : "<br/>") + Escape(line, kLongestName);
        }
        m_text += "    participant " + Alias(party) + " as " + name + "\n";
    }
}

bool SequenceDiagram::Message(size_t from, size_t to, const std::string& text, Arrow arrow)
{
    return Add("    " + Alias(from) + (arrow == Arrow::Plain ? "->>" : "-x") + Alias(to) + ": " +
               Escape(text, kLongestMessage) + "\n");
}

bool SequenceDiagram::Note(size_t party, const std::string& text)
{
    return Add("    Note over " + Alias(party) + ": " + Escape(text, kLongestMessage) + "\n");
}

bool SequenceDiagram::Note(const std::string& text)
{
    return Add(NoteOverAll(Escape(text, kLongestMessage)));
}

void SequenceDiagram::ClosingNote(const std::string& text)
{
    const std::string note = NoteOverAll(Escape(text, kLongestClosingNote));
    if (m_text.size() + note.size() <= kLargestText)
    {
        m_text += note;
    }
}

bool SequenceDiagram::Add(const std::string& line)
{
    if (m_text.size() + line.size() + kReserve > kLargestText)
    {
        return false;
    }
    m_text += line;
    return true;
}

std::string SequenceDiagram::NoteOverAll(const std::string& text) const
{
    return "    Note over " + Alias(0) + (m_parties > 1 ? "," + Alias(m_parties - 1) : "") + ": " + text + "\n";
}

} // namespace host
