#include "common/wbaselib/wstringbase.h"

#include "tests/support/AllocationFault.h"

#include <cstring>
#include <gtest/gtest.h>
#include <string>
#include <thread>
#include <type_traits>
#include <vector>

using WBASELIB::TStringBase;
using WBASELIB::TStringHeader;

namespace
{

using Text = TStringBase<char>;

static_assert(sizeof(Text) == 8 && sizeof(TStringBase<wchar_t>) == 8);
static_assert(std::is_nothrow_copy_constructible_v<Text> && std::is_nothrow_move_constructible_v<Text>);

/// A text as a library that was built separately sees it.
const char* DataOf(const Text& text)
{
    const char* data = nullptr;
    std::memcpy(&data, static_cast<const void*>(&text), sizeof(data));
    return data;
}

TStringHeader HeaderOf(const Text& text)
{
    TStringHeader header{};
    std::memcpy(&header, DataOf(text) - sizeof(header), sizeof(header));
    return header;
}

/// "abc" in a buffer that has room for more.
Text RoomyText()
{
    Text text("ab");
    text.Append("c");
    EXPECT_GT(HeaderOf(text).capacity, text.length());
    return text;
}

} // namespace

TEST(TStringBaseTest, TheEmptyTextIsANullPointerButReadsAsAText)
{
    for (const Text& text : {Text(), Text(""), Text(nullptr), Text("abc", 0), Text(nullptr, 3)})
    {
        EXPECT_EQ(DataOf(text), nullptr);
        EXPECT_STREQ(text.c_str(), "");
        EXPECT_EQ(text.length(), 0U);
        EXPECT_TRUE(text.empty());
    }
}

TEST(TStringBaseTest, SixteenBytesStandInFrontOfTheTerminatedCharacters)
{
    const Text text("12345");
    EXPECT_EQ(DataOf(text), text.c_str());
    EXPECT_STREQ(DataOf(text), "12345");
    const TStringHeader header = HeaderOf(text);
    EXPECT_EQ(header.references, 1);
    EXPECT_EQ(header.length, 5U);
    EXPECT_GE(header.capacity, 5U);
    EXPECT_EQ(header.reserved, 0U);
}

TEST(TStringBaseTest, ABufferMadeByAnotherLibraryIsReadAndFreed)
{
    auto* memory = static_cast<char*>(TovMalloc(16 + 4));
    const TStringHeader header{1, 3, 3, 0};
    std::memcpy(memory, &header, sizeof(header));
    std::memcpy(memory + 16, "abc", 4);
    const char* data = memory + 16;

    Text text;
    std::memcpy(static_cast<void*>(&text), &data, sizeof(data));
    EXPECT_EQ(text, "abc");
    text.Append("def");
    EXPECT_EQ(text, "abcdef");
}

TEST(TStringBaseTest, CopiesShareTheBufferAndCountIt)
{
    const Text first("abc");
    {
        Text second = first;
        EXPECT_EQ(DataOf(second), DataOf(first));
        EXPECT_EQ(HeaderOf(first).references, 2);
        second = "own";
        EXPECT_EQ(HeaderOf(first).references, 1);
        second = first;
        EXPECT_EQ(HeaderOf(first).references, 2);
    }
    EXPECT_EQ(HeaderOf(first).references, 1);
}

TEST(TStringBaseTest, AWriterMakesItsOwnBufferWhileOthersShareIt)
{
    Text first = RoomyText();
    const Text second = first;
    first.Append("d");
    EXPECT_EQ(first, "abcd");
    EXPECT_EQ(second, "abc");
    EXPECT_EQ(HeaderOf(second).references, 1);
}

TEST(TStringBaseTest, AWriterThatIsAloneKeepsTheBufferWhenThereIsRoom)
{
    Text text = RoomyText();
    const char* data = DataOf(text);
    text.Append("d");
    EXPECT_EQ(DataOf(text), data);
    EXPECT_EQ(text, "abcd");
}

TEST(TStringBaseTest, MovingLeavesTheEmptyText)
{
    Text first("abc");
    Text second = std::move(first);
    EXPECT_EQ(DataOf(first),
              nullptr); // NOLINT(bugprone-use-after-move): the test is about the object that was moved from
    EXPECT_EQ(second, "abc");
    first = std::move(second);
    EXPECT_EQ(first, "abc");
    EXPECT_EQ(DataOf(second), nullptr); // NOLINT(bugprone-use-after-move)
}

TEST(TStringBaseTest, AssigningATextToItselfKeepsIt)
{
    Text text("abc");
    const Text& same = text;
    text = same;
    EXPECT_EQ(text, "abc");
    text = text.c_str();
    EXPECT_EQ(text, "abc");
    EXPECT_EQ(HeaderOf(text).references, 1);
}

TEST(TStringBaseTest, APartOfTheTextMayBeAssignedOrAppended)
{
    Text text("abcdef");
    text.Append(text);
    EXPECT_EQ(text, "abcdefabcdef");
    text.Append(std::strrchr(text.c_str(), 'e'));
    EXPECT_EQ(text, "abcdefabcdefef");
    text.Assign(std::strchr(text.c_str(), 'c'), 3);
    EXPECT_EQ(text, "cde");
}

TEST(TStringBaseTest, AppendingNothingChangesNothing)
{
    Text text("abc");
    const Text copy = text;
    text.Append(nullptr);
    text.Append("");
    text.Append(Text());
    EXPECT_EQ(DataOf(text), DataOf(copy));
}

TEST(TStringBaseTest, ClearingGivesTheEmptyTextAndLeavesCopiesAlone)
{
    Text text("abc");
    const Text copy = text;
    text.Clear();
    EXPECT_EQ(DataOf(text), nullptr);
    EXPECT_EQ(copy, "abc");
    text = "x";
    text = nullptr;
    EXPECT_TRUE(text.empty());
}

TEST(TStringBaseTest, EqualityComparesAllCharacters)
{
    EXPECT_EQ(Text("abc"), Text("abc"));
    EXPECT_NE(Text("abc"), Text("abd"));
    EXPECT_NE(Text("abc"), Text("ab"));
    EXPECT_EQ(Text(), "");
    EXPECT_EQ(Text(), static_cast<const char*>(nullptr));
    EXPECT_NE(Text("a\0b", 3), Text("a\0c", 3));
    EXPECT_EQ(Text("a\0b", 3).length(), 3U);
}

TEST(TStringBaseTest, WideTextHasTheSameHeader)
{
    TStringBase<wchar_t> text(L"ab");
    text.Append(L"cd");
    EXPECT_EQ(text, L"abcd");
    EXPECT_EQ(text.length(), 4U);
}

TEST(TStringBaseTest, MemoryThatRunsOutThrowsAndLosesNothing)
{
    Text text("abc");
    {
        const AllocationFault fault;
        EXPECT_THROW(Text("x"), std::bad_alloc);
        EXPECT_THROW(text.Append("a longer text than fits"), std::bad_alloc);
        EXPECT_THROW(text = "x", std::bad_alloc);
    }
    EXPECT_EQ(text, "abc");
}

TEST(TStringBaseTest, ATextThatItsLengthFieldCannotHoldThrows)
{
    Text text("abc");
    EXPECT_THROW(Text("", size_t{0xFFFFFFFF}), std::length_error);
    EXPECT_THROW(text.Append("", size_t{0xFFFFFFFF} - 3), std::length_error);
    EXPECT_EQ(text, "abc");
}

TEST(TStringBaseTest, ThreadsCopyAndChangeTheirCopiesOfOneText)
{
    const Text shared = RoomyText();
    std::vector<std::thread> threads;
    threads.reserve(4);
    for (int thread = 0; thread < 4; ++thread)
    {
        threads.emplace_back(
            [mine = shared]() mutable
            {
                for (int round = 0; round < 500; ++round)
                {
                    Text copy = mine;
                    copy.Append("!");
                    EXPECT_EQ(copy, "abc!");
                    EXPECT_EQ(mine, "abc");
                }
                mine.Append("?");
                EXPECT_EQ(mine, "abc?");
            });
    }
    for (std::thread& thread : threads)
    {
        thread.join();
    }
    EXPECT_EQ(shared, "abc");
    EXPECT_EQ(HeaderOf(shared).references, 1);
}
