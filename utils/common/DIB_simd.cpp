// Row kernels on 64-byte vectors with byte permutations (AVX-512 VBMI). They are compiled for
// that instruction set only inside this file and called only after the run-time check of the
// processor, so the library still runs on every x86 processor with SSE2.
#include <cstring>

#include "utils/common/DIB_rows_internal.h"

#if defined(__x86_64__) || defined(__i386__)
#include <immintrin.h>
#define QM_DIB_VBMI 1
#define QM_VBMI __attribute__((target("avx512f,avx512bw,avx512vbmi")))
#endif

namespace qm::dib {

#ifdef QM_DIB_VBMI

namespace {

// Byte indexes and masks of the permutations, computed when the library is compiled (64-byte
// values are read from them without an alignment demand: the 64-bit Windows stack and data
// need not be 64-byte aligned).
struct Bytes64 {
    BYTE b[64];
};
template <class F>
constexpr Bytes64 Table(F f) {
    Bytes64 t{};
    for (int k = 0; k < 64; ++k) t.b[k] = (BYTE)f(k);
    return t;
}
QM_VBMI __attribute__((always_inline)) inline __m512i Load(const Bytes64& t) { return _mm512_loadu_si512(t.b); }

// Output pixel j of 21 is input pixel 20 - j.
constexpr Bytes64 kReverse21 = Table([](int k) { return k < 63 ? 3 * (20 - k / 3) + k % 3 : 63; });
// Blue, green, red of pixel j (of 21) as the low byte of 16-bit lane j.
constexpr Bytes64 kBlue16 = Table([](int k) { return 3 * (k / 2 < 21 ? k / 2 : 20); });
constexpr Bytes64 kGreen16 = Table([](int k) { return 3 * (k / 2 < 21 ? k / 2 : 20) + 1; });
constexpr Bytes64 kRed16 = Table([](int k) { return 3 * (k / 2 < 21 ? k / 2 : 20) + 2; });
// The low byte of lane j spread over the three bytes of pixel j.
constexpr Bytes64 kSpread = Table([](int k) { return k < 63 ? 2 * (k / 3) : 0; });
// Output vector j (of three) of 64 interleaved pixels: blue and green bytes from the pair
// (blue, green), red bytes from red.
template <int J>
constexpr Bytes64 kBlueGreen = Table([](int k) {
    int at = 64 * J + k, pixel = at / 3, channel = at % 3;
    return channel == 0 ? pixel : channel == 1 ? 64 + pixel : 0;
});
template <int J>
constexpr Bytes64 kRedPixel = Table([](int k) { return (64 * J + k) / 3; });
constexpr __mmask64 RedBytes(int j) {
    __mmask64 m = 0;
    for (int k = 0; k < 64; ++k)
        if ((64 * j + k) % 3 == 2) m |= (__mmask64)1 << k;
    return m;
}

const __mmask64 k63 = ~(__mmask64)0 >> 1;

// The transposition of 16 x 16 pixels in four rounds. Before round s each register holds,
// for each of 16 >> s consecutive output rows, the same 1 << s consecutive input pixels (row
// by row); a round merges two registers with the same output rows and following input rows
// into two: the first half of the output rows, each with twice the pixels, and the second
// half. kMerge<S, false> and kMerge<S, true> pick the bytes of the two results from the pair.
template <int S, bool High>
constexpr Bytes64 kMerge = Table([](int b) {
    if (b >= 48) return 0;
    int m = 1 << S, rows = 16 >> S;
    int slot = b / 3, c = b % 3, row = slot / (2 * m) + (High ? rows / 2 : 0), j = slot % (2 * m);
    return j < m ? 3 * (row * m + j) + c : 64 + 3 * (row * m + j - m) + c;
});

}  // namespace

QM_VBMI void MapBytes512(BYTE* p, std::size_t n, const BYTE* table) {
    const __m512i t0 = _mm512_loadu_si512(table), t1 = _mm512_loadu_si512(table + 64);
    const __m512i t2 = _mm512_loadu_si512(table + 128), t3 = _mm512_loadu_si512(table + 192);
    std::size_t i = 0;
    for (; i + 64 <= n; i += 64) {
        __m512i v = _mm512_loadu_si512(p + i);
        // The low seven bits pick one of 128 entries in each half; the top bit picks the half.
        __m512i lo = _mm512_permutex2var_epi8(t0, v, t1), hi = _mm512_permutex2var_epi8(t2, v, t3);
        _mm512_storeu_si512(p + i, _mm512_mask_blend_epi8(_mm512_movepi8_mask(v), lo, hi));
    }
    for (; i < n; ++i) p[i] = table[p[i]];
}

QM_VBMI std::size_t MirrorRow24_512(BYTE* out, const BYTE* in, std::size_t width) {
    // Output pixel j of a step of 21 is input pixel 20 - j of the block read.
    const __m512i reverse = Load(kReverse21);
    std::size_t x = 0;
    for (; x + 21 <= width; x += 21) {
        // Reads one byte past the 21 pixels: the caller's copy of the row has room for it.
        __m512i v = _mm512_loadu_si512(in + 3 * (width - 21 - x));
        _mm512_mask_storeu_epi8(out + 3 * x, k63, _mm512_maskz_permutexvar_epi8(~(__mmask64)0, reverse, v));
    }
    return x;
}

QM_VBMI std::size_t GreyRow24_512(BYTE* row, const BYTE* copy, std::size_t width) {
    // Blue, green and red of 21 pixels as 16-bit lanes, their sum divided by 3 exactly
    // (multiplied by 0xAAAB, shifted by 17), and each quotient's low byte spread over three.
    const __m512i b = Load(kBlue16), g = Load(kGreen16), r = Load(kRed16);
    const __m512i spread = Load(kSpread);
    const __mmask64 lowBytes = 0x5555555555555555ull;
    const __m512i third = _mm512_set1_epi16((short)0xAAAB);
    std::size_t x = 0;
    for (; x + 22 <= width; x += 21) {  // 64 bytes read: one past the 21 pixels
        __m512i v = _mm512_loadu_si512(copy + 3 * x);
        __m512i s = _mm512_add_epi16(_mm512_add_epi16(_mm512_maskz_permutexvar_epi8(lowBytes, b, v),
                                                      _mm512_maskz_permutexvar_epi8(lowBytes, g, v)),
                                     _mm512_maskz_permutexvar_epi8(lowBytes, r, v));
        __m512i q = _mm512_srli_epi16(_mm512_mulhi_epu16(s, third), 1);
        _mm512_mask_storeu_epi8(row + 3 * x, k63, _mm512_maskz_permutexvar_epi8(~(__mmask64)0, spread, q));
    }
    return x;
}

QM_VBMI std::size_t GatherRow24_512(BYTE* out, const BYTE* in, std::size_t inBytes, const GatherPlan& plan,
                                    std::size_t copies, std::size_t outStride, std::size_t ahead) {
    if (plan.blocks) {
        const __m512i idx[3] = {_mm512_loadu_si512(plan.blockIndex.data()), _mm512_loadu_si512(plan.blockIndex.data() + 64),
                                _mm512_loadu_si512(plan.blockIndex.data() + 128)};
        // Every copy starts on a cache line when the first does and the rows are whole lines apart.
        const bool stream = plan.stream && ((std::uintptr_t)out & 63) == 0 && (copies == 1 || outStride % 64 == 0);
        std::size_t b = 0;
        for (std::size_t from = plan.blockStart; b < plan.blocks && from + 128 <= inBytes; ++b, from += plan.blockStep) {
            __m512i lo = _mm512_loadu_si512(in + from), hi = _mm512_loadu_si512(in + from + 64);
            for (int j = 0; j < 3; ++j) {
                __m512i v = _mm512_permutex2var_epi8(lo, idx[j], hi);
                BYTE* to = out + 192 * b + 64 * j;
                if (stream)
                    for (std::size_t c = 0; c < copies; ++c, to += outStride) _mm512_stream_si512(reinterpret_cast<__m512i*>(to), v);
                else
                    for (std::size_t c = 0; c < copies; ++c, to += outStride) _mm512_storeu_si512(to, v);
            }
        }
        if (stream) _mm_sfence();
        return 64 * b;
    }
    if (plan.pieces) {
        const std::size_t bytes = 3 * plan.targets;
        const bool stream = plan.stream && ((std::uintptr_t)out & 63) == 0;
        std::size_t p = 0;
        for (; p < plan.pieces && plan.pieceStart[p] + 128 <= inBytes; ++p) {
            const BYTE* w = in + plan.pieceStart[p];
            // The same window of the next row sampled, one row ahead: when rows are skipped
            // (a reduction) the hardware's prefetcher starts cold on every row.
            if (ahead && plan.pieceStart[p] + ahead + 128 <= inBytes) {
                _mm_prefetch(reinterpret_cast<const char*>(w + ahead), _MM_HINT_T0);
                _mm_prefetch(reinterpret_cast<const char*>(w + ahead + 64), _MM_HINT_T0);
            }
            __m512i idx = _mm512_loadu_si512(plan.pieceIndex.data() + 64 * p);
            __m512i v = _mm512_permutex2var_epi8(_mm512_loadu_si512(w), idx, _mm512_loadu_si512(w + 64));
            BYTE* to = out + 64 * p;
            if (64 * p + 64 > bytes)
                _mm512_mask_storeu_epi8(to, ~(__mmask64)0 >> (64 * p + 64 - bytes), v);
            else if (stream)
                _mm512_stream_si512(reinterpret_cast<__m512i*>(to), v);
            else
                _mm512_storeu_si512(to, v);
        }
        if (stream) _mm_sfence();
        // Whole pixels: the caller writes the rest, the part of a pixel already written again.
        return std::min(plan.targets, 64 * p / 3);
    }
    // Each run writes 48 bytes; the whole 64-byte vector is stored where the 16 bytes past
    // them are still the row's (the next run writes them again), a masked store at the end.
    const __mmask64 k48 = ((__mmask64)1 << 48) - 1;
    std::size_t r = 0;
    for (; r < plan.runs && plan.start[r] + 128 <= inBytes; ++r) {
        const BYTE* w = in + plan.start[r];
        __m512i idx = _mm512_loadu_si512(plan.index.data() + 64 * r);
        __m512i v = _mm512_permutex2var_epi8(_mm512_loadu_si512(w), idx, _mm512_loadu_si512(w + 64));
        if (48 * r + 64 <= 3 * plan.targets)
            _mm512_storeu_si512(out + 48 * r, v);
        else
            _mm512_mask_storeu_epi8(out + 48 * r, k48, v);
    }
    return 16 * r;
}

// One round: register u * G + g (G = 1 << S groups of output rows) holds output-row group g
// and input-row group u.
template <int S>
QM_VBMI __attribute__((always_inline)) inline void MergeRound(__m512i* r, __m512i lo, __m512i hi) {
    constexpr int G = 1 << S;
    __m512i n[16];
#pragma GCC unroll 8
    for (int u = 0; u < 8 / G; ++u)
#pragma GCC unroll 8
        for (int g = 0; g < G; ++g) {
            __m512i a = r[2 * u * G + g], b = r[(2 * u + 1) * G + g];
            n[u * 2 * G + 2 * g] = _mm512_permutex2var_epi8(a, lo, b);
            n[u * 2 * G + 2 * g + 1] = _mm512_permutex2var_epi8(a, hi, b);
        }
#pragma GCC unroll 16
    for (int k = 0; k < 16; ++k) r[k] = n[k];
}

QM_VBMI std::size_t Transpose24x16_512(const BYTE* in, std::ptrdiff_t inStep, BYTE* out, std::ptrdiff_t outStep,
                                       std::size_t width) {
    const __m512i lo[4] = {Load(kMerge<0, false>), Load(kMerge<1, false>), Load(kMerge<2, false>), Load(kMerge<3, false>)};
    const __m512i hi[4] = {Load(kMerge<0, true>), Load(kMerge<1, true>), Load(kMerge<2, true>), Load(kMerge<3, true>)};
    const __mmask64 k48 = ((__mmask64)1 << 48) - 1;
    std::size_t x = 0;
    for (; x + 16 <= width; x += 16, in += 16 * inStep, out += 48) {
        __m512i r[16];
#pragma GCC unroll 16
        for (int j = 0; j < 16; ++j) r[j] = _mm512_loadu_si512(in + j * inStep);
        MergeRound<0>(r, lo[0], hi[0]);
        MergeRound<1>(r, lo[1], hi[1]);
        MergeRound<2>(r, lo[2], hi[2]);
        MergeRound<3>(r, lo[3], hi[3]);
        // 64 bytes per row where the 16 past the block are the next block's, 48 at the end.
        if (x + 22 <= width) {
#pragma GCC unroll 16
            for (int q = 0; q < 16; ++q) _mm512_storeu_si512(out + q * outStep, r[q]);
        } else {
#pragma GCC unroll 16
            for (int q = 0; q < 16; ++q) _mm512_mask_storeu_epi8(out + q * outStep, k48, r[q]);
        }
    }
    return x;
}

QM_VBMI std::size_t Palette8To24_512(BYTE* out, const BYTE* in, std::size_t width, const BYTE* channels) {
    // Blue, green and red of 64 indexes through three tables of 256 bytes (each as two
    // two-register permutations, the index's top bit choosing the half), then interleaved
    // into 192 bytes: blue and green bytes put in place by one permutation, red bytes by a
    // second one under a mask.
    __m512i t[3][4];
    for (int c = 0; c < 3; ++c)
        for (int q = 0; q < 4; ++q) t[c][q] = _mm512_loadu_si512(channels + 256 * c + 64 * q);
    const __m512i blueGreen[3] = {Load(kBlueGreen<0>), Load(kBlueGreen<1>), Load(kBlueGreen<2>)};
    const __m512i red[3] = {Load(kRedPixel<0>), Load(kRedPixel<1>), Load(kRedPixel<2>)};
    const __mmask64 redAt[3] = {RedBytes(0), RedBytes(1), RedBytes(2)};
    std::size_t x = 0;
    for (; x + 64 <= width; x += 64) {
        __m512i v = _mm512_loadu_si512(in + x);
        __mmask64 high = _mm512_movepi8_mask(v);
        __m512i c[3];
        for (int k = 0; k < 3; ++k)
            c[k] = _mm512_mask_blend_epi8(high, _mm512_permutex2var_epi8(t[k][0], v, t[k][1]),
                                          _mm512_permutex2var_epi8(t[k][2], v, t[k][3]));
        for (int j = 0; j < 3; ++j) {
            __m512i o = _mm512_permutex2var_epi8(c[0], blueGreen[j], c[1]);
            o = _mm512_mask_permutexvar_epi8(o, redAt[j], red[j], c[2]);
            _mm512_storeu_si512(out + 3 * x + 64 * j, o);
        }
    }
    return x;
}

#else

std::size_t Palette8To24_512(BYTE*, const BYTE*, std::size_t, const BYTE*) { return 0; }
std::size_t Transpose24x16_512(const BYTE*, std::ptrdiff_t, BYTE*, std::ptrdiff_t, std::size_t) { return 0; }
std::size_t GatherRow24_512(BYTE*, const BYTE*, std::size_t, const GatherPlan&, std::size_t, std::size_t, std::size_t) { return 0; }
void MapBytes512(BYTE* p, std::size_t n, const BYTE* table) {
    for (std::size_t i = 0; i < n; ++i) p[i] = table[p[i]];
}
std::size_t MirrorRow24_512(BYTE*, const BYTE*, std::size_t) { return 0; }
std::size_t GreyRow24_512(BYTE*, const BYTE*, std::size_t) { return 0; }

#endif

}  // namespace qm::dib
