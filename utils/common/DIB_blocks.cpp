// Pixel blocks with a short memory. A picture operation that builds its result in a new block
// (resize, rotate, copy) releases the old block right after, and the next operation of the
// same kind asks for a block of the same size again. A block of many megabytes returned to the
// system comes back as fresh pages that the system must clear one by one before the first
// byte is written, which costs more than the operation itself. So the last large blocks given
// back are kept a moment for the next request that fits them.
#include <chrono>
#include <cstdlib>
#include <mutex>

#include "utils/common/DIB_internal.h"
#include "utils/platform/pixelblock.h"

namespace qm::dib {
namespace {

using Clock = std::chrono::steady_clock;

// Smaller blocks are served well by the C runtime's own free lists.
constexpr std::size_t kSmallestKept = std::size_t(4) << 20;
// A block is kept at most this long, and only while it is not too big for the request (a
// small picture never pins a huge block).
constexpr std::size_t kLargestKept = std::size_t(256) << 20;
constexpr auto kKeptFor = std::chrono::seconds(2);

class BlockShelf {
public:
    void* Take(std::size_t size) {
        if (size < kSmallestKept) return nullptr;
        std::unique_lock<std::mutex> lock(m_lock);
        Expire(Clock::now());
        Slot* best = nullptr;
        for (Slot& s : m_slots)
            if (s.block && s.size >= size && s.size - size <= size / 2 && (!best || s.size < best->size)) best = &s;
        if (!best) return nullptr;
        void* block = best->block;
        *best = Slot();
        return block;
    }

    // False when the block is not kept (the caller frees it).
    bool Keep(void* block, std::size_t size) {
        if (size < kSmallestKept || size > kLargestKept) return false;
        // Its bytes are no longer wanted: under memory pressure the system may take the pages.
        qm::platform::ForgetBlockContents(block, size);
        Slot evicted;
        {
            std::unique_lock<std::mutex> lock(m_lock);
            const Clock::time_point now = Clock::now();
            Expire(now);
            Slot* place = &m_slots[0];
            for (Slot& s : m_slots)
                if (!s.block || (place->block && s.since < place->since)) place = &s;
            evicted = *place;
            *place = Slot{block, size, now};
        }
        std::free(evicted.block);
        return true;
    }

private:
    struct Slot {
        void* block = nullptr;
        std::size_t size = 0;
        Clock::time_point since{};
    };

    // Called under the lock.
    void Expire(Clock::time_point now) {
        for (Slot& s : m_slots)
            if (s.block && now - s.since > kKeptFor) {
                std::free(s.block);
                s = Slot();
            }
    }

    std::mutex m_lock;
    // Two: an operation that converts first holds its source and its result at once.
    Slot m_slots[2];
};

// Never destroyed: bitmaps held in static storage may give their blocks back after every
// other static object is gone.
BlockShelf& Shelf() {
    static BlockShelf* shelf = new BlockShelf;
    return *shelf;
}

}  // namespace

BYTE* NewPixelBlock(std::size_t size) {
    if (void* kept = Shelf().Take(size)) return static_cast<BYTE*>(kept);
    return static_cast<BYTE*>(qm::platform::AllocatePixelBlock(size));
}

void FreePixelBlock(void* block, std::size_t size) {
    if (!block) return;
    if (!Shelf().Keep(block, size)) std::free(block);
}

}  // namespace qm::dib
