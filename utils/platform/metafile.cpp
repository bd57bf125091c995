#include "utils/platform/metafile.h"

namespace qm::platform {

namespace {
WORD Word(const BYTE* p) { return (WORD)(p[0] | (p[1] << 8)); }
}  // namespace

bool MetafileHeaderValid(const BYTE* data, std::size_t size) {
    if (!data || size < 18) return false;
    WORD type = Word(data), headerWords = Word(data + 2);
    return (type == 1 || type == 2) && headerWords == 9;
}

}  // namespace qm::platform
