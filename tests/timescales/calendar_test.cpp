#include <gtest/gtest.h>

#include <climits>
#include <vector>

#include "tests/timescales/calendar_oracle.h"
#include "utils/common/date_time.h"
#include "utils/common/utils_time.h"
#include "utils/framework/exceptions.h"

namespace {

// Days of the month that fall on the weekday, by walking the month.
std::vector<int> DaysOnWeekday(int year, int month, int weekday) {
    std::vector<int> days;
    for (int d = 1; d <= tsoracle::MonthDays(year, month); ++d)
        if (tsoracle::Weekday(year, month, d) == weekday) days.push_back(d);
    return days;
}

TEST(DayOfNthDow, OrdinalsAndLastMatchAWalkOfTheMonth) {
    for (int year : {1900, 1901, 1999, 2000, 2012, 2026, 2100, 2400}) {
        for (int month = 1; month <= 12; ++month) {
            for (int weekday = 1; weekday <= 7; ++weekday) {
                const std::vector<int> days = DaysOnWeekday(year, month, weekday);
                SCOPED_TRACE(testing::Message() << year << "-" << month << " weekday " << weekday);
                for (int n = 1; n <= 4; ++n) EXPECT_EQ(DayOfNthDOW(year, month, n, weekday), days[n - 1]) << n;
                // A missing fifth occurrence falls back to the fourth: 5 and 9 are the last.
                EXPECT_EQ(DayOfNthDOW(year, month, 5, weekday), days.back());
                EXPECT_EQ(DayOfNthDOW(year, month, 9, weekday), days.back());
            }
        }
    }
}

TEST(DayOfNthDow, KnownMonths) {
    EXPECT_EQ(DayOfNthDOW(2012, 2, 9, 4), 29);  // last Wednesday of February 2012
    EXPECT_EQ(DayOfNthDOW(2012, 2, 5, 5), 23);  // no fifth Thursday: the fourth
    EXPECT_EQ(DayOfNthDOW(2006, 4, 1, 1), 2);   // first Sunday of April 2006
    EXPECT_EQ(DayOfNthDOW(2006, 10, 9, 1), 29); // last Sunday of October 2006
    EXPECT_EQ(DayOfNthDOW(2007, 3, 2, 1), 11);  // second Sunday of March 2007
}

// For n = 10 the step back tests (day - weekday + 7) against the month length, so the result
// depends on the weekday number: Saturday (7) keeps the last occurrence, Sunday (1) steps back
// whenever a week remains after it. Worked by hand from the calendar:
TEST(DayOfNthDow, TenTestsTheDayMinusTheWeekdayNumber) {
    struct Case {
        int year, month, weekday, expected;
        const char* why;
    };
    const Case cases[] = {
        {2012, 2, 4, 22, "Wednesdays 1..29: 29-4+7=32>29, 22-4+7=25"},
        {2012, 10, 7, 27, "Saturdays 6..27: no fifth; 27-7+7=27<=31 keeps the last"},
        {2012, 10, 1, 21, "Sundays 7..28: 28-1+7=34>31 steps back to 21"},
        {2012, 10, 2, 22, "Mondays 1..29: 29-2+7=34>31, 22-2+7=27"},
        {2012, 10, 4, 24, "Wednesdays 3..31: 31-4+7=34>31, 24-4+7=27"},
        {2012, 3, 7, 31, "Saturdays 3..31: 31-7+7=31<=31 keeps the fifth"},
        {2012, 3, 6, 30, "Fridays 2..30: 30-6+7=31<=31 keeps the fifth"},
    };
    for (const Case& c : cases) EXPECT_EQ(DayOfNthDOW(c.year, c.month, 10, c.weekday), c.expected) << c.why;
}

TEST(DayOfNthDow, YearBefore1900OrBadMonthIsTheGeneralFailure) {
    const int bad[][2] = {{1899, 6}, {INT_MIN, 1}, {2012, 0}, {2012, 13}, {2012, -1}, {2012, INT_MAX}};
    for (const auto& b : bad) {
        try {
            DayOfNthDOW(b[0], b[1], 1, 1);
            ADD_FAILURE() << b[0] << "-" << b[1] << " returned";
        } catch (CException* e) {
            auto* ole = dynamic_cast<COleException*>(e);
            EXPECT_NE(ole, nullptr);
            if (ole) {
                EXPECT_EQ(ole->m_sc, E_FAIL);
            }
            e->Delete();
        }
    }
    EXPECT_EQ(DayOfNthDOW(1900, 1, 1, 2), 1);  // 1 January 1900 was a Monday
}

// Weekdays and ordinals outside their ranges are not checked; they must still come back (the
// n = 10 fallback ends once its test holds) without overflow, whatever the value.
TEST(DayOfNthDow, OutOfRangeArgumentsTerminate) {
    for (int weekday : {INT_MIN, -100, 0, 8, 1000, INT_MAX}) {
        const int day = DayOfNthDOW(2012, 2, 10, weekday);
        EXPECT_LE((long long)day - weekday + 7, 29) << weekday;
        DayOfNthDOW(2012, 2, 5, weekday);
        DayOfNthDOW(2012, 2, 1, weekday);
    }
    for (int n : {INT_MIN, -1, 0, 6, 8, 11, INT_MAX}) {
        // Without the end-of-month fallbacks the k-th occurrence is a plain week offset.
        const long long first = DayOfNthDOW(2012, 2, 1, 4);
        const int day = DayOfNthDOW(2012, 2, n, 4);
        EXPECT_EQ(day, (int)(first + 7LL * ((long long)n - 1))) << n;
    }
}

TEST(TodayAndJoin, TodayIsTheLocalDateOfTheClock) {
    for (int attempt = 0; attempt < 2; ++attempt) {
        const CTime now = NowTime();
        const CDate today = Today();
        if (NowTime().GetDay() != now.GetDay()) continue;  // crossed midnight: read again
        EXPECT_EQ(today.GetYear(), now.GetYear());
        EXPECT_EQ(today.GetMonth(), now.GetMonth());
        EXPECT_EQ(today.GetDay(), now.GetDay());
        return;
    }
}

TEST(TodayAndJoin, JoinTakesTheLocalHourAndMinuteOfTheTime) {
    // 9:41:30 EST on a winter day joined to a summer date: 9:41:00 EDT that day.
    const CTime t(tsoracle::UnixSeconds(2006, 1, 15, 14, 41, 30));
    EXPECT_EQ(JoinDateAndTime(CDate(2006, 7, 4), t).GetTime(), tsoracle::UnixSeconds(2006, 7, 4, 13, 41, 0));
    EXPECT_EQ(JoinDateAndTime(CDate(2006, 1, 1), t).GetTime(), tsoracle::UnixSeconds(2006, 1, 1, 14, 41, 0));
}

}  // namespace
