#include "utils/platform/filetime.h"

#include <time.h>

#include "utils/framework/civil.h"

namespace qm::platform {

namespace {

constexpr std::uint64_t kTicksPerSecond = 10000000ULL;
constexpr std::uint64_t kTicksPerDay = 86400ULL * kTicksPerSecond;
// Days from 1 January 1970 back to 1 January 1601, the start of the file-time scale.
constexpr std::int64_t kDays1601 = -134774;
constexpr int kMaxYear = 30827;

// The offset of local time from UTC in seconds, for the current moment, by the C runtime's
// rules for TZ (the same instant-independent bias the Windows calls apply).
std::int64_t CurrentOffsetSeconds() {
    time_t now = time(nullptr);
    struct tm local {};
    if (!localtime_r(&now, &local)) return 0;
    return (std::int64_t)local.tm_gmtoff;
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
    std::int64_t year;
    int month, day;
    civil::CivilFromDays((std::int64_t)days + kDays1601, year, month, day);
    fields.wYear = (WORD)year;
    fields.wMonth = (WORD)month;
    fields.wDay = (WORD)day;
    fields.wDayOfWeek = (WORD)civil::WeekdayFromDays((std::int64_t)days + kDays1601);
    fields.wHour = (WORD)(rest / (3600 * kTicksPerSecond));
    fields.wMinute = (WORD)(rest / (60 * kTicksPerSecond) % 60);
    fields.wSecond = (WORD)(rest / kTicksPerSecond % 60);
    fields.wMilliseconds = (WORD)(rest / 10000 % 1000);
    return true;
}

bool FieldsToFileTime(const SYSTEMTIME& f, std::uint64_t& fileTime) {
    if (f.wYear < 1601 || f.wYear > kMaxYear || f.wMonth < 1 || f.wMonth > 12) return false;
    if (f.wDay < 1 || f.wDay > civil::DaysInMonth(f.wYear, f.wMonth)) return false;
    if (f.wHour > 23 || f.wMinute > 59 || f.wSecond > 59 || f.wMilliseconds > 999) return false;
    std::int64_t days = civil::DaysFromCivil(f.wYear, f.wMonth, f.wDay) - kDays1601;
    fileTime = (std::uint64_t)days * kTicksPerDay +
               ((std::uint64_t)f.wHour * 3600 + f.wMinute * 60 + f.wSecond) * kTicksPerSecond +
               (std::uint64_t)f.wMilliseconds * 10000;
    return true;
}

}  // namespace qm::platform
