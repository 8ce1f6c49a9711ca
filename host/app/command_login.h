#pragma once

namespace CLI
{
class App;
}

namespace host
{

/// Adds `onlinehost login`: one login, with everything that comes of it. `exitCode` receives the result when the command has run.
void AddLoginCommand(CLI::App& program, int& exitCode);

} // namespace host
