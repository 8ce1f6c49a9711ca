#include "host/shell/ShellCompletion.h"

#include "host/shell/ShellWords.h"

#include <algorithm>
#include <span>

namespace host
{

namespace
{

class Completer
{
public:
    Completer(const ShellTable& table, const ShellLookup& lookup, std::string_view last)
        : m_table(table),
          m_lookup(lookup),
          m_last(last)
    {
    }

    std::vector<std::string> Run(std::span<const std::string> words)
    {
        CompleteLine(words);
        std::sort(m_candidates.begin(), m_candidates.end());
        m_candidates.erase(std::unique(m_candidates.begin(), m_candidates.end()), m_candidates.end());
        return std::move(m_candidates);
    }

private:
    void CompleteLine(std::span<const std::string> words)
    {
        for (size_t depth = 0; depth <= kMostNestedCommands; ++depth)
        {
            if (words.empty())
            {
                OfferCommands();
                return;
            }
            const ShellCommand* const command = m_table.Find(words.front());
            if (command == nullptr)
            {
                return;
            }
            const ShellExpectation expected = ExpectedAfter(*command, words.subspan(1));
            if (expected.parameters.empty() || expected.parameters.front()->kind != ShellKind::Line)
            {
                OfferParameters(expected);
                return;
            }
            NoteTerminal(*command, expected.arguments);
            words = words.subspan(1 + expected.restBegin);
        }
    }

    /// The command inside runs for the terminal that the command around it names.
    void NoteTerminal(const ShellCommand& command, const ShellArguments& arguments)
    {
        for (const ShellParameter& parameter : command.parameters)
        {
            if (parameter.kind == ShellKind::Terminal)
            {
                m_terminal = arguments.Text(parameter.name, m_terminal);
            }
        }
    }

    void OfferParameters(const ShellExpectation& expected)
    {
        for (const ShellParameter* parameter : expected.parameters)
        {
            OfferParameter(*parameter, expected.arguments);
            if (m_last.empty() && MustComeNext(*parameter, expected.arguments))
            {
                return;
            }
        }
    }

    /// Options may still stand in front of a text.
    static bool MustComeNext(const ShellParameter& parameter, const ShellArguments& arguments)
    {
        return parameter.kind != ShellKind::Text &&
               (parameter.form == ShellForm::One ||
                (parameter.form == ShellForm::Some && !arguments.Has(parameter.name)));
    }

    void OfferParameter(const ShellParameter& parameter, const ShellArguments& arguments)
    {
        if (parameter.form == ShellForm::Flag)
        {
            Offer(parameter.name);
            return;
        }
        if (parameter.form != ShellForm::Option)
        {
            OfferValues(parameter, "", m_last, arguments.Words(parameter.name));
            return;
        }
        const std::string key = parameter.name + "=";
        if (m_last.starts_with(key))
        {
            OfferValues(parameter, key, m_last.substr(key.size()), {});
        }
        else
        {
            Offer(key);
        }
    }

    void OfferValues(const ShellParameter& parameter, const std::string& key, std::string_view start,
                     const std::vector<std::string>& given)
    {
        if (parameter.kind == ShellKind::Command)
        {
            OfferCommands();
            return;
        }
        const std::vector<std::string>& fixed = parameter.choices.empty() ? parameter.usual : parameter.choices;
        for (const std::string& value : fixed.empty() ? m_lookup(parameter.kind, start, m_terminal) : fixed)
        {
            if (std::find(given.begin(), given.end(), value) == given.end())
            {
                Offer(key + value);
            }
        }
    }

    void OfferCommands()
    {
        for (const ShellCommand& command : m_table.Commands())
        {
            Offer(command.name);
        }
    }

    void Offer(const std::string& candidate)
    {
        if (candidate.starts_with(m_last))
        {
            m_candidates.push_back(QuoteShellWord(candidate));
        }
    }

    const ShellTable& m_table;
    const ShellLookup& m_lookup;
    const std::string_view m_last;
    std::string m_terminal; ///< the terminal for which the innermost command runs; empty: the current one
    std::vector<std::string> m_candidates;
};

} // namespace

std::vector<std::string> CompleteShellLine(const ShellTable& table, std::string_view lineStart,
                                           const ShellLookup& lookup)
{
    const ShellLineStart start = SplitShellLineStart(lineStart);
    return start.canComplete ? Completer(table, lookup, start.last).Run(start.words) : std::vector<std::string>();
}

} // namespace host
