// The escaped one-line text form: encoding, decoding, limits and round trips.
#include <gtest/gtest.h>
#include <cstdio>
#include <string>
#include <vector>

#include "utils/common/utils_numbers.h"

namespace {

std::string Encode(const std::string& raw, bool extended, int limit = 1000) {
    std::vector<char> buf((size_t)(limit > 0 ? limit : 0) + 4, '#');
    char* end = atofa(raw.c_str(), buf.data(), limit, extended);
    EXPECT_EQ(*end, '\0');
    return std::string(buf.data(), (size_t)(end - buf.data()));
}

std::string Decode(const std::string& text, bool extended) {
    std::vector<char> buf(text.size() + 1, '#');
    char* end = fatoa(text.c_str(), buf.data(), extended);
    EXPECT_EQ(*end, '\0');
    EXPECT_LE(end - buf.data(), (long)text.size());
    return std::string(buf.data(), (size_t)(end - buf.data()));
}

// Every byte against a literal model of the escapes, and back.
TEST(EscapedText, EveryByteEncodesByTheModelAndRoundTrips) {
    std::string all;
    for (int c = 1; c < 256; ++c) all += (char)c;
    for (bool extended : {false, true}) {
        std::string expected;
        for (unsigned char c : all) {
            const char* named = c == '\t' ? "\\t" : c == '\n' ? "\\n" : c == '\r' ? "\\r" : c == '\\' ? "\\\\"
                              : extended && c == 1 ? "\\b" : extended && c == 2 ? "\\e" : nullptr;
            char hex[8];
            std::snprintf(hex, sizeof hex, "\\x%02X", c);
            expected += named ? named : c < 32 ? hex : std::string(1, (char)c);
        }
        const std::string encoded = Encode(all, extended, 4 * 255);
        EXPECT_EQ(encoded, expected) << extended;
        EXPECT_EQ(Decode(encoded, extended), all);
    }
}

TEST(Atofa, StopsAtTheLimitAndAnEscapeMayCrossIt) {
    EXPECT_EQ(Encode("abcdef", false, 3), "abc");
    EXPECT_EQ(Encode("abcdef", false, 0) + Encode("abcdef", false, -5), "");
    EXPECT_EQ(Encode("ab\x03z", false, 3), "ab\\x03");  // three past the limit, never more
    // Nothing is written beyond limit + 3 characters and the terminator.
    std::vector<char> buf(8, '#');
    EXPECT_EQ(atofa("\x05\x05\x05", buf.data(), 1, false), buf.data() + 4);
    EXPECT_EQ(buf[5], '#');
}

struct DecodeCase { std::string text; std::string plain; std::string extended; };

// Only the extended form knows \b and \e; \x needs two hexadecimal digits; a final backslash stays.
TEST(Fatoa, DecodesKnownEscapesAndKeepsTheRest) {
    const DecodeCase cases[] = {
        {"\\q", "\\q", "\\q"}, {"\\x4A\\x4a", "JJ", "JJ"}, {"\\t\\n\\r\\\\\\?", "\t\n\r\\?", "\t\n\r\\?"},
        {"\\b\\e", "\\b\\e", "\x01\x02"}, {"\\x4", "\\x4", "\\x4"}, {"\\xg1", "\\xg1", "\\xg1"}, {"abc\\", "abc\\", "abc\\"},
        {"\\\\x41", "\\x41", "\\x41"}, {"\\x80\\xff", "\x80\xFF", "\x80\xFF"},
    };
    for (const DecodeCase& c : cases) {
        EXPECT_EQ(Decode(c.text, false), c.plain) << c.text;
        EXPECT_EQ(Decode(c.text, true), c.extended) << c.text;
    }
    char buf[8];  // an escaped NUL is written and the end pointer passes it
    ASSERT_EQ(fatoa("a\\x00b", buf, false), buf + 3);
    EXPECT_EQ(std::string(buf, 3), std::string("a\0b", 3));
}

TEST(EscapedText, StringFormsEncodeTheWholeText) {
    CString controls;
    for (int i = 0; i < 100; ++i) controls += (char)(i % 31 + 1);
    for (bool extended : {false, true}) {
        CString encoded = atofa(controls, extended);
        EXPECT_GE(encoded.GetLength(), 200);
        EXPECT_EQ(fatoa(encoded, extended), controls);
    }
    EXPECT_EQ(atofa(CString("x\tb\0c", 5), false), "x\\tb");  // up to an embedded NUL
}

}  // namespace
