// Date text of the date module: CDate::Format (English names whatever the locale) and the
// date finder CDate::FindDate, which scans with WinDateTime::ScanDate.
#include <cstring>
#include <string>

#include "utils/common/CVLogger.h"
#include "utils/common/date_text.h"
#include "utils/common/utils_numbers.h"
#include "utils/framework/mbchar.h"

#define QM_SOURCE_MODULE "Common\\date"

namespace {

// The English names used by CDate::Format whatever the locale: weekday w (0 = Sunday) is
// entry w, month m is entry 6 + m. Each name sits in a 16-byte slot so that Format can copy a
// whole slot with one fixed-size move and then advance by the name's length.
struct Name {
    char text[16];
    int length;
};
const Name kNames[19] = {
    {"Sunday", 6},   {"Monday", 6},   {"Tuesday", 7},  {"Wednesday", 9}, {"Thursday", 8},
    {"Friday", 6},   {"Saturday", 8}, {"January", 7},  {"February", 8},  {"March", 5},
    {"April", 5},    {"May", 3},      {"June", 4},     {"July", 4},      {"August", 6},
    {"September", 9}, {"October", 7}, {"November", 8}, {"December", 8},
};

// Format writes into a buffer of this many characters and stops when it is full.
constexpr int kFormatBufferSize = 31744;

bool IsDigitChar(char c) { return _ismbcdigit((unsigned char)c) != 0; }

// Advances p to the next decimal digit or to the end of the text.
void SkipToDigit(const char*& p) {
    while (*p && !IsDigitChar(*p)) ++p;
}

}  // namespace

// ---- CDate text forms -----------------------------------------------------------------------

// The buffer holds kFormatBufferSize characters; output stops when it is full (a name or
// number that does not fit is cut at the end of the buffer). A null fmt is an empty format.
// A "%" at the very end of fmt is written as it is (the terminator is never taken as a code).
CString CDate::Format(const char* fmt) const {
    bool bValid = IsValid();
    if (!CVASSERT(bValid)) return CString();
    if (!fmt) return CString();

    char buf[kFormatBufferSize];
    char* out = buf;
    char* const end = buf + kFormatBufferSize;
    auto put = [&](const char* text, int length) {
        int room = (int)(end - out);
        if (length > room) length = room;
        std::memcpy(out, text, (size_t)length);
        out += length;
    };
    // Names and numbers are written straight into the buffer while a whole slot fits (the
    // common case); only at the very end of the buffer do they go through the cutting put().
    auto putName = [&](const Name& n, int length) {
        if (end - out >= (long)sizeof n.text) {
            std::memcpy(out, n.text, sizeof n.text);
            out += length;
        } else {
            put(n.text, length);
        }
    };
    auto putNumber = [&](long v, int width) {
        if (end - out >= 16) {
            out = numstr((LONG)v, out, width);
        } else {
            char digits[16];
            char* e = numstr((LONG)v, digits, width);
            put(digits, (int)(e - digits));
        }
    };

    const int year = GetYear(), month = GetMonth(), day = GetDay();
    int weekday = -1;  // computed on first use
    auto getWeekday = [&]() {
        if (weekday < 0) {
            // Kept in 0..6 also for the negative scalars of years before 1 (the year is not
            // part of the validity check), so the name table is never indexed out of range.
            long w = ymd2scalar(year, month, day) % 7;
            weekday = (int)(w < 0 ? w + 7 : w);
        }
        return weekday;
    };

    const char* p = fmt;
    while (*p && out < end) {
        char c = *p++;
        if (c != '%') {
            *out++ = c;
            continue;
        }
        char code = *p;
        if (!code) {
            *out++ = '%';
            break;
        }
        ++p;
        switch (code) {
            case '%': put("%", 1); break;
            case 'A': { const Name& n = kNames[getWeekday()]; putName(n, n.length); break; }
            case 'a': putName(kNames[getWeekday()], 3); break;
            case 'B': { const Name& n = kNames[6 + month]; putName(n, n.length); break; }
            case 'b': putName(kNames[6 + month], 3); break;
            case 'd': putNumber(day, 2); break;
            case 'D': putNumber(day, day < 10 ? 1 : 2); break;
            case 'm': putNumber(month, 2); break;
            case 'Y': {
                // Four digits; a year of five digits (the 16-bit field allows up to 32767)
                // keeps all of them rather than losing its first digit.
                int magnitude = year < 0 ? -year : year;
                putNumber(year, magnitude > 9999 ? 5 : 4);
                break;
            }
            case 'y': putNumber(year % 100, 2); break;
            case 'w': {
                char digit = (char)('0' + getWeekday());
                put(&digit, 1);
                break;
            }
            default: {
                char pair[2] = {'%', code};
                put(pair, 2);
                break;
            }
        }
    }
    return CString(buf, (int)(out - buf));
}

CString CDate::AsString(int longForm) const { return WinDateTime::GetDate(*this, longForm); }

CDate::operator CString() const { return WinDateTime::GetDate(*this, 0); }

// The search steps one character past each position where no date in the range starts, so
// it always ends. A null p finds nothing; a date whose offset would not fit the 32-bit result
// is not reported.
LONG CDate::FindDate(const char*& p, CDate from, CDate to) {
    if (!p) return -1;
    const char* const start = p;
    SkipToDigit(p);
    if (!*p) return -1;
    for (;;) {
        const char* at = p;
        if (at - start > 0x7FFFFFFF) return -1;
        CDate found = WinDateTime::ScanDate(p);
        if (!found.IsNull() && found.InRange(from, to)) return (LONG)(at - start);
        p = at;
        if (*p) ++p;
        SkipToDigit(p);
        if (!*p) return -1;
    }
}
