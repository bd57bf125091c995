// ListMergeSort: the product's list merge sort of fixed-size records.
//
// The sort was first written as a merge on a link table (links to 1-based record numbers, a
// negative link closing an ordered run; the odd records form the first list and the even ones
// the second, and each pass merges the i-th run of the first list with the i-th run of the
// second, sending the merged runs alternately to the two lists). Unrolled, that schedule is a
// bottom-up merge over the record numbers: pass k merges the neighbouring blocks of 2^k
// records, the earlier block always playing the first list's part, and a block left without
// a partner is carried over unchanged. This file runs exactly that schedule on arrays of
// record numbers, which calls the comparator with the same pointers in the same order and
// gives the same final list, but reads memory sequentially instead of chasing links.
#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>
#include <utility>

#include "utils/common/CVLogger.h"
#include "utils/common/utils_text.h"

#define QM_SOURCE_MODULE "Common\\utils"

namespace {

using Compare = int (*)(const void*, const void*);

// The records are read in the order of the runs, which is scattered over the array once the
// runs grow; fetching the records a few steps ahead of each run's cursor hides that latency.
#if defined(__GNUC__)
#define QM_PREFETCH(address) __builtin_prefetch(address)
#else
#define QM_PREFETCH(address) ((void)(address))
#endif
constexpr size_t kPrefetchAhead = 6;

// Merges the runs in[lo, mid) (the first list's run) and in[mid, hi) into out[lo, hi). Taking
// from the second run on a tie or (with `flag`) on "not greater" is what decides the order of
// equal records and flips the sense of the sort.
template <bool Flag>
void MergeRuns(const char* base, size_t size, Compare compare, const unsigned* in, unsigned* out, size_t lo,
               size_t mid, size_t hi) {
    size_t i = lo, j = mid, o = lo;
    while (i < mid && j < hi) {
        if (i + kPrefetchAhead < mid) QM_PREFETCH(base + (size_t)in[i + kPrefetchAhead] * size);
        if (j + kPrefetchAhead < hi) QM_PREFETCH(base + (size_t)in[j + kPrefetchAhead] * size);
        const int r = compare(base + (size_t)in[i] * size, base + (size_t)in[j] * size);
        const bool takeSecond = Flag ? (r < 1) : (r >= 0);
        if (takeSecond) out[o++] = in[j++];
        else out[o++] = in[i++];
    }
    if (i < mid) std::memcpy(out + o, in + i, (mid - i) * sizeof(unsigned));
    else if (j < hi) std::memcpy(out + o, in + j, (hi - j) * sizeof(unsigned));
}

template <bool Flag>
unsigned* MergeAll(const char* base, size_t count, size_t size, Compare compare, unsigned* a, unsigned* b) {
    // The first pass merges neighbouring single records: one comparison per pair, done without
    // the general merge's set-up.
    size_t lo = 0;
    for (; lo + 1 < count; lo += 2) {
        const int r = compare(base + lo * size, base + (lo + 1) * size);
        const bool takeSecond = Flag ? (r < 1) : (r >= 0);
        b[lo] = (unsigned)(lo + takeSecond);
        b[lo + 1] = (unsigned)(lo + !takeSecond);
    }
    if (lo < count) b[lo] = (unsigned)lo;
    std::swap(a, b);
    for (size_t width = 2; width < count; width *= 2) {
        for (size_t lo = 0; lo < count; lo += 2 * width) {
            const size_t mid = lo + width < count ? lo + width : count;
            const size_t hi = lo + 2 * width < count ? lo + 2 * width : count;
            if (mid >= hi) std::memcpy(b + lo, a + lo, (hi - lo) * sizeof(unsigned));
            else MergeRuns<Flag>(base, size, compare, a, b, lo, mid, hi);
        }
        std::swap(a, b);
    }
    return a;
}

}  // namespace

// Guards kept beyond the original: a null array or comparator, or zero-sized records, leave
// the array as it is; a count whose link numbers would not fit a 32-bit integer, or work
// buffers that cannot be allocated, report and leave it unsorted rather than fail.
void ListMergeSort(void* base, unsigned int count, unsigned int size, int (*compare)(const void*, const void*),
                   int flag) {
    if (count < 2) return;
    if (!base || !compare || size == 0) return;
    if (!CVASSERT(count <= 0x7FFFFFFDu)) return;

    std::unique_ptr<unsigned[]> a(new (std::nothrow) unsigned[count]);
    std::unique_ptr<unsigned[]> b(new (std::nothrow) unsigned[count]);
    const size_t bytes = (size_t)count * size;
    std::unique_ptr<char[]> copy(new (std::nothrow) char[bytes]);
    if (!a || !b || !copy) {
        CVASSERT_TEXT("0");
        return;
    }
    for (unsigned i = 0; i < count; ++i) a[i] = i;

    char* records = static_cast<char*>(base);
    const unsigned* order = flag ? MergeAll<true>(records, count, size, compare, a.get(), b.get())
                                 : MergeAll<false>(records, count, size, compare, a.get(), b.get());

    // The final list is laid out from the end of the array backwards, so the array ends in
    // the reverse of the list's order.
    std::memcpy(copy.get(), records, bytes);
    for (size_t k = 0; k < count; ++k)
        std::memcpy(records + (count - 1 - k) * (size_t)size, copy.get() + (size_t)order[k] * size, size);
}
