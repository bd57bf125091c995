// The user's locale settings, read item by item as GetLocaleInfoA(LOCALE_USER_DEFAULT, ...)
// reads them, and pinnable so that a host or a test sees fixed values on every target.
#pragma once

#include "utils/framework/wintypes.h"
#include "utils/module/export.h"

#if !defined(_WIN32)
typedef DWORD LCTYPE;
#define LOCALE_USER_DEFAULT 0x0400
#define LOCALE_SDECIMAL 0x000E
#define LOCALE_STHOUSAND 0x000F
#define LOCALE_IDIGITS 0x0011
#define LOCALE_SCURRENCY 0x0014
#define LOCALE_ICURRDIGITS 0x0019
#define LOCALE_SDATE 0x001D
#define LOCALE_STIME 0x001E
#define LOCALE_SSHORTDATE 0x001F
#define LOCALE_SLONGDATE 0x0020
#define LOCALE_IDATE 0x0021
#define LOCALE_ILDATE 0x0022
#define LOCALE_ITIME 0x0023
#define LOCALE_ITLZERO 0x0025
#define LOCALE_S1159 0x0028
#define LOCALE_S2359 0x0029
#define LOCALE_SDAYNAME1 0x002A
#define LOCALE_SABBREVDAYNAME1 0x0031
#define LOCALE_SMONTHNAME1 0x0038
#define LOCALE_SABBREVMONTHNAME1 0x0044
#define LOCALE_STIMEFORMAT 0x1003
#endif

namespace qm::platform {

// GetLocaleInfoA semantics: copies the item's text with its NUL into buf and returns the
// number of characters copied including the NUL; returns 0 when the item is unknown or buf
// is too small (nothing useful is written then). With bufSize 0 returns the size needed.
MFCQMUTILS_API int GetUserLocaleInfo(LCTYPE item, char* buf, int bufSize);

// Pins an item to a fixed text (nullptr removes the pin); pinned items win over the system.
MFCQMUTILS_API void PinLocaleInfo(LCTYPE item, const char* value);
// Pins every item that the library reads to the en-US values.
MFCQMUTILS_API void PinLocaleToEnglishUS();
MFCQMUTILS_API void UnpinAllLocaleInfo();

// The backend's own reading of the system locale, without pins (same return convention).
int NativeUserLocaleInfo(LCTYPE item, char* buf, int bufSize);
// The en-US text of an item, or nullptr when the item is not one the library reads.
const char* EnglishUSLocaleInfo(LCTYPE item);
// Copies text into buf by the return convention above.
int CopyLocaleText(const char* text, char* buf, int bufSize);

}  // namespace qm::platform
