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

TEST(InString, Cases) {
    struct Case { const char* pattern; const char* text; long expected; };
    const Case cases[] = {
        {"AB", "xxaBc", 2},
        {"", "x", 0},
        {"a", "", -1},
        {"", "", -1},
        {"abc", "ab", -1},          // the text ends inside a partial match
        {"ab", "aab", 1},           // a failed candidate does not swallow the next one
        {"[", "a{[", 2},            // non-letters compare exactly ('{' is not '[' upper-cased)
        {"\xE9", "\xC9\xE9", 1},    // bytes above ASCII have no case
        {"q", "QQ", 0},
        {"Zz", "azZZz", 1},
    };
    for (const Case& c : cases)
        EXPECT_EQ(Off(InString(c.pattern, c.text), c.text), c.expected) << c.pattern << " in " << c.text;
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

TEST(InString, AgreesWithPlainSearchOnRandomText) {
    std::mt19937 rng(11);
    const char alphabet[] = "aAbB.\x01\x17";
    for (int round = 0; round < 3000; ++round) {
        std::string text(rng() % 40, ' '), pattern(rng() % 4, ' ');
        for (char& c : text) c = alphabet[rng() % 7];
        for (char& c : pattern) c = alphabet[rng() % 7];
        EXPECT_EQ(Off(InString(pattern.c_str(), text.c_str()), text.c_str()), ModelInString(pattern, text))
            << "[" << pattern << "] in [" << text << "]";
    }
}

TEST(InStringSkipCommands, SkipsRunsBeforeAndInsideMatches) {
    struct Case { const char* pattern; const char* text; long expected; };
    const Case cases[] = {
        {"ab", "a\x01" "bx\x02" "b", 0},      // a match spanning a run
        {"ab", "\x01" "ab\x02" "aB", 4},      // a match inside a run is not text
        {"ab", "\x01\x02\x01z\x02" "ab", 5},  // consecutive runs before the start
        {"ab", "a\x01\x02\x01\x02" "b", 0},   // consecutive runs inside the match
        {"ab", "xa\x01q\x02" "c", -1},
        {"", "\x01q\x02" "z", 3},             // an empty pattern lands on the first text byte
        {"a", "\x01q\x02", -1},
    };
    for (const Case& c : cases)
        EXPECT_EQ(Off(InStringSkipCommands(c.pattern, c.text), c.text), c.expected) << c.text;
    EXPECT_EQ(InStringSkipCommands("a", ""), nullptr);
    EXPECT_EQ(InStringSkipCommands(nullptr, "a"), nullptr);
}

TEST(InStringSkipCommands, UnclosedRunAssertsAndGivesNull) {
    qmtest::RecordingAssertSink sink;
    EXPECT_EQ(InStringSkipCommands("b", "xy\x01" "b"), nullptr);
    EXPECT_EQ(InStringSkipCommands("ab", "xxa\x01" "b"), nullptr);
    ASSERT_EQ(sink.Expressions(), (std::vector<std::string>{"*s2", "*p2"}));
    EXPECT_EQ(sink.Reports()[0].module, "Common\\utils");
}

TEST(RemoveComments, DropsCommentsOutsideQuotes) {
    struct Case { const char* in; const char* out; };
    const Case cases[] = {
        {"jd (Jane) \"a (b)\"", "jd  \"a (b)\""},
        {"a (b (c) d) e", "a  e"},                // nested comments
        {"a) b", "a) b"},                         // a stray ')' at depth 0 is kept
        {"(open \"q\" never closed", ""},         // quotes inside a comment are dropped
        {"\"(x\" (y) z", "\"(x\"  z"},
        {"  \t x  ", "x"},
        {"", ""},
    };
    for (const Case& c : cases) EXPECT_EQ(RemoveComments(c.in), c.out) << c.in;
    EXPECT_EQ(RemoveComments(nullptr), "");
}

}  // namespace
