#include "host/console/ModulePath.h"

#include "onlinehost/Error.h"
#include "onlinehost/Text.h"

namespace host
{

using namespace onlinehost;

namespace
{

constexpr char kFileName[] = "libOnlineManager.so";

} // namespace

std::filesystem::path FindModule(const std::string& named)
{
    if (!named.empty())
    {
        return named;
    }
    const std::filesystem::path program = std::filesystem::read_symlink("/proc/self/exe").parent_path();
    std::string places;
    for (const char* folder : {".", ONLINEHOST_BUILT_MODULE, ONLINEHOST_INSTALLED_MODULE})
    {
        std::filesystem::path candidate = (program / folder / kFileName).lexically_normal();
        if (std::filesystem::exists(candidate))
        {
            return candidate;
        }
        places += "\n  " + Printable(candidate.string());
    }
    throw Error("the module was not found; name it with --module. Looked for:" + places);
}

} // namespace host
