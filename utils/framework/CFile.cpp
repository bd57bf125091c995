#include "utils/framework/CFile.h"

#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "utils/platform/crt.h"
#include "utils/platform/files.h"

const HANDLE CFile::hFileNull = (HANDLE)(INT_PTR)-1;

namespace {

FILE* Stream(HANDLE h) { return h == CFile::hFileNull ? nullptr : (FILE*)h; }

int CauseOf(int err) {
    switch (err) {
    case ENOENT: return CFileException::fileNotFound;
    case EACCES:
    case EPERM:
    case EROFS:
    case EISDIR: return CFileException::accessDenied;
    case EMFILE:
    case ENFILE: return CFileException::tooManyOpenFiles;
    case ENOTDIR:
    case ENAMETOOLONG: return CFileException::badPath;
    case ENOSPC: return CFileException::diskFull;
    default: return CFileException::genericException;
    }
}

}  // namespace

CFile::CFile() : m_hFile(hFileNull) {}

CFile::CFile(LPCTSTR lpszFileName, UINT nOpenFlags) : m_hFile(hFileNull) {
    CFileException error;
    if (!Open(lpszFileName, nOpenFlags, &error))
        AfxThrowFileException(error.m_cause, error.m_lOsError, lpszFileName);
}

CFile::~CFile() {
    if (m_hFile != hFileNull) Abort();
}

BOOL CFile::Open(LPCTSTR lpszFileName, UINT nOpenFlags, CFileException* pError) {
    if (m_hFile != hFileNull || !lpszFileName || !*lpszFileName) {
        if (pError) {
            pError->m_cause = CFileException::genericException;
            pError->m_lOsError = -1;
        }
        return FALSE;
    }
    UINT access = nOpenFlags & 3;
    const char* mode;
    if (access == modeRead) {
        mode = "rb";
    } else if (nOpenFlags & modeCreate) {
        mode = (nOpenFlags & modeNoTruncate) ? "r+b" : (access == modeWrite ? "wb" : "w+b");
    } else {
        mode = "r+b";
    }
    errno = 0;
    FILE* f = qm::platform::OpenFileStream(lpszFileName, mode);
    if (!f && (nOpenFlags & modeCreate) && (nOpenFlags & modeNoTruncate) && access != modeRead) {
        errno = 0;
        f = qm::platform::OpenFileStream(lpszFileName, "w+b");  // "open or create" when the file is missing
    }
    if (!f) {
        if (pError) {
            pError->m_cause = CauseOf(errno);
            pError->m_lOsError = errno;
        }
        return FALSE;
    }
    m_hFile = (HANDLE)f;
    m_strFileName = lpszFileName;
    return TRUE;
}

ULONGLONG CFile::GetPosition() const {
    FILE* f = Stream(m_hFile);
    if (!f) AfxThrowFileException(CFileException::invalidFile);
    auto pos = qm::crt::Tell64(f);
    if (pos < 0) AfxThrowFileException(CFileException::badSeek, errno, m_strFileName);
    return (ULONGLONG)pos;
}

ULONGLONG CFile::Seek(LONGLONG lOff, UINT nFrom) {
    FILE* f = Stream(m_hFile);
    if (!f) AfxThrowFileException(CFileException::invalidFile);
    int whence = nFrom == begin ? SEEK_SET : nFrom == current ? SEEK_CUR : nFrom == end ? SEEK_END : -1;
    if (whence < 0 || qm::crt::Seek64(f, lOff, whence) != 0) AfxThrowFileException(CFileException::badSeek, errno, m_strFileName);
    return GetPosition();
}

ULONGLONG CFile::GetLength() const {
    FILE* f = Stream(m_hFile);
    if (!f) AfxThrowFileException(CFileException::invalidFile);
    auto here = qm::crt::Tell64(f);
    if (here < 0 || qm::crt::Seek64(f, 0, SEEK_END) != 0) AfxThrowFileException(CFileException::badSeek, errno, m_strFileName);
    auto size = qm::crt::Tell64(f);
    qm::crt::Seek64(f, here, SEEK_SET);
    if (size < 0) AfxThrowFileException(CFileException::badSeek, errno, m_strFileName);
    return (ULONGLONG)size;
}

UINT CFile::Read(void* lpBuf, UINT nCount) {
    FILE* f = Stream(m_hFile);
    if (!f) AfxThrowFileException(CFileException::invalidFile);
    if (nCount == 0) return 0;
    if (!lpBuf) AfxThrowInvalidArgException();
    // The stream may have been written last; a seek is required between writing and reading.
    qm::crt::Seek64(f, 0, SEEK_CUR);
    size_t n = std::fread(lpBuf, 1, nCount, f);
    if (n < nCount && std::ferror(f)) {
        std::clearerr(f);
        AfxThrowFileException(CFileException::hardIO, errno, m_strFileName);
    }
    std::clearerr(f);
    return (UINT)n;
}

void CFile::Write(const void* lpBuf, UINT nCount) {
    FILE* f = Stream(m_hFile);
    if (!f) AfxThrowFileException(CFileException::invalidFile);
    if (nCount == 0) return;
    if (!lpBuf) AfxThrowInvalidArgException();
    qm::crt::Seek64(f, 0, SEEK_CUR);
    if (std::fwrite(lpBuf, 1, nCount, f) != nCount) {
        int err = errno;
        std::clearerr(f);
        AfxThrowFileException(err == ENOSPC || err == 0 ? CFileException::diskFull : CauseOf(err), err, m_strFileName);
    }
}

void CFile::Flush() {
    FILE* f = Stream(m_hFile);
    if (f && std::fflush(f) != 0) AfxThrowFileException(CauseOf(errno), errno, m_strFileName);
}

void CFile::SetLength(ULONGLONG dwNewLen) {
    FILE* f = Stream(m_hFile);
    if (!f) AfxThrowFileException(CFileException::invalidFile);
    if (dwNewLen > (ULONGLONG)INT64_MAX) AfxThrowFileException(CFileException::hardIO, EFBIG, m_strFileName);
    if (std::fflush(f) != 0 || qm::crt::Truncate64(f, (__int64)dwNewLen) != 0)
        AfxThrowFileException(errno == ENOSPC ? CFileException::diskFull : CFileException::hardIO, errno,
                              m_strFileName);
}

void CFile::Close() {
    FILE* f = Stream(m_hFile);
    m_hFile = hFileNull;
    CString name = m_strFileName;
    m_strFileName.Empty();
    if (f && std::fclose(f) != 0) AfxThrowFileException(CauseOf(errno), errno, name);
}

void CFile::Abort() {
    FILE* f = Stream(m_hFile);
    m_hFile = hFileNull;
    m_strFileName.Empty();
    if (f) std::fclose(f);
}

CString CFile::GetFileName() const {
    int cut = -1;
    for (int i = 0; i < m_strFileName.GetLength(); ++i)
        if (m_strFileName[i] == '\\' || m_strFileName[i] == '/' || m_strFileName[i] == ':') cut = i;
    return m_strFileName.Mid(cut + 1);
}

// ---------------------------------------------------------------------------------------
// CMemFile

CMemFile::CMemFile(UINT nGrowBytes) : m_nGrowBytes(nGrowBytes) {}

CMemFile::CMemFile(BYTE* lpBuffer, UINT nBufferSize, UINT nGrowBytes) : m_nGrowBytes(nGrowBytes) {
    Attach(lpBuffer, nBufferSize, nGrowBytes);
}

CMemFile::~CMemFile() {
    if (m_lpBuffer) Close();
}

void CMemFile::Attach(BYTE* lpBuffer, UINT nBufferSize, UINT nGrowBytes) {
    if (m_lpBuffer) Close();
    // A null block has no bytes, whatever size is claimed for it.
    if (!lpBuffer) nBufferSize = 0;
    m_nGrowBytes = nGrowBytes;
    m_nPosition = 0;
    m_nBufferSize = nBufferSize;
    m_nFileSize = nGrowBytes == 0 ? nBufferSize : 0;
    m_lpBuffer = lpBuffer;
    m_bAutoDelete = FALSE;
}

BYTE* CMemFile::Detach() {
    BYTE* block = m_lpBuffer;
    m_lpBuffer = nullptr;
    m_nFileSize = 0;
    m_nBufferSize = 0;
    m_nPosition = 0;
    m_bAutoDelete = TRUE;
    return block;
}

BOOL CMemFile::Open(LPCTSTR, UINT, CFileException* pError) {
    // A memory file has no name to open.
    if (pError) {
        pError->m_cause = CFileException::genericException;
        pError->m_lOsError = -1;
    }
    return FALSE;
}

ULONGLONG CMemFile::Seek(LONGLONG lOff, UINT nFrom) {
    LONGLONG base = nFrom == begin ? 0 : nFrom == current ? (LONGLONG)m_nPosition : nFrom == end ? (LONGLONG)m_nFileSize : -1;
    if (base < 0) AfxThrowFileException(CFileException::badSeek);
    // base and lOff are compared before adding so the sum cannot overflow.
    if ((lOff < 0 && -(lOff + 1) >= base) || (lOff > 0 && lOff > INT64_MAX - base))
        AfxThrowFileException(CFileException::badSeek);
    LONGLONG pos = base + lOff;
    if ((ULONGLONG)pos > (ULONGLONG)SIZE_MAX) AfxThrowFileException(CFileException::badSeek);
    m_nPosition = (size_t)pos;
    return m_nPosition;
}

void CMemFile::SetLength(ULONGLONG dwNewLen) {
    if (dwNewLen > (ULONGLONG)SIZE_MAX) AfxThrowMemoryException();
    size_t n = (size_t)dwNewLen;
    if (n > m_nBufferSize) GrowFile(n);
    if (n > m_nFileSize) std::memset(m_lpBuffer + m_nFileSize, 0, n - m_nFileSize);
    if (n < m_nPosition) m_nPosition = n;
    m_nFileSize = n;
}

UINT CMemFile::Read(void* lpBuf, UINT nCount) {
    if (nCount == 0 || m_nPosition >= m_nFileSize) return 0;
    if (!lpBuf) AfxThrowInvalidArgException();
    size_t n = m_nFileSize - m_nPosition;
    if (n > nCount) n = nCount;
    std::memcpy(lpBuf, m_lpBuffer + m_nPosition, n);
    m_nPosition += n;
    return (UINT)n;
}

void CMemFile::Write(const void* lpBuf, UINT nCount) {
    if (nCount == 0) return;
    if (!lpBuf) AfxThrowInvalidArgException();
    if (m_nPosition > SIZE_MAX - nCount) AfxThrowMemoryException();
    size_t endPos = m_nPosition + nCount;
    if (endPos > m_nBufferSize) GrowFile(endPos);
    // A write after a seek past the end leaves zeros in the gap, never stale memory.
    if (m_nPosition > m_nFileSize) std::memset(m_lpBuffer + m_nFileSize, 0, m_nPosition - m_nFileSize);
    std::memcpy(m_lpBuffer + m_nPosition, lpBuf, nCount);
    m_nPosition = endPos;
    if (m_nPosition > m_nFileSize) m_nFileSize = m_nPosition;
}

void CMemFile::Close() {
    if (m_lpBuffer && m_bAutoDelete) Free(m_lpBuffer);
    m_lpBuffer = nullptr;
    m_nBufferSize = 0;
    m_nFileSize = 0;
    m_nPosition = 0;
}

BYTE* CMemFile::Alloc(size_t nBytes) { return (BYTE*)std::malloc(nBytes); }
BYTE* CMemFile::Realloc(BYTE* lpMem, size_t nBytes) { return (BYTE*)std::realloc(lpMem, nBytes); }
void CMemFile::Free(BYTE* lpMem) { std::free(lpMem); }

void CMemFile::GrowFile(size_t dwNewLen) {
    if (dwNewLen <= m_nBufferSize) return;
    // A fixed block (grow step 0) cannot grow.
    if (m_nGrowBytes == 0) AfxThrowMemoryException();
    size_t newSize = m_nBufferSize;
    if (dwNewLen > SIZE_MAX - m_nGrowBytes) AfxThrowMemoryException();
    // Whole grow steps, computed directly rather than step by step.
    newSize += (dwNewLen - newSize + m_nGrowBytes - 1) / m_nGrowBytes * m_nGrowBytes;
    BYTE* block = m_lpBuffer ? Realloc(m_lpBuffer, newSize) : Alloc(newSize);
    if (!block) AfxThrowMemoryException();
    m_lpBuffer = block;
    m_nBufferSize = newSize;
}
