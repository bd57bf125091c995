// What the OleUtils module's files share, and the library's own computations that the tests
// compare with the system's (the shell's colour conversions on Windows).
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "utils/framework/wintypes.h"

namespace qm::oleutils {

// The shell's integer HLS model (0..240 for each component), computed without the shell.
// Components of HlsToRgb must be at most 240 (the public entries clamp them).
void RgbToHls(COLORREF clr, WORD* hue, WORD* luminance, WORD* saturation);
COLORREF HlsToRgb(WORD hue, WORD luminance, WORD saturation);

// The bytes of an in-memory metafile drawing a DIB (its header with colour table, `info`, and
// its rows) as one META_STRETCHDIB record over a window of w x h: what the system's metafile
// recorder writes for SetWindowOrgEx, SetWindowExtEx and StretchDIBits.
std::vector<BYTE> MetafileBytesForDib(int w, int h, const std::vector<BYTE>& info, const BYTE* bits,
                                      std::size_t bitsSize);

}  // namespace qm::oleutils
