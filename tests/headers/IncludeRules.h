#pragma once

#include <filesystem>
#include <set>
#include <string>
#include <string_view>
#include <vector>

/// One row of the table in docs/house.md. It covers a folder with everything below it, except what a row with a longer
/// path covers; or, as "folder (public)", only the headers that the row names.
struct Room
{
    std::string name;
    std::set<std::string> files; ///< paths of the headers of a "(public)" row
    std::set<std::string> mayInclude;
};

/// Reads the table below the heading "## Which room may include which". Throws std::runtime_error, with the reason, for
/// a page without the table and for a row that allows a room which does not stand above it.
std::vector<Room> ReadRooms(std::string_view page);

/// Reads every `#include "..."` of the tree and returns one line for each fault: a file in no room, an include that is
/// not a path from the root, an include that the table does not allow, a row without a file. Skips hidden folders and
/// folders that CMake builds in.
std::vector<std::string> FindIncludeFaults(const std::filesystem::path& root, const std::vector<Room>& rooms);
