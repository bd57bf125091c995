// The framework's device contexts and drawing objects: CDC over an HDC (the screen or a
// memory context), CGdiObject with CFont and CBitmap. A C++ object owns its handle and
// deletes it with itself unless it was detached; FromHandle gives temporary, non-owning
// objects kept until DeleteTempMap, as the framework's handle maps do.
#pragma once

#include "utils/framework/CObject.h"
#include "utils/framework/CString.h"
#include "utils/framework/geometry.h"
#include "utils/framework/wingdc.h"

class CDC;
class CWnd;

class MFCQMUTILS_API CGdiObject : public CObject {
public:
    CGdiObject() = default;
    ~CGdiObject() override;
    CGdiObject(const CGdiObject&) = delete;
    CGdiObject& operator=(const CGdiObject&) = delete;

    BOOL Attach(HGDIOBJ hObject);
    HGDIOBJ Detach();
    BOOL DeleteObject();
    HGDIOBJ GetSafeHandle() const { return m_hObject; }
    operator HGDIOBJ() const { return m_hObject; }
    static CGdiObject* FromHandle(HGDIOBJ hObject);
    static void DeleteTempMap();

    HGDIOBJ m_hObject = nullptr;
};

class MFCQMUTILS_API CFont : public CGdiObject {
public:
    static CFont* FromHandle(HFONT hFont);
    BOOL CreateFontIndirect(const LOGFONTA* lpLogFont);
    BOOL CreateFont(int nHeight, int nWidth, int nEscapement, int nOrientation, int nWeight, BYTE bItalic,
                    BYTE bUnderline, BYTE cStrikeOut, BYTE nCharSet, BYTE nOutPrecision, BYTE nClipPrecision,
                    BYTE nQuality, BYTE nPitchAndFamily, LPCTSTR lpszFacename);
    // nPointSize in tenths of a point, converted with the context's (or the screen's)
    // vertical resolution.
    BOOL CreatePointFont(int nPointSize, LPCTSTR lpszFaceName, CDC* pDC = nullptr);
    int GetLogFont(LOGFONTA* pLogFont);
    operator HFONT() const { return (HFONT)m_hObject; }
};

class MFCQMUTILS_API CBitmap : public CGdiObject {
public:
    static CBitmap* FromHandle(HBITMAP hBitmap);
    BOOL CreateCompatibleBitmap(CDC* pDC, int nWidth, int nHeight);
    operator HBITMAP() const { return (HBITMAP)m_hObject; }
};

class MFCQMUTILS_API CPen : public CGdiObject {
public:
    CPen() = default;
    CPen(int nPenStyle, int nWidth, COLORREF crColor) { CreatePen(nPenStyle, nWidth, crColor); }
    static CPen* FromHandle(HPEN hPen);
    BOOL CreatePen(int nPenStyle, int nWidth, COLORREF crColor);
    operator HPEN() const { return (HPEN)m_hObject; }
};

class MFCQMUTILS_API CBrush : public CGdiObject {
public:
    CBrush() = default;
    explicit CBrush(COLORREF crColor) { CreateSolidBrush(crColor); }
    static CBrush* FromHandle(HBRUSH hBrush);
    BOOL CreateSolidBrush(COLORREF crColor);
    operator HBRUSH() const { return (HBRUSH)m_hObject; }
};

class MFCQMUTILS_API CDC : public CObject {
public:
    CDC() = default;
    // Deletes the context it holds (a context from GetDC belongs in a CWindowDC instead).
    ~CDC() override;
    CDC(const CDC&) = delete;
    CDC& operator=(const CDC&) = delete;

    HDC GetSafeHdc() const { return m_hDC; }
    operator HDC() const { return m_hDC; }
    static CDC* FromHandle(HDC hDC);
    static void DeleteTempMap();
    BOOL Attach(HDC hDC);
    HDC Detach();

    // Only the display driver ("DISPLAY") is known: a context on the screen.
    BOOL CreateDC(LPCTSTR lpszDriverName, LPCTSTR lpszDeviceName, LPCTSTR lpszOutput, const void* lpInitData);
    // A memory context compatible with pDC (null: with the screen).
    BOOL CreateCompatibleDC(CDC* pDC);
    BOOL DeleteDC();

    // Each returns the object it replaced (a temporary object), or null on failure.
    CFont* SelectObject(CFont* pFont);
    CBitmap* SelectObject(CBitmap* pBitmap);
    CPen* SelectObject(CPen* pPen);
    CBrush* SelectObject(CBrush* pBrush);
    CGdiObject* SelectStockObject(int nIndex);

    int GetDeviceCaps(int nIndex) const;
    CSize GetTextExtent(LPCTSTR lpszString, int nCount) const;
    CSize GetTextExtent(const CString& str) const;
    CSize GetTabbedTextExtent(LPCTSTR lpszString, int nCount, int nTabPositions, LPINT lpnTabStopPositions) const;
    CSize GetTabbedTextExtent(const CString& str, int nTabPositions, LPINT lpnTabStopPositions) const;
    BOOL GetCharWidth(UINT nFirstChar, UINT nLastChar, LPINT lpBuffer) const;
    BOOL GetTextMetrics(LPTEXTMETRICA lpMetrics) const;

    int SetStretchBltMode(int nStretchMode);
    int GetStretchBltMode() const;
    COLORREF GetPixel(int x, int y) const;
    COLORREF GetPixel(POINT point) const { return GetPixel(point.x, point.y); }
    COLORREF SetPixel(int x, int y, COLORREF crColor);
    void FillSolidRect(LPCRECT lpRect, COLORREF clr);
    void FillSolidRect(int x, int y, int cx, int cy, COLORREF clr);
    BOOL BitBlt(int x, int y, int nWidth, int nHeight, CDC* pSrcDC, int xSrc, int ySrc, DWORD dwRop);
    BOOL StretchBlt(int x, int y, int nWidth, int nHeight, CDC* pSrcDC, int xSrc, int ySrc, int nSrcWidth,
                    int nSrcHeight, DWORD dwRop);

    // Lines and polygons in the selected pen and brush.
    CPoint MoveTo(int x, int y);
    CPoint MoveTo(POINT point) { return MoveTo(point.x, point.y); }
    BOOL LineTo(int x, int y);
    BOOL LineTo(POINT point) { return LineTo(point.x, point.y); }
    BOOL Polygon(const POINT* lpPoints, int nCount);
    COLORREF SetBkColor(COLORREF crColor);
    COLORREF GetBkColor() const;

    // Mapping modes and the framework's HIMETRIC conversions of sizes. HIMETRICtoDP and
    // DPtoHIMETRIC go through MM_HIMETRIC for the fixed metric and English modes, and through
    // the logical inch (LOGPIXELSX/Y per 2540 HIMETRIC units) for MM_TEXT and the scalable modes.
    int GetMapMode() const;
    int SetMapMode(int nMapMode);
    CSize GetWindowExt() const;
    CSize GetViewportExt() const;
    void LPtoDP(LPSIZE lpSize) const;
    void DPtoLP(LPSIZE lpSize) const;
    void HIMETRICtoDP(LPSIZE lpSize) const;
    void DPtoHIMETRIC(LPSIZE lpSize) const;
    void HIMETRICtoLP(LPSIZE lpSize) const;
    void LPtoHIMETRIC(LPSIZE lpSize) const;

    HDC m_hDC = nullptr;
    HDC m_hAttribDC = nullptr;  // the same context: measuring and output are not split here
};

// A context on a window for the object's lifetime: its client area (CClientDC) or the whole
// window (CWindowDC); with no window, the screen. Released, not deleted, at the end.
class MFCQMUTILS_API CClientDC : public CDC {
public:
    explicit CClientDC(CWnd* pWnd);
    ~CClientDC() override;

protected:
    CClientDC(CWnd* pWnd, bool wholeWindow);
    HWND m_hWnd;
};

class MFCQMUTILS_API CWindowDC : public CClientDC {
public:
    explicit CWindowDC(CWnd* pWnd) : CClientDC(pWnd, true) {}
};
