// Disk, memory and security facts about the machine and the process, as the Win32 calls
// named beside each function give them.
#pragma once

#include "utils/framework/winsys.h"

namespace qm::platform {

// GetDiskFreeSpaceA(root, ...): the counts of the volume that holds root.
BOOL DiskFreeSpace(const char* root, DWORD* sectorsPerCluster, DWORD* bytesPerSector,
                   DWORD* freeClusters, DWORD* totalClusters);
// The extended form GetDiskFreeSpaceExA, looked up at run time in the system library named
// (GetModuleHandleA and GetProcAddress for FindDiskFreeSpaceEx, LoadLibraryA and
// GetProcAddress for LoadDiskFreeSpaceEx, which the caller releases with ReleaseDiskLibrary).
// Null when the system has no such function. POSIX answers for "kernel32.dll" in any case,
// from statvfs (the bytes available to the caller are those an unprivileged user may use).
typedef BOOL (*DiskFreeSpaceExProc)(const char* root, ULONGLONG* freeBytesAvailableToCaller,
              ULONGLONG* totalBytes, ULONGLONG* totalFreeBytes);
DiskFreeSpaceExProc FindDiskFreeSpaceEx(const char* moduleName);
DiskFreeSpaceExProc LoadDiskFreeSpaceEx(const char* moduleName, void** library);
void ReleaseDiskLibrary(void* library);

// GlobalMemoryStatusEx (the caller sets dwLength). POSIX: sysinfo for the physical memory and
// the swap space standing in for the paging file (total = memory + swap, as Windows counts
// its commit limit), the address space of the process for the virtual memory.
BOOL QueryMemoryStatus(MEMORYSTATUSEX* status);

// OpenProcessToken(GetCurrentProcess(), TOKEN_QUERY, token) and
// GetTokenInformation(token, TokenElevationType, ...). On POSIX the "token" is the process's
// identity and elevation maps so: the effective user is root -> full (2); a user in one of
// the groups that may run commands as root (sudo, wheel, admin) -> limited (3), as an
// administrator's filtered token is; anyone else -> default (1).
BOOL OpenProcessTokenForQuery(HANDLE* token);
BOOL QueryTokenElevationType(HANDLE token, void* info, DWORD infoSize, DWORD* returnedSize);

}  // namespace qm::platform
