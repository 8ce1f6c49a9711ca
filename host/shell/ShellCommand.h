#pragma once

#include "common/wbaselib/wtypes.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace host
{

/// The grammar of the shell: a command has positional parameters, flags that are bare words, and options "name=value";
/// the last parameter may be the rest of the line, which is a text or another command.
///
/// CLI11 reads the program's options, but not the shell's commands. CLI11 has no flags and options without dashes.
/// Other code would first have to find these words and the beginning of a text, which is nearly all of the work here.
/// Completion needs the same for half a line, which CLI11 does not offer. CLI11 also splits a text in brackets: "[1,2]"
/// arrives as "1 2".

/// The form that a word of a command line must have.
enum class ShellKind
{
    Word,     ///< any text, or one of `choices` if there are any
    Number,   ///< decimal, up to `largest`
    User,     ///< a user id
    Users,    ///< a user id, or several as "2..46"
    Terminal, ///< "USER" or "USER@DEVICE"
    Received, ///< the id of an invitation that came in and is open
    Sent,     ///< the id of an invitation that was sent
    Meeting,  ///< a number or a GUID
    Duration, ///< "2s", "500ms", "1m"; seconds without a unit
    File,     ///< the name of a file
    Command,  ///< the name of a command
    Text,     ///< the rest of the line
    Line,     ///< the rest of the line, which is itself a command
};

enum class ShellForm
{
    One,
    Optional,
    Some,   ///< one or more; the last positional parameter
    Any,    ///< none or more; the last positional parameter
    Flag,   ///< the name itself, anywhere
    Option, ///< "name=value", anywhere
};

/// One parameter of a command. Flags and options stand in front of a `Text` or `Line`.
struct ShellParameter
{
    std::string name;
    ShellForm form = ShellForm::One;
    ShellKind kind = ShellKind::Word;
    std::vector<std::string> choices{}; ///< the only words that fit; empty: all words that suit the kind
    uint32_t largest = UINT32_MAX;
    std::vector<std::string> usual{}; ///< words that completion offers; others fit too
};

/// The checked words of a line by parameter. A parameter that the line leaves out has no word.
class ShellArguments
{
public:
    void Add(const std::string& name, const std::string& word);

    bool Has(const std::string& name) const;
    const std::vector<std::string>& Words(const std::string& name) const;

    /// All words of the parameter with a space between each two.
    std::string Text(const std::string& name, const std::string& fallback = {}) const;
    uint32_t Number(const std::string& name, uint32_t fallback = 0) const;
    /// Each user once, in the order of the line.
    std::vector<uint32_t> Users(const std::string& name) const;
    GUID Meeting(const std::string& name) const;
    std::chrono::milliseconds Duration(const std::string& name, std::chrono::milliseconds fallback) const;

private:
    std::map<std::string, std::vector<std::string>> m_words;
};

/// The largest number of commands such as `as` and `fails` in front of another command in a line.
inline constexpr size_t kMostNestedCommands = 16;

/// One command, with everything that the shell knows about it.
struct ShellCommand
{
    std::string group;
    std::string name;
    std::vector<ShellParameter> parameters;
    std::string summary;
    std::string details; ///< further help, wrapped when it is shown; a blank line begins a paragraph; may be empty
    std::function<void(const ShellArguments&)> run;
};

/// "invite USER... [meeting=NUMBER]"
std::string ShellUsage(const ShellCommand& command);

/// Assigns each word to its parameter. Throws `Error`, which names the word that does not fit or the parameter that has
/// no word.
ShellArguments BindShellWords(const ShellCommand& command, std::span<const std::string> words);

/// The words that may follow some first words of a line.
struct ShellExpectation
{
    std::vector<const ShellParameter*> parameters{}; ///< candidates for the next word, positional first
    size_t restBegin = 0;                            ///< the number of words in front of a `Text` or `Line`
    ShellArguments arguments{};                      ///< the words in front of it
};
ShellExpectation ExpectedAfter(const ShellCommand& command, std::span<const std::string> words);

/// The commands by name, in the order in which help shows them.
class ShellTable
{
public:
    void Add(ShellCommand command);

    const std::vector<ShellCommand>& Commands() const
    {
        return m_commands;
    }

    /// The command with this name; null when there is none.
    const ShellCommand* Find(std::string_view name) const;

    /// `Error` with what the user may have meant.
    const ShellCommand& Get(std::string_view name) const;

    /// Every command with its summary, in lines of at most `width` columns where words allow it.
    std::string Overview(size_t width) const;
    static std::string Help(const ShellCommand& command, size_t width);

private:
    std::vector<ShellCommand> m_commands;
};

} // namespace host
