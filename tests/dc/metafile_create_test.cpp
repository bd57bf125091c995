// Metafile creation: the record layout the system's recorder writes, the round trip through
// the extraction for every depth, placeable .wmf files, the clipboard, and (POSIX) an
// independent reader, libwmf's wmf2svg, giving the pixels back.
#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <fstream>
#include <string>
#include <vector>

#include "tests/support/recording_sink.h"
#include "utils/common/OleUtils.h"
#include "utils/framework/CFile.h"
#include "utils/platform/clipboard.h"
#include "utils/platform/globalmem.h"
#include "utils/platform/host.h"
#include "utils/platform/metafile.h"

namespace {

namespace plat = qm::platform;

void Paint(CDIBitmap& bmp, int w, int h, WORD bits) {
    ASSERT_TRUE(bmp.Create(w, h, bits));
    if (bits <= 8) {
        RGBQUAD* table = bmp.GetColorTable();
        for (DWORD i = 0; i < bmp.GetColorTableSize() / sizeof(RGBQUAD); ++i)
            table[i] = RGBQUAD{(BYTE)(i * 53 + 7), (BYTE)(255 - i * 9), (BYTE)(i * 31), 0};
    }
    for (DWORD i = 0; i < bmp.GetBitsSize(); ++i) bmp.GetBits()[i] = (BYTE)(i * 7 + 3);
}

std::vector<COLORREF> Pixels(const CDIBitmap& bmp) {
    std::vector<COLORREF> v;
    for (int y = 0; y < bmp.GetHeight(); ++y)
        for (int x = 0; x < bmp.GetWidth(); ++x) v.push_back(bmp.GetPixelColor(CPoint(x, y)) & 0xFFFFFF);
    return v;
}

std::vector<BYTE> Bits(HMETAFILE hmf) {
    std::vector<BYTE> bytes;
    plat::MetafileBits(hmf, bytes);
    return bytes;
}

unsigned Word(const std::vector<BYTE>& b, size_t at) { return b[at] | (b[at + 1] << 8); }
unsigned Dword(const std::vector<BYTE>& b, size_t at) { return Word(b, at) | (Word(b, at + 2) << 16); }

TEST(MetafileCreate, RecordsTheBitmapAsOneStretchDibRecord) {
    CDIBitmap bmp;
    Paint(bmp, 5, 3, 24);
    METAFILEPICT mfp;
    ASSERT_TRUE(OleUIMetafilePictFromBitmap(bmp, &mfp));
    EXPECT_EQ(mfp.mm, MM_ANISOTROPIC);
    EXPECT_EQ(mfp.xExt, MulDiv(5, 2540, 96));
    EXPECT_EQ(mfp.yExt, MulDiv(3, 2540, 96));
    std::vector<BYTE> b = Bits(mfp.hMF);
    plat::MetafileDelete(mfp.hMF);
    const size_t dib = 40 + 16 * 3;  // header and three rows of 16 bytes
    ASSERT_EQ(b.size(), 72 + dib);
    EXPECT_EQ(Word(b, 0), 1u);
    EXPECT_EQ(Word(b, 2), 9u);
    EXPECT_EQ(Word(b, 4), 0x0300u);
    EXPECT_EQ(Dword(b, 6), (72 + dib) / 2);
    EXPECT_EQ(Dword(b, 12), (28 + dib) / 2);
    EXPECT_EQ(Word(b, 22), 0x020Bu);  // window origin
    EXPECT_EQ(Word(b, 32), 0x020Cu);  // window extent: height, width
    EXPECT_EQ(Word(b, 34), 3u);
    EXPECT_EQ(Word(b, 36), 5u);
    EXPECT_EQ(Dword(b, 38), (28 + dib) / 2);
    EXPECT_EQ(Word(b, 42), (unsigned)META_STRETCHDIB);
    EXPECT_EQ(Dword(b, 44), (unsigned)SRCCOPY);
    EXPECT_EQ(Dword(b, 66 + 20), 48u);  // biSizeImage filled in
    EXPECT_EQ(std::memcmp(b.data() + 66 + 40, bmp.GetBits(), 48), 0);
    EXPECT_EQ(Dword(b, 66 + dib), 3u);  // the end record
}

TEST(MetafileCreate, RoundTripsThroughTheExtractionAtEveryDepth) {
    for (WORD bits : {1, 4, 8, 16, 24, 32}) {
        for (int w : {1, 7, 33}) {
            CDIBitmap bmp, back;
            Paint(bmp, w, 5, bits);
            METAFILEPICT mfp;
            ASSERT_TRUE(OleUIMetafilePictFromBitmap(bmp, &mfp)) << bits;
            ASSERT_TRUE(OleUIMetafilePictExtract(back, &mfp)) << bits;
            plat::MetafileDelete(mfp.hMF);
            EXPECT_EQ(back.GetBitCount(), bits);
            EXPECT_EQ(Pixels(back), Pixels(bmp)) << bits << " bits, width " << w;
        }
    }
}

TEST(MetafileCreate, ExtentsComeFromTheResolution) {
    CDIBitmap bmp;
    Paint(bmp, 300, 30, 8);
    bmp.SetPelsPerMeter(11811, 5906);  // 300 x 150 dpi
    METAFILEPICT mfp;
    ASSERT_TRUE(OleUIMetafilePictFromBitmap(bmp, &mfp));
    plat::MetafileDelete(mfp.hMF);
    EXPECT_EQ(mfp.xExt, MulDiv(300, 100000, 11811));  // one inch
    EXPECT_EQ(mfp.yExt, MulDiv(30, 100000, 5906));
}

TEST(MetafileCreate, RefusesWhatSixteenBitExtentsCannotHold) {
    qmtest::RecordingAssertSink sink;
    CDIBitmap wide, empty;
    ASSERT_TRUE(wide.Create(32768, 1, 1));
    METAFILEPICT mfp{0, 1, 1, nullptr};
    EXPECT_FALSE(OleUIMetafilePictFromBitmap(wide, &mfp));
    EXPECT_EQ(mfp.hMF, nullptr);
    EXPECT_FALSE(OleUIMetafilePictFromBitmap(empty, &mfp));
    EXPECT_EQ(OleUIMetafilePictGlobalFromBitmap(empty), nullptr);
    EXPECT_EQ(sink.Expressions(), (std::vector<std::string>{"bitmap.GetWidth() <= 32767 && bitmap.GetHeight() <= 32767",
                                                            "bitmap.IsValid()", "bitmap.IsValid()"}));
}

std::vector<BYTE> WmfFile(const CDIBitmap& bmp) {
    CMemFile file;
    EXPECT_TRUE(OleUIMetafileWriteBitmap(bmp, file));
    std::vector<BYTE> bytes((size_t)file.GetLength());
    file.SeekToBegin();
    file.Read(bytes.data(), (UINT)bytes.size());
    return bytes;
}

bool ReadWmf(const std::vector<BYTE>& bytes, CDIBitmap& out) {
    CMemFile file;
    file.Write(bytes.data(), (UINT)bytes.size());
    file.SeekToBegin();
    return OleUIMetafileReadBitmap(out, file) != FALSE;
}

TEST(MetafileFile, PlaceableHeaderAndRoundTrip) {
    CDIBitmap bmp;
    Paint(bmp, 64, 33, 24);
    bmp.SetPelsPerMeter(2835, 2835);  // 72 dpi
    std::vector<BYTE> b = WmfFile(bmp);
    ASSERT_GT(b.size(), 22u + 72u);
    EXPECT_EQ(Dword(b, 0), 0x9AC6CDD7u);
    EXPECT_EQ(Word(b, 10), 64u);
    EXPECT_EQ(Word(b, 12), 33u);
    EXPECT_EQ(Word(b, 14), 72u);
    unsigned x = 0;
    for (size_t i = 0; i < 20; i += 2) x ^= Word(b, i);
    EXPECT_EQ(Word(b, 20), x);
    CDIBitmap back;
    ASSERT_TRUE(ReadWmf(b, back));
    EXPECT_EQ(Pixels(back), Pixels(bmp));
    // Without the placeable header, and with a wrong checksum, the metafile still reads.
    CDIBitmap bare, badSum;
    EXPECT_TRUE(ReadWmf(std::vector<BYTE>(b.begin() + 22, b.end()), bare));
    EXPECT_EQ(Pixels(bare), Pixels(bmp));
    b[20] ^= 0xFF;
    EXPECT_TRUE(ReadWmf(b, badSum));
}

TEST(MetafileFile, DamagedFilesAreRefused) {
    CDIBitmap bmp;
    Paint(bmp, 9, 4, 8);
    std::vector<BYTE> good = WmfFile(bmp);
    std::vector<std::vector<BYTE>> bad = {
        {},
        std::vector<BYTE>(good.begin(), good.begin() + 30),          // placeable header and a stub
        std::vector<BYTE>(good.begin(), good.begin() + 22 + 70),     // cut inside the DIB record
        std::vector<BYTE>(100, 0x41),
    };
    std::vector<BYTE> noDib(good);
    noDib[22 + 42] = 0x01;  // the DIB record's function becomes an unknown one
    bad.push_back(noDib);
    for (size_t i = 0; i < bad.size(); ++i) {
        CDIBitmap out;
        EXPECT_FALSE(ReadWmf(bad[i], out)) << i;
        EXPECT_FALSE(out.IsValid()) << i;
    }
}

TEST(MetafileClipboard, APictureOnTheClipboardGivesTheBitmapBack) {
    CDIBitmap bmp, back;
    Paint(bmp, 12, 7, 4);
    HGLOBAL h = OleUIMetafilePictGlobalFromBitmap(bmp);
    ASSERT_NE(h, nullptr);
    ASSERT_TRUE(plat::ClipboardOpen(nullptr));
    plat::ClipboardEmpty();
    ASSERT_NE(plat::ClipboardSetData(CF_METAFILEPICT, h), nullptr);
    plat::ClipboardClose();
    ASSERT_TRUE(plat::ClipboardOpen(nullptr));
    HGLOBAL got = plat::ClipboardGetData(CF_METAFILEPICT);
    auto* mfp = got ? (METAFILEPICT*)plat::GlobalMemLock(got) : nullptr;
    ASSERT_NE(mfp, nullptr);
    EXPECT_TRUE(OleUIMetafilePictExtract(back, mfp));
    plat::GlobalMemUnlock(got);
    plat::ClipboardEmpty();
    plat::ClipboardClose();
    EXPECT_EQ(Pixels(back), Pixels(bmp));
}

#if !defined(_WIN32)
// libwmf, a reader that shares no code with ours, must give our pictures' pixels back:
// wmf2svg writes the embedded picture beside the SVG as <name>-1.png.
TEST(MetafileFile, LibwmfReadsOurPixelsPosixOnly) {
    if (std::system("command -v wmf2svg >/dev/null 2>&1") != 0) GTEST_SKIP() << "wmf2svg (libwmf-bin) missing";
    char folder[] = "/tmp/qm-wmf-XXXXXX";
    ASSERT_NE(mkdtemp(folder), nullptr);
    for (WORD bits : {1, 4, 8, 24, 32}) {
        CDIBitmap bmp;
        Paint(bmp, 13, 6, bits);
        std::string base = std::string(folder) + "/p" + std::to_string(bits);
        std::vector<BYTE> b = WmfFile(bmp);
        ASSERT_TRUE(std::ofstream(base + ".wmf", std::ios::binary).write((const char*)b.data(), (long)b.size()));
        std::string cmd = "wmf2svg -o '" + base + ".svg' '" + base + ".wmf' >/dev/null 2>&1";
        ASSERT_EQ(std::system(cmd.c_str()), 0) << bits;
        IStream* stream = plat::OpenFileStream((base + "-1.png").c_str());
        ASSERT_NE(stream, nullptr) << bits;
        CDIBitmap png;
        EXPECT_TRUE(png.CreateFromAnyFile(stream));
        stream->Release();
        ASSERT_EQ(png.GetWidth(), 13);
        ASSERT_EQ(png.GetHeight(), 6);
        EXPECT_EQ(Pixels(png), Pixels(bmp)) << bits << " bits";
    }
    std::string clean = std::string("rm -rf '") + folder + "'";
    EXPECT_EQ(std::system(clean.c_str()), 0);
}
#endif

}  // namespace
