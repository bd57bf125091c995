// Arbitrary bytes as a caller's packed DIB: the block is extended with zeros to the length
// its header claims (the caller's side of the contract), attached, every pixel is read, and
// copies go through the operations that read the whole block.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <vector>

#include "quiet_reports.h"
#include "utils/common/DIB.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    qmfuzz::QuietReports();
    if (size < sizeof(BITMAPINFOHEADER)) return 0;
    BITMAPINFOHEADER h;
    std::memcpy(&h, data, sizeof h);
    bool masks = h.biCompression == BI_BITFIELDS && (h.biBitCount == 16 || h.biBitCount == 32);
    std::uint64_t colours = h.biClrUsed ? h.biClrUsed : h.biBitCount <= 8 ? 1u << h.biBitCount : 0;
    std::uint64_t info = (std::uint64_t)h.biSize + (masks ? 12 : 0) + 4 * colours;
    std::uint64_t stride = h.biWidth > 0 ? ((std::uint64_t)h.biWidth * h.biBitCount + 31) / 32 * 4 : 0;
    std::uint64_t need = info + stride * (std::uint64_t)(h.biHeight > 0 ? h.biHeight : 0);
    // Blocks up to 64 KiB and pixel walks up to 64 x 64 reach every depth, mask and palette
    // path; larger ones only repeat the same rows, and each run would zero and walk megabytes.
    if (need > (1u << 16)) return 0;
    // Exactly the claimed length (never less than the input), so any read past it is caught.
    std::vector<BYTE> block(std::max<std::uint64_t>(need, size));
    std::memcpy(block.data(), data, size);
    auto* pBI = reinterpret_cast<BITMAPINFOHEADER*>(block.data());
    CDIBitmap b;
    if (!b.Attach(pBI)) return 0;
    if ((std::uint64_t)b.GetWidth() * b.GetHeight() <= (1u << 12)) {
        for (int y = 0; y < b.GetHeight(); ++y)
            for (int x = 0; x < b.GetWidth(); ++x) {
                (void)b.GetPixelValue(CPoint(x, y));
                (void)b.GetPixelColor(CPoint(x, y));
            }
        CDIBitmap copy;
        copy.CopyFrom(b);
        copy.Mirror();
        copy.Rotate(CDIBitmap::eRotate270);
        copy.AdjustBrightness(17);
        CDIBitmap part(b, CRect(0, 0, 3, 2));
        copy.Paste(part, CPoint(0, 0));
        copy.CanvasSize(1, -1, 2, -2, RGB(1, 2, 3));
    }
    if (b.Detach() != pBI) __builtin_trap();
    return 0;
}
