// qmutil color hls | rgb: colours between RGB and the 0..240 hue, luminance and saturation
// scale, as WndUtils converts them.
#include <cstdio>
#include <string>
#include <vector>

#include "command.h"
#include "utils/common/WndUtils.h"

namespace {

using qmutil::UsageError;

// "A,B,C" as three integers of 0..max each.
std::vector<int> Triple(const std::string& text, int max, const char* names) {
    std::vector<int> v;
    std::string::size_type start = 0;
    for (int i = 0; i < 3; ++i) {
        std::string::size_type comma = text.find(',', start);
        if ((i < 2) != (comma != std::string::npos))
            throw UsageError("'" + text + "' is not " + names + " (three numbers separated by commas)");
        std::string part = text.substr(start, i < 2 ? comma - start : std::string::npos);
        long n = qmutil::ParseLong(part, "component");
        if (n < 0 || n > max)
            throw UsageError("component '" + part + "' of '" + text + "' is outside 0.." + std::to_string(max));
        v.push_back((int)n);
        start = comma + 1;
    }
    return v;
}

int Hls(const std::vector<std::string>& args) {
    qmutil::RequireArgs(args, 1, "color hls R,G,B");
    std::vector<int> c = Triple(args[0], 255, "R,G,B");
    WORD h, l, s;
    WndUtils::ColorRGBToHLS(RGB(c[0], c[1], c[2]), &h, &l, &s);
    std::printf("%u,%u,%u\n", h, l, s);
    return 0;
}

int Rgb(const std::vector<std::string>& args) {
    qmutil::RequireArgs(args, 1, "color rgb H,L,S");
    std::vector<int> c = Triple(args[0], 240, "H,L,S");
    COLORREF rgb = WndUtils::ColorHLSToRGB((WORD)c[0], (WORD)c[1], (WORD)c[2]);
    std::printf("%u,%u,%u\n", GetRValue(rgb), GetGValue(rgb), GetBValue(rgb));
    return 0;
}

void Tour() {
    qmutil::TourStep("color hls 10,20,30");
    Hls({"10,20,30"});
    qmutil::TourStep("color rgb 140,19,120");
    Rgb({"140,19,120"});
}

qmutil::Registrar hls({"color", "hls", "an RGB colour as hue, luminance, saturation (0..240)",
                       "usage: qmutil color hls R,G,B\n"
                       "  Prints H,L,S on the shell's 0..240 scale for channels of 0..255 (a grey has hue 160\n"
                       "  and saturation 0).\n",
                       Hls, Tour, 80});
qmutil::Registrar rgb({"color", "rgb", "hue, luminance, saturation (0..240) as an RGB colour",
                       "usage: qmutil color rgb H,L,S\n"
                       "  Prints R,G,B for components of 0..240, with the shell's rounding (a round trip may\n"
                       "  move a channel by one).\n",
                       Rgb, nullptr, 81});

}  // namespace
