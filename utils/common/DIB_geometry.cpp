// CDIBitmap geometry and compositing: copy of a rectangle, crop, resize, rotation, mirror,
// fill, paste, conversion to 24 bits, borders and canvas. Operations that change the size
// build the result in a temporary bitmap and move it in, so a failed allocation leaves the
// target as it was. Rectangles and points are picture coordinates (row 0 at the top).
//
// Rectangles and points outside the picture are reported as the checks describe; the work
// then goes on with the part that lies inside the pictures (nothing when no part does), so
// that no row or column outside a block is ever read or written.
#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "utils/common/CVLogger.h"
#include "utils/common/DIB.h"
#include "utils/common/DIB_internal.h"

#define QM_SOURCE_MODULE "Common\\DIB"

namespace {

// Bit `i` of a row, the leftmost pixel in the most significant bit.
inline unsigned GetBit(const BYTE* row, std::uint64_t i) { return (row[i >> 3] >> (7 - (i & 7))) & 1u; }

// Copies nbits bits of src starting at bit `start` to dst starting at bit 0; srcBytes bytes
// of src may be read. The bits of dst's last byte past the copy are cleared.
void CopyRowBits(BYTE* dst, const BYTE* src, std::uint64_t start, std::uint64_t nbits, std::uint64_t srcBytes) {
    std::uint64_t nbytes = (nbits + 7) / 8;
    unsigned sh = (unsigned)(start & 7);
    const BYTE* s = src + (start >> 3);
    std::uint64_t avail = srcBytes - (start >> 3);
    if (sh == 0) {
        std::memcpy(dst, s, (size_t)nbytes);
    } else {
        for (std::uint64_t j = 0; j < nbytes; ++j) {
            unsigned hi = (unsigned)s[j] << sh;
            unsigned lo = j + 1 < avail ? s[j + 1] >> (8 - sh) : 0;
            dst[j] = (BYTE)(hi | lo);
        }
    }
    unsigned rest = (unsigned)(nbits & 7);
    if (rest) dst[nbytes - 1] &= (BYTE)(0xFF << (8 - rest));
}

}  // namespace

// ---------------------------------------------------------------------------------------------
// Copy, crop

void CDIBitmap::Copy(const CDIBitmap& SrcBmp, CRect SrcRect) {
    if (!CVASSERT(!IsValid())) {
        if (IsAttached())
            Detach();
        else
            Destroy();
    }
    CVASSERT(!SrcRect.IsRectEmpty());
    CVASSERT((0 <= SrcRect.left) && (SrcRect.left < SrcBmp.GetWidth()));
    CVASSERT((0 < SrcRect.right) && (SrcRect.right <= SrcBmp.GetWidth()));
    CVASSERT((0 <= SrcRect.top) && (SrcRect.top < SrcBmp.GetHeight()));
    CVASSERT((0 < SrcRect.bottom) && (SrcRect.bottom <= SrcBmp.GetHeight()));
    if (!SrcBmp.IsValid() || &SrcBmp == this) return;
    CRect rect;
    if (!rect.IntersectRect(&SrcRect, CRect(0, 0, SrcBmp.GetWidth(), SrcBmp.GetHeight()))) return;

    CDIBitmap result;
    DWORD infoLen = SrcBmp.GetInfoLength();
    auto* info = static_cast<BITMAPINFOHEADER*>(std::malloc(infoLen));
    if (!info) return;
    std::memcpy(info, SrcBmp.m_BmpInfo.m_pBmpInfo, infoLen);
    result.m_BmpInfo.m_pBmpInfo = info;
    result.m_BmpInfo.m_nSize = infoLen;
    result.m_BmpInfo.SetSize(rect.Size());
    WORD bpp = SrcBmp.GetBitCount();
    std::uint64_t size = qm::dib::BitsSize(rect.Width(), rect.Height(), bpp);
    result.m_BmpBits.m_pPtr = size ? static_cast<BYTE*>(std::malloc((size_t)size)) : nullptr;
    if (!result.m_BmpBits.m_pPtr) return;
    result.m_BmpBits.m_nSize = (DWORD)size;

    CRect storage = SrcBmp.BottomUpToTopDown(rect);
    std::uint64_t srcStride = Stride64(SrcBmp.GetWidth(), bpp);
    std::uint64_t dstStride = Stride64(rect.Width(), bpp);
    std::uint64_t srcUsed = ((std::uint64_t)SrcBmp.GetWidth() * bpp + 7) / 8;
    bool wholeBytes = !(SrcBmp.GetBitCount() % 8);
    if (!wholeBytes) CVASSERT((SrcBmp.GetBitCount() == 1) || (SrcBmp.GetBitCount() == 4));
    for (int y = 0; y < rect.Height(); ++y) {
        const BYTE* src = SrcBmp.m_BmpBits.m_pPtr + srcStride * (std::uint64_t)(storage.top + y);
        BYTE* dst = result.m_BmpBits.m_pPtr + dstStride * (std::uint64_t)y;
        std::memset(dst, 0, (size_t)dstStride);
        if (wholeBytes) {
            std::uint64_t bytes = bpp / 8;
            std::memcpy(dst, src + bytes * (std::uint64_t)rect.left, (size_t)(bytes * (std::uint64_t)rect.Width()));
        } else {
            // The rectangle's left edge becomes bit 7 of the row's first byte.
            std::uint64_t nbits = (std::uint64_t)rect.Width() * bpp;
            CopyRowBits(dst, src, (std::uint64_t)rect.left * bpp, nbits, srcUsed);
            unsigned n_dest_rest_bits_in_last_byte_of_line = (unsigned)(nbits % 8);
            CVASSERT(n_dest_rest_bits_in_last_byte_of_line < 8);
        }
    }
    MoveFrom(result);
}
