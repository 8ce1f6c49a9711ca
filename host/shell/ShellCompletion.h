#pragma once

#include "host/shell/ShellCommand.h"

#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace host
{

/// The values of a kind that are known at the moment and begin with `start`.
using ShellLookup = std::function<std::vector<std::string>(ShellKind kind, std::string_view start)>;

/// What the word at the end of `lineStart` may become, sorted. A candidate that ends with '=' wants a value next.
std::vector<std::string> CompleteShellLine(const ShellTable& table, std::string_view lineStart,
                                           const ShellLookup& lookup);

} // namespace host
