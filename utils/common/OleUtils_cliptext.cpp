// Clipboard text of WndUtils: CF_TEXT in a movable global block with CR LF line ends.
#include <algorithm>
#include <cstring>
#include <string>

#include "utils/common/CVLogger.h"
#include "utils/common/WndUtils.h"
#include "utils/framework/CWnd.h"
#include "utils/platform/clipboard.h"
#include "utils/platform/globalmem.h"

#define QM_SOURCE_MODULE "Common\\OleUtils"

namespace {

namespace plat = qm::platform;

// The text with every LF that does not follow a CR turned into CR LF.
std::string WithCrLf(const char* text) {
    std::string out;
    for (const char* p = text; *p; ++p) {
        if (*p == '\n' && (p == text || p[-1] != '\r')) out += '\r';
        out += *p;
    }
    return out;
}

HWND OwnerHandle(CWnd* pOwner) { return pOwner ? pOwner->GetSafeHwnd() : nullptr; }

}  // namespace

BOOL WndUtils::SetClipboardText(LPCTSTR lpszText, CWnd* pOwner) {
    if (!CVASSERT(lpszText)) return FALSE;
    std::string text = WithCrLf(lpszText);
    HGLOBAL block = nullptr;
    if (!text.empty()) {
        block = plat::GlobalMemAlloc(GMEM_MOVEABLE, text.size() + 1);
        char* p = block ? (char*)plat::GlobalMemLock(block) : nullptr;
        if (!p) {
            if (block) plat::GlobalMemFree(block);
            return FALSE;
        }
        std::memcpy(p, text.c_str(), text.size() + 1);
        plat::GlobalMemUnlock(block);
    }
    if (!plat::ClipboardOpen(OwnerHandle(pOwner))) {
        if (block) plat::GlobalMemFree(block);
        return FALSE;
    }
    BOOL ok = plat::ClipboardEmpty();
    if (ok && block) {
        ok = plat::ClipboardSetData(CF_TEXT, block) != nullptr;
        if (!ok) plat::GlobalMemFree(block);
    } else if (block) {
        plat::GlobalMemFree(block);
    }
    plat::ClipboardClose();
    return ok;
}

BOOL WndUtils::GetClipboardText(CString& strText, CWnd* pOwner) {
    strText.Empty();
    if (!plat::ClipboardOpen(OwnerHandle(pOwner))) return FALSE;
    BOOL ok = FALSE;
    HGLOBAL block = plat::ClipboardGetData(CF_TEXT);
    if (const char* p = block ? (const char*)plat::GlobalMemLock(block) : nullptr) {
        std::size_t size = plat::GlobalMemSize(block);
        const void* nul = std::memchr(p, 0, size);
        std::size_t length = nul ? (std::size_t)((const char*)nul - p) : size;
        strText = CString(p, (int)std::min<std::size_t>(length, 0x7FFFFFFF));
        plat::GlobalMemUnlock(block);
        ok = TRUE;
    }
    plat::ClipboardClose();
    return ok;
}
