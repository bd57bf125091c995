#include <gtest/gtest.h>
#include <climits>
#include <cstdint>
#include <iterator>
#include <random>
#include <utility>
#include <vector>

#include "tests/support/recording_sink.h"
#include "utils/common/mfcutils.h"

namespace {

using Bytes = std::vector<BYTE>;

// Runs fn on a storing archive over a memory file and returns the bytes written.
template <typename Fn>
Bytes Store(Fn fn) {
    CMemFile file;
    CArchive ar(&file, CArchive::store);
    fn(ar);
    ar.Close();
    const ULONGLONG n = file.GetLength();
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

// A tag byte with two bits per field (0, 1, 2 or 4 bytes; first field low), then each value
// little-endian in the smallest signed width.
Bytes Model(const std::vector<std::int32_t>& fields) {
    Bytes out{0};
    for (size_t i = 0; i < fields.size(); ++i) {
        const std::int32_t v = fields[i];
        const int code = v == 0 ? 0 : v >= -128 && v <= 127 ? 1 : v >= -32768 && v <= 32767 ? 2 : 3;
        out[0] |= (BYTE)(code << (2 * i));
        const int widths[] = {0, 1, 2, 4};
        for (int b = 0; b < widths[code]; ++b) out.push_back((BYTE)((std::uint32_t)v >> (8 * b)));
    }
    return out;
}

// Values near each width boundary and anywhere, stored in sequence and read back.
TEST(CompactRecord, RecordsMatchTheModelAndRoundTripInSequence) {
    std::mt19937 rng(20261122);
    const std::int32_t edges[] = {0, 1, -1, 127, -128, 128, -129, 32767, -32768, 32768, -32769, INT_MAX, INT_MIN};
    auto draw = [&]() -> std::int32_t {
        switch (rng() % 4) {
        case 0: return edges[rng() % std::size(edges)];
        case 1: return (std::int32_t)(rng() % 256) - 128;
        case 2: return (std::int32_t)(rng() % 8) - 4 + (rng() % 2 ? 32768 : -32768);
        default: return (std::int32_t)rng();
        }
    };
    std::vector<CRect> rects;
    std::vector<CPoint> points;
    std::vector<std::pair<long, long>> sizes;
    Bytes expected;
    for (int i = 0; i < 600; ++i) {
        rects.emplace_back(draw(), draw(), draw(), draw());
        points.emplace_back(draw(), draw());
        sizes.emplace_back(draw(), draw());
        const CRect& r = rects.back();
        for (const Bytes& b : {Model({r.left, r.top, r.right, r.bottom}), Model({points.back().x, points.back().y}),
                               Model({(std::int32_t)sizes.back().first, (std::int32_t)sizes.back().second})})
            expected.insert(expected.end(), b.begin(), b.end());
    }
    Bytes bytes = Store([&](CArchive& ar) {
        for (int i = 0; i < 600; ++i) {
            SmartSerializeRect(ar, rects[(size_t)i]);
            SmartSerializePoint(ar, points[(size_t)i]);
            SmartSerializeSize(ar, sizes[(size_t)i].first, sizes[(size_t)i].second);
        }
    });
    ASSERT_EQ(bytes, expected);
    ULONGLONG used = Load(bytes, [&](CArchive& ar) {
        for (int i = 0; i < 600; ++i) {
            CRect rc(1, 1, 1, 1);
            CPoint pt(1, 1);
            long w = 1, h = 1;
            SmartSerializeRect(ar, rc);
            SmartSerializePoint(ar, pt);
            SmartSerializeSize(ar, w, h);
            ASSERT_EQ(rc, rects[(size_t)i]) << i;
            ASSERT_EQ(pt, points[(size_t)i]) << i;
            ASSERT_EQ(std::make_pair(w, h), sizes[(size_t)i]) << i;
        }
    });
    EXPECT_EQ(used, bytes.size());
}

TEST(CompactRecord, TagBitsBeyondTheFieldsAreIgnored) {
    // 0xC0 for a rectangle: left, top, right are 0 and bottom follows in four bytes; closing the
    // archive puts the file back before the byte after the record, which it had read ahead.
    CRect rc(5, 5, 5, 5);
    EXPECT_EQ(Load({0xC0, 0x01, 0x00, 0x01, 0x00, 0xEE}, [&](CArchive& ar) { SmartSerializeRect(ar, rc); }), 5u);
    EXPECT_EQ(rc, CRect(0, 0, 0, 0x10001));
    // For a point both fields are 0 and the next record starts right after the tag.
    CPoint pt(3, 3), next;
    EXPECT_EQ(Load({0xC0, 0x01, 0x7F}, [&](CArchive& ar) { SmartSerializePoint(ar, pt), SmartSerializePoint(ar, next); }), 3u);
    EXPECT_EQ(pt, CPoint(0, 0));
    EXPECT_EQ(next, CPoint(127, 0));
}

TEST(CompactRecord, TruncatedRecordThrowsAndKeepsTheFieldsReadSoFar) {
    const Bytes full{0x36, 0x38, 0xFF, 0x64, 0x70, 0x11, 0x01, 0x00};  // (-200, 100, 70000, 0)
    const int fieldsSet[] = {0, 0, 0, 1, 2, 2, 2, 2};  // complete after each prefix length
    const LONG values[] = {-200, 100, 70000, 0}, kUnset = 777;
    for (size_t len = 0; len < full.size(); ++len) {
        CRect rc(kUnset, kUnset, kUnset, kUnset);
        Bytes cut(full.begin(), full.begin() + (std::ptrdiff_t)len);
        EXPECT_EQ(qmtest::ThrownCause<CArchiveException>([&] { Load(cut, [&](CArchive& ar) { SmartSerializeRect(ar, rc); }); }),
                  CArchiveException::endOfFile) << "length " << len;
        const LONG got[] = {rc.left, rc.top, rc.right, rc.bottom};
        for (int i = 0; i < 4; ++i)
            EXPECT_EQ(got[i], i < fieldsSet[len] ? values[i] : kUnset) << "length " << len << " field " << i;
    }
    // The int form of a size copies back only after a whole record.
    int w = -129, h = 65536, rw = 1, rh = 2;
    const Bytes fromInt = Store([&](CArchive& ar) { SmartSerializeSize(ar, w, h); });
    EXPECT_EQ(fromInt, (Bytes{0x0E, 0x7F, 0xFF, 0x00, 0x00, 0x01, 0x00}));
    Bytes cut(fromInt.begin(), fromInt.end() - 1);
    EXPECT_EQ(qmtest::ThrownCause<CArchiveException>([&] { Load(cut, [&](CArchive& ar) { SmartSerializeSize(ar, rw, rh); }); }),
              CArchiveException::endOfFile);
    EXPECT_EQ(rw, 1);
    EXPECT_EQ(rh, 2);
    Load(fromInt, [&](CArchive& ar) { SmartSerializeSize(ar, rw, rh); });
    EXPECT_EQ(rw, -129);
    EXPECT_EQ(rh, 65536);
}

// Only the POSIX targets have a 64-bit long; on Windows it keeps 32 bits and the test is skipped.
TEST(CompactRecord, PosixWideLongStoresItsLow32Bits) {
    if (sizeof(long) <= 4) GTEST_SKIP() << "long is 32 bits here";
    long w = (long)(0x100000005LL), h = (long)(-0x100000000LL - 2);
    EXPECT_EQ(Store([&](CArchive& ar) { SmartSerializeSize(ar, w, h); }), (Bytes{0x05, 0x05, 0xFE}));
}

}  // namespace
