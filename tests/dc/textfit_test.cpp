#include <gtest/gtest.h>

#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "dc_fixture.h"
#include "tests/support/recording_sink.h"
#include "utils/common/mfcutils.h"
#include "utils/platform/globalmem.h"

namespace {

using dctest::kFonts;
using dctest::MemoryDC;

// The definition of the fit: the longest prefix that may end there under the rule and whose
// directly measured extent is within the width.
struct Expected { int count; long extent; };

bool WordEnd(const std::string& t, size_t i) { return i + 1 == t.size() || (t[i] != ' ' && t[i + 1] == ' '); }

Expected Definition(CDC& dc, const std::string& t, long width, TSpacesConsideration rule) {
    std::vector<long> ext(t.size() + 1, 0);
    for (size_t n = 1; n <= t.size(); ++n) ext[n] = dc.GetTabbedTextExtent(t.c_str(), (int)n, 0, nullptr).cx;
    auto best = [&](bool words) {
        Expected e{0, 0};
        for (size_t n = 1; n <= t.size(); ++n)
            if (ext[n] <= width && (!words || WordEnd(t, n - 1))) e = {(int)n, ext[n]};
        return e;
    };
    if (rule == IgnoreSpaces) return best(false);
    Expected w = best(true);
    return (rule == BetterOnSpaces && w.count == 0) ? best(false) : w;
}

std::string RandomText(std::mt19937& rng, size_t len) {
    static const char alphabet[] = "aaabcdeeefghiilmnoorsttuwyAWT.,;'ijl1MW0";
    std::string t;
    while (t.size() < len) {
        if (rng() % 6 == 0) t += std::string(1 + rng() % 2, ' ');
        t += alphabet[rng() % (sizeof alphabet - 1)];
    }
    t.resize(len);
    return t;
}

TEST(MapWidthToCharPos, MatchesTheDefinitionOverRandomTextsWidthsFontsAndRules) {
    std::mt19937 rng(11);
    qmtest::RecordingAssertSink asserts;
    for (const auto& choice : kFonts) {
        MemoryDC m(choice);
        for (int trial = 0; trial < 150; ++trial) {
            std::string t = RandomText(rng, 1 + rng() % 60);
            long width = (long)(rng() % 420) - 10;
            for (auto rule : {IgnoreSpaces, BetterOnSpaces, OnSpaces}) {
                Expected want = Definition(m.dc, t, width, rule);
                LONG extent = -1;
                int got = MapWidthToCharPos(&m.dc, width, t.c_str(), (int)t.size(), nullptr, &extent, rule, -1);
                ASSERT_EQ(got, want.count) << choice.face << " rule " << rule << " width " << width << " '" << t << "'";
                EXPECT_EQ(extent, want.extent) << choice.face << " '" << t << "'";
                // An exact fit is accepted: the width of the fitted prefix itself gives it back.
                if (want.count > 0) {
                    EXPECT_EQ(MapWidthToCharPos(&m.dc, want.extent, t.c_str(), (int)t.size(), nullptr, nullptr, rule),
                              want.count);
                }
            }
        }
    }
    EXPECT_TRUE(asserts.Reports().empty());
}

TEST(MapWidthToCharPos, FirstWordTooWideAndWholeText) {
    MemoryDC m(kFonts[2]);  // fixed pitch: every character equally wide
    int cw = m.dc.GetTextExtent("x", 1).cx;
    const char* t = "abcdefgh ij";
    EXPECT_EQ(MapWidthToCharPos(&m.dc, 5 * cw, t, -1, nullptr, nullptr, OnSpaces), 0);
    EXPECT_EQ(MapWidthToCharPos(&m.dc, 5 * cw, t, -1, nullptr, nullptr, IgnoreSpaces), 5);
    EXPECT_EQ(MapWidthToCharPos(&m.dc, 5 * cw, t, -1, nullptr, nullptr, BetterOnSpaces), 5);
    EXPECT_EQ(MapWidthToCharPos(&m.dc, 10 * cw, t, -1, nullptr, nullptr, BetterOnSpaces), 8);
    LONG extent = 0;
    EXPECT_EQ(MapWidthToCharPos(&m.dc, 1000, t, -1, nullptr, &extent), 11);
    EXPECT_EQ(extent, 11 * cw);
    // Nothing to measure: no context, no text, an empty text.
    EXPECT_EQ(MapWidthToCharPos(nullptr, 100, t), 0);
    EXPECT_EQ(MapWidthToCharPos(&m.dc, 100, nullptr), 0);
    EXPECT_EQ(MapWidthToCharPos(&m.dc, 100, "", -1, nullptr, &extent), 0);
    EXPECT_EQ(extent, 0);
    // A tab counts as the tab-stop distance.
    int stop = 7 * cw;
    EXPECT_EQ(MapWidthToCharPos(&m.dc, stop + 2 * cw, "a\tbcdef", -1, &stop, &extent), 4);
    EXPECT_EQ(extent, stop + 2 * cw);
}

TEST(MapWidthToCharPos, MeasuresAFractionOfTheLinearScan) {
    std::mt19937 rng(7);
    MemoryDC m(kFonts[0]);
    unsigned long ours = 0, linear = 0;
    for (int trial = 0; trial < 60; ++trial) {
        std::string t = RandomText(rng, 1000);
        long width = 200 + (long)(rng() % 5000);
        unsigned long before = qm::TextFitMeasureCount();
        int n = MapWidthToCharPos(&m.dc, width, t.c_str(), (int)t.size());
        ours += qm::TextFitMeasureCount() - before;
        linear += (unsigned long)std::min<size_t>((size_t)n + 1, t.size());  // a scan stops at the first too long
    }
    EXPECT_LE(ours * 10, linear) << ours << " measurements against " << linear;
}

struct WrapCase {
    const char* in;
    int chars;  // width in characters of the fixed-pitch font
    const char* out;
    int lines;
};

TEST(WordWrapString, Cases) {
    MemoryDC m(kFonts[2]);
    int cw = m.dc.GetTextExtent("x", 1).cx;
    const WrapCase cases[] = {
        {"aaa bbb", 5, "aaa \rbbb", 2},
        {"aaa bbb", 3, "aaa \rbbb", 2},  // the first character that does not fit is the space
        {"abcdefghij", 4, "abcd\refgh\rij", 3},
        {"a\r\n\r\nb", 5, "a\r\rb", 3},
        {"", 5, "", 0},
        {"ab cd ef", 0, "a\rb\r \rc\rd\r \re\rf", 8},  // nothing fits: one character per line
        {"one two three", 100, "one two three", 1},
        {"aaa bbb\r\nc", 5, "aaa \rbbb\rc", 3},
    };
    for (const auto& c : cases) {
        CString s(c.in);
        EXPECT_EQ(WordWrapString(s, c.chars * cw, &m.dc), c.lines) << c.in;
        EXPECT_EQ(s, c.out) << c.in;
    }
}

TEST(WordWrapString, LinesFitAndKeepEveryCharacter) {
    std::mt19937 rng(3);
    for (const auto& choice : kFonts) {
        MemoryDC m(choice);
        for (int trial = 0; trial < 40; ++trial) {
            std::string t = RandomText(rng, 1 + rng() % 300);
            for (char& c : t)
                if (rng() % 40 == 0) c = '\r';
            int width = 20 + (int)(rng() % 200);
            CString s(t.c_str());
            int lines = WordWrapString(s, width, &m.dc);
            std::string out = s.str(), joined;
            int count = 1;
            size_t start = 0;
            for (size_t i = 0; i <= out.size(); ++i) {
                if (i < out.size() && out[i] != '\r') continue;
                std::string line = out.substr(start, i - start);
                joined += line;
                long w = m.dc.GetTextExtent(line.c_str(), (int)line.size()).cx;
                long cut = line.empty() ? 0 : m.dc.GetTextExtent(line.c_str(), (int)line.size() - 1).cx;
                EXPECT_TRUE(w <= width || line.size() == 1 || (line.back() == ' ' && cut <= width))
                    << choice.face << " '" << line << "' width " << width << ": extent " << w
                    << ", without its last character " << cut;
                if (i < out.size()) ++count;
                start = i + 1;
            }
            EXPECT_EQ(lines, count);
            std::string plain;
            for (char c : t)
                if (c != '\r') plain += c;
            EXPECT_EQ(joined, plain);
        }
    }
}

TEST(TextHelpers, Cases) {
    CString s("x\r\ny");
    AddTabsAtTheBeginningOfLines(s, 2);
    EXPECT_EQ(s, "\t\tx\r\n\t\ty");
    s = "a\rb\nc";
    AddTabsAtTheBeginningOfLines(s, 1);
    EXPECT_EQ(s, "\ta\r\tb\n\tc");
    AddTabsAtTheBeginningOfLines(s, 0);
    EXPECT_EQ(s, "\ta\r\tb\n\tc");
    EXPECT_EQ(ReplaceTabsWithSpaces("\ta\t\tb"), " a  b");
    EXPECT_EQ(ReplaceTabsWithSpaces(nullptr), "");
    EXPECT_EQ(GetStringDiskSizeEstimate(CString("abc")), 7u);
    EXPECT_EQ(GetStringDiskSizeEstimate(CString()), 4u);

    HGLOBAL h = qm::platform::GlobalMemAlloc(GMEM_MOVEABLE, 6);
    char* p = (char*)qm::platform::GlobalMemLock(h);
    std::memcpy(p, "ab\0cde", 6);
    qm::platform::GlobalMemUnlock(h);
    EXPECT_EQ(GetTextFromHandle(h, 2), "ab");
    EXPECT_EQ(GetTextFromHandle(h, 6), "ab");  // up to the first NUL
    EXPECT_EQ(GetTextFromHandle(h, 0), "");
    EXPECT_EQ(GetTextFromHandle(nullptr, 4), "");
    qm::platform::GlobalMemFree(h);
}

}  // namespace
