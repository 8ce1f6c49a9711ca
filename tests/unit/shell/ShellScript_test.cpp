#include "host/shell/ShellScript.h"
#include "onlinehost/Error.h"
#include "tests/support/TemporaryFolder.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

using host::ShellScript;
using Words = std::vector<std::string>;

namespace
{

class Pipe
{
public:
    Pipe()
    {
        EXPECT_EQ(pipe(m_ends), 0);
    }

    ~Pipe()
    {
        close(m_ends[0]);
        CloseEnd();
    }

    void Write(const std::string& text) const
    {
        EXPECT_EQ(write(m_ends[1], text.data(), text.size()), static_cast<ssize_t>(text.size()));
    }

    void CloseEnd()
    {
        if (m_ends[1] >= 0)
        {
            close(m_ends[1]);
        }
        m_ends[1] = -1;
    }

    int Descriptor() const
    {
        return m_ends[0];
    }

private:
    int m_ends[2]{-1, -1};
};

/// The message of the error; empty when there was none.
template <typename Call>
std::string Refusal(Call call)
{
    try
    {
        call();
        return {};
    }
    catch (const onlinehost::Error& error)
    {
        return error.what();
    }
}

/// Every line, each with its place.
Words ReadAll(ShellScript& script)
{
    Words lines;
    do
    {
        while (const std::optional<std::string> line = script.TakeLine())
        {
            lines.push_back(script.Place() + " " + *line);
        }
    } while (script.Read());
    return lines;
}

} // namespace

TEST(ShellScript, ReadsLinesAndCountsThem)
{
    Pipe pipe;
    pipe.Write("one\n\ntwo\r\nthree");
    pipe.CloseEnd();
    ShellScript script(pipe.Descriptor(), "s");
    EXPECT_EQ(ReadAll(script), (Words{"s:1 one", "s:2 ", "s:3 two", "s:4 three"}));
}

TEST(ShellScript, NothingIsThereInAnEmptyFile)
{
    Pipe pipe;
    pipe.CloseEnd();
    ShellScript script(pipe.Descriptor(), "s");
    EXPECT_EQ(ReadAll(script), Words{});
}

TEST(ShellScript, ALineMayComeInPieces)
{
    Pipe pipe;
    ShellScript script(pipe.Descriptor(), "s");
    pipe.Write("lo");
    EXPECT_TRUE(script.Read());
    EXPECT_EQ(script.TakeLine(), std::nullopt);
    pipe.Write("gin\nlogout\n");
    EXPECT_TRUE(script.Read());
    EXPECT_EQ(script.TakeLine(), "login");
    EXPECT_EQ(script.TakeLine(), "logout");
    EXPECT_EQ(script.TakeLine(), std::nullopt);
}

TEST(ShellScript, ALineThatIsTooLongIsRefusedBeforeItsEnd)
{
    const TemporaryFolder folder;
    const std::string path = folder.Write("long", "who\n" + std::string(ShellScript::kLongestLine + 1, 'x'));
    const int file = open(path.c_str(), O_RDONLY);
    ShellScript script(file, "s");
    EXPECT_TRUE(script.Read());
    EXPECT_EQ(script.TakeLine(), "who");
    EXPECT_THROW(ReadAll(script), onlinehost::Error);
    EXPECT_EQ(script.Place(), "s:2");
    close(file);
}

TEST(ShellScript, TheLongestLineIsRead)
{
    const TemporaryFolder folder;
    const std::string path = folder.Write("long", std::string(ShellScript::kLongestLine, 'x') + "\nwho\n");
    const int file = open(path.c_str(), O_RDONLY);
    ShellScript script(file, "s");
    const Words lines = ReadAll(script);
    ASSERT_EQ(lines.size(), 2u);
    EXPECT_EQ(lines[0].size(), ShellScript::kLongestLine + 4);
    EXPECT_EQ(lines[1], "s:2 who");
    close(file);
}

TEST(ShellScript, AFileThatCannotBeReadIsNamedWithTheReason)
{
    const int folder = open("/", O_RDONLY);
    ShellScript script(folder, "s\n");
    EXPECT_EQ(Refusal([&] { script.Read(); }), "s\\x0A cannot be read: Is a directory");
    close(folder);
}

TEST(ShellScript, AClosedOrUnreadableDescriptorIsRefusedAtOnce)
{
    const int closed = open("/dev/null", O_RDONLY);
    close(closed);
    EXPECT_EQ(Refusal([&] { ShellScript(closed, "s"); }), "s cannot be read: it is closed");
    const int output = open("/dev/null", O_WRONLY);
    EXPECT_EQ(Refusal([&] { ShellScript(output, "s"); }), "s cannot be read: it is open for writing only");
    close(output);
}

TEST(ShellScript, ALineThatIsTooLongIsAnErrorWithItsPlace)
{
    const TemporaryFolder folder;
    const std::string path = folder.Write("long", "who\n" + std::string(ShellScript::kLongestLine + 1, 'x'));
    const int file = open(path.c_str(), O_RDONLY);
    ShellScript script(file, "s");
    EXPECT_EQ(Refusal([&] { ReadAll(script); }), "s:2: the line is longer than 1048576 bytes");
    close(file);
}
