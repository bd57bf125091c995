// qmutil draw arrow: an arrow drawn with WndUtils on a new picture, saved as a BMP file.
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "command.h"
#include "input_file.h"
#include "utils/common/DIB.h"
#include "utils/common/WndUtils.h"
#include "utils/framework/CDC.h"
#include "utils/framework/CFile.h"

namespace {

using qmutil::UsageError;

CPoint Pair(const std::string& text, const char* what) {
    std::string::size_type comma = text.find(',');
    if (comma == std::string::npos || text.find(',', comma + 1) != std::string::npos)
        throw UsageError(std::string("invalid ") + what + " '" + text + "' (expected two numbers: A,B)");
    return CPoint((int)qmutil::ParseLong(text.substr(0, comma), what), (int)qmutil::ParseLong(text.substr(comma + 1), what));
}

COLORREF Colour(const std::string& text, const char* what) {
    char* end = nullptr;
    unsigned long v = text.size() == 6 ? std::strtoul(text.c_str(), &end, 16) : 0;
    if (text.size() != 6 || !end || *end) throw UsageError(std::string("invalid ") + what + " '" + text + "' (expected RRGGBB)");
    return RGB((v >> 16) & 0xFF, (v >> 8) & 0xFF, v & 0xFF);
}

int Arrow(const std::vector<std::string>& args) {
    std::vector<std::string> plain;
    CPoint head(-1, -1), size(100, 100);
    COLORREF pen = RGB(0, 0, 0), brush = RGB(0, 0, 0);
    for (size_t i = 0; i < args.size(); ++i) {
        const std::string& a = args[i];
        if (a == "--head" || a == "--size" || a == "--pen" || a == "--brush") {
            if (i + 1 >= args.size()) throw UsageError("option " + a + " needs a value");
            const std::string& v = args[++i];
            if (a == "--head") head = Pair(v, "head length,width");
            if (a == "--size") size = Pair(v, "picture size");
            if (a == "--pen") pen = Colour(v, "pen colour");
            if (a == "--brush") brush = Colour(v, "brush colour");
        } else {
            plain.push_back(a);
        }
    }
    const char* usage = "draw arrow X1,Y1 X2,Y2 --head L,W [--size W,H] [--pen RRGGBB] [--brush RRGGBB] OUT.bmp";
    if (plain.size() != 3 || head.x < 0) throw UsageError(std::string("usage: qmutil ") + usage);
    CPoint from = Pair(plain[0], "start point"), to = Pair(plain[1], "end point");
    if (head.x < 0 || head.y < 0) throw UsageError("head length and width must not be negative");
    if (size.x < 1 || size.y < 1 || size.x > 4096 || size.y > 4096)
        throw UsageError("picture size " + std::to_string(size.x) + "," + std::to_string(size.y) + " is outside 1..4096");
    const std::string& out = plain[2];
    qmutil::CheckOutputFile(out);

    CDC screen, dc;
    screen.CreateDC("DISPLAY", nullptr, nullptr, nullptr);
    dc.CreateCompatibleDC(&screen);
    CBitmap bitmap;
    if (!bitmap.CreateCompatibleBitmap(&screen, size.x, size.y)) throw UsageError("cannot make a picture of that size");
    CBitmap* oldBitmap = dc.SelectObject(&bitmap);
    dc.FillSolidRect(0, 0, size.x, size.y, RGB(255, 255, 255));
    CPen p(PS_SOLID, 1, pen);
    CBrush b(brush);
    CPen* oldPen = dc.SelectObject(&p);
    CBrush* oldBrush = dc.SelectObject(&b);
    WndUtils::DrawArrow(&dc, from, to, head.x, head.y);
    CDIBitmap picture;
    picture.Create(size.x, size.y, 24);
    for (int y = 0; y < size.y; ++y)
        for (int x = 0; x < size.x; ++x) picture.SetPixelColor(CPoint(x, size.y - 1 - y), dc.GetPixel(x, y));
    dc.SelectObject(oldPen);
    dc.SelectObject(oldBrush);
    dc.SelectObject(oldBitmap);
    try {
        CFile target(out.c_str(), CFile::modeCreate | CFile::modeWrite);
        picture.Save(target, true);
        target.Close();
    } catch (CException* e) {
        e->Delete();
        throw UsageError("cannot write '" + out + "'");
    }
    std::printf("arrow %d,%d -> %d,%d (head %d x %d) on %d x %d -> %s\n", (int)from.x, (int)from.y, (int)to.x,
                (int)to.y, (int)head.x, (int)head.y, (int)size.x, (int)size.y, out.c_str());
    return 0;
}

void Tour() {
    qmutil::TourStep("draw arrow 10,50 90,50 --head 20,16 --brush C83228 qmutil-tour-arrow.bmp");
    Arrow({"10,50", "90,50", "--head", "20,16", "--brush", "C83228", "qmutil-tour-arrow.bmp"});
    std::remove("qmutil-tour-arrow.bmp");
}

qmutil::Registrar arrow({"draw", "arrow", "an arrow with a filled head on a new picture (BMP)",
                         "usage: qmutil draw arrow X1,Y1 X2,Y2 --head L,W [--size W,H] [--pen RRGGBB]\n"
                         "                         [--brush RRGGBB] OUT.bmp\n"
                         "  Draws a line from X1,Y1 towards X2,Y2 ending in a triangular head L pixels long and\n"
                         "  W wide (filled with the brush, outlined with the pen; both black by default) on a\n"
                         "  white picture of W x H pixels (100 x 100 by default, at most 4096 x 4096), and\n"
                         "  saves it as a 24-bit BMP.\n",
                         Arrow, Tour, 82});

}  // namespace
