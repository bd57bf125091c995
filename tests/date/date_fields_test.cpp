// CDate storage, setters, predicates and conversions to and from CTime and COleDateTime.
// Tests run with TZ=EST5EDT on both targets.
#include <gtest/gtest.h>

#include <cstdlib>
#include <string>
#include <vector>

#include "tests/support/recording_sink.h"
#include "utils/common/date.h"
#include "utils/framework/exceptions.h"

using Reports = std::vector<std::string>;

namespace {

// Runs f, expecting a framework exception of type E; returns whether one was thrown.
template <class E, class F>
bool ThrowsFramework(F f) {
    try {
        f();
    } catch (CException* e) {
        bool right = dynamic_cast<E*>(e) != nullptr;
        e->Delete();
        return right;
    }
    return false;
}

bool IsGeneralFailure(CException* e) {
    auto* ole = dynamic_cast<COleException*>(e);
    return ole && ole->m_sc == E_FAIL;
}

}  // namespace

TEST(DateFields, PackedWordOrdersDates) {
    CDate d(2012, 7, 4);
    EXPECT_EQ(d.AsDWORD(), 0x07DC0704u);
    EXPECT_EQ(d.GetYear(), 2012);
    EXPECT_EQ(d.GetMonth(), 7);
    EXPECT_EQ(d.GetDay(), 4);
    CDate raw;
    raw.FromDWORD(0x07DC0704);
    EXPECT_EQ(raw, d);
    EXPECT_LT(CDate(2012, 7, 4), CDate(2012, 7, 5));
    EXPECT_LT(CDate(2011, 12, 31), CDate(2012, 1, 1));
    EXPECT_GT(CDate(2012, 1, 1), CDate(-5, 1, 1));  // signed comparison of the words
    EXPECT_TRUE(CDate().IsNull());
    EXPECT_TRUE(!CDate());
    EXPECT_FALSE(!d);
}

TEST(DateFields, FieldsAreSignExtendedAndStoredUnchecked) {
    CDate d(-1, -1, -1);
    EXPECT_EQ(d.AsDWORD(), 0xFFFFFFFFu);
    EXPECT_EQ(d.GetYear(), -1);
    EXPECT_EQ(d.GetMonth(), -1);
    EXPECT_EQ(d.GetDay(), -1);
    CDate big(70000, 300, 200);  // stored in the fields' widths
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
    EXPECT_EQ(d.GetMonth(), 2);
    d.SetDay(29);  // 2001 is not a leap year
    EXPECT_EQ(d.GetDay(), 31);
    d.SetDay(28);
    EXPECT_EQ(d.GetDay(), 28);
    d.SetDay(0);
    d.SetYear(2004);
    d.SetDay(29);
    EXPECT_EQ(d, CDate(2004, 2, 29));
    EXPECT_EQ(sink.Expressions(), (Reports{"m >= 1 && m <= 12", "m >= 1 && m <= 12",
                                            "d <= CDate::dpm (Year, Month) && d >= 1",
                                            "d <= CDate::dpm (Year, Month) && d >= 1"}));
    EXPECT_EQ(sink.Reports()[0].module, "Common\\date");
}

TEST(DateFields, ValidityAndRanges) {
    struct Case { CDate date; bool valid; } cases[] = {
        {CDate(2000, 2, 29), true},  {CDate(2001, 2, 29), false}, {CDate(2001, 13, 1), false},
        {CDate(2001, 0, 1), false},  {CDate(2001, 1, 0), false},  {CDate(2001, 1, 32), false},
        {CDate(), false},            {CDate(0, 1, 1), true},      {CDate(-300, 12, 31), true},
    };
    for (const Case& c : cases) EXPECT_EQ(c.date.IsValid(), c.valid) << std::hex << c.date.AsDWORD();
    CDate from(2012, 1, 1), to(2012, 12, 31);
    EXPECT_TRUE(CDate(2012, 1, 1).InRange(from, to));
    EXPECT_TRUE(CDate(2012, 12, 31).InRange(from, to));
    EXPECT_FALSE(CDate(2013, 1, 1).InRange(from, to));
    EXPECT_FALSE(CDate().InRange(CDate(), to));  // a null date is in no range
    EXPECT_EQ(CDate(2012, 7, 4).GetDaysPerMonth(), 31);
    EXPECT_EQ(CDate(2012, 7, 4).IsHoliday(), 0);
    EXPECT_TRUE(CDate(2012, 7, 4).GetHolidayName().IsEmpty());
}

TEST(DateFields, ScalarRoundTrip) {
    CDate d;
    d.FromScalar(730120);
    EXPECT_EQ(d, CDate(2000, 1, 1));
    EXPECT_EQ(d.GetScalar(), 730120);
}

TEST(DateFields, TodayIsTheUtcDate) {
    CDate today;
    today.SetToday();
    time_t now = time(nullptr);
    struct tm utc {};
#if defined(_WIN32)
    gmtime_s(&utc, &now);
#else
    gmtime_r(&now, &utc);
#endif
    CDate expected(utc.tm_year + 1900, utc.tm_mon + 1, utc.tm_mday);
    EXPECT_TRUE(today == expected || today == expected - 1);  // the clock may tick past midnight
}

TEST(DateConversions, FromCTime) {
    // 2012-07-04 02:30 UTC is 22:30 on 3 July in New York (daylight time).
    CTime t(1341369000);
    EXPECT_EQ(CDate(t), CDate(2012, 7, 3));
    CDate assigned;
    assigned = t;
    EXPECT_EQ(assigned, CDate(2012, 7, 3));
    EXPECT_TRUE(CDate(CTime(0)).IsNull());
    EXPECT_TRUE(CDate(2012, 7, 3) == t);
    EXPECT_TRUE(CDate(2012, 7, 4) != t);
}

TEST(DateConversions, AssigningAnUnconvertibleCTimeReportsPtm) {
    qmtest::RecordingAssertSink sink;
    CDate d(2012, 1, 1);
    d = CTime(-4000000000000000000LL);  // no calendar date for that
    EXPECT_TRUE(d.IsNull());
    EXPECT_EQ(sink.Expressions(), Reports{"ptm"});
    EXPECT_TRUE(CDate(CTime(-4000000000000000000LL)).IsNull());
}

TEST(DateConversions, ToCTimeIsLocalMidnight) {
    CTime t = CDate(2012, 7, 4);
    EXPECT_EQ(t.GetTime(), 1341374400);  // 04:00 UTC: midnight in New York, daylight time
    CTime winter = CDate(2012, 1, 15);
    EXPECT_EQ(winter.GetTime(), 1326603600);  // 05:00 UTC: standard time
    EXPECT_EQ(((CTime)CDate()).GetTime(), 0);
}

TEST(DateConversions, ToCTimeFailsWithTheFrameworksErrors) {
    for (CDate bad : {CDate(1899, 12, 31), CDate(2012, 13, 1), CDate(2012, 0, 1), CDate(2012, 1, 32)}) {
        bool general = false;
        try {
            CTime t = bad;
            (void)t;
        } catch (CException* e) {
            general = IsGeneralFailure(e);
            e->Delete();
        }
        EXPECT_TRUE(general) << std::hex << bad.AsDWORD();
    }
}

TEST(DateConversions, JoinWithTimeOfDay) {
    CTime at = CTime(2001, 2, 3, 14, 35, 59);
    CTime joined = CDate(2012, 7, 4) & at;
    EXPECT_EQ(joined, CTime(2012, 7, 4, 14, 35, 0));
    CTime fromSpan = CDate(2012, 7, 4) & CTimeSpan(3, 26, 75, 10);  // 4 days 03:15:10
    EXPECT_EQ(fromSpan, CTime(2012, 7, 4, 3, 15, 0));
}

TEST(DateConversions, ToAndFromOleDateTime) {
    COleDateTime odt = CDate(2000, 1, 1);
    EXPECT_EQ(odt.GetStatus(), COleDateTime::valid);
    EXPECT_EQ(odt.m_dt, 36526.0);
    COleDateTime null = CDate();
    EXPECT_EQ(null.GetStatus(), COleDateTime::valid);
    EXPECT_EQ(null.m_dt, 0.0);
    COleDateTime early = CDate(1899, 12, 29);
    EXPECT_EQ(early.m_dt, -1.0);
    for (CDate bad : {CDate(2001, 2, 29), CDate(50, 1, 1), CDate(2001, 13, 1), CDate(-5, 1, 1)}) {
        COleDateTime o = bad;
        EXPECT_EQ(o.GetStatus(), COleDateTime::invalid) << std::hex << bad.AsDWORD();
    }
    EXPECT_EQ(CDate(COleDateTime(36526.75)), CDate(2000, 1, 1));
    EXPECT_EQ(CDate(COleDateTime(-1.25)), CDate(1899, 12, 29));
    EXPECT_EQ(CDate(COleDateTime(-0.99999999)), CDate(1899, 12, 31));  // 23:59:59.999 on 30 December
}

TEST(DateConversions, OleZeroAndInvalidValues) {
    EXPECT_TRUE(CDate(COleDateTime(0.0)).IsNull());
    EXPECT_TRUE(CDate(COleDateTime(1.0 / 172800.0 * 0.99)).IsNull());
    EXPECT_TRUE(CDate(COleDateTime(-1.0 / 172800.0 * 0.99)).IsNull());
    EXPECT_FALSE(CDate(COleDateTime(1.0 / 172800.0 * 1.01)).IsNull());
    COleDateTime invalid;
    invalid.SetStatus(COleDateTime::invalid);
    EXPECT_TRUE(CDate(invalid).IsNull());
    CDate assigned(2012, 1, 1);
    assigned = invalid;  // the assignment marks the date all ones instead
    EXPECT_EQ(assigned.AsDWORD(), 0xFFFFFFFFu);
    EXPECT_FALSE(assigned.IsNull());
    EXPECT_FALSE(assigned.IsValid());
    // A value outside the automation range converts field by field to all ones.
    CDate outOfRange(COleDateTime(4000000.0));
    EXPECT_EQ(outOfRange.AsDWORD(), 0xFFFFFFFFu);
}
