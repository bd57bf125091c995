// OLE helpers of the library: a bitmap out of a metafile picture and a metafile picture of a
// bitmap, object descriptors, FORMATETC and STGMEDIUM structures.
#pragma once

#include "utils/common/DIB.h"
#include "utils/framework/CFile.h"
#include "utils/framework/CString.h"
#include "utils/framework/objidl.h"
#include "utils/framework/winclipboard.h"
#include "utils/framework/export.h"

// Makes `bitmap` from the first DIB that the metafile picture's records carry
// (META_DIBBITBLT with a source, META_DIBSTRETCHBLT, META_STRETCHDIB); the bitmap is emptied
// first. Returns non-zero when the bitmap holds a picture afterwards. A DIB that does not fit
// inside its record is not taken.
MFCQMUTILS_API int OleUIMetafilePictExtract(CDIBitmap& bitmap, METAFILEPICT* lpmfp);

// ---- Metafile creation --------------------------------------------------------------------
// The inverse of the extraction above: a metafile that draws a bitmap as one META_STRETCHDIB
// record over a window of the bitmap's size (its DIB with biSizeImage and, for palettes,
// biClrUsed filled in, as other readers need).

// Fills *lpmfp with a picture of the bitmap: MM_ANISOTROPIC, extents in HIMETRIC from the
// bitmap's resolution (biXPelsPerMeter / biYPelsPerMeter, 96 dpi when not given) and a new
// metafile, which the caller deletes (or hands over with the picture to the clipboard). A
// bitmap wider or higher than 32767 pixels cannot be expressed (16-bit extents): reported,
// FALSE.
MFCQMUTILS_API int OleUIMetafilePictFromBitmap(const CDIBitmap& bitmap, METAFILEPICT* lpmfp);
// The same picture in a movable global block, ready for CF_METAFILEPICT; null on failure.
MFCQMUTILS_API HGLOBAL OleUIMetafilePictGlobalFromBitmap(const CDIBitmap& bitmap);
// Writes the bitmap as a placeable metafile file (.wmf): the 22-byte header (key, bounding
// box 0,0 to the bitmap's size, units per inch from its resolution or 96, checksum), then the
// metafile. FALSE (nothing written) when the picture cannot be made; file errors throw as
// CFile does.
MFCQMUTILS_API int OleUIMetafileWriteBitmap(const CDIBitmap& bitmap, CFile& file);
// Reads a metafile file, with or without the placeable header (its checksum is not
// required), and takes out its first DIB as OleUIMetafilePictExtract does. Files above
// 256 MiB are refused.
MFCQMUTILS_API int OleUIMetafileReadBitmap(CDIBitmap& bitmap, CFile& file);

// ---- Object descriptors ------------------------------------------------------------------
// The block that OLE data transfer offers under the "Object Descriptor" format: the 52-byte
// OBJECTDESCRIPTOR, then the full user type name and the source of copy as NUL-terminated
// UTF-16 strings. dwFullUserTypeName is 52 (0 without a type name); without a source (or with
// an empty one) the type name stands for it; cbSize counts the whole block. The strings are
// ANSI text here and become UTF-16 in the block.

// A movable global block the caller owns (GlobalFree, or the clipboard once handed over);
// null when out of memory.
MFCQMUTILS_API HGLOBAL OleCreateObjectDescriptor(REFCLSID clsid, DWORD dwDrawAspect, SIZEL sizel, POINTL pointl,
                                                DWORD dwStatus, LPCTSTR lpszFullUserTypeName,
                                                LPCTSTR lpszSrcOfCopy);
// Reads a descriptor block back: the fixed part and both strings (characters ANSI cannot hold
// become '?'). A block shorter than the fixed part, whose cbSize is below 52 or beyond the
// block, or whose offsets point outside it or to a string without its terminator inside it, is
// refused: 0, with od zeroed and both strings empty.
MFCQMUTILS_API BOOL OleReadObjectDescriptor(HGLOBAL hObjDesc, OBJECTDESCRIPTOR& od, CString& strFullUserTypeName,
                                            CString& strSrcOfCopy);
// The same over bytes in memory.
MFCQMUTILS_API BOOL OleParseObjectDescriptor(const void* pData, size_t nSize, OBJECTDESCRIPTOR& od,
                                             CString& strFullUserTypeName, CString& strSrcOfCopy);

// The clipboard format of descriptor blocks ("Object Descriptor", registered on first use).
MFCQMUTILS_API CLIPFORMAT OleObjectDescriptorFormat();
// RegisterClipboardFormat: the format number of a name (compared without case), at or above
// 0xC000; 0 for a null or empty name.
MFCQMUTILS_API CLIPFORMAT OleRegisterClipboardFormat(LPCTSTR lpszFormatName);

// ---- Format structures -------------------------------------------------------------------
// A FORMATETC for a clipboard format: no target device, all of the data (lindex -1).
MFCQMUTILS_API void OleFillFormatEtc(FORMATETC& formatEtc, CLIPFORMAT cfFormat, DWORD tymed = TYMED_HGLOBAL,
                                     DWORD dwAspect = DVASPECT_CONTENT);
// A STGMEDIUM holding a global block, a stream or a storage, with no pUnkForRelease: the
// medium owns what it holds, so OleReleaseStgMedium frees the block or releases the
// interface. Streams and storages are AddRef'ed here (the caller keeps its own reference).
// A null handle or interface gives an empty medium (TYMED_NULL) and an assertion report.
MFCQMUTILS_API void OleFillStgMedium(STGMEDIUM& medium, HGLOBAL hGlobal);
MFCQMUTILS_API void OleFillStgMedium(STGMEDIUM& medium, IStream* pStream);
MFCQMUTILS_API void OleFillStgMedium(STGMEDIUM& medium, IStorage* pStorage);
// ReleaseStgMedium: without pUnkForRelease the global block is freed, a metafile picture's
// metafile deleted with its block, a bitmap deleted, a file deleted and its name freed, a
// stream or storage released; with pUnkForRelease only the name is freed and the interface
// released, then pUnkForRelease is released. The medium is left empty (TYMED_NULL, null
// pointers), so releasing it twice does nothing the second time.
MFCQMUTILS_API void OleReleaseStgMedium(STGMEDIUM* pMedium);
