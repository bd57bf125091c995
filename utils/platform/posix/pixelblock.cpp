// Large picture blocks aligned to 2 MiB and marked for transparent huge pages (the kernel's
// default policy only backs regions that ask for them).
#include "utils/platform/pixelblock.h"

#include <sys/mman.h>
#include <unistd.h>

#include <cstdint>
#include <cstdlib>

namespace qm::platform {

void* AllocatePixelBlock(std::size_t size) {
    const std::size_t kHuge = std::size_t(2) << 20;
    if (size < 2 * kHuge) return std::malloc(size ? size : 1);
    void* p = nullptr;
    if (posix_memalign(&p, kHuge, size) != 0) return nullptr;
#ifdef MADV_HUGEPAGE
    madvise(p, size, MADV_HUGEPAGE);  // only advice: the block is usable either way
#endif
    return p;
}

void ForgetBlockContents(void* block, std::size_t size) {
#ifdef MADV_FREE
    // Whole pages only: the block's first and last pages may hold other allocations.
    const std::uintptr_t kPage = (std::uintptr_t)sysconf(_SC_PAGESIZE);
    std::uintptr_t first = ((std::uintptr_t)block + kPage - 1) & ~(kPage - 1);
    std::uintptr_t end = ((std::uintptr_t)block + size) & ~(kPage - 1);
    if (block && end > first) madvise((void*)first, (std::size_t)(end - first), MADV_FREE);
#else
    (void)block;
    (void)size;
#endif
}

void PrepareLargeBlock(void* block, std::size_t size) {
#ifdef MADV_HUGEPAGE
    const std::uintptr_t kHuge = std::uintptr_t(2) << 20;
    std::uintptr_t from = ((std::uintptr_t)block + kHuge - 1) & ~(kHuge - 1);
    std::uintptr_t to = ((std::uintptr_t)block + size) & ~(kHuge - 1);
    if (block && to > from) madvise((void*)from, (std::size_t)(to - from), MADV_HUGEPAGE);
#endif
#ifdef MADV_POPULATE_WRITE
    // The pages the block will be written to, made present by one call instead of a fault
    // each (kernels without the request refuse it, and the faults happen as before).
    const std::uintptr_t kPage = 4096;
    std::uintptr_t first = ((std::uintptr_t)block + kPage - 1) & ~(kPage - 1);
    std::uintptr_t end = ((std::uintptr_t)block + size) & ~(kPage - 1);
    if (block && end > first) madvise((void*)first, (std::size_t)(end - first), MADV_POPULATE_WRITE);
#endif
#if !defined(MADV_HUGEPAGE) && !defined(MADV_POPULATE_WRITE)
    (void)block;
    (void)size;
#endif
}

}  // namespace qm::platform
