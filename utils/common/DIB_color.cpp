// CDIBitmap colour adjustments: brightness, contrast, both, per-channel offsets and grey.
// Palette images change through their colour table only; 16-, 24- and 32-bit images through
// their pixels, row by row. Each adjustment is turned into lookup tables first (one per
// channel for 8-bit channels, one per channel for the 5-bit fields of 16-bit pixels), so the
// per-pixel work is a table look-up. Amounts are computed in 64 bits, so an out-of-range
// amount (reported) still clamps correctly.
#include <algorithm>
#include <cstdint>
#include <cstring>
#include <vector>

#include "utils/common/CVLogger.h"
#include "utils/common/DIB.h"
#include "utils/common/DIB_rows_internal.h"

#define QM_SOURCE_MODULE "Common\\DIB"

namespace {

struct Tables {
    BYTE c8[3][256];  // red, green, blue
    BYTE c5[3][32];
    bool same;  // the three channels share one table
};

int Clamp(std::int64_t v, int top) { return v < 0 ? 0 : v > top ? top : (int)v; }

// 8-bit and 5-bit forms of contrast k then offset b (each channel its own offset).
void Build(Tables& t, int k, const int offsets[3]) {
    t.same = offsets[0] == offsets[1] && offsets[1] == offsets[2];
    for (int ch = 0; ch < 3; ++ch) {
        for (int c = 0; c < 256; ++c) {
            std::int64_t v = k ? Clamp(c + (std::int64_t)(c - 128) * k / 100, 255) : c;
            t.c8[ch][c] = (BYTE)Clamp(v + offsets[ch], 255);
        }
        for (int c = 0; c < 32; ++c) {
            std::int64_t v = k ? Clamp(c + (std::int64_t)(c - 16) * k / 100, 31) : c;
            t.c5[ch][c] = (BYTE)Clamp(v + offsets[ch] / 8, 31);
        }
    }
}

enum class Outcome { Done, PaletteOnly, Refused, OtherDepth };

// The common order of work once the amounts are checked: colour table, then (true-colour
// images with standard masks) the pixels.
Outcome ApplyTables(CDIBitmap::CBmpInfo& info, CDIBitmap::CBmpBits& bits, const Tables& t) {
    BITMAPINFOHEADER* h = info.m_pBmpInfo;
    if (!h || !bits.IsValid()) return Outcome::PaletteOnly;
    DWORD entries = h->biClrUsed ? h->biClrUsed : h->biBitCount <= 8 ? 1u << h->biBitCount : 0;
    for (DWORD i = 0; i < entries; ++i) {
        RGBQUAD* q = const_cast<RGBQUAD*>(info.GetColorEntry(i));
        if (!q) break;  // the rest of a table that claims more than its block holds
        q->rgbRed = t.c8[0][q->rgbRed];
        q->rgbGreen = t.c8[1][q->rgbGreen];
        q->rgbBlue = t.c8[2][q->rgbBlue];
    }
    if (h->biBitCount < 9) return Outcome::PaletteOnly;
    if (!info.HasStandardMasks()) return Outcome::Refused;
    int bpp = h->biBitCount;
    if (bpp != 16 && bpp != 24 && bpp != 32) return Outcome::OtherDepth;
    std::uint64_t stride = CDIBitmap::Stride64(h->biWidth, bpp);
    if (stride == 0) return Outcome::Done;
    std::uint64_t rows = std::min<std::uint64_t>((std::uint64_t)h->biHeight, bits.m_nSize / stride);
    size_t width = (size_t)h->biWidth;
    std::vector<std::uint16_t> pairs;
    bool wide = bpp == 24 && t.same && qm::dib::HasByteShuffle512();
    if (bpp == 24 && t.same && !wide && rows * width >= (1u << 16)) {
        pairs.resize(65536);
        for (unsigned v = 0; v < 65536; ++v) pairs[v] = (std::uint16_t)(t.c8[0][v & 0xFF] | t.c8[0][v >> 8] << 8);
    }
    for (std::uint64_t y = 0; y < rows; ++y) {
        BYTE* p = bits.m_pPtr + stride * y;
        if (bpp == 16) {
            for (size_t x = 0; x < width; ++x, p += 2) {
                unsigned v = p[0] | (unsigned)p[1] << 8;
                v = (v & 0x8000) | (unsigned)t.c5[0][v >> 10 & 31] << 10 | (unsigned)t.c5[1][v >> 5 & 31] << 5 |
                    t.c5[2][v & 31];
                p[0] = (BYTE)v;
                p[1] = (BYTE)(v >> 8);
            }
        } else if (wide) {
            qm::dib::MapBytes512(p, 3 * width, t.c8[0]);
        } else if (bpp == 24 && t.same) {
            // One table for all three channels: the row is one run of bytes, taken two at a
            // time through a table of byte pairs when the picture is large enough to pay for it.
            const BYTE* c8 = t.c8[0];
            size_t n = 3 * width, i = 0;
            if (!pairs.empty())
                for (; i + 2 <= n; i += 2) {
                    std::uint16_t v;
                    std::memcpy(&v, p + i, 2);
                    v = pairs[v];
                    std::memcpy(p + i, &v, 2);
                }
            for (; i < n; ++i) p[i] = c8[p[i]];
        } else {
            size_t step = (size_t)bpp / 8;
            for (size_t x = 0; x < width; ++x, p += step) {
                p[0] = t.c8[2][p[0]];
                p[1] = t.c8[1][p[1]];
                p[2] = t.c8[0][p[2]];
            }
        }
    }
    return Outcome::Done;
}

}  // namespace

void CDIBitmap::AdjustBrightness(int iBrightness) {
    if (iBrightness == 0) return;
    CVASSERT((MIN_BRIGHTNESS <= iBrightness) && (iBrightness <= MAX_BRIGHTNESS));
    Tables t;
    const int offsets[3] = {iBrightness, iBrightness, iBrightness};
    Build(t, 0, offsets);
    if (ApplyTables(m_BmpInfo, m_BmpBits, t) == Outcome::Refused) {
        _cvtrace_("Adjusting DIBs with color masks still did not supported");
        CVASSERT_TEXT("FALSE");
    }
}

void CDIBitmap::AdjustContrast(int iContrast) {
    if (iContrast == 0) return;
    CVASSERT((MIN_CONTRAST <= iContrast) && (iContrast <= MAX_CONTRAST));
    Tables t;
    const int offsets[3] = {0, 0, 0};
    Build(t, iContrast, offsets);
    if (ApplyTables(m_BmpInfo, m_BmpBits, t) == Outcome::Refused) {
        _cvtrace_("Adjusting DIBs with color masks still did not supported");
        CVASSERT_TEXT("FALSE");
    }
}

void CDIBitmap::AdjustContrastBrightness(int iContrast, int iBrightness) {
    if (iContrast == 0 && iBrightness == 0) return;
    if (iContrast == 0) return AdjustBrightness(iBrightness);
    if (iBrightness == 0) return AdjustContrast(iContrast);
    CVASSERT((MIN_CONTRAST <= iContrast) && (iContrast <= MAX_CONTRAST));
    CVASSERT((MIN_BRIGHTNESS <= iBrightness) && (iBrightness <= MAX_BRIGHTNESS));
    Tables t;
    const int offsets[3] = {iBrightness, iBrightness, iBrightness};
    Build(t, iContrast, offsets);
    switch (ApplyTables(m_BmpInfo, m_BmpBits, t)) {
    case Outcome::Refused:
        _cvtrace_("Error - CDIBitmap still did not support color adjusting for non-standard masked DIBs");
        CVASSERT_TEXT("FALSE");
        break;
    case Outcome::OtherDepth: CVASSERT_TEXT("FALSE"); break;
    default: break;
    }
}

void CDIBitmap::AdjustRGB(int iRed, int iGreen, int iBlue) {
    if (iRed == 0 && iGreen == 0 && iBlue == 0) return;
    for (int iBrightness : {iRed, iGreen, iBlue}) CVASSERT((MIN_BRIGHTNESS <= iBrightness) && (iBrightness <= MAX_BRIGHTNESS));
    Tables t;
    const int offsets[3] = {iRed, iGreen, iBlue};
    Build(t, 0, offsets);
    if (ApplyTables(m_BmpInfo, m_BmpBits, t) == Outcome::Refused) {
        _cvtrace_("Adjusting DIBs with color masks still did not supported\n");
        CVASSERT_TEXT("FALSE");
    }
}

void CDIBitmap::BlackAndWhite() {
    int w = GetWidth(), h = GetHeight();
    if (!IsValid()) return;
    int bpp = GetBitCount();
    std::uint64_t stride = Stride64(w, bpp);
    if ((bpp == 24 || bpp == 32) && stride * (std::uint64_t)h <= m_BmpBits.m_nSize) {
        // True colour: the same rule for whole rows.
        std::vector<BYTE> scratch((size_t)stride);
        for (int y = 0; y < h; ++y)
            qm::dib::GreyRow(m_BmpBits.m_pPtr + stride * (std::uint64_t)y, (size_t)w, (size_t)bpp / 8, scratch.data());
        return;
    }
    for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x) {
            CPoint pt(x, y);
            COLORREF c = GetPixelColor(pt);
            int grey = (GetRValue(c) + GetGValue(c) + GetBValue(c)) / 3;
            SetPixelColor(pt, RGB(grey, grey, grey));
        }
}
