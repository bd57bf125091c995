#include "utils/platform/window.h"

namespace qm::platform {

namespace {

// Where a window's messages go: set on the window (GWLP_USERDATA) by its first message.
struct Route {
    WindowHandler handler;
    void* owner;
    WNDPROC oldProc;  // the class's own procedure, for windows of classes not made here
};

thread_local Route* t_creating = nullptr;

LRESULT CALLBACK RouteProc(HWND hwnd, UINT message, WPARAM wParam, LPARAM lParam) {
    auto* route = (Route*)GetWindowLongPtrA(hwnd, GWLP_USERDATA);
    if (!route && t_creating) {
        route = t_creating;
        t_creating = nullptr;
        SetWindowLongPtrA(hwnd, GWLP_USERDATA, (LONG_PTR)route);
    }
    if (!route) return DefWindowProcA(hwnd, message, wParam, lParam);
    LRESULT result = route->handler(route->owner, hwnd, message, wParam, lParam);
    if (message == WM_NCDESTROY) {
        SetWindowLongPtrA(hwnd, GWLP_USERDATA, 0);
        delete route;
    }
    return result;
}

HINSTANCE ModuleInstance() {
    HMODULE module = nullptr;
    GetModuleHandleExA(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                       (LPCSTR)&RouteProc, &module);
    return module;
}

}  // namespace

bool RegisterWindowClass(const char* className, UINT style, HCURSOR cursor, HBRUSH background, HICON icon) {
    if (!className || !*className) return false;
    WNDCLASSA wc{};
    wc.style = style;
    wc.lpfnWndProc = &RouteProc;
    wc.hInstance = ModuleInstance();
    wc.hIcon = icon;
    wc.hCursor = cursor;
    wc.hbrBackground = background;
    wc.lpszClassName = className;
    return RegisterClassA(&wc) != 0 || GetLastError() == ERROR_CLASS_ALREADY_EXISTS;
}

HWND CreateWindowObject(DWORD exStyle, const char* className, const char* windowName, DWORD style, int x, int y,
                        int width, int height, HWND parent, HMENU menu, LPVOID createParam, WindowHandler handler,
                        void* owner) {
    if (!handler) return nullptr;
    auto* route = new Route{handler, owner, nullptr};
    t_creating = route;
    HWND hwnd = CreateWindowExA(exStyle, className, windowName, style, x, y, width, height, parent, menu,
                                ModuleInstance(), createParam);
    bool claimed = t_creating == nullptr;
    t_creating = nullptr;
    if (!hwnd) {
        // A claimed route belonged to the window and went with its WM_NCDESTROY.
        if (!claimed) delete route;
        return nullptr;
    }
    if (!claimed) {
        // A class of someone else's: route its messages here, keeping its procedure as default.
        SetWindowLongPtrA(hwnd, GWLP_USERDATA, (LONG_PTR)route);
        route->oldProc = (WNDPROC)SetWindowLongPtrA(hwnd, GWLP_WNDPROC, (LONG_PTR)&RouteProc);
    }
    return hwnd;
}

bool DestroyWindowObject(HWND hwnd) { return DestroyWindow(hwnd) != 0; }

bool IsWindowObject(HWND hwnd) { return hwnd && IsWindow(hwnd); }

LRESULT DefaultWindowProc(HWND hwnd, UINT message, WPARAM wParam, LPARAM lParam) {
    auto* route = (Route*)GetWindowLongPtrA(hwnd, GWLP_USERDATA);
    if (route && route->oldProc) return CallWindowProcA(route->oldProc, hwnd, message, wParam, lParam);
    return DefWindowProcA(hwnd, message, wParam, lParam);
}

LRESULT SendWindowMessage(HWND hwnd, UINT message, WPARAM wParam, LPARAM lParam) {
    return SendMessageA(hwnd, message, wParam, lParam);
}

UINT_PTR SetWindowTimer(HWND hwnd, UINT_PTR id, UINT elapse, TIMERPROC proc) { return SetTimer(hwnd, id, elapse, proc); }

bool KillWindowTimer(HWND hwnd, UINT_PTR id) { return KillTimer(hwnd, id) != 0; }

bool PostWindowMessage(HWND hwnd, UINT message, WPARAM wParam, LPARAM lParam) {
    return PostMessageA(hwnd, message, wParam, lParam) != 0;
}

bool PostThreadQueueMessage(DWORD threadId, UINT message, WPARAM wParam, LPARAM lParam) {
    return PostThreadMessageA(threadId, message, wParam, lParam) != 0;
}

void PostQuit(int exitCode) { PostQuitMessage(exitCode); }

UINT RegisterMessageName(const char* name) { return name ? RegisterWindowMessageA(name) : 0; }

bool PeekQueueMessage(MSG* msg, HWND hwnd, UINT first, UINT last, UINT removeFlags) {
    return msg && PeekMessageA(msg, hwnd, first, last, removeFlags) != 0;
}

bool GetQueueMessage(MSG* msg, HWND hwnd, UINT first, UINT last) {
    // GetMessage gives -1 on failure; that ends a loop as WM_QUIT does.
    return msg && GetMessageA(msg, hwnd, first, last) > 0;
}

void WaitForQueueMessage(DWORD ms) { MsgWaitForMultipleObjectsEx(0, nullptr, ms, QS_ALLINPUT, MWMO_INPUTAVAILABLE); }

bool TranslateQueueMessage(const MSG* msg) { return msg && TranslateMessage(msg) != 0; }

LRESULT DispatchQueueMessage(const MSG* msg) { return msg ? DispatchMessageA(msg) : 0; }

DWORD SystemTickCount() { return GetTickCount(); }

void ShowWaitCursor(bool wait) { SetCursor(LoadCursorA(nullptr, MAKEINTRESOURCEA(wait ? 32514 : 32512))); }

}  // namespace qm::platform
