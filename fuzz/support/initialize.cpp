// Linked into every fuzz target: the process-wide temporary-file list lets go of whatever list
// file it adopted in the folder the fuzzer was started from, before the first input runs.
#include "utils/common/TempList.h"

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    DetachTempListInstance();
    return 0;
}
