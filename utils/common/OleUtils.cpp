#include "utils/common/OleUtils.h"

#include <cstdint>
#include <cstring>
#include <vector>

#include "utils/common/CVLogger.h"
#include "utils/platform/gdi.h"
#include "utils/platform/metafile.h"

#define QM_SOURCE_MODULE "Common\\OleUtils"

namespace {

struct Extraction {
    CDIBitmap* bitmap;
};

// The bytes a packed DIB needs, as Create(BITMAPINFOHEADER*) reads them: the header, masks
// and colour table, then the rows; 0 when the header is not one a bitmap accepts.
std::uint64_t PackedSize(const BITMAPINFOHEADER& bi) {
    if (bi.biSize < 40 || bi.biBitCount == 0 || bi.biHeight < 1 || bi.biWidth < 1 || bi.biPlanes != 1 ||
        (bi.biCompression != BI_RGB && bi.biCompression != BI_BITFIELDS))
        return 0;
    bool masks = bi.biCompression == BI_BITFIELDS && (bi.biBitCount == 16 || bi.biBitCount == 32);
    std::uint64_t colours = bi.biClrUsed ? bi.biClrUsed : (bi.biBitCount <= 8 ? (1u << bi.biBitCount) : 0);
    std::uint64_t rows = CDIBitmap::Stride64(bi.biWidth, bi.biBitCount) * (std::uint64_t)bi.biHeight;
    if (rows == 0 || rows > 0xFFFFFFFFull) return 0;
    return 40 + (masks ? 12 : 0) + 4 * colours + rows;
}

DWORD Dword(const BYTE* p) { return (DWORD)p[0] | ((DWORD)p[1] << 8) | ((DWORD)p[2] << 16) | ((DWORD)p[3] << 24); }
WORD Word(const BYTE* p) { return (WORD)(p[0] | (p[1] << 8)); }

// The byte length of each well-formed record of a metafile image, in order. The walk stops at
// the end record, at a record shorter than its own header, or at one that would reach past the
// end (of the bytes, or of the metafile's own length when that is shorter), so that no record
// is read outside the metafile.
std::vector<std::size_t> MetafileRecordSizes(const BYTE* data, std::size_t size) {
    std::vector<std::size_t> sizes;
    if (!qm::platform::MetafileHeaderValid(data, size)) return sizes;
    // The metafile's own length (in words) limits the walk when it is shorter than the bytes.
    std::size_t total = (std::size_t)Dword(data + 6) * 2;
    if (total == 0 || total > size) total = size;
    std::size_t offset = 18;
    while (offset + 6 <= total) {
        std::size_t bytes = (std::size_t)Dword(data + offset) * 2;
        WORD function = Word(data + offset + 4);
        if (function == 0 /* the end record */ || bytes < 6 || bytes > total - offset) break;
        sizes.push_back(bytes);
        offset += bytes;
    }
    return sizes;
}

bool OnRecord(const METARECORD* pMFR, std::size_t bytes, void* context) {
    auto* x = (Extraction*)context;
    // Records lie on 16-bit boundaries: their fields are copied out rather than read in place.
    const BYTE* record = (const BYTE*)pMFR;
    DWORD rdSize;
    WORD rdFunction;
    std::memcpy(&rdSize, record, 4);
    std::memcpy(&rdFunction, record + 4, 2);
    _cvtrace_("\nOleUIMetafilePictExtract: record 0x%04X, %u words", (unsigned)rdFunction, (unsigned)rdSize);
    std::size_t offset = 0;
    switch (rdFunction) {
    case META_DIBBITBLT:
        // The form without a source bitmap is (function >> 8) + 3 words long.
        if (rdSize == (META_DIBBITBLT >> 8) + 3) return true;
        if (bytes < 6 + 9 * 2) {
            CVASSERT_TEXT("pMFR->rdParm[8]");
            return true;
        }
        offset = 6 + 8 * 2;
        break;
    case META_DIBSTRETCHBLT: offset = 26; break;
    case META_STRETCHDIB: offset = 28; break;
    default: return true;
    }
    // A DIB record stops the walk; its DIB is taken only when it lies whole inside the record.
    if (bytes >= offset + sizeof(BITMAPINFOHEADER)) {
        BITMAPINFOHEADER bi;
        std::memcpy(&bi, record + offset, sizeof bi);
        std::uint64_t need = PackedSize(bi);
        if (need != 0 && need <= bytes - offset) {
            std::vector<std::uint64_t> aligned((size_t)(need + 7) / 8);
            std::memcpy(aligned.data(), record + offset, (size_t)need);
            x->bitmap->Create((BITMAPINFOHEADER*)aligned.data());
        }
    }
    return false;
}

}  // namespace

int OleUIMetafilePictExtract(CDIBitmap& bitmap, METAFILEPICT* lpmfp) {
    if (bitmap.IsAttached())
        bitmap.Detach();
    else
        bitmap.Destroy();
    if (!CVASSERT(lpmfp)) return FALSE;
    HDC hdc = qm::platform::GdiGetScreenDC();
    Extraction x{&bitmap};
    std::vector<BYTE> bytes;
    if (qm::platform::MetafileBits(lpmfp->hMF, bytes))
        qm::platform::MetafileEnumRecords(hdc, lpmfp->hMF, MetafileRecordSizes(bytes.data(), bytes.size()), OnRecord, &x);
    qm::platform::GdiReleaseScreenDC(hdc);
    return bitmap.IsValid() ? TRUE : FALSE;
}
