// UrlDecode, and the path and URL conversions that use it, on arbitrary bytes.
#include <cstddef>
#include <cstdint>
#include <cstdlib>

#include "utils/common/CVLogger.h"
#include "utils/common/utils_mail.h"

namespace {
// A path too long for the URL buffer is reported; the reports are expected here.
void Quiet(const char*, const char*, int) {}
}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const bool quiet = (SetCvAssertSink(Quiet), true);
    (void)quiet;
    CString s(reinterpret_cast<const char*>(data), (int)size);
    // Decoding never makes text longer.
    if (UrlDecode(s).GetLength() > s.GetLength()) std::abort();
    CString text(reinterpret_cast<const char*>(data), (int)size);
    CString url = Path2Url(text);
    Url2Path(url);
    Url2Path(text);
    UlrCanonize(text);
    return 0;
}
