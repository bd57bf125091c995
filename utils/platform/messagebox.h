// Message boxes. The library shows its messages through a replaceable service: by default a
// real message box on Windows (MessageBoxA, owned by no window) and one line on standard
// error on POSIX. A host or a test installs its own.
#pragma once

#include "utils/framework/winsys.h"
#include "utils/framework/export.h"

namespace qm::platform {

// Shows text with the given styles (MB_OK ...); returns the button chosen (IDOK ...).
typedef int (*MessageBoxService)(const char* text, const char* caption, UINT type);

// Installs a service (nullptr restores the default); returns the one installed before.
MFCQMUTILS_API MessageBoxService SetMessageBoxService(MessageBoxService service);
// Shows a message through the installed service.
MFCQMUTILS_API int ShowMessageBox(const char* text, const char* caption, UINT type);

// The default service of the backend.
int DefaultMessageBox(const char* text, const char* caption, UINT type);

}  // namespace qm::platform
