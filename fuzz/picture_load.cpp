// Loads arbitrary bytes as a picture with CreateFromAnyFile. A picture that loads must have
// a positive size and exactly the rows its header describes; anything else must be refused
// with the bitmap left empty, never read or written outside a buffer.
#include <cstddef>
#include <cstdint>
#include <cstdlib>

#include "quiet_reports.h"
#include "utils/common/DIB.h"
#include "utils/platform/host.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    qmfuzz::QuietReports();
    IStream* stream = qm::platform::CreateMemoryStream(data, size);
    if (!stream) return 0;
    CDIBitmap bmp;
    int loaded = bmp.CreateFromAnyFile(stream);
    stream->Release();
    if (loaded) {
        if (!bmp.IsValid() || bmp.GetWidth() < 1 || bmp.GetHeight() < 1) std::abort();
        if (bmp.GetBitsSize() != bmp.DWAlignedBytesPerLine() * (DWORD)bmp.GetHeight()) std::abort();
    } else if (bmp.IsValid()) {
        std::abort();
    }
    return 0;
}
