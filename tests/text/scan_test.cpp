#include <gtest/gtest.h>
#include <random>
#include <string>
#include <vector>

#include "tests/support/recording_sink.h"
#include "utils/common/utils_text.h"

namespace {

// Offset of a search result in its text, -1 for null.
long Off(const char* found, const char* text) { return found ? (long)(found - text) : -1; }

// Plain quadratic search with toupper on both sides: what InString's fast scan must agree with.
long ModelInString(const std::string& pattern, const std::string& text) {
    if (text.empty()) return -1;
    auto up = [](char c) { return (c >= 'a' && c <= 'z') ? (char)(c - 32) : c; };
    for (size_t i = 0; i + pattern.size() <= text.size(); ++i) {
        size_t k = 0;
        while (k < pattern.size() && up(text[i + k]) == up(pattern[k])) ++k;
        if (k == pattern.size()) return (long)i;
    }
    return -1;
}

TEST(InString, AgreesWithPlainSearch) {
    // Fixed cases first ('{' is not '[' upper-cased; no case above ASCII), then random texts.
    const char* fixed[][2] = {{"AB", "xxaBc"}, {"", "x"}, {"a", ""}, {"", ""}, {"abc", "ab"},
                              {"ab", "aab"}, {"[", "a{["}, {"\xE9", "\xC9\xE9"}, {"Zz", "azZZz"}};
    std::mt19937 rng(11);
    const char alphabet[] = "aAbB.\x01\x17";
    for (int round = 0; round < 3000; ++round) {
        std::string text(rng() % 90, ' '), pattern(rng() % 4, ' ');
        for (char& c : text) c = alphabet[rng() % 7];
        for (char& c : pattern) c = alphabet[rng() % 7];
        if (round < (int)std::size(fixed)) {
            pattern = fixed[round][0];
            text = fixed[round][1];
        }
        EXPECT_EQ(Off(InString(pattern.c_str(), text.c_str()), text.c_str()), ModelInString(pattern, text))
            << "[" << pattern << "] in [" << text << "]";
    }
    EXPECT_EQ(InString(nullptr, "abc"), nullptr);
    EXPECT_EQ(InString("a", nullptr), nullptr);
}

TEST(InString, AgreesWithPlainSearchAcrossChunkBoundaries) {
    // Texts longer than the scan chunk, with the match placed across and around its edges.
    std::mt19937 rng(7);
    for (size_t where : {65534u, 65535u, 65536u, 65537u, 131071u, 200000u}) {
        std::string text(where + 10, 'x');
        for (char& c : text) c = "xyXY. "[rng() % 6];
        text.replace(where, 3, "aBc");
        EXPECT_EQ(Off(InString("AbC", text.c_str()), text.c_str()), ModelInString("AbC", text)) << where;
        text[where] = 'q';
        EXPECT_EQ(Off(InString("AbC", text.c_str()), text.c_str()), -1) << where;
    }
}

TEST(InStringSkipCommands, SkipsRunsBeforeAndInsideMatches) {
    struct Case { const char* pattern; const char* text; long expected; };
    const Case cases[] = {  // runs skipped inside a match and before it; a match inside a run is not text
        {"ab", "a\x01" "bx\x02" "b", 0}, {"ab", "\x01" "ab\x02" "aB", 4}, {"ab", "\x01\x02\x01z\x02" "ab", 5},
        {"ab", "a\x01\x02\x01\x02" "b", 0}, {"", "\x01q\x02" "z", 3}, {"a", "\x01q\x02", -1},
    };
    for (const Case& c : cases)
        EXPECT_EQ(Off(InStringSkipCommands(c.pattern, c.text), c.text), c.expected) << c.text;
    EXPECT_EQ(InStringSkipCommands("a", ""), nullptr);
    EXPECT_EQ(InStringSkipCommands(nullptr, "a"), nullptr);
    qmtest::RecordingAssertSink sink;  // an unclosed run is reported and ends the search
    EXPECT_EQ(InStringSkipCommands("b", "xy\x01" "b"), nullptr);
    EXPECT_EQ(InStringSkipCommands("ab", "xxa\x01" "b"), nullptr);
    EXPECT_EQ(sink.Expressions(), (std::vector<std::string>{"*s2", "*p2"}));
}

TEST(RemoveComments, DropsCommentsOutsideQuotes) {
    struct Case { const char* in; const char* out; };
    const Case cases[] = {  // nested; a stray ')' kept; quotes inside a comment dropped
        {"jd (Jane) \"a (b)\"", "jd  \"a (b)\""}, {"a (b (c) d) e", "a  e"}, {"a) b", "a) b"},
        {"(open \"q\" never closed", ""}, {"\"(x\" (y) z", "\"(x\"  z"}, {"  \t x  ", "x"}, {"", ""},
    };
    for (const Case& c : cases) EXPECT_EQ(RemoveComments(c.in), c.out) << c.in;
    EXPECT_EQ(RemoveComments(nullptr), "");
}

TEST(Tokens, GetTokenGetStrUpToAndNthToken) {
    const char* p = "  one\t\r\n a\x17" "b";  // 0x17 is not token white space
    CString token;
    EXPECT_TRUE(GetToken(&p, token));
    EXPECT_EQ(token, "one");
    EXPECT_EQ(*p, '\t');
    EXPECT_TRUE(GetToken(&p, token));
    EXPECT_EQ(token, "a\x17" "b");
    EXPECT_FALSE(GetToken(&p, token));
    EXPECT_TRUE(token.IsEmpty());
    EXPECT_EQ(*p, '\0');
    const char* none = nullptr;
    EXPECT_FALSE(GetToken(&none, token));
    EXPECT_FALSE(GetToken(nullptr, token));
    p = "key=value";
    EXPECT_EQ(GetStrUpTo(p, '=', token), "key");
    EXPECT_EQ(GetStrUpTo(p, '=', token), "");  // already on it: nothing taken, no move
    EXPECT_EQ(*p++, '=');
    EXPECT_EQ(GetStrUpTo(p, ';', token), "value");
    // nth_token_cpy counts from one and leaves the token alone for n < 1.
    CString src = " a  b\tc ";
    struct Case { int n; const char* expected; int result; };
    const Case cases[] = {{1, "a", 1}, {3, "c", 1}, {4, "", 0}, {0, "keep", 1}, {-1, "keep", 1}};
    for (const Case& c : cases) {
        CString t = "keep";
        EXPECT_EQ(nth_token_cpy(t, src, c.n), c.result) << c.n;
        EXPECT_EQ(t, c.expected) << c.n;
    }
}

TEST(NextEol, FindsCrOrLineMarkAfterThePosition) {
    const CString s("ab\rc\x17" "d\ne");
    struct Case { int from; int expected; };
    const Case cases[] = {{-5, 2}, {0, 2}, {1, 2}, {2, 4}, {4, 8}, {7, 8}, {8, 8}, {99, 8}};
    for (const Case& c : cases) EXPECT_EQ(next_eol(s, c.from), c.expected) << c.from;
    EXPECT_EQ(next_eol(CString(), 0), 0);
}

TEST(TrimEdges, OnlySpacesAndAnEmbeddedNulIsReportedAndKept) {
    struct Case { const char* in; const char* out; };
    const Case cases[] = {{"  a b  ", "a b"}, {"\t a \t", "\t a \t"}, {"   ", ""}, {"x", "x"}};
    for (const Case& c : cases) {
        CString s(c.in);
        EXPECT_EQ(TrimEdges(s), c.out) << "[" << c.in << "]";
    }
    qmtest::RecordingAssertSink sink;
    CString s(" a\0b ", 5);
    TrimEdges(s);
    EXPECT_EQ(s.str(), std::string("a\0b", 3));
    EXPECT_EQ(sink.Expressions(), std::vector<std::string>{"*ptr == 0"});
}

TEST(LineEnds, RemoveEmptyLinesReplaceEolInsureEol) {
    struct Case { const char* in; const char* removed; const char* doubled; const char* ensured; };
    const Case cases[] = {
        {"a\r\n\r\n\r\nb", "a\rb", "a\r\n\r\n\r\n\r\n\r\n\r\nb", "a\r\n\r\n\r\nb\r"},
        {"\r\ra\n", "\ra", "\r\n\r\na\r\n", "\r\ra\n\r"}, {"a\r", "a\r", "a\r\n", "a\r"}, {"", "", "", "\r"},
    };
    for (const Case& c : cases) {
        CString a(c.in), b(c.in), d(c.in);
        RemoveEmptyLines(a);
        ReplaceEOLAndNL(b);
        InsureEolAtEnd(d);
        EXPECT_EQ(a + "|" + b + "|" + d, CString(c.removed) + "|" + c.doubled + "|" + c.ensured) << c.in;
    }
}

TEST(CenterText, PadsHalfTheSpareWidth) {
    struct Case { const char* in; int width; int charWidth; const char* out; };
    const Case cases[] = {  // spare width halved toward zero; none if negative, also when the product overflows
        {"ab", 10, 2, "   ab"}, {"ab", 9, 2, "  ab"}, {"ab", 1, 2, "ab"}, {"", 4, 7, "  "}, {"abc", 2147483647, 1073741824, "abc"},
    };
    for (const Case& c : cases) {
        CString s(c.in);
        CenterText(s, c.width, c.charWidth);
        EXPECT_EQ(s, c.out) << c.in << " " << c.width;
    }
}

TEST(Counts, WordEndsAndAcceleratorPosition) {
    struct Case { int (*count)(const char*); const char* in; int expected; };
    auto words = [](const char* s) { return WordCount(s); };
    auto accel = [](const char* s) { return GetAcceleratorPos(s); };  // escaped and trailing "&" skipped
    const Case cases[] = {
        {words, "  two words ", 2}, {words, "", 0}, {words, "one", 1}, {words, "a\tb\nc\rd\ve\ff", 6}, {words, "   ", 0},
        {words, "x\x01y", 1}, {words, nullptr, 0}, {accel, "Save && &Exit", 9}, {accel, "A&&B", -1}, {accel, "&File", 1},
        {accel, "&&&x", 3}, {accel, "x&", -1}, {accel, "", -1}, {accel, "a&&", -1}, {accel, "&&&", -1},
    };
    for (const Case& c : cases) EXPECT_EQ(c.count(c.in), c.expected) << (c.in ? c.in : "null");
}

TEST(ValidMutexName, LowersAndReplacesBackslashes) {
    struct Case { CString in; std::string out; };
    const Case cases[] = {{"Global\\My", "global|my"}, {"A\\\\B|c", "a||b|c"},
                          {"\xC0\xD7\xDE\xDF\x8A\x9F", "\xE0\xD7\xFE\xDF\x9A\xFF"},  // Western code page letters
                          {CString("A\\\0B\xC0", 5), std::string("a|\0b\xE0", 5)}};  // bytes after a NUL are lowered too
    qmtest::RecordingAssertSink sink;
    for (const Case& c : cases) {
        CString s(c.in);
        ValidMutexName(s);
        EXPECT_EQ(s.str(), c.out) << c.out;
    }
    EXPECT_TRUE(sink.Expressions().empty());
    CString empty;
    ValidMutexName(empty);
    EXPECT_EQ(sink.Expressions(), std::vector<std::string>{"!mutex_name.IsEmpty()"});
}

TEST(CursorScanners, StopWhereTheirClassEnds) {
    using Scanner = void (*)(const char*&);
    struct Case { Scanner scan; const char* name; const char* text; long stop; };
    const Case cases[] = {
        {SkipSpaces, "SkipSpaces", " \t\v\f\r\nx", 6}, {SkipInvisible, "SkipInvisible", " \t\r\n\vx", 4},  // VT visible
        {SkipVisible, "SkipVisible", "ab\x17" "c\vd e", 6}, {SkipToDigit, "SkipToDigit", "ab\xB2" "c7", 4},
        {SkipToDigit, "SkipToDigit", "none", 4}, {SkipToEOL, "SkipToEOL", "ab\x17" "c", 2},
        {SkipToEOL, "SkipToEOL", "ab\nc", 2},
    };
    for (const Case& c : cases) {
        const char* p = c.text;
        c.scan(p);
        EXPECT_EQ(p - c.text, c.stop) << c.name << " on [" << c.text << "]";
        c.scan(p = nullptr);
        EXPECT_EQ(p, nullptr);
    }
}

}  // namespace
