// Number formatting and parsing of the utils module.
#include "utils/common/utils_numbers.h"

#include <cstring>

#include "utils/common/CVLogger.h"

#define QM_SOURCE_MODULE "Common\\utils"

namespace {

// "00".."99": two digits per division keeps the fixed-width writer close to std::to_chars.
constexpr char kDigitPairs[] =
    "00010203040506070809101112131415161718192021222324252627282930313233343536373839"
    "40414243444546474849505152535455565758596061626364656667686970717273747576777879"
    "8081828384858687888990919293949596979899";

constexpr char kHexDigits[] = "0123456789ABCDEF";

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
    while (q - buf >= 2 && mag >= 10) {
        DWORD pair = mag % 100;
        mag /= 100;
        q -= 2;
        std::memcpy(q, kDigitPairs + 2 * pair, 2);
    }
    if (q > buf && mag != 0) {
        *--q = (char)('0' + mag % 10);
    }
    if (q > buf) std::memset(buf, '0', (size_t)(q - buf));
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
