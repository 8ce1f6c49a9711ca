#include "common/wbaselib/welementallocator.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <set>
#include <thread>
#include <vector>

using WBASELIB::WElementAllocator;

namespace
{

struct Element
{
    int value = 0;
    Element* m_next = nullptr;
};

std::vector<Element*> AllocMany(WElementAllocator<Element>& pool, size_t count)
{
    std::vector<Element*> elements(count);
    std::generate(elements.begin(), elements.end(), [&pool] { return pool.Alloc(); });
    return elements;
}

} // namespace

TEST(WElementAllocatorTest, HandsOutDistinctElementsWithANullLinkAcrossArrays)
{
    WElementAllocator<Element> pool(10);
    const std::vector<Element*> elements = AllocMany(pool, 35);
    EXPECT_EQ(std::set<Element*>(elements.begin(), elements.end()).size(), 35U);
    for (const Element* element : elements)
    {
        EXPECT_EQ(element->m_next, nullptr);
    }
}

TEST(WElementAllocatorTest, AnArrayStandsInOnePieceOfMemory)
{
    WElementAllocator<Element> pool(10);
    const std::vector<Element*> elements = AllocMany(pool, 10);
    for (size_t index = 1; index < elements.size(); ++index)
    {
        EXPECT_EQ(elements[index], elements[0] + index);
    }
}

TEST(WElementAllocatorTest, AFreedElementComesBackAfterAllThatWereFreeBefore)
{
    WElementAllocator<Element> pool(3);
    const std::vector<Element*> elements = AllocMany(pool, 2);
    pool.Free(elements[1]);
    pool.Free(elements[0]);

    EXPECT_EQ(pool.Alloc(), elements[0] + 2);
    EXPECT_EQ(pool.Alloc(), elements[1]);
    EXPECT_EQ(pool.Alloc(), elements[0]);
}

TEST(WElementAllocatorTest, AnElementIsUsedAgainBeforeANewArrayIsMade)
{
    WElementAllocator<Element> pool(1);
    Element* element = pool.Alloc();
    element->value = 5;
    pool.Free(element);
    EXPECT_EQ(pool.Alloc(), element);
    EXPECT_EQ(element->value, 5);
    EXPECT_NE(pool.Alloc(), element);
}

TEST(WElementAllocatorTest, FreeingNullDoesNothing)
{
    WElementAllocator<Element> pool(1);
    pool.Free(nullptr);
    EXPECT_NE(pool.Alloc(), nullptr);
}

TEST(WElementAllocatorTest, ArraysOfNoElementsCountAsArraysOfOne)
{
    WElementAllocator<Element> pool(0);
    EXPECT_NE(pool.Alloc(), nullptr);
}

TEST(WElementAllocatorTest, ThreadsNeverHoldTheSameElement)
{
    WElementAllocator<Element> pool(10);
    std::vector<std::thread> threads;
    threads.reserve(4);
    for (int thread = 1; thread <= 4; ++thread)
    {
        threads.emplace_back(
            [&pool, thread]
            {
                for (int round = 0; round < 500; ++round)
                {
                    const std::vector<Element*> elements = AllocMany(pool, 7);
                    for (Element* element : elements)
                    {
                        element->value = thread;
                    }
                    for (Element* element : elements)
                    {
                        EXPECT_EQ(element->value, thread);
                        pool.Free(element);
                    }
                }
            });
    }
    for (std::thread& thread : threads)
    {
        thread.join();
    }
}
