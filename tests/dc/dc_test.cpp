#include <gtest/gtest.h>

#include <random>
#include <string>

#include "dc_fixture.h"

namespace {

using dctest::kFonts;
using dctest::MemoryDC;

TEST(CDC, FontMetricsFollowTheRequestedHeight) {
    for (const auto& choice : kFonts) {
        MemoryDC m(choice);
        TEXTMETRICA tm{};
        ASSERT_TRUE(m.dc.GetTextMetrics(&tm)) << choice.face;
        EXPECT_EQ(tm.tmHeight, tm.tmAscent + tm.tmDescent) << choice.face;
        if (choice.height > 0) EXPECT_NEAR(tm.tmHeight, choice.height, 1) << choice.face;
        else EXPECT_NEAR(tm.tmHeight - tm.tmInternalLeading, -choice.height, 1) << choice.face;
        EXPECT_GT(tm.tmAveCharWidth, 0);
        EXPECT_EQ(m.dc.GetTextExtent("Wg", 2).cy, tm.tmHeight);
        bool fixed = (tm.tmPitchAndFamily & TMPF_FIXED_PITCH) == 0;
        EXPECT_EQ(fixed, std::string(choice.face) == "DejaVu Sans Mono") << choice.face;
    }
    CDC screen;
    ASSERT_TRUE(screen.CreateDC("DISPLAY", nullptr, nullptr, nullptr));
    EXPECT_EQ(screen.GetDeviceCaps(LOGPIXELSX), 96);
    EXPECT_EQ(screen.GetDeviceCaps(LOGPIXELSY), 96);
    CWindowDC whole(nullptr);
    ASSERT_NE(whole.GetSafeHdc(), nullptr);
    EXPECT_EQ(whole.GetDeviceCaps(LOGPIXELSY), 96);
    EXPECT_EQ(whole.GetDeviceCaps(HORZRES), screen.GetDeviceCaps(HORZRES));
}

// Extents are the sums of the characters' advance widths, tabs go to the next stop, and
// a fixed-pitch face has one width for every character.
TEST(CDC, ExtentsAreSumsOfCharacterWidthsWithTabStops) {
    std::mt19937 rng(5);
    for (const auto& choice : kFonts) {
        MemoryDC m(choice);
        int widths[256];
        ASSERT_TRUE(m.dc.GetCharWidth(0, 255, widths));
        for (int trial = 0; trial < 50; ++trial) {
            std::string t;
            long sum = 0;
            for (int i = 0, n = 1 + (int)(rng() % 40); i < n; ++i) {
                unsigned char c = (unsigned char)(0x20 + rng() % 0x5F);
                t += (char)c;
                sum += widths[c];
            }
            EXPECT_EQ(m.dc.GetTextExtent(t.c_str(), (int)t.size()).cx, sum) << choice.face << " '" << t << "'";
            EXPECT_EQ(m.dc.GetTabbedTextExtent(t.c_str(), (int)t.size(), 0, nullptr).cx, sum);
        }
        int stop = 50;
        EXPECT_EQ(m.dc.GetTabbedTextExtent("i\tW", 3, 1, &stop).cx, 50 + widths['W']) << choice.face;
        EXPECT_EQ(m.dc.GetTabbedTextExtent("\t\t", 2, 1, &stop).cx, 100);
        TEXTMETRICA tm{};
        m.dc.GetTextMetrics(&tm);
        EXPECT_EQ(m.dc.GetTabbedTextExtent("\t", 1, 0, nullptr).cx, 8 * tm.tmAveCharWidth) << choice.face;
        if (std::string(choice.face) == "DejaVu Sans Mono") {
            for (int c = 0x21; c < 0x7F; ++c) EXPECT_EQ(widths[c], widths['x']) << c;
        }
    }
}

TEST(CDC, PixelsFillsAndTransfers) {
    MemoryDC a(kFonts[0], 8, 8), b(kFonts[0], 8, 8);
    a.dc.FillSolidRect(0, 0, 8, 8, RGB(10, 20, 30));
    a.dc.FillSolidRect(CRect(0, 0, 4, 4), RGB(200, 0, 5));
    EXPECT_EQ(a.dc.GetPixel(3, 3), RGB(200, 0, 5));
    EXPECT_EQ(a.dc.GetPixel(4, 3), RGB(10, 20, 30));
    EXPECT_EQ(a.dc.SetPixel(7, 7, RGB(1, 2, 3)), RGB(1, 2, 3));
    EXPECT_EQ(a.dc.GetPixel(7, 7), RGB(1, 2, 3));
    EXPECT_EQ(a.dc.GetPixel(8, 0), CLR_INVALID);

    b.dc.FillSolidRect(0, 0, 8, 8, RGB(255, 255, 255));
    ASSERT_TRUE(b.dc.BitBlt(1, 2, 4, 4, &a.dc, 2, 2, SRCCOPY));
    EXPECT_EQ(b.dc.GetPixel(1, 2), RGB(200, 0, 5));   // from a's (2, 2)
    EXPECT_EQ(b.dc.GetPixel(3, 2), RGB(10, 20, 30));  // from a's (4, 2)
    EXPECT_EQ(b.dc.GetPixel(0, 0), RGB(255, 255, 255));

    // Halving 2 x 2 blocks of one colour each gives those colours in every stretch mode.
    b.dc.FillSolidRect(0, 0, 8, 8, 0);
    EXPECT_NE(b.dc.SetStretchBltMode(COLORONCOLOR), 0);
    EXPECT_EQ(b.dc.GetStretchBltMode(), COLORONCOLOR);
    ASSERT_TRUE(b.dc.StretchBlt(0, 0, 4, 4, &a.dc, 0, 0, 8, 8, SRCCOPY));
    EXPECT_EQ(b.dc.GetPixel(0, 0), RGB(200, 0, 5));
    EXPECT_EQ(b.dc.GetPixel(1, 1), RGB(200, 0, 5));
    EXPECT_EQ(b.dc.GetPixel(2, 2), RGB(10, 20, 30));
    EXPECT_EQ(b.dc.GetPixel(4, 4), RGB(0, 0, 0));
}

TEST(CDC, SelectionReturnsThePreviousObjectAndABitmapLivesInOneContext) {
    {
        MemoryDC m(kFonts[0]);
        CFont other;
        ASSERT_TRUE(other.CreatePointFont(100, "Courier New"));
        CFont* prev = m.dc.SelectObject(&other);
        ASSERT_NE(prev, nullptr);
        EXPECT_EQ(prev->m_hObject, m.font.m_hObject);
        EXPECT_EQ(m.dc.SelectObject(prev)->m_hObject, other.m_hObject);
        LOGFONTA lf{};
        EXPECT_EQ(other.GetLogFont(&lf), (int)sizeof lf);
        EXPECT_EQ(lf.lfHeight, -13);  // 10 points at 96 pixels per inch
        EXPECT_STREQ(lf.lfFaceName, "Courier New");

        CDC second;
        ASSERT_TRUE(second.CreateCompatibleDC(&m.dc));
        EXPECT_EQ(second.SelectObject(&m.bitmap), nullptr);  // still selected into m.dc
        EXPECT_FALSE(CDC().CreateDC("PRINTER", nullptr, nullptr, nullptr));
    }
    // Temporary objects (the selections' previous objects) go once nothing uses them.
    CGdiObject::DeleteTempMap();
}

}  // namespace
