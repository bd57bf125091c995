#include <gtest/gtest.h>
#include <random>
#include <string>

#include "utils/common/utils_text.h"

namespace {

struct Outcome { std::string text; int result; };

Outcome Replace(const std::string& s, const std::string& find, const std::string& repl, int truncate, int cs) {
    CString text(s.data(), (int)s.size());
    int result = ReplaceString(text, CString(find.data(), (int)find.size()), CString(repl.data(), (int)repl.size()),
                               truncate, cs);
    return {text.str(), result};
}

TEST(ReplaceString, LengthGuard) {
    // "abab" with "a" -> "xyz": the new length with its terminator is 2 * 2 + 1 + 4 = 9.
    struct Case { long long limit; int truncate; const char* out; int result; };
    const Case cases[] = {
        {9, 0, "xyzbxyzb", 2},  // exactly at the limit is allowed
        {8, 0, "abab", -1}, {8, 1, "xyzbab", 1},  // (8 - 4 - 1) / 2 = 1 occurrence fits
        {6, 1, "abab", 0},      // none fits: untouched, result 0
        {3, 1, "abab", 0},      // the text alone is already over the limit
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

// Fixed cases first (a longer replacement ignores case, an in-place one honours it; an empty
// text wins over an empty find; NULs are ordinary bytes), then random texts.
TEST(ReplaceString, AgreesWithModel) {
    const std::string fixed[][3] = {
        {"aXa", "x", "yy"}, {"aXa", "x", "y"}, {"aaa", "aa", "b"}, {"aaa", "aa", "xyz"}, {"a-b-c-", "-", ""},
        {"AbAB", "ab", "ab"}, {"abc", "abcd", "zzzzz"}, {"", "", "b"}, {"abc", "", "b"},
        {std::string("a\0a\0", 4), std::string("\0", 1), ""}, {std::string("x\0x", 3), "X", "<>"},
    };
    std::mt19937 rng(3);
    const char alphabet[] = "aAbB";
    auto make = [&](size_t max) {
        std::string t(rng() % max, ' ');
        for (char& c : t) c = alphabet[rng() % 4];
        return t;
    };
    for (int round = 0; round < 4000; ++round) {
        std::string s = make(80), find = make(4), repl = make(5);
        const int cs = round < 2 * (int)std::size(fixed) ? round % 2 : (int)(rng() % 2);
        if (round < 2 * (int)std::size(fixed)) {
            s = fixed[round / 2][0];
            find = fixed[round / 2][1];
            repl = fixed[round / 2][2];
        }
        Outcome got = Replace(s, find, repl, 0, cs), want = Model(s, find, repl, cs);
        SCOPED_TRACE(testing::Message() << s << " " << find << "->" << repl << " cs=" << cs);
        EXPECT_EQ(got.text, want.text);
        EXPECT_EQ(got.result, want.result);
    }
}

}  // namespace
