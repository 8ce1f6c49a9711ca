#include "common/wbaselib/wvector.h"

#include "common/wbaselib/wstringbase.h"
#include "tests/support/AllocationFault.h"

#include <cstring>
#include <gtest/gtest.h>
#include <memory>
#include <numeric>
#include <stdexcept>

using WBASELIB::TStringBase;
using WBASELIB::Vector;

namespace
{

using Text = TStringBase<char>;

static_assert(sizeof(Vector<char>) == 16 && sizeof(Vector<Text>) == 16);

/// A vector as a library that was built separately sees it.
struct Layout
{
    int* data;
    uint32_t count;
    uint32_t capacity;
};

/// Counts its live objects. A copy throws after the test has ordered it.
class Fragile
{
public:
    explicit Fragile(int value) : m_value(value)
    {
        ++s_alive;
    }
    Fragile(const Fragile& other) : m_value(other.m_value)
    {
        if (s_copiesBeforeThrow-- == 0)
        {
            throw std::runtime_error("copy");
        }
        ++s_alive;
    }
    Fragile& operator=(const Fragile&) = delete;
    ~Fragile()
    {
        --s_alive;
    }

    int Value() const
    {
        return m_value;
    }

    static inline int s_alive = 0;
    static inline int s_copiesBeforeThrow = -1;

private:
    int m_value;
};

Vector<int> Numbers(int count)
{
    Vector<int> numbers;
    for (int number = 0; number < count; ++number)
    {
        numbers.push_back(number);
    }
    return numbers;
}

void ExpectNumbers(const Vector<int>& numbers, int count)
{
    ASSERT_EQ(numbers.size(), static_cast<uint32_t>(count));
    int expected = 0;
    for (const int number : numbers)
    {
        EXPECT_EQ(number, expected++);
    }
}

} // namespace

TEST(VectorTest, LiesInMemoryAsPointerCountAndCapacity)
{
    Vector<int> numbers = Numbers(3);
    numbers.reserve(10);
    Layout layout{};
    std::memcpy(&layout, static_cast<const void*>(&numbers), sizeof(layout));
    EXPECT_EQ(layout.data, numbers.begin());
    EXPECT_EQ(layout.count, 3U);
    EXPECT_EQ(layout.capacity, 10U);
    EXPECT_EQ(layout.data[2], 2);
}

TEST(VectorTest, StorageMadeByAnotherLibraryIsReadGrownAndFreed)
{
    const Layout layout{static_cast<int*>(TovMalloc(2 * sizeof(int))), 2, 2};
    layout.data[0] = 0;
    layout.data[1] = 1;
    Vector<int> numbers;
    std::memcpy(static_cast<void*>(&numbers), &layout, sizeof(layout));
    numbers.push_back(2);
    ExpectNumbers(numbers, 3);
}

TEST(VectorTest, BeginsEmptyWithoutStorage)
{
    const Vector<int> numbers;
    EXPECT_TRUE(numbers.empty());
    EXPECT_EQ(numbers.size(), 0U);
    EXPECT_EQ(numbers.capacity(), 0U);
    EXPECT_EQ(numbers.begin(), numbers.end());
    ExpectNumbers(Vector<int>(numbers), 0);
}

TEST(VectorTest, KeepsOrderWhileItGrows)
{
    ExpectNumbers(Numbers(1000), 1000);
}

TEST(VectorTest, AnElementOfTheVectorMayBeAppendedToIt)
{
    Vector<Text> texts;
    texts.push_back("text");
    for (int round = 0; round < 20; ++round)
    {
        texts.push_back(texts[0]);
        texts.emplace_back(texts[texts.size() - 1].c_str());
    }
    for (const Text& text : texts)
    {
        EXPECT_EQ(text, "text");
    }
}

TEST(VectorTest, EmplaceReturnsTheNewElement)
{
    Vector<Text> texts;
    EXPECT_EQ(texts.emplace_back("abc", size_t{2}), "ab");
    texts[0] = "xyz";
    EXPECT_EQ(texts[0], "xyz");
}

TEST(VectorTest, ACopyIsIndependent)
{
    Vector<int> first = Numbers(5);
    const Vector<int> second = first;
    first[0] = 7;
    ExpectNumbers(second, 5);
    first = second;
    ExpectNumbers(first, 5);
    const Vector<int>& same = first;
    first = same;
    ExpectNumbers(first, 5);
}

TEST(VectorTest, MovingHandsOverTheStorage)
{
    Vector<int> first = Numbers(5);
    const int* data = first.begin();
    Vector<int> second = std::move(first);
    EXPECT_EQ(second.begin(), data);
    EXPECT_TRUE(first.empty()); // NOLINT(bugprone-use-after-move): the test is about the object that was moved from
    first = std::move(second);
    EXPECT_EQ(first.begin(), data);
    ExpectNumbers(first, 5);
}

TEST(VectorTest, ElementsThatOnlyMoveAreKept)
{
    Vector<std::unique_ptr<int>> pointers;
    for (int number = 0; number < 20; ++number)
    {
        pointers.push_back(std::make_unique<int>(number));
    }
    const int sum = std::accumulate(pointers.begin(), pointers.end(), 0,
                                    [](int total, const std::unique_ptr<int>& pointer) { return total + *pointer; });
    EXPECT_EQ(sum, 190);
}

TEST(VectorTest, ReservingMakesRoomOnceAndNeverShrinks)
{
    Vector<int> numbers = Numbers(3);
    numbers.reserve(100);
    EXPECT_EQ(numbers.capacity(), 100U);
    numbers.reserve(10);
    EXPECT_EQ(numbers.capacity(), 100U);
    const int* data = numbers.begin();
    for (int number = 3; number < 100; ++number)
    {
        numbers.push_back(number);
    }
    EXPECT_EQ(numbers.begin(), data);
    ExpectNumbers(numbers, 100);
}

TEST(VectorTest, ClearingEndsTheElementsAndKeepsTheStorage)
{
    {
        Vector<Fragile> elements;
        elements.emplace_back(1);
        elements.emplace_back(2);
        EXPECT_EQ(Fragile::s_alive, 2);
        const uint32_t capacity = elements.capacity();
        elements.clear();
        EXPECT_EQ(Fragile::s_alive, 0);
        EXPECT_TRUE(elements.empty());
        EXPECT_EQ(elements.capacity(), capacity);
        elements.emplace_back(3);
    }
    EXPECT_EQ(Fragile::s_alive, 0);
}

TEST(VectorTest, ACopyThatThrowsLosesNothing)
{
    {
        Vector<Fragile> elements;
        elements.reserve(3);
        for (int value = 0; value < 3; ++value)
        {
            elements.emplace_back(value);
        }

        Fragile::s_copiesBeforeThrow = 1;
        EXPECT_THROW(elements.emplace_back(3), std::runtime_error) << "growing copies the elements";
        Fragile::s_copiesBeforeThrow = 0;
        EXPECT_THROW(elements.push_back(elements[0]), std::runtime_error);
        Fragile::s_copiesBeforeThrow = 2;
        EXPECT_THROW(elements.reserve(10), std::runtime_error);
        Fragile::s_copiesBeforeThrow = 2;
        EXPECT_THROW(Vector<Fragile>{elements}, std::runtime_error);
        Fragile::s_copiesBeforeThrow = -1;

        EXPECT_EQ(Fragile::s_alive, 3);
        ASSERT_EQ(elements.size(), 3U);
        EXPECT_EQ(elements.capacity(), 3U);
        for (int value = 0; value < 3; ++value)
        {
            EXPECT_EQ(elements[static_cast<size_t>(value)].Value(), value);
        }
    }
    EXPECT_EQ(Fragile::s_alive, 0);
}

TEST(VectorTest, MemoryThatRunsOutThrowsAndLosesNothing)
{
    Vector<int> numbers = Numbers(4);
    ASSERT_EQ(numbers.capacity(), 4U);
    {
        const AllocationFault fault;
        EXPECT_THROW(numbers.push_back(4), std::bad_alloc);
        EXPECT_THROW(numbers.reserve(5), std::bad_alloc);
        EXPECT_THROW(Vector<int>{numbers}, std::bad_alloc);
    }
    ExpectNumbers(numbers, 4);
}
