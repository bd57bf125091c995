// Reading dates back: ScanDate, the month-name matcher and FindDate, with bad input.
#include <gtest/gtest.h>
#include <cstring>
#include <string>
#include <vector>

#include "tests/datetext/datetext_fixture.h"
#include "utils/framework/CTime.h"

namespace {

using datetext_test::LocaleTest;
using datetext_test::MonthMatcher;
using datetext_test::Pins;
using datetext_test::UseLocale;
using datetext_test::Ymd;

int CurrentYear() {
    struct tm now {};
    qm::crt::LocalTime64(qm::crt::Time64(), &now);
    return now.tm_year + 1900;
}

const Pins kDayFirst = {{LOCALE_IDATE, "1"}, {LOCALE_SDATE, "."}, {LOCALE_SSHORTDATE, "dd.MM.yyyy"}};
const Pins kYearFirst = {{LOCALE_IDATE, "2"}, {LOCALE_SDATE, "-"}, {LOCALE_SSHORTDATE, "yyyy-MM-dd"}};
const Pins kMonthName = {{LOCALE_IDATE, "1"}, {LOCALE_SDATE, "-"}, {LOCALE_SSHORTDATE, "dd-MMM-yy"}};

// pins nullptr: en-US "M/d/yyyy"; y 0: the null date, -1: the current year; consumed -1: not checked.
struct ScanCase { const Pins* pins; const char* text; int y, m, d, consumed; };

TEST_F(LocaleTest, ScanDateReadsTheShortPicture) {
    const ScanCase cases[] = {
        // What the short form writes is read back below; here the forms it never writes.
        {nullptr, "12/25/0", 2000, 12, 25, 7}, {nullptr, "12/25/100", 100, 12, 25, 9}, {nullptr, "12/25", -1, 12, 25, 5},
        {nullptr, "012/025/02012", 2012, 12, 25, 13}, {nullptr, "12/25/3001", 0, 0, 0, -1},
        {nullptr, "2/30/2012", 0, 0, 0, -1}, {nullptr, "2/29/1900", 0, 0, 0, -1},
        {nullptr, "13/1/2012", 0, 0, 0, -1}, {nullptr, "12/0/2012", 0, 0, 0, -1},
        // A year starts with a digit, text without one must end; a wrong separator; 2^64 + 5 is not 5.
        {nullptr, "12/25/", 0, 0, 0, -1}, {nullptr, "12/25 x", 0, 0, 0, -1}, {nullptr, "12-25-2012", 0, 0, 0, -1},
        {nullptr, "1/1/99999999999999999999999", 0, 0, 0, -1}, {nullptr, "1/18446744073709551621/2012", 0, 0, 0, -1},
        {&kDayFirst, "07.04", -1, 4, 7, 5}, {&kDayFirst, "31.04.2012", 0, 0, 0, -1},
        {&kYearFirst, "12-7-4", 2012, 7, 4, 6}, {&kYearFirst, "2012-07", 0, 0, 0, -1},
        // Digits are still read in a name slot, and only "Dec" of "December" is taken.
        {&kMonthName, "25-12-12", 2012, 12, 25, 8}, {&kMonthName, "25-December-12", 0, 0, 0, 6}, {&kMonthName, "25-Dex-12", 0, 0, 0, -1},
    };
    for (const ScanCase& c : cases) {
        UseLocale(c.pins ? *c.pins : Pins{});
        const char* p = c.text;
        CDate got = WinDateTime::ScanDate(p);
        CDate want = c.y == 0 ? CDate() : CDate(c.y == -1 ? CurrentYear() : c.y, c.m, c.d);
        EXPECT_EQ(Ymd(got), Ymd(want)) << c.text;
        if (c.consumed >= 0) { EXPECT_EQ(p - c.text, c.consumed) << c.text; }
    }
}

TEST_F(LocaleTest, ScanDateEmptyInputAndUnreadablePictures) {
    const char* p = nullptr;
    EXPECT_TRUE(WinDateTime::ScanDate(p).IsNull());
    EXPECT_EQ(p, nullptr);
    const char* empty = "";
    p = empty;
    EXPECT_TRUE(WinDateTime::ScanDate(p).IsNull());
    EXPECT_EQ(p, empty);
    // A picture character other than a field letter where a field is due is reported.
    UseLocale({{LOCALE_SSHORTDATE, "d. M. yyyy"}});
    qmtest::RecordingAssertSink sink;
    const char* text = "4. 7. 2012";
    p = text;
    EXPECT_TRUE(WinDateTime::ScanDate(p).IsNull());
    EXPECT_EQ(sink.Expressions(), std::vector<std::string>{"0"});
    EXPECT_EQ(sink.Reports()[0].module, "Common\\date");
    // An empty picture reads no field at all.
    UseLocale({{LOCALE_SSHORTDATE, ""}});
    p = "12/25/2012";
    EXPECT_TRUE(WinDateTime::ScanDate(p).IsNull());
}

// Whatever the short form writes, the scanner reads back, for every picture in use.
TEST_F(LocaleTest, ShortFormReadsBack) {
    const Pins enUS;
    const Pins twoDigit = {{LOCALE_SSHORTDATE, "M/d/yy"}};
    for (const Pins* pins : {&enUS, &kDayFirst, &kYearFirst, &kMonthName, &twoDigit}) {
        UseLocale(*pins);
        for (int y : {1950, 1999, 2000, 2004, 2049})
            for (int m = 1; m <= 12; ++m)
                for (int d : {1, 9, 10, 28, CDate::dpm(y, m)}) {
                    CDate date(y, m, d);
                    CString text = WinDateTime::GetDate(date);
                    const char* p = text;
                    ASSERT_EQ(Ymd(WinDateTime::ScanDate(p)), Ymd(date)) << text.GetString();
                    EXPECT_EQ(*p, 0) << text.GetString();
                }
    }
}

TEST(MonthNames, MatchTheFirstThreeLettersIgnoringCase) {
    struct Case { const char* text; int month; };
    const Case cases[] = {
        {"Jan", 1},  {"jan", 1},     {"JANUARY", 1}, {"Feb.", 2}, {"may", 5},  {"Mayday", 5},
        {"Sept", 9}, {"december", 12}, {"Ja", 0},    {"J", 0},    {"", 0},     {"xyz", 0}, {"12", 0},   {" Jan", 0},
    };
    for (const Case& c : cases) EXPECT_EQ(MonthMatcher::Match(c.text), c.month) << c.text;
    EXPECT_EQ(MonthMatcher::Match(nullptr), 0);
}

struct FindCase { const char* text; CDate from, to; long offset; int end; };  // end -1: p at the text's end

TEST_F(LocaleTest, FindDateFindsTheFirstDateInRange) {
    const CDate lo(1, 1, 1), hi(9999, 12, 31);
    const CDate y2012(2012, 1, 1), y2012end(2012, 12, 31);
    const FindCase cases[] = {
        // "112" is no month but the next digit starts one; without a year the text must end.
        {"text with 3/4/2012 in it", lo, hi, 10, 18}, {"old 3/4/1999, new 5/6/2012.", y2012, y2012end, 18, 26},
        {"112/25/2012", lo, hi, 1, 11}, {"from 1/1/2012", CDate(2012, 1, 2), hi, -1, -1},
        {"1/1/2012", CDate(2012, 1, 1), CDate(2012, 1, 1), 0, 8}, {"", lo, hi, -1, -1}, {"12/25 then", lo, hi, -1, -1},
        {"2/30/2012 2/28/2012", lo, hi, 10, 19}, {"3/4/2012", CDate(), CDate(), -1, -1},
    };
    for (const FindCase& c : cases) {
        const char* p = c.text;
        EXPECT_EQ(CDate::FindDate(p, c.from, c.to), c.offset) << c.text;
        EXPECT_EQ(p - c.text, c.end >= 0 ? c.end : (long)std::strlen(c.text)) << c.text;
    }
    const char* none = nullptr;
    EXPECT_EQ(CDate::FindDate(none, lo, hi), -1);
}

}  // namespace
