// The OLE clipboard on POSIX, over the library's clipboard service: setting an object puts a
// copy of each of its global-memory formats there at once; reading goes through a small data
// object over the service.
#include "utils/platform/oleclipboard.h"

#include <cstring>
#include <mutex>
#include <vector>

#include "utils/platform/clipboard.h"
#include "utils/platform/clipboard_formats.h"
#include "utils/platform/globalmem.h"
#include "utils/platform/storage.h"
#include "utils/platform/posix/com_object.h"

namespace qm::platform {

namespace {

// The clipboard's formats hold no target device: they are copied as they are.
struct FormatCopies {
    static constexpr HRESULT kNoPointer = E_POINTER;
    static FORMATETC Copy(const FORMATETC& f) { return f; }
    static void Free(FORMATETC&) {}
};
using FormatEnum = posixcom::ListEnum<IEnumFORMATETC, FORMATETC, FormatCopies, &IID_IEnumFORMATETC>;

DWORD TymedOf(UINT format) { return format == CF_METAFILEPICT ? TYMED_MFPICT : TYMED_HGLOBAL; }

// The clipboard's formats: the standard ones and every registered one that is there.
std::vector<FORMATETC> ClipboardFormats() {
    std::vector<FORMATETC> out;
    auto add = [&](UINT f) {
        if (ClipboardIsFormatAvailable(f)) out.push_back(FORMATETC{(CLIPFORMAT)f, nullptr, DVASPECT_CONTENT, -1, TymedOf(f)});
    };
    for (UINT f = 1; f < 0x20; ++f) add(f);
    char name[8];
    for (UINT f = 0xC000; f <= 0xFFFF && ClipboardFormatName(f, name, sizeof name) > 0; ++f) add(f);
    return out;
}

// What the clipboard holds, as a data object: each read is a copy of the clipboard's block.
class ClipboardObject final : public posixcom::Object<ClipboardObject, IDataObject, &IID_IDataObject> {
public:
    HRESULT GetData(FORMATETC* fe, STGMEDIUM* medium) override {
        if (!fe || !medium) return E_INVALIDARG;
        std::memset(medium, 0, sizeof *medium);
        HRESULT hr = QueryGetData(fe);
        if (hr != S_OK) return hr;
        if (!ClipboardOpen(nullptr)) return E_FAIL;
        HGLOBAL copy = MediumDuplicateData(ClipboardGetData(fe->cfFormat), fe->cfFormat);
        ClipboardClose();
        if (!copy) return E_OUTOFMEMORY;
        medium->tymed = TymedOf(fe->cfFormat);
        medium->hGlobal = copy;
        return S_OK;
    }
    HRESULT GetDataHere(FORMATETC*, STGMEDIUM*) override { return E_NOTIMPL; }
    HRESULT QueryGetData(FORMATETC* fe) override {
        if (!fe) return E_INVALIDARG;
        if (fe->dwAspect != DVASPECT_CONTENT) return DV_E_DVASPECT;
        if (fe->lindex != -1) return DV_E_LINDEX;
        if (!(fe->tymed & TymedOf(fe->cfFormat))) return DV_E_TYMED;
        return ClipboardIsFormatAvailable(fe->cfFormat) ? S_OK : DV_E_FORMATETC;
    }
    HRESULT GetCanonicalFormatEtc(FORMATETC*, FORMATETC* out) override {
        if (out) out->ptd = nullptr;
        return DATA_S_SAMEFORMATETC;
    }
    HRESULT SetData(FORMATETC*, STGMEDIUM*, BOOL) override { return E_NOTIMPL; }
    HRESULT EnumFormatEtc(DWORD direction, IEnumFORMATETC** out) override {
        if (!out) return E_POINTER;
        *out = nullptr;
        if (direction != DATADIR_GET) return E_NOTIMPL;
        *out = new FormatEnum(ClipboardFormats());
        return S_OK;
    }
    HRESULT DAdvise(FORMATETC*, DWORD, IAdviseSink*, DWORD*) override { return OLE_E_ADVISENOTSUPPORTED; }
    HRESULT DUnadvise(DWORD) override { return OLE_E_ADVISENOTSUPPORTED; }
    HRESULT EnumDAdvise(IEnumSTATDATA**) override { return OLE_E_ADVISENOTSUPPORTED; }
};

struct Current {
    std::mutex lock;
    IDataObject* object = nullptr;
};

Current& Holder() {
    static Current c;
    return c;
}

// Puts a copy of every global-memory format of the object on the (open, emptied) clipboard.
void CopyFormats(IDataObject* object) {
    IEnumFORMATETC* formats = nullptr;
    if (FAILED(object->EnumFormatEtc(DATADIR_GET, &formats)) || !formats) return;
    FORMATETC fe;
    ULONG got = 0;
    while (formats->Next(1, &fe, &got) == S_OK && got == 1) {
        if (!(fe.tymed & (TYMED_HGLOBAL | TYMED_MFPICT))) continue;
        fe.tymed &= (TYMED_HGLOBAL | TYMED_MFPICT);
        STGMEDIUM medium{};
        if (FAILED(object->GetData(&fe, &medium))) continue;
        if (medium.tymed == TYMED_HGLOBAL || medium.tymed == TYMED_MFPICT) {
            HGLOBAL copy = MediumDuplicateData(medium.hGlobal, fe.cfFormat);
            if (copy && !ClipboardSetData(fe.cfFormat, copy)) {
                STGMEDIUM drop{};
                drop.tymed = medium.tymed;
                drop.hGlobal = copy;
                MediumRelease(&drop);
            }
        }
        MediumRelease(&medium);
    }
    formats->Release();
}

}  // namespace

HRESULT OleClipboardSet(IDataObject* object) {
    Current& c = Holder();
    IDataObject* old;
    {
        std::lock_guard<std::mutex> g(c.lock);
        if (!ClipboardOpen(nullptr)) return E_FAIL;  // the clipboard is open elsewhere
        ClipboardEmpty();
        if (object) CopyFormats(object);
        ClipboardClose();
        if (object) object->AddRef();
        old = c.object;
        c.object = object;
    }
    // The previous object may go away here: not under the lock.
    if (old) old->Release();
    return S_OK;
}

HRESULT OleClipboardGet(IDataObject** object) {
    if (!object) return E_POINTER;
    *object = new ClipboardObject();
    return S_OK;
}

HRESULT OleClipboardFlush() {
    Current& c = Holder();
    IDataObject* old;
    {
        std::lock_guard<std::mutex> g(c.lock);
        old = c.object;
        c.object = nullptr;
    }
    if (old) old->Release();
    return S_OK;
}

HRESULT OleClipboardIsCurrent(IDataObject* object) {
    Current& c = Holder();
    std::lock_guard<std::mutex> g(c.lock);
    return object && object == c.object ? S_OK : S_FALSE;
}

HRESULT FormatEnumCreate(UINT count, const FORMATETC* formats, IEnumFORMATETC** enumerator) {
    if (!enumerator) return E_POINTER;
    *enumerator = new FormatEnum(std::vector<FORMATETC>(formats, formats + (formats ? count : 0)));
    return S_OK;
}

}  // namespace qm::platform
