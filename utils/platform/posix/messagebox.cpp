#include "utils/platform/messagebox.h"

#include <cstdio>

namespace qm::platform {

int DefaultMessageBox(const char* text, const char* caption, UINT type) {
    std::fprintf(stderr, "%s%s%s\n", caption, *caption ? ": " : "", text);
    std::fflush(stderr);
    return IDOK;
}

}  // namespace qm::platform
