#pragma once

#include "host/shell/ShellCommand.h"

/// A few commands that have every kind of parameter.
inline host::ShellTable SampleTable()
{
    using Form = host::ShellForm;
    using Kind = host::ShellKind;
    const auto nothing = [](const host::ShellArguments&) {};
    host::ShellTable table;
    table.Add({"One",
               "login",
               {{"TERMINAL", Form::Optional, Kind::Terminal}, {"force", Form::Flag}, {"server", Form::Option}},
               "Log in",
               "More about it.\n",
               nothing});
    table.Add({"One", "logout", {}, "Log out", "", nothing});
    table.Add(
        {"One",
         "invite",
         {{"USER", Form::Some, Kind::Users}, {"code", Form::Option, Kind::Number, {}, 100}, {"force", Form::Flag}},
         "Invite",
         "",
         nothing});
    table.Add({"One",
               "accept",
               {{"INVITATION", Form::One, Kind::Received}, {"from", Form::Option, Kind::User}},
               "Accept",
               "",
               nothing});
    table.Add({"Two",
               "as",
               {{"TERMINAL", Form::Optional, Kind::Terminal}, {"COMMAND", Form::Any, Kind::Line}},
               "Be another",
               "",
               nothing});
    table.Add({"Two",
               "message",
               {{"USER", Form::One, Kind::User}, {"from", Form::Option, Kind::User}, {"TEXT", Form::One, Kind::Text}},
               "Send",
               "",
               nothing});
    table.Add({"Two",
               "monitor",
               {{"USER", Form::One, Kind::User},
                {"REPORT", Form::One, Kind::Word, {"overview", "detail"}},
                {"answer", Form::Option, Kind::Word, {"yes", "no"}}},
               "Monitor",
               "",
               nothing});
    table.Add({"Two",
               "refuse",
               {{"CODE", Form::One, Kind::Number, {}, 100, {"32", "36"}}, {"USER", Form::Optional, Kind::User}},
               "Refuse",
               "",
               nothing});
    table.Add({"Two", "help", {{"COMMAND", Form::Optional, Kind::Command}}, "Help", "", nothing});
    return table;
}
