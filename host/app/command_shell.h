#pragma once

namespace CLI
{
class App;
}

namespace host
{

/// Adds `onlinehost shell`: the interactive shell, which also runs scripts. `exitCode` receives the exit code when the
/// command has run.
void AddShellCommand(CLI::App& program, int& exitCode);

} // namespace host
