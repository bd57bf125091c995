// Digit writers and the grouped form against models built on the C runtime's formatting.
#include <gtest/gtest.h>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <random>
#include <string>

#include "utils/common/utils_numbers.h"
#include "utils/platform/locale.h"

namespace {

// The lowest `width` digits of the magnitude, zero-padded, after a "-" for negatives.
std::string Model(long long v, int width, bool hex) {
    char digits[64];
    std::snprintf(digits, sizeof digits, hex ? "%0*llX" : "%0*llu", 24, (unsigned long long)(v < 0 ? -v : v));
    std::string s = digits;
    return (v < 0 ? "-" : "") + (width > 0 ? s.substr(s.size() - (size_t)width) : "");
}

// The returned end is right after the text and nothing past it is touched.
TEST(DigitWriters, FixedWidthDigitsMatchTheModel) {
    std::mt19937 rng(42);
    const LONG edges[] = {0, 1, -1, 9, 10, 99, 100, 12345, -12345, 2147483647, INT32_MIN};
    for (int i = 0; i < 4000; ++i) {
        const LONG v = i < (int)std::size(edges) * 8 ? edges[i / 8] : (LONG)rng();
        const int width = i < (int)std::size(edges) * 8 ? i % 8 * 2 - 2 : (int)(rng() % 14) - 2;
        for (bool hex : {false, true}) {
            char buf[64];
            std::memset(buf, '#', sizeof buf);
            char* end = hex ? numstrx((DWORD)v, buf, width) : numstr(v, buf, width);
            ASSERT_EQ(std::string(buf, (size_t)(end - buf)), Model(hex ? (long long)(DWORD)v : v, width, hex)) << v << " width " << width;
            ASSERT_EQ(std::string(end, buf + sizeof buf), std::string((size_t)(buf + sizeof buf - end), '#'));
        }
    }
}

// Groups of three from 1,000 up with "," whatever the locale; negatives are never grouped.
TEST(DigitWriters, GroupedFormMatchesTheModel) {
    qm::platform::PinLocaleInfo(LOCALE_STHOUSAND, ".");
    std::mt19937 rng(7);
    const LONG edges[] = {0, 999, 1000, 1001, 99999, 100000, 2147483647, -1, -5000, -12345, INT32_MIN};
    for (int i = 0; i < 3000; ++i) {
        const LONG v = i < (int)std::size(edges) ? edges[i] : (LONG)(rng() >> (rng() % 32));
        std::string expected = std::to_string((long long)v);
        if (v >= 1000)
            for (int k = (int)expected.size() - 3; k > 0; k -= 3) expected.insert((size_t)k, ",");
        CString out = "stale";
        ASSERT_EQ(&numstr_formatted(v, out), &out);
        ASSERT_EQ(out.str(), expected) << v;
    }
    qm::platform::PinLocaleToEnglishUS();
}

}  // namespace
