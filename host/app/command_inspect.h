#pragma once

namespace CLI
{
class App;
}

namespace host
{

/// Adds `onlinehost inspect`, which shows the contents of a module file. `exitCode` receives the exit code when the command
/// has run.
void AddInspectCommand(CLI::App& program, int& exitCode);

} // namespace host
