#pragma once

#include "host/shell/ShellCommand.h"

#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace host
{

/// The values of a kind that are known at the moment and begin with `start`. `terminal` is the terminal for which the
/// command on the line would run, as it stands in the line; empty: the current one.
using ShellLookup =
    std::function<std::vector<std::string>(ShellKind kind, std::string_view start, const std::string& terminal)>;

/// The candidates for the word at the end of `lineStart`, sorted. A candidate that ends with '=' needs a value after
/// it.
///
/// Where a value must begin, only values are candidates. When no value is known there is no candidate, because a single
/// option would be filled in as if it were the value.
std::vector<std::string> CompleteShellLine(const ShellTable& table, std::string_view lineStart,
                                           const ShellLookup& lookup);

} // namespace host
