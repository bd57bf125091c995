#include <algorithm>
#include <cstdlib>
#include <fstream>

#include "utils/platform/pathmodel.h"

namespace qm::platform::pathmodel {

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

namespace {

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

}  // namespace

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

}  // namespace qm::platform::pathmodel
