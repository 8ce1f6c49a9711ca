#include "onlinehost/EventQueue.h"

#include <gtest/gtest.h>
#include <thread>

using namespace std::chrono_literals;

TEST(EventQueue, TakesEventsInOrder)
{
    onlinehost::EventQueue<int> queue;
    queue.Push(1);
    queue.Push(2);
    EXPECT_EQ(queue.Take(0ms), 1);
    EXPECT_EQ(queue.Take(0ms), 2);
    EXPECT_EQ(queue.Take(0ms), std::nullopt);
}

TEST(EventQueue, EventsThatAreNotWantedStay)
{
    onlinehost::EventQueue<int> queue;
    queue.Push(1);
    queue.Push(2);
    queue.Push(3);
    EXPECT_EQ(queue.TakeIf([](int event) { return event == 2; }, 0ms), 2);
    EXPECT_EQ(queue.TakeIf([](int event) { return event == 2; }, 1ms), std::nullopt);
    EXPECT_EQ(queue.Take(0ms), 1);
    EXPECT_EQ(queue.Take(0ms), 3);
}

TEST(EventQueue, WaitsForAnEventOfAnotherThread)
{
    onlinehost::EventQueue<int> queue;
    std::thread other(
        [&queue]
        {
            queue.Push(1);
            queue.Push(2);
        });
    EXPECT_EQ(queue.TakeIf([](int event) { return event == 2; }, 1h), 2);
    other.join();
}

TEST(EventQueue, CancelledWaitsEndAtOnceAndTakeOnlyWhatIsThere)
{
    onlinehost::EventQueue<int> queue;
    std::thread waiting([&queue] { EXPECT_EQ(queue.Take(24h), std::nullopt); });
    queue.CancelWaits();
    waiting.join();
    queue.Push(1);
    EXPECT_EQ(queue.Take(24h), 1);
    EXPECT_EQ(queue.Take(24h), std::nullopt);
}
