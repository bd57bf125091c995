// WinDateTime: locale settings, short and long forms, time of day, field extractors.
#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "tests/datetext/datetext_fixture.h"
#include "utils/framework/CTime.h"

namespace {

using datetext_test::LocaleTest;
using datetext_test::Pins;
using datetext_test::UseLocale;

struct ShortCase { Pins pins; const char* sdateFormat; int charMonth, sShortYear; const char* july4th2012, *dec31st1999; };

TEST_F(LocaleTest, ShortFormFollowsPictureAndOrder) {
    const ShortCase cases[] = {
        {{}, "%d/%d/%04d", 0, 0, "7/4/2012", "12/31/1999"},
        {{{LOCALE_IDATE, "1"}, {LOCALE_SDATE, "."}, {LOCALE_SSHORTDATE, "dd.MM.yyyy"}},
         "%02d.%02d.%04d", 0, 0, "04.07.2012", "31.12.1999"},
        {{{LOCALE_IDATE, "2"}, {LOCALE_SDATE, "-"}, {LOCALE_SSHORTDATE, "yyyy-MM-dd"}},
         "%04d-%02d-%02d", 0, 0, "2012-07-04", "1999-12-31"},
        {{{LOCALE_IDATE, "1"}, {LOCALE_SDATE, "-"}, {LOCALE_SSHORTDATE, "dd-MMM-yy"}},
         "%02d-%s-%02d", 1, 1, "04-Jul-12", "31-Dec-99"},
        {{{LOCALE_SSHORTDATE, "M/d/yy"}}, "%d/%d/%02d", 0, 1, "7/4/12", "12/31/99"},
        // A separator of several characters is used whole; "%" is taken literally.
        {{{LOCALE_SDATE, " % "}, {LOCALE_SSHORTDATE, "M % d % yyyy"}}, "%d %% %d %% %04d", 0, 0,
         "7 % 4 % 2012", "12 % 31 % 1999"},
    };
    for (const ShortCase& c : cases) {
        UseLocale(c.pins);
        EXPECT_EQ(std::string(WinDateTime::sdateFormat), c.sdateFormat);
        EXPECT_EQ(WinDateTime::charMonth, c.charMonth) << c.sdateFormat;
        EXPECT_EQ(WinDateTime::sShortYear, c.sShortYear) << c.sdateFormat;
        EXPECT_EQ(std::string(WinDateTime::GetDate(CDate(2012, 7, 4))), c.july4th2012) << c.sdateFormat;
        CString out("old text");
        WinDateTime::GetDate(CDate(1999, 12, 31), out, 0);
        EXPECT_EQ(std::string(out), c.dec31st1999) << c.sdateFormat;
    }
}

TEST_F(LocaleTest, StringFormsTwoDigitYearsAndTheNullDate) {
    CDate d(2012, 7, 4);
    EXPECT_EQ(std::string((CString)d), "7/4/2012");
    EXPECT_EQ(std::string(d.AsString(1)), "Wednesday, July 4, 2012");
    struct tm now {};
    ASSERT_TRUE(qm::crt::LocalTime64(qm::crt::Time64(), &now));
    CDate today(now.tm_year + 1900, now.tm_mon + 1, now.tm_mday);  // the null date stands for today
    EXPECT_EQ(WinDateTime::GetDate(CDate()), WinDateTime::GetDate(today));
    EXPECT_EQ(CDate().AsString(1), today.AsString(1));
    UseLocale({{LOCALE_SSHORTDATE, "M/d/yy"}});  // two-digit years keep their offsets outside the century
    EXPECT_EQ(CDate(1850, 1, 2).AsString() + " " + CDate(2150, 1, 2).AsString() + " " + CDate(2000, 1, 2).AsString(),
              "1/2/-50 1/2/150 1/2/00");
}

TEST_F(LocaleTest, UnknownOrderCodeReportsAndFollowsThePicture) {
    UseLocale({{LOCALE_IDATE, "7"}, {LOCALE_SDATE, "."}, {LOCALE_SSHORTDATE, "dd.MM.yyyy"}});
    qmtest::RecordingAssertSink sink;
    EXPECT_EQ(std::string(WinDateTime::GetDate(CDate(2012, 7, 4))), "04.07.2012");
    EXPECT_EQ(sink.Expressions(), std::vector<std::string>{"0"});
    // Read back with the same picture, so the short form and the scanner agree.
    const char* p = "04.07.2012";
    EXPECT_EQ(WinDateTime::ScanDate(p), CDate(2012, 7, 4));
    UseLocale({{LOCALE_IDATE, "7"}, {LOCALE_SDATE, "-"}, {LOCALE_SSHORTDATE, "yyyy-MM-dd"}});  // year first
    EXPECT_EQ(std::string(WinDateTime::GetDate(CDate(2012, 7, 4))), "2012-07-04");
}

struct LongCase { const char* picture, *ldateFormat; int lmdyFormat, lShortYear, incMonth; const char* july4th2012; bool reportsOrder; };

TEST_F(LocaleTest, LongFormRendersCommonPictures) {
    const LongCase cases[] = {
        {"dddd, MMMM d, yyyy", "%A, %B \x02" "d, \x02" "d", 1, 0, 0, "Wednesday, July 4, 2012", false},
        {"dd. MMMM yyyy", "\x02" "02d. %B \x02" "d", 2, 0, 0, "04. July 2012", false},
        {"d 'de' MMMM 'de' yyyy", "\x02" "d de %B de \x02" "d", 2, 0, 0, "4 de July de 2012", false},
        {"ddd, dd MMM yy", "%a, \x02" "02d %b \x02" "d", 2, 1, 0, "Wed, 04 Jul 12", false},
        {"yyyy-MM-dd", "\x02" "d-\x02" "02d-\x02" "02d", 0, 0, 1, "2012-07-04", false},
        // Quoted literals keep their case and letters, "''" is a quote, no slot can be forged;
        // orders outside the three expected ones report "false" and each slot keeps its field.
        {"yyyy'Y'M'M'd'D'", nullptr, 0, 0, 1, "2012Y7M4D", false}, {"MM yyyy d", nullptr, 1, 0, 1, "07 2012 4", true},
        {"d 'o''clock' MMMM yyyy", nullptr, 2, 0, 0, "4 o'clock July 2012", false},
        {"d '\x02" "d' MMMM yyyy", nullptr, 2, 0, 0, "4 d July 2012", false}, {"d d MMMM yyyy", nullptr, 2, 0, 0, "4 4 July 2012", true},
    };
    for (const LongCase& c : cases) {
        qmtest::RecordingAssertSink sink;
        UseLocale({{LOCALE_SLONGDATE, c.picture}});
        if (c.ldateFormat) { EXPECT_EQ(std::string(WinDateTime::ldateFormat), c.ldateFormat) << c.picture; }
        EXPECT_EQ(std::to_string(WinDateTime::lmdyFormat) + std::to_string(WinDateTime::lShortYear) +
                      std::to_string(WinDateTime::incMonth),
                  std::to_string(c.lmdyFormat) + std::to_string(c.lShortYear) + std::to_string(c.incMonth)) << c.picture;
        EXPECT_EQ(sink.Expressions(), c.reportsOrder ? std::vector<std::string>{"false"} : std::vector<std::string>{})
            << c.picture;
        EXPECT_EQ(std::string(CDate(2012, 7, 4).AsString(1)), c.july4th2012) << c.picture;
    }
}

TEST_F(LocaleTest, LongFormOfAnInvalidDateIsEmpty) {
    qmtest::RecordingAssertSink sink;
    EXPECT_TRUE(CDate(2011, 2, 29).AsString(1).IsEmpty());
    EXPECT_EQ(sink.Expressions(), std::vector<std::string>{"bValid"});
}

TEST_F(LocaleTest, PicturesLongerThanTheirBuffersReadAsEmpty) {
    std::string longShort(40, 'd');
    UseLocale({{LOCALE_SSHORTDATE, longShort.c_str()}});
    EXPECT_EQ(std::string(WinDateTime::descShortDate), "");
    std::string fits = "d/M/yyyy" + std::string(23, ' ');  // 31 characters and the NUL
    UseLocale({{LOCALE_SSHORTDATE, fits.c_str()}});
    EXPECT_EQ(std::string(WinDateTime::descShortDate), "d/m/yyyy" + std::string(23, ' '));
}

struct TimeCase { Pins pins; int hour, minute; const char* expected; };

TEST_F(LocaleTest, TimeOfDay) {
    const Pins h24 = {{LOCALE_ITIME, "1"}, {LOCALE_ITLZERO, "1"}, {LOCALE_STIME, "."}};
    const TimeCase cases[] = {{{}, 0, 30, "12:30AM"}, {{}, 11, 59, "11:59AM"}, {h24, 9, 5, "09.05"}, {{{LOCALE_STIME, "%"}}, 9, 5, "9%05AM"}};
    for (const TimeCase& c : cases) {
        UseLocale(c.pins);
        EXPECT_EQ(std::string(WinDateTime::GetTime(CTime(2012, 7, 4, c.hour, c.minute, 0))), c.expected);
    }
}

enum Extractor { WeekDay, Month, DayOfMonth, Year, Separator };

CString RunExtractor(Extractor which, char*& p) {
    switch (which) {
        case WeekDay: return WinDateTime::ExtractWeekDay(p);
        case Month: return WinDateTime::ExtractMonth(p);
        case DayOfMonth: return WinDateTime::ExtractDayOfMonth(p);
        case Year: return WinDateTime::ExtractYear(p);
        default: return WinDateTime::ExtractSeparator(p);
    }
}

// incMonth, lShortYear -1: not checked; report: the assertion text, or nullptr.
struct ExtractCase { Extractor which; const char* text; const char* piece; int consumed, incMonth, lShortYear; const char* report; };

TEST_F(LocaleTest, FieldExtractors) {
    const ExtractCase cases[] = {
        {WeekDay, "dddd, mmmm", "%A", 4, -1, -1, nullptr}, {WeekDay, "ddd ", "%a", 3, -1, -1, nullptr},
        {WeekDay, "dd.", "", 2, -1, -1, nullptr}, {WeekDay, "mmm", "", 0, -1, -1, nullptr},
        {WeekDay, "", "", 0, -1, -1, "ptr != NULL && *ptr != 0"},
        {DayOfMonth, "dd ", "\x02" "02d", 2, -1, -1, nullptr}, {DayOfMonth, "d,", "\x02" "d", 1, -1, -1, nullptr},
        {DayOfMonth, "", "\x02" "d", 0, -1, -1, "ptr != NULL && *ptr != 0"},
        {Month, "m/", "\x02" "d", 1, 1, -1, nullptr}, {Month, "mm", "\x02" "02d", 2, 1, -1, nullptr},
        {Month, "mmm", "%b", 3, 0, -1, nullptr}, {Month, "mmmmm", "\x02" "d", 5, 0, -1, nullptr},
        {Month, "", "\x02" "d", 0, 1, -1, "ptr != NULL && *ptr != 0"},
        {Year, "yy", "\x02" "d", 2, -1, 1, nullptr}, {Year, "yyyy", "\x02" "d", 4, -1, 0, nullptr},
        {Year, "yyy", "\x02" "d", 3, -1, 0, nullptr}, {Year, "", "\x02" "d", 0, -1, 0, "*ptr != NULL && *ptr != 0"},
        {Separator, ", mmmm", ", ", 2, -1, -1, nullptr}, {Separator, "", "", 0, -1, -1, nullptr},
        {Separator, "'de' mmmm", "", 1, -1, -1, nullptr}, {Separator, "'a''b' d", "a'b", 6, -1, -1, nullptr},  // letters end quotes
        {Separator, "' - 'yy", " - ", 5, -1, -1, nullptr}, {Separator, ", 'x' d", ", ", 3, -1, -1, "ExpectQuote"},
    };
    for (const ExtractCase& c : cases) {
        std::string text = c.text;
        char* start = &text[0];
        char* p = start;
        WinDateTime::incMonth = 7;
        WinDateTime::lShortYear = 7;
        qmtest::RecordingAssertSink sink;
        std::string piece = RunExtractor(c.which, p).str();
        EXPECT_EQ(piece, c.piece) << c.text;
        EXPECT_EQ(p - start, c.consumed) << c.text;
        if (c.incMonth >= 0) { EXPECT_EQ(WinDateTime::incMonth, c.incMonth) << c.text; }
        if (c.lShortYear >= 0) { EXPECT_EQ(WinDateTime::lShortYear, c.lShortYear) << c.text; }
        EXPECT_EQ(sink.Expressions(), c.report ? std::vector<std::string>{c.report} : std::vector<std::string>{})
            << c.text;
    }
}

TEST_F(LocaleTest, ExtractorsReportANullCursorAndLeaveIt) {
    qmtest::RecordingAssertSink sink;
    char* p = nullptr;
    std::string got;
    for (Extractor e : {WeekDay, Month, DayOfMonth, Year, Separator}) got += RunExtractor(e, p).str() + "|";
    EXPECT_EQ(got, "|\x02" "d|\x02" "d|\x02" "d||");
    EXPECT_EQ(p, nullptr);
    EXPECT_EQ(sink.Expressions(),
              (std::vector<std::string>{"ptr != NULL && *ptr != 0", "ptr != NULL && *ptr != 0",
                                        "ptr != NULL && *ptr != 0", "*ptr != NULL && *ptr != 0", "ptr != NULL"}));
}

}  // namespace
