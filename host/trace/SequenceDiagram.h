#pragma once

#include <cstddef>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace host
{

/// Collects messages between parties and writes them as a Mermaid sequence diagram.
///
/// A diagram is for reading, and viewers refuse a text of more than 50 000 characters: so it ends when it is full, and says
/// how much was left out.
class SequenceDiagram
{
public:
    static constexpr size_t kLargestText = 50'000;

    /// `from` asks or tells `to` something; the texts may hold anything.
    void Message(const std::string& from, const std::string& to, const std::string& text);

    /// What comes back from a call.
    void Answer(const std::string& from, const std::string& to, const std::string& text);

    /// Counts a message that the caller left out because the diagram has enough of its kind.
    void Repetition(const std::string& text);

    std::string Text() const;

private:
    void Add(const std::string& from, const std::string& to, const char* arrow, const std::string& text);
    std::string Alias(const std::string& party);

    std::vector<std::pair<std::string, std::string>> m_parties; ///< name and alias, in order of appearance
    std::vector<std::string> m_lines;
    size_t m_length = 0;
    size_t m_cut = 0;                            ///< messages that came when the diagram was full
    std::map<std::string, size_t> m_repetitions; ///< by text
};

} // namespace host
