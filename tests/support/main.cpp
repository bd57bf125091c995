// Entry point of every test program: the locale is pinned to en-US so that the same
// assertions hold on every machine and target; a test that needs other settings pins them
// itself and restores these afterwards.
#include <gtest/gtest.h>

#include "utils/platform/locale.h"

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    qm::platform::PinLocaleToEnglishUS();
    return RUN_ALL_TESTS();
}
