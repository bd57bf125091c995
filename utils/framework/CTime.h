// The framework's time: seconds since 1 January 1970 UTC, broken down into local calendar
// time by the C runtime (the TZ setting of the process).
#pragma once

#include <ctime>

#include "utils/framework/CString.h"
#include "utils/framework/wintypes.h"

class MFCQMUTILS_API CTimeSpan {
public:
    CTimeSpan() noexcept : m_timeSpan(0) {}
    CTimeSpan(__int64 time) noexcept : m_timeSpan(time) {}
    CTimeSpan(LONG lDays, int nHours, int nMins, int nSecs) noexcept
        : m_timeSpan(nSecs + 60 * (nMins + 60 * (nHours + (__int64)24 * lDays))) {}

    __int64 GetTimeSpan() const noexcept { return m_timeSpan; }
    __int64 GetDays() const noexcept { return m_timeSpan / (24 * 3600); }
    __int64 GetTotalHours() const noexcept { return m_timeSpan / 3600; }
    LONG GetHours() const noexcept { return (LONG)(GetTotalHours() - GetDays() * 24); }
    __int64 GetTotalMinutes() const noexcept { return m_timeSpan / 60; }
    LONG GetMinutes() const noexcept { return (LONG)(GetTotalMinutes() - GetTotalHours() * 60); }
    __int64 GetTotalSeconds() const noexcept { return m_timeSpan; }
    LONG GetSeconds() const noexcept { return (LONG)(GetTotalSeconds() - GetTotalMinutes() * 60); }

    CTimeSpan operator+(CTimeSpan s) const noexcept { return CTimeSpan(m_timeSpan + s.m_timeSpan); }
    CTimeSpan operator-(CTimeSpan s) const noexcept { return CTimeSpan(m_timeSpan - s.m_timeSpan); }
    CTimeSpan& operator+=(CTimeSpan s) noexcept { m_timeSpan += s.m_timeSpan; return *this; }
    CTimeSpan& operator-=(CTimeSpan s) noexcept { m_timeSpan -= s.m_timeSpan; return *this; }
    bool operator==(CTimeSpan s) const noexcept { return m_timeSpan == s.m_timeSpan; }
    bool operator!=(CTimeSpan s) const noexcept { return m_timeSpan != s.m_timeSpan; }
    bool operator<(CTimeSpan s) const noexcept { return m_timeSpan < s.m_timeSpan; }
    bool operator>(CTimeSpan s) const noexcept { return m_timeSpan > s.m_timeSpan; }
    bool operator<=(CTimeSpan s) const noexcept { return m_timeSpan <= s.m_timeSpan; }
    bool operator>=(CTimeSpan s) const noexcept { return m_timeSpan >= s.m_timeSpan; }

private:
    __int64 m_timeSpan;
};

class MFCQMUTILS_API CTime {
public:
    static CTime GetCurrentTime() noexcept;
    static BOOL IsValidFILETIME(const FILETIME& ft) noexcept;

    CTime() noexcept : m_time(0) {}
    CTime(__int64 time) noexcept : m_time(time) {}
    // Local calendar fields; nDST < 0 lets the runtime decide daylight saving. Fails with the
    // framework's general failure (COleException E_FAIL) for a field out of range (year below
    // 1900, month outside 1..12, day outside 1..31, hour above 23, minute or second above
    // 59) and with its invalid-argument error when the runtime cannot convert the fields.
    CTime(int nYear, int nMonth, int nDay, int nHour, int nMin, int nSec, int nDST = -1);
    CTime(const SYSTEMTIME& st, int nDST = -1);
    CTime(const FILETIME& ft, int nDST = -1);

    CTime& operator=(__int64 time) noexcept { m_time = time; return *this; }
    CTime& operator+=(CTimeSpan s) noexcept { m_time += s.GetTimeSpan(); return *this; }
    CTime& operator-=(CTimeSpan s) noexcept { m_time -= s.GetTimeSpan(); return *this; }
    CTimeSpan operator-(CTime t) const noexcept { return CTimeSpan(m_time - t.m_time); }
    CTime operator-(CTimeSpan s) const noexcept { return CTime(m_time - s.GetTimeSpan()); }
    CTime operator+(CTimeSpan s) const noexcept { return CTime(m_time + s.GetTimeSpan()); }
    bool operator==(CTime t) const noexcept { return m_time == t.m_time; }
    bool operator!=(CTime t) const noexcept { return m_time != t.m_time; }
    bool operator<(CTime t) const noexcept { return m_time < t.m_time; }
    bool operator>(CTime t) const noexcept { return m_time > t.m_time; }
    bool operator<=(CTime t) const noexcept { return m_time <= t.m_time; }
    bool operator>=(CTime t) const noexcept { return m_time >= t.m_time; }

    // Broken-down time; nullptr when the runtime cannot convert the value.
    struct tm* GetGmtTm(struct tm* ptm) const;
    struct tm* GetLocalTm(struct tm* ptm) const;
    bool GetAsSystemTime(SYSTEMTIME& st) const noexcept;

    __int64 GetTime() const noexcept { return m_time; }
    // Local calendar fields; 0 (or -1 for the weekday) when the value cannot be broken down.
    int GetYear() const noexcept;
    int GetMonth() const noexcept;
    int GetDay() const noexcept;
    int GetHour() const noexcept;
    int GetMinute() const noexcept;
    int GetSecond() const noexcept;
    int GetDayOfWeek() const noexcept;  // 1 = Sunday

    // strftime of the local time; the empty string when the value cannot be broken down.
    CString Format(const char* pszFormat) const;
    CString FormatGmt(const char* pszFormat) const;

private:
    __int64 m_time;
};
