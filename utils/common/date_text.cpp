// Date and time text: the WinDateTime locale cache with the short and long date forms and the
// time of day, and the short-date scanner. CDate::Format and the date finder are in
// date_format.cpp.
#include "utils/common/date_text.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "utils/common/CVLogger.h"
#include "utils/common/utils_numbers.h"
#include "utils/framework/mbchar.h"
#include "utils/platform/locale.h"
#include "utils/platform/crt.h"

#define QM_SOURCE_MODULE "Common\\date"

// ---- Settings -------------------------------------------------------------------------------

int WinDateTime::smdyFormat = 0;
char WinDateTime::DateSeparator = 0;
char WinDateTime::TimeSeparator = 0;
CString WinDateTime::descShortDate;
CString WinDateTime::sdateFormat;
CString WinDateTime::ldateFormat;
int WinDateTime::lmdyFormat = 0;
int WinDateTime::charMonth = 0;
int WinDateTime::sShortYear = 1;
int WinDateTime::lShortYear = 0;
int WinDateTime::incMonth = 0;
int WinDateTime::TimeFormat = 0;
int WinDateTime::iTLZero = 1;
CString WinDateTime::sAMIndicator;
CString WinDateTime::sPMIndicator;
CString WinDateTime::timeFormat;

namespace {

// Byte 0x02 stands for "%" in the number slots of the long format, so that CDate::Format
// leaves the slots alone.
constexpr char kSlotMark = '\x02';
const char kNumberSlot[] = "\x02" "d";
const char kPaddedSlot[] = "\x02" "02d";

// Order in which the short form writes its fields: 0 = m/d/y, 1 = d/m/y, 2 = y/m/d. Equal to
// smdyFormat for the three known codes; for any other code it is taken from the short
// picture itself (see OrderOfPicture), so that the short form still lists the fields as the
// picture that ScanDate reads does.
int g_shortOrder = 0;

// The field behind each number slot of ldateFormat, in slot order ("d", "m", "y" letters).
std::string g_longSlots;

// Abbreviated month names for parsing, loaded on first use.
char g_abbrevMonths[12][4];
bool g_abbrevMonthsLoaded = false;

bool IsDigitChar(char c) { return _ismbcdigit((unsigned char)c) != 0; }

// Reads a locale item with a buffer of bufSize characters (GetLocaleInfoA rules: an item that
// does not fit fails); a failed read gives the empty string.
CString ReadLocale(LCTYPE item, int bufSize) {
    char buf[160];
    if (bufSize > (int)sizeof buf) bufSize = (int)sizeof buf;
    buf[0] = 0;
    if (qm::platform::GetUserLocaleInfo(item, buf, bufSize) <= 0) buf[0] = 0;
    buf[bufSize - 1] = 0;
    return CString(buf);
}

// The first three characters of the locale's abbreviated name of month m (1..12). The name is
// read into a buffer that holds any name and then cut, because a buffer of only four bytes
// would make the read fail for longer names ("Sept"). A month outside 1..12 has no name.
void AbbreviatedMonth(int m, char out[4]) {
    out[0] = 0;
    if (m < 1 || m > 12) return;
    CString name = ReadLocale((LCTYPE)(LOCALE_SABBREVMONTHNAME1 + (m - 1)), 80);
    std::strncpy(out, name, 3);
    out[3] = 0;
}

// Text placed into a format as literal text: "%" is doubled so that neither printf, strftime
// nor CDate::Format reads it as a code. Literals of the long picture also lose any byte 0x02,
// so that a picture cannot forge a number slot.
CString EscapePercent(const char* text, bool dropSlotMarks = false) {
    CString out;
    for (const char* p = text; *p; ++p) {
        if (dropSlotMarks && *p == kSlotMark) continue;
        if (*p == '%') out += '%';
        out += *p;
    }
    return out;
}

int RunLength(const char* p, char letter) {
    int n = 0;
    while (p[n] == letter) ++n;
    return n;
}

bool IsFieldLetter(char c) { return c == 'd' || c == 'm' || c == 'y'; }

// The field order of a lower-cased picture by its first field letter, as an order code.
int OrderOfPicture(const char* picture) {
    for (const char* p = picture; *p; ++p) {
        if (*p == 'y') return 2;
        if (*p == 'd') return 1;
        if (*p == 'm') return 0;
    }
    return 0;
}

// True when the literal text at p (up to the next field letter) holds a quote.
bool LiteralRunHasQuote(const char* p) {
    for (; *p && !IsFieldLetter(*p); ++p)
        if (*p == '\'') return true;
    return false;
}

// Literal text of the long picture that involves quotes, read up to the next field letter
// outside quotes: quoted text is taken as it stands, letters included ("'de'"), and in the
// picture's own case (from `original`, which has the same offsets as the lower-cased
// `lowered`); "''" is one quote inside or outside quotes; an unterminated quote runs to the
// end of the picture.
CString ReadQuotedLiteral(const char* lowered, const char* original, size_t& i) {
    CString text;
    bool inQuote = false;
    while (lowered[i]) {
        char c = lowered[i];
        if (c == '\'') {
            if (lowered[i + 1] == '\'') {
                text += '\'';
                i += 2;
                continue;
            }
            inQuote = !inQuote;
            ++i;
            continue;
        }
        if (!inQuote && IsFieldLetter(c)) break;
        text += original[i];
        ++i;
    }
    return text;
}

// Takes the long picture apart into ldateFormat, lmdyFormat, lShortYear, incMonth and the
// slot fields:
// - "d" runs of 3 or more are the weekday (ExtractWeekDay: "%a"/"%A"), shorter ones the day
//   of the month (ExtractDayOfMonth: a number slot);
// - "m" runs go through ExtractMonth (a number slot, "%b" or "%B"), "y" runs through
//   ExtractYear (a number slot);
// - literal text without quotes goes through ExtractSeparator; literal text that involves a
//   quote goes through ReadQuotedLiteral, because ExtractSeparator ends even quoted text at
//   a field letter and so cannot carry literals such as "'de'".
// lmdyFormat follows the first day, month or year field (the weekday does not count):
// 0 for the year, 1 for the month, 2 otherwise. The number slots are then expected in that
// order (year-month-day, month-day-year, day-month-year; the month only when it is shown as
// a number). A picture whose slots come in any other order, or with a field missing or
// repeated, reports "false"; its slots are still filled each with its own field.
void BuildLongFormat(const CString& original, const CString& lowered) {
    WinDateTime::ldateFormat.Empty();
    WinDateTime::lShortYear = 0;
    WinDateTime::incMonth = 0;
    g_longSlots.clear();
    char first = 0;

    std::string work(lowered.GetString());
    char* const base = &work[0];
    char* p = base;
    while (*p) {
        char c = *p;
        if (c == 'd' && RunLength(p, 'd') >= 3) {
            WinDateTime::ldateFormat += WinDateTime::ExtractWeekDay(p);
        } else if (c == 'd') {
            if (!first) first = 'd';
            WinDateTime::ldateFormat += WinDateTime::ExtractDayOfMonth(p);
            g_longSlots += 'd';
        } else if (c == 'm') {
            if (!first) first = 'm';
            CString piece = WinDateTime::ExtractMonth(p);
            if (piece.GetString()[0] == kSlotMark) g_longSlots += 'm';
            WinDateTime::ldateFormat += piece;
        } else if (c == 'y') {
            if (!first) first = 'y';
            WinDateTime::ldateFormat += WinDateTime::ExtractYear(p);
            g_longSlots += 'y';
        } else if (LiteralRunHasQuote(p)) {
            size_t i = (size_t)(p - base);
            CString text = ReadQuotedLiteral(base, original.GetString(), i);
            p = base + i;
            WinDateTime::ldateFormat += EscapePercent(text, true);
        } else {
            WinDateTime::ldateFormat += EscapePercent(WinDateTime::ExtractSeparator(p), true);
        }
    }

    WinDateTime::lmdyFormat = first == 'y' ? 0 : first == 'm' ? 1 : 2;
    static const char* const kExpected[3] = {"ymd", "mdy", "dmy"};
    bool monthSlot = g_longSlots.find('m') != std::string::npos;
    std::string expected;
    for (const char* f = kExpected[WinDateTime::lmdyFormat]; *f; ++f)
        if (*f != 'm' || monthSlot) expected += *f;
    if (g_longSlots != expected) CVASSERT_TEXT("false");
}

// Appends v to out in decimal, zero-padded to `width` digits (more digits when it needs them).
void AppendNumber(std::string& out, long v, int width) {
    char buf[24];
    int n = std::snprintf(buf, sizeof buf, "%0*ld", width, v);
    if (n > 0) out.append(buf, (size_t)n < sizeof buf ? (size_t)n : sizeof buf - 1);
}

// The long form: ldateFormat through CDate::Format (weekday and month names), then each
// number slot filled with its field. A slot "02d" is two digits with a leading zero, "d" is
// the plain number; the year is two digits (year mod 100) when lShortYear is set, else at
// least four digits, as CDate::Format's "%Y" writes it.
CString LongDate(int y, int m, int d) {
    CString named = CDate(y, m, d).Format(WinDateTime::ldateFormat);
    const char* t = named.GetString();
    int length = named.GetLength();
    std::string out;
    size_t slot = 0;
    for (int i = 0; i < length; ++i) {
        if (t[i] != kSlotMark) {
            out += t[i];
            continue;
        }
        bool padded;
        if (std::strncmp(t + i + 1, "02d", 3) == 0) {
            padded = true;
            i += 3;
        } else if (t[i + 1] == 'd') {
            padded = false;
            i += 1;
        } else {
            continue;  // not a slot; literals never hold 0x02, so this is only a safeguard
        }
        char field = slot < g_longSlots.size() ? g_longSlots[slot] : 0;
        ++slot;
        switch (field) {
            case 'd': AppendNumber(out, d, padded ? 2 : 1); break;
            case 'm': AppendNumber(out, m, padded ? 2 : 1); break;
            case 'y':
                if (WinDateTime::lShortYear)
                    AppendNumber(out, y % 100, 2);
                else
                    AppendNumber(out, y, 4);
                break;
            default: break;
        }
    }
    return CString(out);
}

// Reads a run of digits as a decimal number. The value saturates at kDigitRunLimit, far above
// every field's range, so a run of any length ends in a value that the range checks reject
// instead of overflowing.
constexpr long long kDigitRunLimit = 1000000000LL;
long long ReadDigitRun(const char*& p) {
    long long v = 0;
    while (IsDigitChar(*p)) {
        v = v * 10 + (*p - '0');
        if (v > kDigitRunLimit) v = kDigitRunLimit;
        ++p;
    }
    return v;
}

}  // namespace

// ---- WinDateTime ----------------------------------------------------------------------------

// The short form's printf format sdateFormat is the day, month and year pieces in the order
// of the date-order code (g_shortOrder), joined by the locale's whole date separator (with
// "%" doubled). Pieces: day "%02d" when the picture has "dd", else "%d"; month "%s" (name)
// when it has "mmm", else "%02d" for "mm", else "%d"; year "%02d" for a two-digit year
// (sShortYear), else "%04d".
void WinDateTime::Initialize() {
    smdyFormat = std::atoi(ReadLocale(LOCALE_IDATE, 8));
    CString dateSeparator = ReadLocale(LOCALE_SDATE, 16);
    descShortDate = ReadLocale(LOCALE_SSHORTDATE, 32);
    descShortDate.MakeLower();
    CString longPicture = ReadLocale(LOCALE_SLONGDATE, 128);
    CString longLowered = longPicture;
    longLowered.MakeLower();

    const char* dayPiece = descShortDate.Find("dd") >= 0 ? "%02d" : "%d";
    const char* monthPiece;
    if (descShortDate.Find("mmm") >= 0) {
        monthPiece = "%s";
        charMonth = 1;
    } else {
        monthPiece = descShortDate.Find("mm") >= 0 ? "%02d" : "%d";
        charMonth = 0;
    }
    sShortYear = descShortDate.Find("yyyy") < 0 ? 1 : 0;
    const char* yearPiece = sShortYear ? "%02d" : "%04d";

    g_shortOrder = (smdyFormat >= 0 && smdyFormat <= 2) ? smdyFormat : OrderOfPicture(descShortDate);
    CString separator = EscapePercent(dateSeparator);
    const char* pieces[3];
    switch (g_shortOrder) {
        case 1: pieces[0] = dayPiece; pieces[1] = monthPiece; pieces[2] = yearPiece; break;
        case 2: pieces[0] = yearPiece; pieces[1] = monthPiece; pieces[2] = dayPiece; break;
        default: pieces[0] = monthPiece; pieces[1] = dayPiece; pieces[2] = yearPiece; break;
    }
    sdateFormat = CString(pieces[0]) + separator + pieces[1] + separator + pieces[2];

    BuildLongFormat(longPicture, longLowered);

    TimeFormat = std::atoi(ReadLocale(LOCALE_ITIME, 8));
    iTLZero = std::atoi(ReadLocale(LOCALE_ITLZERO, 8));
    sAMIndicator = ReadLocale(LOCALE_S1159, 16);
    if (TimeFormat == 0)
        sPMIndicator = ReadLocale(LOCALE_S2359, 16);
    else
        sPMIndicator.Empty();

    // The separator's "%" is doubled: timeFormat goes to strftime, where a stray "%" code
    // could be invalid.
    CString timeSeparator = ReadLocale(LOCALE_STIME, 16);
    timeFormat = CString(TimeFormat == 0 ? "%I" : "%H") + EscapePercent(timeSeparator) + "%M";
    DateSeparator = dateSeparator.IsEmpty() ? 0 : dateSeparator.GetString()[0];
    TimeSeparator = timeSeparator.IsEmpty() ? 0 : timeSeparator.GetString()[0];
}

CString WinDateTime::GetTime(CTime t) {
    Initialize();
    CString s = t.Format(timeFormat);
    if (TimeFormat == 0) {
        struct tm local {};
        bool known = t.GetLocalTm(&local) != nullptr;
        s += (!known || local.tm_hour < 12) ? sAMIndicator : sPMIndicator;
    } else {
        s += sPMIndicator;
    }
    if (iTLZero == 0 && s.GetLength() > 0 && s.GetString()[0] == '0') s.Delete(0, 1);
    return s;
}

void WinDateTime::GetDate(const CDate& date, CString& out, int longForm) {
    Initialize();
    int y = 0, m = 0, d = 0;
    if (date.IsNull()) {
        struct tm now {};
        if (qm::crt::LocalTime64(qm::crt::Time64(), &now)) {
            y = now.tm_year + 1900;
            m = now.tm_mon + 1;
            d = now.tm_mday;
        }
    } else {
        y = date.GetYear();
        m = date.GetMonth();
        d = date.GetDay();
    }

    if (longForm) {
        out = LongDate(y, m, d);
        return;
    }

    // Two-digit year as y - 1900 or y - 2000: years before 1900 or after 2099 come out with
    // more digits or a sign, as they always have.
    if (sShortYear) y = y < 2000 ? y - 1900 : y - 2000;

    int order = smdyFormat;
    if (order < 0 || order > 2) {
        CVASSERT_TEXT("0");
        order = g_shortOrder;  // the order sdateFormat was built in
    }

    char buf[256];
    buf[0] = 0;
    const char* format = sdateFormat;
    if (charMonth) {
        char name[4];
        AbbreviatedMonth(m, name);
        switch (order) {
            case 1: std::snprintf(buf, sizeof buf, format, d, name, y); break;
            case 2: std::snprintf(buf, sizeof buf, format, y, name, d); break;
            default: std::snprintf(buf, sizeof buf, format, name, d, y); break;
        }
    } else {
        switch (order) {
            case 1: std::snprintf(buf, sizeof buf, format, d, m, y); break;
            case 2: std::snprintf(buf, sizeof buf, format, y, m, d); break;
            default: std::snprintf(buf, sizeof buf, format, m, d, y); break;
        }
    }
    out = buf;
}

CString WinDateTime::GetDate(const CDate& date, int longForm) {
    CString out;
    GetDate(date, out, longForm);
    return out;
}

// The month name is matched against the locale's names, but the input always advances by
// three characters (whatever the name's length): a month name typed in full leaves the rest
// of it in the input. The advance never passes the end of the text.
CDate WinDateTime::ScanDate(const char*& p) {
    if (!p || !*p) return CDate();
    const char* picture = descShortDate;
    long long day = 0, month = 0, year = 0;
    bool haveDay = false, haveMonth = false, haveYear = false;

    while (*picture) {
        switch (*picture) {
            case 'd':
                if (IsDigitChar(*p)) day = ReadDigitRun(p);
                while (*picture == 'd') ++picture;
                if (day < 1 || day > 31) return CDate();
                haveDay = true;
                break;
            case 'm': {
                int named = GetMonthFromString(p);
                if (named) {
                    month = named;
                    for (int i = 0; i < 3 && *p; ++i) ++p;
                } else {
                    month = ReadDigitRun(p);
                }
                while (*picture == 'm') ++picture;
                if (month < 1 || month > 12) return CDate();
                haveMonth = true;
                break;
            }
            case 'y':
                if (!IsDigitChar(*p)) return CDate();
                year = ReadDigitRun(p);
                while (*picture == 'y') ++picture;
                if (year > 3000) return CDate();
                if (year < 100) year += year < 50 ? 2000 : 1900;
                haveYear = true;
                break;
            default:
                CVASSERT_TEXT("0");
                return CDate();
        }
        if (!*picture) break;
        if (*picture == *p) {  // *picture is not the terminator, so neither is *p
            ++picture;
            ++p;
            continue;
        }
        break;
    }

    if (!haveDay || !haveMonth) return CDate();
    if (!haveYear) {
        if (*p) return CDate();
        struct tm now {};
        if (qm::crt::LocalTime64(qm::crt::Time64(), &now)) year = now.tm_year + 1900;
    }
    if (day > CDate::dpm((int)year, (int)month)) return CDate();
    return CDate((int)year, (int)month, (int)day);
}

int WinDateTime::GetMonthFromString(const char* s) {
    if (!s) return 0;
    if (!g_abbrevMonthsLoaded) {
        for (int m = 1; m <= 12; ++m) AbbreviatedMonth(m, g_abbrevMonths[m - 1]);
        g_abbrevMonthsLoaded = true;
    }
    for (int m = 0; m < 12; ++m) {
        const char* name = g_abbrevMonths[m];
        if (!*name) continue;  // a name the locale did not give matches nothing
        int k = 0;
        for (; k < 3; ++k) {
            unsigned char a = mbc::ToLower((unsigned char)s[k]);
            unsigned char b = mbc::ToLower((unsigned char)name[k]);
            if (a != b || !a) break;
        }
        // All three compared equal, or both texts ended together (a shorter name).
        if (k == 3 || (!s[k] && !name[k])) return m + 1;
    }
    return 0;
}

// ---- Field extractors of the long picture ---------------------------------------------------

// A null or empty cursor is reported; it reads as an empty run and is not moved.
CString WinDateTime::ExtractWeekDay(char*& ptr) {
    if (!ptr || !*ptr) CVASSERT_TEXT("ptr != NULL && *ptr != 0");
    int run = ptr ? RunLength(ptr, 'd') : 0;
    if (ptr) ptr += run;
    if (run == 3) return CString("%a");
    if (run >= 4) return CString("%A");
    return CString();
}

CString WinDateTime::ExtractMonth(char*& ptr) {
    if (!ptr || !*ptr) CVASSERT_TEXT("ptr != NULL && *ptr != 0");
    int run = ptr ? RunLength(ptr, 'm') : 0;
    if (ptr) ptr += run;
    switch (run) {
        case 2: incMonth = 1; return CString(kPaddedSlot);
        case 3: incMonth = 0; return CString("%b");
        case 4: incMonth = 0; return CString("%B");
        default: incMonth = run < 3 ? 1 : 0; return CString(kNumberSlot);
    }
}

CString WinDateTime::ExtractDayOfMonth(char*& ptr) {
    if (!ptr || !*ptr) CVASSERT_TEXT("ptr != NULL && *ptr != 0");
    int run = ptr ? RunLength(ptr, 'd') : 0;
    if (ptr) ptr += run;
    return CString(run >= 2 ? kPaddedSlot : kNumberSlot);
}

CString WinDateTime::ExtractYear(char*& ptr) {
    if (!ptr || !*ptr) CVASSERT_TEXT("*ptr != NULL && *ptr != 0");
    int run = ptr ? RunLength(ptr, 'y') : 0;
    if (ptr) ptr += run;
    lShortYear = run == 2 ? 1 : 0;
    return CString(kNumberSlot);
}

// Field letters end the text even inside quotes; a quote that does not open the text is
// reported ("ExpectQuote") and then handled like a closing one.
CString WinDateTime::ExtractSeparator(char*& ptr) {
    CString text;
    if (!ptr) {
        CVASSERT_TEXT("ptr != NULL");
        return text;
    }
    bool quoted = false;
    if (*ptr == '\'') {
        quoted = true;
        ++ptr;
    }
    while (*ptr) {
        char c = *ptr;
        if (IsFieldLetter(c)) break;
        if (c == '\'') {
            if (!quoted) CVASSERT_TEXT("ExpectQuote");
            ++ptr;
            if (*ptr == '\'') {
                text += '\'';
                ++ptr;
                continue;
            }
            break;
        }
        text += c;
        ++ptr;
    }
    return text;
}
