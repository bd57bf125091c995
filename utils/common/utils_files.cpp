#include "utils/common/utils_files.h"

#include "utils/common/CVLogger.h"
#include "utils/platform/files.h"

#define QM_SOURCE_MODULE "Common\\utils"

bool FileExists(const char* lpszFileSpec) {
    if (!CVASSERT(NULL != lpszFileSpec)) return false;
    return qm::platform::FileGetAttributes(lpszFileSpec) != INVALID_FILE_ATTRIBUTES;
}
