#include "host/console/Interruption.h"
#include "host/console/ProgressBar.h"
#include "host/story/Narrator.h"
#include "host/story/Story.h"
#include "onlinehost/Error.h"

#include <csignal>
#include <cstdio>
#include <future>
#include <gtest/gtest.h>
#include <regex>
#include <unistd.h>

using host::Console;
using host::ProgressBar;
using host::Story;

namespace
{

/// The text that a story writes to a file.
class StoryTest : public testing::Test
{
protected:
    ~StoryTest() override
    {
        std::fclose(m_file);
    }

    /// The text with equal times.
    std::string Told()
    {
        static const std::regex kTime(R"(\d\d:\d\d:\d\d\.\d\d\d)");
        std::string text(10'000, '\0');
        std::rewind(m_file);
        text.resize(std::fread(text.data(), 1, text.size(), m_file));
        return std::regex_replace(text, kTime, "00:00:00.000");
    }

    std::FILE* const m_file = std::tmpfile();
    const Console m_out{m_file};
    const host::TextNarrator m_narrator{m_out};
    Story m_story{m_narrator};
};

} // namespace

TEST_F(StoryTest, AStoryWritesItsStepsAndCountsThem)
{
    m_story.Scene("A scene",
                  [&]
                  {
                      m_story.Tell("pc", "logs in");
                      m_story.Came("pc", "logged in");
                      m_story.Check(true, "pc", "is online", "is not");
                  });
    EXPECT_EQ(Told(), "\nA scene\n"
                      "00:00:00.000          pc              logs in\n"
                      "00:00:00.000  ok      pc              logged in\n"
                      "00:00:00.000  ok      pc              is online\n");
    EXPECT_EQ(m_story.GetTally().steps, 2u);
    EXPECT_EQ(m_story.GetTally().failed, 0u);
}

TEST_F(StoryTest, AStepThatFailsEndsItsSceneAndNotTheStory)
{
    bool isReached = false;
    m_story.Scene("First",
                  [&]
                  {
                      m_story.Check(false, "pc", "is online", "is not");
                      isReached = true;
                  });
    m_story.Scene("Second", [&] { m_story.Came("pc", "logged in"); });
    EXPECT_FALSE(isReached);
    EXPECT_EQ(Told(), "\nFirst\n"
                      "00:00:00.000  FAILED  pc              expected: is online\n"
                      "                                      came:     is not\n"
                      "                                      the rest of this scene is left out\n"
                      "\nSecond\n"
                      "00:00:00.000  ok      pc              logged in\n");
    EXPECT_EQ(m_story.GetTally().steps, 2u);
    EXPECT_EQ(m_story.GetTally().failed, 1u);
}

TEST_F(StoryTest, AnErrorOfTheHostIsAStepThatFailed)
{
    m_story.Scene("A scene", [] { throw onlinehost::Error("no connection"); });
    EXPECT_NE(Told().find("FAILED  the host        expected: no error\n"), std::string::npos);
    EXPECT_EQ(m_story.GetTally().failed, 1u);
}

TEST_F(StoryTest, ASignalEndsTheStoryAtTheNextStepAndIsNoFailure)
{
    host::Interruption interruption;
    Story story(m_narrator, &interruption);
    bool isPlayed = false;
    story.Scene("First",
                [&]
                {
                    story.Came("pc", "logged in");
                    std::promise<void> interrupted;
                    const host::Interruption::Watch watch(&interruption, [&] { interrupted.set_value(); });
                    kill(getpid(), SIGTERM);
                    interrupted.get_future().wait();
                    story.Missed("pc", "sees user 2", "nothing");
                });
    story.Scene("Second", [&] { isPlayed = true; });
    EXPECT_FALSE(isPlayed);
    EXPECT_EQ(Told(), "\nFirst\n"
                      "00:00:00.000  ok      pc              logged in\n"
                      "                                      interrupted\n");
    EXPECT_EQ(story.GetTally().steps, 1u);
    EXPECT_EQ(story.GetTally().failed, 0u);
}

TEST_F(StoryTest, AStoryForProgramsIsOneJsonObjectALine)
{
    const host::JsonNarrator narrator(m_out);
    Story story(narrator);
    story.Scene("A scene",
                [&]
                {
                    story.Tell("pc", "logs in");
                    story.TellEvent("pc", {.kind = onlinehost::EventKind::LoginSuccess});
                    story.Came("pc", "logged in");
                    story.Check(false, "pc", "sees \"user 2\"", "nothing");
                });
    const std::string text =
        std::regex_replace(Told(), std::regex(R"("time":"[-0-9]{10}T00:00:00\.000Z)"), R"("time":"TIME)");
    EXPECT_EQ(text, R"({"type":"chapter","time":"TIME","title":"A scene"}
{"type":"action","time":"TIME","source":"pc","text":"logs in"}
{"type":"event","time":"TIME","source":"pc","event":"login","text":"logged in"}
{"type":"step","time":"TIME","source":"pc","ok":true,"text":"logged in"}
{"type":"step","time":"TIME","source":"pc","ok":false,"text":"sees \"user 2\"","came":"nothing"}
{"type":"note","time":"TIME","text":"the rest of this scene is left out"}
)");
}

TEST_F(StoryTest, ProgressIsAFewLinesInAFile)
{
    {
        ProgressBar bar(m_out, "working");
        for (size_t done = 0; done <= 100'000; ++done)
        {
            bar.Show(done, 100'000);
        }
    }
    EXPECT_EQ(Told(), "  working: 25 %, 25 000 of 100 000\n"
                      "  working: 50 %, 50 000 of 100 000\n"
                      "  working: 75 %, 75 000 of 100 000\n"
                      "  working: 100 %, 100 000 of 100 000\n");
}

TEST_F(StoryTest, SmallWorkShowsNoProgress)
{
    ProgressBar bar(m_out, "working");
    bar.Show(0, 0);
    bar.Show(999, 999);
    EXPECT_EQ(Told(), "");
}

TEST(GroupDigits, StandsInGroupsOfThree)
{
    EXPECT_EQ(host::GroupDigits(0), "0");
    EXPECT_EQ(host::GroupDigits(999), "999");
    EXPECT_EQ(host::GroupDigits(1000), "1 000");
    EXPECT_EQ(host::GroupDigits(1234567), "1 234 567");
}
