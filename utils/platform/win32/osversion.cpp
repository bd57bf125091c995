#include "utils/platform/osversion.h"

namespace qm::platform {

BOOL QueryOSVersion(OSVERSIONINFOA* info) {
#if defined(__GNUC__)
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wdeprecated-declarations"
#endif
    return GetVersionExA(info);
#if defined(__GNUC__)
#pragma GCC diagnostic pop
#endif
}

}  // namespace qm::platform
