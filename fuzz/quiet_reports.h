// Silences the library's assertion and trace reports for a fuzz target: bad input is
// expected to be reported, and the reports would only slow the run down.
#pragma once

#include "utils/common/CVLogger.h"

namespace qmfuzz {

inline void QuietAssert(const char*, const char*, int) {}
inline void QuietTrace(const char*) {}

// Call at the top of LLVMFuzzerTestOneInput; installs the quiet sinks once.
inline void QuietReports() {
    static bool ready = [] {
        SetCvAssertSink(&QuietAssert);
        SetCvTraceSink(&QuietTrace);
        return true;
    }();
    (void)ready;
}

}  // namespace qmfuzz
