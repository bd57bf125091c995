// Storage, ownership and the pixel primitives, against the byte-level model.
#include <gtest/gtest.h>

#include <vector>

#include "tests/bmp/bmp_model.h"
#include "tests/support/recording_sink.h"
#include "utils/common/QMBase.h"
#include "utils/common/SimpleRowBytes.h"
#include "utils/platform/heap.h"

using namespace bmptest;

TEST(DibModel, PixelPrimitivesMatchTheByteLayoutAtEveryDepthAndWidth) {
    std::mt19937 rng(7);
    for (int bpp : kDepths)
        for (int w = 1; w <= 33; ++w) {
            CDIBitmap b;
            MakeRandom(b, w, 3, bpp, rng);
            ASSERT_EQ(b.DWAlignedBytesPerLine(), Stride(w, bpp));
            ASSERT_EQ(b.GetBitsSize(), Stride(w, bpp) * 3);
            for (int y = 0; y < 3; ++y)
                for (int x = 0; x < w; ++x) {
                    CPoint storage(x, 2 - y);
                    ASSERT_EQ(b.GetPixelColor(storage), RawColor(b, x, y)) << bpp << " bits, " << w << " wide";
                    // Writing a value back and reading it returns it, and no other pixel moves.
                    DWORD v = b.GetPixelValue(storage);
                    DWORD flipped = bpp == 1 ? !v : bpp == 4 ? v ^ 9 : v ^ 0x5A;
                    Picture before = ModelOf(b);
                    b.SetPixelValue(storage, flipped);
                    ASSERT_EQ(b.GetPixelValue(storage), flipped);
                    b.SetPixelValue(storage, v);
                    ASSERT_TRUE(ModelOf(b) == before);
                }
        }
}

TEST(DibModel, AddressingAndColourExamples) {
    CDIBitmap b;
    ASSERT_TRUE(b.Create(17, 2, 1));
    EXPECT_EQ(b.DWAlignedBytesPerLine(), 4u);
    EXPECT_EQ(b.ActualBytesPerLine(), 3u);
    EXPECT_EQ(b.CalcByteIndex(CPoint(9, 1)), 5);
    b.GetBits()[5] = 0x40;
    EXPECT_EQ(b.GetPixelValue(CPoint(9, 1)), 1u);  // bit 6 of byte 1 of row 1
    EXPECT_EQ(CDIBitmap::DWAlignedBytesPerLine(3, 24), 12u);
    EXPECT_EQ(CDIBitmap::DWAlignedBytesPerLine(3, 16), 8u);
    EXPECT_EQ(CDIBitmap::AlignValue(13, 5), 15u);
    EXPECT_EQ(b.BottomUpToTopDown(CPoint(3, 0)), CPoint(3, 1));
    EXPECT_EQ(b.BottomUpToTopDown(CRect(0, 0, 4, 1)), CRect(0, 1, 4, 2));

    // 16 bits: 5-5-5 without replication, and measured masks (5-6-5, a 10-bit and a 3-bit one).
    struct Case { DWORD masks[3]; DWORD value; COLORREF color; };
    const Case cases[] = {
        {{0, 0, 0}, 0x7FFF, 0x00F8F8F8},
        {{0x7C00, 0x03E0, 0x001F}, 0x0421, 0x00080808},
        {{0xF800, 0x07E0, 0x001F}, 0xFFFF, 0x00F8FCF8},
        {{0xF800, 0x07E0, 0x001F}, 0x0820, 0x00000408},
        {{0xFFC0, 0x0038, 0x0007}, 0x803F, 0x00E0E080},
    };
    for (const Case& c : cases) {
        std::vector<BYTE> block(40 + 12 + 4);
        auto* h = reinterpret_cast<BITMAPINFOHEADER*>(block.data());
        *h = BITMAPINFOHEADER{40, 1, 1, 1, 16, (DWORD)(c.masks[0] ? BI_BITFIELDS : BI_RGB), 0, 0, 0, 0, 0};
        std::memcpy(&block[40], c.masks, 12);
        size_t bits = c.masks[0] ? 52 : 40;
        block[bits] = (BYTE)c.value;
        block[bits + 1] = (BYTE)(c.value >> 8);
        CDIBitmap m;
        ASSERT_TRUE(m.Attach(h));
        EXPECT_EQ(m.GetPixelColor(CPoint(0, 0)), c.color) << std::hex << c.value;
        EXPECT_EQ(m.Detach(), h);
    }
}

TEST(DibModel, SetPixelColorWritesOnlyTrueColourAndReportsOtherwise) {
    qmtest::RecordingAssertSink sink;
    CDIBitmap b8, b32;
    b8.Create(2, 2, 8);
    std::memset(b8.GetBits(), 3, b8.GetBitsSize());
    b8.SetPixelColor(CPoint(1, 1), RGB(1, 2, 3));
    EXPECT_EQ(b8.GetPixelValue(CPoint(1, 1)), 3u);
    EXPECT_EQ(sink.Expressions(), std::vector<std::string>{"0"});
    b32.Create(1, 1, 32);
    b32.SetPixelColor(CPoint(0, 0), 0xAA010203);
    EXPECT_EQ(b32.GetPixelValue(CPoint(0, 0)), 0xAA030201u);
    EXPECT_EQ(b32.GetPixelColor(CPoint(0, 0)), 0x00010203u);
    // Outside the picture: reported, nothing read or written.
    sink.Clear();
    EXPECT_EQ(b32.GetPixelValue(CPoint(1, 0)), 0u);
    b32.SetPixelValue(CPoint(0, -1), 7);
    EXPECT_EQ(sink.Reports().size(), 2u);
    EXPECT_EQ(sink.Reports()[0].module, "Common\\DIB");
}

TEST(DibModel, AttachRefusesEveryHeaderOutsideTheModel) {
    struct Case { const char* what; void (*edit)(BITMAPINFOHEADER&); bool ok; };
    const Case cases[] = {
        {"plain", [](BITMAPINFOHEADER&) {}, true},
        {"top-down", [](BITMAPINFOHEADER& h) { h.biHeight = -2; }, false},
        {"two planes", [](BITMAPINFOHEADER& h) { h.biPlanes = 2; }, false},
        {"RLE8", [](BITMAPINFOHEADER& h) { h.biCompression = BI_RLE8; }, false},
        {"core header", [](BITMAPINFOHEADER& h) { h.biSize = 12; }, false},
        {"no depth", [](BITMAPINFOHEADER& h) { h.biBitCount = 0; }, false},
        {"no width", [](BITMAPINFOHEADER& h) { h.biWidth = 0; }, false},
        {"4 GiB of rows", [](BITMAPINFOHEADER& h) { h.biWidth = 0x40000000; h.biHeight = 64; }, false},
    };
    for (const Case& c : cases) {
        std::vector<BYTE> block(40 + 1024 + 64, 0);
        auto* h = reinterpret_cast<BITMAPINFOHEADER*>(block.data());
        *h = BITMAPINFOHEADER{40, 4, 2, 1, 8, BI_RGB, 0, 0, 0, 0, 0};
        c.edit(*h);
        CDIBitmap b;
        EXPECT_EQ(b.Attach(h), c.ok) << c.what;
        EXPECT_EQ(b.IsValid(), c.ok) << c.what;
        if (c.ok) {
            EXPECT_TRUE(b.IsAttached());
            EXPECT_EQ(b.GetBits(), block.data() + 40 + 1024);
            EXPECT_EQ(b.GetInfoLength(), 40u + 1024u);
        }
        // The destructor detaches; the caller's block is untouched.
    }
}

TEST(DibModel, OwnershipRulesAndTheirReports) {
    qmtest::RecordingAssertSink sink;
    CDIBitmap a;
    ASSERT_TRUE(a.Create(5, 3, 4));
    EXPECT_EQ(a.GetInfoLength(), 40u + 64u);
    EXPECT_EQ(a.GetColorTable()[15].rgbRed, 0);  // table zero-filled: all black
    EXPECT_EQ(a.Detach(), nullptr);              // an owned bitmap cannot be detached
    EXPECT_TRUE(a.IsValid());
    CDIBitmap copy;
    EXPECT_EQ(copy.CopyFrom(a), 0);
    EXPECT_EQ(copy.GetBitsSize(), a.GetBitsSize());
    EXPECT_EQ(std::memcmp(copy.GetBits(), a.GetBits(), a.GetBitsSize()), 0);
    EXPECT_NE(copy.GetBits(), a.GetBits());
    EXPECT_FALSE(copy.Attach(const_cast<BITMAPINFOHEADER*>(a.GetInfoHeader())));

    std::vector<BYTE> block(40 + 8 + 8, 0);
    auto* h = reinterpret_cast<BITMAPINFOHEADER*>(block.data());
    *h = BITMAPINFOHEADER{40, 2, 2, 1, 1, BI_RGB, 0, 0, 0, 0, 0};
    CDIBitmap att;
    ASSERT_TRUE(att.Attach(h));
    att.Destroy();  // refused in attached mode: the block is dropped, not freed
    EXPECT_FALSE(att.IsValid());
    EXPECT_EQ(sink.Expressions(), (std::vector<std::string>{"IsAttached()", "!IsValid()", "!IsAttached()"}));

    EXPECT_FALSE(CDIBitmap().Create(0, 5, 24));
    EXPECT_FALSE(CDIBitmap().Create(5, -5, 24));
    EXPECT_FALSE(CDIBitmap().Create(70000, 70000, 32));  // past 32-bit sizes
}

TEST(DibModel, CreateFromHeaderCopiesAPackedDib) {
    CDIBitmap src;
    std::mt19937 rng(3);
    MakeRandom(src, 7, 5, 8, rng);
    std::vector<BYTE> packed(src.GetInfoLength() + src.GetBitsSize());
    std::memcpy(packed.data(), src.GetInfoHeader(), src.GetInfoLength());
    std::memcpy(packed.data() + src.GetInfoLength(), src.GetBits(), src.GetBitsSize());
    CDIBitmap b;
    ASSERT_TRUE(b.Create(reinterpret_cast<BITMAPINFOHEADER*>(packed.data())));
    EXPECT_FALSE(b.IsAttached());
    EXPECT_TRUE(ModelOf(b) == ModelOf(src));
    qmtest::RecordingAssertSink sink;
    EXPECT_FALSE(b.Create(nullptr));
    EXPECT_EQ(sink.Expressions(), std::vector<std::string>{"pBI != NULL"});
}

TEST(SimpleRowBytes, HeapBlocksKnowTheirSizeAndOwner) {
    CSimpleRowBytes a, b;
    EXPECT_TRUE(a == b);
    EXPECT_EQ(a.GetDiskSizeEstimate(), 4u);
    EXPECT_EQ(a.GetMemSizeEstimate(false), 0u);
    unsigned char* p = a.AllocBuffer(10);
    ASSERT_NE(p, nullptr);
    EXPECT_EQ(a.GetBufferSize(), 10u);
    EXPECT_TRUE(a.IsValid());
    std::memcpy(p, "0123456789", 10);
    EXPECT_EQ(a.ReAllocBuffer(8, true), p);  // grow-only: kept
    unsigned char* q = a.ReAllocBuffer(100, true);
    EXPECT_EQ(a.GetBufferSize(), 100u);
    EXPECT_EQ(std::memcmp(q, "0123456789", 10), 0);
    b = a;
    EXPECT_TRUE(a == b);
    b.GetBuffer()[99] ^= 1;
    EXPECT_TRUE(a != b);
    EXPECT_EQ(a.GetMemSizeEstimate(true), 104u);
    EXPECT_EQ(a.AllocBuffer(0), nullptr);
    EXPECT_FALSE(a.IsValid());
    // The heap tells its own blocks from any other pointer.
    int local = 0;
    EXPECT_FALSE(qm::platform::HeapValidateBlock(CSimpleRowBytes::m_hHeap, &local));
    EXPECT_TRUE(qm::platform::HeapValidateBlock(CSimpleRowBytes::m_hHeap, b.GetBuffer()));
    b.Copy(CSimpleRowBytes());
    EXPECT_EQ(b.GetBuffer(), nullptr);
}

TEST(SimpleRowBytes, FailedAllocationIsTracedReportedAndNull) {
    qmtest::RecordingAssertSink sink;
    qmtest::RecordingTraceSink trace;
    CSimpleRowBytes src;
    src.AllocBuffer(2000);
    size_t old = qm::platform::SetHeapRequestCeiling(1000);
    CSimpleRowBytes a;
    EXPECT_EQ(a.AllocBuffer(1001), nullptr);
    EXPECT_NE(a.AllocBuffer(1000), nullptr);
    CSimpleRowBytes big;
    big.AllocBuffer(900);
    big.ReAllocBuffer(5000, false);  // a failed resize leaves no block
    EXPECT_EQ(big.GetBuffer(), nullptr);
    // A copy that cannot be allocated raises the library's error.
    std::string raised;
    try {
        CSimpleRowBytes copy(src);
    } catch (CQMWException* e) {
        raised = (const char*)e->GetExpression();
        e->Delete();
    }
    EXPECT_EQ(raised, "m_pBytes != NULL");
    qm::platform::SetHeapRequestCeiling(old);
    EXPECT_NE(trace.Text().find("\nAllocBuffer error STATUS_NO_MEMORY! m_hHeap="), std::string::npos);
    EXPECT_NE(trace.Text().find(", dwSize=1001"), std::string::npos);
    EXPECT_EQ(sink.Expressions(), (std::vector<std::string>{"FALSE", "FALSE", "m_pBytes != NULL"}));
}
