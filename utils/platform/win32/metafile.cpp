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
    // Only the records that the checked walk of the same bytes found whole are handed on.
    if (w->index >= w->sizes.size()) return 0;
    return w->proc(record, w->sizes[w->index++], w->context) ? 1 : 0;
}
}  // namespace

bool MetafileEnumRecords(HDC hdc, HMETAFILE hmf, MetafileRecordProc proc, void* context) {
    UINT size = GetMetaFileBitsEx(hmf, 0, nullptr);
    if (size == 0) return false;
    std::vector<BYTE> bytes(size);
    if (GetMetaFileBitsEx(hmf, size, bytes.data()) != size) return false;
    Walk w{MetafileRecordSizes(bytes.data(), bytes.size()), 0, proc, context};
    EnumMetaFile(hdc, hmf, OnRecord, (LPARAM)&w);
    return true;
}

}  // namespace qm::platform
