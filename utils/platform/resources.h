// Host module resources.
#pragma once

#include "utils/framework/wintypes.h"

namespace qm::platform {

// Copies string resource nID of the host module into buf (NUL-terminated); returns its
// length, or 0 when the host has no such string (always 0 where there is no string table).
int LoadHostModuleString(UINT nID, char* buf, int bufSize);

}  // namespace qm::platform
