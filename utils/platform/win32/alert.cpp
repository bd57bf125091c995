// Desktop alerts on Windows: a small top-most tool window at the bottom right of the work area
// that never takes the focus, closes itself after its delay or when clicked, and stacks above
// the alerts still showing.
#include "utils/platform/alert.h"

#include <windows.h>

#include <algorithm>
#include <vector>

namespace qm::platform {

namespace {

constexpr int kMaxTextWidth = 320;
constexpr int kMargin = 8;
constexpr int kGap = 4;
constexpr int kPadding = 8;
constexpr UINT_PTR kCloseTimer = 1;

// The alerts showing, each with its rectangle (the windows live on their creating threads).
std::vector<HWND>& Showing() {
    static std::vector<HWND> list;
    return list;
}
CRITICAL_SECTION* ShowingLock() {
    static CRITICAL_SECTION cs;
    static bool ready = (InitializeCriticalSection(&cs), true);
    (void)ready;
    return &cs;
}

LRESULT CALLBACK AlertProc(HWND hwnd, UINT msg, WPARAM wp, LPARAM lp) {
    switch (msg) {
    case WM_MOUSEACTIVATE: return MA_NOACTIVATE;
    case WM_LBUTTONUP:
    case WM_TIMER: DestroyWindow(hwnd); return 0;
    case WM_COMMAND:
        if (HIWORD(wp) == STN_CLICKED) DestroyWindow(hwnd);
        return 0;
    case WM_PARENTNOTIFY:
        if (LOWORD(wp) == WM_LBUTTONDOWN) DestroyWindow(hwnd);
        return 0;
    case WM_NCDESTROY: {
        KillTimer(hwnd, kCloseTimer);
        EnterCriticalSection(ShowingLock());
        auto& list = Showing();
        list.erase(std::remove(list.begin(), list.end(), hwnd), list.end());
        LeaveCriticalSection(ShowingLock());
        break;
    }
    default: break;
    }
    return DefWindowProcA(hwnd, msg, wp, lp);
}

bool RegisterOnce() {
    static ATOM atom = [] {
        WNDCLASSA wc = {};
        wc.lpfnWndProc = AlertProc;
        wc.hInstance = GetModuleHandleA(nullptr);
        wc.hCursor = LoadCursor(nullptr, IDC_ARROW);
        wc.hbrBackground = (HBRUSH)(COLOR_INFOBK + 1);
        wc.lpszClassName = kAlertWindowClass;
        return RegisterClassA(&wc);
    }();
    return atom != 0;
}

}  // namespace

bool AlertShow(const char*, const char* title, const char* text, bool critical, UINT delayMs) {
    if (!RegisterOnce()) return false;
    // The text's size at the alert's width.
    HDC dc = GetDC(nullptr);
    HFONT font = (HFONT)GetStockObject(DEFAULT_GUI_FONT);
    HGDIOBJ old = SelectObject(dc, font);
    RECT r = {0, 0, kMaxTextWidth, 0};
    DrawTextA(dc, text, -1, &r, DT_CALCRECT | DT_WORDBREAK | DT_NOPREFIX);
    RECT t = {0, 0, kMaxTextWidth, 0};
    DrawTextA(dc, title, -1, &t, DT_CALCRECT | DT_SINGLELINE | DT_NOPREFIX);
    SelectObject(dc, old);
    ReleaseDC(nullptr, dc);
    int titleHeight = t.bottom - t.top;
    int width = std::max<int>(std::max<LONG>(r.right, t.right), 120) + 2 * kPadding;
    int height = titleHeight + (r.bottom - r.top) + 3 * kPadding;

    RECT work;
    if (!SystemParametersInfoA(SPI_GETWORKAREA, 0, &work, 0)) GetClientRect(GetDesktopWindow(), &work);
    int x = work.right - width - kMargin;
    int y = work.bottom - height - kMargin;
    EnterCriticalSection(ShowingLock());
    // Above the highest alert still showing; back at the bottom when that would pass the top.
    for (HWND other : Showing()) {
        RECT o;
        if (IsWindow(other) && GetWindowRect(other, &o) && o.top - kGap - height < y) y = o.top - kGap - height;
    }
    if (y < work.top) y = work.bottom - height - kMargin;
    HWND hwnd = CreateWindowExA(WS_EX_TOPMOST | WS_EX_TOOLWINDOW | WS_EX_NOACTIVATE, kAlertWindowClass, title,
                                WS_POPUP | WS_BORDER, x, y, width, height, nullptr, nullptr,
                                GetModuleHandleA(nullptr), nullptr);
    if (hwnd) Showing().push_back(hwnd);
    LeaveCriticalSection(ShowingLock());
    if (!hwnd) return false;

    HWND heading = CreateWindowExA(0, "STATIC", title, WS_CHILD | WS_VISIBLE | SS_LEFT | SS_NOPREFIX | SS_NOTIFY,
                                   kPadding, kPadding, width - 2 * kPadding, titleHeight, hwnd, nullptr,
                                   GetModuleHandleA(nullptr), nullptr);
    HWND body = CreateWindowExA(0, "STATIC", text, WS_CHILD | WS_VISIBLE | SS_LEFT | SS_NOPREFIX | SS_NOTIFY,
                                kPadding, 2 * kPadding + titleHeight, width - 2 * kPadding, r.bottom - r.top, hwnd,
                                (HMENU)(INT_PTR)kAlertTextId, GetModuleHandleA(nullptr), nullptr);
    for (HWND child : {heading, body})
        if (child) SendMessageA(child, WM_SETFONT, (WPARAM)font, FALSE);
    (void)critical;
    SetTimer(hwnd, kCloseTimer, delayMs, nullptr);
    ShowWindow(hwnd, SW_SHOWNOACTIVATE);
    UpdateWindow(hwnd);
    return true;
}

}  // namespace qm::platform
