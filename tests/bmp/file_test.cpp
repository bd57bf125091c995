// BMP files: byte layout of Save, round trips at every depth, the refusals of Load and of
// CreateFromBMPFile.
#include <gtest/gtest.h>

#include <cstdio>

#include "tests/bmp/bmp_model.h"
#include "tests/support/recording_sink.h"
#include "utils/platform/stream.h"

using namespace bmptest;

namespace {

std::vector<BYTE> Saved(CDIBitmap& b, bool header) {
    CMemFile f;
    b.Save(f, header);
    std::vector<BYTE> out((size_t)f.GetLength());
    f.SeekToBegin();
    f.Read(out.data(), (UINT)out.size());
    return out;
}

bool LoadBytes(CDIBitmap& b, std::vector<BYTE> bytes, bool header) {
    CMemFile f(bytes.data(), (UINT)bytes.size());
    return b.Load(f, header);
}

DWORD Dword(const std::vector<BYTE>& v, size_t at) { return v[at] | v[at + 1] << 8 | v[at + 2] << 16 | (DWORD)v[at + 3] << 24; }

}  // namespace

TEST(DibFile, SaveWritesThePaddedLayout) {
    CDIBitmap b;
    b.Create(1, 1, 24);
    b.SetPixelValue(CPoint(0, 0), 0x123456);
    std::vector<BYTE> f = Saved(b, true);
    ASSERT_EQ(f.size(), 60u);  // 14 + 40 + 4 = 58, padded to 60
    EXPECT_EQ(f[0], 'B');
    EXPECT_EQ(f[1], 'M');
    EXPECT_EQ(Dword(f, 2), 60u);
    EXPECT_EQ(Dword(f, 6), 0u);
    EXPECT_EQ(Dword(f, 10), 54u);
    EXPECT_EQ(Dword(f, 14 + 20), 6u);  // biSizeImage counts the padding
    EXPECT_EQ(Dword(f, 54) & 0xFFFFFF, 0x123456u);
    EXPECT_EQ(f[58] | f[59], 0);
    EXPECT_EQ(Saved(b, false).size(), 44u);
}

TEST(DibFile, RoundTripsAtEveryDepthThroughFilesAndStreams) {
    std::mt19937 rng(11);
    char path[] = "dib_roundtrip.bmp";
    for (int bpp : kDepths)
        for (int w : {1, 3, 17, 33}) {
            CDIBitmap b;
            MakeRandom(b, w, 3, bpp, rng);
            b.SetPelsPerMeter(2835, 1417);
            {
                CFile out(path, CFile::modeCreate | CFile::modeWrite);
                ASSERT_TRUE(b.Save(out, true));
            }
            CFile in(path, CFile::modeRead);
            CDIBitmap back;
            ASSERT_TRUE(back.Load(in, true)) << bpp << " " << w;
            EXPECT_TRUE(ModelOf(back) == ModelOf(b));
            LONG x, y;
            back.GetPelsPerMeter(&x, &y);
            EXPECT_EQ(x * 10000 + y, 2835 * 10000 + 1417);
            in.Close();
            IStream* s = qm::platform::OpenFileStream(path);
            ASSERT_NE(s, nullptr);
            CDIBitmap streamed;
            EXPECT_EQ(streamed.CreateFromBMPFile(s), 1);
            s->Release();
            EXPECT_TRUE(ModelOf(streamed) == ModelOf(b));
            CDIBitmap packed;
            ASSERT_TRUE(LoadBytes(packed, Saved(b, false), false));
            EXPECT_TRUE(ModelOf(packed) == ModelOf(b));
        }
    std::remove(path);
}

TEST(DibFile, HeadersAndLengthsThatLieAreRefused) {
    CDIBitmap b;
    b.Create(3, 2, 8);
    std::memset(b.GetBits(), 1, b.GetBitsSize());
    const std::vector<BYTE> good = Saved(b, true);
    // Create(BITMAPINFOHEADER*), behind the stream reader, checks only the sizes: it takes
    // what Load refuses for its header fields (stream: true) as long as the rows are there.
    struct Case { const char* what; void (*edit)(std::vector<BYTE>&); bool ok; bool stream; };
    const Case cases[] = {
        {"as saved", [](std::vector<BYTE>&) {}, true, true},
        {"not BM", [](std::vector<BYTE>& f) { f[1] = 'A'; }, false, false},
        {"bfSize one short", [](std::vector<BYTE>& f) { f[2] -= 1; }, false, true},
        {"top-down", [](std::vector<BYTE>& f) { f[22] = 0xFE; f[23] = f[24] = f[25] = 0xFF; }, false, false},
        {"RLE8", [](std::vector<BYTE>& f) { f[30] = 1; }, false, true},
        {"two planes", [](std::vector<BYTE>& f) { f[26] = 2; }, false, true},
        {"rows past the end", [](std::vector<BYTE>& f) { f[22] = 3; }, false, false},
        {"huge colour table", [](std::vector<BYTE>& f) { f[46 + 3] = 0x40; }, false, false},
        {"huge header", [](std::vector<BYTE>& f) { f[14 + 3] = 0x7F; }, false, true},
        {"truncated", [](std::vector<BYTE>& f) { f.resize(30); f[2] = 30; f[3] = 0; }, false, false},
        // bfOffBits is not used: the rows follow the table whatever it says.
        {"offset ignored", [](std::vector<BYTE>& f) { f[10] = 200; }, true, true},
    };
    for (const Case& c : cases) {
        std::vector<BYTE> f = good;
        c.edit(f);
        CDIBitmap m;
        EXPECT_EQ(LoadBytes(m, f, true), c.ok) << c.what;
        EXPECT_EQ(m.IsValid(), c.ok) << c.what;
        IStream* s = qm::platform::CreateMemoryStream(f.data(), f.size());
        CDIBitmap viaStream;
        EXPECT_EQ(viaStream.CreateFromBMPFile(s), c.stream ? 1 : 0) << c.what;
        s->Release();
    }
    qmtest::RecordingAssertSink sink;
    CDIBitmap m;
    EXPECT_FALSE(m.IsValid());
    EXPECT_FALSE(m.IsReadyToJpegCompression());
    EXPECT_TRUE(b.IsReadyToJpegCompression() == false);
}
