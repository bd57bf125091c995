#include "utils/framework/CString.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <map>
#include <mutex>

#include "utils/framework/mbchar.h"
#include "utils/platform/resources.h"

namespace {

const char kWhitespace[] = " \t\r\n\v\f";

int CompareBytes(const std::string& a, const char* b, bool noCase) {
    if (!b) b = "";
    size_t nb = std::strlen(b);
    size_t n = std::min(a.size(), nb);
    for (size_t i = 0; i < n; ++i) {
        unsigned ca = (unsigned char)a[i], cb = (unsigned char)b[i];
        if (noCase) { ca = mbc::ToLower(ca); cb = mbc::ToLower(cb); }
        if (ca != cb) return ca < cb ? -1 : 1;
    }
    if (a.size() == nb) return 0;
    return a.size() < nb ? -1 : 1;
}

int Clamp(int v, int lo, int hi) { return v < lo ? lo : (v > hi ? hi : v); }

}  // namespace

char CString::GetAt(int i) const {
    // Reading at the length gives the terminating NUL, as the framework's buffer does.
    if (i < 0 || i > GetLength()) return 0;
    return m_str.c_str()[i];
}

void CString::SetAt(int i, char ch) {
    if (i >= 0 && i < GetLength()) m_str[(size_t)i] = ch;
}

CString operator+(const CString& a, const CString& b) { CString r(a); r += b; return r; }
CString operator+(const CString& a, const char* b) { CString r(a); r += b; return r; }
CString operator+(const char* a, const CString& b) { CString r(a); r += b; return r; }
CString operator+(const CString& a, char b) { CString r(a); r += b; return r; }
CString operator+(char a, const CString& b) { CString r(a); r += b; return r; }

int CString::Compare(const char* psz) const { return CompareBytes(m_str, psz, false); }
int CString::CompareNoCase(const char* psz) const { return CompareBytes(m_str, psz, true); }

bool operator==(const CString& a, const CString& b) { return a.str() == b.str(); }
bool operator==(const CString& a, const char* b) { return a.Compare(b) == 0; }
bool operator==(const char* a, const CString& b) { return b.Compare(a) == 0; }
bool operator!=(const CString& a, const CString& b) { return !(a == b); }
bool operator!=(const CString& a, const char* b) { return !(a == b); }
bool operator!=(const char* a, const CString& b) { return !(a == b); }
bool operator<(const CString& a, const CString& b) { return a.str() < b.str(); }
bool operator<(const CString& a, const char* b) { return a.Compare(b) < 0; }
bool operator<(const char* a, const CString& b) { return b.Compare(a) > 0; }
bool operator>(const CString& a, const CString& b) { return b < a; }
bool operator>(const CString& a, const char* b) { return a.Compare(b) > 0; }
bool operator>(const char* a, const CString& b) { return b.Compare(a) < 0; }
bool operator<=(const CString& a, const CString& b) { return !(b < a); }
bool operator>=(const CString& a, const CString& b) { return !(a < b); }

CString CString::Left(int nCount) const {
    nCount = Clamp(nCount, 0, GetLength());
    return CString(m_str.substr(0, (size_t)nCount));
}

CString CString::Right(int nCount) const {
    nCount = Clamp(nCount, 0, GetLength());
    return CString(m_str.substr(m_str.size() - (size_t)nCount));
}

CString CString::Mid(int iFirst) const { return Mid(iFirst, GetLength() - std::max(iFirst, 0)); }

CString CString::Mid(int iFirst, int nCount) const {
    iFirst = Clamp(iFirst, 0, GetLength());
    nCount = Clamp(nCount, 0, GetLength() - iFirst);
    return CString(m_str.substr((size_t)iFirst, (size_t)nCount));
}

CString CString::SpanIncluding(const char* set) const {
    size_t n = m_str.find_first_not_of(set ? set : "");
    return Left(n == std::string::npos ? GetLength() : (int)n);
}

CString CString::SpanExcluding(const char* set) const {
    size_t n = m_str.find_first_of(set ? set : "");
    return Left(n == std::string::npos ? GetLength() : (int)n);
}

CString CString::Tokenize(const char* tokens, int& iStart) const {
    if (iStart < 0 || iStart >= GetLength()) { iStart = -1; return CString(); }
    std::string set = tokens ? tokens : "";
    size_t from = m_str.find_first_not_of(set, (size_t)iStart);
    if (from == std::string::npos) { iStart = -1; return CString(); }
    size_t to = m_str.find_first_of(set, from);
    if (to == std::string::npos) to = m_str.size();
    iStart = (int)std::min(to + 1, m_str.size() + 1);
    return CString(m_str.substr(from, to - from));
}

int CString::Find(char ch, int iStart) const {
    if (iStart < 0 || iStart >= GetLength()) return -1;
    size_t n = m_str.find(ch, (size_t)iStart);
    return n == std::string::npos ? -1 : (int)n;
}

int CString::Find(const char* sub, int iStart) const {
    if (!sub || iStart < 0 || iStart > GetLength()) return -1;
    size_t n = m_str.find(sub, (size_t)iStart);
    return n == std::string::npos ? -1 : (int)n;
}

int CString::ReverseFind(char ch) const {
    size_t n = m_str.rfind(ch);
    return n == std::string::npos ? -1 : (int)n;
}

int CString::FindOneOf(const char* set) const {
    size_t n = m_str.find_first_of(set ? set : "");
    return n == std::string::npos ? -1 : (int)n;
}

CString& CString::MakeUpper() {
    for (char& c : m_str) c = (char)mbc::ToUpper((unsigned char)c);
    return *this;
}

CString& CString::MakeLower() {
    for (char& c : m_str) c = (char)mbc::ToLower((unsigned char)c);
    return *this;
}

CString& CString::MakeReverse() {
    std::reverse(m_str.begin(), m_str.end());
    return *this;
}

CString& CString::Trim() { return TrimRight().TrimLeft(); }
CString& CString::Trim(char ch) { return TrimRight(ch).TrimLeft(ch); }
CString& CString::Trim(const char* set) { return TrimRight(set).TrimLeft(set); }
CString& CString::TrimLeft() { return TrimLeft(kWhitespace); }
CString& CString::TrimRight() { return TrimRight(kWhitespace); }

CString& CString::TrimLeft(char ch) {
    const char set[2] = {ch, 0};
    return TrimLeft(set);
}

CString& CString::TrimRight(char ch) {
    const char set[2] = {ch, 0};
    return TrimRight(set);
}

CString& CString::TrimLeft(const char* set) {
    if (!set || !*set) return *this;
    size_t i = 0;
    while (i < m_str.size() && std::strchr(set, m_str[i]) && m_str[i] != 0) ++i;
    m_str.erase(0, i);
    return *this;
}

CString& CString::TrimRight(const char* set) {
    if (!set || !*set) return *this;
    size_t n = m_str.size();
    while (n > 0 && m_str[n - 1] != 0 && std::strchr(set, m_str[n - 1])) --n;
    m_str.resize(n);
    return *this;
}

int CString::Insert(int i, char ch) {
    i = Clamp(i, 0, GetLength());
    m_str.insert((size_t)i, 1, ch);
    return GetLength();
}

int CString::Insert(int i, const char* psz) {
    i = Clamp(i, 0, GetLength());
    if (psz) m_str.insert((size_t)i, psz);
    return GetLength();
}

int CString::Delete(int i, int nCount) {
    if (i < 0) i = 0;
    if (nCount > 0 && i < GetLength()) m_str.erase((size_t)i, (size_t)std::min(nCount, GetLength() - i));
    return GetLength();
}

int CString::Remove(char ch) {
    size_t before = m_str.size();
    m_str.erase(std::remove(m_str.begin(), m_str.end(), ch), m_str.end());
    return (int)(before - m_str.size());
}

int CString::Replace(char chOld, char chNew) {
    int n = 0;
    for (char& c : m_str)
        if (c == chOld) { c = chNew; ++n; }
    return n;
}

int CString::Replace(const char* pszOld, const char* pszNew) {
    if (!pszOld || !*pszOld) return 0;
    std::string from(pszOld), to(pszNew ? pszNew : "");
    std::string out;
    int n = 0;
    size_t pos = 0, hit;
    while ((hit = m_str.find(from, pos)) != std::string::npos) {
        out.append(m_str, pos, hit - pos);
        out += to;
        pos = hit + from.size();
        ++n;
    }
    if (n) {
        out.append(m_str, pos, std::string::npos);
        m_str.swap(out);
    }
    return n;
}

void CString::Truncate(int nNewLength) {
    if (nNewLength >= 0 && nNewLength < GetLength()) m_str.resize((size_t)nNewLength);
}

void CString::Format(const char* fmt, ...) {
    va_list args;
    va_start(args, fmt);
    FormatV(fmt, args);
    va_end(args);
}

void CString::FormatV(const char* fmt, va_list args) {
    m_str.clear();
    AppendFormatV(fmt, args);
}

void CString::AppendFormat(const char* fmt, ...) {
    va_list args;
    va_start(args, fmt);
    AppendFormatV(fmt, args);
    va_end(args);
}

void CString::AppendFormatV(const char* fmt, va_list args) {
    if (!fmt) return;
    va_list probe;
    va_copy(probe, args);
    int n = std::vsnprintf(nullptr, 0, fmt, probe);
    va_end(probe);
    if (n <= 0) return;
    size_t old = m_str.size();
    m_str.resize(old + (size_t)n + 1);
    std::vsnprintf(&m_str[old], (size_t)n + 1, fmt, args);
    m_str.resize(old + (size_t)n);
}

char* CString::GetBuffer() { return &m_str[0]; }

char* CString::GetBuffer(int nMinBufferLength) {
    // Room for nMinBufferLength characters plus the NUL that std::string always keeps.
    if (nMinBufferLength > GetLength()) {
        size_t len = m_str.size();
        m_str.resize((size_t)nMinBufferLength, '\0');
        // Bytes past the old length read as NUL so that ReleaseBuffer(-1) finds the old end.
        (void)len;
    }
    return &m_str[0];
}

char* CString::GetBufferSetLength(int nLength) {
    m_str.resize(nLength > 0 ? (size_t)nLength : 0, '\0');
    return &m_str[0];
}

void CString::ReleaseBuffer(int nNewLength) {
    if (nNewLength < 0) nNewLength = (int)std::strlen(m_str.c_str());
    if ((size_t)nNewLength > m_str.size()) nNewLength = GetLength();
    m_str.resize((size_t)nNewLength);
}

namespace {
std::mutex g_resourceLock;
std::map<UINT, std::string>& ResourceTable() {
    static std::map<UINT, std::string> table;
    return table;
}
std::map<UINT, std::string>& DefaultResourceTable() {
    static std::map<UINT, std::string> table;
    return table;
}
bool FindIn(std::map<UINT, std::string>& table, UINT nID, CString& out) {
    std::lock_guard<std::mutex> lock(g_resourceLock);
    auto it = table.find(nID);
    if (it == table.end()) return false;
    out = CString(it->second);
    return true;
}
}  // namespace

namespace qm {

void SetStringResource(UINT nID, const char* text) {
    std::lock_guard<std::mutex> lock(g_resourceLock);
    ResourceTable()[nID] = text ? text : "";
}

void ClearStringResource(UINT nID) {
    std::lock_guard<std::mutex> lock(g_resourceLock);
    ResourceTable().erase(nID);
}

void SetDefaultStringResource(UINT nID, const char* text) {
    std::lock_guard<std::mutex> lock(g_resourceLock);
    DefaultResourceTable()[nID] = text ? text : "";
}

void ClearDefaultStringResource(UINT nID) {
    std::lock_guard<std::mutex> lock(g_resourceLock);
    DefaultResourceTable().erase(nID);
}

bool FindStringResource(UINT nID, CString& out) {
    if (FindIn(ResourceTable(), nID, out)) return true;
    char buf[1024];
    int n = qm::platform::LoadHostModuleString(nID, buf, (int)sizeof buf);
    if (n > 0) {
        out = CString(buf, n < (int)sizeof buf ? n : (int)sizeof buf - 1);
        return true;
    }
    return FindIn(DefaultResourceTable(), nID, out);
}

}  // namespace qm

BOOL CString::LoadString(UINT nID) {
    CString text;
    if (!qm::FindStringResource(nID, text)) return FALSE;
    *this = text;
    return TRUE;
}
