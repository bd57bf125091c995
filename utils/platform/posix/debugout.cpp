#include "utils/platform/debugout.h"

#include <cstdio>

namespace qm::platform {

void WriteDebugOutput(const char* text) {
    std::fputs(text ? text : "", stderr);
    std::fflush(stderr);
}

}  // namespace qm::platform
