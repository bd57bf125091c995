// The escaped one-line text form: encoding, decoding, limits and round trips.
#include <gtest/gtest.h>

#include <cstring>
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

struct EncodeCase {
    std::string raw;
    const char* plain;
    const char* extended;
};

TEST(Atofa, EscapesControlBytesAndBackslashes) {
    const EncodeCase cases[] = {
        {"a\tb\\c", "a\\tb\\\\c", "a\\tb\\\\c"},
        {"line1\r\nline2", "line1\\r\\nline2", "line1\\r\\nline2"},
        {"\x01run\x02", "\\x01run\\x02", "\\brun\\e"},
        {"\x1B", "\\x1B", "\\x1B"},
        {"\x1F\x17\x03", "\\x1F\\x17\\x03", "\\x1F\\x17\\x03"},
        {"what?", "what?", "what?"},             // "?" is never escaped
        {"\x7F\x80\xFF", "\x7F\x80\xFF", "\x7F\x80\xFF"},  // high bytes pass unchanged
        {"", "", ""},
        {" ~", " ~", " ~"},
    };
    for (const EncodeCase& c : cases) {
        EXPECT_EQ(Encode(c.raw, false), c.plain);
        EXPECT_EQ(Encode(c.raw, true), c.extended);
    }
}

TEST(Atofa, StopsAtTheLimitAndAnEscapeMayCrossIt) {
    EXPECT_EQ(Encode("abcdef", false, 3), "abc");
    EXPECT_EQ(Encode("abcdef", false, 0), "");
    EXPECT_EQ(Encode("abcdef", false, -5), "");
    EXPECT_EQ(Encode("ab\x03z", false, 3), "ab\\x03");  // three past the limit, never more
    EXPECT_EQ(Encode("\x03\x03", false, 1), "\\x03");
    // Nothing is written beyond limit + 3 characters and the terminator.
    std::vector<char> buf(8, '#');
    char* end = atofa("\x05\x05\x05", buf.data(), 1, false);
    EXPECT_EQ(end, buf.data() + 4);
    EXPECT_EQ(buf[5], '#');
}

struct DecodeCase {
    std::string text;
    std::string plain;
    std::string extended;
};

TEST(Fatoa, DecodesKnownEscapesAndKeepsTheRest) {
    const DecodeCase cases[] = {
        {"\\q", "\\q", "\\q"},
        {"\\x4a", "J", "J"},
        {"\\x4A\\x4a", "JJ", "JJ"},
        {"\\t\\n\\r\\\\\\?", "\t\n\r\\?", "\t\n\r\\?"},
        {"\\b\\e", "\\b\\e", "\x01\x02"},  // only the extended form knows \b and \e
        {"\\x4", "\\x4", "\\x4"},           // \x needs two hexadecimal digits
        {"\\xg1", "\\xg1", "\\xg1"},
        {"\\x", "\\x", "\\x"},
        {"abc\\", "abc\\", "abc\\"},        // a final backslash stays
        {"\\\\x41", "\\x41", "\\x41"},
        {"\\x80\\xff", "\x80\xFF", "\x80\xFF"},
        {"", "", ""},
    };
    for (const DecodeCase& c : cases) {
        EXPECT_EQ(Decode(c.text, false), c.plain) << c.text;
        EXPECT_EQ(Decode(c.text, true), c.extended) << c.text;
    }
}

TEST(Fatoa, AnEscapedNulIsWrittenAndTheEndPointerPassesIt) {
    char buf[8];
    char* end = fatoa("a\\x00b", buf, false);
    ASSERT_EQ(end, buf + 3);
    EXPECT_EQ(std::string(buf, 3), std::string("a\0b", 3));
}

TEST(EscapedText, EveryByteRoundTripsInBothForms) {
    std::string all;
    for (int c = 1; c < 256; ++c) all += (char)c;
    for (bool extended : {false, true}) {
        std::string encoded = Encode(all, extended, 4 * 255);
        for (char c : encoded) {
            EXPECT_GE((unsigned char)c, 32u) << "a control byte survived encoding";
        }
        EXPECT_EQ(Decode(encoded, extended), all);
    }
}

TEST(EscapedText, StringFormsEncodeTheWholeText) {
    CString controls;
    for (int i = 0; i < 100; ++i) controls += (char)(i % 31 + 1);
    for (bool extended : {false, true}) {
        CString encoded = atofa(controls, extended);
        EXPECT_GE(encoded.GetLength(), 200);
        EXPECT_EQ(fatoa(encoded, extended), controls);
    }
    EXPECT_EQ(atofa(CString("a\tb"), false), "a\\tb");
    EXPECT_EQ(fatoa(CString("a\\tb"), false), "a\tb");
    EXPECT_EQ(atofa(CString(""), true), "");
    // Only the text up to an embedded NUL is taken.
    EXPECT_EQ(atofa(CString("x\tb\0c", 5), false), "x\\tb");
}

}  // namespace
