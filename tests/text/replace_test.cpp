#include <gtest/gtest.h>
#include <random>
#include <string>
#include <vector>

#include "utils/common/utils_text.h"
#include "utils/common/utils_text_scan.h"
#include "utils/framework/mbchar.h"

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

// Long texts of words that hold the pattern in several spellings, near misses whose letters
// differ only in bit 0x20 without being letters ('@' and '`', '[' and '{', bytes above ASCII),
// and patterns longer than one vector compare: the block scan, its candidate lists and the
// candidate check must find exactly what the byte-by-byte model finds.
TEST(ReplaceString, AgreesWithModelOnLongTexts) {
    std::mt19937 rng(5);
    const std::string finds[] = {"note", "n", "no", "xy@[", "b\xC1", std::string("a\0", 2), "Annotation-Index-2024", "aaa"};
    const std::string noise[] = {"NOTE", "nOtE", "XY`{", "xY@{", "xy`[", "XY@[", "B\xE1", "B\xC1", "annotation-index-2024",
                                 "ANNOTATION-INDEX-2024", "Annotation-Index-2025", "aa", " ", "\r\n", std::string("\0", 1), "nn", "o"};
    for (int round = 0; round < 60; ++round) {
        const std::string& find = finds[round % std::size(finds)];
        std::string s;
        const size_t length = 64 + rng() % 6000;
        while (s.size() < length) s += rng() % 4 == 0 ? find : noise[rng() % std::size(noise)];
        const std::string repl = round % 3 == 0 ? std::string("<") + find + ">" : "annotation";
        for (int cs = 0; cs < 2; ++cs) {
            Outcome got = Replace(s, find, repl, 0, cs), want = Model(s, find, repl, cs);
            SCOPED_TRACE(testing::Message() << "round " << round << " find " << find << " cs=" << cs);
            EXPECT_EQ(got.text, want.text);
            EXPECT_EQ(got.result, want.result);
        }
    }
}

// More hits than the first pass keeps for the copy: the copy goes on scanning after them,
// also when the length guard stops it part way.
TEST(ReplaceString, ManyHitsWithAndWithoutTheLengthGuard) {
    std::string s;
    for (int k = 0; k < 9000; ++k) s += "xNoTe";
    Outcome got = Replace(s, "note", "annotation", 0, 0), want = Model(s, "note", "annotation", 0);
    EXPECT_EQ(got.text, want.text);
    EXPECT_EQ(got.result, 9000);
    // A pattern that overlaps itself: the copy resumes right after the last kept hit.
    const std::string run(10001, 'A');
    got = Replace(run, "aa", "bbb", 0, 0);
    want = Model(run, "aa", "bbb", 0);
    EXPECT_EQ(got.text, want.text);
    EXPECT_EQ(got.result, 5000);

    for (int fits : {4095, 4096, 4097, 7000}) {
        CString text(s.c_str());
        EXPECT_EQ(qm::text::ReplaceStringLimited(text, "note", "annotation", 1, 0, (long long)s.size() + 1 + 6 * fits), fits);
        std::string expected;
        for (int k = 0; k < 9000; ++k) expected += k < fits ? "xannotation" : "xNoTe";
        EXPECT_EQ(text.str(), expected) << fits;
    }
}

// The one-compare candidate check against the byte rule of the character functions, for every
// pair of pattern and text bytes, at the first, a middle and the last compared position.
TEST(BlockMatcher, AgreesWithToUpperForEveryBytePair) {
    for (size_t width : {1u, 9u, 16u, 20u}) {
        std::string pattern(width, 'q');
        for (size_t at : {size_t(0), (width - 1) / 2, std::min(width, size_t(16)) - 1}) {
            for (int p = 0; p < 256; ++p) {
                pattern[at] = (char)p;
                const qm::text::detail::BlockMatcher matcher(pattern.data(), pattern.size());
                std::string text = pattern + std::string(16, 'z');  // 16 readable bytes at least
                int mismatches = 0;
                for (int t = 0; t < 256; ++t) {
                    text[at] = (char)t;
                    const bool want = mbc::ToUpper((unsigned)t) == mbc::ToUpper((unsigned)p);
                    mismatches += matcher.Matches(text.data()) != want;
                    mismatches += matcher.MatchesBytes(text.data()) != want;
                }
                EXPECT_EQ(mismatches, 0) << "width " << width << " at " << at << " pattern byte " << p;
            }
        }
    }
}

// The candidate lists of the block scan: every position whose two bytes pass the filter, in
// order, from any start to any end, with many candidates per block and the visit stopping early.
TEST(PairScanner, ForEachVisitsWhatTheByteFilterPasses) {
    std::mt19937 rng(9);
    for (int round = 0; round < 300; ++round) {
        std::string text(1 + rng() % 5000, ' ');
        const char* alphabet = round % 2 ? "nNoO .\xCE\xEE" : "nnnnnnoO";
        const size_t letters = std::char_traits<char>::length(alphabet);
        for (char& c : text) c = alphabet[rng() % letters];
        const bool two = round % 5 != 0;
        const unsigned char first = round % 3 ? 'N' : 0xCE, second = 'o';
        const size_t from = rng() % text.size(), end = from + rng() % (text.size() - from + 1);
        const size_t stopAfter = round % 4 == 0 ? 1 + rng() % 50 : SIZE_MAX;

        auto up = [](char c) { return mbc::ToUpper((unsigned char)c); };
        std::vector<size_t> want;
        for (size_t i = from; i < end && want.size() < stopAfter; ++i)
            if (up(text[i]) == up((char)first) && (!two || up(text[i + 1]) == up((char)second))) want.push_back(i);

        std::vector<size_t> got;
        qm::text::detail::PairScanner(first, second, two).ForEach(text.c_str(), from, end, [&](size_t i) {
            got.push_back(i);
            return got.size() < stopAfter;
        });
        EXPECT_EQ(got, want) << "round " << round << " from " << from << " end " << end;
    }
}

}  // namespace

