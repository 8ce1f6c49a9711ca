#pragma once

namespace bench
{

/// Reads "--memory" (a million users) or "--memory=USERS". False for any other text; throws std::runtime_error for a
/// number of users that is none.
bool ParseMemoryArgument(const char* argument, unsigned* users);

/// Prints how much memory a company of `users` takes in the module, and what the bare records take. Each number comes from
/// a process of its own. 0, or 1 when a measurement failed.
int MeasureMemory(unsigned users);

} // namespace bench
