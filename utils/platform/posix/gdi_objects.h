// The POSIX graphics backend's own objects: 32-bit pixel surfaces, fonts measured with
// FreeType, device contexts, and the table of live handles that every call checks.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <vector>

#include "utils/framework/wingdc.h"

namespace qm::platform::gdi {

enum class Kind { Dc, Bitmap, Font, Pen, Brush };

struct Object {
    explicit Object(Kind k) : kind(k) {}
    virtual ~Object() = default;
    Kind kind;
    bool stock = false;          // never deleted
    int selections = 0;          // device contexts that have it selected
    bool deletePending = false;  // DeleteObject while selected: freed when last deselected
};

// Pixels top-down, each 0x00RRGGBB (the byte order of a 32-bit DIB row: blue, green, red, 0).
struct Surface : Object {
    Surface(int w, int h) : Object(Kind::Bitmap), width(w), height(h), pixels((size_t)w * (size_t)h, 0) {}
    int width;
    int height;
    std::vector<std::uint32_t> pixels;
    std::uint32_t* Row(int y) { return pixels.data() + (size_t)y * (size_t)width; }
};

// A sized font: metrics and the advance width of every 8-bit character.
struct FontFace {
    TEXTMETRICA metrics{};
    int advance[256]{};
};

struct Font : Object {
    Font() : Object(Kind::Font) {}
    LOGFONTA logFont{};
    std::shared_ptr<const FontFace> face;
};

// A cosmetic pen: solid or null, `width` pixels wide (at least 1).
struct Pen : Object {
    Pen() : Object(Kind::Pen) {}
    int style = PS_SOLID;
    int width = 1;
    COLORREF color = 0;
};

// A solid brush, or the null (hollow) brush.
struct Brush : Object {
    Brush() : Object(Kind::Brush) {}
    bool hollow = false;
    COLORREF color = 0xFFFFFF;
};

struct Dc : Object {
    Dc() : Object(Kind::Dc) {}
    bool screen = false;
    Surface* surface = nullptr;  // the selected bitmap (the screen surface for a screen context)
    Font* font = nullptr;
    Pen* pen = nullptr;
    Brush* brush = nullptr;
    COLORREF bkColor = 0xFFFFFF;
    POINT pos{0, 0};  // the current position (MoveToEx / LineTo)
    int stretchMode = BLACKONWHITE;
};

// One lock guards every object; the calls are short.
std::recursive_mutex& Lock();

// The live object behind a handle, or null when the handle is not one of that kind.
Object* Find(void* handle);
Dc* FindDc(HDC hdc);
Surface* FindSurface(HGDIOBJ h);
Font* FindFont(HGDIOBJ h);
Pen* FindPen(HGDIOBJ h);
Brush* FindBrush(HGDIOBJ h);
// The stock pens and brushes (BLACK_PEN, WHITE_BRUSH, ...), null for another index.
Object* StockPenOrBrush(int index);
void Register(Object* obj);

// The screen and its properties: 1024 x 768, 32 bits per pixel, 96 logical pixels per inch.
Surface& ScreenSurface();
constexpr int kScreenWidth = 1024;
constexpr int kScreenHeight = 768;
constexpr int kLogPixels = 96;

// A font face for a logical font (from a cache keyed by font file and size).
std::shared_ptr<const FontFace> LoadFace(const LOGFONTA& lf);
// The stock font every new device context starts with, and a new stock font of a face.
Font* StockFont();
Font* MakeStockFont(const char* face, BYTE pitchAndFamily);

// A source of pixels for stretching: its size and a way to read one top-down row as
// 0x00RRGGBB values (width entries).
struct PixelSource {
    int width = 0;
    int height = 0;
    std::function<void(int y, std::uint32_t* out)> readRow;
    // Optional: a reader of the columns cols[0 .. n) (every one inside the row) that writes
    // out[i] = pixel cols[i] of row y (0x00RRGGBB), the values readRow gives, without converting
    // the columns not asked for. The columns are looked at once, when the reader is made, so
    // that every row read through it costs only the reading.
    using RowSampler = std::function<void(int y, std::uint32_t* out)>;
    std::function<RowSampler(const std::int32_t* cols, std::size_t n)> sampler;
};

// Stretches the source rectangle (xs, ys, cxs, cys; top-down) onto the destination rectangle
// (x, y, cx, cy) of dst with the stretch mode and raster operation. Negative extents mirror.
// Pixels that fall outside either side are skipped. False for an unknown raster operation.
// 0x00RRGGBB pixel of a COLORREF and back.
inline std::uint32_t ToPixel(COLORREF c) { return ((c & 0xFF) << 16) | (c & 0xFF00) | ((c >> 16) & 0xFF); }
inline COLORREF ToColor(std::uint32_t p) { return ((p & 0xFF) << 16) | (p & 0xFF00) | ((p >> 16) & 0xFF); }

bool Stretch(Surface& dst, int x, int y, int cx, int cy, const PixelSource& src, int xs, int ys, int cxs, int cys,
             int mode, DWORD rop);

}  // namespace qm::platform::gdi
