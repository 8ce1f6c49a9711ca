#include "common/wbaselib/tov_stdlib.h"

#include "tests/support/AllocationFault.h"

#include <cstdlib>
#include <cstring>
#include <gtest/gtest.h>
#include <string>

namespace
{

bool allocationFails = false;

} // namespace

extern "C"
{
    void* __real_TovMalloc(size_t size) noexcept;
    void* __wrap_TovMalloc(size_t size) noexcept;

    void* __wrap_TovMalloc(size_t size) noexcept
    {
        return allocationFails ? nullptr : __real_TovMalloc(size);
    }
} // extern "C"

AllocationFault::AllocationFault()
{
    allocationFails = true;
}

AllocationFault::~AllocationFault()
{
    allocationFails = false;
}

TEST(TovStdlibTest, MemoryMayBeFreedByTheProcessItself)
{
    void* memory = TovMalloc(16);
    ASSERT_NE(memory, nullptr);
    std::memset(memory, 1, 16);
    std::free(memory);

    TovFree(std::malloc(16));
}

TEST(TovStdlibTest, FreeingNullDoesNothing)
{
    TovFree(nullptr);
}

TEST(TovStdlibTest, CopiesTheGivenNumberOfBytes)
{
    char target[] = "......";
    EXPECT_EQ(TovMemCpy(target, "abcdef", 3), target);
    EXPECT_STREQ(target, "abc...");
}

TEST(TovStdlibTest, MovesBetweenAreasThatOverlap)
{
    char text[] = "abcdef";
    EXPECT_EQ(TovMemMov(text + 1, text, 4), text + 1);
    EXPECT_STREQ(text, "aabcdf");
}

TEST(TovStdlibTest, CopiesNothingWhenAPointerIsNullOrTheCountNotPositive)
{
    char text[] = "abc";
    TovMemCpy(nullptr, text, 3);
    TovMemCpy(text, nullptr, 3);
    TovMemCpy(text, "xyz", 0);
    TovMemCpy(text, "xyz", -1);
    TovMemMov(nullptr, text, 3);
    TovMemMov(text, nullptr, 3);
    TovMemMov(text, "xyz", -1);
    EXPECT_STREQ(text, "abc");
}

TEST(TovStdlibTest, LengthOfNullIsZero)
{
    EXPECT_EQ(TovStrLen(nullptr), 0U);
    EXPECT_EQ(TovStrLen(""), 0U);
    EXPECT_EQ(TovStrLen("abc"), 3U);
}

TEST(TovStdlibTest, ComparesByBytes)
{
    EXPECT_EQ(TovStrCmp("abc", "abc"), 0);
    EXPECT_LT(TovStrCmp("abc", "abd"), 0);
    EXPECT_GT(TovStrCmp("\xFF", "a"), 0);
}
