// Arbitrary bytes as a BMP file (first byte odd) or a packed DIB (first byte even) through
// CDIBitmap::Load; a loaded bitmap has every pixel read, is saved, and loads back the same.
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <vector>

#include "quiet_reports.h"
#include "utils/common/DIB.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    qmfuzz::QuietReports();
    if (size == 0) return 0;
    bool header = data[0] & 1;
    std::vector<BYTE> bytes(data + 1, data + size);
    CMemFile file(bytes.data(), (UINT)bytes.size());
    CDIBitmap b;
    if (!b.Load(file, header)) {
        if (b.IsValid()) __builtin_trap();
        return 0;
    }
    if ((std::uint64_t)b.GetWidth() * b.GetHeight() <= (1u << 16)) {
        COLORREF sum = 0;
        for (int y = 0; y < b.GetHeight(); ++y)
            for (int x = 0; x < b.GetWidth(); ++x) sum += b.GetPixelColor(CPoint(x, y)) ^ b.GetPixelValue(CPoint(x, y));
        (void)sum;
    }
    CMemFile out(1024);
    b.Save(out, header);
    out.SeekToBegin();
    CDIBitmap again;
    if (!again.Load(out, header) || again.GetBitsSize() != b.GetBitsSize() ||
        std::memcmp(again.GetBits(), b.GetBits(), b.GetBitsSize()) != 0)
        __builtin_trap();
    return 0;
}
