// CDate::Format: the format language, invalid dates, the output buffer's limit.
#include <gtest/gtest.h>
#include <cstring>
#include <ctime>
#include <random>
#include <string>

#include "tests/datetext/datetext_fixture.h"
#include "utils/framework/CTime.h"

namespace {

TEST(DateFormat, CodesRenderTheirFields) {
    struct Case { int y, m, d; const char* fmt; const char* expected; } cases[] = {
        // The other codes are checked against strftime below.
        {2012, 1, 9, "%D.%m.%y", "9.01.12"}, {999, 3, 5, "%Y/%y", "0999/99"}, {12345, 3, 5, "%Y", "12345"},
        {2012, 7, 4, "%q %", "%q %"}, {2012, 7, 4, "100%% %%d", "100% %d"},  // unknown code, trailing "%"
    };
    for (const Case& c : cases) EXPECT_EQ(std::string(CDate(c.y, c.m, c.d).Format(c.fmt)), c.expected) << c.fmt;
}

// Weekday and name codes against strftime in the C locale, day by day.
TEST(DateFormat, AgreesWithStrftimeDayByDay) {
    for (int k = 0; k < 1200; k += 1) {
        struct tm t {};
        t.tm_year = 1999 - 1900, t.tm_mon = 10, t.tm_mday = 20 + k, t.tm_hour = 12, t.tm_isdst = -1;
        struct tm local {};
        ASSERT_TRUE(qm::crt::LocalTime64(qm::crt::MkTime64(&t), &local));
        char expected[64];
        std::strftime(expected, sizeof expected, "%A %a %d %B %b %m %Y %y %w", &local);
        CDate date(local.tm_year + 1900, local.tm_mon + 1, local.tm_mday);
        ASSERT_EQ(std::string(date.Format("%A %a %d %B %b %m %Y %y %w")), expected);
    }
}

TEST(DateFormat, NullOrInvalidDateGivesEmptyTextAndReportsIt) {
    CDate allOnes;
    allOnes.FromDWORD(0xFFFFFFFF);
    for (const CDate& d : {CDate(), CDate(2012, 13, 1), CDate(2011, 2, 29), CDate(2012, 1, 0), allOnes}) {
        qmtest::RecordingAssertSink sink;
        EXPECT_EQ(std::string(d.Format("%Y")), "");
        EXPECT_EQ(sink.Expressions(), std::vector<std::string>{"bValid"});
    }
}

// The output stops at the buffer's size, also inside a name or a number, for any format.
TEST(DateFormat, OutputStopsAtTheBufferSize) {
    const size_t limit = 31744;
    std::string fmt;
    for (int i = 0; i < 5000; ++i) fmt += "%B";  // 9 characters each
    std::string out = CDate(2012, 9, 1).Format(fmt.c_str()).str();
    ASSERT_EQ(out.size(), limit);
    EXPECT_EQ(out.substr(limit - 4), "berS");  // 3527 names and the first letter of one more
    std::string justFits(limit - 1, 'x');
    std::string fitted = CDate(2012, 9, 7).Format((justFits + "%d").c_str()).str();
    EXPECT_EQ(fitted.size(), limit);
    EXPECT_EQ(fitted.back(), '0');  // only the first digit of "07" fits
    std::mt19937 rng(20120704);
    const char alphabet[] = "%%%AaBbdDmYywq \x80\xff";
    for (int round = 0; round < 2000; ++round) {
        std::string f(rng() % 40, ' ');
        for (char& c : f) c = alphabet[rng() % (sizeof alphabet - 1)];
        EXPECT_LE(CDate(1900 + (int)(rng() % 300), 2, 28).Format(f.c_str()).GetLength(), (int)f.size() * 9);
    }
}

}  // namespace
