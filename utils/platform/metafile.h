// Windows metafiles: a metafile handle over a metafile's bytes (SetMetaFileBitsEx /
// DeleteMetaFile), its bytes (GetMetaFileBitsEx), and the enumeration of its records on a
// device context (EnumMetaFile). Where the records lie is the caller's reading of the bytes:
// the enumeration hands on only the records the caller found whole, each with its size, so
// that no record is read outside the metafile.
#pragma once

#include <cstddef>
#include <vector>

#include "utils/framework/winclipboard.h"
#include "utils/framework/wingdi.h"

namespace qm::platform {

// Null when the bytes are not a metafile (MetafileHeaderValid).
HMETAFILE MetafileFromBits(UINT size, const BYTE* data);
BOOL MetafileDelete(HMETAFILE hmf);
// The metafile's bytes; false when the handle is not a metafile.
bool MetafileBits(HMETAFILE hmf, std::vector<BYTE>& bytes);

// A metafile recorded by the system's metafile device context holding the DIB as one
// META_STRETCHDIB record over a window of w x h (CreateMetaFile, SetWindowOrgEx(0, 0),
// SetWindowExtEx(w, h), StretchDIBits, CloseMetaFile). Null where the system has no metafile
// recorder (the caller then writes the records itself) or on failure. bmi holds the header
// with biSizeImage set and the colour table or masks.
HMETAFILE MetafileRecordDib(int w, int h, const BITMAPINFO* bmi, const void* bits);
// True where MetafileRecordDib records with the system.
bool MetafileRecorderAvailable();

// Returns false to stop the walk.
typedef bool (*MetafileRecordProc)(const METARECORD* record, std::size_t bytes, void* context);
// Hands on the records in order, the first recordSizes.size() of them, each with its size in
// bytes (recordSizes, from the caller's walk of MetafileBits). False when the handle is not a
// metafile.
bool MetafileEnumRecords(HDC hdc, HMETAFILE hmf, const std::vector<std::size_t>& recordSizes,
                         MetafileRecordProc proc, void* context);

// An 18-byte header of 9 words, type 1 (in memory) or 2 (on disk), as the system requires of
// a metafile's bytes.
bool MetafileHeaderValid(const BYTE* data, std::size_t size);

}  // namespace qm::platform
