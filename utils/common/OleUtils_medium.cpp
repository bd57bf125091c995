#include <cstring>

#include "utils/common/CVLogger.h"
#include "utils/common/OleUtils.h"
#include "utils/platform/storage.h"

#define QM_SOURCE_MODULE "Common\\OleUtils"

namespace {

void Clear(STGMEDIUM& medium) {
    std::memset(&medium, 0, sizeof medium);
    medium.tymed = TYMED_NULL;
}

}  // namespace

void OleFillFormatEtc(FORMATETC& formatEtc, CLIPFORMAT cfFormat, DWORD tymed, DWORD dwAspect) {
    formatEtc.cfFormat = cfFormat;
    formatEtc.ptd = nullptr;
    formatEtc.dwAspect = dwAspect;
    formatEtc.lindex = -1;
    formatEtc.tymed = tymed;
}

void OleFillStgMedium(STGMEDIUM& medium, HGLOBAL hGlobal) {
    Clear(medium);
    if (!CVASSERT(hGlobal != nullptr)) return;
    medium.tymed = TYMED_HGLOBAL;
    medium.hGlobal = hGlobal;
}

void OleFillStgMedium(STGMEDIUM& medium, IStream* pStream) {
    Clear(medium);
    if (!CVASSERT(pStream != nullptr)) return;
    pStream->AddRef();
    medium.tymed = TYMED_ISTREAM;
    medium.pstm = pStream;
}

void OleFillStgMedium(STGMEDIUM& medium, IStorage* pStorage) {
    Clear(medium);
    if (!CVASSERT(pStorage != nullptr)) return;
    pStorage->AddRef();
    medium.tymed = TYMED_ISTORAGE;
    medium.pstg = pStorage;
}

void OleReleaseStgMedium(STGMEDIUM* pMedium) {
    if (!CVASSERT(pMedium != nullptr)) return;
    qm::platform::MediumRelease(pMedium);
}
