#include "utils/framework/COleDataObject.h"

#include <cstring>
#include <string>

#include "utils/framework/CSharedFile.h"
#include "utils/platform/codepage.h"
#include "utils/platform/globalmem.h"
#include "utils/platform/oleclipboard.h"
#include "utils/platform/storage.h"

namespace plat = qm::platform;

namespace {

DWORD DefaultTymed(CLIPFORMAT cf) { return cf == CF_METAFILEPICT ? (DWORD)TYMED_MFPICT : (DWORD)TYMED_HGLOBAL; }

FORMATETC FormatFor(CLIPFORMAT cf, const FORMATETC* given, DWORD tymed) {
    if (given) {
        FORMATETC fe = *given;
        fe.cfFormat = cf;
        return fe;
    }
    return FORMATETC{cf, nullptr, DVASPECT_CONTENT, -1, tymed};
}

COleDataSource* g_clipboardSource = nullptr;

// A stream's bytes from its current position in a new movable block.
HGLOBAL BlockFromStream(IStream* stream) {
    std::vector<BYTE> bytes;
    BYTE buffer[65536];
    for (;;) {
        ULONG got = 0;
        if (FAILED(stream->Read(buffer, sizeof buffer, &got)) || got == 0) break;
        bytes.insert(bytes.end(), buffer, buffer + got);
    }
    HGLOBAL h = plat::GlobalMemAlloc(GMEM_MOVEABLE, bytes.size());
    if (!h) return nullptr;
    if (!bytes.empty()) {
        void* p = plat::GlobalMemLock(h);
        std::memcpy(p, bytes.data(), bytes.size());
        plat::GlobalMemUnlock(h);
    }
    return h;
}

}  // namespace

// The IDataObject face of a source: its reference count is the source's.
class COleDataSource::XDataObject final : public IDataObject {
public:
    explicit XDataObject(COleDataSource* owner) : m_owner(owner) {}

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID riid, void** ppv) override {
        if (!ppv) return E_POINTER;
        *ppv = nullptr;
        if (!IsEqualIID(riid, IID_IUnknown) && !IsEqualIID(riid, IID_IDataObject)) return E_NOINTERFACE;
        *ppv = static_cast<IDataObject*>(this);
        AddRef();
        return S_OK;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return m_owner->ExternalAddRef(); }
    ULONG STDMETHODCALLTYPE Release() override { return m_owner->ExternalRelease(); }

    HRESULT STDMETHODCALLTYPE GetData(FORMATETC* fe, STGMEDIUM* medium) override {
        if (!fe || !medium) return E_INVALIDARG;
        std::memset(medium, 0, sizeof *medium);
        HRESULT why;
        const Item* item = m_owner->Find(*fe, &why);
        if (!item) return why;
        switch (item->medium.tymed) {
        case TYMED_HGLOBAL:
        case TYMED_MFPICT:
            medium->hGlobal = plat::MediumDuplicateData(item->medium.hGlobal, item->formatEtc.cfFormat);
            if (!medium->hGlobal) return E_OUTOFMEMORY;
            break;
        case TYMED_ISTREAM:
        case TYMED_ISTORAGE:
            medium->pstm = item->medium.pstm;
            item->medium.pstm->AddRef();
            break;
        case TYMED_FILE: {
            // The file stays the source's: the receiver gets a copy of its name and releases
            // it through the source (the file is deleted when the source lets go of it).
            if (!item->medium.lpszFileName) return DV_E_TYMED;
            LPOLESTR name = plat::TaskStringCopy(item->medium.lpszFileName);
            if (!name) return E_OUTOFMEMORY;
            medium->lpszFileName = name;
            medium->pUnkForRelease = static_cast<IDataObject*>(this);
            AddRef();
            break;
        }
        default: return DV_E_TYMED;
        }
        medium->tymed = item->medium.tymed;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE GetDataHere(FORMATETC* fe, STGMEDIUM* medium) override {
        if (!fe || !medium) return E_INVALIDARG;
        if (medium->tymed != TYMED_HGLOBAL || !medium->hGlobal) return DV_E_TYMED;
        FORMATETC want = *fe;
        want.tymed = TYMED_HGLOBAL;
        HRESULT why;
        const Item* item = m_owner->Find(want, &why);
        if (!item) return why;
        SIZE_T have = plat::GlobalMemSize(item->medium.hGlobal);
        if (plat::GlobalMemSize(medium->hGlobal) < have) return STG_E_MEDIUMFULL;
        const void* from = plat::GlobalMemLock(item->medium.hGlobal);
        void* to = plat::GlobalMemLock(medium->hGlobal);
        if (from && to && have) std::memcpy(to, from, have);
        if (to) plat::GlobalMemUnlock(medium->hGlobal);
        if (from) plat::GlobalMemUnlock(item->medium.hGlobal);
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE QueryGetData(FORMATETC* fe) override {
        if (!fe) return E_INVALIDARG;
        HRESULT why;
        return m_owner->Find(*fe, &why) ? S_OK : why;
    }
    HRESULT STDMETHODCALLTYPE GetCanonicalFormatEtc(FORMATETC*, FORMATETC* out) override {
        if (out) out->ptd = nullptr;
        return DATA_S_SAMEFORMATETC;
    }
    HRESULT STDMETHODCALLTYPE SetData(FORMATETC*, STGMEDIUM*, BOOL) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE EnumFormatEtc(DWORD direction, IEnumFORMATETC** out) override {
        if (!out) return E_POINTER;
        *out = nullptr;
        if (direction != DATADIR_GET) return E_NOTIMPL;
        std::vector<FORMATETC> formats;
        for (const Item& item : m_owner->m_items) formats.push_back(item.formatEtc);
        return plat::FormatEnumCreate((UINT)formats.size(), formats.data(), out);
    }
    HRESULT STDMETHODCALLTYPE DAdvise(FORMATETC*, DWORD, IAdviseSink*, DWORD*) override {
        return OLE_E_ADVISENOTSUPPORTED;
    }
    HRESULT STDMETHODCALLTYPE DUnadvise(DWORD) override { return OLE_E_ADVISENOTSUPPORTED; }
    HRESULT STDMETHODCALLTYPE EnumDAdvise(IEnumSTATDATA**) override { return OLE_E_ADVISENOTSUPPORTED; }

private:
    COleDataSource* m_owner;
};

COleDataSource::COleDataSource() : m_xDataObject(new XDataObject(this)) {}

COleDataSource::~COleDataSource() {
    if (g_clipboardSource == this) g_clipboardSource = nullptr;
    Empty();
    delete m_xDataObject;
}

const COleDataSource::Item* COleDataSource::Find(const FORMATETC& fe, HRESULT* why) const {
    *why = DV_E_FORMATETC;
    for (const Item& item : m_items) {
        if (item.formatEtc.cfFormat != fe.cfFormat) continue;
        if (item.formatEtc.dwAspect != fe.dwAspect) {
            *why = DV_E_DVASPECT;
            continue;
        }
        if (item.formatEtc.lindex != fe.lindex) {
            *why = DV_E_LINDEX;
            continue;
        }
        if (!(item.formatEtc.tymed & fe.tymed)) {
            *why = DV_E_TYMED;
            continue;
        }
        return &item;
    }
    return nullptr;
}

void COleDataSource::CacheData(CLIPFORMAT cfFormat, LPSTGMEDIUM lpStgMedium, LPFORMATETC lpFormatEtc) {
    if (!lpStgMedium || lpStgMedium->tymed == TYMED_NULL) return;
    Item item;
    item.formatEtc = FormatFor(cfFormat, lpFormatEtc, lpStgMedium->tymed);
    item.formatEtc.tymed = lpStgMedium->tymed;
    item.medium = *lpStgMedium;
    for (Item& old : m_items)
        if (old.formatEtc.cfFormat == item.formatEtc.cfFormat && old.formatEtc.dwAspect == item.formatEtc.dwAspect &&
            old.formatEtc.lindex == item.formatEtc.lindex && old.formatEtc.tymed == item.formatEtc.tymed) {
            plat::MediumRelease(&old.medium);
            old = item;
            return;
        }
    m_items.push_back(item);
}

void COleDataSource::CacheGlobalData(CLIPFORMAT cfFormat, HGLOBAL hGlobal, LPFORMATETC lpFormatEtc) {
    if (!hGlobal) return;
    STGMEDIUM medium{};
    if (!lpFormatEtc)
        medium.tymed = DefaultTymed(cfFormat);
    else
        medium.tymed = lpFormatEtc->tymed == (DWORD)TYMED_MFPICT ? (DWORD)TYMED_MFPICT : (DWORD)TYMED_HGLOBAL;
    medium.hGlobal = hGlobal;
    CacheData(cfFormat, &medium, lpFormatEtc);
}

void COleDataSource::Empty() {
    for (Item& item : m_items) plat::MediumRelease(&item.medium);
    m_items.clear();
}

void COleDataSource::SetClipboard() {
    // The clipboard adds its own reference; the creator's goes with it.
    if (SUCCEEDED(plat::OleClipboardSet(m_xDataObject))) g_clipboardSource = this;
    ExternalRelease();
}

void COleDataSource::FlushClipboard() {
    plat::OleClipboardFlush();
}

COleDataSource* COleDataSource::GetClipboardOwner() {
    COleDataSource* source = g_clipboardSource;
    if (source && plat::OleClipboardIsCurrent(source->m_xDataObject) == S_OK) return source;
    return nullptr;
}

IDataObject* COleDataSource::GetDataObject() { return m_xDataObject; }

DWORD COleDataSource::ExternalAddRef() { return ++m_dwRef; }

DWORD COleDataSource::ExternalRelease() {
    DWORD n = --m_dwRef;
    if (n == 0) delete this;
    return n;
}

COleDataObject::COleDataObject() = default;

COleDataObject::~COleDataObject() { Release(); }

void COleDataObject::Attach(LPDATAOBJECT lpDataObject, BOOL bAutoRelease) {
    Release();
    m_lpDataObject = lpDataObject;
    m_bAutoRelease = bAutoRelease;
}

BOOL COleDataObject::AttachClipboard() {
    Release();
    IDataObject* object = nullptr;
    if (FAILED(plat::OleClipboardGet(&object)) || !object) return FALSE;
    Attach(object, TRUE);
    return TRUE;
}

LPDATAOBJECT COleDataObject::Detach() {
    if (m_lpEnumerator) {
        m_lpEnumerator->Release();
        m_lpEnumerator = nullptr;
    }
    LPDATAOBJECT object = m_lpDataObject;
    m_lpDataObject = nullptr;
    return object;
}

void COleDataObject::Release() {
    BOOL autoRelease = m_bAutoRelease;
    LPDATAOBJECT object = Detach();
    if (object && autoRelease) object->Release();
}

BOOL COleDataObject::IsDataAvailable(CLIPFORMAT cfFormat, LPFORMATETC lpFormatEtc) {
    if (!m_lpDataObject) return FALSE;
    FORMATETC fe = FormatFor(cfFormat, lpFormatEtc, DefaultTymed(cfFormat) | TYMED_ISTREAM | TYMED_ISTORAGE |
                                                        TYMED_FILE);
    if (m_lpDataObject->QueryGetData(&fe) == S_OK) return TRUE;
    return FALSE;
}

BOOL COleDataObject::GetData(CLIPFORMAT cfFormat, LPSTGMEDIUM lpStgMedium, LPFORMATETC lpFormatEtc) {
    if (!m_lpDataObject || !lpStgMedium) return FALSE;
    FORMATETC fe = FormatFor(cfFormat, lpFormatEtc, DefaultTymed(cfFormat) | TYMED_ISTREAM | TYMED_ISTORAGE |
                                                        TYMED_FILE);
    std::memset(lpStgMedium, 0, sizeof *lpStgMedium);
    return SUCCEEDED(m_lpDataObject->GetData(&fe, lpStgMedium)) ? TRUE : FALSE;
}

HGLOBAL COleDataObject::GetGlobalData(CLIPFORMAT cfFormat, LPFORMATETC lpFormatEtc) {
    if (!m_lpDataObject) return nullptr;
    FORMATETC fe = FormatFor(cfFormat, lpFormatEtc, DefaultTymed(cfFormat) | TYMED_ISTREAM);
    STGMEDIUM medium{};
    if (FAILED(m_lpDataObject->GetData(&fe, &medium))) return nullptr;
    HGLOBAL result = nullptr;
    if ((medium.tymed == TYMED_HGLOBAL || medium.tymed == TYMED_MFPICT) && !medium.pUnkForRelease) {
        // The block is the caller's already.
        return medium.hGlobal;
    }
    if (medium.tymed == TYMED_HGLOBAL || medium.tymed == TYMED_MFPICT)
        result = plat::MediumDuplicateData(medium.hGlobal, cfFormat);
    else if (medium.tymed == TYMED_ISTREAM && medium.pstm)
        result = BlockFromStream(medium.pstm);
    plat::MediumRelease(&medium);
    return result;
}

CFile* COleDataObject::GetFileData(CLIPFORMAT cfFormat, LPFORMATETC lpFormatEtc) {
    if (!m_lpDataObject) return nullptr;
    FORMATETC fe = FormatFor(cfFormat, lpFormatEtc, TYMED_HGLOBAL | TYMED_ISTREAM | TYMED_FILE | TYMED_MFPICT);
    STGMEDIUM medium{};
    if (FAILED(m_lpDataObject->GetData(&fe, &medium))) return nullptr;
    CFile* file = nullptr;
    HGLOBAL block = nullptr;
    if (medium.tymed == TYMED_HGLOBAL || medium.tymed == TYMED_MFPICT)
        block = plat::MediumDuplicateData(medium.hGlobal, cfFormat);
    else if (medium.tymed == TYMED_ISTREAM && medium.pstm)
        block = BlockFromStream(medium.pstm);
    if (block) {
        auto* shared = new CSharedFile(GMEM_MOVEABLE);
        shared->SetHandle(block, FALSE);
        file = shared;
    } else if (medium.tymed == TYMED_FILE && medium.lpszFileName) {
        std::u16string units;
        for (const OLECHAR* p = medium.lpszFileName; *p; ++p) units.push_back((char16_t)*p);
        std::string name = plat::Utf16ToAnsi(units.data(), units.size());
        auto* named = new CFile();
        if (named->Open(name.c_str(), CFile::modeRead | CFile::shareDenyWrite))
            file = named;
        else
            delete named;
    }
    plat::MediumRelease(&medium);
    return file;
}

void COleDataObject::BeginEnumFormats() {
    if (m_lpEnumerator) {
        m_lpEnumerator->Release();
        m_lpEnumerator = nullptr;
    }
    if (m_lpDataObject) m_lpDataObject->EnumFormatEtc(DATADIR_GET, &m_lpEnumerator);
}

BOOL COleDataObject::GetNextFormat(LPFORMATETC lpFormatEtc) {
    if (!m_lpEnumerator || !lpFormatEtc) return FALSE;
    ULONG got = 0;
    return m_lpEnumerator->Next(1, lpFormatEtc, &got) == S_OK && got == 1;
}
