// Day-number dates: CDate packs a calendar date into one 32-bit word (year in the high 16
// bits, month in the next 8, day in the low 8) so that the word's integer value orders dates;
// the all-zero word is the null date. Arithmetic goes through the proleptic Gregorian day
// number ("scalar"): 1 January of year 1 is day 1. CDaySpan is a signed count of days.
//
// The text forms (Format, AsString, FindDate, WinDateTime) live in date_text.h; the time
// scales in date_time.h.
#pragma once

#include "utils/framework/COleDateTime.h"
#include "utils/framework/CString.h"
#include "utils/framework/CTime.h"
#include "utils/framework/wintypes.h"

class MFCQMUTILS_API CDaySpan {
public:
    CDaySpan() : m_days(0) {}
    CDaySpan(const CDaySpan& s) = default;
    CDaySpan(LONG days) : m_days(days) {}
    CDaySpan& operator=(const CDaySpan& s) = default;
    CDaySpan& operator=(LONG days) { m_days = days; return *this; }

    CDaySpan& operator++() { m_days = (LONG)((DWORD)m_days + 1); return *this; }
    CDaySpan operator++(int) { CDaySpan old(*this); ++*this; return old; }
    CDaySpan& operator--() { m_days = (LONG)((DWORD)m_days - 1); return *this; }
    CDaySpan operator--(int) { CDaySpan old(*this); --*this; return old; }
    CDaySpan& operator+=(LONG n) { m_days = (LONG)((DWORD)m_days + (DWORD)n); return *this; }
    CDaySpan& operator-=(LONG n) { m_days = (LONG)((DWORD)m_days - (DWORD)n); return *this; }

    operator LONG() const { return m_days; }
    LONG GetDays() const { return m_days; }

private:
    LONG m_days;
};

class MFCQMUTILS_API CDate {
public:
    // Days per month, indexed by month - 1. dpm() rewrites the February entry for the year it
    // is asked about before every read, so the table is shared mutable state.
    static unsigned char days_per_mon[12];

    // Calendar arithmetic (integers are signed 32-bit; "/" truncates toward zero).
    static int IsLeap(int year);
    static int m2d(int month);
    static int y2d(int year);
    static int dpm(int year, int month);
    static LONG ymd2scalar(int year, int month, int day);
    static void scalar2ymd(LONG scalar, int& year, int& month, int& day);

    CDate() : m_word(0) {}
    CDate(int year, int month, int day) { Set(year, month, day); }
    CDate(const CDate& d) = default;
    CDate(const CTime& t);
    CDate(const COleDateTime& odt);

    CDate& operator=(const CDate& d) = default;
    CDate& operator=(const CTime& t);
    // Unlike the constructor, a value whose status is not valid stores the all-ones word.
    CDate& operator=(const COleDateTime& odt);

    void Set(int year, int month, int day);
    void FromDWORD(DWORD w) { m_word = w; }
    DWORD AsDWORD() const { return m_word; }
    void FromScalar(LONG scalar);
    LONG GetScalar() const;
    void SetToday();  // today in UTC

    int GetYear() const { return (short)(m_word >> 16); }
    int GetMonth() const { return (signed char)(m_word >> 8); }
    int GetDay() const { return (signed char)m_word; }
    int GetDaysPerMonth() const;
    void SetYear(int year);
    void SetMonth(int m);
    void SetDay(int d);

    bool IsNull() const { return m_word == 0; }
    bool operator!() const { return m_word == 0; }
    int IsLeap() const { return IsLeap(GetYear()); }
    bool IsValid() const;
    int InRange(CDate from, CDate to) const;
    int IsHoliday() const { return 0; }
    CString GetHolidayName() const { return CString(); }

    bool operator==(const CDate& d) const { return m_word == d.m_word; }
    bool operator!=(const CDate& d) const { return m_word != d.m_word; }
    bool operator<(const CDate& d) const { return (LONG)m_word < (LONG)d.m_word; }
    bool operator<=(const CDate& d) const { return (LONG)m_word <= (LONG)d.m_word; }
    bool operator>(const CDate& d) const { return (LONG)m_word > (LONG)d.m_word; }
    bool operator>=(const CDate& d) const { return (LONG)m_word >= (LONG)d.m_word; }
    bool operator==(const CTime& t) const;
    bool operator!=(const CTime& t) const { return !(*this == t); }

    LONG operator-(const CDate& d) const;
    CDate operator+(int n) const;
    CDate operator-(int n) const;
    CDate& operator+=(int n);
    CDate& operator-=(int n);
    CDate& operator++();
    CDate operator++(int);
    CDate& operator--();
    CDate operator--(int);
    void AddMonth(int n);

    int GetDayOfWeek() const;  // 1 = Sunday ... 7 = Saturday
    int GetWeekNumber(int weekRule, int firstDay) const;

    operator CTime() const;
    CTime operator&(const CTime& t) const;
    CTime operator&(const CTimeSpan& s) const;
    operator COleDateTime() const;

    // Text forms (date_text.cpp).
    CString Format(const char* fmt) const;
    CString AsString(int longForm = 0) const;
    operator CString() const;
    static LONG FindDate(const char*& p, CDate from, CDate to);

private:
    // Moves the day by n days through whole months (the day walk); see date.cpp.
    void WalkDays(long long n);
    void StoreFields(int year, int month, int day);

    DWORD m_word;
};
