// Helpers shared by the bitmap modules (not exported).
#pragma once

#include <cstddef>
#include <cstdint>

#include "utils/common/DIB.h"
#include "utils/framework/wingdi.h"

namespace qm::dib {

// E_OUTOFMEMORY, the result of a failed pixel copy.
constexpr LONG kOutOfMemory = (LONG)0x8007000E;

// Stride x height in 64 bits; 0 when the width, height or depth is below 1 or the block
// would not fit a 32-bit size.
std::uint64_t BitsSize(std::int64_t width, std::int64_t height, std::int64_t bitCount);

// The checks every way in applies to a header: biSize >= 40, a depth, BI_RGB or
// BI_BITFIELDS, bottom-up (height >= 1), one plane.
bool AcceptableHeader(const BITMAPINFOHEADER* pBI);

// A colour mask: its shift (trailing zero bits) and width (consecutive one bits above them).
// A zero mask is reported ("dwBitMask") and has width 0.
struct MaskShape {
    int shift;
    int width;
};
MaskShape MeasureMask(DWORD dwBitMask);
// (value AND mask) >> shift, placed so that its top bit is bit 7 of the byte.
BYTE MaskedChannel(DWORD value, DWORD mask, MaskShape shape);

// Blocks of rows: every pixel block is taken from NewPixelBlock (not zero-filled; null when
// memory is short) and given back to FreePixelBlock with the size it was asked for, so that a
// large block just given back can serve the next request of about its size.
BYTE* NewPixelBlock(std::size_t size);
void FreePixelBlock(void* block, std::size_t size);

// Frees what a bitmap holds in whichever mode it is (an attached block is only dropped).
inline void Release(CDIBitmap& b) {
    if (b.IsAttached())
        b.Detach();
    else
        b.Destroy();
}

// Bit `i` of a row, the leftmost pixel in the most significant bit.
inline unsigned GetBit(const BYTE* row, std::uint64_t i) { return (row[i >> 3] >> (7 - (i & 7))) & 1u; }

inline void PutBGR(BYTE* p, COLORREF c) {
    p[0] = GetBValue(c);
    p[1] = GetGValue(c);
    p[2] = GetRValue(c);
}

// Nibble or bit `x` of a row (depth 1 or 4).
inline unsigned GetSub(const BYTE* row, std::uint64_t x, int bpp) {
    return bpp == 1 ? GetBit(row, x) : (x & 1 ? row[x >> 1] & 0x0F : row[x >> 1] >> 4);
}
inline void SetSub(BYTE* row, std::uint64_t x, int bpp, unsigned v) {
    if (bpp == 1) {
        BYTE m = (BYTE)(0x80 >> (x & 7));
        row[x >> 3] = v ? (BYTE)(row[x >> 3] | m) : (BYTE)(row[x >> 3] & ~m);
    } else if (x & 1) {
        row[x >> 1] = (BYTE)((row[x >> 1] & 0xF0) | (v & 0x0F));
    } else {
        row[x >> 1] = (BYTE)((row[x >> 1] & 0x0F) | (v & 0x0F) << 4);
    }
}

}  // namespace qm::dib
