// The shell's colour-model conversions (shlwapi's ColorRGBToHLS / ColorHLSToRGB) where the
// system has them. Each returns false where it has none; the caller then computes the same
// numbers itself.
#pragma once

#include "utils/framework/wintypes.h"

namespace qm::platform {

bool ShellColorRGBToHLS(COLORREF clr, WORD* hue, WORD* luminance, WORD* saturation);
bool ShellColorHLSToRGB(WORD hue, WORD luminance, WORD saturation, COLORREF* clr);

}  // namespace qm::platform
