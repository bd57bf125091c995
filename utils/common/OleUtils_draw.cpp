// Drawing helpers of WndUtils: arrows, bitmaps (whole, colour-keyed, disabled), the caption
// animation, and scaling between device resolutions.
#include <cmath>
#include <cstdint>

#include "utils/common/CVLogger.h"
#include "utils/common/WndUtils.h"
#include "utils/framework/CWnd.h"
#include "utils/platform/gdi.h"

#define QM_SOURCE_MODULE "Common\\OleUtils"

namespace {

namespace plat = qm::platform;

const BITMAPINFO* InfoOf(const CDIBitmap& bitmap) { return (const BITMAPINFO*)bitmap.GetInfoHeader(); }

bool Drawable(const CDIBitmap& bitmap) { return bitmap.IsValid() && bitmap.GetWidth() > 0 && bitmap.GetHeight() > 0; }

// A device bitmap holding the DIB's pixels (for the calls that take only device bitmaps).
HBITMAP DeviceCopy(CDC* pDC, const CDIBitmap& bitmap) {
    HDC mem = plat::GdiCreateCompatibleDC(pDC->m_hDC);
    if (!mem) return nullptr;
    HBITMAP bmp = plat::GdiCreateCompatibleBitmap(pDC->m_hDC, bitmap.GetWidth(), bitmap.GetHeight());
    if (bmp) {
        HGDIOBJ old = plat::GdiSelectObject(mem, bmp);
        int lines = plat::GdiSetDIBitsToDevice(mem, 0, 0, (DWORD)bitmap.GetWidth(), (DWORD)bitmap.GetHeight(), 0, 0, 0,
                                               (UINT)bitmap.GetHeight(), bitmap.GetBits(), InfoOf(bitmap),
                                               DIB_RGB_COLORS);
        plat::GdiSelectObject(mem, old);
        if (lines <= 0) {
            plat::GdiDeleteObject(bmp);
            bmp = nullptr;
        }
    }
    plat::GdiDeleteDC(mem);
    return bmp;
}

// Runs f(memoryDC, size) with the device bitmap selected into a memory context.
template <class F>
BOOL WithBitmapDC(CDC* pDC, CBitmap* pBitmap, F&& f) {
    SIZE size{0, 0};
    if (!plat::GdiGetBitmapSize((HBITMAP)pBitmap->m_hObject, &size)) return FALSE;
    HDC mem = plat::GdiCreateCompatibleDC(pDC->m_hDC);
    if (!mem) return FALSE;
    HGDIOBJ old = plat::GdiSelectObject(mem, pBitmap->m_hObject);
    BOOL ok = old ? f(mem, size) : FALSE;
    if (old) plat::GdiSelectObject(mem, old);
    plat::GdiDeleteDC(mem);
    return ok;
}

// v * to / from rounded half away from zero; false when it leaves 32 bits.
bool Scale(LONG& v, int to, int from) {
    const long long p = (long long)v * to;  // at most 2^62 in magnitude
    long long q = p / from, r = p % from;
    if (2 * (r < 0 ? -r : r) >= from) q += p < 0 ? -1 : 1;
    if (q < INT32_MIN || q > INT32_MAX) return false;
    v = (LONG)q;
    return true;
}

bool DpiValid(int fx, int fy, int tx, int ty) { return fx > 0 && fy > 0 && tx > 0 && ty > 0; }

}  // namespace

BOOL WndUtils::DrawArrow(CDC* pDC, CPoint from, CPoint to, int nHeadLength, int nHeadWidth) {
    if (!CVASSERT(pDC)) return FALSE;
    if (!CVASSERT(nHeadLength >= 0)) nHeadLength = 0;
    if (!CVASSERT(nHeadWidth >= 0)) nHeadWidth = 0;
    double dx = (double)to.x - from.x, dy = (double)to.y - from.y;
    double length = std::sqrt(dx * dx + dy * dy);
    if (length == 0) return TRUE;
    double ux = dx / length, uy = dy / length;
    double head = std::min<double>(nHeadLength, length);
    double bx = to.x - ux * head, by = to.y - uy * head;
    double half = nHeadWidth / 2.0;
    // Rounded half away from zero, so that the two corners of an axis-aligned head mirror
    // each other exactly.
    POINT base{(LONG)std::lround(bx), (LONG)std::lround(by)};
    POINT left{(LONG)std::lround(bx - uy * half), (LONG)std::lround(by + ux * half)};
    POINT right{(LONG)std::lround(bx + uy * half), (LONG)std::lround(by - ux * half)};
    BOOL ok = TRUE;
    if (head < length) {
        pDC->MoveTo(from.x, from.y);
        ok = pDC->LineTo(base.x, base.y);
    }
    POINT triangle[3] = {{to.x, to.y}, left, right};
    return pDC->Polygon(triangle, 3) && ok;
}

BOOL WndUtils::DrawBitmap(CDC* pDC, CPoint pt, const CDIBitmap& bitmap) {
    if (!CVASSERT(pDC)) return FALSE;
    if (!CVASSERT(bitmap.IsValid())) return FALSE;
    return plat::GdiSetDIBitsToDevice(pDC->m_hDC, pt.x, pt.y, (DWORD)bitmap.GetWidth(), (DWORD)bitmap.GetHeight(), 0,
                                      0, 0, (UINT)bitmap.GetHeight(), bitmap.GetBits(), InfoOf(bitmap),
                                      DIB_RGB_COLORS) > 0;
}

BOOL WndUtils::DrawBitmap(CDC* pDC, CPoint pt, CBitmap* pBitmap) {
    if (!CVASSERT(pDC)) return FALSE;
    if (!CVASSERT(pBitmap && pBitmap->m_hObject)) return FALSE;
    return WithBitmapDC(pDC, pBitmap, [&](HDC mem, SIZE size) {
        return plat::GdiBitBlt(pDC->m_hDC, pt.x, pt.y, size.cx, size.cy, mem, 0, 0, SRCCOPY);
    });
}

BOOL WndUtils::DrawTransparentBitmap(CDC* pDC, CPoint pt, const CDIBitmap& bitmap, COLORREF crKey) {
    if (!CVASSERT(pDC)) return FALSE;
    if (!CVASSERT(Drawable(bitmap))) return FALSE;
    return plat::GdiSetDIBitsTransparent(pDC->m_hDC, pt.x, pt.y, InfoOf(bitmap), bitmap.GetBits(), crKey & 0xFFFFFF);
}

BOOL WndUtils::DrawTransparentBitmap(CDC* pDC, CPoint pt, CBitmap* pBitmap, COLORREF crKey) {
    if (!CVASSERT(pDC)) return FALSE;
    if (!CVASSERT(pBitmap && pBitmap->m_hObject)) return FALSE;
    return WithBitmapDC(pDC, pBitmap, [&](HDC mem, SIZE size) {
        return plat::GdiTransparentBlt(pDC->m_hDC, pt.x, pt.y, size.cx, size.cy, mem, 0, 0, size.cx, size.cy,
                                       crKey & 0xFFFFFF);
    });
}

BOOL WndUtils::DrawDisabledBitmap(CDC* pDC, CPoint pt, const CDIBitmap& bitmap) {
    if (!CVASSERT(pDC)) return FALSE;
    if (!CVASSERT(Drawable(bitmap))) return FALSE;
    HBITMAP bmp = DeviceCopy(pDC, bitmap);
    if (!bmp) return FALSE;
    BOOL ok = plat::GdiDrawDisabledBitmap(pDC->m_hDC, bmp, pt.x, pt.y);
    plat::GdiDeleteObject(bmp);
    return ok;
}

BOOL WndUtils::DrawDisabledBitmap(CDC* pDC, CPoint pt, CBitmap* pBitmap) {
    if (!CVASSERT(pDC)) return FALSE;
    if (!CVASSERT(pBitmap && pBitmap->m_hObject)) return FALSE;
    return plat::GdiDrawDisabledBitmap(pDC->m_hDC, (HBITMAP)pBitmap->m_hObject, pt.x, pt.y);
}

BOOL WndUtils::DrawAnimatedRects(CWnd* pWnd, const CRect& rcFrom, const CRect& rcTo) {
    return plat::GdiDrawAnimatedRects(pWnd ? pWnd->GetSafeHwnd() : nullptr, &rcFrom, &rcTo);
}

BOOL WndUtils::ScaleBetween(int nFromDpiX, int nFromDpiY, int nToDpiX, int nToDpiY, CPoint& pt) {
    if (!DpiValid(nFromDpiX, nFromDpiY, nToDpiX, nToDpiY)) return FALSE;
    LONG x = pt.x, y = pt.y;
    if (!Scale(x, nToDpiX, nFromDpiX) || !Scale(y, nToDpiY, nFromDpiY)) return FALSE;
    pt.x = x;
    pt.y = y;
    return TRUE;
}

BOOL WndUtils::ScaleBetween(int nFromDpiX, int nFromDpiY, int nToDpiX, int nToDpiY, CSize& size) {
    CPoint pt(size.cx, size.cy);
    if (!ScaleBetween(nFromDpiX, nFromDpiY, nToDpiX, nToDpiY, pt)) return FALSE;
    size.cx = pt.x;
    size.cy = pt.y;
    return TRUE;
}

BOOL WndUtils::ScaleBetween(int nFromDpiX, int nFromDpiY, int nToDpiX, int nToDpiY, CRect& rect) {
    CPoint tl(rect.left, rect.top), br(rect.right, rect.bottom);
    if (!ScaleBetween(nFromDpiX, nFromDpiY, nToDpiX, nToDpiY, tl) ||
        !ScaleBetween(nFromDpiX, nFromDpiY, nToDpiX, nToDpiY, br))
        return FALSE;
    rect.left = tl.x;
    rect.top = tl.y;
    rect.right = br.x;
    rect.bottom = br.y;
    return TRUE;
}

BOOL WndUtils::ScaleBetween(CDC* pFromDC, CDC* pToDC, CPoint& pt) {
    if (!CVASSERT(pFromDC && pToDC)) return FALSE;
    return ScaleBetween(pFromDC->GetDeviceCaps(LOGPIXELSX), pFromDC->GetDeviceCaps(LOGPIXELSY),
                        pToDC->GetDeviceCaps(LOGPIXELSX), pToDC->GetDeviceCaps(LOGPIXELSY), pt);
}

BOOL WndUtils::ScaleBetween(CDC* pFromDC, CDC* pToDC, CSize& size) {
    if (!CVASSERT(pFromDC && pToDC)) return FALSE;
    return ScaleBetween(pFromDC->GetDeviceCaps(LOGPIXELSX), pFromDC->GetDeviceCaps(LOGPIXELSY),
                        pToDC->GetDeviceCaps(LOGPIXELSX), pToDC->GetDeviceCaps(LOGPIXELSY), size);
}

BOOL WndUtils::ScaleBetween(CDC* pFromDC, CDC* pToDC, CRect& rect) {
    if (!CVASSERT(pFromDC && pToDC)) return FALSE;
    return ScaleBetween(pFromDC->GetDeviceCaps(LOGPIXELSX), pFromDC->GetDeviceCaps(LOGPIXELSY),
                        pToDC->GetDeviceCaps(LOGPIXELSX), pToDC->GetDeviceCaps(LOGPIXELSY), rect);
}
