// Loads arbitrary bytes as a picture with CreateFromAnyFile. A picture that loads must have
// a positive size and exactly the rows its header describes; anything else must be refused
// with the bitmap left empty, never read or written outside a buffer.
#include <cstddef>
#include <cstdint>
#include <cstdlib>

#include "quiet_reports.h"
#include "utils/common/DIB.h"
#include "utils/platform/picture.h"
#include "utils/platform/stream.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    qmfuzz::QuietReports();
    // Pictures up to 256 x 256 reach every decoder path; the default limit of 16 Mi pixels
    // would spend most runs decoding and converting rows of large declared sizes.
    static const bool limited = (qm::platform::SetPictureLoadLimit(1u << 16), true);
    (void)limited;
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
