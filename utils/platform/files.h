// Files, folders, drives and network names: the operating system's file services, each named
// by its service and answering with the semantics, results and error codes of the Win32 call
// named beside it, on every target.
//
// Paths are Windows paths everywhere ("Z:\tmp\a.txt", "\\server\share\x", "sub\f.txt").
// On Windows every call goes to the system as it is. On POSIX the paths service maps drive
// letters to directories (by default Z: is "/", as in a Windows compatibility layer; more
// drives come from configuration, see README), keeps a current folder per drive and reports a
// path that no drive covers as not found. Conversion happens here and nowhere else: code above
// this layer never sees a native POSIX path.
//
// Functions return what their Win32 calls return; on failure the error code is left for
// qm::platform::GetLastError (the system's own last error on Windows, a per-thread value on
// POSIX). The C runtime's path helpers return errno-style codes as they do there.
#pragma once

#include <cstddef>
#include <cstdio>
#include <string>

#include "utils/framework/winfile.h"
#include "utils/platform/host.h"

namespace qm::platform {

// --- The paths service ---------------------------------------------------------------------

// fopen for a Windows path (mode as fopen's); errno is set on failure.
FILE* OpenFileStream(const char* path, const char* mode);

// --- Kernel file services ------------------------------------------------------------------

DWORD FileGetAttributes(LPCSTR path);  // GetFileAttributesA
// SetFileAttributesA. Only FILE_ATTRIBUTE_READONLY has a POSIX meaning (the write permission
// bits); the other attributes are accepted and ignored there.
BOOL FileSetAttributes(LPCSTR path, DWORD attributes);
HANDLE FindFirstEntry(LPCSTR pattern, WIN32_FIND_DATAA* data);  // FindFirstFileA
BOOL FindNextEntry(HANDLE find, WIN32_FIND_DATAA* data);        // FindNextFileA
// A search for callers that read only the names and the directory and hidden attributes of
// the entries (FileSystem::CFileItr): on Windows FindFirstFileExA with the basic information
// level and large fetches; on POSIX an entry whose type the folder listing gives is not asked
// about further, so sizes, times and the read-only attribute stay zero. Go on with
// FindNextEntry and end with FindEnd, as for FindFirstEntry.
HANDLE FindFirstEntryName(LPCSTR pattern, WIN32_FIND_DATAA* data);
BOOL FindEnd(HANDLE find);  // FindClose
DWORD PathGetFull(LPCSTR path, DWORD bufferLength, LPSTR buffer, LPSTR* filePart);  // GetFullPathNameA
DWORD PathGetLong(LPCSTR shortPath, LPSTR longPath, DWORD bufferLength);           // GetLongPathNameA
DWORD PathGetShort(LPCSTR longPath, LPSTR shortPath, DWORD bufferLength);          // GetShortPathNameA
DWORD FolderGetCurrent(DWORD bufferLength, LPSTR buffer);                          // GetCurrentDirectoryA
BOOL FolderSetCurrent(LPCSTR path);                                                // SetCurrentDirectoryA
DWORD TempFolderGet(DWORD bufferLength, LPSTR buffer);                             // GetTempPathA
UINT TempFileCreateName(LPCSTR pathName, LPCSTR prefix, UINT unique, LPSTR tempFileName);  // GetTempFileNameA
DWORD DriveListStrings(DWORD bufferLength, LPSTR buffer);                          // GetLogicalDriveStringsA
BOOL FolderCreate(LPCSTR path, void* securityAttributes);                          // CreateDirectoryA
BOOL FolderRemove(LPCSTR path);                                                    // RemoveDirectoryA
BOOL FileDelete(LPCSTR path);                                                      // DeleteFileA
BOOL FileCopy(LPCSTR existing, LPCSTR newFile, BOOL failIfExists);                 // CopyFileA
BOOL FileMove(LPCSTR existing, LPCSTR newFile);                                    // MoveFileA
// MoveFileExA: MOVEFILE_REPLACE_EXISTING and MOVEFILE_COPY_ALLOWED; POSIX refuses
// MOVEFILE_DELAY_UNTIL_REBOOT with ERROR_INVALID_PARAMETER (there is no boot-time mover).
BOOL FileMoveEx(LPCSTR existing, LPCSTR newFile, DWORD flags);

// --- The C runtime's drive and path helpers ------------------------------------------------

// _getdrive: the current drive, 1 for A; 0 when there is none.
int GetCurrentDriveNumber();
// _chdrive: 0 on success, -1 when the drive does not exist.
int ChangeCurrentDrive(int drive);
// _getdcwd: the current folder of a drive (0 = the current drive) into buffer, without a
// trailing backslash except at the root; nullptr on failure.
char* GetDriveCurrentDirectory(int drive, char* buffer, int maxLength);
// _searchenv: the current folder first, then the folders listed in the environment variable;
// pathName (MAX_PATH characters) receives the full path found or "". On POSIX a variable that
// holds a native list ("/usr/bin:/bin") is read as such and its folders are mapped to drives.
void SearchEnvironmentPath(const char* fileName, const char* varName, char* pathName);
// _splitpath_s and _makepath_s: 0, EINVAL or ERANGE. A buffer too small empties every output
// (as the runtime does) without calling its invalid-parameter handler.
int SplitPathS(const char* path, char* drive, size_t driveSize, char* dir, size_t dirSize, char* fname,
               size_t fnameSize, char* ext, size_t extSize);
int MakePathS(char* path, size_t size, const char* drive, const char* dir, const char* fname, const char* ext);

// --- Shell and lightweight shell -----------------------------------------------------------

LPSTR PathJoin(LPSTR dest, LPCSTR dir, LPCSTR file);                 // PathCombineA
BOOL PathCompact(LPSTR out, LPCSTR src, UINT maxChars, DWORD flags);  // PathCompactPathExA
// SHFileOperationA: delete, copy, move and rename. On POSIX, FOF_ALLOWUNDO on a delete moves each item to the
// freedesktop.org trash (with its .trashinfo file) when the trash can take it, and deletes it
// otherwise, as Windows does when the recycle bin cannot.
int ShellFileOperation(SHFILEOPSTRUCTA* op);

// --- Network names -------------------------------------------------------------------------

// WNetGetConnectionA / WNetAddConnection2A. On POSIX a drive whose directory lies on an SMB/CIFS
// or NFS mount (from the mount table) reports the share in \\server\share form; other drives
// give ERROR_NOT_CONNECTED, a name that is not a drive ERROR_BAD_DEVICE. Connecting is left to
// the system's mounts: NetworkAddConnection gives ERROR_NOT_SUPPORTED there.
DWORD NetworkGetConnection(LPCSTR localName, LPSTR remoteName, DWORD* length);
DWORD NetworkAddConnection(NETRESOURCEA* resource, LPCSTR password, LPCSTR userName, DWORD flags);

// The remote name (\\server\share\rest) of a native directory from the text of a mount table
// (/proc/self/mounts format), or "" when it is not on a network file system. Exposed so that
// the parsing can be checked against sample tables.
std::string RemoteNameFromMountTable(const std::string& mountTable, const std::string& nativeDir);

}  // namespace qm::platform
