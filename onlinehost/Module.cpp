#include "onlinehost/Module.h"

#include "onlinehost/Error.h"
#include "onlinehost/Text.h"

#include <dlfcn.h>

namespace onlinehost
{

namespace
{

std::string CodeText(HRESULT code)
{
    return HexText(static_cast<uint32_t>(code));
}

std::optional<GUID> Copy(const GUID* id)
{
    return id != nullptr ? std::optional(*id) : std::nullopt;
}

FMDllTable AskForTable(LPFNFMDll entry)
{
    FMDllTable table{};
    table.m_Size = sizeof(table);
    const HRESULT result = entry(&table);
    if (result < 0)
    {
        throw Error("FMDll refused a table of " + std::to_string(sizeof(table)) + " bytes: " + CodeText(result));
    }
    if (table.m_lpfnGetInfo == nullptr || table.m_lpfnGetComponentObject == nullptr ||
        table.m_lpfnCanUnloadNow == nullptr || table.m_lpfnCreateComponent == nullptr)
    {
        throw Error("FMDll left a function out of its table");
    }
    return table;
}

std::filesystem::path AbsolutePath(const std::filesystem::path& path)
{
    if (path.empty())
    {
        throw Error("the name of the module's file is empty");
    }
    std::error_code error;
    const std::filesystem::path absolute = std::filesystem::absolute(path, error);
    if (error)
    {
        throw Error(Printable(path.string()) + ": " + error.message());
    }
    return absolute;
}

} // namespace

void Module::Unloader::operator()(void* library) const
{
    dlclose(library);
}

Module::Module(const std::filesystem::path& path) : m_path(AbsolutePath(path)), m_file(path)
{
    m_library.reset(dlopen(m_path.c_str(), RTLD_NOW | RTLD_LOCAL));
    if (m_library == nullptr)
    {
        throw Error(Printable(dlerror()));
    }
    try
    {
        // dlsym finds data too, which must not be called.
        if (!m_file.functions.contains("FMDll"))
        {
            throw Error("is not a module: it has no function FMDll");
        }
        m_functions = AskForTable(Find<LPFNFMDll>("FMDll"));
    }
    catch (const Error& error)
    {
        throw Error(Printable(path.string()) + ": " + error.what());
    }
}

Module::~Module()
{
    if (m_library != nullptr && !CanUnload())
    {
        // Another thread may still run the module's code, so it must stay mapped.
        static_cast<void>(m_library.release());
    }
}

Module::Info Module::GetInfo() const
{
    Info info;
    const HRESULT result = m_functions.m_lpfnGetInfo(&info.info1, &info.info2, &info.info3);
    if (result < 0)
    {
        throw Error(Printable(m_path.string()) + ": the module gives no information: " + CodeText(result));
    }
    return info;
}

std::vector<Module::ComponentInfo> Module::GetComponents() const
{
    ComponentObject* rows = nullptr;
    uint32_t count = 0;
    const HRESULT result = m_functions.m_lpfnGetComponentObject(&rows, &count);
    if (result < 0 || (rows == nullptr && count != 0))
    {
        throw Error(Printable(m_path.string()) + ": the module does not list its components: " + CodeText(result));
    }
    std::vector<ComponentInfo> components;
    for (uint32_t i = 0; i < count; ++i)
    {
        const ComponentObject& row = rows[i];
        components.push_back({row.m_Name != nullptr ? row.m_Name : "", Copy(row.m_ClsID), Copy(row.m_CategoryID)});
    }
    return components;
}

void* Module::Create(const CLSID& classId, const IID& interfaceId, IComponentFactory* factory)
{
    if (factory != nullptr)
    {
        factory->AddRef();
    }
    void* component = nullptr;
    const HRESULT result = m_functions.m_lpfnCreateComponent(classId, interfaceId, nullptr, factory, &component);
    if (result >= 0 && component != nullptr)
    {
        return component;
    }
    // After E_NOINTERFACE the component existed, and its destruction has already released the factory.
    if (factory != nullptr && result != E_NOINTERFACE)
    {
        factory->Release();
    }
    throw Error(Printable(m_path.string()) + ": the module did not create " + GuidText(classId) + ": " +
                CodeText(result));
}

bool Module::CanUnload()
{
    return m_functions.m_lpfnCanUnloadNow() == S_OK;
}

void Module::Unload()
{
    m_library.reset();
}

bool Module::IsLoaded(const std::filesystem::path& path)
{
    return std::unique_ptr<void, Unloader>(dlopen(path.c_str(), RTLD_NOW | RTLD_NOLOAD)) != nullptr;
}

void* Module::FindAddress(const char* name) const
{
    void* const address = dlsym(m_library.get(), name);
    if (address == nullptr)
    {
        throw Error(Printable(m_path.string()) + ": the module does not export " + name);
    }
    return address;
}

} // namespace onlinehost
