#pragma once

#include <set>
#include <string>

namespace checks
{

/// What an ELF file for x86-64 shows to the dynamic linker.
struct SharedObject
{
    /// Reads the file. std::runtime_error, with the reason, when it is not a shared object or is cut short.
    explicit SharedObject(const std::string& path);

    std::set<std::string> exported;  ///< names of the defined dynamic symbols that others can see
    std::set<std::string> needed;    ///< libraries that the file asks for
    std::set<std::string> undefined; ///< names that others must define
    bool isBoundAtLoad = false;      ///< linked with -z now
    bool hasRelro = false;           ///< linked with -z relro
    bool staysLoaded = false;        ///< linked with -z nodelete
};

} // namespace checks
