#include "host/shell/ShellCompletion.h"

#include "host/shell/ShellWords.h"

#include <algorithm>

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

    std::vector<std::string> Run(const std::vector<std::string>& words)
    {
        CompleteCommandLine(words);
        std::sort(m_candidates.begin(), m_candidates.end());
        m_candidates.erase(std::unique(m_candidates.begin(), m_candidates.end()), m_candidates.end());
        return std::move(m_candidates);
    }

private:
    void CompleteCommandLine(const std::vector<std::string>& words)
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
        const std::vector<std::string> arguments(words.begin() + 1, words.end());
        const ShellExpectation expected = ExpectedAfter(*command, arguments);
        for (const ShellParameter* parameter : expected.parameters)
        {
            if (parameter->kind == ShellKind::Line)
            {
                CompleteCommandLine({arguments.begin() + expected.restBegin, arguments.end()});
            }
            else
            {
                OfferParameter(*parameter);
            }
            // A value that has to come, and that nobody has begun, comes before options.
            if (parameter->form == ShellForm::One && m_last.empty() && !m_candidates.empty())
            {
                return;
            }
        }
    }

    void OfferParameter(const ShellParameter& parameter)
    {
        if (parameter.form == ShellForm::Flag)
        {
            Offer(parameter.name);
            return;
        }
        if (parameter.form != ShellForm::Option)
        {
            OfferValues(parameter, "", m_last);
            return;
        }
        const std::string key = parameter.name + "=";
        if (m_last.starts_with(key))
        {
            OfferValues(parameter, key, m_last.substr(key.size()));
        }
        else
        {
            Offer(key);
        }
    }

    void OfferValues(const ShellParameter& parameter, const std::string& key, std::string_view start)
    {
        if (parameter.kind == ShellKind::Command)
        {
            OfferCommands();
            return;
        }
        for (const std::string& choice : parameter.choices)
        {
            Offer(key + choice);
        }
        if (parameter.choices.empty())
        {
            for (const std::string& value : m_lookup(parameter.kind, start))
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
    std::string_view m_last;
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
