// Integer parsing, sizes and counters, and escaped one-line text of the utils module.
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>

#include "utils/common/CVLogger.h"
#include "utils/common/utils_numbers.h"
#include "utils/common/utils_numbers_internal.h"
#include "utils/framework/mbchar.h"

#define QM_SOURCE_MODULE "Common\\utils"

using qm::numbers::kHexDigits;
using qm::numbers::TruncToLong32;

// ---- Integer parsing ----------------------------------------------------------------------

LONG ScanIntLong(const char*& p) {
    const LONG kFailed = (LONG)0x80000000u;
    if (!p) return kFailed;  // no text to scan
    while (*p == ' ' || *p == '\r' || *p == '\n' || *p == '\t') ++p;
    bool negative = false;
    if (*p == '-' || *p == '+') negative = *p++ == '-';
    if (*p < '0' || *p > '9') return kFailed;  // the cursor stays after the sign
    DWORD value = 0;  // 32-bit and wrapping: there is no overflow check within 10 digits
    int digits = 0;
    int commaRun = 0;
    for (;; ++p) {
        char c = *p;
        if (c >= '0' && c <= '9') {
            if (++digits > 10) {
                ++p;  // the 11th digit has been read
                return kFailed;
            }
            commaRun = 0;
            value = value * 10u + (DWORD)(c - '0');
        } else if (c == ',') {
            if (++commaRun == 2) break;
        } else {
            break;
        }
    }
    // Rest on the first comma of a trailing comma run ("12,,3" leaves the cursor on ",,3").
    if (commaRun > 0) p -= 1;
    if (negative) value = 0u - value;
    return (LONG)value;
}

unsigned int ScanInt(const char*& p) {
    if (!p || *p < '0' || *p > '9') return 0xFFFFFFFFu;
    LONG v = ScanIntLong(p);
    // A 10-digit text can wrap to a negative 32-bit value; it fails like 65535 and above.
    if (v < 0 || v >= 65535) return 0xFFFFFFFFu;
    return (unsigned int)v;
}

namespace {

bool IsHexDigit(char c) { return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'F') || (c >= 'a' && c <= 'f'); }

// Letters count as c - 55, which is right only for "A" to "F": a lower-case letter gives a
// wrong digit value (kept as is).
std::uint64_t AddHexDigit(std::uint64_t acc, char c) {
    std::uint64_t digit = (c <= '9') ? (std::uint64_t)(c - '0') : (std::uint64_t)(c - 55);
    return acc * 16u + digit;
}

}  // namespace

void* ScanPtr(char*& p) {
    if (!p || !IsHexDigit(*p)) return nullptr;
    char* start = p;
    std::uint64_t acc = 0;
    while (IsHexDigit(*p)) acc = AddHexDigit(acc, *p++);
    if (*p != ':') {
        p = start;
        return nullptr;
    }
    ++p;
    // The offset simply continues the segment's digits: "0012:ABCD" is 0x12ABCD.
    while (IsHexDigit(*p)) acc = AddHexDigit(acc, *p++);
    return (void*)(std::uintptr_t)(DWORD)acc;
}

DWORD Str2DWORD(CString s) {
    // Deliberately unchecked: every character counts as (its code - 48), signed characters
    // included, and the 32-bit value simply wraps.
    DWORD value = 0;
    for (int i = 0; i < s.GetLength(); ++i) value = value * 10u + (DWORD)((int)(signed char)s[i] - '0');
    return value;
}

// ---- Sizes and counters -------------------------------------------------------------------

void GetSizeText(CString& out, double bytes) {
    static const char* const kSuffix[] = {"", "K", "M", "G"};
    double value = bytes;
    int steps = 0;
    // No limit on the steps (a finite double needs at most 103); an infinite value is not
    // divided at all, which keeps the loop finite.
    if (std::isfinite(value)) {
        while (value > 1024.0) {
            value *= 0.0009765625;
            ++steps;
        }
    }
    if (steps == 0) {
        char buf[16];
        auto res = std::to_chars(buf, buf + sizeof buf, (long)TruncToLong32(value));
        out = CString(buf, (int)(res.ptr - buf));
    } else {
        Double2Str(value, out, 1);
    }
    // 1024^4 and more is divided further but still labelled "G" (deliberate).
    if (out.IsEmpty() || out[0] != '0') out += kSuffix[steps > 3 ? 3 : steps];
}

CString kmgSize(__int64 bytes) {
    static const char* const kSuffix[] = {"", "K", "M", "G", "T"};
    double value = (double)bytes;
    int steps = 0;
    // Four divisions at most: "T" is the largest unit there is a suffix for, so a value above
    // 1024^5 is shown in "T" scaled by 1024^4 only ("2048.0T") rather than indexing past the
    // suffix list.
    while (value > 1024.0 && steps < 4) {
        value *= 0.0009765625;
        ++steps;
    }
    CString s;
    if (steps == 0) {
        char buf[24];
        auto res = std::to_chars(buf, buf + sizeof buf, (long long)bytes);
        s = CString(buf, (int)(res.ptr - buf));
    } else {
        Double2Str(value, s, 1);
    }
    if (!s.IsEmpty()) s += kSuffix[steps];
    return s;
}

LONG GetCountDiskSizeEstimate(DWORD n) { return n < 65535u ? 2 : 6; }

CString NumSuffix(int n) {
    unsigned int mag = n < 0 ? 0u - (unsigned int)n : (unsigned int)n;
    unsigned int tens = mag % 100;
    if (tens >= 10 && tens <= 20) return "th";
    switch (mag % 10) {
        case 1: return "st";
        case 2: return "nd";
        case 3: return "rd";
        default: return "th";
    }
}

void AlphaFormat(char* buf, int n, int upper) {
    if (!buf) return;
    // Counters start at 1; for 0 or less only the terminator is written.
    if (n < 1) {
        buf[0] = '\0';
        return;
    }
    char letter = (char)((upper ? 'A' : 'a') + (n - 1) % 26);
    int repeat = (n - 1) / 26 + 1;
    std::memset(buf, letter, (size_t)repeat);
    buf[repeat] = '\0';
}

// ---- Escaped one-line text ----------------------------------------------------------------

char* atofa(const char* src, char* dst, int limit, bool extended) {
    if (!dst) return nullptr;
    char* out = dst;
    if (src) {
        // An escape that starts just below `limit` carries the output up to three characters
        // past it; the caller's buffer allows for that and the terminator.
        while (*src && out - dst < limit) {
            unsigned char c = (unsigned char)*src++;
            if (c >= 32 && c != '\\') {
                *out++ = (char)c;
                continue;
            }
            *out++ = '\\';
            switch (c) {
                case '\t': *out++ = 't'; break;
                case '\n': *out++ = 'n'; break;
                case '\r': *out++ = 'r'; break;
                case '\\': *out++ = '\\'; break;
                default:
                    if (extended && c == 1) {
                        *out++ = 'b';
                    } else if (extended && c == 2) {
                        *out++ = 'e';
                    } else {
                        *out++ = 'x';
                        *out++ = kHexDigits[c >> 4];
                        *out++ = kHexDigits[c & 0xF];
                    }
                    break;
            }
        }
    }
    *out = '\0';
    return out;
}

namespace {

int HexValue(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    return -1;
}

}  // namespace

char* fatoa(const char* src, char* dst, bool extended) {
    if (!dst) return nullptr;
    char* out = dst;
    if (src) {
        while (*src) {
            char c = *src++;
            if (c != '\\') {
                *out++ = c;
                continue;
            }
            char e = *src;
            if (!e) {  // a backslash at the very end stays a backslash
                *out++ = '\\';
                break;
            }
            switch (e) {
                case 't': *out++ = '\t'; ++src; continue;
                case 'n': *out++ = '\n'; ++src; continue;
                case 'r': *out++ = '\r'; ++src; continue;
                case '\\': *out++ = '\\'; ++src; continue;
                case '?': *out++ = '?'; ++src; continue;
                case 'x': {
                    int hi = HexValue(src[1]);
                    int lo = hi >= 0 ? HexValue(src[2]) : -1;
                    if (lo >= 0) {
                        *out++ = (char)(hi * 16 + lo);
                        src += 3;
                        continue;
                    }
                    break;
                }
                case 'b':
                case 'e':
                    if (extended) {
                        *out++ = e == 'b' ? '\x01' : '\x02';
                        ++src;
                        continue;
                    }
                    break;
                default: break;
            }
            // Any other escape is kept literally: the backslash and the character after it.
            *out++ = '\\';
            *out++ = e;
            ++src;
        }
    }
    *out = '\0';
    return out;
}

// The encoder's buffer is sized for the worst case (every byte a four-character "\xHH") and
// that size is the limit, so the whole text is always encoded and decodes back to itself.
CString atofa(const CString& s, bool extended) {
    CString result;
    int len = (int)std::strlen(s.GetString());  // the pointer form stops at the first NUL
    int limit = 4 * len;
    char* buf = result.GetBuffer(limit + 4);
    char* end = atofa(s.GetString(), buf, limit, extended);
    result.ReleaseBuffer((int)(end - buf));
    return result;
}

CString fatoa(const CString& s, bool extended) {
    CString result;
    int len = (int)std::strlen(s.GetString());
    char* buf = result.GetBuffer(len + 1);
    char* end = fatoa(s.GetString(), buf, extended);
    result.ReleaseBuffer((int)(end - buf));
    return result;
}
