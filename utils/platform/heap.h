// The library's private heap: one growable heap without serialization, blocks that know their
// exact size, validation that tells the heap's own blocks from any other pointer, and an
// allocation whose failure is caught and reported by its exception code instead of aborting.
// Windows: HeapCreate/HeapAlloc/HeapReAlloc/HeapFree/HeapSize/HeapValidate with
// HEAP_NO_SERIALIZE on every call. POSIX: the same contract over the C runtime allocator.
#pragma once

#include <cstddef>

#include "utils/framework/winsys.h"
#include "utils/framework/wintypes.h"

// Exception codes of a failed heap call.
#define QM_STATUS_ACCESS_VIOLATION 0xC0000005u
#define QM_STATUS_NO_MEMORY 0xC0000017u

namespace qm::platform {

// HeapCreate(HEAP_NO_SERIALIZE, 0x200000, 0): 2 MiB to start, growable. Null on failure.
HANDLE CreatePrivateHeap();

// HeapAlloc(heap, HEAP_NO_SERIALIZE | HEAP_GENERATE_EXCEPTIONS, size) under a handler that
// accepts every exception: returns the block (not zero-filled), or null with the exception
// code in *pExceptionCode (0 when the call succeeded).
void* HeapAllocGuarded(HANDLE heap, size_t size, DWORD* pExceptionCode);
// HeapReAlloc(heap, HEAP_NO_SERIALIZE, block, size): the contents are kept; null on failure
// (the old block then stays valid).
void* HeapReAllocBlock(HANDLE heap, void* block, size_t size);
bool HeapFreeBlock(HANDLE heap, void* block);
// The exact size asked for the block; (size_t)-1 when the block is not one of the heap's.
size_t HeapBlockSize(HANDLE heap, const void* block);
// True only for a live block of this heap.
bool HeapValidateBlock(HANDLE heap, const void* block);

// Fault injection for tests: a request of more than `ceiling` bytes is passed to the heap as
// a request for the largest possible size, so the heap's own out-of-memory path runs.
// (size_t)-1, the default, turns it off. Returns the previous ceiling.
size_t SetHeapRequestCeiling(size_t ceiling);
// The size actually asked of the heap for a request of `size` bytes.
size_t CeiledHeapRequest(size_t size);

}  // namespace qm::platform
