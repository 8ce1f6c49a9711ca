#include "checks/ModuleFile.h"

#include <dlfcn.h>

namespace checks
{

ModuleFile::ModuleFile(const std::string& path) : m_handle(dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL))
{
    if (m_handle == nullptr)
    {
        throw std::runtime_error(dlerror());
    }
    try
    {
        m_functions.m_Size = sizeof(m_functions);
        if (Find<LPFNFMDll>("FMDll")(&m_functions) != S_OK)
        {
            throw std::runtime_error(path + ": FMDll does not fill its table");
        }
    }
    catch (...)
    {
        Close();
        throw;
    }
}

ModuleFile::~ModuleFile()
{
    Close();
}

void ModuleFile::Close()
{
    if (m_handle != nullptr)
    {
        dlclose(m_handle);
        m_handle = nullptr;
    }
}

bool ModuleFile::IsLoaded(const std::string& path)
{
    void* const handle = dlopen(path.c_str(), RTLD_NOW | RTLD_NOLOAD);
    if (handle == nullptr)
    {
        return false;
    }
    dlclose(handle);
    return true;
}

void* ModuleFile::FindAddress(const char* name) const
{
    void* const address = dlsym(m_handle, name);
    if (address == nullptr)
    {
        throw std::runtime_error(dlerror());
    }
    return address;
}

} // namespace checks
