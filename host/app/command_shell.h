#pragma once

namespace CLI
{
class App;
}

namespace host
{

/// Adds `onlinehost shell`: a person's terminal on the service, or the same for a script. `exitCode` receives the result
/// when the command has run.
void AddShellCommand(CLI::App& program, int& exitCode);

} // namespace host
