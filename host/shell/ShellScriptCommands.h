#pragma once

namespace host
{

class Shell;

/// Adds the commands for what scripts need, help, and the way out.
void AddScriptCommands(Shell& shell);

} // namespace host
