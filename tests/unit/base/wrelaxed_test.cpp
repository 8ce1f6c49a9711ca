#include "common/wbaselib/wrelaxed.h"

#include <cstdint>
#include <gtest/gtest.h>
#include <thread>

using WBASELIB::RelaxedLoad;
using WBASELIB::RelaxedStore;
using WBASELIB::WRelaxed;

namespace
{

struct Point
{
    int x;
};

enum Colour : int32_t
{
    kRed,
    kBlue
};

static_assert(sizeof(WRelaxed<Colour>) == sizeof(Colour));
static_assert(sizeof(WRelaxed<bool>) == sizeof(bool));
static_assert(sizeof(WRelaxed<Point*>) == sizeof(void*));

constexpr int kRounds = 10000;

} // namespace

TEST(WRelaxedTest, BeginsAtZero)
{
    const WRelaxed<int> number;
    const WRelaxed<Point*> pointer;
    EXPECT_EQ(number, 0);
    EXPECT_EQ(pointer, nullptr);
}

TEST(WRelaxedTest, ReadsAndAssignsLikeThePlainType)
{
    WRelaxed<Colour> colour = kRed;
    colour = kBlue;
    EXPECT_TRUE(colour == kBlue);
    switch (colour)
    {
    case kBlue:
        break;
    case kRed:
        FAIL();
    }

    WRelaxed<bool> flag;
    EXPECT_FALSE(flag);
    flag = true;
    EXPECT_TRUE(flag);
}

TEST(WRelaxedTest, APointerReachesIntoItsObject)
{
    Point point{7};
    WRelaxed<Point*> pointer = &point;
    EXPECT_EQ(pointer->x, 7);
    EXPECT_EQ((*pointer).x, 7);
    pointer = nullptr;
    EXPECT_FALSE(pointer);
}

TEST(WRelaxedTest, ACopyHasTheValueAndIsIndependent)
{
    WRelaxed<int> first = 1;
    WRelaxed<int> second = first;
    first = 2;
    EXPECT_EQ(second, 1);
    second = first;
    EXPECT_EQ(second, 2);
}

TEST(WRelaxedTest, AReaderSeesOnlyValuesThatWereWritten)
{
    constexpr uint64_t kBits = ~uint64_t{0};
    WRelaxed<uint64_t> value = kBits;
    uint64_t plain = kBits;
    std::thread writer(
        [&]
        {
            for (int round = 0; round < kRounds; ++round)
            {
                value = round % 2 == 0 ? 0 : kBits;
                RelaxedStore(plain, round % 2 == 0 ? 0 : kBits);
            }
        });
    for (int round = 0; round < kRounds; ++round)
    {
        const uint64_t seen = value;
        EXPECT_TRUE(seen == 0 || seen == kBits);
        const uint64_t seenPlain = RelaxedLoad(plain);
        EXPECT_TRUE(seenPlain == 0 || seenPlain == kBits);
    }
    writer.join();
}

TEST(WRelaxedTest, PlainScalarsAndPointersAreReadAndWritten)
{
    Point point{7};
    Point* pointer = nullptr;
    RelaxedStore(pointer, &point);
    EXPECT_EQ(RelaxedLoad(pointer)->x, 7);

    bool flag = false;
    RelaxedStore(flag, true);
    const bool& constant = flag;
    EXPECT_TRUE(RelaxedLoad(constant));
}
