#pragma once

#include "common/frameworksdk/frameworkcomponent.h"
#include "onlinehost/SharedObject.h"

#include <filesystem>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace onlinehost
{

/// A loaded module file: its information, its components, its exported functions. It knows nothing of what the
/// components do.
///
/// A host makes one for each file. All operations belong to the control thread of the host. The host must destroy the
/// components of the module before it destroys this object. If the module then still reports live objects, the
/// destructor leaves it loaded for the rest of the process, because a thread may still run its code.
class Module
{
public:
    struct Info
    {
        uint32_t info1 = 0;
        uint32_t info2 = 0;
        uint32_t info3 = 0;
    };

    struct ComponentInfo
    {
        std::string name;
        std::optional<GUID> classId; ///< absent in a disabled row
        std::optional<GUID> categoryId;
    };

    /// Loads the file at `path` and asks its `FMDll` for the table of functions. Throws `Error` with the reason if the
    /// file is not a shared object, cannot be loaded, or gives no complete table; the file is unloaded again then.
    explicit Module(const std::filesystem::path& path);
    ~Module();
    Module(const Module&) = delete;
    Module& operator=(const Module&) = delete;

    /// The absolute path of the file.
    const std::filesystem::path& Path() const
    {
        return m_path;
    }

    const std::set<std::string>& ExportedFunctions() const
    {
        return m_file.functions;
    }

    /// The functions that `FMDll` gave; none is null. They are valid while the module is loaded.
    const FMDllTable& Functions() const
    {
        return m_functions;
    }

    /// The exported function with this name: Find<LPFNFMDll>("FMDll"). Valid while the module is loaded. Throws `Error`
    /// if the module does not export the name.
    template <typename Function>
    Function Find(const char* name) const
    {
        return reinterpret_cast<Function>(FindAddress(name));
    }

    /// Throws `Error` if the module refuses.
    Info GetInfo() const;

    /// The rows of the module's table of components. Throws `Error` if the module refuses.
    std::vector<ComponentInfo> GetComponents() const;

    /// Creates a component and returns its interface `interfaceId`; never null. The caller owns the only reference. The
    /// component takes over one reference of `factory`, which this operation adds. `factory` may be null if the
    /// component needs none. Throws `Error` with the module's code if the module creates nothing; `factory` then has as
    /// many references as before.
    void* Create(const CLSID& classId, const IID& interfaceId, IComponentFactory* factory);

    /// Whether no object of the module lives. The module also gives up its logger when it is asked, until it creates
    /// the next component.
    bool CanUnload();

    /// Unloads the module without asking it, even if objects of it live: no thread may run its code any more.
    /// Afterwards only `Path` and `ExportedFunctions` may be called.
    void Unload();

    /// [any] Whether the file at `path` is mapped into this process.
    static bool IsLoaded(const std::filesystem::path& path);

private:
    struct Unloader
    {
        void operator()(void* library) const;
    };

    void* FindAddress(const char* name) const;

    std::filesystem::path m_path;
    SharedObject m_file;
    std::unique_ptr<void, Unloader> m_library;
    FMDllTable m_functions{};
};

} // namespace onlinehost
