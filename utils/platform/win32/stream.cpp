#include "utils/platform/host.h"

#include <shlwapi.h>

namespace qm::platform {

IStream* CreateMemoryStream(const void* data, size_t size) {
    if (size > 0xFFFFFFFFu) return nullptr;
    return SHCreateMemStream(static_cast<const BYTE*>(data), (UINT)size);
}

IStream* OpenFileStream(const char* path) {
    IStream* stream = nullptr;
    if (!path || FAILED(SHCreateStreamOnFileA(path, STGM_READ | STGM_SHARE_DENY_WRITE, &stream))) return nullptr;
    return stream;
}

}  // namespace qm::platform
