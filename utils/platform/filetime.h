// File times (100-ns ticks since 1 January 1601 UTC) moved to local time and to calendar
// fields, the way the operating system does it.
//
// Local file times follow the system's rule: the bias in effect *now* (standard or daylight)
// is applied to every instant, whatever the season of the instant itself. A July instant read
// in January therefore shows the standard-time hour. Both backends keep this rule so that the
// same stored instant gives the same local fields on every target.
#pragma once

#include <cstdint>

#include "utils/framework/wintypes.h"

namespace qm::platform {

// UTC file time -> local file time (FileTimeToLocalFileTime); false when the system refuses.
bool UtcToLocalFileTime(std::uint64_t utc, std::uint64_t& local);
// Local file time -> UTC file time (LocalFileTimeToFileTime).
bool LocalToUtcFileTime(std::uint64_t local, std::uint64_t& utc);
// File time -> calendar fields with weekday and milliseconds (FileTimeToSystemTime); false for
// a value with the top bit set.
bool FileTimeToFields(std::uint64_t fileTime, SYSTEMTIME& fields);
// Calendar fields -> file time (SystemTimeToFileTime); the weekday is ignored; false when a
// field is out of range (year 1601..30827, month 1..12, day within the month, hour below 24,
// minute and second below 60, milliseconds below 1000).
bool FieldsToFileTime(const SYSTEMTIME& fields, std::uint64_t& fileTime);

}  // namespace qm::platform
