#pragma once

namespace CLI
{
class App;
}

namespace host
{

/// Adds `onlinehost demo`, which plays one whole meeting. `exitCode` receives the exit code when the command has run.
void AddDemoCommand(CLI::App& program, int& exitCode);

} // namespace host
