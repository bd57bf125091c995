// Metafile creation: a bitmap as a metafile picture, for the clipboard and for .wmf files.
#include <cstring>
#include <vector>

#include "utils/common/CVLogger.h"
#include "utils/common/OleUtils.h"
#include "utils/common/OleUtils_internal.h"
#include "utils/platform/globalmem.h"
#include "utils/platform/metafile.h"

#define QM_SOURCE_MODULE "Common\\OleUtils"

namespace {

namespace plat = qm::platform;

constexpr std::uint32_t kPlaceableKey = 0x9AC6CDD7;
constexpr std::size_t kPlaceableHeader = 22;
constexpr ULONGLONG kMaxFile = 256ull << 20;

void PutWord(std::vector<BYTE>& out, unsigned v) {
    out.push_back((BYTE)(v & 0xFF));
    out.push_back((BYTE)((v >> 8) & 0xFF));
}
void PutDword(std::vector<BYTE>& out, std::uint32_t v) {
    PutWord(out, v & 0xFFFF);
    PutWord(out, v >> 16);
}

// The bitmap's header as a plain 40-byte BITMAPINFOHEADER with biSizeImage and biClrUsed (the
// number of colours written) filled in, then its masks (BI_BITFIELDS) and colour table: the
// form every reader takes, whatever header the bitmap came with.
std::vector<BYTE> InfoFor(const CDIBitmap& bitmap) {
    const BITMAPINFOHEADER* h = bitmap.GetInfoHeader();
    BITMAPINFOHEADER bi = *h;
    bi.biSize = sizeof(BITMAPINFOHEADER);
    const DWORD colours = bitmap.GetColorTableSize() / sizeof(RGBQUAD);
    bi.biClrUsed = colours;
    bi.biSizeImage = bitmap.GetBitsSize();
    std::vector<BYTE> out((const BYTE*)&bi, (const BYTE*)&bi + sizeof bi);
    if (bi.biCompression == BI_BITFIELDS && (bi.biBitCount == 16 || bi.biBitCount == 32)) {
        // The bitmap keeps its masks right after its header, as it reads them.
        const BYTE* masks = (const BYTE*)h + h->biSize;
        out.insert(out.end(), masks, masks + 12);
    }
    const BYTE* table = (const BYTE*)bitmap.GetColorTable();
    if (table && colours) out.insert(out.end(), table, table + colours * sizeof(RGBQUAD));
    return out;
}

bool Expressible(const CDIBitmap& bitmap) {
    if (!CVASSERT(bitmap.IsValid())) return false;
    if (!CVASSERT(bitmap.GetWidth() <= 32767 && bitmap.GetHeight() <= 32767)) return false;
    return true;
}

LONG Himetric(int pixels, LONG pelsPerMeter) {
    return pelsPerMeter > 0 ? MulDiv(pixels, 100000, pelsPerMeter) : MulDiv(pixels, 2540, 96);
}

}  // namespace

namespace qm::oleutils {

std::vector<BYTE> MetafileBytesForDib(int w, int h, const std::vector<BYTE>& info, const BYTE* bits, std::size_t bitsSize) {
    const std::size_t dib = info.size() + bitsSize;
    std::vector<BYTE> out;
    out.reserve(72 + dib + 1);
    const std::uint32_t stretchWords = (std::uint32_t)((28 + dib + 1) / 2);
    // The header: in memory, 9 words, version 3.0, whole size and largest record in words.
    PutWord(out, 1);
    PutWord(out, 9);
    PutWord(out, 0x0300);
    PutDword(out, (std::uint32_t)(18 + 10 + 10 + 2 * stretchWords + 6) / 2);
    PutWord(out, 0);
    PutDword(out, stretchWords);
    PutWord(out, 0);
    // META_SETWINDOWORG (0, 0) and META_SETWINDOWEXT (w, h): parameters in reverse order.
    PutDword(out, 5);
    PutWord(out, 0x020B);
    PutWord(out, 0);
    PutWord(out, 0);
    PutDword(out, 5);
    PutWord(out, 0x020C);
    PutWord(out, (unsigned)h);
    PutWord(out, (unsigned)w);
    // META_STRETCHDIB: SRCCOPY, DIB_RGB_COLORS, source and destination rectangles, the DIB.
    PutDword(out, stretchWords);
    PutWord(out, META_STRETCHDIB);
    PutDword(out, SRCCOPY);
    PutWord(out, DIB_RGB_COLORS);
    for (unsigned v : {(unsigned)h, (unsigned)w, 0u, 0u, (unsigned)h, (unsigned)w, 0u, 0u}) PutWord(out, v);
    out.insert(out.end(), info.begin(), info.end());
    out.insert(out.end(), bits, bits + bitsSize);
    if (dib % 2) out.push_back(0);
    // The end record.
    PutDword(out, 3);
    PutWord(out, 0);
    return out;
}

}  // namespace qm::oleutils

int OleUIMetafilePictFromBitmap(const CDIBitmap& bitmap, METAFILEPICT* lpmfp) {
    if (!CVASSERT(lpmfp)) return FALSE;
    *lpmfp = METAFILEPICT{MM_ANISOTROPIC, 0, 0, nullptr};
    if (!Expressible(bitmap)) return FALSE;
    const int w = bitmap.GetWidth(), h = bitmap.GetHeight();
    std::vector<BYTE> info = InfoFor(bitmap);
    HMETAFILE hmf;
    if (plat::MetafileRecorderAvailable()) {
        // BITMAPINFO is read with its colour table: keep it aligned.
        std::vector<std::uint64_t> aligned((info.size() + 7) / 8);
        std::memcpy(aligned.data(), info.data(), info.size());
        hmf = plat::MetafileRecordDib(w, h, (const BITMAPINFO*)aligned.data(), bitmap.GetBits());
    } else {
        std::vector<BYTE> bytes = qm::oleutils::MetafileBytesForDib(w, h, info, bitmap.GetBits(), bitmap.GetBitsSize());
        hmf = plat::MetafileFromBits((UINT)bytes.size(), bytes.data());
    }
    if (!hmf) return FALSE;
    const BITMAPINFOHEADER* bi = bitmap.GetInfoHeader();
    lpmfp->xExt = Himetric(w, bi->biXPelsPerMeter);
    lpmfp->yExt = Himetric(h, bi->biYPelsPerMeter);
    lpmfp->hMF = hmf;
    return TRUE;
}

HGLOBAL OleUIMetafilePictGlobalFromBitmap(const CDIBitmap& bitmap) {
    METAFILEPICT mfp;
    if (!OleUIMetafilePictFromBitmap(bitmap, &mfp)) return nullptr;
    HGLOBAL h = plat::GlobalMemAlloc(GMEM_MOVEABLE, sizeof mfp);
    void* p = h ? plat::GlobalMemLock(h) : nullptr;
    if (!p) {
        if (h) plat::GlobalMemFree(h);
        plat::MetafileDelete(mfp.hMF);
        return nullptr;
    }
    std::memcpy(p, &mfp, sizeof mfp);
    plat::GlobalMemUnlock(h);
    return h;
}

int OleUIMetafileWriteBitmap(const CDIBitmap& bitmap, CFile& file) {
    METAFILEPICT mfp;
    if (!OleUIMetafilePictFromBitmap(bitmap, &mfp)) return FALSE;
    std::vector<BYTE> bytes;
    bool ok = plat::MetafileBits(mfp.hMF, bytes);
    plat::MetafileDelete(mfp.hMF);
    if (!ok) return FALSE;
    const LONG ppm = bitmap.GetInfoHeader()->biXPelsPerMeter;
    unsigned inch = ppm > 0 ? (unsigned)(((long long)ppm * 254 + 5000) / 10000) : 96;
    if (inch == 0 || inch > 0xFFFF) inch = 96;
    std::vector<BYTE> header;
    PutDword(header, kPlaceableKey);
    PutWord(header, 0);  // handle, always 0 in a file
    PutWord(header, 0);  // bounding box: left, top, right, bottom
    PutWord(header, 0);
    PutWord(header, (unsigned)bitmap.GetWidth());
    PutWord(header, (unsigned)bitmap.GetHeight());
    PutWord(header, inch);
    PutDword(header, 0);
    unsigned checksum = 0;
    for (std::size_t i = 0; i < 20; i += 2) checksum ^= (unsigned)(header[i] | (header[i + 1] << 8));
    PutWord(header, checksum);
    file.Write(header.data(), (UINT)header.size());
    file.Write(bytes.data(), (UINT)bytes.size());
    return TRUE;
}

int OleUIMetafileReadBitmap(CDIBitmap& bitmap, CFile& file) {
    if (bitmap.IsAttached())
        bitmap.Detach();
    else
        bitmap.Destroy();
    if (file.GetPosition() > file.GetLength()) return FALSE;
    ULONGLONG length = file.GetLength() - file.GetPosition();
    if (length < 18 || length > kMaxFile) return FALSE;
    std::vector<BYTE> bytes((std::size_t)length);
    if (file.Read(bytes.data(), (UINT)bytes.size()) != bytes.size()) return FALSE;
    std::size_t start = 0;
    std::uint32_t key = (std::uint32_t)bytes[0] | ((std::uint32_t)bytes[1] << 8) | ((std::uint32_t)bytes[2] << 16) |
                        ((std::uint32_t)bytes[3] << 24);
    if (key == kPlaceableKey) start = kPlaceableHeader;
    if (bytes.size() - start < 18) return FALSE;
    HMETAFILE hmf = plat::MetafileFromBits((UINT)(bytes.size() - start), bytes.data() + start);
    if (!hmf) return FALSE;
    METAFILEPICT mfp{MM_ANISOTROPIC, 0, 0, hmf};
    int ok = OleUIMetafilePictExtract(bitmap, &mfp);
    plat::MetafileDelete(hmf);
    return ok;
}
