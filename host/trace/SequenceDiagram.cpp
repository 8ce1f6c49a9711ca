#include "host/trace/SequenceDiagram.h"

#include "onlinehost/Text.h"

#include <algorithm>

namespace host
{

using namespace onlinehost;

namespace
{

constexpr size_t kLongestMessage = 120;
constexpr size_t kKindsNamed = 20; // of what was left out

/// Room for the head and the closing note.
constexpr size_t kReserve = 8'000;

/// In a diagram ';' ends a statement and '#' begins the code of a character.
std::string Escape(std::string_view text)
{
    const std::string shown = Printable(text);
    const bool isLong = shown.size() > kLongestMessage;
    std::string escaped;
    for (const char character : shown.substr(0, isLong ? CutLength(shown, kLongestMessage) : shown.size()))
    {
        switch (character)
        {
        case ';':
            escaped += "#59;";
            break;
        case '#':
            escaped += "#35;";
            break;
        default:
            escaped += character;
        }
    }
    return isLong ? escaped + "..." : escaped;
}

} // namespace

void SequenceDiagram::Message(const std::string& from, const std::string& to, const std::string& text)
{
    Add(from, to, "->>", text);
}

void SequenceDiagram::Answer(const std::string& from, const std::string& to, const std::string& text)
{
    Add(from, to, "-->>", text);
}

void SequenceDiagram::Repetition(const std::string& text)
{
    ++m_repetitions[text];
}

void SequenceDiagram::Add(const std::string& from, const std::string& to, const char* arrow, const std::string& text)
{
    if (m_cut != 0)
    {
        ++m_cut;
        return;
    }
    const std::string source = Alias(from);
    const std::string target = Alias(to);
    const std::string line = "    " + source + arrow + target + ": " + Escape(text) + "\n";
    if (m_length + line.size() > kLargestText - kReserve)
    {
        ++m_cut;
        return;
    }
    m_length += line.size();
    m_lines.push_back(line);
}

std::string SequenceDiagram::Alias(const std::string& party)
{
    const auto found =
        std::find_if(m_parties.begin(), m_parties.end(), [&party](const auto& each) { return each.first == party; });
    if (found != m_parties.end())
    {
        return found->second;
    }
    std::string alias(1, 'P');
    alias += std::to_string(m_parties.size() + 1);
    m_length += party.size() + alias.size() + 32;
    return m_parties.emplace_back(party, alias).second;
}

std::string SequenceDiagram::Text() const
{
    std::string text = "sequenceDiagram\n";
    for (const auto& [party, alias] : m_parties)
    {
        text += "    participant " + alias + " as " + Escape(party) + "\n";
    }
    for (const std::string& line : m_lines)
    {
        text += line;
    }
    if (m_parties.empty())
    {
        return text;
    }
    const std::string note = "    Note over " + m_parties.front().second + ": ";
    if (m_cut != 0)
    {
        text +=
            note + "The diagram is cut here. " + std::to_string(m_cut) + " further messages are in the trace only.\n";
    }
    size_t named = 0;
    for (const auto& [message, count] : m_repetitions)
    {
        if (++named > kKindsNamed)
        {
            text += note + "Further repetitions are in the trace only.\n";
            break;
        }
        text += note + "Left out as repetitions - " + std::to_string(count) + " x " + Escape(message) + "\n";
    }
    return text;
}

} // namespace host
