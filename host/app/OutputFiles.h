#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace host
{

/// A file of a command line.
struct CommandFile
{
    std::string option;         ///< the option or argument that names the file: "--log"
    std::filesystem::path path; ///< empty when the option was not given
    bool isOutput = true;
};

/// Throws `CLI::ValidationError`, so that the program ends with `EXIT_USAGE`, when an output is the same file as
/// another output, an input, the standard output or the regular file behind the standard error: two writers would destroy
/// each other's text.
///
/// Files are compared, not names: "./x", a symbolic link and a hard link are the file that they lead to, also when it
/// does not exist yet. Named pipes are files too. Character devices such as /dev/null may be named more than once.
void RequireDistinctFiles(std::vector<CommandFile> files);

} // namespace host
