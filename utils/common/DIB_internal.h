// Helpers shared by the bitmap modules (not exported).
#pragma once

#include <cstdint>

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

}  // namespace qm::dib
