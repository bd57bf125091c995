#include <gtest/gtest.h>
#include <algorithm>
#include <climits>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "tests/support/recording_sink.h"
#include "utils/common/BulletsAndNumbering.h"

namespace {

struct Label { bool ok; std::string text; ULONG font; ptrdiff_t advance; };  // how far the cursor moved

Label Build(int n, int type, char prefix = 0, char suffix = 0) {
    char buf[64];
    std::memset(buf, '#', sizeof buf);
    char* p = buf;
    ULONG font = 0xDEAD;
    bool ok = BuildNumber(p, n, (NumberType)type, prefix, suffix, font);
    return {ok, std::string(buf), font, p - buf};
}

// Label models: one letter per round of 26 up to ten; Roman 1-9999; "*" outside the range.
std::string Letters(long long n, bool lower) {
    if (n < 1 || (n - 1) / 26 >= 10) return "*";
    return std::string((size_t)((n - 1) / 26 + 1), (char)((lower ? 'a' : 'A') + (n - 1) % 26));
}

std::string Roman(long long n, bool lower) {
    if (n < 1 || n > 9999) return "*";
    const char* const ones[] = {"", "I", "II", "III", "IV", "V", "VI", "VII", "VIII", "IX"};
    const char* const tens[] = {"", "X", "XX", "XXX", "XL", "L", "LX", "LXX", "LXXX", "XC"};
    const char* const hundreds[] = {"", "C", "CC", "CCC", "CD", "D", "DC", "DCC", "DCCC", "CM"};
    std::string s = std::string((size_t)(n / 1000), 'M') + hundreds[n / 100 % 10] + tens[n / 10 % 10] + ones[n % 10];
    if (lower)
        for (char& c : s) c = (char)(c + 32);
    return s;
}

TEST(BuildNumber, LabelsByStyleMatchTheModels) {
    qmtest::RecordingAssertSink sink;
    for (long long n = -300; n <= 10300; ++n) {
        const int v = n == -300 ? INT_MIN : n == 10300 ? INT_MAX : (int)n;
        const std::string expected[] = {std::to_string(v), Letters(v, false), Letters(v, true), Roman(v, false), Roman(v, true)};
        for (int type = 1; type <= 5; ++type) {
            Label l = Build(v, type, n % 3 ? '(' : 0, n % 2 ? ')' : 0);
            const std::string want = (n % 3 ? "(" : "") + expected[type - 1] + (n % 2 ? ")" : "");
            ASSERT_TRUE(l.ok) << v << " style " << type << ": " << l.text;
            ASSERT_EQ(l.text, want) << v << " style " << type;
            ASSERT_EQ(l.advance, (ptrdiff_t)l.text.size()) << "cursor must rest on the NUL";
            ASSERT_EQ(l.font, 0xDEADu) << "font is only set by bullet styles";
        }
        char buf[64] = {'x', 'y', 0};
        char* p = buf;  // the Roman writer alone writes nothing but the NUL out of range
        const bool inRange = v >= 1 && v <= 9999;
        ASSERT_EQ(BuildRomanNumber(p, v), inRange ? 1 : 0);
        ASSERT_EQ(std::string(buf), inRange ? Roman(v, false) : "");
        ASSERT_EQ(p, buf + std::strlen(buf));
        if (!inRange) { ASSERT_EQ(buf[1], 'y') << v; }
    }
    EXPECT_TRUE(sink.Reports().empty()) << "numbers out of a style's range are not style errors";
}

TEST(BuildNumber, BulletStylesSetFontAndSymbol) {
    const struct { int type; ULONG font; unsigned char symbol; } cases[] = {
        {17, 0x40, 0xB7}, {18, 0x80, 0xA7}, {19, 0x40, 0xA8}, {20, 0x80, 'q'},
        {21, 0x80, 'v'},  {22, 0x80, 0xD8}, {23, 0x80, 0xFC},
    };
    for (const auto& c : cases) {
        Label l = Build(12345, c.type, 0, ' ');
        SCOPED_TRACE(testing::Message() << "style " << c.type);
        EXPECT_TRUE(l.ok);
        EXPECT_EQ(l.font, c.font);
        EXPECT_EQ(l.text, std::string(1, (char)c.symbol) + " ");
    }
}

TEST(BuildNumber, InvalidStyleAssertsZeroAndKeepsOnlyThePrefix) {
    for (int type : {0, 6, 11, 16, 24, -1, 1000, INT_MIN}) {
        qmtest::RecordingAssertSink sink;
        Label l = Build(4, type, '(', ')');
        SCOPED_TRACE(testing::Message() << "style " << type);
        EXPECT_FALSE(l.ok);
        EXPECT_EQ(l.text, "(");
        EXPECT_EQ(l.advance, 1);
        EXPECT_EQ(l.font, 0xDEADu);
        EXPECT_EQ(sink.Expressions(), std::vector<std::string>{"0"});
        EXPECT_EQ(sink.Reports()[0].module, "Common\\BulletsAndNumbering");
    }
}

// Every label fits a heap block of exactly BULLET_LABEL_MAX bytes (checked under ASan).
TEST(BuildNumber, NoLabelOutgrowsTheDocumentedMaximum) {
    const int styles[] = {0, 1, 2, 3, 4, 5, 6, 16, 17, 20, 23, 24};
    const int numbers[] = {INT_MIN, INT_MIN + 1, -10000, -1, 0, 1, 26, 27, 259, 260, 261,
                           3888, 8888, 9888, 9999, 10000, 1000000, INT_MAX};
    size_t longest = 0;
    qmtest::RecordingAssertSink quiet;
    for (int type : styles)
        for (int n : numbers) {
            auto buf = std::make_unique<char[]>(BULLET_LABEL_MAX);
            char* p = buf.get();
            ULONG font = 0;
            BuildNumber(p, n, (NumberType)type, '<', '>', font);
            size_t len = std::strlen(buf.get());
            EXPECT_LT(len, (size_t)BULLET_LABEL_MAX) << "style " << type << ", " << n;
            EXPECT_EQ(p, buf.get() + len) << "style " << type << ", " << n;
            longest = std::max(longest, len);
        }
    EXPECT_EQ(longest, (size_t)BULLET_LABEL_MAX - 1) << "the bound is reached by 9888 in Roman";
}

// Digits 0-9 are covered through BuildRomanNumber; anything else writes nothing.
TEST(RomanDigit, DigitsOutOfRangeWriteNothing) {
    for (int d : {-2, -1, 10, 11}) {
        char buf[4] = {};
        char* p = buf;
        roman_digit('I', 'V', 'X', d, p);
        EXPECT_EQ(p, buf) << d;
        EXPECT_EQ(buf[0], 0) << d;
    }
}

}  // namespace
