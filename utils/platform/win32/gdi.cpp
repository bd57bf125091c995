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
