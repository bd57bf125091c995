// MergeFieldIntoText and ReplaceFields on arbitrary bytes: the input is split at the first two
// 0xFF bytes into marker (or name), value (or data) and text.
#include <cstdint>
#include <cstring>
#include <string>

#include "utils/common/CVLogger.h"
#include "utils/common/utils_text.h"

namespace {
void Quiet(const char*, const char*, int) {}
}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    SetCvAssertSink(Quiet);
    const std::string in(reinterpret_cast<const char*>(data), size);
    const size_t a = in.find('\xFF');
    const size_t b = a == std::string::npos ? std::string::npos : in.find('\xFF', a + 1);
    const std::string first = in.substr(0, a);
    const std::string second = a == std::string::npos ? std::string() : in.substr(a + 1, b == std::string::npos ? std::string::npos : b - a - 1);
    const std::string third = b == std::string::npos ? std::string() : in.substr(b + 1);

    CString text(third.data(), (int)third.size());
    MergeFieldIntoText(text, CString(first.data(), (int)first.size()), CString(second.data(), (int)second.size()));

    CString out(third.data(), (int)third.size());
    ReplaceFields(first.c_str(), second.c_str(), out);
    return 0;
}
