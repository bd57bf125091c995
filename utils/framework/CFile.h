// The framework's files: CFile over a file on disk, CMemFile over a block of memory. Both
// report failures with CFileException (CMemFile: CMemoryException when a fixed block is
// full), as the framework does.
#pragma once

#include "utils/framework/CObject.h"
#include "utils/framework/CString.h"
#include "utils/framework/exceptions.h"
#include "utils/framework/wintypes.h"

class MFCQMUTILS_API CFile : public CObject {
public:
    enum OpenFlags {
        modeRead = 0x0000,
        modeWrite = 0x0001,
        modeReadWrite = 0x0002,
        shareCompat = 0x0000,
        shareExclusive = 0x0010,
        shareDenyWrite = 0x0020,
        shareDenyRead = 0x0030,
        shareDenyNone = 0x0040,
        modeNoInherit = 0x0080,
        modeCreate = 0x1000,
        modeNoTruncate = 0x2000,
        typeText = 0x4000,
        typeBinary = 0x8000,
    };
    enum SeekPosition { begin = 0x0, current = 0x1, end = 0x2 };

    // m_hFile of a CFile that has no file open.
    static const HANDLE hFileNull;

    CFile();
    // Opens the file or throws CFileException.
    CFile(LPCTSTR lpszFileName, UINT nOpenFlags);
    ~CFile() override;
    CFile(const CFile&) = delete;
    CFile& operator=(const CFile&) = delete;

    // Files are always binary. The name is a Windows path on every target (the platform's paths
    // service finds the file it names). FALSE on failure,
    // with *pError (when given) describing it.
    virtual BOOL Open(LPCTSTR lpszFileName, UINT nOpenFlags, CFileException* pError = nullptr);
    virtual ULONGLONG GetPosition() const;
    virtual ULONGLONG Seek(LONGLONG lOff, UINT nFrom);
    void SeekToBegin() { Seek(0, begin); }
    ULONGLONG SeekToEnd() { return Seek(0, end); }
    virtual ULONGLONG GetLength() const;
    // Returns the number of bytes read: fewer than asked at the end of the file.
    virtual UINT Read(void* lpBuf, UINT nCount);
    virtual void Write(const void* lpBuf, UINT nCount);
    virtual void Flush();
    // Cuts or extends (with zeros) the file to dwNewLen bytes; the position is kept.
    virtual void SetLength(ULONGLONG dwNewLen);
    virtual void Close();
    // Closes without reporting errors.
    virtual void Abort();
    virtual CString GetFilePath() const { return m_strFileName; }
    virtual CString GetFileName() const;

    // The open C runtime stream (not an operating-system handle), or hFileNull.
    HANDLE m_hFile;

protected:
    CString m_strFileName;
};

class MFCQMUTILS_API CMemFile : public CFile {
public:
    // An empty file that grows in steps of nGrowBytes; the memory is its own.
    explicit CMemFile(UINT nGrowBytes = 1024);
    // A file over the caller's block (see Attach).
    CMemFile(BYTE* lpBuffer, UINT nBufferSize, UINT nGrowBytes = 0);
    ~CMemFile() override;

    // Uses the caller's block. With nGrowBytes 0 the file is the whole block (its bytes can be
    // read) and cannot grow: writing past its end throws CMemoryException. Otherwise the file
    // starts empty and grows by reallocating the block, which must then come from malloc.
    // The file never frees an attached block.
    void Attach(BYTE* lpBuffer, UINT nBufferSize, UINT nGrowBytes = 0);
    // Hands the block to the caller (free it with free() when the file allocated it) and
    // leaves the file empty.
    BYTE* Detach();

    BOOL Open(LPCTSTR, UINT, CFileException* pError = nullptr) override;
    ULONGLONG GetPosition() const override { return m_nPosition; }
    // Seeking past the end is allowed (a later write fills the gap with zeros); before the
    // start throws CFileException::badSeek.
    ULONGLONG Seek(LONGLONG lOff, UINT nFrom) override;
    ULONGLONG GetLength() const override { return m_nFileSize; }
    void SetLength(ULONGLONG dwNewLen) override;
    UINT Read(void* lpBuf, UINT nCount) override;
    void Write(const void* lpBuf, UINT nCount) override;
    void Flush() override {}
    void Close() override;
    void Abort() override { Close(); }
    CString GetFileName() const override { return CString(); }

protected:
    virtual BYTE* Alloc(size_t nBytes);
    virtual BYTE* Realloc(BYTE* lpMem, size_t nBytes);
    virtual void Free(BYTE* lpMem);
    virtual void GrowFile(size_t dwNewLen);

    UINT m_nGrowBytes;
    size_t m_nPosition = 0;
    size_t m_nBufferSize = 0;
    size_t m_nFileSize = 0;
    BYTE* m_lpBuffer = nullptr;
    BOOL m_bAutoDelete = TRUE;
};
