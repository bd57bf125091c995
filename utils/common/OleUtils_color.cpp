// Colour conversions of WndUtils: RGB <-> HLS on the shell's 0..240 scale, and luminance
// scaling for 3-D edges.
#include <algorithm>
#include <array>

#include "utils/common/CVLogger.h"
#include "utils/common/OleUtils_internal.h"
#include "utils/common/WndUtils.h"
#include "utils/platform/shellcolor.h"

#define QM_SOURCE_MODULE "Common\\OleUtils"

namespace {

constexpr int kHlsMax = 240;
constexpr int kRgbMax = 255;
constexpr int kUndefinedHue = kHlsMax * 2 / 3;  // the hue of a grey: 160

// Two tables make the conversion from RGB cheap without changing a single result: the
// saturation for every (max - min, max + min) pair, and the hue fraction (x * 40 + d / 2) / d
// for every difference d and distance x <= d.
struct RgbTables {
    std::array<std::array<std::uint8_t, 511>, 256> saturation{};
    std::array<std::array<std::uint8_t, 256>, 256> fraction{};
    RgbTables() {
        for (int d = 1; d < 256; ++d) {
            for (int sum = d; sum <= 510 - d; ++sum) {
                int l = (sum * kHlsMax + kRgbMax) / (2 * kRgbMax);
                int s = l <= kHlsMax / 2 ? (d * kHlsMax + sum / 2) / sum
                                         : (d * kHlsMax + (2 * kRgbMax - sum) / 2) / (2 * kRgbMax - sum);
                saturation[d][sum] = (std::uint8_t)s;
            }
            for (int x = 0; x <= d; ++x) fraction[d][x] = (std::uint8_t)((x * (kHlsMax / 6) + d / 2) / d);
        }
    }
};

const RgbTables& Tables() {
    static const RgbTables tables;
    return tables;
}

inline void RgbToHlsFast(const RgbTables& t, COLORREF clr, WORD* h, WORD* l, WORD* s) {
    int r = clr & 0xFF, g = (clr >> 8) & 0xFF, b = (clr >> 16) & 0xFF;
    int mx = std::max(std::max(r, g), b), mn = std::min(std::min(r, g), b);
    int sum = mx + mn;
    *l = (WORD)((sum * kHlsMax + kRgbMax) / (2 * kRgbMax));
    int d = mx - mn;
    if (d == 0) {
        *s = 0;
        *h = kUndefinedHue;
        return;
    }
    *s = t.saturation[d][sum];
    const auto& f = t.fraction[d];
    int rd = f[mx - r], gd = f[mx - g], bd = f[mx - b];
    int hue = r == mx ? bd - gd : g == mx ? kHlsMax / 3 + rd - bd : 2 * kHlsMax / 3 + gd - rd;
    if (hue < 0) hue += kHlsMax;
    if (hue > kHlsMax) hue -= kHlsMax;
    *h = (WORD)hue;
}

inline int HueToChannel(int n1, int n2, int hue) {
    if (hue < 0) hue += kHlsMax;
    if (hue > kHlsMax) hue -= kHlsMax;
    if (hue < kHlsMax / 6) return n1 + ((n2 - n1) * hue + kHlsMax / 12) / (kHlsMax / 6);
    if (hue < kHlsMax / 2) return n2;
    if (hue < kHlsMax * 2 / 3) return n1 + ((n2 - n1) * (kHlsMax * 2 / 3 - hue) + kHlsMax / 12) / (kHlsMax / 6);
    return n1;
}

WORD ClampHls(WORD v) { return v > kHlsMax ? (WORD)kHlsMax : v; }

}  // namespace

namespace qm::oleutils {

void RgbToHls(COLORREF clr, WORD* hue, WORD* luminance, WORD* saturation) {
    RgbToHlsFast(Tables(), clr, hue, luminance, saturation);
}

COLORREF HlsToRgb(WORD hue, WORD luminance, WORD saturation) {
    int h = hue, l = luminance, s = saturation;
    if (s == 0) {
        int v = l * kRgbMax / kHlsMax;
        return RGB(v, v, v);
    }
    int m2 = l <= kHlsMax / 2 ? (l * (kHlsMax + s) + kHlsMax / 2) / kHlsMax : l + s - (l * s + kHlsMax / 2) / kHlsMax;
    int m1 = 2 * l - m2;
    int r = (HueToChannel(m1, m2, h + kHlsMax / 3) * kRgbMax + kHlsMax / 2) / kHlsMax;
    int g = (HueToChannel(m1, m2, h) * kRgbMax + kHlsMax / 2) / kHlsMax;
    int b = (HueToChannel(m1, m2, h - kHlsMax / 3) * kRgbMax + kHlsMax / 2) / kHlsMax;
    return RGB(r, g, b);
}

}  // namespace qm::oleutils

void WndUtils::ColorRGBToHLS(COLORREF clr, WORD* pwHue, WORD* pwLuminance, WORD* pwSaturation) {
    if (!CVASSERT(pwHue && pwLuminance && pwSaturation)) return;
    if (qm::platform::ShellColorRGBToHLS(clr, pwHue, pwLuminance, pwSaturation)) return;
    qm::oleutils::RgbToHls(clr, pwHue, pwLuminance, pwSaturation);
}

COLORREF WndUtils::ColorHLSToRGB(WORD wHue, WORD wLuminance, WORD wSaturation) {
    // The shell leaves components above 240 undefined (channels wrap): both targets clamp.
    if (!CVASSERT(wHue <= 240)) wHue = kHlsMax;
    if (!CVASSERT(wLuminance <= 240)) wLuminance = kHlsMax;
    if (!CVASSERT(wSaturation <= 240)) wSaturation = kHlsMax;
    COLORREF clr;
    if (qm::platform::ShellColorHLSToRGB(wHue, wLuminance, wSaturation, &clr)) return clr;
    return qm::oleutils::HlsToRgb(wHue, wLuminance, wSaturation);
}

void WndUtils::ColorsRGBToHLS(const COLORREF* pColors, WORD* pHue, WORD* pLuminance, WORD* pSaturation, size_t n) {
    if (n == 0) return;
    if (!CVASSERT(pColors && pHue && pLuminance && pSaturation)) return;
    const RgbTables& t = Tables();
    for (size_t i = 0; i < n; ++i) RgbToHlsFast(t, pColors[i], pHue + i, pLuminance + i, pSaturation + i);
}

void WndUtils::ColorsHLSToRGB(const WORD* pHue, const WORD* pLuminance, const WORD* pSaturation, COLORREF* pColors,
                              size_t n) {
    if (n == 0) return;
    if (!CVASSERT(pHue && pLuminance && pSaturation && pColors)) return;
    for (size_t i = 0; i < n; ++i)
        pColors[i] = qm::oleutils::HlsToRgb(ClampHls(pHue[i]), ClampHls(pLuminance[i]), ClampHls(pSaturation[i]));
}

COLORREF WndUtils::ScaleLuminance(COLORREF clr, int nPercent) {
    if (!CVASSERT(nPercent >= 0)) nPercent = 0;
    WORD h, l, s;
    ColorRGBToHLS(clr, &h, &l, &s);
    long long scaled = ((long long)l * nPercent + 50) / 100;
    return ColorHLSToRGB(h, (WORD)std::min<long long>(scaled, kHlsMax), s);
}

COLORREF WndUtils::Lighter(COLORREF clr, int nPercent) {
    if (!CVASSERT(nPercent >= 0)) nPercent = 0;
    return ScaleLuminance(clr, (int)std::min<long long>(100LL + nPercent, 0x7FFFFFFF));
}

COLORREF WndUtils::Darker(COLORREF clr, int nPercent) {
    if (!CVASSERT(nPercent >= 0)) nPercent = 0;
    if (!CVASSERT(nPercent <= 100)) nPercent = 100;
    return ScaleLuminance(clr, 100 - nPercent);
}
