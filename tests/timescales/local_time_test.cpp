// Local-time conversions under TZ=EST5EDT (2006: daylight time 2 April to 29 October).
#include <gtest/gtest.h>
#include <cmath>
#include <cstdint>
#include <limits>
#include <string>

#include "tests/support/recording_sink.h"
#include "tests/timescales/calendar_oracle.h"
#include "utils/common/date_time.h"
#include "utils/common/utils_time.h"
#include "utils/framework/exceptions.h"
#include "utils/platform/filetime.h"

namespace {

using tsoracle::OleDate;
using tsoracle::Ticks;
using tsoracle::UnixSeconds;

struct Fields { int y, mo, d, h, mi, s; };

const double kNaN = std::nan(""), kInf = std::numeric_limits<double>::infinity();
const __int64 kTimeMax = std::numeric_limits<__int64>::max();
const std::vector<std::string> kTimeNotOk{"bTimeOk"};

COleDateTime WithStatus(double v, COleDateTime::DateTimeStatus status) {
    COleDateTime odt(v);
    odt.SetStatus(status);
    return odt;
}

// The file-time route applies today's bias to every instant; ticks below a second are dropped.
TEST(TimeUtcOdt, LocalFieldsUseTodaysBiasForEveryInstant) {
    const long long offset = tsoracle::CurrentOffsetSeconds();
    const Fields local[] = {
        {2006, 1, 15, 12, 0, 0}, {2006, 4, 2, 2, 30, 0},   {2006, 7, 1, 12, 0, 0},  {1899, 12, 30, 0, 0, 0},
        {1899, 12, 29, 6, 0, 0}, {1601, 1, 2, 0, 0, 0},    {2000, 2, 29, 18, 45, 5}, {9999, 12, 31, 23, 59, 59},
    };
    for (const Fields& f : local) {
        SCOPED_TRACE(testing::Message() << f.y << "-" << f.mo << "-" << f.d << " " << f.h << ":" << f.mi);
        const TimeUTC utc = Ticks(f.y, f.mo, f.d, f.h, f.mi, f.s) - (std::uint64_t)(offset * 10000000LL);
        const COleDateTime odt = TimeUTC2ODT(utc + 9999999);
        ASSERT_EQ(odt.GetStatus(), COleDateTime::valid);
        EXPECT_DOUBLE_EQ((double)odt, OleDate(f.y, f.mo, f.d, f.h, f.mi, f.s));
        EXPECT_EQ(ODT2TimeUTC(odt), utc);
    }
}

TEST(TimeUtcOdt, WhatHasNoPlaceOnTheOtherScaleIsZero) {
    const long long offset = tsoracle::CurrentOffsetSeconds();
    const TimeUTC year10000 = Ticks(10000, 1, 1, 12, 0, 0) - (std::uint64_t)(offset * 10000000LL);
    const TimeUTC outside[] = {year10000, 1ULL << 63, std::numeric_limits<std::uint64_t>::max()};
    for (TimeUTC t : outside) {
        EXPECT_EQ(TimeUTC2ODT(t).GetStatus(), COleDateTime::invalid) << t;
        EXPECT_EQ((double)TimeUTC2ODT(t), 0.0) << t;
    }
    const COleDateTime cases[] = {
        WithStatus(36526.5, COleDateTime::invalid), WithStatus(36526.5, COleDateTime::null),
        COleDateTime(kNaN), COleDateTime(-kInf), COleDateTime(1e300),
        COleDateTime(OleDate(1600, 12, 31, 12, 0, 0)),  // before the file-time epoch
    };
    for (const COleDateTime& odt : cases) EXPECT_EQ(ODT2TimeUTC(odt), 0u) << (double)odt;
}

TEST(FileTimeService, FieldsMatchTheIndependentCalendar) {
    const Fields cases[] = {
        {1601, 1, 1, 0, 0, 0},  {1700, 2, 28, 1, 2, 3},  {1900, 3, 1, 0, 0, 0},
        {2000, 2, 29, 12, 34, 56}, {9999, 12, 31, 23, 59, 59}, {30827, 12, 31, 23, 59, 59},
    };
    for (const Fields& f : cases) {
        SCOPED_TRACE(testing::Message() << f.y << "-" << f.mo << "-" << f.d);
        SYSTEMTIME st{};
        const std::uint64_t ticks = Ticks(f.y, f.mo, f.d, f.h, f.mi, f.s) + 1230000;  // 123 ms
        ASSERT_TRUE(qm::platform::FileTimeToFields(ticks + 9999, st));
        const int got[] = {st.wYear, st.wMonth, st.wDay, st.wHour, st.wMinute, st.wSecond, st.wMilliseconds, st.wDayOfWeek + 1};
        const int want[] = {f.y, f.mo, f.d, f.h, f.mi, f.s, 123, tsoracle::Weekday(f.y, f.mo, f.d)};
        for (int k = 0; k < 8; ++k) EXPECT_EQ(got[k], want[k]) << "field " << k;
        std::uint64_t back = 0;
        st.wDayOfWeek = 6;  // ignored on the way back
        EXPECT_TRUE(qm::platform::FieldsToFileTime(st, back));
        EXPECT_EQ(back, ticks);
    }
}

TEST(FileTimeService, RejectsFieldsOutOfRange) {
    std::uint64_t ft = 0;
    ASSERT_TRUE(qm::platform::FieldsToFileTime({2004, 2, 0, 29, 23, 59, 59, 999}, ft));
    const SYSTEMTIME bad[] = {
        {1600, 12, 0, 31, 0, 0, 0, 0}, {2004, 0, 0, 1, 0, 0, 0, 0},  {2004, 13, 0, 1, 0, 0, 0, 0},
        {2004, 1, 0, 0, 0, 0, 0, 0},   {2004, 2, 0, 30, 0, 0, 0, 0}, {2004, 4, 0, 31, 0, 0, 0, 0},
        {2004, 1, 0, 1, 24, 0, 0, 0},  {2004, 1, 0, 1, 0, 60, 0, 0}, {2004, 1, 0, 1, 0, 0, 60, 0},
        {2004, 1, 0, 1, 0, 0, 0, 1000}, {0xFFFF, 0xFFFF, 0xFFFF, 0xFFFF, 0xFFFF, 0xFFFF, 0xFFFF, 0xFFFF},
    };
    for (const SYSTEMTIME& st : bad)
        EXPECT_FALSE(qm::platform::FieldsToFileTime(st, ft)) << st.wYear << "-" << st.wMonth << "-" << st.wDay;
    SYSTEMTIME st{};
    EXPECT_FALSE(qm::platform::FileTimeToFields(1ULL << 63, st));
    EXPECT_FALSE(qm::platform::FileTimeToFields(~0ULL, st));
}

#if !defined(_WIN32)
// The POSIX backend rejects 29 February of a common year, as Windows does; Wine's Win32 backend
// accepts it, so this runs on POSIX only (automation dates never produce such fields).
TEST(FileTimeService, PosixBackendRejectsFebruary29OfCommonYears) {
    std::uint64_t ft = 0;
    for (WORD year : {1700, 1900, 2005, 2100}) EXPECT_FALSE(qm::platform::FieldsToFileTime({year, 2, 0, 29, 0, 0, 0, 0}, ft)) << year;
    EXPECT_TRUE(qm::platform::FieldsToFileTime({2000, 2, 0, 29, 0, 0, 0, 0}, ft));
}
#endif

// Both sides of the 2006 transitions and days where the 2007 rules differ, both directions.
TEST(TimeAndOleDate, FollowTheRuntimesDaylightRulesPerInstant) {
    struct Case { long long unixSeconds; Fields local; };
    const Case cases[] = {
        {UnixSeconds(2006, 4, 2, 6, 59, 59), {2006, 4, 2, 1, 59, 59}},
        {UnixSeconds(2006, 4, 2, 7, 0, 0), {2006, 4, 2, 3, 0, 0}},
        {UnixSeconds(2006, 10, 29, 4, 30, 0), {2006, 10, 29, 0, 30, 0}},
        {UnixSeconds(2006, 10, 29, 6, 0, 0), {2006, 10, 29, 1, 0, 0}},  // the repeated hour: one way only
        {UnixSeconds(2006, 3, 12, 12, 0, 0), {2006, 3, 12, 7, 0, 0}},
        {UnixSeconds(2006, 11, 1, 12, 0, 0), {2006, 11, 1, 7, 0, 0}},
        {UnixSeconds(2007, 3, 11, 12, 0, 0), {2007, 3, 11, 8, 0, 0}},
        {UnixSeconds(1971, 1, 1, 5, 0, 0), {1971, 1, 1, 0, 0, 0}},
        {UnixSeconds(3000, 1, 1, 4, 59, 59), {2999, 12, 31, 23, 59, 59}},
    };
    qmtest::RecordingAssertSink sink;
    for (const Case& c : cases) {
        SCOPED_TRACE(c.unixSeconds);
        const Fields& f = c.local;
        const double ole = OleDate(f.y, f.mo, f.d, f.h, f.mi, f.s);
        EXPECT_DOUBLE_EQ((double)Time2OleDateTime(CTime(c.unixSeconds)), ole);
        EXPECT_DOUBLE_EQ((double)TimeToOle(CTime(c.unixSeconds)), ole);
        if (f.mo == 10 && f.d == 29 && f.h == 1) continue;
        EXPECT_EQ(OleDateTime2Time(COleDateTime(ole)).GetTime(), c.unixSeconds);
        EXPECT_EQ(OleToTime(COleDateTime(ole)).GetTime(), c.unixSeconds);
    }
    EXPECT_TRUE(sink.Reports().empty());
}

TEST(TimeAndOleDate, UnbreakableValuesAreInvalidAndOnlyTheCheckedFormsReportThem) {
    qmtest::RecordingAssertSink sink;
    for (__int64 t : {kTimeMax, std::numeric_limits<__int64>::min()}) {
        EXPECT_FALSE(IsTimeValid(CTime(t))) << t;
        EXPECT_EQ(Time2OleDateTime(CTime(t)).GetStatus(), COleDateTime::invalid) << t;
        EXPECT_TRUE(sink.Reports().empty());
        EXPECT_EQ(TimeToOle(CTime(t)).GetStatus(), COleDateTime::invalid);
        ASSERT_EQ(sink.Expressions(), kTimeNotOk) << t;
        EXPECT_EQ(sink.Reports()[0].module, "Common\\utils");
        sink.Clear();
    }
    EXPECT_TRUE(IsTimeValid(CTime(0)));
    for (const COleDateTime& odt : {WithStatus(38899, COleDateTime::invalid), COleDateTime(kNaN), COleDateTime(1e300)}) {
        EXPECT_EQ(OleToTime(odt).GetTime(), 0) << (double)odt;
        EXPECT_EQ(sink.Expressions(), kTimeNotOk) << (double)odt;
        sink.Clear();
    }
    // Outside CTime's years (1971-2999 one way, from 1900 the other) or invalid: 0, silently.
    const COleDateTime outside[] = {
        COleDateTime(OleDate(1970, 12, 31, 23, 59, 59)), COleDateTime(OleDate(3000, 1, 1)),
        COleDateTime(OleDate(1899, 12, 29, 6, 0, 0)),    COleDateTime(0.0),
        WithStatus(38899, COleDateTime::invalid),        COleDateTime(kNaN), COleDateTime(-1e300),
    };
    for (const COleDateTime& odt : outside) EXPECT_EQ(OleDateTime2Time(odt).GetTime(), 0) << (double)odt;
    EXPECT_EQ(OleToTime(COleDateTime(OleDate(1899, 12, 31, 12, 0, 0))).GetTime(), 0);
    EXPECT_TRUE(sink.Reports().empty());
}

// Local fields in the skipped or the repeated hour name no single instant; mktime picks one of
// the two readings (glibc's pick depends on earlier conversions), so only the pair is certain.
TEST(TimeAndOleDate, SkippedAndRepeatedHoursGiveOneOfTheirTwoReadings) {
    const long long skipped = OleDateTime2Time(COleDateTime(OleDate(2006, 4, 2, 2, 30, 0))).GetTime();
    EXPECT_TRUE(skipped == UnixSeconds(2006, 4, 2, 6, 30, 0) || skipped == UnixSeconds(2006, 4, 2, 7, 30, 0)) << skipped;
    const long long repeated = OleDateTime2Time(COleDateTime(OleDate(2006, 10, 29, 1, 30, 0))).GetTime();
    EXPECT_TRUE(repeated == UnixSeconds(2006, 10, 29, 5, 30, 0) || repeated == UnixSeconds(2006, 10, 29, 6, 30, 0)) << repeated;
#if defined(_WIN32)
    // The Windows runtime takes the skipped time as daylight time and the repeated one as standard.
    EXPECT_EQ(skipped, UnixSeconds(2006, 4, 2, 6, 30, 0));
    EXPECT_EQ(repeated, UnixSeconds(2006, 10, 29, 6, 30, 0));
#endif
}

TEST(ExtractParts, DateDropsTheTimeOfDayToTheNearestSecond) {
    const double cases[][2] = {
        {OleDate(2000, 1, 1, 18, 0, 0), OleDate(2000, 1, 1)}, {OleDate(1899, 12, 29, 6, 0, 0), -1.0}, {0.75, 0.0},
        {OleDate(2000, 1, 1) + 86399.6 / 86400, OleDate(2000, 1, 2)},  // 23:59:59.6 is the next day
    };
    for (const auto& c : cases) {
        const COleDateTime d = ExtractDate(COleDateTime(c[0]));
        EXPECT_EQ(d.GetStatus(), COleDateTime::valid) << c[0];
        EXPECT_DOUBLE_EQ((double)d, c[1]) << c[0];
    }
    for (const COleDateTime& bad : {WithStatus(36526.5, COleDateTime::invalid), COleDateTime(kNaN)})
        EXPECT_EQ(ExtractDate(bad).GetStatus(), COleDateTime::invalid);
    // A time's date is local midnight, also on transition days.
    const long long times[][2] = {
        {UnixSeconds(2006, 4, 2, 16, 0, 0), UnixSeconds(2006, 4, 2, 5, 0, 0)},     // midnight was EST
        {UnixSeconds(2006, 10, 30, 4, 0, 0), UnixSeconds(2006, 10, 29, 4, 0, 0)},  // midnight was EDT
        {UnixSeconds(2006, 7, 4, 4, 0, 0), UnixSeconds(2006, 7, 4, 4, 0, 0)},
        {UnixSeconds(2006, 7, 4, 3, 59, 59), UnixSeconds(2006, 7, 3, 4, 0, 0)}, {kTimeMax, 0},
    };
    for (const auto& c : times) EXPECT_EQ(ExtractDate(CTime(c[0])).GetTime(), c[1]) << c[0];
}

TEST(ExtractParts, TimeOfDayLandsOnTheAnchorDate) {
    // 13 July 1994 was a daylight-saving day: local hh:mm is UTC hh+4:mm.
    const long long anchor = UnixSeconds(1994, 7, 13, 4, 0, 0);
    const long long cases[][3] = {
        {UnixSeconds(2006, 1, 15, 13, 45, 30), 8, 45},   // EST
        {UnixSeconds(2006, 7, 15, 3, 59, 59), 23, 59},   // EDT, previous local day
        {UnixSeconds(2006, 10, 29, 6, 30, 0), 1, 30},    // the repeated hour, second pass
    };
    for (const auto& c : cases) EXPECT_EQ(ExtractTOD(CTime(c[0])).GetTime(), anchor + c[1] * 3600 + c[2] * 60) << c[0];
    EXPECT_EQ(qmtest::OleFailure([] { ExtractTOD(CTime(kTimeMax)); }), E_FAIL);
}

}  // namespace
