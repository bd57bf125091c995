// The decimal separator override and the locale digit counts.
#include <gtest/gtest.h>

#include "tests/numbers/number_settings.h"
#include "tests/support/recording_sink.h"

namespace {

using numtest::ScopedNumberSettings;

TEST(DecimalSeparator, LocaleAnswers) {
    const struct { const char* pinned; char expected; } cases[] = {
        {",", ','}, {"ab", '.'},  // two or three characters: "." stands in
        {"abc", '.'}, {"abcd", 0},  // does not fit the 4-char buffer: the read fails, NUL
        {"", 0},
    };
    for (const auto& c : cases) {
        ScopedNumberSettings settings;
        settings.Pin(LOCALE_SDECIMAL, c.pinned);
        EXPECT_EQ(GetDecimalSeparator(), c.expected) << "'" << c.pinned << "'";
        // Setting returns the previous override; 0 removes it and the locale answers again.
        EXPECT_EQ(SetDecimalSeparator('#'), 0);
        EXPECT_EQ(GetDecimalSeparator(), '#');
        EXPECT_EQ(SetDecimalSeparator(0), '#');
        EXPECT_EQ(GetDecimalSeparator(), c.expected);
    }
}

// The counts are cached per process, so this is the only test that reads them.
TEST(DigitsAfterDecimal, ReadOncePerGroupAndCached) {
    ScopedNumberSettings settings;
    qmtest::RecordingAssertSink sink;
    settings.Pin(LOCALE_IDIGITS, "123");  // too long for the 3-char buffer: the read fails
    EXPECT_EQ(GetNumOfDigitAfterDec(roNUMBERS), 2);
    settings.Pin(LOCALE_IDIGITS, "3");  // a failed read was not cached
    EXPECT_EQ(GetNumOfDigitAfterDec(roNUMBERS), 3);
    settings.Pin(LOCALE_IDIGITS, "1");  // now cached: a later change is not seen
    EXPECT_EQ(GetNumOfDigitAfterDec(roNUMBERS), 3);
    settings.Pin(LOCALE_ICURRDIGITS, "0");  // the other group has its own entry
    EXPECT_EQ(GetNumOfDigitAfterDec(roCURRENCY), 0);
    EXPECT_TRUE(sink.Reports().empty());
    EXPECT_EQ(GetNumOfDigitAfterDec((eREG_OPT_GROUP)2), 2);
    EXPECT_EQ(GetNumOfDigitAfterDec((eREG_OPT_GROUP)-1), 2);
    ASSERT_EQ(sink.Reports().size(), 2u);
    EXPECT_EQ(sink.Reports()[0].expression, "eRegOptGroup == roNUMBERS || eRegOptGroup == roCURRENCY");
    EXPECT_EQ(sink.Reports()[0].module, "Common\\utils");
}

}  // namespace
