#pragma once

namespace host
{

class Shell;

/// Adds the commands for what happens around the person: colleagues, messages, the monitoring service, faults.
void AddPlatformCommands(Shell& shell);

} // namespace host
