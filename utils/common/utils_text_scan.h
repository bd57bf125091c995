// Candidate scan shared by the case-insensitive searches of the text module (not exported).
//
// A search first finds positions whose first two bytes could start the pattern, comparing
// 16 bytes at a time, then checks each candidate exactly. ASCII letters are compared with
// their case bit (0x20) forced on; other bytes exactly. The filter may only give false
// candidates, never miss one, so the exact check alone decides what matches.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>

#if defined(__SSE2__) || defined(_M_X64)
#include <emmintrin.h>
#define QM_TEXT_SCAN_SSE2 1
#endif

namespace qm::text::detail {

inline bool IsAsciiLetter(unsigned char c) { return (unsigned char)((c | 0x20) - 'a') < 26; }

class PairScanner {
public:
    // `first` and `second` are the pattern's first two bytes; a one-byte pattern passes
    // `hasSecond` false and only its first byte is filtered on.
    PairScanner(unsigned char first, unsigned char second, bool hasSecond) {
        m_mask0 = IsAsciiLetter(first) ? 0x20 : 0x00;
        m_value0 = (unsigned char)(first | m_mask0);
        if (hasSecond) {
            m_mask1 = IsAsciiLetter(second) ? 0x20 : 0x00;
            m_value1 = (unsigned char)(second | m_mask1);
        } else {
            m_mask1 = 0xFF;  // x | 0xFF == 0xFF: every byte passes
            m_value1 = 0xFF;
        }
    }

    // First position i in [from, end) whose bytes b[i] and b[i + 1] pass the filter; `end`
    // when none. b[end] must be readable (the text's NUL or any later byte).
    size_t Next(const char* b, size_t from, size_t end) const {
        size_t i = from;
#if defined(QM_TEXT_SCAN_SSE2)
        const __m128i m0 = _mm_set1_epi8((char)m_mask0), v0 = _mm_set1_epi8((char)m_value0);
        const __m128i m1 = _mm_set1_epi8((char)m_mask1), v1 = _mm_set1_epi8((char)m_value1);
        // b[i + 16] is the last byte read, readable while i + 16 <= end.
        for (; i + 16 <= end; i += 16) {
            const __m128i a = _mm_loadu_si128(reinterpret_cast<const __m128i*>(b + i));
            const __m128i c = _mm_loadu_si128(reinterpret_cast<const __m128i*>(b + i + 1));
            const __m128i hit = _mm_and_si128(_mm_cmpeq_epi8(_mm_or_si128(a, m0), v0),
                                              _mm_cmpeq_epi8(_mm_or_si128(c, m1), v1));
            const unsigned bits = (unsigned)_mm_movemask_epi8(hit);
            if (bits) return i + (size_t)std::countr_zero(bits);
        }
#endif
        for (; i < end; ++i)
            if ((unsigned char)(b[i] | m_mask0) == m_value0 && (unsigned char)(b[i + 1] | m_mask1) == m_value1)
                return i;
        return end;
    }

    // Calls `visit(i)` for every position i in [from, end) that passes the filter, in order,
    // until it returns false; b[end] must be readable.
    //
    // The positions of a span of text are first written out without a branch per position
    // (a branch on where candidates fall is mispredicted about once per candidate), then
    // visited from that list.
    template <class Visit>
    void ForEach(const char* b, size_t from, size_t end, Visit visit) const {
        size_t i = from;
#if defined(QM_TEXT_SCAN_SSE2)
        constexpr size_t kSpan = 2048;  // text bytes per list; multiple of 64
        constexpr int kSlots = 4;       // positions written per 64 bytes whether there or not
        std::uint16_t list[kSpan + kSlots];
        const __m128i m0 = _mm_set1_epi8((char)m_mask0), v0 = _mm_set1_epi8((char)m_value0);
        const __m128i m1 = _mm_set1_epi8((char)m_mask1), v1 = _mm_set1_epi8((char)m_value1);
        // Reads b[i .. i + 64], readable while i + 64 <= end.
        while (i + 64 <= end) {
            const size_t base = i;
            const size_t stop = end - base >= kSpan ? base + kSpan : base + ((end - base) & ~size_t(63));
            size_t n = 0;
            for (; i < stop; i += 64) {
                std::uint64_t bits = 0;
                for (int k = 0; k < 4; ++k) {
                    const __m128i a = _mm_loadu_si128(reinterpret_cast<const __m128i*>(b + i + 16 * k));
                    const __m128i c = _mm_loadu_si128(reinterpret_cast<const __m128i*>(b + i + 16 * k + 1));
                    const __m128i hit = _mm_and_si128(_mm_cmpeq_epi8(_mm_or_si128(a, m0), v0),
                                                      _mm_cmpeq_epi8(_mm_or_si128(c, m1), v1));
                    bits |= (std::uint64_t)(unsigned)_mm_movemask_epi8(hit) << (16 * k);
                }
                const unsigned offset = (unsigned)(i - base);
                std::uint16_t* out = list + n;
                // The first slots are written whether there are positions or not (the junk
                // is overwritten or past `n`); the baseline processor has no popcount
                // instruction, so `n` counts the bits as they are taken.
                for (int k = 0; k < kSlots; ++k) {
                    out[k] = (std::uint16_t)(offset + LowestBit(bits));
                    n += bits != 0;
                    bits &= bits - 1;
                }
                for (; bits; bits &= bits - 1) list[n++] = (std::uint16_t)(offset + LowestBit(bits));
            }
            for (size_t k = 0; k < n; ++k)
                if (!visit(base + list[k])) return;
        }
#endif
        for (; i < end; ++i)
            if ((unsigned char)(b[i] | m_mask0) == m_value0 && (unsigned char)(b[i + 1] | m_mask1) == m_value1)
                if (!visit(i)) return;
    }

private:
    // The index of the lowest set bit; 63 for none (no branch for the zero case).
    static unsigned LowestBit(std::uint64_t bits) {
        return (unsigned)std::countr_zero(bits | (std::uint64_t(1) << 63));
    }

    unsigned char m_mask0, m_value0, m_mask1, m_value1;
};

// The exact check of a candidate against the first (up to) 16 bytes of a pattern, under the
// same rule as the filter: a byte of the text matches a pattern byte that is an ASCII letter
// in either case, any other pattern byte only exactly. One vector compare for the 16 bytes.
class BlockMatcher {
public:
    static constexpr size_t kWidth = 16;

    // The first min(n, 16) bytes of `p` are compared; n >= 1.
    BlockMatcher(const char* p, size_t n) {
        const size_t w = n < kWidth ? n : kWidth;
        for (size_t k = 0; k < kWidth; ++k) {
            const unsigned char c = k < w ? (unsigned char)p[k] : 0;
            m_mask[k] = IsAsciiLetter(c) ? 0x20 : 0x00;
            m_value[k] = (unsigned char)(c | m_mask[k]);
        }
        m_width = w;
        m_bits = w == kWidth ? 0xFFFFu : (1u << w) - 1;
    }

    // Whether b[0 .. min(n, 16)) matches; all 16 bytes b[0 .. 16) must be readable.
    bool Matches(const char* b) const {
#if defined(QM_TEXT_SCAN_SSE2)
        const __m128i t = _mm_loadu_si128(reinterpret_cast<const __m128i*>(b));
        const __m128i mask = _mm_loadu_si128(reinterpret_cast<const __m128i*>(m_mask));
        const __m128i value = _mm_loadu_si128(reinterpret_cast<const __m128i*>(m_value));
        const unsigned eq = (unsigned)_mm_movemask_epi8(_mm_cmpeq_epi8(_mm_or_si128(t, mask), value));
        return (eq & m_bits) == m_bits;
#else
        return MatchesBytes(b);
#endif
    }

    // The same check byte by byte; reads only b[0 .. min(n, 16)).
    bool MatchesBytes(const char* b) const {
        for (size_t k = 0; k < m_width; ++k)
            if ((unsigned char)(b[k] | m_mask[k]) != m_value[k]) return false;
        return true;
    }

private:
    alignas(16) unsigned char m_mask[kWidth];
    alignas(16) unsigned char m_value[kWidth];
    size_t m_width;
    unsigned m_bits;
};

}  // namespace qm::text::detail
