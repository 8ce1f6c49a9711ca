#include "checks/StateDriver.h"

#include <gtest/gtest.h>

#include <fstream>
#include <sstream>

namespace checks
{

namespace
{

std::string ReadPage()
{
    std::ifstream file(STATES_PAGE);
    std::ostringstream text;
    text << file.rdbuf();
    return text.str();
}

/// A page with one machine: a switch.
std::string SwitchPage(const std::string& rows)
{
    return "# Page\n\n## A switch\n\n| Variable | Values | Meaning |\n|---|---|---|\n| lamp | off, on | |\n"
           "| fuse | good, blown | |\n\n"
           "| Event | State | Calls | Notifications | Next state | Result |\n|---|---|---|---|---|---|\n" +
           rows;
}

StateMachine Switch(const std::string& rows)
{
    return ReadStateTables(SwitchPage(rows)).at(0);
}

std::string ErrorOf(const std::string& rows)
{
    try
    {
        Switch(rows).Step({"off", "good"}, "Press");
    }
    catch (const StateTableError& error)
    {
        return error.what();
    }
    return "no error";
}

} // namespace

TEST(StateTable, TheModuleDoesWhatThePageSays)
{
    CheckContext check(STATES_MODULE);
    try
    {
        CheckStateTables(check, ReadPage());
    }
    catch (const CheckEnded&)
    {
        // The context has the failure that ended the check.
    }
    for (const Failure& failure : check.TakeFailures())
    {
        ADD_FAILURE_AT(STATES_PAGE, 1) << failure.text;
    }
}

TEST(StateTable, ARowAppliesWhenItsConditionHolds)
{
    const StateMachine machine = Switch("| `Press` | off, good | `Light` | `OnLit(1)`, `OnHum()` | on | true |\n"
                                        "| `Press` | on | — | — | off | — |\n"
                                        "| `Press` | off, blown | — | — | — | false |\n");
    EXPECT_EQ((StateValues{"off", "good"}), machine.Initial());
    const StateStep lit = machine.Step({"off", "good"}, "Press");
    EXPECT_EQ(std::vector<std::string>{"Light"}, lit.calls);
    EXPECT_EQ((std::vector<std::string>{"OnLit(1)", "OnHum()"}), lit.notifications);
    EXPECT_EQ((StateValues{"on", "good"}), lit.next);
    EXPECT_EQ("true", lit.result);
    EXPECT_EQ((StateValues{"off", "blown"}), machine.Step({"on", "blown"}, "Press").next);
    EXPECT_EQ("false", machine.Step({"off", "blown"}, "Press").result);
}

TEST(StateTable, ValuesOfOneVariableAreAlternatives)
{
    const StateMachine machine = Switch("| `Press` | off, on, good | — | — | blown | — |\n"
                                        "| `Press` | blown | — | — | ends | — |\n");
    EXPECT_EQ((StateValues{"on", "blown"}), machine.Step({"on", "good"}, "Press").next);
    EXPECT_TRUE(machine.Step({"off", "blown"}, "Press").ends);
}

TEST(StateTable, AnAlternativeWithoutAnOperationTakesTheOneBefore)
{
    const StateMachine machine = Switch("| `Press`; twice; `Pull` hard | any | — | — | on | — |\n");
    EXPECT_EQ((std::vector<std::string>{"Press", "Press twice", "Pull hard"}), machine.Events());
}

TEST(StateTable, EveryTableThatNamesTheEventContributesInOrder)
{
    const StateMachine machine = Switch("| `Press` | any | — | `OnFirst()` | on | — |\n\n"
                                        "| Event | State | Calls | Notifications | Next state | Result |\n"
                                        "|---|---|---|---|---|---|\n"
                                        "| `Press` | any | `Call` | `OnSecond()` | blown | 1 |\n");
    const StateStep step = machine.Step({"off", "good"}, "Press");
    EXPECT_EQ((std::vector<std::string>{"OnFirst()", "OnSecond()"}), step.notifications);
    EXPECT_EQ((StateValues{"on", "blown"}), step.next);
    EXPECT_EQ("1", step.result);
    EXPECT_EQ(2U, step.lines.size());
}

TEST(StateTable, ANextValueThatHoldsBeforeIsNotNew)
{
    const StateMachine machine = Switch("| `Press` | any | — | — | on, good | — |\n");
    const std::set<std::pair<int, std::string>> all{{12, "on"}, {12, "good"}};
    EXPECT_EQ(all, machine.NextValues());
    EXPECT_EQ(all, machine.Step({"off", "blown"}, "Press").newValues);
    EXPECT_EQ((std::set<std::pair<int, std::string>>{{12, "on"}}), machine.Step({"off", "good"}, "Press").newValues);
}

TEST(StateTable, AMissingRowIsAnError)
{
    EXPECT_EQ("A switch: a table names Press and has no row for it in the state off, good",
              ErrorOf("| `Press` | on | — | — | — | — |\n"));
    EXPECT_EQ("A switch: no table names Press", ErrorOf("| `Pull` | any | — | — | — | — |\n"));
}

TEST(StateTable, TwoRowsForOneStateAreAnError)
{
    EXPECT_EQ("line 13: this row and line 12 both say what Press does in the state off, good",
              ErrorOf("| `Press` | off | — | — | — | — |\n| `Press` | good | — | — | — | — |\n"));
}

TEST(StateTable, AMalformedRowIsAnErrorWithItsLine)
{
    EXPECT_EQ("line 12: no variable of \"A switch\" has the value \"lit\"",
              ErrorOf("| `Press` | lit | — | — | — | — |\n"));
    EXPECT_EQ("line 12: the row has 5 cells", ErrorOf("| `Press` | any | — | — | — |\n"));
    EXPECT_EQ("line 12: expected names in backticks or \"—\", found \"Light\"",
              ErrorOf("| `Press` | any | Light | — | — | — |\n"));
    EXPECT_EQ("line 12: two next values of one variable", ErrorOf("| `Press` | any | — | — | on, off | — |\n"));
    EXPECT_THROW(ReadStateTables("## A\n\n| Event | State |\n|---|---|\n"), StateTableError);
    EXPECT_THROW(ReadStateTables("| Variable | Values | Meaning |\n"), StateTableError);
}

} // namespace checks
