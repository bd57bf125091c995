// Arbitrary bytes put on the clipboard as each text format in turn; every other text format is
// read back. A conversion must never read past the block, and what it gives must end in a NUL
// within its own block.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "quiet_reports.h"
#include "utils/common/WndUtils.h"
#include "utils/platform/clipboard.h"
#include "utils/platform/globalmem.h"

namespace plat = qm::platform;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    qmfuzz::QuietReports();
    if (size == 0 || size > (1u << 16)) return 0;
    for (UINT put : {CF_TEXT, CF_OEMTEXT, CF_UNICODETEXT}) {
        HGLOBAL h = plat::GlobalMemAlloc(GMEM_MOVEABLE, size);
        if (!h) return 0;
        std::memcpy(plat::GlobalMemLock(h), data, size);
        plat::GlobalMemUnlock(h);
        plat::ClipboardOpen(nullptr);
        plat::ClipboardEmpty();
        if (!plat::ClipboardSetData(put, h)) plat::GlobalMemFree(h);
        for (UINT get : {CF_TEXT, CF_OEMTEXT, CF_UNICODETEXT}) {
            if (get == put) continue;
            HGLOBAL got = plat::ClipboardGetData(get);
            if (!got) std::abort();  // text is always there in every text format
            const char* p = (const char*)plat::GlobalMemLock(got);
            std::size_t n = plat::GlobalMemSize(got);
            const std::size_t unit = get == CF_UNICODETEXT ? 2 : 1;
            if (!p || n < unit || std::memcmp(p + n - unit, "\0\0", unit) != 0) std::abort();
            plat::GlobalMemUnlock(got);
        }
        plat::ClipboardClose();
        CString text;
        WndUtils::GetClipboardText(text);
        if (std::strlen((LPCTSTR)text) != (std::size_t)text.GetLength()) std::abort();
    }
    plat::ClipboardOpen(nullptr);
    plat::ClipboardEmpty();
    plat::ClipboardClose();
    return 0;
}
