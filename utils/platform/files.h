// Files, folders, drives and network names: the operating system's file services with the
// semantics, results and error codes of their Win32 namesakes on every target.
//
// Paths are Windows paths everywhere ("Z:\tmp\a.txt", "\\server\share\x", "sub\f.txt").
// On Windows every call goes to the system as it is. On POSIX the paths service maps drive
// letters to directories (by default Z: is "/", as in a Windows compatibility layer; more
// drives come from configuration, see README), keeps a current folder per drive and reports a
// path that no drive covers as not found. Conversion happens here and nowhere else: code above
// this layer never sees a native POSIX path.
//
// Functions return what their Win32 namesakes return; on failure the error code is left for
// qm::platform::GetLastError (the system's own last error on Windows, a per-thread value on
// POSIX). The C runtime's path helpers return errno-style codes as they do there.
#pragma once

#include <cstddef>
#include <cstdio>
#include <string>

#include "utils/framework/winfile.h"
#include "utils/framework/export.h"

namespace qm::platform {

// --- The paths service ---------------------------------------------------------------------

// The native path that a Windows path names (relative paths are taken from the current folder
// of their drive). On Windows the path is returned as it is. False, with the last error set
// (ERROR_PATH_NOT_FOUND for an unmapped drive, ERROR_BAD_NETPATH for a share that is not
// mounted, ERROR_INVALID_NAME for a name Windows cannot hold), when there is none.
MFCQMUTILS_API bool ToNativePath(const char* windowsPath, std::string& nativePath);
// The Windows path for an absolute native path: the drive whose directory covers it most
// closely. False (ERROR_PATH_NOT_FOUND) when no drive covers it. On Windows, unchanged.
MFCQMUTILS_API bool ToWindowsPath(const char* nativePath, std::string& windowsPath);
// Maps a drive letter (A-Z, either case) to an absolute native directory; nullptr or "" removes
// the mapping. False for a bad letter or a relative directory, and always on Windows.
MFCQMUTILS_API bool SetDriveMapping(char letter, const char* nativeDir);
// The native directory of a drive, or "" when the drive is not mapped (Windows: "").
MFCQMUTILS_API std::string DriveMapping(char letter);
// Forgets the mappings made with SetDriveMapping and reads the configuration again (POSIX).
MFCQMUTILS_API void ReloadDriveMappings();
// fopen for a Windows path (mode as fopen's); errno is set on failure.
MFCQMUTILS_API FILE* OpenFileStream(const char* path, const char* mode);

// --- Last error ----------------------------------------------------------------------------

MFCQMUTILS_API DWORD GetLastError();
MFCQMUTILS_API void SetLastError(DWORD code);
// The system's text for an error code (FormatMessageA from the system table), without the
// trailing line break; "" when the system has none.
MFCQMUTILS_API std::string SystemErrorText(DWORD code);

// --- Kernel file services ------------------------------------------------------------------

MFCQMUTILS_API DWORD GetFileAttributesA(LPCSTR path);
// Only FILE_ATTRIBUTE_READONLY has a POSIX meaning (the write permission bits); the other
// attributes are accepted and ignored there.
MFCQMUTILS_API BOOL SetFileAttributesA(LPCSTR path, DWORD attributes);
MFCQMUTILS_API HANDLE FindFirstFileA(LPCSTR pattern, WIN32_FIND_DATAA* data);
MFCQMUTILS_API BOOL FindNextFileA(HANDLE find, WIN32_FIND_DATAA* data);
// A search for callers that read only the names and the directory and hidden attributes of
// the entries (FileSystem::CFileItr): on Windows FindFirstFileExA with the basic information
// level and large fetches; on POSIX an entry whose type the folder listing gives is not asked
// about further, so sizes, times and the read-only attribute stay zero. Go on with
// FindNextFileA and end with FindClose, as for FindFirstFileA.
MFCQMUTILS_API HANDLE FindFirstFileNamesA(LPCSTR pattern, WIN32_FIND_DATAA* data);
MFCQMUTILS_API BOOL FindClose(HANDLE find);
MFCQMUTILS_API DWORD GetFullPathNameA(LPCSTR path, DWORD bufferLength, LPSTR buffer, LPSTR* filePart);
MFCQMUTILS_API DWORD GetLongPathNameA(LPCSTR shortPath, LPSTR longPath, DWORD bufferLength);
MFCQMUTILS_API DWORD GetShortPathNameA(LPCSTR longPath, LPSTR shortPath, DWORD bufferLength);
MFCQMUTILS_API DWORD GetCurrentDirectoryA(DWORD bufferLength, LPSTR buffer);
MFCQMUTILS_API BOOL SetCurrentDirectoryA(LPCSTR path);
MFCQMUTILS_API DWORD GetTempPathA(DWORD bufferLength, LPSTR buffer);
MFCQMUTILS_API UINT GetTempFileNameA(LPCSTR pathName, LPCSTR prefix, UINT unique, LPSTR tempFileName);
MFCQMUTILS_API DWORD GetLogicalDriveStringsA(DWORD bufferLength, LPSTR buffer);
MFCQMUTILS_API BOOL CreateDirectoryA(LPCSTR path, void* securityAttributes);
MFCQMUTILS_API BOOL RemoveDirectoryA(LPCSTR path);
MFCQMUTILS_API BOOL DeleteFileA(LPCSTR path);
MFCQMUTILS_API BOOL CopyFileA(LPCSTR existing, LPCSTR newFile, BOOL failIfExists);
MFCQMUTILS_API BOOL MoveFileA(LPCSTR existing, LPCSTR newFile);
// MOVEFILE_REPLACE_EXISTING and MOVEFILE_COPY_ALLOWED; POSIX refuses
// MOVEFILE_DELAY_UNTIL_REBOOT with ERROR_INVALID_PARAMETER (there is no boot-time mover).
MFCQMUTILS_API BOOL MoveFileExA(LPCSTR existing, LPCSTR newFile, DWORD flags);

// --- The C runtime's drive and path helpers ------------------------------------------------

// _getdrive: the current drive, 1 for A; 0 when there is none.
MFCQMUTILS_API int GetCurrentDriveNumber();
// _chdrive: 0 on success, -1 when the drive does not exist.
MFCQMUTILS_API int ChangeCurrentDrive(int drive);
// _getdcwd: the current folder of a drive (0 = the current drive) into buffer, without a
// trailing backslash except at the root; nullptr on failure.
MFCQMUTILS_API char* GetDriveCurrentDirectory(int drive, char* buffer, int maxLength);
// _searchenv: the current folder first, then the folders listed in the environment variable;
// pathName (MAX_PATH characters) receives the full path found or "". On POSIX a variable that
// holds a native list ("/usr/bin:/bin") is read as such and its folders are mapped to drives.
MFCQMUTILS_API void SearchEnvironmentPath(const char* fileName, const char* varName, char* pathName);
// _splitpath_s and _makepath_s: 0, EINVAL or ERANGE. A buffer too small empties every output
// (as the runtime does) without calling its invalid-parameter handler.
MFCQMUTILS_API int SplitPathS(const char* path, char* drive, size_t driveSize, char* dir, size_t dirSize,
                              char* fname, size_t fnameSize, char* ext, size_t extSize);
MFCQMUTILS_API int MakePathS(char* path, size_t size, const char* drive, const char* dir, const char* fname,
                             const char* ext);

// --- Shell and lightweight shell -----------------------------------------------------------

MFCQMUTILS_API LPSTR PathCombineA(LPSTR dest, LPCSTR dir, LPCSTR file);
MFCQMUTILS_API BOOL PathCompactPathExA(LPSTR out, LPCSTR src, UINT maxChars, DWORD flags);
// Delete, copy, move and rename. On POSIX, FOF_ALLOWUNDO on a delete moves each item to the
// freedesktop.org trash (with its .trashinfo file) when the trash can take it, and deletes it
// otherwise, as Windows does when the recycle bin cannot.
MFCQMUTILS_API int SHFileOperationA(SHFILEOPSTRUCTA* op);

// --- Network names -------------------------------------------------------------------------

// WNetGetConnectionA / WNetAddConnection2A. On POSIX a drive whose directory lies on an SMB/CIFS
// or NFS mount (from the mount table) reports the share in \\server\share form; other drives
// give ERROR_NOT_CONNECTED, a name that is not a drive ERROR_BAD_DEVICE. Connecting is left to
// the system's mounts: WNetAddConnection2A gives ERROR_NOT_SUPPORTED there.
MFCQMUTILS_API DWORD WNetGetConnectionA(LPCSTR localName, LPSTR remoteName, DWORD* length);
MFCQMUTILS_API DWORD WNetAddConnection2A(NETRESOURCEA* resource, LPCSTR password, LPCSTR userName, DWORD flags);

// The remote name (\\server\share\rest) of a native directory from the text of a mount table
// (/proc/self/mounts format), or "" when it is not on a network file system. Exposed so that
// the parsing can be checked against sample tables.
MFCQMUTILS_API std::string RemoteNameFromMountTable(const std::string& mountTable, const std::string& nativeDir);

}  // namespace qm::platform
