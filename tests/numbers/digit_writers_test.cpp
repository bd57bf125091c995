// Fixed-width decimal and hexadecimal digit writers.
#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <string>

#include "utils/common/utils_numbers.h"
#include "utils/platform/locale.h"

namespace {

// Writes into a guarded buffer and checks that nothing past the returned end was touched.
struct Written {
    std::string text;
    long advance;
    bool guardIntact;
};

constexpr char kGuard = '#';

Written RunNumstr(LONG v, int width) {
    char buf[64];
    std::memset(buf, kGuard, sizeof buf);
    char* end = numstr(v, buf, width);
    Written w{std::string(buf, (size_t)(end - buf)), (long)(end - buf), true};
    for (char* p = end; p < buf + sizeof buf; ++p)
        if (*p != kGuard) w.guardIntact = false;
    return w;
}

Written RunNumstrx(DWORD v, int width) {
    char buf[64];
    std::memset(buf, kGuard, sizeof buf);
    char* end = numstrx(v, buf, width);
    Written w{std::string(buf, (size_t)(end - buf)), (long)(end - buf), true};
    for (char* p = end; p < buf + sizeof buf; ++p)
        if (*p != kGuard) w.guardIntact = false;
    return w;
}

struct DecimalCase {
    LONG value;
    int width;
    const char* expected;
};

TEST(Numstr, WritesSignAndExactlyWidthDigits) {
    const DecimalCase cases[] = {
        {0, 1, "0"},
        {0, 4, "0000"},
        {7, 2, "07"},
        {42, 4, "0042"},
        {-42, 4, "-0042"},
        {-1, 1, "-1"},
        {1999, 4, "1999"},
        {123456789, 9, "123456789"},
        {2147483647, 10, "2147483647"},
        {INT32_MIN, 10, "-2147483648"},
        {-2147483647, 12, "-002147483647"},
        {10, 2, "10"},
        {100, 3, "100"},
        {5, 3, "005"},
    };
    for (const DecimalCase& c : cases) {
        Written w = RunNumstr(c.value, c.width);
        EXPECT_EQ(w.text, c.expected) << c.value << " width " << c.width;
        EXPECT_EQ(w.advance, (long)std::strlen(c.expected)) << c.value;
        EXPECT_TRUE(w.guardIntact) << c.value;
    }
}

// A value wider than the field keeps its lowest digits and never writes past the field.
TEST(Numstr, TooNarrowFieldKeepsLowestDigits) {
    const DecimalCase cases[] = {
        {12345, 3, "345"},
        {12345, 1, "5"},
        {-12345, 2, "-45"},
        {100, 2, "00"},
        {INT32_MIN, 4, "-3648"},
        {2147483647, 5, "83647"},
    };
    for (const DecimalCase& c : cases) {
        Written w = RunNumstr(c.value, c.width);
        EXPECT_EQ(w.text, c.expected) << c.value << " width " << c.width;
        EXPECT_TRUE(w.guardIntact) << c.value;
    }
}

TEST(Numstr, ZeroOrNegativeWidthWritesOnlyTheSign) {
    EXPECT_EQ(RunNumstr(5, 0).text, "");
    EXPECT_EQ(RunNumstr(-5, 0).text, "-");
    EXPECT_EQ(RunNumstr(5, -3).text, "");
    EXPECT_TRUE(RunNumstr(123, -3).guardIntact);
}

struct HexCase {
    DWORD value;
    int width;
    const char* expected;
};

TEST(Numstrx, UpperCaseHexWithoutSign) {
    const HexCase cases[] = {
        {0x1F, 4, "001F"},
        {0, 2, "00"},
        {0xABCDEF, 6, "ABCDEF"},
        {0xFFFFFFFFu, 8, "FFFFFFFF"},
        {0x80000000u, 8, "80000000"},
        {0xA, 1, "A"},
        {0x1234, 8, "00001234"},
        // Too narrow: the lowest digits only.
        {0x12345, 3, "345"},
        {0xFFFFFFFFu, 2, "FF"},
        {0x10, 1, "0"},
    };
    for (const HexCase& c : cases) {
        Written w = RunNumstrx(c.value, c.width);
        EXPECT_EQ(w.text, c.expected) << std::hex << c.value << " width " << c.width;
        EXPECT_EQ(w.advance, (long)std::strlen(c.expected));
        EXPECT_TRUE(w.guardIntact);
    }
    EXPECT_EQ(RunNumstrx(0x1F, 0).text, "");
    EXPECT_EQ(RunNumstrx(0x1F, -1).advance, 0);
}

}  // namespace

namespace {

TEST(NumstrFormatted, GroupsOnlyFromOneThousandUp) {
    struct Case {
        LONG value;
        const char* expected;
    };
    const Case cases[] = {
        {0, "0"},
        {7, "7"},
        {999, "999"},
        {1000, "1,000"},
        {1001, "1,001"},
        {99999, "99,999"},
        {100000, "100,000"},
        {1234567, "1,234,567"},
        {2147483647, "2,147,483,647"},
        // Negative numbers are never grouped.
        {-5000, "-5000"},
        {-12345, "-12345"},
        {-1, "-1"},
        {INT32_MIN, "-2147483648"},
    };
    for (const Case& c : cases) {
        CString out = "stale";
        CString& ret = numstr_formatted(c.value, out);
        EXPECT_EQ(&ret, &out);
        EXPECT_EQ(out, c.expected) << c.value;
    }
}

TEST(NumstrFormatted, GroupSeparatorIgnoresTheLocale) {
    qm::platform::PinLocaleInfo(LOCALE_STHOUSAND, ".");
    CString out;
    numstr_formatted(1234567, out);
    qm::platform::PinLocaleToEnglishUS();
    EXPECT_EQ(out, "1,234,567");
}

}  // namespace
