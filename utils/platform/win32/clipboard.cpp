#include "utils/platform/clipboard.h"

namespace qm::platform {

BOOL ClipboardOpen(HWND owner) { return OpenClipboard(owner); }
BOOL ClipboardClose() { return CloseClipboard(); }
BOOL ClipboardEmpty() { return EmptyClipboard(); }
HGLOBAL ClipboardGetData(UINT format) { return (HGLOBAL)GetClipboardData(format); }
HGLOBAL ClipboardSetData(UINT format, HGLOBAL block) { return (HGLOBAL)SetClipboardData(format, block); }
BOOL ClipboardIsFormatAvailable(UINT format) { return IsClipboardFormatAvailable(format); }

}  // namespace qm::platform
