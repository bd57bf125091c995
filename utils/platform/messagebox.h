// Message boxes. The library shows its messages through a replaceable service: by default a
// real message box on Windows (MessageBoxA, owned by no window) and one line on standard
// error on POSIX. A host or a test installs its own.
#pragma once

#include "utils/framework/winsys.h"
#include "utils/platform/host.h"

namespace qm::platform {


// The default service of the backend.
int DefaultMessageBox(const char* text, const char* caption, UINT type);

}  // namespace qm::platform
