#include "host/shell/ShellCommand.h"

#include "host/console/Similar.h"
#include "host/console/Wording.h"
#include "host/console/Wrap.h"
#include "host/shell/ShellValues.h"
#include "onlinehost/Error.h"
#include "onlinehost/Text.h"

#include <algorithm>
#include <set>
#include <unordered_set>

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

void CheckNumber(const ShellParameter& parameter, const std::string& word)
{
    if (ParseNumber(word, parameter.name) > parameter.largest)
    {
        throw Error(parameter.name + " \"" + word + "\" is too large: the largest is " +
                    std::to_string(parameter.largest));
    }
}

void CheckChoice(const ShellParameter& parameter, const std::string& word)
{
    const auto& choices = parameter.choices;
    if (!choices.empty() && std::find(choices.begin(), choices.end(), word) == choices.end())
    {
        throw Error(parameter.name + " \"" + Printable(word) + "\" is not one of: " + Join(choices, ", "));
    }
}

/// Checks a word with a function that reads it.
template <auto Parse>
void CheckBy(const ShellParameter&, const std::string& word)
{
    Parse(word);
}

void CheckInvitation(const ShellParameter&, const std::string& word)
{
    ParseNumber(word, "invitation id");
}

struct Kind
{
    ShellKind kind;
    const char* placeholder; ///< placeholder of an option's value in a usage line
    void (*check)(const ShellParameter&, const std::string&);
};

const Kind& KindOf(const ShellParameter& parameter)
{
    static constexpr Kind kKinds[] = {
        {ShellKind::Number, "NUMBER", &CheckNumber},
        {ShellKind::User, "USER", &CheckBy<&ParseUserId>},
        {ShellKind::Users, "USER", &CheckBy<&ParseUsers>},
        {ShellKind::Terminal, "TERMINAL", &CheckBy<&ParseTerminal>},
        {ShellKind::Received, "INVITATION", &CheckInvitation},
        {ShellKind::Sent, "INVITATION", &CheckInvitation},
        {ShellKind::Meeting, "MEETING", &CheckBy<&ParseMeeting>},
        {ShellKind::Duration, "DURATION", &CheckBy<&ParseDuration>},
        {ShellKind::File, "FILE", &CheckChoice},
    };
    static constexpr Kind kOther{ShellKind::Word, "TEXT", &CheckChoice};
    const auto* const found = std::find_if(std::begin(kKinds), std::end(kKinds),
                                           [&](const Kind& known) { return known.kind == parameter.kind; });
    return found == std::end(kKinds) ? kOther : *found;
}

/// The placeholder of a parameter's value in a usage line.
std::string Placeholder(const ShellParameter& parameter)
{
    return !parameter.choices.empty()            ? Join(parameter.choices, "|")
           : parameter.form != ShellForm::Option ? parameter.name
                                                 : KindOf(parameter).placeholder;
}

/// Finds the parameters of words, one after the other.
class Walk
{
public:
    explicit Walk(const ShellCommand& command) : m_command(command) {}

    /// The word's parameter; null when it has none. Sets `value` to the part of the word that is the parameter's value.
    const ShellParameter* Place(const std::string& word, std::string& value)
    {
        value = word;
        const ShellParameter* parameter = m_isInRest ? nullptr : FindNamed(word, value);
        if (parameter == nullptr)
        {
            parameter = NextPositional();
            m_isInRest = parameter != nullptr && IsRest(*parameter);
        }
        m_given.insert(parameter);
        return parameter;
    }

    bool IsInRest() const
    {
        return m_isInRest;
    }

    std::vector<const ShellParameter*> Expected() const
    {
        std::vector<const ShellParameter*> expected;
        if (const ShellParameter* const next = NextPositional())
        {
            expected.push_back(next);
        }
        for (const ShellParameter& parameter : m_command.parameters)
        {
            if (!m_isInRest && !IsPositional(parameter) && !m_given.contains(&parameter))
            {
                expected.push_back(&parameter);
            }
        }
        return expected;
    }

    const ShellParameter* Missing() const
    {
        return Find([this](const ShellParameter& parameter)
                    { return IsNeeded(parameter) && !m_given.contains(&parameter); });
    }

private:
    template <typename Condition>
    const ShellParameter* Find(Condition condition) const
    {
        const auto& parameters = m_command.parameters;
        const auto found = std::find_if(parameters.begin(), parameters.end(), condition);
        return found == parameters.end() ? nullptr : &*found;
    }

    const ShellParameter* NextPositional() const
    {
        return Find([this](const ShellParameter& parameter)
                    { return IsPositional(parameter) && (TakesMany(parameter) || !m_given.contains(&parameter)); });
    }

    const ShellParameter* FindNamed(const std::string& word, std::string& value) const
    {
        const size_t equals = word.find('=');
        const ShellForm form = equals == word.npos ? ShellForm::Flag : ShellForm::Option;
        const ShellParameter* const named =
            Find([&](const ShellParameter& parameter)
                 { return parameter.form == form && parameter.name == std::string_view(word).substr(0, equals); });
        if (named != nullptr && form == ShellForm::Option)
        {
            value = word.substr(equals + 1);
        }
        return named;
    }

    const ShellCommand& m_command;
    std::set<const ShellParameter*> m_given;
    bool m_isInRest = false;
};

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
    std::unordered_set<uint32_t> seen;
    for (const std::string& word : Words(name))
    {
        for (const uint32_t user : ParseUsers(word))
        {
            if (seen.insert(user).second)
            {
                users.push_back(user);
            }
        }
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
        const std::string all = shown + (TakesMany(parameter) ? "..." : "");
        usage += IsNeeded(parameter) ? " " + all : " [" + all + "]";
    }
    return usage;
}

ShellArguments BindShellWords(const ShellCommand& command, std::span<const std::string> words)
{
    Walk walk(command);
    ShellArguments arguments;
    for (const std::string& word : words)
    {
        std::string value;
        const ShellParameter* const parameter = walk.Place(word, value);
        if (parameter == nullptr)
        {
            throw Error("unexpected argument \"" + Printable(word) + "\"");
        }
        if (!TakesMany(*parameter) && arguments.Has(parameter->name))
        {
            throw Error(parameter->name + " is given twice");
        }
        KindOf(*parameter).check(*parameter, value);
        arguments.Add(parameter->name, value);
    }
    if (const ShellParameter* const missing = walk.Missing())
    {
        throw Error(missing->name + " is missing");
    }
    return arguments;
}

ShellExpectation ExpectedAfter(const ShellCommand& command, std::span<const std::string> words)
{
    Walk walk(command);
    ShellExpectation expected;
    for (const std::string& word : words)
    {
        std::string value;
        const ShellParameter* const parameter = walk.Place(word, value);
        if (parameter == nullptr)
        {
            return {};
        }
        if (walk.IsInRest())
        {
            break;
        }
        expected.arguments.Add(parameter->name, value);
        ++expected.restBegin;
    }
    expected.parameters = walk.Expected();
    return expected;
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
    constexpr size_t kMostShown = 64;
    if (const ShellCommand* const command = Find(name))
    {
        return *command;
    }
    std::vector<std::string> names;
    for (const ShellCommand& command : m_commands)
    {
        names.push_back(command.name);
    }
    const std::string similar = SimilarNames(name, names);
    throw Error("there is no command \"" + Printable(name.substr(0, kMostShown)) + "\"" +
                (similar.empty() ? "; \"help\" lists them" : "; similar are: " + similar));
}

std::string ShellTable::Overview(size_t width) const
{
    constexpr size_t kMargin = 2;
    constexpr size_t kNarrow = 24; ///< least width of a summary beside the name, in columns
    size_t longest = 0;
    for (const ShellCommand& command : m_commands)
    {
        longest = std::max(longest, command.name.size());
    }
    const size_t column = kMargin + longest + kMargin;
    std::string text;
    std::string group;
    for (const ShellCommand& command : m_commands)
    {
        if (command.group != group)
        {
            group = command.group;
            text += Wrap("", group, width, 0);
        }
        std::string head = std::string(kMargin, ' ') + command.name;
        if (width >= column + kNarrow)
        {
            head.resize(column, ' ');
            text += Wrap(head, command.summary, width, column);
        }
        else
        {
            text += head + "\n" + Wrap(std::string(2 * kMargin, ' '), command.summary, width, 2 * kMargin);
        }
    }
    return text;
}

std::string ShellTable::Help(const ShellCommand& command, size_t width)
{
    constexpr size_t kUsageIndent = 4;
    std::string text =
        Wrap("", "usage: " + ShellUsage(command), width, kUsageIndent) + Wrap("", command.summary + ".", width, 0);
    std::string_view rest = command.details;
    while (!rest.empty())
    {
        const size_t end = std::min(rest.find("\n\n"), rest.size());
        std::string paragraph(rest.substr(0, end));
        std::replace(paragraph.begin(), paragraph.end(), '\n', ' ');
        text += Wrap("", paragraph, width, 0);
        rest.remove_prefix(std::min(end + 2, rest.size()));
    }
    return text;
}

} // namespace host
