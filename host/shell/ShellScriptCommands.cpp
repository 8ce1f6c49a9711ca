#include "host/shell/ShellScriptCommands.h"

#include "host/console/Wrap.h"
#include "host/shell/Shell.h"
#include "host/shell/ShellFailure.h"
#include "onlinehost/Text.h"

#include <memory>
#include <utility>

namespace host
{

using namespace onlinehost;

namespace
{

class ScriptCommands
{
public:
    explicit ScriptCommands(Shell& shell) : m_shell(shell) {}

    void Wait(const ShellArguments& arguments)
    {
        const std::string name = arguments.Text("EVENT");
        const bool isOfTerminal = name != kReportEvent && name != kNoticeEvent;
        const std::string source = isOfTerminal ? m_shell.Terminal().Name() : "";
        const auto isWanted = [&](const ShellEvent& event)
        {
            return event.name == name && (!isOfTerminal || event.source == source) &&
                   (!arguments.Has("USER") || Concerns(event, arguments.Number("USER")));
        };
        const auto limit = arguments.Duration("for", m_shell.World().Settings().timeLimit);
        if (!m_shell.AwaitAndTake(isWanted, limit))
        {
            throw ShellFailure(EXIT_FAILED,
                               "timed out after " + std::to_string(limit.count()) + " ms waiting for " + name);
        }
    }

    void Settle(const ShellArguments&)
    {
        m_shell.Settle();
        m_shell.ShowAll();
        m_shell.Forget();
    }

    void Sleep(const ShellArguments& arguments)
    {
        const auto nothing = [](const ShellEvent&) { return false; };
        m_shell.Await(m_shell.Mark(), nothing, arguments.Duration("DURATION", {}));
        m_shell.Forget();
    }

    void Expect(const ShellArguments& arguments)
    {
        const std::string text = arguments.Text("TEXT");
        if (m_shell.SaidBefore().find(text) == std::string::npos)
        {
            throw ShellFailure(EXIT_REFUSED, "the previous command did not say \"" + Printable(text) + "\"");
        }
        m_shell.KeepSaid();
    }

    void Fails(const ShellArguments& arguments)
    {
        try
        {
            m_shell.Execute(arguments.Words("COMMAND"));
        }
        catch (const ShellNestingFailure&)
        {
            throw;
        }
        catch (const ShellFailure& failure)
        {
            if (failure.IsInterruption())
            {
                throw;
            }
            m_shell.Say(std::string("failed as expected: ") + failure.what());
            return;
        }
        throw ShellFailure(EXIT_REFUSED, "the command succeeded, though it was expected to fail");
    }

    void Echo(const ShellArguments& arguments)
    {
        m_shell.Say(Printable(arguments.Text("TEXT")));
    }

    void Help(const ShellArguments& arguments)
    {
        if (!arguments.Has("COMMAND"))
        {
            m_shell.Say(m_shell.Table().Overview(LineWidth(stdout)) + "\"help COMMAND\" describes one.\n");
            return;
        }
        try
        {
            m_shell.Say(ShellTable::Help(m_shell.Table().Get(arguments.Text("COMMAND")), LineWidth(stdout)));
        }
        catch (const Error& error)
        {
            throw ShellFailure(EXIT_USAGE, error.what());
        }
    }

    void Quit(const ShellArguments&)
    {
        m_shell.Quit();
    }

private:
    Shell& m_shell;
};

} // namespace

void AddScriptCommands(Shell& shell)
{
    using Form = ShellForm;
    using Kind = ShellKind;
    const auto commands = std::make_shared<ScriptCommands>(shell);
    const auto add = [&](std::string group, std::string name, std::vector<ShellParameter> parameters,
                         std::string summary, std::string details,
                         void (ScriptCommands::*member)(const ShellArguments&))
    {
        shell.Table().Add(
            {std::move(group), std::move(name), std::move(parameters), std::move(summary), std::move(details),
             [commands, member](const ShellArguments& arguments) { (commands.get()->*member)(arguments); }});
    };
    const std::string scripts = "For scripts";
    const std::string self = "The shell itself";

    add(scripts, "wait",
        {{"EVENT", Form::One, Kind::Word, ShellEventNames()},
         {"USER", Form::Optional, Kind::User},
         {"for", Form::Option, Kind::Duration}},
        "Wait for an event of the current terminal",
        "The wait takes the oldest event since the last settle or sleep that no earlier wait has taken, also one that "
        "has "
        "come already. With USER it takes only an event about that user. report and notice belong to no terminal.\n",
        &ScriptCommands::Wait);
    add(scripts, "settle", {}, "Wait until the platform has done everything that it was asked for, and show all events",
        "It does not wait for the time of a reconnection, or for the time that a colleague takes to answer. A later "
        "wait "
        "takes only events that come after the settle.\n",
        &ScriptCommands::Settle);
    add(scripts, "sleep", {{"DURATION", Form::One, Kind::Duration}}, "Do nothing for a while, and show all events",
        "A later wait takes only events that come after the sleep.\n", &ScriptCommands::Sleep);
    add(scripts, "expect", {{"TEXT", Form::One, Kind::Text}}, "Fail unless the previous command has said this text", "",
        &ScriptCommands::Expect);
    add(scripts, "fails", {{"COMMAND", Form::One, Kind::Line}}, "Run a command that has to fail", "",
        &ScriptCommands::Fails);
    add(scripts, "echo", {{"TEXT", Form::Optional, Kind::Text}}, "Say something", "", &ScriptCommands::Echo);
    add(self, "help", {{"COMMAND", Form::Optional, Kind::Command}}, "List the commands, or tell about one", "",
        &ScriptCommands::Help);
    add(self, "quit", {}, "Leave the shell", "", &ScriptCommands::Quit);
    add(self, "exit", {}, "Leave the shell, as quit does", "", &ScriptCommands::Quit);
}

} // namespace host
