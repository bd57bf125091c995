// Global memory blocks, clipboard formats and metafile pictures of the Windows API as the
// framework uses them. Windows takes them from <windows.h>; other targets get the same names,
// values and layouts here.
#pragma once

#include "utils/framework/wingdc.h"

#if !defined(_WIN32)

typedef void* HGLOBAL;
typedef void* HMETAFILE;
typedef std::size_t SIZE_T;

// Global memory allocation flags.
#define GMEM_FIXED 0x0000
#define GMEM_MOVEABLE 0x0002
#define GMEM_ZEROINIT 0x0040
#define GMEM_SHARE 0x2000
#define GMEM_DDESHARE 0x2000
#define GHND (GMEM_MOVEABLE | GMEM_ZEROINIT)
#define GPTR (GMEM_FIXED | GMEM_ZEROINIT)

// Standard clipboard formats.
#define CF_TEXT 1
#define CF_BITMAP 2
#define CF_METAFILEPICT 3
#define CF_OEMTEXT 7
#define CF_DIB 8
#define CF_UNICODETEXT 13
#define CF_ENHMETAFILE 14
#define CF_LOCALE 16
#define CF_DIBV5 17

// A metafile picture: mapping mode, extents and the metafile.
struct METAFILEPICT {
    LONG mm;
    LONG xExt;
    LONG yExt;
    HMETAFILE hMF;
};
typedef METAFILEPICT* LPMETAFILEPICT;

// One metafile record: its size in 16-bit words, its function number, its parameters.
struct METARECORD {
    DWORD rdSize;
    WORD rdFunction;
    WORD rdParm[1];
};
typedef METARECORD* LPMETARECORD;

struct HANDLETABLE {
    HGDIOBJ objectHandle[1];
};
typedef HANDLETABLE* LPHANDLETABLE;

#define CALLBACK
typedef int (*MFENUMPROC)(HDC hdc, HANDLETABLE* lpht, METARECORD* lpMR, int nObj, LPARAM param);

#define META_DIBBITBLT 0x0940
#define META_DIBSTRETCHBLT 0x0B41
#define META_STRETCHDIB 0x0F43

#endif  // !_WIN32
