#include "utils/platform/shellcolor.h"

namespace qm::platform {

// No shell here: the library's own conversion is the only one.
bool ShellColorRGBToHLS(COLORREF, WORD*, WORD*, WORD*) { return false; }
bool ShellColorHLSToRGB(WORD, WORD, WORD, COLORREF*) { return false; }

}  // namespace qm::platform
