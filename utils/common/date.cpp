// Day-number dates: calendar arithmetic, the day walk, conversions to and from CTime and
// COleDateTime.
//
// Arithmetic that the packed layout defines in 32 bits (scalars, m2d, y2d) is computed in 64
// bits and truncated explicitly, so that no input overflows into undefined behaviour; the
// fields are stored with the widths of the word (16-bit year, 8-bit month and day) and wrap
// as those fields do.
#include "utils/common/date.h"

#include <cstdint>

#include "utils/common/CVLogger.h"
#include "utils/platform/crt.h"

#define QM_SOURCE_MODULE "Common\\date"

unsigned char CDate::days_per_mon[12] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};

namespace {

int Truncate32(std::int64_t v) { return (int)(std::uint32_t)(std::uint64_t)v; }

std::int64_t FloorDiv(std::int64_t a, std::int64_t b) { return a / b - ((a % b != 0) && ((a < 0) != (b < 0))); }

// Leap years among the years [first, first + count).
std::int64_t LeapsIn(std::int64_t first, std::int64_t count) {
    auto upTo = [](std::int64_t x) { return FloorDiv(x, 4) - FloorDiv(x, 100) + FloorDiv(x, 400); };
    return upTo(first + count - 1) - upTo(first - 1);
}

// Days in the years [first, first + count).
std::int64_t DaysInYears(std::int64_t first, std::int64_t count) { return 365 * count + LeapsIn(first, count); }

int YearLength(int year) { return 365 + CDate::IsLeap(year); }

// Days before month m (1..13) in a year of the given leap status.
const int kDaysBefore[2][14] = {
    {0, 0, 31, 59, 90, 120, 151, 181, 212, 243, 273, 304, 334, 365},
    {0, 0, 31, 60, 91, 121, 152, 182, 213, 244, 274, 305, 335, 366},
};

// The month holding day-of-year doy (1..365/366) of a year of the given leap status.
int MonthOfDayOfYear(int doy, int leap) {
    int m = (doy - 1) / 31 + 1;  // never past the answer: no month is longer than 31 days
    while (m < 12 && doy > kDaysBefore[leap][m + 1]) ++m;
    return m;
}

// The 16-bit year and 8-bit month fields wrap as they do in the word.
int WrapYear(std::int64_t y) { return (short)(std::uint16_t)(std::uint64_t)y; }
int WrapMonth(int m) { return (signed char)(unsigned char)m; }

}  // namespace

// ---------------------------------------------------------------------------------------------
// Calendar arithmetic

int CDate::IsLeap(int year) { return (year % 400 == 0 || (year % 4 == 0 && year % 100 != 0)) ? 1 : 0; }

int CDate::m2d(int month) { return Truncate32(((std::int64_t)month * 3057 - 3007) / 100); }

int CDate::y2d(int year) {
    std::int64_t y = year;
    return Truncate32(y * 365 + y / 4 - y / 100 + y / 400);
}

int CDate::dpm(int year, int month) {
    days_per_mon[1] = IsLeap(year) ? 29 : 28;
    // A month outside 1..12 has no entry in the table: it counts as a month of no days, so
    // nothing reads outside the table, SetDay rejects every day in it and the day walk passes
    // through it without consuming days.
    if (month < 1 || month > 12) return 0;
    return days_per_mon[month - 1];
}

LONG CDate::ymd2scalar(int year, int month, int day) {
    std::int64_t s = (std::int64_t)day + m2d(month);
    if (month > 2) s -= IsLeap(year) ? 1 : 2;
    return Truncate32(s + y2d(Truncate32((std::int64_t)year - 1)));
}

void CDate::scalar2ymd(LONG scalar, int& year, int& month, int& day) {
    // The first guess is a signed 32-bit multiply (wrapping for scalars beyond about year
    // 14700, as the packed arithmetic always has). The year is then the first n from that
    // guess on with y2d(n) >= scalar. Counting up one year at a time would take up to millions
    // of steps for extreme scalars and never end where y2d itself wraps, so the answer is
    // computed directly on a 64-bit y2d: the same year for every scalar of a packable date.
    int guess = Truncate32((std::int64_t)scalar * 400) / 146097;
    auto y2d64 = [](std::int64_t y) { return y * 365 + y / 4 - y / 100 + y / 400; };
    std::int64_t n = guess;
    if (y2d64(n) < scalar) {
        n = (std::int64_t)scalar * 400 / 146097;
        while (y2d64(n) >= scalar) --n;
        while (y2d64(n) < scalar) ++n;
        if (n < guess) n = guess;
    }
    year = Truncate32(n);
    int d = Truncate32((std::int64_t)scalar - y2d(Truncate32((std::int64_t)year - 1)));
    // Shift past February as if it had 30 days: +2 in a common year, +1 from 1 March of a
    // leap year (day 60 of a leap year is 29 February and stays).
    if (d > 59) {
        d += 2;
        if (IsLeap(year)) d -= d > 62 ? 1 : 2;
    }
    month = Truncate32(((std::int64_t)d * 100 + 3007) / 3057);
    day = Truncate32((std::int64_t)d - m2d(month));
}

// ---------------------------------------------------------------------------------------------
// Construction and conversion

void CDate::StoreFields(int year, int month, int day) {
    m_word = ((DWORD)(std::uint16_t)year << 16) | ((DWORD)(std::uint8_t)month << 8) | (std::uint8_t)day;
}

void CDate::Set(int year, int month, int day) { StoreFields(year, month, day); }

CDate::CDate(const CTime& t) : m_word(0) {
    struct tm fields {};
    if (t.GetTime() != 0 && t.GetLocalTm(&fields))
        StoreFields(fields.tm_year + 1900, fields.tm_mon + 1, fields.tm_mday);
}

CDate& CDate::operator=(const CTime& t) {
    m_word = 0;
    if (t.GetTime() == 0) return *this;
    struct tm fields {};
    struct tm* ptm = t.GetLocalTm(&fields);
    if (!CVASSERT(ptm)) return *this;
    StoreFields(ptm->tm_year + 1900, ptm->tm_mon + 1, ptm->tm_mday);
    return *this;
}

namespace {
constexpr double kHalfSecondInDays = 1.0 / 172800.0;
}

// A failed component is AFX_OLE_DATETIME_ERROR (-1), stored as all ones in its field.
CDate::CDate(const COleDateTime& odt) : m_word(0) {
    if (odt.GetStatus() != COleDateTime::valid) return;
    if (odt.m_dt > -kHalfSecondInDays && odt.m_dt < kHalfSecondInDays) return;
    StoreFields(odt.GetYear(), odt.GetMonth(), odt.GetDay());
}

CDate& CDate::operator=(const COleDateTime& odt) {
    // Unlike the constructor, an invalid value stores the all-ones word (neither null nor
    // valid); callers rely on telling the two apart, so the asymmetry stays.
    if (odt.GetStatus() != COleDateTime::valid) {
        m_word = 0xFFFFFFFF;
        return *this;
    }
    *this = CDate(odt);
    return *this;
}

void CDate::FromScalar(LONG scalar) {
    int y, m, d;
    scalar2ymd(scalar, y, m, d);
    StoreFields(y, m, d);
}

LONG CDate::GetScalar() const { return ymd2scalar(GetYear(), GetMonth(), GetDay()); }

void CDate::SetToday() {
    struct tm fields {};
    if (qm::crt::GmTime64(qm::crt::Time64(), &fields))
        StoreFields(fields.tm_year + 1900, fields.tm_mon + 1, fields.tm_mday);
    else
        m_word = 0;
}

int CDate::GetDaysPerMonth() const { return dpm(GetYear(), GetMonth()); }

void CDate::SetYear(int year) { StoreFields(year, GetMonth(), GetDay()); }

void CDate::SetMonth(int m) {
    if (!CVASSERT(m >= 1 && m <= 12)) return;
    StoreFields(GetYear(), m, GetDay());
}

void CDate::SetDay(int d) {
    const int Year = GetYear(), Month = GetMonth();
    if (!CVASSERT(d <= CDate::dpm (Year, Month) && d >= 1)) return;
    StoreFields(Year, Month, d);
}

// ---------------------------------------------------------------------------------------------
// Predicates

bool CDate::IsValid() const {
    if (IsNull()) return false;
    int month = GetMonth(), day = GetDay();
    return month >= 1 && month <= 12 && day >= 1 && day <= dpm(GetYear(), month);
}

int CDate::InRange(CDate from, CDate to) const {
    if (IsNull()) return 0;
    return from <= *this && *this <= to;
}

bool CDate::operator==(const CTime& t) const {
    return GetYear() == t.GetYear() && GetMonth() == t.GetMonth() && GetDay() == t.GetDay();
}

// ---------------------------------------------------------------------------------------------
// Arithmetic

LONG CDate::operator-(const CDate& d) const { return Truncate32((std::int64_t)GetScalar() - d.GetScalar()); }

CDate CDate::operator+(int n) const {
    CDate r(*this);
    r.WalkDays(n);
    return r;
}

CDate CDate::operator-(int n) const {
    CDate r(*this);
    r.WalkDays(-(long long)n);
    return r;
}

CDate& CDate::operator+=(int n) {
    WalkDays(n);
    return *this;
}

CDate& CDate::operator-=(int n) {
    WalkDays(-(long long)n);
    return *this;
}

// The day walk: t = Day + n; while t is beyond the current month, take the month's days off
// and move to the next month (13 is January of the next year); while t is below 1, move to
// the previous month (0 is December of the previous year) and add its days. Taken literally
// that is one step per month (33,000 steps for a million days). The walk below gives the same
// result for every input, in a bounded number of steps: whole years are skipped with the
// closed-form day count of a run of years, and the month inside a year is found from the
// days-before-month table. Months outside 1..12 (which hold no days) are stepped through one
// at a time, as the 8-bit month field wraps, until the walk reaches a real month; the 16-bit
// year wraps as its field does. Like the literal walk, it leaves the shared February entry set
// for the year of the month it ends in.
void CDate::WalkDays(long long n) {
    int year = GetYear(), month = GetMonth();
    std::int64_t t = (std::int64_t)GetDay() + n;

    if (t >= 29) {
        while (month < 1 || month > 12) {  // a month of no days: always stepped over
            month = WrapMonth(month + 1);
            if (month == 13) { month = 1; year = WrapYear(year + 1); }
        }
        int leap = IsLeap(year);
        std::int64_t restOfYear = kDaysBefore[leap][13] - kDaysBefore[leap][month];
        if (t > restOfYear) {
            t -= restOfYear;
            year = WrapYear(year + 1);
            // Skip whole years while t is beyond the year; the count stops short of the
            // 16-bit wrap, which is crossed one year at a time.
            while (t > YearLength(year)) {
                std::int64_t room = 32767 - (std::int64_t)year;  // years before the wrap
                std::int64_t m = (t - 1) * 400 / 146097;
                if (m > room) m = room;
                while (m > 0 && DaysInYears(year, m) >= t) --m;
                while (m < room && DaysInYears(year, m + 1) < t) ++m;
                if (m > 0) {
                    t -= DaysInYears(year, m);
                    year = WrapYear(year + m);
                } else {
                    t -= YearLength(year);
                    year = WrapYear(year + 1);
                }
            }
            month = 1;
        }
        leap = IsLeap(year);
        int doy = (int)(t + kDaysBefore[leap][month]);
        month = MonthOfDayOfYear(doy, leap);
        t = doy - kDaysBefore[leap][month];
        days_per_mon[1] = leap ? 29 : 28;
    } else if (t < 1) {
        do {  // step back at least once, through months of no days, to a real month
            month = WrapMonth(month - 1);
            if (month == 0) { month = 12; year = WrapYear(year - 1); }
        } while (month < 1 || month > 12);
        int leap = IsLeap(year);
        // t is now counted from the start of the month after `month`.
        std::int64_t x = t + kDaysBefore[leap][month + 1];
        if (x < 1) {
            t = x;  // before 1 January of `year`
            while (t + YearLength(WrapYear(year - 1)) < 1) {
                std::int64_t room = (std::int64_t)year + 32768;  // years before the wrap
                std::int64_t u = -t;
                std::int64_t m = u * 400 / 146097;
                if (m > room) m = room;
                while (m > 0 && DaysInYears(year - m, m) > u) --m;
                while (m < room && DaysInYears(year - m - 1, m + 1) <= u) ++m;
                if (m > 0) {
                    t += DaysInYears(year - m, m);
                    year = WrapYear(year - m);
                } else {
                    year = WrapYear(year - 1);
                    t += YearLength(year);
                }
            }
            year = WrapYear(year - 1);
            leap = IsLeap(year);
            x = t + kDaysBefore[leap][13];
        }
        month = MonthOfDayOfYear((int)x, leap);
        t = x - kDaysBefore[leap][month];
        days_per_mon[1] = leap ? 29 : 28;
    }
    StoreFields(year, month, (int)t);
}

CDate& CDate::operator++() {
    int year = GetYear(), month = GetMonth(), day = GetDay();
    if (day < 28 || day != dpm(year, month)) {
        StoreFields(year, month, day + 1);
        return *this;
    }
    month = WrapMonth(month + 1);
    if (month == 13) { month = 1; year = WrapYear(year + 1); }
    StoreFields(year, month, 1);
    return *this;
}

CDate CDate::operator++(int) {
    CDate old(*this);
    ++*this;
    return old;
}

CDate& CDate::operator--() {
    int year = GetYear(), month = GetMonth(), day = GetDay();
    if (day != 1) {
        StoreFields(year, month, day - 1);
        return *this;
    }
    month = WrapMonth(month - 1);
    if (month == 0) { month = 12; year = WrapYear(year - 1); }
    StoreFields(year, month, dpm(year, month));
    return *this;
}

CDate CDate::operator--(int) {
    CDate old(*this);
    --*this;
    return old;
}

void CDate::AddMonth(int n) {
    std::int64_t m = (std::int64_t)GetMonth() + n;
    int year = GetYear();
    if (m > 12) {
        year = WrapYear(year + (m - 1) / 12);
        m = (m - 1) % 12 + 1;
    }
    // Only a backward shift past January lands here: going back across a year is not
    // supported, so the date is left as it is. The day is never clamped (31 January plus one
    // month is the invalid 31 February); callers check IsValid or clamp themselves.
    if (!CVASSERT(m >= 1 && m <= 12)) return;
    StoreFields(year, (int)m, GetDay());
}

int CDate::GetDayOfWeek() const { return GetScalar() % 7 + 1; }

// Week one is the week holding 1 January (weekRule 0 or any other value), the first week with
// at least four days of the year (1) or the first full week (2). 1 January's weekday is taken
// from Sunday whatever firstDay is, while the trailing-week test counts the date's weekday
// from firstDay: exact for weeks that start on Sunday, and kept as it is for the others.
int CDate::GetWeekNumber(int weekRule, int firstDay) const {
    int year = GetYear();
    std::int64_t jan1 = (std::int64_t)y2d(Truncate32((std::int64_t)year - 1)) + 1;
    std::int64_t s = GetScalar();
    std::int64_t doy = s - jan1;
    std::int64_t j = jan1 % 7;
    std::int64_t r = Truncate32(s - firstDay) % 7;
    int k = weekRule == 1 ? 4 : weekRule == 2 ? 7 : 1;
    if (doy < 7 - j && j > 7 - k) return CDate(WrapYear(year - 1), 12, 31).GetWeekNumber(weekRule, firstDay);
    if ((YearLength(year) - 1 - doy) < (7 - k) - r) return 1;
    std::int64_t w = (j + doy) / 7 + 1;
    if (j > 7 - k) --w;
    return Truncate32(w);
}

CDate::operator CTime() const {
    if (IsNull()) return CTime(0);
    // CTime's own checks fail with the framework's general failure for a year below 1900, a
    // month outside 1..12 or a day outside 1..31, and with its invalid-argument error when the
    // runtime cannot convert the date.
    return CTime(GetYear(), GetMonth(), GetDay(), 0, 0, 0, -1);
}

CTime CDate::operator&(const CTime& t) const {
    struct tm fields {};
    int hour = -1, minute = -1;
    if (t.GetLocalTm(&fields)) {
        hour = fields.tm_hour;
        minute = fields.tm_min;
    }
    return CTime(GetYear(), GetMonth(), GetDay(), hour, minute, 0, -1);
}

CTime CDate::operator&(const CTimeSpan& s) const {
    int hour = (int)(s.GetTotalHours() % 24), minute = (int)(s.GetTotalMinutes() % 60);
    return CTime(GetYear(), GetMonth(), GetDay(), hour, minute, 0, -1);
}

CDate::operator COleDateTime() const {
    if (IsNull()) return COleDateTime(0.0);
    // COleDateTime marks the value invalid when the fields are out of range or do not
    // round-trip to the same calendar fields.
    return COleDateTime(GetYear(), GetMonth(), GetDay(), 0, 0, 0);
}
