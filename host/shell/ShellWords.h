#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace host
{

/// Splits a line of the shell into words.
///
/// Words stand between spaces and tabs. Single quotes take everything as it is; inside double quotes `\n`, `\t`, `\xNN`
/// and a backslash before any other character mean what they do in C; outside quotes a backslash takes the next
/// character as it is. A `#` at the beginning of a word begins a comment.

/// `Error` for a line that ends inside quotes or after a backslash, or that holds a NUL byte.
std::vector<std::string> SplitShellLine(std::string_view line);

/// The part of a line in front of the cursor.
struct ShellLineStart
{
    std::vector<std::string> words; ///< the complete words
    std::string last;               ///< the word at the cursor as far as it has been typed
    bool canComplete = true;        ///< false inside quotes and comments
};
ShellLineStart SplitShellLineStart(std::string_view start);

/// The word as a user would type it, with quotes where it needs them.
std::string QuoteShellWord(std::string_view word);

} // namespace host
