#include "utils/framework/CArchive.h"

#include <cstdint>
#include <cstring>

namespace {

const UINT kMinBuffer = 16;

template <typename T>
void PutLE(BYTE* out, T v, UINT n) {
    std::uint64_t u = (std::uint64_t)v;
    for (UINT i = 0; i < n; ++i) out[i] = (BYTE)(u >> (8 * i));
}

std::uint64_t GetLE(const BYTE* in, UINT n) {
    std::uint64_t u = 0;
    for (UINT i = 0; i < n; ++i) u |= (std::uint64_t)in[i] << (8 * i);
    return u;
}

}  // namespace

CArchive::CArchive(CFile* pFile, UINT nMode, int nBufSize, void* lpBuf)
    : m_pFile(pFile), m_nMode(nMode), m_nBufSize(nBufSize < (int)kMinBuffer ? kMinBuffer : (UINT)nBufSize),
      m_bUserBuf(lpBuf != nullptr && nBufSize >= (int)kMinBuffer) {
    m_lpBufStart = m_bUserBuf ? (BYTE*)lpBuf : new BYTE[m_nBufSize];
    m_lpBufCur = m_lpBufStart;
    // Loading starts with an empty buffer; storing with the whole buffer free.
    m_lpBufMax = IsLoading() ? m_lpBufStart : m_lpBufStart + m_nBufSize;
}

CArchive::~CArchive() {
    if (m_pFile && !(m_nMode & bNoFlushOnDelete)) {
        try {
            Close();
        } catch (CException* e) {
            e->Delete();
        }
    }
    if (!m_bUserBuf) delete[] m_lpBufStart;
}

void CArchive::CheckLoading() const {
    if (!m_pFile) AfxThrowArchiveException(CArchiveException::genericException);
    if (!IsLoading()) AfxThrowArchiveException(CArchiveException::writeOnly);
}

void CArchive::CheckStoring() const {
    if (!m_pFile) AfxThrowArchiveException(CArchiveException::genericException);
    if (!IsStoring()) AfxThrowArchiveException(CArchiveException::readOnly);
}

UINT CArchive::Read(void* lpBuf, UINT nMax) {
    if (nMax == 0) return 0;
    CheckLoading();
    if (!lpBuf) AfxThrowInvalidArgException();
    BYTE* out = (BYTE*)lpBuf;
    UINT done = 0;
    while (done < nMax) {
        UINT avail = (UINT)(m_lpBufMax - m_lpBufCur);
        if (avail == 0) {
            UINT left = nMax - done;
            if (left >= m_nBufSize) {
                // A large read bypasses the buffer.
                UINT n = m_pFile->Read(out + done, left);
                done += n;
                if (n == 0) break;
                continue;
            }
            UINT n = m_pFile->Read(m_lpBufStart, m_nBufSize);
            m_lpBufCur = m_lpBufStart;
            m_lpBufMax = m_lpBufStart + n;
            if (n == 0) break;
            continue;
        }
        UINT n = avail < nMax - done ? avail : nMax - done;
        std::memcpy(out + done, m_lpBufCur, n);
        m_lpBufCur += n;
        done += n;
    }
    return done;
}

void CArchive::Write(const void* lpBuf, UINT nMax) {
    if (nMax == 0) return;
    CheckStoring();
    if (!lpBuf) AfxThrowInvalidArgException();
    const BYTE* in = (const BYTE*)lpBuf;
    UINT free = (UINT)(m_lpBufMax - m_lpBufCur);
    if (nMax <= free) {
        std::memcpy(m_lpBufCur, in, nMax);
        m_lpBufCur += nMax;
        return;
    }
    Flush();
    if (nMax >= m_nBufSize) {
        m_pFile->Write(in, nMax);
        return;
    }
    std::memcpy(m_lpBufCur, in, nMax);
    m_lpBufCur += nMax;
}

void CArchive::Flush() {
    if (!m_pFile) return;
    if (IsLoading()) {
        UINT unread = (UINT)(m_lpBufMax - m_lpBufCur);
        m_lpBufCur = m_lpBufMax = m_lpBufStart;
        if (unread) m_pFile->Seek(-(LONGLONG)unread, CFile::current);
        return;
    }
    UINT n = (UINT)(m_lpBufCur - m_lpBufStart);
    m_lpBufCur = m_lpBufStart;
    if (n) m_pFile->Write(m_lpBufStart, n);
}

void CArchive::Close() {
    if (!m_pFile) return;
    Flush();
    m_pFile = nullptr;
}

void CArchive::Abort() {
    m_pFile = nullptr;
    m_lpBufCur = m_lpBufStart;
    m_lpBufMax = IsLoading() ? m_lpBufStart : m_lpBufStart + m_nBufSize;
}

void CArchive::FillBuffer(UINT nBytesNeeded) {
    UINT unread = (UINT)(m_lpBufMax - m_lpBufCur);
    if (unread >= nBytesNeeded) return;
    // Move what is left to the front and read behind it until enough is there.
    if (unread && m_lpBufCur != m_lpBufStart) std::memmove(m_lpBufStart, m_lpBufCur, unread);
    m_lpBufCur = m_lpBufStart;
    m_lpBufMax = m_lpBufStart + unread;
    while (unread < nBytesNeeded) {
        UINT n = m_pFile->Read(m_lpBufMax, m_nBufSize - unread);
        if (n == 0) AfxThrowArchiveException(CArchiveException::endOfFile);
        unread += n;
        m_lpBufMax += n;
    }
}

void CArchive::StoreBytes(const BYTE* bytes, UINT n) {
    CheckStoring();
    if ((UINT)(m_lpBufMax - m_lpBufCur) < n) Flush();
    std::memcpy(m_lpBufCur, bytes, n);
    m_lpBufCur += n;
}

void CArchive::LoadBytes(BYTE* bytes, UINT n) {
    CheckLoading();
    FillBuffer(n);
    std::memcpy(bytes, m_lpBufCur, n);
    m_lpBufCur += n;
}

#define QM_STORE(T, N)                       \
    CArchive& CArchive::operator<<(T v) {   \
        BYTE b[8];                           \
        PutLE(b, v, N);                      \
        StoreBytes(b, N);                    \
        return *this;                        \
    }
#define QM_LOAD(T, N, S)                     \
    CArchive& CArchive::operator>>(T& v) {  \
        BYTE b[8];                           \
        LoadBytes(b, N);                     \
        v = (T)(S)GetLE(b, N);               \
        return *this;                        \
    }

QM_STORE(char, 1)
QM_STORE(BYTE, 1)
QM_STORE(short, 2)
QM_STORE(WORD, 2)
QM_STORE(int, 4)
QM_STORE(unsigned int, 4)
// long takes its own width: 4 bytes where it is 32 bits (Windows, where LONG and DWORD are
// long), 8 where it is 64 bits. There it is also the type behind LONGLONG and ULONGLONG
// (std::int64_t), which must take 8 bytes, and a 64-bit long must not lose its high half.
QM_STORE(long, sizeof(long))
QM_STORE(unsigned long, sizeof(long))
QM_STORE(long long, 8)
QM_STORE(unsigned long long, 8)

QM_LOAD(char, 1, std::int8_t)
QM_LOAD(BYTE, 1, std::uint8_t)
QM_LOAD(short, 2, std::int16_t)
QM_LOAD(WORD, 2, std::uint16_t)
QM_LOAD(int, 4, std::int32_t)
QM_LOAD(unsigned int, 4, std::uint32_t)
QM_LOAD(long, sizeof(long), long)
QM_LOAD(unsigned long, sizeof(long), unsigned long)
QM_LOAD(long long, 8, std::int64_t)
QM_LOAD(unsigned long long, 8, std::uint64_t)

// A bool takes one byte; any non-zero byte loads as true.
CArchive& CArchive::operator<<(bool v) { return *this << (BYTE)(v ? 1 : 0); }
CArchive& CArchive::operator>>(bool& v) {
    BYTE b;
    *this >> b;
    v = b != 0;
    return *this;
}

CArchive& CArchive::operator<<(float v) {
    std::uint32_t u;
    std::memcpy(&u, &v, 4);
    return *this << (unsigned int)u;
}

CArchive& CArchive::operator>>(float& v) {
    unsigned int u;
    *this >> u;
    std::uint32_t w = u;
    std::memcpy(&v, &w, 4);
    return *this;
}

CArchive& CArchive::operator<<(double v) {
    std::uint64_t u;
    std::memcpy(&u, &v, 8);
    return *this << (unsigned long long)u;
}

CArchive& CArchive::operator>>(double& v) {
    unsigned long long u;
    *this >> u;
    std::uint64_t w = u;
    std::memcpy(&v, &w, 8);
    return *this;
}
