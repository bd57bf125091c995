// Graphics device interface: device contexts for the screen and for memory, bitmaps, fonts,
// text measurement and pixel transfer, behind the framework's CDC, CBitmap and CFont.
//
// Win32 makes the gdi32/user32 calls of the same names. Elsewhere the backend keeps its own
// objects: a screen surface and memory bitmaps of 32-bit pixels, fonts measured with FreeType
// from DejaVu fonts (Sans by default, Sans Mono for fixed pitch or a fixed face, Serif for a
// roman face) at 96 logical pixels per inch, with GDI's rules for cell heights, integer
// advance widths and tab stops. Every handle is checked against the live objects, so a
// stale or made-up handle fails the call instead of being dereferenced.
#pragma once

#include "utils/framework/wingdc.h"
#include "utils/framework/wingdi.h"

namespace qm::platform {

// GetDC(NULL) / ReleaseDC(NULL, hdc): a device context on the whole screen.
HDC GdiGetScreenDC();
int GdiReleaseScreenDC(HDC hdc);
// GetDC / GetWindowDC / ReleaseDC for a window (null: the screen). Windows without a surface
// of their own (POSIX) give a context on the screen.
HDC GdiGetDC(HWND hwnd, bool wholeWindow);
int GdiReleaseDC(HWND hwnd, HDC hdc);
// CreateDCA("DISPLAY", ...): another device context on the screen, freed with GdiDeleteDC.
HDC GdiCreateDisplayDC();
// CreateCompatibleDC: a memory context (hdc null: compatible with the screen).
HDC GdiCreateCompatibleDC(HDC hdc);
BOOL GdiDeleteDC(HDC hdc);

HBITMAP GdiCreateCompatibleBitmap(HDC hdc, int cx, int cy);
HFONT GdiCreateFontIndirect(const LOGFONTA* lf);
HGDIOBJ GdiGetStockObject(int index);
HGDIOBJ GdiSelectObject(HDC hdc, HGDIOBJ obj);
BOOL GdiDeleteObject(HGDIOBJ obj);
// GetObjectA for a font: fills *lf and returns sizeof(LOGFONTA), 0 for anything else.
int GdiGetFontObject(HFONT font, LOGFONTA* lf);
// The width and height of a bitmap, false for anything that is not one.
bool GdiGetBitmapSize(HBITMAP bmp, SIZE* size);

// Text measurement on the selected font.
BOOL GdiGetTextExtentPoint32(HDC hdc, const char* text, int count, SIZE* size);
// GetTabbedTextExtentA: width in the low word, height in the high word (the width wraps at
// 16 bits, as the returned DWORD holds it).
DWORD GdiGetTabbedTextExtent(HDC hdc, const char* text, int count, int nTabPositions, const INT* tabStops);
BOOL GdiGetCharWidth(HDC hdc, UINT first, UINT last, INT* widths);
BOOL GdiGetTextMetrics(HDC hdc, TEXTMETRICA* tm);
int GdiGetDeviceCaps(HDC hdc, int index);

// Pixels, fills and transfers between contexts.
COLORREF GdiGetPixel(HDC hdc, int x, int y);
COLORREF GdiSetPixel(HDC hdc, int x, int y, COLORREF color);
// Fills a rectangle with one colour (what CDC::FillSolidRect does through ExtTextOut).
BOOL GdiFillSolidRect(HDC hdc, const RECT* rect, COLORREF color);
BOOL GdiBitBlt(HDC dst, int x, int y, int cx, int cy, HDC src, int xSrc, int ySrc, DWORD rop);
BOOL GdiStretchBlt(HDC dst, int x, int y, int cx, int cy, HDC src, int xSrc, int ySrc, int cxSrc, int cySrc,
                   DWORD rop);
int GdiSetStretchBltMode(HDC hdc, int mode);
int GdiGetStretchBltMode(HDC hdc);

// Device-independent bitmaps to and from a context, with gdi32's parameters and results:
// SetDIBitsToDevice and StretchDIBits give the number of scan lines drawn (0 on failure);
// GetDIBits with null bits fills the header (a zero bit count asks for the bitmap's own
// format), with bits copies rows start..start+lines-1 in the header's format and returns the
// number copied. The POSIX backend reads DIBs of 1, 4, 8, 16, 24 and 32 bits (BI_RGB and
// BI_BITFIELDS) and writes 16, 24 and 32 bits.
int GdiSetDIBitsToDevice(HDC hdc, int xDest, int yDest, DWORD w, DWORD h, int xSrc, int ySrc, UINT startScan,
                         UINT cLines, const void* bits, const BITMAPINFO* bmi, UINT colorUse);
int GdiStretchDIBits(HDC hdc, int xDest, int yDest, int destWidth, int destHeight, int xSrc, int ySrc, int srcWidth,
                     int srcHeight, const void* bits, const BITMAPINFO* bmi, UINT usage, DWORD rop);
int GdiGetDIBits(HDC hdc, HBITMAP bmp, UINT start, UINT cLines, void* bits, BITMAPINFO* bmi, UINT usage);

// Pens and brushes, lines and polygons. The POSIX backend draws cosmetic pens (PS_SOLID and
// PS_NULL; a pen wider than 1 puts a width x width square on every pixel of the line, at most
// 256 wide) and
// solid or null brushes; a new context has BLACK_PEN, WHITE_BRUSH and a white background.
// Lines leave out their last pixel, as GDI's do; Polygon fills the pixels inside the outline
// (even-odd rule, including the pixels on it) with the brush, then draws the closed outline
// with the pen.
HPEN GdiCreatePen(int style, int width, COLORREF color);
HBRUSH GdiCreateSolidBrush(COLORREF color);
BOOL GdiMoveToEx(HDC hdc, int x, int y, POINT* previous);
BOOL GdiLineTo(HDC hdc, int x, int y);
BOOL GdiPolygon(HDC hdc, const POINT* points, int count);
COLORREF GdiSetBkColor(HDC hdc, COLORREF color);
COLORREF GdiGetBkColor(HDC hdc);
// GetSysColor: POSIX answers the desktop's default 3-D and window colours.
DWORD GdiGetSysColor(int index);

// TransparentBlt: copies the source rectangle, leaving the destination unchanged where the
// source pixel has the key colour. POSIX copies without stretching: both sizes must agree.
BOOL GdiTransparentBlt(HDC dst, int x, int y, int cx, int cy, HDC src, int xSrc, int ySrc, int cxSrc, int cySrc,
                       COLORREF key);
// A whole DIB drawn at (x, y) through a colour key, straight from its rows.
BOOL GdiSetDIBitsTransparent(HDC hdc, int x, int y, const BITMAPINFO* bmi, const void* bits, COLORREF key);
// DrawState(DST_BITMAP | DSS_DISABLED) of a device bitmap at (x, y): pixels of the bitmap
// that are not white are painted in COLOR_3DHILIGHT one pixel right and down, then in
// COLOR_3DSHADOW in place; white pixels leave the destination unchanged.
BOOL GdiDrawDisabledBitmap(HDC hdc, HBITMAP bmp, int x, int y);
// DrawAnimatedRects(hwnd, IDANI_CAPTION, from, to); POSIX draws nothing and succeeds.
BOOL GdiDrawAnimatedRects(HWND hwnd, const RECT* from, const RECT* to);

// Mapping modes and extents. The POSIX contexts stay in MM_TEXT (SetMapMode to another mode
// gives 0) with window and viewport extents of 1 x 1.
int GdiSetMapMode(HDC hdc, int mode);
int GdiGetMapMode(HDC hdc);
BOOL GdiGetWindowExt(HDC hdc, SIZE* size);
BOOL GdiGetViewportExt(HDC hdc, SIZE* size);

// The Video for Windows DrawDib service: open a DrawDib context, draw a bottom-up DIB part
// (source coordinates from the top-left of the picture), close. Exported so that a host can
// open the context that CDIBitmap::Draw takes.
void* GdiDrawDibOpen();
BOOL GdiDrawDibClose(void* hdd);
BOOL GdiDrawDibDraw(void* hdd, HDC hdc, int xDst, int yDst, int dxDst, int dyDst,
                    const BITMAPINFOHEADER* lpbi, const void* lpBits, int xSrc, int ySrc, int dxSrc,
                    int dySrc, UINT wFlags);

}  // namespace qm::platform
