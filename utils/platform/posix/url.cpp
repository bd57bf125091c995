// File URLs and URL canonicalisation with the results the Windows target gives: the same
// escaping of 8-bit text (the ANSI code page is 1252), the same handling of drive letters,
// network paths, leading slashes, percent signs and dot segments of the path.
//
// Measured against the Windows build run under Wine. Not reproduced, because no caller of
// the library produces them and their results there look accidental: dot segments resolved
// inside a query or fragment ("http://h/?a/../b" gives "http://h/b" there, stays here) and
// the slashes inserted into relative file URLs with dot segments ("file:./../x").
#include "utils/platform/url.h"

#include <cstring>
#include <string>
#include <vector>

namespace qm::platform {

namespace {

typedef unsigned char uchar;

bool IsAlpha(uchar c) { return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z'); }
bool IsDigit(uchar c) { return c >= '0' && c <= '9'; }
int HexValue(uchar c) {
    if (IsDigit(c)) return c - '0';
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    return -1;
}

bool StartsWithNoCase(const std::string& s, const char* prefix) {
    size_t n = std::strlen(prefix);
    if (s.size() < n) return false;
    for (size_t i = 0; i < n; ++i) {
        uchar a = (uchar)s[i], b = (uchar)prefix[i];
        if ((a | (IsAlpha(a) ? 0x20 : 0)) != (b | (IsAlpha(b) ? 0x20 : 0))) return false;
    }
    return true;
}

// The system converts 8-bit text to UTF-16 with code page 1252 and escapes only characters
// below U+0100; these bytes stand for characters above it and therefore stay as they are.
bool IsKeptHighByte(uchar c) {
    return c == 0x80 || (c >= 0x82 && c <= 0x8C) || c == 0x8E || (c >= 0x91 && c <= 0x9C) || c == 0x9E ||
           c == 0x9F;
}

// Bytes that are escaped wherever the system escapes a URL's path.
bool IsUnsafe(uchar c) {
    if (c < 0x20 || c == 0x7F) return true;
    if (c >= 0x80) return !IsKeptHighByte(c);
    return std::strchr(" \"<>[]^`{|}&", c) != nullptr;
}

const char kHex[] = "0123456789ABCDEF";

void AppendEscaped(std::string& out, const std::string& text, bool (*mustEscape)(uchar)) {
    for (uchar c : text) {
        if (mustEscape(c)) {
            out += '%';
            out += kHex[c >> 4];
            out += kHex[c & 15];
        } else {
            out += (char)c;
        }
    }
}

bool EscapeForFilePath(uchar c) { return IsUnsafe(c) || c == '#' || c == '%'; }
bool EscapeInCanonicalFilePath(uchar c) { return IsUnsafe(c) || c == '#'; }
bool EscapeInCanonicalPath(uchar c) { return IsUnsafe(c); }
bool EscapeWithoutScheme(uchar c) { return IsUnsafe(c) || c == '#' || c == '\\'; }

// "scheme:" with a scheme of two or more letters, digits, "+", "-" or "."; a single letter
// before a colon is a drive.
size_t SchemeLength(const std::string& s) {
    size_t i = 0;
    while (i < s.size() && (IsAlpha((uchar)s[i]) || IsDigit((uchar)s[i]) || s[i] == '+' || s[i] == '-' || s[i] == '.')) ++i;
    return (i >= 2 && i < s.size() && s[i] == ':') ? i : 0;
}

bool IsDriveAt(const std::string& s, size_t i, bool allowBar) {
    return i + 1 < s.size() && IsAlpha((uchar)s[i]) && (s[i + 1] == ':' || (allowBar && s[i + 1] == '|'));
}

size_t CountSlashes(const std::string& s, size_t from) {
    size_t k = 0;
    while (from + k < s.size() && (s[from + k] == '/' || s[from + k] == '\\')) ++k;
    return k;
}

void ReplaceAll(std::string& s, char from, char to) {
    for (char& c : s)
        if (c == from) c = to;
}

// Resolves "." and ".." segments of the path after its root, as the system does: a dot
// segment right after the root (or after empty segments only) and a final "." stay; a ".."
// that has nothing left to remove stays; removing the last segment leaves the slash before it.
std::string RemoveDotSegments(const std::string& rel) {
    std::vector<std::string> segs;
    size_t start = 0;
    for (;;) {
        size_t slash = rel.find('/', start);
        segs.push_back(rel.substr(start, slash == std::string::npos ? std::string::npos : slash - start));
        if (slash == std::string::npos) break;
        start = slash + 1;
    }
    std::vector<std::string> out;
    // How many kept segments are not empty: "at the root" is nothing but empty segments kept
    // so far. Counted as segments come and go, so a path of many segments stays linear.
    size_t nonEmpty = 0;
    bool trailingSlash = false;
    for (size_t i = 0; i < segs.size(); ++i) {
        const std::string& seg = segs[i];
        bool last = i + 1 == segs.size();
        trailingSlash = false;
        if (nonEmpty == 0) {
            out.push_back(seg);
            nonEmpty += !seg.empty();
        } else if (seg == "." && !last) {
            continue;
        } else if (seg == ".." && !out.empty() && out.back() != "..") {
            nonEmpty -= !out.back().empty();
            out.pop_back();
            trailingSlash = last;
        } else {
            out.push_back(seg);
            nonEmpty += !seg.empty();
        }
    }
    std::string joined;
    for (size_t i = 0; i < out.size(); ++i) {
        if (i) joined += '/';
        joined += out[i];
    }
    if (trailingSlash && !out.empty()) joined += '/';
    return joined;
}

HRESULT CopyOut(const std::string& text, char* buf, DWORD* size, HRESULT success) {
    if (!size) return E_INVALIDARG;
    if (text.size() + 1 > (size_t)*size || !buf) {
        *size = (DWORD)(text.size() + 1);
        return E_POINTER;
    }
    std::memcpy(buf, text.c_str(), text.size() + 1);
    *size = (DWORD)text.size();
    return success;
}

// A host (or a drive such as "C:") of letters, digits, ".", "-" and ":" is one the system
// parses: it gains a slash when nothing follows it ("file://server" becomes
// "file://server/") and the path after it has its dot segments resolved. After any other
// host the rest is only escaped.
bool IsPlainHost(const std::string& host) {
    if (host.empty()) return false;
    for (uchar c : host)
        if (!IsAlpha(c) && !IsDigit(c) && c != '.' && c != '-' && c != ':') return false;
    return true;
}

// The canonical form of a "file:" URL; rest is the text after "file:".
std::string CanonicalFileUrl(const std::string& scheme, std::string rest) {
    // Up to the query backslashes become slashes; in the query slashes become backslashes.
    size_t query = rest.find('?');
    std::string tail = query == std::string::npos ? std::string() : rest.substr(query);
    rest = rest.substr(0, query);
    ReplaceAll(rest, '\\', '/');
    ReplaceAll(tail, '/', '\\');
    std::string out = scheme + ":";
    size_t k = CountSlashes(rest, 0);
    if (k == 0 && !IsDriveAt(rest, 0, false)) {
        // A relative file URL is only escaped.
        AppendEscaped(out, rest, EscapeInCanonicalFilePath);
        return out + tail;
    }
    // The first segment after the slashes is the host (a server, or a drive such as "C:");
    // one slash before a drive becomes three, three become two ("file:///C:/a" is written
    // "file://C:/a"), and a path that is neither stays with three.
    bool drive = IsDriveAt(rest, k, false);
    if (k == 0) out += "";
    else if (k == 2 || k >= 4) out += "//";
    else if (drive) out += k == 1 ? "///" : "//";
    else out += "///";
    std::string hostAndPath = rest.substr(k);
    size_t slash = hostAndPath.find('/');
    std::string host = hostAndPath.substr(0, slash);
    std::string path;
    bool plain = IsPlainHost(host);
    if (slash != std::string::npos) {
        host += '/';
        path = hostAndPath.substr(slash + 1);
    } else if (tail.empty() && plain) {
        host += '/';
    }
    AppendEscaped(out, host, EscapeInCanonicalFilePath);
    AppendEscaped(out, plain ? RemoveDotSegments(path) : path, EscapeInCanonicalFilePath);
    return out + tail;
}

bool IsHierarchicalScheme(const std::string& scheme) {
    for (const char* s : {"http", "https", "ftp"})
        if (scheme.size() == std::strlen(s) && StartsWithNoCase(scheme, s)) return true;
    return false;
}

std::string CanonicalUrl(std::string s) {
    // Tabs are dropped everywhere and trailing blanks and control bytes are trimmed.
    std::string text;
    for (char c : s)
        if (c != '\t') text += c;
    while (!text.empty() && (uchar)text.back() <= 0x20) text.pop_back();

    size_t schemeLen = SchemeLength(text);
    if (!schemeLen) {
        if (IsDriveAt(text, 0, false)) {
            // A drive path becomes a "file://" URL, its dot segments untouched.
            std::string path = text;
            ReplaceAll(path, '\\', '/');
            std::string out = "file://";
            AppendEscaped(out, path, EscapeInCanonicalFilePath);
            return out;
        }
        size_t end = text.find_first_of("?#");
        std::string out;
        AppendEscaped(out, text.substr(0, end), EscapeWithoutScheme);
        return end == std::string::npos ? out : out + text.substr(end);
    }
    std::string scheme = text.substr(0, schemeLen);
    std::string rest = text.substr(schemeLen + 1);
    if (StartsWithNoCase(scheme, "file") && schemeLen == 4) return CanonicalFileUrl(scheme, rest);

    if (IsHierarchicalScheme(scheme) && rest.size() >= 2 && (rest[0] == '/' || rest[0] == '\\') &&
        (rest[1] == '/' || rest[1] == '\\')) {
        ReplaceAll(rest, '\\', '/');
        size_t authorityEnd = rest.find_first_of("/?#", 2);
        std::string out = scheme + ":" + rest.substr(0, authorityEnd);
        if (authorityEnd == std::string::npos) return out + "/";
        size_t pathEnd = rest.find_first_of("?#", authorityEnd);
        std::string path = rest.substr(authorityEnd, pathEnd == std::string::npos ? std::string::npos : pathEnd - authorityEnd);
        if (!path.empty()) {
            out += '/';
            AppendEscaped(out, RemoveDotSegments(path.substr(1)), EscapeInCanonicalPath);
        }
        return pathEnd == std::string::npos ? out : out + rest.substr(pathEnd);
    }

    // Any other scheme: the part before a query or fragment is escaped, nothing else changes.
    size_t end = rest.find_first_of("?#");
    std::string out = scheme + ":";
    AppendEscaped(out, rest.substr(0, end), EscapeInCanonicalPath);
    return end == std::string::npos ? out : out + rest.substr(end);
}

}  // namespace

HRESULT FileUrlFromPath(const char* path, char* url, DWORD* size) {
    if (!path || !url || !size) return E_INVALIDARG;
    std::string p = path;
    if (SchemeLength(p)) return CopyOut(p, url, size, S_FALSE);  // a URL already

    // Slashes are turned round and unsafe bytes escaped up to a "?"; the rest stays.
    size_t query = p.find('?');
    std::string head = p.substr(0, query);
    std::string tail = query == std::string::npos ? std::string() : p.substr(query);
    ReplaceAll(head, '\\', '/');
    std::string out = "file:";
    std::string body;
    if (IsDriveAt(head, 0, false)) {
        out += "///";
        body = head;
    } else {
        // One or three leading slashes give "file:///", two or more than three "file://".
        size_t k = CountSlashes(head, 0);
        if (k == 1 || k == 3) out += "///";
        else if (k) out += "//";
        body = head.substr(k);
    }
    AppendEscaped(out, body, EscapeForFilePath);
    return CopyOut(out + tail, url, size, S_OK);
}

HRESULT PathFromFileUrl(const char* url, char* path, DWORD* size) {
    if (!url || !path || !size) return E_INVALIDARG;
    std::string u = url;
    if (!StartsWithNoCase(u, "file:")) return E_INVALIDARG;
    std::string rest = u.substr(5);
    size_t k = CountSlashes(rest, 0);
    std::string body;
    // A drive right after two, or four and more, slashes is taken as it stands: its escapes
    // are not decoded ("file://C:/a%20b" gives the path "C:\a%20b").
    bool decode = true;
    if (k == 0) {
        body = rest;
    } else if (k == 1) {
        body = IsDriveAt(rest, 1, true) ? rest.substr(1) : rest;
    } else if (k == 2) {
        std::string after = rest.substr(2);
        if (IsDriveAt(after, 0, true)) {
            body = after;
            decode = false;
        } else if (StartsWithNoCase(after, "localhost/") || StartsWithNoCase(after, "localhost\\")) {
            body = after.substr(10);
        } else {
            body = "\\\\" + after;
        }
    } else if (k == 3) {
        std::string after = rest.substr(3);
        body = IsDriveAt(after, 0, true) ? after : "\\" + after;
    } else {
        std::string after = rest.substr(k);
        if (IsDriveAt(after, 0, true)) {
            body = after;
            decode = false;
        } else {
            body = "\\\\" + after;
        }
    }
    if (IsDriveAt(body, 0, true)) body[1] = ':';
    ReplaceAll(body, '/', '\\');
    // Escapes are decoded after the slashes are turned, so "%2F" stays a slash; a decoded NUL
    // ends the path.
    std::string out;
    for (size_t i = 0; i < body.size(); ++i) {
        if (decode && body[i] == '%' && i + 2 < body.size() && HexValue((uchar)body[i + 1]) >= 0 && HexValue((uchar)body[i + 2]) >= 0) {
            char c = (char)(HexValue((uchar)body[i + 1]) * 16 + HexValue((uchar)body[i + 2]));
            if (!c) break;
            out += c;
            i += 2;
        } else {
            out += body[i];
        }
    }
    return CopyOut(out, path, size, S_OK);
}

BOOL CanonicalizeUrlForBrowser(const char* url, char* buf, DWORD* size) {
    if (!url || !size) return FALSE;
    return CopyOut(CanonicalUrl(url), buf, size, S_OK) == S_OK;
}

}  // namespace qm::platform
