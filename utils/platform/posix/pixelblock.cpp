// Large picture blocks aligned to 2 MiB and marked for transparent huge pages (the kernel's
// default policy only backs regions that ask for them).
#include "utils/platform/pixelblock.h"

#include <sys/mman.h>

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

void PrepareLargeBlock(void* block, std::size_t size) {
#ifdef MADV_HUGEPAGE
    const std::uintptr_t kHuge = std::uintptr_t(2) << 20;
    std::uintptr_t from = ((std::uintptr_t)block + kHuge - 1) & ~(kHuge - 1);
    std::uintptr_t to = ((std::uintptr_t)block + size) & ~(kHuge - 1);
    if (block && to > from) madvise((void*)from, (std::size_t)(to - from), MADV_HUGEPAGE);
#else
    (void)block;
    (void)size;
#endif
}

}  // namespace qm::platform
