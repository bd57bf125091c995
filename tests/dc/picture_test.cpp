#include <gtest/gtest.h>

#include <cstdlib>
#include <string>
#include <vector>

#include "dc_fixture.h"
#include "picture_samples.h"
#include "tests/support/recording_sink.h"
#include "utils/common/DIB.h"
#include "utils/framework/CDC.h"
#include "utils/platform/host.h"

namespace {

struct Stream {
    Stream(const void* data, size_t size) : p(qm::platform::CreateMemoryStream(data, size)) {}
    ~Stream() {
        if (p) p->Release();
    }
    IStream* p;
};

// Picture pixel (x, y), row 0 at the top, of a bitmap made by the loader.
COLORREF At(const CDIBitmap& bmp, int x, int y) { return bmp.GetPixelColor(CPoint(x, bmp.GetHeight() - 1 - y)); }

int ScreenDepth() {
    CDC screen;
    screen.CreateDC("DISPLAY", nullptr, nullptr, nullptr);
    return screen.GetDeviceCaps(BITSPIXEL);
}

bool Near(COLORREF a, COLORREF b, int tolerance) {
    return std::abs(GetRValue(a) - GetRValue(b)) <= tolerance && std::abs(GetGValue(a) - GetGValue(b)) <= tolerance &&
           std::abs(GetBValue(a) - GetBValue(b)) <= tolerance;
}

struct Sample {
    const char* what;
    const unsigned char* data;
    size_t size;
    int width, height;
    std::vector<COLORREF> pixels;  // row by row from the top
    int tolerance;
};

TEST(CreateFromAnyFile, ReadsEachFormatAtTheScreensDepth) {
    const Sample samples[] = {
        {"png", dctest::kRgbPng, sizeof dctest::kRgbPng, 3, 2,
         {RGB(255, 0, 0), RGB(0, 255, 0), RGB(0, 0, 255), RGB(255, 255, 0), RGB(0, 255, 255), RGB(255, 0, 255)}, 0},
        {"transparent png", dctest::kAlphaPng, sizeof dctest::kAlphaPng, 2, 1, {RGB(200, 100, 50), RGB(0, 0, 0)}, 0},
        {"gif", dctest::kTinyGif, sizeof dctest::kTinyGif, 2, 2,
         {RGB(255, 0, 0), RGB(0, 255, 0), RGB(0, 0, 255), RGB(255, 255, 255)}, 0},
        {"jpeg", dctest::kSolidJpeg, sizeof dctest::kSolidJpeg, 16, 16, std::vector<COLORREF>(256, RGB(40, 160, 220)),
         6},
    };
    for (const Sample& s : samples) {
        Stream stream(s.data, s.size);
        CDIBitmap bmp;
        ASSERT_EQ(bmp.CreateFromAnyFile(stream.p), 1) << s.what;
        EXPECT_EQ(bmp.GetSize(), CSize(s.width, s.height)) << s.what;
        EXPECT_EQ(bmp.GetBitCount(), ScreenDepth()) << s.what;
        for (int y = 0; y < s.height; ++y)
            for (int x = 0; x < s.width; ++x)
                EXPECT_TRUE(Near(At(bmp, x, y), s.pixels[(size_t)(y * s.width + x)], s.tolerance))
                    << s.what << " at " << x << "," << y << ": " << std::hex << At(bmp, x, y);
    }
}

TEST(CreateFromAnyFile, ABmpWrittenBySaveComesBack) {
    CDIBitmap src;
    ASSERT_TRUE(src.Create(5, 3, 24));
    for (int y = 0; y < 3; ++y)
        for (int x = 0; x < 5; ++x) src.SetPixelColor(CPoint(x, y), RGB(x * 50, y * 80, 200 - x * 10));
    std::string bytes = dctest::Saved(src, true);
    Stream stream(bytes.data(), bytes.size());
    stream.p->Seek(LARGE_INTEGER{}, STREAM_SEEK_END, nullptr);  // the loader starts from the beginning anyway
    CDIBitmap bmp;
    ASSERT_EQ(bmp.CreateFromAnyFile(stream.p), 1);
    ASSERT_EQ(bmp.GetSize(), CSize(5, 3));
    for (int y = 0; y < 3; ++y)
        for (int x = 0; x < 5; ++x) EXPECT_EQ(bmp.GetPixelColor(CPoint(x, y)), src.GetPixelColor(CPoint(x, y)));
}

#if !defined(_WIN32)  // Windows' picture loader has no PNM
TEST(CreateFromAnyFile, ReadsBinaryPnmScaledFromItsMaximum) {
    using std::string;
    using namespace std::string_literals;  // the samples hold NUL bytes
    const struct {
        string file;
        std::vector<COLORREF> pixels;
    } samples[] = {
        // two-byte samples are big-endian
        {"P5 2 1 65535\n\x12\x34\xAB\xCD"s, {RGB(0x12, 0x12, 0x12), RGB(0xAB, 0xAB, 0xAB)}},
        {"P6\n1 1\n1000\n\x00\x00\x01\xF4\x03\xE8"s, {RGB(0, 128, 255)}},
        {"P5\n# by hand\n3 1 15\r\x00\x07\x0F"s, {RGB(0, 0, 0), RGB(119, 119, 119), RGB(255, 255, 255)}},
        {"P6 1 2 255\t\x0A\x14\x1E\x28\x32\x3C"s, {RGB(10, 20, 30), RGB(40, 50, 60)}},
        {"P5 1 1 10 \x0B"s, {RGB(255, 255, 255)}},  // above the maximum
    };
    for (const auto& s : samples) {
        Stream stream(s.file.data(), s.file.size());
        CDIBitmap bmp;
        ASSERT_EQ(bmp.CreateFromAnyFile(stream.p), 1) << s.file;
        ASSERT_EQ((size_t)bmp.GetWidth() * (size_t)bmp.GetHeight(), s.pixels.size()) << s.file;
        for (int i = 0; i < (int)s.pixels.size(); ++i)
            EXPECT_EQ(At(bmp, i % bmp.GetWidth(), i / bmp.GetWidth()), s.pixels[(size_t)i]) << s.file << " pixel " << i;
    }
    qmtest::RecordingAssertSink asserts;
    const string refused[] = {"P5 2 1 255\n\x01", "P5 1 1 0\n\x01", "P5 1 1 65536\n\x01\x01", "P5 0 1 255\n",
                              "P5 1 1 255", "P6 100000 100000 255\n\x01", "P5 1 1 255x\x01"};
    for (const string& r : refused) {
        Stream stream(r.data(), r.size());
        CDIBitmap bmp;
        EXPECT_EQ(bmp.CreateFromAnyFile(stream.p), 0) << r;
    }
}
#endif

TEST(CreateFromAnyFile, RefusesWhatIsNoPicture) {
    qmtest::RecordingAssertSink asserts;
    const std::string junk[] = {"not a picture at all", std::string("\x89PNG\r\n\x1a\n", 8) + "truncated",
                                std::string("GIF89a\x02\x00", 8), std::string("\xFF\xD8\xFF", 3),
                                // a Huffman table declaring 510 codes, also after fill bytes
                                std::string("\xFF\xD8\xFF\xC4\x00\x13\x00\xFF\xFF", 9) + std::string(14, '\0'),
                                std::string("\xFF\xFF\xFF\xD8\xFF\xC4\x00\x13\x00\xFF\xFF", 11) + std::string(14, '\0')};
    for (const std::string& j : junk) {
        Stream stream(j.data(), j.size());
        CDIBitmap bmp;
        EXPECT_EQ(bmp.CreateFromAnyFile(stream.p), 0) << j.size();
        EXPECT_FALSE(bmp.IsValid());
    }
    EXPECT_EQ(asserts.Expressions().size(), 6u);
    EXPECT_EQ(asserts.Expressions().front(), "pPicture != NULL");
    CDIBitmap bmp;
    EXPECT_EQ(bmp.CreateFromAnyFile(nullptr), 0);
}

}  // namespace
