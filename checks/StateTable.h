#pragma once

#include <map>
#include <set>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

/// The state tables of a Markdown page as a model that can be executed: in a state, an event has one expected outcome.
/// The page says how its tables are read. A checker drives the module with the same events and compares; a random walk
/// may choose any event of `Events` in any state.

namespace checks
{

/// The page cannot be read, or has no row or several rows for a state and an event.
class StateTableError : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

/// The value of every variable, in the order of the variables.
using StateValues = std::vector<std::string>;

/// One row of a table.
struct StateRow
{
    int line = 0; ///< in the page
    std::vector<std::string> events;
    std::map<size_t, std::set<std::string>> when; ///< allowed values of variables; any value for the others
    std::vector<std::string> calls;
    std::vector<std::string> notifications;
    std::map<size_t, std::string> next; ///< new values of variables; unchanged for the others
    bool ends = false;                  ///< no state follows
    std::string result;                 ///< empty when the event returns nothing

    bool Concerns(const std::string& event) const;
    bool Holds(const StateValues& state) const;
};

/// What one event does in one state.
struct StateStep
{
    std::vector<std::string> calls;         ///< operations of the platform's objects, in order
    std::vector<std::string> notifications; ///< with arguments, in order, all before the calls
    std::string result;
    StateValues next;
    bool ends = false;
    std::vector<int> lines; ///< of the rows that say so
    std::set<std::pair<int, std::string>>
        newValues; ///< that differ from the state before, with the lines that set them
};

/// One second-level section of the page that has a table of variables.
class StateMachine
{
public:
    explicit StateMachine(std::string title) : m_title(std::move(title)) {}

    const std::string& Title() const
    {
        return m_title;
    }

    /// The first value of every variable.
    StateValues Initial() const;

    /// Every event of the tables, in the order of the page.
    std::vector<std::string> Events() const;

    /// The outcome of the event. Each table that names the event contributes the one row whose condition holds, in the
    /// order of the tables. `StateTableError` when a table that names the event has no such row or several, or when no
    /// table names it.
    StateStep Step(const StateValues& state, const std::string& event) const;

    /// Lines of all rows.
    std::set<int> Lines() const;

    /// Every value in a "Next state" cell, with its line.
    std::set<std::pair<int, std::string>> NextValues() const;

    /// "logged in, user kept", for messages.
    std::string TextOf(const StateValues& state) const;

private:
    friend class StatePageReader;

    struct Variable
    {
        std::string name;
        std::vector<std::string> values;
    };

    struct Table
    {
        std::vector<StateRow> rows;
    };

    /// The variable that has this value. `StateTableError` when there is none.
    size_t VariableOf(const std::string& value, int line) const;

    std::string m_title;
    std::vector<Variable> m_variables;
    std::vector<Table> m_tables;
};

/// The machines of a page, in its order. `StateTableError`, with the line, when a table is malformed.
std::vector<StateMachine> ReadStateTables(const std::string& markdown);

} // namespace checks
