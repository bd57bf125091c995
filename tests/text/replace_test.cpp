#include <gtest/gtest.h>

#include <random>
#include <string>

#include "utils/common/utils_text.h"

namespace {

struct Outcome {
    std::string text;
    int result;
};

Outcome Replace(const std::string& s, const std::string& find, const std::string& repl, int truncate, int cs) {
    CString text(s.data(), (int)s.size());
    int result = ReplaceString(text, CString(find.data(), (int)find.size()), CString(repl.data(), (int)repl.size()),
                               truncate, cs);
    return {text.str(), result};
}

TEST(ReplaceString, Cases) {
    struct Case { const char* s; const char* find; const char* repl; int cs; const char* out; int result; };
    const Case cases[] = {
        {"aXa", "x", "yy", 1, "ayya", 1},    // a longer replacement ignores case regardless
        {"aXa", "x", "y", 1, "aXa", 0},      // an in-place replacement honours it
        {"aXa", "x", "y", 0, "aya", 1},
        {"aaaa", "aa", "b", 1, "bb", 2},     // no overlapping matches
        {"aaa", "aa", "b", 1, "ba", 1},
        {"aaa", "aa", "xyz", 1, "xyza", 1},
        {"a-b-c-", "-", "", 1, "abc", 3},
        {"AbAB", "ab", "ab", 0, "abab", 2},  // equal length: still rewritten
        {"abc", "abcd", "z", 0, "abc", 0},   // find longer than the text
        {"abc", "abcd", "zzzzz", 0, "abc", 0},
        {"", "a", "b", 0, "", 0},
        {"", "", "b", 0, "", 0},             // an empty text wins over an empty find
        {"abc", "", "b", 0, "abc", -1},
        {"xyz", "q", "qq", 0, "xyz", 0},
    };
    for (const Case& c : cases) {
        Outcome o = Replace(c.s, c.find, c.repl, 0, c.cs);
        EXPECT_EQ(o.text, c.out) << c.s << " " << c.find << "->" << c.repl;
        EXPECT_EQ(o.result, c.result) << c.s << " " << c.find << "->" << c.repl;
    }
}

TEST(ReplaceString, EmbeddedNulsAreOrdinaryBytes) {
    Outcome shorter = Replace(std::string("a\0a\0", 4), std::string("\0", 1), "", 0, 1);
    EXPECT_EQ(shorter.text, "aa");
    EXPECT_EQ(shorter.result, 2);
    Outcome longer = Replace(std::string("x\0x", 3), "X", "<>", 0, 1);
    EXPECT_EQ(longer.text, std::string("<>\0<>", 5));
    EXPECT_EQ(longer.result, 2);
}

TEST(ReplaceString, LengthGuard) {
    // "abab" with "a" -> "xyz": two hits, each two bytes longer; the new length counted with
    // its terminator is 2 * 2 + 1 + 4 = 9.
    struct Case { long long limit; int truncate; const char* out; int result; };
    const Case cases[] = {
        {9, 0, "xyzbxyzb", 2},  // exactly at the limit is allowed
        {8, 0, "abab", -1},
        {8, 1, "xyzbab", 1},    // (8 - 4 - 1) / 2 = 1 occurrence fits
        {7, 1, "xyzbab", 1},
        {6, 1, "abab", 0},      // none fits: untouched, result 0
        {3, 1, "abab", 0},      // the text alone is already over the limit
        {3, 0, "abab", -1},
    };
    for (const Case& c : cases) {
        CString s("abab");
        EXPECT_EQ(qm::text::ReplaceStringLimited(s, "a", "xyz", c.truncate, 1, c.limit), c.result) << c.limit;
        EXPECT_EQ(s, c.out) << c.limit;
    }
    // The in-place path never grows the text, so no limit applies to it.
    CString s("abab");
    EXPECT_EQ(qm::text::ReplaceStringLimited(s, "ab", "c", 0, 1, 1), 2);
    EXPECT_EQ(s, "cc");
}

// A left-to-right model of both paths.
Outcome Model(const std::string& s, const std::string& find, const std::string& repl, int cs) {
    if (s.empty()) return {s, 0};
    if (find.empty()) return {s, -1};
    auto up = [](char c) { return (c >= 'a' && c <= 'z') ? (char)(c - 32) : c; };
    const bool exact = cs && repl.size() <= find.size();
    std::string out;
    int count = 0;
    for (size_t i = 0; i < s.size();) {
        bool hit = i + find.size() <= s.size();
        for (size_t k = 0; hit && k < find.size(); ++k)
            hit = exact ? s[i + k] == find[k] : up(s[i + k]) == up(find[k]);
        if (hit) {
            out += repl;
            i += find.size();
            ++count;
        } else {
            out += s[i++];
        }
    }
    return {out, count};
}

TEST(ReplaceString, AgreesWithModelOnRandomText) {
    std::mt19937 rng(3);
    const char alphabet[] = "aAbB";
    auto make = [&](size_t max) {
        std::string t(rng() % max, ' ');
        for (char& c : t) c = alphabet[rng() % 4];
        return t;
    };
    for (int round = 0; round < 4000; ++round) {
        const std::string s = make(80), find = make(4), repl = make(5);
        const int cs = (int)(rng() % 2);
        Outcome got = Replace(s, find, repl, 0, cs);
        Outcome want = Model(s, find, repl, cs);
        EXPECT_EQ(got.text, want.text) << s << " " << find << "->" << repl << " cs=" << cs;
        EXPECT_EQ(got.result, want.result) << s << " " << find << "->" << repl << " cs=" << cs;
    }
}

}  // namespace
