// The shell's file operations on POSIX (SHFileOperationA: copy, move, rename and delete of
// files, folders and wildcards, "allow undo" through the freedesktop.org trash) and the
// lightweight shell's path helpers (PathCombineA, PathCompactPathExA).
#include <dirent.h>
#include <errno.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <time.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "utils/platform/files_text.h"
#include "utils/platform/posix/files_internal.h"

namespace qm::platform {

using namespace pathmodel;
using namespace posixfs;

namespace {

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
            HANDLE h = FindFirstEntry(item.c_str(), &fd);
            if (h == INVALID_HANDLE_VALUE) continue;
            do {
                if (!std::strcmp(fd.cFileName, ".") || !std::strcmp(fd.cFileName, "..")) continue;
                if (filesOnly && (fd.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY)) continue;
                std::string native;
                if (Native((folder + fd.cFileName).c_str(), native)) out.push_back({native, fd.cFileName});
            } while (FindNextEntry(h, &fd));
            FindEnd(h);
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

LPSTR PathJoin(LPSTR dest, LPCSTR dir, LPCSTR file) {
    if (!dest) return nullptr;
    std::string out;
    if (!CombinePathText(dir, file, out)) {
        dest[0] = '\0';
        return nullptr;
    }
    std::memcpy(dest, out.c_str(), out.size() + 1);
    return dest;
}

BOOL PathCompact(LPSTR out, LPCSTR src, UINT maxChars, DWORD) {
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

int ShellFileOperation(SHFILEOPSTRUCTA* op) {
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
    if (!multi && !Native(to[0].c_str(), target)) return (int)GetLastError();
    // One source without wildcards names its target itself, unless the target is a folder.
    bool named = op->wFunc == FO_RENAME || (!wildcard && sources.size() == 1 && !IsDir(target));
    if (!multi && !named && !MakeDirs(target, 0777)) return (int)ErrorOf(errno, target);
    for (size_t i = 0; i < sources.size(); ++i) {
        std::string dest;
        if (multi) {
            if (!Native(to[i].c_str(), dest)) return (int)GetLastError();
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

}  // namespace qm::platform
