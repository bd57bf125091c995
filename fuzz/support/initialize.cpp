// Linked into every fuzz target: the process-wide temporary-file list lets go of whatever list
// file it adopted in the folder the fuzzer was started from, and the clipboard stays inside the
// process (never the desktop's, whatever DISPLAY says), before the first input runs.
#include "utils/common/TempList.h"
#include "utils/platform/clipboard.h"

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    DetachTempListInstance();
    qm::platform::ClipboardUseDisplay(nullptr);
    return 0;
}
