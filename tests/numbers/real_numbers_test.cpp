// Real numbers: fixed and significant-digit text, parsing, the validator, rounding.
#include <gtest/gtest.h>
#include <bit>
#include <climits>
#include <cmath>
#include <cstdint>
#include <limits>

#include "tests/numbers/number_settings.h"
#include "tests/support/recording_sink.h"

namespace {

using numtest::ScopedNumberSettings;

const double kInf = std::numeric_limits<double>::infinity();

struct FltCase { double value; int digits; const char* expected; };

// No leading zero; the separator even without decimals; cut, not rounded (1.15 is stored just
// below itself); large values written in full.
TEST(Double2Str, FixedDecimalsCutNotRounded) {
    const FltCase cases[] = {
        {-0.0, 3, "0"}, {-0.25, 2, "-.25"}, {5.0, 0, "5."}, {2.99, 1, "2.9"}, {1.15, 2, "1.14"}, {12.05, 2, "12.05"},
        {1.0, 3, "1.000"}, {2.5, -3, "2."}, {2147483647.25, 2, "2147483647.25"}, {4294967296.5, 1, "4294967296.5"},
        {-1e20, 0, "-100000000000000000000."}, {kInf, 1, "inf"}, {-kInf, 1, "-inf"}, {std::nan(""), 1, "nan"},
    };
    for (const FltCase& c : cases) {
        CString out = "stale";
        EXPECT_EQ(&Double2Str(c.value, out, c.digits), &out);
        EXPECT_EQ(out, c.expected) << c.value << " with " << c.digits;
    }
}

TEST(Double2Str, TooManyDecimalsIsReportedAndStillFormatted) {
    qmtest::RecordingAssertSink sink;
    CString out;
    Double2Str(1.125, out, 4);
    EXPECT_TRUE(sink.Reports().empty());
    Double2Str(1.123456, out, 5);
    ASSERT_EQ(sink.Reports().size(), 1u);
    EXPECT_EQ(sink.Reports()[0].expression + sink.Reports()[0].module + out.str(), "Decimals < 5Common\\utils1.12345");
    EXPECT_EQ(Double2Str(0.5, out, 40), ".500000000");  // cut to 9 decimals rather than overflowing
}

// The Windows runtime's _gcvt rules, identical on every target.
TEST(Fltstr, RuntimeSignificantDigitForm) {
    const FltCase cases[] = {
        {1.0, 10, "1."},  {-3.1415e5, 7, "-314150."}, {1.0, 1, "1"},  // the point stays unless no place is left
        {0.0, 5, "0."},   {1.5, 1, "2"},   {0.2, 5, "0.2"},
        {0.02, 3, "2.e-002"}, {0.02, 1, "2e-002"},  // magnitude below -1 takes the exponent form
        {1e100, 3, "1.e+100"}, {5e-324, 3, "4.94e-324"}, {0.125, 2, "0.13"},  // half up on the digits
        {123456.0, 6, "123456"}, {123456.0, 7, "123456."}, {123456.0, 5, "1.2346e+005"},
        {99999.5, 5, "100000"},  // rounding carries into a sixth digit, still fixed form
        {0.2, 17, "0.20000000000000001"}, {1.0 / 3, 0, "0.3"},  // 0 digits counts as 1
        {1.1f, 7, "1.1"}, {0.1f, 9, "0.100000001"},  // a float is formatted as its double value
        {1.5, -1, ""}, {1.5, 25, ""}, {1.0, 24, ""},  // more than the buffer holds ("1." and 23 zeros)
        // Infinities and NaNs take the runtime's pseudo-digits, rounded like digits.
        {kInf, 6, "1.#INF"}, {-kInf, 10, "-1.#INF"}, {kInf, 2, "1.$"}, {kInf, 3, "1.#J"},
        {std::bit_cast<double>(0xFFF8000000000000ull), 8, "-1.#IND"}, {std::bit_cast<double>(0x7FF8000000000000ull), 8, "1.#QNAN"},
    };
    for (const FltCase& c : cases) {
        CString out = "stale";
        EXPECT_EQ(&fltstr(c.value, c.digits, out), &out);
        EXPECT_EQ(out, c.expected) << c.value << " with " << c.digits;
    }
}

TEST(Fltstr, FormatGcvtNeedsRoomForTheTerminator) {
    char small[7];
    EXPECT_EQ(qm::FormatGcvt(123.25, 5, small, 6), 34);
    EXPECT_EQ(small[0], '\0');
    EXPECT_EQ(qm::FormatGcvt(123.25, 5, small, 7), 0);  // "123.25" fits 7 with its NUL
    EXPECT_STREQ(small, "123.25");
}

const double kInvalid = std::bit_cast<double>(0x0010000000000000ull);

struct ParseCase { const char* text; double value; int decimals; };  // kInvalid for the sentinel

TEST(StrToDouble, ParsesPlainNumbersAndCountsEverythingAfterThePointAsDecimals) {
    const ParseCase cases[] = {
        // Blanks around the text and a removed trailing mark count as decimals, a leading mark does not.
        {"$12.50", 12.5, 2}, {"12.5 ", 12.5, 2}, {"12.50$", 12.5, 3}, {"  1.5", 1.5, 3}, {"\t7.0\n", 7.0, 3},
        {" $1.25 ", 1.25, 4}, {"$ 12.50", 12.5, 2},
        {"?\t-3", -3.0, 0}, {".5", 0.5, 1}, {"5.", 5.0, 0}, {"+4", 4.0, 0}, {"1.5e2", 150.0, 3}, {"1e999", HUGE_VAL, 0},
        {"-1e999", -HUGE_VAL, 0}, {"1e-999", 0.0, 0}, {"", kInvalid, 0}, {"   ", kInvalid, 0}, {"$", kInvalid, 0},
        {"$12$", kInvalid, 0}, {"12abc", kInvalid, 0}, {"1 2", kInvalid, 0}, {"0x10", kInvalid, 0},  // one mark removed
        {"inf", kInvalid, 0}, {"1,5", kInvalid, 0}, {"-", kInvalid, 0}, {"e5", kInvalid, 0},
    };
    for (const ParseCase& c : cases) {
        int decimals = -7;
        const double v = StrToDouble(c.text, decimals);
        EXPECT_EQ(std::bit_cast<std::uint64_t>(v), std::bit_cast<std::uint64_t>(c.value)) << c.text;
        EXPECT_EQ(decimals, c.decimals) << c.text;
    }
}

struct ValidCase { const char* text; int intDigits; int fracDigits; bool valid; };

TEST(IsValidDouble, BudgetsDigitsBeforeAndAfterTheSeparator) {
    const ValidCase cases[] = {
        {"-12.34", 3, 2, true}, {"-12.34", 2, 2, false},  // the separator uses one unit of the integer budget
        {"12", 2, 2, true},  {"123", 2, 2, false}, {"1.234", 3, 2, false}, {"1.2.3", 3, 2, false},
        {"12.", 3, 0, false}, {"12.", 3, 1, true}, {".5", 1, 1, true}, {".5", 0, 1, false},
        {"", 0, 0, true},    {"5", 0, 0, false},  {"+5", 1, 0, true},  // the sign does not count
        {"-", 1, 0, true},   {"5-", 2, 0, false}, {"+-5", 3, 0, false}, {" 1", 3, 0, false},
        {"1.5", 5, -1, false}, {"0012", 4, 0, true},
    };
    for (const ValidCase& c : cases)
        EXPECT_EQ(IsValidDouble(c.text, c.intDigits, c.fracDigits) != 0, c.valid)
            << "'" << c.text << "' " << c.intDigits << "," << c.fracDigits;
    EXPECT_NE(IsValidDouble(nullptr, 2, 2), 0);
}

// The override, else the locale separator; reading also understands ".".
TEST(DecimalSeparator, WritersAndReadersFollowTheOverrideThenTheLocale) {
    ScopedNumberSettings settings;
    CString out;
    int decimals = 0;
    settings.Pin(LOCALE_SDECIMAL, ",");
    EXPECT_EQ(Double2Str(1.5, out, 1), "1,5");
    EXPECT_EQ(StrToDouble("2,25", decimals), 2.25);
    EXPECT_EQ(decimals, 2);
    EXPECT_EQ(StrToDouble("2.5", decimals), 2.5);
    settings.Override(';');
    EXPECT_EQ(Double2Str(1.5, out, 1), "1;5");
    EXPECT_EQ(StrToDouble("3;5", decimals), 3.5);
    EXPECT_EQ(StrToDouble("3,5", decimals), kInvalid);  // the override wins over the locale
    EXPECT_TRUE(IsValidDouble("1;5", 2, 1));
    EXPECT_TRUE(IsValidDouble("1.5", 2, 1));
    EXPECT_FALSE(IsValidDouble("1;5.2", 5, 3));
    EXPECT_EQ(StrToDouble(CString("12\0003", 4), decimals), kInvalid);  // an embedded NUL
}

TEST(Round, HalvesGoUp) {
    const struct { double x; int expected; } cases[] = {
        {2.5, 3}, {-2.5, -2}, {2.4999, 2}, {-2.6, -3}, {-0.5, 0}, {2147483647.4, 2147483647},
        // Beyond 32 bits: the x86 conversion's 0x80000000.
        {1e10, INT32_MIN}, {-1e10, INT32_MIN}, {std::numeric_limits<double>::quiet_NaN(), INT32_MIN},
    };
    for (const auto& c : cases) EXPECT_EQ(qm::round(c.x), c.expected) << c.x;
}

TEST(Round, SinglePrecisionDecimalsCutNegativesTowardZero) {
    const struct { float x; int decimals; float expected; } cases[] = {
        {1.25f, 1, 13.0f / 10.0f}, {-1.7f, 0, -1.0f}, {-1.25f, 1, -12.0f / 10.0f},  // negatives are cut
        {2.5f, 0, 3.0f}, {0.125f, 2, 13.0f / 10.0f / 10.0f}, {2.6f, -1, 3.0f},  // a negative count scales by nothing
        // A huge count overflows to infinity (or stays 0) and answers at once.
        {1.5f, INT_MAX, std::numeric_limits<float>::infinity()},
        {-1e-45f, INT_MAX, -std::numeric_limits<float>::infinity()}, {0.0f, INT_MAX, 0.0f},
    };
    for (const auto& c : cases) EXPECT_EQ(qm::round(c.x, c.decimals), c.expected) << c.x << " " << c.decimals;
}

}  // namespace
