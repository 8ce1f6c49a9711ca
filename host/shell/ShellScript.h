#pragma once

#include <cstddef>
#include <optional>
#include <string>

namespace host
{

/// Reads a file or a pipe line by line, and never waits unless asked to.
class ShellScript
{
public:
    static constexpr size_t kLongestLine = size_t{1} << 20;

    /// Reads from `descriptor`, which is borrowed; `name` stands in messages.
    ShellScript(int descriptor, std::string name);

    /// The next line without its end, when a whole one has been read. `Error` for a line that is too long.
    std::optional<std::string> TakeLine();

    /// Reads what is there, waiting when nothing is. False at the end, when no line is left. `Error` when reading fails.
    bool Read();

    int Descriptor() const
    {
        return m_descriptor;
    }

    /// "NAME:12" of the line that was taken last.
    std::string Place() const;

private:
    const int m_descriptor;
    const std::string m_name;
    std::string m_text;    ///< read and not taken
    size_t m_searched = 0; ///< of `m_text`, where no line ends
    size_t m_line = 0;
    bool m_atEnd = false;
};

} // namespace host
