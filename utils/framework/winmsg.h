// Window, message, timer and thread types of the Windows API, as the framework's window and
// thread classes use them. On Windows they come from <windows.h>; elsewhere they are defined
// here with the same names and values, together with the few API functions that hosts and
// tests call by their Windows names (they forward to the platform's message service).
#pragma once

#include "utils/framework/winerrors.h"
#include "utils/framework/wintypes.h"
#include "utils/framework/export.h"

#if !defined(_WIN32)

typedef void* HCURSOR;
typedef void* HBRUSH;
typedef void* HICON;
typedef WORD ATOM;

#define CALLBACK
#define WINAPI
#define INFINITE 0xFFFFFFFFu

struct MSG {
    HWND hwnd;
    UINT message;
    WPARAM wParam;
    LPARAM lParam;
    DWORD time;
    POINT pt;
};
typedef MSG* LPMSG;

struct CREATESTRUCTA {
    LPVOID lpCreateParams;
    HINSTANCE hInstance;
    HMENU hMenu;
    HWND hwndParent;
    int cy;
    int cx;
    int y;
    int x;
    LONG style;
    LPCSTR lpszName;
    LPCSTR lpszClass;
    DWORD dwExStyle;
};
typedef CREATESTRUCTA CREATESTRUCT;

struct SECURITY_ATTRIBUTES {
    DWORD nLength;
    LPVOID lpSecurityDescriptor;
    BOOL bInheritHandle;
};
typedef SECURITY_ATTRIBUTES* LPSECURITY_ATTRIBUTES;

typedef LRESULT (*WNDPROC)(HWND, UINT, WPARAM, LPARAM);
typedef void (*TIMERPROC)(HWND, UINT, UINT_PTR, DWORD);

// Messages.
#define WM_NULL 0x0000
#define WM_CREATE 0x0001
#define WM_DESTROY 0x0002
#define WM_CLOSE 0x0010
#define WM_QUIT 0x0012
#define WM_NCCREATE 0x0081
#define WM_NCDESTROY 0x0082
#define WM_KEYFIRST 0x0100
#define WM_KEYDOWN 0x0100
#define WM_KEYUP 0x0101
#define WM_CHAR 0x0102
#define WM_SYSKEYDOWN 0x0104
#define WM_SYSKEYUP 0x0105
#define WM_KEYLAST 0x0109
#define WM_TIMER 0x0113
#define WM_USER 0x0400
#define WM_APP 0x8000

// Virtual keys.
#define VK_BACK 0x08
#define VK_TAB 0x09
#define VK_RETURN 0x0D
#define VK_CANCEL 0x03
#define VK_ESCAPE 0x1B
#define VK_SPACE 0x20

// PeekMessage flags.
#define PM_NOREMOVE 0x0000
#define PM_REMOVE 0x0001
#define PM_NOYIELD 0x0002

// Window styles.
#define WS_OVERLAPPED 0x00000000L
#define WS_POPUP 0x80000000L
#define WS_CHILD 0x40000000L
#define WS_VISIBLE 0x10000000L
#define WS_DISABLED 0x08000000L

// Class styles.
#define CS_VREDRAW 0x0001
#define CS_HREDRAW 0x0002
#define CS_DBLCLKS 0x0008
#define CS_OWNDC 0x0020
#define CS_CLASSDC 0x0040
#define CS_PARENTDC 0x0080
#define CS_NOCLOSE 0x0200
#define CS_SAVEBITS 0x0800
#define CS_GLOBALCLASS 0x4000

// Thread priorities and creation flags.
#define THREAD_PRIORITY_LOWEST (-2)
#define THREAD_PRIORITY_BELOW_NORMAL (-1)
#define THREAD_PRIORITY_NORMAL 0
#define THREAD_PRIORITY_ABOVE_NORMAL 1
#define THREAD_PRIORITY_HIGHEST 2
#define THREAD_PRIORITY_IDLE (-15)
#define THREAD_PRIORITY_TIME_CRITICAL 15
#define CREATE_SUSPENDED 0x00000004

#ifndef HRESULT_FROM_WIN32
#define HRESULT_FROM_WIN32(x) \
    ((HRESULT)(x) <= 0 ? ((HRESULT)(x)) : ((HRESULT)(((x) & 0x0000FFFF) | (7 << 16) | 0x80000000)))
#endif

// The Windows API functions of the message service, by their Windows names.
MFCQMUTILS_API UINT RegisterWindowMessageA(LPCSTR lpString);
MFCQMUTILS_API BOOL PostMessageA(HWND hWnd, UINT Msg, WPARAM wParam, LPARAM lParam);
MFCQMUTILS_API BOOL PostThreadMessageA(DWORD idThread, UINT Msg, WPARAM wParam, LPARAM lParam);
MFCQMUTILS_API BOOL PeekMessageA(LPMSG lpMsg, HWND hWnd, UINT wMsgFilterMin, UINT wMsgFilterMax, UINT wRemoveMsg);
MFCQMUTILS_API BOOL GetMessageA(LPMSG lpMsg, HWND hWnd, UINT wMsgFilterMin, UINT wMsgFilterMax);
MFCQMUTILS_API BOOL TranslateMessage(const MSG* lpMsg);
MFCQMUTILS_API LRESULT DispatchMessageA(const MSG* lpMsg);
MFCQMUTILS_API void PostQuitMessage(int nExitCode);
MFCQMUTILS_API BOOL IsWindow(HWND hWnd);
MFCQMUTILS_API DWORD GetTickCount();
MFCQMUTILS_API DWORD GetCurrentThreadId();
MFCQMUTILS_API void Sleep(DWORD dwMilliseconds);

#endif  // !_WIN32
