// Reference counting and QueryInterface for the POSIX backends' own COM objects (internal).
// `Derived` implements `Interface`'s methods; it starts with one reference, which its maker
// hands to the caller. With `kIid` set, QueryInterface answers IUnknown and that interface
// only; without it, every interface asked for is answered with the object itself (the
// streams and storages here are asked for their own interfaces or IUnknown by the library).
#pragma once

#include <cstddef>
#include <utility>
#include <vector>

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

// An enumerator over a list it owns (IEnumFORMATETC, IEnumSTATSTG): Next hands out copies
// made by `Traits::Copy` (the caller owns them), Clone copies the list and the position, and
// `Traits::Free` releases each item when the enumerator goes. `Traits::kNoPointer` is the
// answer to a null output pointer.
template <class Interface, class Item, class Traits, const IID* kIid = nullptr>
class ListEnum final : public Object<ListEnum<Interface, Item, Traits, kIid>, Interface, kIid> {
public:
    explicit ListEnum(std::vector<Item> items) : m_items(std::move(items)) {}
    ~ListEnum() {
        for (Item& item : m_items) Traits::Free(item);
    }
    HRESULT Next(ULONG celt, Item* out, ULONG* fetched) override {
        if (!out) return Traits::kNoPointer;
        ULONG n = 0;
        for (; n < celt && m_at < m_items.size(); ++n, ++m_at) out[n] = Traits::Copy(m_items[m_at]);
        if (fetched) *fetched = n;
        return n == celt ? S_OK : S_FALSE;
    }
    HRESULT Skip(ULONG celt) override {
        std::size_t left = m_items.size() - m_at;
        m_at += celt < left ? celt : left;
        return celt <= left ? S_OK : S_FALSE;
    }
    HRESULT Reset() override {
        m_at = 0;
        return S_OK;
    }
    HRESULT Clone(Interface** out) override {
        if (!out) return Traits::kNoPointer;
        std::vector<Item> items;
        items.reserve(m_items.size());
        for (const Item& item : m_items) items.push_back(Traits::Copy(item));
        auto* copy = new ListEnum(std::move(items));
        copy->m_at = m_at;
        *out = copy;
        return S_OK;
    }

private:
    std::vector<Item> m_items;
    std::size_t m_at = 0;
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
