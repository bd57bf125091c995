// The temporary folder on POSIX. Windows gives each user a private %TEMP% under the profile;
// /tmp is shared by every user and program. The library therefore uses a folder of its own
// under $TMPDIR (or /tmp), "mfcqmutils-<uid>", and trusts it only when lstat shows a real
// directory (not a link) owned by the effective user with no permission for group or others.
// Anything else found under that name (a link, someone else's folder, a folder others can
// enter) is left alone, and a fresh folder with an unpredictable name ("mfcqmutils-<uid>-XXXXXX",
// mkdtemp) is made instead for the rest of the process. Because the folder is private, the
// predictable names made in it (QM*.tmp, unique and alternate names) cannot be planted by
// another user; the files the library creates for itself are still made exclusively.
#include "utils/platform/posix/temp_folder.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <mutex>

#include "utils/platform/files.h"
#include "utils/platform/posix/name_cache.h"
#include "utils/platform/tempfiles.h"

namespace qm::platform::posix {
namespace {

std::mutex g_lock;
std::string g_base;    // the $TMPDIR (or /tmp) the folder below was made for
std::string g_folder;  // the folder in use for g_base

bool IsPrivate(const std::string& path) {
    struct stat st;
    if (lstat(path.c_str(), &st) != 0) return false;
    if (!S_ISDIR(st.st_mode) || st.st_uid != geteuid() || (st.st_mode & 077) != 0) {
        errno = EACCES;
        return false;
    }
    return true;
}

std::string Base() {
    const char* tmp = std::getenv("TMPDIR");
    std::string base = tmp && *tmp == '/' ? tmp : "/tmp";
    while (base.size() > 1 && base.back() == '/') base.pop_back();
    struct stat st;
    if (stat(base.c_str(), &st) != 0 || !S_ISDIR(st.st_mode)) base = "/tmp";
    return base;
}

// The folder under `base`: the fixed name when it is (or can be made) private, else a fresh one.
bool MakeFolder(const std::string& base, std::string& out) {
    const std::string root = base == "/" ? std::string() : base;
    const std::string fixed = root + "/mfcqmutils-" + std::to_string((unsigned long)geteuid());
    if (mkdir(fixed.c_str(), 0700) == 0) names::Made(base, fixed.substr(fixed.rfind('/') + 1));
    else if (errno != EEXIST) return false;
    if (IsPrivate(fixed)) {
        out = fixed;
        return true;
    }
    std::string pattern = fixed + "-XXXXXX";
    if (!mkdtemp(pattern.data())) return false;
    names::Made(base, pattern.substr(pattern.rfind('/') + 1));
    if (!IsPrivate(pattern)) return false;
    out = pattern;
    return true;
}

}  // namespace

bool PrivateTempFolder(std::string& native) {
    const std::string base = Base();
    std::lock_guard<std::mutex> guard(g_lock);
    // The folder in use is checked again each time: it may have been removed or replaced.
    if (base != g_base || g_folder.empty() || !IsPrivate(g_folder)) {
        std::string folder;
        if (!MakeFolder(base, folder)) return false;
        g_base = base;
        g_folder = folder;
    }
    native = g_folder;
    return true;
}

int CreateExclusive(const std::string& native) {
    return open(native.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600);
}

}  // namespace qm::platform::posix

namespace qm::platform {

FILE* CreateTempFileStream(LPCSTR folder, LPCSTR prefix, LPSTR name) {
    if (!folder || !prefix || !name) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return nullptr;
    }
    *name = '\0';
    std::string dir = folder;
    if (dir.size() > MAX_PATH - 14) {
        SetLastError(ERROR_BUFFER_OVERFLOW);
        return nullptr;
    }
    if (dir.empty() || (dir.back() != '\\' && dir.back() != '/')) dir += '\\';
    dir.append(prefix, std::min<size_t>(3, std::strlen(prefix)));
    const unsigned start = ((unsigned)getpid() * 2654435761u ^ (unsigned)std::rand()) & 0xFFFF;
    for (unsigned i = 0; i < 0x10000; ++i) {
        unsigned n = (start + i) & 0xFFFF;
        if (!n) continue;
        char hex[16];
        std::snprintf(hex, sizeof hex, "%X.tmp", n);
        std::string candidate = dir + hex, native;
        if (!ToNativePath(candidate.c_str(), native)) return nullptr;
        int fd = posix::CreateExclusive(native);
        if (fd < 0) {
            if (errno == EEXIST) continue;
            SetLastError(errno == EACCES || errno == EPERM ? ERROR_ACCESS_DENIED : ERROR_PATH_NOT_FOUND);
            return nullptr;
        }
        const size_t slash = native.rfind('/');
        names::Made(slash == 0 ? "/" : native.substr(0, slash), native.substr(slash + 1));
        FILE* file = fdopen(fd, "wb");
        if (!file) {
            close(fd);
            unlink(native.c_str());
            SetLastError(ERROR_NOT_ENOUGH_MEMORY);
            return nullptr;
        }
        std::memcpy(name, candidate.c_str(), candidate.size() + 1);
        return file;
    }
    SetLastError(ERROR_FILE_EXISTS);
    return nullptr;
}

}  // namespace qm::platform
