// Walks arbitrary bytes as a metafile picture with OleUIMetafilePictExtract, and offers the
// same bytes as a CF_DIB clipboard block. Record sizes pointing outside the metafile, zero
// sizes and truncated DIBs must be refused without reading outside the bytes; a bitmap that
// is taken must hold exactly the rows its header describes.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "quiet_reports.h"
#include "utils/common/OleUtils.h"
#include "utils/platform/clipboard.h"
#include "utils/platform/globalmem.h"
#include "utils/platform/metafile.h"

namespace {
void Check(const CDIBitmap& bmp, bool ok) {
    if (ok != bmp.IsValid()) std::abort();
    if (ok && bmp.GetBitsSize() != bmp.DWAlignedBytesPerLine() * (DWORD)bmp.GetHeight()) std::abort();
}
}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    qmfuzz::QuietReports();
    if (size > (1u << 20)) return 0;
    METAFILEPICT mfp{MM_ANISOTROPIC, 0, 0, qm::platform::MetafileFromBits((UINT)size, data)};
    CDIBitmap bmp;
    Check(bmp, OleUIMetafilePictExtract(bmp, &mfp) != 0);
    if (mfp.hMF) qm::platform::MetafileDelete(mfp.hMF);

    HGLOBAL h = qm::platform::GlobalMemAlloc(GMEM_MOVEABLE, size);
    if (!h) return 0;
    if (size) std::memcpy(qm::platform::GlobalMemLock(h), data, size), qm::platform::GlobalMemUnlock(h);
    qm::platform::ClipboardOpen(nullptr);
    qm::platform::ClipboardEmpty();
    if (!qm::platform::ClipboardSetData(CF_DIB, h)) qm::platform::GlobalMemFree(h);
    qm::platform::ClipboardClose();
    CDIBitmap fromClipboard;
    Check(fromClipboard, fromClipboard.GetFromClipboard(nullptr));
    // The clipboard frees its block when emptied: nothing is left at the end of a run.
    qm::platform::ClipboardOpen(nullptr);
    qm::platform::ClipboardEmpty();
    qm::platform::ClipboardClose();
    return 0;
}
