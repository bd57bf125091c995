// Number formatting and parsing of the utils module.
#include "utils/common/utils_numbers.h"

#include <bit>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>

#include "utils/common/CVLogger.h"
#include "utils/common/utils_numbers_internal.h"
#include "utils/framework/mbchar.h"
#include "utils/platform/locale.h"

#define QM_SOURCE_MODULE "Common\\utils"

using qm::numbers::kHexDigits;
using qm::numbers::TruncToLong32;

namespace {

// "00".."99": two digits per division keeps the fixed-width writer close to std::to_chars.
constexpr char kDigitPairs[] =
    "00010203040506070809101112131415161718192021222324252627282930313233343536373839"
    "40414243444546474849505152535455565758596061626364656667686970717273747576777879"
    "8081828384858687888990919293949596979899";

}  // namespace

// ---- Integer writers ----------------------------------------------------------------------

// The caller sizes buf for the sign and `width` digits. A magnitude with more digits than
// `width` keeps only its lowest `width` digits (like a counter wrapping around), so the
// writer never goes past buf + width (+ 1 for the sign); a width of 0 or less writes no digit.
char* numstr(LONG v, char* buf, int width) {
    DWORD mag = (DWORD)v;
    if (v < 0) {
        *buf++ = '-';
        mag = 0u - mag;  // also right for LONG_MIN, whose magnitude needs the unsigned range
    }
    if (width <= 0) return buf;
    char* end = buf + width;
    char* q = end;
    // Two digits per step over the whole field: once the value is used up the pairs are
    // "00", which is the zero padding, without a separate pass.
    while (q - buf >= 2) {
        DWORD pair = mag % 100;
        mag /= 100;
        q -= 2;
        std::memcpy(q, kDigitPairs + 2 * pair, 2);
    }
    if (q > buf) *--q = (char)('0' + mag % 10);
    return end;
}

// Same width rule as numstr: only the lowest `width` hexadecimal digits are written.
char* numstrx(DWORD v, char* buf, int width) {
    if (width <= 0) return buf;
    char* end = buf + width;
    char* q = end;
    while (q > buf && v != 0) {
        *--q = kHexDigits[v & 0xF];
        v >>= 4;
    }
    if (q > buf) std::memset(buf, '0', (size_t)(q - buf));
    return end;
}

// ---- Decimal separator and locale digits --------------------------------------------------

namespace {

// Process-wide, unsynchronised: the functions are meant for the user-interface thread.
char g_decimalSeparatorOverride = 0;
int g_digitsAfterDecimal[2] = {-1, -1};  // per eREG_OPT_GROUP; -1 = not read yet

// The separator the real-number formatters write: GetDecimalSeparator's answer, or "." when
// the locale cannot be read at all.
char SeparatorForOutput() {
    char c = GetDecimalSeparator();
    return c ? c : '.';
}

}  // namespace

char GetDecimalSeparator() {
    if (g_decimalSeparatorOverride) return g_decimalSeparatorOverride;
    char buf[4] = {0, 0, 0, 0};
    int n = qm::platform::GetUserLocaleInfo(LOCALE_SDECIMAL, buf, (int)sizeof buf);
    // A failed read answers NUL, as the cleared buffer would; a separator of two or more
    // characters cannot be returned as one char, so "." stands in for it.
    if (n <= 0) return '\0';
    if (n >= 3) return '.';
    return buf[0];
}

char SetDecimalSeparator(char c) {
    char previous = g_decimalSeparatorOverride;
    g_decimalSeparatorOverride = c;
    return previous;
}

int GetNumOfDigitAfterDec(eREG_OPT_GROUP eRegOptGroup) {
    // Any other group is reported and then answered like an unreadable locale (2, not
    // cached), which keeps the cache index in range.
    if (!CVASSERT(eRegOptGroup == roNUMBERS || eRegOptGroup == roCURRENCY)) return 2;
    int& cached = g_digitsAfterDecimal[eRegOptGroup];
    if (cached >= 0) return cached;
    char buf[3] = {0, 0, 0};
    LCTYPE item = eRegOptGroup == roNUMBERS ? LOCALE_IDIGITS : LOCALE_ICURRDIGITS;
    if (qm::platform::GetUserLocaleInfo(item, buf, (int)sizeof buf) <= 0) return 2;
    buf[sizeof buf - 1] = '\0';
    cached = std::atoi(buf);
    return cached;
}

// ---- Grouped integers ---------------------------------------------------------------------

CString& numstr_formatted(LONG v, CString& out) {
    if (v < 1000) {
        // Values below 1000, negative ones included, are the plain decimal text: negative
        // numbers deliberately never receive grouping.
        char buf[16];
        auto res = std::to_chars(buf, buf + sizeof buf, (long)v);
        out = CString(buf, (int)(res.ptr - buf));
        return out;
    }
    // Built from the least significant digit; the group separator is always ",".
    char buf[16];
    char* q = buf + sizeof buf;
    DWORD mag = (DWORD)v;
    int inGroup = 0;
    while (mag != 0) {
        if (inGroup == 3) {
            *--q = ',';
            inGroup = 0;
        }
        *--q = (char)('0' + mag % 10);
        mag /= 10;
        ++inGroup;
    }
    out = CString(q, (int)(buf + sizeof buf - q));
    if (out.IsEmpty()) out = "0";
    return out;
}

// ---- Real numbers -------------------------------------------------------------------------

CString& Double2Str(double v, CString& out, int Decimals) {
    CVASSERT(Decimals < 5);
    if (v == 0.0) {
        out = "0";
        return out;
    }
    // After the report, execution continues: a negative count writes no decimals and counts
    // above 9 are cut to 9 so the scaled fraction stays an exact integer.
    int decimals = Decimals < 0 ? 0 : (Decimals > 9 ? 9 : Decimals);
    if (std::isnan(v)) {
        out = "nan";
        return out;
    }
    if (std::isinf(v)) {
        out = v < 0 ? "-inf" : "inf";
        return out;
    }
    double a = std::fabs(v);
    double whole = std::trunc(a);
    double fraction = a - whole;
    for (int i = 0; i < decimals; ++i) fraction *= 10.0;
    std::uint64_t fracDigits = (std::uint64_t)fraction;  // cut, not rounded: 2.99 -> "2.9"

    // Right to left in a work buffer. An integer part beyond the 32-bit range is written in
    // full from the double's exact value (a 32-bit conversion would lose it); the work buffer
    // is sized for the largest double.
    char work[16 + 9 + 320];
    char* end = work + sizeof work;
    char* q = end;
    for (int i = 0; i < decimals; ++i) {
        *--q = (char)('0' + fracDigits % 10);
        fracDigits /= 10;
    }
    // The separator is written even with 0 decimals: 5.0 gives "5." (deliberate).
    *--q = SeparatorForOutput();
    if (whole < 2147483648.0) {
        // An integer part of 0 writes no digit: 0.5 gives ".5" (deliberate).
        DWORD n = (DWORD)whole;
        while (n != 0) {
            *--q = (char)('0' + n % 10);
            n /= 10;
        }
    } else {
        char digits[320];
        auto res = std::to_chars(digits, digits + sizeof digits, whole, std::chars_format::fixed, 0);
        size_t len = (size_t)(res.ptr - digits);
        q -= len;
        std::memcpy(q, digits, len);
    }
    if (v < 0) *--q = '-';
    out = CString(q, (int)(end - q));
    return out;
}

namespace qm {

namespace {

// Decimal digits and decimal-point position of a value, as the Windows runtime's converter
// hands them to its formatters: up to 17 significant digits (correctly rounded), then '0's.
// Infinities and NaNs come as the runtime's pseudo-digits "1#INF", "1#QNAN", "1#SNAN" and
// "1#IND" (the default NaN), with the point after the "1"; they go through the same digit
// rounding, which is why few digits show "1.$" or "1.#J" like the runtime does.
struct DecimalDigits {
    bool negative = false;
    int decpt = 0;       // the value is 0.d1d2d3... x 10^decpt
    char digits[40] = {};  // NUL-terminated, at least 24 significant characters available
};

DecimalDigits Decompose(double v) {
    DecimalDigits d;
    std::uint64_t bits = std::bit_cast<std::uint64_t>(v);
    d.negative = (bits >> 63) != 0;
    const char* special = nullptr;
    if (std::isinf(v)) {
        special = "1#INF";
    } else if (std::isnan(v)) {
        std::uint64_t payload = bits & 0x000FFFFFFFFFFFFFull;
        bool quiet = (payload & 0x0008000000000000ull) != 0;
        if (!quiet)
            special = "1#SNAN";
        else if (d.negative && payload == 0x0008000000000000ull)
            special = "1#IND";
        else
            special = "1#QNAN";
    }
    if (special) {
        std::memcpy(d.digits, special, std::strlen(special) + 1);
        d.decpt = 1;
        return d;
    }
    if (v == 0.0) {
        d.digits[0] = '0';
        d.decpt = 1;
        return d;
    }
    char text[40];
    auto res = std::to_chars(text, text + sizeof text, std::fabs(v), std::chars_format::scientific, 16);
    *res.ptr = '\0';
    // text is "d.dddddddddddddddde[+-]xx"
    int n = 0;
    d.digits[n++] = text[0];
    const char* p = text + 2;
    while (*p != 'e') d.digits[n++] = *p++;
    d.digits[n] = '\0';
    d.decpt = std::atoi(p + 1) + 1;
    return d;
}

// Rounds the digit string to `count` characters, half up on the next character, as the
// runtime does on its digit string (so 0.125 to 2 digits is "0.13"). A carry out of the first
// digit leaves "100..." and moves the point one place right. The result has exactly `count`
// characters (padded with '0').
std::string RoundDigits(DecimalDigits& d, int count) {
    int len = (int)std::strlen(d.digits);
    std::string out((size_t)count, '0');
    for (int i = 0; i < count && i < len; ++i) out[(size_t)i] = d.digits[i];
    if (count >= len || d.digits[count] < '5') return out;
    int i = count - 1;
    while (i >= 0 && out[(size_t)i] == '9') out[(size_t)i--] = '0';
    if (i >= 0) {
        out[(size_t)i] = (char)(out[(size_t)i] + 1);
    } else {
        if (count > 0) out[0] = '1';
        d.decpt += 1;
    }
    return out;
}

}  // namespace

// The Windows runtime's _gcvt_s, reproduced so that both targets give the same text. (Wine's
// runtime formats with "%.*g" instead and drops the point of "1."; we never call either.)
// The rules:
//   - digits < 0 or digits >= bufSize: ERANGE and an empty buffer; digits 0 counts as 1.
//   - magnitude m = decpt - 1 of the unrounded value. If m < -1 or m > digits - 1 the
//     exponent form is used: one digit, "." and digits - 1 more when digits > 1, then "e",
//     the sign and at least three exponent digits ("1.2e+010", "2.e-002").
//   - otherwise the fixed form with digits - m - 1 decimals (for m = -1 that is "0." and
//     `digits` decimals); the point is written whenever there is at least one decimal.
//   - trailing zeros of the decimals are then removed, but the point stays: 1.0 gives "1.".
//   - the decimal point is always "." (the runtime uses the C locale's point).
//   - when the unstripped text and its NUL would not fit bufSize the result is ERANGE and "".
int FormatGcvt(double v, int digits, char* buf, int bufSize) {
    constexpr int kErange = 34;
    if (!buf || bufSize <= 0) return kErange;
    buf[0] = '\0';
    if (digits < 0 || digits >= bufSize) return kErange;
    if (digits == 0) digits = 1;

    DecimalDigits d = Decompose(v);
    int magnitude = d.decpt - 1;
    bool exponentForm = magnitude < -1 || magnitude > digits - 1;

    std::string text;
    if (d.negative) text += '-';
    std::string mant = RoundDigits(d, digits);  // both forms show `digits` significant digits
    if (exponentForm) {
        int exp = d.decpt - 1;
        text += mant[0];
        if (digits > 1) {
            text += '.';
            text.append(mant, 1, std::string::npos);
        }
        text += 'e';
        text += exp < 0 ? '-' : '+';
        int e = exp < 0 ? -exp : exp;
        text += (char)('0' + e / 100);
        text += (char)('0' + e / 10 % 10);
        text += (char)('0' + e % 10);
    } else {
        // Integer digits up to the (possibly carried) point, then the decimals counted from
        // the unrounded magnitude; positions outside the digit string are '0'.
        int decimals = digits - magnitude - 1;
        int dp = d.decpt;
        if (dp <= 0) text += '0';
        for (int i = 0; i < dp; ++i) text += i < digits ? mant[(size_t)i] : '0';
        if (decimals > 0) {
            text += '.';
            for (int i = 0; i < decimals; ++i) {
                int idx = dp + i;
                text += (idx >= 0 && idx < digits) ? mant[(size_t)idx] : '0';
            }
        }
    }
    if ((int)text.size() + 1 > bufSize) return kErange;

    // Drop trailing zeros after the point, before any exponent; the point itself stays.
    size_t point = text.find('.');
    if (point != std::string::npos) {
        size_t stop = text.find('e', point);
        if (stop == std::string::npos) stop = text.size();
        size_t z = stop;
        while (z > point + 1 && text[z - 1] == '0') --z;
        text.erase(z, stop - z);
    }
    std::memcpy(buf, text.c_str(), text.size() + 1);
    return 0;
}

}  // namespace qm

CString& fltstr(float v, int digits, CString& out) { return fltstr((double)v, digits, out); }

CString& fltstr(double v, int digits, CString& out) {
    char buf[25];
    qm::FormatGcvt(v, digits, buf, (int)sizeof buf);  // "" on ERANGE
    out = buf;
    return out;
}

namespace {

// Whether a number that std::from_chars found out of range was too large (else too small):
// the decimal exponent of its first significant digit decides.
bool OverflowsUp(const char* b, const char* e) {
    long mag = 0;
    bool seenPoint = false, seenNonZero = false;
    const char* p = b;
    for (; p < e && *p != 'e' && *p != 'E'; ++p) {
        if (*p == '.') {
            seenPoint = true;
        } else if (!seenNonZero) {
            if (*p != '0') {
                seenNonZero = true;
                if (!seenPoint) mag = 1;
            } else if (seenPoint) {
                --mag;
            }
        } else if (!seenPoint) {
            ++mag;
        }
    }
    long exp = 0;
    if (p < e) {
        ++p;
        bool neg = p < e && *p == '-';
        if (p < e && (*p == '-' || *p == '+')) ++p;
        for (; p < e && exp < 100000; ++p) exp = exp * 10 + (*p - '0');
        if (neg) exp = -exp;
    }
    return mag + exp > 0;
}

// strtod's decimal syntax ([blanks] [sign] digits [. digits] [e [sign] digits]) independent
// of the process locale: the point is always ".". Leading white space is skipped as strtod
// skips it, which matters after a leading currency mark was removed ("$ 12.50"). Overflow
// gives +-HUGE_VAL and underflow 0, as strtod does. Returns the end of the parsed prefix, or
// `text` when nothing was parsed.
const char* ParseDecimal(const char* text, const char* end, double& value) {
    const char* p = text;
    while (p < end && (*p == ' ' || (*p >= '\t' && *p <= '\r'))) ++p;
    bool negative = false;
    if (p < end && (*p == '+' || *p == '-')) negative = *p++ == '-';
    // Only digits or a point may start the number: no "inf", "nan" or hexadecimal forms.
    if (p >= end || !((*p >= '0' && *p <= '9') || *p == '.')) return text;
    double v = 0;
    auto res = std::from_chars(p, end, v, std::chars_format::general);
    if (res.ec == std::errc::invalid_argument) return text;
    if (res.ec == std::errc::result_out_of_range) v = OverflowsUp(p, res.ptr) ? HUGE_VAL : 0.0;
    value = negative ? -v : v;
    return res.ptr;
}

}  // namespace

double StrToDouble(const CString& s, int& decimals) {
    const double kInvalid = std::bit_cast<double>(0x0010000000000000ull);
    decimals = 0;
    CString copy = s;
    char sep = g_decimalSeparatorOverride;
    if (!sep) {
        char buf[4] = {0, 0, 0, 0};
        if (qm::platform::GetUserLocaleInfo(LOCALE_SDECIMAL, buf, (int)sizeof buf) == 2) sep = buf[0];
    }
    // A multi-character (or unreadable) locale separator replaces nothing.
    if (sep && sep != '.') copy.Replace(sep, '.');
    copy.Trim();
    // The decimals are the length of the text as passed minus the position of the first point
    // in the trimmed text, less one. Blanks around the text therefore count as decimals, the
    // leading ones too, and so does a trailing currency mark (deliberate). The position is
    // taken before a leading currency mark is removed, so that mark does not count:
    // "$12.50" has 2 decimals, "  1.5" has 3.
    int point = copy.Find('.');
    if (!copy.IsEmpty()) {
        char first = copy[0], last = copy[copy.GetLength() - 1];
        // At most one currency mark: a leading one, else a trailing one.
        if (first == '$' || first == '?')
            copy.Delete(0);
        else if (last == '$' || last == '?')
            copy.Delete(copy.GetLength() - 1);
    }
    if (copy.IsEmpty()) return kInvalid;
    const char* begin = copy.GetString();
    const char* end = begin + copy.GetLength();
    double value = 0;
    const char* stop = ParseDecimal(begin, end, value);
    if (stop == begin) return kInvalid;
    // An embedded NUL is not white space, so text after one also makes the number invalid.
    for (const char* p = stop; p < end; ++p)
        if (!_ismbcspace((unsigned char)*p)) return kInvalid;
    if (point >= 0) decimals = s.GetLength() - point - 1;
    return value;
}

int IsValidDouble(const char* s, int intDigits, int fracDigits) {
    if (!s) return 1;  // a null text is taken as the empty text
    char sep = GetDecimalSeparator();
    int budget = intDigits;
    bool seenSeparator = false;
    bool seenSign = false;
    for (const char* p = s; *p; ++p) {
        if (budget <= 0) return 0;
        --budget;
        char c = *p;
        if (c == '.' || c == sep) {
            // The separator has already used one unit of the integer budget, so at most
            // intDigits - 1 digits may precede it (deliberate). A zero or negative fracDigits
            // allows no separator.
            if (seenSeparator || fracDigits <= 0) return 0;
            seenSeparator = true;
            budget = fracDigits;
        } else if (c == '+' || c == '-') {
            if (p != s || seenSign) return 0;
            seenSign = true;
            ++budget;  // a sign does not count
        } else if (c < '0' || c > '9') {
            return 0;
        }
    }
    return 1;
}

namespace qm {

// Out-of-range values and NaN give 0x80000000, as the x86 conversion does.
int round(double x) {
    double f = std::floor(x);
    double r = (x - f < 0.5) ? f : std::ceil(x);
    return (int)TruncToLong32(r);
}

float round(float x, int decimals) {
    // Any non-zero float reaches infinity within 84 multiplications by 10 (from the smallest
    // denormal), and infinity, 0 and NaN stay what they are under both scalings, so counts
    // beyond 100 give the same result as 100 without looping up to INT_MAX times.
    if (decimals > 100) decimals = 100;
    for (int i = 0; i < decimals; ++i) x = x * 10.0f;
    float t = std::trunc(x);
    // For negative x the difference is never 0.5 or more: negative values are cut toward
    // zero (-1.7 gives -1), kept as is.
    if (x - t >= 0.5f) t = t + 1.0f;
    for (int i = 0; i < decimals; ++i) t = t / 10.0f;
    return t;
}

}  // namespace qm
