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
    qm::platform::MetafileEnumRecords(hdc, lpmfp->hMF, OnRecord, &x);
    qm::platform::GdiReleaseScreenDC(hdc);
    return bitmap.IsValid() ? TRUE : FALSE;
}
