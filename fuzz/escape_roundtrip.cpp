// The escaped one-line text: decoding an encoding gives the original text back, in the plain
// and the extended form, through both the pointer and the string interfaces; an encoder with
// a small limit stays inside limit + 3 characters and the terminator; decoding arbitrary text
// stays inside the input's length.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "utils/common/utils_numbers.h"

namespace {

void Check(bool condition) {
    if (!condition) std::abort();
}

void RoundTrip(const char* text, size_t len, bool extended) {
    // Pointer form, buffer sized exactly for the worst case (ASan catches any overrun).
    int limit = (int)(4 * len);
    std::vector<char> encoded((size_t)limit + 4);
    char* end = atofa(text, encoded.data(), limit, extended);
    size_t encodedLen = (size_t)(end - encoded.data());
    Check(encodedLen <= (size_t)limit && *end == '\0');
    for (size_t i = 0; i < encodedLen; ++i) Check((unsigned char)encoded[i] >= 32);
    std::vector<char> decoded(encodedLen + 1);
    char* dend = fatoa(encoded.data(), decoded.data(), extended);
    Check((size_t)(dend - decoded.data()) == len && std::memcmp(decoded.data(), text, len) == 0);

    // String form.
    CString s(text);
    Check(fatoa(atofa(s, extended), extended) == s);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size == 0) return 0;
    // The first byte picks a small encoder limit; the rest, up to its first NUL, is the text.
    int smallLimit = data[0] % 16;
    std::vector<char> text((const char*)data + 1, (const char*)data + size);
    text.push_back('\0');
    size_t len = std::strlen(text.data());

    RoundTrip(text.data(), len, false);
    RoundTrip(text.data(), len, true);

    std::vector<char> limited((size_t)smallLimit + 4);
    char* end = atofa(text.data(), limited.data(), smallLimit, (data[0] & 0x80) != 0);
    Check(end >= limited.data() && end < limited.data() + limited.size());

    // Arbitrary text through the decoder: the output never exceeds the input.
    std::vector<char> out(len + 1);
    char* dend = fatoa(text.data(), out.data(), (data[0] & 1) != 0);
    Check((size_t)(dend - out.data()) <= len);
    return 0;
}
