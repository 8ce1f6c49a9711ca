#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace host
{

/// How a line of the shell falls into words.
///
/// Words stand between spaces and tabs. Single quotes take everything as it is; inside double quotes `\n`, `\t`, `\xNN` and
/// a backslash before any other character mean what they do in C; outside quotes a backslash takes the next character as it
/// is. A `#` at the beginning of a word begins a comment.

/// `Error` for a line that ends inside quotes or after a backslash, or that holds a NUL byte.
std::vector<std::string> SplitShellLine(std::string_view line);

/// What stands in front of the cursor while a line is being typed.
struct ShellLineStart
{
    std::vector<std::string> words; ///< that are complete
    std::string last;               ///< the word at the cursor as far as it has been typed
    bool canComplete = true;        ///< false inside quotes and comments
};
ShellLineStart SplitShellLineStart(std::string_view start);

/// The word as one would type it.
std::string QuoteShellWord(std::string_view word);

} // namespace host
