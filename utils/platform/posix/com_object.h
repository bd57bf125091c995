// Reference counting and QueryInterface for the POSIX backends' own COM objects (internal).
// `Derived` implements `Interface`'s methods; it starts with one reference, which its maker
// hands to the caller. With `kIid` set, QueryInterface answers IUnknown and that interface
// only; without it, every interface asked for is answered with the object itself (the
// streams and storages here are asked for their own interfaces or IUnknown by the library).
#pragma once

#include "utils/framework/objidl.h"

namespace qm::platform::posixcom {

// Whether an object answers `riid`: IUnknown and the named interface, or anything when none is
// named. (A function of the pointer: written inline in the template, clang warns that a named
// IID's address is never null and that the unnamed case dereferences null.)
inline bool Answers(REFIID riid, const IID* iid) {
    return !iid || IsEqualIID(riid, IID_IUnknown) || IsEqualIID(riid, *iid);
}

template <class Derived, class Interface, const IID* kIid = nullptr>
class Object : public Interface {
public:
    HRESULT QueryInterface(REFIID riid, void** ppv) override {
        if (!ppv) return E_POINTER;
        *ppv = nullptr;
        if (!Answers(riid, kIid)) return E_NOINTERFACE;
        *ppv = static_cast<Interface*>(this);
        AddRef();
        return S_OK;
    }
    ULONG AddRef() override { return ++m_refs; }
    ULONG Release() override {
        ULONG n = --m_refs;
        if (n == 0) delete static_cast<Derived*>(this);
        return n;
    }

private:
    ULONG m_refs = 1;
};

// IStream::CopyTo for any stream: up to `cb` bytes from `from`'s seek position through its
// Read and `to`'s Write, 64 KiB at a time, both positions moving by what was moved.
inline HRESULT CopyStreamBytes(IStream* from, IStream* to, ULARGE_INTEGER cb, ULARGE_INTEGER* pcbRead,
                               ULARGE_INTEGER* pcbWritten) {
    if (!to) return STG_E_INVALIDPOINTER;
    BYTE buffer[65536];
    ULONGLONG read = 0, written = 0;
    HRESULT hr = S_OK;
    while (read < cb.QuadPart) {
        ULONG want = cb.QuadPart - read < sizeof buffer ? (ULONG)(cb.QuadPart - read) : (ULONG)sizeof buffer;
        ULONG got = 0, put = 0;
        hr = from->Read(buffer, want, &got);
        if (FAILED(hr) || got == 0) break;
        read += got;
        hr = to->Write(buffer, got, &put);
        written += put;
        if (FAILED(hr)) break;
    }
    if (pcbRead) pcbRead->QuadPart = read;
    if (pcbWritten) pcbWritten->QuadPart = written;
    return FAILED(hr) ? hr : S_OK;
}

}  // namespace qm::platform::posixcom
