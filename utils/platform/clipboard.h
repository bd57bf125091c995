// The clipboard: open (with an owner window or none), empty, close, and global memory blocks
// stored under a format, with user32's rules and results. Where the system has no clipboard
// the backend keeps one inside the process: blocks tagged with their format, freed when the
// clipboard is emptied. The clipboard must be open (by the calling thread) to read or write
// it; data may be put without an owner window, as Wine allows.
#pragma once

#include "utils/framework/winclipboard.h"

namespace qm::platform {

BOOL ClipboardOpen(HWND owner);
BOOL ClipboardClose();
BOOL ClipboardEmpty();
// The block under the format (the clipboard keeps it), or null.
HGLOBAL ClipboardGetData(UINT format);
// Hands the block to the clipboard; returns it, or null when refused (the caller keeps it).
HGLOBAL ClipboardSetData(UINT format, HGLOBAL block);
BOOL ClipboardIsFormatAvailable(UINT format);

}  // namespace qm::platform
