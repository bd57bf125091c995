// Helpers between the framework's CTime (seconds since 1970, shown in local time) and
// COleDateTime (automation date in local time).
#pragma once

#include "utils/framework/COleDateTime.h"
#include "utils/framework/CTime.h"
#include "utils/framework/export.h"

MFCQMUTILS_API CTime NowTime();
// The current local time as an automation date in whole seconds; invalid if it cannot be
// converted.
MFCQMUTILS_API COleDateTime NowTimeODT();

// The local calendar fields of a time as an automation date; status invalid when the time
// cannot be broken down. TimeToOle also reports "bTimeOk" then.
MFCQMUTILS_API COleDateTime Time2OleDateTime(const CTime& time);
MFCQMUTILS_API COleDateTime TimeToOle(const CTime& time);

// The time at the value's local calendar fields; the zero time when the status is not valid,
// the year lies outside 1971..2999, or the month or day is out of range.
MFCQMUTILS_API CTime OleDateTime2Time(const COleDateTime& odt);
// Reports "bTimeOk" when the value is invalid or cannot be broken down; the time of its
// fields for a year from 1900 on, else the zero time.
MFCQMUTILS_API CTime OleToTime(const COleDateTime& odt);

// The date part at 00:00:00; status invalid when the input's is.
MFCQMUTILS_API COleDateTime ExtractDate(const COleDateTime& odt);
// Local midnight of the time's local date; the zero time when the time cannot be broken down.
MFCQMUTILS_API CTime ExtractDate(const CTime& time);
// The time of day carried on the fixed anchor date 13 July 1994 (local hour and minute,
// seconds 0).
MFCQMUTILS_API CTime ExtractTOD(const CTime& time);

// True when the time can be broken down into local calendar fields.
MFCQMUTILS_API bool IsTimeValid(const CTime& time);
