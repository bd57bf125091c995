#include "utils/platform/resources.h"

namespace qm::platform {

int LoadHostModuleString(UINT nID, char* buf, int bufSize) {
    if (!buf || bufSize <= 0) return 0;
    buf[0] = 0;
    return LoadStringA(GetModuleHandleA(nullptr), nID, buf, bufSize);
}

}  // namespace qm::platform
