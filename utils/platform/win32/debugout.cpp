#include "utils/platform/debugout.h"

#include "utils/framework/wintypes.h"

namespace qm::platform {

void WriteDebugOutput(const char* text) { OutputDebugStringA(text ? text : ""); }

}  // namespace qm::platform
