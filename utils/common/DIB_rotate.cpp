// CDIBitmap rotation by quarter turns and mirroring, at every depth. A rotation that changes
// the size builds the result in a temporary bitmap and moves it in, so a failed allocation
// leaves the picture as it was.
#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "utils/common/CVLogger.h"
#include "utils/common/DIB.h"
#include "utils/common/DIB_internal.h"
#include "utils/common/DIB_rows_internal.h"

#define QM_SOURCE_MODULE "Common\\DIB"

using qm::dib::GetSub;
using qm::dib::Release;
using qm::dib::SetSub;

// ---------------------------------------------------------------------------------------------
// Rotation and mirror

namespace {

// Moves whole pixels of N bytes (n bytes when N is 0) from their source positions, in square
// tiles that keep both the rows read and the rows written in the cache.
template <size_t N, class Source>
void RotateTiles(BYTE* bits, std::uint64_t dstStride, int rw, int rh, const BYTE* from, std::uint64_t srcStride,
                 const Source& source, size_t n = N) {
    const int tile = 32;
    for (int y0 = 0; y0 < rh; y0 += tile)
        for (int x0 = 0; x0 < rw; x0 += tile)
            for (int y = y0; y < std::min(y0 + tile, rh); ++y) {
                BYTE* out = bits + dstStride * y + n * (std::uint64_t)x0;
                for (int x = x0; x < std::min(x0 + tile, rw); ++x, out += n) {
                    int sx, sy;
                    source(x, y, sx, sy);
                    std::memcpy(out, from + srcStride * sy + n * (std::uint64_t)sx, N ? N : n);
                }
            }
}

}  // namespace

void CDIBitmap::Rotate(eRotate angle) {
    int bpp = GetBitCount();
    if (!IsValid()) return;
    bool quarter = angle == eRotate90 || angle == eRotate270;
    if (!quarter && angle != eRotate180) {
        CVASSERT_TEXT("FALSE");  // not a supported angle: the bitmap stays as it is
        return;
    }
    bool sub = bpp < 8;
    if ((sub && bpp != 1 && bpp != 4) || (!sub && bpp % 8) || (sub && !quarter)) {
        CVASSERT_TEXT("FALSE");  // a half turn of 1- or 4-bit rows, or a depth without a path
        return;
    }
    int w = GetWidth(), h = GetHeight();
    if (quarter && w == h && !IsAttached() && (bpp == 24 || bpp == 32 || bpp == 8)) {
        std::uint64_t stride = DWAlignedBytesPerLine(), used = (std::uint64_t)w * (bpp / 8);
        qm::dib::QuarterTurnInPlace(m_BmpBits.m_pPtr, stride, w, (size_t)bpp / 8, angle == eRotate90);
        if (stride > used)
            for (int y = 0; y < h; ++y) std::memset(m_BmpBits.m_pPtr + stride * y + used, 0, (size_t)(stride - used));
        return;
    }
    int rw = quarter ? h : w, rh = quarter ? w : h;
    CDIBitmap result;
    std::uint64_t size = qm::dib::BitsSize(rw, rh, bpp);
    DWORD infoLen = GetInfoLength();
    auto* info = static_cast<BITMAPINFOHEADER*>(std::malloc(infoLen));
    BYTE* bits = size ? qm::dib::NewPixelBlock((size_t)size) : nullptr;
    bool bAllocOk = info && bits;
    if (!CVASSERT(bAllocOk)) {
        std::free(info);
        qm::dib::FreePixelBlock(bits, (size_t)size);
        return;
    }
    std::memcpy(info, m_BmpInfo.m_pBmpInfo, infoLen);
    info->biWidth = rw;
    info->biHeight = rh;
    result.m_BmpInfo.m_pBmpInfo = info;
    result.m_BmpInfo.m_nSize = infoLen;
    result.m_BmpBits.m_pPtr = bits;
    result.m_BmpBits.m_nSize = (DWORD)size;
    // Half turns keep each row's padding bytes; quarter turns clear them.
    if (quarter)
        std::memset(bits, 0, (size_t)size);
    else
        std::memcpy(bits, m_BmpBits.m_pPtr, (size_t)size);

    std::uint64_t srcStride = DWAlignedBytesPerLine(), dstStride = Stride64(rw, bpp);
    const BYTE* from = m_BmpBits.m_pPtr;
    // Source storage position of result storage position (x, y).
    auto source = [&](int x, int y, int& sx, int& sy) {
        if (angle == eRotate90) {
            sx = w - 1 - y;
            sy = x;
        } else if (angle == eRotate270) {
            sx = y;
            sy = h - 1 - x;
        } else {
            sx = w - 1 - x;
            sy = h - 1 - y;
        }
    };
    if (sub) {
        if (bpp == 1) CVASSERT(GetBitCount() == 1);
        for (int y = 0; y < rh; ++y)
            for (int x = 0; x < rw; ++x) {
                int sx, sy;
                source(x, y, sx, sy);
                SetSub(bits + dstStride * y, (std::uint64_t)x, bpp, GetSub(from + srcStride * sy, (std::uint64_t)sx, bpp));
            }
    } else {
        switch (bpp / 8) {
        case 1: RotateTiles<1>(bits, dstStride, rw, rh, from, srcStride, source); break;
        case 2: RotateTiles<2>(bits, dstStride, rw, rh, from, srcStride, source); break;
        case 3: RotateTiles<3>(bits, dstStride, rw, rh, from, srcStride, source); break;
        case 4: RotateTiles<4>(bits, dstStride, rw, rh, from, srcStride, source); break;
        default: RotateTiles<0>(bits, dstStride, rw, rh, from, srcStride, source, (size_t)bpp / 8); break;
        }
    }
    Release(*this);
    MoveFrom(result);
}

void CDIBitmap::Mirror() {
    if (!IsValid()) return;
    int bpp = GetBitCount(), w = GetWidth(), h = GetHeight();
    if ((bpp < 8 && bpp != 1 && bpp != 4) || (bpp >= 8 && bpp % 8)) {
        CVASSERT_TEXT("FALSE");
        return;
    }
    // Each row is read backwards from a copy of itself, so the block is rewritten in place:
    // the result is the same as writing into a new block, without a second picture in memory.
    std::uint64_t stride = DWAlignedBytesPerLine();
    std::vector<BYTE> row((size_t)stride + 8);
    for (int y = 0; y < h; ++y) {
        BYTE* out = m_BmpBits.m_pPtr + stride * y;
        if (bpp < 8) {
            std::memcpy(row.data(), out, (size_t)stride);
            const BYTE* in = row.data();
            for (int x = 0; x < w; ++x) {
                unsigned Bits = GetSub(in, (std::uint64_t)(w - 1 - x), bpp);
                if (bpp == 4) CVASSERT(Bits <= 0x0F);
                SetSub(out, (std::uint64_t)x, bpp, Bits);
            }
        } else {
            qm::dib::MirrorRow(out, (size_t)w, (size_t)bpp / 8, row.data());
        }
    }
}
