#include "tests/support/Program.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/TerminalProgram.h"

#include <gtest/gtest.h>
#include <regex>
#include <sstream>

namespace
{

constexpr char kFence[] = "```";
constexpr char kCommandLine[] = "$ onlinehost ";

using Lines = std::vector<std::string>;

/// The lines of the page's block whose first line begins so.
Lines Block(const std::string& beginning)
{
    Lines lines;
    std::istringstream stream(ReadFile(SHELL_PAGE));
    bool isInside = false;
    for (std::string line; std::getline(stream, line);)
    {
        isInside = isInside ? line != kFence : line.starts_with(beginning);
        if (isInside)
        {
            lines.push_back(line);
        }
        else if (!lines.empty())
        {
            break;
        }
    }
    return lines;
}

std::string WithoutTime(const std::string& line)
{
    static const std::regex kTime(R"(^\d\d:\d\d:\d\d\.\d\d\d )");
    return std::regex_replace(line, kTime, "TIME ");
}

Lines WithoutTimes(const Lines& lines)
{
    Lines result;
    for (const std::string& line : lines)
    {
        if (!line.empty())
        {
            result.push_back(WithoutTime(line));
        }
    }
    return result;
}

/// The text behind the prompt of a line of the transcript; empty for a line without a prompt.
std::string Typed(const std::string& line)
{
    static const std::regex kPrompt(R"(^(?:onlinehost|\d+@\w+(?: \(offline\))?)> (.*)$)");
    std::smatch found;
    return std::regex_match(line, found, kPrompt) ? found[1].str() : "";
}

Lines Words(const std::string& line)
{
    std::istringstream stream(line);
    return {std::istream_iterator<std::string>(stream), {}};
}

} // namespace

TEST(ShellPage, ItsTranscriptIsTrue)
{
    const Lines transcript = Block(kCommandLine);
    ASSERT_GT(transcript.size(), 10u);
    Lines arguments = Words(transcript.front());
    arguments.erase(arguments.begin(), arguments.begin() + 2);
    arguments.insert(arguments.end(), {"--module", ONLINEMANAGER_MODULE, "--history", ""});
    TerminalProgram shell(arguments, 50, 150);

    for (size_t shown = 1; shown < transcript.size(); ++shown)
    {
        const std::string typed = Typed(transcript[shown]);
        if (typed.empty() && shown + 1 < transcript.size())
        {
            continue;
        }
        // The text above the line that the user types next, or the whole text.
        const bool isEnd = typed.empty();
        const Lines expected(transcript.begin() + 1,
                             transcript.begin() + static_cast<std::ptrdiff_t>(isEnd ? shown + 1 : shown));
        const auto isThere = [&](const Screen& screen)
        {
            const Lines lines = WithoutTimes(screen.Lines());
            return lines.size() == expected.size() + 1 &&
                   std::equal(expected.begin(), expected.end(), lines.begin(),
                              [](const std::string& one, const std::string& other)
                              { return WithoutTime(one) == other; });
        };
        ASSERT_TRUE(shell.See(isThere)) << "before \"" << typed << "\":\n" << shell.Now().Text();
        if (!isEnd)
        {
            shell.Type(typed + kEnter);
        }
    }
}

TEST(ShellPage, ItsScriptSucceeds)
{
    std::string script;
    for (const std::string& line : Block("# Two users meet."))
    {
        script += line + "\n";
    }
    const ProgramResult result = RunHost({"shell", "--module", ONLINEMANAGER_MODULE}, script);
    EXPECT_EQ(result.exitCode, 0) << result.err;
    EXPECT_NE(result.out.find("sees user 7 join the meeting"), std::string::npos) << result.out;
}
