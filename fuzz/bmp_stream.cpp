// Arbitrary bytes as a whole BMP file read from a COM stream by CreateFromBMPFile; a bitmap
// made from it has every pixel read and goes through the 24-bit conversion and a rotation.
#include <cstddef>
#include <cstdint>

#include "quiet_reports.h"
#include "utils/common/DIB.h"
#include "utils/platform/host.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    qmfuzz::QuietReports();
    IStream* stream = qm::platform::CreateMemoryStream(data, size);
    if (!stream) return 0;
    CDIBitmap b;
    int ok = b.CreateFromBMPFile(stream);
    stream->Release();
    if (!ok) return 0;
    if ((std::uint64_t)b.GetWidth() * b.GetHeight() > (1u << 16)) return 0;
    for (int y = 0; y < b.GetHeight(); ++y)
        for (int x = 0; x < b.GetWidth(); ++x) (void)b.GetPixelColor(CPoint(x, y));
    CDIBitmap c;
    c.CopyAs24Bits(b);
    b.Rotate(CDIBitmap::eRotate90);
    b.Mirror();
    b.AdjustContrastBrightness(30, -20);
    return 0;
}
