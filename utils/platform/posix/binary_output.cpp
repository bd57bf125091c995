#include "utils/platform/host.h"

namespace qm::platform {

// Standard output carries bytes as they are here.
void SetStandardOutputBinary() {}

}  // namespace qm::platform
