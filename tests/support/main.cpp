// Entry point of every test program: the process-wide temporary-file list is detached from
// whatever list file it adopted at load, and the locale is pinned to en-US on every machine.
#include <gtest/gtest.h>

#include "utils/common/TempList.h"
#include "utils/platform/locale.h"

#if defined(QM_TEST_HOME) && defined(QM_TEST_ENVIRONMENT_LINE)
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

namespace {

// ctest gives every test program a HOME and XDG folders in the build folder, a pinned time
// zone and locale, and no display. Started by hand, a program would put its trash, registry
// store and documents in the user's own folders: it sets the same environment and starts
// itself again, so that everything the library reads at load sees it too.
void EnterTestEnvironment(char** argv) {
    const char* home = std::getenv("HOME");
    if (home && !std::strcmp(home, QM_TEST_HOME)) return;
    const std::string line = QM_TEST_ENVIRONMENT_LINE;
    for (std::size_t from = 0; from <= line.size();) {
        std::size_t end = line.find('|', from);
        if (end == std::string::npos) end = line.size();
        const std::string item = line.substr(from, end - from);
        const std::size_t eq = item.find('=');
        if (eq != std::string::npos) setenv(item.substr(0, eq).c_str(), item.c_str() + eq + 1, 1);
        from = end + 1;
    }
    execv("/proc/self/exe", argv);
    std::fprintf(stderr, "cannot start again in the test environment; running with HOME=%s\n", QM_TEST_HOME);
}

}  // namespace
#endif

int main(int argc, char** argv) {
#if defined(QM_TEST_HOME) && defined(QM_TEST_ENVIRONMENT_LINE)
    EnterTestEnvironment(argv);
#endif
    // A list file in the folder the test was started from is not ours to act on.
    DetachTempListInstance();
    testing::InitGoogleTest(&argc, argv);
    qm::platform::PinLocaleToEnglishUS();
    return RUN_ALL_TESTS();
}
