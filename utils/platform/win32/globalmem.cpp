#include "utils/platform/globalmem.h"

namespace qm::platform {

HGLOBAL GlobalMemAlloc(UINT flags, SIZE_T bytes) { return GlobalAlloc(flags, bytes); }
HGLOBAL GlobalMemReAlloc(HGLOBAL h, SIZE_T bytes, UINT flags) { return GlobalReAlloc(h, bytes, flags); }
void* GlobalMemLock(HGLOBAL h) { return GlobalLock(h); }
BOOL GlobalMemUnlock(HGLOBAL h) { return GlobalUnlock(h); }
SIZE_T GlobalMemSize(HGLOBAL h) { return GlobalSize(h); }
HGLOBAL GlobalMemFree(HGLOBAL h) { return GlobalFree(h); }

}  // namespace qm::platform
