// The debugger's output channel: OutputDebugStringA on Windows, standard error on POSIX.
#pragma once

namespace qm::platform {

void WriteDebugOutput(const char* text);

}  // namespace qm::platform
