#pragma once

#include <cstdio>
#include <string>
#include <string_view>

namespace host
{

enum class Tone
{
    Good,
    Bad,
    Doubtful,
    Strong,
    Quiet,
};

/// An output stream of the program: in colour on a terminal, plain in a file or a pipe.
class Console
{
public:
    /// `out` must outlive the console, which does not close it.
    explicit Console(std::FILE* out);

    /// The text in the colour of its tone; unchanged when the stream is not a terminal.
    std::string Paint(Tone tone, std::string_view text) const;

    /// [any] Writes a line; lines of several threads do not mix.
    void Line(std::string_view text) const;

    /// [any] Writes a text that contains its own ends of lines.
    void Text(std::string_view text) const;

    bool IsTerminal() const
    {
        return m_isTerminal;
    }

    /// False when a text of this console, or of another one on the same stream, was not written; see `Failure`.
    bool Flush() const;

    /// Why the standard output was not written completely: the system's words for the first error; empty when there was
    /// none.
    static std::string Failure();

private:
    void NoteError() const;

    std::FILE* m_out;
    bool m_isTerminal;
};

} // namespace host
