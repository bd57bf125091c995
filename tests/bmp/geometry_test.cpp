// Geometry and compositing against the picture model, on random bitmaps of every depth and of
// widths 1 to 33 (every padding case), plus the identities between the operations.
#include <gtest/gtest.h>

#include "tests/bmp/bmp_model.h"
#include "tests/support/recording_sink.h"

using namespace bmptest;

namespace {

Picture Blank(int w, int h, COLORREF c = 0) {
    Picture p;
    p.w = w;
    p.h = h;
    p.px.assign((size_t)w * h, c);
    return p;
}

// Quarter turn clockwise: the source's left column becomes the top row.
Picture Turn90(const Picture& s) {
    Picture r = Blank(s.h, s.w);
    for (int Y = 0; Y < r.h; ++Y)
        for (int X = 0; X < r.w; ++X) r.at(X, Y) = s.at(Y, s.h - 1 - X);
    return r;
}

Picture Mirrored(const Picture& s) {
    Picture r = s;
    for (int y = 0; y < s.h; ++y)
        for (int x = 0; x < s.w; ++x) r.at(x, y) = s.at(s.w - 1 - x, y);
    return r;
}

Picture Cut(const Picture& s, const CRect& rc) {
    Picture r = Blank(rc.Width(), rc.Height());
    for (int y = 0; y < r.h; ++y)
        for (int x = 0; x < r.w; ++x) r.at(x, y) = s.at(rc.left + x, rc.top + y);
    return r;
}

// Edges added (positive, in the colour) or cut (negative) on each side.
Picture Canvas(const Picture& s, int top, int bottom, int left, int right, COLORREF c) {
    Picture r = Blank(s.w + left + right, s.h + top + bottom, c);
    for (int y = 0; y < r.h; ++y)
        for (int x = 0; x < r.w; ++x) {
            int sx = x - left, sy = y - top;
            if (sx >= 0 && sy >= 0 && sx < s.w && sy < s.h) r.at(x, y) = s.at(sx, sy);
        }
    return r;
}

CRect RandomRect(std::mt19937& rng, int w, int h) {
    int l = (int)(rng() % w), t = (int)(rng() % h);
    return CRect(l, t, l + 1 + (int)(rng() % (w - l)), t + 1 + (int)(rng() % (h - t)));
}

}  // namespace

TEST(DibGeometry, EveryOperationMatchesThePictureModel) {
    qmtest::RecordingAssertSink sink;
    std::mt19937 rng(42);
    for (int bpp : kDepths)
        for (int w = 1; w <= 33; ++w) {
            int h = w % 3 == 0 ? w : 1 + (int)(rng() % 5);  // squares turn in place
            CDIBitmap b;
            MakeRandom(b, w, h, bpp, rng);
            const Picture pic = ModelOf(b);
            SCOPED_TRACE(testing::Message() << bpp << " bits, " << w << "x" << h);

            CDIBitmap r;
            r.CopyFrom(b);
            r.Rotate(CDIBitmap::eRotate90);
            ASSERT_TRUE(ModelOf(r) == Turn90(pic));
            r.Rotate(CDIBitmap::eRotate270);
            ASSERT_EQ(std::memcmp(r.GetBits(), b.GetBits(), b.GetBitsSize()), 0);  // padding cleared, as made
            r.Rotate(CDIBitmap::eRotate270);
            ASSERT_TRUE(ModelOf(r) == Turn90(Turn90(Turn90(pic))));
            if (bpp >= 8) {
                r.Rotate(CDIBitmap::eRotate180);
                ASSERT_TRUE(ModelOf(r) == Turn90(pic));
            }

            CDIBitmap m;
            m.CopyFrom(b);
            m.Mirror();
            ASSERT_TRUE(ModelOf(m) == Mirrored(pic));
            m.Mirror();
            ASSERT_EQ(std::memcmp(m.GetBits(), b.GetBits(), b.GetBitsSize()), 0);

            // Copy of a rectangle, then pasted back where it came from: nothing changes.
            CRect rc = RandomRect(rng, w, h);
            CDIBitmap part(b, rc);
            ASSERT_TRUE(ModelOf(part) == Cut(pic, rc));
            CDIBitmap back;
            back.CopyFrom(b);
            ASSERT_TRUE(back.IsFitForPaste(part));
            ASSERT_TRUE(back.Paste(part, rc.TopLeft()));
            ASSERT_EQ(std::memcmp(back.GetBits(), b.GetBits(), b.GetBitsSize()), 0);

            // Into a 24-bit picture through the colours; the rest of the target is kept.
            CDIBitmap target;
            MakeRandom(target, 34, h + 2, 24, rng);
            Picture expect = ModelOf(target);
            CPoint at((int)(rng() % (35 - w)), (int)(rng() % 3));
            for (int y = 0; y < h; ++y)
                for (int x = 0; x < w; ++x) expect.at(at.x + x, at.y + y) = pic.at(x, y);
            ASSERT_EQ(target.IsFitForPaste(b), true);
            ASSERT_TRUE(target.Paste(b, at));
            ASSERT_TRUE(ModelOf(target) == expect);

            CDIBitmap c24;
            ASSERT_TRUE(c24.CopyAs24Bits(b));
            ASSERT_TRUE(ModelOf(c24) == pic);
            c24.Fill(rc, RGB(1, 2, 3));
            Picture filled = pic;
            for (int y = rc.top; y < rc.bottom; ++y)
                for (int x = rc.left; x < rc.right; ++x) filled.at(x, y) = RGB(1, 2, 3);
            ASSERT_TRUE(ModelOf(c24) == filled);

            int e[4];
            for (int& v : e) v = (int)(rng() % 7) - 3;
            CDIBitmap canvas;
            canvas.CopyFrom(b);
            bool fits = w + e[2] + e[3] >= 1 && h + e[0] + e[1] >= 1;
            ASSERT_EQ(canvas.CanvasSize(e[0], e[1], e[2], e[3], RGB(9, 8, 7)), fits ? 1 : 0);
            ASSERT_EQ(canvas.GetBitCount(), fits ? 24 : bpp);
            if (fits) { ASSERT_TRUE(ModelOf(canvas) == Canvas(pic, e[0], e[1], e[2], e[3], RGB(9, 8, 7))); }

            CDIBitmap bordered;
            bordered.CopyFrom(b);
            ASSERT_EQ(bordered.AddBorders(1, 2, 3, 4, RGB(255, 0, 0)), 1);
            ASSERT_TRUE(ModelOf(bordered) == Canvas(pic, 1, 2, 3, 4, RGB(255, 0, 0)));

            CDIBitmap same;
            same.CopyFrom(b);
            ASSERT_EQ(same.Resize(CSize(w, h)), 1);
            ASSERT_TRUE(ModelOf(same) == pic);
            ASSERT_EQ(same.Resize(CSize(2 * w, 3 * h)), 1);  // enlarging: nearest pixel
            const Picture grown = ModelOf(same);
            for (int y = 0; y < 3 * h; ++y)
                for (int x = 0; x < 2 * w; ++x) ASSERT_EQ(grown.at(x, y), pic.at(x / 2, y / 3));
        }
}

TEST(DibGeometry, ResizeSamplesEachDirectionItsOwnWay) {
    // Storage pixel (x, y) of a 24-bit bitmap holds blue = 16 y + x.
    auto make = [](CDIBitmap& b, int w, int h) {
        b.Create(w, h, 24);
        for (int y = 0; y < h; ++y)
            for (int x = 0; x < w; ++x) b.SetPixelValue(CPoint(x, y), (DWORD)(16 * y + x));
    };
    CDIBitmap b;
    make(b, 4, 4);
    ASSERT_EQ(b.Resize(CSize(2, 2)), 1);  // middles of the 2x2 blocks, not averages
    EXPECT_EQ(b.GetPixelValue(CPoint(0, 0)), 16u * 1 + 1);
    EXPECT_EQ(b.GetPixelValue(CPoint(1, 0)), 16u * 1 + 3);
    EXPECT_EQ(b.GetPixelValue(CPoint(0, 1)), 16u * 3 + 1);
    EXPECT_EQ(b.GetPixelValue(CPoint(1, 1)), 16u * 3 + 3);
    make(b, 2, 4);
    ASSERT_EQ(b.Resize(CSize(4, 2)), 1);  // wider and shorter: pairs of rows averaged
    for (int x = 0; x < 4; ++x) {
        EXPECT_EQ(b.GetPixelValue(CPoint(x, 0)), (DWORD)((0 + 16 + 2 * (x / 2)) / 2));
        EXPECT_EQ(b.GetPixelValue(CPoint(x, 1)), (DWORD)((32 + 48 + 2 * (x / 2)) / 2));
    }
    make(b, 4, 2);
    ASSERT_EQ(b.Resize(CSize(2, 4)), 1);  // narrower and taller: pairs of columns averaged
    EXPECT_EQ(b.GetPixelValue(CPoint(1, 3)), (DWORD)(16 + (2 + 3) / 2));
    EXPECT_EQ(b.Resize(CSize(0, 10)), 0);
    EXPECT_EQ(b.GetWidth(), 2);
}

TEST(DibGeometry, RefusalsLeaveTheBitmapAsItWas) {
    qmtest::RecordingAssertSink sink;
    std::mt19937 rng(9);
    CDIBitmap b;
    MakeRandom(b, 5, 3, 4, rng);
    const Picture pic = ModelOf(b);
    b.Rotate(CDIBitmap::eRotate180);  // no half turn of nibbles
    b.Rotate((CDIBitmap::eRotate)45);
    b.Crop(CRect(1, 1, 6, 4));  // the picture's own size: nothing happens
    b.Fill(CRect(0, 0, 2, 2), 0);  // 24 bits only
    EXPECT_EQ(b.CanvasSize(0, 0, -5, 0, 0), 0);  // nothing would be left
    CDIBitmap other;
    MakeRandom(other, 2, 2, 4, rng);  // another palette: not compatible, and not 24 bits
    EXPECT_FALSE(b.IsFitForPaste(other));
    EXPECT_FALSE(b.Paste(other, CPoint(0, 0)));
    EXPECT_TRUE(ModelOf(b) == pic);
    EXPECT_EQ(b.GetBitCount(), 4);
    sink.Clear();
    CDIBitmap t;
    t.Create(4, 4, 24);
    EXPECT_FALSE(t.Paste(other, CPoint(3, 3)));  // does not fit: reported, not clipped
    EXPECT_EQ(sink.Expressions(), std::vector<std::string>({"(0 <= dest_rect.left) && (dest_rect.right <= GetWidth())",
                                                            "(0 <= dest_rect.top) && (dest_rect.bottom <= GetHeight())"}));
    sink.Clear();
    CDIBitmap copy(t, CRect(2, 2, 9, 3));  // clipped to the picture after the report
    EXPECT_EQ(copy.GetSize(), CSize(2, 1));
    EXPECT_EQ(sink.Expressions(), std::vector<std::string>({"(0 < SrcRect.right) && (SrcRect.right <= SrcBmp.GetWidth())"}));
    EXPECT_EQ(t.Ensure_24Bits(), 0);
    EXPECT_EQ(b.Ensure_24Bits(), 0);
    EXPECT_EQ(b.GetBitCount(), 24);
    EXPECT_TRUE(ModelOf(b) == pic);
}

TEST(DibGeometry, PreconditionTextsAreReportedWordForWord) {
    struct Case { void (*run)(); std::vector<std::string> texts; };
    const Case cases[] = {
        {[] { CDIBitmap b; b.Create(4, 4, 24); b.Fill(CRect(2, 1, 2, 9), 0); },
         {"!rect.IsRectEmpty()", "(0 < rect.bottom) && (rect.bottom <= GetHeight())"}},
        {[] { CDIBitmap b; b.Create(4, 4, 8); CDIBitmap c(b, CRect(-1, 4, 5, 4)); },
         {"!SrcRect.IsRectEmpty()", "(0 <= SrcRect.left) && (SrcRect.left < SrcBmp.GetWidth())",
          "(0 < SrcRect.right) && (SrcRect.right <= SrcBmp.GetWidth())",
          "(0 <= SrcRect.top) && (SrcRect.top < SrcBmp.GetHeight())"}},
        {[] { CDIBitmap b; b.Create(4, 4, 8); b.GetPixelColor16(CPoint(0, 0)); }, {"GetBitCount () == 16"}},
        {[] { CDIBitmap b; b.Create(4, 4, 4); b.SetPixelValue(CPoint(1, 1), 16); }, {"Bits <= 0x0F"}},
        {[] { CDIBitmap b; b.Create(4, 4, 24); b.AddBorders(0, 1, -1, 1, 0); }, {"top > 0", "left > 0"}},
        {[] { CDIBitmap b; CDIBitmap s; s.Create(1, 1, 8); b.Paste(s, CPoint(0, 0)); },
         {"IsValid()", "(0 <= dest_rect.left) && (dest_rect.right <= GetWidth())",
          "(0 <= dest_rect.top) && (dest_rect.bottom <= GetHeight())"}},
        {[] {
             std::vector<BYTE> block(40 + 12 + 4, 0);
             auto* h = reinterpret_cast<BITMAPINFOHEADER*>(block.data());
             *h = BITMAPINFOHEADER{40, 1, 1, 1, 16, BI_BITFIELDS, 0, 0, 0, 0, 0};
             block[41] = 0xF8;  // red 0xF800, green and blue masks zero
             CDIBitmap b;
             b.Attach(h);
             EXPECT_EQ(b.GetPixelColor(CPoint(0, 0)), 0u);
             b.Detach();
         },
         {"dwBitMask", "dwBitMask"}},
    };
    for (const Case& c : cases) {
        qmtest::RecordingAssertSink sink;
        c.run();
        EXPECT_EQ(sink.Expressions(), c.texts);
        for (const qmtest::AssertReport& r : sink.Reports()) EXPECT_EQ(r.module, "Common\\DIB");
    }
}
