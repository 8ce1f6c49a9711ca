#include "host/app/OutputFiles.h"

#include "onlinehost/Text.h"

#include <CLI/CLI.hpp>
#include <sys/stat.h>

namespace host
{

using namespace onlinehost;

namespace
{

namespace fs = std::filesystem;

constexpr int kMostLinks = 40; // as many as the system follows

/// The path without symbolic links. Its last parts need not exist.
fs::path Resolve(fs::path path)
{
    std::error_code ignored;
    // `weakly_canonical` follows no link to a file that does not exist yet, but the program would create that file.
    for (int links = 0; links < kMostLinks && fs::is_symlink(fs::symlink_status(path, ignored)); ++links)
    {
        path = path.parent_path() / fs::read_symlink(path, ignored);
    }
    const fs::path resolved = fs::weakly_canonical(fs::absolute(path, ignored), ignored);
    return ignored ? path : resolved;
}

bool IsSameFile(const fs::path& one, const fs::path& other)
{
    struct stat oneStatus
    {
    };
    struct stat otherStatus
    {
    };
    if (stat(one.c_str(), &oneStatus) == 0 && stat(other.c_str(), &otherStatus) == 0)
    {
        return !S_ISCHR(oneStatus.st_mode) && oneStatus.st_dev == otherStatus.st_dev &&
               oneStatus.st_ino == otherStatus.st_ino;
    }
    return Resolve(one) == Resolve(other);
}

} // namespace

void RequireDistinctFiles(std::vector<CommandFile> files)
{
    std::erase_if(files, [](const CommandFile& file) { return file.path.empty(); });
    // The two streams may be one file, so neither counts as an output here.
    files.push_back({"the standard output", "/dev/stdout", false});
    std::error_code ignored;
    if (fs::is_regular_file("/dev/stderr", ignored))
    {
        files.push_back({"the standard error", "/dev/stderr", false});
    }
    for (auto one = files.begin(); one != files.end(); ++one)
    {
        for (auto other = one + 1; other != files.end(); ++other)
        {
            if ((one->isOutput || other->isOutput) && IsSameFile(one->path, other->path))
            {
                throw CLI::ValidationError(one->option + " and " + other->option +
                                           " are the same file: " + Printable(one->path.string()));
            }
        }
    }
}

} // namespace host
