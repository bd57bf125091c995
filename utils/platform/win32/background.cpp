// Background helpers are a POSIX matter: the Windows clipboard keeps what a process put there.
#include "utils/platform/host.h"

namespace qm::platform {

bool ClipboardServedByProcess() { return false; }

bool StartBackgroundHelper(const std::vector<std::string>&, const std::string&, DWORD, std::string* message) {
    if (message) *message = "not needed on this system";
    return false;
}

bool IsBackgroundHelper() { return false; }
void ReportBackgroundReady(bool, const char*) {}

}  // namespace qm::platform
