#include "checks/Stage.h"
#include "onlinehost/SharedObject.h"

#include <algorithm>
#include <filesystem>
#include <unistd.h>

namespace checks
{

using onlinehost::Module;
using onlinehost::SharedObject;

namespace
{

const std::set<std::string> kAgreedExports = {
    "FMDll",
    "WDllGetInfo",
    "WDllGetComponentObject",
    "WDllCreateComponent",
    "WDllCanUnloadNow",
    "CPDllCreateComponent",
    "CPDllCreateComponent2",
    "CPDllCanUnloadNow",
    "GetComponentInterface",
    "FWInitLogger",
    "FWInitLogger2",
    "FWInitExLogger",
    "FWInitExLogger2",
    "FWInitKXLogger",
    "FWInitKXLogger2",
    "FWReleaseLogger",
    "FWReleaseExLogger",
    "FWReleaseKXLogger",
    "FWReleaseKXLogger2",
    "FWAddLogWriter",
    "FWRemoveLogWriter",
    "TovMalloc",
    "TovFree",
    "TovMemCpy",
    "TovMemMov",
    "TovStrLen",
    "TovStrCmp",
};

bool IsSanitized(const SharedObject& file)
{
    const auto belongsToSanitizer = [](const std::string& name)
    { return name.starts_with("__asan_") || name.starts_with("__tsan_") || name.starts_with("__ubsan_"); };
    return std::any_of(file.undefined.begin(), file.undefined.end(), belongsToSanitizer);
}

} // namespace

CONTRACT_CHECK(ModuleFile, ExportsExactlyTheAgreedFunctions,
               "The dynamic symbol table defines the functions of the external interfaces and nothing else.")
{
    const SharedObject file(check.ModulePath());
    for (const std::string& name : kAgreedExports)
    {
        check.Expect(file.exported.contains(name), name + " is exported");
    }
    for (const std::string& name : file.exported)
    {
        check.Expect(kAgreedExports.contains(name), name + " is among the agreed functions");
    }
}

CONTRACT_CHECK(ModuleFile, NeedsOnlyTheSystemLibraries,
               "The module asks for no library but those of the system and of the compiler.")
{
    const SharedObject file(check.ModulePath());
    if (IsSanitized(file))
    {
        throw CheckLeftOut{"the module is built with a sanitizer, which adds its own libraries"};
    }
    const std::set<std::string> system = {"libc.so.6", "libm.so.6", "libgcc_s.so.1", "libstdc++.so.6"};
    check.Expect(file.needed.contains("libc.so.6"), "libc.so.6 is needed");
    for (const std::string& library : file.needed)
    {
        check.Expect(system.contains(library), library + " is a library of the system");
    }
}

CONTRACT_CHECK(
    ModuleFile, IsBoundAtLoadAndProtectsItsTables,
    "The module is linked so that a missing reference shows when it is loaded, and its tables are read-only.")
{
    const SharedObject file(check.ModulePath());
    check.Expect(file.isBoundAtLoad, "-z now");
    check.Expect(file.hasRelro, "-z relro");
}

CONTRACT_CHECK(ModuleFile, LeavesTheProcessWhenItIsClosed, "After dlclose the module is not mapped any more.")
{
    if (SharedObject(check.ModulePath()).staysLoaded)
    {
        throw CheckLeftOut{"the module is linked to stay, so that a leak checker can name its functions"};
    }
    {
        Stage stage(check, Scene::LoggedIn);
        check.Expect(Module::IsLoaded(check.ModulePath()), "the module is mapped while it is used");
    }
    check.Expect(!Module::IsLoaded(check.ModulePath()), "the module is gone after dlclose");
}

CONTRACT_CHECK(ModuleFile, TwoCopiesInOneProcessAreIndependent,
               "Each loaded file counts its own objects and has its own logger.")
{
    const std::filesystem::path copy =
        std::filesystem::temp_directory_path() / ("module-copy-" + std::to_string(getpid()) + ".so");
    std::filesystem::copy_file(check.ModulePath(), copy, std::filesystem::copy_options::overwrite_existing);
    CheckContext other(copy);
    {
        const Stage first(check, Scene::Created);
        Stage second(other, Scene::Loaded);
        std::filesystem::remove(copy);
        check.ExpectEqual(1, first.module.Find<decltype(&CPDllCanUnloadNow)>("CPDllCanUnloadNow")(),
                          "live objects of the first");
        check.ExpectEqual(0, second.module.Find<decltype(&CPDllCanUnloadNow)>("CPDllCanUnloadNow")(),
                          "live objects of the copy");
        second.manager = second.CreateComponent();
        check.ExpectEqual(1, second.journal.Count("center.OpenLogger("), "loggers that the copy opened for itself");
    }
    for (const Failure& failure : other.TakeFailures())
    {
        check.Fail(failure.text, failure.where);
    }
}

} // namespace checks
