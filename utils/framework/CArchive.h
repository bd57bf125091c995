// The framework's archive: a buffered stream of binary values over a CFile, either storing
// (writing) or loading (reading). Values are little-endian in the framework's widths: BYTE
// and char 1 byte, WORD and short 2, int, UINT, LONG and DWORD 4, LONGLONG and ULONGLONG 8,
// on every build, so archives are the same on every target. A plain long takes its own
// width (4 bytes on Windows, 8 where it is 64 bits and is the type behind LONGLONG).
//
// Errors are the framework's: reading past the end of the data (operator>>), reading from a
// storing archive or writing to a loading one throws CArchiveException; errors of the file
// itself arrive as CFileException.
#pragma once

#include "utils/framework/CFile.h"
#include "utils/framework/exceptions.h"
#include "utils/framework/wintypes.h"

class MFCQMUTILS_API CArchive {
public:
    enum Mode { store = 0, load = 1, bNoFlushOnDelete = 2, bNoByteSwap = 4 };

    // nBufSize below 16 is raised to 16; lpBuf (when given, of nBufSize bytes) is used as the
    // buffer instead of an allocated one.
    CArchive(CFile* pFile, UINT nMode, int nBufSize = 4096, void* lpBuf = nullptr);
    // Closes the archive unless bNoFlushOnDelete was given; errors at that point are dropped.
    ~CArchive();
    CArchive(const CArchive&) = delete;
    CArchive& operator=(const CArchive&) = delete;

    BOOL IsLoading() const { return (m_nMode & load) != 0; }
    BOOL IsStoring() const { return (m_nMode & load) == 0; }
    BOOL IsBufferEmpty() const { return m_lpBufCur == m_lpBufMax; }
    CFile* GetFile() const { return m_pFile; }

    // Reads up to nMax bytes; returns how many there were (fewer only at the end of the data).
    UINT Read(void* lpBuf, UINT nMax);
    void Write(const void* lpBuf, UINT nMax);
    // Storing: writes the buffer to the file. Loading: moves the file back over the bytes
    // buffered but not read, so the file position is where reading stopped.
    void Flush();
    // Flushes and detaches from the file (the file stays open).
    void Close();
    // Detaches without flushing.
    void Abort();

    CArchive& operator<<(bool v);
    CArchive& operator<<(char v);
    CArchive& operator<<(BYTE v);
    CArchive& operator<<(short v);
    CArchive& operator<<(WORD v);
    CArchive& operator<<(int v);
    CArchive& operator<<(unsigned int v);
    CArchive& operator<<(long v);
    CArchive& operator<<(unsigned long v);
    CArchive& operator<<(long long v);
    CArchive& operator<<(unsigned long long v);
    CArchive& operator<<(float v);
    CArchive& operator<<(double v);

    CArchive& operator>>(bool& v);
    CArchive& operator>>(char& v);
    CArchive& operator>>(BYTE& v);
    CArchive& operator>>(short& v);
    CArchive& operator>>(WORD& v);
    CArchive& operator>>(int& v);
    CArchive& operator>>(unsigned int& v);
    CArchive& operator>>(long& v);
    CArchive& operator>>(unsigned long& v);
    CArchive& operator>>(long long& v);
    CArchive& operator>>(unsigned long long& v);
    CArchive& operator>>(float& v);
    CArchive& operator>>(double& v);

    CFile* m_pFile;

protected:
    // Makes at least nBytesNeeded unread bytes available or throws endOfFile.
    void FillBuffer(UINT nBytesNeeded);
    void StoreBytes(const BYTE* bytes, UINT n);
    void LoadBytes(BYTE* bytes, UINT n);
    void CheckLoading() const;
    void CheckStoring() const;

    UINT m_nMode;
    UINT m_nBufSize;
    BOOL m_bUserBuf;
    BYTE* m_lpBufStart;
    BYTE* m_lpBufCur;
    BYTE* m_lpBufMax;
};
