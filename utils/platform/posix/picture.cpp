#include "utils/platform/picture.h"

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <mutex>
#include <vector>

// The formats whose decoders hold up on arbitrary bytes; the others stb_image has (PSD, HDR,
// PIC, TGA) are left out.
#define STB_IMAGE_IMPLEMENTATION
#define STBI_NO_STDIO
#define STBI_FAILURE_USERMSG
#define STBI_ONLY_PNG
#define STBI_ONLY_JPEG
#define STBI_ONLY_GIF
#define STBI_ONLY_BMP
#define STBI_ONLY_PNM
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

// A JPEG whose Huffman tables declare more than 256 codes would make stb_image's table
// builder write past its arrays: such files are refused before decoding. The walk goes over
// every marker segment, skipping entropy-coded data after each scan header.
bool JpegTablesSane(const std::vector<unsigned char>& d) {
    size_t n = d.size(), pos = 2;
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

// HIMETRIC extent of a pixel count at the screen's 96 pixels per inch.
LONG ToHimetric(int px) { return MulDiv(px, 2540, gdi::kLogPixels); }

}  // namespace

std::uint64_t SetPictureLoadLimit(std::uint64_t pixels) { return g_maxPixels.exchange(pixels); }

Picture* PictureLoad(IStream* stream) {
    std::vector<unsigned char> data;
    if (!stream || !ReadAll(stream, data) || data.empty() || data.size() > 0x7FFFFFFF) return nullptr;
    if (data.size() >= 2 && data[0] == 0xFF && data[1] == 0xD8 && !JpegTablesSane(data)) return nullptr;
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
