// Numbers to text and text to numbers: fixed-width digit writers, thousands grouping, real
// numbers with the user's decimal separator, byte sizes, ordinals, alphabetic counters,
// strict decimal validation, cursor-advancing scanners and the escaped one-line text form.
//
// Widths follow the Windows data model: LONG and DWORD are 32 bits on every build, so the
// sentinels (LONG_MIN = 0x80000000, 0xFFFFFFFF) are the same everywhere.
#pragma once

#include "utils/framework/CString.h"
#include "utils/framework/wintypes.h"
#include "utils/module/export.h"

// ---- Integer writers (no NUL written; return the pointer just past the last digit) -------

// "-" for a negative value, then exactly `width` decimal digits of the magnitude, zero-padded.
MFCQMUTILS_API char* numstr(LONG v, char* buf, int width);
// Exactly `width` upper-case hexadecimal digits, zero-padded; no sign.
MFCQMUTILS_API char* numstrx(DWORD v, char* buf, int width);
