// Candidate scan shared by the case-insensitive searches of the text module (not exported).
//
// A search first finds positions whose first two bytes could start the pattern, comparing
// 16 bytes at a time, then checks each candidate exactly. ASCII letters are compared with
// their case bit (0x20) forced on; other bytes exactly. The filter may only give false
// candidates, never miss one, so the exact check alone decides what matches.
#pragma once

#include <bit>
#include <cstddef>

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
    // until it returns false; b[end] must be readable. One pass: the positions of each 16
    // bytes are taken from one comparison, however many there are.
    template <class Visit>
    void ForEach(const char* b, size_t from, size_t end, Visit visit) const {
        size_t i = from;
#if defined(QM_TEXT_SCAN_SSE2)
        const __m128i m0 = _mm_set1_epi8((char)m_mask0), v0 = _mm_set1_epi8((char)m_value0);
        const __m128i m1 = _mm_set1_epi8((char)m_mask1), v1 = _mm_set1_epi8((char)m_value1);
        for (; i + 16 <= end; i += 16) {
            const __m128i a = _mm_loadu_si128(reinterpret_cast<const __m128i*>(b + i));
            const __m128i c = _mm_loadu_si128(reinterpret_cast<const __m128i*>(b + i + 1));
            const __m128i hit = _mm_and_si128(_mm_cmpeq_epi8(_mm_or_si128(a, m0), v0),
                                              _mm_cmpeq_epi8(_mm_or_si128(c, m1), v1));
            for (unsigned bits = (unsigned)_mm_movemask_epi8(hit); bits; bits &= bits - 1)
                if (!visit(i + (size_t)std::countr_zero(bits))) return;
        }
#endif
        for (; i < end; ++i)
            if ((unsigned char)(b[i] | m_mask0) == m_value0 && (unsigned char)(b[i + 1] | m_mask1) == m_value1)
                if (!visit(i)) return;
    }

private:
    unsigned char m_mask0, m_value0, m_mask1, m_value1;
};

}  // namespace qm::text::detail
