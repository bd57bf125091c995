// ReleaseStgMedium and the task allocator on POSIX, where no OLE library provides them.
#include <cstdlib>
#include <cstring>
#include <vector>
#include <string>

#include "utils/platform/codepage.h"
#include "utils/platform/files.h"
#include "utils/platform/gdi.h"
#include "utils/platform/globalmem.h"
#include "utils/platform/metafile.h"
#include "utils/platform/storage.h"

namespace qm::platform {

void* TaskMemAlloc(std::size_t bytes) { return std::malloc(bytes ? bytes : 1); }

void TaskMemFree(void* p) { std::free(p); }

HGLOBAL MediumDuplicateData(HGLOBAL block, CLIPFORMAT format) {
    SIZE_T size = GlobalMemSize(block);
    const BYTE* from = (const BYTE*)GlobalMemLock(block);
    if (!from) return nullptr;
    HGLOBAL copy = GlobalMemAlloc(GMEM_MOVEABLE, size);
    BYTE* to = copy ? (BYTE*)GlobalMemLock(copy) : nullptr;
    if (to) {
        std::memcpy(to, from, size);
        // A metafile picture owns its metafile: the copy gets a metafile of its own.
        if (format == CF_METAFILEPICT && size >= sizeof(METAFILEPICT)) {
            auto* mfp = (METAFILEPICT*)to;
            std::vector<BYTE> bits;
            mfp->hMF = mfp->hMF && MetafileBits(mfp->hMF, bits) ? MetafileFromBits((UINT)bits.size(), bits.data())
                                                              : nullptr;
        }
        GlobalMemUnlock(copy);
    } else if (copy) {
        GlobalMemFree(copy);
        copy = nullptr;
    }
    GlobalMemUnlock(block);
    return copy;
}

void MediumRelease(STGMEDIUM* medium) {
    if (!medium) return;
    IUnknown* owner = medium->pUnkForRelease;
    switch (medium->tymed) {
    case TYMED_HGLOBAL:
        if (!owner && medium->hGlobal) GlobalMemFree(medium->hGlobal);
        break;
    case TYMED_GDI:
        if (!owner && medium->hBitmap) GdiDeleteObject(medium->hBitmap);
        break;
    case TYMED_MFPICT:
        if (!owner && medium->hMetaFilePict) {
            if (auto* mfp = (METAFILEPICT*)GlobalMemLock(medium->hMetaFilePict)) {
                if (mfp->hMF) MetafileDelete(mfp->hMF);
                GlobalMemUnlock(medium->hMetaFilePict);
            }
            GlobalMemFree(medium->hMetaFilePict);
        }
        break;
    case TYMED_FILE:
        if (medium->lpszFileName) {
            if (!owner) {
                std::u16string units;
                for (const OLECHAR* p = medium->lpszFileName; *p; ++p) units.push_back((char16_t)*p);
                std::string path = Utf16ToAnsi(units.data(), units.size());
                FileDelete(path.c_str());
            }
            TaskMemFree(medium->lpszFileName);
        }
        break;
    case TYMED_ISTREAM:
        if (medium->pstm) medium->pstm->Release();
        break;
    case TYMED_ISTORAGE:
        if (medium->pstg) medium->pstg->Release();
        break;
    default:  // TYMED_NULL, and enhanced metafiles, which this target does not have
        break;
    }
    if (owner) owner->Release();
    medium->tymed = TYMED_NULL;
    medium->hGlobal = nullptr;
    medium->pUnkForRelease = nullptr;
}

}  // namespace qm::platform
