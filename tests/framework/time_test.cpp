// CTime's local-time behaviour; the tests run with TZ=EST5EDT (US Eastern rules).
#include <gtest/gtest.h>

#include "tests/support/recording_sink.h"
#include "utils/framework/CTime.h"

using qmtest::OleFailure;

TEST(TimeTest, LocalFieldsFollowDaylightSaving) {
    CTime summer(2006, 7, 1, 12, 0, 0);
    EXPECT_EQ(summer.GetTime(), 1151769600);  // 16:00 UTC: four hours behind in daylight time
    // 2 April 2006: 01:59:59 EST is followed by 03:00:00 EDT.
    CTime before(1143961199), after(1143961200);
    EXPECT_EQ(before.GetHour(), 1);
    EXPECT_EQ(after.GetHour(), 3);
    EXPECT_EQ(after.GetDay(), 2);
    EXPECT_EQ(summer.Format("%Y-%m-%d %H:%M:%S") + summer.FormatGmt(" %H"), "2006-07-01 12:00:00 16");
    EXPECT_EQ(summer.GetDayOfWeek(), 7);  // Saturday
}

TEST(TimeTest, ConstructorFailures) {
    for (void (*f)() : {+[] { CTime(1899, 12, 31, 0, 0, 0); }, +[] { CTime(2000, 13, 1, 0, 0, 0); },
                        +[] { CTime(2000, 1, 32, 0, 0, 0); }, +[] { CTime(2000, 1, 1, 24, 0, 0); }})
        EXPECT_EQ(OleFailure(f), E_FAIL);
    EXPECT_EQ(OleFailure([] { CTime(2000, 2, 31, 0, 0, 0); }), S_OK);  // normalised by the runtime
}

TEST(TimeTest, UnconvertibleValuesGiveEmptyFields) {
    CTime bad(-4000000000000000000LL);
    struct tm t {};
    EXPECT_EQ(bad.GetLocalTm(&t), nullptr);
    EXPECT_EQ(bad.GetYear(), 0);
    EXPECT_TRUE(bad.Format("%Y").IsEmpty());
}
