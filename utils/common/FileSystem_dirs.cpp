// Folders, drives, network names and iteration: the FileSystem operations that ask the
// operating system about paths or change the disk, and MFCFileSystem::CopyDirectory.
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "utils/common/CVLogger.h"
#include "utils/common/FileSystem.h"
#include "utils/platform/files.h"

#define QM_SOURCE_MODULE "Common\\FileSystem"

namespace fs = qm::platform;

namespace {

bool IsDotEntry(const char* name) { return name[0] == '.' && (!name[1] || (name[1] == '.' && !name[2])); }

CString WithBackslash(const char* text) {
    CString s = text;
    if (s.IsEmpty() || s[s.GetLength() - 1] != '\\') s += '\\';
    return s;
}

// MakePath's recursion is one level per backslash; a path deeper than any the system accepts
// (32767 characters make at most this many levels) fails instead of exhausting the stack.
constexpr int kMaxMakePathDepth = 16384;
// Creating a level can fail again after its parent was made (the parent vanished meanwhile);
// the retries are bounded so that such a race cannot keep MakePath busy for ever.
constexpr int kMaxMakePathRetries = 8;

int MakePathLevel(const CString& path, int depth) {
    if (fs::FolderCreate(path, nullptr)) return 0;
    if (depth >= kMaxMakePathDepth) return -1;
    for (int attempt = 0; attempt < kMaxMakePathRetries; ++attempt) {
        int cut = path.ReverseFind('\\');
        if (cut < 0) return -1;
        int parent = MakePathLevel(path.Left(cut), depth + 1);
        if (parent != 0) return parent;
        if (cut == path.GetLength() - 1) return 0;
        if (fs::FolderCreate(path, nullptr)) return 0;
    }
    return -1;
}

}  // namespace

// --- the iterator ---------------------------------------------------------------------------

FileSystem::CFileItr::CFileItr(const char* folder, const char* pattern)
    : m_hFind(INVALID_HANDLE_VALUE),
      m_sPattern(FileSystem::CreateFilePath(folder, pattern)),
      m_sFolder(folder),
      m_FindData(),
      m_bValid(0) {
    First();
}

FileSystem::CFileItr::CFileItr(const CFileItr& other) = default;
FileSystem::CFileItr& FileSystem::CFileItr::operator=(const CFileItr& other) = default;

FileSystem::CFileItr::~CFileItr() {
    if (m_hFind != INVALID_HANDLE_VALUE) fs::FindEnd(m_hFind);
}

bool FileSystem::CFileItr::First() {
    if (m_hFind != INVALID_HANDLE_VALUE) fs::FindEnd(m_hFind);
    // Only the name and the attributes of an entry are read: the search may leave the rest.
    m_hFind = fs::FindFirstEntryName(m_sPattern, &m_FindData);
    m_bValid = m_hFind != INVALID_HANDLE_VALUE;
    while (IsValid() && IsDotEntry(m_FindData.cFileName)) m_bValid = fs::FindNextEntry(m_hFind, &m_FindData);
    return IsValid();
}

bool FileSystem::CFileItr::Next() {
    if (!m_bValid) return false;
    m_bValid = fs::FindNextEntry(m_hFind, &m_FindData);
    return IsValid();
}

bool FileSystem::CFileItr::IsValid() const { return m_bValid && m_hFind != INVALID_HANDLE_VALUE; }

bool FileSystem::CFileItr::IsDirectory() const { return (m_FindData.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0; }

const char* FileSystem::CFileItr::operator*() const { return IsValid() ? m_FindData.cFileName : nullptr; }

CString FileSystem::CFileItr::FullPath() const { return FileSystem::CreateFilePath(m_sFolder, m_FindData.cFileName); }

// --- existence and forms ----------------------------------------------------------------------

bool FileSystem::FileExists(const char* path) {
    return path && fs::FileGetAttributes(path) != INVALID_FILE_ATTRIBUTES;
}

int FileSystem::MakeFull(CString& path) {
    char buffer[MAX_PATH];
    DWORD n = fs::PathGetFull(path, MAX_PATH, buffer, nullptr);
    if (n == 0 || n >= MAX_PATH) return 0;
    path = buffer;
    return 1;
}

int FileSystem::MakeShort(CString& path) {
    if (path.Left(2) == "\\\\") return 0;
    DWORD capacity = (DWORD)path.GetLength() * 2 + 2;
    std::vector<char> buffer(capacity, '\0');
    DWORD n = fs::PathGetShort(path, buffer.data(), capacity);
    if (n == 0 || n >= capacity) return 0;
    path = buffer.data();
    return 1;
}

int FileSystem::MakeFullShort(CString& path) {
    int result = MakeFull(path);
    if (result) result = MakeShort(path);
    return result;
}

int FileSystem::MakeLong(CString& path) {
    DWORD length = fs::PathGetLong(path, nullptr, 0);
    if (length == 0) {
        // The message is built and dropped, as it always was: callers test the result only.
        DWORD error = fs::GetLastError();
        CString message;
        message.Format("Error %d: %s", (int)error, fs::SystemErrorText(error).c_str());
        return 0;
    }
    std::vector<char> buffer(length, '\0');
    DWORD n = fs::PathGetLong(path, buffer.data(), length);
    // The path may have changed between the two calls; it is only replaced by a complete
    // long form.
    if (n == 0 || n >= length) return 0;
    path = CString(buffer.data(), (int)n);
    return 1;
}

CString FileSystem::GetUniversalName(const CString& path) {
    if (path.Find(':') != 1) return path;
    char remote[MAX_PATH];
    DWORD length = MAX_PATH;
    if (fs::NetworkGetConnection(path.Left(2), remote, &length) != NO_ERROR) return path;
    return CString(remote) + path.Mid(2);
}

bool FileSystem::ReconnectNetworkDrive(const char* drive, bool interactive, DWORD& error) {
    if (!drive) {
        error = ERROR_BAD_DEVICE;  // no drive text: the system's answer for a bad local name
        return false;
    }
    char remote[MAX_PATH] = "";
    DWORD length = MAX_PATH;
    error = fs::NetworkGetConnection(drive, remote, &length);
    if (error != ERROR_CONNECTION_UNAVAIL) return error == NO_ERROR;
    char local[3] = {drive[0], drive[0] ? drive[1] : '\0', '\0'};
    NETRESOURCEA resource;
    std::memset(&resource, 0, sizeof resource);
    resource.dwType = RESOURCETYPE_DISK;
    resource.lpLocalName = local;
    resource.lpRemoteName = remote;
    error = fs::NetworkAddConnection(&resource, nullptr, nullptr, interactive ? CONNECT_INTERACTIVE : 0);
    return error == NO_ERROR;
}

// --- current folder and drives ----------------------------------------------------------------

CString FileSystem::GetCurrentDirectory() {
    char buffer[520];
    DWORD n = fs::FolderGetCurrent(sizeof buffer, buffer);
    if (n == 0 || n >= sizeof buffer) return CString();
    return WithBackslash(buffer);
}

int FileSystem::SetCurrentDirectory(const char* pDir) {
    if (!pDir) {
        CVASSERT_TEXT("pDir != NULL");
        return 0;
    }
    return fs::FolderSetCurrent(pDir);
}

int FileSystem::GetDrive() { return fs::GetCurrentDriveNumber(); }

int FileSystem::SetDrive(int drive) { return fs::ChangeCurrentDrive(drive) == 0 ? 1 : 0; }

CString FileSystem::GetDriveCurrent(int drive) {
    char buffer[MAX_PATH];
    if (!fs::GetDriveCurrentDirectory(drive, buffer, MAX_PATH)) return CString();
    return WithBackslash(buffer);
}

DWORD FileSystem::GetDriveStrings(char** drives) {
    DWORD length = fs::DriveListStrings(0, nullptr);
    if (length == 0 || !drives) return 0;
    char* block = (char*)std::malloc((size_t)length + 2);
    *drives = block;
    if (!block) return length;
    std::memset(block, 0, (size_t)length + 2);
    return fs::DriveListStrings(length + 2, block);
}

// --- creating and removing --------------------------------------------------------------------

int FileSystem::MakePath(const char* path) {
    if (!path) return -1;
    return MakePathLevel(CString(path), 0);
}

int FileSystem::RemoveFolder(const char* szPath) {
    if (!szPath) {
        CVASSERT_TEXT("szPath");
        return 0;
    }
    size_t nLen = std::strlen(szPath);
    if (nLen >= (size_t)MAX_PATH) {
        CVASSERT_TEXT("MAX_PATH > nLen");
        return 0;
    }
    if (nLen <= 3) {
        CVASSERT_TEXT("3 < nLen");
        return 0;
    }
    char from[MAX_PATH + 2] = {};
    std::memcpy(from, szPath, nLen);
    if (from[nLen - 1] == '\\') from[nLen - 1] = '\0';
    SHFILEOPSTRUCTA op;
    std::memset(&op, 0, sizeof op);
    op.wFunc = FO_DELETE;
    op.pFrom = from;
    op.fFlags = FOF_SILENT | FOF_NOCONFIRMATION | FOF_ALLOWUNDO | FOF_NOERRORUI;
    int result = fs::ShellFileOperation(&op);
    return result == 0 || result == 2 || result == 1026 ? 1 : 0;
}

int FileSystem::RemoveCurrentFolder() { return RemoveFolder(GetCurrentDirectory()); }

int FileSystem::RemoveFile(const char* path) { return path ? fs::FileDelete(path) : 0; }

CString FileSystem::SearchEnvironment(const char* pFileName, const char* pVar) {
    bool named = CVASSERT(pFileName != NULL);
    bool listed = CVASSERT(pVar != NULL);
    if (!named || !listed) return CString();
    char found[MAX_PATH] = "";
    fs::SearchEnvironmentPath(pFileName, pVar, found);
    return CString(found);
}

CString FileSystem::GetTempFileName() {
    char folder[MAX_PATH];
    DWORD n = fs::TempFolderGet(MAX_PATH, folder);
    if (n == 0 || n >= MAX_PATH) return CString();
    char name[MAX_PATH];
    if (fs::TempFileCreateName(folder, "QM", 0, name) == 0) return CString();
    return CString(name);
}

// --- copying a folder's files -----------------------------------------------------------------

int MFCFileSystem::CopyDirectory(const char* source, const char* target) {
    if (!source || !target) return 0;
    if (!fs::FolderCreate(target, nullptr) && fs::GetLastError() != ERROR_ALREADY_EXISTS) return 0;
    CString folder = WithBackslash(source);
    WIN32_FIND_DATAA entry;
    HANDLE find = fs::FindFirstEntry(folder + "*.*", &entry);
    if (find == INVALID_HANDLE_VALUE) return 1;
    int result = 1;
    do {
        if (entry.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) continue;
        // Target and name share one buffer of MAX_PATH characters: a longer pair fails.
        if (std::strlen(target) + std::strlen(entry.cFileName) >= MAX_PATH ||
            !fs::FileCopy(folder + entry.cFileName, CString(target) + entry.cFileName, FALSE)) {
            result = 0;
            break;
        }
    } while (fs::FindNextEntry(find, &entry));
    fs::FindEnd(find);
    return result;
}
