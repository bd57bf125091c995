// Whole-row kernels of the bitmap operations. Pixels of three bytes are moved several at a
// time through 4- and 8-byte words (the machine is little-endian on every target built
// here); SSE2, present on every x86 target, carries the grey conversion.
#include "utils/common/DIB_rows_internal.h"

#include <algorithm>
#include <cstring>
#include <vector>

#if defined(__SSE2__) || defined(_M_X64)
#include <emmintrin.h>
#define QM_DIB_SSE2 1
#endif

static_assert(__BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__, "the row kernels pack pixels into little-endian words");

namespace qm::dib {

namespace {

inline std::uint32_t Load32(const BYTE* p) {
    std::uint32_t v;
    std::memcpy(&v, p, 4);
    return v;
}
inline std::uint64_t Load64(const BYTE* p) {
    std::uint64_t v;
    std::memcpy(&v, p, 8);
    return v;
}
inline void Store32(BYTE* p, std::uint32_t v) { std::memcpy(p, &v, 4); }
inline void Store64(BYTE* p, std::uint64_t v) { std::memcpy(p, &v, 8); }

inline void Put3(BYTE* out, std::uint32_t bgr) {
    out[0] = (BYTE)bgr;
    out[1] = (BYTE)(bgr >> 8);
    out[2] = (BYTE)(bgr >> 16);
}

// Four pixels of 24 bits (each in the low three bytes of its word) as 12 bytes.
inline void Put4x3(BYTE* out, std::uint64_t a, std::uint64_t b, std::uint64_t c, std::uint32_t d) {
    Store64(out, a | b << 24 | c << 48);
    Store32(out + 8, (std::uint32_t)(c >> 16) | d << 8);
}

// Exact quotient by 3 of a sum of three bytes (at most 765).
inline unsigned Third(unsigned s) { return (s * 0xAAABu) >> 17; }

}  // namespace

void RowTo24(const BYTE* in, BYTE* out, std::size_t width, int bpp, const std::uint32_t* palette, const BYTE* channels) {
    std::size_t x = 0;
    switch (bpp) {
    case 1:
        for (; x < width; ++x, out += 3) Put3(out, palette[(in[x >> 3] >> (7 - (x & 7))) & 1]);
        break;
    case 4:
        for (; x < width; ++x, out += 3) Put3(out, palette[x & 1 ? in[x >> 1] & 0x0F : in[x >> 1] >> 4]);
        break;
    case 8:
        if (channels) {
            x = Palette8To24_512(out, in, width, channels);
            out += 3 * x;
        }
        for (; x + 4 <= width; x += 4, out += 12)
            Put4x3(out, palette[in[x]], palette[in[x + 1]], palette[in[x + 2]], palette[in[x + 3]]);
        for (; x < width; ++x, out += 3) Put3(out, palette[in[x]]);
        break;
    case 16:
        for (; x < width; ++x, out += 3) {
            unsigned v = in[2 * x] | (unsigned)in[2 * x + 1] << 8;
            out[0] = (BYTE)((v & 0x1F) << 3);
            out[1] = (BYTE)((v >> 5 & 0x1F) << 3);
            out[2] = (BYTE)((v >> 10 & 0x1F) << 3);
        }
        break;
    case 24: std::memcpy(out, in, 3 * width); break;
    case 32:
        for (; x + 4 <= width; x += 4, out += 12, in += 16)
            Put4x3(out, Load32(in) & 0xFFFFFFu, Load32(in + 4) & 0xFFFFFFu, Load32(in + 8) & 0xFFFFFFu,
                   Load32(in + 12) & 0xFFFFFFu);
        for (; x < width; ++x, out += 3, in += 4) {
            out[0] = in[0];
            out[1] = in[1];
            out[2] = in[2];
        }
        break;
    default: break;
    }
}

void GreyRow(BYTE* row, std::size_t width, std::size_t pixelBytes, BYTE* scratch) {
    std::size_t x = 0;
    BYTE* p = row;
#ifdef QM_DIB_SSE2
    const __m128i zero = _mm_setzero_si128(), third = _mm_set1_epi16((short)0xAAAB);
    if (pixelBytes == 4) {
        const __m128i low = _mm_set1_epi32(0xFF);
        const __m128i third32 = _mm_set1_epi32(0xAAAB);
        for (; x + 4 <= width; x += 4, p += 16) {
            __m128i v = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
            __m128i s = _mm_add_epi32(_mm_add_epi32(_mm_and_si128(v, low), _mm_and_si128(_mm_srli_epi32(v, 8), low)),
                                      _mm_and_si128(_mm_srli_epi32(v, 16), low));
            // The sums fit the low 16 bits of each lane, whose high halves stay 0.
            __m128i g = _mm_srli_epi32(_mm_mulhi_epu16(s, third32), 1);
            g = _mm_or_si128(g, _mm_or_si128(_mm_slli_epi32(g, 8), _mm_slli_epi32(g, 16)));
            _mm_storeu_si128(reinterpret_cast<__m128i*>(p), g);
        }
    } else {
        // Five pixels (15 bytes) per step: the sums of bytes j, j+1, j+2 at every j, of which
        // those at 0, 3, 6, 9 and 12 are the pixels'; the sixteenth byte is written back as read.
        // The bytes are read from a copy of the row, so that no read waits for the write
        // before it that overlaps it by a byte.
        const __m128i firsts = _mm_setr_epi8(-1, 0, 0, -1, 0, 0, -1, 0, 0, -1, 0, 0, -1, 0, 0, 0);
        const __m128i last = _mm_setr_epi8(0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, -1);
        std::size_t bytes = 3 * width, i = 0;
        if (bytes >= 18) std::memcpy(scratch, row, bytes);
        if (HasByteShuffle512()) i = 3 * GreyRow24_512(row, scratch, width);
        for (; i + 18 <= bytes; i += 15) {
            __m128i a = _mm_loadu_si128(reinterpret_cast<const __m128i*>(scratch + i));
            __m128i b = _mm_loadu_si128(reinterpret_cast<const __m128i*>(scratch + i + 1));
            __m128i c = _mm_loadu_si128(reinterpret_cast<const __m128i*>(scratch + i + 2));
            __m128i lo = _mm_add_epi16(_mm_add_epi16(_mm_unpacklo_epi8(a, zero), _mm_unpacklo_epi8(b, zero)),
                                       _mm_unpacklo_epi8(c, zero));
            __m128i hi = _mm_add_epi16(_mm_add_epi16(_mm_unpackhi_epi8(a, zero), _mm_unpackhi_epi8(b, zero)),
                                       _mm_unpackhi_epi8(c, zero));
            lo = _mm_srli_epi16(_mm_mulhi_epu16(lo, third), 1);
            hi = _mm_srli_epi16(_mm_mulhi_epu16(hi, third), 1);
            __m128i g = _mm_and_si128(_mm_packus_epi16(lo, hi), firsts);
            g = _mm_or_si128(g, _mm_or_si128(_mm_slli_si128(g, 1), _mm_slli_si128(g, 2)));
            _mm_storeu_si128(reinterpret_cast<__m128i*>(row + i), _mm_or_si128(g, _mm_and_si128(a, last)));
        }
        x = i / 3;
        p = row + i;
    }
#endif
    for (; x < width; ++x, p += pixelBytes) {
        BYTE g = (BYTE)Third((unsigned)p[0] + p[1] + p[2]);
        p[0] = p[1] = p[2] = g;
        if (pixelBytes == 4) p[3] = 0;
    }
}

void MirrorRow(BYTE* row, std::size_t width, std::size_t pixelBytes, BYTE* scratch) {
    if (width < 2) return;
    std::memcpy(scratch, row, width * pixelBytes);
    std::size_t x = 0;
    BYTE* out = row;
    switch (pixelBytes) {
    case 1: std::reverse_copy(scratch, scratch + width, row); return;
    case 3:
        if (HasByteShuffle512()) {
            x = MirrorRow24_512(row, scratch, width);
            out = row + 3 * x;
        }
        // Four pixels at a time: the 12 bytes of pixels w-4-x .. w-1-x in reverse order.
        for (; x + 4 <= width; x += 4, out += 12) {
            const BYTE* s = scratch + 3 * (width - 4 - x);
            std::uint64_t lo = Load64(s);
            std::uint32_t hi = Load32(s + 8);
            std::uint64_t q0 = lo & 0xFFFFFF, q1 = lo >> 24 & 0xFFFFFF, q2 = (lo >> 48 | (std::uint64_t)hi << 16) & 0xFFFFFF;
            Put4x3(out, hi >> 8, q2, q1, (std::uint32_t)q0);
        }
        for (; x < width; ++x, out += 3) std::memcpy(out, scratch + 3 * (width - 1 - x), 3);
        return;
    case 4:
        for (; x < width; ++x, out += 4) Store32(out, Load32(scratch + 4 * (width - 1 - x)));
        return;
    default:
        for (; x < width; ++x, out += pixelBytes) std::memcpy(out, scratch + pixelBytes * (width - 1 - x), pixelBytes);
        return;
    }
}

void GatherRow24(BYTE* out, const BYTE* in, std::size_t inBytes, const std::uint32_t* offsets, std::size_t count) {
    std::size_t i = 0;
    // Whole words where both the word read and the one written stay inside the rows; each
    // write's fourth byte is overwritten by the next pixel.
    for (; i + 1 < count && offsets[i] + 4 <= inBytes; ++i, out += 3) Store32(out, Load32(in + offsets[i]));
    for (; i < count; ++i, out += 3) std::memcpy(out, in + offsets[i], 3);
}

namespace {

// Plans the row as 64-byte pieces when every piece's source bytes lie in one 128-byte window
// (a reduction to no less than half, or any enlargement); false, with nothing planned, else.
bool PlanPieces(const std::uint32_t* offsets, std::size_t count, GatherPlan& plan) {
    const std::size_t bytes = 3 * count;
    auto source = [offsets](std::size_t o) { return offsets[o / 3] + (std::uint32_t)(o % 3); };
    for (std::size_t first = 0; first < bytes; first += 64) {
        const std::size_t end = std::min(first + 64, bytes);
        std::uint32_t lo = source(first), hi = lo;
        for (std::size_t o = first; o < end; ++o) {
            lo = std::min(lo, source(o));
            hi = std::max(hi, source(o));
        }
        if (hi - lo >= 128) {
            plan.pieceStart.clear();
            plan.pieceIndex.clear();
            return false;
        }
        plan.pieceStart.push_back(lo);
        for (std::size_t o = first; o < first + 64; ++o) plan.pieceIndex.push_back((BYTE)(o < end ? source(o) - lo : 0));
    }
    plan.pieces = plan.pieceStart.size();
    return plan.pieces > 0;
}

}  // namespace

void PlanGather24(const std::uint32_t* offsets, std::size_t count, GatherPlan& plan) {
    plan.targets = count;
    plan.runs = 0;
    plan.start.clear();
    plan.index.clear();
    plan.blocks = 0;
    plan.blockIndex.clear();
    plan.pieces = 0;
    plan.pieceStart.clear();
    plan.pieceIndex.clear();
    if (count >= 64) {
        std::uint32_t lo = *std::min_element(offsets, offsets + 64), hi = *std::max_element(offsets, offsets + 64);
        std::uint32_t step = count > 64 ? offsets[64] - offsets[0] : 0;
        bool repeats = hi + 3 - lo <= 128;
        for (std::size_t x = 0; repeats && x + 64 < count; ++x) repeats = offsets[x + 64] == offsets[x] + step;
        if (repeats) {
            plan.blocks = count / 64;
            plan.blockStart = lo;
            plan.blockStep = step;
            for (std::size_t k = 0; k < 192; ++k) plan.blockIndex.push_back((BYTE)(offsets[k / 3] - lo + k % 3));
            return;
        }
    }
    if (PlanPieces(offsets, count, plan)) return;
    for (std::size_t first = 0; first + 16 <= count; first += 16) {
        std::uint32_t lo = offsets[first], hi = offsets[first];
        for (std::size_t k = first; k < first + 16; ++k) {
            lo = std::min(lo, offsets[k]);
            hi = std::max(hi, offsets[k]);
        }
        if (hi + 3 - lo > 128) break;
        plan.start.push_back(lo);
        for (std::size_t k = 0; k < 64; ++k)
            plan.index.push_back((BYTE)(k < 48 ? offsets[first + k / 3] - lo + k % 3 : 0));
        ++plan.runs;
    }
}

namespace {

// Copies `n` bytes to a place that will not be read soon: the aligned 16-byte parts go straight
// to memory without first reading the lines they fill. StreamsDone() orders them before
// anything written after it.
void CopyStreaming(BYTE* to, const BYTE* from, std::size_t n) {
#if defined(QM_DIB_SSE2)
    std::size_t head = std::min(n, (std::size_t)(-(std::uintptr_t)to & 15));
    std::memcpy(to, from, head);
    std::size_t i = head;
    for (; i + 16 <= n; i += 16)
        _mm_stream_si128(reinterpret_cast<__m128i*>(to + i), _mm_loadu_si128(reinterpret_cast<const __m128i*>(from + i)));
    std::memcpy(to + i, from + i, n - i);
#else
    std::memcpy(to, from, n);
#endif
}
void StreamsDone() {
#if defined(QM_DIB_SSE2)
    _mm_sfence();
#endif
}

// A rectangle of storage pixels: [x0, x1) x [y0, y1).
struct Box {
    int x0, x1, y0, y1;
};

// The square's quarter turn a tile at a time: a tile of the quarter that every pixel's cycle
// of four positions passes once, and its three images under the turn, are read into four
// small blocks; each of the four is then written from the block of the position its pixels
// come from. Every pixel is read once and written once. Tiles of 128 pixels (192 KiB of blocks
// at 24 bits) stay in the second-level cache and read and write rows long enough to stream;
// smaller tiles that fit the first level measured slower, their short rows costing more than
// the misses they save.
template <std::size_t N>
void TurnTiles(BYTE* bits, std::uint64_t stride, int side, bool clockwise) {
    constexpr int kTile = 128;
    const int m = side - 1;
    // The position a pixel takes its value from, and the box of those positions.
    auto from = [m, clockwise](int x, int y, int& fx, int& fy) {
        if (clockwise) {
            fx = m - y;
            fy = x;
        } else {
            fx = y;
            fy = m - x;
        }
    };
    auto image = [m, clockwise](const Box& b) {
        return clockwise ? Box{m - b.y1 + 1, m - b.y0 + 1, b.x0, b.x1} : Box{b.y0, b.y1, m - b.x1 + 1, m - b.x0 + 1};
    };
    // On the heap: four tiles of 32-bit pixels would be 64 KiB of a caller's stack. Each block
    // has 64 bytes to spare, read (never used) past its last pixel by the 64-byte kernels.
    constexpr std::size_t kBlock = kTile * kTile * N + 64;
    std::vector<BYTE> storage(4 * kBlock);
    BYTE* blocks[4] = {storage.data(), storage.data() + kBlock, storage.data() + 2 * kBlock, storage.data() + 3 * kBlock};
    const bool wide = N == 3 && HasByteShuffle512();
    // A picture larger than the caches gets each turned tile through a small block, whose rows
    // are then streamed to memory whole: the picture's lines are written without being read.
    const bool stream = stride * (std::uint64_t)side >= kStreamedTarget;
    std::vector<BYTE> turned(stream ? kBlock : 0);
    for (int y0 = 0; y0 < side / 2; y0 += kTile)
        for (int x0 = 0; x0 < (side + 1) / 2; x0 += kTile) {
            Box box[4];
            box[0] = {x0, std::min(x0 + kTile, (side + 1) / 2), y0, std::min(y0 + kTile, side / 2)};
            for (int k = 1; k < 4; ++k) box[k] = image(box[k - 1]);
            for (int k = 0; k < 4; ++k) {
                const Box& b = box[k];
                std::size_t w = (std::size_t)(b.x1 - b.x0) * N;
                for (int y = b.y0; y < b.y1; ++y)
                    std::memcpy(blocks[k] + (std::size_t)(y - b.y0) * w, bits + stride * (std::uint64_t)y + N * (std::uint64_t)b.x0, w);
            }
            for (int k = 0; k < 4; ++k) {
                const Box& b = box[k];
                const Box& s = box[(k + 1) & 3];
                const BYTE* src = blocks[(k + 1) & 3];
                std::size_t sw = (std::size_t)(s.x1 - s.x0) * N;
                int n = b.x1 - b.x0;
                // Along a row of the target the source position moves along a column of the
                // block (by `step`), and from one target row to the next along a row of it
                // (left clockwise, right counter-clockwise).
                const std::ptrdiff_t step = clockwise ? (std::ptrdiff_t)sw : -(std::ptrdiff_t)sw;
                auto source = [&](int y) {
                    int fx, fy;
                    from(b.x0, y, fx, fy);
                    return src + (std::size_t)(fy - s.y0) * sw + N * (std::size_t)(fx - s.x0);
                };
                const std::size_t bw = (std::size_t)n * N;
                const std::uint64_t targetStride = stream ? bw : stride;
                auto target = [&](int y) {
                    return stream ? turned.data() + bw * (std::size_t)(y - b.y0) : bits + stride * (std::uint64_t)y + N * (std::uint64_t)b.x0;
                };
                int y = b.y0;
                if (wide) {
                    // 16 target rows at a time in blocks of 16 x 16 pixels: output row q of a
                    // block is target row y + q counter-clockwise, y + 15 - q clockwise.
                    const std::ptrdiff_t outStep = clockwise ? -(std::ptrdiff_t)targetStride : (std::ptrdiff_t)targetStride;
                    for (; y + 16 <= b.y1; y += 16) {
                        const BYTE* p = source(clockwise ? y + 15 : y);
                        BYTE* out = target(clockwise ? y + 15 : y);
                        int i = (int)Transpose24x16_512(p, step, out, outStep, (std::size_t)n);
                        for (int k = 0; k < 16; ++k) {
                            const BYTE* q = source(y + k) + i * step;
                            BYTE* o = target(y + k) + 3 * i;
                            for (int t = i; t < n; ++t, q += step, o += 3) std::memcpy(o, q, 3);
                        }
                    }
                }
                for (; y < b.y1; ++y) {
                    const BYTE* p = source(y);
                    BYTE* out = target(y);
                    if (N == 3) {
                        // Four pixels packed into 12 bytes take two stores instead of four;
                        // the last pixel is written alone, the byte after it being another's.
                        int i = 0;
                        for (; i + 4 <= n; i += 4, p += 4 * step)
                            Put4x3(out + 3 * i, Load32(p) & 0xFFFFFFu, Load32(p + step) & 0xFFFFFFu,
                                   Load32(p + 2 * step) & 0xFFFFFFu, Load32(p + 3 * step));
                        for (; i + 1 < n; ++i, p += step) Store32(out + 3 * i, Load32(p));
                        if (i < n) std::memcpy(out + 3 * i, p, 3);
                    } else {
                        for (int i = 0; i < n; ++i, p += step) std::memcpy(out + N * i, p, N);
                    }
                }
                if (stream)
                    for (int yy = b.y0; yy < b.y1; ++yy)
                        CopyStreaming(bits + stride * (std::uint64_t)yy + N * (std::uint64_t)b.x0, target(yy), bw);
            }
        }
    if (stream) StreamsDone();
}

}  // namespace

void QuarterTurnInPlace(BYTE* bits, std::uint64_t stride, int side, std::size_t pixelBytes, bool clockwise) {
    switch (pixelBytes) {
    case 1: TurnTiles<1>(bits, stride, side, clockwise); break;
    case 3: TurnTiles<3>(bits, stride, side, clockwise); break;
    case 4: TurnTiles<4>(bits, stride, side, clockwise); break;
    default: break;
    }
}

}  // namespace qm::dib
