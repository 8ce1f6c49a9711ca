#include "onlinehost/Module.h"

#include "onlinehost/Counted.h"
#include "onlinehost/Error.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

using onlinehost::Module;

namespace
{

std::string TestModule(const std::string& kind)
{
    return TEST_MODULE_FOLDER "/libtest_module_" + kind + ".so";
}

std::string LoadFailure(const std::filesystem::path& path)
{
    try
    {
        Module module(path);
        return {};
    }
    catch (const onlinehost::Error& error)
    {
        return error.what();
    }
}

class CountedFactory final : public onlinehost::Counted<IComponentFactory>
{
public:
    HRESULT CreateComponent(const CLSID&, const IID&, IUnknown*, void**) override
    {
        return E_FAIL;
    }
};

} // namespace

TEST(Module, ShowsInfoValuesComponentsAndExports)
{
    const Module module(TestModule("good"));

    const Module::Info info = module.GetInfo();
    EXPECT_EQ(info.info1, 11u);
    EXPECT_EQ(info.info2, 12u);
    EXPECT_EQ(info.info3, 0u);

    const std::vector<Module::ComponentInfo> components = module.GetComponents();
    ASSERT_EQ(components.size(), 2u);
    EXPECT_EQ(components[0].name, "First");
    EXPECT_EQ(components[0].classId->Data1, 1u);
    EXPECT_TRUE(*components[0].categoryId == IID_IUnknown);
    EXPECT_EQ(components[1].name, "");
    EXPECT_FALSE(components[1].classId);
    EXPECT_FALSE(components[1].categoryId);

    EXPECT_TRUE(module.ExportedFunctions().contains("FMDll"));
}

TEST(Module, FilesThatAreNotModulesAreRefusedWithTheReason)
{
    EXPECT_NE(LoadFailure("/nowhere/libmodule.so").find("/nowhere/libmodule.so: no such file"), std::string::npos);
    EXPECT_NE(LoadFailure(TestModule("no_entry")).find("it has no function FMDll"), std::string::npos);
    EXPECT_NE(LoadFailure(TestModule("refuses")).find("FMDll refused a table of 40 bytes: 0x80004005"),
              std::string::npos);
    EXPECT_NE(LoadFailure(TestModule("leaves_out")).find("FMDll left a function out"), std::string::npos);
}

TEST(Module, AnEntryPointThatIsDataIsRefusedAndNotCalled)
{
    EXPECT_NE(LoadFailure(TestModule("entry_is_data")).find("it has no function FMDll"), std::string::npos);
}

TEST(Module, AFileThatTheSystemCannotLoadIsRefusedWithItsReason)
{
    // This program is a complete shared object, but not a library.
    const std::string failure = LoadFailure(std::filesystem::read_symlink("/proc/self/exe"));
    EXPECT_NE(failure.find("cannot dynamically load"), std::string::npos) << failure;
}

TEST(Module, IsUnloadedWithTheObject)
{
    const std::string path = TestModule("good");
    ASSERT_FALSE(Module::IsLoaded(path));
    {
        const Module module(path);
        EXPECT_TRUE(Module::IsLoaded(path));
    }
    EXPECT_FALSE(Module::IsLoaded(path));
}

TEST(Module, ARefusedFileIsUnloaded)
{
    EXPECT_NE(LoadFailure(TestModule("refuses")), "");
    EXPECT_FALSE(Module::IsLoaded(TestModule("refuses")));
}

TEST(Module, StaysLoadedWhileItSaysThatObjectsLive)
{
    const std::string path = TestModule("stays_in_use");
    {
        Module module(path);
        EXPECT_FALSE(module.CanUnload());
    }
    EXPECT_TRUE(Module::IsLoaded(path));
}

TEST(Module, IsUnloadedOnDemandAlsoWhileObjectsLive)
{
    // A copy, because another test leaves the module itself loaded.
    const TemporaryFolder folder;
    const std::filesystem::path path = folder / "module.so";
    std::filesystem::copy_file(TestModule("stays_in_use"), path);
    Module module(path);
    module.Unload();
    EXPECT_FALSE(Module::IsLoaded(path));
}

TEST(Module, FindsExportedFunctionsByName)
{
    const Module module(TestModule("good"));
    EXPECT_EQ(module.Find<int (*)()>("SomeFunction")(), 1);
    EXPECT_THROW(module.Find<int (*)()>("NoSuchFunction"), onlinehost::Error);
}

TEST(Module, CreationLendsOneReferenceOfTheFactory)
{
    Module module(TestModule("good"));
    CountedFactory factory;
    EXPECT_EQ(module.Create(CLSID{}, IID_IUnknown, &factory), &factory);
    EXPECT_EQ(factory.ForeignReferences(), 1u);
}

TEST(Module, FailedCreationLeavesNoReferenceBehind)
{
    Module module(TestModule("creates_nothing"));
    CountedFactory factory;
    EXPECT_THROW(module.Create(CLSID{}, IID_IUnknown, &factory), onlinehost::Error);
    EXPECT_EQ(factory.ForeignReferences(), 0u);
    EXPECT_THROW(module.Create(CLSID{}, IID{}, &factory), onlinehost::Error);
    EXPECT_EQ(factory.ForeignReferences(), 0u);
}
