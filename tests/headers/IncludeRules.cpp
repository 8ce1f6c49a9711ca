#include "tests/headers/IncludeRules.h"

#include "tests/support/TemporaryFolder.h"

#include <algorithm>
#include <iterator>
#include <regex>
#include <stdexcept>

namespace
{

namespace fs = std::filesystem;

constexpr std::string_view kHeading = "## Which room may include which\n";
constexpr std::string_view kPublic = " (public)";
constexpr std::string_view kAllAbove = "every room above";

std::vector<std::string> AllMatches(const std::string& text, const std::regex& pattern)
{
    std::vector<std::string> matches;
    for (std::sregex_iterator match(text.begin(), text.end(), pattern), end; match != end; ++match)
    {
        matches.push_back((*match)[1]);
    }
    return matches;
}

std::vector<std::string> Quoted(const std::string& cell)
{
    static const std::regex kQuoted("`([^`]+)`");
    return AllMatches(cell, kQuoted);
}

bool Contains(const std::vector<Room>& rooms, const std::string& name)
{
    return std::any_of(rooms.begin(), rooms.end(), [&name](const Room& room) { return room.name == name; });
}

Room ReadRow(const std::string& nameCell, const std::string& contentCell, const std::string& includeCell,
             const std::vector<Room>& above)
{
    const std::vector<std::string> names = Quoted(nameCell);
    if (names.size() != 1)
    {
        throw std::runtime_error("expected one room in \"" + nameCell + "\"");
    }
    Room room{names.front(), {}, {}};
    if (room.name.ends_with(kPublic))
    {
        const std::string folder = room.name.substr(0, room.name.size() - kPublic.size());
        for (const std::string& file : Quoted(contentCell))
        {
            room.files.insert(folder + "/" + file);
        }
    }
    for (const std::string& name : Quoted(includeCell))
    {
        if (!Contains(above, name))
        {
            throw std::runtime_error("`" + room.name + "` may include `" + name + "`, which does not stand above it");
        }
        room.mayInclude.insert(name);
    }
    if (includeCell.find(kAllAbove) != std::string::npos)
    {
        std::transform(above.begin(), above.end(), std::inserter(room.mayInclude, room.mayInclude.end()),
                       [](const Room& each) { return each.name; });
    }
    return room;
}

/// The index of the room of a file; the number of rooms when it is in no room.
size_t FindRoom(const std::vector<Room>& rooms, const std::string& file)
{
    size_t found = rooms.size();
    for (size_t i = 0; i < rooms.size(); ++i)
    {
        if (rooms[i].files.contains(file))
        {
            return i;
        }
        const bool isLonger = found == rooms.size() || rooms[i].name.size() > rooms[found].name.size();
        if (isLonger && file.starts_with(rooms[i].name + "/"))
        {
            found = i;
        }
    }
    return found;
}

/// Paths of all sources and headers from the root, sorted.
std::vector<std::string> ListSources(const fs::path& root)
{
    std::vector<std::string> files;
    for (auto entry = fs::recursive_directory_iterator(root); entry != fs::recursive_directory_iterator(); ++entry)
    {
        const fs::path& path = entry->path();
        if (entry->is_directory())
        {
            if (path.filename().string().starts_with('.') || path == root / "build" ||
                fs::exists(path / "CMakeCache.txt"))
            {
                entry.disable_recursion_pending();
            }
        }
        else if (path.extension() == ".h" || path.extension() == ".cpp")
        {
            files.push_back(path.lexically_relative(root).string());
        }
    }
    std::sort(files.begin(), files.end());
    return files;
}

} // namespace

std::vector<Room> ReadRooms(std::string_view page)
{
    const size_t heading = page.find(kHeading);
    if (heading == std::string_view::npos)
    {
        throw std::runtime_error("the page has no heading \"" + std::string(kHeading) + "\"");
    }
    std::string_view section = page.substr(heading + kHeading.size());
    section = section.substr(0, section.find("\n## "));
    const std::string text(section);

    static const std::regex kRow(R"(\n\|([^|\n]*`[^|\n]*)\|([^|\n]*)\|([^|\n]*)\|)");
    std::vector<Room> rooms;
    for (std::sregex_iterator row(text.begin(), text.end(), kRow), end; row != end; ++row)
    {
        rooms.push_back(ReadRow((*row)[1], (*row)[2], (*row)[3], rooms));
    }
    if (rooms.empty())
    {
        throw std::runtime_error("the page has no table of rooms");
    }
    return rooms;
}

std::vector<std::string> FindIncludeFaults(const fs::path& root, const std::vector<Room>& rooms)
{
    static const std::regex kInclude("(?:^|\\n)[ \\t]*#[ \\t]*include[ \\t]*\"([^\"\\n]*)\"");

    const std::vector<std::string> files = ListSources(root);
    std::vector<std::string> faults;
    std::set<size_t> roomsInUse;
    for (const std::string& file : files)
    {
        const size_t room = FindRoom(rooms, file);
        if (room == rooms.size())
        {
            faults.push_back(file + " stands in a folder that the table does not list");
            continue;
        }
        roomsInUse.insert(room);
        for (const std::string& included : AllMatches(ReadFile(root / file), kInclude))
        {
            if (!std::binary_search(files.begin(), files.end(), included))
            {
                faults.push_back(file + " includes \"" + included + "\", which is no path from the root");
                continue;
            }
            const size_t other = FindRoom(rooms, included);
            if (other != room && other != rooms.size() && !rooms[room].mayInclude.contains(rooms[other].name))
            {
                faults.push_back(file + " includes \"" + included + "\": `" + rooms[room].name + "` may not include `" +
                                 rooms[other].name + "`");
            }
        }
    }
    for (size_t i = 0; i < rooms.size(); ++i)
    {
        if (!roomsInUse.contains(i))
        {
            faults.push_back("the row `" + rooms[i].name + "` covers no file");
        }
        for (const std::string& file : rooms[i].files)
        {
            if (!std::binary_search(files.begin(), files.end(), file))
            {
                faults.push_back("the row `" + rooms[i].name + "` names " + file + ", which does not exist");
            }
        }
    }
    return faults;
}
