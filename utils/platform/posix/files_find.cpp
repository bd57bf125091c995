// Searches of the POSIX file services (FindFirstFileA, FindNextFileA, FindClose): a folder read
// with the Windows wildcard rules, "." and ".." as Windows gives them, and the find data of
// each entry from its stat record.
#include <dirent.h>
#include <errno.h>
#include <fcntl.h>
#include <sys/stat.h>

#include <cstddef>
#include <cstring>
#include <mutex>
#include <unordered_set>

#include "utils/platform/files_text.h"
#include "utils/platform/posix/files_internal.h"

namespace qm::platform {

namespace posixfs {

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

}  // namespace posixfs

using namespace pathmodel;
using namespace posixfs;

namespace {

std::uint64_t FileTimeOf(const struct timespec& ts) {
    return (std::uint64_t)((std::int64_t)ts.tv_sec + 11644473600LL) * 10000000ULL + (std::uint64_t)ts.tv_nsec / 100;
}

void SetFileTime(FILETIME& ft, const struct timespec& ts) {
    std::uint64_t v = FileTimeOf(ts);
    ft.dwLowDateTime = (DWORD)v;
    ft.dwHighDateTime = (DWORD)(v >> 32);
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

HANDLE FindFirstEntry(LPCSTR pattern, WIN32_FIND_DATAA* data) { return StartSearch(pattern, data, false); }

HANDLE FindFirstEntryName(LPCSTR pattern, WIN32_FIND_DATAA* data) { return StartSearch(pattern, data, true); }

BOOL FindNextEntry(HANDLE find, WIN32_FIND_DATAA* data) {
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

BOOL FindEnd(HANDLE find) {
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

}  // namespace qm::platform
