// Command-run-aware search on arbitrary bytes: the first byte's low bits pick the pattern
// length, the rest is pattern then text. The result must lie inside the text, and when the
// text holds no command runs it must agree with the plain search.
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>

#include "utils/common/CVLogger.h"
#include "utils/common/utils_text.h"

namespace {
void Quiet(const char*, const char*, int) {}
}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size < 1) return 0;
    SetCvAssertSink(Quiet);
    size_t patternLength = data[0] % 8;
    if (patternLength > size - 1) patternLength = size - 1;
    const std::string pattern(reinterpret_cast<const char*>(data + 1), patternLength);
    const std::string text(reinterpret_cast<const char*>(data + 1 + patternLength), size - 1 - patternLength);

    const char* t = text.c_str();
    const size_t visible = std::strlen(t);
    const char* hit = InStringSkipCommands(pattern.c_str(), t);
    if (hit && (hit < t || hit > t + visible)) std::abort();
    const char* plain = InString(pattern.c_str(), t);
    if (plain && (plain < t || plain >= t + visible + (visible == 0))) std::abort();
    const bool hasRuns = std::memchr(t, '\x01', visible) != nullptr;
    if (!hasRuns && !std::memchr(pattern.c_str(), '\x01', std::strlen(pattern.c_str())) && hit != plain) std::abort();
    return 0;
}
