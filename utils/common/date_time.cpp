#include "utils/common/date_time.h"

#include <cmath>
#include <climits>

#include "utils/framework/civil.h"
#include "utils/framework/exceptions.h"
#include "utils/platform/clock.h"
#include "utils/platform/filetime.h"

#define QM_SOURCE_MODULE "Common\\date"

TimeUTC GetCurrentTimeUTC() { return qm::platform::CurrentFileTime(); }

TimeUnix GetCurrentTimeUnix() { return TimeUTC2TimeUnix(GetCurrentTimeUTC()); }

TimeUnix TimeUTC2TimeUnix(TimeUTC t) { return t / 10 - kTimeUnixEpochOffset; }

TimeUTC TimeUnix2TimeUTC(TimeUnix u) { return (u + kTimeUnixEpochOffset) * 10; }

TimeUTC MilliSeconds2TimeUTC(__int64 ms) { return (TimeUTC)ms * 10000ULL; }

__int64 TimeUTC2MilliSeconds(TimeUTC t) { return (__int64)(t / 10000ULL); }

double TimeUTC2Seconds(TimeUTC t) { return (double)t / 10000000.0; }

COleDateTime TimeUTC2ODT(TimeUTC t) {
    COleDateTime result;
    TimeUTC local = 0;
    SYSTEMTIME fields{};
    if (!qm::platform::UtcToLocalFileTime(t, local) || !qm::platform::FileTimeToFields(local, fields)) {
        result.SetStatus(COleDateTime::invalid);
        return result;
    }
    // The fields go through the automation date's own range and round-trip check: a year past
    // 9999 (file times reach 30828) leaves 0.0 with status invalid. Milliseconds are dropped.
    result.SetDateTime(fields.wYear, fields.wMonth, fields.wDay, fields.wHour, fields.wMinute, fields.wSecond);
    return result;
}

TimeUTC ODT2TimeUTC(const COleDateTime& odt) {
    // No step reports its failure; a value that cannot be converted gives 0 rather than
    // whatever an unfilled field structure would have produced.
    SYSTEMTIME fields{};
    TimeUTC local = 0, utc = 0;
    if (!odt.GetAsSystemTime(fields)) return 0;
    fields.wMilliseconds = 0;
    if (!qm::platform::FieldsToFileTime(fields, local)) return 0;
    if (!qm::platform::LocalToUtcFileTime(local, utc)) return 0;
    return utc;
}

CDate Today() {
    // CDate from a CTime is the null date for the zero time and for a time the runtime cannot
    // break down, otherwise the local calendar date.
    return CDate(CTime::GetCurrentTime());
}

CTime JoinDateAndTime(const CDate& date, const CTime& time) { return date & time; }

namespace {

// Weekday of a proleptic Gregorian date, 1 = Sunday ... 7 = Saturday, in 64-bit arithmetic so
// that any int year is safe. The weekday of the 1st at local midnight is the calendar weekday:
// the time zone cannot move local midnight to another date.
int WeekdayOf(long long year, int month, int day) {
    return qm::civil::WeekdayFromDays(qm::civil::DaysFromCivil(year, month, day)) + 1;
}

}  // namespace

int DayOfNthDOW(int year, int month, int n, int dayOfWeek) {
    if (year < 1900 || month < 1 || month > 12) AtlThrow(E_FAIL);
    // 9 and 10 both begin at the fifth occurrence and fall back from there.
    long long k = (n == 9 || n == 10) ? 5 : n;
    const long long limit = n >= 5 ? CDate::dpm(year, month) : 0;
    const long long w1 = WeekdayOf(year, month, 1);
    // The arithmetic is 64-bit so that any weekday or n is safe; results for weekdays 1..7 and
    // n in 1..5, 9, 10 are those of the int computation. Both fallbacks lower k, so the loop
    // ends: the fifth occurrence falls back to the fourth once, and for n = 10 the test value
    // drops by 7 on every pass while the limit (a month length) stays fixed.
    for (;;) {
        long long day = (long long)dayOfWeek + 1 + 7 * k - w1;
        if (w1 <= dayOfWeek) day -= 7;
        if (k == 5 && day > limit) {
            k = 4;
            continue;
        }
        // For n = 10 the test subtracts the weekday number from the day; kept exactly so.
        if (n == 10 && day - dayOfWeek + 7 > limit) {
            --k;
            continue;
        }
        return (int)day;
    }
}

double GetTimePrecision() {
    return (double)qm::platform::PerformanceCounter() / (double)qm::platform::PerformanceFrequency();
}

namespace {
bool g_spanStarted = false;
double g_spanReading = 0.0;
}  // namespace

int GetSpan(bool reset) {
    if (!g_spanStarted) {
        g_spanStarted = true;
        g_spanReading = GetTimePrecision();
    }
    double now = GetTimePrecision();
    if (reset) {
        g_spanReading = now;
        return 0;
    }
    double micro = (now - g_spanReading) * 1000000.0;
    g_spanReading = now;
    // Spans beyond what an int holds (about 35 minutes) saturate instead of converting out of
    // range, which the language leaves undefined.
    if (!(micro < (double)INT_MAX)) return micro > 0 ? INT_MAX : 0;
    if (micro < (double)INT_MIN) return INT_MIN;
    return (int)micro;
}
