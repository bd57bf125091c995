// CDIBitmap on the clipboard: CF_DIB blocks, whose bytes are the packed DIB that Save writes
// without a file header.
#include "utils/common/CVLogger.h"
#include "utils/common/DIB.h"
#include "utils/framework/CSharedFile.h"
#include "utils/framework/CWnd.h"
#include "utils/platform/clipboard.h"
#include "utils/platform/globalmem.h"

#define QM_SOURCE_MODULE "Common\\DIB"

namespace plat = qm::platform;

bool CDIBitmap::IsGetFromClipboardAvailable() { return plat::ClipboardIsFormatAvailable(CF_DIB) != FALSE; }

bool CDIBitmap::GetFromClipboard(CWnd* pWnd) {
    CVASSERT(!IsValid());
    if (!IsGetFromClipboardAvailable()) return false;
    if (!plat::ClipboardOpen(pWnd ? pWnd->GetSafeHwnd() : nullptr)) return false;
    HGLOBAL h = plat::ClipboardGetData(CF_DIB);
    if (!h) {
        plat::ClipboardClose();
        return false;
    }
    bool loaded = false;
    {
        CSharedFile file(GMEM_MOVEABLE, 4096);
        file.SetHandle(h, FALSE);
        // Load reads nothing past the block: a block too short for the DIB it describes is
        // refused. A framework exception from the file counts as a failed load.
        try {
            loaded = Load(file, false);
        } catch (CException* e) {
            e->Delete();
            loaded = false;
        }
        file.Detach();  // the clipboard keeps its block
    }
    bool closed = plat::ClipboardClose() != FALSE;
    return loaded && closed;
}

bool CDIBitmap::SetToClipboard(CWnd* pWnd) {
    // An empty bitmap has no DIB to put.
    if (!IsValid()) return false;
    if (!plat::ClipboardOpen(pWnd ? pWnd->GetSafeHwnd() : nullptr)) return false;
    plat::ClipboardEmpty();
    CSharedFile file(GMEM_DDESHARE, 4096);
    try {
        Save(file, false);
    } catch (CException* e) {
        e->Delete();
        plat::ClipboardClose();
        return false;
    }
    HGLOBAL h = file.Detach();
    if (!plat::ClipboardSetData(CF_DIB, h)) {
        // Refused: the block goes back to the file, which frees it.
        file.SetHandle(h);
        plat::ClipboardClose();
        return false;
    }
    return plat::ClipboardClose() != FALSE;
}

bool CDIBitmap::SetToClipboard(const CRect& rect, CWnd* pWnd) {
    // A rectangle of the bitmap's own size puts the whole bitmap, wherever it lies.
    if (rect.Width() == GetWidth() && rect.Height() == GetHeight()) return SetToClipboard(pWnd);
    CDIBitmap part;
    part.Copy(*this, rect);
    return part.SetToClipboard(pWnd);
}
