#include <gtest/gtest.h>

#include <cstring>
#include <random>
#include <vector>

#include "dc_fixture.h"
#include "tests/support/recording_sink.h"
#include "utils/common/DIB.h"
#include "utils/platform/gdi.h"

namespace {

using dctest::kFonts;
using dctest::MemoryDC;

// The model: the colour of picture pixel (x, y), row 0 at the top.
COLORREF Model(int x, int y) { return RGB(x * 40 + 5, y * 50 + 7, (x + y) * 10 + 1); }

const COLORREF kBackground = RGB(1, 2, 3);

void Paint(CDIBitmap& bmp, int w, int h, WORD bits) {
    ASSERT_TRUE(bmp.Create(w, h, bits));
    for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x) bmp.SetPixelColor(CPoint(x, h - 1 - y), Model(x, y));
}

// A 32-bit bitmap with explicit 8-8-8 masks: the BI_BITFIELDS path of Draw.
void PaintMasked(CDIBitmap& bmp, int w, int h) {
    std::vector<unsigned char> packed(40 + 12 + (size_t)w * h * 4);
    const BITMAPINFOHEADER bi{40, w, h, 1, 32, BI_BITFIELDS, 0, 0, 0, 0, 0};
    std::memcpy(packed.data(), &bi, 40);
    const DWORD masks[3] = {0xFF0000, 0x00FF00, 0x0000FF};
    std::memcpy(packed.data() + 40, masks, 12);
    for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x) {
            COLORREF c = Model(x, y);
            DWORD v = ((DWORD)GetRValue(c) << 16) | ((DWORD)GetGValue(c) << 8) | GetBValue(c);
            std::memcpy(packed.data() + 52 + ((size_t)(h - 1 - y) * w + x) * 4, &v, 4);
        }
    ASSERT_TRUE(bmp.Create((BITMAPINFOHEADER*)packed.data()));
}

// Expects the destination rectangle to show the picture's source rectangle, scaled by
// whole factors, and the pixels around it to be untouched.
void ExpectDrawn(CDC& dc, CRect dst, CRect src, const char* what) {
    for (int y = 0; y < 16; ++y)
        for (int x = 0; x < 16; ++x) {
            COLORREF want = kBackground;
            if (dst.PtInRect(CPoint(x, y)))
                want = Model(src.left + (x - dst.left) * src.Width() / dst.Width(),
                             src.top + (y - dst.top) * src.Height() / dst.Height());
            ASSERT_EQ(dc.GetPixel(x, y), want) << what << " at " << x << "," << y;
        }
}

TEST(DIBDrawing, TransfersPutThePicturesSourceRectangleWhereAsked) {
    for (WORD bits : {24, 32}) {
        CDIBitmap bmp;
        Paint(bmp, 5, 4, bits);
        MemoryDC m(kFonts[0], 16, 16);
        m.dc.SetStretchBltMode(COLORONCOLOR);

        // BitBlt: ySrc counted from the top, also from the top row itself.
        for (int ySrc : {1, 0}) {
            m.dc.FillSolidRect(0, 0, 16, 16, kBackground);
            bmp.BitBlt(m.dc.GetSafeHdc(), 2, 3, 3, 2, 1, ySrc);
            ExpectDrawn(m.dc, CRect(2, 3, 5, 5), CRect(1, ySrc, 4, ySrc + 2), "BitBlt");
        }

        // StretchBlt: the source rectangle goes to GDI as it is, its y from the bottom row, so
        // (1, 0, 2, 2) is picture rows 2 and 3; here doubled.
        m.dc.FillSolidRect(0, 0, 16, 16, kBackground);
        bmp.StretchBlt(m.dc.GetSafeHdc(), 4, 4, 4, 4, 1, 0, 2, 2);
        ExpectDrawn(m.dc, CRect(4, 4, 8, 8), CRect(1, 2, 3, 4), "StretchBlt");

        // Draw through DrawDib: the source rectangle in picture coordinates.
        void* hdd = qm::platform::GdiDrawDibOpen();
        ASSERT_NE(hdd, nullptr);
        m.dc.FillSolidRect(0, 0, 16, 16, kBackground);
        RECT dst{0, 0, 8, 4}, src{1, 0, 5, 2};
        EXPECT_TRUE(bmp.Draw(hdd, &m.dc, dst, src));
        ExpectDrawn(m.dc, CRect(dst), CRect(src), "Draw");
        EXPECT_TRUE(qm::platform::GdiDrawDibClose(hdd));
    }
}

TEST(DIBDrawing, DrawOfAMaskedBitmapGoesThroughStretchDIBits) {
    CDIBitmap bmp;
    PaintMasked(bmp, 5, 4);
    MemoryDC m(kFonts[0], 16, 16);
    m.dc.FillSolidRect(0, 0, 16, 16, kBackground);
    RECT dst{6, 6, 9, 8}, src{2, 1, 5, 3};
    EXPECT_TRUE(bmp.Draw(nullptr, &m.dc, dst, src));
    ExpectDrawn(m.dc, CRect(dst), CRect(src), "masked Draw");
    EXPECT_EQ(m.dc.GetStretchBltMode(), COLORONCOLOR);
}

TEST(DIBDrawing, DrawReportsASourceRectangleOutsideThePicture) {
    CDIBitmap bmp;
    Paint(bmp, 5, 4, 24);
    MemoryDC m(kFonts[0], 16, 16);
    m.dc.FillSolidRect(0, 0, 16, 16, kBackground);
    qmtest::RecordingAssertSink asserts;
    RECT dst{0, 0, 4, 4}, src{3, 2, 6, 2};
    EXPECT_FALSE(bmp.Draw(nullptr, &m.dc, dst, src));
    EXPECT_EQ(asserts.Expressions(),
              (std::vector<std::string>{"(SrcRect.right > 0) && (SrcRect.right <= m_BmpInfo.GetBmpWidth())",
                                        "SrcRect.top < SrcRect.bottom"}));
    EXPECT_EQ(m.dc.GetPixel(0, 0), kBackground);
    asserts.Clear();
    CDIBitmap empty;
    RECT whole{0, 0, 1, 1};
    EXPECT_FALSE(empty.Draw(nullptr, &m.dc, dst, whole));
    EXPECT_EQ(asserts.Expressions().front(), "m_BmpBits.IsValid()");
    empty.BitBlt(m.dc.GetSafeHdc(), 0, 0, 4, 4, 0, 0);  // nothing to draw, nothing happens
    EXPECT_EQ(m.dc.GetPixel(0, 0), kBackground);
}

#if !defined(_WIN32)  // the two paths compared are this backend's; Windows samples each raster operation its own way
// A scaled copy (SRCCOPY) samples rows and columns on its own fast path; OR-ing the source
// onto black (SRCPAINT) goes through the general one. Both must give the same pixels, over
// widths around the 16-pixel groups and 128-byte windows of the 24-bit reader, padded and
// unpadded rows, both row orders, shrinking, growing, mirroring and source sub-rectangles.
TEST(DIBDrawing, ScaledCopiesOfDibRowsMatchTheGeneralStretch) {
    std::mt19937 rng(7);
    for (WORD bits : {24, 32, 8})
        for (int w : {1, 2, 5, 16, 33, 43, 47, 64, 100, 129, 257})
            for (int h : {1, 3, -4}) {
                int rows = h < 0 ? -h : h;
                std::vector<unsigned char> info(40 + 256 * 4);
                const BITMAPINFOHEADER bi{40, w, h, 1, bits, BI_RGB, 0, 0, 0, 0, 0};
                std::memcpy(info.data(), &bi, 40);
                for (size_t i = 40; i < info.size(); ++i) info[i] = (unsigned char)rng();
                std::vector<unsigned char> pixels((size_t)((w * bits + 31) / 32 * 4) * rows);
                for (unsigned char& b : pixels) b = (unsigned char)rng();
                const auto* bmi = reinterpret_cast<const BITMAPINFO*>(info.data());
                struct Case { int x, y, cx, cy, xs, ys, cxs, cys; };
                int half = std::max(1, w / 2), third = w / 3;
                const Case cases[] = {
                    {0, 0, half, std::max(1, rows / 2), 0, 0, w, rows},
                    {1, 0, w, rows, 0, 0, w, rows},
                    {0, 1, 2 * w, 2 * rows, 0, 0, w, rows},
                    {0, 0, std::max(1, 3 * w / 4), rows + 1, 0, 0, w, rows},
                    {half, 0, -half, rows, 0, 0, w, rows},
                    {2, 1, (w - third) / 2 + 1, rows, third, rows > 1 ? 1 : 0, w - third, rows > 1 ? rows - 1 : 1},
                };
                for (const Case& c : cases) {
                    std::vector<COLORREF> drawn[2];
                    const DWORD rops[2] = {SRCCOPY, SRCPAINT};
                    for (int k = 0; k < 2; ++k) {
                        MemoryDC m(kFonts[0], 2 * w + 2, 2 * rows + 2);
                        m.dc.FillSolidRect(0, 0, 2 * w + 2, 2 * rows + 2, RGB(0, 0, 0));
                        m.dc.SetStretchBltMode(COLORONCOLOR);
                        qm::platform::GdiStretchDIBits(m.dc.GetSafeHdc(), c.x, c.y, c.cx, c.cy, c.xs, c.ys, c.cxs, c.cys,
                                                       pixels.data(), bmi, DIB_RGB_COLORS, rops[k]);
                        for (int y = 0; y < 2 * rows + 2; ++y)
                            for (int x = 0; x < 2 * w + 2; ++x) drawn[k].push_back(m.dc.GetPixel(x, y));
                    }
                    ASSERT_EQ(drawn[0], drawn[1]) << bits << " bits, " << w << " x " << h << ", to " << c.cx << " x " << c.cy;
                }
            }
}
#endif

}  // namespace
