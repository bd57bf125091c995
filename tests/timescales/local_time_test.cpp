// Local-time conversions. The test programs run with TZ=EST5EDT: Eastern time, daylight saving
// in 2006 from 2 April 02:00 EST to 29 October 02:00 EDT (the rules before 2007).
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

struct Fields {
    int y, mo, d, h, mi, s;
};

// --- TimeUTC <-> automation date -------------------------------------------------------------

// The file-time route applies the bias in effect now to every instant: the local fields of a
// TimeUTC are its UTC fields plus today's offset, in summer and in winter alike.
TEST(TimeUtcOdt, LocalFieldsUseTodaysBiasForEveryInstant) {
    const long long offset = tsoracle::CurrentOffsetSeconds();
    const Fields local[] = {
        {2006, 1, 15, 12, 0, 0}, {2006, 4, 2, 2, 30, 0},  {2006, 7, 1, 12, 0, 0}, {2006, 10, 29, 1, 30, 0},
        {1899, 12, 30, 0, 0, 0}, {1899, 12, 29, 6, 0, 0}, {1800, 3, 1, 23, 59, 59}, {1601, 1, 2, 0, 0, 0},
        {2000, 2, 29, 18, 45, 5}, {9999, 12, 31, 23, 59, 59},
    };
    for (const Fields& f : local) {
        SCOPED_TRACE(testing::Message() << f.y << "-" << f.mo << "-" << f.d << " " << f.h << ":" << f.mi);
        const TimeUTC utc = Ticks(f.y, f.mo, f.d, f.h, f.mi, f.s) - (std::uint64_t)(offset * 10000000LL);
        const COleDateTime odt = TimeUTC2ODT(utc);
        ASSERT_EQ(odt.GetStatus(), COleDateTime::valid);
        EXPECT_DOUBLE_EQ((double)odt, OleDate(f.y, f.mo, f.d, f.h, f.mi, f.s));
        EXPECT_EQ(ODT2TimeUTC(odt), utc);
    }
}

TEST(TimeUtcOdt, SummerAndWinterInstantsKeepTheirUtcDistance) {
    const TimeUTC winter = Ticks(2006, 1, 15, 17, 0, 0);
    const TimeUTC summer = Ticks(2006, 7, 15, 17, 0, 0);
    const double days = (double)(summer - winter) / 864000000000.0;
    EXPECT_DOUBLE_EQ((double)TimeUTC2ODT(summer) - (double)TimeUTC2ODT(winter), days);
}

TEST(TimeUtcOdt, SubSecondTicksAreDropped) {
    const long long offset = tsoracle::CurrentOffsetSeconds();
    const TimeUTC utc = Ticks(2012, 2, 29, 10, 11, 12) - (std::uint64_t)(offset * 10000000LL);
    EXPECT_DOUBLE_EQ((double)TimeUTC2ODT(utc + 9999999), OleDate(2012, 2, 29, 10, 11, 12));
}

TEST(TimeUtcOdt, InstantsOutsideTheAutomationRangeAreInvalidZero) {
    const long long offset = tsoracle::CurrentOffsetSeconds();
    const TimeUTC year10000 = Ticks(10000, 1, 1, 12, 0, 0) - (std::uint64_t)(offset * 10000000LL);
    const TimeUTC cases[] = {year10000, 1ULL << 63, std::numeric_limits<std::uint64_t>::max(),
                             (1ULL << 63) - 1};
    for (TimeUTC t : cases) {
        const COleDateTime odt = TimeUTC2ODT(t);
        EXPECT_EQ(odt.GetStatus(), COleDateTime::invalid) << t;
        EXPECT_EQ((double)odt, 0.0) << t;
    }
}

TEST(TimeUtcOdt, UnconvertibleAutomationDatesGiveZero) {
    COleDateTime invalid(36526.5);
    invalid.SetStatus(COleDateTime::invalid);
    COleDateTime null(36526.5);
    null.SetStatus(COleDateTime::null);
    const COleDateTime cases[] = {
        invalid, null,
        COleDateTime(std::nan("")), COleDateTime(std::numeric_limits<double>::infinity()),
        COleDateTime(-std::numeric_limits<double>::infinity()), COleDateTime(1e300),
        COleDateTime(OleDate(1600, 12, 31, 12, 0, 0)),  // before the file-time epoch
    };
    for (const COleDateTime& odt : cases) EXPECT_EQ(ODT2TimeUTC(odt), 0u) << (double)odt;
}

TEST(TimeUtcOdt, NowInWholeSecondsAgreesWithTheRuntimeClock) {
    const COleDateTime now = NowTimeODT();
    const COleDateTime viaRuntime = Time2OleDateTime(NowTime());
    ASSERT_EQ(now.GetStatus(), COleDateTime::valid);
    EXPECT_NEAR((double)now, (double)viaRuntime, 2.0 / 86400);
    const double seconds = ((double)now - std::floor((double)now)) * 86400;
    EXPECT_NEAR(seconds, std::round(seconds), 1e-3);
}

// --- the platform's file-time service -------------------------------------------------------

TEST(FileTimeService, FieldsMatchTheIndependentCalendar) {
    const Fields cases[] = {
        {1601, 1, 1, 0, 0, 0},  {1601, 12, 31, 23, 59, 59}, {1700, 2, 28, 1, 2, 3}, {1900, 3, 1, 0, 0, 0},
        {1970, 1, 1, 0, 0, 0},  {2000, 2, 29, 12, 34, 56},  {2006, 10, 29, 6, 0, 0}, {9999, 12, 31, 23, 59, 59},
        {30827, 12, 31, 23, 59, 59},
    };
    for (const Fields& f : cases) {
        SCOPED_TRACE(testing::Message() << f.y << "-" << f.mo << "-" << f.d);
        SYSTEMTIME st{};
        const std::uint64_t ticks = Ticks(f.y, f.mo, f.d, f.h, f.mi, f.s) + 1230000;  // 123 ms
        ASSERT_TRUE(qm::platform::FileTimeToFields(ticks + 9999, st));
        EXPECT_EQ(st.wYear, f.y);
        EXPECT_EQ(st.wMonth, f.mo);
        EXPECT_EQ(st.wDay, f.d);
        EXPECT_EQ(st.wHour, f.h);
        EXPECT_EQ(st.wMinute, f.mi);
        EXPECT_EQ(st.wSecond, f.s);
        EXPECT_EQ(st.wMilliseconds, 123);
        EXPECT_EQ(st.wDayOfWeek + 1, tsoracle::Weekday(f.y, f.mo, f.d));
        std::uint64_t back = 0;
        st.wDayOfWeek = 6;  // ignored on the way back
        ASSERT_TRUE(qm::platform::FieldsToFileTime(st, back));
        EXPECT_EQ(back, ticks);
    }
}

TEST(FileTimeService, RejectsFieldsOutOfRange) {
    const SYSTEMTIME good{2004, 2, 0, 29, 23, 59, 59, 999};
    std::uint64_t ft = 0;
    ASSERT_TRUE(qm::platform::FieldsToFileTime(good, ft));
    struct Bad {
        const char* what;
        SYSTEMTIME st;
    };
    const Bad bad[] = {
        {"year 1600", {1600, 12, 0, 31, 0, 0, 0, 0}},  {"month 0", {2004, 0, 0, 1, 0, 0, 0, 0}},
        {"month 13", {2004, 13, 0, 1, 0, 0, 0, 0}},    {"day 0", {2004, 1, 0, 0, 0, 0, 0, 0}},
        {"30 Feb 2004", {2004, 2, 0, 30, 0, 0, 0, 0}},
        {"31 April", {2004, 4, 0, 31, 0, 0, 0, 0}},    {"hour 24", {2004, 1, 0, 1, 24, 0, 0, 0}},
        {"minute 60", {2004, 1, 0, 1, 0, 60, 0, 0}},   {"second 60", {2004, 1, 0, 1, 0, 0, 60, 0}},
        {"ms 1000", {2004, 1, 0, 1, 0, 0, 0, 1000}},   {"all ones", {0xFFFF, 0xFFFF, 0xFFFF, 0xFFFF, 0xFFFF, 0xFFFF, 0xFFFF, 0xFFFF}},
    };
    for (const Bad& b : bad) EXPECT_FALSE(qm::platform::FieldsToFileTime(b.st, ft)) << b.what;
    SYSTEMTIME st{};
    EXPECT_FALSE(qm::platform::FileTimeToFields(1ULL << 63, st));
    EXPECT_FALSE(qm::platform::FileTimeToFields(std::numeric_limits<std::uint64_t>::max(), st));
}

#if !defined(_WIN32)
// The POSIX backend rejects 29 February of a common year, as Windows does. Under Wine the
// Win32 backend's SystemTimeToFileTime measures every February by the leap-year table and
// accepts it, so this case is checked on the POSIX backend only. (Automation dates never
// produce such fields, so the library's results do not depend on it.)
TEST(FileTimeService, PosixBackendRejectsFebruary29OfCommonYears) {
    std::uint64_t ft = 0;
    for (WORD year : {1700, 1900, 2005, 2100}) {
        const SYSTEMTIME st{year, 2, 0, 29, 0, 0, 0, 0};
        EXPECT_FALSE(qm::platform::FieldsToFileTime(st, ft)) << year;
    }
    const SYSTEMTIME leap{2000, 2, 0, 29, 0, 0, 0, 0};
    EXPECT_TRUE(qm::platform::FieldsToFileTime(leap, ft));
}
#endif

TEST(FileTimeService, LocalAndUtcDifferByTodaysOffset) {
    const long long offset = tsoracle::CurrentOffsetSeconds();
    for (std::uint64_t utc : {Ticks(2006, 1, 15, 12), Ticks(2006, 7, 15, 12), Ticks(1700, 6, 1)}) {
        std::uint64_t local = 0, back = 0;
        ASSERT_TRUE(qm::platform::UtcToLocalFileTime(utc, local));
        EXPECT_EQ((long long)(local - utc), offset * 10000000LL);
        ASSERT_TRUE(qm::platform::LocalToUtcFileTime(local, back));
        EXPECT_EQ(back, utc);
    }
}

// --- CTime and COleDateTime helpers ---------------------------------------------------------

struct LocalCase {
    long long unixSeconds;  // the instant
    Fields local;           // its EST5EDT calendar fields
};

// Instants on both sides of the 2006 transitions, and days where the rules of 2007 and later
// would differ from those of 2006.
const LocalCase kLocalCases[] = {
    {UnixSeconds(2006, 4, 2, 6, 59, 59), {2006, 4, 2, 1, 59, 59}},
    {UnixSeconds(2006, 4, 2, 7, 0, 0), {2006, 4, 2, 3, 0, 0}},
    {UnixSeconds(2006, 10, 29, 5, 59, 59), {2006, 10, 29, 1, 59, 59}},
    {UnixSeconds(2006, 10, 29, 6, 0, 0), {2006, 10, 29, 1, 0, 0}},
    {UnixSeconds(2006, 3, 12, 12, 0, 0), {2006, 3, 12, 7, 0, 0}},
    {UnixSeconds(2006, 11, 1, 12, 0, 0), {2006, 11, 1, 7, 0, 0}},
    {UnixSeconds(2007, 3, 11, 12, 0, 0), {2007, 3, 11, 8, 0, 0}},
    {UnixSeconds(2000, 1, 1, 4, 59, 59), {1999, 12, 31, 23, 59, 59}},
    {UnixSeconds(2999, 12, 31, 12, 0, 0), {2999, 12, 31, 7, 0, 0}},
};

TEST(TimeToOleDate, FollowsTheRuntimesDaylightRulesPerInstant) {
    qmtest::RecordingAssertSink sink;
    for (const LocalCase& c : kLocalCases) {
        SCOPED_TRACE(c.unixSeconds);
        const Fields& f = c.local;
        const double expected = OleDate(f.y, f.mo, f.d, f.h, f.mi, f.s);
        const COleDateTime a = Time2OleDateTime(CTime(c.unixSeconds));
        const COleDateTime b = TimeToOle(CTime(c.unixSeconds));
        ASSERT_EQ(a.GetStatus(), COleDateTime::valid);
        ASSERT_EQ(b.GetStatus(), COleDateTime::valid);
        EXPECT_DOUBLE_EQ((double)a, expected);
        EXPECT_DOUBLE_EQ((double)b, expected);
    }
    EXPECT_TRUE(sink.Reports().empty());
}

TEST(TimeToOleDate, UnbreakableTimeIsInvalidAndOnlyTimeToOleReportsIt) {
    qmtest::RecordingAssertSink sink;
    for (__int64 t : {std::numeric_limits<__int64>::max(), std::numeric_limits<__int64>::min()}) {
        EXPECT_FALSE(IsTimeValid(CTime(t)));
        EXPECT_EQ(Time2OleDateTime(CTime(t)).GetStatus(), COleDateTime::invalid);
        EXPECT_TRUE(sink.Reports().empty());
        const COleDateTime odt = TimeToOle(CTime(t));
        EXPECT_EQ(odt.GetStatus(), COleDateTime::invalid);
        ASSERT_EQ(sink.Reports().size(), 1u);
        EXPECT_EQ(sink.Reports()[0].expression, "bTimeOk");
        EXPECT_EQ(sink.Reports()[0].module, "Common\\utils");
        sink.Clear();
    }
    EXPECT_TRUE(IsTimeValid(CTime(0)));
    EXPECT_TRUE(IsTimeValid(CTime(UnixSeconds(2006, 4, 2, 7, 0, 0))));
}

TEST(OleDateToTime, ConvertsLocalFieldsWithTheInstantsOwnDaylightSaving) {
    struct Case {
        Fields local;
        long long unixSeconds;
    };
    const Case cases[] = {
        {{2006, 1, 15, 12, 0, 0}, UnixSeconds(2006, 1, 15, 17, 0, 0)},
        {{2006, 7, 1, 12, 0, 59}, UnixSeconds(2006, 7, 1, 16, 0, 59)},
        {{2006, 4, 2, 3, 30, 0}, UnixSeconds(2006, 4, 2, 7, 30, 0)},
        {{2006, 10, 29, 0, 30, 0}, UnixSeconds(2006, 10, 29, 4, 30, 0)},
        {{2006, 10, 29, 2, 30, 0}, UnixSeconds(2006, 10, 29, 7, 30, 0)},
        {{1971, 1, 1, 0, 0, 0}, UnixSeconds(1971, 1, 1, 5, 0, 0)},
        {{2999, 12, 31, 23, 59, 59}, UnixSeconds(3000, 1, 1, 4, 59, 59)},
    };
    qmtest::RecordingAssertSink sink;
    for (const Case& c : cases) {
        const Fields& f = c.local;
        SCOPED_TRACE(testing::Message() << f.y << "-" << f.mo << "-" << f.d << " " << f.h << ":" << f.mi);
        const COleDateTime odt(OleDate(f.y, f.mo, f.d, f.h, f.mi, f.s));
        EXPECT_EQ(OleDateTime2Time(odt).GetTime(), c.unixSeconds);
        EXPECT_EQ(OleToTime(odt).GetTime(), c.unixSeconds);
    }
    EXPECT_TRUE(sink.Reports().empty());
}

// Local fields in the skipped hour (2 April 2006, 02:30) or the repeated hour (29 October 2006,
// 01:30) name no single instant; the C runtime's mktime picks one of the two readings
// (standard or daylight time). glibc's pick for the repeated hour depends on the conversions
// the process made before, so on every backend only the pair is certain.
TEST(OleDateToTime, SkippedAndRepeatedHoursGiveOneOfTheirTwoReadings) {
    const long long skipped = OleDateTime2Time(COleDateTime(OleDate(2006, 4, 2, 2, 30, 0))).GetTime();
    EXPECT_TRUE(skipped == UnixSeconds(2006, 4, 2, 6, 30, 0) || skipped == UnixSeconds(2006, 4, 2, 7, 30, 0)) << skipped;
    const long long repeated = OleDateTime2Time(COleDateTime(OleDate(2006, 10, 29, 1, 30, 0))).GetTime();
    EXPECT_TRUE(repeated == UnixSeconds(2006, 10, 29, 5, 30, 0) || repeated == UnixSeconds(2006, 10, 29, 6, 30, 0)) << repeated;
}

#if defined(_WIN32)
// The Windows runtime always takes the skipped time as daylight time (the instant shows as
// 01:30 EST) and the repeated one as standard time; glibc differs (see above).
TEST(OleDateToTime, Win32BackendReadsTheSkippedHourAsDaylightAndTheRepeatedOneAsStandard) {
    EXPECT_EQ(OleDateTime2Time(COleDateTime(OleDate(2006, 4, 2, 2, 30, 0))).GetTime(), UnixSeconds(2006, 4, 2, 6, 30, 0));
    EXPECT_EQ(OleDateTime2Time(COleDateTime(OleDate(2006, 10, 29, 1, 30, 0))).GetTime(), UnixSeconds(2006, 10, 29, 6, 30, 0));
}
#endif

TEST(OleDateToTime, OutsideItsYearsOrInvalidGivesTheZeroTime) {
    COleDateTime invalid(OleDate(2006, 7, 1));
    invalid.SetStatus(COleDateTime::invalid);
    const COleDateTime cases[] = {
        COleDateTime(OleDate(1970, 6, 1, 12, 0, 0)), COleDateTime(OleDate(1970, 12, 31, 23, 59, 59)),
        COleDateTime(OleDate(3000, 1, 1)),           COleDateTime(OleDate(1899, 12, 29, 6, 0, 0)),
        COleDateTime(0.0),                           invalid,
        COleDateTime(std::nan("")),                  COleDateTime(std::numeric_limits<double>::infinity()),
        COleDateTime(-1e300),                        COleDateTime(1e300),
    };
    for (const COleDateTime& odt : cases) EXPECT_EQ(OleDateTime2Time(odt).GetTime(), 0) << (double)odt;
}

TEST(OleDateToTime, OleToTimeReportsOnlyWhatCannotBeBrokenDown) {
    qmtest::RecordingAssertSink sink;
    COleDateTime invalid(OleDate(2006, 7, 1));
    invalid.SetStatus(COleDateTime::invalid);
    const COleDateTime unbreakable[] = {invalid, COleDateTime(std::nan("")), COleDateTime(1e300)};
    for (const COleDateTime& odt : unbreakable) {
        EXPECT_EQ(OleToTime(odt).GetTime(), 0);
        ASSERT_EQ(sink.Reports().size(), 1u);
        EXPECT_EQ(sink.Reports()[0].expression, "bTimeOk");
        EXPECT_EQ(sink.Reports()[0].module, "Common\\utils");
        sink.Clear();
    }
    // Valid but before 1900: the zero time, silently.
    EXPECT_EQ(OleToTime(COleDateTime(OleDate(1899, 12, 31, 12, 0, 0))).GetTime(), 0);
    EXPECT_EQ(OleToTime(COleDateTime(OleDate(100, 1, 1))).GetTime(), 0);
    EXPECT_TRUE(sink.Reports().empty());
}

TEST(ExtractParts, DateOfAnAutomationDateDropsTheTimeOfDay) {
    struct Case {
        double in, out;
    };
    const Case cases[] = {
        {OleDate(2000, 1, 1, 18, 0, 0), OleDate(2000, 1, 1)},
        {OleDate(1899, 12, 29, 6, 0, 0), -1.0},
        {OleDate(1800, 2, 28, 23, 59, 59), OleDate(1800, 2, 28)},
        {0.75, 0.0},
        // Fields are read to the nearest second: 23:59:59.6 is already the next day.
        {OleDate(2000, 1, 1) + 86399.6 / 86400, OleDate(2000, 1, 2)},
    };
    for (const Case& c : cases) {
        const COleDateTime d = ExtractDate(COleDateTime(c.in));
        EXPECT_EQ(d.GetStatus(), COleDateTime::valid) << c.in;
        EXPECT_DOUBLE_EQ((double)d, c.out) << c.in;
    }
    COleDateTime invalid(36526.5);
    invalid.SetStatus(COleDateTime::invalid);
    EXPECT_EQ(ExtractDate(invalid).GetStatus(), COleDateTime::invalid);
    EXPECT_EQ(ExtractDate(COleDateTime(std::nan(""))).GetStatus(), COleDateTime::invalid);
}

TEST(ExtractParts, DateOfATimeIsLocalMidnightOnTransitionDays) {
    struct Case {
        long long in, midnight;
    };
    const Case cases[] = {
        // 2 April 2006 12:00 EDT: midnight that day was still EST.
        {UnixSeconds(2006, 4, 2, 16, 0, 0), UnixSeconds(2006, 4, 2, 5, 0, 0)},
        // 29 October 2006 23:00 EST: midnight that day was still EDT.
        {UnixSeconds(2006, 10, 30, 4, 0, 0), UnixSeconds(2006, 10, 29, 4, 0, 0)},
        // Exactly midnight stays.
        {UnixSeconds(2006, 7, 4, 4, 0, 0), UnixSeconds(2006, 7, 4, 4, 0, 0)},
        {UnixSeconds(2006, 7, 4, 3, 59, 59), UnixSeconds(2006, 7, 3, 4, 0, 0)},
    };
    for (const Case& c : cases) EXPECT_EQ(ExtractDate(CTime(c.in)).GetTime(), c.midnight) << c.in;
    EXPECT_EQ(ExtractDate(CTime(std::numeric_limits<__int64>::max())).GetTime(), 0);
}

TEST(ExtractParts, TimeOfDayLandsOnTheAnchorDate) {
    // 13 July 1994 was a daylight-saving day: local hh:mm is UTC hh+4:mm.
    const long long anchor = UnixSeconds(1994, 7, 13, 4, 0, 0);
    struct Case {
        long long in;
        int hour, minute;
    };
    const Case cases[] = {
        {UnixSeconds(2006, 1, 15, 13, 45, 30), 8, 45},    // EST
        {UnixSeconds(2006, 7, 15, 3, 59, 59), 23, 59},    // EDT, previous local day
        {UnixSeconds(2006, 10, 29, 6, 30, 0), 1, 30},     // the repeated hour, second pass
        {0, 19, 0},
    };
    for (const Case& c : cases) {
        const CTime tod = ExtractTOD(CTime(c.in));
        EXPECT_EQ(tod.GetTime(), anchor + c.hour * 3600 + c.minute * 60) << c.in;
        EXPECT_EQ(tod.GetSecond(), 0);
    }
}

TEST(ExtractParts, TimeOfDayOfAnUnbreakableTimeIsTheFrameworksFieldFailure) {
    try {
        ExtractTOD(CTime(std::numeric_limits<__int64>::max()));
        FAIL() << "no exception";
    } catch (CException* e) {
        auto* ole = dynamic_cast<COleException*>(e);
        ASSERT_NE(ole, nullptr);
        EXPECT_EQ(ole->m_sc, E_FAIL);
        e->Delete();
    }
}

}  // namespace
