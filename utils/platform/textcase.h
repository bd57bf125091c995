// Lower-casing of 8-bit ANSI text the way the system does it for user-interface names:
// CharLowerA on Windows (the process's ANSI code page), the Western code page 1252 table on
// POSIX.
#pragma once

#include <cstddef>

namespace qm::platform {

// Lower-cases `length` bytes of `text` in place; embedded NUL bytes are kept as they are.
// text[length] must be a NUL (as in a CString's or std::string's buffer).
void LowerAnsiText(char* text, size_t length);

}  // namespace qm::platform
