// Files the library makes for itself on Windows: GetTempFileNameA creates the file (CREATE_NEW),
// so the name is never one that existed; it is then opened for writing.
#include "utils/platform/tempfiles.h"

#include "utils/platform/files.h"

namespace qm::platform {

FILE* CreateTempFileStream(LPCSTR folder, LPCSTR prefix, LPSTR name) {
    if (!folder || !prefix || !name) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return nullptr;
    }
    *name = '\0';
    if (!GetTempFileNameA(folder, prefix, 0, name)) return nullptr;
    FILE* file = OpenFileStream(name, "wb");
    if (!file) {
        DeleteFileA(name);
        *name = '\0';
    }
    return file;
}

}  // namespace qm::platform
