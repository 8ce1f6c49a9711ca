#include "onlinemanager/NotifyList.h"

#include <gtest/gtest.h>

#include <array>
#include <barrier>
#include <functional>
#include <random>
#include <thread>

using onlinemanager::NotifyList;

namespace
{

struct Listener
{
    std::function<void()> onEvent = [] {};
    std::atomic<int> calls{0};

    void Event()
    {
        ++calls;
        onEvent();
    }
};

void Deliver(NotifyList<Listener>& list)
{
    list.Deliver([](Listener& listener) { listener.Event(); });
}

} // namespace

TEST(NotifyList, IsEnabledFromConstruction)
{
    const NotifyList<Listener> list;
    EXPECT_TRUE(list.IsEnabled());
}

TEST(NotifyList, AnEmptyListDeliversNothing)
{
    NotifyList<Listener> list;
    list.RemoveAllNotify();
    list.Deliver([](Listener&) { FAIL(); });
}

TEST(NotifyList, AListMayEndWithItsListeners)
{
    std::array<Listener, 3> listeners;
    NotifyList<Listener> list;
    for (Listener& listener : listeners)
    {
        list.AddNotify(&listener);
    }
    Deliver(list);
    EXPECT_EQ(1, listeners[2].calls);
}

TEST(NotifyList, ANestedDeliveryMayDropTheEntryThatAnOuterDeliveryHasReached)
{
    NotifyList<Listener> list;
    std::array<Listener, 6> listeners;
    for (Listener& listener : listeners)
    {
        list.AddNotify(&listener);
        listener.onEvent = [&]
        {
            list.RemoveNotify(&listener);
            Deliver(list);
        };
    }
    Deliver(list);
    // Each listener removes itself before it delivers. The innermost delivery therefore calls all remaining listeners,
    // and the outer deliveries find none.
    for (const Listener& listener : listeners)
    {
        EXPECT_EQ(1, listener.calls);
    }
    Listener late;
    list.AddNotify(&late);
    Deliver(list);
    EXPECT_EQ(1, late.calls);
    EXPECT_EQ(1, listeners[0].calls);
}

TEST(NotifyList, ManyThreadsMayUseTheListAtTheSameTime)
{
    NotifyList<Listener> list;
    Listener steady;
    std::array<Listener, 6> others;
    std::barrier start(4);
    list.AddNotify(&steady);
    // Two listeners change the list from inside a notification; one of them delivers too.
    thread_local int depth = 0;
    others[0].onEvent = [&]
    {
        if (depth < 2)
        {
            ++depth;
            list.RemoveNotify(&others[1]);
            Deliver(list);
            list.AddNotify(&others[2]);
            --depth;
        }
    };
    others[3].onEvent = [&] { list.RemoveNotify(&others[3]); };

    const auto use = [&](unsigned seed)
    {
        std::minstd_rand random(seed);
        start.arrive_and_wait();
        for (int round = 0; round < 1500; ++round)
        {
            Listener& listener = others[random() % others.size()];
            switch (random() % 3)
            {
            case 0:
                list.AddNotify(&listener);
                break;
            case 1:
                list.RemoveNotify(&listener);
                break;
            default:
                Deliver(list);
                break;
            }
        }
    };
    std::vector<std::thread> threads;
    for (unsigned seed = 1; seed <= 4; ++seed)
    {
        threads.emplace_back(use, seed);
    }
    for (std::thread& thread : threads)
    {
        thread.join();
    }
    const int before = steady.calls;
    list.RemoveAllNotify();
    Deliver(list);
    EXPECT_EQ(before, steady.calls);
    EXPECT_LT(0, before);
}
