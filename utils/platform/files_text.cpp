#include "utils/platform/files_text.h"

#include <cerrno>
#include <cstring>
#include <vector>

#include "utils/platform/files.h"

namespace qm::platform {

namespace {

bool IsSlash(char c) { return c == '\\' || c == '/'; }

void ClearIfGiven(char* buffer, size_t size) {
    if (buffer && size) buffer[0] = '\0';
}

// Copies count bytes and a NUL when they fit in size.
bool CopyPart(char* buffer, size_t size, const char* from, size_t count) {
    if (!buffer) return true;
    if (count + 1 > size) return false;
    std::memcpy(buffer, from, count);
    buffer[count] = '\0';
    return true;
}

// Lower-case of code page 1252 letters, for comparing names without regard to case.
unsigned char Fold(unsigned char c) {
    if (c >= 'A' && c <= 'Z') return (unsigned char)(c + 32);
    if (c >= 0xC0 && c <= 0xDE && c != 0xD7) return (unsigned char)(c + 32);
    return c;
}

}  // namespace

int SplitPathText(const char* path, char* drive, size_t driveSize, char* dir, size_t dirSize, char* fname,
                  size_t fnameSize, char* ext, size_t extSize) {
    bool badPair = (!drive) != (driveSize == 0) || (!dir) != (dirSize == 0) || (!fname) != (fnameSize == 0) ||
                   (!ext) != (extSize == 0);
    if (!path || badPair) {
        ClearIfGiven(drive, driveSize);
        ClearIfGiven(dir, dirSize);
        ClearIfGiven(fname, fnameSize);
        ClearIfGiven(ext, extSize);
        return EINVAL;
    }
    const char* p = path;
    bool ok = true;
    if (p[0] && p[1] == ':') {
        ok = CopyPart(drive, driveSize, p, 2);
        p += 2;
    } else {
        ok = CopyPart(drive, driveSize, p, 0);
    }
    const char* lastSlash = nullptr;
    const char* dot = nullptr;
    for (const char* q = p; *q; ++q) {
        if (IsSlash(*q)) lastSlash = q + 1;
        else if (*q == '.') dot = q;
    }
    const char* name = lastSlash ? lastSlash : p;
    ok = ok && CopyPart(dir, dirSize, p, (size_t)(name - p));
    const char* end = name + std::strlen(name);
    const char* extStart = dot && dot >= name ? dot : end;
    ok = ok && CopyPart(fname, fnameSize, name, (size_t)(extStart - name));
    ok = ok && CopyPart(ext, extSize, extStart, (size_t)(end - extStart));
    if (!ok) {
        ClearIfGiven(drive, driveSize);
        ClearIfGiven(dir, dirSize);
        ClearIfGiven(fname, fnameSize);
        ClearIfGiven(ext, extSize);
        return ERANGE;
    }
    return 0;
}

int MakePathText(char* path, size_t size, const char* drive, const char* dir, const char* fname, const char* ext) {
    if (!path || size == 0) return EINVAL;
    std::string out;
    if (drive && *drive) {
        out += drive[0];
        out += ':';
    }
    if (dir && *dir) {
        out += dir;
        if (!IsSlash(out.back())) out += '\\';
    }
    if (fname) out += fname;
    if (ext && *ext) {
        if (*ext != '.') out += '.';
        out += ext;
    }
    if (out.size() + 1 > size) {
        path[0] = '\0';
        return ERANGE;
    }
    std::memcpy(path, out.c_str(), out.size() + 1);
    return 0;
}

std::string CanonicalizePathText(const std::string& path) {
    if (path.empty()) return "\\";
    std::string root;
    size_t pos = 0;
    size_t keep = 0;  // leading segments that ".." never removes (a share's server and name)
    if (path.size() >= 2 && path[0] == '\\' && path[1] == '\\') {
        root = "\\\\";
        pos = 2;
        keep = 2;
    } else if (path.size() >= 2 && path[1] == ':') {
        root = path.substr(0, 2);
        pos = 2;
        if (pos < path.size() && path[pos] == '\\') {
            root += '\\';
            ++pos;
        }
    } else if (path[0] == '\\') {
        root = "\\";
        pos = 1;
    }
    std::vector<std::string> parts;
    bool trailing = false;
    while (pos <= path.size()) {
        size_t next = path.find('\\', pos);
        std::string part = path.substr(pos, next == std::string::npos ? std::string::npos : next - pos);
        bool last = next == std::string::npos;
        if (part == ".") {
            trailing = false;
        } else if (part == "..") {
            if (parts.size() > keep) parts.pop_back();
            trailing = false;
        } else if (!(last && part.empty())) {
            parts.push_back(part);
            trailing = false;
        } else {
            trailing = !parts.empty();
        }
        if (last) break;
        pos = next + 1;
    }
    std::string out = root;
    for (size_t i = 0; i < parts.size(); ++i) {
        if (i) out += '\\';
        out += parts[i];
    }
    if (trailing) out += '\\';
    if (out.empty()) return "\\";
    if (out.size() == 2 && out[1] == ':') out += '\\';
    return out;
}

namespace {

bool IsRelative(const char* p) { return !(p[0] == '\\' || (p[0] && p[1] == ':')); }

std::string RootOf(const std::string& dir) {
    if (dir.size() >= 2 && dir[1] == ':') return dir.substr(0, 2) + "\\";
    if (dir.size() >= 2 && dir[0] == '\\' && dir[1] == '\\') {
        size_t server = dir.find('\\', 2);
        if (server == std::string::npos) return dir;
        size_t share = dir.find('\\', server + 1);
        return share == std::string::npos ? dir : dir.substr(0, share);
    }
    if (!dir.empty() && dir[0] == '\\') return "\\";
    return std::string();
}

}  // namespace

bool CombinePathText(const char* dir, const char* file, std::string& out) {
    out.clear();
    if (!dir && !file) return false;
    std::string joined;
    if ((!file || !*file) && dir) {
        joined = dir;
    } else if (!dir || !*dir || !IsRelative(file)) {
        bool unc = file[0] == '\\' && file[1] == '\\';
        if (!dir || !*dir || file[0] != '\\' || unc) {
            joined = file;
        } else {
            joined = RootOf(dir);
            if (!joined.empty() && joined.back() == '\\') joined.pop_back();
            joined += file;
        }
    } else {
        joined = dir;
        if (joined.back() != '\\') joined += '\\';
        joined += file;
    }
    out = CanonicalizePathText(joined);
    if (out.size() >= MAX_PATH) {
        out.clear();
        return false;
    }
    return true;
}

namespace {

// PathFindFileNameA: after the last separator or colon that is followed by a name.
size_t FileNameStart(const char* p) {
    size_t start = 0;
    for (size_t i = 0; p[i]; ++i)
        if ((p[i] == '\\' || p[i] == '/' || p[i] == ':') && p[i + 1] && p[i + 1] != '\\' && p[i + 1] != '/')
            start = i + 1;
    return start;
}

std::string Dots(unsigned maxChars) { return std::string(maxChars > 0 ? maxChars - 1 : 0, '.'); }

}  // namespace

std::string CompactPathText(const char* src, unsigned maxChars) {
    if (!src || maxChars < 2) return std::string();
    size_t len = std::strlen(src);
    if (len + 1 < maxChars) return std::string(src, len);
    size_t file = FileNameStart(src);
    if (file == 0) {
        // No folder: the name cut short with an ellipsis at its end.
        if (maxChars <= 4) return Dots(maxChars);
        return std::string(src, maxChars - 4) + "...";
    }
    --file;  // the compacted name starts with its separator
    size_t fileLen = len - file + 1;  // with the terminating zero
    if (fileLen + 3 > maxChars) {
        if (maxChars <= 4) return Dots(maxChars);
        std::string out = "...";
        out += src[file];
        unsigned rest = maxChars - 4;
        if (rest <= 4) return out + Dots(rest);
        rest -= 4;
        out.append(src + file + 1, rest);
        return out + "...";
    }
    size_t head = maxChars - fileLen - 3;
    return std::string(src, head) + "..." + std::string(src + file);
}

bool HasWildcards(const char* text) { return std::strpbrk(text, "*?") != nullptr; }

bool MatchWildcard(const char* pattern, const char* name) {
    // The pattern in the system's form: '?' matches one character or nothing before a dot or
    // the end; '*' before a dot stops at the name's last dot; a dot before wildcards or at the
    // end also matches the end of a name without one.
    enum : int { kStar = 256, kQm, kDosStar, kDosDot };
    std::vector<int> pat;
    if (std::strcmp(pattern, "*.*") == 0) pattern = "*";
    for (size_t i = 0; pattern[i]; ++i) {
        char c = pattern[i], next = pattern[i + 1];
        if (c == '?') pat.push_back(kQm);
        else if (c == '*') pat.push_back(next == '.' ? kDosStar : kStar);
        else if (c == '.' && (next == '?' || next == '*' || next == '\0')) pat.push_back(kDosDot);
        else pat.push_back(Fold((unsigned char)c));
    }
    size_t n = std::strlen(name);
    size_t lastDot = std::string::npos;
    for (size_t i = 0; i < n; ++i)
        if (name[i] == '.') lastDot = i;
    // match[p][k]: pattern from p matches name from k; computed from the end, two rows kept.
    std::vector<char> below(n + 1, 0), row(n + 1, 0);
    below[n] = 1;
    for (size_t p = pat.size(); p-- > 0;) {
        int e = pat[p];
        for (size_t k = n + 1; k-- > 0;) {
            bool atEnd = k == n;
            unsigned char c = atEnd ? 0 : (unsigned char)name[k];
            bool m = false;
            switch (e) {
            case kStar: m = below[k] || (!atEnd && row[k + 1]); break;
            case kQm: m = (!atEnd && c != '.' && below[k + 1]) || ((atEnd || c == '.') && below[k]); break;
            case kDosStar: m = below[k] || (!atEnd && k != lastDot && row[k + 1]); break;
            case kDosDot: m = (!atEnd && c == '.' && below[k + 1]) || (atEnd && below[k]); break;
            default: m = !atEnd && Fold(c) == e && below[k + 1]; break;
            }
            row[k] = m;
        }
        below.swap(row);
    }
    return below[0] != 0;
}

namespace {

std::string Unescape(const std::string& field) {
    std::string out;
    for (size_t i = 0; i < field.size(); ++i) {
        if (field[i] == '\\' && i + 3 < field.size() + 0 && field[i + 1] >= '0' && field[i + 1] <= '3' &&
            field[i + 2] >= '0' && field[i + 2] <= '7' && field[i + 3] >= '0' && field[i + 3] <= '7') {
            out += (char)((field[i + 1] - '0') * 64 + (field[i + 2] - '0') * 8 + (field[i + 3] - '0'));
            i += 3;
        } else {
            out += field[i];
        }
    }
    return out;
}

bool Covers(const std::string& mount, const std::string& dir) {
    if (mount == "/") return !dir.empty() && dir[0] == '/';
    return dir.compare(0, mount.size(), mount) == 0 && (dir.size() == mount.size() || dir[mount.size()] == '/');
}

std::string Backslashed(std::string s) {
    for (char& c : s)
        if (c == '/') c = '\\';
    while (s.size() > 2 && s.back() == '\\') s.pop_back();
    return s;
}

}  // namespace

namespace {

struct Mount {
    std::string device, dir, type;
};

// The first three fields of each line of a mount table, octal escapes ("\040") decoded.
std::vector<Mount> ParseMounts(const std::string& table) {
    std::vector<Mount> mounts;
    size_t pos = 0;
    while (pos < table.size()) {
        size_t eol = table.find('\n', pos);
        if (eol == std::string::npos) eol = table.size();
        std::string fields[3];
        size_t f = 0, i = pos;
        while (f < 3 && i < eol) {
            while (i < eol && (table[i] == ' ' || table[i] == '\t')) ++i;
            size_t start = i;
            while (i < eol && table[i] != ' ' && table[i] != '\t') ++i;
            if (i > start) fields[f++] = Unescape(table.substr(start, i - start));
        }
        pos = eol + 1;
        if (f < 3 || fields[0][0] == '#') continue;
        while (fields[1].size() > 1 && fields[1].back() == '/') fields[1].pop_back();
        mounts.push_back({fields[0], fields[1], fields[2]});
    }
    return mounts;
}

// The share a network mount shows, "" for other file systems.
std::string RemoteOf(const Mount& m) {
    if (m.type == "cifs" || m.type == "smb3" || m.type == "smbfs")
        return m.device.size() > 2 && IsSlash(m.device[0]) && IsSlash(m.device[1]) ? Backslashed(m.device) : std::string();
    if (m.type != "nfs" && m.type != "nfs4") return std::string();
    size_t colon = m.device.find(':');
    if (colon == std::string::npos || colon == 0) return std::string();
    std::string exportPath = m.device.substr(colon + 1);
    if (exportPath.empty() || exportPath[0] != '/') exportPath = "/" + exportPath;
    return Backslashed("\\\\" + m.device.substr(0, colon) + (exportPath == "/" ? "" : exportPath));
}

// The mount that holds a folder: the deepest one, and of two on the same point the later.
const Mount* Holder(const std::vector<Mount>& mounts, const std::string& dir) {
    const Mount* best = nullptr;
    for (const auto& m : mounts)
        if (Covers(m.dir, dir) && (!best || m.dir.size() >= best->dir.size())) best = &m;
    return best;
}

}  // namespace

std::string RemoteNameFromMountTable(const std::string& table, const std::string& nativeDir) {
    std::string dir = nativeDir;
    while (dir.size() > 1 && dir.back() == '/') dir.pop_back();
    std::vector<Mount> mounts = ParseMounts(table);
    const Mount* m = Holder(mounts, dir);
    std::string remote = m ? RemoteOf(*m) : std::string();
    if (remote.empty()) return remote;
    if (dir.size() > m->dir.size()) remote += Backslashed(dir.substr(m->dir == "/" ? 0 : m->dir.size()));
    return remote;
}

std::vector<std::pair<std::string, std::string>> NetworkMounts(const std::string& table) {
    std::vector<Mount> mounts = ParseMounts(table);
    std::vector<std::pair<std::string, std::string>> shares;
    for (size_t i = 0; i < mounts.size(); ++i) {
        std::string remote = RemoteOf(mounts[i]);
        if (remote.empty()) continue;
        bool hidden = false;
        for (size_t j = i + 1; j < mounts.size() && !hidden; ++j) hidden = mounts[j].dir == mounts[i].dir;
        if (!hidden) shares.emplace_back(remote, mounts[i].dir);
    }
    return shares;
}

}  // namespace qm::platform
