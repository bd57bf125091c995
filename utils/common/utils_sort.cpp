// ListMergeSort: the product's list merge sort of fixed-size records.
//
// The sort was first written as a merge on a link table (links to 1-based record numbers, a
// negative link closing an ordered run; the odd records form the first list and the even ones
// the second, and each pass merges the i-th run of the first list with the i-th run of the
// second, sending the merged runs alternately to the two lists). Unrolled, that schedule is a
// bottom-up merge over the record numbers: pass k merges the neighbouring blocks of 2^k
// records, the earlier block always playing the first list's part, and a block left without
// a partner is carried over unchanged. This file runs exactly that schedule on arrays of
// pointers to the records, which calls the comparator with the same pointers in the same
// order and gives the same final list, but reads memory sequentially instead of chasing links.
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

// The work arrays hold pointers to the records in place: the comparator is always handed the
// records where the caller put them.
using Ref = const char*;

// Merges the runs in[lo, mid) (the first list's run) and in[mid, hi) into out[lo, hi). Taking
// from the second run on a tie or (with `flag`) on "not greater" is what decides the order of
// equal records and flips the sense of the sort.
template <bool Flag>
void MergeRuns(Compare compare, const Ref* in, Ref* out, size_t lo, size_t mid, size_t hi) {
    size_t i = lo, j = mid, o = lo;
    for (;;) {
        if (i + kPrefetchAhead < mid) QM_PREFETCH(in[i + kPrefetchAhead]);
        if (j + kPrefetchAhead < hi) QM_PREFETCH(in[j + kPrefetchAhead]);
        const Ref pi = in[i], pj = in[j];
        const int r = compare(pi, pj);
        const bool takeSecond = Flag ? (r < 1) : (r >= 0);
        out[o++] = takeSecond ? pj : pi;
        j += takeSecond;
        i += !takeSecond;
        if (i == mid || j == hi) break;
    }
    if (i < mid) std::memcpy(out + o, in + i, (mid - i) * sizeof(Ref));
    else if (j < hi) std::memcpy(out + o, in + j, (hi - j) * sizeof(Ref));
}

template <bool Flag>
Ref* MergeAll(const char* base, size_t count, size_t size, Compare compare, Ref* a, Ref* b) {
    // The first pass merges neighbouring single records: one comparison per pair, done without
    // the general merge's set-up.
    size_t lo = 0;
    for (; lo + 1 < count; lo += 2) {
        const Ref p = base + lo * size, q = p + size;
        const int r = compare(p, q);
        const bool takeSecond = Flag ? (r < 1) : (r >= 0);
        b[lo] = takeSecond ? q : p;
        b[lo + 1] = takeSecond ? p : q;
    }
    if (lo < count) b[lo] = base + lo * size;
    std::swap(a, b);
    for (size_t width = 2; width < count; width *= 2) {
        for (lo = 0; lo < count; lo += 2 * width) {
            const size_t mid = lo + width < count ? lo + width : count;
            const size_t hi = lo + 2 * width < count ? lo + 2 * width : count;
            if (mid >= hi) std::memcpy(b + lo, a + lo, (hi - lo) * sizeof(Ref));
            else MergeRuns<Flag>(compare, a, b, lo, mid, hi);
        }
        std::swap(a, b);
    }
    return a;
}

}  // namespace

// Guards kept beyond the original: a null array or comparator, or zero-sized records, leave
// the array as it is; a count beyond what a table of 32-bit links can number, or work
// buffers that cannot be allocated, report and leave it unsorted rather than fail.
void ListMergeSort(void* base, unsigned int count, unsigned int size, int (*compare)(const void*, const void*),
                   int flag) {
    if (count < 2) return;
    if (!base || !compare || size == 0) return;
    if (!CVASSERT(count <= 0x7FFFFFFDu)) return;

    std::unique_ptr<Ref[]> a(new (std::nothrow) Ref[count]);
    std::unique_ptr<Ref[]> b(new (std::nothrow) Ref[count]);
    const size_t bytes = (size_t)count * size;
    std::unique_ptr<char[]> copy(new (std::nothrow) char[bytes]);
    if (!a || !b || !copy) {
        CVASSERT_TEXT("0");
        return;
    }

    char* records = static_cast<char*>(base);
    const Ref* order = flag ? MergeAll<true>(records, count, size, compare, a.get(), b.get())
                            : MergeAll<false>(records, count, size, compare, a.get(), b.get());

    // The final list is laid out from the end of the array backwards, so the array ends in
    // the reverse of the list's order.
    std::memcpy(copy.get(), records, bytes);
    for (size_t k = 0; k < count; ++k)
        std::memcpy(records + (count - 1 - k) * (size_t)size, copy.get() + (order[k] - records), size);
}
