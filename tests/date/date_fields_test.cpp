// CDate storage, setters, predicates and conversions (tests run with TZ=EST5EDT).
#include <gtest/gtest.h>
#include <ctime>
#include <string>
#include <vector>

#include "tests/support/recording_sink.h"
#include "utils/common/date.h"
#include "utils/framework/exceptions.h"

using Reports = std::vector<std::string>;

TEST(DateFields, PackedWordIsSignedAndUnchecked) {
    CDate d(2012, 7, 4), raw;
    raw.FromDWORD(0x07DC0704);
    EXPECT_EQ(d.AsDWORD(), 0x07DC0704u);
    EXPECT_EQ(raw, d);
    EXPECT_LT(CDate(2011, 12, 31), CDate(2012, 1, 1));
    EXPECT_GT(CDate(2012, 1, 1), CDate(-5, 1, 1));  // signed comparison of the words
    EXPECT_TRUE(!CDate());
    EXPECT_TRUE(CDate().IsNull());
    EXPECT_TRUE(!!d);
    CDate minus(-1, -1, -1), big(70000, 300, 200);  // fields kept in their widths
    EXPECT_EQ(minus.AsDWORD(), 0xFFFFFFFFu);
    EXPECT_EQ(minus.GetYear() + minus.GetMonth() + minus.GetDay(), -3);
    EXPECT_EQ(big.GetYear(), (short)70000);
    EXPECT_EQ(big.GetMonth(), (signed char)300);
    EXPECT_EQ(big.GetDay(), (signed char)200);
}

TEST(DateFields, SettersCheckMonthAndDay) {
    qmtest::RecordingAssertSink sink;
    CDate d(2001, 1, 31);
    d.SetMonth(2);  // the day is not adjusted
    EXPECT_EQ(d, CDate(2001, 2, 31));
    d.SetMonth(13);
    d.SetMonth(0);
    d.SetDay(29);  // 2001 is not a leap year
    EXPECT_EQ(d, CDate(2001, 2, 31));
    d.SetDay(0);
    d.SetYear(2004);
    d.SetDay(29);
    EXPECT_EQ(d, CDate(2004, 2, 29));
    const char* const day = "d <= CDate::dpm (Year, Month) && d >= 1";
    EXPECT_EQ(sink.Expressions(), (Reports{"m >= 1 && m <= 12", "m >= 1 && m <= 12", day, day}));
    EXPECT_EQ(sink.Reports()[0].module, "Common\\date");
}

TEST(DateFields, ValidityRangesAndScalar) {
    // Invalid days and months also empty the formatted text, checked with the format codes.
    struct Case { CDate date; bool valid; } cases[] = {
        {CDate(2000, 2, 29), true}, {CDate(2001, 0, 1), false}, {CDate(2001, 1, 32), false},
        {CDate(), false},           {CDate(0, 1, 1), true},     {CDate(-300, 12, 31), true},
    };
    for (const Case& c : cases) EXPECT_EQ(c.date.IsValid(), c.valid) << std::hex << c.date.AsDWORD();
    CDate from(2012, 1, 1), to(2012, 12, 31);
    EXPECT_TRUE(from.InRange(from, to));
    EXPECT_TRUE(to.InRange(from, to));
    EXPECT_FALSE(CDate(2013, 1, 1).InRange(from, to));
    EXPECT_FALSE(CDate().InRange(CDate(), to));  // a null date is in no range
    EXPECT_EQ(CDate(2012, 7, 4).IsHoliday(), 0);
    EXPECT_TRUE(CDate(2012, 7, 4).GetHolidayName().IsEmpty());
}

TEST(DateFields, TodayIsTheUtcDate) {
    CDate today;
    today.SetToday();
    std::time_t now = std::time(nullptr);
    const std::tm* utc = std::gmtime(&now);
    CDate expected(utc->tm_year + 1900, utc->tm_mon + 1, utc->tm_mday);
    // Either day is right: the clock may tick past midnight between the two reads.
    EXPECT_TRUE(today == expected || today == expected - 1)
        << std::hex << "today " << today.AsDWORD() << ", UTC date " << expected.AsDWORD();
}

TEST(DateConversions, CTimeBothWays) {
    // 2012-07-04 02:30 UTC is 22:30 on 3 July in New York (daylight time).
    CTime t(1341369000);
    CDate assigned;
    assigned = t;
    EXPECT_EQ(assigned, CDate(2012, 7, 3));
    EXPECT_EQ(CDate(2012, 7, 3), t);
    EXPECT_NE(CDate(2012, 7, 4), t);
    EXPECT_TRUE(CDate(CTime(0)).IsNull());
    qmtest::RecordingAssertSink sink;
    assigned = CTime(-4000000000000000000LL);  // no calendar date for that
    EXPECT_TRUE(assigned.IsNull());
    EXPECT_EQ(sink.Expressions(), Reports{"ptm"});
    // Back to CTime: local midnight, in daylight and in standard time.
    EXPECT_EQ(((CTime)CDate(2012, 7, 4)).GetTime(), 1341374400);
    EXPECT_EQ(((CTime)CDate(2012, 1, 15)).GetTime(), 1326603600);
    EXPECT_EQ(((CTime)CDate()).GetTime(), 0);
    for (CDate bad : {CDate(1899, 12, 31), CDate(2012, 13, 1), CDate(2012, 1, 32)})
        EXPECT_EQ(qmtest::OleFailure([&] { (void)(CTime)bad; }), E_FAIL) << std::hex << bad.AsDWORD();
    EXPECT_EQ(CDate(2012, 7, 4) & CTime(2001, 2, 3, 14, 35, 59), CTime(2012, 7, 4, 14, 35, 0));
    EXPECT_EQ(CDate(2012, 7, 4) & CTimeSpan(3, 26, 75, 10), CTime(2012, 7, 4, 3, 15, 0));  // 4 days 03:15:10
}

TEST(DateConversions, ToAndFromOleDateTime) {
    COleDateTime odt = CDate(2000, 1, 1), null = CDate(), early = CDate(1899, 12, 29);
    EXPECT_EQ(odt.GetStatus(), COleDateTime::valid);
    EXPECT_EQ(null.GetStatus(), COleDateTime::valid);
    EXPECT_EQ(odt.m_dt, 36526.0);
    EXPECT_EQ(null.m_dt, 0.0);
    EXPECT_EQ(early.m_dt, -1.0);
    for (CDate bad : {CDate(2001, 2, 29), CDate(50, 1, 1), CDate(2001, 13, 1), CDate(-5, 1, 1)})
        EXPECT_EQ(((COleDateTime)bad).GetStatus(), COleDateTime::invalid) << std::hex << bad.AsDWORD();
    EXPECT_EQ(CDate(COleDateTime(36526.75)), CDate(2000, 1, 1));
    EXPECT_EQ(CDate(COleDateTime(-1.25)), CDate(1899, 12, 29));
    EXPECT_EQ(CDate(COleDateTime(-0.99999999)), CDate(1899, 12, 31));  // 23:59:59.999 on 30 December
    // Zero and values within half a second of it are the null date; invalid ones too.
    EXPECT_TRUE(CDate(COleDateTime(0.0)).IsNull());
    EXPECT_TRUE(CDate(COleDateTime(-1.0 / 172800.0 * 0.99)).IsNull());
    EXPECT_FALSE(CDate(COleDateTime(1.0 / 172800.0 * 1.01)).IsNull());
    COleDateTime invalid;
    invalid.SetStatus(COleDateTime::invalid);
    EXPECT_TRUE(CDate(invalid).IsNull());
    CDate assigned(2012, 1, 1);
    assigned = invalid;  // the assignment marks the date all ones instead, as a value out of range does
    EXPECT_EQ(assigned.AsDWORD(), 0xFFFFFFFFu);
    EXPECT_EQ(CDate(COleDateTime(4000000.0)).AsDWORD(), 0xFFFFFFFFu);
}
