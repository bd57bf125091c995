// System-information types of the Windows API (memory status, token elevation, message-box
// styles). On Windows they come from <windows.h>; elsewhere they are defined here.
#pragma once

#include "utils/framework/wintypes.h"

#if !defined(_WIN32)

struct MEMORYSTATUSEX {
    DWORD dwLength;
    DWORD dwMemoryLoad;
    ULONGLONG ullTotalPhys;
    ULONGLONG ullAvailPhys;
    ULONGLONG ullTotalPageFile;
    ULONGLONG ullAvailPageFile;
    ULONGLONG ullTotalVirtual;
    ULONGLONG ullAvailVirtual;
    ULONGLONG ullAvailExtendedVirtual;
};

enum TOKEN_ELEVATION_TYPE {
    TokenElevationTypeDefault = 1,
    TokenElevationTypeFull,
    TokenElevationTypeLimited,
};

#define TOKEN_QUERY 0x0008

#define MB_OK 0x00000000L
#define MB_OKCANCEL 0x00000001L
#define MB_ICONERROR 0x00000010L
#define MB_ICONEXCLAMATION 0x00000030L
#define IDOK 1

#endif  // !_WIN32

// HeapAlloc flags.
#if !defined(_WIN32)
#define HEAP_NO_SERIALIZE 0x00000001
#define HEAP_GENERATE_EXCEPTIONS 0x00000004
#define HEAP_ZERO_MEMORY 0x00000008
#endif
