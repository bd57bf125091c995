// CDIBitmap geometry and compositing: copy of a rectangle, crop, resize, fill, paste,
// conversion to 24 bits, borders and canvas (rotation and mirror: DIB_rotate.cpp). Operations that change the size
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
#include "utils/common/DIB_rows_internal.h"

#define QM_SOURCE_MODULE "Common\\DIB"

using qm::dib::GetBit;
using qm::dib::PutBGR;
using qm::dib::Release;

namespace {

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
    result.m_BmpBits.m_pPtr = size ? qm::dib::NewPixelBlock((size_t)size) : nullptr;
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


bool CDIBitmap::CreateLike(CDIBitmap& result, const CDIBitmap& model, std::int64_t width, std::int64_t height) {
    Release(result);
    if (width < 1 || height < 1 || width > 0x7FFFFFFF || height > 0x7FFFFFFF || !model.IsValid()) return false;
    std::uint64_t size = qm::dib::BitsSize(width, height, model.GetBitCount());
    if (!size) return false;
    DWORD infoLen = model.GetInfoLength();
    auto* info = static_cast<BITMAPINFOHEADER*>(std::malloc(infoLen));
    BYTE* bits = qm::dib::NewPixelBlock((size_t)size);
    if (!info || !bits) {
        std::free(info);
        qm::dib::FreePixelBlock(bits, (size_t)size);
        return false;
    }
    std::memcpy(info, model.m_BmpInfo.m_pBmpInfo, infoLen);
    info->biWidth = (LONG)width;
    info->biHeight = (LONG)height;
    result.m_BmpInfo.m_pBmpInfo = info;
    result.m_BmpInfo.m_nSize = infoLen;
    result.m_BmpBits.m_pPtr = bits;
    result.m_BmpBits.m_nSize = (DWORD)size;
    return true;
}

namespace {

// Fills every row of a 24-bit bitmap with the colour, padding bytes zero.
void FillAll(CDIBitmap& b, COLORREF colour) {
    std::uint64_t stride = b.DWAlignedBytesPerLine();
    BYTE* first = b.GetBits();
    std::memset(first, 0, (size_t)stride);
    for (int x = 0; x < b.GetWidth(); ++x) PutBGR(first + 3 * (std::uint64_t)x, colour);
    for (int y = 1; y < b.GetHeight(); ++y) std::memcpy(first + stride * y, first, (size_t)stride);
}

}  // namespace

void CDIBitmap::Crop(const CRect& rect) {
    if (rect.Width() == GetWidth() && rect.Height() == GetHeight()) return;
    CDIBitmap cropped;
    cropped.Copy(*this, rect);
    if (!cropped.IsValid()) return;
    Release(*this);
    MoveFrom(cropped);
}

// ---------------------------------------------------------------------------------------------
// 24 bits

bool CDIBitmap::CopyAs24Bits(const CDIBitmap& src) {
    if (&src == this) {
        CDIBitmap tmp;
        if (!tmp.CopyAs24Bits(src)) return false;
        Release(*this);
        MoveFrom(tmp);
        return true;
    }
    Release(*this);
    if (!src.IsValid() || !Create(src.GetWidth(), src.GetHeight(), 24)) return false;
    LONG px, py;
    src.GetPelsPerMeter(&px, &py);
    SetPelsPerMeter(px, py);
    int bpp = src.GetBitCount();
    std::uint64_t srcStride = Stride64(src.GetWidth(), bpp), dstStride = DWAlignedBytesPerLine();
    bool rows = (bpp == 1 || bpp == 4 || bpp == 8 || bpp == 24 || bpp == 32 ||
                 (bpp == 16 && src.m_BmpInfo.HasStandardMasks())) &&
                srcStride * (std::uint64_t)src.GetHeight() <= src.m_BmpBits.m_nSize;
    if (!rows) {
        // Other depths, other masks and short pixel blocks take the pixel primitives, which
        // report and read what those cases need.
        std::memset(m_BmpBits.m_pPtr, 0, m_BmpBits.m_nSize);
        for (int y = 0; y < GetHeight(); ++y)
            for (int x = 0; x < GetWidth(); ++x) SetPixelColor(CPoint(x, y), src.GetPixelColor(CPoint(x, y)));
        return true;
    }
    // Palette indexes through a table of the entries' colours (black for entries the table
    // or its block does not hold), then whole rows.
    std::uint32_t palette[256] = {};
    if (bpp <= 8)
        for (DWORD i = 0; i < (1u << bpp); ++i)
            if (const RGBQUAD* q = src.m_BmpInfo.GetColorEntry(i))
                palette[i] = (std::uint32_t)q->rgbRed << 16 | (std::uint32_t)q->rgbGreen << 8 | q->rgbBlue;
    BYTE channels[3 * 256];
    bool wide = bpp == 8 && qm::dib::HasByteShuffle512();
    if (wide)
        for (int i = 0; i < 256; ++i)
            for (int c = 0; c < 3; ++c) channels[256 * c + i] = (BYTE)(palette[i] >> (8 * c));
    std::uint64_t used = 3 * (std::uint64_t)GetWidth();
    for (int y = 0; y < GetHeight(); ++y) {
        BYTE* out = m_BmpBits.m_pPtr + dstStride * (std::uint64_t)y;
        qm::dib::RowTo24(src.m_BmpBits.m_pPtr + srcStride * (std::uint64_t)y, out, (std::size_t)GetWidth(), bpp, palette,
                         wide ? channels : nullptr);
        std::memset(out + used, 0, (size_t)(dstStride - used));
    }
    return true;
}

LONG CDIBitmap::Ensure_24Bits() {
    if (GetBitCount() == 24) return 0;
    CDIBitmap tmp;
    if (!tmp.CopyAs24Bits(*this)) return 0;
    Release(*this);
    MoveFrom(tmp);
    return m_BmpBits.IsValid() ? 0 : qm::dib::kOutOfMemory;
}

// ---------------------------------------------------------------------------------------------
// Resize

int CDIBitmap::Resize(const CSize& size) {
    if (size.cx < 1 || size.cy < 1 || !IsValid()) return 0;
    CDIBitmap converted;
    const CDIBitmap* src = this;
    if (GetBitCount() != 24) {
        if (!converted.CopyAs24Bits(*this)) return 0;
        src = &converted;
    }
    int w = src->GetWidth(), h = src->GetHeight();
    CDIBitmap result;
    if (!CreateLike(result, *src, size.cx, size.cy)) return 0;
    double sx = (double)size.cx / w, sy = (double)size.cy / h;

    // Per axis: nearest pixel, or the runs of source indexes that truncate to each target.
    struct Span { int first, end; };
    auto nearest = [](int n, int from, double s) {
        std::vector<Span> v((size_t)n);
        for (int i = 0; i < n; ++i) {
            int k = std::min((int)(i / s), from - 1);
            v[(size_t)i] = {k, k + 1};
        }
        return v;
    };
    auto runs = [](int n, int from, double s) {
        std::vector<Span> v((size_t)n);
        int r = 0;
        for (int i = 0; i < n; ++i) {
            int first = r;
            while (r < from && (int)(r * s) == i) ++r;
            // Rounding could leave a target index without a source run: it takes one row.
            if (r == first) r = std::min(first + 1, from);
            v[(size_t)i] = {std::min(first, from - 1), std::max(r, std::min(first, from - 1) + 1)};
        }
        return v;
    };
    bool grow = size.cx >= w && size.cy >= h;
    bool averageRows = !grow && size.cx > w && size.cy < h;
    bool averageCols = !grow && size.cx < w && size.cy > h;
    bool middle = !grow && !averageRows && !averageCols;
    std::vector<Span> rows = (averageRows || middle) ? runs(size.cy, h, sy) : nearest(size.cy, h, sy);
    std::vector<Span> cols = (averageCols || middle) ? runs(size.cx, w, sx) : nearest(size.cx, w, sx);
    if (middle) {
        for (Span& s : rows) s = {(s.first + s.end) / 2, (s.first + s.end) / 2 + 1};
        for (Span& s : cols) s = {(s.first + s.end) / 2, (s.first + s.end) / 2 + 1};
    }
    std::uint64_t srcStride = src->DWAlignedBytesPerLine(), dstStride = result.DWAlignedBytesPerLine();
    if (!averageRows && !averageCols) {
        // One source pixel per target pixel: each row gathered through the byte offsets of its
        // columns, and a row that samples the same source row as the one before copied whole.
        std::vector<std::uint32_t> offsets((size_t)size.cx);
        for (size_t x = 0; x < offsets.size(); ++x) offsets[x] = 3u * (std::uint32_t)cols[x].first;
        std::uint64_t used = 3 * (std::uint64_t)size.cx;
        qm::dib::GatherPlan plan;
        bool wide = qm::dib::HasByteShuffle512();
        if (wide) qm::dib::PlanGather24(offsets.data(), offsets.size(), plan);
        plan.stream = result.GetBitsSize() >= qm::dib::kStreamedTarget;
        for (int y = 0; y < size.cy;) {
            BYTE* out = result.GetBits() + dstStride * y;
            int from = rows[(size_t)y].first, copies = 1;
            while (y + copies < size.cy && rows[(size_t)(y + copies)].first == from) ++copies;
            const BYTE* in = src->GetBits() + srcStride * from;
            size_t inBytes = (size_t)(src->GetBitsSize() - srcStride * from);
            // The kernel writes its part of every row that repeats this one; the rest of
            // those rows is copied from the first.
            const int nextFrom = y + copies < size.cy ? rows[(size_t)(y + copies)].first : from;
            const size_t ahead = nextFrom > from ? (size_t)(srcStride * (std::uint64_t)(nextFrom - from)) : 0;
            size_t done = wide ? qm::dib::GatherRow24_512(out, in, inBytes, plan, (size_t)copies, (size_t)dstStride, ahead) : 0;
            size_t shared = plan.blocks ? 3 * done : 0;  // bytes already in every copy
            qm::dib::GatherRow24(out + 3 * done, in, inBytes, offsets.data() + done, offsets.size() - done);
            std::memset(out + used, 0, (size_t)(dstStride - used));
            for (int k = 1; k < copies; ++k) std::memcpy(out + dstStride * k + shared, out + shared, (size_t)dstStride - shared);
            y += copies;
        }
        Release(*this);
        MoveFrom(result);
        return 1;
    }
    std::memset(result.GetBits(), 0, result.GetBitsSize());
    for (int y = 0; y < size.cy; ++y) {
        BYTE* out = result.GetBits() + dstStride * y;
        const Span& ry = rows[(size_t)y];
        for (int x = 0; x < size.cx; ++x, out += 3) {
            const Span& cx = cols[(size_t)x];
            unsigned sum[3] = {0, 0, 0}, count = 0;
            for (int r = ry.first; r < ry.end; ++r)
                for (int c = cx.first; c < cx.end; ++c, ++count) {
                    const BYTE* p = src->GetBits() + srcStride * r + 3 * (std::uint64_t)c;
                    sum[0] += p[0];
                    sum[1] += p[1];
                    sum[2] += p[2];
                }
            for (int k = 0; k < 3; ++k) out[k] = (BYTE)(sum[k] / count);
        }
    }
    Release(*this);
    MoveFrom(result);
    return 1;
}

// ---------------------------------------------------------------------------------------------
// Fill, paste

void CDIBitmap::Fill(const CRect& rect, DWORD colour) {
    CVASSERT(!rect.IsRectEmpty());
    CVASSERT((0 <= rect.left) && (rect.left < GetWidth()));
    CVASSERT((0 < rect.right) && (rect.right <= GetWidth()));
    CVASSERT((0 <= rect.top) && (rect.top < GetHeight()));
    CVASSERT((0 < rect.bottom) && (rect.bottom <= GetHeight()));
    if (!IsValid() || GetBitCount() != 24) return;
    CRect area;
    if (!area.IntersectRect(&rect, CRect(0, 0, GetWidth(), GetHeight()))) return;
    CRect storage = BottomUpToTopDown(area);
    std::uint64_t stride = DWAlignedBytesPerLine();
    BYTE* first = m_BmpBits.m_pPtr + stride * storage.top + 3 * (std::uint64_t)area.left;
    for (int x = 0; x < area.Width(); ++x) PutBGR(first + 3 * (std::uint64_t)x, colour);
    for (int y = 1; y < area.Height(); ++y) std::memcpy(first + stride * y, first, 3 * (size_t)area.Width());
}

bool CDIBitmap::IsFitForPaste(const CDIBitmap& src) const {
    return GetBitCount() == 24 || m_BmpInfo.IsBmpCompatible(src.m_BmpInfo);
}

bool CDIBitmap::Paste(const CDIBitmap& src, CPoint at) {
    CRect dest_rect(at.x, at.y, (int)((std::int64_t)at.x + src.GetWidth()), (int)((std::int64_t)at.y + src.GetHeight()));
    bool ok = CVASSERT(IsValid());
    ok = CVASSERT(!dest_rect.IsRectEmpty()) && ok;
    ok = CVASSERT((0 <= dest_rect.left) && (dest_rect.right <= GetWidth())) && ok;
    ok = CVASSERT((0 <= dest_rect.top) && (dest_rect.bottom <= GetHeight())) && ok;
    // Nothing is clipped: a source that does not fit entirely is not pasted.
    if (!ok || !src.IsValid() || (std::int64_t)at.x + src.GetWidth() > GetWidth() ||
        (std::int64_t)at.y + src.GetHeight() > GetHeight())
        return false;
    CRect storage = BottomUpToTopDown(dest_rect);
    if (m_BmpInfo.IsBmpCompatible(src.m_BmpInfo)) {
        PasteCompatible(src, storage);
        return true;
    }
    return PasteIncompatible(src, storage);
}

bool CDIBitmap::PasteCompatible(const CDIBitmap& SrcBmp, const CRect& storageRect) {
    CVASSERT(m_BmpInfo.IsBmpCompatible(SrcBmp.m_BmpInfo));
    int bpp = GetBitCount();
    std::uint64_t dstStride = DWAlignedBytesPerLine(), srcStride = SrcBmp.DWAlignedBytesPerLine();
    std::uint64_t nbits = (std::uint64_t)SrcBmp.GetWidth() * bpp;
    std::uint64_t start = (std::uint64_t)storageRect.left * bpp;
    if (bpp < 8) {
        CVASSERT((m_BmpInfo.GetBitCount() == 1) || (m_BmpInfo.GetBitCount() == 4));
        CVASSERT(!(m_BmpInfo.GetBitCount() % 4));
    }
    for (int y = 0; y < SrcBmp.GetHeight(); ++y) {
        const BYTE* in = SrcBmp.m_BmpBits.m_pPtr + srcStride * y;
        BYTE* out = m_BmpBits.m_pPtr + dstStride * (std::uint64_t)(storageRect.top + y);
        if (!(bpp % 8)) {
            std::memmove(out + start / 8, in, (size_t)(nbits / 8));  // a bitmap may paste itself
        } else {
            // Bits shifted into place one by one, the bits around them kept.
            for (std::uint64_t i = 0; i < nbits; ++i) {
                std::uint64_t d = start + i;
                BYTE m = (BYTE)(0x80 >> (d & 7));
                out[d >> 3] = GetBit(in, i) ? (BYTE)(out[d >> 3] | m) : (BYTE)(out[d >> 3] & ~m);
            }
        }
    }
    return true;
}

bool CDIBitmap::PasteIncompatible(const CDIBitmap& SrcBmp, const CRect& storageRect) {
    if (GetBitCount() != 24) return false;
    int sbpp = SrcBmp.GetBitCount();
    if (sbpp != 1 && sbpp != 4 && sbpp != 8 && sbpp != 16 && sbpp != 24 && sbpp != 32) return false;
    std::uint64_t stride = DWAlignedBytesPerLine();
    for (int y = 0; y < SrcBmp.GetHeight(); ++y) {
        BYTE* out = m_BmpBits.m_pPtr + stride * (std::uint64_t)(storageRect.top + y) + 3 * (std::uint64_t)storageRect.left;
        for (int x = 0; x < SrcBmp.GetWidth(); ++x, out += 3) {
            CPoint pt(x, y);
            COLORREF c;
            if (sbpp <= 8)
                c = SrcBmp.GetPixelColor(pt);
            else if (sbpp == 16)
                c = SrcBmp.GetPixelColor16(pt);
            else {
                DWORD v = SrcBmp.GetPixelValue(pt);
                c = RGB(v >> 16 & 0xFF, v >> 8 & 0xFF, v & 0xFF);
            }
            PutBGR(out, c);
        }
    }
    return true;
}

// ---------------------------------------------------------------------------------------------
// Borders and canvas

int CDIBitmap::AddBorders(int top, int bottom, int left, int right, DWORD colour) {
    CVASSERT(top > 0);
    CVASSERT(bottom > 0);
    CVASSERT(left > 0);
    CVASSERT(right > 0);
    // A negative width would reach outside the new picture: it counts as no border.
    return CanvasSize(std::max(top, 0), std::max(bottom, 0), std::max(left, 0), std::max(right, 0), colour);
}

int CDIBitmap::CanvasSize(int top, int bottom, int left, int right, DWORD colour) {
    if (!IsValid()) return 0;
    CDIBitmap converted;
    const CDIBitmap* src = this;
    if (GetBitCount() != 24) {
        if (!converted.CopyAs24Bits(*this)) return 0;
        src = &converted;
    }
    std::int64_t w = src->GetWidth(), h = src->GetHeight();
    std::int64_t nw = w + left + right, nh = h + top + bottom;
    CDIBitmap result;
    // A canvas cut below one pixel is refused.
    if (nw < 1 || nh < 1 || !CreateLike(result, *src, nw, nh)) return 0;
    if (top > 0 || bottom > 0 || left > 0 || right > 0) {
        FillAll(result, colour);
    } else {
        std::memset(result.GetBits(), 0, result.GetBitsSize());
    }
    std::int64_t dstRow = bottom > 0 ? bottom : 0, dstCol = left > 0 ? left : 0;
    std::int64_t srcRow = bottom < 0 ? -(std::int64_t)bottom : 0, srcCol = left < 0 ? -(std::int64_t)left : 0;
    std::int64_t cols = w - (left < 0 ? -(std::int64_t)left : 0) - (right < 0 ? -(std::int64_t)right : 0);
    std::int64_t rows = h - (top < 0 ? -(std::int64_t)top : 0) - (bottom < 0 ? -(std::int64_t)bottom : 0);
    std::uint64_t srcStride = src->DWAlignedBytesPerLine(), dstStride = result.DWAlignedBytesPerLine();
    for (std::int64_t y = 0; y < rows && cols > 0; ++y)
        std::memcpy(result.GetBits() + dstStride * (dstRow + y) + 3 * dstCol,
                    src->GetBits() + srcStride * (srcRow + y) + 3 * srcCol, (size_t)(3 * cols));
    Release(*this);
    MoveFrom(result);
    return 1;
}
