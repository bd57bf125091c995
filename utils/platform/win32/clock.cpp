#include "utils/platform/clock.h"

#include "utils/framework/wintypes.h"

namespace qm::platform {

std::uint64_t CurrentFileTime() {
    FILETIME ft{};
    GetSystemTimeAsFileTime(&ft);
    return ((std::uint64_t)ft.dwHighDateTime << 32) | ft.dwLowDateTime;
}

std::int64_t PerformanceCounter() {
    LARGE_INTEGER v{};
    QueryPerformanceCounter(&v);
    return v.QuadPart;
}

std::int64_t PerformanceFrequency() {
    LARGE_INTEGER v{};
    QueryPerformanceFrequency(&v);
    return v.QuadPart ? v.QuadPart : 1;
}

}  // namespace qm::platform
