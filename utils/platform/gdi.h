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
#include "utils/module/export.h"

namespace qm::platform {

// GetDC(NULL) / ReleaseDC(NULL, hdc): a device context on the whole screen.
HDC GdiGetScreenDC();
int GdiReleaseScreenDC(HDC hdc);
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

}  // namespace qm::platform
