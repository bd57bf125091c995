// The automation date scale against a calendar computed independently (std::chrono).
#include <gtest/gtest.h>
#include <chrono>
#include <cmath>
#include <limits>
#include <random>
#include <string>

#include "utils/framework/COleDateTime.h"

namespace {
using namespace std::chrono;

// Days from 30 December 1899 to the given date.
long OleDay(int y, unsigned m, unsigned d) {
    return (long)(sys_days{year{y} / month{m} / day{d}} - sys_days{year{1899} / December / day{30}}).count();
}

std::string Fields(int y, int mo, int d, int h, int mi, int s) {
    return std::to_string(y) + "-" + std::to_string(mo) + "-" + std::to_string(d) + " " + std::to_string(h) + ":" +
           std::to_string(mi) + ":" + std::to_string(s);
}
std::string Fields(const COleDateTime& t) {
    return Fields(t.GetYear(), t.GetMonth(), t.GetDay(), t.GetHour(), t.GetMinute(), t.GetSecond());
}
}  // namespace

// Values between whole seconds; whole-second values are covered by the calendar round trip below.
TEST(OleDateTime, ValuesRoundToTheNearestSecond) {
    struct Case { double value; int y, mo, d, h, mi, s; } cases[] = {
        {0.0, 1899, 12, 30, 0, 0, 0}, {-0.5, 1899, 12, 30, 12, 0, 0},  // day 0 on both sides
        {41094.999997, 2012, 7, 5, 0, 0, 0},  // rounds to the next second
        // A negative value's time of day that rounds up to midnight reaches the next day.
        {-0.99999999, 1899, 12, 31, 0, 0, 0}, {-1.99999999, 1899, 12, 30, 0, 0, 0},
        // Every second of 1 January 100 and 31 December 9999 is in range.
        {-657434.99999999, 100, 1, 2, 0, 0, 0}, {2958465.99998843, 9999, 12, 31, 23, 59, 59},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(Fields(COleDateTime(c.value)), Fields(c.y, c.mo, c.d, c.h, c.mi, c.s)) << c.value;
    }
}

TEST(OleDateTime, FieldsRoundTripAgainstAnIndependentCalendar) {
    std::mt19937 rng(5);
    std::uniform_int_distribution<int> years(100, 9999), months(1, 12), days(1, 31), hours(0, 23), mins(0, 59);
    for (int i = 0; i < 50000; ++i) {
        int y = years(rng), m = months(rng), d = days(rng), h = hours(rng), mi = mins(rng), s = mins(rng);
        year_month_day ymd{year{y} / month{(unsigned)m} / day{(unsigned)d}};
        COleDateTime t(y, m, d, h, mi, s);
        if (!ymd.ok()) {
            ASSERT_EQ(t.GetStatus(), COleDateTime::invalid) << y << "-" << m << "-" << d;
            continue;
        }
        ASSERT_EQ(t.GetStatus(), COleDateTime::valid);
        long day = OleDay(y, (unsigned)m, (unsigned)d);
        double time = (h * 3600 + mi * 60 + s) / 86400.0;
        ASSERT_DOUBLE_EQ(t.m_dt, day + (day >= 0 ? time : -time)) << y << "-" << m << "-" << d;
        ASSERT_EQ(Fields(t), Fields(y, m, d, h, mi, s));
        ASSERT_EQ(t.GetDayOfWeek(), (int)weekday{sys_days{ymd}}.c_encoding() + 1);
    }
}

TEST(OleDateTime, OutOfRangeFieldsAndValues) {
    // Impossible calendar days are covered by the round trip; these fields are outside its draws.
    for (auto f : {COleDateTime(99, 12, 31, 0, 0, 0), COleDateTime(10000, 1, 1, 0, 0, 0), COleDateTime(2001, 0, 1, 0, 0, 0),
                   COleDateTime(2001, 1, 1, 24, 0, 0), COleDateTime(2001, 1, 1, 0, 60, 0), COleDateTime(2001, 1, 1, 0, 0, 60)})
        EXPECT_EQ(f.GetStatus(), COleDateTime::invalid);
    SYSTEMTIME hour24{2001, 1, 1, 1, 24, 0, 0, 0};  // refused by the converter itself, not only by the round trip
    DATE dt = 0;
    EXPECT_FALSE(qm::oledate::FromFields(hour24, dt));
    // 2958465.99999999 rounds to 1 January 10000.
    for (double v : {2958466.0, 2958465.99999999, -657435.0, -657435.5, std::nan(""),
                     std::numeric_limits<double>::infinity(), 1e300, -1e300}) {
        SYSTEMTIME st;
        EXPECT_EQ(COleDateTime(v).GetYear(), AFX_OLE_DATETIME_ERROR) << v;
        EXPECT_FALSE(COleDateTime(v).GetAsSystemTime(st)) << v;
    }
    COleDateTime invalid(2000.0);
    invalid.SetStatus(COleDateTime::invalid);
    EXPECT_EQ(invalid.GetDay(), AFX_OLE_DATETIME_ERROR);
    EXPECT_TRUE(invalid.Format("%Y").IsEmpty());
}

TEST(OleDateTime, OrderingAndSpansTreatNegativeValuesAsTimeOfDay) {
    COleDateTime morning(-1.25), evening(-1.75);  // both 29 December 1899
    EXPECT_LT(morning, evening);
    EXPECT_NEAR((evening - morning).GetTotalHours(), 12.0, 1e-9);
    EXPECT_EQ(Fields(morning + COleDateTimeSpan(1, 0, 0, 0)), "1899-12-30 6:0:0");
    COleDateTime t(2012, 7, 4, 10, 0, 0);
    EXPECT_EQ(t.Format("%Y-%m-%d %H:%M"), "2012-07-04 10:00");
    EXPECT_EQ(t.GetDayOfYear(), 186);
}
