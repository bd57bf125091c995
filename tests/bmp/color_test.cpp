// Colour adjustments: every channel value through each formula, palette versus pixels, the
// refusals with their texts, grey.
#include <gtest/gtest.h>

#include <functional>

#include "tests/bmp/bmp_model.h"
#include "tests/support/recording_sink.h"

using namespace bmptest;

namespace {

int Clamp(long long v, int top) { return v < 0 ? 0 : v > top ? top : (int)v; }

// The formulas, per channel (0 red, 1 green, 2 blue), for an 8-bit (top 255) or 5-bit (top 31)
// channel.
struct Op {
    const char* name;
    std::function<void(CDIBitmap&)> run;
    std::function<int(int c, int ch, int top)> expect;
};

std::vector<Op> Ops() {
    std::vector<Op> ops;
    for (int b : {-255, -60, -7, 7, 9, 255, 300})
        ops.push_back({"brightness", [b](CDIBitmap& m) { m.AdjustBrightness(b); },
                       [b](int c, int, int top) { return Clamp(c + (top == 31 ? b / 8 : b), top); }});
    for (int k : {-100, -37, 50, 100}) {
        ops.push_back({"contrast", [k](CDIBitmap& m) { m.AdjustContrast(k); }, [k](int c, int, int top) {
                           return Clamp(c + (long long)(c - (top + 1) / 2) * k / 100, top);
                       }});
        ops.push_back({"contrast+brightness", [k](CDIBitmap& m) { m.AdjustContrastBrightness(k, -20); },
                       [k](int c, int, int top) {
                           int v = Clamp(c + (long long)(c - (top + 1) / 2) * k / 100, top);
                           return Clamp(v + (top == 31 ? -20 / 8 : -20), top);
                       }});
    }
    ops.push_back({"rgb", [](CDIBitmap& m) { m.AdjustRGB(40, -100, 15); }, [](int c, int ch, int top) {
                       const int off[3] = {40, -100, 15};
                       return Clamp(c + (top == 31 ? off[ch] / 8 : off[ch]), top);
                   }});
    return ops;
}

}  // namespace

TEST(DibColor, EveryChannelValueFollowsItsFormula) {
    qmtest::RecordingAssertSink quiet;
    for (const Op& op : Ops()) {
        // 24 and 32 bits: pixel i has red i, green 255 - i, blue i; the fourth byte is kept.
        for (int bpp : {24, 32}) {
            CDIBitmap m;
            m.Create(256, 1, (WORD)bpp);
            for (int i = 0; i < 256; ++i) m.SetPixelValue(CPoint(i, 0), (DWORD)(i << 16 | (255 - i) << 8 | i | 0x7F000000));
            op.run(m);
            for (int i = 0; i < 256; ++i) {
                DWORD v = m.GetPixelValue(CPoint(i, 0));
                ASSERT_EQ((int)(v >> 16 & 255), op.expect(i, 0, 255)) << op.name << " " << bpp;
                ASSERT_EQ((int)(v >> 8 & 255), op.expect(255 - i, 1, 255)) << op.name;
                ASSERT_EQ((int)(v & 255), op.expect(i, 2, 255)) << op.name;
                if (bpp == 32) { ASSERT_EQ(v >> 24, 0x7Fu); }
            }
        }
        // 16 bits: fields red i, green 31 - i, blue i; bit 15 kept.
        CDIBitmap m;
        m.Create(32, 1, 16);
        for (int i = 0; i < 32; ++i) m.SetPixelValue(CPoint(i, 0), (DWORD)((i % 2) << 15 | i << 10 | (31 - i) << 5 | i));
        op.run(m);
        for (int i = 0; i < 32; ++i) {
            DWORD v = m.GetPixelValue(CPoint(i, 0));
            ASSERT_EQ(v >> 15, (DWORD)(i % 2));
            ASSERT_EQ((int)(v >> 10 & 31), op.expect(i, 0, 31)) << op.name << " 16-bit " << i;
            ASSERT_EQ((int)(v >> 5 & 31), op.expect(31 - i, 1, 31)) << op.name;
            ASSERT_EQ((int)(v & 31), op.expect(i, 2, 31)) << op.name;
        }
        // Palette: only the table's entries change (here a 16-entry table of an 8-bit image).
        CDIBitmap p;
        std::vector<BYTE> block(40 + 64 + 4, 0);
        auto* h = reinterpret_cast<BITMAPINFOHEADER*>(block.data());
        *h = BITMAPINFOHEADER{40, 1, 1, 1, 8, BI_RGB, 0, 0, 0, 16, 0};
        for (int i = 0; i < 16; ++i) block[40 + 4 * i] = block[41 + 4 * i] = block[42 + 4 * i] = (BYTE)(i * 17);
        block[104] = 5;
        ASSERT_TRUE(p.Attach(h));
        op.run(p);
        for (int i = 0; i < 16; ++i) ASSERT_EQ(block[42 + 4 * i], op.expect(i * 17, 0, 255)) << op.name;
        EXPECT_EQ(block[104], 5);
        p.Detach();
    }
}

TEST(DibColor, ZeroAmountsChangeNothingAndRangesAreReported) {
    qmtest::RecordingAssertSink sink;
    std::mt19937 rng(5);
    CDIBitmap m;
    MakeRandom(m, 9, 4, 8, rng);
    Picture before = ModelOf(m);
    m.AdjustBrightness(0);
    m.AdjustContrast(0);
    m.AdjustRGB(0, 0, 0);
    m.AdjustContrastBrightness(0, 0);
    EXPECT_TRUE(ModelOf(m) == before);
    EXPECT_TRUE(sink.Expressions().empty());
    m.AdjustBrightness(300);
    m.AdjustContrast(-101);
    m.AdjustRGB(0, 256, 0);
    EXPECT_EQ(sink.Expressions(), (std::vector<std::string>{"(MIN_BRIGHTNESS <= iBrightness) && (iBrightness <= MAX_BRIGHTNESS)",
                                                            "(MIN_CONTRAST <= iContrast) && (iContrast <= MAX_CONTRAST)",
                                                            "(MIN_BRIGHTNESS <= iBrightness) && (iBrightness <= MAX_BRIGHTNESS)"}));
}

TEST(DibColor, NonStandardMasksAreRefusedWithTheirMessages) {
    struct Case { void (*run)(CDIBitmap&); const char* message; };
    const Case cases[] = {
        {[](CDIBitmap& m) { m.AdjustBrightness(10); }, "Adjusting DIBs with color masks still did not supported"},
        {[](CDIBitmap& m) { m.AdjustContrast(10); }, "Adjusting DIBs with color masks still did not supported"},
        {[](CDIBitmap& m) { m.AdjustRGB(8, 16, 24); }, "Adjusting DIBs with color masks still did not supported\n"},
        {[](CDIBitmap& m) { m.AdjustContrastBrightness(10, 16); },
         "Error - CDIBitmap still did not support color adjusting for non-standard masked DIBs"},
    };
    for (const Case& c : cases)
        for (DWORD standard : {0u, 1u}) {
            std::vector<BYTE> block(40 + 12 + 4, 0);
            auto* h = reinterpret_cast<BITMAPINFOHEADER*>(block.data());
            *h = BITMAPINFOHEADER{40, 1, 1, 1, 16, BI_BITFIELDS, 0, 0, 0, 0, 0};
            const DWORD masks[2][3] = {{0xF800, 0x07E0, 0x001F}, {0x7C00, 0x03E0, 0x001F}};
            std::memcpy(&block[40], masks[standard], 12);
            block[52] = 0x84;  // 4, 4, 4
            block[53] = 0x10;
            qmtest::RecordingAssertSink sink;
            qmtest::RecordingTraceSink trace;
            CDIBitmap m;
            ASSERT_TRUE(m.Attach(h));
            c.run(m);
            m.Detach();
            if (standard) {
                EXPECT_NE(block[52] | block[53] << 8, 0x1084);
                EXPECT_TRUE(sink.Expressions().empty());
            } else {
                EXPECT_EQ(block[52] | block[53] << 8, 0x1084);
                EXPECT_EQ(trace.Text(), c.message);
                EXPECT_EQ(sink.Expressions(), std::vector<std::string>{"FALSE"});
            }
        }
}

TEST(DibColor, BlackAndWhiteGoesThroughThePixelPrimitives) {
    qmtest::RecordingAssertSink sink;
    CDIBitmap m;
    m.Create(2, 1, 32);
    m.SetPixelValue(CPoint(0, 0), 0xFF0A141F);  // red 10, green 20, blue 31
    m.SetPixelValue(CPoint(1, 0), 0x00FFFFFE);
    m.BlackAndWhite();
    EXPECT_EQ(m.GetPixelValue(CPoint(0, 0)), 0x00141414u);
    EXPECT_EQ(m.GetPixelValue(CPoint(1, 0)), 0x00FEFEFEu);
    std::mt19937 rng(1);
    CDIBitmap p;
    MakeRandom(p, 3, 2, 4, rng);
    Picture before = ModelOf(p);
    p.BlackAndWhite();  // palette pixels cannot be written by colour: each write is refused
    EXPECT_TRUE(ModelOf(p) == before);
    EXPECT_EQ(sink.Expressions(), std::vector<std::string>(6, "0"));
}
