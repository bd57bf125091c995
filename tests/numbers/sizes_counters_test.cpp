// Byte-size texts, the archive count estimate, ordinal suffixes and alphabetic counters.
#include <gtest/gtest.h>

#include <climits>
#include <cstdint>
#include <cstring>
#include <limits>

#include "tests/numbers/number_settings.h"

namespace {

const double kKiB = 1024.0;
const double kTiB = kKiB * kKiB * kKiB * kKiB;

TEST(GetSizeText, SuffixesUpToGigabytes) {
    const struct {
        double bytes;
        const char* expected;
    } cases[] = {
        {0, "0"},
        {500, "500"},
        {1023.9, "1023"},        // no division: the value is truncated
        {1024, "1024"},          // divided only when above 1024
        {1025, "1.0K"},
        {1536, "1.5K"},
        {2048, "2.0K"},
        {kKiB * kKiB, "1024.0K"},
        {kKiB * kKiB + 1, "1.0M"},
        {3.5 * kKiB * kKiB * kKiB, "3.5G"},
        {5 * kTiB, "5.0G"},           // still "G" above a gigabyte ...
        {5 * kTiB * kKiB, "5.0G"},    // ... however many divisions it took
        {0.75, "0"},
        {-5, "-5"},
        {-5000, "-5000"},             // negative values are never divided
    };
    for (const auto& c : cases) {
        CString out = "stale";
        GetSizeText(out, c.bytes);
        EXPECT_EQ(out, c.expected) << c.bytes;
    }
}

TEST(GetSizeText, LargeAndNonFiniteValuesEndTheLoop) {
    CString out;
    GetSizeText(out, std::numeric_limits<double>::max());
    EXPECT_EQ(out.Right(1), "G");
    // Infinities and NaN are not divided; the 32-bit conversion gives its 0x80000000.
    GetSizeText(out, std::numeric_limits<double>::infinity());
    EXPECT_EQ(out, "-2147483648");
    GetSizeText(out, std::numeric_limits<double>::quiet_NaN());
    EXPECT_EQ(out, "-2147483648");
}

TEST(GetSizeText, UsesTheDecimalSeparator) {
    numtest::ScopedNumberSettings settings;
    settings.Override(',');
    CString out;
    GetSizeText(out, 1536);
    EXPECT_EQ(out, "1,5K");
}

TEST(KmgSize, SuffixesUpToTerabytes) {
    const struct {
        __int64 bytes;
        const char* expected;
    } cases[] = {
        {0, "0"},
        {500, "500"},
        {1024, "1024"},
        {1536, "1.5K"},
        {(__int64)(3 * kKiB * kKiB), "3.0M"},
        {(__int64)(5 * kTiB), "5.0T"},
        {(__int64)(1024 * kTiB), "1024.0T"},
        // Above 1024^5 there is no larger suffix: the value stays in terabytes.
        {(__int64)(5 * kTiB * kKiB), "5120.0T"},
        {INT64_MAX, "8388608.0T"},
        {-1, "-1"},
        {INT64_MIN, "-9223372036854775808"},
    };
    for (const auto& c : cases) EXPECT_EQ(kmgSize(c.bytes), c.expected) << c.bytes;
}

TEST(CountDiskSizeEstimate, SixteenBitCountOrEscapePlusThirtyTwo) {
    EXPECT_EQ(GetCountDiskSizeEstimate(0), 2);
    EXPECT_EQ(GetCountDiskSizeEstimate(65534), 2);
    EXPECT_EQ(GetCountDiskSizeEstimate(65535), 6);
    EXPECT_EQ(GetCountDiskSizeEstimate(0xFFFFFFFFu), 6);
}

TEST(NumSuffix, OrdinalOfTheMagnitude) {
    const struct {
        int n;
        const char* expected;
    } cases[] = {
        {0, "th"},    {1, "st"},    {2, "nd"},    {3, "rd"},    {4, "th"},   {9, "th"},
        {10, "th"},   {11, "th"},   {12, "th"},   {13, "th"},   {20, "th"},  {21, "st"},
        {22, "nd"},   {23, "rd"},   {101, "st"},  {111, "th"},  {112, "th"}, {113, "th"},
        {122, "nd"},  {1000, "th"}, {-1, "st"},   {-3, "rd"},   {-12, "th"}, {-22, "nd"},
        {INT_MIN, "th"},  // ...648
        {INT_MAX, "th"},  // ...647
    };
    for (const auto& c : cases) EXPECT_EQ(NumSuffix(c.n), c.expected) << c.n;
}

TEST(AlphaFormat, LetterRepeatedPerRound) {
    const struct {
        int n;
        int upper;
        const char* expected;
    } cases[] = {
        {1, 0, "a"}, {26, 0, "z"}, {27, 0, "aa"}, {28, 0, "bb"}, {52, 0, "zz"},
        {53, 0, "aaa"}, {1, 1, "A"}, {28, 5, "BB"}, {79, 1, "AAAA"},
    };
    for (const auto& c : cases) {
        char buf[16];
        std::memset(buf, '#', sizeof buf);
        AlphaFormat(buf, c.n, c.upper);
        EXPECT_STREQ(buf, c.expected) << c.n;
        EXPECT_EQ(buf[std::strlen(c.expected) + 1], '#') << c.n;
    }
}

TEST(AlphaFormat, CountsBelowOneGiveEmptyText) {
    for (int n : {0, -1, -26, -27, INT_MIN}) {
        char buf[4] = {'#', '#', '#', '#'};
        AlphaFormat(buf, n, 0);
        EXPECT_EQ(buf[0], '\0') << n;
        EXPECT_EQ(buf[1], '#') << n;
    }
}

}  // namespace
