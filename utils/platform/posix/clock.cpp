#include "utils/platform/clock.h"

#include <time.h>

namespace qm::platform {

namespace {
// 100-ns ticks between 1601-01-01 and 1970-01-01.
constexpr std::uint64_t kUnixEpochTicks = 116444736000000000ULL;
}

std::uint64_t CurrentFileTime() {
    timespec ts{};
    clock_gettime(CLOCK_REALTIME, &ts);
    return kUnixEpochTicks + (std::uint64_t)ts.tv_sec * 10000000ULL + (std::uint64_t)ts.tv_nsec / 100;
}

std::int64_t PerformanceCounter() {
    timespec ts{};
    clock_gettime(CLOCK_MONOTONIC, &ts);
    return (std::int64_t)ts.tv_sec * 1000000000LL + ts.tv_nsec;
}

std::int64_t PerformanceFrequency() { return 1000000000LL; }

}  // namespace qm::platform
