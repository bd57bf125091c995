#include <cstring>

#include "utils/platform/pathmodel.h"

namespace qm::platform::pathmodel {

bool IsSep(char c) { return c == '\\' || c == '/'; }

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

}  // namespace qm::platform::pathmodel
