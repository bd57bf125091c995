// The whole-row paths of the bitmap operations against the pixel primitives they stand for, on
// random pictures whose padding bytes, unused palette entries, sixteenth bits and fourth bytes
// hold noise, at every depth and at widths that cross every padding case and the vector and
// tile steps of the rows.
#include <gtest/gtest.h>

#include <atomic>
#include <cstring>
#include <thread>
#include <vector>

#include "tests/bmp/bmp_model.h"
#include "tests/support/recording_sink.h"
#include "utils/common/DIB_internal.h"

using namespace bmptest;

namespace {

// Every byte of the pixel block random, padding included.
void MakeNoisy(CDIBitmap& b, int w, int h, int bpp, std::mt19937& rng) {
    MakeRandom(b, w, h, bpp, rng);
    for (DWORD i = 0; i < b.GetBitsSize(); ++i) b.GetBits()[i] = (BYTE)rng();
}

std::vector<BYTE> Bytes(const CDIBitmap& b) { return std::vector<BYTE>(b.GetBits(), b.GetBits() + b.GetBitsSize()); }

// The conversion as the pixel primitives define it: a zeroed 24-bit block, then the colour of
// every storage position.
void ReferenceTo24(const CDIBitmap& src, CDIBitmap& out) {
    out.Create(src.GetWidth(), src.GetHeight(), 24);
    std::memset(out.GetBits(), 0, out.GetBitsSize());
    for (int y = 0; y < src.GetHeight(); ++y)
        for (int x = 0; x < src.GetWidth(); ++x) out.SetPixelColor(CPoint(x, y), src.GetPixelColor(CPoint(x, y)));
}

const int kWidths[] = {1, 2, 3, 4, 5, 6, 7, 8, 9, 15, 16, 17, 31, 33, 47, 64, 65, 100};

}  // namespace

TEST(DibRows, CopyAs24BitsMatchesThePixelPrimitivesByteForByte) {
    qmtest::RecordingAssertSink sink;
    std::mt19937 rng(7);
    for (int bpp : kDepths)
        for (int w : kWidths) {
            SCOPED_TRACE(testing::Message() << bpp << " bits, width " << w);
            CDIBitmap src;
            MakeNoisy(src, w, 3, bpp, rng);
            if (bpp <= 8 && w % 2) const_cast<BITMAPINFOHEADER*>(src.GetInfoHeader())->biClrUsed = (DWORD)(1u << bpp) / 2 + 1;  // short table: black past it
            CDIBitmap fast, slow;
            ASSERT_TRUE(fast.CopyAs24Bits(src));
            ReferenceTo24(src, slow);
            EXPECT_EQ(Bytes(fast), Bytes(slow));
        }
    EXPECT_TRUE(sink.Expressions().empty());
}

TEST(DibRows, BlackAndWhiteMatchesThePixelPrimitivesAndKeepsThePadding) {
    std::mt19937 rng(11);
    for (int bpp : {24, 32})
        for (int w : kWidths) {
            SCOPED_TRACE(testing::Message() << bpp << " bits, width " << w);
            CDIBitmap fast, slow;
            MakeNoisy(fast, w, 2, bpp, rng);
            slow.CopyFrom(fast);
            fast.BlackAndWhite();
            for (int y = 0; y < 2; ++y)
                for (int x = 0; x < w; ++x) {
                    COLORREF c = slow.GetPixelColor(CPoint(x, y));
                    int grey = (GetRValue(c) + GetGValue(c) + GetBValue(c)) / 3;
                    slow.SetPixelColor(CPoint(x, y), RGB(grey, grey, grey));
                }
            EXPECT_EQ(Bytes(fast), Bytes(slow));
        }
    // Every sum of three channels, the largest included.
    CDIBitmap all;
    all.Create(766, 1, 24);
    for (int s = 0; s < 766; ++s) all.SetPixelColor(CPoint(s, 0), RGB(s / 3, (s + 1) / 3, (s + 2) / 3));
    all.BlackAndWhite();
    for (int s = 0; s < 766; ++s) EXPECT_EQ(all.GetPixelValue(CPoint(s, 0)), (DWORD)(s / 3) * 0x010101u) << s;
}

TEST(DibRows, MirrorKeepsThePaddingAndReversesEveryPixel) {
    std::mt19937 rng(5);
    for (int bpp : {8, 16, 24, 32})
        for (int w : kWidths) {
            SCOPED_TRACE(testing::Message() << bpp << " bits, width " << w);
            CDIBitmap b;
            MakeNoisy(b, w, 2, bpp, rng);
            std::vector<BYTE> before = Bytes(b);
            b.Mirror();
            size_t stride = Stride(w, bpp), n = (size_t)bpp / 8;
            std::vector<BYTE> expect = before;
            for (size_t y = 0; y < 2; ++y)
                for (size_t x = 0; x < (size_t)w; ++x)
                    std::memcpy(&expect[y * stride + n * x], &before[y * stride + n * ((size_t)w - 1 - x)], n);
            EXPECT_EQ(Bytes(b), expect);
        }
}

TEST(DibRows, SquareQuarterTurnsMatchTheTurnOfANewBlock) {
    std::mt19937 rng(3);
    for (int bpp : {8, 24, 32})
        // The last two: pictures large enough to be written past the caches (2900 only at 8
        // bits, where 1677 is not).
        for (int side : {1, 2, 3, 16, 17, 31, 32, 33, 44, 45, 63, 64, 65, 97, 129, 255, 256, 257, 300, 1677, 2900}) {
            if (side == 2900 && bpp != 8) continue;
            SCOPED_TRACE(testing::Message() << bpp << " bits, side " << side);
            CDIBitmap b;
            MakeNoisy(b, side, side, bpp, rng);
            size_t stride = Stride(side, bpp), n = (size_t)bpp / 8;
            for (auto angle : {CDIBitmap::eRotate90, CDIBitmap::eRotate270}) {
                std::vector<BYTE> before = Bytes(b), expect(before.size(), 0);
                for (int y = 0; y < side; ++y)
                    for (int x = 0; x < side; ++x) {
                        int sx = angle == CDIBitmap::eRotate90 ? side - 1 - y : y;
                        int sy = angle == CDIBitmap::eRotate90 ? x : side - 1 - x;
                        std::memcpy(&expect[y * stride + n * x], &before[sy * stride + n * sx], n);
                    }
                b.Rotate(angle);
                ASSERT_EQ(Bytes(b), expect);  // padding cleared
            }
        }
}

TEST(DibRows, ResizeTakesTheNearestOrMiddlePixelOfEachRowAndColumn) {
    std::mt19937 rng(9);
    struct Case {
        int w, h, nw, nh;
    } cases[] = {{5, 4, 7, 9},    {33, 17, 100, 18}, {3, 3, 3, 8},     {64, 9, 65, 9},   {40, 30, 13, 7},
                 {17, 5, 16, 5},  {9, 21, 2, 20},    {64, 3, 128, 6},  {97, 4, 194, 8},  {33, 2, 66, 5},
                 {100, 5, 400, 11}, {128, 3, 192, 4}, {1, 1, 64, 3},   {301, 4, 150, 2}, {256, 2, 128, 1},
                 // Targets large enough to be written past the caches, rows starting on and off
                 // a cache line: a reduction, a doubling, an enlargement that does not repeat.
                 {2400, 1800, 1700, 1750}, {1024, 1024, 2048, 2048}, {1000, 700, 2001, 1401}};
    for (const Case& c : cases) {
        SCOPED_TRACE(testing::Message() << c.w << "x" << c.h << " to " << c.nw << "x" << c.nh);
        CDIBitmap b;
        MakeNoisy(b, c.w, c.h, 24, rng);
        CDIBitmap src;
        src.CopyFrom(b);
        ASSERT_EQ(b.Resize(CSize(c.nw, c.nh)), 1);
        // Enlarging: trunc(i / s). Shrinking: the middle of the run of source indexes r with
        // trunc(r * s) == i.
        bool grow = c.nw >= c.w && c.nh >= c.h;
        auto picks = [grow](int n, int from) {
            const double s = (double)n / from;
            std::vector<int> first((size_t)n, -1), end((size_t)n, -1), pick((size_t)n);
            for (int r = 0; r < from; ++r) {
                int i = (int)(r * s);
                if (i >= n) continue;
                if (first[(size_t)i] < 0) first[(size_t)i] = r;
                end[(size_t)i] = r + 1;
            }
            for (int i = 0; i < n; ++i) pick[(size_t)i] = grow ? (int)(i / s) : (first[(size_t)i] + end[(size_t)i]) / 2;
            return pick;
        };
        const std::vector<int> fx = picks(c.nw, c.w), fy = picks(c.nh, c.h);
        std::vector<BYTE> expect((size_t)b.GetBitsSize(), 0);
        size_t stride = Stride(c.nw, 24), srcStride = Stride(c.w, 24);
        for (int y = 0; y < c.nh; ++y)
            for (int x = 0; x < c.nw; ++x)
                std::memcpy(&expect[y * stride + 3 * x], src.GetBits() + fy[(size_t)y] * srcStride + 3 * fx[(size_t)x], 3);
        EXPECT_EQ(Bytes(b), expect);
    }
}

TEST(DibRows, ColourAdjustmentsOfWholeRowsMatchThoseOfSinglePixels) {
    // The same adjustment on a wide picture (whole rows, vector kernels) and on each of its
    // pixels alone (a 1 x 1 picture, one pixel at a time).
    using Adjust = void (*)(CDIBitmap&);
    const Adjust adjustments[] = {
        [](CDIBitmap& b) { b.AdjustBrightness(37); },      [](CDIBitmap& b) { b.AdjustBrightness(-200); },
        [](CDIBitmap& b) { b.AdjustContrast(63); },        [](CDIBitmap& b) { b.AdjustContrast(-45); },
        [](CDIBitmap& b) { b.AdjustContrastBrightness(-30, 90); }, [](CDIBitmap& b) { b.AdjustRGB(12, -7, 255); },
    };
    std::mt19937 rng(13);
    for (int bpp : {24, 32})
        for (size_t a = 0; a < std::size(adjustments); ++a) {
            SCOPED_TRACE(testing::Message() << bpp << " bits, adjustment " << a);
            CDIBitmap wide;
            MakeNoisy(wide, 150, 2, bpp, rng);
            CDIBitmap before;
            before.CopyFrom(wide);
            adjustments[a](wide);
            for (int y = 0; y < 2; ++y)
                for (int x = 0; x < 150; ++x) {
                    CDIBitmap one;
                    one.Create(1, 1, (WORD)bpp);
                    one.SetPixelValue(CPoint(0, 0), before.GetPixelValue(CPoint(x, y)));
                    adjustments[a](one);
                    ASSERT_EQ(wide.GetPixelValue(CPoint(x, y)), one.GetPixelValue(CPoint(0, 0))) << x << "," << y;
                }
            // The padding bytes after each row are not part of any pixel and stay as they were.
            size_t stride = Stride(150, bpp), used = 150 * (size_t)bpp / 8;
            for (size_t y = 0; y < 2; ++y)
                for (size_t i = used; i < stride; ++i) EXPECT_EQ(wide.GetBits()[y * stride + i], before.GetBits()[y * stride + i]);
        }
}

TEST(DibBlocks, ALargeBlockGivenBackServesTheNextRequestThatFitsIt) {
    const std::size_t kBig = std::size_t(48) << 20, kOther = std::size_t(12) << 20;
    BYTE* big = qm::dib::NewPixelBlock(kBig);
    BYTE* other = qm::dib::NewPixelBlock(kOther);
    ASSERT_NE(big, nullptr);
    ASSERT_NE(other, nullptr);
    qm::dib::FreePixelBlock(big, kBig);
    qm::dib::FreePixelBlock(other, kOther);
    // A request of half a kept block gets its own block instead of pinning the big one.
    BYTE* half = qm::dib::NewPixelBlock(kBig / 2);
    ASSERT_NE(half, nullptr);
    EXPECT_NE(half, big);
    EXPECT_NE(half, other);
    // Both are kept: a resize holds its source and its result at once.
    BYTE* again = qm::dib::NewPixelBlock(kBig);
    EXPECT_EQ(again, big);
    EXPECT_EQ(qm::dib::NewPixelBlock(kOther), other);
    // Whatever the system did with the pages meanwhile, the whole block is usable.
    std::memset(again, 0x5A, kBig);
    EXPECT_EQ(again[kBig - 1], 0x5A);
    qm::dib::FreePixelBlock(half, kBig / 2);
    qm::dib::FreePixelBlock(again, kBig);
    qm::dib::FreePixelBlock(other, kOther);
}

TEST(DibBlocks, ThreadsTakingAndGivingBackBlocksAtOnceNeverShareOne) {
    std::vector<std::thread> threads;
    std::atomic<int> shared{0};
    for (int t = 0; t < 4; ++t)
        threads.emplace_back([t, &shared] {
            for (int i = 0; i < 40; ++i) {
                const std::size_t size = (std::size_t(4) << 20) + std::size_t(i % 3) * 4096;
                BYTE* p = qm::dib::NewPixelBlock(size);
                if (!p) continue;
                std::memset(p, t, 4096);
                std::memset(p + size - 4096, t, 4096);
                if (p[0] != t || p[size - 1] != t) ++shared;
                qm::dib::FreePixelBlock(p, size);
            }
        });
    for (std::thread& th : threads) th.join();
    EXPECT_EQ(shared.load(), 0);
}
