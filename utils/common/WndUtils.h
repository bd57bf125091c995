// Window and drawing helpers of the OleUtils module: colour conversions between RGB and hue,
// luminance and saturation (the shell's integer scale), lighter and darker variants for 3-D
// edges, arrows and bitmaps drawn on any device context, scaling between the resolutions of
// two device contexts, text on the clipboard and alerts on the desktop.
//
// Every helper is a static member of WndUtils. A broken precondition (a null context, an
// out-of-range value) is reported through the assertion sink with module "Common\OleUtils"
// and the expression's text, then the documented fallback is taken. BOOL results are non-zero
// for success.
#pragma once

#include <cstddef>

#include "utils/common/DIB.h"
#include "utils/framework/CDC.h"
#include "utils/framework/CString.h"
#include "utils/framework/geometry.h"
#include "utils/framework/wingdc.h"
#include "utils/framework/export.h"

class CWnd;

class MFCQMUTILS_API WndUtils {
public:
    // ---- Colours --------------------------------------------------------------------------
    // Hue, luminance and saturation on the 0..240 scale, with the shell's integer rounding in
    // both directions (a round trip may move a channel by one). A grey has saturation 0 and
    // hue 160. The high byte of a COLORREF is ignored.
    static void ColorRGBToHLS(COLORREF clr, WORD* pwHue, WORD* pwLuminance, WORD* pwSaturation);
    // A component above 240 is reported and taken as 240.
    static COLORREF ColorHLSToRGB(WORD wHue, WORD wLuminance, WORD wSaturation);
    // The same conversions over n colours at once (the fast path for whole pictures); the
    // output arrays hold n values each. Out-of-range HLS components are taken as 240 without
    // a report per value.
    static void ColorsRGBToHLS(const COLORREF* pColors, WORD* pHue, WORD* pLuminance, WORD* pSaturation, size_t n);
    static void ColorsHLSToRGB(const WORD* pHue, const WORD* pLuminance, const WORD* pSaturation, COLORREF* pColors,
                               size_t n);
    // The colour with its luminance scaled to nPercent of its own (rounded, kept within
    // 0..240), hue and saturation unchanged. Black stays black whatever the percentage (its
    // luminance is 0); greys stay grey. A negative percentage is reported and taken as 0.
    static COLORREF ScaleLuminance(COLORREF clr, int nPercent);
    // ScaleLuminance(clr, 100 + nPercent) and ScaleLuminance(clr, 100 - nPercent). A negative
    // nPercent, or one above 100 for Darker, is reported and clamped.
    static COLORREF Lighter(COLORREF clr, int nPercent);
    static COLORREF Darker(COLORREF clr, int nPercent);

    // ---- Drawing ----------------------------------------------------------------------------
    // A line from `from` towards `to` in the current pen, ending in a triangular head whose tip
    // is `to`, nHeadLength long along the shaft and nHeadWidth wide across it, filled with the
    // current brush and outlined with the pen. from == to draws nothing (success); a head
    // longer than the arrow draws the head only. Negative sizes are reported and taken as 0.
    static BOOL DrawArrow(CDC* pDC, CPoint from, CPoint to, int nHeadLength, int nHeadWidth);
    // The whole bitmap with its top-left corner at pt.
    static BOOL DrawBitmap(CDC* pDC, CPoint pt, const CDIBitmap& bitmap);
    static BOOL DrawBitmap(CDC* pDC, CPoint pt, CBitmap* pBitmap);
    // The bitmap through a colour key: every pixel of colour crKey (compared on RGB, after the
    // palette) leaves the target unchanged.
    static BOOL DrawTransparentBitmap(CDC* pDC, CPoint pt, const CDIBitmap& bitmap, COLORREF crKey);
    static BOOL DrawTransparentBitmap(CDC* pDC, CPoint pt, CBitmap* pBitmap, COLORREF crKey);
    // The bitmap as a disabled control shows it (DrawState with DSS_DISABLED): every pixel that
    // is not white becomes an embossed mark in the system's 3-D highlight (one pixel right and
    // down) and shadow colours; white pixels leave the target unchanged. The output reaches
    // one column and one row beyond the picture.
    static BOOL DrawDisabledBitmap(CDC* pDC, CPoint pt, const CDIBitmap& bitmap);
    static BOOL DrawDisabledBitmap(CDC* pDC, CPoint pt, CBitmap* pBitmap);
    // The caption animation of a window moving from one rectangle to another (Windows); where
    // windows have no pixels of their own it succeeds and draws nothing.
    static BOOL DrawAnimatedRects(CWnd* pWnd, const CRect& rcFrom, const CRect& rcTo);

    // ---- Scaling between resolutions ------------------------------------------------------
    // A value in pixels at one resolution (dots per inch) expressed at another: v * to / from,
    // rounded half away from zero as MulDiv rounds, computed in 64 bits. Refused (FALSE, the
    // value unchanged) when a resolution is not positive or a result does not fit in 32 bits.
    static BOOL ScaleBetween(int nFromDpiX, int nFromDpiY, int nToDpiX, int nToDpiY, CPoint& pt);
    static BOOL ScaleBetween(int nFromDpiX, int nFromDpiY, int nToDpiX, int nToDpiY, CSize& size);
    static BOOL ScaleBetween(int nFromDpiX, int nFromDpiY, int nToDpiX, int nToDpiY, CRect& rect);
    // The same from pFromDC's LOGPIXELSX/LOGPIXELSY to pToDC's.
    static BOOL ScaleBetween(CDC* pFromDC, CDC* pToDC, CPoint& pt);
    static BOOL ScaleBetween(CDC* pFromDC, CDC* pToDC, CSize& size);
    static BOOL ScaleBetween(CDC* pFromDC, CDC* pToDC, CRect& rect);

    // ---- Clipboard text -------------------------------------------------------------------
    // Puts the text (up to its first NUL) on the clipboard as CF_TEXT in a movable global
    // block, a lone LF turned into CR LF (CR LF and a lone CR are kept), after emptying the
    // clipboard. Empty text only empties the clipboard. pOwner (may be null) owns the
    // clipboard while it is open.
    static BOOL SetClipboardText(LPCTSTR lpszText, CWnd* pOwner = nullptr);
    // The clipboard's text as CF_TEXT (converted from CF_UNICODETEXT or CF_OEMTEXT when only
    // those are there), up to its first NUL or the end of the block. FALSE and "" when the
    // clipboard holds no text or cannot be opened.
    static BOOL GetClipboardText(CString& strText, CWnd* pOwner = nullptr);

    // ---- Desktop alerts -------------------------------------------------------------------
    enum AlertKind { ALERT_ERROR, ALERT_WARNING, ALERT_MESSAGE };
    // Shows text in a small top-most window (Windows) or a desktop notification (POSIX, over
    // the session bus) for nDelayMs milliseconds (0: 10,000 for an error, 6,000 for a warning,
    // 4,000 for a message), without taking the focus. Returns non-zero when shown, 0 when it
    // fell back to one line on stderr.
    static BOOL ShowAlert(LPCTSTR lpszText, AlertKind kind, UINT nDelayMs = 0);
};
