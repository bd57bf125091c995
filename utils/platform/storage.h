// Compound files (OLE structured storage) and the OLE medium services: a storage on disk or in
// memory with the system's IStorage/IStream interfaces, the bytes of a whole storage as a
// compound file and back, ReleaseStgMedium and the task allocator.
//
// Windows answers with ole32 (StgCreateDocfile, StgOpenStorage, storages on an HGLOBAL's lock
// bytes). POSIX keeps the element tree of a storage in memory, reads compound files with
// libgsf and writes the whole tree with libgsf at Commit of the root (and at the last Release
// of anything open in it when it changed): libgsf's writer streams its children out in order
// and cannot rewrite a stream already written, which an IStorage must allow. Element names
// are UTF-16 code units (one per OLECHAR), 1 to 31 of them, none of \ / : !, compared without
// case. Errors are the system's STG_E_* codes: a file that is not a compound file gives
// STG_E_FILEALREADYEXISTS, a damaged one STG_E_DOCFILECORRUPT or STG_E_READFAULT.
#pragma once

#include <cstddef>
#include <vector>

#include "utils/framework/objidl.h"

namespace qm::platform {

// A new compound file (replacing one that is there), open for reading and writing.
HRESULT StorageCreateOnFile(const char* path, IStorage** storage);
// An existing compound file, read-only or for reading and writing.
HRESULT StorageOpenOnFile(const char* path, bool writable, IStorage** storage);
// A new, empty storage in memory.
HRESULT StorageCreateInMemory(IStorage** storage);
// A storage in memory over a copy of compound-file bytes (read and write).
HRESULT StorageOpenOnBytes(const BYTE* data, std::size_t size, IStorage** storage);
// The compound-file bytes of a whole storage: its class id, substorages and streams.
HRESULT StorageSaveToBytes(IStorage* storage, std::vector<BYTE>& bytes);

// ReleaseStgMedium: frees what the medium holds by its tymed (or leaves that to
// pUnkForRelease), then sets tymed to TYMED_NULL and the pointers to null.
void MediumRelease(STGMEDIUM* medium);
// OleDuplicateData for global-memory formats: a new movable block with the same bytes; for
// CF_METAFILEPICT the metafile inside is duplicated too. Null when out of memory or when the
// handle is not a block.
HGLOBAL MediumDuplicateData(HGLOBAL block, CLIPFORMAT format);
// CoTaskMemAlloc / CoTaskMemFree.
void* TaskMemAlloc(std::size_t bytes);
void TaskMemFree(void* p);
// A task-memory copy of a null-terminated OLE string, for the receiver to free with
// TaskMemFree; null when out of memory.
inline LPOLESTR TaskStringCopy(LPCOLESTR text) {
    std::size_t length = 0;
    while (text[length]) ++length;
    auto* copy = static_cast<LPOLESTR>(TaskMemAlloc((length + 1) * sizeof(OLECHAR)));
    if (copy)
        for (std::size_t i = 0; i <= length; ++i) copy[i] = text[i];
    return copy;
}

}  // namespace qm::platform
