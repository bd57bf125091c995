#include <gtest/gtest.h>
#include <climits>
#include <vector>

#include "tests/support/recording_sink.h"
#include "tests/timescales/calendar_oracle.h"
#include "utils/common/date_time.h"
#include "utils/common/utils_time.h"

namespace {

// Against a walk of the month; for n = 10 the step back tests (day - weekday + 7) literally.
TEST(DayOfNthDow, MatchesAWalkOfTheMonth) {
    for (int year : {1900, 1901, 2000, 2012, 2026, 2100})
        for (int month = 1; month <= 12; ++month)
            for (int weekday = 1; weekday <= 7; ++weekday) {
                std::vector<int> days;
                for (int d = 1; d <= tsoracle::MonthDays(year, month); ++d)
                    if (tsoracle::Weekday(year, month, d) == weekday) days.push_back(d);
                SCOPED_TRACE(testing::Message() << year << "-" << month << " weekday " << weekday);
                for (int n = 1; n <= 4; ++n) EXPECT_EQ(DayOfNthDOW(year, month, n, weekday), days[n - 1]) << n;
                EXPECT_EQ(DayOfNthDOW(year, month, 5, weekday), days.back());
                EXPECT_EQ(DayOfNthDOW(year, month, 9, weekday), days.back());
                size_t k = days.size() - 1;
                while (k > 0 && days[k] - weekday + 7 > tsoracle::MonthDays(year, month)) --k;
                EXPECT_EQ(DayOfNthDOW(year, month, 10, weekday), days[k]);
            }
}

TEST(DayOfNthDow, YearBefore1900OrBadMonthIsTheGeneralFailure) {
    const int bad[][2] = {{1899, 6}, {INT_MIN, 1}, {2012, 0}, {2012, 13}, {2012, INT_MAX}};
    for (const auto& b : bad)
        EXPECT_EQ(qmtest::OleFailure([&] { DayOfNthDOW(b[0], b[1], 1, 1); }), E_FAIL) << b[0] << "-" << b[1];
}

// Unchecked weekdays and ordinals must still come back, without overflow.
TEST(DayOfNthDow, OutOfRangeArgumentsTerminate) {
    for (int weekday : {INT_MIN, -100, 0, 8, INT_MAX}) {
        EXPECT_LE((long long)DayOfNthDOW(2012, 2, 10, weekday) - weekday + 7, 29) << weekday;
        DayOfNthDOW(2012, 2, 5, weekday);
    }
    const long long first = DayOfNthDOW(2012, 2, 1, 4);
    for (int n : {INT_MIN, -1, 0, 6, 8, 11, INT_MAX})  // a plain week offset without the fallbacks
        EXPECT_EQ(DayOfNthDOW(2012, 2, n, 4), (int)(first + 7LL * ((long long)n - 1))) << n;
}

TEST(TodayAndJoin, TodayIsTheLocalDateAndJoinTakesTheLocalHourAndMinute) {
    for (int attempt = 0; attempt < 2; ++attempt) {
        const CTime now = NowTime();
        const CDate today = Today();
        if (NowTime().GetDay() != now.GetDay()) continue;  // crossed midnight: read again
        EXPECT_EQ(today, CDate(now.GetYear(), now.GetMonth(), now.GetDay()));
        break;
    }
    // 9:41:30 EST on a winter day joined to a summer date: 9:41:00 EDT that day.
    const CTime t(tsoracle::UnixSeconds(2006, 1, 15, 14, 41, 30));
    EXPECT_EQ(JoinDateAndTime(CDate(2006, 7, 4), t).GetTime(), tsoracle::UnixSeconds(2006, 7, 4, 13, 41, 0));
    EXPECT_EQ(JoinDateAndTime(CDate(2006, 1, 1), t).GetTime(), tsoracle::UnixSeconds(2006, 1, 1, 14, 41, 0));
}

}  // namespace
