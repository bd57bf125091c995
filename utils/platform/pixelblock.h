// Large blocks: picture rows and long texts. A block of many megabytes is filled right after it is allocated,
// so where the system can back it with large pages it does, which turns thousands of page
// faults into a few. Every block is released with std::free, like any malloc block.
#pragma once

#include <cstddef>

namespace qm::platform {

// A block of `size` bytes (not zero-filled), or null.
void* AllocatePixelBlock(std::size_t size);

// The block's bytes are no longer wanted but the block is kept: the system may take its pages
// back when memory is short (reading them then gives zeros). Only advice.
void ForgetBlockContents(void* block, std::size_t size);

// Asks for large pages under a block of any allocator that has not been written yet (only
// advice: nothing changes for a small block, or where the system has no such pages).
void PrepareLargeBlock(void* block, std::size_t size);

}  // namespace qm::platform
