// E-mail and link recognition in note text, address lists, postal address blocks and the
// e-mail header field names.
#include "utils/common/utils_mail.h"

#include <cstdint>
#include <cstring>
#include <string_view>
#include <unordered_set>
#include <utility>
#include <vector>

#include "utils/common/CVLogger.h"
#include "utils/common/DefaultStrings.h"
#include "utils/common/utils_text.h"
#include "utils/framework/mbchar.h"

#define QM_SOURCE_MODULE "Common\\utils"

namespace {

typedef unsigned char uchar;

// A set of bytes, tested by table lookup. Built from a NUL-terminated list, so the NUL itself
// is never a member (a strchr test would report the terminator as found and let a scan run
// past the end of its text).
struct ByteSet {
    bool member[256] = {};
    explicit ByteSet(const char* bytes) {
        for (const char* p = bytes; *p; ++p) member[(uchar)*p] = true;
    }
    bool operator()(uchar c) const { return member[c]; }
};

// Ends a host or path run. Bytes 0x01/0x02 open and close inline command runs and 0x17 is the
// in-text line mark: none of them can be part of a link.
const ByteSet kHostStop("<>\"{}|^`\n\r\t \x17\x01\x02;");
// Stripped from the end of a found link ("see www.host.test)." ends before the bracket).
const ByteSet kTrailingPunctuation("()<>.,;'[]");
// Ends the path of a "file://" link.
const ByteSet kFilePathStop(",?#\n\r\t ;");
// May not occur before the "@" of an address.
const ByteSet kMailboxStop(",\n\r\t /\\#?%;'\"<>[]():");
// Separates the candidate words that CollectEMails tries.
const ByteSet kWordDelimiters(" ,.'()\"?!\t\r:;$-+=&`/\\_|[]{}<>~#%^*");
// Trimmed from both ends of a display name.
const char kNameTrim[] = " \t\"\r\n";

bool InSet(uchar c, const ByteSet& set) { return set(c); }

// Case-insensitive prefix test (the runtime's _mbsnicmp over the prefix's length); stops at
// the text's NUL, so a short text never reads past its end.
bool HasPrefixNoCase(const char* s, const char* prefix) {
    for (; *prefix; ++s, ++prefix)
        if (!*s || mbc::ToUpper((uchar)*s) != mbc::ToUpper((uchar)*prefix)) return false;
    return true;
}

bool IsHostByte(uchar c) { return c >= 33 && !InSet(c, kHostStop); }

// The host scan: a run of host bytes holding at least one "." before any slash, optionally
// extended over the path, query and fragment that follow. Trailing punctuation is dropped and
// every dropped "." is taken off the dot count, so "http://host.test/a." fails (its only
// counted dot is the one dropped) while "http://www.host.test/a." succeeds without the ".".
bool ScanHost(const char* text, bool extend, int& len) {
    const uchar* s = (const uchar*)text;
    if (!s || !*s) return false;
    const uchar* p = s;
    int dots = 0;
    bool slash = false;
    for (; IsHostByte(*p); ++p) {
        if (*p == '.') {
            ++dots;
        } else if (*p == '/' || *p == '\\') {
            if (dots == 0) return false;
            slash = true;
            break;
        }
    }
    if (!slash && dots == 0) return false;
    if (!extend) {
        // A bare host must end at a stop byte: a slash after an address's host fails here.
        if (IsHostByte(*p)) return false;
    } else {
        while (IsHostByte(*p)) ++p;
    }
    long n = (long)(p - s);
    while (n > 0 && InSet(s[n - 1], kTrailingPunctuation)) {
        if (s[n - 1] == '.') --dots;
        --n;
    }
    if (dots <= 0) return false;
    len = (int)n;
    return true;
}

// Where the walk over the part before "@" of an address stops: at the "@", or at the byte that
// makes it fail. Every start inside one run of mailbox bytes stops at the same place.
// A byte the walk over the part before "@" passes.
bool IsMailboxByte(uchar c) { return c != '@' && c >= 33 && !InSet(c, kMailboxStop); }

const uchar* MailboxWalkEnd(const uchar* p) {
    while (*p != '@' && *p >= 33 && !InSet(*p, kMailboxStop)) ++p;
    return p;
}

// Link schemes, tested in this order, each as a case-insensitive prefix.
const char* const kSchemes[] = {
    "http://", "https://", "ftp://", "ftp.", "nntp://", "news:", "SMTP:", "wais://", "gopher://",
    "telnet://", "prospero://", "Mk:@MSITStore:", "Ms-its",
};

// The walks of one recognition done afresh from each start: what IsValidURL uses.
struct FreshScans {
    bool Host(const uchar* t, bool extend, int& len) { return ScanHost((const char*)t, extend, len); }
    const uchar* MailboxEnd(const uchar* p) { return MailboxWalkEnd(p); }
    const uchar* EMailHost(const uchar* host, bool& ok, int& len) {
        ok = ScanHost((const char*)host, false, len);
        return host;
    }
};

// The address scan at s with the given walks: ["mailto:"] mailbox "@" host. On success len
// covers the prefix, the mailbox, the "@" and the host.
template <class Scans>
bool EMailAt(const char* text, int& len, Scans& scans) {
    const uchar* s = (const uchar*)text;
    long prefix = HasPrefixNoCase(text, "mailto:") ? 7 : 0;
    const uchar* p = s + prefix;
    if (*p < 33) return false;
    const uchar* at = scans.MailboxEnd(p);
    if (*at != '@') return false;
    // The mailbox may be empty only after "mailto:": the prefix's length is compared against 6
    // instead of its 7 bytes, so "mailto:@host.test" passes. Kept on purpose.
    if ((long)(at - s) <= (prefix ? 6 : 0)) return false;
    bool ok = false;
    int hostLen = 0;
    const uchar* host = scans.EMailHost(at + 1, ok, hostLen);
    if (!ok) return false;
    len = (int)(host - s) + hostLen;
    return true;
}

// IsValidURL with the given walks.
template <class Scans>
bool LinkAt(const char* s, int& len, bool& isMail, Scans& scans) {
    if (!s) return false;  // nothing to recognise; outputs untouched
    uchar first = (uchar)*s;
    if (!_ismbcalnum(first) && first != '_') return false;

    for (const char* scheme : kSchemes) {
        if (!HasPrefixNoCase(s, scheme)) continue;
        int prefix = (int)std::strlen(scheme);
        int n = 0;
        if (!scans.Host((const uchar*)s + prefix, true, n)) return false;
        len = prefix + n;
        return true;
    }

    int n = 0;
    isMail = EMailAt(s, n, scans);
    if (isMail) {
        len = n;
        return true;
    }

    if (HasPrefixNoCase(s, "file://")) {
        const uchar* p = (const uchar*)s + 7;
        int count = 0;
        while (p[count] > 32 && !InSet(p[count], kFilePathStop)) ++count;
        if (count <= 0) return false;  // "file://" alone is no link; len untouched
        len = 7 + count;
        return true;
    }

    if (HasPrefixNoCase(s, "www.")) {
        if (!scans.Host((const uchar*)s, true, n)) return false;
        len = n;
        return true;
    }
    return false;
}

// ---- Shared walks for many starts in one text ---------------------------------------------
//
// Trying the recognition at every word of a long run of host or mailbox bytes ("a!a!a!...")
// walks the same bytes again from each word: quadratic in the run. The walks below give
// exactly the results of walking afresh, but remember where earlier walks stopped. The starts
// of one search move forward (a scheme's host start may lie up to 14 bytes past its word, and
// "mailto:" moves the mailbox start by 7), so each walk is remembered together with the one
// before it and a start up to kBridge bytes before a remembered walk only walks up to it.
// Every byte is then walked a bounded number of times and a search is linear in its text.
// `steps` counts the bytes walked, for callers and tests that bound the work.

const long kBridge = 16;

// The first byte at or after t that `stop` accepts (the NUL always stops a walk).
template <class Stop>
class StopWalk {
public:
    const uchar* Next(const uchar* t, size_t& steps) {
        for (Walk& w : m_walks) {
            if (!w.from || t > w.to) continue;
            if (t >= w.from) return w.to;
            if (w.from - t <= kBridge) {
                for (const uchar* p = t; p < w.from; ++p, ++steps)
                    if (Stop()(*p)) return p;
                return w.to;
            }
        }
        const uchar* p = t;
        for (; !Stop()(*p); ++p) ++steps;
        m_walks[m_next] = {t, p};
        m_next ^= 1;
        return p;
    }

private:
    struct Walk {
        const uchar* from = nullptr;
        const uchar* to = nullptr;
    };
    Walk m_walks[2];
    int m_next = 0;
};

struct DotSlashOrEnd {
    bool operator()(uchar c) const { return !IsHostByte(c) || c == '.' || c == '/' || c == '\\'; }
};
struct SlashOrEnd {
    bool operator()(uchar c) const { return !IsHostByte(c) || c == '/' || c == '\\'; }
};
struct HostEnd {
    bool operator()(uchar c) const { return !IsHostByte(c); }
};
struct MailboxStop {
    bool operator()(uchar c) const { return c == '@' || c < 33 || InSet(c, kMailboxStop); }
};

// The number of "." bytes in [a, b) of the host run that ends at `end`. Short spans are
// counted directly; for long runs a table of running counts from the lowest start asked is
// kept, so that many starts in one long run do not count its dots again each.
class RunDots {
public:
    long long Between(const uchar* a, const uchar* b, const uchar* end, size_t& steps) {
        if (b - a <= 64) {
            long long n = 0;
            for (const uchar* p = a; p < b; ++p, ++steps) n += *p == '.';
            return n;
        }
        if (end != m_end || a < m_base) {
            m_end = end;
            m_base = a;
            m_counts.assign(1, 0);
            for (const uchar* p = a; p < end; ++p, ++steps) m_counts.push_back(m_counts.back() + (*p == '.'));
        }
        return m_counts[(size_t)(b - m_base)] - m_counts[(size_t)(a - m_base)];
    }

private:
    const uchar* m_end = nullptr;
    const uchar* m_base = nullptr;
    std::vector<std::uint32_t> m_counts;
};

// ScanHost for a sequence of starts in one text, with the same results.
class HostScanner {
public:
    HostScanner(const uchar* text, size_t& steps) : m_text(text), m_steps(steps) {}

    bool Scan(const uchar* t, bool extend, int& len) {
        // The first ".", slash or end of the host bytes: no "." before a slash or the end fails.
        const uchar* q = m_dotOrSlash.Next(t, m_steps);
        if (*q != '.' || !IsHostByte(*q)) return false;
        // Dots are counted from there up to a slash or the end of the host bytes.
        const uchar* slash = m_slash.Next(q, m_steps);
        if (IsHostByte(*slash) && !extend) return false;  // a bare host ends at a stop byte
        const uchar* end = m_end.Next(slash, m_steps);
        long long dots = m_dots.Between(q, slash, end, m_steps);
        // Trailing punctuation is dropped down to the start, each "." off the count.
        if (end != m_tailEnd) {
            m_tailEnd = end;
            m_tailStart = end;
            while (m_tailStart > m_text && InSet(m_tailStart[-1], kTrailingPunctuation)) --m_tailStart, ++m_steps;
        }
        const uchar* lo = m_tailStart > t ? m_tailStart : t;
        dots -= m_dots.Between(lo > q ? lo : q, end, end, m_steps);  // no "." lies before q
        if (dots <= 0) return false;
        len = (int)(lo - t);
        return true;
    }

private:
    const uchar* m_text;
    size_t& m_steps;
    StopWalk<DotSlashOrEnd> m_dotOrSlash;
    StopWalk<SlashOrEnd> m_slash;
    StopWalk<HostEnd> m_end;
    RunDots m_dots;
    const uchar* m_tailEnd = nullptr;
    const uchar* m_tailStart = nullptr;
};

// The walks of many recognitions in one NUL-terminated text. Link hosts and address hosts are
// scanned by separate scanners because their starts advance independently.
class SharedScans {
public:
    explicit SharedScans(const char* text)
        : m_linkHosts((const uchar*)text, m_steps), m_mailHosts((const uchar*)text, m_steps) {}
    bool Host(const uchar* t, bool extend, int& len) { return m_linkHosts.Scan(t, extend, len); }
    const uchar* MailboxEnd(const uchar* p) { return m_mailbox.Next(p, m_steps); }
    const uchar* EMailHost(const uchar* host, bool& ok, int& len) {
        ok = m_mailHosts.Scan(host, false, len);
        return host;
    }
    size_t Steps() const { return m_steps; }

private:
    size_t m_steps = 0;
    HostScanner m_linkHosts, m_mailHosts;
    StopWalk<MailboxStop> m_mailbox;
};

// Where FindLinks tries a link: at a word's first byte, so that "www.host.test" is not found
// again as "ww.host.test" one byte later.
bool StartsWord(const uchar* text, size_t i) {
    if (i == 0) return true;
    uchar prev = text[i - 1];
    return !mbc::IsAlnum(prev) && prev != '_' && prev != '.' && prev != '-' && prev != '@' && prev != ':' &&
           prev != '/' && prev != '\\' && prev != '%' && prev < 0x80;
}

}  // namespace

bool IsValidURL(const char* s, int& len, bool& isMail) {
    FreshScans scans;
    return LinkAt(s, len, isMail, scans);
}

size_t FindLinks(const char* text, size_t length, std::vector<CLinkMatch>& found) {
    found.clear();
    if (!text) return 0;
    SharedScans scans(text);
    size_t steps = 0;
    for (size_t i = 0; i < length; ++steps) {
        int len = 0;
        bool isMail = false;
        if (StartsWord((const uchar*)text, i) && LinkAt(text + i, len, isMail, scans) && len > 0) {
            found.push_back({i, len, isMail});
            i += (size_t)len;
            steps += (size_t)len;
        } else {
            ++i;
        }
    }
    return steps + scans.Steps();
}

bool IsExternalLink(const char*) {
    // Which links leave the application is the host's decision; the library never claims one.
    return false;
}

bool IsLooksLikeEmailAddress(const char* ptr_address) {
    if (!CVASSERT(ptr_address)) return false;
    const char* s = ptr_address;
    size_t n = std::strlen(s);
    if (n == 0) return false;
    if (!std::strchr(s, '.') || s[0] == '.') return false;
    if (s[n - 1] == '.') return false;
    const char* firstAt = std::strchr(s, '@');
    if (!firstAt || firstAt != std::strrchr(s, '@')) return false;
    if (std::strchr(s, ' ')) return false;
    return true;
}

int CollectEMails(CString text, CStringSet& found) {
    CollectEMails(std::move(text), found, nullptr);  // the copy taken by value is handed on
    return 0;
}

int CollectEMails(CString text, CStringSet& found, size_t* steps) {
    const char* s = text;
    const int n = text.GetLength();
    SharedScans scans(s);
    size_t loop = 0;
    int i = 0;
    // An address needs an "@" that the walk from its start reaches over mailbox bytes only.
    // For the first "@" at or after i, `limit` is the earliest start that can reach it (the
    // start of its run of mailbox bytes, or of a "mailto:" right before that run); every word
    // that starts before it fails, so the scan moves straight to the last delimiter before
    // it. Without any "@" left, nothing more can be found.
    int atPos = -1, limit = 0;
    std::unordered_set<std::string_view> seen;
    while (i < n) {
        ++loop;
        if (i > atPos) {
            const void* a = std::memchr(s + i, '@', (size_t)(n - i));
            if (!a) {
                loop += (size_t)(n - i);
                break;
            }
            atPos = (int)(static_cast<const char*>(a) - s);
            int r = atPos;
            while (r > i && IsMailboxByte((uchar)s[r - 1])) --r;
            // A start before the run reaches it only as "mailto:" right before it (its ":"
            // stops the walk, so it cannot overlap the run).
            limit = r >= 7 && HasPrefixNoCase(s + r - 7, "mailto:") ? r - 7 : r;
        }
        if (i < limit) {
            int j = limit - 1;
            while (j > i && !InSet((uchar)s[j], kWordDelimiters)) --j;
            if (j > i) {
                loop += (size_t)(j - i);
                i = j;
            }
        }
        if (InSet((uchar)s[i], kWordDelimiters)) {
            ++i;
            continue;
        }
        int len = 0;
        // An embedded NUL ends the scan's view of the text there; len is then within it.
        if (EMailAt(s + i, len, scans) && len > 0) {
            // An address met before in this text is already in the set.
            if (seen.insert(std::string_view(s + i, (size_t)len)).second) found.Add(CString(s + i, len));
            i += len;
        } else {
            while (i < n && !InSet((uchar)s[i], kWordDelimiters)) ++i, ++loop;
        }
    }
    if (steps) *steps = loop + scans.Steps();
    return 0;
}

CString GetAddress(const char* text, CString& name, const char** next, bool removeComments) {
    name = "";
    if (!text) {
        if (next) *next = nullptr;
        return CString();
    }
    bool inQuotes = false;
    bool seenAt = false;
    CString item;
    const char* p = text;
    for (;; ++p) {
        char c = *p;
        if (!c) {
            item = text;
            if (next) *next = nullptr;
            break;
        }
        if (c == '\\') {
            // The escaped byte is passed over unseen; a backslash at the very end has nothing
            // to escape and must not step over the terminating NUL.
            if (p[1]) ++p;
            continue;
        }
        if (c == '"') {
            inQuotes = !inQuotes;
        } else if (c == '@') {
            seenAt = true;
        } else if ((c == ',' || c == ';') && !inQuotes && seenAt) {
            // A separator before any "@" belongs to the display name ("Smith, John <js@host>").
            item = CString(text, (int)(p - text));
            if (next) *next = p + 1;
            break;
        }
    }

    CString address = item;
    if (item.Find('>') >= 0) {
        int lt = item.ReverseFind('<');
        if (lt < 0) {
            address.Empty();
        } else {
            // The name is the item's first (lt - 1) bytes: the byte just before "<" is dropped
            // too, whatever it is ("Jane<jd@host>" names "Jan"). Kept on purpose.
            CString raw = item.Left(lt - 1);
            raw.Trim(kNameTrim);
            raw.Remove('<');
            raw.Remove('>');
            CString unescaped;
            for (int i = 0; i < raw.GetLength(); ++i) {
                char c = raw[i];
                if (c == '\\') {
                    if (i + 1 < raw.GetLength()) unescaped += raw[++i];
                    continue;
                }
                unescaped += c;
            }
            name = unescaped;
            int gt = item.Find('>', lt + 1);
            // Without a ">" after the last "<" the address runs to the end of the item.
            address = gt < 0 ? item.Mid(lt + 1) : item.Mid(lt + 1, gt - lt - 1);
        }
    }
    if (removeComments) return RemoveComments(address);
    address.Trim();
    return address;
}

void ExtractEMailAddresses(const CString& list, std::map<CString, CString>& out) {
    out.clear();
    const char* p = list;
    while (p) {
        CString name;
        CString address = GetAddress(p, name, &p, true);
        if (!address.IsEmpty()) out.insert(std::make_pair(address, name));  // first name wins
    }
}

void ExtractEMailAddresses(const CString& list, std::vector<CString>& out) {
    out.clear();
    int start = 0;
    const int n = list.GetLength();
    while (start <= n) {
        int semi = list.Find(';', start);
        int end = semi < 0 ? n : semi;
        // Pieces shorter than 5 bytes cannot hold "x@y.z" and are ignored, the last one too.
        if (end - start >= 5) {
            CString address = GetMailAddress(list.Mid(start, end - start));
            if (!address.IsEmpty()) out.push_back(address);
        }
        if (semi < 0) break;
        start = semi + 1;
    }
}

CString GetMailAddress(const CString& item) {
    CString s = item;
    s.Trim();
    // Keeping the text after the first space until no space remains leaves the last
    // blank-separated word: the text after the last space.
    int space = s.ReverseFind(' ');
    if (space >= 0) s = s.Mid(space + 1);
    if (s.GetLength() < 3) return s;
    if (s[0] == '<') s = s.Mid(1);
    if (!s.IsEmpty() && s[s.GetLength() - 1] == '>') s.Truncate(s.GetLength() - 1);
    return s;
}

bool CreateEMailReference(const char* address, const char* name, CString& out) {
    out = "";
    if (name && *name) {
        out = "\"";
        out += name;
        out += "\"";
    }
    // Without an address the quoted name is left in out.
    if (!address || !*address) return false;
    if (!out.IsEmpty()) {
        out += " <";
        out += address;
        out += ">";
    } else {
        out = address;
    }
    return true;
}

namespace {

bool IsLineBreak(char c) { return c == '\r' || c == '\x17'; }

}  // namespace

int ExtractAddress(CString& text, CString& out) {
    out = "";
    const int n = text.GetLength();
    int i = 0;
    while (i < n) {
        if ((uchar)text[i] <= 32) {
            ++i;
            continue;
        }
        // Collect the block's lines: it ends at the text's end, or at a line break whose next
        // line is empty (starts with CR), starts with "." or is the end of the text.
        const int start = i;
        int lines = 0;
        int pos = start;
        int end;
        for (;;) {
            while (pos < n && !IsLineBreak(text[pos])) ++pos;
            ++lines;
            if (pos >= n) {
                end = n;
                break;
            }
            int nextLine = pos + 1;
            if (nextLine >= n || text[nextLine] == '\r' || text[nextLine] == '.') {
                end = pos;
                break;
            }
            pos = nextLine;
        }
        const int blockLen = end - start;
        const int average = (blockLen - lines) / lines;
        const char last = end > start ? text[end - 1] : 0;
        if (lines >= 3 && lines <= 6 && average >= 7 && average <= 255 &&
            (mbc::IsDigit((uchar)last) || last == '\'')) {
            // The caller's text is changed: a closing apostrophe becomes a space. Kept on purpose.
            if (last == '\'') text.SetAt(end - 1, ' ');
            int lineStart = start;
            bool firstLine = true;
            while (lineStart <= end) {
                int lineEnd = lineStart;
                while (lineEnd < end && !IsLineBreak(text[lineEnd])) ++lineEnd;
                if (firstLine || (lineEnd > lineStart && mbc::IsAlnum((uchar)text[lineStart]))) {
                    out += text.Mid(lineStart, lineEnd - lineStart);
                    out += '\r';
                }
                firstLine = false;
                lineStart = lineEnd + 1;
            }
            return 1;
        }
        // Pass the block over and go on after it.
        i = end > start ? end : start + 1;
    }
    return 0;
}

// The e-mail header field names belong to the framework-side module of the library.
#undef QM_SOURCE_MODULE
#define QM_SOURCE_MODULE "Common\\mfcutils"

namespace {

struct FieldName {
    UINT resourceId;
    bool visibleByDefault;
};

const FieldName kFieldNames[EMF_Last] = {
    {614, true}, {611, true}, {616, true}, {608, false}, {607, false},
    {612, false}, {615, true}, {613, true}, {684, false}, {685, false},
};

CString g_fieldNames[EMF_Last];
bool g_fieldNamesLoaded = false;

}  // namespace

const char* GetEMailFieldName(EMailFieldNameType t) {
    // Loaded once for the process on the first call; the user-interface thread is the only
    // caller, so the flag needs no lock.
    if (!g_fieldNamesLoaded) {
        qm::EnsureDefaultStrings();  // English names where the host has none
        for (int i = 0; i < EMF_Last; ++i) g_fieldNames[i].LoadString(kFieldNames[i].resourceId);
        g_fieldNamesLoaded = true;
    }
    int idx = (int)t;
    // An index outside the table is reported; instead of reading outside the table the call
    // then answers with an empty name.
    if (!CVASSERT(idx >= 0 && idx < EMF_Last)) return "";
    return g_fieldNames[idx];
}

bool IsEMailFieldNameVisibleByDefault(EMailFieldNameType t) {
    int idx = (int)t;
    // Out of range: reported, then answered "not visible" rather than read outside the table.
    if (!CVASSERT(idx >= 0 && idx < EMF_Last)) return false;
    return kFieldNames[idx].visibleByDefault;
}
