// OLE helpers of the library: taking a bitmap out of a metafile picture.
#pragma once

#include "utils/common/DIB.h"
#include "utils/framework/CFile.h"
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
