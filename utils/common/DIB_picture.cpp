// CDIBitmap from any picture the system loader reads: the picture is rendered into a
// screen-compatible bitmap and its rows fetched, so the result has the screen's depth.
#include <cstring>
#include <vector>

#include "utils/common/CVLogger.h"
#include "utils/common/DIB.h"
#include "utils/platform/gdi.h"
#include "utils/platform/picture.h"

#define QM_SOURCE_MODULE "Common\\DIB"

namespace plat = qm::platform;

int CDIBitmap::CreateFromAnyFile(IStream* pStream) {
    if (!pStream) return 0;
    LARGE_INTEGER zero{};
    pStream->Seek(zero, STREAM_SEEK_SET, nullptr);
    plat::Picture* pPicture = plat::PictureLoad(pStream);
    if (!CVASSERT(pPicture != NULL)) return 0;
    LONG hmWidth = 0, hmHeight = 0;
    int result = 0;
    if (plat::PictureExtent(pPicture, &hmWidth, &hmHeight)) {
        HDC hScreen = plat::GdiGetScreenDC();
        int cx = MulDiv(hmWidth, plat::GdiGetDeviceCaps(hScreen, LOGPIXELSX), 2540);
        int cy = MulDiv(hmHeight, plat::GdiGetDeviceCaps(hScreen, LOGPIXELSY), 2540);
        HDC hMem = plat::GdiCreateCompatibleDC(hScreen);
        HBITMAP hBitmap = cx > 0 && cy > 0 ? plat::GdiCreateCompatibleBitmap(hScreen, cx, cy) : nullptr;
        if (hMem && hBitmap) {
            HGDIOBJ hOld = plat::GdiSelectObject(hMem, hBitmap);
            plat::PictureRender(pPicture, hMem, 0, 0, cx, cy, 0, hmHeight, hmWidth, -hmHeight);
            plat::GdiSelectObject(hMem, hOld);
            // GDI may answer the format question with masks or a colour table after the
            // header, so the header is asked for in a block with room for them.
            std::vector<unsigned char> info(sizeof(BITMAPINFOHEADER) + 256 * sizeof(RGBQUAD), 0);
            auto* bi = (BITMAPINFOHEADER*)info.data();
            bi->biSize = sizeof(BITMAPINFOHEADER);
            if (plat::GdiGetDIBits(hMem, hBitmap, 0, 0, nullptr, (BITMAPINFO*)bi, DIB_RGB_COLORS) && bi->biWidth > 0 &&
                bi->biHeight > 0 && Create(bi->biWidth, bi->biHeight, bi->biBitCount)) {
                int rows = plat::GdiGetDIBits(hMem, hBitmap, 0, (UINT)GetHeight(), m_BmpBits.m_pPtr,
                                              (BITMAPINFO*)m_BmpInfo.m_pBmpInfo, DIB_RGB_COLORS);
                result = rows == GetHeight() ? 1 : 0;
                if (!result) Destroy();
            }
        }
        if (hBitmap) plat::GdiDeleteObject(hBitmap);
        if (hMem) plat::GdiDeleteDC(hMem);
        plat::GdiReleaseScreenDC(hScreen);
    }
    plat::PictureRelease(pPicture);
    return result;
}
