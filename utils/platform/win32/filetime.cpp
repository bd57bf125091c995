#include "utils/platform/filetime.h"

namespace qm::platform {

namespace {
FILETIME Split(std::uint64_t v) { return FILETIME{(DWORD)v, (DWORD)(v >> 32)}; }
std::uint64_t Join(const FILETIME& ft) { return ((std::uint64_t)ft.dwHighDateTime << 32) | ft.dwLowDateTime; }
}  // namespace

bool UtcToLocalFileTime(std::uint64_t utc, std::uint64_t& local) {
    FILETIME in = Split(utc), out{};
    if (!FileTimeToLocalFileTime(&in, &out)) return false;
    local = Join(out);
    return true;
}

bool LocalToUtcFileTime(std::uint64_t local, std::uint64_t& utc) {
    FILETIME in = Split(local), out{};
    if (!LocalFileTimeToFileTime(&in, &out)) return false;
    utc = Join(out);
    return true;
}

bool FileTimeToFields(std::uint64_t fileTime, SYSTEMTIME& fields) {
    FILETIME in = Split(fileTime);
    return FileTimeToSystemTime(&in, &fields) != FALSE;
}

bool FieldsToFileTime(const SYSTEMTIME& fields, std::uint64_t& fileTime) {
    FILETIME out{};
    if (!SystemTimeToFileTime(&fields, &out)) return false;
    fileTime = Join(out);
    return true;
}

}  // namespace qm::platform
