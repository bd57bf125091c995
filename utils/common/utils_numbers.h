// Numbers to text and text to numbers: fixed-width digit writers, thousands grouping, real
// numbers with the user's decimal separator, byte sizes, ordinals, alphabetic counters,
// strict decimal validation, cursor-advancing scanners and the escaped one-line text form.
//
// Widths follow the Windows data model: LONG and DWORD are 32 bits on every build, so the
// sentinels (LONG_MIN = 0x80000000, 0xFFFFFFFF) are the same everywhere.
#pragma once

#include "utils/framework/CString.h"
#include "utils/framework/wintypes.h"
#include "utils/framework/export.h"

// Option groups whose digit counts the locale provides.
enum eREG_OPT_GROUP {
    roNUMBERS = 0,
    roCURRENCY = 1,
};

// ---- Decimal separator and locale digits -------------------------------------------------

// The override set with SetDecimalSeparator, else the locale's one-character separator;
// "." when the locale's separator is longer; NUL when the locale cannot be read.
MFCQMUTILS_API char GetDecimalSeparator();
// Stores c as the process-wide override (0 removes it); returns the previous override.
MFCQMUTILS_API char SetDecimalSeparator(char c);
// Digits after the decimal point for the group, read from the locale once per process;
// 2 (not cached) when the locale cannot be read.
MFCQMUTILS_API int GetNumOfDigitAfterDec(eREG_OPT_GROUP eRegOptGroup);

// ---- Integer writers (no NUL written; return the pointer just past the last digit) -------

// "-" for a negative value, then exactly `width` decimal digits of the magnitude, zero-padded.
MFCQMUTILS_API char* numstr(LONG v, char* buf, int width);
// Exactly `width` upper-case hexadecimal digits, zero-padded; no sign.
MFCQMUTILS_API char* numstrx(DWORD v, char* buf, int width);
// Decimal text with "," between groups of three digits (for values of 1000 and more only).
MFCQMUTILS_API CString& numstr_formatted(LONG v, CString& out);

// ---- Real numbers -------------------------------------------------------------------------

// Fixed number of decimals (0 to 4), cut rather than rounded, with the current separator.
MFCQMUTILS_API CString& Double2Str(double v, CString& out, int decimals);
// `digits` significant digits in the Windows runtime's _gcvt form: a whole number keeps its
// point ("1."), trailing zeros are dropped, small and large magnitudes use a three-digit
// exponent ("2.e-002", "1.e+010"). The same text on every target; see FormatGcvt.
MFCQMUTILS_API CString& fltstr(float v, int digits, CString& out);
MFCQMUTILS_API CString& fltstr(double v, int digits, CString& out);
namespace qm {
// The portable _gcvt_s behind fltstr: writes into buf (bufSize characters including the NUL)
// and returns 0, or writes "" and returns 34 (ERANGE) when digits is negative, is not below
// bufSize, or the text would not fit.
MFCQMUTILS_API int FormatGcvt(double v, int digits, char* buf, int bufSize);
}  // namespace qm
// Parses a plain decimal number (optional blanks and one currency mark, "$" or "?", before or
// after it); `decimals` receives the length of the text as passed minus the point's position
// in the trimmed text, less one, so blanks on either side and a trailing currency mark count
// ("$12.50" 2, "  1.5" 3). Text that is not a number gives DBL_MIN (<cfloat>), the smallest
// positive normalised double (bit pattern 0x0010000000000000).
MFCQMUTILS_API double StrToDouble(const CString& s, int& decimals);
// Non-zero when s is a decimal number with at most intDigits characters before the
// separator and at most fracDigits after it.
MFCQMUTILS_API int IsValidDouble(const char* s, int intDigits, int fracDigits);

// The two rounding helpers live in namespace qm because the C library already owns
// ::round(double) with a different return type.
namespace qm {
// Nearest integer; halves go up (2.5 -> 3, -2.5 -> -2).
MFCQMUTILS_API int round(double x);
// Rounds to `decimals` places in single precision; negative values are cut toward zero.
MFCQMUTILS_API float round(float x, int decimals);
}  // namespace qm

// ---- Integer parsing (the cursor is advanced in place) -----------------------------------

// Optional blanks and sign, up to 10 digits with thousands commas; LONG_MIN on failure.
MFCQMUTILS_API LONG ScanIntLong(const char*& p);
// Unsigned value below 65535 starting at a digit; 0xFFFFFFFF otherwise.
MFCQMUTILS_API unsigned int ScanInt(const char*& p);
// A "SEGMENT:OFFSET" pointer text in upper-case hexadecimal; nullptr when absent.
MFCQMUTILS_API void* ScanPtr(char*& p);
// Every character taken as a decimal digit, unchecked.
MFCQMUTILS_API DWORD Str2DWORD(CString s);

// ---- Sizes and counters -------------------------------------------------------------------

// Byte count with "", "K", "M" or "G" ("1.5K").
MFCQMUTILS_API void GetSizeText(CString& out, double bytes);
// Byte count with "", "K", "M", "G" or "T".
MFCQMUTILS_API CString kmgSize(__int64 bytes);
// Bytes the framework archive's count form needs for n: 2 or 6.
MFCQMUTILS_API LONG GetCountDiskSizeEstimate(DWORD n);
// "st", "nd", "rd" or "th" for |n|.
MFCQMUTILS_API CString NumSuffix(int n);
// Alphabetic counter: 1 "a", 26 "z", 27 "aa", 28 "bb". buf must hold (n - 1) / 26 + 2 chars.
MFCQMUTILS_API void AlphaFormat(char* buf, int n, int upper);

// ---- Escaped one-line text ----------------------------------------------------------------

// Escapes control bytes and backslashes of src into dst; returns the NUL written at the end.
// dst must hold limit + 4 characters (an escape may carry the output past limit).
MFCQMUTILS_API char* atofa(const char* src, char* dst, int limit, bool extended);
// Reverses atofa; dst must hold strlen(src) + 1 characters. Returns the NUL written.
MFCQMUTILS_API char* fatoa(const char* src, char* dst, bool extended);
MFCQMUTILS_API CString atofa(const CString& s, bool extended);
MFCQMUTILS_API CString fatoa(const CString& s, bool extended);
