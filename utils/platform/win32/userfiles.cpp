#include "utils/platform/userfiles.h"

#include <shlobj.h>
#include <sys/stat.h>
#include <sys/types.h>

namespace qm::platform {

bool QueryFileStatus(const char* path, std::int64_t* modified, std::uint64_t* size) {
    struct _stat64 st;
    if (!path || _stat64(path, &st) != 0) return false;
    if (modified) *modified = st.st_mtime;
    if (size) *size = (std::uint64_t)st.st_size;
    return true;
}

bool HasUnicodeSignature(const void* data, int size) {
    INT tests = IS_TEXT_UNICODE_SIGNATURE;
    return data && size > 0 && IsTextUnicode(data, size, &tests);
}

int UnicodeToAnsi(const std::uint16_t* text, int count, char* out, int outSize) {
    return WideCharToMultiByte(CP_ACP, 0, reinterpret_cast<LPCWCH>(text), count, out, outSize, nullptr, nullptr);
}

HRESULT GetDocumentsFolder(char* path) { return SHGetFolderPathA(nullptr, CSIDL_PERSONAL, nullptr, 0, path); }

DWORD GetExecutableFileName(char* buffer, DWORD size) { return GetModuleFileNameA(nullptr, buffer, size); }

}  // namespace qm::platform
