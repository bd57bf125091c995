#include "utils/platform/gdi.h"

#include <vfw.h>

namespace qm::platform {

HDC GdiGetScreenDC() { return GetDC(nullptr); }
int GdiReleaseScreenDC(HDC hdc) { return ReleaseDC(nullptr, hdc); }
HDC GdiGetDC(HWND hwnd, bool wholeWindow) { return wholeWindow ? GetWindowDC(hwnd) : GetDC(hwnd); }
int GdiReleaseDC(HWND hwnd, HDC hdc) { return ReleaseDC(hwnd, hdc); }
HDC GdiCreateDisplayDC() { return CreateDCA("DISPLAY", nullptr, nullptr, nullptr); }
HDC GdiCreateCompatibleDC(HDC hdc) { return CreateCompatibleDC(hdc); }
BOOL GdiDeleteDC(HDC hdc) { return DeleteDC(hdc); }

HBITMAP GdiCreateCompatibleBitmap(HDC hdc, int cx, int cy) { return CreateCompatibleBitmap(hdc, cx, cy); }
HFONT GdiCreateFontIndirect(const LOGFONTA* lf) { return lf ? CreateFontIndirectA(lf) : nullptr; }
HGDIOBJ GdiGetStockObject(int index) { return GetStockObject(index); }
HGDIOBJ GdiSelectObject(HDC hdc, HGDIOBJ obj) { return SelectObject(hdc, obj); }
BOOL GdiDeleteObject(HGDIOBJ obj) { return DeleteObject(obj); }

int GdiGetFontObject(HFONT font, LOGFONTA* lf) {
    if (!font || !lf || GetObjectType(font) != OBJ_FONT) return 0;
    return GetObjectA(font, sizeof(LOGFONTA), lf);
}

bool GdiGetBitmapSize(HBITMAP bmp, SIZE* size) {
    BITMAP bm{};
    if (!bmp || !size || GetObjectType(bmp) != OBJ_BITMAP || GetObjectA(bmp, sizeof bm, &bm) == 0) return false;
    size->cx = bm.bmWidth;
    size->cy = bm.bmHeight;
    return true;
}

BOOL GdiGetTextExtentPoint32(HDC hdc, const char* text, int count, SIZE* size) {
    return GetTextExtentPoint32A(hdc, text, count, size);
}

DWORD GdiGetTabbedTextExtent(HDC hdc, const char* text, int count, int nTabPositions, const INT* tabStops) {
    return GetTabbedTextExtentA(hdc, text, count, nTabPositions, tabStops);
}

BOOL GdiGetCharWidth(HDC hdc, UINT first, UINT last, INT* widths) { return GetCharWidthA(hdc, first, last, widths); }
BOOL GdiGetTextMetrics(HDC hdc, TEXTMETRICA* tm) { return GetTextMetricsA(hdc, tm); }
int GdiGetDeviceCaps(HDC hdc, int index) { return GetDeviceCaps(hdc, index); }

COLORREF GdiGetPixel(HDC hdc, int x, int y) { return GetPixel(hdc, x, y); }
COLORREF GdiSetPixel(HDC hdc, int x, int y, COLORREF color) { return SetPixel(hdc, x, y, color); }

BOOL GdiFillSolidRect(HDC hdc, const RECT* rect, COLORREF color) {
    if (!rect) return FALSE;
    COLORREF old = SetBkColor(hdc, color);
    BOOL ok = ExtTextOutA(hdc, 0, 0, ETO_OPAQUE, rect, nullptr, 0, nullptr);
    SetBkColor(hdc, old);
    return ok;
}

BOOL GdiBitBlt(HDC dst, int x, int y, int cx, int cy, HDC src, int xSrc, int ySrc, DWORD rop) {
    return BitBlt(dst, x, y, cx, cy, src, xSrc, ySrc, rop);
}

BOOL GdiStretchBlt(HDC dst, int x, int y, int cx, int cy, HDC src, int xSrc, int ySrc, int cxSrc, int cySrc,
                   DWORD rop) {
    return StretchBlt(dst, x, y, cx, cy, src, xSrc, ySrc, cxSrc, cySrc, rop);
}

int GdiSetStretchBltMode(HDC hdc, int mode) { return SetStretchBltMode(hdc, mode); }
int GdiGetStretchBltMode(HDC hdc) { return GetStretchBltMode(hdc); }

int GdiSetDIBitsToDevice(HDC hdc, int xDest, int yDest, DWORD w, DWORD h, int xSrc, int ySrc, UINT startScan,
                         UINT cLines, const void* bits, const BITMAPINFO* bmi, UINT colorUse) {
    return SetDIBitsToDevice(hdc, xDest, yDest, w, h, xSrc, ySrc, startScan, cLines, bits, bmi, colorUse);
}

int GdiStretchDIBits(HDC hdc, int xDest, int yDest, int destWidth, int destHeight, int xSrc, int ySrc, int srcWidth,
                     int srcHeight, const void* bits, const BITMAPINFO* bmi, UINT usage, DWORD rop) {
    return StretchDIBits(hdc, xDest, yDest, destWidth, destHeight, xSrc, ySrc, srcWidth, srcHeight, bits, bmi, usage,
                         rop);
}

int GdiGetDIBits(HDC hdc, HBITMAP bmp, UINT start, UINT cLines, void* bits, BITMAPINFO* bmi, UINT usage) {
    return GetDIBits(hdc, bmp, start, cLines, bits, bmi, usage);
}

void* GdiDrawDibOpen() { return (void*)DrawDibOpen(); }
BOOL GdiDrawDibClose(void* hdd) { return DrawDibClose((HDRAWDIB)hdd); }

BOOL GdiDrawDibDraw(void* hdd, HDC hdc, int xDst, int yDst, int dxDst, int dyDst, const BITMAPINFOHEADER* lpbi,
                    const void* lpBits, int xSrc, int ySrc, int dxSrc, int dySrc, UINT wFlags) {
    return DrawDibDraw((HDRAWDIB)hdd, hdc, xDst, yDst, dxDst, dyDst, (LPBITMAPINFOHEADER)lpbi, (LPVOID)lpBits, xSrc,
                       ySrc, dxSrc, dySrc, wFlags);
}

}  // namespace qm::platform

namespace qm::platform {

HPEN GdiCreatePen(int style, int width, COLORREF color) { return CreatePen(style, width, color); }
HBRUSH GdiCreateSolidBrush(COLORREF color) { return CreateSolidBrush(color); }
BOOL GdiMoveToEx(HDC hdc, int x, int y, POINT* previous) { return MoveToEx(hdc, x, y, previous); }
BOOL GdiLineTo(HDC hdc, int x, int y) { return LineTo(hdc, x, y); }
BOOL GdiPolygon(HDC hdc, const POINT* points, int count) { return Polygon(hdc, points, count); }
COLORREF GdiSetBkColor(HDC hdc, COLORREF color) { return SetBkColor(hdc, color); }
COLORREF GdiGetBkColor(HDC hdc) { return GetBkColor(hdc); }
DWORD GdiGetSysColor(int index) { return GetSysColor(index); }

BOOL GdiTransparentBlt(HDC dst, int x, int y, int cx, int cy, HDC src, int xSrc, int ySrc, int cxSrc, int cySrc,
                       COLORREF key) {
    return TransparentBlt(dst, x, y, cx, cy, src, xSrc, ySrc, cxSrc, cySrc, key);
}

BOOL GdiSetDIBitsTransparent(HDC hdc, int x, int y, const BITMAPINFO* bmi, const void* bits, COLORREF key) {
    if (!bmi || !bits) return FALSE;
    const int w = bmi->bmiHeader.biWidth, h = bmi->bmiHeader.biHeight < 0 ? -bmi->bmiHeader.biHeight : bmi->bmiHeader.biHeight;
    HDC mem = CreateCompatibleDC(hdc);
    if (!mem) return FALSE;
    // A 32-bit section holds any DIB's colours, whatever the target's own bitmap is.
    BITMAPINFO bi32{};
    bi32.bmiHeader.biSize = sizeof(BITMAPINFOHEADER);
    bi32.bmiHeader.biWidth = w;
    bi32.bmiHeader.biHeight = h;
    bi32.bmiHeader.biPlanes = 1;
    bi32.bmiHeader.biBitCount = 32;
    void* pixels = nullptr;
    HBITMAP bmp = CreateDIBSection(hdc, &bi32, DIB_RGB_COLORS, &pixels, nullptr, 0);
    BOOL ok = FALSE;
    if (bmp) {
        HGDIOBJ old = SelectObject(mem, bmp);
        if (SetDIBitsToDevice(mem, 0, 0, w, h, 0, 0, 0, h, bits, bmi, DIB_RGB_COLORS) > 0)
            ok = TransparentBlt(hdc, x, y, w, h, mem, 0, 0, w, h, key);
        SelectObject(mem, old);
        DeleteObject(bmp);
    }
    DeleteDC(mem);
    return ok;
}

BOOL GdiDrawDisabledBitmap(HDC hdc, HBITMAP bmp, int x, int y) {
    return DrawStateA(hdc, nullptr, nullptr, (LPARAM)bmp, 0, x, y, 0, 0, DST_BITMAP | DSS_DISABLED);
}

BOOL GdiDrawAnimatedRects(HWND hwnd, const RECT* from, const RECT* to) {
    return DrawAnimatedRects(hwnd, IDANI_CAPTION, from, to);
}

int GdiSetMapMode(HDC hdc, int mode) { return SetMapMode(hdc, mode); }
int GdiGetMapMode(HDC hdc) { return GetMapMode(hdc); }
BOOL GdiGetWindowExt(HDC hdc, SIZE* size) { return GetWindowExtEx(hdc, size); }
BOOL GdiGetViewportExt(HDC hdc, SIZE* size) { return GetViewportExtEx(hdc, size); }

}  // namespace qm::platform
