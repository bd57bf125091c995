// Windows metafiles: a metafile handle over a metafile's bytes (SetMetaFileBitsEx /
// DeleteMetaFile), and the walk over its records (EnumMetaFile on a device context). The walk
// hands each record with the number of its bytes that lie inside the metafile, and stops at
// the end record, at a record shorter than its own header, or at one that would reach past
// the end, so that no record is read outside the metafile.
#pragma once

#include <cstddef>
#include <vector>

#include "utils/framework/winclipboard.h"

namespace qm::platform {

// Null when the bytes are not a metafile (no 18-byte header of 9 words, type 1 or 2).
HMETAFILE MetafileFromBits(UINT size, const BYTE* data);
BOOL MetafileDelete(HMETAFILE hmf);

// Returns false to stop the walk.
typedef bool (*MetafileRecordProc)(const METARECORD* record, std::size_t bytes, void* context);
// False when the handle is not a metafile.
bool MetafileEnumRecords(HDC hdc, HMETAFILE hmf, MetafileRecordProc proc, void* context);

// The byte length of each well-formed record of a metafile image, in order, up to the first
// record the walk above stops at (shared by both backends).
std::vector<std::size_t> MetafileRecordSizes(const BYTE* data, std::size_t size);
bool MetafileHeaderValid(const BYTE* data, std::size_t size);

}  // namespace qm::platform
