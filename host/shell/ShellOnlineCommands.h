#pragma once

namespace host
{

class Shell;

/// Adds the commands of a user of the service: login, presence, invitations, meetings, reports.
void AddOnlineCommands(Shell& shell);

} // namespace host
