#include "utils/framework/exceptions.h"

#include <cstdio>

CObject::~CObject() = default;

void CException::Delete() {
    if (m_bAutoDelete) delete this;
}

BOOL CException::CopyMessage(const char* text, char* lpszError, UINT nMaxError) {
    if (!lpszError || nMaxError == 0) return FALSE;
    std::snprintf(lpszError, nMaxError, "%s", text);
    return TRUE;
}

BOOL CException::GetErrorMessage(char* lpszError, UINT nMaxError, UINT* pnHelpContext) const {
    if (pnHelpContext) *pnHelpContext = 0;
    if (lpszError && nMaxError) *lpszError = 0;
    return FALSE;
}

BOOL CMemoryException::GetErrorMessage(char* e, UINT n, UINT* h) const {
    if (h) *h = 0;
    return CopyMessage("Out of memory.", e, n);
}

BOOL CNotSupportedException::GetErrorMessage(char* e, UINT n, UINT* h) const {
    if (h) *h = 0;
    return CopyMessage("Unsupported operation was attempted.", e, n);
}

BOOL CInvalidArgException::GetErrorMessage(char* e, UINT n, UINT* h) const {
    if (h) *h = 0;
    return CopyMessage("Encountered an improper argument.", e, n);
}

BOOL CResourceException::GetErrorMessage(char* e, UINT n, UINT* h) const {
    if (h) *h = 0;
    return CopyMessage("A required resource was unavailable.", e, n);
}

BOOL COleException::GetErrorMessage(char* e, UINT n, UINT* h) const {
    if (h) *h = 0;
    char text[64];
    std::snprintf(text, sizeof text, "OLE error 0x%08X.", (unsigned)m_sc);
    return CopyMessage(text, e, n);
}


CFileException::CFileException(int cause, LONG lOsError, const char* name)
    : m_cause(cause), m_lOsError(lOsError), m_strFileName(name) {}

BOOL CFileException::GetErrorMessage(char* e, UINT n, UINT* h) const {
    static const char* const kCauses[] = {
        "No error occurred.", "An unspecified error occurred.", "was not found.",
        "contains an incorrect path.", "could not be opened because there are too many open files.",
        "Access to the file was denied.", "An incorrect file handle was used.",
        "could not be removed because it is the current directory.", "could not be created because the directory is full.",
        "Seek failed.", "A hardware I/O error was reported.", "A sharing violation occurred.",
        "A locking violation occurred.", "The disk is full.", "An attempt was made to access beyond the end of the file."};
    if (h) *h = 0;
    const char* cause = (m_cause >= 0 && m_cause <= endOfFile) ? kCauses[m_cause] : kCauses[1];
    char text[600];
    std::snprintf(text, sizeof text, "%s%s%s", m_strFileName.GetString(), m_strFileName.IsEmpty() ? "" : " ", cause);
    return CopyMessage(text, e, n);
}

CArchiveException::CArchiveException(int cause, const char* name)
    : m_cause(cause), m_strFileName(name) {}

BOOL CArchiveException::GetErrorMessage(char* e, UINT n, UINT* h) const {
    static const char* const kCauses[] = {
        "No error occurred.", "An unknown error occurred while accessing the archive.",
        "An attempt was made to write to an archive opened for loading.",
        "An attempt was made to access beyond the end of the archive.",
        "An attempt was made to read from an archive opened for storing.",
        "The archive has an invalid format.", "The archive contains an unexpected object.",
        "The archive contains an unexpected schema.", "The archive buffer is full."};
    if (h) *h = 0;
    return CopyMessage(m_cause >= 0 && m_cause <= bufferFull ? kCauses[m_cause] : kCauses[1], e, n);
}

void AfxThrowMemoryException() { throw new CMemoryException(); }
void AfxThrowNotSupportedException() { throw new CNotSupportedException(); }
void AfxThrowInvalidArgException() { throw new CInvalidArgException(); }
void AfxThrowResourceException() { throw new CResourceException(); }
void AfxThrowUserException() { throw new CUserException(); }

void AfxThrowOleException(SCODE sc) {
    COleException* e = new COleException();
    e->m_sc = sc;
    throw e;
}

void AfxThrowFileException(int cause, LONG lOsError, const char* name) {
    throw new CFileException(cause, lOsError, name);
}

void AfxThrowArchiveException(int cause, const char* name) { throw new CArchiveException(cause, name); }

void AtlThrow(HRESULT hr) {
    if (hr == E_OUTOFMEMORY) AfxThrowMemoryException();
    if (hr == E_INVALIDARG) AfxThrowInvalidArgException();
    AfxThrowOleException(hr);
}
