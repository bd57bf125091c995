// The framework's exceptions. They are heap objects thrown by pointer; a handler catches
// CException*, reads it and releases it with Delete():
//
//     try { ... } catch (CException* e) { e->GetErrorMessage(text, 256); e->Delete(); }
#pragma once

#include "utils/framework/CObject.h"
#include "utils/framework/CString.h"
#include "utils/framework/wintypes.h"

class MFCQMUTILS_API CException : public CObject {
public:
    // Frees a heap exception; an exception made on the stack (bAutoDelete FALSE) is left alone.
    void Delete();
    // Writes the exception's message into the buffer; FALSE when there is none.
    virtual BOOL GetErrorMessage(char* lpszError, UINT nMaxError, UINT* pnHelpContext = nullptr) const;

    BOOL m_bAutoDelete = TRUE;

protected:
    explicit CException(BOOL bAutoDelete = TRUE) : m_bAutoDelete(bAutoDelete) {}
    static BOOL CopyMessage(const char* text, char* lpszError, UINT nMaxError);
};

class MFCQMUTILS_API CSimpleException : public CException {
protected:
    using CException::CException;
};

class MFCQMUTILS_API CMemoryException : public CSimpleException {
public:
    BOOL GetErrorMessage(char* lpszError, UINT nMaxError, UINT* pnHelpContext = nullptr) const override;
};

class MFCQMUTILS_API CNotSupportedException : public CSimpleException {
public:
    BOOL GetErrorMessage(char* lpszError, UINT nMaxError, UINT* pnHelpContext = nullptr) const override;
};

class MFCQMUTILS_API CInvalidArgException : public CSimpleException {
public:
    BOOL GetErrorMessage(char* lpszError, UINT nMaxError, UINT* pnHelpContext = nullptr) const override;
};

class MFCQMUTILS_API CResourceException : public CSimpleException {
public:
    BOOL GetErrorMessage(char* lpszError, UINT nMaxError, UINT* pnHelpContext = nullptr) const override;
};

class MFCQMUTILS_API CUserException : public CSimpleException {};

// An OLE status code; the framework's general failure is COleException with E_FAIL.
class MFCQMUTILS_API COleException : public CException {
public:
    SCODE m_sc = S_OK;
    BOOL GetErrorMessage(char* lpszError, UINT nMaxError, UINT* pnHelpContext = nullptr) const override;
};

class MFCQMUTILS_API CFileException : public CException {
public:
    enum {
        none, genericException, fileNotFound, badPath, tooManyOpenFiles, accessDenied,
        invalidFile, removeCurrentDir, directoryFull, badSeek, hardIO, sharingViolation,
        lockViolation, diskFull, endOfFile
    };
    explicit CFileException(int cause = none, LONG lOsError = -1, const char* lpszArchiveName = nullptr);
    BOOL GetErrorMessage(char* lpszError, UINT nMaxError, UINT* pnHelpContext = nullptr) const override;

    int m_cause;
    LONG m_lOsError;
    CString m_strFileName;
};

class MFCQMUTILS_API CArchiveException : public CException {
public:
    enum { none, genericException, readOnly, endOfFile, writeOnly, badIndex, badClass, badSchema,
           bufferFull };
    explicit CArchiveException(int cause = none, const char* lpszArchiveName = nullptr);
    BOOL GetErrorMessage(char* lpszError, UINT nMaxError, UINT* pnHelpContext = nullptr) const override;

    int m_cause;
    CString m_strFileName;
};

[[noreturn]] MFCQMUTILS_API void AfxThrowMemoryException();
[[noreturn]] MFCQMUTILS_API void AfxThrowNotSupportedException();
[[noreturn]] MFCQMUTILS_API void AfxThrowInvalidArgException();
[[noreturn]] MFCQMUTILS_API void AfxThrowResourceException();
[[noreturn]] MFCQMUTILS_API void AfxThrowUserException();
[[noreturn]] MFCQMUTILS_API void AfxThrowOleException(SCODE sc);
[[noreturn]] MFCQMUTILS_API void AfxThrowFileException(int cause, LONG lOsError = -1, const char* lpszFileName = nullptr);
[[noreturn]] MFCQMUTILS_API void AfxThrowArchiveException(int cause, const char* lpszArchiveName = nullptr);

// The framework's mapping of a failed HRESULT onto its exceptions (E_OUTOFMEMORY: memory,
// E_INVALIDARG: invalid argument, anything else: COleException with that code).
[[noreturn]] MFCQMUTILS_API void AtlThrow(HRESULT hr);
