#pragma once

namespace CLI
{
class App;
}

namespace host
{

/// Adds `onlinehost login`, which logs in once and out again. `exitCode` receives the exit code when the command has run.
void AddLoginCommand(CLI::App& program, int& exitCode);

} // namespace host
