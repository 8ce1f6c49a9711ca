#include "tests/headers/IncludeRules.h"

#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>
#include <stdexcept>

namespace
{

using Faults = std::vector<std::string>;

const std::string kPage = R"(# A page

| Name | Meaning |
|---|---|
| `elsewhere` | a table of another section |

## Which room may include which

| Room | Holds | May include |
|---|---|---|
| `base` | what all need | |
| `module (public)` | `Face.h` | `base` |
| `module` | the rest | `module (public)`, `base` |
| `host/app` | the program | `module (public)` |
| `tests` | tests | every room above |

## Another section

| `later` | rows | `base` |
)";

/// A tree that obeys the page.
class IncludeRules : public testing::Test
{
protected:
    IncludeRules()
    {
        Write("base/Lock.h", "#include <mutex>\n");
        Write("module/Face.h", "#include \"base/Lock.h\"\n");
        Write("module/Inside.h", "#include \"module/Face.h\"\n");
        Write("host/app/main.cpp", "#include \"module/Face.h\"\n");
        Write("tests/unit/Inside_test.cpp", "#include \"module/Inside.h\"\n#include \"base/Lock.h\"\n");
    }

    void Write(const std::string& path, const std::string& content)
    {
        std::filesystem::create_directories((m_folder / path).parent_path());
        m_folder.Write(path, content);
    }

    Faults FaultsOfTree() const
    {
        return FindIncludeFaults(m_folder / "", ReadRooms(kPage));
    }

    const TemporaryFolder m_folder;
};

std::string RefusalOf(const std::string& page)
{
    try
    {
        ReadRooms(page);
        return {};
    }
    catch (const std::runtime_error& error)
    {
        return error.what();
    }
}

} // namespace

TEST(ThisTree, ObeysTheTableOfItsRooms)
{
    const std::filesystem::path root = SOURCE_TREE;
    for (const std::string& fault : FindIncludeFaults(root, ReadRooms(ReadFile(root / "docs/house.md"))))
    {
        ADD_FAILURE() << fault;
    }
}

TEST_F(IncludeRules, ATreeThatObeysThemHasNoFault)
{
    EXPECT_EQ(FaultsOfTree(), Faults());
}

TEST_F(IncludeRules, AnIncludeThatTheTableDoesNotAllowIsAFault)
{
    Write("base/Lock.h", "  #  include  \"host/app/main.cpp\"\n");
    EXPECT_EQ(FaultsOfTree(), Faults{"base/Lock.h includes \"host/app/main.cpp\": `base` may not include `host/app`"});
}

TEST_F(IncludeRules, OnlyThePublicHeadersOfARoomAreOpenToThoseThatMayIncludeThem)
{
    Write("host/app/main.cpp", "#include \"module/Inside.h\"\n");
    Write("module/Face.h", "#include \"module/Inside.h\"\n");
    EXPECT_EQ(FaultsOfTree(),
              (Faults{"host/app/main.cpp includes \"module/Inside.h\": `host/app` may not include `module`",
                      "module/Face.h includes \"module/Inside.h\": `module (public)` may not include `module`"}));
}

TEST_F(IncludeRules, AFolderThatTheTableDoesNotListIsAFault)
{
    Write("host/trace/Trace.h", "");
    EXPECT_EQ(FaultsOfTree(), Faults{"host/trace/Trace.h stands in a folder that the table does not list"});
}

TEST_F(IncludeRules, AnIncludeThatIsNoPathFromTheRootIsAFault)
{
    Write("module/Inside.h", "#include \"Face.h\"\n");
    EXPECT_EQ(FaultsOfTree(), Faults{"module/Inside.h includes \"Face.h\", which is no path from the root"});
}

TEST_F(IncludeRules, ARowWithoutAFileIsAFault)
{
    std::filesystem::remove(m_folder / "host/app/main.cpp");
    std::filesystem::rename(m_folder / "module/Face.h", m_folder / "module/Other.h");
    Write("module/Inside.h", "");
    EXPECT_EQ(FaultsOfTree(), (Faults{"the row `module (public)` covers no file",
                                      "the row `module (public)` names module/Face.h, which does not exist",
                                      "the row `host/app` covers no file"}));
}

TEST_F(IncludeRules, FoldersThatCMakeBuildsInAreSkipped)
{
    Write("out/CMakeCache.txt", "");
    Write("out/generated.cpp", "");
    Write("build/dev/generated.cpp", "");
    Write(".cache/kept.cpp", "");
    EXPECT_EQ(FaultsOfTree(), Faults());
}

TEST_F(IncludeRules, ATableWithACircleIsRefused)
{
    std::string page = kPage;
    const std::string row = "| `base` | what all need | |";
    page.replace(page.find(row), row.size(), "| `base` | what all need | `module` |");
    EXPECT_EQ(RefusalOf(page), "`base` may include `module`, which does not stand above it");
}

TEST_F(IncludeRules, APageWithoutTheTableIsRefused)
{
    EXPECT_NE(RefusalOf("# A page\n"), "");
    EXPECT_NE(RefusalOf("\n## Which room may include which\n\n## Next\n| `base` | | |\n"), "");
}
