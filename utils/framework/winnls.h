// Locale item identifiers of GetLocaleInfoA (LCTYPE, LOCALE_USER_DEFAULT, LOCALE_S*/I*).
// Like every Win32 types header of the framework subset, it takes them from <windows.h> on
// Windows (through wintypes.h), so that a Windows host that includes both sees one set of
// definitions, and defines the same values itself elsewhere.
#pragma once

#include "utils/framework/wintypes.h"

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
