#include "utils/platform/heap.h"

#include <atomic>

namespace qm::platform {

namespace {
std::atomic<size_t> g_ceiling{(size_t)-1};
}

size_t SetHeapRequestCeiling(size_t ceiling) { return g_ceiling.exchange(ceiling); }

size_t CeiledHeapRequest(size_t size) {
    // Not quite SIZE_MAX: some heaps round a request up before checking it.
    return size > g_ceiling.load() ? (size_t)-1 - 0xFFFF : size;
}

}  // namespace qm::platform
