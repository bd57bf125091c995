// Output helpers shared by qmutil path and qmutil dir.
#pragma once

#include <cstdio>
#include <string>

#include "utils/framework/CString.h"
#include "utils/platform/host.h"

namespace qmutil {

// "  (= /tmp/a.txt)": the Linux path a Windows path names, when the two differ (never on
// Windows itself); "" otherwise.
inline std::string NativeNote(const CString& path) {
    std::string native;
    if (path.IsEmpty() || !qm::platform::ToNativePath(path, native) || native == path.GetString()) return std::string();
    return "  (= " + native + ")";
}

// Reports a failed operation with the system's error code and text; the exit code is 1.
inline int ReportFailure(const char* what, const std::string& path) {
    DWORD error = qm::platform::GetLastError();
    std::printf("%s failed for %s: error %u (%s)\n", what, path.c_str(), (unsigned)error,
                qm::platform::SystemErrorText(error).c_str());
    return 1;
}

}  // namespace qmutil
