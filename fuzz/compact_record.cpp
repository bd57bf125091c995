// Loads compact point, size and rectangle records from arbitrary bytes. The first byte picks
// the order of record kinds; the rest is the archive. Every record that loads must store back
// to bytes that load to the same values, and loading must end with the archive's end-of-data
// exception or the data's end, never an out-of-bounds read.
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "utils/common/mfcutils.h"

namespace {

std::vector<BYTE> StoreRect(CRect rc) {
    CMemFile file;
    {
        CArchive ar(&file, CArchive::store);
        SmartSerializeRect(ar, rc);
    }
    ULONGLONG n = file.GetLength();
    BYTE* block = file.Detach();
    std::vector<BYTE> out(block, block + n);
    std::free(block);
    return out;
}

void CheckRoundTrip(const CRect& rc) {
    std::vector<BYTE> bytes = StoreRect(rc);
    if (bytes.empty() || bytes.size() > 17) std::abort();
    CMemFile in(bytes.data(), (UINT)bytes.size());
    CArchive ar(&in, CArchive::load);
    CRect back(1, 2, 3, 4);
    SmartSerializeRect(ar, back);
    if (!(back == rc) || !ar.IsBufferEmpty()) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size < 1 || size > 4096) return 0;
    unsigned order = data[0];
    // The block the file reads from is a copy of exactly the input, so any read past its end
    // is caught by the address sanitizer.
    std::vector<BYTE> body(data + 1, data + size);
    CMemFile file(body.empty() ? nullptr : body.data(), (UINT)body.size());
    CArchive ar(&file, CArchive::load, 16);
    try {
        for (unsigned i = 0; i < 1000; ++i) {
            switch ((order >> (2 * (i % 4))) & 3) {
            case 0: {
                CPoint pt;
                SmartSerializePoint(ar, pt);
                CheckRoundTrip(CRect(pt.x, pt.y, 0, 0));
                break;
            }
            case 1: {
                long a = 0, b = 0;
                SmartSerializeSize(ar, a, b);
                CheckRoundTrip(CRect((int)a, (int)b, 0, 0));
                break;
            }
            case 2: {
                int a = 0, b = 0;
                SmartSerializeSize(ar, a, b);
                CheckRoundTrip(CRect(a, b, 0, 0));
                break;
            }
            default: {
                CRect rc;
                SmartSerializeRect(ar, rc);
                CheckRoundTrip(rc);
                break;
            }
            }
        }
    } catch (CArchiveException* e) {
        if (e->m_cause != CArchiveException::endOfFile) std::abort();
        e->Delete();
    }
    return 0;
}
