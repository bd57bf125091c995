#include "utils/common/BulletsAndNumbering.h"

#include "utils/common/CVLogger.h"
#include "utils/framework/mbchar.h"

#define QM_SOURCE_MODULE "Common\\BulletsAndNumbering"

const Bullets BulletSymbols[7] = {
    {0x40, (char)0xB7},
    {0x80, (char)0xA7},
    {0x40, (char)0xA8},
    {0x80, 'q'},
    {0x80, 'v'},
    {0x80, (char)0xD8},
    {0x80, (char)0xFC},
};

void roman_digit(char one, char five, char ten, int digit, char*& p) {
    // Digits outside 0 to 9 write nothing, like 0: a caller can never make this write more
    // than four letters.
    if (digit >= 1 && digit <= 3) {
        for (int i = 0; i < digit; ++i) *p++ = one;
    } else if (digit == 4) {
        *p++ = one;
        *p++ = five;
    } else if (digit >= 5 && digit <= 8) {
        *p++ = five;
        for (int i = 5; i < digit; ++i) *p++ = one;
    } else if (digit == 9) {
        *p++ = one;
        *p++ = ten;
    }
}

int BuildRomanNumber(char*& p, int n) {
    if (n < 1 || n > 9999) {
        *p = 0;
        return 0;
    }
    for (int i = n / 1000; i > 0; --i) *p++ = 'M';
    roman_digit('C', 'D', 'M', n / 100 % 10, p);
    roman_digit('X', 'L', 'C', n / 10 % 10, p);
    roman_digit('I', 'V', 'X', n % 10, p);
    *p = 0;
    return 1;
}

namespace {

void WriteDecimal(char*& p, int n) {
    // Digits are produced from an unsigned magnitude so that INT_MIN needs no negation.
    char digits[10];
    int count = 0;
    unsigned int magnitude = n < 0 ? 0u - (unsigned int)n : (unsigned int)n;
    do {
        digits[count++] = (char)('0' + magnitude % 10);
        magnitude /= 10;
    } while (magnitude != 0);
    if (n < 0) *p++ = '-';
    while (count > 0) *p++ = digits[--count];
}

void WriteLetters(char*& p, int n, bool lower) {
    // Counters stop at ten letters (n = 260, "ZZZZZZZZZZ"); beyond, and below 1, the label is
    // "*".
    if (n < 1 || (n - 1) / 26 >= 10) {
        *p++ = '*';
        return;
    }
    char letter = "ABCDEFGHIJKLMNOPQRSTUVWXYZ"[(n - 1) % 26];
    if (lower) letter = (char)(letter + 32);
    for (int i = (n - 1) / 26 + 1; i > 0; --i) *p++ = letter;
}

}  // namespace

bool BuildNumber(char*& p, int n, NumberType type, char prefix, char suffix, ULONG& font) {
    if (prefix) *p++ = prefix;
    int style = (int)type;
    if (style < 1 || style > 23 || (style >= 6 && style <= 16)) {
        CVASSERT_TEXT("0");
        // The cursor stays after the prefix, as the label was begun; the NUL written here
        // (not moving the cursor) keeps the caller's buffer a terminated string.
        *p = 0;
        return false;
    }
    switch (style) {
    case NT_Decimal:
        WriteDecimal(p, n);
        break;
    case NT_UpperAlpha:
    case NT_LowerAlpha:
        WriteLetters(p, n, style == NT_LowerAlpha);
        break;
    case NT_UpperRoman:
    case NT_LowerRoman: {
        char* start = p;
        if (!BuildRomanNumber(p, n)) *p++ = '*';
        // Only the letters just written are lower-cased: the "*" written after a failed
        // numeral has no NUL behind it yet, so lower-casing up to a NUL could run past it.
        if (style == NT_LowerRoman)
            for (char* c = start; c != p; ++c) *c = (char)mbc::ToLower((unsigned char)*c);
        break;
    }
    default: {
        const Bullets& bullet = BulletSymbols[style - 17];
        font = bullet.font;
        *p++ = bullet.symbol;
        break;
    }
    }
    if (suffix) *p++ = suffix;
    *p = 0;
    return true;
}
