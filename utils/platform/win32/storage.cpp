// Compound files on Windows: ole32's structured storage.
#include "utils/platform/storage.h"

#include <windows.h>
#include <ole2.h>

#include <cstring>
#include <string>

namespace qm::platform {

namespace {

std::wstring Wide(const char* text) {
    int n = MultiByteToWideChar(CP_ACP, 0, text, -1, nullptr, 0);
    std::wstring w(n > 0 ? (std::size_t)n : 1, L'\0');
    if (n > 0) MultiByteToWideChar(CP_ACP, 0, text, -1, w.data(), n);
    w.resize(std::wcslen(w.c_str()));
    return w;
}

constexpr DWORD kCreateMode = STGM_CREATE | STGM_READWRITE | STGM_SHARE_EXCLUSIVE;

}  // namespace

HRESULT StorageCreateOnFile(const char* path, IStorage** storage) {
    if (!storage) return STG_E_INVALIDPOINTER;
    *storage = nullptr;
    if (!path || !*path) return STG_E_INVALIDNAME;
    return StgCreateDocfile(Wide(path).c_str(), kCreateMode, 0, storage);
}

HRESULT StorageOpenOnFile(const char* path, bool writable, IStorage** storage) {
    if (!storage) return STG_E_INVALIDPOINTER;
    *storage = nullptr;
    if (!path || !*path) return STG_E_INVALIDNAME;
    DWORD mode = writable ? STGM_READWRITE | STGM_SHARE_EXCLUSIVE : STGM_READ | STGM_SHARE_DENY_WRITE;
    return StgOpenStorage(Wide(path).c_str(), nullptr, mode, nullptr, 0, storage);
}

HRESULT StorageCreateInMemory(IStorage** storage) {
    if (!storage) return STG_E_INVALIDPOINTER;
    *storage = nullptr;
    ILockBytes* bytes = nullptr;
    HRESULT hr = CreateILockBytesOnHGlobal(nullptr, TRUE, &bytes);
    if (FAILED(hr)) return hr;
    hr = StgCreateDocfileOnILockBytes(bytes, kCreateMode, 0, storage);
    bytes->Release();
    return hr;
}

HRESULT StorageOpenOnBytes(const BYTE* data, std::size_t size, IStorage** storage) {
    if (!storage) return STG_E_INVALIDPOINTER;
    *storage = nullptr;
    if (!data && size) return STG_E_INVALIDPOINTER;
    // Too short for the header: the system's answer for a file that is not a compound file.
    if (size < 512) return STG_E_FILEALREADYEXISTS;
    HGLOBAL h = GlobalAlloc(GMEM_MOVEABLE, size);
    if (!h) return STG_E_INSUFFICIENTMEMORY;
    void* p = GlobalLock(h);
    std::memcpy(p, data, size);
    GlobalUnlock(h);
    ILockBytes* bytes = nullptr;
    HRESULT hr = CreateILockBytesOnHGlobal(h, TRUE, &bytes);
    if (FAILED(hr)) {
        GlobalFree(h);
        return hr;
    }
    hr = StgIsStorageILockBytes(bytes);
    if (hr == S_OK)
        hr = StgOpenStorageOnILockBytes(bytes, nullptr, STGM_READWRITE | STGM_SHARE_EXCLUSIVE, nullptr, 0, storage);
    else if (SUCCEEDED(hr))
        hr = STG_E_FILEALREADYEXISTS;
    bytes->Release();
    return hr;
}

HRESULT StorageSaveToBytes(IStorage* storage, std::vector<BYTE>& out) {
    out.clear();
    if (!storage) return STG_E_INVALIDPOINTER;
    ILockBytes* bytes = nullptr;
    HRESULT hr = CreateILockBytesOnHGlobal(nullptr, TRUE, &bytes);
    if (FAILED(hr)) return hr;
    IStorage* copy = nullptr;
    hr = StgCreateDocfileOnILockBytes(bytes, kCreateMode, 0, &copy);
    if (SUCCEEDED(hr)) hr = storage->CopyTo(0, nullptr, nullptr, copy);
    if (SUCCEEDED(hr)) hr = copy->Commit(STGC_DEFAULT);
    if (copy) copy->Release();
    STATSTG st{};
    if (SUCCEEDED(hr)) hr = bytes->Stat(&st, STATFLAG_NONAME);
    HGLOBAL h = nullptr;
    if (SUCCEEDED(hr)) hr = GetHGlobalFromILockBytes(bytes, &h);
    if (SUCCEEDED(hr)) {
        // The block may be larger than the file it holds: the lock bytes' size is the file's.
        SIZE_T have = GlobalSize(h);
        std::size_t n = (std::size_t)st.cbSize.QuadPart;
        if (n > have) n = have;
        if (const BYTE* p = (const BYTE*)GlobalLock(h)) {
            out.assign(p, p + n);
            GlobalUnlock(h);
        } else {
            hr = STG_E_READFAULT;
        }
    }
    bytes->Release();
    return hr;
}

void MediumRelease(STGMEDIUM* medium) {
    if (!medium) return;
    ReleaseStgMedium(medium);
    medium->tymed = TYMED_NULL;
    medium->hGlobal = nullptr;
    medium->pUnkForRelease = nullptr;
}

// (OleDuplicateData is not used: Wine's takes a CF_METAFILEPICT handle for the metafile itself.)
HGLOBAL MediumDuplicateData(HGLOBAL block, CLIPFORMAT format) {
    SIZE_T size = block ? GlobalSize(block) : 0;
    const BYTE* from = block ? (const BYTE*)GlobalLock(block) : nullptr;
    if (!from) return nullptr;
    HGLOBAL copy = GlobalAlloc(GMEM_MOVEABLE, size);
    BYTE* to = copy ? (BYTE*)GlobalLock(copy) : nullptr;
    if (to) {
        std::memcpy(to, from, size);
        // A metafile picture owns its metafile: the copy gets a metafile of its own.
        if (format == CF_METAFILEPICT && size >= sizeof(METAFILEPICT)) {
            auto* mfp = (METAFILEPICT*)to;
            mfp->hMF = mfp->hMF ? CopyMetaFileA(mfp->hMF, nullptr) : nullptr;
        }
        GlobalUnlock(copy);
    } else if (copy) {
        GlobalFree(copy);
        copy = nullptr;
    }
    GlobalUnlock(block);
    return copy;
}

void* TaskMemAlloc(std::size_t bytes) { return CoTaskMemAlloc(bytes ? bytes : 1); }

void TaskMemFree(void* p) { CoTaskMemFree(p); }

}  // namespace qm::platform
