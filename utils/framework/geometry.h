// The framework's points, sizes and rectangles: 32-bit coordinates, right and bottom
// exclusive. They extend the plain POINT, SIZE and RECT structs, so they pass wherever those
// are expected. Sums and differences wrap in 32 bits, as the framework's do on Windows.
#pragma once

#include <cstdint>

#include "utils/framework/wintypes.h"

namespace qm::geometry_detail {
// 32-bit wrap-around arithmetic without signed overflow.
inline LONG Add(LONG a, LONG b) { return (LONG)(std::uint32_t)((std::uint32_t)a + (std::uint32_t)b); }
inline LONG Sub(LONG a, LONG b) { return (LONG)(std::uint32_t)((std::uint32_t)a - (std::uint32_t)b); }
inline LONG Neg(LONG a) { return (LONG)(std::uint32_t)(0u - (std::uint32_t)a); }
}  // namespace qm::geometry_detail

class CSize;
class CPoint;

class CSize : public SIZE {
public:
    CSize() { cx = 0; cy = 0; }
    CSize(int initCX, int initCY) { cx = initCX; cy = initCY; }
    CSize(SIZE initSize) { cx = initSize.cx; cy = initSize.cy; }
    CSize(POINT initPt) { cx = initPt.x; cy = initPt.y; }
    explicit CSize(DWORD dwSize) { cx = (short)LOWORD(dwSize); cy = (short)HIWORD(dwSize); }

    // Same-type overloads keep C++20's reversed comparisons from being ambiguous.
    bool operator==(SIZE s) const { return cx == s.cx && cy == s.cy; }
    bool operator==(const CSize& s) const { return cx == s.cx && cy == s.cy; }
    bool operator!=(SIZE s) const { return !(*this == s); }
    bool operator!=(const CSize& s) const { return !(*this == s); }
    void operator+=(SIZE s) { cx = qm::geometry_detail::Add(cx, s.cx); cy = qm::geometry_detail::Add(cy, s.cy); }
    void operator-=(SIZE s) { cx = qm::geometry_detail::Sub(cx, s.cx); cy = qm::geometry_detail::Sub(cy, s.cy); }
    void SetSize(int CX, int CY) { cx = CX; cy = CY; }
    CSize operator+(SIZE s) const { CSize r(*this); r += s; return r; }
    CSize operator-(SIZE s) const { CSize r(*this); r -= s; return r; }
    CSize operator-() const { return CSize(qm::geometry_detail::Neg(cx), qm::geometry_detail::Neg(cy)); }
};

class CPoint : public POINT {
public:
    CPoint() { x = 0; y = 0; }
    CPoint(int initX, int initY) { x = initX; y = initY; }
    CPoint(POINT initPt) { x = initPt.x; y = initPt.y; }
    CPoint(SIZE initSize) { x = initSize.cx; y = initSize.cy; }
    explicit CPoint(DWORD dwPoint) { x = (short)LOWORD(dwPoint); y = (short)HIWORD(dwPoint); }

    void Offset(int xOffset, int yOffset) { x = qm::geometry_detail::Add(x, xOffset); y = qm::geometry_detail::Add(y, yOffset); }
    void Offset(POINT p) { Offset(p.x, p.y); }
    void Offset(SIZE s) { Offset(s.cx, s.cy); }
    void SetPoint(int X, int Y) { x = X; y = Y; }
    bool operator==(POINT p) const { return x == p.x && y == p.y; }
    bool operator==(const CPoint& p) const { return x == p.x && y == p.y; }
    bool operator!=(POINT p) const { return !(*this == p); }
    bool operator!=(const CPoint& p) const { return !(*this == p); }
    void operator+=(SIZE s) { Offset(s); }
    void operator-=(SIZE s) { Offset(qm::geometry_detail::Neg(s.cx), qm::geometry_detail::Neg(s.cy)); }
    void operator+=(POINT p) { Offset(p); }
    void operator-=(POINT p) { Offset(qm::geometry_detail::Neg(p.x), qm::geometry_detail::Neg(p.y)); }
    CPoint operator+(SIZE s) const { CPoint r(*this); r += s; return r; }
    CPoint operator-(SIZE s) const { CPoint r(*this); r -= s; return r; }
    CPoint operator+(POINT p) const { CPoint r(*this); r += p; return r; }
    CSize operator-(POINT p) const {
        return CSize(qm::geometry_detail::Sub(x, p.x), qm::geometry_detail::Sub(y, p.y));
    }
    CPoint operator-() const { return CPoint(qm::geometry_detail::Neg(x), qm::geometry_detail::Neg(y)); }
};

class CRect : public RECT {
public:
    CRect() { left = top = right = bottom = 0; }
    CRect(int l, int t, int r, int b) { left = l; top = t; right = r; bottom = b; }
    CRect(const RECT& src) { left = src.left; top = src.top; right = src.right; bottom = src.bottom; }
    CRect(LPCRECT src) { *this = CRect(*src); }
    CRect(POINT pt, SIZE sz) {
        left = pt.x; top = pt.y;
        right = qm::geometry_detail::Add(pt.x, sz.cx);
        bottom = qm::geometry_detail::Add(pt.y, sz.cy);
    }
    CRect(POINT topLeft, POINT bottomRight) {
        left = topLeft.x; top = topLeft.y; right = bottomRight.x; bottom = bottomRight.y;
    }

    int Width() const { return qm::geometry_detail::Sub(right, left); }
    int Height() const { return qm::geometry_detail::Sub(bottom, top); }
    CSize Size() const { return CSize(Width(), Height()); }
    CPoint TopLeft() const { return CPoint(left, top); }
    CPoint BottomRight() const { return CPoint(right, bottom); }
    CPoint CenterPoint() const {
        return CPoint((int)(((std::int64_t)left + right) / 2), (int)(((std::int64_t)top + bottom) / 2));
    }
    operator LPRECT() { return this; }
    operator LPCRECT() const { return this; }

    // Empty: no area (width or height not positive). Null: all four coordinates zero.
    BOOL IsRectEmpty() const { return right <= left || bottom <= top; }
    BOOL IsRectNull() const { return left == 0 && right == 0 && top == 0 && bottom == 0; }
    BOOL PtInRect(POINT pt) const { return pt.x >= left && pt.x < right && pt.y >= top && pt.y < bottom; }
    BOOL EqualRect(LPCRECT r) const {
        return left == r->left && top == r->top && right == r->right && bottom == r->bottom;
    }

    void SetRect(int l, int t, int r, int b) { left = l; top = t; right = r; bottom = b; }
    void SetRectEmpty() { left = top = right = bottom = 0; }
    void CopyRect(LPCRECT src) { *this = CRect(*src); }
    void OffsetRect(int dx, int dy) {
        using namespace qm::geometry_detail;
        left = Add(left, dx); right = Add(right, dx); top = Add(top, dy); bottom = Add(bottom, dy);
    }
    void OffsetRect(POINT p) { OffsetRect(p.x, p.y); }
    void OffsetRect(SIZE s) { OffsetRect(s.cx, s.cy); }
    void InflateRect(int dx, int dy) {
        using namespace qm::geometry_detail;
        left = Sub(left, dx); top = Sub(top, dy); right = Add(right, dx); bottom = Add(bottom, dy);
    }
    void InflateRect(SIZE s) { InflateRect(s.cx, s.cy); }
    void DeflateRect(int dx, int dy) { InflateRect(qm::geometry_detail::Neg(dx), qm::geometry_detail::Neg(dy)); }
    void DeflateRect(SIZE s) { DeflateRect(s.cx, s.cy); }
    void NormalizeRect() {
        if (left > right) { LONG t = left; left = right; right = t; }
        if (top > bottom) { LONG t = top; top = bottom; bottom = t; }
    }
    // The overlap of two rectangles; an empty result is set to all zeros and gives FALSE.
    BOOL IntersectRect(LPCRECT a, LPCRECT b) {
        CRect r(a->left > b->left ? a->left : b->left, a->top > b->top ? a->top : b->top,
                a->right < b->right ? a->right : b->right, a->bottom < b->bottom ? a->bottom : b->bottom);
        if (CRect(*a).IsRectEmpty() || CRect(*b).IsRectEmpty() || r.IsRectEmpty()) { SetRectEmpty(); return FALSE; }
        *this = r;
        return TRUE;
    }
    // The smallest rectangle holding both; empty rectangles are ignored.
    BOOL UnionRect(LPCRECT a, LPCRECT b) {
        bool ea = CRect(*a).IsRectEmpty(), eb = CRect(*b).IsRectEmpty();
        if (ea && eb) { SetRectEmpty(); return FALSE; }
        if (ea) { *this = CRect(*b); return TRUE; }
        if (eb) { *this = CRect(*a); return TRUE; }
        SetRect(a->left < b->left ? a->left : b->left, a->top < b->top ? a->top : b->top,
                a->right > b->right ? a->right : b->right, a->bottom > b->bottom ? a->bottom : b->bottom);
        return TRUE;
    }

    bool operator==(const RECT& r) const { return EqualRect(&r) != FALSE; }
    bool operator==(const CRect& r) const { return EqualRect(&r) != FALSE; }
    bool operator!=(const RECT& r) const { return !(*this == r); }
    bool operator!=(const CRect& r) const { return !(*this == r); }
    void operator+=(POINT p) { OffsetRect(p); }
    void operator-=(POINT p) { OffsetRect(qm::geometry_detail::Neg(p.x), qm::geometry_detail::Neg(p.y)); }
    CRect operator+(POINT p) const { CRect r(*this); r += p; return r; }
    CRect operator-(POINT p) const { CRect r(*this); r -= p; return r; }
    CRect operator&(const RECT& o) const { CRect r; r.IntersectRect(this, &o); return r; }
    CRect operator|(const RECT& o) const { CRect r; r.UnionRect(this, &o); return r; }
};
