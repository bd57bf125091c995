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
    const struct { double bytes; const char* expected; } cases[] = {
        {1023.9, "1023"},  // no division: the value is truncated
        {1024, "1024"},    // divided only when above 1024
        {1025, "1.0K"}, {1536, "1.5K"}, {kKiB * kKiB, "1024.0K"}, {kKiB * kKiB + 1, "1.0M"},
        {3.5 * kKiB * kKiB * kKiB, "3.5G"}, {5 * kTiB * kKiB, "5.0G"},  // still "G" however many divisions
        {0.75, "0"}, {-5000, "-5000"},  // negative values are never divided
        // Infinities and NaN are not divided; the 32-bit conversion gives its 0x80000000.
        {std::numeric_limits<double>::infinity(), "-2147483648"}, {std::numeric_limits<double>::quiet_NaN(), "-2147483648"},
    };
    for (const auto& c : cases) {
        CString out = "stale";
        GetSizeText(out, c.bytes);
        EXPECT_EQ(out, c.expected) << c.bytes;
    }
}

TEST(GetSizeText, HugeValuesEndTheLoopAndTheSeparatorFollowsTheOverride) {
    CString out;
    GetSizeText(out, std::numeric_limits<double>::max());
    EXPECT_EQ(out.Right(1), "G");
    numtest::ScopedNumberSettings settings;
    settings.Override(',');
    GetSizeText(out, 1536);
    EXPECT_EQ(out, "1,5K");
}

TEST(KmgSize, SuffixesUpToTerabytes) {
    const struct { __int64 bytes; const char* expected; } cases[] = {
        {1024, "1024"}, {1536, "1.5K"}, {(__int64)(3 * kKiB * kKiB), "3.0M"}, {(__int64)(1024 * kTiB), "1024.0T"},
        // Above 1024^5 there is no larger suffix: the value stays in terabytes.
        {(__int64)(5 * kTiB * kKiB), "5120.0T"}, {INT64_MAX, "8388608.0T"}, {INT64_MIN, "-9223372036854775808"},
    };
    for (const auto& c : cases) EXPECT_EQ(kmgSize(c.bytes), c.expected) << c.bytes;
}

TEST(CountDiskSizeEstimate, SixteenBitCountOrEscapePlusThirtyTwo) {
    EXPECT_EQ(GetCountDiskSizeEstimate(0), 2);
    EXPECT_EQ(GetCountDiskSizeEstimate(65534), 2);
    EXPECT_EQ(GetCountDiskSizeEstimate(65535), 6);
    EXPECT_EQ(GetCountDiskSizeEstimate(0xFFFFFFFFu), 6);
}

// The suffix of the magnitude: "th" for 11-13 in any hundred, else by the last digit.
TEST(NumSuffix, OrdinalOfTheMagnitude) {
    const char* const byDigit[] = {"th", "st", "nd", "rd"};
    for (long long n = -1000; n <= 1000; ++n) {
        const long long m = n < 0 ? -n : n;
        const char* expected = m % 100 / 10 == 1 || m % 10 > 3 ? "th" : byDigit[m % 10];
        ASSERT_EQ(NumSuffix((int)n), expected) << n;
    }
    EXPECT_EQ(NumSuffix(INT_MIN), "th");  // ...648
    EXPECT_EQ(NumSuffix(INT_MAX), "th");  // ...647
}

// One letter repeated once per round of 26; counts below one give the empty text.
TEST(AlphaFormat, LetterRepeatedPerRound) {
    for (int n = -30; n <= 200; ++n) {
        char buf[16];
        std::memset(buf, '#', sizeof buf);
        AlphaFormat(buf, n, n % 2);
        const std::string expected = n < 1 ? "" : std::string((size_t)((n - 1) / 26 + 1), (char)((n % 2 ? 'A' : 'a') + (n - 1) % 26));
        ASSERT_STREQ(buf, expected.c_str()) << n;
        ASSERT_EQ(buf[expected.size() + 1], '#') << n;
    }
    char buf[4] = {'#', '#', '#', '#'};
    AlphaFormat(buf, INT_MIN, 0);
    EXPECT_EQ(std::string(buf, 2), std::string("\0#", 2));
}

}  // namespace
