// Scalar types and plain structs of the Windows API, as the framework uses them.
//
// Windows is LLP64: LONG, ULONG and DWORD are 32 bits on every build, so that sentinels such
// as LONG_MIN (0x80000000) and persisted formats are identical on LP64 POSIX builds.
//
// The Win32 types headers of the framework (win*.h, objidl.h) are the one place above the
// platform backends that may include <windows.h> or test _WIN32: on Windows they take the
// types and constants from the system headers, so that a Windows host that includes both the
// system's headers and ours sees one set of definitions; elsewhere they define the same names,
// values and layouts themselves. They hold no logic.
#pragma once

#include <cstddef>
#include <cstdint>

#if defined(_WIN32)
#ifndef WIN32_LEAN_AND_MEAN
#define WIN32_LEAN_AND_MEAN
#endif
#ifndef NOMINMAX
#define NOMINMAX
#endif
#include <windows.h>
#include <wtypes.h>  // DATE, SCODE
// The framework's CTime::GetCurrentTime would otherwise be renamed to GetTickCount.
#undef GetCurrentTime
#else

typedef int BOOL;
typedef unsigned char BYTE;
typedef unsigned short WORD;
typedef std::int32_t LONG;
typedef std::uint32_t ULONG;
typedef std::uint32_t DWORD;
typedef unsigned int UINT;
typedef int INT;
typedef char CHAR;
typedef char* LPSTR;
typedef const char* LPCSTR;
typedef char TCHAR;
typedef char* LPTSTR;
typedef const char* LPCTSTR;
typedef void* LPVOID;
typedef const void* LPCVOID;
typedef DWORD COLORREF;
typedef std::int32_t HRESULT;
typedef std::int32_t SCODE;
typedef std::int64_t LONGLONG;
typedef std::uint64_t ULONGLONG;
typedef std::intptr_t INT_PTR;
typedef std::uintptr_t UINT_PTR;
typedef std::intptr_t LONG_PTR;
typedef std::uintptr_t ULONG_PTR;
typedef ULONG_PTR DWORD_PTR;
typedef UINT_PTR WPARAM;
typedef LONG_PTR LPARAM;
typedef LONG_PTR LRESULT;
typedef double DATE;
typedef std::int64_t __int64;
typedef void* HANDLE;
typedef void* HINSTANCE;
typedef void* HMODULE;
typedef void* HWND;
typedef void* HMENU;
typedef void* HDC;

#define TRUE 1
#define FALSE 0
#define MAX_PATH 260

#define S_OK ((HRESULT)0)
#define S_FALSE ((HRESULT)1)
#define E_FAIL ((HRESULT)0x80004005L)
#define E_INVALIDARG ((HRESULT)0x80070057L)
#define E_OUTOFMEMORY ((HRESULT)0x8007000EL)
#define E_NOTIMPL ((HRESULT)0x80004001L)
#define SUCCEEDED(hr) (((HRESULT)(hr)) >= 0)
#define FAILED(hr) (((HRESULT)(hr)) < 0)

#define LOBYTE(w) ((BYTE)(((DWORD_PTR)(w)) & 0xff))
#define HIBYTE(w) ((BYTE)((((DWORD_PTR)(w)) >> 8) & 0xff))
#define LOWORD(l) ((WORD)(((DWORD_PTR)(l)) & 0xffff))
#define HIWORD(l) ((WORD)((((DWORD_PTR)(l)) >> 16) & 0xffff))
#define RGB(r, g, b) ((COLORREF)(((BYTE)(r) | ((WORD)((BYTE)(g)) << 8)) | (((DWORD)(BYTE)(b)) << 16)))
#define GetRValue(rgb) (LOBYTE(rgb))
#define GetGValue(rgb) (LOBYTE(((WORD)(rgb)) >> 8))
#define GetBValue(rgb) (LOBYTE((rgb) >> 16))

struct POINT { LONG x; LONG y; };
struct SIZE { LONG cx; LONG cy; };
struct RECT { LONG left; LONG top; LONG right; LONG bottom; };
typedef RECT* LPRECT;
typedef const RECT* LPCRECT;
typedef POINT* LPPOINT;
typedef SIZE* LPSIZE;

struct FILETIME { DWORD dwLowDateTime; DWORD dwHighDateTime; };

struct SYSTEMTIME {
    WORD wYear;
    WORD wMonth;
    WORD wDayOfWeek;
    WORD wDay;
    WORD wHour;
    WORD wMinute;
    WORD wSecond;
    WORD wMilliseconds;
};

struct OSVERSIONINFOA {
    DWORD dwOSVersionInfoSize;
    DWORD dwMajorVersion;
    DWORD dwMinorVersion;
    DWORD dwBuildNumber;
    DWORD dwPlatformId;
    CHAR szCSDVersion[128];
};

// Menu item flags (user32's values).
#define MF_INSERT 0x00000000L
#define MF_CHANGE 0x00000080L
#define MF_APPEND 0x00000100L
#define MF_DELETE 0x00000200L
#define MF_REMOVE 0x00001000L
#define MF_BYCOMMAND 0x00000000L
#define MF_BYPOSITION 0x00000400L
#define MF_SEPARATOR 0x00000800L
#define MF_ENABLED 0x00000000L
#define MF_GRAYED 0x00000001L
#define MF_DISABLED 0x00000002L
#define MF_UNCHECKED 0x00000000L
#define MF_CHECKED 0x00000008L
#define MF_STRING 0x00000000L
#define MF_POPUP 0x00000010L
#define MF_MENUBARBREAK 0x00000020L
#define MF_MENUBREAK 0x00000040L
#define MF_HILITE 0x00000080L
#define MF_UNHILITE 0x00000000L
#define MF_DEFAULT 0x00001000L

#define VER_PLATFORM_WIN32s 0
#define VER_PLATFORM_WIN32_WINDOWS 1
#define VER_PLATFORM_WIN32_NT 2

#endif  // !_WIN32

static_assert(sizeof(LONG) == 4 && sizeof(DWORD) == 4, "LLP64 widths");
