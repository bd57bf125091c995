#include <cstring>
#include <string>

#include "utils/common/CVLogger.h"
#include "utils/common/OleStorage.h"
#include "utils/platform/codepage.h"
#include "utils/platform/storage.h"

#define QM_SOURCE_MODULE "Common\\OleUtils"

namespace {

constexpr DWORD kCreate = STGM_CREATE | STGM_READWRITE | STGM_SHARE_EXCLUSIVE;
constexpr DWORD kFailIfThere = STGM_READWRITE | STGM_SHARE_EXCLUSIVE;

DWORD OpenMode(BOOL writable) { return (writable ? STGM_READWRITE : STGM_READ) | STGM_SHARE_EXCLUSIVE; }

// The name as OLECHARs, one per UTF-16 unit; false when it cannot be an element's name. The
// system refuses such names too, but not all of its implementations do, and a name of 32 units
// or more would be written as an empty one by one of them.
bool ElementName(LPCTSTR name, std::basic_string<OLECHAR>& out) {
    out.clear();
    if (!name) return false;
    std::u16string units = qm::platform::AnsiToUtf16(name, std::strlen(name));
    if (units.empty() || units.size() > 31) return false;
    for (char16_t c : units) {
        if (c == u'\\' || c == u'/' || c == u':' || c == u'!') return false;
        out.push_back((OLECHAR)c);
    }
    return true;
}

CString AnsiName(const OLECHAR* name) {
    std::u16string units;
    for (const OLECHAR* p = name; p && *p; ++p) units.push_back((char16_t)*p);
    return CString(qm::platform::Utf16ToAnsi(units.data(), units.size()).c_str());
}

}  // namespace

BOOL OleStorage::IsValidElementName(LPCTSTR lpszName) {
    std::basic_string<OLECHAR> name;
    return ElementName(lpszName, name);
}

HRESULT OleStorage::CreateOnFile(LPCTSTR lpszPath, IStorage** ppStorage) {
    if (!CVASSERT(ppStorage != nullptr)) return STG_E_INVALIDPOINTER;
    *ppStorage = nullptr;
    if (!CVASSERT(lpszPath != nullptr)) return STG_E_INVALIDPOINTER;
    return qm::platform::StorageCreateOnFile(lpszPath, ppStorage);
}

HRESULT OleStorage::OpenOnFile(LPCTSTR lpszPath, BOOL bWritable, IStorage** ppStorage) {
    if (!CVASSERT(ppStorage != nullptr)) return STG_E_INVALIDPOINTER;
    *ppStorage = nullptr;
    if (!CVASSERT(lpszPath != nullptr)) return STG_E_INVALIDPOINTER;
    return qm::platform::StorageOpenOnFile(lpszPath, bWritable != FALSE, ppStorage);
}

HRESULT OleStorage::CreateInMemory(IStorage** ppStorage) {
    if (!CVASSERT(ppStorage != nullptr)) return STG_E_INVALIDPOINTER;
    return qm::platform::StorageCreateInMemory(ppStorage);
}

HRESULT OleStorage::CreateSubStorage(IStorage* pParent, LPCTSTR lpszName, IStorage** ppStorage, BOOL bFailIfThere) {
    if (!CVASSERT(ppStorage != nullptr)) return STG_E_INVALIDPOINTER;
    *ppStorage = nullptr;
    if (!CVASSERT(pParent != nullptr)) return STG_E_INVALIDPOINTER;
    std::basic_string<OLECHAR> name;
    if (!ElementName(lpszName, name)) return STG_E_INVALIDNAME;
    return pParent->CreateStorage(name.c_str(), bFailIfThere ? kFailIfThere : kCreate, 0, 0, ppStorage);
}

HRESULT OleStorage::OpenSubStorage(IStorage* pParent, LPCTSTR lpszName, BOOL bWritable, IStorage** ppStorage) {
    if (!CVASSERT(ppStorage != nullptr)) return STG_E_INVALIDPOINTER;
    *ppStorage = nullptr;
    if (!CVASSERT(pParent != nullptr)) return STG_E_INVALIDPOINTER;
    std::basic_string<OLECHAR> name;
    if (!ElementName(lpszName, name)) return STG_E_INVALIDNAME;
    return pParent->OpenStorage(name.c_str(), nullptr, OpenMode(bWritable), nullptr, 0, ppStorage);
}

HRESULT OleStorage::CreateStream(IStorage* pParent, LPCTSTR lpszName, IStream** ppStream, BOOL bFailIfThere) {
    if (!CVASSERT(ppStream != nullptr)) return STG_E_INVALIDPOINTER;
    *ppStream = nullptr;
    if (!CVASSERT(pParent != nullptr)) return STG_E_INVALIDPOINTER;
    std::basic_string<OLECHAR> name;
    if (!ElementName(lpszName, name)) return STG_E_INVALIDNAME;
    return pParent->CreateStream(name.c_str(), bFailIfThere ? kFailIfThere : kCreate, 0, 0, ppStream);
}

HRESULT OleStorage::OpenStream(IStorage* pParent, LPCTSTR lpszName, BOOL bWritable, IStream** ppStream) {
    if (!CVASSERT(ppStream != nullptr)) return STG_E_INVALIDPOINTER;
    *ppStream = nullptr;
    if (!CVASSERT(pParent != nullptr)) return STG_E_INVALIDPOINTER;
    std::basic_string<OLECHAR> name;
    if (!ElementName(lpszName, name)) return STG_E_INVALIDNAME;
    return pParent->OpenStream(name.c_str(), nullptr, OpenMode(bWritable), 0, ppStream);
}

HRESULT OleStorage::WriteStream(IStorage* pParent, LPCTSTR lpszName, const void* pData, size_t nSize) {
    if (!CVASSERT(pData != nullptr || nSize == 0)) return STG_E_INVALIDPOINTER;
    IStream* stream = nullptr;
    HRESULT hr = CreateStream(pParent, lpszName, &stream);
    if (FAILED(hr)) return hr;
    const BYTE* p = (const BYTE*)pData;
    while (nSize && SUCCEEDED(hr)) {
        ULONG chunk = nSize > (1u << 30) ? (1u << 30) : (ULONG)nSize;
        ULONG written = 0;
        hr = stream->Write(p, chunk, &written);
        if (SUCCEEDED(hr) && written != chunk) hr = STG_E_MEDIUMFULL;
        p += chunk;
        nSize -= chunk;
    }
    stream->Release();
    return hr;
}

HRESULT OleStorage::ReadStream(IStorage* pParent, LPCTSTR lpszName, std::vector<BYTE>& data) {
    data.clear();
    IStream* stream = nullptr;
    HRESULT hr = OpenStream(pParent, lpszName, FALSE, &stream);
    if (FAILED(hr)) return hr;
    STATSTG st{};
    hr = stream->Stat(&st, STATFLAG_NONAME);
    if (SUCCEEDED(hr)) {
        // The stream's own size bounds the read; a short read means a damaged file.
        try {
            data.resize((std::size_t)st.cbSize.QuadPart);
        } catch (const std::exception&) {
            hr = STG_E_INSUFFICIENTMEMORY;
        }
    }
    std::size_t done = 0;
    while (SUCCEEDED(hr) && done < data.size()) {
        std::size_t left = data.size() - done;
        ULONG chunk = left > (1u << 30) ? (1u << 30) : (ULONG)left;
        ULONG got = 0;
        hr = stream->Read(data.data() + done, chunk, &got);
        if (SUCCEEDED(hr) && got == 0) hr = STG_E_READFAULT;
        done += got;
    }
    stream->Release();
    if (FAILED(hr)) data.clear();
    return hr;
}

HRESULT OleStorage::ListElements(IStorage* pStorage, std::vector<OleStorageElement>& elements) {
    elements.clear();
    if (!CVASSERT(pStorage != nullptr)) return STG_E_INVALIDPOINTER;
    IEnumSTATSTG* items = nullptr;
    HRESULT hr = pStorage->EnumElements(0, nullptr, 0, &items);
    if (FAILED(hr)) return hr;
    STATSTG st;
    ULONG got = 0;
    while (items->Next(1, &st, &got) == S_OK && got == 1) {
        OleStorageElement e;
        e.strName = AnsiName(st.pwcsName);
        e.type = st.type;
        e.size = st.type == STGTY_STREAM ? st.cbSize.QuadPart : 0;
        e.clsid = st.clsid;
        elements.push_back(e);
        qm::platform::TaskMemFree(st.pwcsName);
    }
    items->Release();
    return S_OK;
}

HRESULT OleStorage::SetClass(IStorage* pStorage, REFCLSID clsid) {
    if (!CVASSERT(pStorage != nullptr)) return STG_E_INVALIDPOINTER;
    return pStorage->SetClass(clsid);
}

HRESULT OleStorage::GetClass(IStorage* pStorage, CLSID& clsid) {
    std::memset(&clsid, 0, sizeof clsid);
    if (!CVASSERT(pStorage != nullptr)) return STG_E_INVALIDPOINTER;
    STATSTG st{};
    HRESULT hr = pStorage->Stat(&st, STATFLAG_NONAME);
    if (SUCCEEDED(hr)) clsid = st.clsid;
    return hr;
}

HRESULT OleStorage::SaveToStream(IStorage* pStorage, IStream* pStream) {
    if (!CVASSERT(pStorage != nullptr)) return STG_E_INVALIDPOINTER;
    if (!CVASSERT(pStream != nullptr)) return STG_E_INVALIDPOINTER;
    std::vector<BYTE> bytes;
    HRESULT hr = qm::platform::StorageSaveToBytes(pStorage, bytes);
    std::size_t done = 0;
    while (SUCCEEDED(hr) && done < bytes.size()) {
        std::size_t left = bytes.size() - done;
        ULONG chunk = left > (1u << 30) ? (1u << 30) : (ULONG)left;
        ULONG written = 0;
        hr = pStream->Write(bytes.data() + done, chunk, &written);
        if (SUCCEEDED(hr) && written != chunk) hr = STG_E_MEDIUMFULL;
        done += chunk;
    }
    return hr;
}

HRESULT OleStorage::LoadFromStream(IStream* pStream, IStorage** ppStorage) {
    if (!CVASSERT(ppStorage != nullptr)) return STG_E_INVALIDPOINTER;
    *ppStorage = nullptr;
    if (!CVASSERT(pStream != nullptr)) return STG_E_INVALIDPOINTER;
    std::vector<BYTE> bytes;
    BYTE buffer[65536];
    HRESULT hr;
    for (;;) {
        ULONG got = 0;
        hr = pStream->Read(buffer, sizeof buffer, &got);
        if (FAILED(hr)) return hr;
        if (got == 0) break;
        try {
            bytes.insert(bytes.end(), buffer, buffer + got);
        } catch (const std::exception&) {
            return STG_E_INSUFFICIENTMEMORY;
        }
    }
    return qm::platform::StorageOpenOnBytes(bytes.data(), bytes.size(), ppStorage);
}

HRESULT OleStorage::Commit(IStorage* pStorage) {
    if (!CVASSERT(pStorage != nullptr)) return STG_E_INVALIDPOINTER;
    return pStorage->Commit(STGC_DEFAULT);
}
