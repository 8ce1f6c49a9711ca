#include "common/wbaselib/wlock.h"

#include <gtest/gtest.h>
#include <thread>
#include <type_traits>
#include <vector>

using WBASELIB::WAutoLock;
using WBASELIB::WLock;
using WBASELIB::WRWLock;

namespace
{

template <typename T>
constexpr bool kStaysInPlace =
    std::has_virtual_destructor_v<T> && !std::is_copy_constructible_v<T> && !std::is_copy_assignable_v<T>;

static_assert(kStaysInPlace<WLock> && kStaysInPlace<WAutoLock> && kStaysInPlace<WRWLock>);

constexpr int kThreads = 4;
constexpr int kRounds = 2000;

template <typename Body>
void RunInThreads(const Body& body)
{
    std::vector<std::thread> threads;
    threads.reserve(kThreads);
    for (int index = 0; index < kThreads; ++index)
    {
        threads.emplace_back(body);
    }
    for (std::thread& thread : threads)
    {
        thread.join();
    }
}

bool IsFreeForAnotherThread(WLock& lock)
{
    bool taken = false;
    std::thread(
        [&]
        {
            taken = lock.TryLock() != 0;
            if (taken)
            {
                lock.UnLock();
            }
        })
        .join();
    return taken;
}

} // namespace

TEST(WLockTest, TheHolderLocksASecondTimeWithoutBlockingWhileTryLockOfAnotherThreadFails)
{
    WLock lock;
    lock.Lock();
    lock.Lock();
    EXPECT_TRUE(lock.TryLock());
    EXPECT_FALSE(IsFreeForAnotherThread(lock));

    lock.UnLock();
    lock.UnLock();
    EXPECT_FALSE(IsFreeForAnotherThread(lock)) << "one of three locks is still held";
    lock.UnLock();
    EXPECT_TRUE(IsFreeForAnotherThread(lock));
}

TEST(WLockTest, OneThreadAtATimeHoldsTheLock)
{
    WLock lock;
    int count = 0;
    RunInThreads(
        [&]
        {
            for (int round = 0; round < kRounds; ++round)
            {
                const WAutoLock guard(&lock);
                ++count;
            }
        });
    EXPECT_EQ(count, kThreads * kRounds);
}

TEST(WAutoLockTest, NullDoesNothing)
{
    const WAutoLock guard(nullptr);
}

TEST(WAutoLockTest, HoldsTheLockForTheScope)
{
    WLock lock;
    {
        const WAutoLock guard(&lock);
        EXPECT_FALSE(IsFreeForAnotherThread(lock));
    }
    EXPECT_TRUE(IsFreeForAnotherThread(lock));
}

TEST(WRWLockTest, ReadersHoldTheLockTogether)
{
    WRWLock lock;
    lock.RDLock();
    std::thread(
        [&]
        {
            lock.RDLock();
            lock.RDUnLock();
        })
        .join();
    lock.RDUnLock();
}

TEST(WRWLockTest, EitherNameUnlocksEitherKind)
{
    WRWLock lock;
    lock.RDLock();
    lock.WRUnLock();
    lock.WRLock();
    lock.RDUnLock();
    lock.WRLock();
    lock.WRUnLock();
}

TEST(WRWLockTest, AWriterExcludesReadersAndWriters)
{
    WRWLock lock;
    int first = 0;
    int second = 0;
    std::thread reader(
        [&]
        {
            for (int round = 0; round < kRounds; ++round)
            {
                lock.RDLock();
                EXPECT_EQ(first, second);
                lock.RDUnLock();
            }
        });
    RunInThreads(
        [&]
        {
            for (int round = 0; round < kRounds; ++round)
            {
                lock.WRLock();
                ++first;
                ++second;
                lock.WRUnLock();
            }
        });
    reader.join();
    EXPECT_EQ(first, kThreads * kRounds);
}
