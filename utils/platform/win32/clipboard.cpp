#include "utils/platform/clipboard.h"
#include "utils/platform/host.h"

namespace qm::platform {

BOOL ClipboardOpen(HWND owner) { return OpenClipboard(owner); }
BOOL ClipboardClose() { return CloseClipboard(); }
BOOL ClipboardEmpty() { return EmptyClipboard(); }
HGLOBAL ClipboardGetData(UINT format) { return (HGLOBAL)GetClipboardData(format); }
HGLOBAL ClipboardSetData(UINT format, HGLOBAL block) { return (HGLOBAL)SetClipboardData(format, block); }
BOOL ClipboardIsFormatAvailable(UINT format) { return IsClipboardFormatAvailable(format); }
void ClipboardUseDisplay(const char*) {}
// The system's clipboard is the desktop's, and keeps what was put there.
bool ClipboardIsDesktop() { return true; }
bool ServeClipboardUntilReplaced(DWORD) { return true; }

}  // namespace qm::platform
