// The user's locale settings, read item by item as GetLocaleInfoA(LOCALE_USER_DEFAULT, ...)
// reads them, and pinnable so that a host or a test sees fixed values on every target.
#pragma once

#include "utils/framework/winnls.h"
#include "utils/framework/wintypes.h"
#include "utils/platform/host.h"

namespace qm::platform {


// The backend's own reading of the system locale, without pins (same return convention).
int NativeUserLocaleInfo(LCTYPE item, char* buf, int bufSize);
// The en-US text of an item, or nullptr when the item is not one the library reads.
const char* EnglishUSLocaleInfo(LCTYPE item);
// Copies text into buf by the return convention above.
int CopyLocaleText(const char* text, char* buf, int bufSize);

}  // namespace qm::platform
