#include "utils/platform/clipboard_text.h"

#include <cstring>

#include "utils/platform/codepage.h"
#include "utils/platform/globalmem.h"

namespace qm::platform {

bool ClipboardIsTextFormat(UINT format) {
    return format == CF_TEXT || format == CF_OEMTEXT || format == CF_UNICODETEXT;
}

UINT ClipboardTextSource(UINT wanted, bool hasText, bool hasOemText, bool hasUnicodeText) {
    if (!ClipboardIsTextFormat(wanted)) return 0;
    if (hasUnicodeText && wanted != CF_UNICODETEXT) return CF_UNICODETEXT;
    if (hasText && wanted != CF_TEXT) return CF_TEXT;
    if (hasOemText && wanted != CF_OEMTEXT) return CF_OEMTEXT;
    return 0;
}

std::u16string ClipboardTextOfBlock(UINT from, const void* data, std::size_t size) {
    if (!data) return {};
    if (from == CF_UNICODETEXT) {
        std::u16string units;
        const auto* p = (const unsigned char*)data;
        for (std::size_t i = 0; i + 1 < size; i += 2) {
            char16_t u = (char16_t)(p[i] | (p[i + 1] << 8));
            if (u == 0) break;
            units += u;
        }
        return units;
    }
    const char* p = (const char*)data;
    const void* nul = std::memchr(p, 0, size);
    std::size_t length = nul ? (std::size_t)((const char*)nul - p) : size;
    return AnsiToUtf16(p, length, from == CF_OEMTEXT ? kCodePageOem : kCodePageAnsi);
}

HGLOBAL ClipboardTextBlock(UINT to, const std::u16string& text) {
    std::string bytes;
    if (to == CF_UNICODETEXT) {
        bytes.resize(text.size() * 2);
        for (std::size_t i = 0; i < text.size(); ++i) {
            bytes[2 * i] = (char)(text[i] & 0xFF);
            bytes[2 * i + 1] = (char)(text[i] >> 8);
        }
        bytes.append(2, '\0');
    } else {
        bytes = Utf16ToAnsi(text.data(), text.size(), to == CF_OEMTEXT ? kCodePageOem : kCodePageAnsi);
        bytes += '\0';
    }
    HGLOBAL h = GlobalMemAlloc(GMEM_MOVEABLE, bytes.size());
    if (!h) return nullptr;
    if (void* p = GlobalMemLock(h)) {
        std::memcpy(p, bytes.data(), bytes.size());
        GlobalMemUnlock(h);
        return h;
    }
    GlobalMemFree(h);
    return nullptr;
}

HGLOBAL ClipboardConvertText(UINT from, HGLOBAL block, UINT to) {
    const void* p = GlobalMemLock(block);
    if (!p) return nullptr;
    std::u16string text = ClipboardTextOfBlock(from, p, GlobalMemSize(block));
    GlobalMemUnlock(block);
    return ClipboardTextBlock(to, text);
}

}  // namespace qm::platform
