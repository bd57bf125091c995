#include "utils/framework/CSharedFile.h"

#include "utils/platform/globalmem.h"

namespace plat = qm::platform;

CSharedFile::CSharedFile(UINT nAllocFlags, UINT nGrowBytes) : CMemFile(nGrowBytes), m_nAllocFlags(nAllocFlags) {}

CSharedFile::~CSharedFile() {
    // CMemFile's destructor would free the block with the C runtime: close it here.
    if (m_lpBuffer) Close();
    m_lpBuffer = nullptr;
}

HGLOBAL CSharedFile::Detach() {
    HGLOBAL h = m_hGlobalMemory;
    if (h) {
        plat::GlobalMemUnlock(h);
        // The block leaves with exactly the file's bytes, not the growth slack after them.
        if (m_nFileSize > 0 && m_nFileSize < m_nBufferSize) {
            HGLOBAL cut = plat::GlobalMemReAlloc(h, m_nFileSize, m_nAllocFlags);
            if (cut) h = cut;
        }
    }
    m_hGlobalMemory = nullptr;
    m_lpBuffer = nullptr;
    m_nBufferSize = 0;
    m_nFileSize = 0;
    m_nPosition = 0;
    m_bAutoDelete = TRUE;
    m_bAllowGrow = TRUE;
    return h;
}

void CSharedFile::SetHandle(HGLOBAL hGlobalMemory, BOOL bAllowGrow) {
    if (m_lpBuffer) Close();
    m_hGlobalMemory = hGlobalMemory;
    m_lpBuffer = (BYTE*)plat::GlobalMemLock(hGlobalMemory);
    m_nBufferSize = m_lpBuffer ? plat::GlobalMemSize(hGlobalMemory) : 0;
    m_nFileSize = m_nBufferSize;
    m_nPosition = 0;
    m_bAllowGrow = bAllowGrow;
    m_bAutoDelete = TRUE;
    if (!m_lpBuffer) m_hGlobalMemory = nullptr;
}

BYTE* CSharedFile::Alloc(size_t nBytes) {
    m_hGlobalMemory = plat::GlobalMemAlloc(m_nAllocFlags, nBytes);
    if (!m_hGlobalMemory) return nullptr;
    return (BYTE*)plat::GlobalMemLock(m_hGlobalMemory);
}

BYTE* CSharedFile::Realloc(BYTE*, size_t nBytes) {
    plat::GlobalMemUnlock(m_hGlobalMemory);
    HGLOBAL h = plat::GlobalMemReAlloc(m_hGlobalMemory, nBytes, m_nAllocFlags);
    if (!h) {
        plat::GlobalMemLock(m_hGlobalMemory);
        return nullptr;
    }
    m_hGlobalMemory = h;
    return (BYTE*)plat::GlobalMemLock(h);
}

void CSharedFile::Free(BYTE*) {
    if (!m_hGlobalMemory) return;
    plat::GlobalMemUnlock(m_hGlobalMemory);
    plat::GlobalMemFree(m_hGlobalMemory);
    m_hGlobalMemory = nullptr;
}

void CSharedFile::GrowFile(size_t dwNewLen) {
    if (dwNewLen > m_nBufferSize && !m_bAllowGrow) AfxThrowMemoryException();
    CMemFile::GrowFile(dwNewLen);
}
