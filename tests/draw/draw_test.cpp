// Drawing helpers, checked by reading the pixels back from a memory device context: arrows,
// bitmaps through a colour key, disabled bitmaps; and scaling between resolutions.
#include <gtest/gtest.h>

#include <set>
#include <string>
#include <vector>

#include "tests/support/recording_sink.h"
#include "utils/common/WndUtils.h"
#include "utils/platform/gdi.h"

namespace {

constexpr COLORREF kPaper = RGB(250, 240, 230), kPen = RGB(0, 0, 128), kBrush = RGB(200, 30, 40);

// A memory device context on a W x H colour bitmap filled with kPaper, with a kPen pen and a
// kBrush brush for the arrows.
struct Canvas {
    Canvas(int w = 64, int h = 48) : width(w), height(h) {
        CDC screen;
        screen.CreateDC("DISPLAY", nullptr, nullptr, nullptr);
        dc.CreateCompatibleDC(&screen);
        bitmap.CreateCompatibleBitmap(&screen, w, h);
        old = dc.SelectObject(&bitmap);
        oldPen = dc.SelectObject(&pen);
        oldBrush = dc.SelectObject(&brush);
        dc.FillSolidRect(0, 0, w, h, kPaper);
    }
    ~Canvas() {
        dc.SelectObject(old);
        dc.SelectObject(oldPen);
        dc.SelectObject(oldBrush);
    }
    COLORREF At(int x, int y) { return dc.GetPixel(x, y) & 0xFFFFFF; }
    std::vector<COLORREF> All() {
        std::vector<COLORREF> v;
        for (int y = 0; y < height; ++y)
            for (int x = 0; x < width; ++x) v.push_back(At(x, y));
        return v;
    }
    int width, height;
    CDC dc;
    CBitmap bitmap;
    CBitmap* old = nullptr;
    CPen pen{PS_SOLID, 1, kPen};
    CBrush brush{kBrush};
    CPen* oldPen = nullptr;
    CBrush* oldBrush = nullptr;
};

TEST(DrawArrow, HorizontalAndVerticalHeadsAreFilledAndMirrorSymmetric) {
    struct Case {
        CPoint from, to;
    } cases[] = {{{4, 20}, {50, 20}}, {{55, 20}, {6, 20}}, {{30, 2}, {30, 44}}, {{30, 45}, {30, 3}}};
    for (const Case& c : cases) {
        Canvas canvas;
        // A head of 13 x 10: its edges (slope 5/13) never pass exactly between two pixels,
        // where GDI's lines break the tie by their drawing direction.
        ASSERT_TRUE(WndUtils::DrawArrow(&canvas.dc, c.from, c.to, 13, 10));
        bool horizontal = c.from.y == c.to.y;
        int dir = horizontal ? (c.to.x > c.from.x ? 1 : -1) : (c.to.y > c.from.y ? 1 : -1);
        // Inside the head, on the shaft, 4 pixels back from the tip: the brush.
        CPoint inside = horizontal ? CPoint(c.to.x - 4 * dir, c.to.y) : CPoint(c.to.x, c.to.y - 4 * dir);
        EXPECT_EQ(canvas.At(inside.x, inside.y), kBrush) << c.to.x << "," << c.to.y;
        // The shaft near its start: the pen.
        CPoint shaft = horizontal ? CPoint(c.from.x + 2 * dir, c.from.y) : CPoint(c.from.x, c.from.y + 2 * dir);
        EXPECT_EQ(canvas.At(shaft.x, shaft.y), kPen);
        // Mirrored about the shaft.
        std::string asymmetric;
        for (int k = 1; k < 12; ++k)
            for (int t = 0; t < 64; ++t) {
                if (horizontal && t < canvas.width && c.to.y + k < canvas.height && c.to.y - k >= 0 &&
                    canvas.At(t, c.to.y + k) != canvas.At(t, c.to.y - k))
                    asymmetric += " x" + std::to_string(t) + " dy" + std::to_string(k);
                if (!horizontal && t < canvas.height && canvas.At(c.to.x + k, t) != canvas.At(c.to.x - k, t))
                    asymmetric += " y" + std::to_string(t) + " dx" + std::to_string(k);
            }
        EXPECT_EQ(asymmetric, "") << c.from.x << "," << c.from.y << " -> " << c.to.x << "," << c.to.y;
    }
}

TEST(DrawArrow, DrawsNothingOutsideItsBoundingBox) {
    struct Case {
        CPoint from, to;
        int length, width;
    } cases[] = {{{5, 5}, {50, 40}, 10, 8}, {{60, 3}, {8, 30}, 15, 15}, {{20, 40}, {22, 6}, 6, 9},
                 {{10, 10}, {14, 12}, 30, 12}};  // a head longer than the arrow
    for (const Case& c : cases) {
        Canvas canvas;
        ASSERT_TRUE(WndUtils::DrawArrow(&canvas.dc, c.from, c.to, c.length, c.width));
        // The head's corners lie within half its width of the base; bound generously by it.
        int margin = (c.width + 1) / 2 + 1;
        int left = std::min(c.from.x, c.to.x) - margin, right = std::max(c.from.x, c.to.x) + margin;
        int top = std::min(c.from.y, c.to.y) - margin, bottom = std::max(c.from.y, c.to.y) + margin;
        int outside = 0, drawn = 0;
        for (int y = 0; y < canvas.height; ++y)
            for (int x = 0; x < canvas.width; ++x) {
                bool changed = canvas.At(x, y) != kPaper;
                drawn += changed;
                if (changed && (x < left || x > right || y < top || y > bottom)) ++outside;
            }
        EXPECT_EQ(outside, 0);
        EXPECT_GT(drawn, 0);
        EXPECT_NE(canvas.At(c.to.x, c.to.y), kPaper);  // the tip
    }
}

TEST(DrawArrow, ZeroLengthDrawsNothingAndBadArgumentsAreReported) {
    Canvas canvas;
    std::vector<COLORREF> before = canvas.All();
    EXPECT_TRUE(WndUtils::DrawArrow(&canvas.dc, CPoint(9, 9), CPoint(9, 9), 5, 5));
    EXPECT_EQ(canvas.All(), before);
    qmtest::RecordingAssertSink sink;
    EXPECT_FALSE(WndUtils::DrawArrow(nullptr, CPoint(0, 0), CPoint(9, 9), 5, 5));
    EXPECT_TRUE(WndUtils::DrawArrow(&canvas.dc, CPoint(2, 2), CPoint(30, 2), -4, -1));
    EXPECT_EQ(sink.Expressions(), (std::vector<std::string>{"pDC", "nHeadLength >= 0", "nHeadWidth >= 0"}));
    EXPECT_EQ(canvas.At(10, 2), kPen);  // a plain line
}

TEST(DrawArrow, LinesFarBeyondTheSurfaceCostOnlyWhatTheyCross) {
    Canvas canvas;
    // Four billion pixels long: drawn across the surface, not stepped through.
    canvas.dc.MoveTo(-2000000000, 10);
    EXPECT_TRUE(canvas.dc.LineTo(2000000000, 10));
    for (int x = 0; x < canvas.width; ++x) ASSERT_EQ(canvas.At(x, 10), kPen) << x;
    EXPECT_TRUE(WndUtils::DrawArrow(&canvas.dc, CPoint(-2000000000, -2000000000), CPoint(2000000000, 2000000000),
                                    2000000000, 2000000000));
    EXPECT_EQ(canvas.At(20, 20), kPen);  // the shaft crosses the diagonal
}

// A W x H DIB of the depth with a pattern of colours, some of them the key.
void Pattern(CDIBitmap& bmp, int w, int h, WORD bits, COLORREF key) {
    bmp.Create(w, h, bits);
    if (bits <= 8) {
        RGBQUAD* table = bmp.GetColorTable();
        for (DWORD i = 0; i < bmp.GetColorTableSize() / sizeof(RGBQUAD); ++i)
            table[i] = RGBQUAD{(BYTE)(i * 37), (BYTE)(i * 11 + 5), (BYTE)(200 - i), 0};
        table[1] = RGBQUAD{GetBValue(key), GetGValue(key), GetRValue(key), 0};
        for (int y = 0; y < h; ++y)
            for (int x = 0; x < w; ++x) bmp.SetPixelValue(CPoint(x, y), (DWORD)((x * 3 + y) % (1 << std::min<int>(bits, 4))));
    } else {
        for (int y = 0; y < h; ++y)
            for (int x = 0; x < w; ++x)
                bmp.SetPixelColor(CPoint(x, y), (x + y) % 3 == 0 ? key : RGB(x * 20, y * 30, 90 + x));
    }
}

TEST(DrawTransparentBitmap, KeyedPixelsLeaveTheTargetUnchanged) {
    const COLORREF key = RGB(0, 255, 0);
    struct Case { WORD bits; int w; } cases[] = {{4, 11}, {8, 11}, {32, 11}, {24, 11},
                 // Rows long enough for the 4- and 16-pixel steps of the 24-bit kernels, and
                 // their remainders.
                 {24, 21}, {24, 22}, {24, 37}, {24, 70}, {24, 200}};
    for (const Case& c : cases) {
        SCOPED_TRACE(testing::Message() << c.bits << " bits, width " << c.w);
        CDIBitmap bmp;
        Pattern(bmp, c.w, 7, c.bits, key);
        Canvas canvas(c.w + 16, 24);
        CPoint at(5, 9);
        ASSERT_TRUE(WndUtils::DrawTransparentBitmap(&canvas.dc, at, bmp, key));
        int keyed = 0;
        for (int y = 0; y < 7; ++y)
            for (int x = 0; x < c.w; ++x) {
                COLORREF src = bmp.GetPixelColor(CPoint(x, 6 - y)) & 0xFFFFFF;
                COLORREF want = src == key ? kPaper : src;
                keyed += src == key;
                ASSERT_EQ(canvas.At(at.x + x, at.y + y), want) << x << "," << y;
            }
        EXPECT_GT(keyed, 0);
        EXPECT_EQ(canvas.At(at.x - 1, at.y), kPaper);
        EXPECT_EQ(canvas.At(at.x + c.w, at.y + 6), kPaper);
    }
}

TEST(DrawTransparentBitmap, DeviceBitmapsAndPicturesPartlyOffTheTarget) {
    const COLORREF key = RGB(255, 0, 255);
    CDIBitmap bmp;
    Pattern(bmp, 9, 9, 24, key);
    Canvas source(9, 9);
    ASSERT_TRUE(WndUtils::DrawBitmap(&source.dc, CPoint(0, 0), bmp));
    Canvas viaDib, viaDevice;
    for (CPoint at : {CPoint(-4, -3), CPoint(60, 44)}) {
        EXPECT_TRUE(WndUtils::DrawTransparentBitmap(&viaDib.dc, at, bmp, key));
        source.dc.SelectObject(source.old);  // a bitmap may be selected into one context at a time
        EXPECT_TRUE(WndUtils::DrawTransparentBitmap(&viaDevice.dc, at, &source.bitmap, key));
        source.dc.SelectObject(&source.bitmap);
    }
    EXPECT_EQ(viaDib.All(), viaDevice.All());
    EXPECT_NE(viaDib.All(), Canvas().All());
}

TEST(DrawBitmap, DibAndDeviceBitmapGiveThePicture) {
    CDIBitmap bmp;
    Pattern(bmp, 6, 5, 24, RGB(1, 2, 3));
    Canvas canvas, copy;
    ASSERT_TRUE(WndUtils::DrawBitmap(&canvas.dc, CPoint(3, 4), bmp));
    for (int y = 0; y < 5; ++y)
        for (int x = 0; x < 6; ++x) EXPECT_EQ(canvas.At(3 + x, 4 + y), bmp.GetPixelColor(CPoint(x, 4 - y)) & 0xFFFFFF);
    canvas.dc.SelectObject(canvas.old);
    ASSERT_TRUE(WndUtils::DrawBitmap(&copy.dc, CPoint(0, 0), &canvas.bitmap));
    canvas.dc.SelectObject(&canvas.bitmap);
    EXPECT_EQ(copy.All(), canvas.All());
    qmtest::RecordingAssertSink sink;
    CDIBitmap empty;
    EXPECT_FALSE(WndUtils::DrawBitmap(&canvas.dc, CPoint(0, 0), empty));
    EXPECT_FALSE(WndUtils::DrawBitmap(&canvas.dc, CPoint(0, 0), (CBitmap*)nullptr));
    EXPECT_EQ(sink.Expressions(), (std::vector<std::string>{"bitmap.IsValid()", "pBitmap && pBitmap->m_hObject"}));
}

TEST(DrawDisabledBitmap, ShowsOnlyTheEmbossColoursAndLeavesWhiteAlone) {
    const COLORREF highlight = qm::platform::GdiGetSysColor(COLOR_3DHILIGHT), shadow = qm::platform::GdiGetSysColor(COLOR_3DSHADOW);
    CDIBitmap bmp;
    ASSERT_TRUE(bmp.Create(8, 6, 24));
    for (int y = 0; y < 6; ++y)
        for (int x = 0; x < 8; ++x)
            bmp.SetPixelColor(CPoint(x, y), y == 5 ? RGB(255, 255, 255) : RGB(20 + x * 9, 60, 100 + y * 7));
    Canvas canvas;
    CPoint at(10, 10);
    ASSERT_TRUE(WndUtils::DrawDisabledBitmap(&canvas.dc, at, bmp));
    std::set<COLORREF> seen;
    for (int y = 0; y < canvas.height; ++y)
        for (int x = 0; x < canvas.width; ++x) {
            COLORREF c = canvas.At(x, y);
            seen.insert(c);
            if (c != kPaper) {
                EXPECT_GE(x, at.x);
                EXPECT_LE(x, at.x + 8);  // one column beyond the picture
                EXPECT_GE(y, at.y);
                EXPECT_LE(y, at.y + 6);
            }
        }
    for (COLORREF c : seen) EXPECT_TRUE(c == kPaper || c == highlight || c == shadow) << std::hex << c;
    EXPECT_EQ(canvas.At(at.x + 3, at.y + 2), shadow);
    EXPECT_EQ(canvas.At(at.x + 2, at.y), kPaper);  // the white top row (bottom-up row 5)
}

TEST(DrawAnimatedRects, SucceedsWithoutAWindow) {
    EXPECT_TRUE(WndUtils::DrawAnimatedRects(nullptr, CRect(0, 0, 10, 10), CRect(100, 100, 200, 150)));
}

TEST(ScaleBetween, RoundsAsMulDivAndRefusesWhatItCannotExpress) {
    struct Case { int fromDpi, toDpi; LONG in, out; bool ok; } cases[] = {
        {96, 96, 123, 123, true},    {96, 144, 10, 15, true},     {2, 1, 5, 3, true},
        {2, 1, -5, -3, true},        {2, 1, 3, 2, true},          {2, 1, -1, -1, true},
        {144, 96, -1, -1, true},     {96, 192, -1, -2, true},     {1, 1000, 3000000, 0, false},
        {0, 96, 5, 5, false},        {96, -96, 5, 5, false},      {96, 96, INT32_MIN, INT32_MIN, true},
        {1, INT32_MAX, INT32_MIN, 0, false},  {INT32_MAX, 1, INT32_MIN, -1, true},
    };
    for (const Case& c : cases) {
        CPoint pt(c.in, 7);
        EXPECT_EQ(WndUtils::ScaleBetween(c.fromDpi, 96, c.toDpi, 96, pt) != FALSE, c.ok) << c.in;
        EXPECT_EQ(pt.x, c.ok ? c.out : c.in) << c.fromDpi << "->" << c.toDpi << " " << c.in;
        EXPECT_EQ(pt.y, 7);
    }
    CSize size(100, 50);
    EXPECT_TRUE(WndUtils::ScaleBetween(96, 72, 120, 96, size));
    EXPECT_EQ(size, CSize(125, 67));
    CRect rect(1, 2, 3, 2000000);
    EXPECT_FALSE(WndUtils::ScaleBetween(1, 1, 2000, 2000, rect));
    EXPECT_EQ(rect, CRect(1, 2, 3, 2000000));  // untouched when any corner fails
    EXPECT_TRUE(WndUtils::ScaleBetween(96, 96, 48, 192, rect));
    EXPECT_EQ(rect, CRect(1, 4, 2, 4000000));
}

TEST(ScaleBetween, BetweenDeviceContextsUsesTheirResolutions) {
    Canvas a, b;
    CPoint pt(37, -12);
    ASSERT_TRUE(WndUtils::ScaleBetween(&a.dc, &b.dc, pt));
    CPoint want(37, -12);
    WndUtils::ScaleBetween(a.dc.GetDeviceCaps(LOGPIXELSX), a.dc.GetDeviceCaps(LOGPIXELSY),
                           b.dc.GetDeviceCaps(LOGPIXELSX), b.dc.GetDeviceCaps(LOGPIXELSY), want);
    EXPECT_EQ(pt, want);
    qmtest::RecordingAssertSink sink;
    EXPECT_FALSE(WndUtils::ScaleBetween(&a.dc, nullptr, pt));
    EXPECT_EQ(sink.Expressions(), std::vector<std::string>{"pFromDC && pToDC"});
}

TEST(HimetricConversions, TextModeGoesThroughTheLogicalInch) {
    Canvas canvas;
    const int dpiX = canvas.dc.GetDeviceCaps(LOGPIXELSX), dpiY = canvas.dc.GetDeviceCaps(LOGPIXELSY);
    SIZE size{2540, 1270};
    canvas.dc.HIMETRICtoDP(&size);
    EXPECT_EQ(size.cx, dpiX);
    EXPECT_EQ(size.cy, MulDiv(1270, dpiY, 2540));
    canvas.dc.DPtoHIMETRIC(&size);
    EXPECT_EQ(size.cx, 2540);
    EXPECT_EQ(size.cy, 1270);
    SIZE lp{5080, 100};
    canvas.dc.HIMETRICtoLP(&lp);  // MM_TEXT: logical = device
    EXPECT_EQ(lp.cx, 2 * dpiX);
    canvas.dc.LPtoHIMETRIC(&lp);
    EXPECT_EQ(lp.cx, 5080);
}

TEST(HimetricConversions, FixedMappingModesGoThroughMmHimetric) {
    Canvas canvas;
    if (!canvas.dc.SetMapMode(MM_LOMETRIC)) GTEST_SKIP() << "memory contexts here have only MM_TEXT";
    SIZE size{2540, 100};
    canvas.dc.HIMETRICtoDP(&size);
    SIZE viaMode{2540, 100};
    canvas.dc.SetMapMode(MM_HIMETRIC);
    canvas.dc.LPtoDP(&viaMode);
    canvas.dc.SetMapMode(MM_LOMETRIC);
    EXPECT_EQ(size.cx, viaMode.cx);
    EXPECT_EQ(size.cy, viaMode.cy);
    EXPECT_EQ(canvas.dc.GetMapMode(), MM_LOMETRIC);
}

}  // namespace
