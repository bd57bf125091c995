#include "utils/platform/textcase.h"

#include <cstring>

#include "utils/framework/wintypes.h"

namespace qm::platform {

// CharLowerA works on a NUL-terminated string, so each NUL-separated piece is passed on its
// own; an embedded NUL or the buffer's final one ends every piece.
void LowerAnsiText(char* text, size_t length) {
    for (size_t at = 0; at < length; ++at) {
        const size_t piece = strnlen(text + at, length - at);
        if (piece > 0) CharLowerA(text + at);
        at += piece;
    }
}

}  // namespace qm::platform
