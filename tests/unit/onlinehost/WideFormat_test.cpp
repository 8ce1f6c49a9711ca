#include "onlinehost/WideFormat.h"

#include <gtest/gtest.h>

using onlinehost::TranslateWideFormat;

namespace
{

std::string Format(const wchar_t* format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    std::string text = onlinehost::FormatWide(format, arguments);
    va_end(arguments);
    return text;
}

} // namespace

TEST(WideFormat, PlainTextStringsAreWideAndCapitalOnesNarrow)
{
    EXPECT_EQ(TranslateWideFormat(L"%s %S %c %C"), L"%ls %s %lc %c");
    EXPECT_EQ(TranslateWideFormat(L"%ls %hs %lc %hc %ws"), L"%ls %s %lc %c %ls");
}

TEST(WideFormat, FlagsWidthAndPrecisionStay)
{
    EXPECT_EQ(TranslateWideFormat(L"%-10s|%.3s|%*.*s|%2$5s"), L"%-10ls|%.3ls|%*.*ls|%2$5ls");
    EXPECT_EQ(TranslateWideFormat(L"%08x %+d %lld %zu %p"), L"%08x %+d %lld %zu %p");
}

TEST(WideFormat, APercentSignWithoutAConversionStays)
{
    EXPECT_EQ(TranslateWideFormat(L"100%% sure, %%s"), L"100%% sure, %%s");
    EXPECT_EQ(TranslateWideFormat(L"%%%s%%"), L"%%%ls%%");
    EXPECT_EQ(TranslateWideFormat(L"at the end %"), L"at the end %");
    EXPECT_EQ(TranslateWideFormat(L"at the end %-5l"), L"at the end %-5l");
    EXPECT_EQ(TranslateWideFormat(L""), L"");
}

TEST(WideFormat, FormatsWideAndNarrowArgumentsToUtf8)
{
    EXPECT_EQ(Format(L"%s is %d, %S is %hs", L"\u20ac", 5, "\u00e9", "narrow"), "\u20ac is 5, \u00e9 is narrow");
    EXPECT_EQ(Format(L"[%4s][%-4s][%.2s]", L"\u20ac", L"\u20ac", L"\u20ac\u20ac\u20ac"),
              "[   \u20ac][\u20ac   ][\u20ac\u20ac]");
    EXPECT_EQ(Format(L"%%s"), "%s");
    EXPECT_EQ(Format(L""), "");
}

TEST(WideFormat, ANullTextIsShownAsNull)
{
    EXPECT_EQ(Format(L"%s", static_cast<const wchar_t*>(nullptr)), "(null)");
}

TEST(WideFormat, AnArgumentThatCannotBeConvertedLeavesAMark)
{
    EXPECT_EQ(Format(L"before %S after", "\xff\xff"), "before [unreadable]");
}
