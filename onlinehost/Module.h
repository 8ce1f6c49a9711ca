#pragma once

#include "common/frameworksdk/frameworkcomponent.h"

#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace onlinehost
{

/// A module file, loaded. Knows nothing of what the components do.
///
/// All operations belong to the control thread of the host. Objects of the module must be gone before it is destroyed: a
/// module that says that some still live stays loaded for the rest of the process.
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

    /// Loads the file at `path` and asks it for its entry functions. `Error` says why that is not possible.
    explicit Module(const std::filesystem::path& path);
    ~Module();
    Module(const Module&) = delete;
    Module& operator=(const Module&) = delete;

    const std::filesystem::path& Path() const
    {
        return m_path;
    }

    const std::vector<std::string>& ExportedFunctions() const
    {
        return m_exportedFunctions;
    }

    Info GetInfo() const;
    std::vector<ComponentInfo> GetComponents() const;

    /// Creates a component; the caller holds its only reference. The component takes over one reference of `factory`,
    /// which is added here; `factory` may be null when the component does without. `Error` with the module's code.
    void* Create(const CLSID& classId, const IID& interfaceId, IComponentFactory* factory);

    /// Whether no object of the module lives. Asking detaches the module from its log until the next creation.
    bool CanUnload();

private:
    struct Unloader
    {
        void operator()(void* library) const;
    };

    std::filesystem::path m_path;
    std::vector<std::string> m_exportedFunctions;
    std::unique_ptr<void, Unloader> m_library;
    FMDllTable m_table{};
};

} // namespace onlinehost
