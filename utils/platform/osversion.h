// The operating system's version record.
#pragma once

#include "utils/framework/wintypes.h"

namespace qm::platform {

// Fills info the way GetVersionExA does (the caller sets dwOSVersionInfoSize first); returns
// non-zero on success. POSIX fills the same record from the running kernel with platform id
// VER_PLATFORM_WIN32_NT.
BOOL QueryOSVersion(OSVERSIONINFOA* info);

}  // namespace qm::platform
