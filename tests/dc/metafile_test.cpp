#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "dc_fixture.h"
#include "tests/support/recording_sink.h"
#include "utils/common/OleUtils.h"
#include "utils/platform/metafile.h"

namespace {

using Bytes = std::vector<unsigned char>;

void Put16(Bytes& b, unsigned v) { b.push_back((unsigned char)v); b.push_back((unsigned char)(v >> 8)); }
void Put32(Bytes& b, unsigned v) { Put16(b, v & 0xFFFF); Put16(b, v >> 16); }

using dctest::Saved;

std::string SampleDib(int seed) {
    CDIBitmap bmp;
    bmp.Create(3, 2, 24);
    for (DWORD i = 0; i < bmp.GetBitsSize(); ++i) bmp.GetBits()[i] = (BYTE)(i * 13 + seed);
    return Saved(bmp);
}

// A record: its size in words (or `sizeWords` when given), its function, `params` words of
// zeros and then `tail`.
Bytes Record(unsigned function, int params, const std::string& tail = "", long sizeWords = -1) {
    Bytes r;
    size_t bytes = 6 + 2 * (size_t)params + tail.size();
    Put32(r, sizeWords >= 0 ? (unsigned)sizeWords : (unsigned)(bytes / 2));
    Put16(r, function);
    r.resize(6 + 2 * (size_t)params, 0);
    r.insert(r.end(), tail.begin(), tail.end());
    return r;
}

Bytes Metafile(const std::vector<Bytes>& records) {
    Bytes body;
    for (const Bytes& r : records) body.insert(body.end(), r.begin(), r.end());
    Bytes eof = Record(0, 0);  // the end record
    body.insert(body.end(), eof.begin(), eof.end());
    Bytes m;
    Put16(m, 1);
    Put16(m, 9);
    Put16(m, 0x300);
    Put32(m, (unsigned)(18 + body.size()) / 2);
    Put16(m, 0);
    Put32(m, 64);
    Put16(m, 0);
    m.insert(m.end(), body.begin(), body.end());
    return m;
}

// Extracts from the metafile; returns the result and the packed DIB taken ("" when none).
std::pair<int, std::string> Extract(const Bytes& metafile) {
    METAFILEPICT mfp{MM_ANISOTROPIC, 100, 100, qm::platform::MetafileFromBits((UINT)metafile.size(), metafile.data())};
    CDIBitmap bmp;
    int r = OleUIMetafilePictExtract(bmp, &mfp);
    if (mfp.hMF) qm::platform::MetafileDelete(mfp.hMF);
    return {r, bmp.IsValid() ? Saved(bmp) : std::string()};
}

TEST(OleUIMetafilePictExtract, TakesTheFirstDibRecord) {
    const std::string a = SampleDib(1), b = SampleDib(2);
    std::string truncated = a.substr(0, a.size() - 8);
    struct Case { const char* what; std::vector<Bytes> records; std::string dib; };
    const Case cases[] = {
        {"stretch blt", {Record(META_DIBSTRETCHBLT, 10, a)}, a},
        {"stretch dib", {Record(0x0201, 2), Record(META_STRETCHDIB, 11, b)}, b},
        {"bit blt with a source", {Record(META_DIBBITBLT, 8, a), Record(META_STRETCHDIB, 11, b)}, a},
        {"bit blt without a source is skipped", {Record(META_DIBBITBLT, 9), Record(META_STRETCHDIB, 11, b)}, b},
        {"a truncated DIB stops the walk", {Record(META_DIBSTRETCHBLT, 10, truncated), Record(META_STRETCHDIB, 11, b)},
         ""},
        {"a record reaching past the end", {Record(META_STRETCHDIB, 11, b, 100000)}, ""},
        {"a record of zero size", {Record(0x0201, 2, "", 0), Record(META_STRETCHDIB, 11, b)}, ""},
        {"no DIB at all", {Record(0x0201, 2), Record(0x020B, 2)}, ""},
    };
    qmtest::RecordingAssertSink asserts;
    qmtest::RecordingTraceSink quiet;
    for (const Case& c : cases) {
        auto [result, dib] = Extract(Metafile(c.records));
        EXPECT_EQ(result != 0, !c.dib.empty()) << c.what;
        EXPECT_EQ(dib, c.dib) << c.what;
    }
    EXPECT_TRUE(asserts.Reports().empty());
}

TEST(OleUIMetafilePictExtract, ReportsMissingPartsAndTracesRecords) {
    qmtest::RecordingAssertSink asserts;
    qmtest::RecordingTraceSink trace;
    const std::string b = SampleDib(3);
    // A bit blt with a source needs nine parameter words before its DIB.
    auto [result, dib] = Extract(Metafile({Record(META_DIBBITBLT, 4), Record(META_STRETCHDIB, 11, b)}));
    EXPECT_EQ(result, 1);
    EXPECT_EQ(dib, b);
    EXPECT_EQ(asserts.Expressions(), std::vector<std::string>{"pMFR->rdParm[8]"});
    EXPECT_NE(trace.Text().find("0x0940"), std::string::npos);
    EXPECT_NE(trace.Text().find("0x0F43"), std::string::npos);

    asserts.Clear();
    CDIBitmap bmp;
    bmp.Create(2, 2, 8);
    EXPECT_EQ(OleUIMetafilePictExtract(bmp, nullptr), 0);
    EXPECT_FALSE(bmp.IsValid());  // emptied first
    EXPECT_EQ(asserts.Expressions(), std::vector<std::string>{"lpmfp"});

    const unsigned char junk[] = "not a metafile, just text";
    EXPECT_EQ(qm::platform::MetafileFromBits(sizeof junk, junk), nullptr);
    METAFILEPICT none{MM_ANISOTROPIC, 0, 0, nullptr};
    EXPECT_EQ(OleUIMetafilePictExtract(bmp, &none), 0);
}

}  // namespace
