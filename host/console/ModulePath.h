#pragma once

#include <filesystem>
#include <string>

namespace host
{

/// The module's file: `named`, or when that is empty the file beside the program, or where it was built or installed.
/// `Error` lists these places when none of them holds the file.
std::filesystem::path FindModule(const std::string& named);

} // namespace host
