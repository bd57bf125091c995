// CDIBitmap: storage, ownership, header quantities, addressing and the pixel primitives.
//
// Sizes and strides are computed in 64 bits from the header each time; a header whose pixel
// block would not fit a 32-bit size is refused wherever a bitmap is made from it. Reads of
// the colour table and masks are bounded by the header block, and pixel reads and writes by
// the pixel block, so that a header claiming more than its block holds reads as black (0)
// instead of reading past the block.
#include "utils/common/DIB.h"

#include <cstdlib>
#include <cstring>

#include "utils/common/CVLogger.h"
#include "utils/common/DIB_internal.h"

#define QM_SOURCE_MODULE "Common\\DIB"

using qm::dib::kOutOfMemory;

// ---------------------------------------------------------------------------------------------
// CBmpInfo

DWORD CDIBitmap::CBmpInfo::GetColorCount() const {
    if (!m_pBmpInfo) return 0;
    if (m_pBmpInfo->biClrUsed) return m_pBmpInfo->biClrUsed;
    if (m_pBmpInfo->biBitCount <= 8) return 1u << m_pBmpInfo->biBitCount;
    return 0;
}

bool CDIBitmap::CBmpInfo::HasMasks() const {
    return m_pBmpInfo && m_pBmpInfo->biCompression == BI_BITFIELDS &&
           (m_pBmpInfo->biBitCount == 16 || m_pBmpInfo->biBitCount == 32);
}

std::uint64_t CDIBitmap::CBmpInfo::SafeLength() const {
    if (!m_pBmpInfo) return 0;
    if (m_nSize) return m_nSize;
    return (std::uint64_t)m_pBmpInfo->biSize + (HasMasks() ? 12 : 0) + 4ull * GetColorCount();
}

void CDIBitmap::CBmpInfo::GetMasks(DWORD& red, DWORD& green, DWORD& blue) const {
    red = green = blue = 0;
    if (!HasMasks() || (std::uint64_t)m_pBmpInfo->biSize + 12 > SafeLength()) return;
    const BYTE* p = reinterpret_cast<const BYTE*>(m_pBmpInfo) + m_pBmpInfo->biSize;
    std::memcpy(&red, p, 4);
    std::memcpy(&green, p + 4, 4);
    std::memcpy(&blue, p + 8, 4);
}

bool CDIBitmap::CBmpInfo::HasStandardMasks() const {
    if (!m_pBmpInfo || m_pBmpInfo->biCompression != BI_BITFIELDS) return true;
    if (!HasMasks()) return false;
    DWORD r, g, b;
    GetMasks(r, g, b);
    if (m_pBmpInfo->biBitCount == 16) return r == 0x7C00 && g == 0x03E0 && b == 0x001F;
    return r == 0xFF0000 && g == 0x00FF00 && b == 0x0000FF;
}

RGBQUAD* CDIBitmap::CBmpInfo::GetColorTable() const {
    if (!m_pBmpInfo) return nullptr;
    if (m_pBmpInfo->biClrUsed == 0 && m_pBmpInfo->biBitCount > 8) return nullptr;
    std::uint64_t offset = (std::uint64_t)m_pBmpInfo->biSize + (HasMasks() ? 12 : 0);
    // A table that starts outside the header block is not there.
    if (offset > SafeLength()) return nullptr;
    return reinterpret_cast<RGBQUAD*>(reinterpret_cast<BYTE*>(m_pBmpInfo) + offset);
}

DWORD CDIBitmap::CBmpInfo::GetColorTableSize() const {
    if (!m_pBmpInfo) return 0;
    std::uint64_t n = m_pBmpInfo->biClrUsed ? 4ull * m_pBmpInfo->biClrUsed
                      : m_pBmpInfo->biBitCount > 8 ? 0
                                                   : 4ull << m_pBmpInfo->biBitCount;
    return n > 0xFFFFFFFFull ? 0xFFFFFFFFu : (DWORD)n;
}

const RGBQUAD* CDIBitmap::CBmpInfo::GetColorEntry(DWORD index) const {
    const RGBQUAD* table = GetColorTable();
    if (!table || index >= GetColorCount()) return nullptr;
    std::uint64_t end = (std::uint64_t)(reinterpret_cast<const BYTE*>(table) - reinterpret_cast<const BYTE*>(m_pBmpInfo)) +
                        4ull * index + 4;
    return end <= SafeLength() ? table + index : nullptr;
}

DWORD CDIBitmap::CBmpInfo::GetInfoLength() const {
    if (!m_pBmpInfo) return 0;
    if (m_nSize) return m_nSize;
    std::uint64_t n = SafeLength();
    return n > 0xFFFFFFFFull ? 0xFFFFFFFFu : (DWORD)n;
}

bool CDIBitmap::CBmpInfo::IsBmpCompatible(const CBmpInfo& other) const {
    const BITMAPINFOHEADER* a = m_pBmpInfo;
    const BITMAPINFOHEADER* b = other.m_pBmpInfo;
    if (!a || !b) return false;
    if (a->biSize != b->biSize || a->biPlanes != b->biPlanes || a->biBitCount != b->biBitCount ||
        a->biCompression != b->biCompression || a->biClrUsed != b->biClrUsed || a->biClrImportant != b->biClrImportant)
        return false;
    DWORD count = GetColorCount();
    if (count != other.GetColorCount()) return false;
    for (DWORD i = 0; i < count; ++i) {
        const RGBQUAD* x = GetColorEntry(i);
        const RGBQUAD* y = other.GetColorEntry(i);
        if (!x || !y) {
            if (x != y) return false;
            break;
        }
        if (std::memcmp(x, y, 4) != 0) return false;
    }
    if (HasMasks()) {
        DWORD r1, g1, b1, r2, g2, b2;
        GetMasks(r1, g1, b1);
        other.GetMasks(r2, g2, b2);
        if (r1 != r2 || g1 != g2 || b1 != b2) return false;
    }
    return true;
}

void CDIBitmap::CBmpInfo::SetSize(const CSize& size) {
    bool ok = CVASSERT(IsValid());
    ok = CVASSERT(size.cx > 0) && ok;
    ok = CVASSERT(size.cy > 0) && ok;
    if (!ok) return;
    m_pBmpInfo->biWidth = size.cx;
    m_pBmpInfo->biHeight = size.cy;
}

// ---------------------------------------------------------------------------------------------
// Construction, ownership

CDIBitmap::CDIBitmap() = default;

CDIBitmap::CDIBitmap(const CDIBitmap& src, const CRect& rect) { Copy(src, rect); }

CDIBitmap::CDIBitmap(const CDIBitmap* pSrc, const CRect& rect) {
    if (pSrc) Copy(*pSrc, rect);
}

CDIBitmap::CDIBitmap(CDIBitmap&) { CVASSERT_TEXT("FALSE"); }

CDIBitmap& CDIBitmap::operator=(CDIBitmap&) {
    CVASSERT_TEXT("FALSE");
    return *this;
}

CDIBitmap::~CDIBitmap() {
    if (IsAttached())
        Detach();
    else
        Destroy();
}

void CDIBitmap::Destroy() {
    // An attached block belongs to the caller: it is dropped, never freed.
    if (!CVASSERT(!IsAttached())) {
        m_BmpInfo = CBmpInfo();
        m_BmpBits = CBmpBits();
        return;
    }
    qm::dib::FreePixelBlock(m_BmpBits.m_pPtr, m_BmpBits.m_nSize);
    m_BmpBits = CBmpBits();
    std::free(m_BmpInfo.m_pBmpInfo);
    m_BmpInfo = CBmpInfo();
}

BITMAPINFOHEADER* CDIBitmap::Detach() {
    // Only an attached block is handed back; an owned one stays with the bitmap.
    if (!CVASSERT(IsAttached())) return nullptr;
    BITMAPINFOHEADER* p = m_BmpInfo.m_pBmpInfo;
    m_BmpInfo = CBmpInfo();
    m_BmpBits = CBmpBits();
    return p;
}

bool CDIBitmap::Create(int width, int height, WORD bitCount) {
    Destroy();
    std::uint64_t bits = qm::dib::BitsSize(width, height, bitCount);
    if (bits == 0) return false;
    DWORD infoLen = 40 + (bitCount <= 8 ? 4u << bitCount : 0);
    auto* info = static_cast<BITMAPINFOHEADER*>(std::calloc(1, infoLen));
    if (!info) return false;
    info->biSize = 40;
    info->biWidth = width;
    info->biHeight = height;
    info->biPlanes = 1;
    info->biBitCount = bitCount;
    info->biCompression = BI_RGB;
    BYTE* pixels = qm::dib::NewPixelBlock((size_t)bits);
    if (!pixels) {
        std::free(info);
        return false;
    }
    m_BmpInfo.m_pBmpInfo = info;
    m_BmpInfo.m_nSize = infoLen;
    m_BmpBits.m_pPtr = pixels;
    m_BmpBits.m_nSize = (DWORD)bits;
    return true;
}

bool CDIBitmap::Create(BITMAPINFOHEADER* const pBI) {
    if (!CVASSERT(pBI != NULL)) return false;
    return CreateFromPacked(pBI, ~0ull);
}

bool CDIBitmap::CreateFromPacked(const BITMAPINFOHEADER* pBI, std::uint64_t available) {
    _cvtrace_("BMP_Crt");
    Destroy();
    if (!pBI || available < 40) return false;
    _cvtrace_(" 1");
    CBmpInfo probe;
    probe.m_pBmpInfo = const_cast<BITMAPINFOHEADER*>(pBI);
    probe.m_nSize = 40;  // only the fixed header is known to be there yet
    // The header block is 40 bytes long whatever biSize says, then masks and table.
    std::uint64_t infoLen = 40 + (probe.HasMasks() ? 12 : 0) + 4ull * probe.GetColorCount();
    std::uint64_t bits = qm::dib::BitsSize(pBI->biWidth, pBI->biHeight, pBI->biBitCount);
    // Refused: no pixels (height or width below 1, no depth), sizes past 32 bits, or a
    // block shorter than the header claims.
    if (bits == 0 || infoLen > 0xFFFFFFFFull || infoLen + bits > available) return false;
    _cvtrace_(" 2");
    auto* info = static_cast<BITMAPINFOHEADER*>(std::malloc((size_t)infoLen));
    BYTE* pixels = qm::dib::NewPixelBlock((size_t)bits);
    if (!info || !pixels) {
        std::free(info);
        qm::dib::FreePixelBlock(pixels, (size_t)bits);
        return false;
    }
    _cvtrace_(" 3");
    std::memcpy(info, pBI, (size_t)infoLen);
    std::memcpy(pixels, reinterpret_cast<const BYTE*>(pBI) + infoLen, (size_t)bits);
    m_BmpInfo.m_pBmpInfo = info;
    m_BmpInfo.m_nSize = (DWORD)infoLen;
    m_BmpBits.m_pPtr = pixels;
    m_BmpBits.m_nSize = (DWORD)bits;
    _cvtrace_(" 4\n");
    return true;
}

bool CDIBitmap::Attach(BITMAPINFOHEADER* pBI) {
    // A bitmap that holds blocks keeps them: attaching over them would lose them.
    if (!CVASSERT(!IsValid())) return false;
    if (!qm::dib::AcceptableHeader(pBI)) return false;
    CBmpInfo info;
    info.m_pBmpInfo = pBI;
    std::uint64_t infoLen = info.SafeLength();
    if (infoLen > 0xFFFFFFFFull) return false;
    m_BmpInfo = info;
    m_BmpBits.m_pPtr = reinterpret_cast<BYTE*>(pBI) + infoLen;
    m_BmpBits.m_nSize = CalcBmpBitsSize();
    if (m_BmpBits.m_nSize == 0) {
        m_BmpInfo = CBmpInfo();
        m_BmpBits = CBmpBits();
        return false;
    }
    return true;
}

LONG CDIBitmap::CopyFrom(const CDIBitmap& src) {
    if (&src == this) return 0;
    Destroy();
    if (!src.IsValid()) return 0;
    CBmpBits MemTmp;
    MemTmp.m_pPtr = qm::dib::NewPixelBlock(src.m_BmpBits.m_nSize);
    if (!CVASSERT(MemTmp.m_pPtr)) return kOutOfMemory;
    MemTmp.m_nSize = src.m_BmpBits.m_nSize;
    std::memcpy(MemTmp.m_pPtr, src.m_BmpBits.m_pPtr, MemTmp.m_nSize);
    DWORD infoLen = src.GetInfoLength();
    auto* info = static_cast<BITMAPINFOHEADER*>(std::malloc(infoLen));
    if (!info) {
        qm::dib::FreePixelBlock(MemTmp.m_pPtr, MemTmp.m_nSize);
        return kOutOfMemory;
    }
    std::memcpy(info, src.m_BmpInfo.m_pBmpInfo, infoLen);
    m_BmpBits = MemTmp;
    m_BmpInfo.m_pBmpInfo = info;
    m_BmpInfo.m_nSize = infoLen;
    return 0;
}

void CDIBitmap::MoveFrom(CDIBitmap& src) {
    if (!CVASSERT(!m_BmpBits.IsValid()) || &src == this || !src.IsValid()) return;
    DWORD infoLen = src.GetInfoLength();
    auto* info = static_cast<BITMAPINFOHEADER*>(std::malloc(infoLen));
    if (!info) return;
    std::memcpy(info, src.m_BmpInfo.m_pBmpInfo, infoLen);
    if (!IsAttached()) std::free(m_BmpInfo.m_pBmpInfo);
    m_BmpInfo.m_pBmpInfo = info;
    m_BmpInfo.m_nSize = infoLen;
    if (src.IsAttached()) {
        // The rows of an attached source stay in the caller's block: they are copied.
        m_BmpBits.m_pPtr = qm::dib::NewPixelBlock(src.m_BmpBits.m_nSize);
        if (m_BmpBits.m_pPtr) std::memcpy(m_BmpBits.m_pPtr, src.m_BmpBits.m_pPtr, src.m_BmpBits.m_nSize);
        m_BmpBits.m_nSize = m_BmpBits.m_pPtr ? src.m_BmpBits.m_nSize : 0;
        src.Detach();
        return;
    }
    m_BmpBits = src.m_BmpBits;
    src.m_BmpBits = CBmpBits();
    src.Destroy();
}

// ---------------------------------------------------------------------------------------------
// Accessors

void CDIBitmap::GetSize(SIZE& size) const {
    CVASSERT(m_BmpBits.IsValid());
    size.cx = GetWidth();
    size.cy = GetHeight();
}

void CDIBitmap::GetPelsPerMeter(LONG* pX, LONG* pY) const {
    const BITMAPINFOHEADER* h = m_BmpInfo.m_pBmpInfo;
    if (pX) *pX = h ? h->biXPelsPerMeter : 0;
    if (pY) *pY = h ? h->biYPelsPerMeter : 0;
}

void CDIBitmap::SetPelsPerMeter(LONG x, LONG y) {
    if (!m_BmpInfo.m_pBmpInfo) return;
    m_BmpInfo.m_pBmpInfo->biXPelsPerMeter = x;
    m_BmpInfo.m_pBmpInfo->biYPelsPerMeter = y;
}

bool CDIBitmap::IsReadyToJpegCompression() const {
    CVASSERT(IsValid());
    return GetBitCount() == 24;
}

// ---------------------------------------------------------------------------------------------
// Rows and addressing

// Widths and depths are taken in 64 bits; the 32-bit results wrap as the header's fields
// would, and the library's own code uses the 64-bit forms.
DWORD CDIBitmap::ActualBitsPerLine(int width, int bitCount) { return (DWORD)((std::int64_t)width * bitCount); }

DWORD CDIBitmap::ActualBytesPerLine(int width, int bitCount) {
    return (DWORD)(((std::uint64_t)(std::int64_t)width * (std::uint64_t)(std::int64_t)bitCount + 7) / 8);
}

DWORD CDIBitmap::DWAlignedBytesPerLine(int width, int bitCount) {
    return (DWORD)(((std::uint64_t)(std::int64_t)width * (std::uint64_t)(std::int64_t)bitCount + 31) / 32 * 4);
}

std::uint64_t CDIBitmap::Stride64(std::int64_t width, std::int64_t bitCount) {
    if (width < 1 || bitCount < 1) return 0;
    return ((std::uint64_t)width * (std::uint64_t)bitCount + 31) / 32 * 4;
}

DWORD CDIBitmap::CalcBmpBitsSize() const {
    if (!m_BmpInfo.m_pBmpInfo) return 0;
    return (DWORD)qm::dib::BitsSize(GetWidth(), GetHeight(), GetBitCount());
}

LONG CDIBitmap::CalcByteIndex(const CPoint& point) const {
    CVASSERT(CRect(0, 0, GetWidth(), GetHeight()).PtInRect(point));
    std::int64_t index = (std::int64_t)point.x * GetBitCount() / 8 +
                         (std::int64_t)Stride64(GetWidth(), GetBitCount()) * point.y;
    return (LONG)(std::uint32_t)(std::uint64_t)index;
}

CPoint CDIBitmap::BottomUpToTopDown(const CPoint& point) const { return BottomUpToTopDown(point, GetHeight()); }

CPoint CDIBitmap::BottomUpToTopDown(const CPoint& point, int height) {
    CVASSERT(point.y >= 0);
    return CPoint(point.x, (int)(std::int32_t)(std::uint32_t)((std::int64_t)height - point.y - 1));
}

CRect CDIBitmap::BottomUpToTopDown(const CRect& rect) const {
    std::int64_t h = GetHeight();
    return CRect(rect.left, (int)(std::int32_t)(std::uint32_t)(h - rect.bottom), rect.right,
                 (int)(std::int32_t)(std::uint32_t)(h - rect.top));
}

// ---------------------------------------------------------------------------------------------
// Pixels

namespace {

// The pixel's first byte, or null when the point is outside the picture or the pixel's bytes
// are not all inside the pixel block.
const BYTE* PixelAt(const CDIBitmap& bmp, const CDIBitmap::CBmpBits& bits, const CPoint& pt) {
    int w = bmp.GetWidth(), h = bmp.GetHeight(), bpp = bmp.GetBitCount();
    if (!bits.IsValid() || pt.x < 0 || pt.y < 0 || pt.x >= w || pt.y >= h) return nullptr;
    std::uint64_t index = (std::uint64_t)pt.x * bpp / 8 + CDIBitmap::Stride64(w, bpp) * (std::uint64_t)pt.y;
    std::uint64_t need = bpp >= 8 ? (std::uint64_t)bpp / 8 : 1;
    if (index + need > bits.m_nSize) return nullptr;
    return bits.m_pPtr + index;
}

}  // namespace

DWORD CDIBitmap::GetPixelValue(const CPoint& point) const {
    CalcByteIndex(point);  // reports a point outside the picture
    const BYTE* p = PixelAt(*this, m_BmpBits, point);
    if (!p) return 0;
    switch (GetBitCount()) {
    case 1: return (*p >> (7 - point.x % 8)) & 1;
    case 4: return point.x % 2 ? *p & 0x0F : *p >> 4;
    case 8:
    case 16:
    case 24:
    case 32: {
        DWORD v = 0;
        for (int i = GetBitCount() / 8 - 1; i >= 0; --i) v = (v << 8) | p[i];
        return v;
    }
    default: CVASSERT_TEXT("FALSE"); return 0;
    }
}

void CDIBitmap::SetPixelValue(const CPoint& point, DWORD Bits) {
    CalcByteIndex(point);
    BYTE* p = const_cast<BYTE*>(PixelAt(*this, m_BmpBits, point));
    switch (GetBitCount()) {
    case 1:
        if (!p) return;
        if (Bits)
            *p |= (BYTE)(0x80 >> (point.x % 8));
        else
            *p &= (BYTE) ~(0x80 >> (point.x % 8));
        return;
    case 4:
        CVASSERT(Bits <= 0x0F);
        if (!p) return;
        if (point.x % 2)
            *p = (BYTE)((*p & 0xF0) | (Bits & 0x0F));
        else
            *p = (BYTE)((*p & 0x0F) | ((Bits & 0x0F) << 4));
        return;
    case 8:
    case 16:
    case 24:
    case 32:
        if (!p) return;
        for (int i = 0; i < GetBitCount() / 8; ++i) p[i] = (BYTE)(Bits >> (8 * i));
        return;
    default: CVASSERT_TEXT("FALSE"); return;
    }
}

COLORREF CDIBitmap::GetPixelColor(const CPoint& point) const {
    switch (GetBitCount()) {
    case 1:
    case 4:
    case 8: {
        const RGBQUAD* q = m_BmpInfo.GetColorEntry(GetPixelValue(point));
        return q ? RGB(q->rgbRed, q->rgbGreen, q->rgbBlue) : 0;
    }
    case 16: return GetPixelColor16(point);
    case 24:
    case 32: {
        CalcByteIndex(point);
        const BYTE* p = PixelAt(*this, m_BmpBits, point);
        return p ? RGB(p[2], p[1], p[0]) : 0;
    }
    default: CVASSERT_TEXT("FALSE"); return 0;
    }
}

COLORREF CDIBitmap::GetPixelColor16(const CPoint& point) const {
    if (GetBitCount() != 16) {
        CVASSERT_TEXT("GetBitCount () == 16");
        return 0;
    }
    DWORD v = GetPixelValue(point);
    if (m_BmpInfo.HasStandardMasks())
        return RGB(((v >> 10) & 0x1F) << 3, ((v >> 5) & 0x1F) << 3, (v & 0x1F) << 3);
    DWORD masks[3];
    m_BmpInfo.GetMasks(masks[0], masks[1], masks[2]);
    BYTE channel[3];
    for (int i = 0; i < 3; ++i) {
        qm::dib::MaskShape shape = qm::dib::MeasureMask(masks[i]);
        channel[i] = qm::dib::MaskedChannel(v, masks[i], shape);
    }
    return RGB(channel[0], channel[1], channel[2]);
}

void CDIBitmap::SetPixelColor(const CPoint& point, COLORREF color) {
    WORD bpp = GetBitCount();
    if (bpp != 24 && bpp != 32) {
        CVASSERT_TEXT("0");
        return;
    }
    CalcByteIndex(point);
    BYTE* p = const_cast<BYTE*>(PixelAt(*this, m_BmpBits, point));
    if (!p) return;
    p[0] = GetBValue(color);
    p[1] = GetGValue(color);
    p[2] = GetRValue(color);
    if (bpp == 32) p[3] = (BYTE)(color >> 24);
}

// ---------------------------------------------------------------------------------------------
// Shared helpers

namespace qm::dib {

std::uint64_t BitsSize(std::int64_t width, std::int64_t height, std::int64_t bitCount) {
    if (height < 1) return 0;
    std::uint64_t stride = CDIBitmap::Stride64(width, bitCount);
    if (stride == 0 || stride > 0xFFFFFFFFull / (std::uint64_t)height) return 0;
    return stride * (std::uint64_t)height;
}

bool AcceptableHeader(const BITMAPINFOHEADER* pBI) {
    return pBI && pBI->biSize >= 40 && pBI->biBitCount > 0 &&
           (pBI->biCompression == BI_RGB || pBI->biCompression == BI_BITFIELDS) && pBI->biHeight >= 1 &&
           pBI->biPlanes == 1;
}

MaskShape MeasureMask(DWORD dwBitMask) {
    if (!CVASSERT(dwBitMask)) return {0, 0};
    int shift = 0;
    while (!(dwBitMask & (1u << shift))) ++shift;
    int width = 0;
    while (shift + width < 32 && (dwBitMask & (1u << (shift + width)))) ++width;
    return {shift, width};
}

BYTE MaskedChannel(DWORD value, DWORD mask, MaskShape shape) {
    if (shape.width == 0) return 0;
    DWORD c = (value & mask) >> shape.shift;
    // Masks wider than 8 bits keep their top 8 bits.
    c = shape.width <= 8 ? c << (8 - shape.width) : c >> (shape.width - 8);
    return (BYTE)c;
}

}  // namespace qm::dib
