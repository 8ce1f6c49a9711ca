#pragma once

namespace CLI
{
class App;
}

namespace host
{

/// Adds `onlinehost inspect`: what a module file says of itself. `exitCode` receives the result when the command has run.
void AddInspectCommand(CLI::App& program, int& exitCode);

} // namespace host
