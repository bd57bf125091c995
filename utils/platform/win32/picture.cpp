#include "utils/platform/picture.h"

#include <olectl.h>

namespace qm::platform {

namespace {
const GUID kIIDPicture = {0x7bf80980, 0xbf32, 0x101a, {0x8b, 0xbb, 0x00, 0xaa, 0x00, 0x30, 0x0c, 0xab}};
}

std::uint64_t SetPictureLoadLimit(std::uint64_t pixels) {
    static std::uint64_t limit = 1ull << 24;
    std::uint64_t previous = limit;
    limit = pixels;
    return previous;
}

Picture* PictureLoad(IStream* stream) {
    IPicture* picture = nullptr;
    if (!stream || FAILED(OleLoadPicture(stream, 0, FALSE, kIIDPicture, (void**)&picture))) return nullptr;
    return (Picture*)picture;
}

bool PictureExtent(Picture* picture, LONG* width, LONG* height) {
    auto* p = (IPicture*)picture;
    OLE_XSIZE_HIMETRIC w = 0;
    OLE_YSIZE_HIMETRIC h = 0;
    if (!p || FAILED(p->get_Width(&w)) || FAILED(p->get_Height(&h))) return false;
    *width = w;
    *height = h;
    return true;
}

bool PictureRender(Picture* picture, HDC hdc, int x, int y, int cx, int cy, LONG xSrc, LONG ySrc, LONG cxSrc,
                   LONG cySrc) {
    auto* p = (IPicture*)picture;
    return p && SUCCEEDED(p->Render(hdc, x, y, cx, cy, xSrc, ySrc, cxSrc, cySrc, nullptr));
}

void PictureRelease(Picture* picture) {
    if (picture) ((IPicture*)picture)->Release();
}

}  // namespace qm::platform
