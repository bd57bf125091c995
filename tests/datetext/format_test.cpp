// CDate::Format: the format language, invalid dates, the output buffer's limit.
#include <gtest/gtest.h>

#include <cstring>
#include <ctime>
#include <random>
#include <string>

#include "tests/datetext/datetext_fixture.h"
#include "utils/framework/CTime.h"

namespace {

struct FormatCase {
    int y, m, d;
    const char* fmt;
    const char* expected;
};

TEST(DateFormat, CodesRenderTheirFields) {
    const FormatCase cases[] = {
        {2012, 7, 4, "%A %d %B %Y", "Wednesday 04 July 2012"},
        {2012, 7, 4, "%a %b %D", "Wed Jul 4"},
        {2012, 12, 25, "%D.%m.%y", "25.12.12"},
        {2005, 1, 9, "%y|%Y|%d|%D|%m", "05|2005|09|9|01"},
        {2000, 1, 1, "%w %a", "6 Sat"},
        {999, 3, 5, "%Y/%y", "0999/99"},
        {12345, 3, 5, "%Y", "12345"},    // a five-digit year keeps every digit
        {2012, 7, 4, "%q %", "%q %"},    // unknown code and a trailing "%" pass through
        {2012, 7, 4, "100%% %%d", "100% %d"},
    };
    for (const FormatCase& c : cases) {
        EXPECT_EQ(std::string(CDate(c.y, c.m, c.d).Format(c.fmt)), c.expected) << c.fmt;
    }
}

// Weekday and name codes against the C runtime's own calendar, day by day over several years
// (tests run in the C locale, so strftime's names are the English ones).
TEST(DateFormat, AgreesWithStrftimeDayByDay) {
    struct tm start {};
    start.tm_year = 1999 - 1900;
    start.tm_mon = 10;
    start.tm_mday = 20;
    start.tm_hour = 12;
    for (int k = 0; k < 1200; k += 1) {
        struct tm t = start;
        t.tm_mday += k;
        t.tm_isdst = -1;
        __int64 when = qm::crt::MkTime64(&t);
        ASSERT_NE(when, -1);
        struct tm local {};
        ASSERT_TRUE(qm::crt::LocalTime64(when, &local));
        char expected[64];
        std::strftime(expected, sizeof expected, "%A %a %d %B %b %m %Y %y %w", &local);
        CDate date(local.tm_year + 1900, local.tm_mon + 1, local.tm_mday);
        ASSERT_EQ(std::string(date.Format("%A %a %d %B %b %m %Y %y %w")), expected);
    }
}

TEST(DateFormat, NullOrInvalidDateGivesEmptyTextAndReportsIt) {
    CDate null;
    CDate badMonth(2012, 13, 1), badDay(2011, 2, 29), zeroDay(2012, 1, 0);
    CDate allOnes;
    allOnes.FromDWORD(0xFFFFFFFF);
    for (const CDate& d : {null, badMonth, badDay, zeroDay, allOnes}) {
        qmtest::RecordingAssertSink sink;
        EXPECT_EQ(std::string(d.Format("%Y")), "");
        ASSERT_EQ(sink.Reports().size(), 1u);
        EXPECT_EQ(sink.Reports()[0].expression, "bValid");
        EXPECT_EQ(sink.Reports()[0].module, "Common\\date");
    }
}

TEST(DateFormat, OutputStopsAtTheBufferSize) {
    const size_t limit = 31744;
    std::string fmt;
    for (int i = 0; i < 5000; ++i) fmt += "%B";  // 9 characters each
    std::string out = CDate(2012, 9, 1).Format(fmt.c_str()).str();
    ASSERT_EQ(out.size(), limit);
    EXPECT_EQ(out.substr(0, 18), "SeptemberSeptember");
    EXPECT_EQ(out.substr(limit - 4), "berS");  // 3527 names and the first letter of one more

    std::string plain(limit + 100, 'x');
    EXPECT_EQ(CDate(2012, 9, 1).Format(plain.c_str()).GetLength(), (int)limit);
    std::string justFits(limit - 1, 'x');
    justFits += "%d";
    std::string fitted = CDate(2012, 9, 7).Format(justFits.c_str()).str();
    EXPECT_EQ(fitted.size(), limit);
    EXPECT_EQ(fitted.back(), '0');  // only the first digit of "07" fits
}

// Arbitrary format bytes, including "%" at the end and bytes above 0x7F, never break out of
// the buffer (run under the address sanitizer) and always give text for a valid date.
TEST(DateFormat, ArbitraryFormatBytesAreSafe) {
    std::mt19937 rng(20120704);
    const char alphabet[] = "%%%AaBbdDmYywq \x80\xff";
    for (int round = 0; round < 2000; ++round) {
        std::string fmt(rng() % 40, ' ');
        for (char& c : fmt) c = alphabet[rng() % (sizeof alphabet - 1)];
        std::string out = CDate(1900 + (int)(rng() % 300), 2, 28).Format(fmt.c_str()).str();
        EXPECT_LE(out.size(), fmt.size() * 9);
    }
}

}  // namespace
