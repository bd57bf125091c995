#include "utils/platform/metafile.h"

#include <cstdint>
#include <cstring>
#include <mutex>
#include <unordered_set>
#include <vector>

namespace qm::platform {

namespace {

// A metafile handle: a copy of the metafile's bytes (8-byte aligned, as a record view needs).
struct Metafile {
    std::vector<std::uint64_t> storage;
    std::size_t size = 0;
    const BYTE* Bytes() const { return (const BYTE*)storage.data(); }
};

std::mutex g_lock;
std::unordered_set<Metafile*> g_metafiles;

}  // namespace

HMETAFILE MetafileFromBits(UINT size, const BYTE* data) {
    if (!MetafileHeaderValid(data, size)) return nullptr;
    auto* m = new Metafile;
    m->storage.resize((size + 7) / 8 + 1, 0);
    std::memcpy(m->storage.data(), data, size);
    m->size = size;
    std::lock_guard<std::mutex> lock(g_lock);
    g_metafiles.insert(m);
    return m;
}

BOOL MetafileDelete(HMETAFILE hmf) {
    std::lock_guard<std::mutex> lock(g_lock);
    auto it = g_metafiles.find((Metafile*)hmf);
    if (it == g_metafiles.end()) return FALSE;
    delete *it;
    g_metafiles.erase(it);
    return TRUE;
}

namespace {

Metafile* Find(HMETAFILE hmf) {
    std::lock_guard<std::mutex> lock(g_lock);
    auto it = g_metafiles.find((Metafile*)hmf);
    return it == g_metafiles.end() ? nullptr : *it;
}

}  // namespace

bool MetafileBits(HMETAFILE hmf, std::vector<BYTE>& bytes) {
    Metafile* m = Find(hmf);
    if (!m) return false;
    bytes.assign(m->Bytes(), m->Bytes() + m->size);
    return true;
}

bool MetafileEnumRecords(HDC, HMETAFILE hmf, const std::vector<std::size_t>& recordSizes, MetafileRecordProc proc,
                         void* context) {
    Metafile* m = Find(hmf);
    if (!m) return false;
    std::size_t offset = 18;
    for (std::size_t bytes : recordSizes) {
        if (bytes > m->size - offset) break;  // sizes that do not fit these bytes are never followed
        if (!proc((const METARECORD*)(m->Bytes() + offset), bytes, context)) break;
        offset += bytes;
    }
    return true;
}

}  // namespace qm::platform

namespace qm::platform {

// No system recorder here: the library writes the records in the Windows metafile format.
bool MetafileRecorderAvailable() { return false; }
HMETAFILE MetafileRecordDib(int, int, const BITMAPINFO*, const void*) { return nullptr; }

}  // namespace qm::platform
