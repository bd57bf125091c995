// Entry point of every test program: the process-wide temporary-file list is detached from
// whatever list file it adopted at load, and the locale is pinned to en-US on every machine.
#include <gtest/gtest.h>

#include "utils/common/TempList.h"
#include "utils/platform/locale.h"

int main(int argc, char** argv) {
    // A list file in the folder the test was started from is not ours to act on.
    DetachTempListInstance();
    testing::InitGoogleTest(&argc, argv);
    qm::platform::PinLocaleToEnglishUS();
    return RUN_ALL_TESTS();
}
