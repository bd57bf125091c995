// The paths service of the POSIX file services: Windows paths to native ones through the drive
// map (utils/platform/pathmodel.h), names found without regard to case when the exact spelling
// does not exist, shares reached through network mounts, the last error and the system's
// error texts. Names are bytes: they go to the file system unchanged (no code-page
// conversion).
#include <errno.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstring>
#include <vector>

#include "utils/platform/posix/files_internal.h"
#include "utils/platform/posix/mount_table.h"
#include "utils/platform/posix/name_cache.h"

namespace qm::platform {

namespace {

thread_local DWORD t_lastError = 0;

}  // namespace

namespace pathmodel {

std::string NativeCwd() {
    std::vector<char> buf(4096);
    for (;;) {
        if (getcwd(buf.data(), buf.size())) return buf.data();
        if (errno != ERANGE || buf.size() > (1u << 20)) return std::string();
        buf.resize(buf.size() * 2);
    }
}

}  // namespace pathmodel

namespace posixfs {

using namespace pathmodel;

namespace {

unsigned char FoldByte(unsigned char c) {
    if (c >= 'A' && c <= 'Z') return (unsigned char)(c + 32);
    if (c >= 0xC0 && c <= 0xDE && c != 0xD7) return (unsigned char)(c + 32);
    return c;
}

bool SameNoCase(const char* a, const char* b) {
    for (; *a && *b; ++a, ++b)
        if (FoldByte((unsigned char)*a) != FoldByte((unsigned char)*b)) return false;
    return *a == *b;
}

bool EqualNoCase(const std::string& a, const std::string& b) { return a.size() == b.size() && SameNoCase(a.c_str(), b.c_str()); }

// Finds each missing component without regard to case; what is not found stays as given.
std::string ResolveCase(const std::string& base, const std::vector<std::string>& parts, bool trailing) {
    std::string path = base;
    auto join = [](const std::string& dir, const std::string& name) { return dir == "/" ? "/" + name : dir + "/" + name; };
    bool found = true;
    struct stat st;
    std::string whole = path;
    for (auto& p : parts) whole = join(whole, p);
    if (lstat(whole.c_str(), &st) == 0) return trailing && !parts.empty() ? whole + "/" : whole;
    for (const auto& part : parts) {
        std::string exact = join(path, part);
        if (!found || lstat(exact.c_str(), &st) == 0) {
            path = exact;
            continue;
        }
        std::string match;
        names::FindNoCase(path, part, match);
        if (match.empty()) {
            found = false;
            path = exact;
        } else {
            path = join(path, match);
        }
    }
    return trailing && !parts.empty() ? path + "/" : path;
}

}  // namespace

bool NativeOf(const FullPath& fp, std::string& native, bool resolveCase, std::string* driveDir) {
    for (const auto& part : fp.parts)
        if (!ValidName(part)) {
            Fail(ERROR_INVALID_NAME);
            return false;
        }
    std::string base;
    std::vector<std::string> parts = fp.parts;
    if (fp.root.size() == 2 && fp.root[1] == ':') {
        base = DriveDir(DriveIndex(fp.root[0]));
        if (base.empty()) {
            Fail(ERROR_PATH_NOT_FOUND);
            return false;
        }
    } else {
        // A share is reached through the network mount that holds it.
        std::string wanted = fp.root;
        bool found = false;
        const auto table = mounts::Current();
        for (const auto& [remote, mount] : table->shares) {
            std::string full = wanted;
            for (const auto& p : parts) full += "\\" + p;
            if (full.size() >= remote.size() && EqualNoCase(full.substr(0, remote.size()), remote) &&
                (full.size() == remote.size() || full[remote.size()] == '\\')) {
                base = TrimNativeDir(mount);
                std::string rest = full.substr(remote.size());
                parts.clear();
                FullPath tmp;
                AddParts(rest, 0, tmp, false);
                parts = tmp.parts;
                found = true;
                break;
            }
        }
        if (!found) {
            Fail(ERROR_BAD_NETPATH);
            return false;
        }
    }
    if (driveDir) *driveDir = base;
    if (resolveCase) {
        native = ResolveCase(base, parts, fp.trailing);
    } else {
        native = base;
        for (const auto& p : parts) native = native == "/" ? "/" + p : native + "/" + p;
        if (fp.trailing && !parts.empty()) native += '/';
    }
    return true;
}

bool Native(const char* path, std::string& native, bool resolveCase) {
    FullPath fp;
    return MakeFull(path, fp) && NativeOf(fp, native, resolveCase);
}

std::string ParentOf(const std::string& native) {
    std::string p = native;
    while (p.size() > 1 && p.back() == '/') p.pop_back();
    size_t slash = p.rfind('/');
    if (slash == std::string::npos) return ".";
    return slash == 0 ? "/" : p.substr(0, slash);
}

bool IsDir(const std::string& native) {
    struct stat st;
    return stat(native.c_str(), &st) == 0 && S_ISDIR(st.st_mode);
}

DWORD ErrorOf(int e, const std::string& native) {
    switch (e) {
    case ENOENT: return IsDir(ParentOf(native)) ? ERROR_FILE_NOT_FOUND : ERROR_PATH_NOT_FOUND;
    case ENOTDIR: return ERROR_PATH_NOT_FOUND;
    case EACCES:
    case EPERM:
    case EISDIR: return ERROR_ACCESS_DENIED;
    case EEXIST: return ERROR_ALREADY_EXISTS;
    case ENOTEMPTY: return ERROR_DIR_NOT_EMPTY;
    case ENOSPC:
    case EDQUOT: return ERROR_DISK_FULL;
    case ENAMETOOLONG: return ERROR_FILENAME_EXCED_RANGE;
    case EROFS: return ERROR_WRITE_PROTECT;
    case EXDEV: return ERROR_NOT_SAME_DEVICE;
    case EBUSY:
    case ETXTBSY: return ERROR_SHARING_VIOLATION;
    case EMFILE:
    case ENFILE: return ERROR_TOO_MANY_OPEN_FILES;
    case ENOMEM: return ERROR_NOT_ENOUGH_MEMORY;
    case ELOOP: return ERROR_CANT_RESOLVE_FILENAME;
    case EINVAL: return ERROR_INVALID_PARAMETER;
    default: return kGenFailure;
    }
}

BOOL FailErrno(const std::string& native) {
    Fail(ErrorOf(errno, native));
    return FALSE;
}

DWORD CopyOut(const std::string& text, LPSTR buffer, DWORD length) {
    if (buffer && length > text.size()) {
        std::memcpy(buffer, text.c_str(), text.size() + 1);
        return (DWORD)text.size();
    }
    return (DWORD)text.size() + 1;
}

}  // namespace posixfs

using namespace pathmodel;
using namespace posixfs;

// --- the paths service -------------------------------------------------------------------

bool ToNativePath(const char* windowsPath, std::string& nativePath) { return Native(windowsPath, nativePath); }

bool ToWindowsPath(const char* nativePath, std::string& windowsPath) {
    if (!nativePath || !WindowsFromNative(nativePath, windowsPath)) {
        Fail(ERROR_PATH_NOT_FOUND);
        return false;
    }
    return true;
}

bool SetDriveMapping(char letter, const char* nativeDir) {
    int d = DriveIndex(letter);
    if (d < 0 || (nativeDir && *nativeDir && *nativeDir != '/')) return false;
    State& s = S();
    std::lock_guard<std::mutex> g(s.lock);
    LoadLocked(s);
    s.overridden[d] = true;
    s.overrides[d] = nativeDir && *nativeDir ? TrimNativeDir(nativeDir) : std::string();
    s.drives[d] = s.overrides[d];
    s.driveCurrent[d].clear();
    s.lastSetNative.clear();
    return true;
}

std::string DriveMapping(char letter) {
    int d = DriveIndex(letter);
    return d < 0 ? std::string() : DriveDir(d);
}

void ReloadDriveMappings() {
    State& s = S();
    std::lock_guard<std::mutex> g(s.lock);
    s.loaded = false;
    for (int d = 0; d < 26; ++d) {
        s.overridden[d] = false;
        s.overrides[d].clear();
        s.driveCurrent[d].clear();
    }
    s.lastSetNative.clear();
    LoadLocked(s);
}

FILE* OpenFileStream(const char* path, const char* mode) {
    std::string native;
    if (!path || !mode || !Native(path, native)) {
        errno = t_lastError == ERROR_INVALID_NAME ? EINVAL : ENOENT;
        return nullptr;
    }
    FILE* f = std::fopen(native.c_str(), mode);
    if (f && std::strpbrk(mode, "wa")) names::Made(ParentOf(native), native.substr(native.rfind('/') + 1));
    return f;
}

DWORD GetLastError() { return t_lastError; }
void SetLastError(DWORD code) { t_lastError = code; }

std::string SystemErrorText(DWORD code) {
    static const struct {
        DWORD code;
        const char* text;
    } texts[] = {
        {0, "The operation completed successfully."},
        {1, "Incorrect function."},
        {2, "The system cannot find the file specified."},
        {3, "The system cannot find the path specified."},
        {4, "The system cannot open the file."},
        {5, "Access is denied."},
        {6, "The handle is invalid."},
        {8, "Not enough memory resources are available to process this command."},
        {15, "The system cannot find the drive specified."},
        {17, "The system cannot move the file to a different disk drive."},
        {18, "There are no more files."},
        {19, "The media is write protected."},
        {31, "A device attached to the system is not functioning."},
        {32, "The process cannot access the file because it is being used by another process."},
        {50, "The request is not supported."},
        {53, "The network path was not found."},
        {67, "The network name cannot be found."},
        {80, "The file exists."},
        {85, "The local device name is already in use."},
        {87, "The parameter is incorrect."},
        {111, "The file name is too long."},
        {112, "There is not enough space on the disk."},
        {122, "The data area passed to a system call is too small."},
        {123, "The filename, directory name, or volume label syntax is incorrect."},
        {145, "The directory is not empty."},
        {170, "The requested resource is in use."},
        {183, "Cannot create a file when that file already exists."},
        {206, "The filename or extension is too long."},
        {234, "More data is available."},
        {267, "The directory name is invalid."},
        {1200, "The specified device name is invalid."},
        {1201, "The device is not currently connected but it is a remembered connection."},
        {1222, "The network is not present or not started."},
        {1921, "The name of the file cannot be resolved by the system."},
        {2250, "This network connection does not exist."},
    };
    for (const auto& t : texts)
        if (t.code == code) return t.text;
    return std::string();
}

}  // namespace qm::platform
