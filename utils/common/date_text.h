// Date and time text. CDate::Format (declared in date.h) renders a date through a small
// format language of its own; WinDateTime caches the user's regional date and time pictures
// and turns dates and times into text and back with them.
//
// WinDateTime keeps its settings in static members that every Initialize() rewrites, and the
// abbreviated month names used for parsing are loaded once on first use: date and time text
// belongs on one thread (the host's user-interface thread).
#pragma once

#include "utils/common/date.h"
#include "utils/framework/CString.h"
#include "utils/framework/CTime.h"
#include "utils/framework/export.h"

class MFCQMUTILS_API WinDateTime {
public:
    // Locale settings, filled by Initialize(). Before the first call sShortYear and iTLZero
    // are 1 and everything else is 0 or empty.
    static int smdyFormat;          // short-date order code: 0 = m/d/y, 1 = d/m/y, 2 = y/m/d
    static char DateSeparator;      // first character of the date separator
    static char TimeSeparator;      // first character of the time separator
    static CString descShortDate;   // the short-date picture, lower-cased (what ScanDate walks)
    static CString sdateFormat;     // printf format of the short form (see Initialize)
    static CString ldateFormat;     // CDate::Format text of the long form with number slots
    static int lmdyFormat;          // long-form order: 0 = year first, 1 = month first, 2 = day
    static int charMonth;           // 1 when the short picture shows the month by name
    static int sShortYear;          // 1 when the short picture has no four-digit year
    static int lShortYear;          // 1 when the long picture's year is two digits ("yy")
    static int incMonth;            // 1 when the long form shows the month as a number
    static int TimeFormat;          // 0 = 12-hour clock, otherwise 24-hour clock
    static int iTLZero;             // 0 = no leading zero on the hour
    static CString sAMIndicator;    // morning designator
    static CString sPMIndicator;    // afternoon designator; empty for the 24-hour clock
    static CString timeFormat;      // strftime text of the time: hour, separator, minute

    // Reads the user-default locale and fills the settings above.
    static void Initialize();

    // The time of day of t (local time) in the locale's short time form.
    static CString GetTime(CTime t);

    // The date in the locale's short form (longForm 0) or long form; a null date stands for
    // today. The result replaces out.
    static void GetDate(const CDate& date, CString& out, int longForm);
    static CString GetDate(const CDate& date, int longForm = 0);

    // Reads a date typed in the short-date picture at p and leaves p after what it read; the
    // null date when the text is not such a date. Relies on an earlier Initialize().
    static CDate ScanDate(const char*& p);

    // Pieces of the long date format, taken from the lower-cased long picture at ptr; each
    // consumes the run of its letter. A number slot is byte 0x02 followed by "d" or "02d".
    static CString ExtractWeekDay(char*& ptr);
    static CString ExtractMonth(char*& ptr);
    static CString ExtractDayOfMonth(char*& ptr);
    static CString ExtractYear(char*& ptr);
    static CString ExtractSeparator(char*& ptr);

protected:
    // 1..12 when the first three characters of s name a month by the locale's abbreviated
    // month names (ignoring case), else 0.
    static int GetMonthFromString(const char* s);
};
