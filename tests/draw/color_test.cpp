// Colour conversions: the shell's HLS model (checked against the shell itself for every value
// where the system has it), luminance scaling, out-of-range components.
#include <gtest/gtest.h>

#include <vector>

#include "tests/support/recording_sink.h"
#include "utils/common/OleUtils_internal.h"
#include "utils/common/WndUtils.h"
#include "utils/platform/shellcolor.h"

namespace {

struct Hls { WORD h, l, s; };

Hls ToHls(COLORREF clr) {
    Hls v{};
    WndUtils::ColorRGBToHLS(clr, &v.h, &v.l, &v.s);
    return v;
}

TEST(Colors, RgbToHlsKnownValues) {
    struct Case { COLORREF rgb; Hls hls; } cases[] = {
        {RGB(0, 0, 0), {160, 0, 0}},        {RGB(1, 1, 1), {160, 1, 0}},
        {RGB(127, 127, 127), {160, 120, 0}}, {RGB(128, 128, 128), {160, 120, 0}},
        {RGB(254, 254, 254), {160, 239, 0}}, {RGB(255, 255, 255), {160, 240, 0}},
        {RGB(10, 20, 30), {140, 19, 120}},   {RGB(255, 0, 0), {0, 120, 240}},
        {RGB(0, 255, 0), {80, 120, 240}},    {RGB(0, 0, 255), {160, 120, 240}},
        {RGB(255, 0, 10), {238, 120, 240}},  {RGB(255, 10, 0), {2, 120, 240}},
        {RGB(255, 128, 128), {0, 180, 240}}, {RGB(200, 100, 50), {13, 118, 144}},
        {0x12345678, {20, 81, 95}},  // the high byte is ignored: (0x78, 0x56, 0x34)
    };
    for (const Case& c : cases) {
        Hls got = ToHls(c.rgb);
        EXPECT_EQ(got.h, c.hls.h) << std::hex << c.rgb;
        EXPECT_EQ(got.l, c.hls.l) << std::hex << c.rgb;
        EXPECT_EQ(got.s, c.hls.s) << std::hex << c.rgb;
    }
}

TEST(Colors, HlsToRgbKnownValues) {
    struct Case { Hls hls; COLORREF rgb; } cases[] = {
        {{140, 19, 120}, RGB(10, 20, 31)},   {{160, 120, 0}, RGB(127, 127, 127)},
        {{0, 240, 0}, RGB(255, 255, 255)},   {{0, 0, 240}, RGB(0, 0, 0)},
        {{0, 120, 240}, RGB(255, 0, 0)},     {{80, 120, 240}, RGB(0, 255, 0)},
        {{160, 120, 240}, RGB(0, 0, 255)},   {{240, 120, 240}, RGB(255, 0, 0)},
        {{40, 120, 240}, RGB(255, 255, 0)},  {{0, 180, 240}, RGB(255, 128, 128)},
        {{20, 200, 100}, RGB(231, 213, 194)},
    };
    for (const Case& c : cases)
        EXPECT_EQ(WndUtils::ColorHLSToRGB(c.hls.h, c.hls.l, c.hls.s), c.rgb)
            << c.hls.h << "," << c.hls.l << "," << c.hls.s;
}

TEST(Colors, OutOfRangeComponentsAreReportedAndTakenAs240) {
    qmtest::RecordingAssertSink sink;
    EXPECT_EQ(WndUtils::ColorHLSToRGB(0, 241, 240), WndUtils::ColorHLSToRGB(0, 240, 240));
    EXPECT_EQ(WndUtils::ColorHLSToRGB(0, 120, 1000), WndUtils::ColorHLSToRGB(0, 120, 240));
    EXPECT_EQ(WndUtils::ColorHLSToRGB(500, 120, 240), WndUtils::ColorHLSToRGB(240, 120, 240));
    EXPECT_EQ(sink.Expressions(), (std::vector<std::string>{"wLuminance <= 240", "wSaturation <= 240", "wHue <= 240"}));
    ASSERT_FALSE(sink.Reports().empty());
    EXPECT_EQ(sink.Reports()[0].module, "Common\\OleUtils");
}

TEST(Colors, BulkFormsAgreeWithSingleConversions) {
    std::vector<COLORREF> colors;
    for (DWORD v = 0; v < 0x1000000; v += 4099) colors.push_back(v);
    std::vector<WORD> h(colors.size()), l(colors.size()), s(colors.size());
    WndUtils::ColorsRGBToHLS(colors.data(), h.data(), l.data(), s.data(), colors.size());
    std::vector<COLORREF> back(colors.size());
    WndUtils::ColorsHLSToRGB(h.data(), l.data(), s.data(), back.data(), colors.size());
    for (size_t i = 0; i < colors.size(); ++i) {
        Hls one = ToHls(colors[i]);
        ASSERT_EQ(h[i], one.h) << i;
        ASSERT_EQ(l[i], one.l) << i;
        ASSERT_EQ(s[i], one.s) << i;
        ASSERT_EQ(back[i], WndUtils::ColorHLSToRGB(one.h, one.l, one.s)) << i;
    }
    WORD oh = 999, ol = 999, os = 999;
    COLORREF clamped = 0;
    WndUtils::ColorsHLSToRGB(&oh, &ol, &os, &clamped, 1);  // clamped silently
    EXPECT_EQ(clamped, WndUtils::ColorHLSToRGB(240, 240, 240));
}

TEST(Colors, LighterAndDarkerScaleTheLuminanceOnly) {
    const COLORREF base = RGB(40, 80, 160);
    Hls b = ToHls(base);
    Hls lighter = ToHls(WndUtils::Lighter(base, 50));
    EXPECT_EQ(lighter.l, (b.l * 150 + 50) / 100);
    EXPECT_NEAR(lighter.h, b.h, 1);
    Hls darker = ToHls(WndUtils::Darker(base, 50));
    EXPECT_EQ(darker.l, (b.l * 50 + 50) / 100);
    EXPECT_EQ(WndUtils::Darker(base, 100), RGB(0, 0, 0));
    EXPECT_EQ(WndUtils::Lighter(base, 1000), RGB(255, 255, 255));  // clamped at 240
    EXPECT_EQ(WndUtils::Lighter(RGB(0, 0, 0), 80), RGB(0, 0, 0));
    COLORREF grey = WndUtils::Lighter(RGB(100, 100, 100), 20);
    EXPECT_EQ(GetRValue(grey), GetGValue(grey));
    EXPECT_EQ(GetGValue(grey), GetBValue(grey));
    EXPECT_GT(GetRValue(grey), 100);
}

TEST(Colors, NegativeAndExcessivePercentagesAreReportedAndClamped) {
    qmtest::RecordingAssertSink sink;
    EXPECT_EQ(WndUtils::Lighter(RGB(90, 60, 30), -5), WndUtils::ScaleLuminance(RGB(90, 60, 30), 100));
    EXPECT_EQ(WndUtils::Darker(RGB(90, 60, 30), 150), RGB(0, 0, 0));
    EXPECT_EQ(WndUtils::ScaleLuminance(RGB(90, 60, 30), -1), RGB(0, 0, 0));
    EXPECT_EQ(sink.Expressions(), (std::vector<std::string>{"nPercent >= 0", "nPercent <= 100", "nPercent >= 0"}));
}

// Where the system has the shell's conversions, the library's own computation must give the
// same numbers for every colour and every valid HLS triple.
TEST(Colors, OwnComputationMatchesTheShellForEveryValue) {
    WORD h, l, s;
    if (!qm::platform::ShellColorRGBToHLS(0, &h, &l, &s)) GTEST_SKIP() << "no shell conversions on this system";
    long mismatches = 0;
    for (DWORD v = 0; v < 0x1000000; ++v) {
        WORD sh, sl, ss, oh, ol, os;
        qm::platform::ShellColorRGBToHLS(v, &sh, &sl, &ss);
        qm::oleutils::RgbToHls(v, &oh, &ol, &os);
        if ((sh != oh || sl != ol || ss != os) && mismatches++ < 5)
            ADD_FAILURE() << std::hex << v << ": shell " << std::dec << sh << "," << sl << "," << ss << " own " << oh
                          << "," << ol << "," << os;
    }
    for (WORD hh = 0; hh <= 240; ++hh)
        for (WORD ll = 0; ll <= 240; ++ll)
            for (WORD ssat = 0; ssat <= 240; ++ssat) {
                COLORREF shell = 0;
                qm::platform::ShellColorHLSToRGB(hh, ll, ssat, &shell);
                COLORREF own = qm::oleutils::HlsToRgb(hh, ll, ssat);
                if (shell != own && mismatches++ < 10)
                    ADD_FAILURE() << hh << "," << ll << "," << ssat << ": shell " << std::hex << shell << " own " << own;
            }
    EXPECT_EQ(mismatches, 0);
}

}  // namespace
