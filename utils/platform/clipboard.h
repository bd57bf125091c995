// The clipboard: open (with an owner window or none), empty, close, and global memory blocks
// stored under a format, with user32's rules and results. Where the system has no clipboard
// the backend keeps one inside the process: blocks tagged with their format, freed when the
// clipboard is emptied. The clipboard must be open (by the calling thread) to read or write
// it; data may be put without an owner window, as Wine allows.
//
// POSIX with an X display (DISPLAY set and reachable): the clipboard is the desktop's CLIPBOARD
// selection. Closing the clipboard after a change takes the selection and offers the text as
// UTF8_STRING, text/plain;charset=utf-8, STRING (Latin-1) and TEXT, and a CF_DIB as image/bmp
// (with its file header); a worker thread answers other programs until one of them takes the
// selection. Opening it while another program owns the selection reads that program's text
// and pictures on demand (each request waits at most a second for the owner).
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
// POSIX: makes the clipboard the CLIPBOARD selection of this X display (null or "": the
// in-process clipboard), instead of the choice made from DISPLAY at first use. For tests.
void ClipboardUseDisplay(const char* display);

}  // namespace qm::platform
