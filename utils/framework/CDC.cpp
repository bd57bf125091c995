#include "utils/framework/CDC.h"

#include <cstdlib>
#include <cstring>
#include <map>
#include <mutex>

#include "utils/framework/CWnd.h"
#include "utils/platform/gdi.h"

namespace plat = qm::platform;

namespace {

// Temporary wrappers handed out by FromHandle: they never own their handle, so they are
// detached before they are deleted (also when the process ends with some still mapped).
template <class T>
struct TempMap {
    std::map<void*, T*> items;
    ~TempMap() { Clear(); }
    void Clear() {
        for (auto& entry : items) {
            entry.second->Detach();
            delete entry.second;
        }
        items.clear();
    }
    template <class H>
    T* Get(H handle, void (*attach)(T&, H)) {
        if (!handle) return nullptr;
        T*& slot = items[(void*)handle];
        if (!slot) {
            slot = new T();
            attach(*slot, handle);
        }
        return slot;
    }
};

std::mutex g_tempLock;
TempMap<CGdiObject> g_tempObjects;
TempMap<CFont> g_tempFonts;
TempMap<CBitmap> g_tempBitmaps;
TempMap<CPen> g_tempPens;
TempMap<CBrush> g_tempBrushes;
TempMap<CDC> g_tempDCs;

}  // namespace

// ---------------------------------------------------------------------------------------
// CGdiObject, CFont, CBitmap

CGdiObject::~CGdiObject() { DeleteObject(); }

BOOL CGdiObject::Attach(HGDIOBJ hObject) {
    if (m_hObject || !hObject) return FALSE;
    m_hObject = hObject;
    return TRUE;
}

HGDIOBJ CGdiObject::Detach() {
    HGDIOBJ h = m_hObject;
    m_hObject = nullptr;
    return h;
}

BOOL CGdiObject::DeleteObject() {
    if (!m_hObject) return FALSE;
    return plat::GdiDeleteObject(Detach());
}

CGdiObject* CGdiObject::FromHandle(HGDIOBJ hObject) {
    std::lock_guard<std::mutex> lock(g_tempLock);
    return g_tempObjects.Get<HGDIOBJ>(hObject, [](CGdiObject& o, HGDIOBJ h) { o.m_hObject = h; });
}

void CGdiObject::DeleteTempMap() {
    std::lock_guard<std::mutex> lock(g_tempLock);
    g_tempObjects.Clear();
    g_tempFonts.Clear();
    g_tempBitmaps.Clear();
    g_tempPens.Clear();
    g_tempBrushes.Clear();
}

CFont* CFont::FromHandle(HFONT hFont) {
    std::lock_guard<std::mutex> lock(g_tempLock);
    return g_tempFonts.Get<HFONT>(hFont, [](CFont& o, HFONT h) { o.m_hObject = h; });
}

BOOL CFont::CreateFontIndirect(const LOGFONTA* lpLogFont) {
    if (m_hObject || !lpLogFont) return FALSE;
    return Attach(plat::GdiCreateFontIndirect(lpLogFont));
}

BOOL CFont::CreateFont(int nHeight, int nWidth, int nEscapement, int nOrientation, int nWeight, BYTE bItalic,
                       BYTE bUnderline, BYTE cStrikeOut, BYTE nCharSet, BYTE nOutPrecision, BYTE nClipPrecision,
                       BYTE nQuality, BYTE nPitchAndFamily, LPCTSTR lpszFacename) {
    LOGFONTA lf{};
    lf.lfHeight = nHeight;
    lf.lfWidth = nWidth;
    lf.lfEscapement = nEscapement;
    lf.lfOrientation = nOrientation;
    lf.lfWeight = nWeight;
    lf.lfItalic = bItalic;
    lf.lfUnderline = bUnderline;
    lf.lfStrikeOut = cStrikeOut;
    lf.lfCharSet = nCharSet;
    lf.lfOutPrecision = nOutPrecision;
    lf.lfClipPrecision = nClipPrecision;
    lf.lfQuality = nQuality;
    lf.lfPitchAndFamily = nPitchAndFamily;
    // A face name longer than the field is cut, as the framework's copy does.
    if (lpszFacename) std::strncpy(lf.lfFaceName, lpszFacename, LF_FACESIZE - 1);
    return CreateFontIndirect(&lf);
}

BOOL CFont::CreatePointFont(int nPointSize, LPCTSTR lpszFaceName, CDC* pDC) {
    HDC hdc = pDC && pDC->m_hAttribDC ? pDC->m_hAttribDC : plat::GdiGetScreenDC();
    int logPixels = plat::GdiGetDeviceCaps(hdc, LOGPIXELSY);
    if (!(pDC && pDC->m_hAttribDC)) plat::GdiReleaseScreenDC(hdc);
    LOGFONTA lf{};
    lf.lfHeight = -MulDiv(nPointSize, logPixels, 720);
    lf.lfWeight = FW_NORMAL;
    lf.lfCharSet = DEFAULT_CHARSET;
    if (lpszFaceName) std::strncpy(lf.lfFaceName, lpszFaceName, LF_FACESIZE - 1);
    return CreateFontIndirect(&lf);
}

int CFont::GetLogFont(LOGFONTA* pLogFont) { return plat::GdiGetFontObject((HFONT)m_hObject, pLogFont); }

CBitmap* CBitmap::FromHandle(HBITMAP hBitmap) {
    std::lock_guard<std::mutex> lock(g_tempLock);
    return g_tempBitmaps.Get<HBITMAP>(hBitmap, [](CBitmap& o, HBITMAP h) { o.m_hObject = h; });
}

BOOL CBitmap::CreateCompatibleBitmap(CDC* pDC, int nWidth, int nHeight) {
    if (m_hObject || !pDC) return FALSE;
    return Attach(plat::GdiCreateCompatibleBitmap(pDC->m_hDC, nWidth, nHeight));
}

CPen* CPen::FromHandle(HPEN hPen) {
    std::lock_guard<std::mutex> lock(g_tempLock);
    return g_tempPens.Get<HPEN>(hPen, [](CPen& o, HPEN h) { o.m_hObject = h; });
}

BOOL CPen::CreatePen(int nPenStyle, int nWidth, COLORREF crColor) {
    if (m_hObject) return FALSE;
    return Attach(plat::GdiCreatePen(nPenStyle, nWidth, crColor));
}

CBrush* CBrush::FromHandle(HBRUSH hBrush) {
    std::lock_guard<std::mutex> lock(g_tempLock);
    return g_tempBrushes.Get<HBRUSH>(hBrush, [](CBrush& o, HBRUSH h) { o.m_hObject = h; });
}

BOOL CBrush::CreateSolidBrush(COLORREF crColor) {
    if (m_hObject) return FALSE;
    return Attach(plat::GdiCreateSolidBrush(crColor));
}

// ---------------------------------------------------------------------------------------
// CDC

CDC::~CDC() {
    if (m_hDC) plat::GdiDeleteDC(Detach());
}

CDC* CDC::FromHandle(HDC hDC) {
    std::lock_guard<std::mutex> lock(g_tempLock);
    return g_tempDCs.Get<HDC>(hDC, [](CDC& o, HDC h) { o.m_hDC = o.m_hAttribDC = h; });
}

void CDC::DeleteTempMap() {
    std::lock_guard<std::mutex> lock(g_tempLock);
    g_tempDCs.Clear();
}

BOOL CDC::Attach(HDC hDC) {
    if (m_hDC || !hDC) return FALSE;
    m_hDC = m_hAttribDC = hDC;
    return TRUE;
}

HDC CDC::Detach() {
    HDC h = m_hDC;
    m_hDC = m_hAttribDC = nullptr;
    return h;
}

BOOL CDC::CreateDC(LPCTSTR lpszDriverName, LPCTSTR, LPCTSTR, const void*) {
    if (m_hDC || !lpszDriverName) return FALSE;
    CString driver(lpszDriverName);
    if (driver.CompareNoCase("DISPLAY") != 0) return FALSE;
    return Attach(plat::GdiCreateDisplayDC());
}

BOOL CDC::CreateCompatibleDC(CDC* pDC) {
    if (m_hDC) return FALSE;
    return Attach(plat::GdiCreateCompatibleDC(pDC ? pDC->m_hDC : nullptr));
}

BOOL CDC::DeleteDC() {
    if (!m_hDC) return FALSE;
    return plat::GdiDeleteDC(Detach());
}

CFont* CDC::SelectObject(CFont* pFont) {
    if (!pFont) return nullptr;
    return CFont::FromHandle((HFONT)plat::GdiSelectObject(m_hDC, pFont->m_hObject));
}

CBitmap* CDC::SelectObject(CBitmap* pBitmap) {
    if (!pBitmap) return nullptr;
    return CBitmap::FromHandle((HBITMAP)plat::GdiSelectObject(m_hDC, pBitmap->m_hObject));
}

CPen* CDC::SelectObject(CPen* pPen) {
    if (!pPen) return nullptr;
    return CPen::FromHandle((HPEN)plat::GdiSelectObject(m_hDC, pPen->m_hObject));
}

CBrush* CDC::SelectObject(CBrush* pBrush) {
    if (!pBrush) return nullptr;
    return CBrush::FromHandle((HBRUSH)plat::GdiSelectObject(m_hDC, pBrush->m_hObject));
}

CPoint CDC::MoveTo(int x, int y) {
    POINT old{0, 0};
    plat::GdiMoveToEx(m_hDC, x, y, &old);
    return CPoint(old.x, old.y);
}

BOOL CDC::LineTo(int x, int y) { return plat::GdiLineTo(m_hDC, x, y); }
BOOL CDC::Polygon(const POINT* lpPoints, int nCount) { return plat::GdiPolygon(m_hDC, lpPoints, nCount); }
COLORREF CDC::SetBkColor(COLORREF crColor) { return plat::GdiSetBkColor(m_hDC, crColor); }
COLORREF CDC::GetBkColor() const { return plat::GdiGetBkColor(m_hAttribDC); }

int CDC::GetMapMode() const { return plat::GdiGetMapMode(m_hAttribDC); }
int CDC::SetMapMode(int nMapMode) { return plat::GdiSetMapMode(m_hDC, nMapMode); }

CSize CDC::GetWindowExt() const {
    SIZE size{0, 0};
    plat::GdiGetWindowExt(m_hAttribDC, &size);
    return CSize(size.cx, size.cy);
}

CSize CDC::GetViewportExt() const {
    SIZE size{0, 0};
    plat::GdiGetViewportExt(m_hAttribDC, &size);
    return CSize(size.cx, size.cy);
}

void CDC::LPtoDP(LPSIZE lpSize) const {
    CSize win = GetWindowExt(), vp = GetViewportExt();
    lpSize->cx = MulDiv(lpSize->cx, std::abs((int)vp.cx), std::abs((int)win.cx));
    lpSize->cy = MulDiv(lpSize->cy, std::abs((int)vp.cy), std::abs((int)win.cy));
}

void CDC::DPtoLP(LPSIZE lpSize) const {
    CSize win = GetWindowExt(), vp = GetViewportExt();
    lpSize->cx = MulDiv(lpSize->cx, std::abs((int)win.cx), std::abs((int)vp.cx));
    lpSize->cy = MulDiv(lpSize->cy, std::abs((int)win.cy), std::abs((int)vp.cy));
}

namespace {
constexpr int kHimetricInch = 2540;  // HIMETRIC units (0.01 mm) per inch
}

void CDC::HIMETRICtoDP(LPSIZE lpSize) const {
    int mode = GetMapMode();
    if (mode < MM_ISOTROPIC && mode != MM_TEXT) {
        // The fixed modes: let the context convert through MM_HIMETRIC.
        CDC* self = const_cast<CDC*>(this);
        self->SetMapMode(MM_HIMETRIC);
        LPtoDP(lpSize);
        self->SetMapMode(mode);
    } else {
        lpSize->cx = MulDiv(lpSize->cx, GetDeviceCaps(LOGPIXELSX), kHimetricInch);
        lpSize->cy = MulDiv(lpSize->cy, GetDeviceCaps(LOGPIXELSY), kHimetricInch);
    }
}

void CDC::DPtoHIMETRIC(LPSIZE lpSize) const {
    int mode = GetMapMode();
    if (mode < MM_ISOTROPIC && mode != MM_TEXT) {
        CDC* self = const_cast<CDC*>(this);
        self->SetMapMode(MM_HIMETRIC);
        DPtoLP(lpSize);
        self->SetMapMode(mode);
    } else {
        lpSize->cx = MulDiv(lpSize->cx, kHimetricInch, GetDeviceCaps(LOGPIXELSX));
        lpSize->cy = MulDiv(lpSize->cy, kHimetricInch, GetDeviceCaps(LOGPIXELSY));
    }
}

void CDC::HIMETRICtoLP(LPSIZE lpSize) const {
    HIMETRICtoDP(lpSize);
    DPtoLP(lpSize);
}

void CDC::LPtoHIMETRIC(LPSIZE lpSize) const {
    LPtoDP(lpSize);
    DPtoHIMETRIC(lpSize);
}

CGdiObject* CDC::SelectStockObject(int nIndex) {
    HGDIOBJ stock = plat::GdiGetStockObject(nIndex);
    if (!stock) return nullptr;
    return CGdiObject::FromHandle(plat::GdiSelectObject(m_hDC, stock));
}

int CDC::GetDeviceCaps(int nIndex) const { return plat::GdiGetDeviceCaps(m_hAttribDC, nIndex); }

CSize CDC::GetTextExtent(LPCTSTR lpszString, int nCount) const {
    SIZE size{0, 0};
    plat::GdiGetTextExtentPoint32(m_hAttribDC, lpszString, nCount, &size);
    return CSize(size);
}

CSize CDC::GetTextExtent(const CString& str) const { return GetTextExtent(str.GetString(), str.GetLength()); }

CSize CDC::GetTabbedTextExtent(LPCTSTR lpszString, int nCount, int nTabPositions, LPINT lpnTabStopPositions) const {
    DWORD e = plat::GdiGetTabbedTextExtent(m_hAttribDC, lpszString, nCount, nTabPositions, lpnTabStopPositions);
    return CSize(LOWORD(e), HIWORD(e));
}

CSize CDC::GetTabbedTextExtent(const CString& str, int nTabPositions, LPINT lpnTabStopPositions) const {
    return GetTabbedTextExtent(str.GetString(), str.GetLength(), nTabPositions, lpnTabStopPositions);
}

BOOL CDC::GetCharWidth(UINT nFirstChar, UINT nLastChar, LPINT lpBuffer) const {
    return plat::GdiGetCharWidth(m_hAttribDC, nFirstChar, nLastChar, lpBuffer);
}

BOOL CDC::GetTextMetrics(LPTEXTMETRICA lpMetrics) const { return plat::GdiGetTextMetrics(m_hAttribDC, lpMetrics); }

int CDC::SetStretchBltMode(int nStretchMode) { return plat::GdiSetStretchBltMode(m_hDC, nStretchMode); }
int CDC::GetStretchBltMode() const { return plat::GdiGetStretchBltMode(m_hAttribDC); }
COLORREF CDC::GetPixel(int x, int y) const { return plat::GdiGetPixel(m_hDC, x, y); }
COLORREF CDC::SetPixel(int x, int y, COLORREF crColor) { return plat::GdiSetPixel(m_hDC, x, y, crColor); }
void CDC::FillSolidRect(LPCRECT lpRect, COLORREF clr) { plat::GdiFillSolidRect(m_hDC, lpRect, clr); }

void CDC::FillSolidRect(int x, int y, int cx, int cy, COLORREF clr) {
    CRect r(CPoint(x, y), CSize(cx, cy));
    plat::GdiFillSolidRect(m_hDC, &r, clr);
}

BOOL CDC::BitBlt(int x, int y, int nWidth, int nHeight, CDC* pSrcDC, int xSrc, int ySrc, DWORD dwRop) {
    return plat::GdiBitBlt(m_hDC, x, y, nWidth, nHeight, pSrcDC ? pSrcDC->m_hDC : nullptr, xSrc, ySrc, dwRop);
}

BOOL CDC::StretchBlt(int x, int y, int nWidth, int nHeight, CDC* pSrcDC, int xSrc, int ySrc, int nSrcWidth,
                     int nSrcHeight, DWORD dwRop) {
    return plat::GdiStretchBlt(m_hDC, x, y, nWidth, nHeight, pSrcDC ? pSrcDC->m_hDC : nullptr, xSrc, ySrc, nSrcWidth,
                               nSrcHeight, dwRop);
}

// ---------------------------------------------------------------------------------------
// CClientDC, CWindowDC

CClientDC::CClientDC(CWnd* pWnd) : CClientDC(pWnd, false) {}

CClientDC::CClientDC(CWnd* pWnd, bool wholeWindow) : m_hWnd(pWnd ? pWnd->GetSafeHwnd() : nullptr) {
    Attach(plat::GdiGetDC(m_hWnd, wholeWindow));
}

CClientDC::~CClientDC() {
    if (m_hDC) plat::GdiReleaseDC(m_hWnd, Detach());
}
