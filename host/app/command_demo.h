#pragma once

namespace CLI
{
class App;
}

namespace host
{

/// Adds `onlinehost demo`: one whole meeting, told as it happens. `exitCode` receives the result when the command has run.
void AddDemoCommand(CLI::App& program, int& exitCode);

} // namespace host
