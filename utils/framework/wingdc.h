// Device-context types of the Windows API as the framework uses them: GDI object handles,
// fonts and text metrics, device capabilities, stretch modes and raster operations. Windows
// takes them from <windows.h>; other targets get the same names, values and layouts here.
#pragma once

#include "utils/framework/wintypes.h"

#if !defined(_WIN32)

typedef void* HGDIOBJ;
typedef void* HBITMAP;
typedef void* HFONT;
typedef void* HBRUSH;
typedef void* HPEN;
typedef void* HPALETTE;
typedef int* LPINT;
typedef const int* LPCINT;

#define LF_FACESIZE 32

struct LOGFONTA {
    LONG lfHeight;
    LONG lfWidth;
    LONG lfEscapement;
    LONG lfOrientation;
    LONG lfWeight;
    BYTE lfItalic;
    BYTE lfUnderline;
    BYTE lfStrikeOut;
    BYTE lfCharSet;
    BYTE lfOutPrecision;
    BYTE lfClipPrecision;
    BYTE lfQuality;
    BYTE lfPitchAndFamily;
    CHAR lfFaceName[LF_FACESIZE];
};
typedef LOGFONTA LOGFONT;
typedef LOGFONTA* LPLOGFONTA;
typedef LOGFONTA* LPLOGFONT;

struct TEXTMETRICA {
    LONG tmHeight;
    LONG tmAscent;
    LONG tmDescent;
    LONG tmInternalLeading;
    LONG tmExternalLeading;
    LONG tmAveCharWidth;
    LONG tmMaxCharWidth;
    LONG tmWeight;
    LONG tmOverhang;
    LONG tmDigitizedAspectX;
    LONG tmDigitizedAspectY;
    BYTE tmFirstChar;
    BYTE tmLastChar;
    BYTE tmDefaultChar;
    BYTE tmBreakChar;
    BYTE tmItalic;
    BYTE tmUnderlined;
    BYTE tmStruckOut;
    BYTE tmPitchAndFamily;
    BYTE tmCharSet;
};
typedef TEXTMETRICA TEXTMETRIC;
typedef TEXTMETRICA* LPTEXTMETRICA;
typedef TEXTMETRICA* LPTEXTMETRIC;

// Font weights, character sets, precisions, qualities, pitches and families.
#define FW_DONTCARE 0
#define FW_THIN 100
#define FW_LIGHT 300
#define FW_NORMAL 400
#define FW_MEDIUM 500
#define FW_SEMIBOLD 600
#define FW_BOLD 700
#define FW_HEAVY 900
#define ANSI_CHARSET 0
#define DEFAULT_CHARSET 1
#define OUT_DEFAULT_PRECIS 0
#define OUT_TT_PRECIS 4
#define CLIP_DEFAULT_PRECIS 0
#define DEFAULT_QUALITY 0
#define ANTIALIASED_QUALITY 4
#define DEFAULT_PITCH 0
#define FIXED_PITCH 1
#define VARIABLE_PITCH 2
#define FF_DONTCARE 0x00
#define FF_ROMAN 0x10
#define FF_SWISS 0x20
#define FF_MODERN 0x30
#define FF_SCRIPT 0x40
#define FF_DECORATIVE 0x50
// tmPitchAndFamily bits; TMPF_FIXED_PITCH set means a VARIABLE pitch font, as in GDI.
#define TMPF_FIXED_PITCH 0x01
#define TMPF_VECTOR 0x02
#define TMPF_TRUETYPE 0x04
#define TMPF_DEVICE 0x08

// GetDeviceCaps indexes.
#define DRIVERVERSION 0
#define TECHNOLOGY 2
#define HORZSIZE 4
#define VERTSIZE 6
#define HORZRES 8
#define VERTRES 10
#define BITSPIXEL 12
#define PLANES 14
#define NUMCOLORS 24
#define RASTERCAPS 38
#define LOGPIXELSX 88
#define LOGPIXELSY 90
#define DT_RASDISPLAY 1
#define RC_BITBLT 1
#define RC_STRETCHBLT 0x0800
#define RC_DI_BITMAP 0x0080
#define RC_STRETCHDIB 0x2000

// Stretch modes.
#define BLACKONWHITE 1
#define WHITEONBLACK 2
#define COLORONCOLOR 3
#define HALFTONE 4
#define STRETCH_ANDSCANS BLACKONWHITE
#define STRETCH_ORSCANS WHITEONBLACK
#define STRETCH_DELETESCANS COLORONCOLOR
#define STRETCH_HALFTONE HALFTONE

// Raster operations (the ones the memory device context carries out).
#define SRCCOPY 0x00CC0020
#define SRCPAINT 0x00EE0086
#define SRCAND 0x008800C6
#define SRCINVERT 0x00660046
#define BLACKNESS 0x00000042
#define WHITENESS 0x00FF0062
#define NOTSRCCOPY 0x00330008

#define DIB_RGB_COLORS 0
#define DIB_PAL_COLORS 1
#define CLR_INVALID 0xFFFFFFFF
#define GDI_ERROR 0xFFFFFFFFL

// Stock objects.
#define SYSTEM_FONT 13
#define DEFAULT_GUI_FONT 17
#define ANSI_FIXED_FONT 11
#define ANSI_VAR_FONT 12

// Stock pens and brushes.
#define WHITE_BRUSH 0
#define BLACK_BRUSH 4
#define NULL_BRUSH 5
#define HOLLOW_BRUSH NULL_BRUSH
#define WHITE_PEN 6
#define BLACK_PEN 7
#define NULL_PEN 8

// Pen styles.
#define PS_SOLID 0
#define PS_NULL 5

// Mapping modes.
#define MM_TEXT 1
#define MM_LOMETRIC 2
#define MM_HIMETRIC 3
#define MM_LOENGLISH 4
#define MM_HIENGLISH 5
#define MM_TWIPS 6
#define MM_ISOTROPIC 7
#define MM_ANISOTROPIC 8

// DrawState: the kind of image and its state.
#define DST_BITMAP 0x0004
#define DSS_NORMAL 0x0000
#define DSS_DISABLED 0x0020

// DrawAnimatedRects: the caption animation.
#define IDANI_CAPTION 3

// System colours (GetSysColor).
#define COLOR_WINDOW 5
#define COLOR_WINDOWTEXT 8
#define COLOR_BTNFACE 15
#define COLOR_3DFACE COLOR_BTNFACE
#define COLOR_BTNSHADOW 16
#define COLOR_3DSHADOW COLOR_BTNSHADOW
#define COLOR_BTNHIGHLIGHT 20
#define COLOR_3DHILIGHT COLOR_BTNHIGHLIGHT
#define COLOR_3DHIGHLIGHT COLOR_BTNHIGHLIGHT
#define COLOR_3DDKSHADOW 21
#define COLOR_3DLIGHT 22

// a * b / c rounded to the nearest integer (halves away from zero), as kernel32's MulDiv:
// -1 when c is 0 or the result does not fit in 32 bits.
inline int MulDiv(int nNumber, int nNumerator, int nDenominator) {
    if (nDenominator == 0) return -1;
    long long p = (long long)nNumber * nNumerator;
    long long d = nDenominator;
    bool negative = (p < 0) != (d < 0);
    unsigned long long ap = p < 0 ? (unsigned long long)-p : (unsigned long long)p;
    unsigned long long ad = d < 0 ? (unsigned long long)-d : (unsigned long long)d;
    unsigned long long q = (ap + ad / 2) / ad;
    if (q > 0x7FFFFFFFull + (negative ? 1u : 0u)) return -1;
    return negative ? (int)-(long long)q : (int)q;
}

#endif  // !_WIN32
