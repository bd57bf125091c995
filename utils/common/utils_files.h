// File helpers of the "utils" module.
#pragma once

#include "utils/framework/export.h"

// True when the operating system reports attributes for the path (files and folders alike).
MFCQMUTILS_API bool FileExists(const char* lpszFileSpec);
