#include "onlinehost/SharedObject.h"

#include "onlinehost/Error.h"
#include "tests/support/TemporaryFolder.h"

#include <algorithm>
#include <cstring>
#include <elf.h>
#include <gtest/gtest.h>
#include <random>
#include <sys/stat.h>

using onlinehost::SharedObject;

namespace
{

const std::string kGoodModule = TEST_MODULE_FOLDER "/libtest_module_good.so";

/// The reason why a file is refused; empty if it is accepted.
std::string Refusal(const std::filesystem::path& path)
{
    try
    {
        const SharedObject file(path);
        return {};
    }
    catch (const onlinehost::Error& error)
    {
        return error.what();
    }
}

class SharedObjectFile : public testing::Test
{
protected:
    std::string RefusalOf(const std::string& content)
    {
        return Refusal(m_folder.Write("file.so", content));
    }

    template <typename Field>
    std::string RefusalOfModuleWith(size_t offset, Field value)
    {
        std::string content = m_good;
        std::memcpy(content.data() + offset, &value, sizeof(value));
        return RefusalOf(content);
    }

    const TemporaryFolder m_folder;
    const std::string m_good = ReadFile(kGoodModule);
};

void ExpectContains(const std::string& text, const std::string& part)
{
    EXPECT_NE(text.find(part), std::string::npos) << "\"" << text << "\" does not contain \"" << part << "\"";
}

} // namespace

TEST_F(SharedObjectFile, ExportedFunctionsAreThoseThatAreDefinedAndVisible)
{
    const SharedObject file(kGoodModule);
    EXPECT_TRUE(file.functions.contains("FMDll"));
    EXPECT_TRUE(file.functions.contains("SomeFunction"));
    for (const std::string& function : file.functions)
    {
        EXPECT_EQ(function.find("CreateComponent"), std::string::npos) << "is hidden";
        EXPECT_NE(function, "__cxa_finalize") << "is not defined in the file";
    }
}

TEST_F(SharedObjectFile, DataIsExportedButIsNoFunction)
{
    const SharedObject file(TEST_MODULE_FOLDER "/libtest_module_entry_is_data.so");
    EXPECT_TRUE(file.exported.contains("FMDll"));
    EXPECT_FALSE(file.functions.contains("FMDll"));
    EXPECT_TRUE(file.functions.contains("SomeFunction"));
}

TEST_F(SharedObjectFile, ReadsTheSymbolsAndLibrariesThatTheFileNeeds)
{
    // This program is a shared object too.
    const SharedObject file("/proc/self/exe");
    EXPECT_TRUE(file.needed.contains("libc.so.6"));
    EXPECT_TRUE(SharedObject(kGoodModule).undefined.contains("__cxa_finalize"));
    EXPECT_FALSE(SharedObject(kGoodModule).exported.contains("__cxa_finalize"));
}

TEST_F(SharedObjectFile, NamesTheFileAndTheReason)
{
    const std::string missing = m_folder / "missing.so";
    EXPECT_EQ(Refusal(missing), missing + ": no such file");
    ExpectContains(Refusal("/"), "is a directory");
    ExpectContains(RefusalOf(""), "is not a shared object");
    ExpectContains(RefusalOf("\x7f"
                             "EL"),
                   "is not a shared object");
    ExpectContains(RefusalOf("some text that is longer than the head of such a file would be, were it one at all"),
                   "is not a shared object");
}

TEST_F(SharedObjectFile, APipeIsRefusedWithoutWaiting)
{
    const std::filesystem::path pipe = m_folder / "pipe";
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    ExpectContains(Refusal(pipe), "is not a regular file");
    ExpectContains(Refusal("/dev/zero"), "is not a regular file");
}

TEST_F(SharedObjectFile, AHugeFileIsRefusedByItsHeaderBeforeItsSize)
{
    const std::string path = m_folder.Write("file.so", "text");
    std::filesystem::resize_file(path, uintmax_t{2} << 30);
    ExpectContains(Refusal(path), "is not a shared object");

    const std::string large = m_folder.Write("large.so", m_good);
    std::filesystem::resize_file(large, uintmax_t{2} << 30);
    ExpectContains(Refusal(large), "is too large for a module");
}

TEST_F(SharedObjectFile, OtherMachinesAndKindsAreRefused)
{
    ExpectContains(RefusalOfModuleWith<uint8_t>(EI_CLASS, ELFCLASS32), "is not for x86-64");
    ExpectContains(RefusalOfModuleWith<uint8_t>(EI_DATA, ELFDATA2MSB), "is not for x86-64");
    ExpectContains(RefusalOfModuleWith<Elf64_Half>(offsetof(Elf64_Ehdr, e_machine), EM_AARCH64), "is not for x86-64");
    ExpectContains(RefusalOfModuleWith<Elf64_Half>(offsetof(Elf64_Ehdr, e_type), ET_REL), "is not a shared object");
}

TEST_F(SharedObjectFile, TablesThatLieOutsideTheFileAreRefused)
{
    ExpectContains(RefusalOfModuleWith<Elf64_Off>(offsetof(Elf64_Ehdr, e_phoff), UINT64_MAX - 8), "is cut short");
    ExpectContains(RefusalOfModuleWith<Elf64_Off>(offsetof(Elf64_Ehdr, e_shoff), m_good.size()), "is cut short");
    ExpectContains(RefusalOfModuleWith<Elf64_Half>(offsetof(Elf64_Ehdr, e_shentsize), 1), "unexpected size");
    ExpectContains(RefusalOfModuleWith<Elf64_Half>(offsetof(Elf64_Ehdr, e_shnum), 0), "no table of dynamic symbols");
}

TEST_F(SharedObjectFile, APartToLoadThatTheFileDoesNotHaveIsRefused)
{
    Elf64_Ehdr header;
    std::memcpy(&header, m_good.data(), sizeof(header));
    const auto first = static_cast<size_t>(header.e_phoff);
    ExpectContains(RefusalOfModuleWith<Elf64_Xword>(first + offsetof(Elf64_Phdr, p_filesz), m_good.size() + 1),
                   "is cut short");
    ExpectContains(RefusalOfModuleWith<Elf64_Off>(first + offsetof(Elf64_Phdr, p_offset), UINT64_MAX), "is cut short");
}

TEST_F(SharedObjectFile, CutShortAtAnyPlaceIsRefused)
{
    // The section headers are at the end of the file and are needed, so every shorter file is incomplete.
    const size_t step = std::max<size_t>(m_good.size() / 150, 1);
    for (size_t length = 0; length < m_good.size(); length += step)
    {
        ASSERT_NE(RefusalOf(m_good.substr(0, length)), "") << "cut to " << length << " bytes";
    }
}

TEST_F(SharedObjectFile, DamageAnywhereInTheTablesIsSurvived)
{
    Elf64_Ehdr header;
    std::memcpy(&header, m_good.data(), sizeof(header));
    std::mt19937 random(1);
    const auto damage = [&](std::string& content, size_t from, size_t length)
    { content[from + static_cast<size_t>(random()) % length] = static_cast<char>(random()); };

    size_t refused = 0;
    for (int round = 0; round < 300; ++round)
    {
        std::string content = m_good;
        damage(content, 0, sizeof(header) + header.e_phnum * sizeof(Elf64_Phdr) + 4096);
        damage(content, static_cast<size_t>(header.e_shoff), header.e_shnum * sizeof(Elf64_Shdr));
        refused += RefusalOf(content).empty() ? 0u : 1u;
    }
    EXPECT_GT(refused, 0u);
}
