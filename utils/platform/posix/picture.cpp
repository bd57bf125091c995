#include "utils/platform/picture.h"

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <mutex>
#include <vector>

// The formats whose decoders hold up on arbitrary bytes; the others stb_image has (PSD, HDR,
// PIC, TGA) are left out, and binary PNM is read by LoadPnm below.
#define STB_IMAGE_IMPLEMENTATION
#define STBI_NO_STDIO
#define STBI_FAILURE_USERMSG
#define STBI_ONLY_PNG
#define STBI_ONLY_JPEG
#define STBI_ONLY_GIF
#define STBI_ONLY_BMP
// The decoder's own consistency checks are assert()s, and a damaged JPEG can trip one in the
// Huffman decoder (a code that does not match its table): in a build without NDEBUG that would
// abort the host over a bad file. The decoder stays within its buffers past those checks (the
// fuzz target runs it under ASan), so they are compiled out in every build, as in a release one.
#define STBI_ASSERT(x) ((void)0)
// The decoder's state is allocated zero-filled: a JPEG whose scan names a Huffman table that no
// table segment defined made the decoder read that table's uninitialised deltas and index far
// outside its symbol array. Zeroed, such a table decodes every code as symbol 0 of length 0,
// and the damaged picture comes out as grey blocks instead of a crash.
#define STBI_MALLOC(size) std::calloc(1, size)
#define STBI_REALLOC(block, size) std::realloc(block, size)
#define STBI_FREE(block) std::free(block)
#include <stb/stb_image.h>

#include "utils/platform/posix/gdi_objects.h"

namespace qm::platform {

struct Picture {
    int width = 0;
    int height = 0;
    std::vector<std::uint32_t> pixels;  // top-down, 0xAARRGGBB
};

namespace {

// Pictures beyond this many pixels (16 Mi, a 4096 x 4096 square) are refused before they
// are decoded, so that one picture never needs more than a few 64 MiB blocks.
constexpr std::uint64_t kMaxPixels = 1ull << 24;
std::atomic<std::uint64_t> g_maxPixels{kMaxPixels};
// Streams beyond this size are refused rather than read into memory.
constexpr std::uint64_t kMaxStream = 1ull << 30;

bool ReadAll(IStream* stream, std::vector<unsigned char>& out) {
    STATSTG st{};
    if (FAILED(stream->Stat(&st, STATFLAG_NONAME)) || st.cbSize.QuadPart > kMaxStream) return false;
    LARGE_INTEGER zero{};
    if (FAILED(stream->Seek(zero, STREAM_SEEK_SET, nullptr))) return false;
    out.resize((size_t)st.cbSize.QuadPart);
    ULONG got = 0;
    if (!out.empty() && (FAILED(stream->Read(out.data(), (ULONG)out.size(), &got)) || got != out.size())) return false;
    return true;
}

// Where a JPEG's marker segments start (just past its start marker), 0 for data that is no
// JPEG. The decoder takes any number of 0xFF fill bytes before the start marker, so a check
// of the first two bytes alone let such a file reach the decoder unchecked.
size_t JpegBody(const std::vector<unsigned char>& d) {
    if (d.empty() || d[0] != 0xFF) return 0;
    size_t i = 1;
    while (i < d.size() && d[i] == 0xFF) ++i;
    return i < d.size() && d[i] == 0xD8 ? i + 1 : 0;
}

// A JPEG whose Huffman tables declare more than 256 codes would make stb_image's table
// builder write past its arrays: such files are refused before decoding. The walk goes over
// every marker segment from `pos`, skipping entropy-coded data after each scan header.
bool JpegTablesSane(const std::vector<unsigned char>& d, size_t pos) {
    size_t n = d.size();
    while (pos + 1 < n) {
        if (d[pos] != 0xFF) {
            ++pos;  // entropy-coded data: look for the next marker
            continue;
        }
        unsigned char m = d[pos + 1];
        if (m == 0xFF) {
            ++pos;
            continue;
        }
        if (m == 0x00 || m == 0x01 || (m >= 0xD0 && m <= 0xD8)) {
            pos += 2;
            continue;
        }
        if (m == 0xD9 || pos + 4 > n) return true;
        size_t len = ((size_t)d[pos + 2] << 8) | d[pos + 3];
        if (m == 0xC4) {
            // The tables are read as the decoder reads them: one after another while the
            // segment's length lasts, counts past the end of the bytes reading as 0.
            long long left = (long long)len - 2;
            size_t q = pos + 4;
            auto at = [&](size_t i) -> unsigned { return i < n ? d[i] : 0u; };
            while (left > 0) {
                size_t codes = 0;
                for (size_t i = 1; i <= 16; ++i) codes += at(q + i);
                if (codes > 256) return false;
                q += 17 + codes;
                left -= 17 + (long long)codes;
            }
        }
        if (len < 2) return false;
        pos += 2 + len;
    }
    return true;
}

// stb_image grows its buffer for compressed PNG data by each chunk's declared length before it
// reads the chunk, so a few bytes that declare a 2 GiB chunk would make it ask for 2 GiB. A PNG
// whose chunks (up to the end chunk) do not all lie within the data is refused before decoding.
bool PngChunksFit(const std::vector<unsigned char>& d) {
    static const unsigned char kSignature[8] = {0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'};
    if (d.size() < 8 || std::memcmp(d.data(), kSignature, 8) != 0) return true;  // not a PNG
    size_t pos = 8;
    while (pos + 12 <= d.size()) {
        const std::uint32_t length = ((std::uint32_t)d[pos] << 24) | ((std::uint32_t)d[pos + 1] << 16) |
                                     ((std::uint32_t)d[pos + 2] << 8) | d[pos + 3];
        if (length > d.size() - pos - 12) return false;
        if (std::memcmp(&d[pos + 4], "IEND", 4) == 0) return true;
        pos += 12 + (size_t)length;
    }
    return false;  // no end chunk within the data
}

// Binary PNM: P5 (grey) and P6 (RGB), samples of one byte, or two bytes big-endian when the
// maximum exceeds 255, scaled from 0..maximum to 0..255. Read here and not by stb_image, whose
// PNM loader takes two-byte samples in the machine's byte order, ignores a maximum below 255,
// and widens a two-byte file's channels with its one-byte converter and then reads past that
// block (a 16-bit PGM crashed the host).
bool IsPnm(const std::vector<unsigned char>& d) { return d.size() >= 2 && d[0] == 'P' && (d[1] == '5' || d[1] == '6'); }

bool IsPnmBlank(unsigned char c) { return c == ' ' || (c >= '\t' && c <= '\r'); }

// Moves pos past whitespace and # comments (to the end of their line); false at the end.
bool SkipPnmBlanks(const std::vector<unsigned char>& d, size_t& pos) {
    while (pos < d.size()) {
        if (d[pos] == '#') {
            while (pos < d.size() && d[pos] != '\n' && d[pos] != '\r') ++pos;
        } else if (IsPnmBlank(d[pos])) {
            ++pos;
        } else {
            return true;
        }
    }
    return false;
}

// A decimal header field of 1..limit.
bool ReadPnmField(const std::vector<unsigned char>& d, size_t& pos, std::uint64_t limit, std::uint64_t& out) {
    if (!SkipPnmBlanks(d, pos) || d[pos] < '0' || d[pos] > '9') return false;
    out = 0;
    for (; pos < d.size() && d[pos] >= '0' && d[pos] <= '9'; ++pos)
        if ((out = out * 10 + (d[pos] - '0')) > limit) return false;
    return out >= 1;
}

Picture* LoadPnm(const std::vector<unsigned char>& d) {
    const size_t channels = d[1] == '6' ? 3 : 1;
    size_t pos = 2;
    std::uint64_t width = 0, height = 0, maximum = 0;
    if (!ReadPnmField(d, pos, 1u << 24, width) || !ReadPnmField(d, pos, 1u << 24, height) ||
        !ReadPnmField(d, pos, 65535, maximum) || width * height > g_maxPixels.load())
        return nullptr;
    // One whitespace byte ends the header; the raster follows it.
    if (pos >= d.size() || !IsPnmBlank(d[pos])) return nullptr;
    ++pos;
    const size_t sampleSize = maximum > 255 ? 2 : 1, samples = (size_t)(width * height) * channels;
    if ((d.size() - pos) / sampleSize < samples) return nullptr;  // a raster cut short
    // Each sample through a table; values above the maximum (not allowed) come out white.
    std::vector<unsigned char> scaled((size_t)maximum + 1);
    for (std::uint64_t v = 0; v <= maximum; ++v) scaled[(size_t)v] = (unsigned char)((v * 255 + maximum / 2) / maximum);
    auto sample = [&](size_t i) -> unsigned {
        const unsigned char* q = &d[pos + i * sampleSize];
        unsigned v = sampleSize == 2 ? (unsigned)q[0] << 8 | q[1] : q[0];
        return v <= maximum ? scaled[v] : 255u;
    };
    auto* p = new Picture;
    p->width = (int)width;
    p->height = (int)height;
    p->pixels.resize((size_t)(width * height));
    for (size_t i = 0; i < p->pixels.size(); ++i) {
        const size_t at = i * channels;
        const std::uint32_t r = sample(at), g = channels == 3 ? sample(at + 1) : r, b = channels == 3 ? sample(at + 2) : r;
        p->pixels[i] = 0xFF000000u | r << 16 | g << 8 | b;
    }
    return p;
}

// HIMETRIC extent of a pixel count at the screen's 96 pixels per inch.
LONG ToHimetric(int px) { return MulDiv(px, 2540, gdi::kLogPixels); }

}  // namespace

std::uint64_t SetPictureLoadLimit(std::uint64_t pixels) { return g_maxPixels.exchange(pixels); }

Picture* PictureLoad(IStream* stream) {
    std::vector<unsigned char> data;
    if (!stream || !ReadAll(stream, data) || data.empty() || data.size() > 0x7FFFFFFF) return nullptr;
    if (const size_t body = JpegBody(data); body && !JpegTablesSane(data, body)) return nullptr;
    if (IsPnm(data)) return LoadPnm(data);
    if (!PngChunksFit(data)) return nullptr;
    int w = 0, h = 0, n = 0;
    if (!stbi_info_from_memory(data.data(), (int)data.size(), &w, &h, &n) || w < 1 || h < 1 ||
        (std::uint64_t)w * (std::uint64_t)h > g_maxPixels.load())
        return nullptr;
    unsigned char* rgba = stbi_load_from_memory(data.data(), (int)data.size(), &w, &h, &n, 4);
    if (!rgba) return nullptr;
    auto* p = new Picture;
    p->width = w;
    p->height = h;
    p->pixels.resize((size_t)w * (size_t)h);
    for (size_t i = 0; i < p->pixels.size(); ++i) {
        const unsigned char* q = rgba + 4 * i;
        p->pixels[i] = ((std::uint32_t)q[3] << 24) | ((std::uint32_t)q[0] << 16) | ((std::uint32_t)q[1] << 8) | q[2];
    }
    stbi_image_free(rgba);
    return p;
}

bool PictureExtent(Picture* picture, LONG* width, LONG* height) {
    if (!picture || !width || !height) return false;
    *width = ToHimetric(picture->width);
    *height = ToHimetric(picture->height);
    return true;
}

bool PictureRender(Picture* picture, HDC hdc, int x, int y, int cx, int cy, LONG xSrc, LONG ySrc, LONG cxSrc,
                   LONG cySrc) {
    if (!picture) return false;
    std::lock_guard<std::recursive_mutex> lock(gdi::Lock());
    gdi::Dc* dc = gdi::FindDc(hdc);
    LONG hmW = ToHimetric(picture->width), hmH = ToHimetric(picture->height);
    if (!dc || hmW <= 0 || hmH <= 0) return false;
    // HIMETRIC source (origin bottom left) to pixel rows counted from the top.
    int xs = MulDiv(xSrc, picture->width, hmW), cxs = MulDiv(cxSrc, picture->width, hmW);
    int ys = MulDiv(hmH - ySrc, picture->height, hmH), cys = MulDiv(-cySrc, picture->height, hmH);
    gdi::PixelSource src;
    src.width = picture->width;
    src.height = picture->height;
    // Transparent and translucent pixels are drawn over black, as over a fresh bitmap.
    src.readRow = [picture](int row, std::uint32_t* out) {
        const std::uint32_t* in = picture->pixels.data() + (size_t)row * (size_t)picture->width;
        for (int i = 0; i < picture->width; ++i) {
            std::uint32_t p = in[i], a = p >> 24;
            if (a == 255) {
                out[i] = p & 0xFFFFFF;
                continue;
            }
            std::uint32_t r = ((p >> 16) & 0xFF) * a / 255, g = ((p >> 8) & 0xFF) * a / 255, b = (p & 0xFF) * a / 255;
            out[i] = (r << 16) | (g << 8) | b;
        }
    };
    return gdi::Stretch(*dc->surface, x, y, cx, cy, src, xs, ys, cxs, cys, HALFTONE, SRCCOPY);
}

void PictureRelease(Picture* picture) { delete picture; }

}  // namespace qm::platform
