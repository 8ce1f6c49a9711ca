#pragma once

#include "common/frameworksdk/frameworkcomponent.h"

#include <stdexcept>
#include <string>

namespace checks
{

/// One loading of a module file, looked into only through its exported functions.
class ModuleFile
{
public:
    /// Loads the file and reads its function table. std::runtime_error, with the reason, when that fails.
    explicit ModuleFile(const std::string& path);
    ~ModuleFile();
    ModuleFile(const ModuleFile&) = delete;
    ModuleFile& operator=(const ModuleFile&) = delete;

    /// An exported function by its name: Find<decltype(&FWInitLogger)>("FWInitLogger").
    template <typename Function>
    Function Find(const char* name) const
    {
        return reinterpret_cast<Function>(FindAddress(name));
    }

    const FMDllTable& Functions() const
    {
        return m_functions;
    }

    /// Forgets the loading; the destructor does it otherwise.
    void Close();

    /// Whether the file is mapped into this process, whoever loaded it.
    static bool IsLoaded(const std::string& path);

private:
    void* FindAddress(const char* name) const;

    void* m_handle;
    FMDllTable m_functions{};
};

} // namespace checks
