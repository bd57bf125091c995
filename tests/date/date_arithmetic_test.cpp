// CDate arithmetic against std::chrono's calendar and a literal month-by-month day walk.
#include <gtest/gtest.h>
#include <chrono>
#include <cstdint>
#include <random>

#include "tests/support/recording_sink.h"
#include "utils/common/date.h"

namespace {

using namespace std::chrono;

// Ordinal day number with 1 January of year 1 as day 1 (1970-01-01 is day 719163).
long Ordinal(int y, int m, int d) {
    return (long)sys_days{year{y} / month{(unsigned)m} / day{(unsigned)d}}.time_since_epoch().count() + 719163;
}

year_month_day FromOrdinal(long n) { return year_month_day{sys_days{days{n - 719163}}}; }

int Field(int v, int bits) { return bits == 16 ? (short)(std::uint16_t)v : (signed char)(std::uint8_t)v; }

// One month per step, with the library's dpm and the fields' 16/8-bit wrapping.
CDate LiteralWalk(CDate date, long long n) {
    int y = date.GetYear(), m = date.GetMonth();
    long long t = date.GetDay() + n;
    if (t >= 29) {
        while (t > CDate::dpm(y, m)) {
            t -= CDate::dpm(y, m);
            m = Field(m + 1, 8);
            if (m == 13) { m = 1; y = Field(y + 1, 16); }
        }
    } else if (t < 1) {
        while (t < 1) {
            m = Field(m - 1, 8);
            if (m == 0) { m = 12; y = Field(y - 1, 16); }
            t += CDate::dpm(y, m);
        }
    }
    return CDate(y, m, (int)t);
}

}  // namespace

TEST(DateCalendar, LeapYearsAndMonthLengths) {
    // Years 1-3000 are walked day by day below; here years before 1 and months out of range.
    struct Case { int year, month, days; } cases[] = {
        {0, 2, 29}, {-4, 2, 29}, {-100, 2, 28}, {-400, 2, 29}, {2001, 0, 0}, {2001, 13, 0}, {2001, -128, 0},
    };
    for (const Case& c : cases) EXPECT_EQ(CDate::dpm(c.year, c.month), c.days) << c.year << "-" << c.month;
    EXPECT_EQ(CDate(2012, 7, 4).IsLeap(), 1);
    EXPECT_EQ(CDate(1900, 7, 4).IsLeap(), 0);
    EXPECT_EQ(CDate::m2d(3), 61);  // February counted as 30 days
    EXPECT_EQ(CDate::y2d(4), 1461);
}

// Scalar, fields and weekday of every day of years 1-3000 against the proleptic calendar.
TEST(DateCalendar, ScalarAndWeekdayMatchTheGregorianOrdinalForEveryDayOfYears1To3000) {
    long expected = 1;
    for (int y = 1; y <= 3000; ++y)
        for (int m = 1; m <= 12; ++m) {
            int days = CDate::dpm(y, m);
            for (int d = 1; d <= days; ++d, ++expected) {
                ASSERT_EQ(CDate::ymd2scalar(y, m, d), expected) << y << "-" << m << "-" << d;
                int yy, mm, dd;
                CDate::scalar2ymd(expected, yy, mm, dd);
                ASSERT_EQ(yy, y) << expected;
                ASSERT_EQ(mm, m) << expected;
                ASSERT_EQ(dd, d) << expected;
                unsigned wd = weekday{sys_days{std::chrono::days{expected - 719163}}}.c_encoding();  // 0 = Sunday
                ASSERT_EQ(CDate(y, m, d).GetDayOfWeek(), (int)wd + 1) << expected;
            }
        }
    EXPECT_EQ(expected - 1, Ordinal(3000, 12, 31));
    std::mt19937 rng(7);
    std::uniform_int_distribution<int> years(3001, 32767), months(1, 12), days(1, 31);
    for (int i = 0; i < 20000; ++i) {
        int y = years(rng), m = months(rng), d = days(rng) % CDate::dpm(y, m) + 1;
        LONG s = CDate::ymd2scalar(y, m, d);
        ASSERT_EQ(s, Ordinal(y, m, d));
        CDate back;
        back.FromScalar(s);
        ASSERT_EQ(back, CDate(y, m, d)) << s;
    }
}

TEST(DateCalendar, ExtremeScalarsEndAndStayDefined) {
    // These end quickly and without undefined behaviour.
    int y, m, d;
    for (LONG s : {(LONG)0x80000000, (LONG)-1, (LONG)0, (LONG)6000000, (LONG)-6000000}) {
        CDate::scalar2ymd(s, y, m, d);
        EXPECT_EQ(CDate::ymd2scalar(y, m, d), s) << s;
    }
    CDate::scalar2ymd(0x7FFFFFFF, y, m, d);
    EXPECT_GT(y, 5000000);  // the year holding that day, not a wrapped guess
}

TEST(DateArithmetic, AdditionAgreesWithScalarArithmeticForValidDates) {
    std::mt19937 rng(11);
    std::uniform_int_distribution<long> start(Ordinal(1, 1, 1), Ordinal(9000, 1, 1));
    std::uniform_int_distribution<int> small(-800, 800), large(-1000000, 1000000);
    for (int i = 0; i < 100000; ++i) {
        long s = start(rng);
        int n = i % 4 == 2 ? 1 : (i & 1) ? small(rng) : large(rng);
        CDate d;
        d.FromScalar(s);
        if (s + n < 1) continue;
        year_month_day ymd = FromOrdinal(s + n);
        const CDate expected((int)ymd.year(), (unsigned)ymd.month(), (unsigned)ymd.day());
        CDate inPlace = d;
        inPlace += n;
        ASSERT_EQ(d + n, expected) << s << " + " << n;
        ASSERT_EQ(expected - n, d) << s << " + " << n;
        ASSERT_EQ(expected - d, n) << s << " + " << n;
        ASSERT_EQ(inPlace, expected) << s << " + " << n;
        inPlace -= n;
        CDate a = d, b = expected;
        ASSERT_EQ(inPlace, d) << s << " - " << n;
        if (n == 1) {
            ASSERT_EQ(a++, d) << s;
            ASSERT_EQ(a, expected) << s;
            ASSERT_EQ(--b, d) << s;
            ASSERT_EQ(++CDate(d), expected) << s;
        }
    }
}

// Any packed word and distances up to 32 bits; the February entry is left set for the end year.
TEST(DateArithmetic, WalkMatchesTheLiteralWalkForAnyInput) {
    std::mt19937 rng(3);
    std::uniform_int_distribution<DWORD> words;
    std::uniform_int_distribution<int> n(-40000, 40000);
    for (int i = 0; i < 20000; ++i) {
        CDate d;
        d.FromDWORD(words(rng));
        if (i % 3 == 0) d.Set(32000 + i % 767, d.GetMonth(), d.GetDay());
        if (i % 3 == 1) d.Set(-32768 + i % 700, d.GetMonth(), d.GetDay());
        int k = n(rng);
        ASSERT_EQ((d + k).AsDWORD(), LiteralWalk(d, k).AsDWORD()) << std::hex << d.AsDWORD() << " + " << std::dec << k;
        ASSERT_EQ((d - k).AsDWORD(), LiteralWalk(d, -(long long)k).AsDWORD());
    }
    for (DWORD w : {0x07D00101u, 0x7FFF0C1Fu, 0x80000101u, 0x07D00D05u, 0xFFFFFFFFu, 0x07DC0704u})
        for (int k : {24000000, -24000000, 2147483647, -2147483647 - 1}) {
            CDate d;
            d.FromDWORD(w);
            if (w != 0x07DC0704u && (k > 24000000 || k < -24000000)) continue;
            ASSERT_EQ((d + k).AsDWORD(), LiteralWalk(d, k).AsDWORD()) << std::hex << w << " + " << std::dec << k;
        }
    CDate(2000, 12, 15) + 400;  // ends in 2002
    EXPECT_EQ(CDate::days_per_mon[1], 28);
    CDate(2003, 3, 1) + 365;  // ends in 2004
    EXPECT_EQ(CDate::days_per_mon[1], 29);
}

// Days past the month's end keep counting: 31 February + 1 is 32 February.
TEST(DateArithmetic, IncrementPastTheMonthsEndKeepsCounting) {
    CDate pastEnd(2001, 2, 31);
    EXPECT_EQ(++pastEnd, CDate(2001, 2, 32));
}

TEST(DateArithmetic, AddMonthShiftsWithoutClampingAndRefusesToGoBackAcrossAYear) {
    struct Case { CDate from; int n; CDate expected; } cases[] = {
        {CDate(2001, 5, 15), 13, CDate(2002, 6, 15)}, {CDate(2001, 1, 31), 1, CDate(2001, 2, 31)},
        {CDate(2001, 12, 10), 1, CDate(2002, 1, 10)}, {CDate(2001, 8, 10), -7, CDate(2001, 1, 10)},
        {CDate(2001, 3, 15), -5, CDate(2001, 3, 15)},
    };
    qmtest::RecordingAssertSink sink;
    for (Case c : cases) {
        c.from.AddMonth(c.n);
        EXPECT_EQ(c.from, c.expected) << c.n;
    }
    EXPECT_EQ(sink.Expressions(), std::vector<std::string>{"m >= 1 && m <= 12"});
    CDate distant(2001, 3, 15);
    distant.AddMonth(2147483647);  // no overflow: the year field simply wraps
    EXPECT_GE(distant.GetMonth(), 1);
    EXPECT_LE(distant.GetMonth(), 12);
    distant.AddMonth(-2147483647 - 1);
    EXPECT_EQ(sink.Reports().size(), 2u);
}

TEST(DateArithmetic, WeekNumbersWithSundayWeeksFollowEachRule) {
    // Week one: rule 0 holds 1 January, rule 1 has four days of the year, rule 2 is the first
    // full week. A week reaching next year's week one is week 1.
    auto weekStart = [](sys_days d) { return d - (weekday{d} - Sunday); };
    auto weekOne = [&](int y, int minDays) {
        sys_days jan1{year{y} / January / 1}, s = weekStart(jan1);
        return 7 - (jan1 - s).count() >= minDays ? s : s + days{7};
    };
    // Any rule other than 1 and 2 counts like rule 0.
    const int minDays[] = {1, 4, 7, 1};
    for (int rule = 0; rule < 4; ++rule)
        for (sys_days d{year{1990} / 1 / 1}; d < sys_days{year{2030} / 1 / 1}; d += days{1}) {
            year_month_day ymd{d};
            int y = (int)ymd.year(), k = minDays[rule];
            sys_days ws = weekStart(d), first = weekOne(y, k);
            if (ws < first) first = weekOne(y - 1, k);
            int expected = ws >= weekOne(y + 1, k) ? 1 : (int)((ws - first).count() / 7 + 1);
            ASSERT_EQ(CDate(y, (int)(unsigned)ymd.month(), (int)(unsigned)ymd.day()).GetWeekNumber(rule == 3 ? 9 : rule, 0), expected)
                << y << "-" << (unsigned)ymd.month() << "-" << (unsigned)ymd.day() << " rule " << rule;
        }
}

TEST(DateArithmetic, SpanCountsDays) {
    CDaySpan s(5);
    EXPECT_EQ(s++.GetDays(), 5);
    EXPECT_EQ((long)s, 6);
    EXPECT_EQ((--s).GetDays(), 5);
    s += 10;
    s -= 3;
    EXPECT_EQ(s.GetDays(), 12);
    CDaySpan max(2147483647);
    ++max;  // wraps like the 32-bit count it is, without undefined behaviour
    EXPECT_EQ(max.GetDays(), -2147483647 - 1);
}
