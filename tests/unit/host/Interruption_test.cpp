#include "host/console/Interruption.h"

#include <csignal>
#include <future>
#include <gtest/gtest.h>
#include <unistd.h>

using host::Interruption;

namespace
{

class InterruptionTest : public testing::Test
{
protected:
    /// A shell starts background programs with SIGINT ignored.
    InterruptionTest()
    {
        std::signal(SIGINT, SIG_DFL);
    }

    static void WaitForSignal(const Interruption& interruption)
    {
        while (interruption.Signal() == 0)
        {
            usleep(1000);
        }
    }
};

} // namespace

TEST_F(InterruptionTest, ASignalIsNotedAndCallsTheWatches)
{
    Interruption interruption;
    EXPECT_EQ(interruption.Signal(), 0);
    std::promise<void> told;
    {
        const Interruption::Watch watch(&interruption, [&] { told.set_value(); });
        kill(getpid(), SIGINT);
        told.get_future().wait();
    }
    EXPECT_EQ(interruption.Signal(), SIGINT);
    EXPECT_EQ(interruption.ExitCode(), 130);
    EXPECT_EQ(interruption.Reason(), "interrupted by SIGINT");
}

TEST_F(InterruptionTest, AWatchMadeAfterTheSignalIsCalledAtOnce)
{
    Interruption interruption;
    kill(getpid(), SIGTERM);
    WaitForSignal(interruption);
    bool isTold = false;
    const Interruption::Watch watch(&interruption, [&] { isTold = true; });
    EXPECT_TRUE(isTold);
    EXPECT_EQ(interruption.ExitCode(), 143);
}

TEST_F(InterruptionTest, AWatchWithoutAnInterruptionIsNeverCalled)
{
    bool isTold = false;
    {
        const Interruption::Watch watch(nullptr, [&] { isTold = true; });
    }
    EXPECT_FALSE(isTold);
}

TEST_F(InterruptionTest, ASecondSignalEndsTheProcess)
{
    const auto ignoreFirst = []
    {
        const Interruption interruption;
        kill(getpid(), SIGINT);
        WaitForSignal(interruption);
        kill(getpid(), SIGINT);
        for (;;)
        {
            pause();
        }
    };
    EXPECT_EXIT(ignoreFirst(), testing::KilledBySignal(SIGINT), "");
}

TEST_F(InterruptionTest, ASecondSignalEndsTheProcessWhileAnActionHangs)
{
    const auto hang = []
    {
        std::promise<void> inside;
        Interruption interruption;
        const Interruption::Watch watch(&interruption,
                                        [&]
                                        {
                                            inside.set_value();
                                            for (;;)
                                            {
                                                pause();
                                            }
                                        });
        kill(getpid(), SIGTERM);
        inside.get_future().wait();
        alarm(30); // ends the process by another signal if the second one does not
        kill(getpid(), SIGTERM);
        for (;;)
        {
            pause();
        }
    };
    EXPECT_EXIT(hang(), testing::KilledBySignal(SIGTERM), "");
}

TEST_F(InterruptionTest, AnIgnoredSignalStaysIgnored)
{
    std::signal(SIGINT, SIG_IGN);
    Interruption interruption;
    kill(getpid(), SIGINT);
    kill(getpid(), SIGTERM);
    WaitForSignal(interruption);
    EXPECT_EQ(interruption.Signal(), SIGTERM);
}
