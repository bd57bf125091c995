// System clock and high-resolution counter.
#pragma once

#include <cstdint>

namespace qm::platform {

// The system clock as 100-ns ticks since 1 January 1601 UTC (the file-time scale).
std::uint64_t CurrentFileTime();
// The high-resolution performance counter and its frequency in counts per second.
std::int64_t PerformanceCounter();
std::int64_t PerformanceFrequency();

}  // namespace qm::platform
