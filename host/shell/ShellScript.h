#pragma once

#include <cstddef>
#include <optional>
#include <string>

namespace host
{

/// Reads a file or a pipe line by line. Only `Read` waits.
class ShellScript
{
public:
    static constexpr size_t kLongestLine = size_t{1} << 20;

    /// Reads from `descriptor`, which is borrowed; `name` stands in messages. `Error` when the descriptor is closed or
    /// not open for reading: waiting for it would never end.
    ShellScript(int descriptor, std::string name);

    /// The next line without its end, when a whole one has been read. `Error`, which names the place, for a line that
    /// is too long.
    std::optional<std::string> TakeLine();

    /// Reads the next bytes, and waits for them if necessary. False at the end, when no line is left. `ShellFailure`
    /// when reading fails.
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
    std::string m_text;    ///< read and not yet taken
    size_t m_searched = 0; ///< the number of first bytes of `m_text` that contain no end of a line
    size_t m_line = 0;     ///< the number of the line that was taken last; the first is 1
    bool m_atEnd = false;
};

} // namespace host
