#pragma once

#include <map>
#include <string>
#include <vector>

/// The outcome of a program.
struct ProgramResult
{
    int exitCode = -1; ///< -1 if a signal ended it
    std::string out;
    std::string err;
};

/// Runs `onlinehost` with these arguments and `input` on its standard input, and waits for its end. `out`, when given, is
/// where its standard output goes instead. `environment` adds to the variables of the test.
ProgramResult RunHost(const std::vector<std::string>& arguments, const std::string& input = {},
                      const std::string& out = {}, const std::map<std::string, std::string>& environment = {});
