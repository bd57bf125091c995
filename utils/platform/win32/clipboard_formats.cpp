#include "utils/platform/clipboard_formats.h"

#include <windows.h>

namespace qm::platform {

UINT ClipboardRegisterFormat(const char* name) {
    if (!name || !*name) return 0;
    return RegisterClipboardFormatA(name);
}

int ClipboardFormatName(UINT format, char* buffer, int bufferLength) {
    if (!buffer || bufferLength <= 0) return 0;
    buffer[0] = 0;
    return GetClipboardFormatNameA(format, buffer, bufferLength);
}

}  // namespace qm::platform
