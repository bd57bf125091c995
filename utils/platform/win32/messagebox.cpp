#include "utils/platform/messagebox.h"

namespace qm::platform {

int DefaultMessageBox(const char* text, const char* caption, UINT type) {
    return MessageBoxA(nullptr, text, caption, type);
}

}  // namespace qm::platform
