#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace onlinehost
{

/// Reads a shared object for Linux x86-64 without running any of it, and returns the names of the functions that it
/// exports, sorted, each once.
///
/// `Error` says what is wrong with a file that is none: it cannot be read, is of another kind, or is cut short. What has
/// passed here has its loadable parts whole.
std::vector<std::string> ReadExportedFunctions(const std::filesystem::path& path);

} // namespace onlinehost
