#include "utils/platform/filetime.h"

#include <time.h>

namespace qm::platform {

namespace {

constexpr std::uint64_t kTicksPerSecond = 10000000ULL;
constexpr std::uint64_t kTicksPerDay = 86400ULL * kTicksPerSecond;
// Days from 1 January 1601 to 1 March 1600, the start of the 400-year cycle used below.
constexpr std::int64_t kDaysFromCycleStartTo1601 = 306;
constexpr int kMaxYear = 30827;

// The offset of local time from UTC in seconds, for the current moment, by the C runtime's
// rules for TZ (the same instant-independent bias the Windows calls apply).
std::int64_t CurrentOffsetSeconds() {
    time_t now = time(nullptr);
    struct tm local {};
    if (!localtime_r(&now, &local)) return 0;
    return (std::int64_t)local.tm_gmtoff;
}

bool IsLeap(std::int64_t y) { return (y % 4 == 0 && y % 100 != 0) || y % 400 == 0; }

int DaysInMonth(std::int64_t y, int m) {
    static const int kDays[12] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    return m == 2 && IsLeap(y) ? 29 : kDays[m - 1];
}

}  // namespace

// The offset is applied with unsigned arithmetic, which wraps by definition; a wrapped result
// has its top bit set and FileTimeToFields then refuses it, as the system does.
bool UtcToLocalFileTime(std::uint64_t utc, std::uint64_t& local) {
    local = utc + (std::uint64_t)CurrentOffsetSeconds() * kTicksPerSecond;
    return true;
}

bool LocalToUtcFileTime(std::uint64_t local, std::uint64_t& utc) {
    utc = local - (std::uint64_t)CurrentOffsetSeconds() * kTicksPerSecond;
    return true;
}

bool FileTimeToFields(std::uint64_t fileTime, SYSTEMTIME& fields) {
    if (fileTime >> 63) return false;
    std::uint64_t days = fileTime / kTicksPerDay;
    std::uint64_t rest = fileTime % kTicksPerDay;
    // Civil date from a day count in 400-year cycles starting on 1 March.
    std::int64_t z = (std::int64_t)days + kDaysFromCycleStartTo1601;
    std::int64_t era = z / 146097;
    std::int64_t doe = z - era * 146097;
    std::int64_t yoe = (doe - doe / 1460 + doe / 36524 - doe / 146096) / 365;
    std::int64_t doy = doe - (365 * yoe + yoe / 4 - yoe / 100);
    std::int64_t mp = (5 * doy + 2) / 153;
    int day = (int)(doy - (153 * mp + 2) / 5 + 1);
    int month = (int)(mp < 10 ? mp + 3 : mp - 9);
    std::int64_t year = 1600 + era * 400 + yoe + (month <= 2);
    fields.wYear = (WORD)year;
    fields.wMonth = (WORD)month;
    fields.wDay = (WORD)day;
    fields.wDayOfWeek = (WORD)((days + 1) % 7);  // 1 January 1601 was a Monday
    fields.wHour = (WORD)(rest / (3600 * kTicksPerSecond));
    fields.wMinute = (WORD)(rest / (60 * kTicksPerSecond) % 60);
    fields.wSecond = (WORD)(rest / kTicksPerSecond % 60);
    fields.wMilliseconds = (WORD)(rest / 10000 % 1000);
    return true;
}

bool FieldsToFileTime(const SYSTEMTIME& f, std::uint64_t& fileTime) {
    if (f.wYear < 1601 || f.wYear > kMaxYear || f.wMonth < 1 || f.wMonth > 12) return false;
    if (f.wDay < 1 || f.wDay > DaysInMonth(f.wYear, f.wMonth)) return false;
    if (f.wHour > 23 || f.wMinute > 59 || f.wSecond > 59 || f.wMilliseconds > 999) return false;
    std::int64_t y = (std::int64_t)f.wYear - (f.wMonth <= 2);
    std::int64_t era = (y - 1600) / 400;
    std::int64_t yoe = y - 1600 - era * 400;
    std::int64_t doy = (153 * (f.wMonth + (f.wMonth > 2 ? -3 : 9)) + 2) / 5 + f.wDay - 1;
    std::int64_t doe = yoe * 365 + yoe / 4 - yoe / 100 + doy;
    std::int64_t days = era * 146097 + doe - kDaysFromCycleStartTo1601;
    fileTime = (std::uint64_t)days * kTicksPerDay +
               ((std::uint64_t)f.wHour * 3600 + f.wMinute * 60 + f.wSecond) * kTicksPerSecond +
               (std::uint64_t)f.wMilliseconds * 10000;
    return true;
}

}  // namespace qm::platform
