// Lines, polygons, colour-keyed and disabled bitmaps, system colours and mapping modes on the
// POSIX graphics backend.
#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <vector>

#include "utils/platform/gdi.h"
#include "utils/platform/posix/gdi_objects.h"

namespace qm::platform {

using namespace gdi;

namespace {

void Plot(Surface& s, long long x, long long y, int width, std::uint32_t p) {
    // A wide pen covers a width x width square centred on the pixel.
    long long x0 = x - (width - 1) / 2, y0 = y - (width - 1) / 2;
    long long x1 = std::min<long long>(x0 + width, s.width), y1 = std::min<long long>(y0 + width, s.height);
    for (long long yy = std::max<long long>(y0, 0); yy < y1; ++yy)
        for (long long xx = std::max<long long>(x0, 0); xx < x1; ++xx) s.Row((int)yy)[xx] = p;
}

// a / c rounded half away from zero (c > 0); a may need more than 64 bits.
long long RoundDiv(__int128 a, long long c) {
    __int128 q = a / c, r = a % c;
    if (2 * (r < 0 ? -r : r) >= c) q += a < 0 ? -1 : 1;
    return (long long)q;
}

// The pixels of the segment a-b, both ends included, stepped along the major axis and
// rounded half away from the first point's minor coordinate. The points are taken in a fixed
// order (smaller major coordinate first), so a segment gives the same pixels whichever way it
// is drawn, and segments that mirror each other give mirrored pixels.
// Only the steps whose major coordinate lies within [lo, hi] are taken, so that a line far
// larger than the surface costs no more than one across it.
template <class F>
void Segment(POINT a, POINT b, long long xLo, long long xHi, long long yLo, long long yHi, F&& put) {
    long long dx = (long long)b.x - a.x, dy = (long long)b.y - a.y;
    bool xMajor = std::llabs(dx) >= std::llabs(dy);
    if ((xMajor && dx < 0) || (!xMajor && dy < 0)) {
        std::swap(a, b);
        dx = -dx;
        dy = -dy;
    }
    long long n = xMajor ? dx : dy;
    if (n == 0) {
        put(a.x, a.y);
        return;
    }
    long long start = (long long)(xMajor ? a.x : a.y), lo = xMajor ? xLo : yLo, hi = xMajor ? xHi : yHi;
    long long first = std::max<long long>(0, lo - start), last = std::min<long long>(n, hi - start);
    for (long long i = first; i <= last; ++i) {
        if (xMajor)
            put(a.x + i, a.y + RoundDiv((__int128)dy * i, n));
        else
            put(a.x + RoundDiv((__int128)dx * i, n), a.y + i);
    }
}

void DrawLine(Dc& dc, POINT a, POINT b, bool lastPixel) {
    Pen& pen = *dc.pen;
    if (pen.style == PS_NULL) return;
    Surface& s = *dc.surface;
    std::uint32_t p = ToPixel(pen.color);
    Segment(a, b, -pen.width, (long long)s.width + pen.width, -pen.width, (long long)s.height + pen.width,
            [&](long long x, long long y) {
        if (!lastPixel && x == b.x && y == b.y) return;
        Plot(s, x, y, pen.width, p);
    });
}

void FillPolygon(Dc& dc, const POINT* pts, int n) {
    if (dc.brush->hollow) return;
    Surface& s = *dc.surface;
    long long top = pts[0].y, bottom = pts[0].y;
    for (int i = 1; i < n; ++i) top = std::min<long long>(top, pts[i].y), bottom = std::max<long long>(bottom, pts[i].y);
    top = std::max<long long>(top, 0);
    bottom = std::min<long long>(bottom, (long long)s.height - 1);
    std::uint32_t p = ToPixel(dc.brush->color);
    std::vector<double> xs;
    for (long long y = top; y <= bottom; ++y) {
        xs.clear();
        for (int i = 0; i < n; ++i) {
            const POINT& a = pts[i];
            const POINT& b = pts[(i + 1) % n];
            if (a.y == b.y) continue;
            long long lo = std::min(a.y, b.y), hi = std::max(a.y, b.y);
            if (y < lo || y >= hi) continue;  // half-open: each vertex counted once
            xs.push_back(a.x + (double)(b.x - a.x) * (double)(y - a.y) / (double)(b.y - a.y));
        }
        std::sort(xs.begin(), xs.end());
        for (size_t k = 0; k + 1 < xs.size(); k += 2) {
            long long l = std::max<long long>((long long)std::ceil(xs[k] - 1e-9), 0);
            long long r = std::min<long long>((long long)std::floor(xs[k + 1] + 1e-9), (long long)s.width - 1);
            for (long long x = l; x <= r; ++x) s.Row((int)y)[x] = p;
        }
    }
}

// The desktop's default colours for the indexes the library uses.
DWORD SysColor(int index) {
    switch (index) {
    case COLOR_WINDOW: return 0xFFFFFF;
    case COLOR_WINDOWTEXT: return 0x000000;
    case COLOR_3DFACE: return 0xF0F0F0;
    case COLOR_3DSHADOW: return 0xA0A0A0;
    case COLOR_3DHILIGHT: return 0xFFFFFF;
    case COLOR_3DDKSHADOW: return 0x696969;
    case COLOR_3DLIGHT: return 0xE3E3E3;
    default: return 0;
    }
}

}  // namespace

HPEN GdiCreatePen(int style, int width, COLORREF color) {
    if (style != PS_SOLID && style != PS_NULL) return nullptr;
    std::lock_guard<std::recursive_mutex> lock(Lock());
    auto* pen = new Pen;
    pen->style = style;
    pen->width = std::clamp(width, 1, 256);
    pen->color = color & 0xFFFFFF;
    Register(pen);
    return pen;
}

HBRUSH GdiCreateSolidBrush(COLORREF color) {
    std::lock_guard<std::recursive_mutex> lock(Lock());
    auto* brush = new Brush;
    brush->color = color & 0xFFFFFF;
    Register(brush);
    return brush;
}

BOOL GdiMoveToEx(HDC hdc, int x, int y, POINT* previous) {
    std::lock_guard<std::recursive_mutex> lock(Lock());
    Dc* dc = FindDc(hdc);
    if (!dc) return FALSE;
    if (previous) *previous = dc->pos;
    dc->pos = POINT{x, y};
    return TRUE;
}

BOOL GdiLineTo(HDC hdc, int x, int y) {
    std::lock_guard<std::recursive_mutex> lock(Lock());
    Dc* dc = FindDc(hdc);
    if (!dc) return FALSE;
    DrawLine(*dc, dc->pos, POINT{x, y}, false);
    dc->pos = POINT{x, y};
    return TRUE;
}

BOOL GdiPolygon(HDC hdc, const POINT* points, int count) {
    std::lock_guard<std::recursive_mutex> lock(Lock());
    Dc* dc = FindDc(hdc);
    if (!dc || !points || count < 2) return FALSE;
    FillPolygon(*dc, points, count);
    for (int i = 0; i < count; ++i) DrawLine(*dc, points[i], points[(i + 1) % count], true);
    return TRUE;
}

COLORREF GdiSetBkColor(HDC hdc, COLORREF color) {
    std::lock_guard<std::recursive_mutex> lock(Lock());
    Dc* dc = FindDc(hdc);
    if (!dc) return CLR_INVALID;
    COLORREF old = dc->bkColor;
    dc->bkColor = color & 0xFFFFFF;
    return old;
}

COLORREF GdiGetBkColor(HDC hdc) {
    std::lock_guard<std::recursive_mutex> lock(Lock());
    Dc* dc = FindDc(hdc);
    return dc ? dc->bkColor : CLR_INVALID;
}

DWORD GdiGetSysColor(int index) { return SysColor(index); }

BOOL GdiTransparentBlt(HDC dst, int x, int y, int cx, int cy, HDC src, int xSrc, int ySrc, int cxSrc, int cySrc,
                       COLORREF key) {
    std::lock_guard<std::recursive_mutex> lock(Lock());
    Dc* d = FindDc(dst);
    Dc* s = FindDc(src);
    if (!d || !s || cx < 0 || cy < 0 || cx != cxSrc || cy != cySrc) return FALSE;
    std::uint32_t k = ToPixel(key);
    Surface& ds = *d->surface;
    Surface& ss = *s->surface;
    // Source pixels outside the source are not drawn; nor are destination pixels outside it.
    long long xFrom = std::max<long long>({0, -(long long)xSrc, -(long long)x});
    long long xTo = std::min<long long>({(long long)cx, (long long)ss.width - xSrc, (long long)ds.width - x});
    for (long long j = 0; j < cy; ++j) {
        long long sy = (long long)ySrc + j, dy = (long long)y + j;
        if (sy < 0 || sy >= ss.height || dy < 0 || dy >= ds.height) continue;
        const std::uint32_t* in = ss.Row((int)sy);
        std::uint32_t* out = ds.Row((int)dy);
        for (long long i = xFrom; i < xTo; ++i)
            if ((in[xSrc + i] & 0xFFFFFF) != k) out[x + i] = in[xSrc + i];
    }
    return TRUE;
}

BOOL GdiDrawDisabledBitmap(HDC hdc, HBITMAP bmp, int x, int y) {
    std::lock_guard<std::recursive_mutex> lock(Lock());
    Dc* dc = FindDc(hdc);
    Surface* src = FindSurface(bmp);
    if (!dc || !src) return FALSE;
    Surface& ds = *dc->surface;
    // The mask first: the destination may be the bitmap itself.
    std::vector<bool> mask((size_t)src->width * (size_t)src->height);
    for (int j = 0; j < src->height; ++j)
        for (int i = 0; i < src->width; ++i) mask[(size_t)j * src->width + i] = (src->Row(j)[i] & 0xFFFFFF) != 0xFFFFFF;
    auto paint = [&](int dx0, int dy0, std::uint32_t p) {
        for (int j = 0; j < src->height; ++j) {
            long long dy = (long long)y + dy0 + j;
            if (dy < 0 || dy >= ds.height) continue;
            for (int i = 0; i < src->width; ++i) {
                long long dx = (long long)x + dx0 + i;
                if (dx < 0 || dx >= ds.width || !mask[(size_t)j * src->width + i]) continue;
                ds.Row((int)dy)[dx] = p;
            }
        }
    };
    paint(1, 1, ToPixel(SysColor(COLOR_3DHILIGHT)));
    paint(0, 0, ToPixel(SysColor(COLOR_3DSHADOW)));
    return TRUE;
}

BOOL GdiDrawAnimatedRects(HWND, const RECT*, const RECT*) { return TRUE; }

int GdiSetMapMode(HDC hdc, int mode) {
    std::lock_guard<std::recursive_mutex> lock(Lock());
    if (!FindDc(hdc) || mode != MM_TEXT) return 0;
    return MM_TEXT;
}

int GdiGetMapMode(HDC hdc) {
    std::lock_guard<std::recursive_mutex> lock(Lock());
    return FindDc(hdc) ? MM_TEXT : 0;
}

BOOL GdiGetWindowExt(HDC hdc, SIZE* size) {
    std::lock_guard<std::recursive_mutex> lock(Lock());
    if (!FindDc(hdc) || !size) return FALSE;
    *size = SIZE{1, 1};
    return TRUE;
}

BOOL GdiGetViewportExt(HDC hdc, SIZE* size) { return GdiGetWindowExt(hdc, size); }

}  // namespace qm::platform
