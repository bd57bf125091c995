#include "utils/platform/shellcolor.h"

#include <windows.h>
#include <shlwapi.h>

namespace qm::platform {

bool ShellColorRGBToHLS(COLORREF clr, WORD* hue, WORD* luminance, WORD* saturation) {
    ColorRGBToHLS(clr, hue, luminance, saturation);
    return true;
}

bool ShellColorHLSToRGB(WORD hue, WORD luminance, WORD saturation, COLORREF* clr) {
    *clr = ColorHLSToRGB(hue, luminance, saturation);
    return true;
}

}  // namespace qm::platform
