// The clipboard's text formats as Windows relates them: CF_TEXT (ANSI, code page 1252),
// CF_OEMTEXT (code page 437) and CF_UNICODETEXT (UTF-16) are one text, so a program asking for
// any of them gets it converted from whichever was put. The POSIX clipboard backends use this
// to answer the formats they were not given, as user32 synthesises them on Windows.
#pragma once

#include <string>

#include "utils/framework/winclipboard.h"

namespace qm::platform {

bool ClipboardIsTextFormat(UINT format);
// The format to convert from when `wanted` is missing, given which text formats are present
// (the first of CF_UNICODETEXT, CF_TEXT, CF_OEMTEXT that is there); 0 when none is.
UINT ClipboardTextSource(UINT wanted, bool hasText, bool hasOemText, bool hasUnicodeText);
// The text of a block of format `from` (CF_TEXT, CF_OEMTEXT: bytes; CF_UNICODETEXT: UTF-16LE
// units) up to its first NUL or the end of the block, as UTF-16. Never reads past the block.
std::u16string ClipboardTextOfBlock(UINT from, const void* data, std::size_t size);
// A new movable block of format `to` holding the text, NUL-terminated; null when the block
// cannot be allocated.
HGLOBAL ClipboardTextBlock(UINT to, const std::u16string& text);
// ClipboardTextBlock(to, ClipboardTextOfBlock(from, block)) for a block of global memory.
HGLOBAL ClipboardConvertText(UINT from, HGLOBAL block, UINT to);

}  // namespace qm::platform
