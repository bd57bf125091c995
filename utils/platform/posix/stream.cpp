#include "utils/platform/host.h"

#include <cstdio>
#include <cstring>
#include <memory>
#include <new>
#include <vector>

#include "utils/platform/crt.h"
#include "utils/platform/files.h"
#include "utils/platform/posix/com_object.h"

namespace qm::platform {

namespace {

class MemoryStream final : public posixcom::Object<MemoryStream, IStream> {
public:
    explicit MemoryStream(bool readOnly, std::shared_ptr<std::vector<BYTE>> bytes = std::make_shared<std::vector<BYTE>>())
        : m_bytes(std::move(bytes)), m_data(*m_bytes), m_readOnly(readOnly) {}
    std::shared_ptr<std::vector<BYTE>> m_bytes;  // shared with the stream's clones
    std::vector<BYTE>& m_data;

    HRESULT Read(void* pv, ULONG cb, ULONG* pcbRead) override {
        if (!pv && cb) return STG_E_INVALIDPOINTER;
        size_t n = m_pos < m_data.size() ? m_data.size() - m_pos : 0;
        if (n > cb) n = cb;
        if (n) std::memcpy(pv, m_data.data() + m_pos, n);
        m_pos += n;
        if (pcbRead) *pcbRead = (ULONG)n;
        return n < cb ? S_FALSE : S_OK;
    }
    HRESULT Write(const void* pv, ULONG cb, ULONG* pcbWritten) override {
        if (pcbWritten) *pcbWritten = 0;
        if (m_readOnly) return STG_E_WRITEFAULT;
        if (!pv && cb) return STG_E_INVALIDPOINTER;
        try {
            if (m_pos + cb > m_data.size()) m_data.resize(m_pos + cb);
        } catch (const std::bad_alloc&) {
            return STG_E_MEDIUMFULL;
        }
        if (cb) std::memcpy(m_data.data() + m_pos, pv, cb);
        m_pos += cb;
        if (pcbWritten) *pcbWritten = cb;
        return S_OK;
    }
    HRESULT Seek(LARGE_INTEGER move, DWORD origin, ULARGE_INTEGER* pNew) override {
        LONGLONG base = origin == STREAM_SEEK_SET ? 0
                        : origin == STREAM_SEEK_CUR ? (LONGLONG)m_pos
                        : origin == STREAM_SEEK_END ? (LONGLONG)m_data.size()
                                                    : -1;
        if (base < 0) return STG_E_INVALIDFUNCTION;
        if ((move.QuadPart < 0 && -(move.QuadPart + 1) >= base) || (move.QuadPart > 0 && move.QuadPart > INT64_MAX - base))
            return STG_E_INVALIDFUNCTION;
        m_pos = (size_t)(base + move.QuadPart);
        if (pNew) pNew->QuadPart = m_pos;
        return S_OK;
    }
    HRESULT SetSize(ULARGE_INTEGER size) override {
        if (m_readOnly) return STG_E_WRITEFAULT;
        try {
            m_data.resize((size_t)size.QuadPart);
        } catch (const std::exception&) {
            return STG_E_MEDIUMFULL;
        }
        return S_OK;
    }
    HRESULT CopyTo(IStream* to, ULARGE_INTEGER cb, ULARGE_INTEGER* pcbRead, ULARGE_INTEGER* pcbWritten) override {
        return posixcom::CopyStreamBytes(this, to, cb, pcbRead, pcbWritten);
    }
    HRESULT Commit(DWORD) override { return S_OK; }
    HRESULT Revert() override { return S_OK; }
    HRESULT LockRegion(ULARGE_INTEGER, ULARGE_INTEGER, DWORD) override { return E_NOTIMPL; }
    HRESULT UnlockRegion(ULARGE_INTEGER, ULARGE_INTEGER, DWORD) override { return E_NOTIMPL; }
    HRESULT Stat(STATSTG* st, DWORD) override {
        if (!st) return STG_E_INVALIDPOINTER;
        std::memset(st, 0, sizeof *st);
        st->type = STGTY_STREAM;
        st->cbSize.QuadPart = m_data.size();
        return S_OK;
    }
    // Another stream on the same bytes, with its own position starting at this one's.
    HRESULT Clone(IStream** out) override {
        if (!out) return STG_E_INVALIDPOINTER;
        auto* copy = new (std::nothrow) MemoryStream(m_readOnly, m_bytes);
        if (!copy) return E_OUTOFMEMORY;
        copy->m_pos = m_pos;
        *out = copy;
        return S_OK;
    }
    size_t m_pos = 0;
    bool m_readOnly;
};

}  // namespace

IStream* CreateMemoryStream(const void* data, size_t size) {
    auto* s = new (std::nothrow) MemoryStream(false);
    if (!s) return nullptr;
    try {
        if (size) s->m_data.assign(static_cast<const BYTE*>(data), static_cast<const BYTE*>(data) + size);
    } catch (const std::exception&) {
        s->Release();
        return nullptr;
    }
    return s;
}

IStream* OpenFileStream(const char* path) {
    FILE* file = path ? OpenFileStream(path, "rb") : nullptr;
    if (!file) return nullptr;
    auto* s = new (std::nothrow) MemoryStream(true);
    bool ok = s != nullptr;
    if (ok) {
        try {
            __int64 length = crt::Seek64(file, 0, SEEK_END) == 0 ? crt::Tell64(file) : -1;
            ok = length >= 0 && length <= 0xFFFFFFFFll && crt::Seek64(file, 0, SEEK_SET) == 0;
            if (ok) {
                s->m_data.resize((size_t)length);
                ok = std::fread(s->m_data.data(), 1, (size_t)length, file) == (size_t)length;
            }
        } catch (const std::exception&) {
            ok = false;
        }
    }
    std::fclose(file);
    if (!ok && s) {
        s->Release();
        s = nullptr;
    }
    return s;
}

}  // namespace qm::platform
