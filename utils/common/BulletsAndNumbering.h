// Labels in front of list paragraphs: decimal numbers, letter counters, Roman numerals and
// bullet symbols with the symbol font to draw them in. Labels are written through a moving
// cursor into the caller's buffer.
#pragma once

#include "utils/framework/wintypes.h"
#include "utils/framework/export.h"

// A fixed underlying type, so any int a caller passes is a value of the type (and is then
// checked by BuildNumber) rather than undefined.
enum NumberType : int {
    NT_Decimal = 1,      // "4", "-12"
    NT_UpperAlpha = 2,   // "D", "AA"
    NT_LowerAlpha = 3,   // "d", "aa"
    NT_UpperRoman = 4,   // "IV"
    NT_LowerRoman = 5,   // "iv"
    NT_Bullet1 = 17,     // symbols of BulletSymbols, one per value 17 to 23
    NT_Bullet2 = 18,
    NT_Bullet3 = 19,
    NT_Bullet4 = 20,
    NT_Bullet5 = 21,
    NT_Bullet6 = 22,
    NT_Bullet7 = 23,
};

// A bullet symbol: the byte to draw and the font selector (0x40 the general symbol font, 0x80
// the pictograph font) to draw it in.
struct Bullets {
    ULONG font;
    char symbol;
};

// Indexed by NumberType - 17.
extern MFCQMUTILS_API const Bullets BulletSymbols[7];

// The longest body a label can have: a Roman numeral of 9 thousands and three 4-letter
// digits ("MMMMMMMMMDCCCLXXXVIII" for 9888) is 21 characters; decimal numbers take at most 11
// ("-2147483648") and letter counters 10.
constexpr int BULLET_BODY_MAX = 21;
// Bytes BuildNumber may write from the cursor: prefix, body, suffix and the NUL. A buffer of
// this size is enough for every n, style, prefix and suffix.
constexpr int BULLET_LABEL_MAX = 1 + BULLET_BODY_MAX + 1 + 1;

// Writes the label for n in the given style with an optional prefix and suffix (NUL for
// none). On return p rests on the NUL written after the label, so labels can be appended.
// A bullet style sets font to the symbol's font selector; other styles leave it alone.
// An invalid style reports "0" and returns false.
MFCQMUTILS_API bool BuildNumber(char*& p, int n, NumberType type, char prefix, char suffix, ULONG& font);

// Writes n (1 to 9999) in upper-case Roman numerals and a NUL, cursor left on the NUL;
// returns 1. Out of range it writes only the NUL, leaves the cursor and returns 0.
MFCQMUTILS_API int BuildRomanNumber(char*& p, int n);

// Writes one decimal digit (0 to 9) in Roman form with the letters for one, five and ten.
MFCQMUTILS_API void roman_digit(char one, char five, char ten, int digit, char*& p);
