#include <gtest/gtest.h>

#include <climits>
#include <cstring>
#include <memory>
#include <string>

#include "tests/support/recording_sink.h"
#include "utils/common/BulletsAndNumbering.h"

namespace {

struct Label {
    bool ok;
    std::string text;
    ULONG font;
    ptrdiff_t advance;  // how far the cursor moved
};

Label Build(int n, int type, char prefix = 0, char suffix = 0) {
    char buf[64];
    std::memset(buf, '#', sizeof buf);
    char* p = buf;
    ULONG font = 0xDEAD;
    bool ok = BuildNumber(p, n, (NumberType)type, prefix, suffix, font);
    return {ok, std::string(buf), font, p - buf};
}

TEST(BuildNumber, LabelsByStyle) {
    const struct {
        int n, type;
        char prefix, suffix;
        const char* expected;
    } cases[] = {
        {4, 1, 0, 0, "4"},
        {0, 1, 0, 0, "0"},
        {-12, 1, '(', ')', "(-12)"},
        {INT_MIN, 1, 0, 0, "-2147483648"},
        {INT_MAX, 1, 0, '.', "2147483647."},
        {4, 2, 0, 0, "D"},
        {1, 2, 0, 0, "A"},
        {26, 2, 0, 0, "Z"},
        {27, 2, 0, 0, "AA"},
        {52, 2, 0, 0, "ZZ"},
        {53, 2, 0, 0, "AAA"},
        {260, 2, 0, 0, "ZZZZZZZZZZ"},
        {261, 2, 0, 0, "*"},
        {0, 2, '(', ')', "(*)"},
        {-5, 2, 0, 0, "*"},
        {INT_MIN, 2, 0, 0, "*"},
        {INT_MAX, 3, 0, 0, "*"},
        {4, 3, 0, 0, "d"},
        {28, 3, 0, 0, "bb"},
        {259, 3, 0, 0, "yyyyyyyyyy"},
        {261, 3, 0, 0, "*"},
        {4, 4, 0, 0, "IV"},
        {1994, 4, 0, 0, "MCMXCIV"},
        {1994, 5, 0, 0, "mcmxciv"},
        {4, 5, '(', ')', "(iv)"},
        {4000, 4, 0, 0, "MMMM"},
        {9999, 4, 0, 0, "MMMMMMMMMCMXCIX"},
        {9888, 5, 0, 0, "mmmmmmmmmdccclxxxviii"},
        {10000, 4, 0, 0, "*"},
        {0, 5, '[', ']', "[*]"},
        {-1, 4, 0, 0, "*"},
    };
    qmtest::RecordingAssertSink sink;
    for (const auto& c : cases) {
        Label l = Build(c.n, c.type, c.prefix, c.suffix);
        EXPECT_TRUE(l.ok) << c.n << " style " << c.type;
        EXPECT_EQ(l.text, c.expected) << c.n << " style " << c.type;
        EXPECT_EQ(l.advance, (ptrdiff_t)l.text.size()) << "cursor must rest on the NUL";
        EXPECT_EQ(l.font, 0xDEADu) << "font is only set by bullet styles";
    }
    EXPECT_TRUE(sink.Reports().empty()) << "numbers out of a style's range are not style errors";
}

TEST(BuildNumber, BulletStylesSetFontAndSymbol) {
    const struct {
        int type;
        ULONG font;
        unsigned char symbol;
    } cases[] = {
        {17, 0x40, 0xB7}, {18, 0x80, 0xA7}, {19, 0x40, 0xA8}, {20, 0x80, 'q'},
        {21, 0x80, 'v'},  {22, 0x80, 0xD8}, {23, 0x80, 0xFC},
    };
    for (const auto& c : cases) {
        Label l = Build(12345, c.type, 0, ' ');
        EXPECT_TRUE(l.ok);
        EXPECT_EQ(l.font, c.font) << "style " << c.type;
        ASSERT_EQ(l.text.size(), 2u);
        EXPECT_EQ((unsigned char)l.text[0], c.symbol) << "style " << c.type;
        EXPECT_EQ(l.text[1], ' ');
        EXPECT_EQ(BulletSymbols[c.type - 17].font, c.font);
        EXPECT_EQ((unsigned char)BulletSymbols[c.type - 17].symbol, c.symbol);
    }
}

TEST(BuildNumber, InvalidStyleAssertsZeroAndKeepsOnlyThePrefix) {
    for (int type : {0, 6, 11, 16, 24, -1, 1000, INT_MIN}) {
        qmtest::RecordingAssertSink sink;
        Label l = Build(4, type, '(', ')');
        EXPECT_FALSE(l.ok) << "style " << type;
        EXPECT_EQ(l.text, "(") << "style " << type;
        EXPECT_EQ(l.advance, 1);
        EXPECT_EQ(l.font, 0xDEADu);
        ASSERT_EQ(sink.Reports().size(), 1u);
        EXPECT_EQ(sink.Reports()[0].expression, "0");
        EXPECT_EQ(sink.Reports()[0].module, "Common\\BulletsAndNumbering");
    }
}

TEST(BuildNumber, ConsecutiveCallsConcatenate) {
    char buf[64];
    char* p = buf;
    ULONG font = 0;
    ASSERT_TRUE(BuildNumber(p, 3, NT_UpperRoman, 0, '.', font));
    ASSERT_TRUE(BuildNumber(p, 2, NT_LowerAlpha, 0, ')', font));
    ASSERT_TRUE(BuildNumber(p, 17, NT_Decimal, 0, 0, font));
    EXPECT_STREQ(buf, "III.b)17");
    EXPECT_EQ(p, buf + std::strlen(buf));
}

// Every label, with the widest prefix and suffix, fits BULLET_LABEL_MAX bytes: the buffer is a
// heap block of exactly that size, so the address sanitizer catches any byte beyond it.
TEST(BuildNumber, NoLabelOutgrowsTheDocumentedMaximum) {
    const int styles[] = {0, 1, 2, 3, 4, 5, 6, 16, 17, 20, 23, 24};
    const int numbers[] = {INT_MIN, INT_MIN + 1, -10000, -1, 0, 1, 26, 27, 259, 260, 261,
                           3888, 8888, 9888, 9999, 10000, 1000000, INT_MAX};
    size_t longest = 0;
    qmtest::RecordingAssertSink quiet;
    for (int type : styles) {
        for (int n : numbers) {
            auto buf = std::make_unique<char[]>(BULLET_LABEL_MAX);
            char* p = buf.get();
            ULONG font = 0;
            BuildNumber(p, n, (NumberType)type, '<', '>', font);
            size_t len = std::strlen(buf.get());
            EXPECT_LT(len, (size_t)BULLET_LABEL_MAX);
            EXPECT_EQ(p, buf.get() + len);
            if (len > longest) longest = len;
        }
    }
    EXPECT_EQ(longest, (size_t)BULLET_LABEL_MAX - 1) << "the bound is reached by 9888 in Roman";
}

// An independent reading of a Roman numeral (subtractive pairs, any number of M).
int ParseRoman(const std::string& s) {
    auto value = [](char c) {
        switch (c) {
        case 'I': return 1;
        case 'V': return 5;
        case 'X': return 10;
        case 'L': return 50;
        case 'C': return 100;
        case 'D': return 500;
        case 'M': return 1000;
        default: return -100000;
        }
    };
    int total = 0;
    for (size_t i = 0; i < s.size(); ++i) {
        int v = value(s[i]);
        if (i + 1 < s.size() && value(s[i + 1]) > v) total -= v;
        else total += v;
    }
    return total;
}

TEST(BuildRomanNumber, EveryNumberInRangeReadsBack) {
    char buf[64];
    for (int n = 1; n <= 9999; ++n) {
        char* p = buf;
        ASSERT_EQ(BuildRomanNumber(p, n), 1) << n;
        ASSERT_EQ(*p, 0);
        ASSERT_EQ(p, buf + std::strlen(buf));
        ASSERT_EQ(ParseRoman(buf), n) << buf;
        ASSERT_LE(std::strlen(buf), (size_t)BULLET_BODY_MAX);
        // Canonical form: no letter other than M repeats four times.
        ASSERT_EQ(std::string(buf).find("IIII"), std::string::npos) << buf;
        ASSERT_EQ(std::string(buf).find("XXXX"), std::string::npos) << buf;
        ASSERT_EQ(std::string(buf).find("CCCC"), std::string::npos) << buf;
    }
}

TEST(BuildRomanNumber, OutOfRangeWritesOnlyTheNul) {
    for (int n : {0, -1, 10000, INT_MIN, INT_MAX}) {
        char buf[4] = {'x', 'y', 'z', 0};
        char* p = buf;
        EXPECT_EQ(BuildRomanNumber(p, n), 0) << n;
        EXPECT_EQ(p, buf);
        EXPECT_EQ(buf[0], 0);
        EXPECT_EQ(buf[1], 'y');
    }
}

TEST(RomanDigit, EachDigitAndOutOfRange) {
    const char* expected[] = {"", "I", "II", "III", "IV", "V", "VI", "VII", "VIII", "IX"};
    for (int d = -2; d <= 11; ++d) {
        char buf[16] = {};
        char* p = buf;
        roman_digit('I', 'V', 'X', d, p);
        std::string want = d >= 0 && d <= 9 ? expected[d] : "";
        EXPECT_EQ(std::string(buf, p), want) << d;
    }
    char buf[8] = {};
    char* p = buf;
    roman_digit('C', 'D', 'M', 9, p);
    roman_digit('x', 'l', 'c', 4, p);
    EXPECT_EQ(std::string(buf, p), "CMxl");
}

}  // namespace
