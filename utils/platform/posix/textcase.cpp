#include "utils/platform/textcase.h"

namespace qm::platform {

namespace {

// Lower-casing of the Western ANSI code page (1252), the table CharLowerA uses there.
unsigned char LowerCp1252(unsigned char c) {
    if (c >= 'A' && c <= 'Z') return (unsigned char)(c + 32);
    if (c >= 0xC0 && c <= 0xDE && c != 0xD7) return (unsigned char)(c + 32);
    switch (c) {
    case 0x8A: return 0x9A;  // S caron
    case 0x8C: return 0x9C;  // OE ligature
    case 0x8E: return 0x9E;  // Z caron
    case 0x9F: return 0xFF;  // Y diaeresis
    default: return c;
    }
}

}  // namespace

void LowerAnsiText(char* text, size_t length) {
    for (size_t k = 0; k < length; ++k) text[k] = (char)LowerCp1252((unsigned char)text[k]);
}

}  // namespace qm::platform
