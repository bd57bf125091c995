#include <fcntl.h>
#include <io.h>

#include <cstdio>

#include "utils/platform/host.h"

namespace qm::platform {

void SetStandardOutputBinary() {
    std::fflush(stdout);
    _setmode(_fileno(stdout), _O_BINARY);
}

}  // namespace qm::platform
