// The file services on Windows: each one is the system call of the same name.
#include "utils/platform/files.h"

#include <direct.h>
#include <shlwapi.h>
#include <stdlib.h>

#include "utils/platform/files_text.h"
#include "utils/platform/pathmodel.h"

namespace qm::platform {

bool ToNativePath(const char* windowsPath, std::string& nativePath) {
    nativePath = windowsPath ? windowsPath : "";
    return true;
}

bool ToWindowsPath(const char* nativePath, std::string& windowsPath) {
    windowsPath = nativePath ? nativePath : "";
    return true;
}

// Windows has drive letters of its own: the drive map is not used here, but its model is part
// of every build (and of its tests), so it is given the working directory all the same.
std::string pathmodel::NativeCwd() {
    char buffer[MAX_PATH + 1];
    DWORD n = ::GetCurrentDirectoryA(sizeof buffer, buffer);
    return n && n < sizeof buffer ? std::string(buffer, n) : std::string();
}

bool SetDriveMapping(char, const char*) { return false; }
std::string DriveMapping(char) { return std::string(); }
void ReloadDriveMappings() {}
FILE* OpenFileStream(const char* path, const char* mode) { return std::fopen(path, mode); }

DWORD GetLastError() { return ::GetLastError(); }
void SetLastError(DWORD code) { ::SetLastError(code); }

std::string SystemErrorText(DWORD code) {
    char* text = nullptr;
    DWORD n = ::FormatMessageA(FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS,
                               nullptr, code, 0, (LPSTR)&text, 0, nullptr);
    std::string result = n && text ? std::string(text, n) : std::string();
    if (text) ::LocalFree(text);
    while (!result.empty() && (result.back() == '\n' || result.back() == '\r')) result.pop_back();
    return result;
}

DWORD FileGetAttributes(LPCSTR path) { return ::GetFileAttributesA(path); }
BOOL FileSetAttributes(LPCSTR path, DWORD attributes) { return ::SetFileAttributesA(path, attributes); }
HANDLE FindFirstEntry(LPCSTR pattern, WIN32_FIND_DATAA* data) { return ::FindFirstFileA(pattern, data); }
BOOL FindNextEntry(HANDLE find, WIN32_FIND_DATAA* data) { return ::FindNextFileA(find, data); }
HANDLE FindFirstEntryName(LPCSTR pattern, WIN32_FIND_DATAA* data) {
    HANDLE h = ::FindFirstFileExA(pattern, FindExInfoBasic, data, FindExSearchNameMatch, nullptr, FIND_FIRST_EX_LARGE_FETCH);
    // Systems older than Windows 7 know neither the basic level nor large fetches.
    if (h == INVALID_HANDLE_VALUE && ::GetLastError() == ERROR_INVALID_PARAMETER) h = ::FindFirstFileA(pattern, data);
    return h;
}
BOOL FindEnd(HANDLE find) { return ::FindClose(find); }

DWORD PathGetFull(LPCSTR path, DWORD bufferLength, LPSTR buffer, LPSTR* filePart) {
    return ::GetFullPathNameA(path, bufferLength, buffer, filePart);
}
DWORD PathGetLong(LPCSTR shortPath, LPSTR longPath, DWORD bufferLength) {
    return ::GetLongPathNameA(shortPath, longPath, bufferLength);
}
DWORD PathGetShort(LPCSTR longPath, LPSTR shortPath, DWORD bufferLength) {
    return ::GetShortPathNameA(longPath, shortPath, bufferLength);
}
DWORD FolderGetCurrent(DWORD bufferLength, LPSTR buffer) { return ::GetCurrentDirectoryA(bufferLength, buffer); }
BOOL FolderSetCurrent(LPCSTR path) { return ::SetCurrentDirectoryA(path); }
DWORD TempFolderGet(DWORD bufferLength, LPSTR buffer) { return ::GetTempPathA(bufferLength, buffer); }
UINT TempFileCreateName(LPCSTR pathName, LPCSTR prefix, UINT unique, LPSTR tempFileName) {
    return ::GetTempFileNameA(pathName, prefix, unique, tempFileName);
}
DWORD DriveListStrings(DWORD bufferLength, LPSTR buffer) { return ::GetLogicalDriveStringsA(bufferLength, buffer); }
BOOL FolderCreate(LPCSTR path, void* securityAttributes) {
    return ::CreateDirectoryA(path, (LPSECURITY_ATTRIBUTES)securityAttributes);
}
BOOL FolderRemove(LPCSTR path) { return ::RemoveDirectoryA(path); }
BOOL FileDelete(LPCSTR path) { return ::DeleteFileA(path); }
BOOL FileCopy(LPCSTR existing, LPCSTR newFile, BOOL failIfExists) { return ::CopyFileA(existing, newFile, failIfExists); }
BOOL FileMove(LPCSTR existing, LPCSTR newFile) { return ::MoveFileA(existing, newFile); }
BOOL FileMoveEx(LPCSTR existing, LPCSTR newFile, DWORD flags) { return ::MoveFileExA(existing, newFile, flags); }

int GetCurrentDriveNumber() { return _getdrive(); }
int ChangeCurrentDrive(int drive) { return _chdrive(drive); }
char* GetDriveCurrentDirectory(int drive, char* buffer, int maxLength) { return _getdcwd(drive, buffer, maxLength); }

void SearchEnvironmentPath(const char* fileName, const char* varName, char* pathName) {
    _searchenv(fileName, varName, pathName);
}

// The runtime's own checks would call its invalid-parameter handler, which may end the
// process; the same checks are made first, so the runtime is only called when it succeeds.
int SplitPathS(const char* path, char* drive, size_t driveSize, char* dir, size_t dirSize, char* fname,
               size_t fnameSize, char* ext, size_t extSize) {
    int checked = SplitPathText(path, drive, driveSize, dir, dirSize, fname, fnameSize, ext, extSize);
    if (checked != 0) return checked;
    return _splitpath_s(path, drive, driveSize, dir, dirSize, fname, fnameSize, ext, extSize);
}

int MakePathS(char* path, size_t size, const char* drive, const char* dir, const char* fname, const char* ext) {
    int checked = MakePathText(path, size, drive, dir, fname, ext);
    if (checked != 0) return checked;
    return _makepath_s(path, size, drive, dir, fname, ext);
}

LPSTR PathJoin(LPSTR dest, LPCSTR dir, LPCSTR file) { return ::PathCombineA(dest, dir, file); }
BOOL PathCompact(LPSTR out, LPCSTR src, UINT maxChars, DWORD flags) {
    return ::PathCompactPathExA(out, src, maxChars, flags);
}
int ShellFileOperation(SHFILEOPSTRUCTA* op) { return ::SHFileOperationA(op); }

DWORD NetworkGetConnection(LPCSTR localName, LPSTR remoteName, DWORD* length) {
    return ::WNetGetConnectionA(localName, remoteName, length);
}
DWORD NetworkAddConnection(NETRESOURCEA* resource, LPCSTR password, LPCSTR userName, DWORD flags) {
    return ::WNetAddConnection2A(resource, password, userName, flags);
}

}  // namespace qm::platform
