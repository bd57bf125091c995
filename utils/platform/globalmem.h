// Global memory blocks (the clipboard's currency): allocation with GlobalAlloc's flags,
// lock/unlock, size, reallocation and free, with kernel32's results. Where the system has no
// such blocks the backend keeps them itself and checks every handle against the live blocks,
// so that a stale or made-up handle fails instead of being dereferenced.
#pragma once

#include "utils/framework/winclipboard.h"

namespace qm::platform {

HGLOBAL GlobalMemAlloc(UINT flags, SIZE_T bytes);
// Null when the block cannot be resized (the old block is then untouched).
HGLOBAL GlobalMemReAlloc(HGLOBAL h, SIZE_T bytes, UINT flags);
// The block's first byte, or null for an unknown handle or an empty block.
void* GlobalMemLock(HGLOBAL h);
// Non-zero while the block is still locked.
BOOL GlobalMemUnlock(HGLOBAL h);
// 0 for an unknown handle.
SIZE_T GlobalMemSize(HGLOBAL h);
// Null on success, the handle when it is not a live block.
HGLOBAL GlobalMemFree(HGLOBAL h);

}  // namespace qm::platform
