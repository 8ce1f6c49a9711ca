#include "common/wbaselib/wmsgqueue.h"

#include <atomic>
#include <gtest/gtest.h>
#include <thread>
#include <vector>

using WBASELIB::WMsgQueue;

namespace
{

constexpr int kCapacity = 5;

class WMsgQueueTest : public testing::Test
{
protected:
    std::vector<int*> Remaining()
    {
        std::vector<int*> messages;
        m_queue.Drain([&](int* message) { messages.push_back(message); });
        return messages;
    }

    int m_messages[kCapacity + 1] = {};
    WMsgQueue<int> m_queue{kCapacity};
};

} // namespace

TEST_F(WMsgQueueTest, PopsInTheOrderOfThePushes)
{
    // More rounds than the ring has slots: both indices wrap.
    for (int round = 0; round < 2 * (kCapacity + 1); ++round)
    {
        EXPECT_TRUE(m_queue.Push(&m_messages[0]));
        EXPECT_TRUE(m_queue.Push(&m_messages[1]));
        EXPECT_EQ(m_queue.Pop(0), &m_messages[0]);
        EXPECT_EQ(m_queue.Pop(0), &m_messages[1]);
    }
}

TEST_F(WMsgQueueTest, APopFromAnEmptyQueueTimesOut)
{
    EXPECT_EQ(m_queue.Pop(0), nullptr);
    EXPECT_EQ(m_queue.Pop(1), nullptr);
}

TEST_F(WMsgQueueTest, ASixthMessagePushedIntoAFullQueueIsDropped)
{
    for (int index = 0; index < kCapacity; ++index)
    {
        EXPECT_TRUE(m_queue.Push(&m_messages[index]));
    }
    EXPECT_FALSE(m_queue.Push(&m_messages[kCapacity]));
    for (int index = 0; index < kCapacity; ++index)
    {
        EXPECT_EQ(m_queue.Pop(0), &m_messages[index]);
    }
    EXPECT_EQ(m_queue.Pop(0), nullptr);
    EXPECT_TRUE(m_queue.Push(&m_messages[kCapacity]));
    EXPECT_EQ(m_queue.Pop(0), &m_messages[kCapacity]);
}

TEST_F(WMsgQueueTest, AStoppedQueueDropsPushesAndAnswersPopsWithNull)
{
    EXPECT_TRUE(m_queue.Push(&m_messages[0]));
    EXPECT_TRUE(m_queue.Push(&m_messages[1]));
    m_queue.Stop();
    EXPECT_FALSE(m_queue.Push(&m_messages[2]));
    EXPECT_EQ(m_queue.Pop(0), nullptr);
    EXPECT_EQ(Remaining(), (std::vector<int*>{&m_messages[0], &m_messages[1]}));
    EXPECT_TRUE(Remaining().empty());
}

TEST_F(WMsgQueueTest, DrainingHoldsNoLockDuringTheCall)
{
    EXPECT_TRUE(m_queue.Push(&m_messages[0]));
    m_queue.Drain([&](int*) { std::thread([&] { m_queue.Stop(); }).join(); });
    EXPECT_FALSE(m_queue.Push(&m_messages[0]));
}

TEST_F(WMsgQueueTest, APushWakesAWaitingPop)
{
    std::thread producer([&] { m_queue.Push(&m_messages[0]); });
    EXPECT_EQ(m_queue.Pop(INFINITE), &m_messages[0]);
    producer.join();
}

TEST(WMsgQueueCapacityTest, AQueueWithoutCapacityDropsEverything)
{
    for (const int capacity : {0, -1})
    {
        WMsgQueue<int> queue(capacity);
        int message = 0;
        EXPECT_FALSE(queue.Push(&message));
        EXPECT_EQ(queue.Pop(0), nullptr);
    }
}

TEST(WMsgQueueThreadTest, EachMessageIsTakenOnceByOneOfManyThreads)
{
    constexpr size_t kProducers = 3;
    constexpr size_t kConsumers = 3;
    constexpr size_t kEach = 400;
    WMsgQueue<std::atomic<int>> queue(kCapacity);
    std::vector<std::atomic<int>> taken(kProducers * kEach);

    std::vector<std::thread> threads;
    threads.reserve(kProducers + kConsumers);
    for (size_t producer = 0; producer < kProducers; ++producer)
    {
        threads.emplace_back(
            [&, producer]
            {
                for (size_t index = 0; index < kEach; ++index)
                {
                    while (!queue.Push(&taken[producer * kEach + index]))
                    {
                        std::this_thread::yield();
                    }
                }
            });
    }
    for (size_t consumer = 0; consumer < kConsumers; ++consumer)
    {
        threads.emplace_back(
            [&]
            {
                for (size_t index = 0; index < kProducers * kEach / kConsumers; ++index)
                {
                    ++*queue.Pop(INFINITE);
                }
            });
    }
    for (std::thread& thread : threads)
    {
        thread.join();
    }
    for (const std::atomic<int>& times : taken)
    {
        EXPECT_EQ(times, 1);
    }
}

TEST(WMsgQueueThreadTest, StoppingDuringPushesAndPopsOfOtherThreadsLosesNoMessage)
{
    WMsgQueue<int> queue(kCapacity);
    int message = 0;
    int pushed = 0;
    std::atomic<int> popped{0};
    std::atomic<bool> done{false};
    std::thread producer(
        [&]
        {
            while (!done)
            {
                pushed += queue.Push(&message) ? 1 : 0;
            }
        });
    std::thread consumer(
        [&]
        {
            while (!done)
            {
                popped += queue.Pop(0) != nullptr ? 1 : 0;
            }
        });
    while (popped < 100)
    {
        std::this_thread::yield();
    }
    queue.Stop();
    done = true;
    producer.join();
    consumer.join();

    int drained = 0;
    queue.Drain([&](int*) { ++drained; });
    EXPECT_EQ(popped + drained, pushed);
}
