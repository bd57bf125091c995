#include "utils/platform/globalmem.h"

#include <cstdlib>
#include <cstring>
#include <mutex>
#include <unordered_set>

namespace qm::platform {

namespace {

struct Block {
    unsigned char* data = nullptr;
    SIZE_T size = 0;
    int locks = 0;
};

std::mutex g_lock;
std::unordered_set<Block*> g_blocks;

Block* Find(HGLOBAL h) {
    auto it = g_blocks.find((Block*)h);
    return it == g_blocks.end() ? nullptr : *it;
}

// Blocks are limited to what a 32-bit size field can describe.
constexpr SIZE_T kMaxBlock = 0x7FFFFFFF;

}  // namespace

HGLOBAL GlobalMemAlloc(UINT flags, SIZE_T bytes) {
    if (bytes > kMaxBlock) return nullptr;
    auto* b = new Block;
    // One spare byte, so that an empty block still has an address.
    b->data = (unsigned char*)std::malloc(bytes + 1);
    if (!b->data) {
        delete b;
        return nullptr;
    }
    if (flags & GMEM_ZEROINIT) std::memset(b->data, 0, bytes);
    b->size = bytes;
    std::lock_guard<std::mutex> lock(g_lock);
    g_blocks.insert(b);
    return b;
}

HGLOBAL GlobalMemReAlloc(HGLOBAL h, SIZE_T bytes, UINT flags) {
    std::lock_guard<std::mutex> lock(g_lock);
    Block* b = Find(h);
    if (!b || bytes > kMaxBlock) return nullptr;
    auto* data = (unsigned char*)std::realloc(b->data, bytes + 1);
    if (!data) return nullptr;
    if ((flags & GMEM_ZEROINIT) && bytes > b->size) std::memset(data + b->size, 0, bytes - b->size);
    b->data = data;
    b->size = bytes;
    return b;
}

void* GlobalMemLock(HGLOBAL h) {
    std::lock_guard<std::mutex> lock(g_lock);
    Block* b = Find(h);
    if (!b || b->size == 0) return nullptr;
    ++b->locks;
    return b->data;
}

BOOL GlobalMemUnlock(HGLOBAL h) {
    std::lock_guard<std::mutex> lock(g_lock);
    Block* b = Find(h);
    if (!b || b->locks == 0) return FALSE;
    return --b->locks > 0 ? TRUE : FALSE;
}

SIZE_T GlobalMemSize(HGLOBAL h) {
    std::lock_guard<std::mutex> lock(g_lock);
    Block* b = Find(h);
    return b ? b->size : 0;
}

HGLOBAL GlobalMemFree(HGLOBAL h) {
    std::lock_guard<std::mutex> lock(g_lock);
    Block* b = Find(h);
    if (!b) return h;
    g_blocks.erase(b);
    std::free(b->data);
    delete b;
    return nullptr;
}

}  // namespace qm::platform
