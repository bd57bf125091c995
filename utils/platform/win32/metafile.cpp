#include "utils/platform/metafile.h"

#include <vector>

namespace qm::platform {

HMETAFILE MetafileFromBits(UINT size, const BYTE* data) {
    if (!MetafileHeaderValid(data, size)) return nullptr;
    return SetMetaFileBitsEx(size, data);
}

BOOL MetafileDelete(HMETAFILE hmf) { return DeleteMetaFile(hmf); }

namespace {
struct Walk {
    std::vector<std::size_t> sizes;
    std::size_t index = 0;
    MetafileRecordProc proc;
    void* context;
};

int CALLBACK OnRecord(HDC, HANDLETABLE*, METARECORD* record, int, LPARAM param) {
    auto* w = (Walk*)param;
    // Only the records that the caller's checked walk of the same bytes found whole are handed on.
    if (w->index >= w->sizes.size()) return 0;
    return w->proc(record, w->sizes[w->index++], w->context) ? 1 : 0;
}
}  // namespace

bool MetafileBits(HMETAFILE hmf, std::vector<BYTE>& bytes) {
    UINT size = GetMetaFileBitsEx(hmf, 0, nullptr);
    if (size == 0) return false;
    bytes.resize(size);
    return GetMetaFileBitsEx(hmf, size, bytes.data()) == size;
}

bool MetafileEnumRecords(HDC hdc, HMETAFILE hmf, const std::vector<std::size_t>& recordSizes, MetafileRecordProc proc,
                         void* context) {
    if (GetMetaFileBitsEx(hmf, 0, nullptr) == 0) return false;
    Walk w{recordSizes, 0, proc, context};
    EnumMetaFile(hdc, hmf, OnRecord, (LPARAM)&w);
    return true;
}

}  // namespace qm::platform

namespace qm::platform {

bool MetafileRecorderAvailable() { return true; }

HMETAFILE MetafileRecordDib(int w, int h, const BITMAPINFO* bmi, const void* bits) {
    HDC mdc = CreateMetaFileA(nullptr);
    if (!mdc) return nullptr;
    SetWindowOrgEx(mdc, 0, 0, nullptr);
    SetWindowExtEx(mdc, w, h, nullptr);
    StretchDIBits(mdc, 0, 0, w, h, 0, 0, w, h, bits, bmi, DIB_RGB_COLORS, SRCCOPY);
    return CloseMetaFile(mdc);
}

}  // namespace qm::platform
