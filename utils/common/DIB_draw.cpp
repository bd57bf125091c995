// CDIBitmap on a device context: unscaled and scaled transfers through GDI, and drawing a
// part of the picture through the DrawDib service.
#include "utils/common/CVLogger.h"
#include "utils/common/DIB.h"
#include "utils/framework/CDC.h"
#include "utils/platform/gdi.h"

#define QM_SOURCE_MODULE "Common\\DIB"

namespace plat = qm::platform;

void CDIBitmap::BitBlt(HDC hDC, int x, int y, int cx, int cy, int xSrc, int ySrc) const {
    // An empty bitmap has nothing to transfer.
    if (!IsValid()) return;
    // The caller's ySrc is measured from the top; the DIB's source origin is its bottom row.
    int height = GetHeight();
    plat::GdiSetDIBitsToDevice(hDC, x, y, (DWORD)cx, (DWORD)cy, xSrc, height - cy - ySrc, 0, (UINT)height,
                               m_BmpBits.m_pPtr, (const BITMAPINFO*)m_BmpInfo.m_pBmpInfo, DIB_RGB_COLORS);
}

void CDIBitmap::StretchBlt(HDC hDC, int x, int y, int cx, int cy, int xSrc, int ySrc, int cxSrc, int cySrc) const {
    if (!IsValid()) return;
    // The source rectangle goes to GDI unchanged (its y is measured from the bottom row).
    plat::GdiStretchDIBits(hDC, x, y, cx, cy, xSrc, ySrc, cxSrc, cySrc, m_BmpBits.m_pPtr,
                           (const BITMAPINFO*)m_BmpInfo.m_pBmpInfo, DIB_RGB_COLORS, SRCCOPY);
}

bool CDIBitmap::Draw(void* hDrawDib, CDC* pDC, RECT& destRect, RECT& srcRect) const {
    const RECT& SrcRect = srcRect;
    bool ok = CVASSERT(m_BmpBits.IsValid());
    ok = CVASSERT((SrcRect.left >= 0) && (SrcRect.left < m_BmpInfo.GetBmpWidth())) && ok;
    ok = CVASSERT((SrcRect.right > 0) && (SrcRect.right <= m_BmpInfo.GetBmpWidth())) && ok;
    ok = CVASSERT((SrcRect.top >= 0) && (SrcRect.top < m_BmpInfo.GetBmpHeight())) && ok;
    ok = CVASSERT((SrcRect.bottom > 0) && (SrcRect.bottom <= m_BmpInfo.GetBmpHeight())) && ok;
    ok = CVASSERT(SrcRect.top < SrcRect.bottom) && ok;
    ok = CVASSERT(SrcRect.left < SrcRect.right) && ok;
    // A source rectangle outside the picture is reported and not drawn, so that nothing is
    // read outside the pixel block; so is a missing context or an empty bitmap.
    if (!ok || !IsValid() || !pDC) return false;
    CRect dst(destRect), src(srcRect);
    if (m_BmpInfo.m_pBmpInfo->biCompression == BI_BITFIELDS) {
        plat::GdiSetStretchBltMode(pDC->m_hDC, COLORONCOLOR);
        return plat::GdiStretchDIBits(pDC->m_hDC, dst.left, dst.top, dst.Width(), dst.Height(), src.left,
                                      GetHeight() - src.bottom, src.Width(), src.Height(), m_BmpBits.m_pPtr,
                                      (const BITMAPINFO*)m_BmpInfo.m_pBmpInfo, DIB_RGB_COLORS, SRCCOPY) > 0;
    }
    return plat::GdiDrawDibDraw(hDrawDib, pDC->m_hDC, dst.left, dst.top, dst.Width(), dst.Height(),
                                m_BmpInfo.m_pBmpInfo, m_BmpBits.m_pPtr, src.left, src.top, src.Width(), src.Height(),
                                0) > 0;
}
