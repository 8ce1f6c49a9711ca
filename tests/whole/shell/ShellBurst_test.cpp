#include "tests/support/TerminalProgram.h"

#include <algorithm>
#include <gtest/gtest.h>

TEST(ShellBurst, ThousandsOfColleaguesDoNotFillTheScreen)
{
    constexpr size_t kRows = 60;
    TerminalProgram shell({"shell", "--module", ONLINEMANAGER_MODULE, "--history", "", "--user", "7"}, kRows, 120);
    ASSERT_TRUE(shell.SeeLastLine("7@pc>"));
    shell.Type("company 3000\r");
    ASSERT_TRUE(shell.See("users 1001 to 4000 are online")) << shell.Now().Text();
    shell.Type("as 8\rlogin\r");
    ASSERT_TRUE(shell.See("8@pc sees 3002 users online")) << shell.Now().Text();
    const std::vector<std::string> lines = shell.Now().Lines();
    const auto told =
        std::count_if(lines.begin(), lines.end(),
                      [](const std::string& line) { return line.find("come online") != std::string::npos; });
    EXPECT_GE(told, 1);
    EXPECT_LT(told, 30) << shell.Now().Text();
    EXPECT_EQ(shell.Now().Text().find(" 0 users"), std::string::npos);
}
