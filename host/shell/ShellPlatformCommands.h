#pragma once

namespace host
{

class Shell;

/// Adds the commands for the simulated environment: colleagues, messages, the monitoring service, faults.
void AddPlatformCommands(Shell& shell);

} // namespace host
