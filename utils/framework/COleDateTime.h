// The framework's automation date: days since 30 December 1899 as a double, the fraction
// being the time of day (also for negative values: -1.25 is 29 December 1899, 06:00), plus a
// status. Valid values lie between 1 January 100 and 31 December 9999.
#pragma once

#include <ctime>

#include "utils/framework/CString.h"
#include "utils/framework/wintypes.h"

#define AFX_OLE_DATETIME_ERROR (-1)

class MFCQMUTILS_API COleDateTimeSpan {
public:
    enum DateTimeSpanStatus { valid = 0, invalid = 1, null = 2 };

    COleDateTimeSpan() noexcept : m_span(0), m_status(valid) {}
    COleDateTimeSpan(double dblSpanSrc) noexcept : m_span(dblSpanSrc), m_status(valid) {}
    COleDateTimeSpan(LONG lDays, int nHours, int nMins, int nSecs) noexcept;

    DateTimeSpanStatus GetStatus() const noexcept { return m_status; }
    void SetStatus(DateTimeSpanStatus s) noexcept { m_status = s; }
    double GetTotalDays() const noexcept { return m_span; }
    double GetTotalHours() const noexcept { return m_span * 24; }
    double GetTotalMinutes() const noexcept { return m_span * 24 * 60; }
    double GetTotalSeconds() const noexcept { return m_span * 24 * 60 * 60; }
    LONG GetDays() const noexcept { return (LONG)m_span; }
    operator double() const noexcept { return m_span; }

    double m_span;
    DateTimeSpanStatus m_status;
};

class MFCQMUTILS_API COleDateTime {
public:
    enum DateTimeStatus { error = -1, valid = 0, invalid = 1, null = 2 };

    static COleDateTime GetCurrentTime() noexcept;

    COleDateTime() noexcept : m_dt(0), m_status(valid) {}
    COleDateTime(DATE dtSrc) noexcept : m_dt(dtSrc), m_status(valid) {}
    COleDateTime(int nYear, int nMonth, int nDay, int nHour, int nMin, int nSec) noexcept;
    COleDateTime(const SYSTEMTIME& st) noexcept;
    // Local calendar time of a time value; invalid when the runtime cannot break it down.
    explicit COleDateTime(__int64 timeSrc) noexcept;

    COleDateTime& operator=(DATE dtSrc) noexcept { m_dt = dtSrc; m_status = valid; return *this; }

    DateTimeStatus GetStatus() const noexcept { return m_status; }
    void SetStatus(DateTimeStatus s) noexcept { m_status = s; }
    operator DATE() const noexcept { return m_dt; }

    // Fields; AFX_OLE_DATETIME_ERROR when the status is not valid or the value out of range.
    int GetYear() const noexcept;
    int GetMonth() const noexcept;
    int GetDay() const noexcept;
    int GetHour() const noexcept;
    int GetMinute() const noexcept;
    int GetSecond() const noexcept;
    int GetDayOfWeek() const noexcept;  // 1 = Sunday
    int GetDayOfYear() const noexcept;  // 1 = 1 January
    bool GetAsSystemTime(SYSTEMTIME& st) const noexcept;

    // Set the value from calendar fields; the status becomes invalid (and 1 is returned) when
    // a field is out of range or the fields do not round-trip.
    int SetDateTime(int nYear, int nMonth, int nDay, int nHour, int nMin, int nSec) noexcept;
    int SetDate(int nYear, int nMonth, int nDay) noexcept { return SetDateTime(nYear, nMonth, nDay, 0, 0, 0); }
    int SetTime(int nHour, int nMin, int nSec) noexcept { return SetDateTime(1899, 12, 30, nHour, nMin, nSec); }

    bool operator==(const COleDateTime& d) const noexcept { return m_status == d.m_status && m_dt == d.m_dt; }
    bool operator!=(const COleDateTime& d) const noexcept { return !(*this == d); }
    bool operator<(const COleDateTime& d) const noexcept { return Ordinal() < d.Ordinal(); }
    bool operator>(const COleDateTime& d) const noexcept { return Ordinal() > d.Ordinal(); }
    bool operator<=(const COleDateTime& d) const noexcept { return Ordinal() <= d.Ordinal(); }
    bool operator>=(const COleDateTime& d) const noexcept { return Ordinal() >= d.Ordinal(); }

    COleDateTime operator+(COleDateTimeSpan s) const noexcept;
    COleDateTime operator-(COleDateTimeSpan s) const noexcept;
    COleDateTimeSpan operator-(const COleDateTime& d) const noexcept;

    // strftime of the fields; the empty string when not valid.
    CString Format(const char* pFormat = "%c") const;

    DATE m_dt;
    DateTimeStatus m_status;

private:
    // Days on a linear scale (the time of day of a negative value counts forward), for ordering.
    double Ordinal() const noexcept;
};

namespace qm::oledate {
// Calendar fields of an automation date, rounded to the second; false out of range.
MFCQMUTILS_API bool ToFields(DATE dt, SYSTEMTIME& st) noexcept;
// An automation date from fields; false when a field is out of range.
MFCQMUTILS_API bool FromFields(const SYSTEMTIME& st, DATE& dt) noexcept;
}  // namespace qm::oledate
