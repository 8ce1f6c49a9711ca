#pragma once

namespace bench
{

/// Reads "--memory" (a million users) or "--memory=USERS". False for any other text; throws std::runtime_error if the
/// number of users is 0 or not a number.
bool ParseMemoryArgument(const char* argument, unsigned* users);

/// Prints how much memory a company of `users` takes in the module, and how much the bare records take. Measures each
/// number in a process of its own. Returns 0; throws std::runtime_error when a measurement fails.
int MeasureMemory(unsigned users);

} // namespace bench
