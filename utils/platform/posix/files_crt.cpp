// The C runtime's drive and path helpers on POSIX (_getdrive, _chdrive, _getdcwd, _searchenv,
// _splitpath_s, _makepath_s) over the drive map, with errno set as the runtime sets it.
#include <errno.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "utils/platform/files_text.h"
#include "utils/platform/posix/files_internal.h"

namespace qm::platform {

using namespace pathmodel;
using namespace posixfs;

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
    if (FolderSetCurrent(DriveCurrent(drive - 1).c_str())) return 0;
    std::string root = std::string(1, (char)('A' + drive - 1)) + ":\\";
    return FolderSetCurrent(root.c_str()) ? 0 : -1;
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
        if (candidate.size() >= MAX_PATH || FileGetAttributes(candidate.c_str()) == INVALID_FILE_ATTRIBUTES) return false;
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

}  // namespace qm::platform
