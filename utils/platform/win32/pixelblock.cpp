// Large pages need a privilege that desktop users do not hold: plain C runtime blocks.
#include "utils/platform/pixelblock.h"

#include <cstdlib>

namespace qm::platform {

void* AllocatePixelBlock(std::size_t size) { return std::malloc(size ? size : 1); }

void PrepareLargeBlock(void*, std::size_t) {}

// Heap blocks cannot lend their pages back while they are allocated.
void ForgetBlockContents(void*, std::size_t) {}

}  // namespace qm::platform
