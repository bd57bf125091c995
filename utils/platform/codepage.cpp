#include "utils/platform/codepage.h"

#include <array>
#include <cstdint>

namespace qm::platform {
namespace {

// Code page 1252's characters 0x80 to 0x9F; the undefined bytes keep their own value.
const char16_t kHigh1252[32] = {0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021,
                                0x02C6, 0x2030, 0x0160, 0x2039, 0x0152, 0x008D, 0x017D, 0x008F,
                                0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022, 0x2013, 0x2014,
                                0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178};

// Code page 437's characters 0x80 to 0xFF (0x00 to 0x7F are ASCII, control characters included).
const char16_t kHigh437[128] = {
    0x00C7, 0x00FC, 0x00E9, 0x00E2, 0x00E4, 0x00E0, 0x00E5, 0x00E7, 0x00EA, 0x00EB, 0x00E8, 0x00EF, 0x00EE,
    0x00EC, 0x00C4, 0x00C5, 0x00C9, 0x00E6, 0x00C6, 0x00F4, 0x00F6, 0x00F2, 0x00FB, 0x00F9, 0x00FF, 0x00D6,
    0x00DC, 0x00A2, 0x00A3, 0x00A5, 0x20A7, 0x0192, 0x00E1, 0x00ED, 0x00F3, 0x00FA, 0x00F1, 0x00D1, 0x00AA,
    0x00BA, 0x00BF, 0x2310, 0x00AC, 0x00BD, 0x00BC, 0x00A1, 0x00AB, 0x00BB, 0x2591, 0x2592, 0x2593, 0x2502,
    0x2524, 0x2561, 0x2562, 0x2556, 0x2555, 0x2563, 0x2551, 0x2557, 0x255D, 0x255C, 0x255B, 0x2510, 0x2514,
    0x2534, 0x252C, 0x251C, 0x2500, 0x253C, 0x255E, 0x255F, 0x255A, 0x2554, 0x2569, 0x2566, 0x2560, 0x2550,
    0x256C, 0x2567, 0x2568, 0x2564, 0x2565, 0x2559, 0x2558, 0x2552, 0x2553, 0x256B, 0x256A, 0x2518, 0x250C,
    0x2588, 0x2584, 0x258C, 0x2590, 0x2580, 0x03B1, 0x00DF, 0x0393, 0x03C0, 0x03A3, 0x03C3, 0x00B5, 0x03C4,
    0x03A6, 0x0398, 0x03A9, 0x03B4, 0x221E, 0x03C6, 0x03B5, 0x2229, 0x2261, 0x00B1, 0x2265, 0x2264, 0x2320,
    0x2321, 0x00F7, 0x2248, 0x00B0, 0x2219, 0x00B7, 0x221A, 0x207F, 0x00B2, 0x25A0, 0x00A0};

char16_t ByteToUnit(unsigned char c, UINT cp) {
    if (c < 0x80) return c;
    if (cp == kCodePageOem) return kHigh437[c - 0x80];
    if (cp == kCodePageLatin1) return c;
    return c < 0xA0 ? kHigh1252[c - 0x80] : c;
}

// The reverse tables are built once: a byte per BMP unit, 0 where the code page has none
// (0 itself is handled before the lookup).
struct Reverse {
    std::array<unsigned char, 65536> table{};
    explicit Reverse(UINT cp) {
        for (int b = 1; b < 256; ++b) table[ByteToUnit((unsigned char)b, cp)] = (unsigned char)b;
    }
};

const Reverse& ReverseFor(UINT cp) {
    static const Reverse r1252(kCodePageAnsi), r437(kCodePageOem), rLatin1(kCodePageLatin1);
    return cp == kCodePageOem ? r437 : cp == kCodePageLatin1 ? rLatin1 : r1252;
}

void PutUtf8(std::string& out, std::uint32_t cp) {
    if (cp < 0x80) {
        out += (char)cp;
    } else if (cp < 0x800) {
        out += (char)(0xC0 | (cp >> 6));
        out += (char)(0x80 | (cp & 0x3F));
    } else if (cp < 0x10000) {
        out += (char)(0xE0 | (cp >> 12));
        out += (char)(0x80 | ((cp >> 6) & 0x3F));
        out += (char)(0x80 | (cp & 0x3F));
    } else {
        out += (char)(0xF0 | (cp >> 18));
        out += (char)(0x80 | ((cp >> 12) & 0x3F));
        out += (char)(0x80 | ((cp >> 6) & 0x3F));
        out += (char)(0x80 | (cp & 0x3F));
    }
}

}  // namespace

bool CodePageKnown(UINT cp) { return cp == kCodePageAnsi || cp == kCodePageOem || cp == kCodePageLatin1; }

std::u16string AnsiToUtf16(const char* text, std::size_t length, UINT cp) {
    std::u16string out;
    if (!text) return out;
    out.resize(length);
    for (std::size_t i = 0; i < length; ++i) out[i] = ByteToUnit((unsigned char)text[i], cp);
    return out;
}

std::string Utf16ToAnsi(const char16_t* text, std::size_t length, UINT cp, bool* lossy) {
    std::string out;
    if (lossy) *lossy = false;
    if (!text) return out;
    const Reverse& r = ReverseFor(cp);
    out.reserve(length);
    for (std::size_t i = 0; i < length; ++i) {
        char16_t u = text[i];
        if (u == 0) {
            out += '\0';
            continue;
        }
        unsigned char b = r.table[u];
        if (b == 0) {
            // A surrogate pair is one character: one '?' for both units.
            if (u >= 0xD800 && u < 0xDC00 && i + 1 < length && text[i + 1] >= 0xDC00 && text[i + 1] < 0xE000) ++i;
            b = '?';
            if (lossy) *lossy = true;
        }
        out += (char)b;
    }
    return out;
}

std::string Utf16ToUtf8(const char16_t* text, std::size_t length) {
    std::string out;
    if (!text) return out;
    out.reserve(length);
    for (std::size_t i = 0; i < length; ++i) {
        std::uint32_t u = text[i];
        if (u >= 0xD800 && u < 0xDC00 && i + 1 < length && text[i + 1] >= 0xDC00 && text[i + 1] < 0xE000) {
            u = 0x10000 + ((u - 0xD800) << 10) + (text[i + 1] - 0xDC00);
            ++i;
        } else if (u >= 0xD800 && u < 0xE000) {
            u = 0xFFFD;
        }
        PutUtf8(out, u);
    }
    return out;
}

std::u16string Utf8ToUtf16(const char* text, std::size_t length) {
    std::u16string out;
    if (!text) return out;
    out.reserve(length);
    const auto* s = (const unsigned char*)text;
    std::size_t i = 0;
    while (i < length) {
        unsigned char c = s[i];
        if (c < 0x80) {
            out += (char16_t)c;
            ++i;
            continue;
        }
        int extra = c >= 0xC2 && c <= 0xDF ? 1 : c >= 0xE0 && c <= 0xEF ? 2 : c >= 0xF0 && c <= 0xF4 ? 3 : -1;
        std::uint32_t cp = extra == 1 ? (c & 0x1F) : extra == 2 ? (c & 0x0F) : (c & 0x07);
        bool ok = extra > 0;
        if (ok) {
            for (int k = 1; k <= extra; ++k) {
                if (i + k >= length || (s[i + k] & 0xC0) != 0x80) {
                    ok = false;
                    break;
                }
                cp = (cp << 6) | (s[i + k] & 0x3F);
            }
        }
        // Overlong forms, surrogates and values past U+10FFFF are invalid.
        if (ok && ((extra == 2 && cp < 0x800) || (extra == 3 && (cp < 0x10000 || cp > 0x10FFFF)) ||
                   (cp >= 0xD800 && cp < 0xE000)))
            ok = false;
        if (!ok) {
            out += (char16_t)0xFFFD;
            ++i;
            continue;
        }
        if (cp >= 0x10000) {
            cp -= 0x10000;
            out += (char16_t)(0xD800 + (cp >> 10));
            out += (char16_t)(0xDC00 + (cp & 0x3FF));
        } else {
            out += (char16_t)cp;
        }
        i += (std::size_t)extra + 1;
    }
    return out;
}

std::string AnsiToUtf8(const char* text, std::size_t length, UINT cp) {
    std::u16string u = AnsiToUtf16(text, length, cp);
    return Utf16ToUtf8(u.data(), u.size());
}

std::string Utf8ToAnsi(const char* text, std::size_t length, UINT cp, bool* lossy) {
    std::u16string u = Utf8ToUtf16(text, length);
    return Utf16ToAnsi(u.data(), u.size(), cp, lossy);
}

std::string AnsiToAnsi(const char* text, std::size_t length, UINT fromCp, UINT toCp, bool* lossy) {
    std::u16string u = AnsiToUtf16(text, length, fromCp);
    return Utf16ToAnsi(u.data(), u.size(), toCp, lossy);
}

}  // namespace qm::platform
