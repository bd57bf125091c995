// The file services on POSIX, with Windows paths and the results and error codes of Windows.
//
// Drive letters map to native directories: Z: is "/" unless configured otherwise. The
// configuration is read once, at first use: the file "drives" in $XDG_CONFIG_HOME/MFCQMUtils
// (~/.config/MFCQMUtils by default), then the variable QM_DRIVES; each holds entries such as
// "D=/srv/data" (the file one per line, the variable separated by ';'), and an empty directory
// removes a drive ("Z=").
//
// The current folder of the current drive is the process's own working directory; the other
// drives keep theirs here, as Windows keeps them for each drive. Names are bytes: they go to
// the file system unchanged (no code-page conversion), and a name is found without regard to
// case when the exact spelling does not exist, as on Windows.
#include "utils/platform/files.h"

#include <dirent.h>
#include <errno.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/types.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <mutex>
#include <sstream>
#include <unordered_set>
#include <vector>

#include "utils/platform/files_text.h"
#include "utils/platform/posix/name_cache.h"
#include "utils/platform/posix/temp_folder.h"

namespace qm::platform {

namespace {

constexpr DWORD kGenFailure = 31;  // ERROR_GEN_FAILURE
constexpr int kDestInsideSource = 0x76;  // shell result: the target lies inside the source
constexpr int kSameFile = 0x71;          // shell result: source and target are the same
constexpr int kUnknownShellError = 0x402;  // shell result for a source that is not there

thread_local DWORD t_lastError = 0;

DWORD Fail(DWORD code) {
    t_lastError = code;
    return code;
}

// --- drive table and current folders ----------------------------------------------------

struct State {
    std::mutex lock;
    bool loaded = false;
    std::string drives[26];       // native directory of each drive ("" = not mapped)
    std::string overrides[26];    // set by SetDriveMapping ("\x01" = removed)
    bool overridden[26] = {};
    std::string driveCurrent[26];  // the last current folder of each drive (Windows form)
    std::string lastSetWindows;    // the folder last made current, as given
    std::string lastSetNative;     // ... and the working directory it produced
};

State& S() {
    static State* state = new State;  // never destroyed: used until the process ends
    return *state;
}

int DriveIndex(char letter) {
    if (letter >= 'a' && letter <= 'z') return letter - 'a';
    if (letter >= 'A' && letter <= 'Z') return letter - 'A';
    return -1;
}

std::string TrimNativeDir(std::string dir) {
    while (dir.size() > 1 && dir.back() == '/') dir.pop_back();
    return dir;
}

void ApplyEntry(std::string drives[26], const std::string& entry) {
    size_t b = entry.find_first_not_of(" \t");
    if (b == std::string::npos || entry[b] == '#') return;
    int d = DriveIndex(entry[b]);
    if (d < 0) return;
    size_t p = b + 1;
    if (p < entry.size() && entry[p] == ':') ++p;
    while (p < entry.size() && (entry[p] == ' ' || entry[p] == '\t')) ++p;
    if (p < entry.size() && entry[p] == '=') ++p;
    while (p < entry.size() && (entry[p] == ' ' || entry[p] == '\t')) ++p;
    std::string dir = entry.substr(p);
    while (!dir.empty() && (dir.back() == ' ' || dir.back() == '\t' || dir.back() == '\r')) dir.pop_back();
    if (dir.empty()) drives[d].clear();
    else if (dir[0] == '/') drives[d] = TrimNativeDir(dir);
}

void LoadLocked(State& s) {
    if (s.loaded) return;
    for (auto& d : s.drives) d.clear();
    s.drives['Z' - 'A'] = "/";
    std::string config;
    if (const char* x = std::getenv("XDG_CONFIG_HOME"); x && *x == '/') config = x;
    else if (const char* h = std::getenv("HOME"); h && *h) config = std::string(h) + "/.config";
    if (!config.empty()) {
        std::ifstream in(config + "/MFCQMUtils/drives");
        std::string line;
        while (std::getline(in, line)) ApplyEntry(s.drives, line);
    }
    if (const char* env = std::getenv("QM_DRIVES")) {
        std::string list = env;
        size_t pos = 0;
        while (pos <= list.size()) {
            size_t semi = list.find(';', pos);
            ApplyEntry(s.drives, list.substr(pos, semi == std::string::npos ? std::string::npos : semi - pos));
            if (semi == std::string::npos) break;
            pos = semi + 1;
        }
    }
    for (int d = 0; d < 26; ++d)
        if (s.overridden[d]) s.drives[d] = s.overrides[d];
    s.loaded = true;
}

std::string DriveDir(int d) {
    State& s = S();
    std::lock_guard<std::mutex> g(s.lock);
    LoadLocked(s);
    return s.drives[d];
}

std::string NativeCwd() {
    std::vector<char> buf(4096);
    for (;;) {
        if (getcwd(buf.data(), buf.size())) return buf.data();
        if (errno != ERANGE || buf.size() > (1u << 20)) return std::string();
        buf.resize(buf.size() * 2);
    }
}

bool NativeCovers(const std::string& dir, const std::string& path) {
    if (dir == "/") return !path.empty() && path[0] == '/';
    return path.compare(0, dir.size(), dir) == 0 && (path.size() == dir.size() || path[dir.size()] == '/');
}

// Native absolute path -> Windows path by the drive that covers it most closely.
bool WindowsFromNative(const std::string& nativeIn, std::string& out) {
    if (nativeIn.empty() || nativeIn[0] != '/') return false;
    std::vector<std::string> parts;
    size_t pos = 1;
    while (pos <= nativeIn.size()) {
        size_t slash = nativeIn.find('/', pos);
        std::string part = nativeIn.substr(pos, slash == std::string::npos ? std::string::npos : slash - pos);
        if (part == "..") {
            if (!parts.empty()) parts.pop_back();
        } else if (!part.empty() && part != ".") {
            parts.push_back(part);
        }
        if (slash == std::string::npos) break;
        pos = slash + 1;
    }
    std::string native = "/";
    for (size_t i = 0; i < parts.size(); ++i) native += (i ? "/" : "") + parts[i];
    State& s = S();
    std::lock_guard<std::mutex> g(s.lock);
    LoadLocked(s);
    int best = -1;
    for (int d = 0; d < 26; ++d)
        if (!s.drives[d].empty() && NativeCovers(s.drives[d], native) &&
            (best < 0 || s.drives[d].size() > s.drives[best].size()))
            best = d;
    if (best < 0) return false;
    const std::string& dir = s.drives[best];
    std::string rest = native.substr(dir == "/" ? 1 : std::min(native.size(), dir.size() + 1));
    for (char& c : rest)
        if (c == '/') c = '\\';
    out = std::string(1, (char)('A' + best)) + ":\\" + rest;
    return true;
}

// The current folder in Windows form (no trailing backslash except at a root).
bool CurrentDirectory(std::string& out) {
    std::string cwd = NativeCwd();
    State& s = S();
    {
        std::lock_guard<std::mutex> g(s.lock);
        if (!s.lastSetNative.empty() && s.lastSetNative == cwd) {
            out = s.lastSetWindows;
            return true;
        }
    }
    if (!WindowsFromNative(cwd, out)) {
        Fail(ERROR_PATH_NOT_FOUND);
        return false;
    }
    return true;
}

// The current folder of a drive: the working folder for the current drive, else the one kept
// for it, else its root.
std::string DriveCurrent(int d) {
    std::string cwd;
    if (CurrentDirectory(cwd) && cwd.size() >= 2 && cwd[1] == ':' && DriveIndex(cwd[0]) == d) return cwd;
    State& s = S();
    std::lock_guard<std::mutex> g(s.lock);
    if (!s.driveCurrent[d].empty()) return s.driveCurrent[d];
    return std::string(1, (char)('A' + d)) + ":\\";
}

bool IsSep(char c) { return c == '\\' || c == '/'; }

// --- Windows full paths ---------------------------------------------------------------

struct FullPath {
    std::string root;                // "Z:" or "\\server\share" (or "\\server")
    std::vector<std::string> parts;  // name components below the root
    bool trailing = false;           // the text ended with a separator
    std::string Text() const {
        std::string out = root;
        if (root.size() == 2 && root[1] == ':') out += '\\';
        else if (!parts.empty()) out += '\\';
        for (size_t i = 0; i < parts.size(); ++i) out += (i ? "\\" : "") + parts[i];
        if (trailing && !parts.empty()) out += '\\';
        if (trailing && parts.empty() && root.size() > 2) out += '\\';
        return out;
    }
};

void AddParts(const std::string& text, size_t from, FullPath& fp, bool stripLast) {
    size_t pos = from;
    bool lastWasName = false;
    while (pos <= text.size()) {
        size_t sep = pos;
        while (sep < text.size() && !IsSep(text[sep])) ++sep;
        std::string part = text.substr(pos, sep - pos);
        if (part == "..") {
            if (!fp.parts.empty()) fp.parts.pop_back();
            lastWasName = false;
        } else if (part == ".") {
            lastWasName = false;
        } else if (!part.empty()) {
            fp.parts.push_back(part);
            lastWasName = sep >= text.size();
        }
        if (sep >= text.size()) break;
        pos = sep + 1;
    }
    fp.trailing = !text.empty() && IsSep(text.back());
    // Windows drops dots and blanks that end the last name ("a.txt." is "a.txt").
    if (stripLast && lastWasName) {
        std::string& last = fp.parts.back();
        while (!last.empty() && (last.back() == '.' || last.back() == ' ')) last.pop_back();
        if (last.empty()) fp.parts.pop_back();
    }
}

// GetFullPathNameA's reading of a path.
bool MakeFull(const char* path, FullPath& fp) {
    fp = FullPath();
    if (!path || !*path) {
        Fail(ERROR_INVALID_NAME);
        return false;
    }
    std::string s = path;
    if (s.size() >= 4 && IsSep(s[0]) && IsSep(s[1]) && s[2] == '?' && IsSep(s[3])) {
        s = s.substr(4);
        if (s.size() >= 4 && (s.compare(0, 3, "UNC") == 0 || s.compare(0, 3, "unc") == 0) && IsSep(s[3]))
            s = "\\\\" + s.substr(4);
    }
    if (s.size() >= 2 && IsSep(s[0]) && IsSep(s[1])) {
        size_t p = 2;
        while (p < s.size() && !IsSep(s[p])) ++p;
        std::string server = s.substr(2, p - 2);
        std::string share;
        size_t q = p;
        if (p < s.size()) {
            q = p + 1;
            while (q < s.size() && !IsSep(s[q])) ++q;
            share = s.substr(p + 1, q - p - 1);
        }
        fp.root = "\\\\" + server + (share.empty() ? "" : "\\" + share);
        if (!share.empty() && q < s.size()) AddParts(s, q + 1, fp, true);
        return true;
    }
    std::string base;
    size_t from = 0;
    if (s.size() >= 2 && s[1] == ':' && DriveIndex(s[0]) >= 0) {
        if (s.size() >= 3 && IsSep(s[2])) {
            fp.root = s.substr(0, 2);
            AddParts(s, 3, fp, true);
            return true;
        }
        base = DriveCurrent(DriveIndex(s[0]));
        from = 2;
    } else {
        if (!CurrentDirectory(base)) return false;
        if (IsSep(s[0])) {
            // Rooted on the current drive (or the current share).
            FullPath cur;
            MakeFull(base.c_str(), cur);
            fp.root = cur.root;
            AddParts(s, 1, fp, true);
            return true;
        }
    }
    FullPath cur;
    if (!MakeFull(base.c_str(), cur)) return false;
    fp.root = cur.root;
    fp.parts = cur.parts;
    std::string rest = s.substr(from);
    AddParts(rest, 0, fp, true);
    if (rest.empty()) fp.trailing = false;
    return true;
}

bool ValidName(const std::string& part) {
    for (unsigned char c : part)
        if (c < 32 || std::strchr("<>:\"|?*", c)) return false;
    return true;
}

std::vector<std::pair<std::string, std::string>> ReadNetworkMounts() {
    std::ifstream in("/proc/self/mounts");
    std::stringstream text;
    text << in.rdbuf();
    return NetworkMounts(text.str());
}

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

// A full Windows path -> the native path. resolveCase: look for names in any case.
bool NativeOf(const FullPath& fp, std::string& native, bool resolveCase = true, std::string* driveDir = nullptr) {
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
        for (const auto& [remote, mount] : ReadNetworkMounts()) {
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

bool Native(const char* path, std::string& native, bool resolveCase = true) {
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

// ENOENT is "file not found" when the folder exists and "path not found" when it does not.
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

// Copies text into a caller's buffer by the Win32 convention: the length without the zero
// when it fits, else the size needed with the zero (and nothing written).
DWORD CopyOut(const std::string& text, LPSTR buffer, DWORD length) {
    if (buffer && length > text.size()) {
        std::memcpy(buffer, text.c_str(), text.size() + 1);
        return (DWORD)text.size();
    }
    return (DWORD)text.size() + 1;
}

std::uint64_t FileTimeOf(const struct timespec& ts) {
    return (std::uint64_t)((std::int64_t)ts.tv_sec + 11644473600LL) * 10000000ULL + (std::uint64_t)ts.tv_nsec / 100;
}

void SetFileTime(FILETIME& ft, const struct timespec& ts) {
    std::uint64_t v = FileTimeOf(ts);
    ft.dwLowDateTime = (DWORD)v;
    ft.dwHighDateTime = (DWORD)(v >> 32);
}

DWORD AttributesOf(const struct stat& st, const char* name) {
    DWORD a = S_ISDIR(st.st_mode) ? FILE_ATTRIBUTE_DIRECTORY : FILE_ATTRIBUTE_ARCHIVE;
    if (!S_ISDIR(st.st_mode) && !(st.st_mode & 0222)) a |= FILE_ATTRIBUTE_READONLY;
    // Dot files are hidden, as a Windows compatibility layer shows them.
    if (name[0] == '.' && std::strcmp(name, ".") != 0 && std::strcmp(name, "..") != 0) a |= FILE_ATTRIBUTE_HIDDEN;
    return a;
}

const char* BaseName(const std::string& native) {
    size_t end = native.size();
    while (end > 1 && native[end - 1] == '/') --end;
    size_t slash = native.rfind('/', end - 1);
    return native.c_str() + (slash == std::string::npos ? 0 : slash + 1);
}

void FillFindData(const struct stat& st, const char* name, WIN32_FIND_DATAA* data) {
    std::memset(data, 0, sizeof *data);
    data->dwFileAttributes = AttributesOf(st, name);
    SetFileTime(data->ftCreationTime, st.st_mtim);
    SetFileTime(data->ftLastAccessTime, st.st_atim);
    SetFileTime(data->ftLastWriteTime, st.st_mtim);
    std::uint64_t size = S_ISDIR(st.st_mode) ? 0 : (std::uint64_t)st.st_size;
    data->nFileSizeHigh = (DWORD)(size >> 32);
    data->nFileSizeLow = (DWORD)size;
    size_t n = std::strlen(name);
    if (n >= sizeof data->cFileName) n = sizeof data->cFileName - 1;
    std::memcpy(data->cFileName, name, n);
    data->cFileName[n] = '\0';
}

// --- searches ---------------------------------------------------------------------------

struct Search {
    DIR* dir = nullptr;
    std::string mask;
    bool matchAll = false;
    int dots = 2;  // "." and ".." still to give: 0 = both, 1 = "..", 2 = none
    bool single = false;
    bool namesOnly = false;  // fill names and the directory and hidden attributes only
};

void FillNameOnly(const char* name, bool directory, WIN32_FIND_DATAA* data) {
    std::memset(data, 0, offsetof(WIN32_FIND_DATAA, cFileName));
    data->dwFileAttributes = directory ? FILE_ATTRIBUTE_DIRECTORY : FILE_ATTRIBUTE_ARCHIVE;
    if (name[0] == '.' && std::strcmp(name, ".") != 0 && std::strcmp(name, "..") != 0)
        data->dwFileAttributes |= FILE_ATTRIBUTE_HIDDEN;
    size_t n = std::strlen(name);
    if (n >= sizeof data->cFileName) n = sizeof data->cFileName - 1;
    std::memcpy(data->cFileName, name, n);
    data->cFileName[n] = '\0';
    data->cAlternateFileName[0] = '\0';
}

std::mutex g_searchLock;
std::unordered_set<Search*>& LiveSearches() {
    static auto* live = new std::unordered_set<Search*>;
    return *live;
}

bool Live(Search* s) {
    std::lock_guard<std::mutex> g(g_searchLock);
    return LiveSearches().count(s) != 0;
}

bool NextEntry(Search* s, WIN32_FIND_DATAA* data) {
    while (s->dots < 2) {
        const char* name = s->dots == 0 ? "." : "..";
        ++s->dots;
        if (!s->matchAll && !MatchWildcard(s->mask.c_str(), name)) continue;
        struct stat st;
        if (fstatat(dirfd(s->dir), name, &st, 0) == 0) {
            FillFindData(st, name, data);
            return true;
        }
    }
    if (s->single || !s->dir) return false;
    while (dirent* e = readdir(s->dir)) {
        const char* name = e->d_name;
        if (name[0] == '.' && (name[1] == '\0' || (name[1] == '.' && name[2] == '\0'))) continue;
        if (!s->matchAll && !MatchWildcard(s->mask.c_str(), name)) continue;
        if (s->namesOnly && e->d_type != DT_UNKNOWN && e->d_type != DT_LNK) {
            FillNameOnly(name, e->d_type == DT_DIR, data);
            return true;
        }
        struct stat st;
        if (fstatat(dirfd(s->dir), name, &st, 0) != 0 && fstatat(dirfd(s->dir), name, &st, AT_SYMLINK_NOFOLLOW) != 0)
            continue;  // removed meanwhile
        FillFindData(st, name, data);
        return true;
    }
    return false;
}

// --- removing, copying and the trash ----------------------------------------------------

bool RemoveTree(const std::string& native) {
    struct stat st;
    if (lstat(native.c_str(), &st) != 0) return false;
    if (!S_ISDIR(st.st_mode)) return unlink(native.c_str()) == 0;
    if (DIR* dir = opendir(native.c_str())) {
        std::vector<std::string> names;
        while (dirent* e = readdir(dir))
            if (std::strcmp(e->d_name, ".") != 0 && std::strcmp(e->d_name, "..") != 0) names.push_back(e->d_name);
        closedir(dir);
        for (const auto& n : names)
            if (!RemoveTree(native + "/" + n)) return false;
    }
    return rmdir(native.c_str()) == 0;
}

// Copies one file with its permissions and times. Error: a Windows code, 0 on success.
DWORD CopyOneFile(const std::string& from, const std::string& to, bool failIfExists) {
    int in = open(from.c_str(), O_RDONLY | O_CLOEXEC);
    if (in < 0) return ErrorOf(errno, from);
    struct stat st;
    if (fstat(in, &st) != 0 || S_ISDIR(st.st_mode)) {
        close(in);
        return ERROR_ACCESS_DENIED;
    }
    struct stat dst;
    if (stat(to.c_str(), &dst) == 0) {
        if (failIfExists) {
            close(in);
            return ERROR_FILE_EXISTS;
        }
        if (dst.st_dev == st.st_dev && dst.st_ino == st.st_ino) {
            close(in);
            return ERROR_SHARING_VIOLATION;  // the file is open as its own source
        }
        if (S_ISDIR(dst.st_mode)) {
            close(in);
            return ERROR_ACCESS_DENIED;
        }
    }
    int out = open(to.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC | (failIfExists ? O_EXCL : O_TRUNC), st.st_mode & 0777);
    if (out < 0) {
        DWORD e = errno == EEXIST ? (DWORD)ERROR_FILE_EXISTS : ErrorOf(errno, to);
        close(in);
        return e;
    }
    std::vector<char> buf(1 << 16);
    DWORD result = 0;
    for (;;) {
        ssize_t n = read(in, buf.data(), buf.size());
        if (n < 0 && errno == EINTR) continue;
        if (n < 0) {
            result = ErrorOf(errno, from);
            break;
        }
        if (n == 0) break;
        for (ssize_t done = 0; done < n;) {
            ssize_t w = write(out, buf.data() + done, (size_t)(n - done));
            if (w < 0 && errno == EINTR) continue;
            if (w <= 0) {
                result = w < 0 ? ErrorOf(errno, to) : (DWORD)ERROR_DISK_FULL;
                break;
            }
            done += w;
        }
        if (result) break;
    }
    if (!result) {
        fchmod(out, st.st_mode & 0777);
        struct timespec times[2] = {st.st_atim, st.st_mtim};
        futimens(out, times);
    }
    if (close(out) != 0 && !result) result = ErrorOf(errno, to);
    close(in);
    if (result) unlink(to.c_str());
    return result;
}

DWORD CopyTree(const std::string& from, const std::string& to) {
    struct stat st;
    if (stat(from.c_str(), &st) != 0) return ErrorOf(errno, from);
    if (!S_ISDIR(st.st_mode)) return CopyOneFile(from, to, false);
    if (mkdir(to.c_str(), st.st_mode & 0777) != 0 && errno != EEXIST) return ErrorOf(errno, to);
    std::vector<std::string> names;
    if (DIR* dir = opendir(from.c_str())) {
        while (dirent* e = readdir(dir))
            if (std::strcmp(e->d_name, ".") != 0 && std::strcmp(e->d_name, "..") != 0) names.push_back(e->d_name);
        closedir(dir);
    } else {
        return ErrorOf(errno, from);
    }
    for (const auto& n : names)
        if (DWORD e = CopyTree(from + "/" + n, to + "/" + n)) return e;
    return 0;
}

std::string PercentEncoded(const std::string& path) {
    static const char hex[] = "0123456789ABCDEF";
    std::string out;
    for (unsigned char c : path) {
        if ((c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || std::strchr("-._~/", c)) {
            out += (char)c;
        } else {
            out += '%';
            out += hex[c >> 4];
            out += hex[c & 15];
        }
    }
    return out;
}

bool MakeDirs(const std::string& dir, mode_t mode) {
    if (IsDir(dir)) return true;
    std::string parent = ParentOf(dir);
    if (parent != dir && !MakeDirs(parent, mode)) return false;
    return mkdir(dir.c_str(), mode) == 0 || errno == EEXIST;
}

// Moves an item to a freedesktop.org trash: the user's own when it is on the same file system,
// else the per-user trash at the top of the item's mount. False when neither can take it.
bool MoveToTrash(const std::string& nativeIn) {
    std::string native = nativeIn;
    while (native.size() > 1 && native.back() == '/') native.pop_back();
    struct stat item;
    if (lstat(native.c_str(), &item) != 0) return false;
    char* parentReal = realpath(ParentOf(native).c_str(), nullptr);
    if (!parentReal) return false;
    std::string parent = parentReal;
    std::free(parentReal);
    std::string name = BaseName(native);
    std::string absolute = parent == "/" ? "/" + name : parent + "/" + name;

    std::string trash, recorded = absolute;
    std::string dataHome;
    if (const char* x = std::getenv("XDG_DATA_HOME"); x && *x == '/') dataHome = x;
    else if (const char* h = std::getenv("HOME"); h && *h) dataHome = std::string(h) + "/.local/share";
    struct stat ts;
    if (!dataHome.empty() && MakeDirs(dataHome + "/Trash/files", 0700) && MakeDirs(dataHome + "/Trash/info", 0700) &&
        stat((dataHome + "/Trash").c_str(), &ts) == 0 && ts.st_dev == item.st_dev) {
        trash = dataHome + "/Trash";
    } else {
        // The top of the mount holding the item: the last folder on the same device.
        std::string top = parent;
        for (;;) {
            std::string up = ParentOf(top);
            struct stat us;
            if (up == top || stat(up.c_str(), &us) != 0 || us.st_dev != item.st_dev) break;
            top = up;
        }
        trash = (top == "/" ? "" : top) + "/.Trash-" + std::to_string(getuid());
        if (!MakeDirs(trash + "/files", 0700) || !MakeDirs(trash + "/info", 0700)) return false;
        if (stat(trash.c_str(), &ts) != 0 || ts.st_dev != item.st_dev) return false;
        recorded = top == "/" ? absolute.substr(1) : absolute.substr(top.size() + 1);
    }
    char date[32];
    time_t now = time(nullptr);
    struct tm local {};
    localtime_r(&now, &local);
    strftime(date, sizeof date, "%Y-%m-%dT%H:%M:%S", &local);
    std::string info = "[Trash Info]\nPath=" + PercentEncoded(recorded) + "\nDeletionDate=" + date + "\n";
    // The info file is created exclusively first: it reserves the name in the trash.
    for (int k = 1; k <= 10000; ++k) {
        std::string entry = k == 1 ? name : name + "." + std::to_string(k);
        std::string infoPath = trash + "/info/" + entry + ".trashinfo";
        int fd = open(infoPath.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
        if (fd < 0) {
            if (errno == EEXIST) continue;
            return false;
        }
        bool written = write(fd, info.data(), info.size()) == (ssize_t)info.size();
        close(fd);
        std::string target = trash + "/files/" + entry;
        struct stat exists;
        if (written && lstat(target.c_str(), &exists) != 0 && rename(native.c_str(), target.c_str()) == 0) return true;
        unlink(infoPath.c_str());
        if (!written || lstat(target.c_str(), &exists) != 0) return false;
    }
    return false;
}

std::vector<std::string> DoubleZeroList(LPCSTR list) {
    std::vector<std::string> items;
    if (!list) return items;
    for (const char* p = list; *p; p += std::strlen(p) + 1) items.push_back(p);
    return items;
}

// Sources of a shell operation: each one, or the entries its wildcard matches.
struct Source {
    std::string native;
    std::string name;
};

int ExpandSources(const std::vector<std::string>& items, bool filesOnly, std::vector<Source>& out, bool& anyWildcard) {
    anyWildcard = false;
    for (const auto& item : items) {
        size_t cut = item.find_last_of("\\/:");
        std::string mask = cut == std::string::npos ? item : item.substr(cut + 1);
        if (HasWildcards(mask.c_str())) {
            anyWildcard = true;
            std::string folder = cut == std::string::npos ? std::string() : item.substr(0, cut + 1);
            WIN32_FIND_DATAA fd;
            HANDLE h = FindFirstFileA(item.c_str(), &fd);
            if (h == INVALID_HANDLE_VALUE) continue;
            do {
                if (!std::strcmp(fd.cFileName, ".") || !std::strcmp(fd.cFileName, "..")) continue;
                if (filesOnly && (fd.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY)) continue;
                std::string native;
                if (Native((folder + fd.cFileName).c_str(), native)) out.push_back({native, fd.cFileName});
            } while (FindNextFileA(h, &fd));
            FindClose(h);
            continue;
        }
        std::string native;
        struct stat st;
        FullPath fp;
        if (!MakeFull(item.c_str(), fp) || !NativeOf(fp, native) || lstat(native.c_str(), &st) != 0)
            return kUnknownShellError;
        // A drive or a share itself is never copied, moved or deleted as an item.
        if (fp.parts.empty()) return ERROR_ACCESS_DENIED;
        out.push_back({native, BaseName(native)});
    }
    return 0;
}

bool Inside(const std::string& inner, const std::string& outer) {
    char* a = realpath(inner.c_str(), nullptr);
    char* b = realpath(outer.c_str(), nullptr);
    bool inside = a && b && NativeCovers(b, a);
    std::free(a);
    std::free(b);
    return inside;
}

DWORD MoveNative(const std::string& from, const std::string& to) {
    if (rename(from.c_str(), to.c_str()) == 0) return 0;
    if (errno != EXDEV) return ErrorOf(errno, from);
    if (DWORD e = CopyTree(from, to)) return e;
    return RemoveTree(from) ? 0 : ErrorOf(errno, from);
}

}  // namespace

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

// --- kernel file services ------------------------------------------------------------------

DWORD GetFileAttributesA(LPCSTR path) {
    std::string native;
    if (!Native(path, native)) return INVALID_FILE_ATTRIBUTES;
    struct stat st;
    if (stat(native.c_str(), &st) != 0 && lstat(native.c_str(), &st) != 0) {
        FailErrno(native);
        return INVALID_FILE_ATTRIBUTES;
    }
    if (native.size() > 1 && native.back() == '/' && !S_ISDIR(st.st_mode)) {
        Fail(ERROR_INVALID_NAME);
        return INVALID_FILE_ATTRIBUTES;
    }
    return AttributesOf(st, BaseName(native));
}

BOOL SetFileAttributesA(LPCSTR path, DWORD attributes) {
    std::string native;
    if (!Native(path, native)) return FALSE;
    struct stat st;
    if (stat(native.c_str(), &st) != 0) return FailErrno(native);
    mode_t mode = st.st_mode & 07777;
    if (!S_ISDIR(st.st_mode)) mode = (attributes & FILE_ATTRIBUTE_READONLY) ? (mode & ~0222) : (mode | 0200);
    if (mode != (st.st_mode & 07777) && chmod(native.c_str(), mode) != 0) return FailErrno(native);
    return TRUE;
}

namespace {

HANDLE StartSearch(LPCSTR pattern, WIN32_FIND_DATAA* data, bool namesOnly) {
    if (!pattern || !data) {
        Fail(ERROR_INVALID_PARAMETER);
        return INVALID_HANDLE_VALUE;
    }
    std::string text = pattern;
    size_t cut = text.find_last_of("\\/");
    if (cut == std::string::npos && text.size() >= 2 && text[1] == ':') cut = 1;
    std::string mask = cut == std::string::npos ? text : text.substr(cut + 1);
    std::string folder = cut == std::string::npos ? std::string(".") : text.substr(0, cut + 1);
    if (folder.size() == 2 && folder[1] == ':') folder += ".";
    if (mask.empty()) {
        Fail(ERROR_FILE_NOT_FOUND);
        return INVALID_HANDLE_VALUE;
    }
    for (unsigned char c : mask)
        if (c < 32 || std::strchr("<>:\"|", c)) {
            Fail(ERROR_INVALID_NAME);
            return INVALID_HANDLE_VALUE;
        }
    FullPath fp;
    std::string native;
    if (!MakeFull(folder.c_str(), fp) || !NativeOf(fp, native)) return INVALID_HANDLE_VALUE;
    auto* s = new Search;
    s->namesOnly = namesOnly;
    s->mask = mask;
    s->matchAll = mask == "*" || mask == "*.*";
    s->dir = opendir(native.c_str());
    if (!s->dir) {
        DWORD e = errno == ENOENT || errno == ENOTDIR ? (DWORD)ERROR_PATH_NOT_FOUND : ErrorOf(errno, native);
        delete s;
        Fail(e);
        return INVALID_HANDLE_VALUE;
    }
    bool found;
    if (!HasWildcards(mask.c_str())) {
        // A plain name: that one entry, as the folder spells it.
        s->single = true;
        fp.parts.push_back(mask);
        fp.trailing = false;
        std::string entry;
        struct stat st;
        found = NativeOf(fp, entry) && (stat(entry.c_str(), &st) == 0 || lstat(entry.c_str(), &st) == 0);
        if (found) FillFindData(st, BaseName(entry), data);
    } else {
        s->dots = fp.parts.empty() ? 2 : 0;  // a drive's root has no "." or ".."
        found = NextEntry(s, data);
    }
    if (!found) {
        closedir(s->dir);
        delete s;
        Fail(ERROR_FILE_NOT_FOUND);
        return INVALID_HANDLE_VALUE;
    }
    std::lock_guard<std::mutex> g(g_searchLock);
    LiveSearches().insert(s);
    return (HANDLE)s;
}

}  // namespace

HANDLE FindFirstFileA(LPCSTR pattern, WIN32_FIND_DATAA* data) { return StartSearch(pattern, data, false); }

HANDLE FindFirstFileNamesA(LPCSTR pattern, WIN32_FIND_DATAA* data) { return StartSearch(pattern, data, true); }

BOOL FindNextFileA(HANDLE find, WIN32_FIND_DATAA* data) {
    auto* s = (Search*)find;
    if (!data || !Live(s)) {
        Fail(ERROR_INVALID_HANDLE);
        return FALSE;
    }
    if (!NextEntry(s, data)) {
        Fail(ERROR_NO_MORE_FILES);
        return FALSE;
    }
    return TRUE;
}

BOOL FindClose(HANDLE find) {
    auto* s = (Search*)find;
    {
        std::lock_guard<std::mutex> g(g_searchLock);
        if (!LiveSearches().erase(s)) {
            Fail(ERROR_INVALID_HANDLE);
            return FALSE;
        }
    }
    if (s->dir) closedir(s->dir);
    delete s;
    return TRUE;
}

DWORD GetFullPathNameA(LPCSTR path, DWORD bufferLength, LPSTR buffer, LPSTR* filePart) {
    FullPath fp;
    if (!MakeFull(path, fp)) return 0;
    std::string text = fp.Text();
    DWORD n = CopyOut(text, buffer, bufferLength);
    if (filePart && n == text.size()) {
        size_t last = text.find_last_of('\\');
        *filePart = last == std::string::npos || last + 1 == text.size() ? nullptr : buffer + last + 1;
    }
    return n;
}

DWORD GetLongPathNameA(LPCSTR shortPath, LPSTR longPath, DWORD bufferLength) {
    if (!shortPath) {
        Fail(ERROR_INVALID_PARAMETER);
        return 0;
    }
    if (!*shortPath) {
        Fail(ERROR_PATH_NOT_FOUND);
        return 0;
    }
    std::string whole;
    struct stat st;
    if (!Native(shortPath, whole)) return 0;
    if (lstat(whole.c_str(), &st) != 0) {
        Fail(ERROR_FILE_NOT_FOUND);
        return 0;
    }
    // Each name takes the spelling it has on disk; separators and the root stay as given.
    std::string in = shortPath, out;
    size_t pos = 0;
    if (in.size() >= 2 && IsSep(in[0]) && IsSep(in[1])) {
        size_t n = 2, seps = 0;
        while (n < in.size() && seps < 2) {
            if (IsSep(in[n])) ++seps;
            if (seps < 2) ++n;
        }
        pos = n;
    } else if (in.size() >= 2 && in[1] == ':') {
        pos = 2;
    }
    out = in.substr(0, pos);
    while (pos < in.size()) {
        if (IsSep(in[pos])) {
            out += in[pos++];
            continue;
        }
        size_t end = pos;
        while (end < in.size() && !IsSep(in[end])) ++end;
        std::string part = in.substr(pos, end - pos);
        std::string native;
        if (part != "." && part != ".." && Native((out + part).c_str(), native)) part = BaseName(native);
        out += part;
        pos = end;
    }
    return CopyOut(out, longPath, bufferLength);
}

DWORD GetShortPathNameA(LPCSTR longPath, LPSTR shortPath, DWORD bufferLength) {
    // There are no 8.3 names here: the short form of a path is its long form.
    return GetLongPathNameA(longPath, shortPath, bufferLength);
}

DWORD GetCurrentDirectoryA(DWORD bufferLength, LPSTR buffer) {
    std::string cwd;
    if (!CurrentDirectory(cwd)) return 0;
    return CopyOut(cwd, buffer, bufferLength);
}

BOOL SetCurrentDirectoryA(LPCSTR path) {
    FullPath fp;
    std::string native;
    if (!path) {
        Fail(ERROR_INVALID_PARAMETER);
        return FALSE;
    }
    if (!MakeFull(path, fp) || !NativeOf(fp, native)) return FALSE;
    struct stat st;
    if (stat(native.c_str(), &st) != 0) return FailErrno(native);
    if (!S_ISDIR(st.st_mode)) {
        Fail(ERROR_DIRECTORY);
        return FALSE;
    }
    if (chdir(native.c_str()) != 0) return FailErrno(native);
    fp.trailing = false;
    std::string text = fp.Text();
    State& s = S();
    std::lock_guard<std::mutex> g(s.lock);
    s.lastSetWindows = text;
    s.lastSetNative = NativeCwd();
    if (text.size() >= 2 && text[1] == ':') s.driveCurrent[DriveIndex(text[0])] = text;
    return TRUE;
}

DWORD GetTempPathA(DWORD bufferLength, LPSTR buffer) {
    // The user's own folder under $TMPDIR or /tmp, never the shared one (temp_folder.cpp).
    std::string native, path;
    if (!posix::PrivateTempFolder(native)) return FailErrno(native);
    if (!WindowsFromNative(native, path)) {
        Fail(ERROR_PATH_NOT_FOUND);
        return 0;
    }
    if (path.back() != '\\') path += '\\';
    return CopyOut(path, buffer, bufferLength);
}

UINT GetTempFileNameA(LPCSTR pathName, LPCSTR prefix, UINT unique, LPSTR tempFileName) {
    if (!pathName || !prefix || !tempFileName) {
        Fail(ERROR_INVALID_PARAMETER);
        return 0;
    }
    std::string dir = pathName;
    if (dir.size() > MAX_PATH - 14) {
        Fail(ERROR_BUFFER_OVERFLOW);
        return 0;
    }
    if (dir.empty() || !IsSep(dir.back())) dir += '\\';
    dir.append(prefix, std::min<size_t>(3, std::strlen(prefix)));
    unique &= 0xFFFF;
    auto nameOf = [&](UINT n) {
        char hex[16];
        std::snprintf(hex, sizeof hex, "%X.tmp", n);
        return dir + hex;
    };
    if (unique) {
        std::string name = nameOf(unique);
        std::memcpy(tempFileName, name.c_str(), name.size() + 1);
        return unique;
    }
    struct timespec now;
    clock_gettime(CLOCK_MONOTONIC, &now);
    UINT start = (UINT)((now.tv_sec * 1000 + now.tv_nsec / 1000000) ^ getpid()) & 0xFFFF;
    if (!start) start = 1;
    UINT n = start;
    do {
        std::string name = nameOf(n), native;
        if (!Native(name.c_str(), native)) return 0;
        // Created exclusively: a name another process took a moment ago is never shared.
        int fd = open(native.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0666);
        if (fd >= 0) {
            close(fd);
            names::Made(ParentOf(native), native.substr(native.rfind('/') + 1));
            std::memcpy(tempFileName, name.c_str(), name.size() + 1);
            return n;
        }
        if (errno != EEXIST) {
            FailErrno(native);
            return 0;
        }
        n = n == 0xFFFF ? 1 : n + 1;
    } while (n != start);
    Fail(ERROR_FILE_EXISTS);
    return 0;
}

DWORD GetLogicalDriveStringsA(DWORD bufferLength, LPSTR buffer) {
    std::string list;
    for (int d = 0; d < 26; ++d)
        if (!DriveDir(d).empty()) {
            list += (char)('A' + d);
            list += ":\\";
            list += '\0';
        }
    if (buffer && bufferLength > list.size()) {
        std::memcpy(buffer, list.data(), list.size());
        buffer[list.size()] = '\0';
        return (DWORD)list.size();
    }
    return (DWORD)list.size() + 1;
}

BOOL CreateDirectoryA(LPCSTR path, void*) {
    std::string native;
    if (!Native(path, native)) return FALSE;
    if (mkdir(native.c_str(), 0777) != 0) return FailErrno(native);
    return TRUE;
}

BOOL RemoveDirectoryA(LPCSTR path) {
    std::string native;
    if (!Native(path, native)) return FALSE;
    struct stat st;
    if (lstat(native.c_str(), &st) == 0 && !S_ISDIR(st.st_mode)) {
        Fail(ERROR_DIRECTORY);
        return FALSE;
    }
    if (rmdir(native.c_str()) != 0) {
        if (errno == EEXIST || errno == ENOTEMPTY) return Fail(ERROR_DIR_NOT_EMPTY), FALSE;
        return FailErrno(native);
    }
    return TRUE;
}

BOOL DeleteFileA(LPCSTR path) {
    std::string native;
    if (!Native(path, native)) return FALSE;
    struct stat st;
    // Windows refuses to delete a read-only file (one without write permission here).
    if (lstat(native.c_str(), &st) == 0 && (S_ISDIR(st.st_mode) || (S_ISREG(st.st_mode) && !(st.st_mode & 0222))))
        return Fail(ERROR_ACCESS_DENIED), FALSE;
    if (unlink(native.c_str()) != 0) return FailErrno(native);
    return TRUE;
}

BOOL CopyFileA(LPCSTR existing, LPCSTR newFile, BOOL failIfExists) {
    std::string from, to;
    if (!Native(existing, from) || !Native(newFile, to)) return FALSE;
    if (DWORD e = CopyOneFile(from, to, failIfExists != FALSE)) return Fail(e), FALSE;
    return TRUE;
}

BOOL MoveFileExA(LPCSTR existing, LPCSTR newFile, DWORD flags) {
    if (flags & MOVEFILE_DELAY_UNTIL_REBOOT) return Fail(ERROR_INVALID_PARAMETER), FALSE;
    std::string from, to, toExact;
    if (!Native(existing, from) || !Native(newFile, to) || !Native(newFile, toExact, false)) return FALSE;
    struct stat src, dst;
    if (lstat(from.c_str(), &src) != 0) return FailErrno(from);
    if (lstat(to.c_str(), &dst) == 0) {
        bool same = dst.st_dev == src.st_dev && dst.st_ino == src.st_ino;
        if (same) to = toExact;  // a change of case only
        else if (!(flags & MOVEFILE_REPLACE_EXISTING)) return Fail(ERROR_ALREADY_EXISTS), FALSE;
        else if (S_ISDIR(dst.st_mode)) return Fail(ERROR_ACCESS_DENIED), FALSE;
    }
    if (rename(from.c_str(), to.c_str()) == 0) return TRUE;
    if (errno != EXDEV) return FailErrno(from);
    if (!(flags & MOVEFILE_COPY_ALLOWED) || S_ISDIR(src.st_mode)) return Fail(ERROR_NOT_SAME_DEVICE), FALSE;
    if (DWORD e = CopyOneFile(from, to, false)) return Fail(e), FALSE;
    if (unlink(from.c_str()) != 0) return FailErrno(from);
    return TRUE;
}

BOOL MoveFileA(LPCSTR existing, LPCSTR newFile) { return MoveFileExA(existing, newFile, MOVEFILE_COPY_ALLOWED); }

// --- the C runtime's drive and path helpers ----------------------------------------------

int GetCurrentDriveNumber() {
    std::string cwd;
    if (!CurrentDirectory(cwd) || cwd.size() < 2 || cwd[1] != ':') return 0;
    return DriveIndex(cwd[0]) + 1;
}

int ChangeCurrentDrive(int drive) {
    if (drive < 1 || drive > 26 || DriveDir(drive - 1).empty()) {
        errno = EACCES;
        return -1;
    }
    if (SetCurrentDirectoryA(DriveCurrent(drive - 1).c_str())) return 0;
    std::string root = std::string(1, (char)('A' + drive - 1)) + ":\\";
    return SetCurrentDirectoryA(root.c_str()) ? 0 : -1;
}

char* GetDriveCurrentDirectory(int drive, char* buffer, int maxLength) {
    std::string dir;
    if (drive == 0) {
        if (!CurrentDirectory(dir)) {
            errno = ENOENT;
            return nullptr;
        }
    } else if (drive < 1 || drive > 26 || DriveDir(drive - 1).empty()) {
        errno = EACCES;
        return nullptr;
    } else {
        dir = DriveCurrent(drive - 1);
    }
    if (!buffer) {
        size_t size = std::max<size_t>(maxLength > 0 ? (size_t)maxLength : 0, dir.size() + 1);
        buffer = (char*)std::malloc(size);
        if (!buffer) {
            errno = ENOMEM;
            return nullptr;
        }
    } else if (maxLength <= 0 || (size_t)maxLength < dir.size() + 1) {
        errno = ERANGE;
        return nullptr;
    }
    std::memcpy(buffer, dir.c_str(), dir.size() + 1);
    return buffer;
}

void SearchEnvironmentPath(const char* fileName, const char* varName, char* pathName) {
    if (!pathName) return;
    pathName[0] = '\0';
    if (!fileName || !*fileName || !varName) {
        errno = EINVAL;
        return;
    }
    auto found = [&](const std::string& candidate) {
        if (candidate.size() >= MAX_PATH || GetFileAttributesA(candidate.c_str()) == INVALID_FILE_ATTRIBUTES) return false;
        std::memcpy(pathName, candidate.c_str(), candidate.size() + 1);
        return true;
    };
    FullPath fp;
    if (MakeFull(fileName, fp) && found(fp.Text())) return;
    const char* value = std::getenv(varName);
    if (!value) {
        errno = ENOENT;
        return;
    }
    std::string list = value;
    std::vector<std::string> dirs;
    // A native list ("/usr/bin:/bin") is read as such, its folders named by their drives.
    bool nativeList = list.find(';') == std::string::npos && !list.empty() && list[0] == '/';
    char sep = nativeList ? ':' : ';';
    size_t pos = 0;
    while (pos <= list.size()) {
        size_t next = list.find(sep, pos);
        std::string item = list.substr(pos, next == std::string::npos ? std::string::npos : next - pos);
        if (nativeList) {
            std::string win;
            if (!item.empty() && WindowsFromNative(item, win)) dirs.push_back(win);
        } else if (!item.empty()) {
            dirs.push_back(item);
        }
        if (next == std::string::npos) break;
        pos = next + 1;
    }
    for (std::string dir : dirs) {
        if (!IsSep(dir.back())) dir += '\\';
        if (found(dir + fileName)) return;
    }
    errno = ENOENT;
}

int SplitPathS(const char* path, char* drive, size_t driveSize, char* dir, size_t dirSize, char* fname,
               size_t fnameSize, char* ext, size_t extSize) {
    return SplitPathText(path, drive, driveSize, dir, dirSize, fname, fnameSize, ext, extSize);
}

int MakePathS(char* path, size_t size, const char* drive, const char* dir, const char* fname, const char* ext) {
    return MakePathText(path, size, drive, dir, fname, ext);
}

// --- shell and lightweight shell -----------------------------------------------------------

LPSTR PathCombineA(LPSTR dest, LPCSTR dir, LPCSTR file) {
    if (!dest) return nullptr;
    std::string out;
    if (!CombinePathText(dir, file, out)) {
        dest[0] = '\0';
        return nullptr;
    }
    std::memcpy(dest, out.c_str(), out.size() + 1);
    return dest;
}

BOOL PathCompactPathExA(LPSTR out, LPCSTR src, UINT maxChars, DWORD) {
    if (!src || !out) return FALSE;
    std::string text = CompactPathText(src, maxChars);
    if (maxChars == 0) return TRUE;
    std::memcpy(out, text.c_str(), text.size() + 1);
    return TRUE;
}

// The name the Windows shell gives a copied or moved item whose target name is taken, with
// FOF_RENAMEONCOLLISION: "name (2).ext", "name (3).ext", ... the first that is free.
static std::string CollisionFreeName(const std::string& dest) {
    size_t slash = dest.rfind('/'), dot = dest.rfind('.');
    if (dot == std::string::npos || (slash != std::string::npos && dot < slash) || dot == slash + 1) dot = dest.size();
    struct stat st;
    for (unsigned n = 2;; ++n) {
        std::string candidate = dest.substr(0, dot) + " (" + std::to_string(n) + ")" + dest.substr(dot);
        if (lstat(candidate.c_str(), &st) != 0 || n == 0xFFFFFFFF) return candidate;
    }
}

int SHFileOperationA(SHFILEOPSTRUCTA* op) {
    if (!op) return ERROR_INVALID_PARAMETER;
    op->fAnyOperationsAborted = FALSE;
    std::vector<std::string> from = DoubleZeroList(op->pFrom);
    if (from.empty()) return ERROR_INVALID_PARAMETER;
    std::vector<Source> sources;
    bool wildcard = false;
    if (int e = ExpandSources(from, (op->fFlags & FOF_FILESONLY) != 0, sources, wildcard)) return e;
    if (op->wFunc == FO_DELETE) {
        for (const auto& src : sources) {
            if ((op->fFlags & FOF_ALLOWUNDO) && MoveToTrash(src.native)) continue;
            if (!RemoveTree(src.native)) return (int)ErrorOf(errno, src.native);
        }
        return 0;
    }
    std::vector<std::string> to = DoubleZeroList(op->pTo);
    if (to.empty() || (op->wFunc != FO_COPY && op->wFunc != FO_MOVE && op->wFunc != FO_RENAME))
        return ERROR_INVALID_PARAMETER;
    bool multi = (op->fFlags & FOF_MULTIDESTFILES) && to.size() == sources.size() && !wildcard;
    std::string target;
    if (!multi && !Native(to[0].c_str(), target)) return (int)t_lastError;
    // One source without wildcards names its target itself, unless the target is a folder.
    bool named = op->wFunc == FO_RENAME || (!wildcard && sources.size() == 1 && !IsDir(target));
    if (!multi && !named && !MakeDirs(target, 0777)) return (int)ErrorOf(errno, target);
    for (size_t i = 0; i < sources.size(); ++i) {
        std::string dest;
        if (multi) {
            if (!Native(to[i].c_str(), dest)) return (int)t_lastError;
        } else {
            dest = named ? target : (target == "/" ? "/" : target + "/") + sources[i].name;
        }
        while (dest.size() > 1 && dest.back() == '/') dest.pop_back();
        if (named && op->wFunc != FO_RENAME) MakeDirs(ParentOf(dest), 0777);
        struct stat a, b;
        if (stat(sources[i].native.c_str(), &a) == 0 && stat(dest.c_str(), &b) == 0 && a.st_dev == b.st_dev &&
            a.st_ino == b.st_ino)
            return kSameFile;
        if (IsDir(sources[i].native) && Inside(ParentOf(dest), sources[i].native)) return kDestInsideSource;
        if ((op->fFlags & FOF_RENAMEONCOLLISION) && op->wFunc != FO_RENAME && lstat(dest.c_str(), &b) == 0)
            dest = CollisionFreeName(dest);
        DWORD e = 0;
        if (op->wFunc == FO_COPY) e = CopyTree(sources[i].native, dest);
        else if (op->wFunc == FO_RENAME && lstat(dest.c_str(), &b) == 0) e = ERROR_ALREADY_EXISTS;
        else e = MoveNative(sources[i].native, dest);
        if (e) return (int)e;
    }
    return 0;
}

// --- network names -------------------------------------------------------------------------

DWORD WNetGetConnectionA(LPCSTR localName, LPSTR remoteName, DWORD* length) {
    if (!localName || !length) return ERROR_INVALID_PARAMETER;
    if (std::strlen(localName) != 2 || localName[1] != ':' || DriveIndex(localName[0]) < 0) return ERROR_BAD_DEVICE;
    std::string dir = DriveDir(DriveIndex(localName[0]));
    if (dir.empty()) return ERROR_NOT_CONNECTED;
    std::ifstream in("/proc/self/mounts");
    std::stringstream table;
    table << in.rdbuf();
    std::string remote = RemoteNameFromMountTable(table.str(), dir);
    if (remote.empty()) return ERROR_NOT_CONNECTED;
    if (!remoteName || *length <= remote.size()) {
        *length = (DWORD)remote.size() + 1;
        return ERROR_MORE_DATA;
    }
    std::memcpy(remoteName, remote.c_str(), remote.size() + 1);
    return NO_ERROR;
}

DWORD WNetAddConnection2A(NETRESOURCEA* resource, LPCSTR, LPCSTR, DWORD) {
    if (!resource) return ERROR_INVALID_PARAMETER;
    return ERROR_NOT_SUPPORTED;
}

}  // namespace qm::platform
