#include "onlinehost/Module.h"

#include "onlinehost/ElfFile.h"
#include "onlinehost/Error.h"
#include "onlinehost/Text.h"

#include <algorithm>
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

/// `functions` are those that the file exports: `dlsym` finds data too, which must not be called.
FMDllTable AskForTable(void* library, const std::vector<std::string>& functions)
{
    static constexpr char kEntry[] = "FMDll";

    const bool isFunction = std::binary_search(functions.begin(), functions.end(), kEntry);
    const auto entry = isFunction ? reinterpret_cast<LPFNFMDll>(dlsym(library, kEntry)) : nullptr;
    if (entry == nullptr)
    {
        throw Error("is not a module: it has no function FMDll");
    }
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

} // namespace

void Module::Unloader::operator()(void* library) const
{
    dlclose(library);
}

Module::Module(const std::filesystem::path& path)
    : m_path(std::filesystem::absolute(path)),
      m_exportedFunctions(ReadExportedFunctions(path))
{
    m_library.reset(dlopen(m_path.c_str(), RTLD_NOW | RTLD_LOCAL));
    if (m_library == nullptr)
    {
        throw Error(Printable(dlerror()));
    }
    try
    {
        m_table = AskForTable(m_library.get(), m_exportedFunctions);
    }
    catch (const Error& error)
    {
        throw Error(Printable(path.string()) + ": " + error.what());
    }
}

Module::~Module()
{
    if (!CanUnload())
    {
        // Code that somebody may still run must not be unmapped.
        static_cast<void>(m_library.release());
    }
}

Module::Info Module::GetInfo() const
{
    Info info;
    const HRESULT result = m_table.m_lpfnGetInfo(&info.info1, &info.info2, &info.info3);
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
    const HRESULT result = m_table.m_lpfnGetComponentObject(&rows, &count);
    if (result < 0 || (rows == nullptr && count != 0))
    {
        throw Error(Printable(m_path.string()) + ": the module does not show its components: " + CodeText(result));
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
    const HRESULT result = m_table.m_lpfnCreateComponent(classId, interfaceId, nullptr, factory, &component);
    if (result >= 0 && component != nullptr)
    {
        return component;
    }
    // A component that lacks the interface was made, and gave the reference back when it was destroyed.
    if (factory != nullptr && result != E_NOINTERFACE)
    {
        factory->Release();
    }
    throw Error(Printable(m_path.string()) + ": the module did not create " + GuidText(classId) + ": " +
                CodeText(result));
}

bool Module::CanUnload()
{
    return m_table.m_lpfnCanUnloadNow() == S_OK;
}

} // namespace onlinehost
