#include "tests/support/Program.h"
#include "tests/support/TemporaryFolder.h"

#include <dlfcn.h>
#include <gnu/libc-version.h>
#include <gtest/gtest.h>
#include <rapidjson/document.h>

namespace
{

const std::vector<std::string> kExports{"CPDllCanUnloadNow",
                                        "CPDllCreateComponent",
                                        "CPDllCreateComponent2",
                                        "FMDll",
                                        "FWAddLogWriter",
                                        "FWInitExLogger",
                                        "FWInitExLogger2",
                                        "FWInitKXLogger",
                                        "FWInitKXLogger2",
                                        "FWInitLogger",
                                        "FWInitLogger2",
                                        "FWReleaseExLogger",
                                        "FWReleaseKXLogger",
                                        "FWReleaseKXLogger2",
                                        "FWReleaseLogger",
                                        "FWRemoveLogWriter",
                                        "GetComponentInterface",
                                        "TovFree",
                                        "TovMalloc",
                                        "TovMemCpy",
                                        "TovMemMov",
                                        "TovStrCmp",
                                        "TovStrLen",
                                        "WDllCanUnloadNow",
                                        "WDllCreateComponent",
                                        "WDllGetComponentObject",
                                        "WDllGetInfo"};

/// The file is refused with the exit code 3 and one line that says so.
void ExpectRefused(const std::string& path, const std::string& reason)
{
    const ProgramResult result = RunHost({"inspect", path});
    EXPECT_EQ(result.exitCode, 3);
    EXPECT_EQ(result.out, "");
    EXPECT_EQ(result.err, "onlinehost: " + path + ": " + reason + "\n");
}

} // namespace

TEST(Inspect, ReadsComponentIdentifiersInfoValuesAndExports)
{
    const ProgramResult result = RunHost({"inspect", ONLINEMANAGER_MODULE});
    std::string expected = ONLINEMANAGER_MODULE "\n"
                                                "Info values: 0x01000001 1 0\n"
                                                "Components: 1\n"
                                                "  OnlineManager2\n"
                                                "    class    {4022BD11-A92F-4F6D-9031-EEB92E998806}\n"
                                                "    category {36E271A8-9587-4184-A36E-4816B33820AA}\n"
                                                "Exported functions: 27\n";
    for (const std::string& name : kExports)
    {
        expected += "  " + name + "\n";
    }
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(result.out, expected) << "also: no colour when it is not a terminal";
    EXPECT_EQ(result.err, "");
}

TEST(Inspect, WritesTheSameAsJson)
{
    const ProgramResult result = RunHost({"inspect", "--json", ONLINEMANAGER_MODULE});
    EXPECT_EQ(result.exitCode, 0);
    rapidjson::Document json;
    json.Parse(result.out.c_str());
    ASSERT_FALSE(json.HasParseError()) << result.out;
    EXPECT_STREQ(json["path"].GetString(), ONLINEMANAGER_MODULE);
    ASSERT_EQ(json["info"].Size(), 3u);
    EXPECT_EQ(json["info"][0].GetUint(), 0x01000001u);
    EXPECT_EQ(json["info"][1].GetUint(), 1u);
    EXPECT_EQ(json["info"][2].GetUint(), 0u);
    ASSERT_EQ(json["components"].Size(), 1u);
    EXPECT_STREQ(json["components"][0]["name"].GetString(), "OnlineManager2");
    EXPECT_STREQ(json["components"][0]["class"].GetString(), "{4022BD11-A92F-4F6D-9031-EEB92E998806}");
    EXPECT_STREQ(json["components"][0]["category"].GetString(), "{36E271A8-9587-4184-A36E-4816B33820AA}");
    std::vector<std::string> exports;
    for (const auto& name : json["exports"].GetArray())
    {
        exports.emplace_back(name.GetString());
    }
    EXPECT_EQ(exports, kExports);
}

TEST(Inspect, ATextFileIsRefused)
{
    const TemporaryFolder folder;
    ExpectRefused(folder.Write("file.so", "just some text\n"), "is not a shared object");
    ExpectRefused(folder.Write("empty.so", ""), "is not a shared object");
}

TEST(Inspect, ATruncatedModuleIsRefused)
{
    const TemporaryFolder folder;
    const std::string module = ReadFile(ONLINEMANAGER_MODULE);
    ExpectRefused(folder.Write("half.so", module.substr(0, module.size() / 2)),
                  "is cut short: a part lies behind the end of the file");
    ExpectRefused(folder.Write("short.so", module.substr(0, module.size() - 1)),
                  "is cut short: a part lies behind the end of the file");
}

TEST(Inspect, ADirectoryAndAMissingFileAreRefused)
{
    ExpectRefused("/", "is a directory");
    ExpectRefused("/nowhere/libmodule.so", "no such file");
}

TEST(Inspect, ALibraryThatIsNoModuleIsRefused)
{
    Dl_info info{};
    ASSERT_NE(dladdr(reinterpret_cast<const void*>(&gnu_get_libc_version), &info), 0);
    ExpectRefused(info.dli_fname, "is not a module: it has no function FMDll");
}

TEST(Inspect, AModuleOfAnotherMachineIsRefused)
{
    const TemporaryFolder folder;
    std::string module = ReadFile(ONLINEMANAGER_MODULE);
    module[18] = '\xB7'; // the machine in the file's head
    ExpectRefused(folder.Write("other.so", module), "is not for x86-64");
}

TEST(Inspect, AnEmptyFileNameIsRefusedInPlainWords)
{
    const ProgramResult result = RunHost({"inspect", ""});
    EXPECT_EQ(result.exitCode, 3);
    EXPECT_EQ(result.err, "onlinehost: the name of the module's file is empty\n");
}

TEST(Inspect, AFileNameCannotSendControlCharactersToTheTerminal)
{
    const ProgramResult result = RunHost({"inspect", "/nowhere/\x1b[31mred"});
    EXPECT_EQ(result.exitCode, 3);
    EXPECT_EQ(result.err, "onlinehost: /nowhere/\\x1B[31mred: no such file\n");
}
