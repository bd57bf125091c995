// The user's locale settings, read item by item as GetLocaleInfoA(LOCALE_USER_DEFAULT, ...)
// reads them, and pinnable so that a host or a test sees fixed values on every target.
#pragma once

#include "utils/framework/winnls.h"
#include "utils/framework/wintypes.h"
#include "utils/framework/export.h"

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
