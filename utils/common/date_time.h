// Time scales: instants as 64-bit UTC ticks (100 ns since 1 January 1601 UTC, the file-time
// scale, "TimeUTC"), as 64-bit Unix microseconds (since 1 January 1970 UTC, "TimeUnix"), as
// milliseconds and seconds on the TimeUTC epoch, and as automation dates in local time; plus
// the n-th weekday of a month, today's date and a high-resolution stopwatch.
//
// The CTime / COleDateTime helpers (NowTime, Time2OleDateTime, ExtractDate, ...) are declared
// in utils_time.h.
#pragma once

#include "utils/common/date.h"
#include "utils/framework/COleDateTime.h"
#include "utils/framework/CTime.h"
#include "utils/framework/wintypes.h"

typedef ULONGLONG TimeUTC;   // 100-ns ticks since 1 January 1601 00:00 UTC
typedef ULONGLONG TimeUnix;  // microseconds since 1 January 1970 00:00 UTC

// Microseconds between 1 January 1601 and 1 January 1970.
constexpr ULONGLONG kTimeUnixEpochOffset = 11644473600000000ULL;

MFCQMUTILS_API TimeUTC GetCurrentTimeUTC();
MFCQMUTILS_API TimeUnix GetCurrentTimeUnix();

// The scale arithmetic is unsigned 64-bit and wraps modulo 2^64 outside the range where both
// scales can hold the instant (a TimeUTC before 1970 has no TimeUnix; TimeUnix2TimeUTC of a
// value above about 1.8e18 overflows).
MFCQMUTILS_API TimeUnix TimeUTC2TimeUnix(TimeUTC t);
MFCQMUTILS_API TimeUTC TimeUnix2TimeUTC(TimeUnix u);
// ms * 10000 in wrapping unsigned arithmetic: a negative count gives a huge TimeUTC.
MFCQMUTILS_API TimeUTC MilliSeconds2TimeUTC(__int64 ms);
MFCQMUTILS_API __int64 TimeUTC2MilliSeconds(TimeUTC t);
MFCQMUTILS_API double TimeUTC2Seconds(TimeUTC t);

// TimeUTC <-> automation date in local time (see utils/platform/filetime.h for which bias
// the local conversion applies). TimeUTC2ODT reports failure only through the status;
// ODT2TimeUTC returns 0 when the value is invalid or cannot be converted.
MFCQMUTILS_API COleDateTime TimeUTC2ODT(TimeUTC t);
MFCQMUTILS_API TimeUTC ODT2TimeUTC(const COleDateTime& odt);

// The current local date; the null date if the clock reads 0 or cannot be broken down.
MFCQMUTILS_API CDate Today();
// Local time at the date with the time's local hour and minute, seconds 0 (as CDate & CTime).
MFCQMUTILS_API CTime JoinDateAndTime(const CDate& date, const CTime& time);

// Day of month of the n-th given weekday (1 = Sunday ... 7 = Saturday) of a month; n is 1..5,
// or 9 / 10 for the end-of-month selections. Throws the framework's general failure for a
// year below 1900 or a month outside 1..12.
MFCQMUTILS_API int DayOfNthDOW(int year, int month, int n, int dayOfWeek);

// The performance counter in seconds.
MFCQMUTILS_API double GetTimePrecision();
// Microseconds since the previous call (0 and a fresh start when reset is true). One
// module-wide stopwatch, not guarded: keep it on one thread.
MFCQMUTILS_API int GetSpan(bool reset);
