// The proleptic Gregorian calendar as day counts: the one conversion between calendar fields
// and a linear day number that the framework, the platform backends and the time scales share.
// All arithmetic is 64-bit, so any year of an int is safe.
#pragma once

#include <cstdint>

namespace qm::civil {

inline bool IsLeapYear(std::int64_t y) { return (y % 4 == 0 && y % 100 != 0) || y % 400 == 0; }

// Days in month m (1..12) of year y.
inline int DaysInMonth(std::int64_t y, int m) {
    static const int kDays[12] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    return m == 2 && IsLeapYear(y) ? 29 : kDays[m - 1];
}

// Days from 1 January 1970 to the given date (negative before it). Counts 400-year cycles that
// start on 1 March, so February's length needs no special case.
inline std::int64_t DaysFromCivil(std::int64_t y, int m, int d) {
    y -= m <= 2;
    std::int64_t era = (y >= 0 ? y : y - 399) / 400;
    std::int64_t yoe = y - era * 400;
    std::int64_t doy = (153 * (m + (m > 2 ? -3 : 9)) + 2) / 5 + d - 1;
    std::int64_t doe = yoe * 365 + yoe / 4 - yoe / 100 + doy;
    return era * 146097 + doe - 719468;
}

// The inverse of DaysFromCivil.
inline void CivilFromDays(std::int64_t days, std::int64_t& y, int& m, int& d) {
    std::int64_t z = days + 719468;
    std::int64_t era = (z >= 0 ? z : z - 146096) / 146097;
    std::int64_t doe = z - era * 146097;
    std::int64_t yoe = (doe - doe / 1460 + doe / 36524 - doe / 146096) / 365;
    std::int64_t doy = doe - (365 * yoe + yoe / 4 - yoe / 100);
    std::int64_t mp = (5 * doy + 2) / 153;
    d = (int)(doy - (153 * mp + 2) / 5 + 1);
    m = (int)(mp < 10 ? mp + 3 : mp - 9);
    y = yoe + era * 400 + (m <= 2);
}

// Weekday of a day count from 1970: 0 = Sunday ... 6 = Saturday (1 January 1970 was a Thursday).
inline int WeekdayFromDays(std::int64_t days) {
    std::int64_t w = (days + 4) % 7;
    return (int)(w < 0 ? w + 7 : w);
}

}  // namespace qm::civil
