#pragma once

namespace host
{

/// [any] Whether the process ignores the signal, which it inherits from the program that started it: `nohup` and
/// `trap '' HUP` ask with this that the signal has no effect. Must be asked before the process itself sets an action.
bool IsIgnored(int signal);

} // namespace host
