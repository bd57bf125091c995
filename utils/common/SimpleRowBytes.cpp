#include "utils/common/SimpleRowBytes.h"

#include <cstring>

#include "utils/common/CVLogger.h"
#include "utils/common/QMBase.h"
#include "utils/platform/heap.h"

#define QM_SOURCE_MODULE "Common\\SimpleRowBytes"

HANDLE CSimpleRowBytes::m_hHeap = qm::platform::CreatePrivateHeap();

CSimpleRowBytes::CSimpleRowBytes() : m_pBytes(nullptr) {}

CSimpleRowBytes::CSimpleRowBytes(const CSimpleRowBytes& src) : m_pBytes(nullptr) { Copy(src); }

CSimpleRowBytes::~CSimpleRowBytes() { FreeBuffer(); }

void CSimpleRowBytes::FreeBuffer() {
    if (m_pBytes) qm::platform::HeapFreeBlock(m_hHeap, m_pBytes);
    m_pBytes = nullptr;
}

unsigned char* CSimpleRowBytes::AllocBuffer(ULONG size) {
    FreeBuffer();
    if (size == 0) return nullptr;
    DWORD code = 0;
    m_pBytes = static_cast<unsigned char*>(qm::platform::HeapAllocGuarded(m_hHeap, size, &code));
    if (!m_pBytes || code != 0) {
        if (code == QM_STATUS_ACCESS_VIOLATION)
            _cvtrace_("\nAllocBuffer error STATUS_ACCESS_VIOLATION! m_hHeap=%x, dwSize=%i", (unsigned)(UINT_PTR)m_hHeap,
                      (int)size);
        else if (code == QM_STATUS_NO_MEMORY)
            _cvtrace_("\nAllocBuffer error STATUS_NO_MEMORY! m_hHeap=%x, dwSize=%i", (unsigned)(UINT_PTR)m_hHeap,
                      (int)size);
        else
            _cvtrace_("\nAllocBuffer error UNKNOWN! m_hHeap=%x, dwSize=%i, dwError=%x", (unsigned)(UINT_PTR)m_hHeap,
                      (int)size, (unsigned)code);
        CVASSERT_TEXT("FALSE");
        CVASSERT(NULL == m_pBytes);
        m_pBytes = nullptr;
    }
    return m_pBytes;
}

unsigned char* CSimpleRowBytes::ReAllocBuffer(ULONG size, bool bGrowOnly) {
    if (!m_pBytes) return AllocBuffer(size);
    if (bGrowOnly && size <= GetBufferSize()) return m_pBytes;
    // The heap's answer is stored as it is: a failed resize leaves no block. The old block
    // is released then, so that it is not lost.
    void* p = qm::platform::HeapReAllocBlock(m_hHeap, m_pBytes, size);
    if (!p) qm::platform::HeapFreeBlock(m_hHeap, m_pBytes);
    m_pBytes = static_cast<unsigned char*>(p);
    return m_pBytes;
}

ULONG CSimpleRowBytes::GetBufferSize() const {
    if (!m_pBytes) return 0;
    size_t n = qm::platform::HeapBlockSize(m_hHeap, m_pBytes);
    return n == (size_t)-1 ? 0 : (ULONG)n;
}

bool CSimpleRowBytes::IsValid() const { return m_pBytes && qm::platform::HeapValidateBlock(m_hHeap, m_pBytes); }

void CSimpleRowBytes::Copy(const CSimpleRowBytes& src) {
    if (&src == this) return;
    if (!src.IsValid()) {
        FreeBuffer();
        return;
    }
    ULONG size = src.GetBufferSize();
    AllocBuffer(size);
    if (size != 0 && !CVASSERT(m_pBytes != NULL))
        CQMWException::RaiseError(nullptr, "m_pBytes != NULL", QM_SOURCE_MODULE, __LINE__);
    if (size != 0) std::memcpy(m_pBytes, src.m_pBytes, size);
}

CSimpleRowBytes& CSimpleRowBytes::operator=(const CSimpleRowBytes& src) {
    Copy(src);
    return *this;
}

bool CSimpleRowBytes::operator==(const CSimpleRowBytes& other) const {
    ULONG n = GetBufferSize();
    if (n != other.GetBufferSize()) return false;
    return n == 0 || std::memcmp(m_pBytes, other.m_pBytes, n) == 0;
}

ULONG CSimpleRowBytes::GetDiskSizeEstimate() const { return GetBufferSize() + 4; }

ULONG CSimpleRowBytes::GetMemSizeEstimate(bool bWithThis) const { return GetBufferSize() + (bWithThis ? 4 : 0); }
