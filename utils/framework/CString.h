// The framework's 8-bit string: a counted byte string (embedded NUL bytes allowed), always
// NUL-terminated in memory, with the framework's member names and semantics.
#pragma once

#include <cstdarg>
#include <string>

#include "utils/framework/wintypes.h"
#include "utils/module/export.h"

class MFCQMUTILS_API CString {
public:
    CString() = default;
    CString(const CString& s) = default;
    CString(CString&& s) noexcept = default;
    CString(const char* psz) : m_str(psz ? psz : "") {}
    CString(const char* pch, int nLength) : m_str(pch ? pch : "", pch && nLength > 0 ? (size_t)nLength : 0) {}
    CString(char ch, int nRepeat = 1) : m_str(nRepeat > 0 ? (size_t)nRepeat : 0, ch) {}
    explicit CString(const std::string& s) : m_str(s) {}
    explicit CString(std::string&& s) : m_str(std::move(s)) {}
    ~CString() = default;

    CString& operator=(const CString& s) = default;
    CString& operator=(CString&& s) noexcept = default;
    CString& operator=(const char* psz) { m_str = psz ? psz : ""; return *this; }
    CString& operator=(char ch) { m_str.assign(1, ch); return *this; }

    // Length and access
    int GetLength() const { return (int)m_str.size(); }
    bool IsEmpty() const { return m_str.empty(); }
    void Empty() { m_str.clear(); }
    char GetAt(int i) const;
    void SetAt(int i, char ch);
    char operator[](int i) const { return GetAt(i); }
    operator const char*() const { return m_str.c_str(); }
    const char* GetString() const { return m_str.c_str(); }
    const std::string& str() const { return m_str; }

    // Concatenation
    CString& operator+=(const CString& s) { m_str += s.m_str; return *this; }
    CString& operator+=(const char* psz) { if (psz) m_str += psz; return *this; }
    CString& operator+=(char ch) { m_str += ch; return *this; }
    void Append(const char* psz) { *this += psz; }
    void Append(const char* pch, int n) { if (pch && n > 0) m_str.append(pch, (size_t)n); }
    void Append(const CString& s) { *this += s; }
    void AppendChar(char ch) { m_str += ch; }
    friend MFCQMUTILS_API CString operator+(const CString& a, const CString& b);
    friend MFCQMUTILS_API CString operator+(const CString& a, const char* b);
    friend MFCQMUTILS_API CString operator+(const char* a, const CString& b);
    friend MFCQMUTILS_API CString operator+(const CString& a, char b);
    friend MFCQMUTILS_API CString operator+(char a, const CString& b);

    // Comparison (byte-wise, as strcmp on the counted bytes)
    int Compare(const char* psz) const;
    int CompareNoCase(const char* psz) const;
    int Collate(const char* psz) const { return Compare(psz); }
    int CollateNoCase(const char* psz) const { return CompareNoCase(psz); }

    // Extraction
    CString Left(int nCount) const;
    CString Right(int nCount) const;
    CString Mid(int iFirst) const;
    CString Mid(int iFirst, int nCount) const;
    CString SpanIncluding(const char* pszCharSet) const;
    CString SpanExcluding(const char* pszCharSet) const;
    CString Tokenize(const char* pszTokens, int& iStart) const;

    // Searching; -1 when not found
    int Find(char ch, int iStart = 0) const;
    int Find(const char* pszSub, int iStart = 0) const;
    int ReverseFind(char ch) const;
    int FindOneOf(const char* pszCharSet) const;

    // Modification
    CString& MakeUpper();
    CString& MakeLower();
    CString& MakeReverse();
    CString& Trim();
    CString& Trim(char chTarget);
    CString& Trim(const char* pszTargets);
    CString& TrimLeft();
    CString& TrimLeft(char chTarget);
    CString& TrimLeft(const char* pszTargets);
    CString& TrimRight();
    CString& TrimRight(char chTarget);
    CString& TrimRight(const char* pszTargets);
    int Insert(int iIndex, char ch);
    int Insert(int iIndex, const char* psz);
    int Delete(int iIndex, int nCount = 1);
    int Remove(char chRemove);
    int Replace(char chOld, char chNew);
    int Replace(const char* pszOld, const char* pszNew);
    void Truncate(int nNewLength);

    // Formatting (printf conventions)
    void Format(const char* pszFormat, ...);
    void FormatV(const char* pszFormat, va_list args);
    void AppendFormat(const char* pszFormat, ...);
    void AppendFormatV(const char* pszFormat, va_list args);

    // Direct buffer access: GetBuffer(n) gives room for n characters and a NUL; after writing,
    // ReleaseBuffer(-1) takes the length up to the first NUL, ReleaseBuffer(n) takes n.
    char* GetBuffer();
    char* GetBuffer(int nMinBufferLength);
    char* GetBufferSetLength(int nLength);
    void ReleaseBuffer(int nNewLength = -1);
    void ReleaseBufferSetLength(int nNewLength) { ReleaseBuffer(nNewLength); }
    void Preallocate(int nLength) { if (nLength > 0) m_str.reserve((size_t)nLength); }
    int GetAllocLength() const { return (int)m_str.capacity(); }

    // Loads string resource nID from the module's string-resource source; FALSE when absent.
    BOOL LoadString(UINT nID);

private:
    std::string m_str;
};

MFCQMUTILS_API bool operator==(const CString& a, const CString& b);
MFCQMUTILS_API bool operator==(const CString& a, const char* b);
MFCQMUTILS_API bool operator==(const char* a, const CString& b);
MFCQMUTILS_API bool operator!=(const CString& a, const CString& b);
MFCQMUTILS_API bool operator!=(const CString& a, const char* b);
MFCQMUTILS_API bool operator!=(const char* a, const CString& b);
MFCQMUTILS_API bool operator<(const CString& a, const CString& b);
MFCQMUTILS_API bool operator<(const CString& a, const char* b);
MFCQMUTILS_API bool operator<(const char* a, const CString& b);
MFCQMUTILS_API bool operator>(const CString& a, const CString& b);
MFCQMUTILS_API bool operator>(const CString& a, const char* b);
MFCQMUTILS_API bool operator>(const char* a, const CString& b);
MFCQMUTILS_API bool operator<=(const CString& a, const CString& b);
MFCQMUTILS_API bool operator>=(const CString& a, const CString& b);

namespace qm {
// The string-resource source behind CString::LoadString, in three layers:
//   1. strings the host (or a test) set with SetStringResource;
//   2. on Windows, the host module's own string table;
//   3. the library's defaults, set with SetDefaultStringResource (English texts for the host
//      resources the library indexes, so that a host without them still shows sensible names).
// The first layer that holds the id answers.
MFCQMUTILS_API void SetStringResource(UINT nID, const char* text);
MFCQMUTILS_API void ClearStringResource(UINT nID);
MFCQMUTILS_API void SetDefaultStringResource(UINT nID, const char* text);
MFCQMUTILS_API void ClearDefaultStringResource(UINT nID);
MFCQMUTILS_API bool FindStringResource(UINT nID, CString& out);
}  // namespace qm
