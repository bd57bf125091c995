// An independent calendar: days counted year by year and month by month from 1 January 1601.
#pragma once

#include <cstdint>
#include <ctime>

#include "utils/framework/CTime.h"
#include "utils/platform/crt.h"

namespace tsoracle {

inline bool Leap(long long y) { return (y % 4 == 0 && y % 100 != 0) || y % 400 == 0; }

inline int MonthDays(long long y, int m) {
    switch (m) {
        case 2: return Leap(y) ? 29 : 28;
        case 4: case 6: case 9: case 11: return 30;
        default: return 31;
    }
}

// Days from 1 January 1601 to the date (negative before it).
inline long long DaysSince1601(int y, int m, int d) {
    long long n = 0;
    for (int yy = 1601; yy < y; ++yy) n += Leap(yy) ? 366 : 365;
    for (int yy = y; yy < 1601; ++yy) n -= Leap(yy) ? 366 : 365;
    for (int mm = 1; mm < m; ++mm) n += MonthDays(y, mm);
    return n + d - 1;
}

inline long long SecondsSince1601(int y, int mo, int d, int h, int mi, int s) {
    return DaysSince1601(y, mo, d) * 86400 + h * 3600 + mi * 60 + s;
}

constexpr long long kSeconds1601To1970 = 11644473600LL;

// Seconds since 1970 of a UTC calendar instant.
inline long long UnixSeconds(int y, int mo, int d, int h, int mi, int s) {
    return SecondsSince1601(y, mo, d, h, mi, s) - kSeconds1601To1970;
}

// TimeUTC ticks of a UTC calendar instant.
inline std::uint64_t Ticks(int y, int mo, int d, int h = 0, int mi = 0, int s = 0) {
    return (std::uint64_t)SecondsSince1601(y, mo, d, h, mi, s) * 10000000ULL;
}

// Whole days since 30 December 1899, the time of day subtracted before it.
inline double OleDate(int y, int mo, int d, int h = 0, int mi = 0, int s = 0) {
    long long days = DaysSince1601(y, mo, d) - DaysSince1601(1899, 12, 30);
    double tod = (h * 3600 + mi * 60 + s) / 86400.0;
    return (double)days + (days >= 0 ? tod : -tod);
}

// Weekday 1 = Sunday ... 7 = Saturday (1 January 1601 was a Monday).
inline int Weekday(int y, int m, int d) { return (int)((DaysSince1601(y, m, d) + 1) % 7) + 1; }

// The local offset from UTC in seconds at this moment, by the C runtime.
inline long long CurrentOffsetSeconds() {
    __int64 now = qm::crt::Time64();
    struct tm l {}, g {};
    qm::crt::LocalTime64(now, &l);
    qm::crt::GmTime64(now, &g);
    return SecondsSince1601(l.tm_year + 1900, l.tm_mon + 1, l.tm_mday, l.tm_hour, l.tm_min, l.tm_sec) -
           SecondsSince1601(g.tm_year + 1900, g.tm_mon + 1, g.tm_mday, g.tm_hour, g.tm_min, g.tm_sec);
}

}  // namespace tsoracle
