#include "host/shell/ShellCommand.h"

#include "host/console/Wording.h"
#include "host/shell/ShellValues.h"
#include "onlinehost/Error.h"
#include "onlinehost/Text.h"

#include <algorithm>

namespace host
{

using namespace onlinehost;

namespace
{

bool IsPositional(const ShellParameter& parameter)
{
    return parameter.form != ShellForm::Flag && parameter.form != ShellForm::Option;
}

bool IsRest(const ShellParameter& parameter)
{
    return parameter.kind == ShellKind::Text || parameter.kind == ShellKind::Line;
}

bool TakesMany(const ShellParameter& parameter)
{
    return IsRest(parameter) || parameter.form == ShellForm::Some || parameter.form == ShellForm::Any;
}

bool IsNeeded(const ShellParameter& parameter)
{
    return parameter.form == ShellForm::One || parameter.form == ShellForm::Some;
}

std::string Join(const std::vector<std::string>& words, const char* separator)
{
    std::string joined;
    for (const std::string& word : words)
    {
        joined += joined.empty() ? word : separator + word;
    }
    return joined;
}

/// What stands for a parameter's value in a usage line.
std::string Placeholder(const ShellParameter& parameter)
{
    if (!parameter.choices.empty())
    {
        return Join(parameter.choices, "|");
    }
    if (parameter.form != ShellForm::Option)
    {
        return parameter.name;
    }
    switch (parameter.kind)
    {
    case ShellKind::Number:
        return "NUMBER";
    case ShellKind::User:
    case ShellKind::Users:
        return "USER";
    case ShellKind::Duration:
        return "DURATION";
    case ShellKind::Meeting:
        return "MEETING";
    default:
        return "TEXT";
    }
}

void CheckWord(const ShellParameter& parameter, const std::string& word)
{
    switch (parameter.kind)
    {
    case ShellKind::Number:
        if (ParseNumber(word, parameter.name) > parameter.largest)
        {
            throw Error(parameter.name + " \"" + word + "\" is too large: the largest is " +
                        std::to_string(parameter.largest));
        }
        return;
    case ShellKind::User:
        ParseUserId(word);
        return;
    case ShellKind::Users:
        ParseUsers(word);
        return;
    case ShellKind::Terminal:
        ParseTerminal(word);
        return;
    case ShellKind::Received:
    case ShellKind::Sent:
        ParseNumber(word, "invitation id");
        return;
    case ShellKind::Meeting:
        ParseMeeting(word);
        return;
    case ShellKind::Duration:
        ParseDuration(word);
        return;
    default:
        break;
    }
    const auto& choices = parameter.choices;
    if (!choices.empty() && std::find(choices.begin(), choices.end(), word) == choices.end())
    {
        throw Error(parameter.name + " \"" + Printable(word) + "\" is not one of: " + Join(choices, ", "));
    }
}

/// Finds the parameter of one word after the other.
class Walk
{
public:
    explicit Walk(const ShellCommand& command) : m_command(command)
    {
        for (const ShellParameter& parameter : command.parameters)
        {
            if (IsPositional(parameter))
            {
                m_positional.push_back(&parameter);
            }
        }
    }

    /// The word's parameter, null for none; `value` is what remains of the word for it.
    const ShellParameter* Place(const std::string& word, std::string& value)
    {
        value = word;
        if (m_inRest)
        {
            return Current();
        }
        const ShellParameter* const parameter = PlaceOutside(word, value);
        m_inRest = parameter != nullptr && IsRest(*parameter);
        m_outside += m_inRest ? 0 : 1;
        return parameter;
    }

    ShellExpectation Expected() const
    {
        ShellExpectation expected{.restBegin = m_outside};
        if (const ShellParameter* const current = Current())
        {
            expected.parameters.push_back(current);
        }
        for (const ShellParameter& parameter : m_command.parameters)
        {
            if (!m_inRest && !IsPositional(parameter) && !IsUsed(parameter))
            {
                expected.parameters.push_back(&parameter);
            }
        }
        return expected;
    }

    const ShellParameter* Missing() const
    {
        const auto missing = std::find_if(m_positional.begin(), m_positional.end(),
                                          [this](const ShellParameter* parameter)
                                          { return IsNeeded(*parameter) && !IsUsed(*parameter); });
        return missing == m_positional.end() ? nullptr : *missing;
    }

private:
    const ShellParameter* PlaceOutside(const std::string& word, std::string& value)
    {
        if (const ShellParameter* const named = FindNamed(word, value))
        {
            m_used.push_back(named);
            return named;
        }
        const ShellParameter* const parameter = Current();
        if (parameter != nullptr)
        {
            m_used.push_back(parameter);
            m_next += TakesMany(*parameter) ? size_t{0} : 1;
        }
        return parameter;
    }

    const ShellParameter* Current() const
    {
        return m_next < m_positional.size() ? m_positional[m_next] : nullptr;
    }

    bool IsUsed(const ShellParameter& parameter) const
    {
        return std::find(m_used.begin(), m_used.end(), &parameter) != m_used.end();
    }

    const ShellParameter* FindNamed(const std::string& word, std::string& value) const
    {
        for (const ShellParameter& parameter : m_command.parameters)
        {
            if (parameter.form == ShellForm::Flag && word == parameter.name)
            {
                return &parameter;
            }
            const std::string key = parameter.name + "=";
            if (parameter.form == ShellForm::Option && word.starts_with(key))
            {
                value = word.substr(key.size());
                return &parameter;
            }
        }
        return nullptr;
    }

    const ShellCommand& m_command;
    std::vector<const ShellParameter*> m_positional;
    std::vector<const ShellParameter*> m_used;
    size_t m_next = 0;
    bool m_inRest = false;
    std::ptrdiff_t m_outside = 0; ///< words in front of the rest
};

size_t Distance(std::string_view a, std::string_view b)
{
    std::vector<size_t> row(b.size() + 1);
    for (size_t j = 0; j <= b.size(); ++j)
    {
        row[j] = j;
    }
    for (size_t i = 0; i < a.size(); ++i)
    {
        size_t diagonal = row[0]++;
        for (size_t j = 0; j < b.size(); ++j)
        {
            const size_t change = diagonal + (a[i] == b[j] ? 0 : 1);
            diagonal = row[j + 1];
            row[j + 1] = std::min({change, row[j] + 1, row[j + 1] + 1});
        }
    }
    return row.back();
}

constexpr size_t kMostSimilar = 64; ///< no command's name is nearly as long

} // namespace

void ShellArguments::Add(const std::string& name, const std::string& word)
{
    m_words[name].push_back(word);
}

bool ShellArguments::Has(const std::string& name) const
{
    return m_words.contains(name);
}

const std::vector<std::string>& ShellArguments::Words(const std::string& name) const
{
    static const std::vector<std::string> kNone;
    const auto found = m_words.find(name);
    return found == m_words.end() ? kNone : found->second;
}

std::string ShellArguments::Text(const std::string& name, const std::string& fallback) const
{
    return Has(name) ? Join(Words(name), " ") : fallback;
}

uint32_t ShellArguments::Number(const std::string& name, uint32_t fallback) const
{
    return Has(name) ? ParseNumber(Words(name).back(), name) : fallback;
}

std::vector<uint32_t> ShellArguments::Users(const std::string& name) const
{
    std::vector<uint32_t> users;
    for (const std::string& word : Words(name))
    {
        const std::vector<uint32_t> more = ParseUsers(word);
        users.insert(users.end(), more.begin(), more.end());
    }
    return users;
}

GUID ShellArguments::Meeting(const std::string& name) const
{
    return ParseMeeting(Words(name).back());
}

std::chrono::milliseconds ShellArguments::Duration(const std::string& name, std::chrono::milliseconds fallback) const
{
    return Has(name) ? ParseDuration(Words(name).back()) : fallback;
}

std::string ShellUsage(const ShellCommand& command)
{
    std::string usage = command.name;
    for (const ShellParameter& parameter : command.parameters)
    {
        const std::string value = Placeholder(parameter);
        const std::string shown = parameter.form == ShellForm::Option ? parameter.name + "=" + value
                                  : parameter.form == ShellForm::Flag ? parameter.name
                                                                      : value;
        usage += IsNeeded(parameter) ? " " + shown : " [" + shown;
        usage += TakesMany(parameter) ? "..." : "";
        usage += IsNeeded(parameter) ? "" : "]";
    }
    return usage;
}

ShellArguments BindShellWords(const ShellCommand& command, const std::vector<std::string>& words)
{
    Walk walk(command);
    ShellArguments arguments;
    for (const std::string& word : words)
    {
        std::string value;
        const ShellParameter* const parameter = walk.Place(word, value);
        if (parameter == nullptr)
        {
            throw Error("\"" + Printable(word) + "\" is too much");
        }
        if (!TakesMany(*parameter) && arguments.Has(parameter->name))
        {
            throw Error(parameter->name + " is given twice");
        }
        CheckWord(*parameter, value);
        arguments.Add(parameter->name, value);
    }
    if (const ShellParameter* const missing = walk.Missing())
    {
        throw Error(Placeholder(*missing) + " is missing");
    }
    return arguments;
}

ShellExpectation ExpectedAfter(const ShellCommand& command, const std::vector<std::string>& words)
{
    Walk walk(command);
    for (const std::string& word : words)
    {
        std::string value;
        if (walk.Place(word, value) == nullptr)
        {
            return {};
        }
    }
    return walk.Expected();
}

void ShellTable::Add(ShellCommand command)
{
    m_commands.push_back(std::move(command));
}

const ShellCommand* ShellTable::Find(std::string_view name) const
{
    const auto found = std::find_if(m_commands.begin(), m_commands.end(),
                                    [name](const ShellCommand& command) { return command.name == name; });
    return found == m_commands.end() ? nullptr : &*found;
}

const ShellCommand& ShellTable::Get(std::string_view name) const
{
    if (const ShellCommand* const command = Find(name))
    {
        return *command;
    }
    std::string similar;
    for (const ShellCommand& command : m_commands)
    {
        const bool isSimilar = name.size() < kMostSimilar && (Distance(name, command.name) <= 2 ||
                                                              (name.size() > 1 && command.name.starts_with(name)));
        similar += isSimilar ? (similar.empty() ? "" : ", ") + command.name : "";
    }
    throw Error("there is no command \"" + Printable(name.substr(0, kMostSimilar)) + "\"" +
                (similar.empty() ? "; \"help\" lists them" : "; similar are: " + similar));
}

std::string ShellTable::Overview() const
{
    size_t width = 0;
    for (const ShellCommand& command : m_commands)
    {
        width = std::max(width, command.name.size());
    }
    std::string text;
    std::string group;
    for (const ShellCommand& command : m_commands)
    {
        if (command.group != group)
        {
            group = command.group;
            text += group + "\n";
        }
        text += "  " + command.name + std::string(width + 2 - command.name.size(), ' ') + command.summary + "\n";
    }
    return text;
}

std::string ShellTable::Help(const ShellCommand& command)
{
    return "usage: " + ShellUsage(command) + "\n" + command.summary + ".\n" + command.details;
}

} // namespace host
