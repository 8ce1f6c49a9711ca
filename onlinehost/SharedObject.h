#pragma once

#include <filesystem>
#include <set>
#include <string>

namespace onlinehost
{

/// What the file of a shared object for Linux x86-64 shows to the dynamic linker, read without running any of it.
struct SharedObject
{
    /// [any] Reads the file. Throws `Error`, with the path and the reason, for a file that cannot be read, that is not
    /// a shared object for x86-64, or that is cut short. A file that was accepted contains all bytes of its segments,
    /// so that mapping it is safe.
    explicit SharedObject(const std::filesystem::path& path);

    std::set<std::string> functions; ///< functions that the file exports
    std::set<std::string> exported;  ///< all symbols that the file exports: functions, data and others
    std::set<std::string> undefined; ///< symbols that another file must define
    std::set<std::string> needed;    ///< names of the libraries that the file asks for
    bool isBoundAtLoad = false;      ///< linked with -z now
    bool hasRelro = false;           ///< linked with -z relro
    bool staysLoaded = false;        ///< linked with -z nodelete
};

} // namespace onlinehost
