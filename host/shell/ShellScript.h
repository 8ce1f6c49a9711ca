#pragma once

#include <cstddef>
#include <optional>
#include <string>

namespace host
{

/// Reads a file or a pipe line by line. Only `Read` may wait.
class ShellScript
{
public:
    static constexpr size_t kLongestLine = size_t{1} << 20;

    /// Reads from `descriptor`, which is borrowed; `name` stands in messages. `Error` when the descriptor is closed or not open
    /// for reading: waiting for it would never end.
    ShellScript(int descriptor, std::string name);

    /// The next line without its end, when a whole one has been read. `Error`, which names the place, for a line that is too
    /// long.
    std::optional<std::string> TakeLine();

    /// Reads what is there, and waits when nothing is. False at the end, when no line is left. `ShellFailure` when reading
    /// fails.
    bool Read();

    int Descriptor() const
    {
        return m_descriptor;
    }

    /// "NAME:12" for the line that was taken last.
    std::string Place() const;

private:
    const int m_descriptor;
    const std::string m_name;
    std::string m_text;    ///< read, but not taken yet
    size_t m_searched = 0; ///< this much of the beginning of `m_text` holds no end of a line
    size_t m_line = 0;     ///< the number of the line that was taken last; the first is 1
    bool m_atEnd = false;
};

} // namespace host
