#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace host
{

/// Writes messages between parties as a Mermaid sequence diagram. Texts may contain anything: characters with a meaning
/// in Mermaid are escaped.
///
/// Viewers refuse a text of more than 50 000 characters. So a full diagram accepts no further line. It reserves room
/// for its closing notes.
class SequenceDiagram
{
public:
    static constexpr size_t kLargestText = 50'000;

    enum class Arrow
    {
        Plain,
        Failed, ///< ends in a cross
    };

    /// `parties` stand from left to right and are referred to by their index. Each is a list of lines.
    explicit SequenceDiagram(const std::vector<std::vector<std::string>>& parties);

    /// `from` calls or notifies `to`. False when the diagram is full; nothing is added then.
    bool Message(size_t from, size_t to, const std::string& text, Arrow arrow = Arrow::Plain);

    /// A note over one party. False when the diagram is full.
    bool Note(size_t party, const std::string& text);
    /// A note over all parties. False when the diagram is full.
    bool Note(const std::string& text);

    /// A note at the end of the diagram, which has a place even when the diagram is full; a long one is cut.
    void ClosingNote(const std::string& text);

    const std::string& Text() const
    {
        return m_text;
    }

private:
    bool Add(const std::string& line);
    std::string NoteOverAll(const std::string& text) const;

    size_t m_parties;
    std::string m_text;
};

} // namespace host
