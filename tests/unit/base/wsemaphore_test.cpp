#include "common/wbaselib/wsemaphore.h"

#include <atomic>
#include <chrono>
#include <ctime>
#include <gtest/gtest.h>
#include <limits>
#include <thread>
#include <type_traits>
#include <vector>

using WBASELIB::WSemaphore;

static_assert(std::has_virtual_destructor_v<WSemaphore> && !std::is_copy_constructible_v<WSemaphore> &&
              !std::is_copy_assignable_v<WSemaphore>);

namespace
{

/// Seconds by which the wall clock that the semaphore would read differs from that of the system.
std::atomic<time_t> wallClockShift{0};

} // namespace

extern "C"
{
    int __real_clock_gettime(clockid_t clock, timespec* time);
    int __wrap_clock_gettime(clockid_t clock, timespec* time);

    int __wrap_clock_gettime(clockid_t clock, timespec* time)
    {
        const int result = __real_clock_gettime(clock, time);
        if (clock == CLOCK_REALTIME)
        {
            time->tv_sec += wallClockShift;
        }
        return result;
    }
} // extern "C"

TEST(WSemaphoreTest, WaitingForNoTimeOnAnEmptyOneTimesOutAndSucceedsAfterARelease)
{
    WSemaphore semaphore(0, 1);
    EXPECT_EQ(semaphore.WaitSemaphore(0), 0x102U);
    EXPECT_TRUE(semaphore.ReleaseSemaphore(1));
    EXPECT_EQ(semaphore.WaitSemaphore(0), 0U);
    EXPECT_EQ(semaphore.WaitSemaphore(0), 0x102U);
}

TEST(WSemaphoreTest, ReleasingMoreThanTheMaximumKeepsTheMaximum)
{
    WSemaphore semaphore(0, 1);
    EXPECT_TRUE(semaphore.ReleaseSemaphore(5));
    EXPECT_EQ(semaphore.WaitSemaphore(0), 0U);
    EXPECT_EQ(semaphore.WaitSemaphore(0), 0x102U);
}

TEST(WSemaphoreTest, AWaitOf1500MillisecondsOnAnEmptyOneTimesOutNotBeforeThatAlsoWhenTheWallClockIsSetBack)
{
    WSemaphore semaphore(0, 1);
    wallClockShift = -3600;
    const auto begin = std::chrono::steady_clock::now();
    EXPECT_EQ(semaphore.WaitSemaphore(1500), 0x102U);
    EXPECT_GE(std::chrono::steady_clock::now() - begin, std::chrono::milliseconds(1500));
    wallClockShift = 0;
}

TEST(WSemaphoreTest, InitialUnitsCanBeTaken)
{
    WSemaphore semaphore(2, 5);
    EXPECT_EQ(semaphore.WaitSemaphore(0), 0U);
    EXPECT_EQ(semaphore.WaitSemaphore(INFINITE), 0U);
    EXPECT_EQ(semaphore.WaitSemaphore(0), 0x102U);
}

TEST(WSemaphoreTest, AnInitialCountAboveTheMaximumIsNotChecked)
{
    WSemaphore semaphore(2, 1);
    EXPECT_TRUE(semaphore.ReleaseSemaphore(1));
    EXPECT_EQ(semaphore.WaitSemaphore(0), 0U);
    EXPECT_EQ(semaphore.WaitSemaphore(0), 0U);
    EXPECT_EQ(semaphore.WaitSemaphore(0), 0x102U);
}

TEST(WSemaphoreTest, ANegativeInitialCountHasToBeReleasedFirst)
{
    WSemaphore semaphore(-1, 1);
    EXPECT_TRUE(semaphore.ReleaseSemaphore(1));
    EXPECT_EQ(semaphore.WaitSemaphore(0), 0x102U);
    EXPECT_TRUE(semaphore.ReleaseSemaphore(1));
    EXPECT_EQ(semaphore.WaitSemaphore(0), 0U);
}

TEST(WSemaphoreTest, ReleasingNothingAddsNothing)
{
    WSemaphore semaphore(0, 1);
    EXPECT_TRUE(semaphore.ReleaseSemaphore(0));
    EXPECT_EQ(semaphore.WaitSemaphore(0), 0x102U);
}

TEST(WSemaphoreTest, ANegativeReleaseFillsItUpToTheMaximum)
{
    for (const int count : {-1, -7, std::numeric_limits<int>::min()})
    {
        WSemaphore semaphore(0, 3);
        EXPECT_TRUE(semaphore.ReleaseSemaphore(count));
        for (int unit = 0; unit < 3; ++unit)
        {
            EXPECT_EQ(semaphore.WaitSemaphore(0), 0U);
        }
        EXPECT_EQ(semaphore.WaitSemaphore(0), 0x102U);
    }
}

TEST(WSemaphoreTest, EachUnitReleasedWakesOneWaiter)
{
    constexpr int kWaiters = 4;
    WSemaphore semaphore(0, kWaiters);
    std::atomic<int> woken{0};
    std::vector<std::thread> waiters;
    for (int index = 0; index < kWaiters; ++index)
    {
        const unsigned timeout = index % 2 == 0 ? INFINITE : 60000U;
        waiters.emplace_back([&, timeout] { woken += semaphore.WaitSemaphore(timeout) == 0 ? 1 : 0; });
    }
    EXPECT_TRUE(semaphore.ReleaseSemaphore(kWaiters));
    for (std::thread& waiter : waiters)
    {
        waiter.join();
    }
    EXPECT_EQ(woken, kWaiters);
    EXPECT_EQ(semaphore.WaitSemaphore(0), 0x102U);
}

TEST(WSemaphoreTest, NoThreadTakesAUnitWhileItIsLocked)
{
    WSemaphore semaphore(1, 1);
    std::atomic<bool> waiting{false};
    std::atomic<bool> taken{false};
    EXPECT_EQ(semaphore.Lock(), 0);
    std::thread waiter(
        [&]
        {
            waiting = true;
            EXPECT_EQ(semaphore.WaitSemaphore(INFINITE), 0U);
            taken = true;
        });
    while (!waiting)
    {
        std::this_thread::yield();
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    EXPECT_FALSE(taken);
    EXPECT_EQ(semaphore.UnLock(), 0);
    waiter.join();
    EXPECT_TRUE(taken);
}
