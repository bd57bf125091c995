// The private heap over malloc: every live block is recorded with its requested size, so that
// HeapBlockSize is exact and HeapValidateBlock recognises a foreign pointer without touching
// the memory it points to.
#include <cstdlib>
#include <unordered_map>

#include "utils/platform/heap.h"

namespace qm::platform {

namespace {
struct PrivateHeap {
    std::unordered_map<const void*, size_t> blocks;
};

PrivateHeap* AsHeap(HANDLE heap) { return static_cast<PrivateHeap*>(heap); }
}  // namespace

HANDLE CreatePrivateHeap() { return new PrivateHeap; }

void* HeapAllocGuarded(HANDLE heap, size_t size, DWORD* pExceptionCode) {
    if (pExceptionCode) *pExceptionCode = 0;
    PrivateHeap* h = AsHeap(heap);
    if (!h) {
        if (pExceptionCode) *pExceptionCode = QM_STATUS_ACCESS_VIOLATION;
        return nullptr;
    }
    size_t asked = CeiledHeapRequest(size);
    // A zero-byte block is still a distinct block, as on Windows.
    void* p = asked > (size_t)PTRDIFF_MAX ? nullptr : std::malloc(asked ? asked : 1);
    if (!p) {
        if (pExceptionCode) *pExceptionCode = QM_STATUS_NO_MEMORY;
        return nullptr;
    }
    h->blocks[p] = asked;
    return p;
}

void* HeapReAllocBlock(HANDLE heap, void* block, size_t size) {
    PrivateHeap* h = AsHeap(heap);
    if (!h) return nullptr;
    auto it = h->blocks.find(block);
    if (it == h->blocks.end()) return nullptr;
    size_t asked = CeiledHeapRequest(size);
    void* p = asked > (size_t)PTRDIFF_MAX ? nullptr : std::realloc(block, asked ? asked : 1);
    if (!p) return nullptr;
    h->blocks.erase(it);
    h->blocks[p] = asked;
    return p;
}

bool HeapFreeBlock(HANDLE heap, void* block) {
    PrivateHeap* h = AsHeap(heap);
    if (!h || !block) return false;
    auto it = h->blocks.find(block);
    if (it == h->blocks.end()) return false;
    h->blocks.erase(it);
    std::free(block);
    return true;
}

size_t HeapBlockSize(HANDLE heap, const void* block) {
    PrivateHeap* h = AsHeap(heap);
    if (!h) return (size_t)-1;
    auto it = h->blocks.find(block);
    return it == h->blocks.end() ? (size_t)-1 : it->second;
}

bool HeapValidateBlock(HANDLE heap, const void* block) {
    PrivateHeap* h = AsHeap(heap);
    return h && block && h->blocks.count(block) != 0;
}

}  // namespace qm::platform
