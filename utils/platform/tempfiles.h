// Files the library makes for itself next to others: created exclusively, so that a name some
// other program (or user) chose first is never opened, truncated or followed as a link.
#pragma once

#include <cstdio>

#include "utils/framework/winfile.h"
#include "utils/module/export.h"

namespace qm::platform {

// Creates a new, empty file in `folder` (a Windows path) named as GetTempFileNameA names its
// files (the first three characters of `prefix`, a hexadecimal number, ".tmp") and opens it
// for writing in binary mode. The name is stored in `name` (MAX_PATH + 1 characters). On POSIX
// the file is opened with O_CREAT | O_EXCL | O_NOFOLLOW and mode 0600 by the same call that
// picks the name, so nothing that already exists is ever opened. nullptr on failure (the last
// error set, `name` empty).
MFCQMUTILS_API FILE* CreateTempFileStream(LPCSTR folder, LPCSTR prefix, LPSTR name);

}  // namespace qm::platform
