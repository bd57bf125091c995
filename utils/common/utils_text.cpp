// Text scanning: case-insensitive search, tokens, line helpers, comment removal and the small
// text transformations of the note editor.
#include "utils/common/utils_text.h"

#include <cstring>

#include "utils/common/CVLogger.h"
#include "utils/common/utils_text_scan.h"
#include "utils/framework/mbchar.h"
#include "utils/platform/textcase.h"

#define QM_SOURCE_MODULE "Common\\utils"

namespace {

// Upper-casing of the runtime's "C" locale (ASCII letters only), as a table for the hot loops.
struct UpperTable {
    unsigned char map[256];
    constexpr UpperTable() : map() {
        for (int i = 0; i < 256; ++i) map[i] = (unsigned char)((i >= 'a' && i <= 'z') ? i - 32 : i);
    }
};
constexpr UpperTable kUpper;

inline unsigned char Up(char c) { return kUpper.map[(unsigned char)c]; }

// Compares the rest of a pattern with the text from `t` on. The text's NUL never equals a
// pattern byte, so the walk stops there at the latest.
inline bool MatchesAt(const char* t, const char* rest) {
    for (; *rest; ++t, ++rest)
        if (Up(*t) != Up(*rest)) return false;
    return true;
}

// The text is scanned in chunks whose length strnlen finds, so the block-wise candidate scan
// never reads past the text's NUL and a match near the start of a long text costs no more
// than the chunk.
constexpr size_t kScanChunk = 64 * 1024;

inline bool IsTokenSpace(char c) { return c == ' ' || c == '\r' || c == '\n' || c == '\t'; }

}  // namespace

char* InString(const char* pattern, const char* text) {
    if (!pattern || !text || !*text) return nullptr;
    if (!*pattern) return const_cast<char*>(text);

    const qm::text::detail::PairScanner scan((unsigned char)pattern[0], (unsigned char)pattern[1], pattern[1] != 0);
    const char* rest = pattern + 1;
    const char* chunk = text;
    for (;;) {
        const size_t n = strnlen(chunk, kScanChunk);
        // chunk[n] is the NUL or the first byte of the next chunk: readable either way.
        for (size_t i = scan.Next(chunk, 0, n); i < n; i = scan.Next(chunk, i + 1, n))
            if (Up(chunk[i]) == Up(pattern[0]) && MatchesAt(chunk + i + 1, rest)) return const_cast<char*>(chunk + i);
        if (n < kScanChunk) return nullptr;
        chunk += n;
    }
}

namespace {

// Passes over the command run that opens at `t` (*t == 0x01); null when it is not closed.
// `cacheOpen`/`cacheEnd` remember the last run passed over, so a run inside a long partial
// match is searched for its end only once however many candidates reach it.
inline const char* SkipRun(const char* t, const char*& cacheOpen, const char*& cacheEnd) {
    if (t == cacheOpen) return cacheEnd;
    const char* close = std::strchr(t + 1, QM_CMD_CLOSE);
    if (!close) return nullptr;
    cacheOpen = t;
    cacheEnd = close + 1;
    return cacheEnd;
}

}  // namespace

char* InStringSkipCommands(const char* pattern, const char* text) {
    if (!pattern || !text || !*text) return nullptr;
    const char* cacheOpen = nullptr;
    const char* cacheEnd = nullptr;
    const char* s = text;
    for (;;) {
        while (*s == QM_CMD_OPEN) {
            const char* s2 = SkipRun(s, cacheOpen, cacheEnd);
            if (!s2) {
                CVASSERT_TEXT("*s2");
                return nullptr;
            }
            s = s2;
        }
        if (!*s) return nullptr;
        const char* t = s;
        const char* p = pattern;
        for (; *p; ++p, ++t) {
            while (*t == QM_CMD_OPEN) {
                const char* p2 = SkipRun(t, cacheOpen, cacheEnd);
                if (!p2) {
                    CVASSERT_TEXT("*p2");
                    return nullptr;
                }
                t = p2;
            }
            if (Up(*t) != Up(*p)) break;  // the text's NUL ends the attempt here
        }
        if (!*p) return const_cast<char*>(s);
        ++s;
    }
}

int GetToken(const char** p, CString& token) {
    token.Empty();
    if (!p || !*p) return 0;
    const char* s = *p;
    while (IsTokenSpace(*s)) ++s;
    const char* start = s;
    while (*s && !IsTokenSpace(*s)) ++s;
    token = CString(start, (int)(s - start));
    *p = s;
    return !token.IsEmpty();
}

CString& GetStrUpTo(const char*& p, char c, CString& out) {
    out.Empty();
    if (!p) return out;
    const char* s = p;
    while (*s && *s != c) ++s;
    out = CString(p, (int)(s - p));
    p = s;
    return out;
}

int nth_token_cpy(CString& token, CString& src, int n) {
    if (n > 0) {
        const char* p = src.GetString();
        CString t;
        for (int i = 0; i < n; ++i)
            if (!GetToken(&p, t)) break;
        token = t;
    }
    return !token.IsEmpty();
}

// "After position i" is taken strictly: the search starts at i + 1, so a caller standing on a
// line end moves on to the next one. A negative `i` searches from the start.
int next_eol(const CString& s, int i) {
    const int len = s.GetLength();
    const char* b = s.GetString();
    int k = i < 0 ? 0 : (i >= len ? len : i + 1);
    while (k < len && b[k] != '\r' && b[k] != QM_LINE_MARK) ++k;
    return k;
}

// The original walked the text as a C string; a CString holding a NUL before its counted end
// is the inconsistent buffer it checked for. That is reported, and the counted bytes are then
// trimmed as they are (a NUL is not a space), which keeps every byte in the string.
CString& TrimEdges(CString& s) {
    const int len = s.GetLength();
    const char* b = s.GetString();
    const char* ptr = b + std::strlen(b);
    if (ptr != b + len) CVASSERT_TEXT("*ptr == 0");
    int first = 0;
    while (first < len && b[first] == ' ') ++first;
    int last = len;
    while (last > first && b[last - 1] == ' ') --last;
    if (first > 0 || last < len) s = s.Mid(first, last - first);
    return s;
}

CString RemoveComments(const char* s) {
    CString out;
    if (!s) return out;
    bool quoted = false;
    int depth = 0;
    std::string buf;
    for (; *s; ++s) {
        const char c = *s;
        if (c == '"') {
            if (depth == 0) {
                quoted = !quoted;
                buf += c;
            }
        } else if (c == '(') {
            if (quoted) buf += c;
            else ++depth;
        } else if (c == ')') {
            if (quoted || depth == 0) buf += c;
            else --depth;
        } else if (depth == 0) {
            buf += c;
        }
    }
    out = CString(buf);
    out.Trim();
    return out;
}

void RemoveEmptyLines(CString& s) {
    std::string out;
    out.reserve((size_t)s.GetLength());
    for (char c : s.str()) {
        if (c == '\n') continue;
        if (c == '\r' && !out.empty() && out.back() == '\r') continue;
        out += c;
    }
    s = CString(out);
}

void ReplaceEOLAndNL(CString& s) {
    std::string out;
    out.reserve((size_t)s.GetLength() + 16);
    for (char c : s.str()) {
        if (c == '\r' || c == '\n') out += "\r\n";
        else out += c;
    }
    s = CString(out);
}

void InsureEolAtEnd(CString& s) {
    const int len = s.GetLength();
    if (len == 0 || s.GetString()[len - 1] != '\r') s += '\r';
}

int WordCount(const char* s) {
    if (!s) return 0;
    int count = 0;
    for (; *s; ++s)
        if (!_ismbcspace((unsigned char)s[0]) && (s[1] == 0 || _ismbcspace((unsigned char)s[1]))) ++count;
    return count;
}

// The padding is computed in 64 bits so that no width or length overflows; the result is the
// 32-bit one for every width a window can have.
void CenterText(CString& s, int width, int charWidth) {
    const long long pad = ((long long)width - (long long)s.GetLength() * charWidth) / 2;
    if (pad <= 0) return;
    s = CString(' ', (int)(pad > QM_MAX_STRING_LENGTH ? QM_MAX_STRING_LENGTH : pad)) + s;
}

int GetAcceleratorPos(const CString& s) {
    const int len = s.GetLength();
    const char* b = s.GetString();
    for (int i = 0; i < len; ++i) {
        if (b[i] != '&') continue;
        if (i + 1 >= len) return -1;  // a '&' at the very end marks nothing
        if (b[i + 1] == '&') {
            ++i;  // "&&" is a literal ampersand
            continue;
        }
        return i + 1;
    }
    return -1;
}

// The lower-casing is the system's (CharLowerA, under the process's ANSI code page), so the
// name matches what other processes of the application derive from the same text.
void ValidMutexName(CString& mutex_name) {
    std::string out = mutex_name.str();
    for (char& c : out)
        if (c == '\\') c = '|';
    qm::platform::LowerAnsiText(out.data(), out.size());
    mutex_name = CString(out);
    CVASSERT(!mutex_name.IsEmpty());
}

void SkipSpaces(const char*& p) {
    if (!p) return;
    while (*p && _ismbcspace((unsigned char)*p)) ++p;
}

void SkipInvisible(const char*& p) {
    if (!p) return;
    while (IsTokenSpace(*p)) ++p;
}

void SkipVisible(const char*& p) {
    if (!p) return;
    while (*p && !IsTokenSpace(*p)) ++p;
}

void SkipToDigit(const char*& p) {
    if (!p) return;
    while (*p && !_ismbcdigit((unsigned char)*p)) ++p;
}

void SkipToEOL(const char*& p) {
    if (!p) return;
    while (*p && *p != '\n' && *p != '\r' && *p != QM_LINE_MARK) ++p;
}
