// ReplaceString on arbitrary bytes (embedded NULs included): two length bytes split the input
// into find, replacement and text; the last byte picks the flags. Checks the count against
// the change in length.
#include <cstdint>
#include <cstdlib>
#include <string>

#include "utils/common/utils_text.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size < 3) return 0;
    const uint8_t flags = data[size - 1];
    size_t findLength = data[0] % 6, replLength = data[1] % 9;
    size_t rest = size - 3;
    if (findLength > rest) findLength = rest;
    rest -= findLength;
    if (replLength > rest) replLength = rest;
    rest -= replLength;
    const char* p = reinterpret_cast<const char*>(data + 2);
    const CString find(p, (int)findLength);
    const CString repl(p + findLength, (int)replLength);
    CString text(p + findLength + replLength, (int)rest);
    const long long before = text.GetLength();

    // A small limit as well, so the guard and the truncation are reached.
    const long long limit = (flags & 4) ? before + (flags >> 3) : QM_MAX_STRING_LENGTH;
    const int n = qm::text::ReplaceStringLimited(text, find, repl, flags & 1, flags & 2, limit);
    if (before == 0 && (n != 0 || text.GetLength() != 0)) std::abort();
    if (n < 0) {
        if (text.GetLength() != before) std::abort();
        return 0;
    }
    if (text.GetLength() != before + (long long)n * ((long long)replLength - (long long)findLength)) std::abort();
    if (text.GetLength() > before && text.GetLength() + 1 > limit) std::abort();
    return 0;
}
