#include "utils/platform/oleclipboard.h"

#include <windows.h>
#include <ole2.h>
#include <shlobj.h>

namespace qm::platform {

namespace {

// The OLE clipboard needs the calling thread initialised for OLE (single-threaded apartment).
void EnsureOle() {
    thread_local bool initialised = false;
    if (!initialised) {
        HRESULT hr = OleInitialize(nullptr);
        initialised = SUCCEEDED(hr);
    }
}

}  // namespace

HRESULT OleClipboardSet(IDataObject* object) {
    EnsureOle();
    return OleSetClipboard(object);
}

HRESULT OleClipboardGet(IDataObject** object) {
    if (!object) return E_POINTER;
    EnsureOle();
    return OleGetClipboard(object);
}

HRESULT OleClipboardFlush() {
    EnsureOle();
    return OleFlushClipboard();
}

HRESULT OleClipboardIsCurrent(IDataObject* object) {
    if (!object) return S_FALSE;
    EnsureOle();
    return OleIsCurrentClipboard(object);
}

HRESULT FormatEnumCreate(UINT count, const FORMATETC* formats, IEnumFORMATETC** enumerator) {
    if (!enumerator) return E_POINTER;
    return SHCreateStdEnumFmtEtc(count, formats, enumerator);
}

}  // namespace qm::platform
