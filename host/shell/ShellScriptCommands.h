#pragma once

namespace host
{

class Shell;

/// Adds the commands for scripts, `help` and `quit`.
void AddScriptCommands(Shell& shell);

} // namespace host
