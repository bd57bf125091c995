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
//
// This file holds the kernel's file calls (attributes, full and long paths, current folders,
// temporary files, folders, deleting, copying and moving files); beside it: files_paths.cpp
// (the paths service), files_find.cpp (searches), files_shell.cpp (the shell's operations),
// files_crt.cpp (the C runtime's drive and path helpers), files_network.cpp (network names),
// and the generic drive map and full-path model (utils/platform/pathmodel.h).
#include "utils/platform/files.h"

#include <errno.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "utils/platform/posix/files_internal.h"
#include "utils/platform/posix/name_cache.h"
#include "utils/platform/posix/temp_folder.h"

namespace qm::platform {

namespace posixfs {

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

}  // namespace posixfs

using namespace pathmodel;
using namespace posixfs;

DWORD FileGetAttributes(LPCSTR path) {
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

BOOL FileSetAttributes(LPCSTR path, DWORD attributes) {
    std::string native;
    if (!Native(path, native)) return FALSE;
    struct stat st;
    if (stat(native.c_str(), &st) != 0) return FailErrno(native);
    mode_t mode = st.st_mode & 07777;
    if (!S_ISDIR(st.st_mode)) mode = (attributes & FILE_ATTRIBUTE_READONLY) ? (mode & ~0222) : (mode | 0200);
    if (mode != (st.st_mode & 07777) && chmod(native.c_str(), mode) != 0) return FailErrno(native);
    return TRUE;
}

DWORD PathGetFull(LPCSTR path, DWORD bufferLength, LPSTR buffer, LPSTR* filePart) {
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

DWORD PathGetLong(LPCSTR shortPath, LPSTR longPath, DWORD bufferLength) {
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

DWORD PathGetShort(LPCSTR longPath, LPSTR shortPath, DWORD bufferLength) {
    // There are no 8.3 names here: the short form of a path is its long form.
    return PathGetLong(longPath, shortPath, bufferLength);
}

DWORD FolderGetCurrent(DWORD bufferLength, LPSTR buffer) {
    std::string cwd;
    if (!CurrentDirectory(cwd)) return 0;
    return CopyOut(cwd, buffer, bufferLength);
}

BOOL FolderSetCurrent(LPCSTR path) {
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

DWORD TempFolderGet(DWORD bufferLength, LPSTR buffer) {
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

UINT TempFileCreateName(LPCSTR pathName, LPCSTR prefix, UINT unique, LPSTR tempFileName) {
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

DWORD DriveListStrings(DWORD bufferLength, LPSTR buffer) {
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

BOOL FolderCreate(LPCSTR path, void*) {
    std::string native;
    if (!Native(path, native)) return FALSE;
    if (mkdir(native.c_str(), 0777) != 0) return FailErrno(native);
    return TRUE;
}

BOOL FolderRemove(LPCSTR path) {
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

BOOL FileDelete(LPCSTR path) {
    std::string native;
    if (!Native(path, native)) return FALSE;
    struct stat st;
    // Windows refuses to delete a read-only file (one without write permission here).
    if (lstat(native.c_str(), &st) == 0 && (S_ISDIR(st.st_mode) || (S_ISREG(st.st_mode) && !(st.st_mode & 0222))))
        return Fail(ERROR_ACCESS_DENIED), FALSE;
    if (unlink(native.c_str()) != 0) return FailErrno(native);
    return TRUE;
}

BOOL FileCopy(LPCSTR existing, LPCSTR newFile, BOOL failIfExists) {
    std::string from, to;
    if (!Native(existing, from) || !Native(newFile, to)) return FALSE;
    if (DWORD e = CopyOneFile(from, to, failIfExists != FALSE)) return Fail(e), FALSE;
    return TRUE;
}

BOOL FileMoveEx(LPCSTR existing, LPCSTR newFile, DWORD flags) {
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

BOOL FileMove(LPCSTR existing, LPCSTR newFile) { return FileMoveEx(existing, newFile, MOVEFILE_COPY_ALLOWED); }

}  // namespace qm::platform
