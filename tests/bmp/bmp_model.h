// A small independent model of a bitmap for the tests: the picture as a grid of COLORREF,
// row 0 at the top, decoded straight from the DIB bytes (rows bottom-up, padded to 4 bytes,
// leftmost pixel in the high bits, palette entries blue-green-red, 16-bit 5-5-5).
#pragma once

#include <cstdint>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "utils/common/DIB.h"

namespace bmptest {

struct Picture {
    int w = 0, h = 0;
    std::vector<COLORREF> px;
    COLORREF& at(int x, int y) { return px[(size_t)y * w + x]; }
    COLORREF at(int x, int y) const { return px[(size_t)y * w + x]; }
    bool operator==(const Picture& o) const { return w == o.w && h == o.h && px == o.px; }
};

inline size_t Stride(int w, int bpp) { return ((size_t)w * bpp + 31) / 32 * 4; }

// The colour of picture pixel (x, y) decoded from the raw bytes.
inline COLORREF RawColor(const CDIBitmap& b, int x, int y) {
    const BYTE* row = b.GetBits() + Stride(b.GetWidth(), b.GetBitCount()) * (size_t)(b.GetHeight() - 1 - y);
    const RGBQUAD* pal = b.GetColorTable();
    auto fromPal = [&](unsigned i) { return RGB(pal[i].rgbRed, pal[i].rgbGreen, pal[i].rgbBlue); };
    switch (b.GetBitCount()) {
    case 1: return fromPal((row[x / 8] >> (7 - x % 8)) & 1);
    case 4: return fromPal(x % 2 ? row[x / 2] & 15 : row[x / 2] >> 4);
    case 8: return fromPal(row[x]);
    case 16: {
        unsigned v = row[2 * x] | row[2 * x + 1] << 8;
        return RGB((v >> 10 & 31) << 3, (v >> 5 & 31) << 3, (v & 31) << 3);
    }
    case 24: return RGB(row[3 * x + 2], row[3 * x + 1], row[3 * x]);
    case 32: return RGB(row[4 * x + 2], row[4 * x + 1], row[4 * x]);
    }
    return 0xFFFFFFFF;
}

inline Picture ModelOf(const CDIBitmap& b) {
    Picture p;
    p.w = b.GetWidth();
    p.h = b.GetHeight();
    p.px.resize((size_t)p.w * p.h);
    for (int y = 0; y < p.h; ++y)
        for (int x = 0; x < p.w; ++x) p.at(x, y) = RawColor(b, x, y);
    return p;
}

// A bitmap of the given size and depth with a random palette and random pixel bytes
// (padding bytes zero; 16-bit pixels keep bit 15 clear, 32-bit pixels a zero fourth byte).
inline void MakeRandom(CDIBitmap& b, int w, int h, int bpp, std::mt19937& rng) {
    b.Create(w, h, (WORD)bpp);
    std::uniform_int_distribution<int> byte(0, 255);
    if (RGBQUAD* pal = b.GetColorTable())
        for (DWORD i = 0; i < b.GetColorTableSize() / 4; ++i)
            pal[i] = RGBQUAD{(BYTE)byte(rng), (BYTE)byte(rng), (BYTE)byte(rng), 0};
    size_t stride = Stride(w, bpp), used = ((size_t)w * bpp + 7) / 8;
    for (int y = 0; y < h; ++y) {
        BYTE* row = b.GetBits() + stride * y;
        for (size_t i = 0; i < stride; ++i) row[i] = i < used ? (BYTE)byte(rng) : 0;
        if (bpp < 8 && (w * bpp) % 8) row[used - 1] &= (BYTE)(0xFF << (8 - (w * bpp) % 8));
        if (bpp == 16)
            for (int x = 0; x < w; ++x) row[2 * x + 1] &= 0x7F;
        if (bpp == 32)
            for (int x = 0; x < w; ++x) row[4 * x + 3] = 0;
    }
}

const int kDepths[] = {1, 4, 8, 16, 24, 32};

}  // namespace bmptest
