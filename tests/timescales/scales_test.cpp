#include <gtest/gtest.h>
#include <cmath>
#include <cstdint>
#include <limits>

#include "tests/timescales/calendar_oracle.h"
#include "utils/common/date_time.h"
#include "utils/common/utils_time.h"
#include "utils/platform/crt.h"

namespace {

struct Instant { int y, mo, d, h, mi, s; };

TEST(TimeScales, UtcUnixAndMillisecondsAgreeWithEpochArithmetic) {
    const Instant instants[] = {
        {1970, 1, 1, 0, 0, 0},  {1999, 12, 31, 23, 59, 59}, {2000, 2, 29, 12, 0, 0},
        {2038, 1, 19, 3, 14, 8}, {9999, 12, 31, 23, 59, 59}, {30000, 6, 15, 1, 2, 3},
    };
    for (const Instant& i : instants) {
        SCOPED_TRACE(testing::Message() << i.y << "-" << i.mo << "-" << i.d);
        const std::uint64_t ticks = tsoracle::Ticks(i.y, i.mo, i.d, i.h, i.mi, i.s);
        const std::uint64_t micros = (std::uint64_t)tsoracle::UnixSeconds(i.y, i.mo, i.d, i.h, i.mi, i.s) * 1000000ULL;
        // Sub-second parts: 7 digits of ticks, 6 of microseconds; the 100-ns digit is cut.
        EXPECT_EQ(TimeUTC2TimeUnix(ticks), micros);
        EXPECT_EQ(TimeUnix2TimeUTC(micros), ticks);
        EXPECT_EQ(TimeUTC2TimeUnix(ticks + 1234567), micros + 123456);
        EXPECT_EQ(TimeUnix2TimeUTC(micros + 123456), ticks + 1234560);
        EXPECT_EQ(TimeUTC2MilliSeconds(ticks + 19999), (__int64)(ticks / 10000000ULL) * 1000 + 1);
        EXPECT_EQ(MilliSeconds2TimeUTC(TimeUTC2MilliSeconds(ticks)), ticks);
        EXPECT_DOUBLE_EQ(TimeUTC2Seconds(ticks), (double)tsoracle::SecondsSince1601(i.y, i.mo, i.d, i.h, i.mi, i.s));
    }
}

// Unsigned arithmetic wraps modulo 2^64 where an instant has no place on the other scale.
TEST(TimeScales, OutOfRangeValuesWrapWithoutUndefinedBehaviour) {
    const std::uint64_t kMax = std::numeric_limits<std::uint64_t>::max();
    EXPECT_EQ(TimeUTC2TimeUnix(0), 0 - kTimeUnixEpochOffset);
    EXPECT_EQ(TimeUTC2TimeUnix(kMax), kMax / 10 - kTimeUnixEpochOffset);
    EXPECT_EQ(TimeUnix2TimeUTC(kMax), (kTimeUnixEpochOffset - 1) * 10);
    EXPECT_EQ(MilliSeconds2TimeUTC(-1), kMax - 9999);
    EXPECT_EQ(MilliSeconds2TimeUTC(std::numeric_limits<__int64>::min()), 0u);
    EXPECT_EQ(TimeUTC2MilliSeconds(kMax), 1844674407370955LL);
    EXPECT_DOUBLE_EQ(TimeUTC2Seconds(1ULL << 63), 922337203685.4775808);  // read as unsigned
}

TEST(TimeScales, ClockReadsTheSameInstantOnEveryScale) {
    const __int64 before = qm::crt::Time64();
    const TimeUTC utc = GetCurrentTimeUTC();
    const TimeUnix unix = GetCurrentTimeUnix();
    const __int64 after = qm::crt::Time64();
    const long long utcSeconds = (long long)(utc / 10000000ULL) - tsoracle::kSeconds1601To1970;
    EXPECT_GE(utcSeconds, before - 1);
    EXPECT_LE(utcSeconds, after + 1);
    EXPECT_GE(unix, TimeUTC2TimeUnix(utc));
    EXPECT_LT(unix - TimeUTC2TimeUnix(utc), 2000000u);
    // The automation-date clock reads whole seconds.
    const double now = (double)NowTimeODT(), seconds = (now - std::floor(now)) * 86400;
    EXPECT_NEAR(now, (double)Time2OleDateTime(NowTime()), 2.0 / 86400);
    EXPECT_LT(std::fabs(seconds - std::round(seconds)), 1e-3) << seconds;
}

TEST(Stopwatch, SpanMeasuresSinceThePreviousCall) {
    const double a = GetTimePrecision();
    EXPECT_GT(a, 0.0);
    EXPECT_GE(GetTimePrecision(), a);
    EXPECT_EQ(GetSpan(true), 0);
    const int immediate = GetSpan(false);
    EXPECT_GE(immediate, 0);
    EXPECT_LT(immediate, 1000000);
    // A busy wait of at least 20 ms on the same counter must show as at least 20000 us.
    const double start = GetTimePrecision();
    while (GetTimePrecision() - start < 0.02) {
    }
    const int waited = GetSpan(false);
    EXPECT_GE(waited, 20000);
    EXPECT_LT(waited, 20000000);
    EXPECT_LT(GetSpan(false), waited);  // every call restarts the stopwatch
}

}  // namespace
