#include "utils/platform/resources.h"

namespace qm::platform {

int LoadHostModuleString(UINT, char* buf, int bufSize) {
    // POSIX modules carry no string table: every string comes from the string-resource source.
    if (buf && bufSize > 0) buf[0] = 0;
    return 0;
}

}  // namespace qm::platform
