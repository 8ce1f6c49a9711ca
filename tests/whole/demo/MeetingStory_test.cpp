#include "host/story/MeetingStory.h"

#include "host/console/Interruption.h"
#include "onlinehost/ComponentFactory.h"
#include "onlinehost/LogCenter.h"
#include "onlinehost/Module.h"
#include "platform/Platform.h"

#include <csignal>
#include <cstdio>
#include <functional>
#include <gtest/gtest.h>
#include <thread>
#include <unistd.h>

using host::Story;

namespace
{

/// One log center for all tests, because a module that is linked to stay loaded keeps the first one.
onlinehost::LogCenter& SharedLog()
{
    static onlinehost::LogCenter log{onlinehost::LogCenter::Options{}};
    return log;
}

/// The story on the real module and a platform that may have faults.
class MeetingStoryTest : public testing::Test
{
protected:
    ~MeetingStoryTest() override
    {
        std::fclose(m_file);
    }

    Story::Tally Tell(std::chrono::milliseconds limit, host::Interruption* interruption = nullptr)
    {
        host::MeetingOptions options;
        options.users = host::MeetingOptions::kFewestUsers;
        options.limit = limit;
        return host::TellMeeting({m_narrator, m_platform, SharedLog(), m_factory,
                                  std::make_shared<onlinehost::Module>(ONLINEMANAGER_MODULE), nullptr, interruption},
                                 options);
    }

    std::string Told()
    {
        std::string text(100'000, '\0');
        std::rewind(m_file);
        text.resize(std::fread(text.data(), 1, text.size(), m_file));
        return text;
    }

    std::FILE* const m_file = std::tmpfile();
    const host::Console m_out{m_file};
    const host::TextNarrator m_narrator{m_out};
    platform::Platform m_platform;
    onlinehost::ComponentFactory m_factory{std::bind_front(&platform::Platform::CreateComponent, &m_platform),
                                           SharedLog()};
};

constexpr std::chrono::seconds kAmple{60};
constexpr std::chrono::milliseconds kShort{300};

} // namespace

TEST_F(MeetingStoryTest, WithoutAFaultEveryStepSucceeds)
{
    const Story::Tally tally = Tell(kAmple);
    EXPECT_EQ(tally.failed, 0u) << Told();
    EXPECT_GT(tally.steps, 70u);
    EXPECT_EQ(m_factory.ForeignReferences(), 0u);
}

TEST_F(MeetingStoryTest, ALoginThatIsRefusedIsAStepThatFails)
{
    m_platform.GetFaults().RefuseLogins(avcore::ZOL_PORT_REFUSED, "2");
    const Story::Tally tally = Tell(kShort);
    EXPECT_GT(tally.failed, 0u);
    const std::string told = Told();
    EXPECT_NE(told.find("FAILED  ben-laptop      expected: logged in\n"), std::string::npos) << told;
    EXPECT_NE(told.find("came:     could not log in: 37"), std::string::npos) << told;
    EXPECT_NE(told.find("ok      the module      is unloaded\n"), std::string::npos) << told;
}

TEST_F(MeetingStoryTest, AnAnswerThatDoesNotComeInTimeIsAStepThatFails)
{
    m_platform.GetFaults().DelayDeliveries(std::chrono::hours(1));
    const Story::Tally tally = Tell(kShort);
    EXPECT_GT(tally.failed, 0u);
    EXPECT_NE(Told().find("came:     nothing in "), std::string::npos) << Told();
}

TEST_F(MeetingStoryTest, ASignalEndsAWaitThatNoEventEnds)
{
    host::Interruption interruption;
    m_platform.GetFaults().DelayDeliveries(std::chrono::hours(24));
    std::thread other(
        [this]
        {
            while (m_platform.Sessions().empty())
            {
                std::this_thread::sleep_for(std::chrono::milliseconds(1));
            }
            kill(getpid(), SIGTERM);
        });
    const Story::Tally tally = Tell(std::chrono::hours(24), &interruption);
    other.join();
    EXPECT_EQ(tally.failed, 0u) << Told();
    EXPECT_NE(Told().find("  interrupted\n"), std::string::npos) << Told();
    EXPECT_EQ(m_factory.ForeignReferences(), 0u);
}
