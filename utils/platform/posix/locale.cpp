// The process locale (LC_TIME, LC_NUMERIC, LC_MONETARY) mapped onto the Windows locale items.
// The C/POSIX locale gives the en-US values.
#include "utils/platform/locale.h"

#include <langinfo.h>
#include <locale.h>

#include <climits>
#include <cstring>
#include <string>

namespace qm::platform {

namespace {

bool IsPlainCLocale(int category) {
    const char* name = setlocale(category, nullptr);
    return !name || std::strcmp(name, "C") == 0 || std::strcmp(name, "POSIX") == 0;
}

// Turns a strftime date pattern ("%d.%m.%Y") into a Windows picture ("dd.MM.yyyy").
std::string PictureFromStrftime(const char* fmt) {
    std::string out;
    for (const char* p = fmt; *p; ++p) {
        if (*p != '%') { out += *p; continue; }
        if (!*++p) break;
        if (*p == 'E' || *p == 'O' || *p == '-' || *p == '_' || *p == '0') {
            if (!p[1]) break;
            ++p;
        }
        switch (*p) {
            case 'd': out += "dd"; break;
            case 'e': out += "d"; break;
            case 'm': out += "MM"; break;
            case 'b': case 'h': out += "MMM"; break;
            case 'B': out += "MMMM"; break;
            case 'y': out += "yy"; break;
            case 'Y': out += "yyyy"; break;
            case 'a': out += "ddd"; break;
            case 'A': out += "dddd"; break;
            case 'D': out += "MM/dd/yy"; break;
            case 'F': out += "yyyy-MM-dd"; break;
            default: break;
        }
    }
    return out;
}

// 0 = month-day-year, 1 = day-month-year, 2 = year-month-day, from the picture's field order.
char OrderCode(const std::string& picture) {
    size_t d = picture.find('d'), m = picture.find('M'), y = picture.find('y');
    if (y != std::string::npos && y < m && y < d) return '2';
    if (d != std::string::npos && d < m) return '1';
    return '0';
}

std::string FirstSeparator(const std::string& picture, const char* fallback) {
    for (char c : picture)
        if (c != 'd' && c != 'M' && c != 'y' && c != ' ') return std::string(1, c);
    return fallback;
}

std::string TimeSeparatorOf(const char* tfmt) {
    for (const char* p = tfmt; *p; ++p)
        if (*p != '%' && (p == tfmt || p[-1] != '%')) return std::string(1, *p);
    return ":";
}

bool Is12HourClock(const char* tfmt) { return std::strstr(tfmt, "%I") || std::strstr(tfmt, "%r") || std::strstr(tfmt, "%l"); }

std::string Digits(int n) { return n == CHAR_MAX || n < 0 ? std::string("2") : std::to_string(n); }

std::string ReadNative(LCTYPE item) {
    std::string shortDate = PictureFromStrftime(nl_langinfo(D_FMT));
    const char* tfmt = nl_langinfo(T_FMT);
    switch (item) {
        case LOCALE_SDECIMAL: return nl_langinfo(RADIXCHAR);
        case LOCALE_STHOUSAND: return nl_langinfo(THOUSEP);
        case LOCALE_IDIGITS: return "2";
        case LOCALE_SCURRENCY: return localeconv()->currency_symbol;
        case LOCALE_ICURRDIGITS: return Digits(localeconv()->frac_digits);
        case LOCALE_SDATE: return FirstSeparator(shortDate, "/");
        case LOCALE_STIME: return TimeSeparatorOf(tfmt);
        case LOCALE_SSHORTDATE: return shortDate;
        case LOCALE_IDATE: return std::string(1, OrderCode(shortDate));
        case LOCALE_SLONGDATE: {
            char code = OrderCode(shortDate);
            return code == '1' ? "dddd, d MMMM yyyy" : code == '2' ? "yyyy MMMM d, dddd" : "dddd, MMMM d, yyyy";
        }
        case LOCALE_ILDATE: return std::string(1, OrderCode(shortDate));
        case LOCALE_ITIME: return Is12HourClock(tfmt) ? "0" : "1";
        case LOCALE_ITLZERO: return std::strstr(tfmt, "%H") || std::strstr(tfmt, "%I") ? "1" : "0";
        case LOCALE_S1159: return nl_langinfo(AM_STR);
        case LOCALE_S2359: return nl_langinfo(PM_STR);
        case LOCALE_STIMEFORMAT: return Is12HourClock(tfmt) ? "h:mm:ss tt" : "HH:mm:ss";
        default: break;
    }
    if (item >= LOCALE_SDAYNAME1 && item < LOCALE_SDAYNAME1 + 7)  // Monday first
        return nl_langinfo((nl_item)(DAY_1 + (item - LOCALE_SDAYNAME1 + 1) % 7));
    if (item >= LOCALE_SABBREVDAYNAME1 && item < LOCALE_SABBREVDAYNAME1 + 7)
        return nl_langinfo((nl_item)(ABDAY_1 + (item - LOCALE_SABBREVDAYNAME1 + 1) % 7));
    if (item >= LOCALE_SMONTHNAME1 && item < LOCALE_SMONTHNAME1 + 12)
        return nl_langinfo((nl_item)(MON_1 + (item - LOCALE_SMONTHNAME1)));
    if (item >= LOCALE_SABBREVMONTHNAME1 && item < LOCALE_SABBREVMONTHNAME1 + 12)
        return nl_langinfo((nl_item)(ABMON_1 + (item - LOCALE_SABBREVMONTHNAME1)));
    return std::string();
}

}  // namespace

int NativeUserLocaleInfo(LCTYPE item, char* buf, int bufSize) {
    const char* english = EnglishUSLocaleInfo(item);
    if (!english) return 0;
    int category = (item == LOCALE_SDECIMAL || item == LOCALE_STHOUSAND || item == LOCALE_IDIGITS) ? LC_NUMERIC
                   : (item == LOCALE_SCURRENCY || item == LOCALE_ICURRDIGITS)                         ? LC_MONETARY
                                                                                                       : LC_TIME;
    if (IsPlainCLocale(category)) return CopyLocaleText(english, buf, bufSize);
    std::string text = ReadNative(item);
    return CopyLocaleText(text.c_str(), buf, bufSize);
}

}  // namespace qm::platform
