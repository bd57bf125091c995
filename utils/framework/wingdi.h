// Bitmap structures and constants of the Windows graphics interface, as device-independent
// bitmaps use them: BITMAPFILEHEADER (14 bytes, packed on 2), BITMAPINFOHEADER (40 bytes),
// RGBQUAD, BITMAPINFO and the BI_* compressions. On Windows they come from <windows.h>.
// COLORREF and RGB/GetRValue/GetGValue/GetBValue are in wintypes.h.
#pragma once

#include "utils/framework/wintypes.h"

#if !defined(_WIN32)

#pragma pack(push, 2)
struct BITMAPFILEHEADER {
    WORD bfType;
    DWORD bfSize;
    WORD bfReserved1;
    WORD bfReserved2;
    DWORD bfOffBits;
};
#pragma pack(pop)

struct BITMAPINFOHEADER {
    DWORD biSize;
    LONG biWidth;
    LONG biHeight;
    WORD biPlanes;
    WORD biBitCount;
    DWORD biCompression;
    DWORD biSizeImage;
    LONG biXPelsPerMeter;
    LONG biYPelsPerMeter;
    DWORD biClrUsed;
    DWORD biClrImportant;
};
typedef BITMAPINFOHEADER* LPBITMAPINFOHEADER;

struct RGBQUAD {
    BYTE rgbBlue;
    BYTE rgbGreen;
    BYTE rgbRed;
    BYTE rgbReserved;
};

struct BITMAPINFO {
    BITMAPINFOHEADER bmiHeader;
    RGBQUAD bmiColors[1];
};
typedef BITMAPINFO* LPBITMAPINFO;

#define BI_RGB 0L
#define BI_RLE8 1L
#define BI_RLE4 2L
#define BI_BITFIELDS 3L
#define BI_JPEG 4L
#define BI_PNG 5L

#endif  // !_WIN32

static_assert(sizeof(BITMAPFILEHEADER) == 14, "packed file header");
static_assert(sizeof(BITMAPINFOHEADER) == 40, "info header");
static_assert(sizeof(RGBQUAD) == 4, "colour table entry");
