// Registered clipboard formats: a name (compared without case) gets one number at or above
// 0xC000 for the life of the session (RegisterClipboardFormat), and the name of a registered
// number back (GetClipboardFormatName). Where the system has no clipboard the backend numbers
// the names itself, in the process.
#pragma once

#include "utils/framework/wintypes.h"

namespace qm::platform {

// 0 for a null or empty name.
UINT ClipboardRegisterFormat(const char* name);
// The length copied (without the terminator, cut to fit), 0 for a number that is not a
// registered format.
int ClipboardFormatName(UINT format, char* buffer, int bufferLength);

}  // namespace qm::platform
