#include "utils/platform/metafile.h"

#include <cstring>

namespace qm::platform {

namespace {
DWORD Dword(const BYTE* p) { return (DWORD)p[0] | ((DWORD)p[1] << 8) | ((DWORD)p[2] << 16) | ((DWORD)p[3] << 24); }
WORD Word(const BYTE* p) { return (WORD)(p[0] | (p[1] << 8)); }
}  // namespace

bool MetafileHeaderValid(const BYTE* data, std::size_t size) {
    if (!data || size < 18) return false;
    WORD type = Word(data), headerWords = Word(data + 2);
    return (type == 1 || type == 2) && headerWords == 9;
}

std::vector<std::size_t> MetafileRecordSizes(const BYTE* data, std::size_t size) {
    std::vector<std::size_t> sizes;
    if (!MetafileHeaderValid(data, size)) return sizes;
    // The metafile's own length (in words) limits the walk when it is shorter than the bytes.
    std::size_t total = (std::size_t)Dword(data + 6) * 2;
    if (total == 0 || total > size) total = size;
    std::size_t offset = 18;
    while (offset + 6 <= total) {
        std::size_t bytes = (std::size_t)Dword(data + offset) * 2;
        WORD function = Word(data + offset + 4);
        if (function == 0 /* the end record */ || bytes < 6 || bytes > total - offset) break;
        sizes.push_back(bytes);
        offset += bytes;
    }
    return sizes;
}

}  // namespace qm::platform
