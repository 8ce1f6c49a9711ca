#include "host/shell/ShellSignals.h"

#include <csignal>
#include <gtest/gtest.h>
#include <unistd.h>

using host::ShellSignals;

TEST(ShellSignals, ASignalThatTheShellWasStartedToIgnoreDoesNotEndIt)
{
    std::signal(SIGHUP, SIG_IGN);
    {
        ShellSignals signals;
        kill(getpid(), SIGHUP);
        kill(getpid(), SIGTERM);
        EXPECT_EQ(signals.Take(), SIGTERM);
        EXPECT_EQ(signals.Take(), 0);
    }
    std::signal(SIGHUP, SIG_DFL);
}
