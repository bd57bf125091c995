// OLE helpers of the library: taking a bitmap out of a metafile picture.
#pragma once

#include "utils/common/DIB.h"
#include "utils/framework/winclipboard.h"
#include "utils/framework/export.h"

// Makes `bitmap` from the first DIB that the metafile picture's records carry
// (META_DIBBITBLT with a source, META_DIBSTRETCHBLT, META_STRETCHDIB); the bitmap is emptied
// first. Returns non-zero when the bitmap holds a picture afterwards. A DIB that does not fit
// inside its record is not taken.
MFCQMUTILS_API int OleUIMetafilePictExtract(CDIBitmap& bitmap, METAFILEPICT* lpmfp);
