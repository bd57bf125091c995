#include "utils/framework/COleDateTime.h"

#include <cmath>

#include "utils/framework/CTime.h"
#include "utils/framework/civil.h"
#include "utils/platform/crt.h"

namespace {

constexpr long kMinDay = -657434;                   // 1 January 100
constexpr long kMaxDay = 2958465;                   // 31 December 9999
constexpr double kHalfSecond = 1.0 / 172800.0;
constexpr long kDaysTo18991230 = 693594;            // day number of 30 Dec 1899, 1 Jan 1 = day 1

// Day numbers count 1 January of year 1 as day 1 (1 January 1970 is day 719163).
constexpr long kDay1970 = 719163;

long DayNumber(long y, int m, int d) { return (long)(qm::civil::DaysFromCivil(y, m, d) + kDay1970); }

void CivilFromDayNumber(long n, long& y, int& m, int& d) {
    std::int64_t year;
    qm::civil::CivilFromDays((std::int64_t)n - kDay1970, year, m, d);
    y = (long)year;
}

// The value's position on a linear day scale. The integer part of a value is its day and the
// fraction's magnitude its time of day, also for negative values (-1.25 is 29 December 1899,
// 06:00), so on a continuous scale a negative value lies at its day plus that magnitude
// (-1.25 lies at -0.75).
double Linear(double dt) {
    if (dt >= 0) return dt;
    double day = std::trunc(dt);
    return day - (dt - day);
}

}  // namespace

namespace qm::oledate {

bool ToFields(DATE dt, SYSTEMTIME& st) noexcept {
    if (!(dt > kMinDay - 2.0 && dt < kMaxDay + 2.0)) return false;  // far outside, or NaN
    // Round to the nearest second on the continuous scale, then split into the day and the time
    // of day. Rounding the raw value away from zero instead would carry a negative value's late
    // evening into the wrong day: -0.99999999 (30 December 1899, 23:59:59.999) would become day
    // -1 (29 December) rather than 31 December, 00:00:00. The range is then checked on the
    // rounded day, so every second of 1 January 100 and of 31 December 9999 is in range and
    // nothing rounds into the year 10000 or 99.
    double rounded = Linear(dt) + kHalfSecond;
    double day = std::floor(rounded);
    if (day < kMinDay || day > kMaxDay) return false;
    long days = (long)day;
    long secs = (long)((rounded - day) * 86400.0);
    if (secs >= 86400) secs = 86399;
    long y;
    int m, d;
    CivilFromDayNumber(days + kDaysTo18991230, y, m, d);
    st.wYear = (WORD)y;
    st.wMonth = (WORD)m;
    st.wDay = (WORD)d;
    st.wDayOfWeek = (WORD)(((days + kDaysTo18991230) % 7 + 7) % 7);  // day 1 was a Monday
    st.wHour = (WORD)(secs / 3600);
    st.wMinute = (WORD)(secs / 60 % 60);
    st.wSecond = (WORD)(secs % 60);
    st.wMilliseconds = 0;
    return true;
}

bool FromFields(const SYSTEMTIME& st, DATE& dt) noexcept {
    if (st.wYear < 100 || st.wYear > 9999 || st.wMonth < 1 || st.wMonth > 12) return false;
    if (st.wDay < 1 || st.wDay > qm::civil::DaysInMonth(st.wYear, st.wMonth)) return false;
    if (st.wHour > 23 || st.wMinute > 59 || st.wSecond > 59) return false;
    long days = DayNumber(st.wYear, st.wMonth, st.wDay) - kDaysTo18991230;
    double time = (st.wHour * 3600L + st.wMinute * 60L + st.wSecond) / 86400.0;
    dt = (double)days + (days >= 0 ? time : -time);
    return true;
}

}  // namespace qm::oledate

COleDateTimeSpan::COleDateTimeSpan(LONG lDays, int nHours, int nMins, int nSecs) noexcept
    : m_span(lDays + ((double)nHours * 3600 + (double)nMins * 60 + nSecs) / 86400.0), m_status(valid) {}

COleDateTime COleDateTime::GetCurrentTime() noexcept { return COleDateTime(qm::crt::Time64()); }

COleDateTime::COleDateTime(int y, int mo, int d, int h, int mi, int s) noexcept : m_dt(0), m_status(valid) {
    SetDateTime(y, mo, d, h, mi, s);
}

COleDateTime::COleDateTime(const SYSTEMTIME& st) noexcept : m_dt(0), m_status(valid) {
    SetDateTime(st.wYear, st.wMonth, st.wDay, st.wHour, st.wMinute, st.wSecond);
}

COleDateTime::COleDateTime(__int64 timeSrc) noexcept : m_dt(0), m_status(valid) {
    struct tm t {};
    if (!qm::crt::LocalTime64(timeSrc, &t)) {
        m_status = invalid;
        return;
    }
    SetDateTime(t.tm_year + 1900, t.tm_mon + 1, t.tm_mday, t.tm_hour, t.tm_min, t.tm_sec);
}

int COleDateTime::SetDateTime(int y, int mo, int d, int h, int mi, int s) noexcept {
    SYSTEMTIME st{};
    bool inWordRange = y >= 0 && y <= 0xFFFF && mo >= 0 && mo <= 0xFFFF && d >= 0 && d <= 0xFFFF &&
                       h >= 0 && h <= 0xFFFF && mi >= 0 && mi <= 0xFFFF && s >= 0 && s <= 0xFFFF;
    if (inWordRange) {
        st.wYear = (WORD)y; st.wMonth = (WORD)mo; st.wDay = (WORD)d;
        st.wHour = (WORD)h; st.wMinute = (WORD)mi; st.wSecond = (WORD)s;
    }
    DATE dt = 0;
    SYSTEMTIME back{};
    bool ok = inWordRange && qm::oledate::FromFields(st, dt) && qm::oledate::ToFields(dt, back) &&
              back.wYear == st.wYear && back.wMonth == st.wMonth && back.wDay == st.wDay &&
              back.wHour == st.wHour && back.wMinute == st.wMinute && back.wSecond == st.wSecond;
    m_dt = ok ? dt : 0;
    m_status = ok ? valid : invalid;
    return ok ? 0 : 1;
}

bool COleDateTime::GetAsSystemTime(SYSTEMTIME& st) const noexcept {
    return m_status == valid && qm::oledate::ToFields(m_dt, st);
}

int COleDateTime::GetYear() const noexcept { SYSTEMTIME st; return GetAsSystemTime(st) ? st.wYear : AFX_OLE_DATETIME_ERROR; }
int COleDateTime::GetMonth() const noexcept { SYSTEMTIME st; return GetAsSystemTime(st) ? st.wMonth : AFX_OLE_DATETIME_ERROR; }
int COleDateTime::GetDay() const noexcept { SYSTEMTIME st; return GetAsSystemTime(st) ? st.wDay : AFX_OLE_DATETIME_ERROR; }
int COleDateTime::GetHour() const noexcept { SYSTEMTIME st; return GetAsSystemTime(st) ? st.wHour : AFX_OLE_DATETIME_ERROR; }
int COleDateTime::GetMinute() const noexcept { SYSTEMTIME st; return GetAsSystemTime(st) ? st.wMinute : AFX_OLE_DATETIME_ERROR; }
int COleDateTime::GetSecond() const noexcept { SYSTEMTIME st; return GetAsSystemTime(st) ? st.wSecond : AFX_OLE_DATETIME_ERROR; }

int COleDateTime::GetDayOfWeek() const noexcept {
    SYSTEMTIME st;
    return GetAsSystemTime(st) ? st.wDayOfWeek + 1 : AFX_OLE_DATETIME_ERROR;
}

int COleDateTime::GetDayOfYear() const noexcept {
    SYSTEMTIME st;
    if (!GetAsSystemTime(st)) return AFX_OLE_DATETIME_ERROR;
    return (int)(DayNumber(st.wYear, st.wMonth, st.wDay) - DayNumber(st.wYear, 1, 1) + 1);
}

double COleDateTime::Ordinal() const noexcept { return Linear(m_dt); }

namespace {
DATE FromOrdinal(double ordinal) {
    if (ordinal >= 0) return ordinal;
    double days = std::floor(ordinal);
    return days - (ordinal - days);
}
}  // namespace

COleDateTime COleDateTime::operator+(COleDateTimeSpan s) const noexcept {
    COleDateTime r;
    if (m_status != valid || s.m_status != COleDateTimeSpan::valid) { r.m_status = invalid; return r; }
    r.m_dt = FromOrdinal(Ordinal() + s.m_span);
    return r;
}

COleDateTime COleDateTime::operator-(COleDateTimeSpan s) const noexcept { return *this + COleDateTimeSpan(-s.m_span); }

COleDateTimeSpan COleDateTime::operator-(const COleDateTime& d) const noexcept {
    COleDateTimeSpan r(Ordinal() - d.Ordinal());
    if (m_status != valid || d.m_status != valid) r.m_status = COleDateTimeSpan::invalid;
    return r;
}

CString COleDateTime::Format(const char* pFormat) const {
    SYSTEMTIME st;
    if (!pFormat || !GetAsSystemTime(st)) return CString();
    struct tm t {};
    t.tm_year = st.wYear - 1900;
    t.tm_mon = st.wMonth - 1;
    t.tm_mday = st.wDay;
    t.tm_hour = st.wHour;
    t.tm_min = st.wMinute;
    t.tm_sec = st.wSecond;
    t.tm_wday = st.wDayOfWeek;
    t.tm_yday = GetDayOfYear() - 1;
    t.tm_isdst = -1;
    char buf[512];
    size_t n = std::strftime(buf, sizeof buf, pFormat, &t);
    return CString(buf, (int)n);
}
