#include <gtest/gtest.h>

#include <climits>
#include <cstdint>
#include <random>
#include <vector>

#include "utils/common/mfcutils.h"

namespace {

using Bytes = std::vector<BYTE>;

// Runs fn on a storing archive over a memory file and returns the bytes written.
template <typename Fn>
Bytes Store(Fn fn) {
    CMemFile file;
    {
        CArchive ar(&file, CArchive::store);
        fn(ar);
        ar.Close();
    }
    ULONGLONG n = file.GetLength();
    BYTE* block = file.Detach();
    Bytes out(block, block + n);
    free(block);
    return out;
}

// Runs fn on a loading archive over the given bytes; returns the number of bytes consumed.
template <typename Fn>
ULONGLONG Load(Bytes bytes, Fn fn) {
    CMemFile file(bytes.data(), (UINT)bytes.size());
    CArchive ar(&file, CArchive::load);
    fn(ar);
    ar.Close();  // puts the file back where reading stopped
    return file.GetPosition();
}

TEST(CompactRecord, ExampleRecords) {
    CRect zero(0, 0, 0, 0);
    EXPECT_EQ(Store([&](CArchive& ar) { SmartSerializeRect(ar, zero); }), (Bytes{0x00}));

    CPoint pt(5, -1);
    EXPECT_EQ(Store([&](CArchive& ar) { SmartSerializePoint(ar, pt); }), (Bytes{0x05, 0x05, 0xFF}));

    long w = 300, h = 0;
    EXPECT_EQ(Store([&](CArchive& ar) { SmartSerializeSize(ar, w, h); }), (Bytes{0x02, 0x2C, 0x01}));

    CRect mixed(-200, 100, 70000, 0);
    const Bytes mixedBytes{0x36, 0x38, 0xFF, 0x64, 0x70, 0x11, 0x01, 0x00};
    EXPECT_EQ(Store([&](CArchive& ar) { SmartSerializeRect(ar, mixed); }), mixedBytes);

    CRect back(1, 2, 3, 4);
    EXPECT_EQ(Load(mixedBytes, [&](CArchive& ar) { SmartSerializeRect(ar, back); }), mixedBytes.size());
    EXPECT_EQ(back, mixed);

    CPoint p2(9, 9);
    Load({0x05, 0x05, 0xFF}, [&](CArchive& ar) { SmartSerializePoint(ar, p2); });
    EXPECT_EQ(p2, CPoint(5, -1));

    long a = 7, b = 7;
    Load({0x02, 0x2C, 0x01}, [&](CArchive& ar) { SmartSerializeSize(ar, a, b); });
    EXPECT_EQ(a, 300);
    EXPECT_EQ(b, 0);
}

TEST(CompactRecord, WidthBoundaries) {
    const struct {
        std::int32_t value;
        BYTE code;
        Bytes payload;
    } cases[] = {
        {0, 0, {}},
        {1, 1, {0x01}},
        {-1, 1, {0xFF}},
        {127, 1, {0x7F}},
        {-128, 1, {0x80}},
        {128, 2, {0x80, 0x00}},
        {-129, 2, {0x7F, 0xFF}},
        {32767, 2, {0xFF, 0x7F}},
        {-32768, 2, {0x00, 0x80}},
        {32768, 3, {0x00, 0x80, 0x00, 0x00}},
        {-32769, 3, {0xFF, 0x7F, 0xFF, 0xFF}},
        {INT_MAX, 3, {0xFF, 0xFF, 0xFF, 0x7F}},
        {INT_MIN, 3, {0x00, 0x00, 0x00, 0x80}},
    };
    for (const auto& c : cases) {
        // The value as the second field of a point (first field 0): tag bits 2-3.
        CPoint pt(0, c.value);
        Bytes expected{(BYTE)(c.code << 2)};
        expected.insert(expected.end(), c.payload.begin(), c.payload.end());
        EXPECT_EQ(Store([&](CArchive& ar) { SmartSerializePoint(ar, pt); }), expected) << c.value;

        // And as the fourth field of a rectangle: tag bits 6-7.
        CRect rc(0, 0, 0, c.value);
        Bytes rectExpected{(BYTE)(c.code << 6)};
        rectExpected.insert(rectExpected.end(), c.payload.begin(), c.payload.end());
        EXPECT_EQ(Store([&](CArchive& ar) { SmartSerializeRect(ar, rc); }), rectExpected) << c.value;

        CPoint back(11, 11);
        Load(expected, [&](CArchive& ar) { SmartSerializePoint(ar, back); });
        EXPECT_EQ(back, CPoint(0, c.value));
    }
}

TEST(CompactRecord, TagBitsBeyondTheFieldsAreIgnored) {
    // 0xC0 for a rectangle: left, top, right are 0 and bottom follows in four bytes.
    CRect rc(5, 5, 5, 5);
    EXPECT_EQ(Load({0xC0, 0x01, 0x00, 0x01, 0x00}, [&](CArchive& ar) { SmartSerializeRect(ar, rc); }), 5u);
    EXPECT_EQ(rc, CRect(0, 0, 0, 0x10001));

    // The same byte read for a point: both fields 0, the high bits unused, one byte consumed,
    // so the next record starts right after it.
    CPoint pt(3, 3), next;
    EXPECT_EQ(Load({0xC0, 0x01, 0x7F}, [&](CArchive& ar) {
                  SmartSerializePoint(ar, pt);
                  SmartSerializePoint(ar, next);
              }),
              3u);
    EXPECT_EQ(pt, CPoint(0, 0));
    EXPECT_EQ(next, CPoint(127, 0));
}

TEST(CompactRecord, TruncatedRecordThrowsAndKeepsTheFieldsReadSoFar) {
    const Bytes full{0x36, 0x38, 0xFF, 0x64, 0x70, 0x11, 0x01, 0x00};
    const LONG kUnset = 777;
    // Fields completely present after each prefix length of the record above.
    const int fieldsSet[] = {0, 0, 0, 1, 2, 2, 2, 2};
    const LONG values[] = {-200, 100, 70000, 0};
    for (size_t len = 0; len < full.size(); ++len) {
        CRect rc(kUnset, kUnset, kUnset, kUnset);
        Bytes cut(full.begin(), full.begin() + (std::ptrdiff_t)len);
        int cause = -1;
        try {
            Load(cut, [&](CArchive& ar) { SmartSerializeRect(ar, rc); });
        } catch (CArchiveException* e) {
            cause = e->m_cause;
            e->Delete();
        }
        EXPECT_EQ(cause, CArchiveException::endOfFile) << "length " << len;
        const LONG got[] = {rc.left, rc.top, rc.right, rc.bottom};
        for (int i = 0; i < 4; ++i)
            EXPECT_EQ(got[i], i < fieldsSet[len] ? values[i] : kUnset) << "length " << len << " field " << i;
    }
}

TEST(CompactRecord, IntSizeMatchesLongSizeAndIsAllOrNothing) {
    int w = -129, h = 65536;
    long lw = -129, lh = 65536;
    Bytes fromInt = Store([&](CArchive& ar) { SmartSerializeSize(ar, w, h); });
    EXPECT_EQ(fromInt, Store([&](CArchive& ar) { SmartSerializeSize(ar, lw, lh); }));
    EXPECT_EQ(fromInt, (Bytes{0x0E, 0x7F, 0xFF, 0x00, 0x00, 0x01, 0x00}));

    int rw = 0, rh = 0;
    Load(fromInt, [&](CArchive& ar) { SmartSerializeSize(ar, rw, rh); });
    EXPECT_EQ(rw, -129);
    EXPECT_EQ(rh, 65536);

    // Cut inside the second field: the int form copies back only after a whole record.
    int cw = 1, ch = 2;
    Bytes cut(fromInt.begin(), fromInt.end() - 1);
    EXPECT_THROW(
        try { Load(cut, [&](CArchive& ar) { SmartSerializeSize(ar, cw, ch); }); } catch (CArchiveException* e) {
            e->Delete();
            throw 1;
        },
        int);
    EXPECT_EQ(cw, 1);
    EXPECT_EQ(ch, 2);
}

TEST(CompactRecord, WideLongStoresItsLow32Bits) {
    if (sizeof(long) <= 4) GTEST_SKIP() << "long is 32 bits here";
    long w = (long)(0x100000005LL), h = (long)(-0x100000000LL - 2);
    EXPECT_EQ(Store([&](CArchive& ar) { SmartSerializeSize(ar, w, h); }), (Bytes{0x05, 0x05, 0xFE}));
    long a = 0, b = 0;
    Load({0x0F, 0xFF, 0xFF, 0xFF, 0x7F, 0x00, 0x00, 0x00, 0x80}, [&](CArchive& ar) { SmartSerializeSize(ar, a, b); });
    EXPECT_EQ(a, 2147483647L);
    EXPECT_EQ(b, -2147483647L - 1);
}

TEST(CompactRecord, WrongDirectionRaisesTheArchiveException) {
    CMemFile file;
    CArchive storing(&file, CArchive::store);
    // Loading is chosen by the archive's mode, so a storing archive stores; reading directly
    // from it is what fails.
    BYTE tag;
    int cause = -1;
    try {
        storing >> tag;
    } catch (CArchiveException* e) {
        cause = e->m_cause;
        e->Delete();
    }
    EXPECT_EQ(cause, CArchiveException::writeOnly);

    BYTE data[1] = {0};
    CMemFile in(data, 1);
    CArchive loading(&in, CArchive::load);
    cause = -1;
    try {
        loading << (BYTE)1;
    } catch (CArchiveException* e) {
        cause = e->m_cause;
        e->Delete();
    }
    EXPECT_EQ(cause, CArchiveException::readOnly);
}

TEST(CompactRecord, RandomRecordsRoundTripInSequence) {
    std::mt19937 rng(20261122);
    // Values drawn around each width boundary as well as anywhere.
    auto draw = [&]() -> std::int32_t {
        switch (rng() % 5) {
        case 0: return 0;
        case 1: return (std::int32_t)(rng() % 256) - 128;
        case 2: return (std::int32_t)(rng() % 65536) - 32768;
        case 3: return (std::int32_t)(rng() % 8) - 4 + (rng() % 2 ? 32768 : -32768);
        default: return (std::int32_t)rng();
        }
    };
    std::vector<CRect> rects;
    std::vector<CPoint> points;
    for (int i = 0; i < 500; ++i) {
        rects.emplace_back(draw(), draw(), draw(), draw());
        points.emplace_back(draw(), draw());
    }
    Bytes bytes = Store([&](CArchive& ar) {
        for (int i = 0; i < 500; ++i) {
            SmartSerializeRect(ar, rects[(size_t)i]);
            SmartSerializePoint(ar, points[(size_t)i]);
        }
    });
    ULONGLONG used = Load(bytes, [&](CArchive& ar) {
        for (int i = 0; i < 500; ++i) {
            CRect rc(1, 1, 1, 1);
            CPoint pt(1, 1);
            SmartSerializeRect(ar, rc);
            SmartSerializePoint(ar, pt);
            ASSERT_EQ(rc, rects[(size_t)i]) << i;
            ASSERT_EQ(pt, points[(size_t)i]) << i;
        }
    });
    EXPECT_EQ(used, bytes.size());
}

}  // namespace
