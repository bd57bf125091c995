// The drive map and the Windows full-path model behind the file services of a system without
// drive letters (the POSIX backend). They depend on no operating system: the backend gives them
// its working directory (NativeCwd) and takes native paths from them.
//
// Drive letters map to native directories: Z: is "/" unless configured otherwise. The
// configuration is read once, at first use: the file "drives" in $XDG_CONFIG_HOME/MFCQMUtils
// (~/.config/MFCQMUtils by default), then the variable QM_DRIVES; each holds entries such as
// "D=/srv/data" (the file one per line, the variable separated by ';'), and an empty directory
// removes a drive ("Z="). The current folder of the current drive is the process's own working
// directory; the other drives keep theirs here, as Windows keeps them for each drive.
#pragma once

#include <mutex>
#include <string>
#include <vector>

#include "utils/framework/wintypes.h"
#include "utils/platform/host.h"

namespace qm::platform::pathmodel {

// Sets the last error and returns the code.
inline DWORD Fail(DWORD code) {
    SetLastError(code);
    return code;
}

// --- the drive table and current folders ---------------------------------------------------

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

// The one table (never destroyed: used until the process ends).
State& S();
// Reads the configuration unless it was read; the caller holds s.lock.
void LoadLocked(State& s);
// 0 for A ... 25 for Z (either case); -1 for anything else.
int DriveIndex(char letter);
// The directory without trailing slashes (but "/" itself).
std::string TrimNativeDir(std::string dir);
// The native directory of a drive, "" when it is not mapped.
std::string DriveDir(int d);
// Whether the native directory dir holds path (or is it).
bool NativeCovers(const std::string& dir, const std::string& path);
// Native absolute path -> Windows path by the drive that covers it most closely.
bool WindowsFromNative(const std::string& nativeIn, std::string& out);
// The current folder in Windows form (no trailing backslash except at a root).
bool CurrentDirectory(std::string& out);
// The current folder of a drive: the working folder for the current drive, else the one kept
// for it, else its root.
std::string DriveCurrent(int d);

// The process's working directory in native form; "" when it cannot be had. Given by the
// backend.
std::string NativeCwd();

// --- Windows full paths ----------------------------------------------------------------------

bool IsSep(char c);

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

// Adds the name components of text from position from to fp ("." and ".." resolved); with
// stripLast, drops the dots and blanks that end the last name, as Windows does.
void AddParts(const std::string& text, size_t from, FullPath& fp, bool stripLast);
// GetFullPathNameA's reading of a path.
bool MakeFull(const char* path, FullPath& fp);
// Whether a name component holds only characters Windows allows in names.
bool ValidName(const std::string& part);

}  // namespace qm::platform::pathmodel
