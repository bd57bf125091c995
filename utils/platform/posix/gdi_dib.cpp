// Device-independent bitmaps on the POSIX graphics backend: reading DIB rows of every depth
// into 32-bit pixels for SetDIBitsToDevice, StretchDIBits and DrawDibDraw, and writing a
// bitmap's pixels out as DIB rows for GetDIBits.
#include <algorithm>
#include <cstring>
#include <memory>
#include <mutex>
#include <unordered_set>
#include <vector>

#if defined(__x86_64__) || defined(__i386__)
#include <immintrin.h>
#endif

#include "utils/platform/cpu.h"
#include "utils/platform/gdi.h"
#include "utils/platform/posix/gdi_objects.h"

#if defined(__x86_64__) || defined(__i386__)
#include <immintrin.h>
#endif

namespace qm::platform {

namespace {

using gdi::PixelSource;

std::uint32_t Expand(std::uint32_t v, std::uint32_t mask) {
    if (!mask) return 0;
    int shift = 0;
    while (!(mask & 1u)) { mask >>= 1; ++shift; }
    int width = 0;
    while (mask & 1u) { mask >>= 1; ++width; }
    std::uint32_t c = (v >> shift) & ((width >= 32) ? 0xFFFFFFFFu : ((1u << width) - 1));
    if (width >= 8) return c >> (width - 8);
    // Narrow channels are widened by repeating their bits.
    std::uint32_t out = 0;
    for (int filled = 0; filled < 8; filled += width) out = (out << width) | c;
    return (out >> (((8 + width - 1) / width) * width - 8)) & 0xFF;
}

// 64-byte byte permutations (AVX-512 VBMI, see cpu.h); the kernel below is
// compiled for them alone and called only when they are there.
#if defined(__x86_64__) || defined(__i386__)
#define QM_GDI_VBMI __attribute__((target("avx512f,avx512bw,avx512vbmi")))

// 16 pixels of 24 bits as 32-bit pixels per group: two 64-byte reads of the group's window
// and one two-register permutation that also clears each fourth byte. Groups without a
// window are read a word per pixel.
QM_GDI_VBMI void Gather24To32_512(const unsigned char* row, const std::uint32_t* window, const unsigned char* index,
                                  std::size_t groups, const std::uint32_t* load, const unsigned char* shift,
                                  std::uint32_t* out) {
    for (std::size_t g = 0; g < groups; ++g, out += 16) {
        if (window[g] == 0xFFFFFFFFu) {
            for (std::size_t i = 16 * g; i < 16 * g + 16; ++i) {
                std::uint32_t v;
                std::memcpy(&v, row + load[i], 4);
                out[i - 16 * g] = (v >> shift[i]) & 0xFFFFFF;
            }
            continue;
        }
        const unsigned char* w = row + window[g];
        __m512i a = _mm512_loadu_si512(w), b = _mm512_loadu_si512(w + 64);
        __m512i idx = _mm512_loadu_si512(index + 64 * g);
        _mm512_storeu_si512(out, _mm512_maskz_permutex2var_epi8(0x7777777777777777ull, a, idx, b));
    }
}
#else
void Gather24To32_512(const unsigned char*, const std::uint32_t*, const unsigned char*, std::size_t,
                      const std::uint32_t*, const unsigned char*, std::uint32_t*) {}
#endif

// The rows of a DIB as 32-bit pixels. Valid only for the formats GDI draws: 1, 4, 8, 16, 24
// or 32 bits, BI_RGB (or BI_BITFIELDS at 16 and 32 bits), a width of at least 1, a height
// other than 0 and at most 2 GiB of rows.
struct Dib {
    bool valid = false;
    int width = 0, height = 0;  // height positive; topDown tells the order
    bool topDown = false;
    int bits = 0;
    std::uint64_t stride = 0;
    const unsigned char* rows = nullptr;
    std::uint32_t palette[256] = {};
    std::uint32_t masks[3] = {0x7C00, 0x03E0, 0x001F};

    Dib(const BITMAPINFOHEADER* h, const void* pixels, UINT colorUse) {
        if (!h || !pixels || h->biSize < 40 || h->biPlanes != 1 || h->biWidth < 1 || h->biHeight == 0 ||
            h->biHeight == (LONG)0x80000000)
            return;
        bits = h->biBitCount;
        if (bits != 1 && bits != 4 && bits != 8 && bits != 16 && bits != 24 && bits != 32) return;
        bool fields = h->biCompression == BI_BITFIELDS && (bits == 16 || bits == 32);
        if (h->biCompression != BI_RGB && !fields) return;
        width = h->biWidth;
        topDown = h->biHeight < 0;
        height = topDown ? -h->biHeight : h->biHeight;
        stride = ((std::uint64_t)width * (std::uint64_t)bits + 31) / 32 * 4;
        if (stride * (std::uint64_t)height > 0x7FFFFFFFull) return;
        rows = (const unsigned char*)pixels;
        const unsigned char* after = (const unsigned char*)h + h->biSize;
        if (bits == 32 && !fields) masks[0] = 0xFF0000, masks[1] = 0xFF00, masks[2] = 0xFF;
        if (fields) std::memcpy(masks, after, 12);
        if (bits <= 8) {
            DWORD count = h->biClrUsed ? std::min<DWORD>(h->biClrUsed, 1u << bits) : (1u << bits);
            // Palette indexes (DIB_PAL_COLORS) have no palette here: they are read as grey.
            for (DWORD i = 0; i < count; ++i) {
                const unsigned char* q = after + 4 * i;
                palette[i] = colorUse == DIB_PAL_COLORS ? (i & 0xFF) * 0x010101u
                                                        : ((std::uint32_t)q[2] << 16) | ((std::uint32_t)q[1] << 8) | q[0];
            }
        }
        valid = true;
    }

    // Row y counted from the top of the picture, taken from `first` (scan line of the first
    // row held) when only some scan lines are held; false when the row is not held.
    bool ReadRow(int y, std::uint32_t* out, UINT firstScan, UINT scans) const {
        std::uint64_t scan = topDown ? (std::uint64_t)y : (std::uint64_t)(height - 1 - y);
        if (scan < firstScan || scan >= (std::uint64_t)firstScan + scans) return false;
        const unsigned char* r = rows + (scan - firstScan) * stride;
        // The common depths a whole row at a time; the others pixel by pixel below.
        if (bits == 24) {
            for (int x = 0; x < width; ++x, r += 3) out[x] = ((std::uint32_t)r[2] << 16) | ((std::uint32_t)r[1] << 8) | r[0];
            return true;
        }
        if (bits == 8) {
            for (int x = 0; x < width; ++x) out[x] = palette[r[x]];
            return true;
        }
        if (bits == 32 && masks[0] == 0xFF0000 && masks[1] == 0xFF00 && masks[2] == 0xFF) {
            for (int x = 0; x < width; ++x, r += 4) out[x] = ((std::uint32_t)r[2] << 16) | ((std::uint32_t)r[1] << 8) | r[0];
            return true;
        }
        for (int x = 0; x < width; ++x) {
            std::uint32_t p = 0;
            switch (bits) {
            case 1: p = palette[(r[x >> 3] >> (7 - (x & 7))) & 1]; break;
            case 4: p = palette[(x & 1) ? (r[x >> 1] & 0x0F) : (r[x >> 1] >> 4)]; break;
            case 8: p = palette[r[x]]; break;
            case 16: {
                std::uint32_t v = (std::uint32_t)r[2 * x] | ((std::uint32_t)r[2 * x + 1] << 8);
                p = (Expand(v, masks[0]) << 16) | (Expand(v, masks[1]) << 8) | Expand(v, masks[2]);
                break;
            }
            case 24: p = ((std::uint32_t)r[3 * x + 2] << 16) | ((std::uint32_t)r[3 * x + 1] << 8) | r[3 * x]; break;
            case 32: {
                std::uint32_t v;
                std::memcpy(&v, r + 4 * x, 4);
                p = (Expand(v, masks[0]) << 16) | (Expand(v, masks[1]) << 8) | Expand(v, masks[2]);
                break;
            }
            }
            out[x] = p;
        }
        return true;
    }

    // What a row sampler knows of its columns: for 24 bits, the 4-byte word each column is
    // read from (kept inside the row) and how far its pixel lies above that word's first
    // byte, and for each group of 16 columns whose bytes lie within 128 bytes of the row the
    // start of that window and which of its bytes each of the 64 result bytes takes.
    struct Columns {
        std::vector<std::int32_t> cols;
        std::vector<std::uint32_t> load;
        std::vector<unsigned char> shift;
        std::vector<std::uint32_t> window;  // kNoWindow: the group is read word by word
        std::vector<unsigned char> index;
        std::vector<std::uint32_t> whole;   // other formats: the whole row
    };
    static constexpr std::uint32_t kNoWindow = 0xFFFFFFFFu;

    void PlanColumns(Columns& c) const {
        if (bits != 24) return;
        std::size_t n = c.cols.size();
        c.load.resize(n);
        c.shift.resize(n);
        for (std::size_t i = 0; i < n; ++i) {
            std::uint64_t at = 3 * (std::uint64_t)c.cols[i];
            std::uint64_t word = std::min<std::uint64_t>(at, stride - 4);
            c.load[i] = (std::uint32_t)word;
            c.shift[i] = (unsigned char)(8 * (at - word));
        }
        if (!HasByteShuffle512() || stride < 128 || stride > 0xFFFFFFFFull) return;
        for (std::size_t first = 0; first + 16 <= n; first += 16) {
            std::uint64_t lo = 3 * (std::uint64_t)c.cols[first], hi = lo;
            for (std::size_t k = first; k < first + 16; ++k) {
                lo = std::min<std::uint64_t>(lo, 3 * (std::uint64_t)c.cols[k]);
                hi = std::max<std::uint64_t>(hi, 3 * (std::uint64_t)c.cols[k]);
            }
            if (hi + 3 - lo > 128) {
                c.window.push_back(kNoWindow);
                c.index.insert(c.index.end(), 64, 0);
                continue;
            }
            // The window starts at the first byte wanted, or earlier where that keeps all of
            // it inside the row.
            std::uint64_t from = std::min<std::uint64_t>(lo, stride - 128);
            c.window.push_back((std::uint32_t)from);
            for (std::size_t k = 0; k < 64; ++k)
                c.index.push_back((unsigned char)(k % 4 == 3 ? 0 : 3 * (std::uint64_t)c.cols[first + k / 4] - from + k % 4));
        }
    }

    // Pixels c.cols[i] of row y: 24 bits, 32 bits with 8-bit masks and palette indexes read
    // straight from the row, other formats through ReadRow.
    void SampleRow(int y, Columns& c, std::uint32_t* out, UINT firstScan, UINT scans) const {
        std::size_t n = c.cols.size();
        const std::int32_t* cols = c.cols.data();
        std::uint64_t scan = topDown ? (std::uint64_t)y : (std::uint64_t)(height - 1 - y);
        if (scan < firstScan || scan >= (std::uint64_t)firstScan + scans) {
            std::fill(out, out + n, 0u);
            return;
        }
        const unsigned char* r = rows + (scan - firstScan) * stride;
        bool plain32 = bits == 32 && masks[0] == 0xFF0000 && masks[1] == 0xFF00 && masks[2] == 0xFF;
        if (bits == 24) {
            std::size_t groups = c.window.size();
            if (groups) Gather24To32_512(r, c.window.data(), c.index.data(), groups, c.load.data(), c.shift.data(), out);
            for (std::size_t i = 16 * groups; i < n; ++i) {
                std::uint32_t v;
                std::memcpy(&v, r + c.load[i], 4);
                out[i] = (v >> c.shift[i]) & 0xFFFFFF;
            }
        } else if (plain32) {
            for (std::size_t i = 0; i < n; ++i) {
                std::uint32_t v;
                std::memcpy(&v, r + 4 * (std::uint64_t)cols[i], 4);
                out[i] = v & 0xFFFFFF;
            }
        } else if (bits == 8) {
            for (std::size_t i = 0; i < n; ++i) out[i] = palette[r[cols[i]]];
        } else {
            c.whole.resize((size_t)width);
            ReadRow(y, c.whole.data(), firstScan, scans);
            for (std::size_t i = 0; i < n; ++i) out[i] = c.whole[(size_t)cols[i]];
        }
    }

    PixelSource Source(UINT firstScan, UINT scans) const {
        PixelSource s;
        s.width = width;
        s.height = height;
        s.readRow = [this, firstScan, scans](int y, std::uint32_t* out) {
            if (!ReadRow(y, out, firstScan, scans)) std::fill(out, out + width, 0u);
        };
        s.sampler = [this, firstScan, scans](const std::int32_t* cols, std::size_t n) -> PixelSource::RowSampler {
            auto c = std::make_shared<Columns>();
            c->cols.assign(cols, cols + n);
            PlanColumns(*c);
            return [this, firstScan, scans, c](int y, std::uint32_t* out) { SampleRow(y, *c, out, firstScan, scans); };
        };
        return s;
    }
};

// n pixels of a 24-bit row onto 32-bit pixels, leaving those of the key colour alone. Four
// pixels at a time from three 32-bit words, kept or dropped without a branch (keyed pixels come
// in no predictable pattern).
#if defined(__x86_64__) || defined(__i386__)
// The same with byte shuffles (SSSE3, checked at run time): four pixels from each 16-byte load.
__attribute__((target("ssse3"))) long long KeyRow24Shuffle(const unsigned char* src, std::uint32_t* dst, long long n,
                                                           std::uint32_t key) {
    const __m128i spread = _mm_setr_epi8(0, 1, 2, -128, 3, 4, 5, -128, 6, 7, 8, -128, 9, 10, 11, -128);
    const __m128i k = _mm_set1_epi32((int)key);
    long long i = 0;
    // A load reads 16 bytes for 12: it stays inside the row while 3 * i + 16 <= 3 * n.
    for (; i + 6 <= n; i += 4, src += 12) {
        __m128i p = _mm_shuffle_epi8(_mm_loadu_si128((const __m128i*)src), spread);
        __m128i keyed = _mm_cmpeq_epi32(p, k);
        __m128i d = _mm_loadu_si128((const __m128i*)(dst + i));
        _mm_storeu_si128((__m128i*)(dst + i), _mm_or_si128(_mm_and_si128(keyed, d), _mm_andnot_si128(keyed, p)));
    }
    return i;
}

// Sixteen pixels from each 64-byte load (AVX-512 VBMI, checked at run time): spread into
// 32-bit lanes with a zero top byte, compared with the key, and only the lanes that differ
// stored, so the destination is never loaded by the kernel.
__attribute__((target("avx512f,avx512bw,avx512vbmi"))) long long KeyRow24Wide(const unsigned char* src,
                                                                              std::uint32_t* dst, long long n,
                                                                              std::uint32_t key) {
    alignas(64) static const unsigned char kSpread[64] = {
        0,  1,  2,  0, 3,  4,  5,  0, 6,  7,  8,  0, 9,  10, 11, 0, 12, 13, 14, 0, 15, 16,
        17, 0,  18, 19, 20, 0, 21, 22, 23, 0, 24, 25, 26, 0, 27, 28, 29, 0, 30, 31, 32, 0,
        33, 34, 35, 0,  36, 37, 38, 0, 39, 40, 41, 0, 42, 43, 44, 0, 45, 46, 47, 0};
    const __m512i spread = _mm512_load_si512(kSpread);
    const __mmask64 colourBytes = 0x7777777777777777ull;  // the top byte of each lane is zero
    const __m512i k = _mm512_set1_epi32((int)key);
    long long i = 0;
    // A load reads 64 bytes for 48: it stays inside the row while 3 * i + 64 <= 3 * n.
    for (; 3 * i + 64 <= 3 * n; i += 16, src += 48) {
        __m512i p = _mm512_maskz_permutexvar_epi8(colourBytes, spread, _mm512_loadu_si512(src));
        _mm512_mask_storeu_epi32(dst + i, _mm512_cmpneq_epi32_mask(p, k), p);
    }
    return i;
}

bool HasShuffle() {
    static const bool has = [] {
        __builtin_cpu_init();
        return __builtin_cpu_supports("ssse3") != 0;
    }();
    return has;
}
#endif

void KeyRow24(const unsigned char* src, std::uint32_t* dst, long long n, std::uint32_t key) {
    long long i = 0;
#if defined(__x86_64__) || defined(__i386__)
    if (HasByteShuffle512()) {
        i = KeyRow24Wide(src, dst, n, key);
        src += 3 * i;
    }
    if (HasShuffle()) {
        long long more = KeyRow24Shuffle(src, dst + i, n - i, key);
        i += more;
        src += 3 * more;
    }
#endif
    for (; i + 4 <= n; i += 4, src += 12) {
        std::uint32_t w[3];
        std::memcpy(w, src, 12);
        const std::uint32_t p[4] = {w[0] & 0xFFFFFF, (w[0] >> 24) | ((w[1] & 0xFFFF) << 8),
                                    (w[1] >> 16) | ((w[2] & 0xFF) << 16), w[2] >> 8};
        for (int q = 0; q < 4; ++q) {
            std::uint32_t keep = (std::uint32_t)0 - (std::uint32_t)(p[q] == key);
            dst[i + q] = (dst[i + q] & keep) | (p[q] & ~keep);
        }
    }
    for (; i < n; ++i, src += 3) {
        std::uint32_t v = ((std::uint32_t)src[2] << 16) | ((std::uint32_t)src[1] << 8) | src[0];
        if (v != key) dst[i] = v;
    }
}

}  // namespace

int GdiSetDIBitsToDevice(HDC hdc, int xDest, int yDest, DWORD w, DWORD h, int xSrc, int ySrc, UINT startScan,
                         UINT cLines, const void* bits, const BITMAPINFO* bmi, UINT colorUse) {
    std::lock_guard<std::recursive_mutex> lock(gdi::Lock());
    gdi::Dc* dc = gdi::FindDc(hdc);
    if (!dc || !bmi) return 0;
    Dib dib(&bmi->bmiHeader, bits, colorUse);
    if (!dib.valid || w > 0x7FFFFFFF || h > 0x7FFFFFFF) return 0;
    // Only the scan lines held are drawn: rows outside them leave the destination alone.
    long long ys = dib.topDown ? (long long)ySrc : (long long)dib.height - ySrc - (long long)h;
    std::vector<std::uint32_t> row((size_t)dib.width);
    for (long long j = 0; j < (long long)h; ++j) {
        long long y = ys + j, dy = (long long)yDest + j;
        if (y < 0 || y >= dib.height || dy < 0 || dy >= dc->surface->height) continue;
        if (!dib.ReadRow((int)y, row.data(), startScan, cLines)) continue;
        std::uint32_t* out = dc->surface->Row((int)dy);
        for (long long i = 0; i < (long long)w; ++i) {
            long long x = (long long)xSrc + i, dx = (long long)xDest + i;
            if (x < 0 || x >= dib.width || dx < 0 || dx >= dc->surface->width) continue;
            out[dx] = row[(size_t)x];
        }
    }
    return (int)cLines;
}

BOOL GdiSetDIBitsTransparent(HDC hdc, int x, int y, const BITMAPINFO* bmi, const void* bits, COLORREF key) {
    std::lock_guard<std::recursive_mutex> lock(gdi::Lock());
    gdi::Dc* dc = gdi::FindDc(hdc);
    if (!dc || !bmi) return FALSE;
    Dib dib(&bmi->bmiHeader, bits, DIB_RGB_COLORS);
    if (!dib.valid) return FALSE;
    gdi::Surface& s = *dc->surface;
    const std::uint32_t k = gdi::ToPixel(key);
    long long xFrom = std::max<long long>(0, -(long long)x);
    long long xTo = std::min<long long>(dib.width, (long long)s.width - x);
    if (xFrom >= xTo) return TRUE;
    std::vector<std::uint32_t> row;
    for (int j = 0; j < dib.height; ++j) {
        long long dy = (long long)y + j;
        if (dy < 0 || dy >= s.height) continue;
        // out[i] is the destination of source column i (only xFrom <= i < xTo are touched).
        std::uint32_t* line = s.Row((int)dy) + (x + xFrom);
        auto out = [line, xFrom](long long i) -> std::uint32_t& { return line[i - xFrom]; };
        if (dib.bits == 24) {
            std::uint64_t scan = dib.topDown ? (std::uint64_t)j : (std::uint64_t)(dib.height - 1 - j);
            KeyRow24(dib.rows + scan * dib.stride + 3 * xFrom, line, xTo - xFrom, k);
            continue;
        }
        row.resize((size_t)dib.width);
        dib.ReadRow(j, row.data(), 0, (UINT)dib.height);
        for (long long i = xFrom; i < xTo; ++i)
            if (row[(size_t)i] != k) out(i) = row[(size_t)i];
    }
    return TRUE;
}

int GdiStretchDIBits(HDC hdc, int xDest, int yDest, int destWidth, int destHeight, int xSrc, int ySrc, int srcWidth,
                     int srcHeight, const void* bits, const BITMAPINFO* bmi, UINT usage, DWORD rop) {
    std::lock_guard<std::recursive_mutex> lock(gdi::Lock());
    gdi::Dc* dc = gdi::FindDc(hdc);
    if (!dc || !bmi) return 0;
    Dib dib(&bmi->bmiHeader, bits, usage);
    if (!dib.valid) return 0;
    // The source rectangle of a bottom-up DIB is measured from its bottom row.
    long long ys = dib.topDown ? (long long)ySrc : (long long)dib.height - ySrc - srcHeight;
    if (ys < INT32_MIN || ys > INT32_MAX) return 0;
    if (!gdi::Stretch(*dc->surface, xDest, yDest, destWidth, destHeight, dib.Source(0, (UINT)dib.height),
                      xSrc, (int)ys, srcWidth, srcHeight, dc->stretchMode, rop))
        return 0;
    return dib.height;
}

int GdiGetDIBits(HDC hdc, HBITMAP bmp, UINT start, UINT cLines, void* bits, BITMAPINFO* bmi, UINT usage) {
    std::lock_guard<std::recursive_mutex> lock(gdi::Lock());
    gdi::Surface* s = gdi::FindSurface(bmp);
    if (!gdi::FindDc(hdc) || !s || !bmi) return 0;
    BITMAPINFOHEADER& h = bmi->bmiHeader;
    if (h.biSize < 40) return 0;
    if (h.biBitCount == 0) {
        // The bitmap's own format: 32 bits per pixel, bottom-up.
        h.biWidth = s->width;
        h.biHeight = s->height;
        h.biPlanes = 1;
        h.biBitCount = 32;
        h.biCompression = BI_RGB;
        h.biSizeImage = (DWORD)((std::uint64_t)s->width * 4 * (std::uint64_t)s->height);
        h.biClrUsed = 0;
        h.biClrImportant = 0;
        return bits ? 0 : 1;
    }
    int depth = h.biBitCount;
    if ((depth != 16 && depth != 24 && depth != 32) || h.biCompression != BI_RGB || h.biHeight == 0 ||
        h.biWidth != s->width || h.biPlanes != 1)
        return 0;
    bool topDown = h.biHeight < 0;
    std::uint64_t height = topDown ? (std::uint64_t)(-(long long)h.biHeight) : (std::uint64_t)h.biHeight;
    std::uint64_t stride = ((std::uint64_t)s->width * (std::uint64_t)depth + 31) / 32 * 4;
    h.biSizeImage = (DWORD)std::min<std::uint64_t>(stride * height, 0xFFFFFFFFu);
    if (!bits) return 1;
    // Scan lines beyond the bitmap are not copied.
    std::uint64_t last = std::min<std::uint64_t>((std::uint64_t)start + cLines, std::min<std::uint64_t>(height, (std::uint64_t)s->height));
    int copied = 0;
    for (std::uint64_t scan = start; scan < last; ++scan) {
        int y = topDown ? (int)scan : s->height - 1 - (int)scan;
        const std::uint32_t* in = s->Row(y);
        unsigned char* out = (unsigned char*)bits + (scan - start) * stride;
        std::memset(out, 0, (size_t)stride);
        for (int x = 0; x < s->width; ++x) {
            std::uint32_t p = in[x];
            if (depth == 32) {
                std::memcpy(out + 4 * x, &p, 4);
            } else if (depth == 24) {
                out[3 * x] = (unsigned char)p;
                out[3 * x + 1] = (unsigned char)(p >> 8);
                out[3 * x + 2] = (unsigned char)(p >> 16);
            } else {
                std::uint32_t v = ((p >> 9) & 0x7C00) | ((p >> 6) & 0x03E0) | ((p >> 3) & 0x001F);
                out[2 * x] = (unsigned char)v;
                out[2 * x + 1] = (unsigned char)(v >> 8);
            }
        }
        ++copied;
    }
    return copied;
}

namespace {
std::mutex g_drawDibLock;
std::unordered_set<void*> g_drawDibs;
}  // namespace

void* GdiDrawDibOpen() {
    std::lock_guard<std::mutex> lock(g_drawDibLock);
    void* h = new char(0);
    g_drawDibs.insert(h);
    return h;
}

BOOL GdiDrawDibClose(void* hdd) {
    std::lock_guard<std::mutex> lock(g_drawDibLock);
    if (!g_drawDibs.erase(hdd)) return FALSE;
    delete (char*)hdd;
    return TRUE;
}

BOOL GdiDrawDibDraw(void* hdd, HDC hdc, int xDst, int yDst, int dxDst, int dyDst, const BITMAPINFOHEADER* lpbi,
                    const void* lpBits, int xSrc, int ySrc, int dxSrc, int dySrc, UINT wFlags) {
    {
        std::lock_guard<std::mutex> lock(g_drawDibLock);
        if (!g_drawDibs.count(hdd)) return FALSE;
    }
    std::lock_guard<std::recursive_mutex> lock(gdi::Lock());
    gdi::Dc* dc = gdi::FindDc(hdc);
    // DrawDib draws bottom-up DIBs only; its source rectangle is measured from the top.
    if (!dc || !lpbi || lpbi->biHeight < 1) return FALSE;
    Dib dib(lpbi, lpBits, DIB_RGB_COLORS);
    if (!dib.valid) return FALSE;
    if (dxSrc < 0) dxSrc = dib.width;
    if (dySrc < 0) dySrc = dib.height;
    if (dxDst < 0) dxDst = dxSrc;
    if (dyDst < 0) dyDst = dySrc;
    return gdi::Stretch(*dc->surface, xDst, yDst, dxDst, dyDst, dib.Source(0, (UINT)dib.height), xSrc, ySrc,
                        dxSrc, dySrc, COLORONCOLOR, SRCCOPY)
               ? TRUE
               : FALSE;
}

}  // namespace qm::platform
