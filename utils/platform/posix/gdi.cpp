#include "utils/platform/gdi.h"

#include <algorithm>
#include <cstring>
#include <unordered_set>

#include "utils/platform/posix/gdi_objects.h"

namespace qm::platform {
namespace gdi {

std::recursive_mutex& Lock() {
    static std::recursive_mutex m;
    return m;
}

namespace {
std::unordered_set<Object*>& Live() {
    static std::unordered_set<Object*> live;
    return live;
}
// The object found last: measuring text asks for the same context many times in a row.
// Cleared when that object is destroyed, so it is always a live one (or null).
Object*& LastFound() {
    static Object* last = nullptr;
    return last;
}
// The 1 x 1 bitmap every memory context starts with (GDI's stock bitmap).
Surface* StockBitmap() {
    static Surface* s = [] {
        auto* b = new Surface(1, 1);
        b->stock = true;
        Register(b);
        return b;
    }();
    return s;
}
}  // namespace

void Register(Object* obj) { Live().insert(obj); }

Object* Find(void* handle) {
    if (handle && handle == LastFound()) return LastFound();
    auto it = Live().find((Object*)handle);
    if (it == Live().end()) return nullptr;
    return LastFound() = *it;
}
Dc* FindDc(HDC hdc) {
    Object* o = Find(hdc);
    return o && o->kind == Kind::Dc ? static_cast<Dc*>(o) : nullptr;
}
Surface* FindSurface(HGDIOBJ h) {
    Object* o = Find(h);
    return o && o->kind == Kind::Bitmap ? static_cast<Surface*>(o) : nullptr;
}
Font* FindFont(HGDIOBJ h) {
    Object* o = Find(h);
    return o && o->kind == Kind::Font ? static_cast<Font*>(o) : nullptr;
}
Pen* FindPen(HGDIOBJ h) {
    Object* o = Find(h);
    return o && o->kind == Kind::Pen ? static_cast<Pen*>(o) : nullptr;
}
Brush* FindBrush(HGDIOBJ h) {
    Object* o = Find(h);
    return o && o->kind == Kind::Brush ? static_cast<Brush*>(o) : nullptr;
}
Object* StockPenOrBrush(int index) {
    static Object* stock[9] = {};
    if (index < 0 || index > 8 || index == 1 || index == 2 || index == 3) return nullptr;
    if (!stock[index]) {
        Object* o;
        if (index >= WHITE_PEN) {
            auto* pen = new Pen;
            pen->style = index == NULL_PEN ? PS_NULL : PS_SOLID;
            pen->color = index == WHITE_PEN ? 0xFFFFFF : 0;
            o = pen;
        } else {
            auto* brush = new Brush;
            brush->hollow = index == NULL_BRUSH;
            brush->color = index == WHITE_BRUSH ? 0xFFFFFF : 0;
            o = brush;
        }
        o->stock = true;
        Register(o);
        stock[index] = o;
    }
    return stock[index];
}

Surface& ScreenSurface() {
    static Surface* s = [] {
        auto* b = new Surface(kScreenWidth, kScreenHeight);
        b->stock = true;
        Register(b);
        return b;
    }();
    return *s;
}

namespace {

void Destroy(Object* o) {
    Live().erase(o);
    if (LastFound() == o) LastFound() = nullptr;
    delete o;
}

void Deselect(Object* o) {
    if (!o) return;
    if (--o->selections == 0 && o->deletePending && !o->stock) Destroy(o);
}

HDC NewDc(bool screen) {
    auto* dc = new Dc;
    dc->screen = screen;
    dc->surface = screen ? &ScreenSurface() : StockBitmap();
    dc->surface->selections++;
    dc->font = StockFont();
    dc->font->selections++;
    dc->pen = static_cast<Pen*>(StockPenOrBrush(BLACK_PEN));
    dc->pen->selections++;
    dc->brush = static_cast<Brush*>(StockPenOrBrush(WHITE_BRUSH));
    dc->brush->selections++;
    Register(dc);
    return dc;
}


// Applies a raster operation; false when it is not one this backend carries out.
inline bool ApplyRop(DWORD rop, std::uint32_t s, std::uint32_t& d) {
    switch (rop) {
    case SRCCOPY: d = s; return true;
    case SRCPAINT: d |= s; return true;
    case SRCAND: d &= s; return true;
    case SRCINVERT: d ^= s; return true;
    case NOTSRCCOPY: d = ~s & 0xFFFFFF; return true;
    case BLACKNESS: d = 0; return true;
    case WHITENESS: d = 0xFFFFFF; return true;
    default: return false;
    }
}

bool KnownRop(DWORD rop) {
    std::uint32_t d = 0;
    return ApplyRop(rop, 0, d);
}

}  // namespace

bool Stretch(Surface& dst, int x, int y, int cx, int cy, const PixelSource& src, int xs, int ys, int cxs, int cys,
             int mode, DWORD rop) {
    if (!KnownRop(rop)) return false;
    if (cx == 0 || cy == 0 || cxs == 0 || cys == 0) return true;
    // Normalise to positive extents, remembering the mirroring.
    bool flipX = false, flipY = false;
    long long X = x, Y = y, CX = cx, CY = cy, XS = xs, YS = ys, CXS = cxs, CYS = cys;
    // A negative extent covers [origin + extent, origin), mirrored.
    if (CX < 0) { X += CX; CX = -CX; flipX = !flipX; }
    if (CY < 0) { Y += CY; CY = -CY; flipY = !flipY; }
    if (CXS < 0) { XS += CXS; CXS = -CXS; flipX = !flipX; }
    if (CYS < 0) { YS += CYS; CYS = -CYS; flipY = !flipY; }
    // Destination pixels that exist.
    long long i0 = std::max(0LL, -X), i1 = std::min(CX, (long long)dst.width - X);
    long long j0 = std::max(0LL, -Y), j1 = std::min(CY, (long long)dst.height - Y);
    if (i0 >= i1 || j0 >= j1) return true;
    const bool combine = (mode == BLACKONWHITE || mode == WHITEONBLACK || mode == HALFTONE);
    // The source span [a, b] that destination index k (of n) covers: a single sampled
    // position, or when shrinking under a combining mode the whole span.
    auto span = [combine](long long k, long long n, long long srcN, long long& a, long long& b) {
        if (combine && srcN > n) {
            a = k * srcN / n;
            b = (k + 1) * srcN / n - 1;
        } else {
            a = b = (2 * k + 1) * srcN / (2 * n);
        }
    };
    std::vector<std::int32_t> colFirst((size_t)(i1 - i0)), colLast((size_t)(i1 - i0));
    for (long long i = i0; i < i1; ++i) {
        long long a, b;
        span(flipX ? CX - 1 - i : i, CX, CXS, a, b);
        colFirst[(size_t)(i - i0)] = (std::int32_t)(XS + a);
        colLast[(size_t)(i - i0)] = (std::int32_t)(XS + b);
    }
    // Copying one sampled pixel per target pixel: each target row takes its pixels straight
    // from its source row, and a row that samples the same source row as the one above it is
    // a copy of that row.
    bool sampled = rop == SRCCOPY && mode != HALFTONE && !(combine && (CXS > CX || CYS > CY)) && src.sampler &&
                   *std::min_element(colFirst.begin(), colFirst.end()) >= 0 &&
                   *std::max_element(colFirst.begin(), colFirst.end()) < src.width;
    if (sampled) {
        PixelSource::RowSampler sample = src.sampler(colFirst.data(), colFirst.size());
        long long previous = -1;
        for (long long j = j0; j < j1; ++j) {
            long long a, b;
            span(flipY ? CY - 1 - j : j, CY, CYS, a, b);
            long long r = YS + a;
            if (r < 0 || r >= src.height) continue;
            std::uint32_t* out = dst.Row((int)(Y + j)) + (X + i0);
            if (r == previous && j > j0) {
                std::memcpy(out, dst.Row((int)(Y + j - 1)) + (X + i0), colFirst.size() * 4);
            } else {
                sample((int)r, out);
            }
            previous = r;
        }
        return true;
    }
    std::vector<std::uint32_t> rowBuf((size_t)std::max(1, src.width));
    std::vector<std::uint32_t> acc((size_t)(i1 - i0));
    std::vector<std::uint32_t> sumR, sumG, sumB, count;
    if (mode == HALFTONE) {
        sumR.resize(acc.size()); sumG.resize(acc.size()); sumB.resize(acc.size()); count.resize(acc.size());
    }
    std::vector<char> have(acc.size());
    for (long long j = j0; j < j1; ++j) {
        long long a, b;
        span(flipY ? CY - 1 - j : j, CY, CYS, a, b);
        std::fill(have.begin(), have.end(), 0);
        if (mode == HALFTONE) {
            std::fill(sumR.begin(), sumR.end(), 0); std::fill(sumG.begin(), sumG.end(), 0);
            std::fill(sumB.begin(), sumB.end(), 0); std::fill(count.begin(), count.end(), 0);
        }
        for (long long r = YS + a; r <= YS + b; ++r) {
            if (r < 0 || r >= src.height) continue;
            src.readRow((int)r, rowBuf.data());
            if (mode == BLACKONWHITE || mode == WHITEONBLACK) {
                // Combining by AND (or OR) over each column span, the first pixel taken as it is.
                const bool orMode = mode == WHITEONBLACK;
                for (size_t c = 0; c < acc.size(); ++c) {
                    std::int32_t lo = std::max<std::int32_t>(colFirst[c], 0);
                    std::int32_t hi = std::min<std::int32_t>(colLast[c], src.width - 1);
                    if (lo > hi) continue;
                    std::uint32_t v = rowBuf[(size_t)lo];
                    for (std::int32_t sx = lo + 1; sx <= hi; ++sx) v = orMode ? v | rowBuf[(size_t)sx] : v & rowBuf[(size_t)sx];
                    acc[c] = have[c] ? (orMode ? acc[c] | v : acc[c] & v) : v;
                    have[c] = 1;
                }
                continue;
            }
            for (size_t c = 0; c < acc.size(); ++c) {
                for (std::int32_t sx = colFirst[c]; sx <= colLast[c]; ++sx) {
                    if (sx < 0 || sx >= src.width) continue;
                    std::uint32_t p = rowBuf[(size_t)sx];
                    if (mode == HALFTONE) {
                        sumR[c] += (p >> 16) & 0xFF; sumG[c] += (p >> 8) & 0xFF; sumB[c] += p & 0xFF; count[c]++;
                    } else if (!have[c]) {
                        acc[c] = p;
                    } else if (mode == WHITEONBLACK) {
                        acc[c] |= p;
                    } else {
                        acc[c] &= p;
                    }
                    have[c] = 1;
                }
            }
        }
        std::uint32_t* out = dst.Row((int)(Y + j)) + (X + i0);
        for (size_t c = 0; c < acc.size(); ++c) {
            if (!have[c]) continue;
            std::uint32_t p = acc[c];
            if (mode == HALFTONE) {
                std::uint32_t n = count[c];
                p = (((sumR[c] + n / 2) / n) << 16) | (((sumG[c] + n / 2) / n) << 8) | ((sumB[c] + n / 2) / n);
            }
            ApplyRop(rop, p & 0xFFFFFF, out[c]);
        }
    }
    return true;
}

}  // namespace gdi

using namespace gdi;

HDC GdiGetScreenDC() {
    std::lock_guard<std::recursive_mutex> lock(Lock());
    return NewDc(true);
}

int GdiReleaseScreenDC(HDC hdc) {
    std::lock_guard<std::recursive_mutex> lock(Lock());
    Dc* dc = FindDc(hdc);
    if (!dc || !dc->screen) return 0;
    return GdiDeleteDC(hdc) ? 1 : 0;
}

HDC GdiCreateDisplayDC() { return GdiGetScreenDC(); }
HDC GdiGetDC(HWND, bool) { return GdiGetScreenDC(); }
int GdiReleaseDC(HWND, HDC hdc) { return GdiReleaseScreenDC(hdc); }

HDC GdiCreateCompatibleDC(HDC hdc) {
    std::lock_guard<std::recursive_mutex> lock(Lock());
    if (hdc && !FindDc(hdc)) return nullptr;
    return NewDc(false);
}

BOOL GdiDeleteDC(HDC hdc) {
    std::lock_guard<std::recursive_mutex> lock(Lock());
    Dc* dc = FindDc(hdc);
    if (!dc) return FALSE;
    Deselect(dc->surface);
    Deselect(dc->font);
    Deselect(dc->pen);
    Deselect(dc->brush);
    Destroy(dc);
    return TRUE;
}

HBITMAP GdiCreateCompatibleBitmap(HDC hdc, int cx, int cy) {
    std::lock_guard<std::recursive_mutex> lock(Lock());
    if (!FindDc(hdc) || cx < 0 || cy < 0) return nullptr;
    // GDI answers a zero size with a 1 x 1 bitmap; a size whose pixels cannot be held is refused.
    if (cx == 0 || cy == 0) cx = cy = 1;
    if ((unsigned long long)cx * (unsigned long long)cy > (1ull << 28)) return nullptr;
    Surface* s = nullptr;
    try {
        s = new Surface(cx, cy);
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
    Register(s);
    return s;
}

HFONT GdiCreateFontIndirect(const LOGFONTA* lf) {
    if (!lf) return nullptr;
    std::lock_guard<std::recursive_mutex> lock(Lock());
    auto* f = new Font;
    f->logFont = *lf;
    f->logFont.lfFaceName[LF_FACESIZE - 1] = 0;
    f->face = LoadFace(f->logFont);
    Register(f);
    return f;
}

HGDIOBJ GdiGetStockObject(int index) {
    std::lock_guard<std::recursive_mutex> lock(Lock());
    switch (index) {
    case SYSTEM_FONT:
    case DEFAULT_GUI_FONT:
    case ANSI_VAR_FONT: return StockFont();
    case ANSI_FIXED_FONT: {
        static Font* fixed = MakeStockFont("DejaVu Sans Mono", FIXED_PITCH | FF_MODERN);
        return fixed;
    }
    default: return StockPenOrBrush(index);
    }
}

HGDIOBJ GdiSelectObject(HDC hdc, HGDIOBJ obj) {
    std::lock_guard<std::recursive_mutex> lock(Lock());
    Dc* dc = FindDc(hdc);
    if (!dc) return nullptr;
    if (Font* f = FindFont(obj)) {
        if (f->deletePending) return nullptr;
        Font* old = dc->font;
        f->selections++;
        dc->font = f;
        Deselect(old);
        return old && Find(old) ? old : nullptr;
    }
    if (Pen* p = FindPen(obj)) {
        if (p->deletePending) return nullptr;
        Pen* old = dc->pen;
        p->selections++;
        dc->pen = p;
        Deselect(old);
        return old && Find(old) ? old : nullptr;
    }
    if (Brush* b = FindBrush(obj)) {
        if (b->deletePending) return nullptr;
        Brush* old = dc->brush;
        b->selections++;
        dc->brush = b;
        Deselect(old);
        return old && Find(old) ? old : nullptr;
    }
    if (Surface* s = FindSurface(obj)) {
        // A bitmap goes into one memory context at a time, never into a screen context.
        if (dc->screen || s == &ScreenSurface() || s->deletePending) return nullptr;
        if (s == dc->surface) return s;
        if (s->selections > 0 && !s->stock) return nullptr;
        Surface* old = dc->surface;
        s->selections++;
        dc->surface = s;
        Deselect(old);
        return old && Find(old) ? old : nullptr;
    }
    return nullptr;
}

BOOL GdiDeleteObject(HGDIOBJ obj) {
    std::lock_guard<std::recursive_mutex> lock(Lock());
    Object* o = Find(obj);
    if (!o || o->kind == Kind::Dc) return FALSE;
    if (o->stock) return TRUE;
    if (o->selections > 0) {
        o->deletePending = true;
        return TRUE;
    }
    Destroy(o);
    return TRUE;
}

int GdiGetFontObject(HFONT font, LOGFONTA* lf) {
    std::lock_guard<std::recursive_mutex> lock(Lock());
    Font* f = FindFont(font);
    if (!f || !lf) return 0;
    *lf = f->logFont;
    return (int)sizeof(LOGFONTA);
}

bool GdiGetBitmapSize(HBITMAP bmp, SIZE* size) {
    std::lock_guard<std::recursive_mutex> lock(Lock());
    Surface* s = FindSurface(bmp);
    if (!s || !size) return false;
    size->cx = s->width;
    size->cy = s->height;
    return true;
}

namespace {

// Advance of a run of characters with GDI's tab expansion: with tab stops, a TAB moves to the
// next stop beyond the current position (stops from the list, then every `every` pixels).
long long RunWidth(const FontFace& face, const char* text, int count, bool expandTabs, int nStops, const INT* stops,
                   int every) {
    long long x = 0;
    for (int i = 0; i < count; ++i) {
        unsigned char c = (unsigned char)text[i];
        if (c == '\t' && expandTabs) {
            bool placed = false;
            for (int k = 0; k < nStops; ++k) {
                long long stop = stops[k] < 0 ? -(long long)stops[k] : stops[k];
                if (stop > x) {
                    x = stop;
                    placed = true;
                    break;
                }
            }
            if (!placed) x = (x / every + 1) * every;
        } else {
            x += face.advance[c];
        }
    }
    return x;
}

const FontFace* SelectedFace(HDC hdc) {
    Dc* dc = FindDc(hdc);
    if (!dc || !dc->font || !dc->font->face) return nullptr;
    return dc->font->face.get();
}

}  // namespace

BOOL GdiGetTextExtentPoint32(HDC hdc, const char* text, int count, SIZE* size) {
    std::lock_guard<std::recursive_mutex> lock(Lock());
    const FontFace* face = SelectedFace(hdc);
    if (!face || !size || count < 0 || (count > 0 && !text)) return FALSE;
    long long w = RunWidth(*face, text, count, false, 0, nullptr, 1);
    size->cx = (LONG)std::min<long long>(w, 0x7FFFFFFF);
    size->cy = face->metrics.tmHeight;
    return TRUE;
}

DWORD GdiGetTabbedTextExtent(HDC hdc, const char* text, int count, int nTabPositions, const INT* tabStops) {
    std::lock_guard<std::recursive_mutex> lock(Lock());
    const FontFace* face = SelectedFace(hdc);
    if (!face || count <= 0 || !text) return 0;
    // One position is the distance between stops; several are the stops themselves, with
    // default stops (eight average character widths apart) after the last; none or a
    // non-positive single distance gives the default stops.
    int every = 8 * std::max<LONG>(1, face->metrics.tmAveCharWidth);
    int nStops = 0;
    if (tabStops && nTabPositions == 1) {
        if (tabStops[0] > 0) every = tabStops[0];
    } else if (tabStops && nTabPositions > 1) {
        nStops = nTabPositions;
    }
    long long w = RunWidth(*face, text, count, true, nStops, tabStops, every);
    return (DWORD)(((DWORD)face->metrics.tmHeight << 16) | ((DWORD)w & 0xFFFF));
}

BOOL GdiGetCharWidth(HDC hdc, UINT first, UINT last, INT* widths) {
    std::lock_guard<std::recursive_mutex> lock(Lock());
    const FontFace* face = SelectedFace(hdc);
    if (!face || !widths || first > last || last > 0xFF) return FALSE;
    for (UINT c = first; c <= last; ++c) widths[c - first] = face->advance[c];
    return TRUE;
}

BOOL GdiGetTextMetrics(HDC hdc, TEXTMETRICA* tm) {
    std::lock_guard<std::recursive_mutex> lock(Lock());
    const FontFace* face = SelectedFace(hdc);
    if (!face || !tm) return FALSE;
    *tm = face->metrics;
    return TRUE;
}

int GdiGetDeviceCaps(HDC hdc, int index) {
    std::lock_guard<std::recursive_mutex> lock(Lock());
    if (!FindDc(hdc)) return 0;
    switch (index) {
    case TECHNOLOGY: return DT_RASDISPLAY;
    case HORZRES: return kScreenWidth;
    case VERTRES: return kScreenHeight;
    case HORZSIZE: return MulDiv(kScreenWidth, 254, kLogPixels * 10);
    case VERTSIZE: return MulDiv(kScreenHeight, 254, kLogPixels * 10);
    case BITSPIXEL: return 32;
    case PLANES: return 1;
    case NUMCOLORS: return -1;
    case RASTERCAPS: return RC_BITBLT | RC_STRETCHBLT | RC_DI_BITMAP | RC_STRETCHDIB;
    case LOGPIXELSX:
    case LOGPIXELSY: return kLogPixels;
    default: return 0;
    }
}

COLORREF GdiGetPixel(HDC hdc, int x, int y) {
    std::lock_guard<std::recursive_mutex> lock(Lock());
    Dc* dc = FindDc(hdc);
    if (!dc || x < 0 || y < 0 || x >= dc->surface->width || y >= dc->surface->height) return CLR_INVALID;
    return ToColor(dc->surface->Row(y)[x]);
}

COLORREF GdiSetPixel(HDC hdc, int x, int y, COLORREF color) {
    std::lock_guard<std::recursive_mutex> lock(Lock());
    Dc* dc = FindDc(hdc);
    if (!dc || x < 0 || y < 0 || x >= dc->surface->width || y >= dc->surface->height) return CLR_INVALID;
    dc->surface->Row(y)[x] = ToPixel(color);
    return color & 0xFFFFFF;
}

BOOL GdiFillSolidRect(HDC hdc, const RECT* rect, COLORREF color) {
    std::lock_guard<std::recursive_mutex> lock(Lock());
    Dc* dc = FindDc(hdc);
    if (!dc || !rect) return FALSE;
    Surface& s = *dc->surface;
    long long l = std::max<long long>(0, rect->left), r = std::min<long long>(s.width, rect->right);
    long long t = std::max<long long>(0, rect->top), b = std::min<long long>(s.height, rect->bottom);
    std::uint32_t p = ToPixel(color);
    for (long long y = t; y < b; ++y) std::fill(s.Row((int)y) + l, s.Row((int)y) + std::max(l, r), p);
    return TRUE;
}

namespace {
PixelSource SurfaceSource(Surface& s) {
    PixelSource src;
    src.width = s.width;
    src.height = s.height;
    src.readRow = [&s](int y, std::uint32_t* out) { std::memcpy(out, s.Row(y), (size_t)s.width * 4); };
    return src;
}
// A transfer within one surface reads from a copy, so that no source pixel is overwritten
// before it is read.
struct SourceCopy {
    SourceCopy(Surface* src, Surface* dst) : surface(src) {
        if (src == dst) {
            copy = std::make_unique<Surface>(*src);
            surface = copy.get();
        }
    }
    Surface* surface;
    std::unique_ptr<Surface> copy;
};
}  // namespace

BOOL GdiBitBlt(HDC dst, int x, int y, int cx, int cy, HDC src, int xSrc, int ySrc, DWORD rop) {
    std::lock_guard<std::recursive_mutex> lock(Lock());
    Dc* d = FindDc(dst);
    if (!d) return FALSE;
    Dc* s = FindDc(src);
    bool needsSource = !(rop == BLACKNESS || rop == WHITENESS);
    if (needsSource && !s) return FALSE;
    if (!needsSource) s = d;
    if (cx < 0 || cy < 0) return FALSE;
    SourceCopy from(s->surface, d->surface);
    return Stretch(*d->surface, x, y, cx, cy, SurfaceSource(*from.surface), xSrc, ySrc, cx, cy, COLORONCOLOR, rop)
               ? TRUE
               : FALSE;
}

BOOL GdiStretchBlt(HDC dst, int x, int y, int cx, int cy, HDC src, int xSrc, int ySrc, int cxSrc, int cySrc,
                   DWORD rop) {
    std::lock_guard<std::recursive_mutex> lock(Lock());
    Dc* d = FindDc(dst);
    Dc* s = FindDc(src);
    if (!d || !s) return FALSE;
    SourceCopy from(s->surface, d->surface);
    return Stretch(*d->surface, x, y, cx, cy, SurfaceSource(*from.surface), xSrc, ySrc, cxSrc, cySrc, d->stretchMode,
                   rop)
               ? TRUE
               : FALSE;
}

int GdiSetStretchBltMode(HDC hdc, int mode) {
    std::lock_guard<std::recursive_mutex> lock(Lock());
    Dc* dc = FindDc(hdc);
    if (!dc || mode < BLACKONWHITE || mode > HALFTONE) return 0;
    int old = dc->stretchMode;
    dc->stretchMode = mode;
    return old;
}

int GdiGetStretchBltMode(HDC hdc) {
    std::lock_guard<std::recursive_mutex> lock(Lock());
    Dc* dc = FindDc(hdc);
    return dc ? dc->stretchMode : 0;
}

}  // namespace qm::platform
