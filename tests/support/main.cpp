// Entry point of every test program: the locale is pinned to en-US on every machine.
#include <gtest/gtest.h>

#include "utils/platform/locale.h"

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    qm::platform::PinLocaleToEnglishUS();
    return RUN_ALL_TESTS();
}
