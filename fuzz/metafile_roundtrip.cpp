// Arbitrary bytes read as a packed DIB; a bitmap the reader takes must come back with the same
// pixels through a metafile picture (written, then extracted) and through a placeable .wmf
// file (written to memory, then read).
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "quiet_reports.h"
#include "utils/common/OleUtils.h"
#include "utils/framework/CFile.h"
#include "utils/platform/metafile.h"

namespace {

bool SamePixels(const CDIBitmap& a, const CDIBitmap& b) {
    if (a.GetWidth() != b.GetWidth() || a.GetHeight() != b.GetHeight() || a.GetBitCount() != b.GetBitCount())
        return false;
    for (int y = 0; y < a.GetHeight(); ++y)
        for (int x = 0; x < a.GetWidth(); ++x)
            if ((a.GetPixelColor(CPoint(x, y)) & 0xFFFFFF) != (b.GetPixelColor(CPoint(x, y)) & 0xFFFFFF)) return false;
    return true;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    qmfuzz::QuietReports();
    if (size > (1u << 20)) return 0;
    CMemFile in;
    in.Write(data, (UINT)size);
    in.SeekToBegin();
    CDIBitmap bmp;
    bool loaded = false;
    try {
        loaded = bmp.Load(in, false);
    } catch (CException* e) {
        e->Delete();
    }
    if (!loaded || !bmp.IsValid() || bmp.GetWidth() > 4096 || bmp.GetHeight() > 4096) return 0;

    METAFILEPICT mfp;
    if (!OleUIMetafilePictFromBitmap(bmp, &mfp)) std::abort();
    CDIBitmap back;
    if (!OleUIMetafilePictExtract(back, &mfp) || !SamePixels(bmp, back)) std::abort();
    qm::platform::MetafileDelete(mfp.hMF);

    CMemFile wmf;
    if (!OleUIMetafileWriteBitmap(bmp, wmf)) std::abort();
    wmf.SeekToBegin();
    CDIBitmap fromFile;
    if (!OleUIMetafileReadBitmap(fromFile, wmf) || !SamePixels(bmp, fromFile)) std::abort();
    return 0;
}
