// Reads arbitrary bytes as an object descriptor block. Offsets and sizes pointing outside the
// block must be refused without reading outside it; a block that is accepted, built again
// from what was read, must read back the same.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "quiet_reports.h"
#include "utils/common/OleUtils.h"
#include "utils/platform/globalmem.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    qmfuzz::QuietReports();
    if (size > (1u << 16)) return 0;
    OBJECTDESCRIPTOR od;
    CString type, source;
    if (!OleParseObjectDescriptor(data, size, od, type, source)) {
        if (od.cbSize != 0 || !type.IsEmpty() || !source.IsEmpty()) std::abort();
        return 0;
    }
    if (od.cbSize < 52 || od.cbSize > size) std::abort();
    HGLOBAL h = OleCreateObjectDescriptor(od.clsid, od.dwDrawAspect, od.sizel, od.pointl, od.dwStatus, type, source);
    if (!h) return 0;
    OBJECTDESCRIPTOR again;
    CString type2, source2;
    if (!OleReadObjectDescriptor(h, again, type2, source2)) std::abort();
    // Strings cut at a NUL character read back shorter; the rest must match.
    if (std::memcmp(&again.clsid, &od.clsid, sizeof od.clsid) != 0 || again.dwStatus != od.dwStatus) std::abort();
    if (type2 != type) std::abort();
    if (!source.IsEmpty() && source2 != source) std::abort();
    qm::platform::GlobalMemFree(h);
    return 0;
}
