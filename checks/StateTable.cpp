#include "checks/StateTable.h"

#include <algorithm>
#include <sstream>
#include <utility>

namespace checks
{

namespace
{

const std::vector<std::string> kVariableHeader{"Variable", "Values", "Meaning"};
const std::vector<std::string> kRowHeader{"Event", "State", "Calls", "Notifications", "Next state", "Result"};

constexpr const char* kNothing = "—";
constexpr const char* kAny = "any";
constexpr const char* kEnds = "ends";

[[noreturn]] void Refuse(int line, const std::string& reason)
{
    throw StateTableError("line " + std::to_string(line) + ": " + reason);
}

std::string Trimmed(const std::string& text)
{
    const size_t begin = text.find_first_not_of(" \t\r");
    return begin == std::string::npos ? "" : text.substr(begin, text.find_last_not_of(" \t\r") - begin + 1);
}

std::vector<std::string> Split(const std::string& text, char separator)
{
    std::vector<std::string> pieces;
    std::istringstream stream(text);
    for (std::string piece; std::getline(stream, piece, separator);)
    {
        pieces.push_back(Trimmed(piece));
    }
    return pieces;
}

std::string WithoutTicks(std::string text)
{
    std::erase(text, '`');
    return text;
}

/// The texts in backticks.
std::vector<std::string> CodeSpans(const std::string& cell)
{
    std::vector<std::string> spans;
    const std::vector<std::string> pieces = Split(cell, '`');
    for (size_t index = 1; index < pieces.size(); index += 2)
    {
        spans.push_back(pieces[index]);
    }
    return spans;
}

/// "`Login` without a server; without a user" are two events: an alternative without a code span takes the one before.
std::vector<std::string> EventsOf(const std::string& cell)
{
    std::vector<std::string> events;
    std::string operation;
    for (const std::string& alternative : Split(cell, ';'))
    {
        const std::vector<std::string> spans = CodeSpans(alternative);
        if (spans.empty())
        {
            events.push_back(operation);
            events.back().append(" ").append(alternative);
            continue;
        }
        operation = spans.front();
        events.push_back(WithoutTicks(alternative));
    }
    return events;
}

std::vector<std::string> CellsOf(const std::string& line)
{
    std::vector<std::string> cells = Split(line, '|');
    cells.erase(cells.begin()); // the text in front of the first bar
    return cells;
}

template <typename Value>
void Append(std::vector<Value>& to, const std::vector<Value>& from)
{
    to.insert(to.end(), from.begin(), from.end());
}

} // namespace

bool StateRow::Concerns(const std::string& event) const
{
    return std::find(events.begin(), events.end(), event) != events.end();
}

bool StateRow::Holds(const StateValues& state) const
{
    return std::all_of(when.begin(), when.end(),
                       [&state](const auto& condition) { return condition.second.contains(state[condition.first]); });
}

StateValues StateMachine::Initial() const
{
    StateValues state;
    for (const Variable& variable : m_variables)
    {
        state.push_back(variable.values.front());
    }
    return state;
}

std::vector<std::string> StateMachine::Events() const
{
    std::vector<std::string> events;
    for (const Table& table : m_tables)
    {
        for (const StateRow& row : table.rows)
        {
            for (const std::string& event : row.events)
            {
                if (std::find(events.begin(), events.end(), event) == events.end())
                {
                    events.push_back(event);
                }
            }
        }
    }
    return events;
}

StateStep StateMachine::Step(const StateValues& state, const std::string& event) const
{
    StateStep step;
    step.next = state;
    for (const Table& table : m_tables)
    {
        const StateRow* chosen = nullptr;
        bool isNamed = false;
        for (const StateRow& row : table.rows)
        {
            if (!row.Concerns(event))
            {
                continue;
            }
            isNamed = true;
            if (!row.Holds(state))
            {
                continue;
            }
            if (chosen != nullptr)
            {
                Refuse(row.line, "this row and line " + std::to_string(chosen->line) + " both say what " + event +
                                     " does in the state " + TextOf(state));
            }
            chosen = &row;
        }
        if (chosen != nullptr)
        {
            Append(step.calls, chosen->calls);
            Append(step.notifications, chosen->notifications);
            step.result += chosen->result;
            step.ends |= chosen->ends;
            step.lines.push_back(chosen->line);
            for (const auto& [variable, value] : chosen->next)
            {
                if (std::exchange(step.next[variable], value) != value)
                {
                    step.newValues.emplace(chosen->line, value);
                }
            }
        }
        else if (isNamed)
        {
            throw StateTableError(m_title + ": a table names " + event + " and has no row for it in the state " +
                                  TextOf(state));
        }
    }
    if (step.lines.empty())
    {
        throw StateTableError(m_title + ": no table names " + event);
    }
    return step;
}

std::set<int> StateMachine::Lines() const
{
    std::set<int> lines;
    for (const Table& table : m_tables)
    {
        for (const StateRow& row : table.rows)
        {
            lines.insert(row.line);
        }
    }
    return lines;
}

std::set<std::pair<int, std::string>> StateMachine::NextValues() const
{
    std::set<std::pair<int, std::string>> values;
    for (const Table& table : m_tables)
    {
        for (const StateRow& row : table.rows)
        {
            for (const auto& [variable, value] : row.next)
            {
                values.emplace(row.line, value);
            }
        }
    }
    return values;
}

std::string StateMachine::TextOf(const StateValues& state) const
{
    std::string text;
    for (const std::string& value : state)
    {
        text += (text.empty() ? "" : ", ") + value;
    }
    return text;
}

size_t StateMachine::VariableOf(const std::string& value, int line) const
{
    for (size_t index = 0; index < m_variables.size(); ++index)
    {
        const std::vector<std::string>& values = m_variables[index].values;
        if (std::find(values.begin(), values.end(), value) != values.end())
        {
            return index;
        }
    }
    Refuse(line, "no variable of \"" + m_title + "\" has the value \"" + value + "\"");
}

/// Reads a page line by line.
class StatePageReader
{
public:
    void Read(const std::string& text)
    {
        ++m_line;
        if (text.starts_with("## "))
        {
            m_machines.emplace_back(Trimmed(text.substr(3)));
        }
        if (!text.starts_with('|'))
        {
            m_table = TableKind::None;
            return;
        }
        const std::vector<std::string> cells = CellsOf(text);
        if (m_table == TableKind::None)
        {
            Begin(cells);
        }
        else if (!cells.front().starts_with("---"))
        {
            ReadCells(cells);
        }
    }

    /// The sections that have tables.
    std::vector<StateMachine> Take()
    {
        std::erase_if(m_machines, [](const StateMachine& machine) { return machine.m_variables.empty(); });
        return std::move(m_machines);
    }

private:
    enum class TableKind
    {
        None,
        Variables,
        Rows,
    };

    void Begin(const std::vector<std::string>& header)
    {
        if (m_machines.empty())
        {
            Refuse(m_line, "a table stands before the first section");
        }
        if (header == kVariableHeader)
        {
            m_table = TableKind::Variables;
        }
        else if (header == kRowHeader)
        {
            m_table = TableKind::Rows;
            m_machines.back().m_tables.emplace_back();
        }
        else
        {
            Refuse(m_line, "a table's header is neither that of variables nor that of events");
        }
    }

    void ReadCells(const std::vector<std::string>& cells)
    {
        const bool isRow = m_table == TableKind::Rows;
        if (cells.size() != (isRow ? kRowHeader : kVariableHeader).size())
        {
            Refuse(m_line, "the row has " + std::to_string(cells.size()) + " cells");
        }
        StateMachine& machine = m_machines.back();
        if (isRow)
        {
            machine.m_tables.back().rows.push_back(RowOf(machine, cells));
        }
        else
        {
            machine.m_variables.push_back({cells[0], Split(cells[1], ',')});
        }
    }

    StateRow RowOf(const StateMachine& machine, const std::vector<std::string>& cells) const
    {
        StateRow row;
        row.line = m_line;
        row.events = EventsOf(cells[0]);
        if (cells[1] != kAny)
        {
            for (const std::string& value : Split(cells[1], ','))
            {
                row.when[machine.VariableOf(value, m_line)].insert(value);
            }
        }
        row.calls = ListOf(cells[2]);
        row.notifications = ListOf(cells[3]);
        row.ends = cells[4] == kEnds;
        if (!row.ends && cells[4] != kNothing)
        {
            for (const std::string& value : Split(cells[4], ','))
            {
                if (!row.next.emplace(machine.VariableOf(value, m_line), value).second)
                {
                    Refuse(m_line, "two next values of one variable");
                }
            }
        }
        if (cells[5] != kNothing)
        {
            row.result = WithoutTicks(cells[5]);
        }
        return row;
    }

    /// A list of code spans, or nothing.
    std::vector<std::string> ListOf(const std::string& cell) const
    {
        std::vector<std::string> spans = CodeSpans(cell);
        if (spans.empty() != (cell == kNothing))
        {
            Refuse(m_line, "expected names in backticks or \"—\", found \"" + cell + "\"");
        }
        return spans;
    }

    int m_line = 0;
    TableKind m_table = TableKind::None;
    std::vector<StateMachine> m_machines;
};

std::vector<StateMachine> ReadStateTables(const std::string& markdown)
{
    StatePageReader reader;
    std::istringstream stream(markdown);
    for (std::string line; std::getline(stream, line);)
    {
        reader.Read(line);
    }
    return reader.Take();
}

} // namespace checks
