// COM streams over a block of memory or a file, for the picture loaders. Windows:
// SHCreateMemStream and SHCreateStreamOnFileA. POSIX: a minimal IStream (Read, Write, Seek,
// SetSize, Stat; the other methods answer E_NOTIMPL) over memory; a file is read whole.
// The caller releases the stream with Release().
#pragma once

#include <cstddef>

#include "utils/framework/objidl.h"
#include "utils/framework/export.h"

namespace qm::platform {

// A read-write stream holding a copy of the bytes, positioned at 0. Null on failure.
MFCQMUTILS_API IStream* CreateMemoryStream(const void* data, size_t size);
// A read-only stream over the file. Null when it cannot be opened.
MFCQMUTILS_API IStream* OpenFileStream(const char* path);

}  // namespace qm::platform
