// System diagnostics: the operating system's version and name, free disk space, file error
// messages, and traces of disk, memory and security details.
#pragma once

#include "utils/framework/CString.h"
#include "utils/framework/wintypes.h"
#include "utils/framework/export.h"

// The major and minor version and the NT-family test, from the version record filled when
// the library was loaded.
MFCQMUTILS_API int GetOSVersionNum();
MFCQMUTILS_API int GetOSMinorVersionNum();
MFCQMUTILS_API bool IsWinNT();
// The version record filled at load time (read-only afterwards).
MFCQMUTILS_API const OSVERSIONINFOA& GetModuleOSVersion();
// "ProductName" under the local machine's "SOFTWARE\Microsoft\Windows NT\CurrentVersion"
// (NT family) or "SOFTWARE\Microsoft\Windows\CurrentVersion"; empty when it cannot be read.
MFCQMUTILS_API CString GetOSName();

// Free bytes available to the caller on the drive or share of path; with size non-zero, plus
// size rounded up to whole clusters. All bits set when the space cannot be had.
MFCQMUTILS_API ULONGLONG FreeDiskSpace(const CString& path, DWORD size);
// The same for the current folder, with size 0; 0 when the current folder cannot be had.
MFCQMUTILS_API ULONGLONG FreeDiskSpace();

// Shows the message for a failed file operation on pFileName when code is negative (an
// error result whose low 16 bits are the system's error number); pPrefix may be null.
MFCQMUTILS_API void FileError(const char* pPrefix, const char* pFileName, LONG code);

// Trace output of free and total space of a root, of the memory status and of the process's
// elevation type.
MFCQMUTILS_API void TraceDiskInfo(const char* pRoot);
MFCQMUTILS_API void TraceMemoryInfo();
MFCQMUTILS_API void LogSecurityDetails();

namespace qm {
// Ids of the framework's file-not-found and disk-full texts ("%1" is the file name); the
// library supplies English defaults that a host's own string table overrides.
constexpr UINT IDS_FRAMEWORK_FILE_NOT_FOUND = 61729;
constexpr UINT IDS_FRAMEWORK_DISK_FULL = 61730;
// The record behind GetModuleOSVersion, which the module frame fills when the library loads.
OSVERSIONINFOA& ModuleOSVersionRecord();
}  // namespace qm
