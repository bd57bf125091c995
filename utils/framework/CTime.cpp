#include "utils/framework/CTime.h"

#include <cstring>

#include "utils/framework/exceptions.h"
#include "utils/platform/crt.h"

CTime CTime::GetCurrentTime() noexcept { return CTime(qm::crt::Time64()); }

BOOL CTime::IsValidFILETIME(const FILETIME& ft) noexcept {
    unsigned long long ticks = ((unsigned long long)ft.dwHighDateTime << 32) | ft.dwLowDateTime;
    return ticks >= 116444736000000000ULL;
}

CTime::CTime(int nYear, int nMonth, int nDay, int nHour, int nMin, int nSec, int nDST) {
    if (nYear < 1900 || nMonth < 1 || nMonth > 12 || nDay < 1 || nDay > 31 || nHour < 0 || nHour > 23 ||
        nMin < 0 || nMin > 59 || nSec < 0 || nSec > 59)
        AtlThrow(E_FAIL);
    struct tm fields {};
    fields.tm_sec = nSec;
    fields.tm_min = nMin;
    fields.tm_hour = nHour;
    fields.tm_mday = nDay;
    fields.tm_mon = nMonth - 1;
    fields.tm_year = nYear - 1900;
    fields.tm_isdst = nDST;
    m_time = qm::crt::MkTime64(&fields);
    if (m_time == -1) AtlThrow(E_INVALIDARG);
}

CTime::CTime(const SYSTEMTIME& st, int nDST)
    : CTime(st.wYear, st.wMonth, st.wDay, st.wHour, st.wMinute, st.wSecond, nDST) {}

CTime::CTime(const FILETIME& ft, int nDST) : m_time(0) {
    // The file time is UTC: whole seconds since 1970 directly (the daylight flag is unused).
    (void)nDST;
    if (!IsValidFILETIME(ft)) AtlThrow(E_INVALIDARG);
    unsigned long long ticks = ((unsigned long long)ft.dwHighDateTime << 32) | ft.dwLowDateTime;
    m_time = (__int64)((ticks - 116444736000000000ULL) / 10000000ULL);
}

struct tm* CTime::GetGmtTm(struct tm* ptm) const {
    if (!ptm) return nullptr;
    return qm::crt::GmTime64(m_time, ptm) ? ptm : nullptr;
}

struct tm* CTime::GetLocalTm(struct tm* ptm) const {
    if (!ptm) return nullptr;
    return qm::crt::LocalTime64(m_time, ptm) ? ptm : nullptr;
}

bool CTime::GetAsSystemTime(SYSTEMTIME& st) const noexcept {
    struct tm t {};
    if (!GetLocalTm(&t)) return false;
    st.wYear = (WORD)(t.tm_year + 1900);
    st.wMonth = (WORD)(t.tm_mon + 1);
    st.wDayOfWeek = (WORD)t.tm_wday;
    st.wDay = (WORD)t.tm_mday;
    st.wHour = (WORD)t.tm_hour;
    st.wMinute = (WORD)t.tm_min;
    st.wSecond = (WORD)t.tm_sec;
    st.wMilliseconds = 0;
    return true;
}

int CTime::GetYear() const noexcept { struct tm t {}; return GetLocalTm(&t) ? t.tm_year + 1900 : 0; }
int CTime::GetMonth() const noexcept { struct tm t {}; return GetLocalTm(&t) ? t.tm_mon + 1 : 0; }
int CTime::GetDay() const noexcept { struct tm t {}; return GetLocalTm(&t) ? t.tm_mday : 0; }
int CTime::GetHour() const noexcept { struct tm t {}; return GetLocalTm(&t) ? t.tm_hour : -1; }
int CTime::GetMinute() const noexcept { struct tm t {}; return GetLocalTm(&t) ? t.tm_min : -1; }
int CTime::GetSecond() const noexcept { struct tm t {}; return GetLocalTm(&t) ? t.tm_sec : -1; }
int CTime::GetDayOfWeek() const noexcept { struct tm t {}; return GetLocalTm(&t) ? t.tm_wday + 1 : 0; }

namespace {
CString FormatTm(const struct tm* t, const char* fmt) {
    if (!t || !fmt || !*fmt) return CString();
    char buf[512];
    size_t n = std::strftime(buf, sizeof buf, fmt, t);
    return CString(buf, (int)n);
}
}  // namespace

CString CTime::Format(const char* fmt) const {
    struct tm t {};
    return FormatTm(GetLocalTm(&t), fmt);
}

CString CTime::FormatGmt(const char* fmt) const {
    struct tm t {};
    return FormatTm(GetGmtTm(&t), fmt);
}
